#include "core/constants.h"
#include "devices/devices.h"
#include "python/raising.h"
#include "transport/network.h"
#include "transport/serial.h"
#include "transport/usb.h"

namespace zvr::python {

namespace {

const Parameter frame{"int_list", "Sequence[int]", "byte values of a frame"};
const Parameter length{"length", "int", "most bytes to read"};
const Returns packets{"list[tuple[int, bytes]]", "pairs of command code and data, in stream order", "the device"};

std::shared_ptr<NetworkClient> networkClient(py::handle self) { return py::cast<std::shared_ptr<NetworkClient>>(self); }

py::list toList(const std::vector<Packet>& packets) {
    py::list list;
    for (const Packet& packet : packets) list.append(py::make_tuple(packet.command, toBytes(packet.data)));
    return list;
}

int portOf(py::handle port) {
    const auto number = py::cast<long>(port);
    if (number < 0 || number > 65535) throw std::overflow_error("a port is 0 to 65535");
    return static_cast<int>(number);
}

py::object nameOf(const std::pair<std::string, int>& name) { return py::make_tuple(name.first, name.second); }

// The deadline of a send that the caller did not limit: a peer that takes nothing for so long is gone.
Deadline sendDeadline() { return deadlineIn(CONNECTION_TIMEOUT); }

void defineSocket(Package& package) {
    const auto type = py::class_<Socket, std::shared_ptr<Socket>>(
        package.module(), "Socket", "The socket of a client; made by its connect or bind.");
    ClassMaker(type)
        .method("fileno", {}, "The socket's descriptor.", {"int"}, {},
                [](py::handle self) { return py::cast<Socket*>(self)->fileno(); })
        .method("getsockname", {}, "Address and port of this end.", {"tuple[str, int]"}, {},
                [](py::handle self) { return nameOf(py::cast<Socket*>(self)->localName()); })
        .method("getpeername", {}, "Address and port of the other end.", {"tuple[str, int]"}, {},
                [](py::handle self) { return nameOf(py::cast<Socket*>(self)->peerName()); });
}

std::shared_ptr<Client> anyClient(py::handle self) { return py::cast<std::shared_ptr<Client>>(self); }

// Reads what there is; `ended` and `idle` give no bytes.
std::pair<Reading, Bytes> readOnce(py::handle self, py::handle most) {
    const auto client = anyClient(self);
    Bytes buffer(py::cast<std::size_t>(most));
    const Reading reading = blocking([&](const Attend& attend) { return client->read(buffer, attend); });
    if (reading != Reading::data) buffer.clear();
    return {reading, std::move(buffer)};
}

void defineClient(Package& package) {
    const auto type = py::class_<Client, std::shared_ptr<Client>>(package.module(), "Client",
                                                                  "A link to a device: bytes in, frames out.");
    ClassMaker(type)
        .property(
            {"stream", "bytes", "Everything received and not yet consumed."},
            [](py::handle self) { return toBytes(py::cast<Client*>(self)->splitter.stream()); },
            [](py::handle self, const Object& value) { py::cast<Client*>(self)->splitter.setStream(bytesOf(value)); })
        .property(
            {"last_index", "int", "Offset in `stream` at which the next search for a trailer starts."},
            [](py::handle self) { return py::cast<Client*>(self)->splitter.lastIndex(); },
            [](py::handle self, const Object& value) {
                py::cast<Client*>(self)->splitter.setLastIndex(py::cast<std::size_t>(value));
            })
        .method("_splitPacket", {}, "Consumes the complete frames of `stream`.", packets, {},
                [](py::handle self) { return toList(py::cast<Client*>(self)->splitter.split()); })
        .method("sendPacket", {frame}, "Sends a frame.", {},
                {"OSError: the link's failure; TimeoutError if the device takes nothing for 5 seconds"},
                [](py::handle self, const Object& values) {
                    const auto client = anyClient(self);
                    const Bytes bytes = bytesOf(values);
                    const bool sent =
                        blocking([&](const Attend& attend) { return client->send(bytes, sendDeadline(), attend); });
                    if (!sent) throw std::system_error(std::make_error_code(std::errc::timed_out));
                })
        .method("recvPacket", {length}, "Reads once, waiting as long as the link's reads wait.",
                {"bytes", "at most `length` bytes; none at the end of the stream", "the device"},
                {"OSError: the link's failure"},
                [](py::handle self, const Object& most) { return toBytes(readOnce(self, most).second); })
        .method("recvAndSplitPacket", {length}, "Reads once and consumes the complete frames.", packets,
                {"OSError: the link's failure"}, [](py::handle self, const Object& most) -> Object {
                    const Object bytes = callMethod(self, "recvPacket", most);
                    if (py::len(bytes) == 0) return py::list();
                    py::cast<Client*>(self)->splitter.append(bytesOf(bytes));
                    return callMethod(self, "_splitPacket");
                });
}

template <class SocketKind>
void defineSocketField(ClassMaker& type, const char* doc) {
    type.property({"socket", "Socket | int", doc}, [](py::handle self) -> Object {
        const auto socket = py::cast<std::shared_ptr<SocketKind>>(self)->socket();
        return socket ? py::cast(socket) : Object(py::int_(0));
    });
}

void defineNetworkClients(Package& package) {
    const auto type = py::class_<NetworkClient, Client, std::shared_ptr<NetworkClient>>(
        package.module(), "NetworkClient", "A client over a socket.");
    ClassMaker maker(type);
    defineSocketField<NetworkClient>(maker, "The socket; 0 while there is none.");
    maker
        .method("setTimeout", {{"timeout", "float | None", "seconds of later reads and sends; None for no limit"}},
                "Sets the socket's timeout; does nothing while there is no socket.", {}, {},
                [](py::handle self, const Object& timeout) {
                    networkClient(self)->setTimeout(timeout.is_none() ? std::numeric_limits<double>::infinity()
                                                                      : secondsOf(timeout));
                })
        .method("disconnect", {}, "Shuts the socket down and lets go of it.", {},
                {"NetworkConnectionLostError: that fails; the socket stays"},
                [](py::handle self) { networkClient(self)->disconnect(); });

    const auto tcp = py::class_<TcpClient, NetworkClient, std::shared_ptr<TcpClient>>(package.module(), "TCPClient",
                                                                                      "A client over TCP.")
                         .def(py::init<>());
    ClassMaker(tcp).method(
        "connect",
        {{"ip_addr", "str", "IPv4 address or host name of the device"}, {"port", "int", "TCP port, 0 to 65535"}},
        "Connects within 5 seconds.", {"bool", "True"}, {"NetworkConnectionError: that fails"},
        [](py::handle self, const Object& address, const Object& port) {
            const auto client = py::cast<std::shared_ptr<TcpClient>>(self);
            const auto host = py::cast<std::string>(address);
            const int number = portOf(port);
            blocking([&](const Attend& attend) { client->connect(host, number, attend); });
            return true;
        });

    const auto udp = py::class_<UdpClient, NetworkClient, std::shared_ptr<UdpClient>>(
                         package.module(), "UDPClient", "A client that receives and broadcasts datagrams.")
                         .def(py::init<>());
    ClassMaker(udp)
        .method("bind",
                {{"ip_addr", "str", "local IPv4 address; empty for every interface"},
                 {"port", "int", "UDP port, 0 to 65535"}},
                "Takes a local port.", {}, {"NetworkConnectionError: the port is taken"},
                [](py::handle self, const Object& address, const Object& port) {
                    py::cast<std::shared_ptr<UdpClient>>(self)->bind(py::cast<std::string>(address), portOf(port));
                })
        .method("sendBcstPacket", {{"packet", "Sequence[int]", "byte values of a frame"}},
                "Sends a frame to every device, on every interface that carries it.", {},
                {"OSError: no interface carries it"}, [](py::handle, const Object& values) {
                    const Bytes bytes = bytesOf(values);
                    const WithoutGil released;
                    UdpClient::sendBroadcast(bytes);
                });
}

void defineSerialClient(Package& package) {
    const auto type = py::class_<SerialClient, Client, std::shared_ptr<SerialClient>>(package.module(), "UARTClient",
                                                                                      "A client over a serial line.")
                          .def(py::init<>());
    ClassMaker maker(type);
    defineSocketField<SerialClient>(maker, "The open line; 0 while there is none.");
    maker
        .property({"read_timeout", "float", "Seconds that a read waits at most."},
                  [](py::handle) { return UART_READ_TIMEOUT; })
        .method("connect",
                {{"port", "str", R"(name of the port, "COM4" or "/dev/ttyUSB0")"},
                 {"baudrate", "int", "speed in bits per second"}},
                "Opens the port: 8 data bits, no parity, one stop bit.", {"bool", "True"},
                {"UARTConnectionError: there is no such port, another program has it, or it has no such speed"},
                [](py::handle self, const Object& port, const Object& speed) {
                    py::cast<std::shared_ptr<SerialClient>>(self)->connect(py::cast<std::string>(port),
                                                                           py::cast<int>(speed));
                    return true;
                })
        .method("disconnect", {}, "Closes the port.", {"bool", "True"}, {}, [](py::handle self) {
            py::cast<std::shared_ptr<SerialClient>>(self)->abandon();
            return true;
        });
}

std::shared_ptr<UsbClient> usbClient(py::handle self) { return py::cast<std::shared_ptr<UsbClient>>(self); }

void defineUsbClient(Package& package) {
    const auto identity = py::class_<UsbIdentity>(package.module(), "USBDeviceIdentity",
                                                  "Where a USB device is attached, and what it tells about itself.");
    ClassMaker(identity)
        .property({"bus", "int", "Number of the bus."},
                  [](py::handle self) { return py::cast<UsbIdentity*>(self)->bus; })
        .property({"address", "int", "Address on the bus."},
                  [](py::handle self) { return py::cast<UsbIdentity*>(self)->address; })
        .property({"serial_number", "str", "Its serial number."},
                  [](py::handle self) { return py::cast<UsbIdentity*>(self)->serialNumber; })
        .property({"product", "str", "Name of the product."},
                  [](py::handle self) { return py::cast<UsbIdentity*>(self)->product; });
    const auto type =
        py::class_<UsbClient, Client, std::shared_ptr<UsbClient>>(
            package.module(), "USBClient",
            "A client over the bulk endpoints of a USB device: USBClient(serial_num=\"default\").\n\nOpens the device "
            "with this serial number, or with \"default\" the first one, and takes it from a driver of the kernel. "
            "Raises USBConnectionError if there is none, USBError if it may not be opened.")
            .def(py::init([](const std::string& serial) {
                     const auto library = usbLibrary();
                     const auto wanted = serial == "default" ? std::nullopt : std::optional(serial);
                     const WithoutGil released;
                     return std::make_shared<UsbClient>(library, wanted);
                 }),
                 py::arg("serial_num") = "default");
    ClassMaker(type)
        .property({"device", "USBDeviceIdentity", "The device."},
                  [](py::handle self) { return py::cast(usbClient(self)->identity()); })
        .property({"config", "int", "Value of the device's first configuration."},
                  [](py::handle self) { return usbClient(self)->configuration(); })
        .property({"interface", "int", "Number of that configuration's first interface."},
                  [](py::handle self) { return usbClient(self)->interfaceNumber(); })
        .property({"ep_in", "int", "Address of the endpoint that is read."}, [](py::handle) { return USB_EP_IN; })
        .property({"ep_out", "int", "Address of the endpoint that is written."}, [](py::handle) { return USB_EP_OUT; })
        .method("takeSerialNumber", {}, "The device's serial number.", {"str", "its USB string", "the device"}, {},
                [](py::handle self) { return usbClient(self)->identity().serialNumber; })
        .method("takeProductName", {}, "The product's name.", {"str", "its USB string", "the device"}, {},
                [](py::handle self) { return usbClient(self)->identity().product; })
        .method("recvPacket", {length}, "Reads once, for a millisecond at most.",
                {"bytes", "at most `length` bytes", "the device"},
                {"USBTimeoutError: nothing came in time", "USBError: the USB layer's failure"},
                [](py::handle self, const Object& most) {
                    const auto [reading, bytes] = readOnce(self, most);
                    if (reading == Reading::idle) throw UsbError(LIBUSB_ERROR_TIMEOUT);
                    return toBytes(bytes);
                });
}

}  // namespace

void defineClients(Package& package) {
    defineSocket(package);
    defineClient(package);
    defineNetworkClients(package);
    defineSerialClient(package);
    defineUsbClient(package);
}

}  // namespace zvr::python
