#include "server.h"

#include <deque>
#include <iomanip>
#include <iostream>

#include "core/splitter.h"

namespace zvr::sim {

namespace {

using asio::ip::tcp;
using Clock = std::chrono::steady_clock;

void log(const char* direction, int command, ByteView data) {
    std::cerr << direction << ' ' << command << std::hex << std::setfill('0');
    for (const int byte : data) std::cerr << ' ' << std::setw(2) << byte;
    std::cerr << std::dec << '\n';
}

// One connection. It lives as long as one of its operations is under way.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(tcp::socket socket, Device& device, const Options& options)
        : socket_(std::move(socket)),
          timer_(socket_.get_executor()),
          device_(device),
          verbose_(options.verbose),
          faults_(options.faults) {
        std::error_code alreadyGone;  // then the first read tells
        socket_.set_option(tcp::no_delay(true), alreadyGone);
        socket_.non_blocking(true);
    }

    void read() {
        socket_.async_read_some(asio::buffer(buffer_),
                                [self = shared_from_this()](std::error_code error, std::size_t count) {
                                    if (error) return;
                                    self->splitter_.append(ByteView(self->buffer_.data(), count));
                                    for (const Packet& request : self->splitter_.split()) self->answer(request);
                                    self->readOn();
                                });
    }

private:
    // A client that takes no replies is not read from, so that what waits for it stays bounded.
    static constexpr std::size_t mostWaiting = 4096;

    struct Outgoing {
        Bytes bytes;
        Clock::time_point due;
        bool last;
    };

    void readOn() {
        paused_ = queue_.size() >= mostWaiting;
        if (!paused_) read();
    }

    void answer(const Packet& request) {
        if (verbose_) log("<", request.command, request.data);
        const auto data = device_.handle(request);
        if (!data) {
            if (verbose_) std::cerr << "! unknown command\n";
            return;
        }
        if (verbose_) log(">", request.command, *data);
        Bytes frame = buildFrame(request.command, *data);
        const Clock::time_point now = Clock::now();
        for (Piece& piece : faults_.apply(request.command, std::move(frame))) {
            // Replies leave in the order in which they were made.
            const auto due = std::max(now + piece.after, queue_.empty() ? now : queue_.back().due);
            queue_.push_back({std::move(piece.bytes), due, false});
        }
        if (faults_.cuts()) queue_.push_back({{}, now, true});
        if (!busy_) pump();
    }

    // Sends what is due, at once where the socket takes it.
    void pump() {
        busy_ = false;
        while (!queue_.empty()) {
            Outgoing& next = queue_.front();
            if (next.last) {
                std::error_code ignored;
                socket_.shutdown(tcp::socket::shutdown_both, ignored);
                socket_.close(ignored);
                queue_.clear();
                return;
            }
            if (next.due > Clock::now()) {
                busy_ = true;
                timer_.expires_at(next.due);
                timer_.async_wait([self = shared_from_this()](std::error_code) { self->pump(); });
                return;
            }
            std::error_code error;
            const std::size_t count = socket_.write_some(asio::buffer(next.bytes), error);
            if (count == next.bytes.size()) {
                queue_.pop_front();
                continue;
            }
            if (error && error != asio::error::would_block && error != asio::error::try_again) {
                queue_.clear();
                return;
            }
            next.bytes.erase(next.bytes.begin(), next.bytes.begin() + static_cast<std::ptrdiff_t>(count));
            busy_ = true;
            socket_.async_wait(tcp::socket::wait_write, [self = shared_from_this()](std::error_code failed) {
                if (!failed) self->pump();
            });
            return;
        }
        if (paused_) readOn();
    }

    tcp::socket socket_;
    asio::steady_timer timer_;
    Device& device_;
    const bool verbose_;
    Faults faults_;
    Splitter splitter_;
    std::array<std::uint8_t, 4096> buffer_{};
    std::deque<Outgoing> queue_;
    bool busy_ = false;
    bool paused_ = false;
};

}  // namespace

Server::Server(asio::io_context& context, Device& device, const Options& options)
    : device_(device),
      options_(options),
      acceptor_(context,
                tcp::endpoint(asio::ip::make_address_v4(options.host), static_cast<std::uint16_t>(options.port))),
      retry_(context) {
    accept();
}

void Server::accept() {
    acceptor_.async_accept([this](std::error_code error, tcp::socket socket) {
        if (error == asio::error::operation_aborted) return;
        if (!error) {
            std::make_shared<Connection>(std::move(socket), device_, options_)->read();
            accept();
            return;
        }
        // With no descriptor left the same connection would be refused again and again.
        retry_.expires_after(retryAfter);
        retry_.async_wait([this](std::error_code stopped) {
            if (!stopped) accept();
        });
    });
}

}  // namespace zvr::sim
