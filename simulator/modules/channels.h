// Numbered channels that are opened, started, stopped and closed, and the commands on them.
#pragma once

#include <array>
#include <memory>

#include "modules/ports.h"

namespace zvr::sim {

enum class Stage : std::uint8_t { closed, open, started };

/// The channels of one feature, from 0, and the commands on those that are open. A channel has `Stage stage() const`
/// and `void enter(Stage)`.
template <class Channel, std::size_t Count>
class Channels : public PortCommands<Channel> {
public:
    using All = std::array<Channel, Count>;

    Channels(Device& device, Status refusal, const All& channels)
        : Channels(device, refusal, std::make_shared<All>(channels)) {}

    /// Commands that change the stage; only an open channel can be started, stopped and closed.
    void onOpenAndClose(Command open, Command stop, Command close) const {
        anyStage_.onChange(open, [](Channel& channel) { channel.enter(Stage::open); });
        this->onChange(stop, [](Channel& channel) { channel.enter(Stage::open); });
        this->onChange(close, [](Channel& channel) { channel.enter(Stage::closed); });
    }
    void onStart(Command start) const {
        this->onChange(start, [](Channel& channel) { channel.enter(Stage::started); });
    }

    const std::shared_ptr<All>& all() const { return all_; }

private:
    Channels(Device& device, Status refusal, const std::shared_ptr<All>& all)
        : PortCommands<Channel>(device, refusal, finding(all, Stage::open)),
          anyStage_(device, refusal, finding(all, Stage::closed)),
          all_(all) {
        device.onReboot([all] {
            for (Channel& channel : *all) channel.enter(Stage::closed);
        });
    }

    static typename PortCommands<Channel>::Find finding(const std::shared_ptr<All>& all, Stage least) {
        return [all, least](std::uint8_t number, Request&) {
            return number < Count && (*all)[number].stage() >= least ? &(*all)[number] : nullptr;
        };
    }

    PortCommands<Channel> anyStage_;
    std::shared_ptr<All> all_;
};

}  // namespace zvr::sim
