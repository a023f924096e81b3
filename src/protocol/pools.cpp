// Pools, queues and gates as Python sees them: mappings, a set, queues and a lock of the usual shape over the C++
// objects that the receive threads fill.
#include "core/pools.h"

#include "core/gate.h"
#include "protocol/protocol.h"
#include "protocol/queue_face.h"

namespace zvr::python {

namespace {

[[noreturn]] void missing(py::handle key) {
    PyErr_SetObject(PyExc_KeyError, key.ptr());
    throw py::error_already_set();
}

// Gives a class the rest of what its kind of collection has; `items` are the type's parameters in the type stub.
void completeAs(py::handle type, const char* kind, const char* items, std::initializer_list<const char*> methods) {
    const Object mixin = py::module_::import("collections.abc").attr(kind);
    py::setattr(type, "__stub_base__", py::str(std::string(kind) + items));
    for (const char* name : methods) py::setattr(type, name, attribute(mixin, name));
    attribute(mixin, "register")(type);
    refusePickling(type);
}

template <class Keys, class Convert>
Object iteratorOver(const Keys& keys, Convert convert) {
    py::list list;
    for (const auto& key : keys) list.append(convert(key));
    return own(PyObject_GetIter(list.ptr()));
}

const Parameter keyParameter{"key", "Any", "key of the pool"};
const Parameter soughtParameter{"key", "object", "what is looked for"};
const Parameter otherParameter{"other", "Any", "what it is joined with"};

// What mappings have beside the methods of collections.abc.
ClassMaker& completeMapping(ClassMaker& type, const char* items) {
    type.method("copy", {}, "A plain dictionary of what is there now.", {std::string("dict") + items}, {},
                [](py::handle self) { return py::dict(borrow(self.ptr())); })
        .method("__or__", {otherParameter}, "A plain dictionary of both.", {std::string("dict") + items}, {},
                [](py::handle self, const Object& other) {
                    const py::dict both(borrow(self.ptr()));
                    callMethod(both, "update", other);
                    return both;
                })
        .method("__ror__", {otherParameter}, "A plain dictionary of both.", {std::string("dict") + items}, {},
                [](py::handle self, const Object& other) {
                    const py::dict both(other);
                    callMethod(both, "update", self);
                    return both;
                })
        .method("__ior__", {otherParameter}, "Takes over what the other one has.", {"Self"}, {},
                [](py::handle self, const Object& other) {
                    callMethod(self, "update", other);
                    return borrow(self.ptr());
                })
        .method("__repr__", {}, "Its content.", {"str"}, {}, [](py::handle self) {
            return py::str("{}({})").format(attribute(py::type::of(self), "__name__"),
                                            py::repr(py::dict(borrow(self.ptr()))));
        });
    completeAs(type.type(), "MutableMapping", items,
               {"get", "pop", "popitem", "clear", "update", "setdefault", "keys", "values", "items", "__eq__",
                "_MutableMapping__marker"});
    return type;
}

// The key of a lookup: what is no integer, or no key's size, is not there.
std::optional<EchoPool::Key> soughtKey(py::handle key) {
    if (PyIndex_Check(key.ptr()) == 0) return std::nullopt;
    const Object number = own(PyNumber_Index(key.ptr()));
    int beyond = 0;
    const long long value = PyLong_AsLongLongAndOverflow(number.ptr(), &beyond);
    return beyond != 0 ? std::nullopt : std::optional<EchoPool::Key>(value);
}

EchoPool::Key presentKey(py::handle key) {
    const auto number = soughtKey(key);
    if (!number) missing(key);
    return *number;
}

void defineEchoPool(Package& package) {
    using Pool = std::shared_ptr<EchoPool>;
    const Parameter reply{"value", "bytes", "data of the reply"};
    ClassMaker type = py::class_<EchoPool, Pool>(package.module(), "EchoPool",
                                                 "Latest unclaimed reply per command code or composite motion key.");
    type.method("__getitem__", {keyParameter}, "The reply, which stays.", {"bytes"}, {"KeyError: there is none"},
                [](const Pool& pool, const Object& key) -> Object {
                    const auto data = pool->peek(presentKey(key));
                    if (!data) missing(key);
                    return toBytes(*data);
                })
        .method("__setitem__", {keyParameter, reply}, "Files a reply and wakes who waits for it.", {}, {},
                [](const Pool& pool, EchoPool::Key key, const Object& value) {
                    Bytes data = bytesOf(value);
                    const WithoutGil released;
                    pool->put(key, std::move(data));
                })
        .method("__delitem__", {keyParameter}, "Drops a reply.", {}, {"KeyError: there is none"},
                [](const Pool& pool, const Object& key) {
                    if (!pool->take(presentKey(key))) missing(key);
                })
        .method("__contains__", {soughtParameter}, "Whether a reply is there.", {"bool"}, {},
                [](const Pool& pool, const Object& key) {
                    const auto number = soughtKey(key);
                    return number && pool->contains(*number);
                })
        .method("__len__", {}, "Number of replies.", {"int"}, {}, [](const Pool& pool) { return pool->keys().size(); })
        .method("__iter__", {}, "Iterates over the keys that are there now.", {"Iterator[int]"}, {},
                [](const Pool& pool) {
                    return iteratorOver(pool->keys(), [](EchoPool::Key key) { return py::int_(key); });
                });
    completeMapping(type, "[int, bytes]");
}

// A key is the command, or a tuple of it with port and chip select; nothing for what can be none.
std::optional<StreamKey> soughtStreamKey(py::handle key) {
    const auto part = [](py::handle value) -> std::optional<int> {
        const auto number = soughtKey(value);
        if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max()) {
            return std::nullopt;
        }
        return static_cast<int>(*number);
    };
    py::tuple parts;
    if (PyTuple_Check(key.ptr())) {
        parts = borrow(key.ptr());
    } else {
        parts = py::make_tuple(borrow(key.ptr()));
    }
    if (parts.empty() || parts.size() > 3) return std::nullopt;
    std::array<int, 3> numbers{0, StreamKey::absent, StreamKey::absent};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto number = part(parts[i]);
        if (!number) return std::nullopt;
        numbers[i] = *number;
    }
    return StreamKey{numbers[0], numbers[1], numbers[2]};
}

