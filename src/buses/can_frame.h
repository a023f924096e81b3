// A frame of a CAN bus.
#pragma once

#include "python/record_type.h"

namespace zvr::python {

/// The flags are kept as they were given, since they are shown so.
class CanFrame {
public:
    static constexpr std::size_t dataBytes = 8, wireBytes = 12;
    using Data = std::array<std::uint8_t, dataBytes>;

    CanFrame() = default;
    CanFrame(const Object& id, Object extended, Object remote, const Object& data);
    explicit CanFrame(ByteView wire);

    /// The identifier as the wire has it. Throws an overflow failure for one that does not fit.
    void setId();

    bool operator==(const CanFrame& other) const;

    std::int64_t id = 0;
    Object extended = py::bool_(false), remote = py::bool_(false);
    Data data{};
    std::array<std::uint8_t, 4> idBytes{};
};

using CanFrameType = RecordType<CanFrame>;

}  // namespace zvr::python
