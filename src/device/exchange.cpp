#include "device/exchange.h"

#include <algorithm>

#include "core/wire/failures.h"
#include "device/runtime.h"
#include "python/log.h"

namespace zvr::python {

namespace {

// A request with the indices of its arguments.
struct Plan {
    struct CheckStep {
        Object method;  // its name; null if a function checks
        void (*test)(py::handle value, const char* name);
        std::string name;  // of the argument that it checks
        std::vector<std::size_t> arguments;
    };
    struct FieldStep {
        Field field;
        std::size_t argument;
    };
    SentCommand command;
    std::vector<CheckStep> checks;
    std::vector<FieldStep> fields;
    Reply reply;
    Adapt adapt;
};

std::size_t indexOf(const Parameters& parameters, const std::string& name) {
    const auto found = std::ranges::find(parameters, name, &Parameter::name);
    if (found == parameters.end()) throw std::logic_error("no parameter is called " + name);
    return static_cast<std::size_t>(found - parameters.begin());
}

void run(const Plan::CheckStep& check, py::handle self, const std::vector<Object>& arguments) {
    if (check.test != nullptr) {
        check.test(arguments[check.arguments[0]], check.name.c_str());
        return;
    }
    std::vector<PyObject*> values{self.ptr()};
    for (const std::size_t place : check.arguments) values.push_back(arguments[place].ptr());
    own(entering([&] { return PyObject_VectorcallMethod(check.method.ptr(), values.data(), values.size(), nullptr); }));
}

// Errors name the argument that has the wrong value.
void append(const Field& field, Payload& data, const Object& value) {
    const auto named = [&](const std::string& text) {
        const std::string name = field.parameter.name + ": ";
        return text.starts_with(name) ? text : name + text;
    };
    try {
        field.append(data, value, field.number);
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

// The steps begin after the call has returned, so they own the arguments; the plan has static lifetime.
Task run(const Plan& plan, Op op, std::vector<Object> arguments) {
    if (plan.adapt != nullptr) plan.adapt(op.self(), arguments);
    for (const Plan::CheckStep& check : plan.checks) run(check, op.self(), arguments);
    Payload data;
    for (const auto& [field, argument] : plan.fields) {
        if (field.parameter.name.empty()) {
            field.append(data, {}, field.number);
        } else {
            append(field, data, arguments[argument]);
        }
    }
    const Object reply = co_await exchange(op, plan.command.code, data.list());
    if (plan.reply.whole) co_return plan.reply.whole(op, plan.command, reply);
    const Bytes bytes = bytesOf(reply, "reply");
    co_return plan.reply.decode(op.self(), bytes);
}

std::string textOf(const Field& field) {
    const std::string& name = field.parameter.name;
    if (field.kind.empty()) return name;
    return name.empty() ? field.kind : field.kind + "(" + name + ")";
}

std::string textOf(const std::vector<Field>& fields) {
    std::string text;
    for (const Field& field : fields) text += (text.empty() ? "" : ", ") + textOf(field);
    return text;
}

std::string nameOf(const SentCommand& command) {
    if (!command.name.empty()) return std::string(command.name);
    return std::string(nameOfCommand(command.code));
}

Parameters parametersOf(const std::vector<Field>& fields) {
    Parameters parameters;
    for (const Field& field : fields) {
        const std::string& name = field.parameter.name;
        if (name.empty() || std::ranges::find(parameters, name, &Parameter::name) != parameters.end()) continue;
        parameters.push_back(field.parameter);
    }
    return parameters;
}

}  // namespace

Object statusOf(const Op& op, const SentCommand& command, const Object& reply, std::size_t place) {
    const int status = byteOf(bytesOf(reply, "reply"), place);
    const Object refusal = refusalOf(py::int_(status));
    if (!refusal) return py::int_(status);
    logOf(op.self(), LogLevel::info, [&] {
        const FailureRow& told = rowOf(failureOfStatus(status).value_or(FailureId::FirmwareOtherError));
        return nameOf(command) + " is refused: Error " + std::string(py::str(refusal)) + ": " +
               std::string(told.message);
    });
    return refusal;
}

Object restOfSequence(const Object& sequence, Py_ssize_t from) {
    const Object part(py::slice(from, std::nullopt, std::nullopt));
    return own(PyObject_GetItem(sequence.ptr(), part.ptr()));
}

Object itemOf(const Object& sequence, Py_ssize_t place) {
    return own(PyObject_GetItem(sequence.ptr(), py::int_(place).ptr()));
}

Reply status(std::size_t place) {
    return {nullptr,
            {"int", "0, or the negative code of the device's refusal (-7000 to -7028)",
             "the device's status, byte " + std::to_string(place) + " of its reply"},
            [place](const Op& op, const SentCommand& command, const Object& reply) {
                return statusOf(op, command, reply, place);
            }};
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
            [place](const Op&, const SentCommand&, const Object& reply) {
                return restOfSequence(reply, static_cast<Py_ssize_t>(place));
            }};
}

Reply kept(std::string field, Reply reply) {
    reply.returns.doc += "; also kept in `" + field + "`";
    return {[field = std::move(field), decode = reply.decode](py::handle self, const Bytes& data) {
                Object value = decode(self, data);
                setAttribute(self, field.c_str(), value);
                return value;
            },
            reply.returns};
}

Field constant(int value, const std::string& name) {
    const std::string digits = std::to_string(value);
    return {{},
            name.empty() ? digits : name + " (" + digits + ")",
            [](Payload& data, py::handle, int number) { data.add(number); },
            value};
}

Field constantWord(int value) {
    return {{},
            "u16(" + std::to_string(value) + ")",
            [](Payload& data, py::handle, int number) { data.add(u16(number)); },
            value};
}

Definition accepting(std::string name, Parameter parameter, FailureId failure, std::vector<int> accepted) {
    std::string values;
    for (std::size_t i = 0; i < accepted.size(); ++i) {
        values += (i == 0 ? "" : i + 1 == accepted.size() ? " or " : ", ") + std::to_string(accepted[i]);
    }
    const std::string error(rowOf(failure).name), argument = "`" + parameter.name + "`";
    return {.name = std::move(name),
            .parameters = {std::move(parameter)},
            .doc = "Raises " + error + " unless " + argument + " is " + values + ".",
            .raises = {"InputTypeNotCorrectError: " + argument + " is not an integer",
                       error + ": " + argument + " is not " + values},
            .body = [failure, accepted = std::move(accepted)](py::handle, const Object& value) {
                checkIsInt(value);
                if (!isOneOf(value, accepted)) throw Failure(failure);
            }};
}

Check check(void (*test)(py::handle value, const char* name), const Parameter& parameter) {
    return {{}, test, {parameter.name}, {"InputTypeNotCorrectError: `" + parameter.name + "` has the wrong type"}};
}
Check isInt(const Parameter& parameter) { return check(checkIsInt, parameter); }
Check isNumber(const Parameter& parameter) { return check(checkIsNumber, parameter); }
Check isList(const Parameter& parameter) { return check(checkIsList, parameter); }
Check isText(const Parameter& parameter) { return check(checkIsText, parameter); }

Request::operator Definition() const {
    Definition definition{.name = name,
                          .parameters = parameters.empty() ? parametersOf(fields) : parameters,
                          .doc = doc,
                          .returns = reply.returns,
                          .request = RequestText{nameOf(sends), textOf(fields)}};
    auto plan = std::make_shared<Plan>(Plan{sends, {}, {}, reply, adapt});
    for (const Check& check : checks) {
        definition.raises.add({check.raises});
        Plan::CheckStep step{check.test == nullptr ? Object(py::str(check.method)) : Object(),
                             check.test,
                             check.arguments.empty() ? std::string() : check.arguments[0],
                             {}};
        for (const std::string& argument : check.arguments) {
            step.arguments.push_back(indexOf(definition.parameters, argument));
        }
        plan->checks.push_back(std::move(step));
    }
    for (const Field& field : fields) {
        const std::string& argument = field.parameter.name;
        plan->fields.push_back({field, argument.empty() ? 0 : indexOf(definition.parameters, argument)});
    }
    definition.body = [plan](const Definition& kept, Op op, Arguments arguments) -> Task {
        return run(*plan, std::move(op), {arguments, arguments + kept.parameters.size()});
    };
    return definition;
}

}  // namespace zvr::python
