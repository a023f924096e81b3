// The pools as Python mappings and sets, over the C++ objects that the receive threads fill.
#include "core/engine/pools.h"

#include "core/engine/gate.h"
#include "device/protocol.h"
#include "device/queue_face.h"

namespace zvr::python {

namespace {

[[noreturn]] void missing(py::handle key) {
    PyErr_SetObject(PyExc_KeyError, key.ptr());
    throw py::error_already_set();
}

// Adds the mixin methods of a collections.abc class; `items` are the type's parameters in the type stub.
void completeAs(py::handle type, const char* kind, const char* items, std::initializer_list<const char*> methods) {
    const Object mixin = py::module_::import("collections.abc").attr(kind);
    py::setattr(type, "__stub_base__", py::str(std::string(kind) + items));
    for (const char* name : methods) py::setattr(type, name, attribute(mixin, name));
    attribute(mixin, "register")(type);
    refusePickling(type);
}

const Parameter keyParameter{"key", "Any", "key of the pool"};
const Parameter soughtParameter{"key", "object", "the key or item to look for"};
const Parameter otherParameter{"other", "Any", "the mapping to merge with"};

// The methods of a dict beyond those of collections.abc.
ClassMaker& completeMapping(ClassMaker& type, const char* items) {
    type.method({.name = "copy",
                 .doc = "Returns a plain dictionary of the current entries.",
                 .returns = {std::string("dict") + items},
                 .body = [](py::handle self) { return py::dict(borrow(self.ptr())); }})
        .method({.name = "__or__",
                 .parameters = {otherParameter},
                 .doc = "Returns a plain dictionary of both.",
                 .returns = {std::string("dict") + items},
                 .body =
                     [](py::handle self, const Object& other) {
                         const py::dict both(borrow(self.ptr()));
                         callMethod(both, "update", other);
                         return both;
                     }})
        .method({.name = "__ror__",
                 .parameters = {otherParameter},
                 .doc = "Returns a plain dictionary of both.",
                 .returns = {std::string("dict") + items},
                 .body =
                     [](py::handle self, const Object& other) {
                         const py::dict both(other);
                         callMethod(both, "update", self);
                         return both;
                     }})
        .method({.name = "__ior__",
                 .parameters = {otherParameter},
                 .doc = "Adds the entries of the other mapping.",
                 .returns = {"Self"},
                 .body =
                     [](py::handle self, const Object& other) {
                         callMethod(self, "update", other);
                         return borrow(self.ptr());
                     }})
        .method({.name = "__repr__", .doc = "Its content.", .returns = {"str"}, .body = [](py::handle self) {
                     return py::str("{}({})").format(attribute(py::type::of(self), "__name__"),
                                                     py::repr(py::dict(borrow(self.ptr()))));
                 }});
    completeAs(type.type(), "MutableMapping", items,
               {"get", "pop", "clear", "update", "setdefault", "keys", "values", "items", "__eq__",
                "_MutableMapping__marker"});
    type.method({.name = "popitem",
                 .doc = "Removes and returns the newest entry.",
                 .returns = {"tuple[Any, Any]"},
                 .raises = {"KeyError: there is none"},
                 .body = [](py::handle self) -> Object {
                     const py::list keys(borrow(self.ptr()));
                     if (keys.empty()) throw py::key_error("popitem(): the pool is empty");
                     const Object key = keys[keys.size() - 1];
                     return py::make_tuple(key, callMethod(self, "pop", key));
                 }})
        .method({.name = "__reversed__",
                 .doc = "Iterates over the keys from the newest on.",
                 .returns = {"Iterator[Any]"},
                 .body = [](py::handle self) {
                     const py::list keys(borrow(self.ptr()));
                     callMethod(keys, "reverse");
                     return own(PyObject_GetIter(keys.ptr()));
                 }});
    py::setattr(type.type(), "__hash__", py::none());
    return type;
}

// Entries that a native pool cannot hold, with keys or values that no frame can have, are kept in a dictionary beside
// it.
py::dict othersOf(py::handle pool) {
    const py::dict fields = own(PyObject_GenericGetDict(pool.ptr(), nullptr));
    if (!fields.contains("_others")) fields["_others"] = py::dict();
    return fields["_others"];
}

void requireHashable(py::handle key) {
    if (entering([&] { return PyObject_Hash(key.ptr()); }) == -1) throw py::error_already_set();
}

// The number of a frame's key; empty if it is not one.
std::optional<std::int64_t> numberOfKey(py::handle key) {
    requireHashable(key);
    if (PyIndex_Check(key.ptr()) == 0) return std::nullopt;
    const Object number = own(entering([&] { return PyNumber_Index(key.ptr()); }));
    int beyond = 0;
    const long long value = PyLong_AsLongLongAndOverflow(number.ptr(), &beyond);
    return beyond != 0 ? std::nullopt : std::optional<std::int64_t>(value);
}

Object otherOrMissing(py::handle pool, const Object& key) {
    const py::dict others = othersOf(pool);
    if (!others.contains(key)) missing(key);
    return others[key];
}

void eraseOther(py::handle pool, const Object& key) {
    const py::dict others = othersOf(pool);
    if (others.contains(key) && PyDict_DelItem(others.ptr(), key.ptr()) != 0) throw py::error_already_set();
}

template <class Keys, class Convert>
Object iteratorOverKeys(py::handle pool, const Keys& keys, Convert convert) {
    py::list list;
    for (const auto& key : keys) list.append(convert(key));
    callMethod(list, "extend", othersOf(pool));
    return own(PyObject_GetIter(list.ptr()));
}

void defineEchoPool(Package& package) {
    const Parameter reply{"value", "Any", "data of the reply as bytes, or any object"};
    ClassMaker type = py::class_<EchoPool, std::shared_ptr<EchoPool>>(
        package.module(), "EchoPool", "Latest unclaimed reply per command code or composite motion key.",
        py::dynamic_attr());
    type.method({.name = "__getitem__",
                 .parameters = {keyParameter},
                 .doc = "The reply, which stays.",
                 .returns = {"Any"},
                 .raises = {"KeyError: there is none"},
                 .body = [](py::handle self, const Object& key) -> Object {
                     const auto pool = native<EchoPool>(self);
                     const auto number = numberOfKey(key);
                     const auto data = number ? pool->peek(*number) : std::nullopt;
                     return data ? Object(toBytes(*data)) : otherOrMissing(self, key);
                 }})
        .method({.name = "__setitem__",
                 .parameters = {keyParameter, reply},
                 .doc = "Files a reply and notifies its waiters.",
                 .body =
                     [](py::handle self, const Object& key, const Object& value) {
                         const auto pool = native<EchoPool>(self);
                         const auto number = numberOfKey(key);
                         if (!number || !PyBytes_CheckExact(value.ptr())) {
                             othersOf(self)[key] = value;
                             if (number) pool->take(*number);
                             return;
                         }
                         eraseOther(self, key);
                         Bytes data = bytesOf(value);
                         const WithoutGil released;
                         pool->put(*number, std::move(data));
                     }})
        .method({.name = "__delitem__",
                 .parameters = {keyParameter},
                 .doc = "Drops a reply.",
                 .raises = {"KeyError: there is none"},
                 .body =
                     [](py::handle self, const Object& key) {
                         const auto pool = native<EchoPool>(self);
                         const auto number = numberOfKey(key);
                         if (number && pool->take(*number)) return;
                         otherOrMissing(self, key);
                         eraseOther(self, key);
                     }})
        .method({.name = "__contains__",
                 .parameters = {soughtParameter},
                 .doc = "Whether a reply is there.",
                 .returns = {"bool"},
                 .body =
                     [](py::handle self, const Object& key) {
                         const auto pool = native<EchoPool>(self);
                         const auto number = numberOfKey(key);
                         return (number && pool->contains(*number)) || othersOf(self).contains(key);
                     }})
        .method({.name = "__len__",
                 .doc = "Number of replies.",
                 .returns = {"int"},
                 .body = [](py::handle self) { return native<EchoPool>(self)->keys().size() + othersOf(self).size(); }})
        .method({.name = "__iter__",
                 .doc = "Iterates over the keys that are there now.",
                 .returns = {"Iterator[Any]"},
                 .body = [](py::handle self) {
                     return iteratorOverKeys(self, native<EchoPool>(self)->keys(),
                                             [](EchoPool::Key key) { return py::int_(key); });
                 }});
    completeMapping(type, "[Any, Any]");
}

// A key is the command, or a tuple of command, port and chip select; empty if no frame can have it.
std::optional<StreamKey> keyOf(py::handle key, const StreamPool&) {
    py::tuple parts = py::make_tuple(borrow(key.ptr()));
    if (PyTuple_Check(key.ptr())) {
        requireHashable(key);
        parts = borrow(key.ptr());
    }
    if (parts.empty() || parts.size() > 3) return std::nullopt;
    std::array<int, 3> numbers{0, StreamKey::absent, StreamKey::absent};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto number = numberOfKey(parts[i]);
        // A negative part would mean an absent one.
        if (!number || *number < (i == 0 ? std::numeric_limits<int>::min() : 0) ||
            *number > std::numeric_limits<int>::max()) {
            return std::nullopt;
        }
        numbers[i] = static_cast<int>(*number);
    }
    return StreamKey{numbers[0], numbers[1], numbers[2]};
}

std::optional<int> keyOf(py::handle key, const BroadcastPool&) {
    const auto number = numberOfKey(key);
    if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*number);
}

}  // namespace

