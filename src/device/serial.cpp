// The device class over a serial line.
#include "core/wire/constants.h"
#include "device/devices.h"

namespace zvr::python {

namespace {

constexpr Link serialLink{"client_cmd",      "connect_status_cmd", "recv_cmd_lock",
                          "recv_cmd_thread", "_recvCMDThread",     UART_PKT_LENGTH_MAX};

}  // namespace

void defineSerialDevice(Package& package) {
    ClassMaker type = package.makeClass("UARTDevice", {"Device"}, "A device on a serial line.");
    type.field({"port", "str | None", "name of the serial port; None until connected"})
        .field({"baudrate", "int | None", "speed in bits per second; None until connected"});
    defineLinkFields<serialLink>(type, "UARTClient");
    type.method({.name = "__init__",
                 .parameters = {verboseParameter},
                 .doc = "Starts the receive thread, which waits for a connection.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         callOf("Device", "__init__", self);
                         setAttribute(self, "port", py::none());
                         setAttribute(self, "baudrate", py::none());
                         openLink(self, serialLink, callObject(classNamed("UARTClient")));
                         printMessage(verbose, "Opened handle", self);
                     }})
        .method(
            {.name = "connect",
             .parameters = {{"port", "str", R"(name of the serial port, "COM4" or "/dev/ttyUSB0")", "\"COM4\""},
                            {"baudrate", "int", "speed in bits per second", "91600"},
                            verboseParameter},
             .doc = "Opens the line; does nothing if it is open.",
             .raises = {"UARTConnectionError: there is no such port, another program has it, or it has no such speed"},
             .body =
                 [](py::handle self, const Object& port, const Object& speed, const Object& verbose) {
                     if (isTrue(self, serialLink.status)) return;
                     setAttribute(self, "port", port);
                     setAttribute(self, "baudrate", speed);
                     connectLink(self, serialLink, port, speed);
                     openGate(self, serialLink);
                     printMessage(verbose, "Connected to", self, port);
                 }})
        .method({.name = "disconnect",
                 .parameters = {verboseParameter},
                 .doc = "Closes the line; does nothing if it is not open.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         if (!isTrue(self, serialLink.status)) return;
                         shutLink(self, serialLink);
                         printMessage(verbose, "Disconnected from", self, attribute(self, "port"));
                     }})
        .method({.name = "close",
                 .parameters = {verboseParameter},
                 .doc = "Ends line and thread for good; a second call does nothing.",
                 .body = [](py::handle self, const Object& verbose) {
                     closeDevice(self, serialLink, verbose, [](py::handle object) {
                         callOf("Device", "close", object, py::bool_(false));
                         openGate(object, serialLink);
                         sleepBlocking(0.001);
                         setAttribute(object, serialLink.client, py::none());
                     });
                 }});
}

}  // namespace zvr::python
