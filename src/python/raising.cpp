#include "python/raising.h"

#include <system_error>

#include "core/engine/never_destroyed.h"
#include "python/coroutine.h"
#include "transport/usb_library.h"

namespace zvr::python {

namespace {

std::vector<Object>& failureClasses() {
    static auto& classes = neverDestroyed(std::vector<Object>(failureTable().size()));
    return classes;
}

void setError(py::handle type, py::handle value) { PyErr_SetObject(type.ptr(), value.ptr()); }
void setError(py::handle type, const char* text) { PyErr_SetString(type.ptr(), text); }

void raiseFailure(const Failure& failure) {
    const py::handle type = failureClass(failure.id());
    setError(type, failure.message() ? callObject(type, py::str(*failure.message())) : callObject(type));
}

// A reply that ends too early is an IndexError, and where it is unpacked a struct.error as well.
py::handle shortReply() {
    static auto& made = neverDestroyed<Object>();
    if (!made) {
        const py::tuple bases = py::make_tuple(borrow(PyExc_IndexError), pythonObject("struct", "error"));
        py::dict body;
        body["__module__"] = "pyzvr";
        made = callObject(borrow(reinterpret_cast<PyObject*>(&PyType_Type)), py::str("ShortReplyError"), bases, body);
    }
    return made;
}

// Of OSError itself the host picks the subclass by the number.
void raiseSystemError(py::handle type, const std::system_error& error) {
    const Object raised = callObject(type, py::int_(error.code().value()), py::str(error.code().message()));
    setError(py::type::of(raised), raised);
}

}  // namespace

void raiseCurrent() noexcept {
    try {
        try {
            throw;
        } catch (py::error_already_set& error) {
            error.restore();
        } catch (const py::cast_error&) {
            setError(PyExc_TypeError, "an argument or a field has a wrong type");
        } catch (const py::builtin_exception& error) {
            error.set_error();
        } catch (const Failure& failure) {
            raiseFailure(failure);
        } catch (const AwaitTimedOut&) {
            PyErr_SetNone(pythonObject("asyncio", "TimeoutError").ptr());
        } catch (const UsbError& error) {
            raiseSystemError(packageObject(error.timedOut() ? "USBTimeoutError" : "USBError"), error);
        } catch (const std::system_error& error) {
            raiseSystemError(PyExc_OSError, error);
        } catch (const TooShort& error) {
            setError(shortReply(), error.what());
        } catch (const WrongLength& error) {
            setError(pythonObject("struct", "error"), error.what());
        } catch (const std::overflow_error& error) {
            setError(PyExc_OverflowError, error.what());
        } catch (const std::out_of_range& error) {
            // The C++ library's own texts name its classes.
            const bool ours = std::string_view(error.what()).find("::") == std::string_view::npos;
            setError(PyExc_IndexError, ours ? error.what() : "an index is out of range");
        } catch (const std::invalid_argument& error) {
            setError(PyExc_ValueError, error.what());
        } catch (const std::bad_alloc&) {
            PyErr_NoMemory();
        } catch (const std::exception& error) {
            setError(PyExc_RuntimeError, error.what());
        }
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (...) {
        setError(PyExc_RuntimeError, "an unknown error");
    }
}

void reportUnraisable() noexcept {
    raiseCurrent();
    PyErr_WriteUnraisable(Py_None);
}

void prepareRaising() {
    py::register_local_exception_translator([](std::exception_ptr error) {
        try {
            std::rethrow_exception(std::move(error));
        } catch (...) {
            raiseCurrent();
        }
    });
}

py::handle failureClass(FailureId id) { return failureClasses()[static_cast<std::size_t>(id)]; }

void setFailureClass(FailureId id, Object failureClass) {
    failureClasses()[static_cast<std::size_t>(id)] = std::move(failureClass);
}

bool isFailure(const py::error_already_set& error, FailureId id) { return error.matches(failureClass(id)); }

void reportThreadFailure(const std::string& threadName, std::exception_ptr error) noexcept {
    onInterpreter([&] {
        try {
            std::rethrow_exception(error);
        } catch (...) {
            raiseCurrent();
        }
        const py::error_already_set raised;
        const Object thread = pythonObject("types", "SimpleNamespace")(py::arg("name") = threadName);
        const py::tuple fields =
            py::make_tuple(raised.type(), raised.value(), raised.trace() ? raised.trace() : Object(py::none()), thread);
        pythonObject("threading", "excepthook")(pythonObject("threading", "ExceptHookArgs")(fields));
    });
}

}  // namespace zvr::python
