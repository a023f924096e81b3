// The CAN ports, and the other nodes on their buses.
#include <bitset>
#include <utility>

#include "device/modules.h"
#include "modules/bus.h"

namespace zvr::sim {

namespace {

using Clock = Scheduler::Clock;

// The identifier as it travels: its upper 11 bits, the marks of remote and extended frames, and its lower 18 bits.
constexpr std::uint32_t remoteMark = 1U << 20, extendedMark = 1U << 19, highBits = 0x7FFU << 21, lowBits = 0x3FFFF;
constexpr std::size_t dataSize = 8, recordSize = 4 + dataSize;

struct Record {
    std::uint32_t word;
    std::array<std::uint8_t, dataSize> data{};

    bool remote() const { return (word & remoteMark) != 0; }
};

// The last item of a request.
Record recordOf(Request& request) {
    if (request.left() != recordSize) throw WrongLength(recordSize, request.left());
    Record record{request.u32()};
    std::ranges::copy(request.rest(), record.data.begin());
    return record;
}

// An identifier above 11 bits makes an extended frame.
std::uint32_t wordOf(std::uint32_t id, bool extended) {
    return extended ? (id << 3 & highBits) | extendedMark | (id & lowBits) : id << 21;
}

std::uint32_t next(std::uint32_t word) {
    const bool extended = (word & extendedMark) != 0;
    const std::uint32_t id = extended ? (word & highBits) >> 3 | (word & lowBits) : word >> 21;
    return wordOf((id + 1) & (extended ? 0x1FFFFFFF : 0x7FF), extended);
}

// Sends unsolicited frames, with their number and the time since the start in microseconds.
struct Talker {
    double rate;
    std::uint32_t word;
    int speed;  ///< or -1, that of the port
    std::uint64_t made = 0;

    std::chrono::nanoseconds due(double bitRate) const {
        const double bits = (word & extendedMark) != 0 ? 131 : 111;  // of a frame that needs no stuffing
        return std::chrono::nanoseconds(
            static_cast<std::int64_t>(static_cast<double>(made) * 1e9 / std::min(rate, bitRate / bits)));
    }
    Record make(std::chrono::nanoseconds time) {
        Record record{word};
        std::ranges::copy(reply(static_cast<std::uint32_t>(made++), static_cast<std::uint32_t>(time.count() / 1000)),
                          record.data.begin());
        return record;
    }
};

// Errors that were counted, as every node does it: beyond 127 it is passive, beyond 255 off the bus.
struct Errors {
    static constexpr int warning = 96, passive = 128, off = 256;
    int sent = 0, received = 0;

    bool isOff() const { return sent >= off; }
    std::uint8_t state() const {
        const std::array<bool, 6> bits = {std::max(sent, received) >= warning,
                                          received >= warning,
                                          sent >= warning,
                                          received >= passive,
                                          sent >= passive,
                                          isOff()};
        unsigned state = 0;
        for (std::size_t i = 0; i < bits.size(); ++i) state |= unsigned{bits[i]} << i;
        return static_cast<std::uint8_t>(state);
    }
};

struct Counters {
    std::uint32_t sent = 0, received = 0, filtered = 0, lost = 0, failed = 0, errors = 0;
};

enum Interrupt : std::uint8_t { hasReceived = 1, hasSent = 4, errorState = 32, messageError = 128 };

class Port {
public:
    static constexpr std::size_t filterCount = 6, maskCount = 2;

    Port(Device& device, int number)
        : device_(device), number_(static_cast<std::uint8_t>(number)), alarm_(device.scheduler, [this] { advance(); }) {
        for (const Peer& peer : device.peers.at(Bus::can, number)) {
            if (peer.kind == PeerKind::cyclic) {
                const auto id = peer.number<std::uint32_t>(1);
                talkers_.push_back({peer.real(0), wordOf(id, id > 0x7FF), peer.number(2)});
            } else if (peer.kind == PeerKind::responder) {
                responders_.push_back(peer.number(0));
            }
        }
        device.onRoom([this] {
            if (std::exchange(waits_, false)) alarm_.set(Clock::now());
        });
    }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    struct Settings {
        std::uint8_t speed = 0;
        bool interrupts = false, filtering = false;
        std::array<std::uint32_t, filterCount + maskCount> words{
            0, 0, 0, 0, 0, 0, highBits | lowBits, highBits | lowBits};
        std::bitset<filterCount> filters;  ///< that have been set
    };