StreamKey streamKey(py::handle key) {
    const auto found = soughtStreamKey(key);
    if (!found) missing(key);
    return *found;
}

}  // namespace

Object keyObject(const StreamKey& key) {
    if (key.port == StreamKey::absent) return py::int_(key.command);
    if (key.chipSelect == StreamKey::absent) return py::make_tuple(key.command, key.port);
    return py::make_tuple(key.command, key.port, key.chipSelect);
}

namespace {

// Mappings that make what is missing: `get`, `pop` and `in` do not.
constexpr const char* presentOnly = "What is there under a key; nothing is made.";

void defineStreamPool(Package& package) {
    using Pool = std::shared_ptr<StreamPool>;
    const Parameter standard{"default", "Any", "what is given where there is none", "None"};
    ClassMaker type = py::class_<StreamPool, Pool>(
        package.module(), "StreamPool",
        "Queue of streamed frames per command, or per tuple of command, port and chip select. A missing key makes an "
        "empty queue.");
    type.method("__getitem__", {keyParameter}, "The queue of a key.", {"Fifo"},
                {"KeyError: it is neither an integer nor a tuple of up to three"},
                [](const Pool& pool, const Object& key) { return pool->at(streamKey(key)); })
        .method("__setitem__", {keyParameter, {"value", "Fifo", "the queue that frames of this key go to"}},
                "Puts a queue in place of another.", {}, {"TypeError: it is no Fifo"},
                [](const Pool& pool, const Object& key, const std::shared_ptr<StreamFifo>& value) {
                    pool->put(streamKey(key), value);
                })
        .method("__delitem__", {keyParameter}, "Drops a queue; the next frame makes another.", {},
                {"KeyError: there is none"},
                [](const Pool& pool, const Object& key) {
                    if (!pool->erase(streamKey(key))) missing(key);
                })
        .method("__contains__", {soughtParameter}, "Whether the queue exists.", {"bool"}, {},
                [](const Pool& pool, const Object& key) {
                    const auto found = soughtStreamKey(key);
                    return found && pool->contains(*found);
                })
        .method("__len__", {}, "Number of queues.", {"int"}, {}, [](const Pool& pool) { return pool->keys().size(); })
        .method("__iter__", {}, "Iterates over the keys that are there now.", {"Iterator[Any]"}, {},
                [](const Pool& pool) { return iteratorOver(pool->keys(), keyObject); });
    completeMapping(type, "[Any, Fifo]");
    type.method("get", {keyParameter, standard}, presentOnly, {"Any"}, {},
                [](const Pool& pool, const Object& key, const Object& standard) -> Object {
                    const auto found = soughtStreamKey(key);
                    return found && pool->contains(*found) ? py::cast(pool->at(*found)) : standard;
                })
        .method("pop", {keyParameter, {"*args", "Any", "what is given where there is none"}}, "Takes a queue out.",
                {"Any"}, {"KeyError: there is none, and no default"},
                [](const Pool& pool, const Object& key, const Object& standard) -> Object {
                    const auto found = soughtStreamKey(key);
                    if (found && pool->contains(*found)) {
                        Object queue = py::cast(pool->at(*found));
                        pool->erase(*found);
                        return queue;
                    }
                    const py::tuple given = borrow(standard.ptr());
                    if (given.empty()) missing(key);
                    return given[0];
                });
}

template <class Item>
Item itemOf(const Object& item);
// What is no frame is kept all the same, and given back.
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
            frame.reset();  // the reader of the queue refuses it
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
        return blocking([&](const Attend& attend) { return queue->put(std::move(value), deadline, attend); });
    }
    static Object take(const std::shared_ptr<Queue>& queue) {
        const auto item = queue->tryGet();
        return item ? toObject(*item) : Object();
    }
};

