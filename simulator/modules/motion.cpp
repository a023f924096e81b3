// Motion chips behind connectors. One command wraps those of the chips:
//
//   offset  width  request            reply
//   0       1      connector          the same
//   1       1      code               the same
//   2       1      mask of the axes   the same
//   3       4      value              value that is read, or a status as the last byte
#include <map>

#include "device/modules.h"
#include "physics/motion_chip.h"

namespace zvr::sim {

namespace {

constexpr std::size_t headerWidth = 3, requestWidth = 7;
constexpr std::uint8_t motionMode = 4;

// A connector in a slot has its chip while the slot is used for motion.
bool isThere(Device& device, std::uint8_t connector) {
    if (std::ranges::find(device.model().motionPorts, connector) == device.model().motionPorts.end()) return false;
    const auto modes = device.handle({GET_SLOT_MODE, {}});
    return !modes || !device.knows(SET_SLOT_DI) || modes->at(std::size_t{connector} + 1) == motionMode;
}

}  // namespace

/// Each connector that is there has a chip of its own, which is new after a restart.
void addMotion(Device& device) {
    using Clock = std::chrono::steady_clock;
    const auto chips = std::make_shared<std::map<std::uint8_t, MotionChip>>();
    device.onReboot([chips] { chips->clear(); });
    device.on(MOTION, [&device, chips, start = Clock::now()](ByteView data) {
        Bytes header(data.begin(), data.end());
        header.resize(headerWidth);
        const auto answer = [&header](std::uint32_t value) {
            appendBigEndian(header, value);
            return header;
        };
        const auto refuse = [&answer](Status status) { return answer(static_cast<std::uint32_t>(status)); };
        if (data.size() != requestWidth) return refuse(Status::parser);
        if (!isThere(device, data[0])) {
            chips->erase(data[0]);
            return refuse(Status::notEnabled);
        }
        MotionChip& chip = chips->try_emplace(data[0], device.tracks).first->second;
        const double now = std::chrono::duration<double>(Clock::now() - start).count();
        const auto value = chip.run(data[1], data[2], readBigEndian<std::uint32_t>(data.subspan(headerWidth)), now);
        return value ? answer(*value) : refuse(Status::motion);
    });
}

}  // namespace zvr::sim
