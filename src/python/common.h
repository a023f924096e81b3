// The base of every file of the binding: pybind11, and calls on Python objects by cached names.
#pragma once

#include <pybind11/pybind11.h>

#include <array>

#include "core/engine/waiting.h"
#include "core/wire/bytes.h"

namespace zvr::python {

namespace py = pybind11;
using Object = py::object;

/// Parks the calling thread forever during interpreter shutdown. It must hold no lock of the engine.
[[noreturn]] void parkThread() noexcept;

/// Parks the thread if it is unwound. It is a destructor because a handler would terminate the program where another
/// exception is being handled.
class UnwindStop {
public:
    UnwindStop() = default;
    ~UnwindStop() {
        if (!passed_) parkThread();
    }
    UnwindStop(const UnwindStop&) = delete;
    UnwindStop& operator=(const UnwindStop&) = delete;
    void pass() noexcept { passed_ = true; }

private:
    bool passed_ = false;
};

/// Makes a call of Python's C interface, which throws no C++ exception, that may run Python code. During finalization
/// CPython unwinds threads that request the GIL; no destructor above this call may run without it, so such threads are
/// parked here.
template <class Call>
auto entering(Call&& call) {
    UnwindStop stop;
    auto result = call();
    stop.pass();
    return result;
}

/// The C++ exception that a `catch (...)` has caught. Parks a thread that CPython unwinds, which carries none; it gets
/// this far from calls that are not made by `entering`.
inline std::exception_ptr caught() noexcept {
    std::exception_ptr error = std::current_exception();
    if (!error) parkThread();
    return error;
}

/// Takes a new reference that a C call returned; throws the Python error if there is none.
inline Object own(PyObject* result) {
    if (result == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<Object>(result);
}

inline Object borrow(PyObject* object) { return py::reinterpret_borrow<Object>(object); }

/// The interned string of a name, made once.
PyObject* interned(const char* name);
/// The same for the name of the async variant.
PyObject* internedAsyncName(const char* name);

inline Object attribute(py::handle object, const char* name) {
    PyObject* const text = interned(name);
    return own(entering([&] { return PyObject_GetAttr(object.ptr(), text); }));
}

/// The attribute, or nothing if there is none of this name.
Object attributeOrNothing(py::handle object, const char* name);

inline void setAttribute(py::handle object, const char* name, py::handle value) {
    PyObject* const text = interned(name);
    if (entering([&] { return PyObject_SetAttr(object.ptr(), text, value.ptr()); }) != 0) {
        throw py::error_already_set();
    }
}

template <class... Args>
Object callNamed(py::handle self, PyObject* name, const Args&... args) {
    PyObject* const call[] = {self.ptr(), py::handle(args).ptr()...};
    return own(entering([&] { return PyObject_VectorcallMethod(name, call, sizeof...(Args) + 1, nullptr); }));
}

/// The same with the last argument passed by keyword; `keyword` is a tuple of its name.
template <class... Args>
Object callNamedBy(PyObject* keyword, py::handle self, PyObject* name, const Args&... args) {
    PyObject* const call[] = {self.ptr(), py::handle(args).ptr()...};
    return own(entering([&] { return PyObject_VectorcallMethod(name, call, sizeof...(Args), keyword); }));
}

/// Calls a method by name with positional arguments.
template <class... Args>
Object callMethod(py::handle self, const char* name, const Args&... args) {
    return callNamed(self, interned(name), args...);
}

template <class... Args>
Object callObject(py::handle callable, const Args&... args) {
    PyObject* const call[] = {nullptr, py::handle(args).ptr()...};
    return own(entering([&] {
        return PyObject_Vectorcall(callable.ptr(), call + 1, sizeof...(Args) | PY_VECTORCALL_ARGUMENTS_OFFSET, nullptr);
    }));
}

/// What a Python module currently holds under this name. Not cached, since users may replace it at any time.
Object pythonObject(const char* module, const char* name);
/// The same for the package itself.
inline Object packageObject(const char* name) { return pythonObject("pyzvr", name); }

/// The attributes of an object itself.
inline py::dict dictionaryOf(py::handle object) { return own(PyObject_GenericGetDict(object.ptr(), nullptr)); }

/// Calls the current built-in `print`.
inline void printLine(py::handle text) { callObject(pythonObject("builtins", "print"), text); }

/// Lets other Python threads run for a scope.
class WithoutGil {
public:
    WithoutGil() : state_(PyEval_SaveThread()) {}
    ~WithoutGil();
    WithoutGil(const WithoutGil&) = delete;
    WithoutGil& operator=(const WithoutGil&) = delete;

private:
    PyThreadState* state_;
};

/// Takes the interpreter lock for a scope, on any thread. During finalization only the finalizing thread gets the lock;
/// every other thread is parked.
class WithGil {
public:
    WithGil();
    ~WithGil() { PyGILState_Release(state_); }
    WithGil(const WithGil&) = delete;
    WithGil& operator=(const WithGil&) = delete;

private:
    PyGILState_STATE state_;
};

/// Runs `wait` without the interpreter lock. On the main thread its InterruptCheck runs Python's signal handlers, whose
/// exceptions (mainly KeyboardInterrupt) end the wait.
InterruptCheck signalCheck();

template <class Wait>
auto blocking(Wait&& wait) {
    const InterruptCheck onWait = signalCheck();
    const WithoutGil released;
    return wait(onWait);
}

/// Runs `rest` even if `step` throws, then rethrows that exception.
template <class Step, class Rest>
void thenAlways(Step step, Rest rest) {
    std::exception_ptr error;
    try {
        step();
    } catch (...) {
        error = caught();
    }
    rest();
    if (error) std::rethrow_exception(error);
}

/// Whether this thread may still take the interpreter lock.
bool interpreterAlive();

/// Reports the exception that is being handled as unraisable.
void reportUnraisable() noexcept;

/// Runs `action` under the interpreter lock on a thread of the library; does nothing during finalization. An exception
/// of `action` is reported as unraisable.
template <class Action>
void onInterpreter(Action&& action) noexcept {
    if (!interpreterAlive()) return;
    const WithGil acquired;
    try {
        action();
    } catch (...) {
        reportUnraisable();
    }
}

/// Called when the module is made, and in a forked child.
void rememberMainThread(unsigned long thread);
/// Called once, when finalization begins: from now on no other thread takes the lock through these classes.
void leaveInterpreter();

/// A Python object that C++ threads may hold and drop without the interpreter lock.
using SharedObject = std::shared_ptr<PyObject>;
SharedObject shared(py::handle object);

}  // namespace zvr::python