template <class Item>
void defineFifoOf(Package& package, const char* name, const char* doc, const char* kind, const char* what) {
    using Queue = Fifo<Item>;
    ClassMaker type =
        py::class_<Queue, std::shared_ptr<Queue>>(package.module(), name, doc)
            .def(py::init([](const Object& maxsize) { return std::make_shared<Queue>(queueCapacity(maxsize)); }),
                 py::arg("maxsize") = 0);
    defineQueueFace<FifoAccess<Item>>(type, kind, what);
    refusePickling(type.type());
}

void defineFifos(Package& package) {
    defineFifoOf<StreamItem>(package, "Fifo", "Thread-safe queue of frames, or of anything.", "Any",
                             "data of a frame as bytes, or anything else; None is the marker that wakes a reader");
    defineFifoOf<SharedObject>(package, "ItemFifo", "Thread-safe queue of any objects.", "Any",
                               "any object; None is the marker that wakes a reader");
}

py::set setOf(const RecordSet& records) {
    py::set set;
    for (const Bytes& record : records.records()) set.add(toBytes(record));
    return set;
}

void assign(RecordSet& records, const Object& values) {
    std::vector<Bytes> bytes;
    for (const py::handle value : values) bytes.push_back(bytesOf(value));
    records.clear();
    for (Bytes& value : bytes) records.add(std::move(value));
}

// The methods that a set has too and that give a new set, and those that change it: both work on a plain set.
void completeSet(ClassMaker& type) {
    const Parameter others{"*args", "Any", "sets or other collections"};
    for (const char* name :
         {"union", "intersection", "difference", "symmetric_difference", "__or__", "__and__", "__sub__", "__xor__",
          "__ror__", "__rand__", "__rsub__", "__rxor__", "issubset", "issuperset"}) {
        type.add({name,
                  {others},
                  "As of a set of what is there now.",
                  {"Any"},
                  {},
                  [](const Definition& definition, py::handle self, Arguments given) -> Object {
                      const py::set now = setOf(*native<RecordSet>(self));
                      return attribute(now, definition.name.c_str())(*py::tuple(given[0]));
                  }},
                 Form::method);
    }
    for (const char* name : {"update", "intersection_update", "difference_update", "symmetric_difference_update",
                             "__ior__", "__iand__", "__isub__", "__ixor__"}) {
        type.add({name,
                  {others},
                  "As of a set.",
                  {"Any"},
                  {},
                  [](const Definition& definition, py::handle self, Arguments given) -> Object {
                      const auto records = native<RecordSet>(self);
                      const py::set now = setOf(*records);
                      const Object done = attribute(now, definition.name.c_str())(*py::tuple(given[0]));
                      if (done.is(borrow(Py_NotImplemented))) return done;
                      assign(*records, now);
                      return done.is_none() ? done : borrow(self.ptr());
                  }},
                 Form::method);
    }
}

