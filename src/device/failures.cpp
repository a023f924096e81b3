#include "core/wire/failures.h"

#include "core/engine/threads.h"
#include "device/protocol.h"
#include "python/raising.h"
#include "python/values.h"

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
    setAttribute(type.type(), "code", py::int_(row.code));
    setAttribute(type.type(), "msg", py::str(row.message.data(), row.message.size()));
    setFailureClass(id, type.type());
    if (!row.constant.empty()) package.constant(row.constant.data(), row.code);
}

void say(const Object& text) { callObject(hostObject("builtins", "print"), text); }

// The innermost frame of Python on this thread; None where it runs none.
Object innermostFrame() {
    PyFrameObject* const frame = PyEval_GetFrame();
    return frame == nullptr ? Object(py::none()) : borrow(reinterpret_cast<PyObject*>(frame));
}

// Whether a frame runs a constructor of this object: a class that a user derives has one.
bool isConstructorOf(const Object& frame, py::handle self) {
    const Object code = attribute(frame, "f_code");
    if (!attribute(code, "co_name").equal(py::str("__init__"))) return false;
    const py::tuple names = attribute(code, "co_varnames");
    return !names.empty() && callMethod(attribute(frame, "f_locals"), "get", Object(names[0])).is(self);
}

// The stack of the line that makes the warning, and the warning itself, which names that line. A thread of the library
// runs no lines: it is told by its name.
void reportWarning(py::handle self) {
    Object frame = innermostFrame();
    int level = 1;
    for (; !frame.is_none() && isConstructorOf(frame, self); ++level) frame = attribute(frame, "f_back");
    if (frame.is_none()) {
        const std::string& name = currentThreadName();
        say(py::str("  On thread {!r}, which runs no Python\n").format(name.empty() ? "unknown" : name));
    } else {
        const Object stack = callObject(hostObject("traceback", "extract_stack"), frame);
        const Object lines = callObject(hostObject("traceback", "format_list"), stack);
        say(callMethod(py::str("\n"), "join", lines));
    }
    callObject(hostObject("warnings", "warn"), formatted("Warning {:d}: {}", self), py::handle(PyExc_UserWarning),
               py::int_(level));
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
                    if (!isTrue(silent)) reportWarning(self);
                })
        .method("__str__", {}, "Tells code and message.", {"str"}, {},
                [](py::handle self) -> Object { return formatted("Warning {:d}: {}", self); });
    for (std::size_t i = 0; i < failureTable().size(); ++i) defineFailure(package, FailureId(i));

    package.function("printGenericError", {{"err", "BaseException", "the failure"}},
                     "Prints the class and the text of a failure on one line.", {}, {},
                     [](py::handle, const Object& error) {
                         const Object name = attribute(py::type::of(error), "__name__");
                         say(py::str("{}:{}").format(name, py::str(error)));
                     });
    package.function("checkFirmwareError", {{"error_code", "int", "status byte of a device's reply"}},
                     "Raises the failure that a status byte stands for.", {},
                     {"Error: the class of the status; FirmwareOtherError for an unknown one"},
                     [](py::handle, const Object& status) {
                         int overflow = 0;
                         const Object number = integerOf(status, "error_code");
                         const long value = PyLong_AsLongAndOverflow(number.ptr(), &overflow);
                         const bool isByte = overflow == 0 && value >= 0 && value <= 255;
                         if (const auto refusal = failureOfStatus(isByte ? static_cast<int>(value) : -1)) {
                             throw Failure(*refusal);
                         }
                     });
}

}  // namespace zvr::python
