#include "buses/can_frame.h"

#include "buses/buses.h"

namespace zvr::python {

namespace {

// Bits of the identifier word: the upper 11 bits of an identifier stand at the top, the flags below them, and the
// lower 18 bits of an extended one at the bottom.
constexpr std::uint32_t remoteBit = 1U << 20, extendedBit = 1U << 19, lowBits = (1U << 18) - 1;
constexpr std::int64_t highBits = 0x7FFLL << 18;
constexpr int standardShift = 21, extendedShift = 3;

bool isTrue(const Object& flag) {
    const int answer = PyObject_IsTrue(flag.ptr());
    if (answer < 0) throw py::error_already_set();
    return answer != 0;
}

CanFrame& frameOf(py::handle self) { return CanFrameType::of(self); }

py::list regularize(const Object& data) {
    py::list list = own(PySequence_List(data.ptr()));
    for (std::size_t i = 0; i < CanFrame::dataBytes; ++i) list.append(0);
    return py::list(own(PyList_GetSlice(list.ptr(), 0, CanFrame::dataBytes)));
}

CanFrame::Data eightBytes(const Object& data) {
    const Bytes bytes = bytesOf(regularize(data));
    CanFrame::Data result{};
    std::ranges::copy(bytes, result.begin());
    return result;
}

py::list wireList(const CanFrame& frame) {
    py::list list = toList(frame.idBytes);
    callMethod(list, "extend", toList(frame.data));
    return list;
}

py::str textOfFrame(py::handle self) {
    const CanFrame& frame = frameOf(self);
    return py::str("CANFrame(id={}, extended_id={}, remote={}, data={})")
        .format(frame.id, frame.extended, frame.remote, toList(frame.data));
}

// The message object of the host's common CAN package.
Object toMessage(py::handle self) {
    const CanFrame& frame = frameOf(self);
    const bool remote = isTrue(frame.remote);
    return hostObject("can", "Message")(
        py::arg("arbitration_id") = frame.id, py::arg("is_extended_id") = isTrue(frame.extended),
        py::arg("is_remote_frame") = remote, py::arg("dlc") = CanFrame::dataBytes,
        py::arg("data") = remote ? Object(py::none()) : Object(toBytes(frame.data)), py::arg("check") = true);
}

Object fromMessage(const Object& message) {
    if (isTrue(attribute(message, "is_error_frame"))) throw py::value_error("an error frame is no frame to be sent");
    return CanFrameType::make(CanFrame(attribute(message, "arbitration_id"), attribute(message, "is_extended_id"),
                                       attribute(message, "is_remote_frame"), attribute(message, "data")));
}

}  // namespace

CanFrame::CanFrame(const Object& id, Object extended, Object remote, const Object& data)
    : id(numberOf<std::int64_t>(id)), extended(std::move(extended)), remote(std::move(remote)), data(eightBytes(data)) {
    setId();
}

CanFrame::CanFrame(ByteView wire) {
    const auto word = readBigEndian<std::uint32_t>(slice(wire, 0, 4));
    std::ranges::copy(wire.first(4), idBytes.begin());
    const bool isExtended = (word & extendedBit) != 0;
    extended = py::bool_(isExtended);
    remote = py::bool_((word & remoteBit) != 0);
    const std::uint32_t high = word >> standardShift << standardShift;
    id = isExtended ? std::int64_t{high >> extendedShift | (word & lowBits)} : high >> standardShift;
    const ByteView rest = wire.subspan(4, std::min(dataBytes, wire.size() - 4));
    std::ranges::copy(rest, data.begin());
}

void CanFrame::setId() {
    std::int64_t word = isTrue(extended) ? (id & highBits) << extendedShift | (id & lowBits) | extendedBit : id;
    if (!isTrue(extended)) {
        if (id < 0 || id >= 1LL << (32 - standardShift)) {
            PyErr_SetString(PyExc_OverflowError, "a standard identifier has 11 bits");
            throw py::error_already_set();
        }
        word = id << standardShift;
    }
    if (isTrue(remote)) word |= remoteBit;
    Bytes bytes;
    appendBigEndian(bytes, static_cast<std::uint32_t>(word));
    std::ranges::copy(bytes, idBytes.begin());
}

bool CanFrame::operator==(const CanFrame& other) const {
    return id == other.id && data == other.data && isTrue(extended) == isTrue(other.extended) &&
           isTrue(remote) == isTrue(other.remote);
}

void defineCanFrame(Package& package) {
    ClassMaker type = CanFrameType::define(package, "pyzvr.CANFrame",
                                           "A frame of a CAN bus. Frames with the same identifier, flags and data are "
                                           "equal.");
    const Parameter listed{"u8_list", "Sequence[int]", "12 bytes of the wire; 4 for a frame without data"};
    const Parameter data{"data", "Sequence[int]", "any number of bytes"};
    const Returns eight{"list[int]", "8 bytes"};
    const Parameter other{"other", "object", ""};
    const auto flag = [](const char* name, const char* doc) { return FieldDoc{name, "bool", doc}; };
    type.method("__init__",
                {{"id_", "int", "identifier, 11 bits, or 29 where `extended_id`"},
                 {"extended_id", "bool", "whether the identifier has 29 bits", "False"},
                 {"remote", "bool", "whether it is a remote frame", "False"},
                 {"data", "Sequence[int]", "bytes; they are filled with zeros, and cut, to 8", "()"}},
                "Makes a frame.", {},
                {"OverflowError: the identifier does not fit", "ValueError: the data are no bytes"},
                [](py::handle self, const Object& id, const Object& extended, const Object& remote,
                   const Object& data) { frameOf(self) = CanFrame(id, extended, remote, data); })
        .property(
            {"id", "int", "Identifier. After a change `setID` is due."},
            [](py::handle self) { return frameOf(self).id; },
            [](py::handle self, const Object& value) { frameOf(self).id = numberOf<std::int64_t>(value); })
        .property(
            flag("extended_id", "Whether the identifier has 29 bits. After a change `setID` is due."),
            [](py::handle self) { return frameOf(self).extended; },
            [](py::handle self, const Object& value) { frameOf(self).extended = value; })
        .property(
            flag("remote", "Whether it is a remote frame. After a change `setID` is due."),
            [](py::handle self) { return frameOf(self).remote; },
            [](py::handle self, const Object& value) { frameOf(self).remote = value; })
        .property(
            {"data", "list[int]", "A copy of the 8 bytes; to change them, assign all."},
            [](py::handle self) { return toList(frameOf(self).data); },
            [](py::handle self, const Object& value) { frameOf(self).data = eightBytes(value); })
        .property({"id_in_list", "list[int]", "The identifier with its flags as the 4 bytes of the wire."},
                  [](py::handle self) { return toList(frameOf(self).idBytes); })
        .property({"frame_in_list", "list[int]", "The 12 bytes of the wire: `id_in_list` and `data`."},
                  [](py::handle self) { return wireList(frameOf(self)); })
        .method("setID", {}, "Puts identifier and flags into the bytes of the wire.", {},
                {"OverflowError: a standard identifier of more than 11 bits"},
                [](py::handle self) { frameOf(self).setId(); })
        .method("regularizeData", {data}, "Fills with zeros, and cuts, to 8 entries.", eight, {},
                [](py::handle, const Object& values) { return regularize(values); })
        .standalone("fromU8List", {listed}, "Makes a frame of the bytes of the wire.", {"CANFrame", "a new frame"},
                    {"struct.error: fewer than 4 bytes"},
                    [](py::handle, const Object& values) { return CanFrameType::make(CanFrame(bytesOf(values))); })
        .method("toMessage", {}, "The frame as a message of the package `can`, 8 bytes long.", {"Any", "a can.Message"},
                {"ImportError: the package is not installed"}, Calls<toMessage>{})
        .standalone("fromMessage", {{"message", "Any", "a can.Message"}},
                    "Makes a frame of a message of the package `can`.", {"CANFrame", "a new frame"},
                    {"ValueError: it is an error frame"},
                    [](py::handle, const Object& message) { return fromMessage(message); })
        .method("__eq__", {other}, "Whether two frames say the same.", {"bool"}, {},
                [](py::handle self, const Object& other) -> Object {
                    if (!CanFrameType::is(other)) return borrow(Py_NotImplemented);
                    return py::bool_(frameOf(self) == frameOf(other));
                })
        .method("__hash__", {}, "By what it says.", {"int"}, {},
                [](py::handle self) {
                    const CanFrame& frame = frameOf(self);
                    return py::hash(
                        py::make_tuple(frame.id, isTrue(frame.extended), isTrue(frame.remote), toBytes(frame.data)));
                })
        .method("__str__", {}, "All of it.", {"str"}, {}, Calls<textOfFrame>{})
        .method("__repr__", {}, "All of it.", {"str"}, {}, Calls<textOfFrame>{});
}

}  // namespace zvr::python