void defineBroadcastPool(Package& package) {
    using Set = std::shared_ptr<RecordSet>;
    using Pool = std::shared_ptr<BroadcastPool>;
    const Parameter record{"value", "bytes", "data of a reply"};
    ClassMaker set = py::class_<RecordSet, Set>(package.module(), "RecordSet",
                                                "Replies to one broadcast command; equal ones count once.");
    set.method("__contains__", {soughtParameter}, "Whether a reply is there.", {"bool"}, {},
               [](const Set& records, const Object& value) {
                   return PyBytes_Check(value.ptr()) != 0 && records->contains(bytesOf(value));
               })
        .method("__iter__", {}, "Iterates over the replies that are there now.", {"Iterator[bytes]"}, {},
                [](const Set& records) { return iteratorOver(records->records(), toBytes); })
        .method("__len__", {}, "Number of different replies.", {"int"}, {},
                [](const Set& records) { return records->records().size(); })
        .method("add", {record}, "Adds a reply.", {}, {},
                [](const Set& records, const Object& value) { records->add(bytesOf(value)); })
        .method("discard", {record}, "Removes a reply if it is there.", {}, {},
                [](const Set& records, const Object& value) { records->discard(bytesOf(value)); })
        .method("clear", {}, "Removes all replies.", {}, {}, [](const Set& records) { records->clear(); })
        .method("copy", {}, "A plain set of what is there now.", {"set[bytes]"}, {},
                [](const Set& records) { return setOf(*records); })
        .method("__repr__", {}, "Its content.", {"str"}, {},
                [](const Set& records) { return py::repr(setOf(*records)); });
    completeSet(set);
    completeAs(set.type(), "MutableSet", "[bytes]",
               {"remove", "pop", "isdisjoint", "__eq__", "__le__", "__lt__", "__ge__", "__gt__"});

    ClassMaker pool = py::class_<BroadcastPool, Pool>(
        package.module(), "BroadcastPool", "Set of replies per broadcast command. A missing key makes an empty set.");
    const auto present = [](const BroadcastPool& pool, py::handle key) -> std::optional<int> {
        const auto found = soughtStreamKey(key);
        return found && found->port == StreamKey::absent && pool.contains(found->command)
                   ? std::optional(found->command)
                   : std::nullopt;
    };
    using Present = decltype(present);
    pool.method("__getitem__", {keyParameter}, "The set of a command.", {"RecordSet"}, {"KeyError: it is no integer"},
                [](const Pool& pool, const Object& key) { return pool->at(streamKey(key).command); })
        .method("__setitem__", {keyParameter, {"value", "Iterable[bytes]", "replies"}},
                "Files replies under a command, in place of others.", {}, {},
                [](const Pool& pool, const Object& key, const Object& value) {
                    const int command = streamKey(key).command;
                    if (const auto records = nativeOrNothing<RecordSet>(value)) {
                        pool->put(command, records);
                    } else {
                        const auto fresh = std::make_shared<RecordSet>();
                        assign(*fresh, value);
                        pool->put(command, fresh);
                    }
                })
        .method("__delitem__", {keyParameter}, "Drops a set; the next reply makes another.", {},
                {"KeyError: there is none"},
                [](const Pool& pool, const Object& key) {
                    if (!pool->erase(streamKey(key).command)) missing(key);
                })
        .method("__contains__", {soughtParameter}, "Whether the set exists.", {"bool"}, {},
                [](const Pool& pool, const Object& key) { return Present{}(*pool, key).has_value(); })
        .method("__len__", {}, "Number of sets.", {"int"}, {}, [](const Pool& pool) { return pool->keys().size(); })
        .method("__iter__", {}, "Iterates over the commands that are there now.", {"Iterator[int]"}, {},
                [](const Pool& pool) { return iteratorOver(pool->keys(), [](int key) { return py::int_(key); }); });
    completeMapping(pool, "[int, RecordSet]");
    pool.method("get", {keyParameter, {"default", "Any", "what is given where there is none", "None"}}, presentOnly,
                {"Any"}, {},
                [](const Pool& pool, const Object& key, const Object& standard) -> Object {
                    const auto found = Present{}(*pool, key);
                    return found ? py::cast(pool->at(*found)) : standard;
                })
        .method("pop", {keyParameter, {"*args", "Any", "what is given where there is none"}}, "Takes a set out.",
                {"Any"}, {"KeyError: there is none, and no default"},
                [](const Pool& pool, const Object& key, const Object& standard) -> Object {
                    if (const auto found = Present{}(*pool, key)) {
                        Object records = py::cast(pool->at(*found));
                        pool->erase(*found);
                        return records;
                    }
                    const py::tuple given = borrow(standard.ptr());
                    if (given.empty()) missing(key);
                    return given[0];
                });
}

