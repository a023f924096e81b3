// Clients and device classes, as Python sees them.
#pragma once

#include "device/runtime.h"
#include "python/classes.h"
#include "transport/usb_library.h"

namespace zvr::python {

void defineUsbLibrary(Package& package);
void defineClients(Package& package);
void defineDevice(Package& package);
void defineNetworkDevices(Package& package);
void defineUsbDevice(Package& package);
void defineSerialDevice(Package& package);
void defineBroadcast(Package& package);

inline void defineDevices(Package& package) {
    defineUsbLibrary(package);
    defineClients(package);
    defineDevice(package);
    defineNetworkDevices(package);
    defineUsbDevice(package);
    defineSerialDevice(package);
    defineBroadcast(package);
}

/// The library that getLibUSB1() finds, or else the system's own; nothing if there is none.
std::shared_ptr<const UsbLibrary> usbLibrary();

/// Parameters and messages that all device classes share.
extern const Parameter verboseParameter;
Parameters wifiConnectParameters();
void printMessage(const Object& verbose, const char* verb, py::handle self, const Object& place = {});
void printBareMessage(const Object& verbose, const char* verb, py::handle self);

/// Makes the receive thread and the fields, the thread waiting at its gate.
void openLink(py::handle self, const Link& link, const Object& client);

template <const Link& link>
void defineLinkFields(ClassMaker& type, const char* clientType) {
    Watch::watchNames({link.client, link.lock, link.body});
    type.field({link.status, "bool", "whether the connection is open"})
        .field({link.lock, "Gate", "gate of the receive thread, shut while there is no connection"})
        .field({link.thread, "DeviceThread", "the receive thread, from construction to close"})
        .field({link.client, std::string(clientType) + " | None", "the client that the receive thread reads from"})
        .method({.name = link.body,
                 .doc = "Body of the receive thread: reads and files frames until the object is closed.",
                 .body = [](py::handle self) { runReceiverBody(self, link); }});
}

bool isTrue(py::handle self, const char* field);

/// Connects the link's client and keeps what that returns as the status. Throws Failure NetworkConnectionError on a
/// closed object.
void connectLink(py::handle self, const Link& link, const Object& place, const Object& number);
void openGate(py::handle self, const Link& link);
/// Shuts the gate and waits a moment, so that the thread leaves its read.
void shutGate(py::handle self, const Link& link);
/// Shuts the gate and disconnects the client.
void shutLink(py::handle self, const Link& link);

/// What every close does: disconnects, ends the object in its own way, and says so, each even if the step before
/// failed.
void closeDevice(py::handle self, const Link& link, const Object& verbose, void (*end)(py::handle self));

Object classNamed(const char* type);

/// Calls a method of one class on an object, whatever the object's own class makes of it.
template <class... Args>
Object callOf(const char* type, const char* name, py::handle self, const Args&... args) {
    return callObject(attribute(classNamed(type), name), self, args...);
}

}  // namespace zvr::python
