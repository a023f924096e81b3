// Numbered channels that are opened, started, stopped and closed, and the commands on them.
#pragma once

#include <array>
#include <memory>

#include "device/device.h"

namespace zvr::sim {

enum class Stage : std::uint8_t { closed, open, started };

/// The channels of one feature, from 0. A channel has `Stage stage() const` and `void enter(Stage)`.
///
/// A request for a channel that is not there, or that is not open yet, is refused with the feature's status.
template <class Channel, std::size_t Count>
class Channels {
public:
    /// False refuses the request.
    using Change = std::function<bool(Channel& channel, ByteView rest)>;
    using Read = std::function<Bytes(Channel& channel)>;

    Channels(Device& device, Status refusal, const std::array<Channel, Count>& channels)
        : device_(device), refusal_(refusal), channels_(std::make_shared<std::array<Channel, Count>>(channels)) {
        device.onReboot([all = channels_] {
            for (Channel& channel : *all) channel.enter(Stage::closed);
        });
    }

    /// Commands that change the stage; only an open channel can be started, stopped and closed.
    void onStages(Command open, Command start, Command stop, Command close) const {
        addStatus(open, Stage::closed, entering(Stage::open));
        addStatus(start, Stage::open, entering(Stage::started));
        addStatus(stop, Stage::open, entering(Stage::open));
        addStatus(close, Stage::open, entering(Stage::closed));
    }

    /// A command that changes an open channel and answers with a status.
    void onChange(Command command, Change change) const { addStatus(command, Stage::open, std::move(change)); }

    /// A command that answers with values. There is no place for a status: without an open channel they are zeros.
    void onRead(Command command, std::size_t width, Read read) const {
        device_.onPort(command, [all = channels_, width, read = std::move(read)](std::uint8_t number, ByteView) {
            Channel* channel = find(*all, number, Stage::open);
            return reply(number, channel ? read(*channel) : Bytes(width));
        });
    }

    const std::shared_ptr<std::array<Channel, Count>>& all() const { return channels_; }

private:
    static Change entering(Stage stage) {
        return [stage](Channel& channel, ByteView) {
            channel.enter(stage);
            return true;
        };
    }

    static Channel* find(std::array<Channel, Count>& all, std::size_t number, Stage least) {
        return number < Count && all[number].stage() >= least ? &all[number] : nullptr;
    }

    void addStatus(Command command, Stage least, Change change) const {
        device_.onPort(command, [all = channels_, refusal = refusal_, least, change = std::move(change)](
                                    std::uint8_t number, ByteView rest) {
            Channel* channel = find(*all, number, least);
            return reply(number, channel && change(*channel, rest) ? Status::ok : refusal);
        });
    }

    Device& device_;
    Status refusal_;
    std::shared_ptr<std::array<Channel, Count>> channels_;
};

}  // namespace zvr::sim
