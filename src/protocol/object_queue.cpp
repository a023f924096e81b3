#include "protocol/object_queue.h"

#include "core/constants.h"
#include "protocol/protocol.h"
#include "python/op.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

ObjectQueue& queueOf(py::handle self) { return *py::cast<ObjectQueue*>(self); }

[[noreturn]] void raiseQueue(const char* failure) {
    PyErr_SetNone(hostObject("queue", failure).ptr());
    throw py::error_already_set();
}

void put(py::handle self, const Object& item) {
    ObjectQueue& queue = queueOf(self);
    auto [layout, bytes] = queue.kind.fromItem(item);
    if (queue.put(layout, std::move(bytes)) != 0) raiseQueue("Full");
}

Object get(py::handle self, Deadline deadline) {
    const auto queue = py::cast<std::shared_ptr<ObjectQueue>>(self);
    for (;;) {
        const py::list taken = queue->takeObjects(1);
        if (!taken.empty()) return taken[0];
        const std::size_t found =
            blocking([&](const Attend& attend) { return queue->waitForSize(1, deadline, attend); });
        if (found == 0) raiseQueue("Empty");
    }
}

}  // namespace

std::shared_ptr<StreamReader> Feeders::add(const char* threadName, std::shared_ptr<StreamFifo> frames,
                                           std::shared_ptr<ObjectQueue> rows, RowLayout layout,
                                           FailureId overflowWarning) {
    std::vector<StreamReader::Pair> pairs{{std::move(frames), std::move(rows)}};
    readers.push_back(std::make_shared<StreamReader>(threadName, std::move(pairs), std::move(layout),
                                                     reportThreadFailure, warningOf(overflowWarning)));
    return readers.back();
}

std::shared_ptr<Feeders> feedersOf(py::handle self, const char* partName) {
    auto feeders = runtimeOf(self).part<Feeders>(partName);
    if (!feeders) throw py::attribute_error(std::string("the object has no ") + partName);
    return feeders;
}

StreamReader::OnOverflow warningOf(FailureId warning) {
    return [warning] { onInterpreter([&] { callObject(failureClass(warning)); }); };
}

void defineObjectQueue(Package& package) {
    const Parameter item{"item", "Any", "what the queue is of"};
    const Parameter waits{"block", "bool", "whether to wait", "True"};
    const Parameter timeout{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"};
    const Returns taken{"Any", "a row of samples as a list of floats, a byte as an integer, or a CANFrame"};
    const ObjectQueueType type(package.module(), "RowFifo",
                               "Thread-safe queue of what a stream brings, kept in compact form: rows of samples, "
                               "bytes, or frames.");
    ClassMaker(type)
        .method("put", {item}, "Adds an item; never waits.", {}, {"queue.Full: no room"}, Calls<put>{})
        .method("put_nowait", {item}, "Adds an item.", {}, {"queue.Full: no room"}, Calls<put>{})
        .method("get", {waits, timeout}, "Takes the oldest item.", taken, {"queue.Empty: nothing came in time"},
                [](py::handle self, const Object& waits, const Object& timeout) {
                    const bool now = PyObject_IsTrue(waits.ptr()) == 0;
                    return get(self, now ? Clock::now() : timeout.is_none() ? forever : deadlineIn(secondsOf(timeout)));
                })
        .method("get_nowait", {}, "Takes the oldest item without waiting.", taken, {"queue.Empty: nothing is there"},
                [](py::handle self) { return get(self, Clock::now()); })
        .method("get_many", {{"count", "int", "most items to take"}}, "Takes the oldest items without waiting.",
                {"list[Any]", "items, oldest first; fewer, or none, where no more are there"}, {},
                [](py::handle self, const Object& count) {
                    return queueOf(self).takeObjects(
                        static_cast<std::size_t>(std::max(py::cast<Py_ssize_t>(count), Py_ssize_t{0})));
                })
        .method("qsize", {}, "Number of items.", {"int"}, {}, [](py::handle self) { return queueOf(self).size(); })
        .method("empty", {}, "Whether it holds nothing.", {"bool"}, {},
                [](py::handle self) { return queueOf(self).size() == 0; })
        .method("full", {}, "Whether it holds all it can.", {"bool"}, {},
                [](py::handle self) { return queueOf(self).size() >= queueOf(self).capacity(); })
        .property({"maxsize", "int", "Most items it holds."}, [](py::handle self) { return queueOf(self).capacity(); })
        .property({"dropped", "int", "Items of the stream that were dropped since it was made: there was no room."},
                  [](py::handle self) { return queueOf(self).dropped(); });
}

}  // namespace zvr::python
