#include "transport/client.h"

#include <asio/error.hpp>
#include <system_error>

namespace zvr {

std::optional<ReadStatus> PacketSource::receiveFor(const Wake* /*wake*/, Deadline /*until*/, std::size_t /*length*/,
                                                   std::vector<Packet>& /*packets*/) {
    return std::nullopt;
}

bool PacketSource::watchOnce(int /*epoll*/) const { return false; }

namespace {

constexpr FailureId lost = FailureId::NetworkConnectionLostError;

}  // namespace

LinkLoss::LinkLoss(FailureId link, std::optional<std::error_code> why)
    : Failure(link == lost ? Failure(lost) : Failure(lost, "The connection to the device is lost.")) {
    if (why && *why != asio::error::eof && *why != std::errc::not_connected) why_ = why;
}

void LossListeners::add(const std::shared_ptr<LossListener>& listener, bool isLost) {
    decltype(unreported_) unreported;
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(listeners_, [&](const auto& each) { return each.expired() || each.lock() == listener; });
        listeners_.push_back(listener);
        unreported.swap(unreported_);
    }
    if (unreported) tell(unreported->first, isLost ? Clock::now() : unreported->second);
}

void LossListeners::remove(const LossListener& listener) {
    const std::lock_guard lock(mutex_);
    std::erase_if(listeners_, [&](const auto& each) { return each.expired() || each.lock().get() == &listener; });
}

void LossListeners::tell(const LinkLoss& reason, Deadline when) {
    std::vector<std::weak_ptr<LossListener>> notified;
    {
        const std::lock_guard lock(mutex_);
        notified = listeners_;
        if (notified.empty()) unreported_.emplace(reason, when);
    }
    for (const auto& each : notified) {
        try {
            if (const auto listener = each.lock()) listener->onLoss(reason, when);
        } catch (const std::exception&) {
            // No thread could be started to report it.
        }
    }
}

void PacketSource::tellChanges(const std::shared_ptr<Gate>& gate) {
    const std::lock_guard lock(listening_);
    std::erase_if(gates_, [&](const std::weak_ptr<Gate>& each) { return each.expired() || each.lock() == gate; });
    gates_.push_back(gate);
}

void PacketSource::changed() noexcept {
    std::vector<std::shared_ptr<Gate>> notified;  // destroyed without the lock: a gate's owner may go with it
    {
        const std::lock_guard lock(listening_);
        for (const std::weak_ptr<Gate>& each : gates_) notified.push_back(each.lock());
    }
    for (const auto& gate : notified) {
        if (gate) gate->wake();
    }
}

void PacketSource::replaceSteps() noexcept {
    ++steps_;
    changed();
    interrupt();
}

ReadStatus Client::receiveAs(Reader /*reader*/, std::size_t length, std::vector<Packet>& packets,
                             const InterruptCheck& onWait) {
    requireOwn();
    Bytes buffer(length);
    const ReadStatus reading = read(buffer, onWait);
    if (reading == ReadStatus::data) packets = splitter.take(buffer);
    return reading;
}

std::string Client::place() const {
    const std::lock_guard lock(placing_);
    return place_;
}

void Client::setPlace(std::string place) {
    const std::lock_guard lock(placing_);
    place_ = std::move(place);
}

bool Client::sendRequest(ByteView bytes, Deadline deadline, const InterruptCheck& onWait) {
    const auto requireLink = [this] {
        const auto why = loss();
        if (why == std::errc::not_connected) throw Failure(failure(), notConnected);
        if (why) throw lossFailure();
    };
    requireLink();
    tellSending(bytes);
    try {
        return send(bytes, deadline, onWait);
    } catch (const std::system_error&) {
        requireLink();
        throw;
    }
}

ReadStatus BareClient::read(Bytes& /*buffer*/, const InterruptCheck& /*onWait*/) {
    throw std::system_error(std::make_error_code(std::errc::not_connected));
}

bool BareClient::send(ByteView /*bytes*/, Deadline /*deadline*/, const InterruptCheck& /*onWait*/) {
    throw std::system_error(std::make_error_code(std::errc::not_connected));
}

}  // namespace zvr