// As of the host's locks, but that a held gate does not make a blocking call wait.
bool acquire(const std::shared_ptr<Gate>& gate, bool waits, double timeout) {
    if (!waits && timeout != -1) throw py::value_error("can't specify a timeout for a non-blocking call");
    if (timeout < 0 && timeout != -1) throw py::value_error("timeout value must be a non-negative number");
    if (waits && timeout < 0) {
        gate->acquire();
        return true;
    }
    const Deadline deadline = waits ? deadlineIn(timeout) : Clock::now();
    return blocking([&](const Attend& attend) { return gate->acquireOpen(deadline, attend); });
}

void defineGate(Package& package) {
    using Held = std::shared_ptr<Gate>;
    const Parameter waits{"blocking", "bool", "whether to shut it although it is shut already; such a call never waits",
                          "True"};
    const Parameter timeout{"timeout", "float", "seconds to wait for a shut gate to open; -1 for not at all", "-1"};
    const Returns shut{"bool", "whether the gate is the caller's now; False only for one that was shut"};
    ClassMaker type = py::class_<Gate, Held>(
                          package.module(), "Gate",
                          "Gate of a receive thread, with the face of a lock: shut by acquire, opened by release. A "
                          "new one is open. Nothing waits for a shut gate for ever, and opening an open one does "
                          "nothing.")
                          .def(py::init([] {
                              auto gate = std::make_shared<Gate>();
                              gate->release();
                              return gate;
                          }));
    type.method("acquire", {waits, timeout}, "Shuts the gate.", shut, {},
                [](const Held& gate, bool waits, Seconds timeout) { return acquire(gate, waits, timeout); })
        .method("release", {}, "Opens the gate.", {}, {}, [](const Held& gate) { gate->release(); })
        .method("locked", {}, "Whether the gate is shut.", {"bool"}, {},
                [](const Held& gate) { return gate->locked(); })
        .method("__enter__", {}, "Shuts the gate.", {"bool", "True"}, {},
                [](const Held& gate) { return acquire(gate, true, -1); })
        .method("__exit__", {{"*failure", "object", ""}}, "Opens the gate.", {}, {},
                [](const Held& gate, const Object&) { gate->release(); });
    refusePickling(type.type());
}

}  // namespace

void refusePickling(py::handle type) {
    ClassMaker(type).method("__reduce_ex__", {{"protocol", "object", ""}}, "Refuses: threads of this process use it.",
                            {"Any"}, {"TypeError: always"}, [](py::handle self, const Object&) -> Object {
                                throw py::type_error(std::string("a ") + Py_TYPE(self.ptr())->tp_name +
                                                     " cannot be copied or pickled: threads of this process use it");
                            });
}

void definePools(Package& package) {
    defineGate(package);
    defineFifos(package);
    defineEchoPool(package);
    defineStreamPool(package);
    defineBroadcastPool(package);
}

}  // namespace zvr::python
