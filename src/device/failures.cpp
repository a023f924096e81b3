#include "core/wire/failures.h"

#include "core/engine/threads.h"
#include "device/protocol.h"
#include "python/log.h"
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

PyTypeObject* asType(py::handle type) { return reinterpret_cast<PyTypeObject*>(type.ptr()); }

// OSError interprets its arguments as error number, text and file name. A failure's arguments must be kept unchanged,
// as in other exceptions.
PyObject* makeSystemFailure(PyObject* /*self*/, PyObject* arguments, PyObject* /*named*/) {
    try {
        const Object type = borrow(PyTuple_GetItem(arguments, 0));
        if (!type) throw py::error_already_set();
        Object made = callMethod(borrow(PyExc_OSError), "__new__", type);
        setAttribute(made, "args", own(PyTuple_GetSlice(arguments, 1, PyTuple_GET_SIZE(arguments))));
        return made.release().ptr();
    } catch (...) {
        raiseCurrent();
        return nullptr;
    }
}

PyMethodDef newSystemFailure{"__new__", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(makeSystemFailure)),
                             METH_VARARGS | METH_KEYWORDS, "Makes the exception, without its message."};

// Returns a result unless it is a negative integer, whose failure is raised.
Object checkedResult(const Object& result) {
    if (PyLong_Check(result.ptr()) == 0) return result;
    int beyond = 0;
    const long code = PyLong_AsLongAndOverflow(result.ptr(), &beyond);
    if (beyond > 0 || (beyond == 0 && code >= 0)) return result;
    const bool isCode = beyond == 0 && code >= std::numeric_limits<int>::min();
    const auto failure = isCode ? failureOfCode(static_cast<int>(code)) : std::nullopt;
    const py::handle type = failure ? failureClass(*failure) : py::handle();
    if (!failure) {
        const Object root = packageObject("Error");
        PyErr_SetObject(root.ptr(), callObject(root, result, py::str("No failure has this code.")).ptr());
    } else {
        const py::dict silent(py::arg("silent") = true);
        PyErr_SetObject(type.ptr(), type(**silent).ptr());
    }
    throw py::error_already_set();
}

// Every other failure class: the class fixes the code, the caller may set the message.
void defineFailure(Package& package, FailureId id) {
    const FailureRow& row = rowOf(id);
    const std::string name(row.name);
    std::vector<std::string> bases{std::string(row.base)};
    if (!row.hostBase.empty()) bases.emplace_back(row.hostBase);
    const std::string doc = std::string(row.message) + "\n\nIts code is " + std::to_string(row.code) + ".";
    // For a class with its own __new__, Python reads the signature from this first line of the docstring.
    ClassMaker type =
        package.makeClass(name, bases, name + "(msg=" + quoted(row.message) + ", *args, **kwargs)\n--\n\n" + doc);
    setAttribute(type.type(), "__doc__", py::str(doc));
    if (PyType_IsSubtype(asType(type.type()), asType(PyExc_OSError)) != 0) {
        setAttribute(type.type(), "__new__", own(PyCFunction_New(&newSystemFailure, nullptr)));
    }
    const Parameter message{"msg", "str", "text instead of the default", quoted(row.message)};
    Parameters parameters{message, anyMore, anyNamed};
    if (row.base == "ZVRWarning") {
        parameters.back().doc = "silent=True makes the construction report nothing";
    }
    type.method({.name = "__init__",
                 .parameters = parameters,
                 .doc = "Sets the message.",
                 .body = [id](py::handle self, const Object& message, const Object& more, const Object& named) {
                     const Object base = borrow(PyTuple_GET_ITEM(asType(failureClass(id))->tp_bases, 0));
                     py::tuple head = py::make_tuple(self, rowOf(id).code, message);
                     attribute(base, "__init__")(*head, *py::tuple(more), **py::dict(named));
                 }});
    setAttribute(type.type(), "code", py::int_(row.code));
    setAttribute(type.type(), "msg", py::str(row.message.data(), row.message.size()));
    setFailureClass(id, type.type());
    if (!row.constant.empty()) package.constant(row.constant.data(), row.code);
}

void say(const Object& text) { callObject(pythonObject("builtins", "print"), text); }

// The innermost Python frame of this thread; None if it runs no Python.
Object innermostFrame() {
    PyFrameObject* const frame = PyEval_GetFrame();
    return frame == nullptr ? Object(py::none()) : borrow(reinterpret_cast<PyObject*>(frame));
}

// Whether a frame runs a constructor of this object, such as that of a user's subclass.
bool isConstructorOf(const Object& frame, py::handle self) {
    const Object code = attribute(frame, "f_code");
    if (!attribute(code, "co_name").equal(py::str("__init__"))) return false;
    const py::tuple names = attribute(code, "co_varnames");
    return !names.empty() && callMethod(attribute(frame, "f_locals"), "get", Object(names[0])).is(self);
}

