// Operations that are one exchange, as data: what is checked, what is sent, and how the reply becomes the result.
#pragma once

#include <functional>

#include "core/commands.h"
#include "python/definition.h"
#include "python/values.h"

namespace zvr::python {

/// One piece of a request's data.
struct Field {
    enum class Kind { byte, u16, u32, i32, f32, text, bytes, address, mac, constant };
    Kind kind;
    std::string argument;
    int value = 0;
};

inline Field u8(std::string argument) { return {Field::Kind::byte, std::move(argument)}; }
inline Field word(std::string argument) { return {Field::Kind::u16, std::move(argument)}; }
inline Field text(std::string argument) { return {Field::Kind::text, std::move(argument)}; }
inline Field bytes(std::string argument) { return {Field::Kind::bytes, std::move(argument)}; }
inline Field address(std::string argument) { return {Field::Kind::address, std::move(argument)}; }
inline Field mac(std::string argument) { return {Field::Kind::mac, std::move(argument)}; }
inline Field constant(int value) { return {Field::Kind::constant, {}, value}; }

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
inline Check isText(std::string argument) { return {{}, {std::move(argument)}, checkIsText}; }

/// How a reply becomes the result.
struct Reply {
    std::function<Object(py::handle self, const Bytes& data)> decode;
    Returns returns;
};

/// 0, or the negative code of the device's refusal, from the status byte at this place of the reply.
Reply status(std::size_t place);
/// A byte of the reply as it is.
Reply byteAt(std::size_t place, std::string doc);
/// The reply, or its first bytes, as text.
Reply textReply(std::string doc, std::size_t length = std::string::npos);
Reply byteList(std::string doc);
/// The same result, also kept in a field of the object.
Reply kept(std::string field, Reply reply);

struct Exchange {
    int command;
    std::vector<Check> checks;
    std::vector<Field> payload;
    Reply reply;

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
};

Definition defineExchange(Row row);

/// The status tail of a write: 0, or the negative code of the refusal.
Object statusOf(const Bytes& reply, std::size_t place);

}  // namespace zvr::python
