#include "core/wire/frame.h"

#include "core/wire/commands.h"
#include "core/wire/constants.h"

namespace zvr {

Bytes buildFrame(int command, ByteView data) {
    if (command < 0 || command > 0xFFFF) throw std::overflow_error("a command code has 16 bits");
    const std::size_t payload = data.size() + (isWide(command) ? 2 : 1);
    if (payload > 0xFFFF) throw std::overflow_error("a frame's length field has 16 bits");
    Bytes frame;
    frame.reserve(payload + 5);
    frame.push_back(CMD_STX);
    appendBigEndian(frame, static_cast<std::uint16_t>(payload));
    if (isWide(command)) {
        appendBigEndian(frame, static_cast<std::uint16_t>(command));
    } else {
        frame.push_back(static_cast<std::uint8_t>(command));
    }
    frame.insert(frame.end(), data.begin(), data.end());
    frame.push_back(CMD_CR);
    frame.push_back(CMD_LF);
    return frame;
}

int commandOf(ByteView frame) {
    if (frame.size() < 6 || frame[0] != CMD_STX) return -1;
    const std::uint8_t first = frame[CMD_INDEX_2];
    return startsWide(first) && first != OPEN_CAN ? first << 8 | frame[CMD_INDEX_2 + 1] : first;
}

int motionKey(ByteView data) {
    if (data.size() < 3) throw std::out_of_range("a motion frame without connector, sub-command and axis");
    const std::uint8_t key[] = {data[2], data[0], data[1], MOTION};
    return readBigEndian<std::int32_t>(key);
}

}  // namespace zvr
