#include "core/failures.h"

#include "protocol/protocol.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

const Parameter anyMore{"*args", "object", "ignored"};
const Parameter anyNamed{"**kwargs", "object", ""};

std::string quoted(std::string_view message) { return py::cast<std::string>(py::repr(py::str(message.data()))); }

py::str formatted(const char* format, py::handle self) {
    return py::str(format).format(attribute(self, "code"), attribute(self, "msg"));
}

// Every other failure class: the code is the class's, the message may be the caller's.
void defineFailure(Package& package, FailureId id) {
    const FailureRow& row = rowOf(id);
    const std::string name(row.name);
    ClassMaker type = package.makeClass(name, {std::string(row.base)},
                                        std::string(row.message) + "\n\nIts code is " + std::to_string(row.code) + ".");
    const Parameter message{"msg", "str", "text instead of the default", quoted(row.message)};
    Parameters parameters{message, anyMore, anyNamed};
    if (row.base == "ZVRWarning") {
        parameters.back().doc = "silent=True makes the construction report nothing";
    }
    Definition definition{
        "__init__",
        parameters,
        "Takes a message.",
        {},
        {},
        [](const Definition& self, py::handle object, Arguments given) -> Object {
            const FailureId id{static_cast<int>(self.tag)};
            const Object base =
                borrow(reinterpret_cast<PyObject*>(reinterpret_cast<PyTypeObject*>(failureClass(id).ptr())->tp_base));
            py::tuple head = py::make_tuple(object, rowOf(id).code, given[0]);
            attribute(base, "__init__")(*head, *py::tuple(given[1]), **py::dict(given[2]));
            return py::none();
        }};
    definition.tag = static_cast<std::size_t>(id);
    type.add(std::move(definition), Form::method);
    setFailureClass(id, type.type());
    if (!row.constant.empty()) package.constant(row.constant.data(), row.code);
}

void reportWarning(py::handle self) {
    const py::list trace = hostObject("traceback", "format_list")(hostObject("traceback", "extract_stack")());
    py::print(py::str("\n").attr("join")(trace));
    hostObject("warnings", "warn")(formatted("Warning {:d}: {}", self), borrow(PyExc_UserWarning), 2);
}

}  // namespace

void defineFailures(Package& package) {
    const Parameter code{"code", "int", "number of the failure"};
    const Parameter message{"msg", "str", "what happened"};
    package.makeClass("Error", {"Exception"}, "Root of the library's errors.")
        .field({"code", "int", "number of the failure, fixed by the class"})
        .field({"msg", "str", "what happened"})
        .method("__init__", {code, message, anyMore, anyNamed}, "Takes a code and a message.", {}, {},
                [](py::handle self, const Object& code, const Object& message, const Object&, const Object&) {
                    setAttribute(self, "code", code);
                    setAttribute(self, "msg", message);
                })
        .method("__str__", {}, "Tells code and message.", {"str"}, {},
                [](py::handle self) -> Object { return formatted("Error {:d}: {}", self); });
    package
        .makeClass("ZVRWarning", {"UserWarning"},
                   "Root of the library's warnings. Constructing one prints the call stack and warns.")
        .field({"code", "int", "number of the warning, fixed by the class"})
        .field({"msg", "str", "what happened"})
        .method("__init__",
                {code, message, anyMore, {"**kwargs", "object", "silent=True makes the construction report nothing"}},
                "Takes a code and a message, and reports them.", {}, {},
                [](py::handle self, const Object& code, const Object& message, const Object&, const Object& named) {
                    setAttribute(self, "code", code);
                    setAttribute(self, "msg", message);
                    const Object silent = py::dict(named).attr("get")("silent", false);
                    if (PyObject_IsTrue(silent.ptr()) == 0) reportWarning(self);
                })
        .method("__str__", {}, "Tells code and message.", {"str"}, {},
                [](py::handle self) -> Object { return formatted("Warning {:d}: {}", self); });
    for (std::size_t i = 0; i < failureTable().size(); ++i) defineFailure(package, FailureId(i));

    package.function("printGenericError", {{"err", "BaseException", "the failure"}},
                     "Prints the class and the text of a failure on one line.", {}, {},
                     [](py::handle, const Object& error) {
                         py::print(py::str("{}:{}").format(attribute(py::type::of(error), "__name__"), py::str(error)));
                     });
    package.function("checkFirmwareError", {{"error_code", "int", "status byte of a device's reply"}},
                     "Raises the failure that a status byte stands for.", {},
                     {"Error: the class of the status; FirmwareOtherError for an unknown one"},
                     [](py::handle, const Object& status) {
                         if (const auto refusal = failureOfStatus(py::cast<int>(status))) throw Failure(*refusal);
                     });
}

}  // namespace zvr::python
