// The Python interface of the library's queues: that of queue.Queue.
//
// A queue has size(), capacity(), `tasks` and waitForSize(count, deadline, onWait). Its `Access` names it as `Queue`
// and converts its items: put(queue, item, deadline) returns whether there was room, take(queue) returns null if it is
// empty.
#pragma once

#include "core/engine/fifo.h"
#include "python/classes.h"

namespace zvr::python {

[[noreturn]] inline void raiseQueue(const char* error) {
    PyErr_SetNone(pythonObject("queue", error).ptr());
    throw py::error_already_set();
}

inline Deadline queueDeadline(bool waits, py::handle timeout) {
    if (!waits) return Clock::now();
    if (timeout.is_none()) return forever;
    const double seconds = secondsArgument(timeout, "timeout");
    if (seconds < 0) throw py::value_error("'timeout' must be a non-negative number");
    return deadlineIn(seconds);
}

template <class Queue>
void requireOwnQueue(const Queue& queue) {
    if (queue.isForeign()) throw Failure(FailureId::NetworkConnectionLostError, foreignMessage("The queue"));
}

template <class Access>
void putInto(const std::shared_ptr<typename Access::Queue>& queue, const Object& item, Deadline deadline) {
    requireOwnQueue(*queue);
    if (!Access::put(queue, item, deadline)) raiseQueue("Full");
}

template <class Access>
Object takeFrom(const std::shared_ptr<typename Access::Queue>& queue, Deadline deadline) {
    requireOwnQueue(*queue);
    const std::uint64_t ends = queue->ends();
    for (;;) {
        if (Object item = Access::take(queue)) return item;
        const bool came =
            blocking([&](const InterruptCheck& onWait) { return queue->waitForSize(1, deadline, onWait) > 0; });
        // Otherwise another taker was faster.
        if (!came && (Clock::now() >= deadline || queue->ends() != ends)) raiseQueue("Empty");
    }
}

template <class Access>
void defineQueueFace(ClassMaker& type, const char* itemType, const char* itemDoc) {
    using Queue = typename Access::Queue;
    using Held = std::shared_ptr<Queue>;
    const Parameter item{"item", itemType, itemDoc};
    const Parameter waits{"block", "bool", "whether to wait", "True"};
    const Parameter timeout{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"};
    const Returns taken{itemType, "the oldest item, the same object that was put"};
    type.method({.name = "put",
                 .parameters = {item, waits, timeout},
                 .doc = "Adds an item.",
                 .raises = {"queue.Full: no room in time"},
                 .body = [](const Held& queue, const Object& item, bool waits,
                            const Object& timeout) { putInto<Access>(queue, item, queueDeadline(waits, timeout)); }})
        .method({.name = "get",
                 .parameters = {waits, timeout},
                 .doc = "Takes the oldest item.",
                 .returns = taken,
                 .raises = {"queue.Empty: nothing arrived in time, or before the connection was closed"},
                 .body = [](const Held& queue, bool waits,
                            const Object& timeout) { return takeFrom<Access>(queue, queueDeadline(waits, timeout)); }})
        .method({.name = "put_nowait",
                 .parameters = {item},
                 .doc = "Adds an item without waiting.",
                 .raises = {"queue.Full: no room"},
                 .body = [](const Held& queue, const Object& item) { putInto<Access>(queue, item, Clock::now()); }})
        .method({.name = "get_nowait",
                 .doc = "Takes the oldest item without waiting.",
                 .returns = taken,
                 .raises = {"queue.Empty: there is no item"},
                 .body = [](const Held& queue) { return takeFrom<Access>(queue, Clock::now()); }})
        .method({.name = "qsize",
                 .doc = "Number of items.",
                 .returns = {"int"},
                 .body = [](const Held& queue) { return queue->size(); }})
        .method({.name = "empty",
                 .doc = "Whether it is empty.",
                 .returns = {"bool"},
                 .body = [](const Held& queue) { return queue->size() == 0; }})
        .method(
            {.name = "full",
             .doc = "Whether it is full.",
             .returns = {"bool"},
             .body = [](const Held& queue) { return queue->capacity() != 0 && queue->size() >= queue->capacity(); }})
        .method({.name = "task_done",
                 .doc = "Declares a taken item done.",
                 .raises = {"ValueError: no unfinished item is left"},
                 .body =
                     [](const Held& queue) {
                         if (!queue->tasks.done()) throw py::value_error("task_done() called too many times");
                     }})
        .method({.name = "join",
                 .doc = "Waits until every item that was put has been declared done.",
                 .body =
                     [](const Held& queue) {
                         blocking([&](const InterruptCheck& onWait) {
                             queue->tasks.await(onWait);
                             return true;
                         });
                     }})
        .method({.name = "__repr__",
                 .doc = "Shows its capacity and size.",
                 .returns = {"str"},
                 .body =
                     [](py::handle self) {
                         const auto queue = native<Queue>(self);
                         return py::str("<{} of {}, {} waiting>")
                             .format(attribute(py::type::of(self), "__name__"),
                                     queue->capacity() == 0 ? Object(py::str("any size")) : py::int_(queue->capacity()),
                                     queue->size());
                     }})
        .property({"unfinished_tasks", "int", "Items not yet declared done."},
                  [](const Held& queue) { return queue->tasks.count(); })
        .property({"maxsize", "int", "Most items it holds; 0 for no limit."},
                  [](const Held& queue) { return queue->capacity(); });
}

/// Makes a queue's items visible to the garbage collector, since an item may refer back to the queue. `ObjectIn`
/// returns the object of an item as a pointer, or null.
template <class Queue, class ObjectIn>
py::custom_type_setup collectable(ObjectIn) {
    return py::custom_type_setup([](PyHeapTypeObject* heap) {
        PyTypeObject& type = heap->ht_type;
        type.tp_flags |= Py_TPFLAGS_HAVE_GC;
        type.tp_traverse = [](PyObject* self, visitproc visit, void* arg) -> int {
            Py_VISIT(Py_TYPE(self));
            if (!detail::isConstructed(self)) return 0;
            int result = 0;
            py::cast<Queue*>(py::handle(self))->visit([&](const auto& item) {
                PyObject* const object = ObjectIn{}(item);
                if (result == 0 && object != nullptr) result = visit(object, arg);
            });
            return result;
        };
        type.tp_clear = [](PyObject* self) -> int {
            if (detail::isConstructed(self)) py::cast<Queue*>(py::handle(self))->clear();
            return 0;
        };
    });
}

/// The capacity argument; as in queue.Queue, zero or less means no limit.
inline std::size_t queueCapacity(py::handle maxsize) {
    const auto most = argument<std::int64_t>(maxsize, "maxsize");
    return most <= 0 ? 0 : static_cast<std::size_t>(most);
}

/// Makes pickling raise: the object belongs to threads of this process.
void refusePickling(py::handle type);

}  // namespace zvr::python
