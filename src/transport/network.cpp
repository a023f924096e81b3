#include "transport/network.h"

#include <ifaddrs.h>

#include <set>

#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "transport/names.h"

namespace zvr {

namespace {

using asio::ip::address_v4;
using asio::ip::udp;

// The addresses of the host's name and of its interfaces.
std::set<address_v4> ownAddresses(const InterruptCheck& onWait) {
    const auto named = ownNamedAddresses(onWait);
    std::set<address_v4> addresses(named.begin(), named.end());
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0) return addresses;
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> interfaces(first, freeifaddrs);
    for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr == nullptr || each->ifa_addr->sa_family != AF_INET) continue;
        sockaddr_in address{};
        std::memcpy(&address, each->ifa_addr, sizeof address);
        addresses.insert(address_v4(ntohl(address.sin_addr.s_addr)));
    }
    return addresses;
}

}  // namespace

void NetworkClient::setTimeout(double seconds) {
    requireOwn();
    if (const auto held = socket()) held->setTimeout(seconds);
    changed();
}

void NetworkClient::disconnect() {
    if (isForeign()) return;
    try {
        connectedSocket()->shutDown();
    } catch (const std::system_error&) {
        std::throw_with_nested(Failure(FailureId::NetworkConnectionLostError));
    }
    close();
}

std::shared_ptr<Socket> TcpClient::connect(const std::string& host, int port, const InterruptCheck& onWait,
                                           const InterruptCheck& wanted) {
    InterruptCheck check = onWait;
    if (wanted) {
        check = [&] {
            wanted();
            if (onWait) onWait();
        };
    }
    try {
        requireOwn();
        closeIf(wanted);
        setPlace(host + ":" + std::to_string(port));
        auto made = connectTcp(host, port, std::chrono::seconds(CONNECTION_TIMEOUT), check);
        replaceSocket(made, wanted);
        return made;
    } catch (const std::system_error&) {
        std::throw_with_nested(Failure(FailureId::NetworkConnectionError));
    }
}

std::shared_ptr<Socket> UdpClient::bind(const std::string& host, int port, const InterruptCheck& wanted) {
    try {
        requireOwn();
        closeIf(wanted);
        setPlace("UDP port " + std::to_string(port));
        auto made = bindUdp(host, port);
        replaceSocket(made, wanted);
        return made;
    } catch (const std::system_error&) {
        std::throw_with_nested(Failure(FailureId::NetworkConnectionError));
    }
}

void UdpClient::sendBroadcast(ByteView bytes, const InterruptCheck& onWait) {
    asio::io_context context;
    const udp::endpoint everyone(address_v4::broadcast(), UDP_SEND_PORT);
    std::error_code failure = asio::error::network_unreachable;
    bool sent = false;
    for (const address_v4& address : ownAddresses(onWait)) {
        try {
            udp::socket socket(context, udp::endpoint(address, 0));
            closeOnExec(socket.native_handle());
            socket.set_option(asio::socket_base::broadcast(true));
            socket.send_to(asio::buffer(bytes.data(), bytes.size()), everyone);
            sent = true;
        } catch (const std::system_error& refused) {
            failure = refused.code();
        }
    }
    if (!sent) throw std::system_error(failure);
}

}  // namespace zvr
