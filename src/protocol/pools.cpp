// The data pools, queues and gates as Python sees them: mappings, a set and a queue of the usual shape over the C++
// objects that the receive threads fill.
#include "core/pools.h"

#include "core/gate.h"
#include "protocol/protocol.h"
#include "protocol/runtime.h"

namespace zvr::python {

namespace {

[[noreturn]] void missing(py::handle key) { throw py::key_error(py::cast<std::string>(py::str(key))); }

// Gives a class the rest of what its kind of collection has; `items` are the type's parameters in the type stub.
void completeAs(py::handle type, const char* kind, const char* items, std::initializer_list<const char*> methods) {
    const Object mixin = py::module_::import("collections.abc").attr(kind);
    py::setattr(type, "__stub_base__", py::str(std::string(kind) + items));
    for (const char* name : methods) py::setattr(type, name, attribute(mixin, name));
    attribute(mixin, "register")(type);
}

template <class Keys, class Convert>
Object iteratorOver(const Keys& keys, Convert convert) {
    py::list list;
    for (const auto& key : keys) list.append(convert(key));
    return own(PyObject_GetIter(list.ptr()));
}

template <class Thing>
Thing& thing(py::handle self) {
    return *py::cast<Thing*>(self);
}

const Parameter keyParameter{"key", "Any", "key of the pool"};
const Parameter soughtParameter{"key", "object", "what is looked for"};

void defineEchoPool(Package& package) {
    const Parameter reply{"value", "bytes", "data of the reply"};
    const auto type = py::class_<EchoPool, std::shared_ptr<EchoPool>>(
        package.module(), "EchoPool", "Latest unclaimed reply per command code or composite motion key.");
    ClassMaker(type)
        .method("__getitem__", {keyParameter}, "The reply, which stays.", {"bytes"}, {},
                [](py::handle self, const Object& key) -> Object {
                    const auto data = thing<EchoPool>(self).peek(py::cast<EchoPool::Key>(key));
                    if (!data) missing(key);
                    return toBytes(*data);
                })
        .method("__setitem__", {keyParameter, reply}, "Files a reply and wakes who waits for it.", {}, {},
                [](py::handle self, const Object& key, const Object& value) {
                    const auto pool = py::cast<std::shared_ptr<EchoPool>>(self);
                    const auto number = py::cast<EchoPool::Key>(key);
                    Bytes data = bytesOf(value);
                    const WithoutGil released;
                    pool->put(number, std::move(data));
                })
        .method("__delitem__", {keyParameter}, "Drops a reply.", {}, {},
                [](py::handle self, const Object& key) {
                    if (!thing<EchoPool>(self).take(py::cast<EchoPool::Key>(key))) missing(key);
                })
        .method("__contains__", {soughtParameter}, "Whether a reply is there.", {"bool"}, {},
                [](py::handle self, const Object& key) {
                    return PyLong_Check(key.ptr()) != 0 && thing<EchoPool>(self).contains(py::cast<EchoPool::Key>(key));
                })
        .method("__len__", {}, "Number of replies.", {"int"}, {},
                [](py::handle self) { return thing<EchoPool>(self).keys().size(); })
        .method("__iter__", {}, "Iterates over the keys that are there now.", {"Iterator[int]"}, {},
                [](py::handle self) {
                    return iteratorOver(thing<EchoPool>(self).keys(), [](EchoPool::Key key) { return py::int_(key); });
                });
    completeAs(type, "MutableMapping", "[int, bytes]",
               {"get", "pop", "popitem", "clear", "update", "setdefault", "keys", "values", "items", "__eq__"});
}

// A key is the command, or a tuple of it with port and chip select.
StreamKey streamKey(py::handle key) {
    if (!PyTuple_Check(key.ptr())) return {py::cast<int>(key)};
    const py::tuple parts = borrow(key.ptr());
    if (parts.empty() || parts.size() > 3) missing(key);
    StreamKey result{py::cast<int>(parts[0])};
    if (parts.size() > 1) result.port = py::cast<int>(parts[1]);
    if (parts.size() > 2) result.chipSelect = py::cast<int>(parts[2]);
    return result;
}

Object toObject(const StreamKey& key) {
    if (key.port == StreamKey::absent) return py::int_(key.command);
    if (key.chipSelect == StreamKey::absent) return py::make_tuple(key.command, key.port);
    return py::make_tuple(key.command, key.port, key.chipSelect);
}

void defineStreamPool(Package& package) {
    const auto type = py::class_<StreamPool, std::shared_ptr<StreamPool>>(
        package.module(), "StreamPool",
        "Queue of streamed frames per command, or per tuple of command, port and chip select. A missing key makes an "
        "empty queue.");
    ClassMaker(type)
        .method("__getitem__", {keyParameter}, "The queue of a key.", {"Fifo"}, {},
                [](py::handle self, const Object& key) { return thing<StreamPool>(self).at(streamKey(key)); })
        .method("__contains__", {soughtParameter}, "Whether the queue exists.", {"bool"}, {},
                [](py::handle self, const Object& key) { return thing<StreamPool>(self).contains(streamKey(key)); })
        .method("__len__", {}, "Number of queues.", {"int"}, {},
                [](py::handle self) { return thing<StreamPool>(self).keys().size(); })
        .method("__iter__", {}, "Iterates over the keys that are there now.", {"Iterator[Any]"}, {},
                [](py::handle self) { return iteratorOver(thing<StreamPool>(self).keys(), toObject); });
    completeAs(type, "Mapping", "[Any, Fifo]", {"keys", "values", "items", "get", "__eq__"});
}

template <class Item>
Item itemOf(py::handle item);
template <>
StreamItem itemOf(py::handle item) {
    return item.is_none() ? StreamItem() : StreamItem(bytesOf(item));
}
template <>
SharedObject itemOf(py::handle item) {
    return item.is_none() ? nullptr : shared(item);
}

Object toObject(const StreamItem& item) { return item ? Object(toBytes(*item)) : Object(py::none()); }
Object toObject(const SharedObject& item) { return item ? borrow(item.get()) : Object(py::none()); }

Deadline deadlineOf(bool waits, py::handle timeout) {
    if (!waits) return Clock::now();
    return timeout.is_none() ? forever : deadlineIn(secondsOf(timeout));
}

[[noreturn]] void raiseQueue(const char* failure) {
    PyErr_SetNone(hostObject("queue", failure).ptr());
    throw py::error_already_set();
}

template <class Item>
void put(py::handle self, py::handle item, Deadline deadline) {
    const auto fifo = py::cast<std::shared_ptr<Fifo<Item>>>(self);
    auto value = itemOf<Item>(item);
    const bool room = blocking([&](const Attend& attend) { return fifo->put(std::move(value), deadline, attend); });
    if (!room) raiseQueue("Full");
}

template <class Item>
Object get(py::handle self, Deadline deadline) {
    const auto fifo = py::cast<std::shared_ptr<Fifo<Item>>>(self);
    auto item = fifo->tryGet();
    if (!item) item = blocking([&](const Attend& attend) { return fifo->get(deadline, attend); });
    if (!item) raiseQueue("Empty");
    return toObject(*item);
}

/// A queue as the host's own queues are; `kind` and `what` tell of its items.
template <class Item>
void defineFifoOf(Package& package, const char* name, const char* doc, const char* kind, const char* what) {
    const Parameter item{"item", kind, std::string(what) + "; None wakes a reader"};
    const Parameter waits{"block", "bool", "whether to wait", "True"};
    const Parameter timeout{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"};
    const Returns taken{kind, std::string(what) + ", or a marker"};
    const auto type = py::class_<Fifo<Item>, std::shared_ptr<Fifo<Item>>>(package.module(), name, doc)
                          .def(py::init<std::size_t>(), py::arg("maxsize") = 0);
    ClassMaker(type)
        .method("put", {item, waits, timeout}, "Adds an item.", {}, {"queue.Full: no room in time"},
                [](py::handle self, const Object& item, const Object& waits, const Object& timeout) {
                    put<Item>(self, item, deadlineOf(py::cast<bool>(waits), timeout));
                })
        .method("get", {waits, timeout}, "Takes the oldest item.", taken, {"queue.Empty: nothing came in time"},
                [](py::handle self, const Object& waits, const Object& timeout) {
                    return get<Item>(self, deadlineOf(py::cast<bool>(waits), timeout));
                })
        .method("put_nowait", {item}, "Adds an item without waiting.", {}, {"queue.Full: no room"},
                [](py::handle self, const Object& item) { put<Item>(self, item, Clock::now()); })
        .method("get_nowait", {}, "Takes the oldest item without waiting.", taken, {"queue.Empty: nothing is there"},
                [](py::handle self) { return get<Item>(self, Clock::now()); })
        .method("qsize", {}, "Number of items.", {"int"}, {},
                [](py::handle self) { return thing<Fifo<Item>>(self).size(); })
        .method("empty", {}, "Whether it holds nothing.", {"bool"}, {},
                [](py::handle self) { return thing<Fifo<Item>>(self).size() == 0; })
        .method("full", {}, "Whether it holds all it can.", {"bool"}, {},
                [](py::handle self) {
                    const auto& fifo = thing<Fifo<Item>>(self);
                    return fifo.capacity() != 0 && fifo.size() >= fifo.capacity();
                })
        .property({"maxsize", "int", "Most items it holds; 0 for no limit."},
                  [](py::handle self) { return thing<Fifo<Item>>(self).capacity(); });
}

void defineFifos(Package& package) {
    defineFifoOf<StreamItem>(package, "Fifo", "Thread-safe queue of frames.", "bytes | None", "data of a frame");
    defineFifoOf<SharedObject>(package, "ItemFifo", "Thread-safe queue of any objects.", "Any", "an object");
}

void defineBroadcastPool(Package& package) {
    const Parameter record{"value", "bytes", "data of a reply"};
    const auto set = py::class_<RecordSet, std::shared_ptr<RecordSet>>(
        package.module(), "RecordSet", "Replies to one broadcast command; equal ones count once.");
    ClassMaker(set)
        .method("__contains__", {soughtParameter}, "Whether a reply is there.", {"bool"}, {},
                [](py::handle self, const Object& value) {
                    return PyBytes_Check(value.ptr()) != 0 && thing<RecordSet>(self).contains(bytesOf(value));
                })
        .method("__iter__", {}, "Iterates over the replies that are there now.", {"Iterator[bytes]"}, {},
                [](py::handle self) { return iteratorOver(thing<RecordSet>(self).records(), toBytes); })
        .method("__len__", {}, "Number of different replies.", {"int"}, {},
                [](py::handle self) { return thing<RecordSet>(self).records().size(); })
        .method("add", {record}, "Adds a reply.", {}, {},
                [](py::handle self, const Object& value) { thing<RecordSet>(self).add(bytesOf(value)); })
        .method("discard", {record}, "Removes a reply if it is there.", {}, {},
                [](py::handle self, const Object& value) { thing<RecordSet>(self).discard(bytesOf(value)); })
        .method("clear", {}, "Removes all replies.", {}, {}, [](py::handle self) { thing<RecordSet>(self).clear(); });
    completeAs(set, "MutableSet", "[bytes]",
               {"remove", "pop", "isdisjoint", "__eq__", "__le__", "__lt__", "__ge__", "__gt__"});

    const auto pool = py::class_<BroadcastPool, std::shared_ptr<BroadcastPool>>(
        package.module(), "BroadcastPool", "Set of replies per broadcast command. A missing key makes an empty set.");
    ClassMaker(pool)
        .method("__getitem__", {keyParameter}, "The set of a command.", {"RecordSet"}, {},
                [](py::handle self, const Object& key) { return thing<BroadcastPool>(self).at(py::cast<int>(key)); })
        .method(
            "__contains__", {soughtParameter}, "Whether the set exists.", {"bool"}, {},
            [](py::handle self, const Object& key) { return thing<BroadcastPool>(self).contains(py::cast<int>(key)); })
        .method("__len__", {}, "Number of sets.", {"int"}, {},
                [](py::handle self) { return thing<BroadcastPool>(self).keys().size(); })
        .method("__iter__", {}, "Iterates over the commands that are there now.", {"Iterator[int]"}, {},
                [](py::handle self) {
                    return iteratorOver(thing<BroadcastPool>(self).keys(), [](int key) { return py::int_(key); });
                });
    completeAs(pool, "Mapping", "[int, RecordSet]", {"keys", "values", "items", "get", "__eq__"});
}

void defineGate(Package& package) {
    const Parameter waits{"blocking", "bool", "without effect: a gate is never waited for", "True"};
    const Parameter timeout{"timeout", "float", "without effect", "-1"};
    const auto type = py::class_<Gate, std::shared_ptr<Gate>>(
        package.module(), "Gate",
        "Gate of a receive thread: shut by acquire, opened by release. Either may be repeated and never waits.");
    ClassMaker(type)
        .method("acquire", {waits, timeout}, "Shuts the gate.", {"bool", "True"}, {},
                [](py::handle self, const Object&, const Object&) {
                    thing<Gate>(self).acquire();
                    return true;
                })
        .method("release", {}, "Opens the gate.", {}, {}, [](py::handle self) { thing<Gate>(self).release(); })
        .method("locked", {}, "Whether the gate is shut.", {"bool"}, {},
                [](py::handle self) { return thing<Gate>(self).locked(); })
        .method("__enter__", {}, "Shuts the gate.", {"bool", "True"}, {},
                [](py::handle self) {
                    thing<Gate>(self).acquire();
                    return true;
                })
        .method("__exit__", {{"*failure", "object", ""}}, "Opens the gate.", {}, {},
                [](py::handle self, const Object&) { thing<Gate>(self).release(); });
}

}  // namespace

void definePools(Package& package) {
    defineGate(package);
    defineFifos(package);
    defineEchoPool(package);
    defineStreamPool(package);
    defineBroadcastPool(package);
}

}  // namespace zvr::python
