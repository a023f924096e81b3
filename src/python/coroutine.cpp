#include "python/coroutine.h"

#include <structmember.h>

#include "python/raising.h"

namespace zvr::python {

namespace {

struct CoroutineObject {
    PyObject_HEAD Task* steps;  // null once they have finished
    PyObject* name;
    PyObject* qualifiedName;
    PyObject* weakReferences;
    bool started;
    bool running;
};

PyTypeObject coroutineType{};

CoroutineObject* cast(PyObject* object) { return reinterpret_cast<CoroutineObject*>(object); }

Task::promise_type& promiseOf(CoroutineObject* self) { return self->steps->handle().promise(); }

void finish(CoroutineObject* self) {
    const std::unique_ptr<Task> steps(std::exchange(self->steps, nullptr));
    self->running = false;
}

PySendResult advance(CoroutineObject* self, PyObject* value, PyObject** result);

// Raises the current failure inside the awaited iterator.
PySendResult throwInto(py::handle awaited, PyObject** result) {
    if (Py_TYPE(awaited.ptr()) == &coroutineType) return advance(cast(awaited.ptr()), nullptr, result);
    py::error_already_set error;
    const bool closing = error.matches(PyExc_GeneratorExit);
    const Object method = attributeOrNothing(awaited, closing ? "close" : "throw");
    if (!method || closing) {
        if (method) callObject(method);
        error.restore();
        return PYGEN_ERROR;
    }
    if (error.trace()) PyException_SetTraceback(error.value().ptr(), error.trace().ptr());
    *result = entering([&] { return PyObject_CallOneArg(method.ptr(), error.value().ptr()); });
    if (*result != nullptr) return PYGEN_NEXT;
    if (!PyErr_ExceptionMatches(PyExc_StopIteration)) return PYGEN_ERROR;
    const py::error_already_set stop;
    *result = attribute(stop.value(), "value").release().ptr();
    return PYGEN_RETURN;
}

PySendResult failed() {
    if (PyErr_ExceptionMatches(PyExc_StopIteration)) {
        py::error_already_set stop;
        py::raise_from(stop, PyExc_RuntimeError, "coroutine raised StopIteration");
    }
    return PYGEN_ERROR;
}

// Runs the steps until they await a Python object or finish. A null `value` raises the current exception where they are
// suspended.
PySendResult advance(CoroutineObject* self, PyObject* value, PyObject** result) {
    *result = nullptr;
    if (self->running) {
        PyErr_SetString(PyExc_ValueError, "coroutine already executing");
        return PYGEN_ERROR;
    }
    if (self->steps == nullptr) {
        if (value != nullptr) PyErr_SetString(PyExc_RuntimeError, "cannot reuse already awaited coroutine");
        return PYGEN_ERROR;
    }
    const Object keep = borrow(reinterpret_cast<PyObject*>(self));
    self->running = true;
    if (!std::exchange(self->started, true) && value == nullptr) {
        finish(self);
        return PYGEN_ERROR;
    }
    try {
        Task::promise_type& promise = promiseOf(self);
        for (;; value = Py_None) {
            if (promise.awaited) {
                const Object awaited = promise.awaited;
                const PySendResult sent = value != nullptr
                                              ? entering([&] { return PyIter_Send(awaited.ptr(), value, result); })
                                              : throwInto(awaited, result);
                if (sent == PYGEN_NEXT) {
                    self->running = false;
                    return PYGEN_NEXT;
                }
                promise.awaited = {};
                if (sent == PYGEN_RETURN) {
                    promise.answer = py::reinterpret_steal<Object>(std::exchange(*result, nullptr));
                } else {
                    promise.trouble = std::make_exception_ptr(py::error_already_set());
                }
            }
            self->steps->handle().resume();
            if (!self->steps->handle().done()) continue;
            Object outcome = self->steps->outcome();
            finish(self);
            *result = outcome.release().ptr();
            return PYGEN_RETURN;
        }
    } catch (...) {
        raiseCurrent();
        const py::error_scope keepError;
        finish(self);
    }
    return failed();
}

PyObject* answerOf(PySendResult sent, PyObject* result) {
    if (sent != PYGEN_RETURN) return result;
    const auto value = py::reinterpret_steal<Object>(result);
    try {
        const Object stop = callObject(PyExc_StopIteration, value);
        PyErr_SetObject(PyExc_StopIteration, stop.ptr());
    } catch (py::error_already_set& error) {
        error.restore();
    }
    return nullptr;
}

PyObject* send(PyObject* self, PyObject* value) {
    PyObject* result = nullptr;
    const PySendResult sent = advance(cast(self), value, &result);
    return answerOf(sent, result);
}

PyObject* next(PyObject* self) { return send(self, Py_None); }

// throw(exception), or the deprecated throw(type, value, traceback).
PyObject* throwFailure(PyObject* self, PyObject* arguments) {
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* trace = nullptr;
    if (PyArg_UnpackTuple(arguments, "throw", 1, 3, &type, &value, &trace) == 0) return nullptr;
    if (PyExceptionInstance_Check(type)) {
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(type)), type);
    } else if (PyExceptionClass_Check(type)) {
        PyErr_SetObject(type, value == Py_None ? nullptr : value);
    } else {
        PyErr_SetString(PyExc_TypeError, "exceptions must be classes or instances deriving from BaseException");
        return nullptr;
    }
    if (cast(self)->steps == nullptr) return nullptr;
    PyObject* result = nullptr;
    const PySendResult sent = advance(cast(self), nullptr, &result);
    return answerOf(sent, result);
}

