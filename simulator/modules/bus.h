// The ports of a serial bus, which have lines while they are open, and the commands on them.
#pragma once

#include <map>
#include <memory>

#include "modules/alarm.h"
#include "modules/ports.h"

namespace zvr::sim {

/// The ports of a bus that the model has, and the commands on those that are open. A port is made of the device and
/// its number, and `clear` puts it into the state in which it is while it is closed.
template <class Port>
class BusPorts : public PortCommands<Port> {
public:
    BusPorts(Device& device, Bus bus, PinMode mode, Status refusal)
        : BusPorts(device, mode, refusal, slotsOf(device, bus)) {}

    void onOpenAndClose(Command open, Command close) const {
        slots_.onChange(open, [mode = mode_](Slot& slot) {
            if (slot.open || !slot.device.digitalLines->use(slot.lines, mode)) return false;
            return slot.open = true;
        });
        slots_.onChange(close, [](Slot& slot) { return slot.open && slot.close(); });
    }

    /// The commands on ports that need not be open.
    const PortCommands<Port>& anyState() const { return anyState_; }

private:
    struct Slot {
        Slot(Device& device, const BusLines& lines) : device(device), lines(lines), port(device, lines.port) {}

        bool close() {
            port.clear();
            if (open) device.digitalLines->use(lines, PinMode::idle);
            open = false;
            return true;
        }

        Device& device;
        const BusLines lines;
        bool open = false;
        Port port;
    };
    using Slots = std::shared_ptr<std::map<int, Slot>>;

    BusPorts(Device& device, PinMode mode, Status refusal, const Slots& slots)
        : PortCommands<Port>(device, refusal, finding(slots, true)),
          anyState_(device, refusal, finding(slots, false)),
          slots_(device, refusal, [slots](std::uint8_t number, Request&) { return find(slots, number); }),
          mode_(mode) {
        device.onReboot([slots] {
            for (auto& [number, slot] : *slots) slot.close();
        });
    }

    static Slots slotsOf(Device& device, Bus bus) {
        const auto slots = std::make_shared<std::map<int, Slot>>();
        for (const BusLines& lines : busLines) {
            if (lines.bus == bus && device.model().hasBus(bus, lines.port)) {
                slots->try_emplace(lines.port, device, lines);
            }
        }
        return slots;
    }

    static Slot* find(const Slots& slots, int number) {
        const auto found = slots->find(number);
        return found == slots->end() ? nullptr : &found->second;
    }

    static typename PortCommands<Port>::Find finding(const Slots& slots, bool mustBeOpen) {
        return [slots, mustBeOpen](std::uint8_t number, Request&) {
            Slot* slot = find(slots, number);
            return slot && (slot->open || !mustBeOpen) ? &slot->port : nullptr;
        };
    }

    PortCommands<Port> anyState_;
    PortCommands<Slot> slots_;
    PinMode mode_;
};

}  // namespace zvr::sim
