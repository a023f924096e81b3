#include "links/discovery.h"

#include <algorithm>
#include <iostream>

#include "links/connection.h"

namespace zvr::sim {

namespace {

using asio::ip::udp;

constexpr std::uint16_t requestPort = 61557, replyPort = 6667;
constexpr std::uint8_t toDevice = 0, fromDevice = 1;  // first byte of the data, by direction

udp::socket listening(asio::io_context& context) {
    try {
        udp::socket socket(context, udp::v4());
        // Any number of simulators on a host receive the same broadcast.
        socket.set_option(udp::socket::reuse_address(true));
        socket.bind({udp::v4(), requestPort});
        return socket;
    } catch (const std::system_error& failure) {
        throw std::system_error(failure.code(), "cannot listen on UDP port " + std::to_string(requestPort));
    }
}

Bytes recordOf(const Device& device) {
    const NetworkSettings& network = device.network;
    return reply(network.ip, network.mask, network.mac, padded(device.model().displayName, 32),
                 padded(device.identity.serial, 8), padded(device.identity.alias, 16), padded("simulator", 32),
                 network.gateway);
}

struct Answer {
    Bytes data;
    std::function<void()> afterwards = [] {};
};

bool isMine(const Device& device, ByteView mac) { return std::ranges::equal(mac, device.network.mac); }

// No reply to malformed requests or those for another device.
std::optional<Answer> answerOf(Device& device, int command, ByteView data) {
    const Bytes accepted{1, 0};  // by the device, with status 0
    if (command == GET_DEVICE_INFO) return Answer{recordOf(device)};
    if (command == NETCOM_CHECK_MAC_RINGING && data.size() == 7 && isMine(device, data.first(6))) {
        return Answer{accepted};
    }
    if (command == CHECK_MAC_AND_REBOOT && data.size() == 6 && isMine(device, data)) {
        return Answer{accepted, [&device] { device.reboot(); }};
    }
    if (command == CHECK_MAC_AND_SET_IP && data.size() == 18 && isMine(device, data.subspan(8, 6))) {
        std::ranges::copy(data.first(4), device.network.ip.begin());
        std::ranges::copy(data.subspan(4, 4), device.network.mask.begin());
        std::ranges::copy(data.last(4), device.network.gateway.begin());
        return Answer{accepted};
    }
    return std::nullopt;
}

}  // namespace

Discovery::Discovery(asio::io_context& context, Device& device, bool verbose)
    : device_(device), verbose_(verbose), socket_(listening(context)) {
    receive();
}

void Discovery::receive() {
    socket_.async_receive_from(asio::buffer(buffer_), sender_, [this](std::error_code error, std::size_t count) {
        if (error == asio::error::operation_aborted) return;
        if (!error) answer(ByteView(buffer_.data(), count));
        receive();
    });
}

void Discovery::answer(ByteView datagram) {
    Splitter splitter;
    splitter.append(datagram);
    for (const Packet& request : splitter.split()) {
        if (request.data.empty() || request.data[0] != toDevice) continue;
        if (verbose_) logFrame("< broadcast", request.command, request.data);
        const auto answer = answerOf(device_, request.command, ByteView(request.data).subspan(1));
        if (!answer) continue;
        const Bytes data = reply(fromDevice, answer->data);
        if (verbose_) logFrame("> broadcast", request.command, data);
        if (verbose_ && request.command == NETCOM_CHECK_MAC_RINGING) std::cerr << "ringing\n";
        std::error_code unreachable;
        socket_.send_to(asio::buffer(buildFrame(request.command, data)), {sender_.address(), replyPort}, 0,
                        unreachable);
        answer->afterwards();
    }
}

}  // namespace zvr::sim
