// The Python classes of clients and devices.
#pragma once

#include "device/runtime.h"
#include "python/classes.h"
#include "transport/usb_library.h"

namespace zvr::python {

void defineUsbLibrary(Package& package);
void defineClients(Package& package);
void defineDevice(Package& package);
void defineUsbEnumeration(Package& package);
void defineDeviceClasses(Package& package);
void defineBroadcast(Package& package);
/// How a device identifies itself: address, mask, MAC, model, serial number, alias, application, gateway.
py::list describeRecord(const Bytes& record);

inline void defineDevices(Package& package) {
    defineUsbLibrary(package);
    defineClients(package);
    defineDevice(package);
    defineUsbEnumeration(package);
    defineDeviceClasses(package);
}

/// The library that getLibUSB1() finds, or else the system's own; null if there is none.
std::shared_ptr<const UsbLibrary> usbLibrary();

/// Parameters and messages that all device classes share.
extern const Parameter verboseParameter;
Parameters wifiConnectParameters();
/// Prints the message and the name of the device in parentheses.
void printMessage(const Object& verbose, const char* message, py::handle self);

bool isTrue(py::handle self, const char* field);

Object classNamed(const char* type);

/// Ends the connects that are under way, as `disconnect` does.
void endConnects(py::handle self);

/// Awaits a method that blocks, on a thread of its own.
Task awaitInThread(Op op, const char* method, std::vector<Object> given = {});
/// The awaitable form of a blocking method. It never blocks the event loop; a cancelled call still finishes in its
/// thread.
Definition inThreadOf(const char* method, Parameters parameters, std::string doc, Raises raises);

/// Calls a method of a given class on an object, ignoring overrides of the object's class.
template <class... Args>
Object callOf(const char* type, const char* name, py::handle self, const Args&... args) {
    return callObject(attribute(classNamed(type), name), self, args...);
}

}  // namespace zvr::python
