// What a device class is: its link, and the steps that are its own among those that all of them take.
#pragma once

#include "device/devices.h"

namespace zvr::python {

/// What is written of a method whose steps are common to all device classes.
struct MethodText {
    std::string summary;
    Raises raises = {};
};

struct DeviceClass {
    const char* name;
    const char* doc;
    const DeviceClass* base = nullptr;  ///< one whose link is opened first; without it the base is Device
    DeviceLink link;
    std::vector<FieldDoc> places = {};  ///< fields that tell what it is connected to; the first is for messages
    bool countsStatus = false;          ///< the status is 0 or 1
    bool dropsClient = false;           ///< at its end

    MethodText start;
    Parameters connectParameters;  ///< the last one is `verbose`
    MethodText connect, disconnect, close;

    /// Connects the client and keeps status and places; gives the place for the message.
    Object (*join)(py::handle self, const DeviceLink& link, Arguments given);
    /// Lets go of the client, in a forked child too. Without it `disconnect` of the client does, in its own process.
    void (*leave)(py::handle self, const DeviceLink& link) = nullptr;
};

/// The field that tells a connection that has been lost from one that nobody wants.
inline constexpr const char* disconnectAsked = "disconnect_asked";

/// Connects the link's client and keeps what that returns as the status; part of connectDevice.
void connectClient(py::handle self, const DeviceLink& link, const Object& place, const Object& number);

void startDevice(py::handle self, const DeviceClass& device, const Object& verbose);
void connectDevice(py::handle self, const DeviceClass& device, Arguments given);
void disconnectDevice(py::handle self, const DeviceClass& device, const Object& verbose);
/// Whether the device has a connection that has not been lost.
bool isConnected(py::handle self, const DeviceClass& device);
/// Lets go of the connection, whatever is left of it; says nothing.
void dropLink(py::handle self, const DeviceClass& device);
/// Lets go of what is left of the connection and makes it anew, with what it was made with.
void reconnectDevice(py::handle self, const DeviceClass& device, const Object& verbose);
/// Disconnects, ends what the object has and says so, each even if the step before failed.
void closeDevice(py::handle self, const DeviceClass& device, const Object& verbose);

inline Raises connectErrors(const DeviceClass& device) {
    Raises raises = device.connect.raises;
    raises.add({std::string(rowOf(device.link.failure).name) +
                ": the handle is disconnected or closed meanwhile, or another connect of it begins"});
    return raises;
}

inline Raises reconnectErrors(const DeviceClass& device) {
    Raises raises = connectErrors(device);
    raises.add({std::string(rowOf(device.link.failure).name) + ": the handle is closed, or has never been connected"});
    return raises;
}

/// The row is there for good.
inline void defineDeviceClass(Package& package, const DeviceClass& device) {
    const char* const base = device.base == nullptr ? "Device" : device.base->name;
    const DeviceLink& link = device.link;
    ClassMaker type = package.makeClass(device.name, {base}, device.doc);
    for (const FieldDoc& place : device.places) type.field(place);
    Watch::watchNames({link.client, link.lock, link.body});
    if (device.base == nullptr) {
        type.field({disconnectAsked, "bool", "whether `disconnect` has been called behind the last `connect`"});
    }
    type.field({link.status, "bool", "whether the connection is open"})
        .field({link.lock, "Gate", "gate of the receive thread, shut while there is no connection"})
        .field({link.thread, "DeviceThread", "the receive thread, from construction to close"})
        .field(
            {link.client, std::string(link.clientClass) + " | None", "the client that the receive thread reads from"})
        .method({.name = link.body,
                 .doc = "Body of the receive thread: reads and files frames until the object is closed.",
                 .body = [&device](py::handle self) { runReceiverBody(self, device.link); }})
        .method({.name = "__init__",
                 .parameters = {verboseParameter},
                 .doc = device.start.summary,
                 .raises = device.start.raises,
                 .body = [&device](py::handle self, const Object& verbose) { startDevice(self, device, verbose); }})
        .method({.name = "connect",
                 .parameters = device.connectParameters,
                 .doc = device.connect.summary,
                 .raises = connectErrors(device),
                 .body = [&device](const Definition&, py::handle self, Arguments given) -> Object {
                     connectDevice(self, device, given);
                     return py::none();
                 }})
        .method(
            {.name = "disconnect",
             .parameters = {verboseParameter},
             .doc = device.disconnect.summary,
             .raises = device.disconnect.raises,
             .body = [&device](py::handle self, const Object& verbose) { disconnectDevice(self, device, verbose); }})
        .method({.name = "isConnected",
                 .doc = "Whether there is a connection, and the device has not ended it.",
                 .returns = {"bool", "", "host record"},
                 .body = [&device](py::handle self) { return isConnected(self, device); }})
        .method({.name = "reconnect",
                 .parameters = {verboseParameter},
                 .doc = "Gives the handle a new connection to where it was connected last, whatever became of that "
                        "one. Replies that nobody took are dropped; nothing is set or opened again on the device.",
                 .raises = reconnectErrors(device),
                 .body = [&device](py::handle self, const Object& verbose) { reconnectDevice(self, device, verbose); }})
        .awaitable(inThreadOf("connect", device.connectParameters, device.connect.summary, connectErrors(device)))
        .awaitable(inThreadOf("disconnect", {verboseParameter}, device.disconnect.summary, device.disconnect.raises))
        .awaitable(
            inThreadOf("reconnect", {verboseParameter}, "Gives the handle a new connection.", reconnectErrors(device)))
        .awaitable(inThreadOf("close", {verboseParameter}, device.close.summary, device.close.raises))
        .method({.name = "close",
                 .parameters = {verboseParameter},
                 .doc = device.close.summary,
                 .raises = device.close.raises,
                 .body = [&device](py::handle self, const Object& verbose) { closeDevice(self, device, verbose); }});
}

}  // namespace zvr::python
