#include "core/wire/constants.h"
#include "device/devices.h"
#include "device/runtime.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr Link commandLink{"client_cmd",      "connect_status_cmd", "recv_cmd_lock",
                           "recv_cmd_thread", "_recvCMDThread",     TCP_PKT_LENGTH_MAX};
constexpr Link dataLink{"client_data",      "connect_status_data", "recv_data_lock",
                        "recv_data_thread", "_recvDataThread",     TCP_DATA_LENGTH_MAX};

void defineEthernet(Package& package) {
    ClassMaker type = package.makeClass("NetworkDevice", {"Device"}, "A device behind one TCP connection.");
    type.field({"ip_addr", "str | None", "address of the device; None until connected"});
    defineLinkFields<commandLink>(type, "TCPClient");
    type.method({.name = "__init__",
                 .parameters = {verboseParameter},
                 .doc = "Starts the receive thread, which waits for a connection.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         callOf("Device", "__init__", self);
                         setAttribute(self, "ip_addr", py::none());
                         openLink(self, commandLink, callObject(classNamed("TCPClient")));
                         printMessage(verbose, "Opened handle", self);
                     }})
        .method({.name = "connect",
                 .parameters = {{"ip_addr", "str", "IPv4 address or host name", "\"192.168.1.110\""},
                                {"port", "int", "TCP port of the commands", "7"},
                                verboseParameter},
                 .doc = "Connects to the device; does nothing if it is connected.",
                 .raises = {"NetworkConnectionError: the device is not reached within 5 seconds"},
                 .body =
                     [](py::handle self, const Object& address, const Object& port, const Object& verbose) {
                         if (isTrue(self, commandLink.status)) return;
                         connectLink(self, commandLink, address, port);
                         setAttribute(self, "ip_addr", address);
                         openGate(self, commandLink);
                         printMessage(verbose, "Connected to", self, address);
                     }})
        .method({.name = "disconnect",
                 .parameters = {verboseParameter},
                 .doc = "Ends the connection; does nothing if there is none.",
                 .raises = {"NetworkConnectionLostError: the connection was lost before"},
                 .body =
                     [](py::handle self, const Object& verbose) {
                         if (!isTrue(self, commandLink.status)) return;
                         shutLink(self, commandLink);
                         printMessage(verbose, "Disconnected from", self, attribute(self, "ip_addr"));
                     }})
        .method(
            {.name = "close",
             .parameters = {verboseParameter},
             .doc = "Ends connection and threads for good; a second call does nothing.",
             .raises = {"NetworkConnectionLostError: the connection was lost before; everything is ended all the same"},
             .body = [](py::handle self, const Object& verbose) {
                 closeDevice(self, commandLink, verbose, [](py::handle object) {
                     callOf("Device", "close", object, py::bool_(false));
                     openGate(object, commandLink);
                     sleepBlocking(0.001);
                     setAttribute(object, commandLink.client, py::none());
                 });
             }});
    package.makeClass("ETHDevice", {"NetworkDevice"}, "An Ethernet device.");
}

void defineWifi(Package& package) {
    ClassMaker type = package.makeClass("WifiDevice", {"NetworkDevice"},
                                        "A Wi-Fi device: one TCP connection for commands, one for streamed data.");
    defineLinkFields<dataLink>(type, "TCPClient");
    type.method({.name = "__init__",
                 .parameters = {verboseParameter},
                 .doc = "Starts the receive threads, which wait for a connection.",
                 .body =
                     [](py::handle self, const Object& verbose) {
                         callOf("NetworkDevice", "__init__", self, py::bool_(false));
                         openLink(self, dataLink, callObject(classNamed("TCPClient")));
                         printMessage(verbose, "Opened handle", self);
                     }})
        .method(
            {.name = "connect",
             .parameters = wifiConnectParameters(),
             .doc = "Connects commands and data. A second call opens another data connection in place of the first.",
             .raises =
                 {"NetworkConnectionError: the device is not reached within 5 seconds; after a failed data side the "
                  "command side is connected"},
             .body =
                 [](py::handle self, const Object& address, const Object& dataPort, const Object& commandPort,
                    const Object& verbose) {
                     callOf("NetworkDevice", "connect", self, address, commandPort, py::bool_(false));
                     connectLink(self, dataLink, address, dataPort);
                     openGate(self, dataLink);
                     printMessage(verbose, "Connected to", self, attribute(self, "ip_addr"));
                 }})
        .method({.name = "disconnect",
                 .parameters = {verboseParameter},
                 .doc = "Ends both connections, as far as there are any.",
                 .raises = {"NetworkConnectionLostError: a connection was lost before"},
                 .body =
                     [](py::handle self, const Object& verbose) {
                         callOf("NetworkDevice", "disconnect", self, py::bool_(false));
                         if (!isTrue(self, dataLink.status)) return;
                         shutLink(self, dataLink);
                         printMessage(verbose, "Disconnected from", self, attribute(self, "ip_addr"));
                     }})
        .method(
            {.name = "close",
             .parameters = {verboseParameter},
             .doc = "Ends connections and threads for good; a second call does nothing.",
             .raises = {"NetworkConnectionLostError: a connection was lost before; everything is ended all the same"},
             .body = [](py::handle self, const Object& verbose) {
                 closeDevice(self, commandLink, verbose, [](py::handle object) {
                     callOf("NetworkDevice", "close", object, py::bool_(false));
                     openGate(object, dataLink);
                 });
             }});
}

}  // namespace

Parameters wifiConnectParameters() {
    return {{"ip", "str", "IPv4 address or host name", "\"192.168.5.79\""},
            {"port1", "int", "TCP port of the streamed data", "1336"},
            {"port2", "int", "TCP port of the commands", "7"},
            verboseParameter};
}

void defineNetworkDevices(Package& package) {
    defineEthernet(package);
    defineWifi(package);
}

}  // namespace zvr::python
