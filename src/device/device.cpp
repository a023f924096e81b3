#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "device/devices.h"
#include "device/protocol.h"
#include "device/queue_face.h"
#include "device/runtime.h"
#include "python/raising.h"
#include "python/values.h"
#include "transport/network.h"

namespace zvr::python {

const Parameter verboseParameter{"verbose", "bool", "whether to print a line", "True"};

void printMessage(const Object& verbose, const char* message, py::handle self) {
    if (isTrue(verbose)) printLine(py::str("{} ({})").format(message, callMethod(self, "_getDeviceName")));
}

bool isTrue(py::handle self, const char* field) { return isTrue(attribute(self, field)); }

Object classNamed(const char* type) { return packageObject(type); }

namespace {

// Subclasses inherit the name of their class.
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

// Each pool may have been replaced on the object.
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
    ClassMaker type =
        py::class_<OwnedThread, Held>(package.module(), "DeviceThread",
                                      "A thread of a device object: it receives frames, or decodes them to samples.");
    type.property({"name", "str", "Name of the thread."}, [](const Held& thread) { return thread->name(); })
        .property({"daemon", "bool", "True: the thread does not keep the program from ending."},
                  [](const Held&) { return true; })
        .property({"ident", "int", "Number of the thread, as threading.get_ident gives it."},
                  [](const Held& thread) { return thread->ident(); })
        .property({"native_id", "int", "The system's number of the thread."},
                  [](const Held& thread) { return thread->nativeId(); })
        .method({.name = "is_alive",
                 .doc = "Whether the thread runs.",
                 .returns = {"bool"},
                 .body = [](const Held& thread) { return thread->alive(); }})
        .method({.name = "join",
                 .parameters = {{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"}},
                 .doc = "Waits until the thread has ended.",
                 .body = [](const Held& thread, std::optional<Seconds> timeout) {
                     const Deadline deadline = timeout ? deadlineIn(*timeout) : forever;
                     blocking([&](const InterruptCheck& onWait) { return thread->awaitEnd(deadline, onWait); });
                 }});
    refusePickling(type.type());
}

// Sets or deletes an attribute as usual, and notifies the threads if they use it.
template <class Change>
void changeField(py::handle self, const Object& name, Change change) {
    if (entering(change) != 0) throw py::error_already_set();
    if (!Watch::watches(name)) return;
    const auto runtime = runtimeOrNothing(self);
    if (!runtime) return;
    runtime->requestPath = nullptr;  // it would keep a dropped client alive
    runtime->watch->touch(self);
}

void onConnectionLost(py::handle self, const Object& callback, const Object& loop) {
    if (PyCallable_Check(callback.ptr()) == 0) refuseType("callback", "a function", callback);
    askForLoss(self, callback, loop);
}

// Whether a connection has been lost, and anyone who asks sees so.
bool isLost(py::handle self) {
    const auto runtime = runtimeOrNothing(self);
    const Object isConnected = attributeOrNothing(self, "isConnected");
    return runtime && runtime->connectedWith && isConnected && !isTrue(callObject(isConnected));
}

// An exception of closing must not hide that of the block: it becomes a note of it. A loss is not reported again.
void noteClosing(bool wasLost, const Object& failure, const py::error_already_set& error) {
    if (wasLost && isFailure(error, FailureId::NetworkConnectionLostError)) return;
    const py::tuple ofBlock(failure);
    if (ofBlock.size() < 2 || ofBlock[1].is_none() || !error.matches(PyExc_Exception)) throw;
    const std::string name = Py_TYPE(error.value().ptr())->tp_name;
    addNote(Object(ofBlock[1]), "closing failed too: " + name + ": " + std::string(py::str(error.value())));
}

std::string describe(py::handle self) {
    std::string text = std::string("<") + Py_TYPE(self.ptr())->tp_name;
    if (const std::string place = placeOf(self); !place.empty()) text += " at " + place;
    if (const Object number = attributeOrNothing(self, "serial_number"); number && !number.is_none()) {
        text += ", serial number " + std::string(py::str(number));
    }
    const Object killed = attributeOrNothing(self, "killed");
    if (!killed) return text + ", not constructed>";
    if (isTrue(killed)) return text + ", closed>";
    if (isForeign(self)) return text + ", of the parent process>";
    for (const char* status : {"connect_status_cmd", "connect_status_udp"}) {
        const Object connected = attributeOrNothing(self, status);
        if (connected) return text + (isTrue(callMethod(self, "isConnected")) ? ", connected>" : ", not connected>");
    }
    return text + ">";
}

}  // namespace

std::string placeOf(py::handle self) {
    for (const char* field : {"client_cmd", "client_udp"}) {
        const auto client = nativeOrNothing<Client>(attributeOrNothing(self, field));
        if (std::string place = client ? client->place() : std::string(); !place.empty()) return place;
    }
    for (const char* field : {"serial_num", "port", "ip_addr"}) {
        const Object place = attributeOrNothing(self, field);
        if (!place || PyUnicode_Check(place.ptr()) == 0) continue;
        return (field == std::string_view("serial_num") ? "USB " : "") + std::string(py::str(place));
    }
    return {};
}

void defineDevice(Package& package) {
    defineThread(package);
    const py::class_<DeviceRuntime, std::shared_ptr<DeviceRuntime>> runtime(package.module(), "_DeviceRuntime",
                                                                            "State that the threads of a device use.");
    refusePickling(runtime);
    Watch::watchNames({"killed", "data_pool_echo", "data_pool_strm", "data_pool_bcst", "_putToDataPool",
                       "_checkCommandType", "__class__", "__dict__"});

    const Parameter command{"cmd", "int", "command code of a received frame"};
    const Parameter data{"data", "bytes", "its data"};
    const Parameter name{"name", "str", "name of the attribute"};
    package.makeClass("Device", {}, "Root of the device classes: the data pools and closing.")
        .field({"killed", "bool", "set once, by `close`; ends the object's threads"})
        .field({"data_pool_echo", "EchoPool", "latest unclaimed reply per key"})
        .field({"data_pool_strm", "StreamPool", "queues of streamed frames"})
        .field({"data_pool_bcst", "BroadcastPool", "sets of replies to broadcasts"})
        .field({"serialize", "bool",
                "whether requests with the same key are serialized, each with its own reply; False unless set"})
        .method({.name = "onConnectionLost",
                 .parameters = {{"callback", "Callable[[Exception], object]", "called with the reason, an error"},
                                {"loop", "asyncio.AbstractEventLoop | None",
                                 "event loop to call it on; None for a thread of the library", "None"}},
                 .doc = "Registers a function that is called once when the device or the system has ended the "
                        "connection, or at once if it already has. Closing and disconnecting do not count.",
                 .body = onConnectionLost})
        .method({.name = "__init__",
                 .doc = "Makes the data pools.",
                 .body =
                     [](py::handle self) {
                         const auto made = std::make_shared<DeviceRuntime>(self);
                         setAttribute(self, "_runtime", py::cast(made));
                         setAttribute(self, "killed", py::bool_(false));
                         setAttribute(self, "data_pool_echo", py::cast(made->pools.echo));
                         setAttribute(self, "data_pool_strm", py::cast(made->pools.stream));
                         setAttribute(self, "data_pool_bcst", py::cast(made->pools.broadcast));
                         setAttribute(self, lossCallbacks, py::list());
                     }})
        .method({.name = "__setattr__",
                 .parameters = {name, {"value", "Any", "its new value"}},
                 .doc = "Sets an attribute and notifies the threads that use it.",
                 .body =
                     [](py::handle self, const Object& name, const Object& value) {
                         changeField(self, name,
                                     [&] { return PyObject_GenericSetAttr(self.ptr(), name.ptr(), value.ptr()); });
                     }})
        .method({.name = "__delattr__",
                 .parameters = {name},
                 .doc = "Deletes an attribute and notifies the threads that use it.",
                 .body =
                     [](py::handle self, const Object& name) {
                         changeField(self, name,
                                     [&] { return PyObject_GenericSetAttr(self.ptr(), name.ptr(), nullptr); });
                     }})
        .method({.name = "__reduce_ex__",
                 .parameters = {{"protocol", "object", ""}},
                 .doc = "Raises TypeError: a connection cannot be copied.",
                 .returns = {"Any"},
                 .raises = {"TypeError: always"},
                 .body = [](py::handle self, const Object&) -> Object {
                     throw py::type_error(std::string("a ") + Py_TYPE(self.ptr())->tp_name +
                                          " holds a connection and threads and cannot be copied or pickled: make "
                                          "another one and connect it");
                 }})
        .method({.name = "_checkCommandType",
                 .parameters = {command, data},
                 .doc = "Classifies a frame by its command.",
                 .returns = {"str", R"("streaming", "broadcast", "ignore" or "echo")"},
                 .body = commandType})
        .method({.name = "_putToDataPool",
                 .parameters = {command, data},
                 .doc = "Files a received frame in the pool of its class.",
                 .raises = {"IndexError: the data is too short for its key"},
                 .body = fileFrame})
        .method({.name = "_getDeviceName",
                 .doc = "Returns the display name.",
                 .returns = {"str", "the name in `LABEL_DICT`", "table"},
                 .raises = {"KeyError: the class is not in the table"},
                 .body = displayName})
        .method({.name = "close",
                 .parameters = {verboseParameter},
                 .doc = "Closes the object for good; a second call does nothing.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         if (isKilled(self)) return;
                         setAttribute(self, "killed", py::bool_(true));
                         setAttribute(self, lossCallbacks, py::list());
                         if (const auto runtime = runtimeOrNothing(self)) runtime->endAll();
                         logOf(self, LogLevel::debug, [] { return "closed"; });
                         printMessage(verbose, "Closed handle", self);
                     }})
        .method({.name = "__enter__",
                 .doc = "Returns the object itself.",
                 .returns = {"Self"},
                 .body = [](py::handle self) { return borrow(self.ptr()); }})
        .method({.name = "__exit__",
                 .parameters = {{"*failure", "object", ""}},
                 .doc = "Closes the object. An exception of the block is still the one raised; one of closing becomes "
                        "a note of it.",
                 .body =
                     [](py::handle self, const Object& failure) {
                         const bool wasLost = isLost(self);
                         try {
                             callMethod(self, "close");
                         } catch (const py::error_already_set& error) {
                             noteClosing(wasLost, failure, error);
                         }
                     }})
        .method({.name = "__repr__",
                 .doc = "Shows the model, the address, the serial number if known, and the state.",
                 .returns = {"str"},
                 .body = describe})
        .awaitable({.name = "__aenter__",
                    .doc = "Returns the object itself.",
                    .returns = {"Self"},
                    .body = [](Op op) -> Task { co_return borrow(op.self().ptr()); }})
        .awaitable({.name = "__aexit__",
                    .parameters = {{"*failure", "object"}},
                    .doc = "Closes the object as the end of a plain `with` does, without blocking the event loop.",
                    .body = [](Op op, Object failure) -> Task {
                        const bool wasLost = isLost(op.self());
                        try {
                            co_await op.run(awaitInThread(op, "close"));
                        } catch (const py::error_already_set& error) {
                            noteClosing(wasLost, failure, error);
                        }
                        co_return py::none();
                    }});
    setAttribute(classNamed("Device"), "serialize", py::bool_(false));
}

}  // namespace zvr::python
