// Operations that are one exchange, as data: what is checked, what is sent, and how the reply becomes the result.
#pragma once

#include <functional>

#include "core/wire/commands.h"
#include "python/definition.h"
#include "python/values.h"

namespace zvr::python {

/// One piece of a request's data, made from one argument or from none.
struct Field {
    std::string argument;
    std::string kind;  ///< how the argument is written, for the reference page; empty for a plain byte
    void (*append)(Payload& data, py::handle value);
    int number = 0;  ///< what is appended where no argument is
};

template <class Number>
Field packed(std::string kind, std::string argument) {
    return {std::move(argument), std::move(kind), [](Payload& data, py::handle v) { data.add(pack<Number>(v)); }};
}

inline Field u8(std::string argument) {
    return {std::move(argument), {}, [](Payload& data, py::handle v) {
                if (PyIndex_Check(v.ptr()) == 0) refuseType(nullptr, "an integer", v);
                data.add(v);
            }};
}
inline Field word(std::string argument) { return packed<std::uint16_t>("u16", std::move(argument)); }
inline Field f32(std::string argument) { return packed<float>("f32", std::move(argument)); }
inline Field length(std::string argument) {
    return {std::move(argument), "length", [](Payload& data, py::handle v) { data.add(py::int_(py::len(v))); }};
}
inline Field text(std::string argument) {
    return {std::move(argument), "text", [](Payload& data, py::handle v) { data.extend(codePoints(v)); }};
}
inline Field bytes(std::string argument) {
    return {std::move(argument), "bytes", [](Payload& data, py::handle v) { data.extend(v); }};
}
inline Field address(std::string argument) {
    return {std::move(argument), "ip", [](Payload& data, py::handle v) { data.extend(addressBytes(v)); }};
}
inline Field mac(std::string argument) {
    return {std::move(argument), "mac", [](Payload& data, py::handle v) { data.extend(macBytes(v)); }};
}
/// A byte that no argument gives.
inline Field constant(int value, const std::string& name = {}) {
    const std::string digits = std::to_string(value);
    return {{},
            name.empty() ? digits : name + " (" + digits + ")",
            [](Payload& data, py::handle v) { data.add(v); },
            value};
}

/// One test before anything is sent: a method of the object, or a free check of one argument.
struct Check {
    std::string method;
    std::vector<std::string> arguments;
    void (*test)(py::handle value) = nullptr;
};

inline Check calls(std::string method, std::vector<std::string> arguments) {
    return {std::move(method), std::move(arguments)};
}
inline Check isInt(std::string argument) { return {{}, {std::move(argument)}, checkIsInt}; }
inline Check isNumber(std::string argument) { return {{}, {std::move(argument)}, checkIsNumber}; }
inline Check isList(std::string argument) { return {{}, {std::move(argument)}, checkIsList}; }
inline Check isText(std::string argument) { return {{}, {std::move(argument)}, checkIsText}; }

/// How a reply becomes the result. `cut` is for results that are a part of the reply as it is, of its own type.
struct Reply {
    std::function<Object(py::handle self, const Bytes& data)> decode;
    Returns returns;
    std::function<Object(py::handle self, const Object& reply)> cut = nullptr;
};

/// 0, or the negative code of the device's refusal, from the status byte at this place of the reply.
Reply status(std::size_t place);
/// A byte of the reply as it is.
Reply byteAt(std::size_t place, std::string doc);
/// The reply, or a part of it, as text.
Reply textReply(std::string doc, std::size_t length = std::string::npos, std::size_t from = 0);
/// Four bytes of the reply as a dotted address.
Reply addressAt(std::size_t place);
Reply byteList(std::string doc);
/// The part of a sequence from a place on, in the sequence's own type.
Object restOfSequence(const Object& sequence, Py_ssize_t from);
/// One item of a sequence; an index failure where it ends before.
Object itemOf(const Object& sequence, Py_ssize_t place);
/// The reply's bytes from a place on.
Reply bytesFrom(std::size_t place, std::string doc);
/// Numbers of the reply, one behind the other; further bytes are ignored.
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

/// Changes the arguments of a call before they are checked: a model's own way to count its ports.
using Adapt = void (*)(py::handle self, std::vector<Object>& arguments);

struct Exchange {
    int command;
    std::vector<Check> checks;
    std::vector<Field> payload;
    Reply reply;
    Adapt adapt;

    std::string commandName() const;
    std::string payloadText() const;
};

/// The definition of an operation that is one exchange.
struct Row {
    std::string name;
    Parameters parameters;
    std::vector<Check> checks;
    Command command;
    std::vector<Field> payload;
    Reply reply;
    std::string summary;
    Adapt adapt = nullptr;
};

Definition defineExchange(Row row);

/// The status tail of a write: 0, or the negative code of the refusal.
Object statusOf(ByteView reply, std::size_t place);

}  // namespace zvr::python