    void clear() {
        stop();
        settings = {};
        errors = {};
        counters = {};
        interrupts = 0;
    }
    bool isStarted() const { return started_; }
    void stop() {
        flush();
        started_ = waits_ = false;
        alarm_.cancel();
    }
    // Resets the error counters, so that it returns to the bus.
    void start() {
        if (std::exchange(started_, true)) return;
        errors = {};
        start_ = Clock::now();
        for (Talker& talker : talkers_) talker.made = 0;
        advance();
    }

    /// Whether another node has acknowledged it.
    bool write(const Record& record) {
        if (!started_ || errors.isOff()) return false;
        const auto speeds = nodeSpeeds();
        const bool disturbed = std::ranges::any_of(speeds, [&](int speed) { return !isOwn(speed); });
        if (disturbed || speeds.empty()) {
            // Without an acknowledgement alone no node goes off the bus.
            if (disturbed || errors.sent < Errors::passive) count(errors.sent, 8);
            ++counters.failed;
            return false;
        }
        errors.sent = std::max(0, errors.sent - 1);
        ++counters.sent;
        interrupts |= hasSent;
        for (std::size_t i = 0; i < responders_.size(); ++i) {
            arrive(record.remote() ? Record{record.word & ~remoteMark, {answers_++}}
                                   : Record{next(record.word), record.data});
        }
        flush();
        return true;
    }

    Settings settings;
    Errors errors;
    Counters counters;
    std::uint8_t interrupts = 0;

private:
    static constexpr std::size_t mostOfFrame = 255, mostInTurn = 1 << 14;
    static constexpr std::chrono::milliseconds frameTime{5};

    double bitRate() const { return std::array<double, 4>{125e3, 250e3, 500e3, 1e6}[settings.speed]; }
    bool isOwn(int speed) const { return speed < 0 || speed == settings.speed; }

    std::vector<int> nodeSpeeds() const {
        std::vector<int> speeds = responders_;
        for (const Talker& talker : talkers_) speeds.push_back(talker.speed);
        return speeds;
    }

    void count(int& errorsOfKind, int more) {
        const std::uint8_t before = errors.state();
        errorsOfKind += more;
        interrupts |= messageError;
        if (errors.state() != before) interrupts |= errorState;
    }

    bool passes(std::uint32_t word) const {
        if (!settings.filtering) return true;
        for (std::size_t i = 0; i < filterCount; ++i) {
            const std::uint32_t mask = settings.words[filterCount + (i < 2 ? 0 : 1)] | extendedMark;
            if (settings.filters[i] && ((word ^ settings.words[i]) & mask) == 0) return true;
        }
        return false;
    }

    void arrive(const Record& record) {
        errors.received = std::max(0, errors.received - 1);
        if (!passes(record.word)) {
            ++counters.filtered;
            return;
        }
        ++counters.received;
        interrupts |= hasReceived;
        if (records_.empty()) records_ = {number_, 0};
        appendBigEndian(records_, record.word);
        records_.insert(records_.end(), record.data.begin(), record.data.end());
        if (++records_[1] == mostOfFrame) flush();
    }

    void flush() {
        if (records_.empty()) return;
        if (!device_.stream(START_CAN, records_)) counters.lost += records_[1];
        records_.clear();
    }

