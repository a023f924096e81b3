// The device classes, one for each kind of link.
#include "core/wire/constants.h"
#include "device/device_class.h"
#include "python/raising.h"
#include "transport/usb.h"

namespace zvr::python {

namespace {

// Longest wait for the receive thread to release a dropped USB client.
constexpr std::chrono::milliseconds linger{75};

// The command link has the same fields in all classes. With `comesAndGoes` each connection has a new client, and failed
// reads are reported.
DeviceLink commandLink(const char* clientClass, FailureId failure, int readLength, bool comesAndGoes = false) {
    return {.client = "client_cmd",
            .status = "connect_status_cmd",
            .lock = "recv_cmd_lock",
            .thread = "recv_cmd_thread",
            .body = "_recvCMDThread",
            .clientClass = clientClass,
            .failure = failure,
            .readLength = readLength,
            .connectsAnew = comesAndGoes,
            .reportsReads = comesAndGoes};
}

Object joinNetwork(py::handle self, const DeviceLink& link, Arguments given) {
    connectClient(self, link, given[0], given[1]);
    setAttribute(self, "ip_addr", given[0]);
    return given[0];
}

Object joinWifi(py::handle self, const DeviceLink& link, Arguments given) {
    callOf("NetworkDevice", "connect", self, given[0], given[2], py::bool_(false));
    connectClient(self, link, given[0], given[1]);
    return attribute(self, "ip_addr");
}

Object joinSerial(py::handle self, const DeviceLink& link, Arguments given) {
    setAttribute(self, "port", given[0]);
    setAttribute(self, "baudrate", given[1]);
    connectClient(self, link, given[0], given[1]);
    return given[0];
}

Object joinUsb(py::handle self, const DeviceLink& link, Arguments given) {
    if (isKilled(self)) throw Failure(FailureId::USBConnectionError, "The handle is closed.");
    if (isForeign(self)) throw Failure(FailureId::USBConnectionError, foreignMessage("The handle"));
    const Object client = callObject(classNamed(link.clientClass), given[0]);
    ConnectCall::current()->settle(client);
    setAttribute(self, link.client, client);
    setAttribute(self, link.status, py::bool_(true));
    Object found = callMethod(attribute(self, link.client), "takeSerialNumber");
    setAttribute(self, "serial_num", found);
    return found;
}

// Drops the client and gives the receive thread time to drop it too, so that the device is free for the next one. A
// client with other references is not waited for.
void leaveUsb(py::handle self, const DeviceLink& link) {
    Object client = attribute(self, link.client);
    std::shared_future<void> closed;
    if (const auto ours = nativeOrNothing<UsbClient>(client); ours && !ours->isForeign()) closed = ours->closed();
    const Object held = closed.valid() ? callObject(pythonObject("weakref", "ref"), client) : Object();
    client = Object();
    setAttribute(self, link.client, py::none());
    if (!closed.valid() || !callObject(held).is_none()) return;
    const WithoutGil released;
    closed.wait_for(linger);
}

Object joinBroadcast(py::handle self, const DeviceLink& link, Arguments) {
    if (isKilled(self)) throw Failure(FailureId::NetworkConnectionError, "The handle is closed.");
    const Object client = attribute(self, link.client);
    callMethod(client, "bind", py::str(""), py::int_(UDP_RECV_PORT));
    ConnectCall::current()->settle(client);
    setAttribute(self, link.status, py::int_(1));
    return {};
}

}  // namespace

Parameters wifiConnectParameters() {
    return {{"ip", "str", "IPv4 address or host name", "\"192.168.5.79\""},
            {"port1", "int", "TCP port of the streamed data", "1336"},
            {"port2", "int", "TCP port of the commands", "7"},
            verboseParameter};
}

void defineDeviceClasses(Package& package) {
    const Raises lost{"NetworkConnectionLostError: the connection was lost before; everything is closed nevertheless"};

    static const DeviceClass network{
        .name = "NetworkDevice",
        .doc = "A device behind one TCP connection.",
        .link = commandLink("TCPClient", FailureId::NetworkConnectionLostError, TCP_PKT_LENGTH_MAX),
        .places = {{"ip_addr", "str | None", "address of the device; None until connected"}},
        .dropsClient = true,
        .start = {"Starts the receive thread, which waits for a connection."},
        .connectParameters = {{"ip_addr", "str", "IPv4 address or host name", "\"192.168.1.110\""},
                              {"port", "int", "TCP port of the commands", "7"},
                              verboseParameter},
        .connect = {"Connects to the device; does nothing if it is connected.",
                    {"NetworkConnectionError: the device is not reached within 5 seconds"}},
        .disconnect = {"Ends the connection; does nothing if there is none.",
                       {"NetworkConnectionLostError: the connection was lost before"}},
        .close = {"Closes connection and threads for good; a second call does nothing.", lost},
        .join = joinNetwork};
    static const DeviceClass wifi{
        .name = "WifiDevice",
        .doc = "A Wi-Fi device: one TCP connection for commands, one for streamed data.",
        .base = &network,
        .link = {.client = "client_data",
                 .status = "connect_status_data",
                 .lock = "recv_data_lock",
                 .thread = "recv_data_thread",
                 .body = "_recvDataThread",
                 .clientClass = "TCPClient",
                 .readLength = TCP_DATA_LENGTH_MAX},
        .start = {"Starts the receive threads, which wait for a connection."},
        .connectParameters = wifiConnectParameters(),
        .connect = {"Connects commands and data. A second call replaces the data connection.",
                    {"NetworkConnectionError: the device is not reached within 5 seconds; if only the data side "
                     "failed, the command side stays connected"}},
        .disconnect = {"Ends both connections, if there are any.",
                       {"NetworkConnectionLostError: a connection was lost before"}},
        .close = {"Closes connections and threads for good; a second call does nothing.",
                  {"NetworkConnectionLostError: a connection was lost before; everything is closed nevertheless"}},
        .join = joinWifi};
    static const DeviceClass serial{
        .name = "UARTDevice",
        .doc = "A device on a serial line.",
        .link = commandLink("UARTClient", FailureId::UARTConnectionError, UART_PKT_LENGTH_MAX),
        .places = {{"port", "str | None", "name of the serial port; None until connected"},
                   {"baudrate", "int | None", "speed in bits per second; None until connected"}},
        .dropsClient = true,
        .start = {"Starts the receive thread, which waits for a connection."},
        .connectParameters = {{"port", "str", R"(name of the serial port, "COM4" or "/dev/ttyUSB0")", "\"COM4\""},
                              {"baudrate", "int", "speed in bits per second", "91600"},
                              verboseParameter},
        .connect =
            {"Opens the line; does nothing if it is open.",
             {"UARTConnectionError: there is no such port, another program uses it, or it does not support the speed"}},
        .disconnect = {"Closes the line; does nothing if it is not open."},
        .close = {"Closes line and thread for good; a second call does nothing."},
        .join = joinSerial};
    static const DeviceClass usb{
        .name = "USBDevice",
        .doc = "A device on USB.",
        .link = commandLink("USBClient", FailureId::USBConnectionError, USB_PKT_SIZE, true),
        .places = {{"serial_num", "str | None", "serial number of the device; None until connected"}},
        .start = {"Starts the receive thread, which waits for a connection."},
        .connectParameters = {{"serial_num", "str", "serial number of the device; \"default\" takes the first one",
                               "\"default\""},
                              verboseParameter},
        .connect = {"Opens the device; does nothing if it is open.",
                    {"USBConnectionError: there is no such device, or no libusb",
                     "USBError: opening the device is not permitted, or fails"}},
        .disconnect = {"Releases the device; does nothing if it is not open."},
        .close = {"Closes connection and thread for good; a second call does nothing."},
        .join = joinUsb,
        .leave = leaveUsb};
    static const DeviceClass broadcast{
        .name = "BroadcastDevice",
        .doc = "Sends requests to all devices on the network at once.",
        .link = {.client = "client_udp",
                 .status = "connect_status_udp",
                 .lock = "recv_udp_lock",
                 .thread = "recv_udp_thread",
                 .body = "_recvUDPThread",
                 .clientClass = "UDPClient",
                 .readLength = UDP_PKT_LENGTH_MAX,
                 .anybodySends = true},
        .countsStatus = true,
        .start = {"Starts the receive thread, which waits for a port."},
        .connectParameters = {verboseParameter},
        .connect = {"Binds UDP port 6667, on which the devices answer; does nothing if it is bound.",
                    {"NetworkConnectionError: the port is taken, or the handle is closed"}},
        .disconnect = {"Releases the port; does nothing if it is not bound."},
        .close = {"Closes port and thread for good; a second call does nothing."},
        .join = joinBroadcast};

    defineDeviceClass(package, network);
    package.makeClass("ETHDevice", {"NetworkDevice"}, "An Ethernet device.");
    defineDeviceClass(package, wifi);
    defineDeviceClass(package, usb);
    defineDeviceClass(package, serial);
    defineBroadcast(package);
    defineDeviceClass(package, broadcast);
}

}  // namespace zvr::python
