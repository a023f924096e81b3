#include "links/connection.h"

#include <sys/socket.h>

#include <iomanip>
#include <iostream>
#include <span>
#include <utility>

namespace zvr::sim {

void logFrame(const char* direction, int command, ByteView data) {
    std::cerr << direction << ' ' << command << std::hex << std::setfill('0');
    for (const int byte : data) std::cerr << ' ' << std::setw(2) << byte;
    std::cerr << std::dec << '\n';
}

void logFrame(const char* direction, int command, const Frame& frame) {
    constexpr std::size_t trailer = 2;
    const std::size_t header = command < 256 ? 4 : 5;
    logFrame(direction, command, ByteView(*frame).subspan(header, frame->size() - header - trailer));
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
                                for (Packet& request : self->splitter_.split()) {
                                    if (self->rules_.answers) self->answer(Device::meant(std::move(request)));
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
        send(request.command, std::make_shared<const Bytes>(Device::replyFrame(request.command, *data)));
        if (!busy_) pump();
    } else if (options_.verbose && !device_.knows(request.command)) {
        std::cerr << "! unknown command\n";
    }
}

bool Connection::sendUnsolicited(int command, const Frame& frame) {
    if (isFull()) {
        drop();
        return false;
    }
    send(command, frame);
    if (!busy_) {  // frames made together are sent together
        busy_ = true;
        asio::post(stream_.get_executor(), [self = shared_from_this()] { self->pump(); });
    }
    return true;
}

void Connection::drop() {
    ++dropped_;
    if (options_.verbose) std::cerr << "! " << dropped_ << " frames dropped\n";
}

void Connection::send(int command, const Frame& frame) {
    if (silent_ || broken_) return;
    if (options_.verbose) logFrame(">", command, frame);
    const Clock::time_point now = Clock::now();
    // Frames are sent in the order in which they were made.
    const auto enqueue = [&](Frame bytes, Clock::time_point due) {
        queue_.push_back({std::move(bytes), std::max(due, queue_.empty() ? now : queue_.back().due), false});
    };
    if (!faults_->concern(command)) {
        enqueue(frame, now);
    } else {
        for (Piece& piece : faults_->apply(command, *frame)) {
            enqueue(std::make_shared<const Bytes>(std::move(piece.bytes)), now + piece.after);
        }
        if (faults_->cuts()) queue_.push_back({{}, now, true});
    }
}

void Connection::restart(bool hasClient) {
    splitter_ = Splitter();
    faults_.emplace(options_.faults);
    queue_.clear();
    written_ = 0;
    dropped_ = 0;
    silent_ = !hasClient;
    timer_.cancel();
    if (!busy_) pump();
}

// Sends what is due, immediately if there is room.
void Connection::pump() {
    const bool waited = std::exchange(busy_, false);
    while (!queue_.empty()) {
        const Outgoing& next = queue_.front();
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
        if (!write()) return;
    }
    if (paused_) readOn();
    if (waited && rules_.onRoom) rules_.onRoom();
}

// Writes what is due at the head of the queue. False if not all was accepted; then the rest is sent later, or the
// connection has ended.
bool Connection::write() {
    std::array<asio::const_buffer, fewWaiting> buffers;
    std::size_t count = 0, size = 0;
    const Clock::time_point now = Clock::now();
    for (; count < std::min(buffers.size(), queue_.size()); ++count) {
        const Outgoing& next = queue_[count];
        if (next.last || next.due > now) break;
        buffers[count] = asio::buffer(*next.bytes) + (count == 0 ? written_ : 0);
        size += buffers[count].size();
    }
    std::error_code error;
    std::size_t taken = stream_.write_some(std::span(buffers).first(count), error);
    const bool all = taken == size;
    if (!all && error && error != asio::error::would_block && error != asio::error::try_again) {
        giveUp();
        return false;
    }
    for (taken += written_; !queue_.empty() && !queue_.front().last && taken >= queue_.front().bytes->size();) {
        taken -= queue_.front().bytes->size();
        queue_.pop_front();
    }
    written_ = taken;
    if (all) return true;
    busy_ = true;
    stream_.async_wait(asio::posix::stream_descriptor::wait_write, [self = shared_from_this()](std::error_code failed) {
        if (failed) {
            self->giveUp();
        } else {
            self->pump();
        }
    });
    return false;
}

// A vanished client does not hold the others back.
void Connection::giveUp() {
    broken_ = !rules_.isLine;
    queue_.clear();
    written_ = 0;
    if (rules_.onRoom) rules_.onRoom();
}

void Connection::end() {
    queue_.clear();
    written_ = 0;
    silent_ = true;
    if (rules_.isLine) return;
    ::shutdown(stream_.native_handle(), SHUT_RDWR);
    std::error_code ignored;
    stream_.close(ignored);
}

void Subscribers::add(const std::shared_ptr<Connection>& connection) {
    std::erase_if(connections_, [](const auto& each) { return each.expired(); });
    connections_.push_back(connection);
}

bool Subscribers::sendUnsolicited(int command, const Frame& frame) {
    bool all = true;
    for (const auto& each : connections_) {
        if (const auto connection = each.lock()) all = connection->sendUnsolicited(command, frame) && all;
    }
    return all;
}

bool Subscribers::hasRoom() const {
    bool any = false;
    for (const auto& each : connections_) {
        const auto connection = each.lock();
        if (connection && !connection->hasRoom()) return false;
        any = any || connection;
    }
    return any;
}

}  // namespace zvr::sim
