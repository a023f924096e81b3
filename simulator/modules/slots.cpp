// The slots of the chassis: what each is used for. A slot has two digital ports.
#include <memory>

#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::size_t slotCount = 4, portsOfSlot = 2;
enum Mode : std::uint8_t { idleMode = 0, inputMode = 1, outputMode = 2, lastMode = 6 };

// The lines follow a mode that is about them.
void turnLines(Device& device, std::uint8_t firstPort, std::uint8_t mode) {
    if (mode > outputMode) return;
    const Command command = mode == outputMode ? SET_SLOT_DO : mode == inputMode ? SET_SLOT_DI : SET_SLOT_IDLE;
    for (std::size_t i = 0; i < portsOfSlot; ++i) {
        device.handle({command, {static_cast<std::uint8_t>(firstPort + i), 0}});
    }
}

}  // namespace

void addSlots(Device& device) {
    const auto modes = std::make_shared<std::array<std::uint8_t, slotCount>>();
    device.on(GET_SLOT_MODE, [modes](ByteView) { return reply(slotCount * portsOfSlot, *modes); });
    // A slot goes by its first port.
    device.onPort(SET_SLOT_MODE, [&device, modes](std::uint8_t port, ByteView rest) {
        const std::uint8_t mode = slice(rest, 0, 1)[0];
        const std::size_t slot = port / portsOfSlot;
        if (port % portsOfSlot != 0 || slot >= slotCount || mode > lastMode) return reply(port, Status::notEnabled);
        (*modes)[slot] = mode;
        turnLines(device, port, mode);
        return reply(port, Status::ok);
    });
    device.onReboot([modes] { modes->fill(idleMode); });
}

}  // namespace zvr::sim
