// A frame of a CAN bus.
#pragma once

#include "device/feature.h"

namespace zvr::python {

/// What the wire has of a frame: four bytes of identifier and flags, and eight of data.
class CanFrame {
public:
    static constexpr std::size_t dataBytes = 8, wireBytes = 12;
    using Data = std::array<std::uint8_t, dataBytes>;

    CanFrame() = default;
    /// From the bytes of the wire. Bits that say nothing are dropped.
    explicit CanFrame(ByteView wire);

    std::uint32_t word() const { return readBigEndian<std::uint32_t>(idBytes); }
    bool extended() const;
    bool remote() const;
    std::uint32_t id() const;

    Data data{};
    std::array<std::uint8_t, 4> idBytes{};
};

/// The class of frames. Streams make them by the hundred thousand: such a frame is the bytes of the wire only, and its
/// lists are made when somebody asks for them.
class CanFrameType {
public:
    static Object make(const CanFrame& frame);
    static bool is(py::handle object);
    /// The bytes of the wire, from the lists as they are now.
    static CanFrame of(py::handle object);
};

}  // namespace zvr::python
