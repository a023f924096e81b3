// The USB layer as Python sees it, and the device class over it.
#include "transport/usb.h"

#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "device/devices.h"
#include "device/runtime.h"
#include "python/arguments.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr Link usbLink{
    "client_cmd", "connect_status_cmd", "recv_cmd_lock", "recv_cmd_thread", "_recvCMDThread", USB_PKT_SIZE, true};

using Library = std::shared_ptr<const UsbLibrary>;

// Longest wait for the receive thread to let go of a client that was dropped.
constexpr std::chrono::milliseconds letGoWithin{75};

// The library beside the package, or nothing, with a warning, which lets the system's own be used.
Object findLibrary() {
    const Object file = py::getattr(py::module_::import("pyzvr"), "__file__", py::none());
    const Object folder = file.is_none() ? Object(py::str(".")) : callMethod(hostObject("os", "path"), "dirname", file);
    for (const char* place : {"/libusb-1.0.dll", "/../ext_lib/libusb-1.0.dll"}) {
        if (const Library library = UsbLibrary::load(py::cast<std::string>(folder) + place)) return py::cast(library);
    }
    callObject(failureClass(FailureId::ExtLibNotFoundWarning));
    return py::none();
}

// Drops the client, and gives the receive thread time to drop it too, so that the device is free for the next one. A
// client that somebody else holds stays, and nobody waits for it.
void dropClient(py::handle self) {
    Object client = attribute(self, usbLink.client);
    std::weak_ptr<UsbClient> dropped;
    bool waits = false;
    if (const auto ours = nativeOrNothing<UsbClient>(client)) {
        dropped = ours;
        waits = !ours->isForeign();
    }
    const Object held = waits ? callObject(hostObject("weakref", "ref"), client) : Object();
    client = Object();
    setAttribute(self, usbLink.client, py::none());
    if (!waits || !callObject(held).is_none()) return;
    const WithoutGil released;
    const Deadline deadline = Clock::now() + letGoWithin;
    while (!dropped.expired() && Clock::now() < deadline) std::this_thread::yield();
}

}  // namespace

std::shared_ptr<const UsbLibrary> usbLibrary() {
    const Object found = callMethod(py::module_::import("pyzvr"), "getLibUSB1");
    if (!found.is_none()) return native<UsbLibrary>(found, "what getLibUSB1() returns");
    return UsbLibrary::load();
}

void defineUsbLibrary(Package& package) {
    const auto type =
        py::class_<UsbLibrary, std::shared_ptr<UsbLibrary>>(package.module(), "USBLibrary", "A loaded libusb-1.0.");
    ClassMaker(type).property({"path", "str", "Where it was found."},
                              [](py::handle self) { return native<UsbLibrary>(self)->path(); });
    package.makeClass("USBError", {"OSError"}, "A failure of the USB layer, with the system's error number.");
    package.makeClass("USBTimeoutError", {"USBError"}, "A USB transfer did not come about within its time.");
    package.function({.name = "getLibUSB1",
                      .doc = "Looks for libusb-1.0 beside the package.",
                      .returns = {"USBLibrary | None", "the library, or None, which lets the system's own be used"},
                      .raises = {"ExtLibNotFoundWarning: is issued where there is none beside the package"},
                      .body = [](py::handle) { return findLibrary(); }});
}

void defineUsbDevice(Package& package) {
    ClassMaker(package.get("Packet_based"))
        .method({.name = "_getAllUSBDevices",
                 .doc = "Finds the attached USB devices.",
                 .returns = {"list[list[str]]", "serial number and product name of each", "the devices"},
                 .body = [](py::handle) {
                     const Library library = usbLibrary();
                     std::vector<UsbIdentity> found;
                     {
                         const WithoutGil released;
                         found = listUsbDevices(library);
                     }
                     py::list devices;
                     for (const UsbIdentity& each : found) {
                         py::list pair;
                         pair.append(each.serialNumber);
                         pair.append(each.product);
                         devices.append(pair);
                     }
                     return devices;
                 }});

    ClassMaker type = package.makeClass("USBDevice", {"Device"}, "A device on USB.");
    type.field({"serial_num", "str | None", "serial number of the device; None until connected"});
    defineLinkFields<usbLink>(type, "USBClient");
    type.method({.name = "__init__",
                 .parameters = {verboseParameter},
                 .doc = "Starts the receive thread, which waits for a connection.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         callOf("Device", "__init__", self);
                         setAttribute(self, "serial_num", py::none());
                         openLink(self, usbLink, py::none());
                         printMessage(verbose, "Opened handle", self);
                     }})
        .method({.name = "connect",
                 .parameters = {{"serial_num", "str", "serial number of the device; \"default\" takes the first one",
                                 "\"default\""},
                                verboseParameter},
                 .doc = "Opens the device; does nothing if it is open.",
                 .raises = {"USBConnectionError: there is no such device, or no libusb",
                            "USBError: the device may not be opened, or fails"},
                 .body =
                     [](py::handle self, const Object& serial, const Object& verbose) {
                         if (isTrue(self, usbLink.status)) return;
                         if (isKilled(self)) {
                             throw Failure(FailureId::USBConnectionError, "The handle is closed.");
                         }
                         if (isForeign(self)) {
                             throw Failure(FailureId::USBConnectionError, foreignMessage("The handle"));
                         }
                         setAttribute(self, usbLink.client, callObject(classNamed("USBClient"), serial));
                         setAttribute(self, usbLink.status, py::bool_(true));
                         const Object found = callMethod(attribute(self, usbLink.client), "takeSerialNumber");
                         setAttribute(self, "serial_num", found);
                         openGate(self, usbLink);
                         printMessage(verbose, "Connected to", self, found);
                     }})
        .method({.name = "disconnect",
                 .parameters = {verboseParameter},
                 .doc = "Lets go of the device; does nothing if it is not open.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         if (!isTrue(self, usbLink.status)) return;
                         shutGate(self, usbLink);
                         dropClient(self);
                         setAttribute(self, usbLink.status, py::bool_(false));
                         printMessage(verbose, "Disconnected from", self, attribute(self, "serial_num"));
                     }})
        .method({.name = "close",
                 .parameters = {verboseParameter},
                 .doc = "Ends connection and thread for good; a second call does nothing.",
                 .body = [](py::handle self, const Object& verbose) {
                     closeDevice(self, usbLink, verbose, [](py::handle object) {
                         callOf("Device", "close", object, py::bool_(false));
                         openGate(object, usbLink);
                     });
                 }});
}

}  // namespace zvr::python
