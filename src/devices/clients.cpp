#include "core/constants.h"
#include "devices/devices.h"
#include "python/raising.h"
#include "transport/network.h"

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
    const auto socket = [](py::handle self) -> Socket& { return *py::cast<Socket*>(self); };
    static_assert(std::is_empty_v<decltype(socket)>);
    ClassMaker(type)
        .method("fileno", {}, "The socket's descriptor.", {"int"}, {},
                [](py::handle self) { return py::cast<Socket*>(self)->fileno(); })
        .method("getsockname", {}, "Address and port of this end.", {"tuple[str, int]"}, {},
                [](py::handle self) { return nameOf(py::cast<Socket*>(self)->localName()); })
        .method("getpeername", {}, "Address and port of the other end.", {"tuple[str, int]"}, {},
                [](py::handle self) { return nameOf(py::cast<Socket*>(self)->peerName()); });
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
                [](py::handle self) { return toList(py::cast<Client*>(self)->splitter.split()); });
}

void defineNetworkClient(Package& package) {
    const auto type = py::class_<NetworkClient, Client, std::shared_ptr<NetworkClient>>(
        package.module(), "NetworkClient", "A client over a socket.");
    ClassMaker(type)
        .property({"socket", "Socket | int", "The socket; 0 while there is none."},
                  [](py::handle self) -> Object {
                      const auto socket = networkClient(self)->socket();
                      return socket ? py::cast(socket) : Object(py::int_(0));
                  })
        .method("setTimeout", {{"timeout", "float | None", "seconds of later reads and sends; None for no limit"}},
                "Sets the socket's timeout; does nothing while there is no socket.", {}, {},
                [](py::handle self, const Object& timeout) {
                    networkClient(self)->setTimeout(timeout.is_none() ? std::numeric_limits<double>::infinity()
                                                                      : secondsOf(timeout));
                })
        .method("sendPacket", {frame}, "Sends a frame.", {},
                {"OSError: the socket's failure; TimeoutError if the peer takes nothing for 5 seconds"},
                [](py::handle self, const Object& values) {
                    const auto client = networkClient(self);
                    const Bytes bytes = bytesOf(values);
                    const bool sent =
                        blocking([&](const Attend& attend) { return client->send(bytes, sendDeadline(), attend); });
                    if (!sent) throw std::system_error(std::make_error_code(std::errc::timed_out));
                })
        .method("recvPacket", {length}, "Reads what has arrived, waiting for the first byte.",
                {"bytes", "at most `length` bytes; none at the end of the stream", "the device"},
                {"OSError: the socket's failure"},
                [](py::handle self, const Object& most) -> Object {
                    const auto client = networkClient(self);
                    Bytes buffer(py::cast<std::size_t>(most));
                    blocking([&](const Attend& attend) { return client->read(buffer, attend); });
                    return toBytes(buffer);
                })
        .method("recvAndSplitPacket", {length}, "Reads once and consumes the complete frames.", packets,
                {"OSError: the socket's failure"},
                [](py::handle self, const Object& most) -> Object {
                    const Object bytes = callMethod(self, "recvPacket", most);
                    if (py::len(bytes) == 0) return py::list();
                    py::cast<Client*>(self)->splitter.append(bytesOf(bytes));
                    return callMethod(self, "_splitPacket");
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
                "Sends a frame to every device, on every interface.", {}, {"OSError: the socket's failure"},
                [](py::handle, const Object& values) {
                    const Bytes bytes = bytesOf(values);
                    const WithoutGil released;
                    UdpClient::sendBroadcast(bytes);
                });
}

}  // namespace

void defineClients(Package& package) {
    defineSocket(package);
    defineClient(package);
    defineNetworkClient(package);
}

}  // namespace zvr::python