PyObject* close(PyObject* self, PyObject* /*unused*/) {
    CoroutineObject* coroutine = cast(self);
    if (coroutine->steps == nullptr) Py_RETURN_NONE;
    PyErr_SetNone(PyExc_GeneratorExit);
    PyObject* result = nullptr;
    const PySendResult sent = advance(coroutine, nullptr, &result);
    if (sent == PYGEN_ERROR) {
        if (!PyErr_ExceptionMatches(PyExc_GeneratorExit)) return nullptr;
        PyErr_Clear();
        Py_RETURN_NONE;
    }
    Py_XDECREF(result);
    if (sent == PYGEN_RETURN) Py_RETURN_NONE;
    PyErr_SetString(PyExc_RuntimeError, "coroutine ignored GeneratorExit");
    return nullptr;
}

PyObject* await(PyObject* self) { return Py_NewRef(self); }

void finalize(PyObject* self) {
    CoroutineObject* coroutine = cast(self);
    if (coroutine->started || coroutine->steps == nullptr) return;
    const py::error_scope keepError;
    const auto warn = [&] {
        return PyErr_WarnFormat(PyExc_RuntimeWarning, 1, "coroutine '%S' was never awaited", coroutine->qualifiedName);
    };
    if (entering(warn) < 0) {
        PyErr_WriteUnraisable(self);
    }
}

int traverse(PyObject* self, visitproc visit, void* arg) {
    if (cast(self)->steps == nullptr) return 0;
    const Task::promise_type& promise = promiseOf(cast(self));
    for (const Object* held : {&promise.awaited, &promise.answer, &promise.value}) Py_VISIT(held->ptr());
    return promise.held.visit(visit, arg);
}

int clear(PyObject* self) {
    finish(cast(self));
    return 0;
}

void deallocate(PyObject* self) {
    if (PyObject_CallFinalizerFromDealloc(self) < 0) return;
    PyObject_GC_UnTrack(self);
    if (cast(self)->weakReferences != nullptr) PyObject_ClearWeakRefs(self);
    finish(cast(self));
    Py_CLEAR(cast(self)->name);
    Py_CLEAR(cast(self)->qualifiedName);
    PyObject_GC_Del(self);
}

PyObject* represent(PyObject* self) {
    return PyUnicode_FromFormat("<coroutine object %S at %p>", cast(self)->qualifiedName, self);
}

PyObject* awaitedOf(PyObject* self, void* /*unused*/) {
    const bool waits = cast(self)->steps != nullptr && promiseOf(cast(self)).awaited;
    return Py_NewRef(waits ? promiseOf(cast(self)).awaited.ptr() : Py_None);
}

PyMethodDef methods[] = {
    {"send", send, METH_O, "Runs the coroutine until it waits or returns; the value must be None."},
    {"throw", throwFailure, METH_VARARGS, "Raises an exception where the coroutine waits."},
    {"close", close, METH_NOARGS, "Ends the coroutine."},
    {nullptr, nullptr, 0, nullptr},
};

