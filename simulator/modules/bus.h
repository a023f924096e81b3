// The ports of a serial bus, which have lines while they are open, and the commands on them.
#pragma once

#include <map>
#include <memory>

#include "device/device.h"

namespace zvr::sim {

/// One action that is due later; set anew, it is due at the new time only.
class Alarm {
public:
    Alarm(Agenda& agenda, std::function<void()> action) : agenda_(agenda), state_(std::make_shared<State>()) {
        state_->action = std::move(action);
    }

    void cancel() { state_->due.reset(); }
    void set(Agenda::Clock::time_point due) {
        if (state_->due == due) return;
        state_->due = due;
        agenda_.at(due, [weak = std::weak_ptr(state_), due] {
            const auto state = weak.lock();
            if (!state || state->due != due) return;
            state->due.reset();
            state->action();
        });
    }

private:
    struct State {
        std::optional<Agenda::Clock::time_point> due;
        std::function<void()> action;
    };

    Agenda& agenda_;
    std::shared_ptr<State> state_;
};

inline std::uint8_t byteOf(ByteView rest) { return slice(rest, 0, 1)[0]; }

/// The bytes behind their number, and nothing else.
inline ByteView countedBytes(ByteView rest) {
    const std::size_t count = byteOf(rest);
    if (rest.size() != 1 + count) throw WrongLength(1 + count, rest.size());
    return rest.subspan(1);
}

/// A port is made of the device and its number, and `clear` puts it into the state in which it is while it is closed.
///
/// A request for a port that is not there, or that is not in the right state, is refused with the status of the bus.
template <class Port>
class BusPorts {
public:
    /// False refuses the request.
    using Change = std::function<bool(Port& port, ByteView rest)>;
    /// Nothing refuses the request.
    using Read = std::function<std::optional<Bytes>(Port& port, ByteView rest)>;

    /// The ports that the model has.
    BusPorts(Device& device, Bus bus, PinMode mode, Status refusal)
        : device_(device), mode_(mode), refusal_(refusal), slots_(std::make_shared<Slots>()) {
        for (const BusLines& lines : busLines) {
            if (lines.bus == bus && device.model().hasBus(bus, lines.port)) {
                slots_->try_emplace(lines.port, device, lines);
            }
        }
        device.onReboot([slots = slots_] {
            for (auto& [number, slot] : *slots) slot.close();
        });
    }

    void onOpen(Command command) const {
        add(command, [mode = mode_](Slot& slot, ByteView) {
            if (slot.open || !slot.device.usePins(slot.lines, mode)) return false;
            return slot.open = true;
        });
    }
    void onClose(Command command) const {
        add(command, [](Slot& slot, ByteView) { return slot.open && slot.close(); });
    }

    /// A command that changes an open port and answers with a status.
    void onChange(Command command, Change change) const {
        add(command,
            [change = std::move(change)](Slot& slot, ByteView rest) { return slot.open && change(slot.port, rest); });
    }
    /// The same for a port that need not be open.
    void onSetting(Command command, Change change) const {
        add(command, [change = std::move(change)](Slot& slot, ByteView rest) { return change(slot.port, rest); });
    }

    /// A command that an open port answers with a status and bytes.
    void onRead(Command command, Read read) const {
        device_.onPort(command, [*this, read = std::move(read)](std::uint8_t number, ByteView rest) {
            Slot* slot = find(*slots_, number);
            const auto bytes = slot && slot->open ? read(slot->port, rest) : std::nullopt;
            return reply(number, bytes ? reply(static_cast<std::uint8_t>(Status::ok), *bytes) : reply(refusal_));
        });
    }

    /// A command that is answered with values, which are 0 without a port.
    void onValues(Command command, std::size_t width, std::function<Bytes(Port& port)> read) const {
        device_.onPort(command, [slots = slots_, width, read = std::move(read)](std::uint8_t number, ByteView) {
            Slot* slot = find(*slots, number);
            return reply(number, slot ? read(slot->port) : Bytes(width));
        });
    }

    /// A command without a reply.
    void onOrder(Command command, std::function<void(Port& port)> order) const {
        device_.onSilent(command, [slots = slots_, order = std::move(order)](ByteView data) {
            Slot* slot = data.empty() ? nullptr : find(*slots, data[0]);
            if (slot && slot->open) order(slot->port);
        });
    }

private:
    struct Slot {
        Slot(Device& device, const BusLines& lines) : device(device), lines(lines), port(device, lines.port) {}

        bool close() {
            port.clear();
            if (open) device.usePins(lines, PinMode::idle);
            open = false;
            return true;
        }

        Device& device;
        const BusLines lines;
        bool open = false;
        Port port;
    };
    using Slots = std::map<int, Slot>;

    static Slot* find(Slots& slots, int number) {
        const auto found = slots.find(number);
        return found == slots.end() ? nullptr : &found->second;
    }

    void add(Command command, std::function<bool(Slot& slot, ByteView rest)> change) const {
        device_.onPort(command, [slots = slots_, refusal = refusal_, change = std::move(change)](std::uint8_t number,
                                                                                                 ByteView rest) {
            Slot* slot = find(*slots, number);
            return reply(number, slot && change(*slot, rest) ? Status::ok : refusal);
        });
    }

    Device& device_;
    PinMode mode_;
    Status refusal_;
    std::shared_ptr<Slots> slots_;
};

}  // namespace zvr::sim
