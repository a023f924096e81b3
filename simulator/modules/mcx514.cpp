// Motion chips behind connectors. One command wraps those of the chips:
//
//   offset  width  request            reply
//   0       1      connector          the same
//   1       1      code               the same
//   2       1      mask of the axes   the same
//   3       4      value              value that is read, or a status as the last byte
#include <map>

#include "device/modules.h"
#include "physics/mcx514.h"

namespace zvr::sim {

namespace {

constexpr std::size_t headerWidth = 3, requestWidth = 7;

// A connector in a slot has its chip while the slot is used for motion.
bool isThere(const Device& device, std::uint8_t connector) {
    if (std::ranges::find(device.model().motionPorts, connector) == device.model().motionPorts.end()) return false;
    return !device.slotModes || device.slotModes->modes().at(connector) == SlotModes::motion;
}

}  // namespace

/// Each connector that is there has a chip of its own, which is new after a restart.
void addMcx514(Device& device) {
    using Clock = std::chrono::steady_clock;
    const auto chips = std::make_shared<std::map<std::uint8_t, MCX514>>();
    device.onReboot([chips] { chips->clear(); });
    device.on(MOTION, [&device, chips, start = Clock::now()](Request r) {
        const ByteView data = r.rest();
        Bytes header(data.begin(), data.end());
        header.resize(headerWidth);
        const auto answer = [&header](std::uint32_t value) { return reply(header, value); };
        const auto refuse = [&answer](Status status) { return answer(static_cast<std::uint32_t>(status)); };
        if (data.size() != requestWidth) return refuse(Status::parser);
        if (!isThere(device, data[0])) {
            chips->erase(data[0]);
            return refuse(Status::notEnabled);
        }
        MCX514& chip = chips->try_emplace(data[0], device.tracks).first->second;
        const double now = std::chrono::duration<double>(Clock::now() - start).count();
        const auto value = chip.run(data[1], data[2], readBigEndian<std::uint32_t>(data.subspan(headerWidth)), now);
        return value ? answer(*value) : refuse(Status::motion);
    });
}

}  // namespace zvr::sim
