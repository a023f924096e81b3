// Queues and gates for Python, with the interfaces of queue.Queue and Lock over the C++ objects that receive threads
// use.
#include "core/engine/gate.h"
#include "core/engine/pools.h"
#include "device/protocol.h"
#include "device/queue_face.h"
#include "python/op.h"
#include "python/values.h"

namespace zvr::python {

namespace {

template <class Item>
Item itemOf(const Object& item);
// An item that is no frame is kept and given back unchanged.
template <>
StreamItem itemOf(const Object& item) {
    if (item.is_none()) return {};
    std::optional<Bytes> frame;
    PyObject* const given = item.ptr();
    if (PyBytes_Check(given) || PyByteArray_Check(given) || PyMemoryView_Check(given) || PyList_Check(given) ||
        PyTuple_Check(given)) {
        try {
            frame = bytesOf(item);
        } catch (const std::exception&) {
            frame.reset();  // the reader of the queue reports it
        }
    }
    return {std::move(frame), shared(item)};
}
template <>
SharedObject itemOf(const Object& item) {
    return item.is_none() ? nullptr : shared(item);
}

Object toObject(const StreamItem& item) {
    if (item.object) return borrow(static_cast<PyObject*>(item.object.get()));
    return item.isFrame ? Object(toBytes(item.frame)) : Object(py::none());
}
Object toObject(const SharedObject& item) { return item ? borrow(item.get()) : Object(py::none()); }

template <class Item>
struct FifoAccess {
    using Queue = Fifo<Item>;

    static bool put(const std::shared_ptr<Queue>& queue, const Object& item, Deadline deadline) {
        auto value = itemOf<Item>(item);
        return blocking([&](const InterruptCheck& onWait) { return queue->put(std::move(value), deadline, onWait); });
    }
    static Object take(const std::shared_ptr<Queue>& queue) {
        const auto item = queue->tryGet();
        return item ? toObject(*item) : Object();
    }
};

template <class Item>
void defineFifoOf(Package& package, const char* name, const char* doc, const char* kind, const char* what) {
    using Queue = Fifo<Item>;
    const auto objectIn = [](const Item& item) -> PyObject* {
        if constexpr (std::is_same_v<Item, StreamItem>) {
            return static_cast<PyObject*>(item.object.get());
        } else {
            return item.get();
        }
    };
    ClassMaker type =
        py::class_<Queue, std::shared_ptr<Queue>>(package.module(), name, doc, collectable<Queue>(objectIn))
            .def(py::init([](const Object& maxsize) { return std::make_shared<Queue>(queueCapacity(maxsize)); }),
                 py::arg("maxsize") = 0);
    defineQueueFace<FifoAccess<Item>>(type, kind, what);
    refusePickling(type.type());
}

void defineFifos(Package& package) {
    defineFifoOf<StreamItem>(package, "Fifo", "Thread-safe queue of frames or any objects.", "Any",
                             "data of a frame as bytes, or anything else; None is the marker that wakes a reader");
    defineFifoOf<SharedObject>(package, "ItemFifo", "Thread-safe queue of any objects.", "Any",
                               "any object; None is the marker that wakes a reader");
}

// As threading.Lock.acquire, except that a blocking call never waits for a shut gate.
bool acquire(const std::shared_ptr<Gate>& gate, bool waits, double timeout) {
    if (!waits && timeout != -1) throw py::value_error("can't specify a timeout for a non-blocking call");
    if (timeout < 0 && timeout != -1) throw py::value_error("timeout value must be a non-negative number");
    if (waits && timeout < 0) {
        gate->acquire();
        return true;
    }
    const Deadline deadline = waits ? deadlineIn(timeout) : Clock::now();
    return blocking([&](const InterruptCheck& onWait) { return gate->acquireOpen(deadline, onWait); });
}

void defineGate(Package& package) {
    using Held = std::shared_ptr<Gate>;
    const Parameter waits{"blocking", "bool", "whether to succeed even if it is shut already; such a call never waits",
                          "True"};
    const Parameter timeout{"timeout", "float", "seconds to wait for a shut gate to open; -1 for no wait", "-1"};
    const Returns shut{"bool", "whether the call succeeded; False only for a gate that was shut"};
    ClassMaker type =
        py::class_<Gate, Held>(
            package.module(), "Gate",
            "Gate of a receive thread, with the interface of a lock: shut by acquire, opened by release. A new one is "
            "open. No call waits for a shut gate for ever, and opening an open one does nothing.")
            .def(py::init([] {
                auto gate = std::make_shared<Gate>();
                gate->release();
                return gate;
            }));
    type.method({.name = "acquire",
                 .parameters = {waits, timeout},
                 .doc = "Shuts the gate.",
                 .returns = shut,
                 .body = [](const Held& gate, bool waits, Seconds timeout) { return acquire(gate, waits, timeout); }})
        .method({.name = "release", .doc = "Opens the gate.", .body = [](const Held& gate) { gate->release(); }})
        .method({.name = "locked",
                 .doc = "Whether the gate is shut.",
                 .returns = {"bool"},
                 .body = [](const Held& gate) { return gate->locked(); }})
        .method({.name = "__enter__",
                 .doc = "Shuts the gate.",
                 .returns = {"bool", "True"},
                 .body = [](const Held& gate) { return acquire(gate, true, -1); }})
        .method({.name = "__exit__",
                 .parameters = {{"*failure", "object", ""}},
                 .doc = "Opens the gate.",
                 .body = [](const Held& gate, const Object&) { gate->release(); }});
    refusePickling(type.type());
}

}  // namespace

void defineQueues(Package& package) {
    defineGate(package);
    defineFifos(package);
}

}  // namespace zvr::python
