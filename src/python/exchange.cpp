#include "python/exchange.h"

#include <algorithm>

#include "core/wire/failures.h"

namespace zvr::python {

namespace {

std::size_t indexOf(const Parameters& parameters, const std::string& name) {
    const auto found = std::ranges::find(parameters, name, &Parameter::name);
    if (found == parameters.end()) throw std::logic_error("no parameter is called " + name);
    return static_cast<std::size_t>(found - parameters.begin());
}

void run(const Check& check, const Definition& definition, py::handle self, const std::vector<Object>& arguments) {
    std::vector<PyObject*> values{self.ptr()};
    for (const std::string& name : check.arguments) {
        values.push_back(arguments[indexOf(definition.parameters, name)].ptr());
    }
    if (check.test != nullptr) {
        check.test(values[1]);
        return;
    }
    const py::str method(check.method);
    own(entering([&] { return PyObject_VectorcallMethod(method.ptr(), values.data(), values.size(), nullptr); }));
}

// What refuses a value tells whose it is.
void append(const Field& field, Payload& data, const Object& value) {
    const auto named = [&](const std::string& text) { return field.argument + ": " + text; };
    try {
        field.append(data, value);
    } catch (const py::type_error& error) {
        throw py::type_error(named(error.what()));
    } catch (const py::value_error& error) {
        throw py::value_error(named(error.what()));
    } catch (const std::overflow_error& error) {
        throw std::overflow_error(named(error.what()));
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_TypeError)) throw;
        throw py::type_error(named(std::string(py::str(error.value()))));
    }
}

std::string textOf(const Field& field) {
    if (field.kind.empty()) return field.argument;
    return field.argument.empty() ? field.kind : field.kind + "(" + field.argument + ")";
}

Result exchangeSteps(const Definition& definition, Op op, std::vector<Object> arguments) {
    const Exchange& exchange = *definition.exchange;
    if (exchange.adapt != nullptr) exchange.adapt(op.self(), arguments);
    for (const Check& check : exchange.checks) run(check, definition, op.self(), arguments);
    Payload data;
    for (const Field& field : exchange.payload) {
        if (field.argument.empty()) {
            field.append(data, py::int_(field.number));
        } else {
            append(field, data, arguments[indexOf(definition.parameters, field.argument)]);
        }
    }
    const Object reply = co_await op.exchange(exchange.command, data.list());
    if (exchange.reply.cut) co_return exchange.reply.cut(op.self(), reply);
    const Bytes bytes = bytesOf(reply, "reply");
    co_return exchange.reply.decode(op.self(), bytes);
}

// The steps begin after the call has returned, so they keep the arguments.
Result runExchange(const Definition& definition, Op op, Arguments arguments) {
    return exchangeSteps(definition, std::move(op), {arguments, arguments + definition.parameters.size()});
}

}  // namespace

Object statusOf(ByteView reply, std::size_t place) { return checkedStatus(py::int_(byteOf(reply, place))); }

Object restOfSequence(const Object& sequence, Py_ssize_t from) {
    const Object part(py::slice(from, std::nullopt, std::nullopt));
    return own(entering([&] { return PyObject_GetItem(sequence.ptr(), part.ptr()); }));
}

Object itemOf(const Object& sequence, Py_ssize_t place) {
    const py::int_ index(place);
    return own(entering([&] { return PyObject_GetItem(sequence.ptr(), index.ptr()); }));
}

Reply status(std::size_t place) {
    return {[place](py::handle, const Bytes& data) { return statusOf(data, place); },
            {"int", "0, or the negative code of the device's refusal (-7000 to -7028)",
             "the device's status, byte " + std::to_string(place) + " of its reply"}};
}

Reply byteAt(std::size_t place, std::string doc) {
    return {[place](py::handle, const Bytes& data) -> Object { return py::int_(byteOf(data, place)); },
            {"int", std::move(doc), "the device, byte " + std::to_string(place) + " of its reply"}};
}

Reply textReply(std::string doc, std::size_t length, std::size_t from) {
    return {[length, from](py::handle, const Bytes& data) -> Object {
                const ByteView text = restOf(data, from);
                return python::textOf(text.first(std::min(length, text.size())));
            },
            {"str", std::move(doc), "the device"}};
}

Reply addressAt(std::size_t place) {
    return {[place](py::handle, const Bytes& data) -> Object { return addressText(restOf(data, place)); },
            {"str", "dotted address", "the device"}};
}

Reply byteList(std::string doc) {
    return {[](py::handle, const Bytes& data) -> Object { return toList(data); },
            {"list[int]", std::move(doc), "the device"}};
}

Reply bytesFrom(std::size_t place, std::string doc) {
    return {nullptr,
            {"bytes", std::move(doc), "the device, from byte " + std::to_string(place) + " of its reply on"},
            [place](py::handle, const Object& reply) { return restOfSequence(reply, static_cast<Py_ssize_t>(place)); }};
}

Reply kept(std::string field, Reply reply) {
    reply.returns.doc += "; also kept in `" + field + "`";
    return {[field = std::move(field), decode = reply.decode](py::handle self, const Bytes& data) {
                Object value = decode(self, data);
                py::setattr(self, field.c_str(), value);
                return value;
            },
            reply.returns};
}

std::string Exchange::commandName() const {
    return std::string(std::ranges::find(commandTable(), command, &CommandName::code)->name);
}

std::string Exchange::payloadText() const {
    std::string text;
    for (const Field& field : payload) text += (text.empty() ? "" : ", ") + textOf(field);
    return text;
}

Definition defineExchange(Row row) {
    Definition definition{
        std::move(row.name), std::move(row.parameters), std::move(row.summary), row.reply.returns, {}, runExchange, {}};
    for (const Check& check : row.checks) {
        definition.raises.push_back(check.test == nullptr
                                        ? "@" + check.method
                                        : "InputTypeNotCorrectError: `" + check.arguments[0] + "` has the wrong type");
    }
    definition.exchange = std::make_shared<Exchange>(
        Exchange{row.command, std::move(row.checks), std::move(row.payload), std::move(row.reply), row.adapt});
    return definition;
}

}  // namespace zvr::python
