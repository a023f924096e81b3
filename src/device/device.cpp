#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "device/devices.h"
#include "device/protocol.h"
#include "device/queue_face.h"
#include "device/runtime.h"
#include "python/raising.h"
#include "python/values.h"

namespace zvr::python {

const Parameter verboseParameter{"verbose", "bool", "whether to print a line", "True"};

void printMessage(const Object& verbose, const char* message, py::handle self) {
    if (isTrue(verbose)) printLine(py::str("{} ({})").format(message, callMethod(self, "_getDeviceName")));
}

bool isTrue(py::handle self, const char* field) { return isTrue(attribute(self, field)); }

Object classNamed(const char* type) { return packageObject(type); }

namespace {

// The name of a class counts for its subclasses too.
Object displayName(py::handle self) {
    const Object labels = packageObject("LABEL_DICT");
    for (const py::handle type : attribute(py::type::of(self), "__mro__")) {
        const Object name = attribute(type, "__name__");
        if (labels.contains(name)) return own(PyObject_GetItem(labels.ptr(), name.ptr()));
    }
    throw py::key_error(py::cast<std::string>(attribute(py::type::of(self), "__name__")));
}

int firstByte(const Object& data) {
    const Bytes bytes = bytesOf(data);
    if (bytes.empty()) throw std::out_of_range("the frame has no data");
    return bytes[0];
}

bool isListed(const char* list, int command) { return packageObject(list).contains(py::int_(command)); }

std::string commandType(py::handle, int command, const Object& data) {
    if (isListed("STREAMING_CMD_LIST", command)) return "streaming";
    if (!isListed("BROADCAST_CMD_LIST", command)) return "echo";
    return firstByte(data) == 1 ? "broadcast" : "ignore";
}

Object restOfData(const Object& data, Py_ssize_t from) {
    const Object rest = own(PySlice_New(py::int_(from).ptr(), nullptr, nullptr));
    return own(PyObject_GetItem(data.ptr(), rest.ptr()));
}

// The pools are whatever the object has, each by itself.
void fileFrame(py::handle self, int command, const Object& data) {
    const auto kind = py::cast<std::string>(py::str(callMethod(self, "_checkCommandType", py::int_(command), data)));
    if (kind == "streaming") {
        const auto [key, skip] = streamPlaceOf(command, bytesOf(data));
        const Object pool = attribute(self, "data_pool_strm");
        const Object queue = own(PyObject_GetItem(pool.ptr(), keyObject(key).ptr()));
        callMethod(queue, "put", skip == 0 ? data : restOfData(data, static_cast<Py_ssize_t>(skip)));
    } else if (kind == "broadcast") {
        if (firstByte(data) != 1) return;
        const Object pool = attribute(self, "data_pool_bcst");
        callMethod(own(PyObject_GetItem(pool.ptr(), py::int_(command).ptr())), "add", restOfData(data, 1));
    } else if (kind == "echo") {
        const py::int_ key(command == MOTION ? motionKey(bytesOf(data)) : EchoPool::Key{command});
        const Object pool = attribute(self, "data_pool_echo");
        if (PyObject_SetItem(pool.ptr(), key.ptr(), data.ptr()) != 0) throw py::error_already_set();
    }
}

void defineThread(Package& package) {
    using Held = std::shared_ptr<OwnedThread>;
    ClassMaker type = py::class_<OwnedThread, Held>(
        package.module(), "DeviceThread", "A thread of a device object: it receives frames, or makes samples of them.");
    type.property({"name", "str", "Name of the thread."}, [](const Held& thread) { return thread->name(); })
        .property({"daemon", "bool", "True: the thread does not keep the program from ending."},
                  [](const Held&) { return true; })
        .property({"ident", "int", "Number of the thread, as threading.get_ident gives it."},
                  [](const Held& thread) { return thread->ident(); })
        .property({"native_id", "int", "Number that the system gives the thread."},
                  [](const Held& thread) { return thread->nativeId(); })
        .method("is_alive", {}, "Whether the thread runs.", {"bool"}, {},
                [](const Held& thread) { return thread->alive(); })
        .method("join", {{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"}},
                "Waits until the thread has ended.", {}, {}, [](const Held& thread, std::optional<Seconds> timeout) {
                    const Deadline deadline = timeout ? deadlineIn(*timeout) : forever;
                    blocking([&](const Attend& attend) { return thread->awaitEnd(deadline, attend); });
                });
    refusePickling(type.type());
}

// Sets or deletes an attribute as every object does, and tells the threads of those that they use.
template <class Change>
void changeField(py::handle self, const Object& name, Change change) {
    if (change() != 0) throw py::error_already_set();
    if (!Watch::watches(name)) return;
    if (const auto runtime = runtimeOrNothing(self)) runtime->watch->touch(self);
}

}  // namespace

void defineDevice(Package& package) {
    defineThread(package);
    const py::class_<DeviceRuntime, std::shared_ptr<DeviceRuntime>> runtime(package.module(), "_DeviceRuntime",
                                                                            "What the threads of a device touch.");
    refusePickling(runtime);
    Watch::watchNames({"killed", "data_pool_echo", "data_pool_strm", "data_pool_bcst", "_putToDataPool",
                       "_checkCommandType", "__class__", "__dict__"});

    const Parameter command{"cmd", "int", "command code of a received frame"};
    const Parameter data{"data", "bytes", "its data"};
    const Parameter name{"name", "str", "name of the attribute"};
    package.makeClass("Device", {}, "Root of the device classes: the data pools, and the end of everything.")
        .field({"killed", "bool", "set once, by `close`; ends the object's threads"})
        .field({"data_pool_echo", "EchoPool", "latest unclaimed reply per key"})
        .field({"data_pool_strm", "StreamPool", "queues of streamed frames"})
        .field({"data_pool_bcst", "BroadcastPool", "sets of replies to broadcasts"})
        .method("__init__", {}, "Makes the data pools.", {}, {},
                [](py::handle self) {
                    const auto made = std::make_shared<DeviceRuntime>(self);
                    setAttribute(self, "_runtime", py::cast(made));
                    setAttribute(self, "killed", py::bool_(false));
                    setAttribute(self, "data_pool_echo", py::cast(made->pools.echo));
                    setAttribute(self, "data_pool_strm", py::cast(made->pools.stream));
                    setAttribute(self, "data_pool_bcst", py::cast(made->pools.broadcast));
                })
        .method(
            "__setattr__", {name, {"value", "Any", "what it becomes"}}, "Sets an attribute, threads included.", {}, {},
            [](py::handle self, const Object& name, const Object& value) {
                changeField(self, name, [&] { return PyObject_GenericSetAttr(self.ptr(), name.ptr(), value.ptr()); });
            })
        .method("__delattr__", {name}, "Deletes an attribute, threads included.", {}, {},
                [](py::handle self, const Object& name) {
                    changeField(self, name, [&] { return PyObject_GenericSetAttr(self.ptr(), name.ptr(), nullptr); });
                })
        .method("__reduce_ex__", {{"protocol", "object", ""}}, "Refuses: a connection cannot be copied.", {"Any"},
                {"TypeError: always"},
                [](py::handle self, const Object&) -> Object {
                    throw py::type_error(std::string("a ") + Py_TYPE(self.ptr())->tp_name +
                                         " holds a connection and threads and cannot be copied or pickled: make "
                                         "another one and connect it");
                })
        .method("_checkCommandType", {command, data}, "Sorts a frame by its command.",
                {"str", R"("streaming", "broadcast", "ignore" or "echo")"}, {}, Calls<commandType>{})
        .method("_putToDataPool", {command, data}, "Files a received frame in the pool of its class.", {},
                {"IndexError: the data is too short for its key"}, Calls<fileFrame>{})
        .method("_getDeviceName", {}, "The display name.", {"str", "the name in `LABEL_DICT`", "table"},
                {"KeyError: the class is not in the table"}, Calls<displayName>{})
        .method("close", {verboseParameter}, "Ends the object for good; a second call does nothing.", {}, {},
                [](py::handle self, const Object& verbose) {
                    if (isKilled(self)) return;
                    setAttribute(self, "killed", py::bool_(true));
                    if (const auto runtime = runtimeOrNothing(self)) runtime->endAll();
                    printMessage(verbose, "Closed handle", self);
                })
        .method("__enter__", {}, "The object itself.", {"Self"}, {}, [](py::handle self) { return borrow(self.ptr()); })
        .method("__exit__", {{"*failure", "object", ""}}, "Closes the object.", {}, {},
                [](py::handle self, const Object&) { callMethod(self, "close"); })
        .add({"__aenter__", {}, "The object itself.", {"Self"}, {}, steps([](Op op) -> Result {
                  co_return borrow(op.self().ptr());
              })},
             Form::awaitable)
        .add({"__aexit__",
              {{"*failure", "object", ""}},
              "Closes the object.",
              {},
              {},
              steps([](Op op, Object) -> Result { co_return op.call("close"); })},
             Form::awaitable);
}

}  // namespace zvr::python
