// The definition of a device class: its link, and its own steps beside the common ones.
#pragma once

#include "device/devices.h"

namespace zvr::python {

/// The documentation of a method whose steps are common to all device classes.
struct MethodText {
    std::string summary;
    Raises raises = {};
};

struct DeviceClass {
    const char* name;
    const char* doc;
    const DeviceClass* base = nullptr;  ///< its link is opened first; null means Device
    DeviceLink link;
    std::vector<FieldDoc> places = {};  ///< fields with the address it is connected to; the first is used in messages
    bool countsStatus = false;          ///< the status is 0 or 1
    bool dropsClient = false;           ///< when closed

    MethodText start;
    Parameters connectParameters;  ///< the last one is `verbose`
    MethodText connect, disconnect, close;

    /// Connects the client and sets status and places; returns the place for the message.
    Object (*join)(py::handle self, const DeviceLink& link, Arguments given);
    /// Releases the client, in a forked child too. If null, the client's `disconnect` is called, in its own process
    /// only.
    void (*leave)(py::handle self, const DeviceLink& link) = nullptr;
};

/// The field that distinguishes a lost connection from one that was disconnected on purpose.
inline constexpr const char* disconnectAsked = "_disconnect_asked";

/// Connects the link's client and sets the status to the result; part of connectDevice.
void connectClient(py::handle self, const DeviceLink& link, const Object& place, const Object& number);

void startDevice(py::handle self, const DeviceClass& device, const Object& verbose);
void connectDevice(py::handle self, const DeviceClass& device, Arguments given);
void disconnectDevice(py::handle self, const DeviceClass& device, const Object& verbose);
/// Whether the device has a connection that has not been lost.
bool isConnected(py::handle self, const DeviceClass& device);
/// Releases what is left of the connection and prints nothing.
void dropLink(py::handle self, const DeviceClass& device);
/// Releases what is left of the connection and connects again with the same arguments.
void reconnectDevice(py::handle self, const DeviceClass& device, const Object& verbose);
/// Disconnects, ends the threads and prints a message; each step runs even if the previous one failed.
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

/// `device` must have static lifetime.
inline void defineDeviceClass(Package& package, const DeviceClass& device) {
    const char* const base = device.base == nullptr ? "Device" : device.base->name;
    const DeviceLink& link = device.link;
    ClassMaker type = package.makeClass(device.name, {base}, device.doc);
    for (const FieldDoc& place : device.places) type.field(place);
    Watch::watchNames({link.client, link.lock, link.body});
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
                 .doc = "Whether there is a connection that has not been lost.",
                 .returns = {"bool", "", "host record"},
                 .body = [&device](py::handle self) { return isConnected(self, device); }})
        .method({.name = "reconnect",
                 .parameters = {verboseParameter},
                 .doc = "Connects the handle again to its last address, whatever the state of that connection. "
                        "Unclaimed replies are dropped; nothing is configured or opened again on the device.",
                 .raises = reconnectErrors(device),
                 .body = [&device](py::handle self, const Object& verbose) { reconnectDevice(self, device, verbose); }})
        .awaitable(inThreadOf("connect", device.connectParameters, device.connect.summary, connectErrors(device)))
        .awaitable(inThreadOf("disconnect", {verboseParameter}, device.disconnect.summary, device.disconnect.raises))
        .awaitable(inThreadOf("reconnect", {verboseParameter}, "Connects the handle again to its last address.",
                              reconnectErrors(device)))
        .awaitable(inThreadOf("close", {verboseParameter}, device.close.summary, device.close.raises))
        .method({.name = "close",
                 .parameters = {verboseParameter},
                 .doc = device.close.summary,
                 .raises = device.close.raises,
                 .body = [&device](py::handle self, const Object& verbose) { closeDevice(self, device, verbose); }});
}

}  // namespace zvr::python
