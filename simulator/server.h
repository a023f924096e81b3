// The simulator's TCP side: any number of connections to one device, on one thread.
#pragma once

#include <asio.hpp>

#include "device.h"
#include "faults.h"
#include "options.h"

namespace zvr::sim {

class Server {
public:
    /// Listens at once; throws std::system_error.
    Server(asio::io_context& context, Device& device, const Options& options);

    int port() const { return acceptor_.local_endpoint().port(); }

private:
    void accept();

    static constexpr std::chrono::milliseconds retryAfter{100};

    Device& device_;
    const Options& options_;
    asio::ip::tcp::acceptor acceptor_;
    asio::steady_timer retry_;
};

}  // namespace zvr::sim