PyMemberDef members[] = {
    {"__name__", T_OBJECT, offsetof(CoroutineObject, name), READONLY, nullptr},
    {"__qualname__", T_OBJECT, offsetof(CoroutineObject, qualifiedName), READONLY, nullptr},
    {"cr_running", T_BOOL, offsetof(CoroutineObject, running), READONLY, nullptr},
    {nullptr, 0, 0, 0, nullptr},
};

PyGetSetDef properties[] = {
    {"cr_await", awaitedOf, nullptr, "The object that the coroutine waits for, or None.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PySendResult sendSlot(PyObject* self, PyObject* value, PyObject** result) { return advance(cast(self), value, result); }

PyAsyncMethods asyncMethods = {await, nullptr, nullptr, sendSlot};

Object iteratorOf(py::handle awaitable) {
    if (Py_TYPE(awaitable.ptr()) == &coroutineType || PyCoro_CheckExact(awaitable.ptr())) {
        return borrow(awaitable.ptr());
    }
    const PyAsyncMethods* slots = Py_TYPE(awaitable.ptr())->tp_as_async;
    if (slots == nullptr || slots->am_await == nullptr) {
        throw py::type_error(std::string("object ") + Py_TYPE(awaitable.ptr())->tp_name +
                             " can't be used in 'await' expression");
    }
    return own(slots->am_await(awaitable.ptr()));
}

}  // namespace

Awaiter Awaiter::on(py::handle awaitable) { return {iteratorOf(awaitable), false}; }

void Awaiter::await_suspend(Task::Handle handle) {
    steps_ = handle;
    Task::promise_type& promise = handle.promise();
    if (promise.limit != forever && isOurCoroutine(value_)) limitCoroutine(value_, promise.limit);
    promise.awaited = std::move(value_);
}

Object Awaiter::await_resume() {
    if (done_) return std::move(value_);
    Task::promise_type& promise = steps_.promise();
    if (promise.trouble) std::rethrow_exception(std::exchange(promise.trouble, nullptr));
    return std::move(promise.answer);
}

Object makeCoroutine(Task steps, py::handle name, py::handle qualifiedName) {
    auto* self = PyObject_GC_New(CoroutineObject, &coroutineType);
    if (self == nullptr) throw py::error_already_set();
    self->steps = std::make_unique<Task>(std::move(steps)).release();
    self->name = Py_NewRef(name.ptr());
    self->qualifiedName = Py_NewRef(qualifiedName.ptr());
    self->weakReferences = nullptr;
    self->started = self->running = false;
    PyObject_GC_Track(self);
    return py::reinterpret_steal<Object>(reinterpret_cast<PyObject*>(self));
}

bool isOurCoroutine(py::handle object) { return Py_TYPE(object.ptr()) == &coroutineType; }

void limitCoroutine(py::handle coroutine, Deadline limit) {
    CoroutineObject* self = cast(coroutine.ptr());
    if (self->steps != nullptr) promiseOf(self).limit = std::min(promiseOf(self).limit, limit);
}

void prepareCoroutineType(py::module_& /*module*/) {
    coroutineType.tp_name = "pyzvr.coroutine";
    coroutineType.tp_doc = "Returned by the awaitable form of an operation.";
    coroutineType.tp_basicsize = sizeof(CoroutineObject);
    coroutineType.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
    coroutineType.tp_dealloc = deallocate;
    coroutineType.tp_finalize = finalize;
    coroutineType.tp_traverse = traverse;
    coroutineType.tp_clear = clear;
    coroutineType.tp_weaklistoffset = offsetof(CoroutineObject, weakReferences);
    coroutineType.tp_repr = represent;
    coroutineType.tp_iternext = next;
    coroutineType.tp_as_async = &asyncMethods;
    coroutineType.tp_methods = methods;
    coroutineType.tp_members = members;
    coroutineType.tp_getset = properties;
    Py_SET_REFCNT(&coroutineType, 1);
    if (PyType_Ready(&coroutineType) != 0) throw py::error_already_set();
}

}  // namespace zvr::python
