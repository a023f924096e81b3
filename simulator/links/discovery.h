// Discovery: broadcast requests that every device on a network receives.
#pragma once

#include <asio.hpp>

#include "device/device.h"

namespace zvr::sim {

class Discovery {
public:
    /// Listens at once; throws std::system_error.
    Discovery(asio::io_context& context, Device& device, bool verbose);

private:
    void receive();
    void answer(ByteView datagram);

    static constexpr std::size_t longestRequest = 512;

    Device& device_;
    const bool verbose_;
    asio::ip::udp::socket socket_;
    asio::ip::udp::endpoint sender_;
    std::array<std::uint8_t, longestRequest> buffer_{};
};

}  // namespace zvr::sim
