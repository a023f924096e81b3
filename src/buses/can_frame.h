// A frame of a CAN bus.
#pragma once

#include "device/feature.h"

namespace zvr::python {

/// A frame on the wire: four bytes of identifier and flags, and eight of data.
class CanFrame {
public:
    static constexpr std::size_t dataBytes = 8, wireBytes = 12;
    using Data = std::array<std::uint8_t, dataBytes>;

    CanFrame() = default;
    /// From the bytes of the wire. Unused bits are dropped.
    explicit CanFrame(ByteView wire);

    std::uint32_t word() const { return readBigEndian<std::uint32_t>(idBytes); }
    bool extended() const;
    bool remote() const;
    std::uint32_t id() const;

    Data data{};
    std::array<std::uint8_t, 4> idBytes{};
};

/// The class of frames. Streams make them by the hundred thousand, so such a frame holds only the bytes of the wire,
/// and its lists are made on first access.
class CanFrameType {
public:
    static Object make(const CanFrame& frame);
    static bool is(py::handle object);
    /// The bytes of the wire, from the current lists.
    static CanFrame of(py::handle object);
};

}  // namespace zvr::python
