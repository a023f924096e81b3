#include "connection.h"

#include <sys/socket.h>

#include <iomanip>
#include <iostream>

namespace zvr::sim {

void logFrame(const char* direction, int command, ByteView data) {
    std::cerr << direction << ' ' << command << std::hex << std::setfill('0');
    for (const int byte : data) std::cerr << ' ' << std::setw(2) << byte;
    std::cerr << std::dec << '\n';
}

Connection::Connection(asio::posix::stream_descriptor stream, Device& device, const Options& options, Rules rules)
    : stream_(std::move(stream)),
      timer_(stream_.get_executor()),
      device_(device),
      options_(options),
      rules_(std::move(rules)),
      faults_(options.faults) {
    stream_.non_blocking(true);
}

void Connection::read() {
    stream_.async_read_some(asio::buffer(buffer_),
                            [self = shared_from_this()](std::error_code error, std::size_t count) {
                                if (error) return;
                                if (self->rules_.onArrival) self->rules_.onArrival();
                                self->splitter_.append(ByteView(self->buffer_.data(), count));
                                for (const Packet& request : self->splitter_.split()) {
                                    if (self->rules_.answers) self->answer(request);
                                }
                                self->readOn();
                            });
}

void Connection::readOn() {
    paused_ = isFull() && !rules_.isLine;
    if (!paused_) read();
}

void Connection::answer(const Packet& request) {
    if (options_.verbose) logFrame("<", request.command, request.data);
    if (const auto data = device_.handle(request)) {
        if (rules_.isLine && isFull()) return drop();
        send(request.command, *data);
    } else if (options_.verbose) {
        std::cerr << "! unknown command\n";
    }
}

void Connection::sendUnasked(int command, ByteView data) {
    if (isFull()) return drop();
    send(command, data);
}

void Connection::drop() {
    ++dropped_;
    if (options_.verbose) std::cerr << "! " << dropped_ << " frames dropped\n";
}

void Connection::send(int command, ByteView data) {
    if (silent_) return;
    if (options_.verbose) logFrame(">", command, data);
    const Clock::time_point now = Clock::now();
    for (Piece& piece : faults_->apply(command, buildFrame(command, data))) {
        // Frames leave in the order in which they were made.
        const auto due = std::max(now + piece.after, queue_.empty() ? now : queue_.back().due);
        queue_.push_back({std::move(piece.bytes), due, false});
    }
    if (faults_->cuts()) queue_.push_back({{}, now, true});
    if (!busy_) pump();
}

void Connection::restart(bool hasClient) {
    splitter_ = Splitter();
    faults_.emplace(options_.faults);
    queue_.clear();
    dropped_ = 0;
    silent_ = !hasClient;
    timer_.cancel();
    if (!busy_) pump();
}

// Sends what is due, at once where it is taken.
void Connection::pump() {
    busy_ = false;
    while (!queue_.empty()) {
        Outgoing& next = queue_.front();
        if (next.last) {
            end();
            break;
        }
        if (next.due > Clock::now()) {
            busy_ = true;
            timer_.expires_at(next.due);
            timer_.async_wait([self = shared_from_this()](std::error_code) { self->pump(); });
            return;
        }
        if (!write(next)) return;
        queue_.pop_front();
    }
    if (paused_) readOn();
}

// False if not all of it is taken; then the rest is sent later, or the connection is over.
bool Connection::write(Outgoing& next) {
    std::error_code error;
    const std::size_t count = stream_.write_some(asio::buffer(next.bytes), error);
    if (count == next.bytes.size()) return true;
    if (error && error != asio::error::would_block && error != asio::error::try_again) {
        queue_.clear();
        return false;
    }
    next.bytes.erase(next.bytes.begin(), next.bytes.begin() + static_cast<std::ptrdiff_t>(count));
    busy_ = true;
    stream_.async_wait(asio::posix::stream_descriptor::wait_write, [self = shared_from_this()](std::error_code failed) {
        if (!failed) self->pump();
    });
    return false;
}

void Connection::end() {
    queue_.clear();
    silent_ = true;
    if (rules_.isLine) return;
    ::shutdown(stream_.native_handle(), SHUT_RDWR);
    std::error_code ignored;
    stream_.close(ignored);
}

void Audience::add(const std::shared_ptr<Connection>& connection) {
    std::erase_if(connections_, [](const auto& each) { return each.expired(); });
    connections_.push_back(connection);
}

void Audience::send(int command, ByteView data) {
    for (const auto& each : connections_) {
        if (const auto connection = each.lock()) connection->sendUnasked(command, data);
    }
}

}  // namespace zvr::sim
