#include "python/raising.h"

#include <netdb.h>

#include <asio/error.hpp>
#include <system_error>

#include "core/engine/never_destroyed.h"
#include "python/coroutine.h"
#include "python/log.h"
#include "transport/client.h"
#include "transport/usb_library.h"

namespace zvr::python {

namespace {

std::vector<Object>& failureClasses() {
    static auto& classes = neverDestroyed(std::vector<Object>(failureTable().size()));
    return classes;
}

void setError(py::handle type, py::handle value) { PyErr_SetObject(type.ptr(), value.ptr()); }
void setError(py::handle type, const char* text) { PyErr_SetString(type.ptr(), text); }

// The exception that is being handled, as a Python exception.
Object currentException() {
    raiseCurrent();
    return py::error_already_set().value();
}

// The cause of a nested failure, or the system's reason for a loss; null for others.
Object causeOf(const Failure& failure) {
    if (const auto* const loss = dynamic_cast<const LinkLoss*>(&failure); loss != nullptr && loss->why()) {
        try {
            throw std::system_error(*loss->why());
        } catch (...) {
            return currentException();
        }
    }
    const auto* const nested = dynamic_cast<const std::nested_exception*>(&failure);
    if (nested == nullptr || !nested->nested_ptr()) return {};
    try {
        nested->rethrow_nested();
    } catch (...) {
        return currentException();
    }
}

void raiseFailure(const Failure& failure) {
    const py::handle type = failureClass(failure.id());
    const Object raised = failure.message() ? callObject(type, py::str(*failure.message())) : callObject(type);
    addNotes(raised, failure.notes());
    if (Object cause = causeOf(failure)) PyException_SetCause(raised.ptr(), cause.release().ptr());
    setError(type, raised);
}

// The class for a reply that is too short: an IndexError that is also a struct.error.
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

// The error of a host name lookup, as getaddrinfo's error number.
std::optional<int> nameSearchError(const std::error_code& code) {
    if (code == asio::error::host_not_found) return EAI_NONAME;
    if (code == asio::error::host_not_found_try_again) return EAI_AGAIN;
    if (code == asio::error::no_recovery) return EAI_FAIL;
    if (code == asio::error::no_data) return EAI_NONAME;
    return std::nullopt;
}

// Python picks the subclass of OSError by the error number.
void raiseSystemError(py::handle type, const std::system_error& error) {
    const std::optional<int> unnamed = nameSearchError(error.code());
    const Object raised =
        unnamed ? callObject(pythonObject("socket", "gaierror"), py::int_(*unnamed), py::str(::gai_strerror(*unnamed)))
                : callObject(type, py::int_(error.code().value()), py::str(error.code().message()));
    setError(py::type::of(raised), raised);
}

}  // namespace

void raiseCurrent() noexcept {
    caught();
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
            // The C++ library's own texts contain its class names.
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

void addNote(py::handle error, const std::string& note) {
    if (attributeOrNothing(error, "add_note")) callMethod(error, "add_note", py::str(note));
}

void addNotes(py::handle error, std::span<const std::string> notes) {
    for (const std::string& note : notes) addNote(error, note);
}

std::string shown(py::handle value) {
    try {
        return py::str(callObject(pythonObject("reprlib", "repr"), value));
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_Exception)) throw;
        return std::string("a ") + Py_TYPE(value.ptr())->tp_name;
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
        logEvent(LogLevel::error, [&] {
            return "thread " + threadName + " has ended: " + std::string(py::str(raised.value().get_type())) + ": " +
                   std::string(py::str(raised.value()));
        });
        const Object thread = pythonObject("types", "SimpleNamespace")(py::arg("name") = threadName);
        const py::tuple fields =
            py::make_tuple(raised.type(), raised.value(), raised.trace() ? raised.trace() : Object(py::none()), thread);
        pythonObject("threading", "excepthook")(pythonObject("threading", "ExceptHookArgs")(fields));
    });
}

}  // namespace zvr::python
