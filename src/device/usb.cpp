// The USB layer for Python.
#include "transport/usb.h"

#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "device/devices.h"
#include "device/runtime.h"
#include "python/arguments.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

using Library = std::shared_ptr<const UsbLibrary>;

// The library beside the package, or None with a warning, which means the system's own.
Object findLibrary() {
    const Object file = py::getattr(py::module_::import("pyzvr"), "__file__", py::none());
    const Object folder =
        file.is_none() ? Object(py::str(".")) : callMethod(pythonObject("os", "path"), "dirname", file);
    for (const char* place : {"/libusb-1.0.dll", "/../ext_lib/libusb-1.0.dll"}) {
        if (const Library library = UsbLibrary::load(py::cast<std::string>(folder) + place)) return py::cast(library);
    }
    callObject(failureClass(FailureId::ExtLibNotFoundWarning));
    return py::none();
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
    package.makeClass("USBError", {"OSError"}, "An error of the USB layer, with the system's error number.");
    package.makeClass("USBTimeoutError", {"USBError"}, "A USB transfer timed out.");
    package.function({.name = "getLibUSB1",
                      .doc = "Looks for libusb-1.0 beside the package.",
                      .returns = {"USBLibrary | None", "the library, or None, which means the system's own"},
                      .raises = {"ExtLibNotFoundWarning: issued if there is none beside the package"},
                      .body = [](py::handle) { return findLibrary(); }});
}

void defineUsbEnumeration(Package& package) {
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
}

}  // namespace zvr::python
