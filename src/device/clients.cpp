#include "core/wire/constants.h"
#include "device/connects.h"
#include "device/devices.h"
#include "device/frame_log.h"
#include "device/sockets.h"
#include "python/arguments.h"
#include "python/operation.h"
#include "python/raising.h"
#include "transport/network.h"
#include "transport/serial.h"
#include "transport/usb.h"

namespace zvr::python {

namespace {

const Parameter frame{"int_list", "Sequence[int]", "byte values of a frame"};
const Parameter length{"length", "int", "most bytes to read"};
const Returns packets{"list[tuple[int, bytes]]", "pairs of command code and data, in stream order", "the device"};

py::list toList(const std::vector<Packet>& packets) {
    py::list list;
    for (const Packet& packet : packets) list.append(py::make_tuple(packet.command, toBytes(packet.data)));
    return list;
}

// A name that the system takes: it would read one with a null character only up to that.
std::string systemName(py::handle value, const char* name) {
    std::string text = argument<std::string>(value, name);
    if (text.find('\0') != std::string::npos) {
        throw std::invalid_argument("'" + std::string(name) + "' must not hold a null character");
    }
    return text;
}

int portOf(py::handle port) {
    const auto number = argument<std::int64_t>(port, "port");
    if (number < 0 || number > 65535) throw std::overflow_error("a port is 0 to 65535");
    return static_cast<int>(number);
}

// Asked by a client while it is connected, if that is part of connecting a handle.
InterruptCheck stillWanted() { return ConnectCall::wanted(ConnectCall::current()); }

void keepSocket(std::shared_ptr<Socket> socket) {
    if (const auto call = ConnectCall::current()) call->noteSocket(std::move(socket));
}

template <class Action>
auto withoutGil(Action action) {
    const WithoutGil released;
    return action();
}

// The deadline of a send without a caller's limit: a peer that accepts no data for this long is gone.
Deadline sendDeadline() { return deadlineIn(CONNECTION_TIMEOUT); }

// The client's splitter. Throws in a forked child.
SharedSplitter& splitterOf(const std::shared_ptr<Client>& client) {
    client->requireOwn();
    return client->splitter;
}

// Reads once; `ended` and `idle` return no bytes.
std::pair<ReadStatus, Bytes> readOnce(const std::shared_ptr<Client>& client, py::handle most) {
    Bytes buffer(lengthOf(most, "length"));
    if (buffer.empty()) return {ReadStatus::data, {}};
    const ReadStatus reading = blocking([&](const InterruptCheck& onWait) { return client->read(buffer, onWait); });
    if (reading != ReadStatus::data) buffer.clear();
    return {reading, std::move(buffer)};
}

// If no step is replaced, bytes enter the stream in order of arrival even with concurrent readers.
Object receiveAndSplit(py::handle self, const Object& most) {
    const auto client = native<Client>(self);
    if (hasOwnMethod(self, "recvPacket") && hasOwnMethod(self, "_splitPacket")) {
        const std::size_t length = lengthOf(most, "length");
        std::vector<Packet> packets;
        if (length == 0) return py::list();
        blocking(
            [&](const InterruptCheck& onWait) { return client->receiveAs(Reader::caller, length, packets, onWait); });
        return toList(packets);
    }
    const Object bytes = callMethod(self, "recvPacket", most);
    if (py::len(bytes) == 0) return py::list();
    const Bytes received = bytesOf(bytes);
    splitterOf(client).with([&](Splitter& splitter) { splitter.append(received); });
    return callMethod(self, "_splitPacket");
}

// Sets or deletes an attribute as usual and, if it is a step, makes the reading thread look it up again.
int changeAttribute(PyObject* self, PyObject* name, PyObject* value) noexcept {
    const int result = entering([&] { return PyObject_GenericSetAttr(self, name, value); });
    if (result != 0) return result;
    try {
        if (!Watch::watches(name)) return 0;
        if (const auto client = nativeOrNothing<Client>(self)) client->replaceSteps();
        return 0;
    } catch (...) {
        raiseCurrent();
        return -1;
    }
}

void defineClient(Package& package) {
    Watch::watchNames({"sendPacket", "recvPacket", "recvAndSplitPacket", "_splitPacket"});
    const auto type =
        py::class_<Client, std::shared_ptr<Client>>(
            package.module(), "Client",
            "A link to a device: bytes in, frames out. By itself it has no link; a subclass provides one with methods "
            "of its own.",
            py::dynamic_attr(),
            py::custom_type_setup([](PyHeapTypeObject* type) { type->ht_type.tp_setattro = changeAttribute; }))
            .def(py::init([] { return std::shared_ptr<Client>(std::make_shared<BareClient>()); }));
    ClassMaker(type)
        .property(
            {"stream", "bytes", "Everything received and not yet consumed."},
            [](py::handle self) {
                const auto client = native<Client>(self);
                requireField(self, "stream");
                return toBytes(splitterOf(client).stream());
            },
            [](py::handle self, const Object& value) {
                const auto client = native<Client>(self);
                const Bytes stream = bytesOf(value);
                splitterOf(client).with([&](Splitter& splitter) { splitter.setStream(stream); });
                restoreField(self, "stream");
            })
        .property(
            {"last_index", "int", "Offset in `stream` at which the next search for a trailer starts."},
            [](py::handle self) {
                const auto client = native<Client>(self);
                requireField(self, "last_index");
                return splitterOf(client).with([](const Splitter& splitter) { return splitter.lastIndex(); });
            },
            [](py::handle self, const Object& value) {
                const auto client = native<Client>(self);
                const auto index = argument<std::int64_t>(value, "last_index");
                if (index < 0) throw std::invalid_argument("last_index is negative");
                splitterOf(client).with(
                    [&](Splitter& splitter) { splitter.setLastIndex(static_cast<std::size_t>(index)); });
                restoreField(self, "last_index");
            })
        .method({.name = "_splitPacket",
                 .doc = "Consumes the complete frames of `stream`.",
                 .returns = packets,
                 .body = [](py::handle self) { return toList(splitterOf(native<Client>(self)).split()); }})
        .method({.name = "sendPacket",
                 .parameters = {frame},
                 .doc = "Sends a frame.",
                 .raises = {"OSError: the link's failure; TimeoutError if the device accepts no data for 5 seconds"},
                 .body =
                     [](py::handle self, const Object& values) {
                         const auto client = native<Client>(self);
                         const Bytes bytes = bytesOf(values);
                         askForFrameLog();
                         const bool sent = blocking([&](const InterruptCheck& onWait) {
                             client->tellSending(bytes);
                             return client->send(bytes, sendDeadline(), onWait);
                         });
                         if (!sent) throw std::system_error(std::make_error_code(std::errc::timed_out));
                     }})
        .method({.name = "recvPacket",
                 .parameters = {length},
                 .doc = "Reads once, with the link's read timeout.",
                 .returns = {"bytes", "at most `length` bytes; none at the end of the stream", "the device"},
                 .raises = {"OSError: the link's failure"},
                 .body = [](py::handle self,
                            const Object& most) { return toBytes(readOnce(native<Client>(self), most).second); }})
        .method({.name = "recvAndSplitPacket",
                 .parameters = {length},
                 .doc = "Reads once and consumes the complete frames.",
                 .returns = packets,
                 .raises = {"OSError: the link's failure"},
                 .body = receiveAndSplit});
    addDeleter(type, "stream");
    addDeleter(type, "last_index");
}

template <class ClientKind, const SocketSteps& steps>
void defineSocketField(ClassMaker& type, const char* doc) {
    type.property(
        {"socket", "Socket | int", doc}, [](py::handle self) { return socketOf(self, native<ClientKind>(self)); },
        [](py::handle self, const Object& value) { setSocket(self, native<ClientKind>(self), value, steps); });
    addDeleter(type.type(), "socket");
}

void defineNetworkClients(Package& package) {
    const auto type = py::class_<NetworkClient, Client, std::shared_ptr<NetworkClient>>(
                          package.module(), "NetworkClient", "A client over a socket.")
                          .def(py::init<>());
    ClassMaker maker(type);
    defineSocketField<NetworkClient, networkSteps>(
        maker, "The socket; 0 while there is none. It may be replaced by any object with the methods of a socket.");
    maker
        .method({.name = "setTimeout",
                 .parameters = {{"timeout", "float | None",
                                 "timeout of later reads and sends in seconds; None for no limit"}},
                 .doc = "Sets the socket's timeout; does nothing while there is no socket.",
                 .body =
                     [](py::handle self, const Object& timeout) {
                         const auto client = native<NetworkClient>(self);
                         const double seconds = timeout.is_none() ? std::numeric_limits<double>::infinity()
                                                                  : argument<Seconds>(timeout, "timeout");
                         client->setTimeout(seconds);
                     }})
        .method({.name = "disconnect",
                 .doc = "Shuts the socket down and releases it.",
                 .raises = {"NetworkConnectionLostError: shutting down fails; the socket stays"},
                 .body = [](py::handle self) {
                     const auto client = native<NetworkClient>(self);
                     {
                         const WithoutGil released;
                         client->disconnect();
                     }
                     restoreField(self, "socket");
                 }});

    const auto tcp = py::class_<TcpClient, NetworkClient, std::shared_ptr<TcpClient>>(package.module(), "TCPClient",
                                                                                      "A client over TCP.")
                         .def(py::init<>());
    ClassMaker(tcp).method({.name = "connect",
                            .parameters = {{"ip_addr", "str", "IPv4 address or host name of the device"},
                                           {"port", "int", "TCP port, 0 to 65535"}},
                            .doc = "Connects within 5 seconds.",
                            .returns = {"bool", "True"},
                            .raises = {"NetworkConnectionError: that fails"},
                            .body = [](py::handle self, const Object& address, const Object& port) {
                                const auto client = native<TcpClient>(self);
                                const auto host = systemName(address, "ip_addr");
                                const int number = portOf(port);
                                keepSocket(blocking([&](const InterruptCheck& onWait) {
                                    return client->connect(host, number, onWait, stillWanted());
                                }));
                                restoreField(self, "socket");
                                return true;
                            }});

    const auto udp = py::class_<UdpClient, NetworkClient, std::shared_ptr<UdpClient>>(
                         package.module(), "UDPClient", "A client that receives and broadcasts datagrams.")
                         .def(py::init<>());
    ClassMaker(udp)
        .method({.name = "bind",
                 .parameters = {{"ip_addr", "str", "local IPv4 address; empty for every interface"},
                                {"port", "int", "UDP port, 0 to 65535"}},
                 .doc = "Binds a local port.",
                 .raises = {"NetworkConnectionError: the port is taken"},
                 .body =
                     [](py::handle self, const Object& address, const Object& port) {
                         const auto client = native<UdpClient>(self);
                         const auto host = systemName(address, "ip_addr");
                         const int number = portOf(port);
                         keepSocket(withoutGil([&] { return client->bind(host, number, stillWanted()); }));
                         restoreField(self, "socket");
                     }})
        .method({.name = "sendBcstPacket",
                 .parameters = {{"packet", "Sequence[int]", "byte values of a frame"}},
                 .doc = "Sends a frame to every device, on every interface that can send it.",
                 .raises = {"OSError: no interface can send it"},
                 .body = [](py::handle self, const Object& values) {
                     const auto client = native<UdpClient>(self);
                     client->requireOwn();
                     const Bytes bytes = bytesOf(values);
                     askForFrameLog();
                     blocking([&](const InterruptCheck& onWait) {
                         client->tellSending(bytes);
                         UdpClient::sendBroadcast(bytes, onWait);
                     });
                 }});
}

void defineSerialClient(Package& package) {
    const auto type = py::class_<SerialClient, Client, std::shared_ptr<SerialClient>>(package.module(), "UARTClient",
                                                                                      "A client over a serial line.")
                          .def(py::init<>());
    ClassMaker maker(type);
    defineSocketField<SerialClient, lineSteps>(
        maker, "The open line; 0 while there is none. It may be replaced by any object with read, write and close.");
    maker
        .property(
            {"read_timeout", "float", "Read timeout in seconds."},
            [](py::handle self) {
                const auto client = native<SerialClient>(self);
                requireField(self, "read_timeout");
                return client->readTimeout();
            },
            [](py::handle self, const Object& value) {
                native<SerialClient>(self)->setReadTimeout(value.is_none() ? std::numeric_limits<double>::infinity()
                                                                           : argument<Seconds>(value, "read_timeout"));
                restoreField(self, "read_timeout");
            })
        .property(
            {"client", "object", "Not used."},
            [](py::handle self) {
                requireField(self, "client");
                PyObject* const kept = PyDict_GetItemWithError(dictionaryOf(self).ptr(), interned("client"));
                return kept == nullptr ? Object(py::int_(0)) : borrow(kept);
            },
            [](py::handle self, const Object& value) { dictionaryOf(self)[py::handle(interned("client"))] = value; })
        .method({.name = "connect",
                 .parameters = {{"port", "str", R"(name of the port, "COM4" or "/dev/ttyUSB0")"},
                                {"baudrate", "int", "speed in bits per second"}},
                 .doc = "Opens the port: 8 data bits, no parity, one stop bit.",
                 .returns = {"bool", "True"},
                 .raises = {"UARTConnectionError: there is no such port, another program uses it, or it does not "
                            "support the speed"},
                 .body =
                     [](py::handle self, const Object& port, const Object& speed) {
                         const auto client = native<SerialClient>(self);
                         const auto name = systemName(port, "port");
                         const int bauds = argument<int>(speed, "baudrate");
                         keepSocket(withoutGil([&] { return client->connect(name, bauds, stillWanted()); }));
                         restoreField(self, "socket");
                         return true;
                     }})
        .method(
            {.name = "disconnect", .doc = "Closes the port.", .returns = {"bool", "True"}, .body = [](py::handle self) {
                 const auto client = native<SerialClient>(self);
                 {
                     const WithoutGil released;
                     client->disconnect();
                 }
                 restoreField(self, "socket");
                 return true;
             }});
    addDeleter(type, "read_timeout");
    addDeleter(type, "client");
}

std::shared_ptr<UsbClient> usbClient(py::handle self) { return native<UsbClient>(self); }

void defineUsbClient(Package& package) {
    const auto identity = py::class_<UsbIdentity, std::shared_ptr<UsbIdentity>>(
        package.module(), "USBDeviceIdentity", "Where a USB device is attached, and how it identifies itself.");
    ClassMaker(identity)
        .property({"bus", "int", "Number of the bus."}, [](py::handle self) { return native<UsbIdentity>(self)->bus; })
        .property({"address", "int", "Address on the bus."},
                  [](py::handle self) { return native<UsbIdentity>(self)->address; })
        .property({"serial_number", "str", "Its serial number."},
                  [](py::handle self) { return native<UsbIdentity>(self)->serialNumber; })
        .property({"product", "str", "Name of the product."},
                  [](py::handle self) { return native<UsbIdentity>(self)->product; });
    const auto type =
        py::class_<UsbClient, Client, std::shared_ptr<UsbClient>>(
            package.module(), "USBClient",
            "A client over the bulk endpoints of a USB device: USBClient(serial_num=\"default\").\n\nOpens the device "
            "with this serial number, or with \"default\" the first one, and detaches a kernel driver from it. Raises "
            "USBConnectionError if there is none, USBError if opening is not permitted.")
            .def(py::init([](const Object& serialNumber) {
                     const auto serial = argument<std::string>(serialNumber, "serial_num");
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
        .method({.name = "takeSerialNumber",
                 .doc = "The device's serial number.",
                 .returns = {"str", "its USB string", "the device"},
                 .body = [](py::handle self) { return usbClient(self)->identity().serialNumber; }})
        .method({.name = "takeProductName",
                 .doc = "The product's name.",
                 .returns = {"str", "its USB string", "the device"},
                 .body = [](py::handle self) { return usbClient(self)->identity().product; }})
        .method({.name = "recvPacket",
                 .parameters = {length},
                 .doc = "Reads once, for a millisecond at most.",
                 .returns = {"bytes", "at most `length` bytes", "the device"},
                 .raises = {"USBTimeoutError: nothing arrived in time", "USBError: the USB layer's failure"},
                 .body = [](py::handle self, const Object& most) {
                     const auto [reading, bytes] = readOnce(usbClient(self), most);
                     if (reading == ReadStatus::idle) throw UsbError(LIBUSB_ERROR_TIMEOUT);
                     return toBytes(bytes);
                 }});
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
