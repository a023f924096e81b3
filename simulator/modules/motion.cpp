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

/// Each connector that is there has a chip of its own, which is new after a restart.
void addConnectors(Device& device, std::function<bool(std::uint8_t connector)> isThere) {
    using Clock = std::chrono::steady_clock;
    const auto chips = std::make_shared<std::map<std::uint8_t, MotionChip>>();
    device.onReboot([chips] { chips->clear(); });
    device.on(MOTION, [&device, chips, isThere = std::move(isThere), start = Clock::now()](ByteView data) {
        Bytes header(data.begin(), data.end());
        header.resize(headerWidth);
        const auto answer = [&header](std::uint32_t value) {
            appendBigEndian(header, value);
            return header;
        };
        const auto refuse = [&answer](Status status) { return answer(static_cast<std::uint32_t>(status)); };
        if (data.size() != requestWidth) return refuse(Status::parser);
        if (!isThere(data[0])) {
            chips->erase(data[0]);
            return refuse(Status::notEnabled);
        }
        MotionChip& chip = chips->try_emplace(data[0], device.tracks).first->second;
        const double now = std::chrono::duration<double>(Clock::now() - start).count();
        const auto value = chip.run(data[1], data[2], readBigEndian<std::uint32_t>(data.subspan(headerWidth)), now);
        return value ? answer(*value) : refuse(Status::motion);
    });
}

}  // namespace

void addMotion(Device& device) {
    addConnectors(device, [](std::uint8_t connector) { return connector == 0; });
}

// Slots 1, 2 and 4 can have a chip.
void addSlotMotion(Device& device) {
    addConnectors(device, [&device](std::uint8_t connector) {
        if (connector > 3 || connector == 2) return false;
        const auto modes = device.handle({GET_SLOT_MODE, {}});
        return modes && modes->at(std::size_t{connector} + 1) == motionMode;
    });
}

}  // namespace zvr::sim
