// The slots of the chassis: what each is used for. A slot has two digital ports.
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

class Slots : public SlotModes {
public:
    explicit Slots(Device& device) : device_(device) {}

    const Modes& modes() const override { return modes_; }
    bool setMode(std::uint8_t port, std::uint8_t mode) override {
        const std::size_t slot = port / portsOfSlot;
        if (port % portsOfSlot != 0 || slot >= slotCount || mode > last) return false;
        modes_[slot] = mode;
        // The lines follow a mode that is about them.
        const PinMode lines = mode == outputs  ? PinMode::digitalOutput
                              : mode == inputs ? PinMode::digitalInput
                                               : PinMode::idle;
        for (std::size_t i = 0; mode <= outputs && i < portsOfSlot; ++i) {
            device_.digitalLines->turn(static_cast<int>(port + i), lines);
        }
        return true;
    }
    void restart() { modes_.fill(idle); }

private:
    Device& device_;
    Modes modes_{};
};

}  // namespace

void addSlots(Device& device) {
    const auto slots = std::make_shared<Slots>(device);
    device.slotModes.provide(slots);
    device.onReboot([slots] { slots->restart(); });
}

}  // namespace zvr::sim