    void advance() {
        const bool fast = device_.signals.fast;
        const Clock::time_point now = Clock::now();
        const auto earlier = [&](const Talker& a, const Talker& b) { return a.due(bitRate()) < b.due(bitRate()); };
        for (std::size_t made = 0; started_ && !talkers_.empty() && !errors.isOff(); ++made) {
            Talker& talker = *std::ranges::min_element(talkers_, earlier);
            const Clock::time_point due = start_ + talker.due(bitRate());
            waits_ = fast && records_.empty() && !device_.hasRoom();
            if (waits_) return;
            if ((!fast && due > now) || made == mostInTurn) {
                alarm_.set(fast ? now : std::max(due, now + frameTime));
                break;
            }
            const Record record = talker.make(due - start_);
            if (isOwn(talker.speed)) {
                arrive(record);
            } else {
                if (errors.received < Errors::passive) count(errors.received, 1);
                ++counters.errors;
            }
        }
        flush();
    }

    Device& device_;
    const std::uint8_t number_;
    Alarm alarm_;
    std::vector<Talker> talkers_;
    std::vector<int> responders_;           // their speeds
    std::uint8_t answers_ = 0;              // to remote frames
    bool started_ = false, waits_ = false;  // for room
    Clock::time_point start_{};
    Bytes records_;  // of the next frame, behind port and number
};

void addSettings(const PortCommands<Port>& ports) {
    // The speed is that of a port at rest.
    ports.onChange(SET_CAN_SPEED, [](Port& port, Request r) {
        const std::uint8_t speed = r.u8();
        if (speed > 3 || port.isStarted()) return false;
        port.settings.speed = speed;
        return true;
    });
    const auto addSwitch = [&](Command command, bool Port::Settings::*setting) {
        ports.onChange(command, [setting](Port& port, Request r) { port.settings.*setting = r.u8() != 0; });
    };
    addSwitch(SET_CAN_ENABLED_ITR, &Port::Settings::interrupts);
    addSwitch(SET_CAN_RX_FILTERING_ON, &Port::Settings::filtering);
    ports.onChange(SET_CAN_RX_FILTER_OR_MASK, [](Port& port, Request r) {
        const std::size_t index = r.u8();
        const Record record = recordOf(r);
        if (index >= port.settings.words.size()) return false;
        port.settings.words[index] = record.word;
        if (index < Port::filterCount) port.settings.filters.set(index);
        return true;
    });
    // These are for the buffers of the controller, of which nothing is seen here.
    ports.onChange(SET_CAN_RX_ROLLOVER, [](Port&, Request r) { return r.u8() <= 1; });
    ports.onChange(SET_CAN_TX_PRIORITY, [](Port&, Request r) {
        const std::uint8_t buffer = r.u8(), priority = r.u8();
        return buffer <= 2 && priority <= 3;
    });
}

void addState(const PortCommands<Port>& ports) {
    ports.onRead(GET_CAN_INTERRUPTS, 3, [](Port& port) {
        const std::uint8_t seen = port.settings.interrupts ? port.interrupts : 0;
        port.interrupts = 0;
        return Bytes{port.settings.interrupts, seen, port.errors.state()};
    });
    ports.onRead(GET_CAN_ERRORS, 2, [](Port& port) {
        const auto byteOfCount = [](int count) { return static_cast<std::uint8_t>(std::min(count, 255)); };
        return Bytes{byteOfCount(port.errors.sent), byteOfCount(port.errors.received)};
    });
    ports.onRead(GET_CAN_COUNTERS, sizeof(Counters), [](Port& port) {
        const Counters& of = port.counters;
        return reply(of.sent, of.received, of.filtered, of.lost, of.failed, of.errors);
    });
}

}  // namespace

void addCan(Device& device) {
    const BusPorts<Port> ports(device, Bus::can, PinMode::can, Status::can);
    ports.onOpenAndClose(OPEN_CAN, CLOSE_CAN);
    ports.onOrder(START_CAN, &Port::start);
    ports.onChange(STOP_CAN, &Port::stop);
    ports.onChange(WRITE_CAN, [](Port& port, Request r) {
        const std::uint8_t buffer = r.u8();
        const Record record = recordOf(r);
        return buffer <= 2 && port.write(record);
    });
    addSettings(ports.anyState());
    addState(ports.anyState());
}

}  // namespace zvr::sim
