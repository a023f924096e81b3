// What every file of the binding starts from: pybind11, and calls on Python objects by cached names.
#pragma once

#include <pybind11/pybind11.h>

#include <array>

#include "core/bytes.h"
#include "core/waiting.h"

namespace zvr::python {

namespace py = pybind11;
using Object = py::object;

/// Takes a new reference that a C call returned; throws the Python failure if there is none.
inline Object own(PyObject* result) {
    if (result == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<Object>(result);
}

inline Object borrow(PyObject* object) { return py::reinterpret_borrow<Object>(object); }

/// The interned string of a name, made once.
PyObject* interned(const char* name);
/// The same for the name of its awaitable twin.
PyObject* internedTwin(const char* name);

inline Object attribute(py::handle object, const char* name) {
    return own(PyObject_GetAttr(object.ptr(), interned(name)));
}

/// The attribute, or nothing if there is none of this name.
Object attributeOrNothing(py::handle object, const char* name);

inline void setAttribute(py::handle object, const char* name, py::handle value) {
    if (PyObject_SetAttr(object.ptr(), interned(name), value.ptr()) != 0) throw py::error_already_set();
}

template <class... Args>
Object callNamed(py::handle self, PyObject* name, const Args&... args) {
    PyObject* const call[] = {self.ptr(), py::handle(args).ptr()...};
    return own(PyObject_VectorcallMethod(name, call, sizeof...(Args) + 1, nullptr));
}

/// Calls a method by name with positional arguments.
template <class... Args>
Object callMethod(py::handle self, const char* name, const Args&... args) {
    return callNamed(self, interned(name), args...);
}

template <class... Args>
Object callObject(py::handle callable, const Args&... args) {
    PyObject* const call[] = {nullptr, py::handle(args).ptr()...};
    return own(
        PyObject_Vectorcall(callable.ptr(), call + 1, sizeof...(Args) | PY_VECTORCALL_ARGUMENTS_OFFSET, nullptr));
}

/// An object of a module of the host, imported once.
py::handle hostObject(const char* module, const char* name);

/// Lets other Python threads run for a scope.
class WithoutGil {
public:
    WithoutGil() : state_(PyEval_SaveThread()) {}
    ~WithoutGil() { PyEval_RestoreThread(state_); }
    WithoutGil(const WithoutGil&) = delete;
    WithoutGil& operator=(const WithoutGil&) = delete;

private:
    PyThreadState* state_;
};

/// Runs `wait` without the interpreter lock. On the main thread its Attend lets the host's signal handlers run, whose
/// failures (KeyboardInterrupt first of all) end the wait.
Attend attendSignals();

template <class Wait>
auto blocking(Wait&& wait) {
    const Attend attend = attendSignals();
    const WithoutGil released;
    return wait(attend);
}

/// Runs what must happen even if the step before it failed, and lets the failure through after it.
template <class Step, class Rest>
void thenAlways(Step step, Rest rest) {
    std::exception_ptr failure;
    try {
        step();
    } catch (...) {
        failure = std::current_exception();
    }
    rest();
    if (failure) std::rethrow_exception(failure);
}

/// Whether a thread of ours may still take the interpreter lock.
bool interpreterAlive();

/// Reports the exception that is being handled as one that nobody can be given.
void reportUnraisable() noexcept;

/// Runs `action` under the interpreter lock on a thread of the library; does nothing once the interpreter is going
/// away. A failure of `action` is reported as unraisable.
template <class Action>
void onInterpreter(Action&& action) noexcept {
    if (!interpreterAlive()) return;
    const py::gil_scoped_acquire acquired;
    try {
        action();
    } catch (...) {
        reportUnraisable();
    }
}

/// Called once, when the module is made and when the interpreter leaves.
void rememberMainThread();
void leaveInterpreter();

}  // namespace zvr::python
