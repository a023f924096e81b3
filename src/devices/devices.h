// Clients and device classes, as Python sees them.
#pragma once

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

/// A connection: a client and its gated receive thread, kept in fields of the object.
struct Link {
    const char* client;
    const char* status;
    const char* lock;
    const char* thread;
    const char* body;
    int readLength;
    bool reportsReads = false;  ///< a failed read is printed and tried again
};

/// Makes the receive thread and the fields, the thread waiting at its gate.
void openLink(py::handle self, const Link& link, const Object& client);

/// The client is kept in the object's own dictionary, and the receive thread is told of each new one.
Object clientOf(py::handle self, const Link& link);
void setClient(py::handle self, const Link& link, const Object& client);

/// Runs the body of the link's thread on the caller's.
void runThread(py::handle self, const Link& link);

template <const Link& link>
void defineLinkFields(ClassMaker& type, const char* clientType) {
    type.field({link.status, "bool", "whether the connection is open"})
        .field({link.lock, "Gate", "gate of the receive thread, shut while there is no connection"})
        .field({link.thread, "DeviceThread", "the receive thread, from construction to close"})
        .property(
            {link.client, std::string(clientType) + " | None", "The client that the receive thread reads from."},
            [](py::handle self) { return clientOf(self, link); },
            [](py::handle self, const Object& client) { setClient(self, link, client); })
        .method(link.body, {}, "Body of the receive thread: reads and files frames until the object is closed.", {}, {},
                [](py::handle self) { runThread(self, link); });
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