Object keyObject(const StreamKey& key) {
    if (key.port == StreamKey::absent) return py::int_(key.command);
    if (key.chipSelect == StreamKey::absent) return py::make_tuple(key.command, key.port);
    return py::make_tuple(key.command, key.port, key.chipSelect);
}

namespace {

template <class Entry>
Object objectOfEntry(const Entry& entry) {
    if (entry.foreign) return borrow(static_cast<PyObject*>(entry.foreign.get()));
    return entry.own ? py::cast(entry.own) : Object();
}

/// A mapping that creates missing entries as defaultdict does: by index only, not in `get`, `pop` and `in`.
template <class Key, class Thing>
void defineMakingPool(Package& package, const char* name, const char* doc, const char* thing, const char* items) {
    using Pool = MakingPool<Key, Thing>;
    const Parameter otherwise{"default", "Any", "returned if there is none", "None"};
    ClassMaker type = py::class_<Pool, std::shared_ptr<Pool>>(package.module(), name, doc, py::dynamic_attr());
    static constexpr auto find = [](py::handle self, const Object& key) -> Object {
        const auto pool = native<Pool>(self);
        if (const auto number = keyOf(key, *pool)) return objectOfEntry(pool->find(*number));
        const py::dict others = othersOf(self);
        return others.contains(key) ? Object(others[key]) : Object();
    };
    static constexpr auto erase = [](py::handle self, const Object& key) {
        const auto pool = native<Pool>(self);
        if (const auto number = keyOf(key, *pool)) {
            pool->erase(*number);
        } else {
            eraseOther(self, key);
        }
    };
    type.method({.name = "__getitem__",
                 .parameters = {keyParameter},
                 .doc = "Returns the entry of a key; created if missing.",
                 .returns = {"Any"},
                 .body = [](py::handle self, const Object& key) -> Object {
                     if (Object found = find(self, key)) return found;
                     const auto pool = native<Pool>(self);
                     if (const auto number = keyOf(key, *pool)) {
                         pool->at(*number);
                         return find(self, key);
                     }
                     const py::dict others = othersOf(self);
                     others[key] = py::cast(std::make_shared<Thing>());
                     return others[key];
                 }})
        .method({.name = "__setitem__",
                 .parameters = {keyParameter,
                                {"value", "Any",
                                 std::string(thing) + ", or a replacement that is used through its methods"}},
                 .doc = "Replaces an entry.",
                 .body =
                     [](py::handle self, const Object& key, const Object& value) {
                         const auto pool = native<Pool>(self);
                         const auto number = keyOf(key, *pool);
                         if (!number) {
                             othersOf(self)[key] = value;
                         } else if (auto own = nativeOrNothing<Thing>(value)) {
                             pool->put(*number, std::move(own));
                         } else {
                             pool->put(*number, nullptr, shared(value));
                         }
                     }})
        .method({.name = "__delitem__",
                 .parameters = {keyParameter},
                 .doc = "Removes an entry; the next frame creates another.",
                 .raises = {"KeyError: there is none"},
                 .body =
                     [](py::handle self, const Object& key) {
                         if (!find(self, key)) missing(key);
                         erase(self, key);
                     }})
        .method({.name = "__contains__",
                 .parameters = {soughtParameter},
                 .doc = "Whether there is such an entry.",
                 .returns = {"bool"},
                 .body = [](py::handle self, const Object& key) { return static_cast<bool>(find(self, key)); }})
        .method({.name = "__len__",
                 .doc = "Number of entries.",
                 .returns = {"int"},
                 .body = [](py::handle self) { return native<Pool>(self)->keys().size() + othersOf(self).size(); }})
        .method({.name = "__iter__",
                 .doc = "Iterates over the keys that are there now.",
                 .returns = {"Iterator[Any]"},
                 .body = [](py::handle self) {
                     return iteratorOverKeys(self, native<Pool>(self)->keys(), [](const Key& key) -> Object {
                         if constexpr (std::is_same_v<Key, int>) {
                             return py::int_(key);
                         } else {
                             return keyObject(key);
                         }
                     });
                 }});
    completeMapping(type, items);
    type.method({.name = "get",
                 .parameters = {keyParameter, otherwise},
                 .doc = "Returns the entry of a key, without creating one.",
                 .returns = {"Any"},
                 .body = [](py::handle self, const Object& key, const Object& otherwise) -> Object {
                     Object found = find(self, key);
                     return found ? found : otherwise;
                 }})
        .method({.name = "pop",
                 .parameters = {keyParameter, {"*args", "Any", "returned if there is none"}},
                 .doc = "Removes and returns an entry.",
                 .returns = {"Any"},
                 .raises = {"KeyError: there is none, and no default"},
                 .body = [](py::handle self, const Object& key, const Object& otherwise) -> Object {
                     if (Object found = find(self, key)) {
                         erase(self, key);
                         return found;
                     }
                     const py::tuple given = borrow(otherwise.ptr());
                     if (given.empty()) missing(key);
                     return given[0];
                 }})
        .method({.name = "setdefault",
                 .parameters = {keyParameter, otherwise},
                 .doc = "Returns the entry of a key, or else adds the default and returns it.",
                 .returns = {"Any"},
                 .body = [](py::handle self, const Object& key, const Object& otherwise) -> Object {
                     if (Object found = find(self, key)) return found;
                     if (PyObject_SetItem(self.ptr(), key.ptr(), otherwise.ptr()) != 0) throw py::error_already_set();
                     return otherwise;
                 }});
}

void defineStreamPool(Package& package) {
    StreamPool::addForeign = [](const std::shared_ptr<void>& queue, Bytes frame) {
        if (!interpreterAlive()) return;
        const WithGil acquired;
        callMethod(static_cast<PyObject*>(queue.get()), "put", toBytes(frame));
    };
    defineMakingPool<StreamKey, StreamFifo>(package, "StreamPool",
                                            "Queue of streamed frames per command, or per tuple of command, port and "
                                            "chip select. A missing key creates an empty queue.",
                                            "a Fifo", "[Any, Any]");
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

// The methods of a set that return a new set, and those that change it: both work on a plain set.
void completeSet(ClassMaker& type) {
    const Parameter others{"*args", "Any", "sets or other collections"};
    for (const char* name :
         {"union", "intersection", "difference", "symmetric_difference", "__or__", "__and__", "__sub__", "__xor__",
          "__ror__", "__rand__", "__rsub__", "__rxor__", "issubset", "issuperset"}) {
        type.add({name,
                  {others},
                  "As on a plain set of the current replies.",
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
                  "As on a plain set.",
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
    const Parameter record{"value", "bytes", "data of a reply"};
    ClassMaker set = py::class_<RecordSet, Set>(package.module(), "RecordSet",
                                                "Replies to one broadcast command, without duplicates.");
    set.method({.name = "__contains__",
                .parameters = {soughtParameter},
                .doc = "Whether a reply is there.",
                .returns = {"bool"},
                .body =
                    [](const Set& records, const Object& value) {
                        return PyBytes_Check(value.ptr()) != 0 && records->contains(bytesOf(value));
                    }})
        .method({.name = "__iter__",
                 .doc = "Iterates over the replies that are there now.",
                 .returns = {"Iterator[bytes]"},
                 .body = [](const Set& records) { return own(PyObject_GetIter(setOf(*records).ptr())); }})
        .method({.name = "__len__",
                 .doc = "Number of different replies.",
                 .returns = {"int"},
                 .body = [](const Set& records) { return records->records().size(); }})
        .method({.name = "add",
                 .parameters = {record},
                 .doc = "Adds a reply.",
                 .body = [](const Set& records, const Object& value) { records->add(bytesOf(value)); }})
        .method({.name = "discard",
                 .parameters = {record},
                 .doc = "Removes a reply if it is there.",
                 .body = [](const Set& records, const Object& value) { records->discard(bytesOf(value)); }})
        .method({.name = "clear", .doc = "Removes all replies.", .body = [](const Set& records) { records->clear(); }})
        .method({.name = "copy",
                 .doc = "Returns a plain set of the current replies.",
                 .returns = {"set[bytes]"},
                 .body = [](const Set& records) { return setOf(*records); }})
        .method({.name = "__repr__", .doc = "Its content.", .returns = {"str"}, .body = [](const Set& records) {
                     return py::repr(setOf(*records));
                 }});
    completeSet(set);
    completeAs(set.type(), "MutableSet", "[bytes]",
               {"remove", "pop", "isdisjoint", "__eq__", "__le__", "__lt__", "__ge__", "__gt__"});

    py::setattr(set.type(), "__hash__", py::none());
    BroadcastPool::addForeign = [](const std::shared_ptr<void>& records, Bytes record) {
        if (!interpreterAlive()) return;
        const WithGil acquired;
        callMethod(static_cast<PyObject*>(records.get()), "add", toBytes(record));
    };
    defineMakingPool<int, RecordSet>(package, "BroadcastPool",
                                     "Set of replies per broadcast command. A missing key creates an empty set.",
                                     "a RecordSet", "[Any, Any]");
}

}  // namespace

void definePools(Package& package) {
    defineEchoPool(package);
    defineStreamPool(package);
    defineBroadcastPool(package);
}

}  // namespace zvr::python
