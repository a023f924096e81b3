// The simulator's TCP side: any number of connections to one device, on one thread.
#pragma once

#include "links/connection.h"

namespace zvr::sim {

/// Accepts TCP clients on one port.
class Acceptor {
public:
    /// Listens at once; throws std::system_error.
    Acceptor(asio::io_context& context, const std::string& host, int port,
             std::function<void(asio::ip::tcp::socket)> onClient);

    int port() const { return acceptor_.local_endpoint().port(); }
    /// Accepts the waiting clients.
    void acceptWaiting();

private:
    void accept();

    static constexpr std::chrono::milliseconds retryAfter{100};

    asio::ip::tcp::acceptor acceptor_;
    asio::steady_timer retry_;
    std::function<void(asio::ip::tcp::socket)> onClient_;
};

/// The command port; on Wi-Fi models also the data port, which sends the unsolicited frames.
class Server {
public:
    /// Listens at once; throws std::system_error.
    Server(asio::io_context& context, Device& device, const Options& options);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    /// Its address, as members of a JSON object.
    std::string description() const;
    /// Ends all connections.
    void cut();

private:
    void serve(asio::ip::tcp::socket socket, bool answers);

    Device& device_;
    const Options& options_;
    const std::shared_ptr<Subscribers> subscribers_ = std::make_shared<Subscribers>();
    std::vector<std::weak_ptr<Connection>> connections_;
    Acceptor commands_;
    std::optional<Acceptor> data_;
};

}  // namespace zvr::sim
