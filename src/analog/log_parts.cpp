#include "analog/log_parts.h"

#include <algorithm>

#include "analog/rows.h"
#include "core/engine/fifo.h"
#include "python/arguments.h"

namespace zvr::python {

namespace {

// Rows of a block that are written per call; other Python threads may run in between.
constexpr Py_ssize_t rowsInOneGo = 256;

// Takes a lock without waiting, if it supports that.
bool tryLock(py::handle lock) {
    try {
        return isTrue(callMethod(lock, "acquire", py::bool_(false)));
    } catch (const py::error_already_set& failure) {
        if (!failure.matches(PyExc_TypeError)) throw;
    }
    return isTrue(callMethod(lock, "acquire"));
}

}  // namespace

std::shared_ptr<Gate> ownGate(py::handle lock) {
    return py::type::handle_of(lock).is(py::type::of<Gate>()) ? py::cast<std::shared_ptr<Gate>>(lock) : nullptr;
}

bool isOwnQueue(py::handle queue) { return py::type::handle_of(queue).is(py::type::of<Fifo<SharedObject>>()); }

bool isShut(py::handle lock) {
    const Object asks = attributeOrNothing(lock, "locked");
    return asks && isTrue(callObject(asks));
}

bool tryPass(py::handle lock) {
    if (const auto gate = ownGate(lock)) return !gate->locked();
    if (!tryLock(lock)) return false;
    openLock(lock);
    return true;
}

bool isEmpty(py::handle queue) {
    const Object asks = attributeOrNothing(queue, "empty");
    return !asks || isTrue(callObject(asks));
}

std::uint64_t sizeOf(py::handle queue) {
    const Object asks = attributeOrNothing(queue, "qsize");
    const Object size = asks ? callObject(asks) : Object();
    return size && PyLong_Check(size.ptr()) != 0 ? PyLong_AsUnsignedLongLongMask(size.ptr()) : 0;
}

std::size_t rowsOf(py::handle rows) {
    const Object seen =
        PyObject_CheckBuffer(rows.ptr()) != 0 ? own(PyMemoryView_FromObject(rows.ptr())) : borrow(rows.ptr());
    const Py_ssize_t count = PyObject_Size(seen.ptr());
    if (count < 0) PyErr_Clear();
    return count < 0 ? 1 : static_cast<std::size_t>(count);
}

void writeRows(py::handle writer, py::handle rows, const std::atomic<bool>& cancelled) {
    if (!py::isinstance<SampleBlock>(rows)) {
        callMethod(writer, "writerows", rows);
        return;
    }
    const Object view = own(PyMemoryView_FromObject(rows.ptr()));
    const Py_ssize_t count = PyObject_Size(view.ptr());
    for (Py_ssize_t first = 0; first < count && !cancelled; first += rowsInOneGo) {
        const py::slice some(first, std::min(first + rowsInOneGo, count), 1);
        callMethod(writer, "writerows", callMethod(own(PyObject_GetItem(view.ptr(), some.ptr())), "tolist"));
        const WithoutGil released;
    }
}

void openLock(py::handle lock) {
    try {
        callMethod(lock, "release");
    } catch (const py::error_already_set& failure) {
        // It is not locked, or locked by another thread.
        if (!failure.matches(PyExc_RuntimeError)) throw;
    }
}

void shutLock(py::handle lock) {
    if (const auto gate = ownGate(lock)) {
        gate->acquire();
    } else {
        tryLock(lock);
    }
}

void putMarker(py::handle queue) {
    const Object limit = attributeOrNothing(queue, "maxsize");
    if (!limit || PyLong_Check(limit.ptr()) == 0 || !isTrue(limit)) {
        callMethod(queue, "put", py::none());
        return;
    }
    try {
        callMethod(queue, "put_nowait", py::none());
    } catch (const py::error_already_set& failure) {
        if (!failure.matches(pythonObject("queue", "Full"))) throw;
    }
}

}  // namespace zvr::python
