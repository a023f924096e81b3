#include "device/device_class.h"

#include "device/frame_log.h"
#include "python/raising.h"
#include "python/thread_call.h"

namespace zvr::python {

namespace {

bool isConnected(py::handle self, const DeviceLink& link) { return isTrue(self, link.status); }

void setDisconnected(py::handle self, const DeviceClass& device) {
    setAttribute(self, device.link.status, device.countsStatus ? Object(py::int_(0)) : py::bool_(false));
}

// Gives the receive thread a moment to notice the change.
void giveThreadItsTurn() { sleepBlocking(0.001); }

void openGate(py::handle self, const DeviceLink& link) { callMethod(attribute(self, link.lock), "release"); }

void printPlace(const Object& verbose, const char* verb, const char* preposition, py::handle self,
                const Object& place) {
    if (!isTrue(verbose)) return;
    const Object name = callMethod(self, "_getDeviceName");
    printLine(place ? py::str("{} {} {} ({})").format(verb, preposition, name, place)
                    : py::str("{} {}").format(verb, name));
}

template <class... Args>
void callBase(const DeviceClass& device, const char* method, py::handle self, const Args&... args) {
    callOf(device.base == nullptr ? "Device" : device.base->name, method, self, args...);
}

// A failed connection is also logged; one that has been superseded is no reason to warn.
Object joinOrLog(py::handle self, const DeviceClass& device, Arguments given, const ConnectCall& call) {
    const auto log = [&](const std::string& why) {
        logOf(self, call.isOver() ? LogLevel::info : LogLevel::warning, [&] { return "not connected: " + why; });
    };
    try {
        return device.join(self, device.link, given);
    } catch (const Failure& failure) {
        log(failure.what());
        throw;
    } catch (const py::error_already_set& error) {
        const auto cause = py::reinterpret_steal<Object>(PyException_GetCause(error.value().ptr()));
        log(std::string(py::str(error.value())) + (cause ? " (" + std::string(py::str(cause)) + ")" : ""));
        throw;
    }
}

}  // namespace

void connectClient(py::handle self, const DeviceLink& link, const Object& place, const Object& number) {
    requireOwn(self);
    const Object client = attribute(self, link.client);
    if (client.is_none()) throw Failure(FailureId::NetworkConnectionError, "The handle is closed.");
    const Object status = callMethod(client, "connect", place, number);
    ConnectCall::current()->settle(client);
    setAttribute(self, link.status, status);
}

void startDevice(py::handle self, const DeviceClass& device, const Object& verbose) {
    const DeviceLink& link = device.link;
    if (device.base != nullptr) {
        callBase(device, "__init__", self, py::bool_(false));
    } else {
        callBase(device, "__init__", self);
    }
    for (const FieldDoc& place : device.places) setAttribute(self, place.name.c_str(), py::none());
    const Object client = link.connectsAnew ? py::none() : callObject(classNamed(link.clientClass));
    const auto receiver = runtimeOf(self)->startReceiver(self, link);
    setAttribute(self, link.client, client);
    setDisconnected(self, device);
    setAttribute(self, disconnectAsked, py::bool_(false));
    setAttribute(self, link.lock, py::cast(receiver->gate));
    setAttribute(self, link.thread, threadObject(receiver));
    printMessage(verbose, "Opened handle", self);
}

void connectDevice(py::handle self, const DeviceClass& device, Arguments given) {
    const auto runtime = runtimeOf(self);
    if (runtime->mark.foreign()) throw Failure(runtime->linkFailure, foreignMessage("The handle"));
    if (device.base == nullptr && isConnected(self, device.link)) return;
    const Connecting connecting(runtime, device);
    const Object place = joinOrLog(self, device, given, connecting.call());
    connecting.call().requireWanted();
    setAttribute(self, disconnectAsked, py::bool_(false));
    openGate(self, device.link);
    py::tuple places(device.connectParameters.size());
    for (std::size_t i = 0; i < places.size(); ++i) places[i] = i + 1 < places.size() ? given[i] : py::bool_(false);
    runtime->connectedWith = shared(places);
    const Object& verbose = given[device.connectParameters.size() - 1];
    askForFrameLog();
    logOf(self, LogLevel::info, [] { return "connected"; });
    printPlace(verbose, place ? "Connected" : "Binded", "to", self, place);
}

bool isConnected(py::handle self, const DeviceClass& device) {
    if (device.base != nullptr && !isConnected(self, *device.base)) return false;
    if (!isConnected(self, device.link)) return false;
    const auto client = nativeOrNothing<Client>(attribute(self, device.link.client));
    return !client || !client->loss();
}

void dropLink(py::handle self, const DeviceClass& device) {
    const DeviceLink& link = device.link;
    callMethod(attribute(self, link.lock), "acquire");
    const Object client = attribute(self, link.client);
    if (const auto ours = nativeOrNothing<Client>(client)) {
        const WithoutGil released;
        ours->close();
        ours->splitter.with([](Splitter& splitter) { splitter.setStream({}); });
    } else if (!client.is_none()) {
        callMethod(client, "disconnect");
    }
    if (link.connectsAnew) setAttribute(self, link.client, py::none());
    setDisconnected(self, device);
    if (device.base != nullptr) dropLink(self, *device.base);
}

void reconnectDevice(py::handle self, const DeviceClass& device, const Object& verbose) {
    const auto runtime = runtimeOf(self);
    runtime->requireOwn();
    if (isKilled(self)) throw Failure(runtime->linkFailure, "The handle is closed.");
    if (!runtime->connectedWith) throw Failure(runtime->linkFailure, notConnected);
    const py::tuple places = borrow(runtime->connectedWith.get());
    const Connecting connecting(runtime, device);
    dropLink(self, device);
    callMethod(attribute(self, "data_pool_echo"), "clear");
    attribute(classNamed(device.name), "connect")(self, *places);
    if (isTrue(verbose)) printLine(py::str("Reconnected {}").format(callMethod(self, "_getDeviceName")));
}

Definition inThreadOf(const char* method, Parameters parameters, std::string doc, Raises raises) {
    const std::size_t count = parameters.size();
    return {.name = method,
            .parameters = std::move(parameters),
            .doc = std::move(doc),
            .raises = std::move(raises),
            .body = [method, count](const Definition&, Op op, Arguments given) -> Task {
                return awaitInThread(std::move(op), method, {given, given + count});
            }};
}

Task awaitInThread(Op op, const char* method, std::vector<Object> given) {
    py::tuple values(given.size() + 1);
    values[0] = attribute(op.self(), method);
    for (std::size_t i = 0; i < given.size(); ++i) values[i + 1] = given[i];
    const Object context = callObject(pythonObject("contextvars", "copy_context"));
    const auto runtime = runtimeOrNothing(op.self());
    const auto wakers =
        runtime ? std::shared_ptr<LoopWakers>(runtime, &runtime->wakers) : std::make_shared<LoopWakers>();
    const auto connect = runtime ? std::make_shared<ConnectCall>(runtime) : nullptr;
    const auto call = [connect, run = shared(attribute(context, "run")), values = shared(values)] {
        const Connecting connecting(connect);
        return own(entering([&] { return PyObject_CallObject(run.get(), values.get()); }));
    };
    const auto abandon = [&] {
        if (connect) connect->cancel(op.self());
    };
    ThreadAwaiter awaiter(*wakers, std::string(method) + "_async", call, abandon);
    co_return co_await awaiter;
}

void endConnects(py::handle self) {
    if (const auto runtime = runtimeOrNothing(self)) runtime->connects.end("The handle was disconnected meanwhile.");
    setAttribute(self, disconnectAsked, py::bool_(true));
}

void disconnectDevice(py::handle self, const DeviceClass& device, const Object& verbose) {
    const DeviceLink& link = device.link;
    endConnects(self);
    if (device.base != nullptr) callBase(device, "disconnect", self, py::bool_(false));
    if (!isConnected(self, link)) return;
    if (device.leave == nullptr) requireOwn(self);
    callMethod(attribute(self, link.lock), "acquire");
    giveThreadItsTurn();
    if (device.leave != nullptr) {
        device.leave(self, link);
    } else {
        callMethod(attribute(self, link.client), "disconnect");
    }
    setDisconnected(self, device);
    runtimeOf(self)->endWaits();
    logOf(self, LogLevel::info, [] { return "disconnected"; });
    const DeviceClass& placed = device.base == nullptr ? device : *device.base;
    const Object place = placed.places.empty() ? Object() : attribute(self, placed.places[0].name.c_str());
    printPlace(verbose, "Disconnected", "from", self, place);
}

void closeDevice(py::handle self, const DeviceClass& device, const Object& verbose) {
    const DeviceLink& link = device.link;
    if (isKilled(self)) return;
    if (isForeign(self)) return setAttribute(self, "killed", py::bool_(true));  // the connection is the parent's
    if (const auto runtime = runtimeOrNothing(self)) runtime->connects.close();
    const auto end = [&] {
        callBase(device, "close", self, py::bool_(false));
        openGate(self, link);
        if (!device.dropsClient) return;
        giveThreadItsTurn();
        setAttribute(self, link.client, py::none());
    };
    thenAlways(
        [&] {
            if (isConnected(self, device.base == nullptr ? link : device.base->link)) callMethod(self, "disconnect");
        },
        [&] { thenAlways(end, [&] { printMessage(verbose, "Closed handle", self); }); });
}

}  // namespace zvr::python
