// Operations that are one exchange, described as data: checks, request, and decoding of the reply.
#pragma once

#include <functional>

#include "core/wire/commands.h"
#include "python/definition.h"
#include "python/values.h"

namespace zvr::python {

/// How an argument is encoded in a request's data.
struct Encoding {
    const char* kind;  ///< shown on the wire format page; empty for a plain byte
    void (*append)(Payload& data, py::handle value, int number);
    int number = 0;  ///< additional parameter of `append`
};

/// A number of this width, most significant byte first.
template <class Number>
struct PackedNumber : Encoding {
    constexpr explicit PackedNumber(const char* kind)
        : Encoding{kind, [](Payload& data, py::handle value, int) { data.add(pack<Number>(value)); }} {}
    /// The same for a payload that is built by hand.
    Bytes operator()(py::handle value) const { return pack<Number>(value); }
    Bytes operator()(int value) const { return pack<Number>(py::int_(value)); }
};

inline constexpr PackedNumber<std::uint16_t> u16{"u16"};
inline constexpr PackedNumber<std::uint32_t> u32{"u32"};
inline constexpr PackedNumber<std::int16_t> i16{"i16"};
inline constexpr PackedNumber<std::int32_t> i32{"i32"};
inline constexpr PackedNumber<float> f32{"f32"};
inline constexpr Encoding u8{"", [](Payload& data, py::handle value, int) {
                                 if (PyIndex_Check(value.ptr()) == 0) refuseType(nullptr, "an integer", value);
                                 data.add(value);
                             }};
/// A byte from Python's `int(value)`: a flag, or a number of another type.
inline constexpr Encoding asInt{"int",
                                [](Payload& data, py::handle value, int) { data.add(py::int_(borrow(value.ptr()))); }};
inline constexpr Encoding length{"length",
                                 [](Payload& data, py::handle value, int) { data.add(py::int_(py::len(value))); }};
inline constexpr Encoding text{"text", [](Payload& data, py::handle value, int) { data.extend(codePoints(value)); }};
inline constexpr Encoding bytes{"bytes", [](Payload& data, py::handle value, int) { data.extend(value); }};
inline constexpr Encoding address{"ip", [](Payload& data, py::handle value, int) { data.extend(addressBytes(value)); }};
inline constexpr Encoding mac{"mac", [](Payload& data, py::handle value, int) { data.extend(macBytes(value)); }};

/// One piece of a request's data: an encoded argument or a constant.
struct Field {
    Parameter parameter;  ///< without a name for a constant
    std::string kind;
    void (*append)(Payload& data, py::handle value, int number);
    int number;
};

inline Field operator|(const Parameter& parameter, const Encoding& encoding) {
    return {parameter, encoding.kind, encoding.append, encoding.number};
}
/// A constant byte.
Field constant(int value, const std::string& name = {});
/// A constant 16-bit word.
Field constantWord(int value);

// Checks of one argument's type.
Check check(void (*test)(py::handle value, const char* name), const Parameter& parameter);
Check isInt(const Parameter& parameter);
Check isNumber(const Parameter& parameter);
Check isList(const Parameter& parameter);
Check isText(const Parameter& parameter);

/// A check method that accepts a few integers and raises the error for others.
Definition accepting(std::string name, Parameter parameter, FailureId failure, std::vector<int> accepted);

/// The command of a request, with its name if others share its number.
struct SentCommand {
    SentCommand(Command command) : code(command) {}  // NOLINT: a request is written with its command
    SentCommand(Command command, std::string_view name) : code(command), name(name) {}
    int code;
    std::string_view name = {};
};

/// How a reply is decoded to the result. `whole` replaces `decode` if more than the bytes is needed: the reply object
/// itself, or the command it answers.
struct Reply {
    std::function<Object(py::handle self, const Bytes& data)> decode;
    Returns returns;
    std::function<Object(const Op& op, const SentCommand& command, const Object& reply)> whole = nullptr;
};

/// 0, or the negative code of the device's refusal, from the status byte at this place of the reply.
Reply status(std::size_t place);
/// One byte of the reply.
Reply byteAt(std::size_t place, std::string doc);
/// The reply, or a part of it, as text.
Reply textReply(std::string doc, std::size_t length = std::string::npos, std::size_t from = 0);
/// Four bytes of the reply as a dotted address.
Reply addressAt(std::size_t place);
Reply byteList(std::string doc);
/// The rest of a sequence from an index on, in the sequence's own type.
Object restOfSequence(const Object& sequence, Py_ssize_t from);
/// One item of a sequence; throws an IndexError if it is too short.
Object itemOf(const Object& sequence, Py_ssize_t place);
/// The reply's bytes from an offset on.
Reply bytesFrom(std::size_t place, std::string doc);
/// Consecutive numbers of the reply; further bytes are ignored.
template <class Number>
Reply numbersAt(std::size_t place, std::size_t count, std::string doc) {
    return {[place, count](py::handle, const Bytes& data) -> Object {
                py::list numbers;
                for (std::size_t i = 0; i < count; ++i) {
                    numbers.append(readBigEndian<Number>(slice(data, place + i * sizeof(Number), sizeof(Number))));
                }
                return numbers;
            },
            {std::is_floating_point_v<Number> ? "list[float]" : "list[int]", std::move(doc), "the device"}};
}
/// A number of the reply; further bytes are ignored.
template <class Number>
Reply numberAt(std::size_t place, std::string doc) {
    return {[place](py::handle, const Bytes& data) -> Object {
                return py::cast(readBigEndian<Number>(slice(data, place, sizeof(Number))));
            },
            {std::is_floating_point_v<Number> ? "float" : "int", std::move(doc), "the device"}};
}
/// The same result, also kept in a field of the object.
Reply kept(std::string field, Reply reply);

/// Changes the arguments of a call before they are checked: maps a model's own port numbers.
using Adapt = void (*)(py::handle self, std::vector<Object>& arguments);

/// An operation that is one exchange.
struct Request {
    std::string name;
    Parameters parameters = {};  ///< if they differ from those of the fields
    std::vector<Check> checks = {};
    SentCommand sends;
    std::vector<Field> fields = {};
    Reply reply = status(1);  ///< the usual reply of a write: port, then status
    Adapt adapt = nullptr;
    std::string doc;

    operator Definition() const;  // NOLINT: a request is a short form of a definition
};

/// Checks and fields shared by the requests of a list; they precede each one's own.
struct Common {
    std::vector<Check> checks = {};
    std::vector<Field> fields = {};
    Adapt adapt = nullptr;
};

/// One exchange with the device, in the form of the operation; returns the reply's data.
Awaiter exchange(const Op& op, int command, const py::list& data);

/// The status of a write at this offset of its reply: 0, or the negative code of the refusal, which is logged.
Object statusOf(const Op& op, const SentCommand& command, const Object& reply, std::size_t place = 1);

}  // namespace zvr::python
