// The frame that every exchange carries, over all transports:
//
//   offset  width  field
//   0       1      start byte, 2
//   1       2      number of bytes of command and data, big-endian
//   3       1, 2   command code: one byte below 256, else two, high byte first
//   ..      n      data, any bytes
//   ..      2      trailer, 13 10
//
// The reference of the site says what each operation puts into one.
#pragma once

#include "core/wire/bytes.h"

namespace zvr {

/// Whether a code takes two bytes in a frame that is built.
constexpr bool isWide(int command) { return command > 0xFF; }
/// Whether a code has two bytes in a frame that is read: its first byte alone decides. Compat 24: a code of one byte up
/// to 48 cannot be distinguished from half of one of two, so devices answer OPEN_CAN (48) with the bytes 00 30.
constexpr bool startsWide(std::uint8_t firstByte) { return firstByte <= 48; }

/// Builds a whole frame. Throws std::overflow_error if the length does not fit its 16 bits or the command does not
/// fit a code.
Bytes buildFrame(int command, ByteView data);
/// The command of a frame built by this side; -1 if the bytes are no frame.
int commandOf(ByteView frame);

/// One received frame without its envelope.
struct Packet {
    int command = 0;
    Bytes data;
    bool operator==(const Packet&) const = default;
};

/// Key that distinguishes the replies of MOTION commands: connector, sub-command and axis, its first three data bytes.
/// Throws std::out_of_range if they are missing.
int motionKey(ByteView data);

}  // namespace zvr
