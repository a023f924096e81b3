#include "links/server.h"

#include <utility>

namespace zvr::sim {

namespace {

using asio::ip::tcp;

tcp::acceptor listening(asio::io_context& context, const std::string& host, int port) {
    try {
        return {context, tcp::endpoint(asio::ip::make_address_v4(host), static_cast<std::uint16_t>(port))};
    } catch (const std::system_error& failure) {
        throw std::system_error(failure.code(), "cannot listen on " + host + ":" + std::to_string(port));
    }
}

}  // namespace

Acceptor::Acceptor(asio::io_context& context, const std::string& host, int port,
                   std::function<void(tcp::socket)> onClient)
    : acceptor_(listening(context, host, port)), retry_(context), onClient_(std::move(onClient)) {
    accept();
}

void Acceptor::accept() {
    acceptor_.async_accept([this](std::error_code error, tcp::socket socket) {
        if (error == asio::error::operation_aborted) return;
        if (!error) {
            onClient_(std::move(socket));
            accept();
            return;
        }
        // Without free descriptors accepting the same connection would fail repeatedly.
        retry_.expires_after(retryAfter);
        retry_.async_wait([this](std::error_code stopped) {
            if (!stopped) accept();
        });
    });
}

void Acceptor::acceptWaiting() {
    acceptor_.non_blocking(true);
    while (true) {
        std::error_code none;
        tcp::socket socket = acceptor_.accept(none);
        if (none) return;
        onClient_(std::move(socket));
    }
}

Server::Server(asio::io_context& context, Device& device, const Options& options)
    : device_(device),
      options_(options),
      commands_(context, options.host, options.port, [this](tcp::socket socket) { serve(std::move(socket), true); }) {
    if (device.model().link == Link::wifi) {
        data_.emplace(context, options.host, options.dataPort,
                      [this](tcp::socket socket) { serve(std::move(socket), false); });
    }
    device.sink.provide(subscribers_);
}

Server::~Server() { device_.sink.withdraw(); }

void Server::serve(tcp::socket socket, bool answers) {
    std::error_code alreadyGone;  // the first read then reports it
    socket.set_option(tcp::no_delay(true), alreadyGone);
    asio::posix::stream_descriptor stream(socket.get_executor(), socket.release());
    const auto connection = std::make_shared<Connection>(
        std::move(stream), device_, options_,
        Connection::Rules{
            .answers = answers, .isLine = false, .onArrival = {}, .onRoom = [this] { device_.tellRoom(); }});
    std::erase_if(connections_, [](const auto& each) { return each.expired(); });
    connections_.push_back(connection);
    if (answers != data_.has_value()) subscribers_->add(connection);
    connection->read();
    device_.tellRoom();
}

void Server::cut() {
    commands_.acceptWaiting();
    if (data_) data_->acceptWaiting();
    for (const auto& each : std::exchange(connections_, {})) {
        if (const auto connection = each.lock()) connection->end();
    }
}

std::string Server::description() const {
    std::string text = R"("host": ")" + options_.host + R"(", "command_port": )" + std::to_string(commands_.port());
    if (data_) text += R"(, "data_port": )" + std::to_string(data_->port());
    return text;
}

}  // namespace zvr::sim