// Prints the stack of the line that constructs the warning and issues the warning for that line. A thread of the
// library runs no Python, so its name is printed instead.
void reportWarning(py::handle self) {
    logEvent(LogLevel::warning, [&] { return std::string(py::str(self)); });
    Object frame = innermostFrame();
    int level = 1;
    for (; !frame.is_none() && isConstructorOf(frame, self); ++level) frame = attribute(frame, "f_back");
    if (frame.is_none()) {
        const std::string& name = currentThreadName();
        say(py::str("  On thread {!r}, which runs no Python\n").format(name.empty() ? "unknown" : name));
    } else {
        const Object stack = callObject(pythonObject("traceback", "extract_stack"), frame);
        const Object lines = callObject(pythonObject("traceback", "format_list"), stack);
        say(callMethod(py::str("\n"), "join", lines));
    }
    callObject(pythonObject("warnings", "warn"), formatted("Warning {:d}: {}", self), py::handle(PyExc_UserWarning),
               py::int_(level));
}

}  // namespace

void defineFailures(Package& package) {
    const Parameter code{"code", "int", "number of the error or warning"};
    const Parameter message{"msg", "str", "what happened"};
    package.makeClass("Error", {"Exception"}, "Root of the library's errors.")
        .field({"code", "int", "number of the error or warning, fixed by the class"})
        .field({"msg", "str", "what happened"})
        .method({.name = "__init__",
                 .parameters = {code, message, anyMore, anyNamed},
                 .doc = "Sets a code and a message.",
                 .body =
                     [](py::handle self, const Object& code, const Object& message, const Object&, const Object&) {
                         setAttribute(self, "code", code);
                         setAttribute(self, "msg", message);
                     }})
        .method({.name = "__str__",
                 .doc = "Returns code and message as text.",
                 .returns = {"str"},
                 .body = [](py::handle self) -> Object { return formatted("Error {:d}: {}", self); }});
    package
        .makeClass("ZVRWarning", {"UserWarning"},
                   "Root of the library's warnings. Constructing one prints the call stack and warns.")
        .field({"code", "int", "number of the warning, fixed by the class"})
        .field({"msg", "str", "what happened"})
        .method(
            {.name = "__init__",
             .parameters =
                 {code, message, anyMore, {"**kwargs", "object", "silent=True makes the construction report nothing"}},
             .doc = "Sets a code and a message, and reports them.",
             .body =
                 [](py::handle self, const Object& code, const Object& message, const Object&, const Object& named) {
                     setAttribute(self, "code", code);
                     setAttribute(self, "msg", message);
                     const Object silent = py::dict(named).attr("get")("silent", false);
                     if (!isTrue(silent)) reportWarning(self);
                 }})
        .method({.name = "__str__",
                 .doc = "Returns code and message as text.",
                 .returns = {"str"},
                 .body = [](py::handle self) -> Object { return formatted("Warning {:d}: {}", self); }});
    for (std::size_t i = 0; i < failureTable().size(); ++i) defineFailure(package, FailureId(i));

    package.function({.name = "printGenericError",
                      .parameters = {{"err", "BaseException", "the error or warning"}},
                      .doc = "Prints the class and the text of an error or warning on one line.",
                      .body = [](py::handle, const Object& error) {
                          const Object name = attribute(py::type::of(error), "__name__");
                          say(py::str("{}:{}").format(name, py::str(error)));
                      }});
    package.function({.name = "check",
                      .parameters = {{"result", "Any", "what an operation returned"}},
                      .doc = "Raises the failure that a negative code stands for; anything else is returned as it is. "
                             "Items of lists and tuples are not checked, since they may be readings.",
                      .returns = {"Any", "`result`"},
                      .raises = {"Error: the class of the code; Error itself for an unknown code",
                                 "ZVRWarning: the class of a code of the motion functions"},
                      .body = [](py::handle, const Object& result) { return checkedResult(result); }});
    package.function({.name = "checkFirmwareError",
                      .parameters = {{"error_code", "int", "status byte of a device's reply"}},
                      .doc = "Raises the error that a status byte stands for.",
                      .raises = {"Error: the class of the status; FirmwareOtherError for an unknown one"},
                      .body = [](py::handle, const Object& status) {
                          int overflow = 0;
                          const Object number = integerOf(status, "error_code");
                          const long value = PyLong_AsLongAndOverflow(number.ptr(), &overflow);
                          const bool isByte = overflow == 0 && value >= 0 && value <= 255;
                          if (const auto refusal = failureOfStatus(isByte ? static_cast<int>(value) : -1)) {
                              throw Failure(*refusal);
                          }
                      }});
}

}  // namespace zvr::python
