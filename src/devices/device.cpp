#include "core/constants.h"
#include "devices/devices.h"
#include "protocol/runtime.h"
#include "python/raising.h"

namespace zvr::python {

const Parameter verboseParameter{"verbose", "bool", "whether to print a line", "True"};

void printMessage(const Object& verbose, const char* verb, py::handle self, const Object& place) {
    if (PyObject_IsTrue(verbose.ptr()) == 0) return;
    const Object name = callMethod(self, "_getDeviceName");
    py::print(place ? py::str("{} {} ({})").format(verb, name, place) : py::str("{} ({})").format(verb, name));
}

void printBareMessage(const Object& verbose, const char* verb, py::handle self) {
    if (PyObject_IsTrue(verbose.ptr()) != 0) py::print(verb, callMethod(self, "_getDeviceName"));
}

void openLink(py::handle self, const Link& link, const Object& client) {
    const auto receiver =
        runtimeOf(self).startReceiver(self, link.client, link.body, link.readLength, link.reportsReads);
    setAttribute(self, link.client, client);
    setAttribute(self, link.status, py::bool_(false));
    setAttribute(self, link.lock, py::cast(std::shared_ptr<Gate>(receiver, &receiver->gate)));
    setAttribute(self, link.thread, py::cast(std::shared_ptr<OwnedThread>(receiver)));
}

Object clientOf(py::handle self, const Link& link) {
    const Object fields = own(PyObject_GenericGetDict(self.ptr(), nullptr));
    PyObject* client = PyDict_GetItemWithError(fields.ptr(), interned(link.client));
    if (client == nullptr) throw py::attribute_error(std::string("the object has no ") + link.client);
    return borrow(client);
}

void setClient(py::handle self, const Link& link, const Object& client) {
    const py::dict fields = own(PyObject_GenericGetDict(self.ptr(), nullptr));
    fields[py::handle(interned(link.client))] = client;
    runtimeOf(self).setClient(self, link.client, client);
}

void runThread(py::handle self, const Link& link) {
    const auto receiver = runtimeOf(self).receiver(link.client);
    const WithoutGil released;
    receiver->run();
}

bool isTrue(py::handle self, const char* field) { return PyObject_IsTrue(attribute(self, field).ptr()) != 0; }

void connectLink(py::handle self, const Link& link, const Object& place, const Object& number) {
    const Object client = attribute(self, link.client);
    if (client.is_none()) throw Failure(FailureId::NetworkConnectionError, "The handle is closed.");
    setAttribute(self, link.status, callMethod(client, "connect", place, number));
}

void openGate(py::handle self, const Link& link) { callMethod(attribute(self, link.lock), "release"); }

void shutGate(py::handle self, const Link& link) {
    callMethod(attribute(self, link.lock), "acquire");
    sleepBlocking(0.001);
}

void shutLink(py::handle self, const Link& link) {
    shutGate(self, link);
    callMethod(attribute(self, link.client), "disconnect");
    setAttribute(self, link.status, py::bool_(false));
}

void closeDevice(py::handle self, const Link& link, const Object& verbose, void (*end)(py::handle self)) {
    if (runtimeOf(self).killed()) return;
    thenAlways(
        [&] {
            if (isTrue(self, link.status)) callMethod(self, "disconnect");
        },
        [&] { thenAlways([&] { end(self); }, [&] { printMessage(verbose, "Closed handle", self); }); });
}

Object classNamed(const char* type) { return py::module_::import("pyzvr").attr(type); }

namespace {

// The name of a class counts for its subclasses too.
Object displayName(py::handle self) {
    const py::dict labels = py::module_::import("pyzvr").attr("LABEL_DICT");
    for (const py::handle type : attribute(py::type::of(self), "__mro__")) {
        const Object name = attribute(type, "__name__");
        if (labels.contains(name)) return labels[name];
    }
    throw py::key_error(py::cast<std::string>(attribute(py::type::of(self), "__name__")));
}

void fileFrame(py::handle self, const Object& command, const Object& data) {
    DeviceRuntime& runtime = runtimeOf(self);
    const int code = py::cast<int>(command);
    const Bytes bytes = bytesOf(data);
    const auto kind = py::cast<std::string>(callMethod(self, "_checkCommandType", command, data));
    for (const auto known :
         {CommandClass::streaming, CommandClass::broadcast, CommandClass::ignore, CommandClass::echo}) {
        if (nameOf(known) == kind) {
            DataPools pools = runtime.pools;
            const WithoutGil released;
            pools.file(code, bytes, known);
        }
    }
}

void defineThread(Package& package) {
    const auto type = py::class_<OwnedThread, std::shared_ptr<OwnedThread>>(
        package.module(), "DeviceThread", "A thread of a device object: it receives frames, or makes samples of them.");
    ClassMaker(type)
        .property({"name", "str", "Name of the thread."},
                  [](py::handle self) { return py::cast<OwnedThread*>(self)->name(); })
        .method("is_alive", {}, "Whether the thread runs.", {"bool"}, {},
                [](py::handle self) { return py::cast<OwnedThread*>(self)->alive(); })
        .method("join", {{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"}},
                "Waits until the thread has ended.", {}, {}, [](py::handle self, const Object& timeout) {
                    const auto thread = py::cast<std::shared_ptr<OwnedThread>>(self);
                    const Deadline deadline = timeout.is_none() ? forever : deadlineIn(secondsOf(timeout));
                    blocking([&](const Attend& attend) { return thread->awaitEnd(deadline, attend); });
                });
}

}  // namespace

void defineDevice(Package& package) {
    defineThread(package);
    [[maybe_unused]] const py::class_<DeviceRuntime> runtime(package.module(), "_DeviceRuntime",
                                                             "What the threads of a device touch.");

    const Parameter command{"cmd", "int", "command code of a received frame"};
    const Parameter data{"data", "bytes", "its data"};
    package.makeClass("Device", {}, "Root of the device classes: the data pools, and the end of everything.")
        .property(
            {"killed", "bool", "Set once, by `close`; ends the object's threads."},
            [](py::handle self) { return runtimeOf(self).killed(); },
            [](py::handle self, const Object& value) { runtimeOf(self).setKilled(PyObject_IsTrue(value.ptr()) != 0); })
        .property({"data_pool_echo", "EchoPool", "Latest unclaimed reply per key."},
                  [](py::handle self) { return py::cast(runtimeOf(self).pools.echo); })
        .property({"data_pool_strm", "StreamPool", "Queues of streamed frames."},
                  [](py::handle self) { return py::cast(runtimeOf(self).pools.stream); })
        .property({"data_pool_bcst", "BroadcastPool", "Sets of replies to broadcasts."},
                  [](py::handle self) { return py::cast(runtimeOf(self).pools.broadcast); })
        .method("__init__", {}, "Makes the data pools.", {}, {},
                [](py::handle self) { py::setattr(self, "_runtime", py::cast(std::make_unique<DeviceRuntime>())); })
        .method("_checkCommandType", {command, data}, "Sorts a frame by its command.",
                {"str", R"("streaming", "broadcast", "ignore" or "echo")"}, {},
                [](py::handle, const Object& code, const Object& bytes) {
                    return std::string(nameOf(classify(py::cast<int>(code), bytesOf(bytes))));
                })
        .method("_putToDataPool", {command, data}, "Files a received frame in the pool of its class.", {},
                {"IndexError: the data is too short for its key"}, Calls<fileFrame>{})
        .method("_getDeviceName", {}, "The display name.", {"str", "the name in `LABEL_DICT`", "table"},
                {"KeyError: the class is not in the table"}, Calls<displayName>{})
        .method("close", {verboseParameter}, "Ends the object for good; a second call does nothing.", {}, {},
                [](py::handle self, const Object& verbose) {
                    if (runtimeOf(self).killed()) return;
                    runtimeOf(self).setKilled(true);
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
