// The UART ports, and what is at the other end of each line.
#include <cmath>
#include <ctime>
#include <deque>
#include <numbers>
#include <utility>

#include "device/modules.h"
#include "modules/bus.h"

namespace zvr::sim {

namespace {

using Clock = Scheduler::Clock;

class Partner {
public:
    /// A baud rate of 0 is that of the port; a period, in seconds, is that of its unsolicited bytes.
    explicit Partner(std::uint32_t baudRate = 0, std::optional<double> period = {})
        : baudRate(baudRate), period(period) {}
    virtual ~Partner() = default;

    virtual Bytes answer(ByteView /*bytes*/) { return {}; }
    virtual Bytes talk() { return {}; }

    const std::uint32_t baudRate;
    const std::optional<double> period;
};

// The line leads back.
class Loop : public Partner {
public:
    Bytes answer(ByteView bytes) override { return {bytes.begin(), bytes.end()}; }
};

// Answers a whole line, up to its line feed, with the same.
class Echo : public Partner {
public:
    using Partner::Partner;

    Bytes answer(ByteView bytes) override {
        line_.insert(line_.end(), bytes.begin(), bytes.end());
        const auto end = std::find(line_.rbegin(), line_.rend(), '\n').base();
        Bytes answer(line_.begin(), end);
        line_.erase(line_.begin(), end);
        return answer;
    }

private:
    Bytes line_;
};

// Bytes that count up, without a pause.
class Count : public Partner {
public:
    explicit Count(std::uint32_t baudRate) : Partner(baudRate, 0) {}

    Bytes talk() override {
        Bytes bytes(64);
        for (std::uint8_t& byte : bytes) byte = next_++;
        return bytes;
    }

private:
    std::uint8_t next_ = 0;
};

// A receiver that is carried around a circle, a turn in an hour.
class Gps : public Partner {
public:
    Gps(double rate, std::uint32_t baudRate) : Partner(baudRate, 1 / rate) {}

    Bytes talk() override {
        const auto now = std::chrono::system_clock::now();
        const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
        const auto fraction = now - std::chrono::system_clock::from_time_t(seconds);
        const auto hundredths = std::chrono::floor<std::chrono::duration<int, std::centi>>(fraction).count();
        std::tm utc{};
        gmtime_r(&seconds, &utc);
        constexpr double period = 3600, radius = 0.01;  // degrees
        const double turn = 2 * std::numbers::pi * static_cast<double>(seconds % 3600) / period;
        const double latitude = 48 + radius * std::sin(turn), longitude = 11 + radius * std::cos(turn);

        const std::string time = text("%02d%02d%02d.%02d", utc.tm_hour, utc.tm_min, utc.tm_sec, hundredths);
        const std::string date = text("%02d%02d%02d", utc.tm_mday, utc.tm_mon + 1, utc.tm_year % 100);
        const std::string place = text("%02d%07.4f,N,%03d%07.4f,E", static_cast<int>(latitude), minutes(latitude),
                                       static_cast<int>(longitude), minutes(longitude));
        const std::string both = sentence("GPGGA," + time + "," + place + ",1,08,1.0,520.0,M,47.0,M,,") +
                                 sentence("GPRMC," + time + ",A," + place + ",3.8,090.0," + date + ",,");
        return {both.begin(), both.end()};
    }

private:
    static std::string text(const char* pattern, auto... values) {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), pattern, values...);
        return text.data();
    }
    static double minutes(double degrees) { return std::floor((degrees - std::floor(degrees)) * 60e4) / 1e4; }
    static std::string sentence(const std::string& body) {
        unsigned sum = 0;
        for (const char c : body) sum ^= static_cast<unsigned char>(c);
        return "$" + body + text("*%02X\r\n", sum);
    }
};

std::unique_ptr<Partner> partnerOf(const Peer& peer) {
    switch (peer.kind) {
        case PeerKind::loop: return std::make_unique<Loop>();
        case PeerKind::echo: return std::make_unique<Echo>(peer.number<std::uint32_t>(0));
        case PeerKind::count: return std::make_unique<Count>(peer.number<std::uint32_t>(0));
        case PeerKind::gps: return std::make_unique<Gps>(peer.real(0), peer.number<std::uint32_t>(1));
        default: return std::make_unique<Partner>();
    }
}

class Port {
public:
    Port(Device& device, int number)
        : device_(device), number_(static_cast<std::uint8_t>(number)), alarm_(device.scheduler, [this] { advance(); }) {
        for (const Peer& peer : device.peers.at(Bus::uart, number)) partner_ = partnerOf(peer);
        device.onRoom([this] {
            if (std::exchange(waits_, false)) alarm_.set(Clock::now());
        });
    }
    Port(const Port&) = delete;
    Port& operator=(const Port&) = delete;

    struct Settings {
        std::uint32_t baudRate = 9600;
        std::uint8_t dataSize = 0;  ///< 0 is 8 bits, 1 is 7
        std::uint8_t parity = 0;    ///< 0 is none
        std::uint8_t stopBits = 0;  ///< 1, 0.5, 2 and 1.5
    };

    void clear() {
        stop();
        settings = {};
    }
    void stop() {
        reading_ = waits_ = false;
        arriving_.clear();
        alarm_.cancel();
    }
    void start() {
        if (std::exchange(reading_, true)) return;
        free_ = nextTalk_ = Clock::now();
        advance();
    }

    /// False while too many bytes are under way.
    bool write(ByteView bytes) {
        if (arriving_.size() > mostUnderWay) return false;
        arrive(partner_->answer(seen(bytes)));
        advance();
        return true;
    }

    Settings settings;

private:
    static constexpr std::size_t mostOfFrame = 240, mostInTurn = 1 << 16, mostUnderWay = 4096;
    static constexpr std::chrono::milliseconds frameTime{5};

    bool fast() const { return device_.signals.fast && partner_->period == 0; }

    Clock::duration byteTime() const {
        constexpr std::array<double, 4> stops = {1, 0.5, 2, 1.5};
        const double bits = 1 + (settings.dataSize == 0 ? 8 : 7) + (settings.parity != 0) + stops[settings.stopBits];
        return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(bits / settings.baudRate));
    }

    // The bytes that one end receives from the other: garbled at another speed.
    Bytes seen(ByteView bytes) const {
        const bool sameSpeed = partner_->baudRate == 0 || partner_->baudRate == settings.baudRate;
        Bytes result(bytes.begin(), bytes.end());
        for (std::uint8_t& byte : result) {
            if (!sameSpeed) byte = static_cast<std::uint8_t>(~byte);
            if (settings.dataSize != 0) byte &= 0x7F;
        }
        return result;
    }

    // Bytes arrive one after another. They are lost while reading is off.
    void arrive(const Bytes& bytes) {
        if (!reading_) return;
        const Clock::duration each = fast() ? Clock::duration::zero() : byteTime();
        free_ = std::max(free_, Clock::now());
        for (const std::uint8_t byte : seen(bytes)) arriving_.emplace_back(free_ += each, byte);
    }

    void advance() {
        if (!reading_) return;
        const Clock::time_point now = Clock::now();
        for (std::size_t sent = 0; sent < mostInTurn;) {
            if (fast() && !device_.hasRoom()) {
                waits_ = true;
                return;
            }
            if (partner_->period && (fast() || nextTalk_ <= now)) {
                arrive(partner_->talk());
                const auto period = std::chrono::duration<double>(*partner_->period);
                nextTalk_ = std::max(nextTalk_ + std::chrono::duration_cast<Clock::duration>(period), free_);
            }
            const std::size_t count = sendFrame(now);
            if (count == 0) break;
            sent += count;
        }
        Clock::time_point next = partner_->period ? nextTalk_ : Clock::time_point::max();
        if (!arriving_.empty()) next = std::min({next, arriving_.back().first, arriving_.front().first + frameTime});
        if (next != Clock::time_point::max()) alarm_.set(next);
    }

    // The number of bytes in it; without any there is none.
    std::size_t sendFrame(Clock::time_point now) {
        Bytes data{number_, 0};
        for (; !arriving_.empty() && (fast() || arriving_.front().first <= now) && data.size() < mostOfFrame;) {
            data.push_back(arriving_.front().second);
            arriving_.pop_front();
        }
        data[1] = static_cast<std::uint8_t>(data.size() - 2);
        if (data[1] != 0) device_.stream(START_UART_READING, data);
        return data[1];
    }

    Device& device_;
    const std::uint8_t number_;
    Alarm alarm_;
    std::unique_ptr<Partner> partner_ = std::make_unique<Partner>();
    bool reading_ = false, waits_ = false;  // for room
    std::deque<std::pair<Clock::time_point, std::uint8_t>> arriving_;
    Clock::time_point free_{};  // the line, from the partner's side
    Clock::time_point nextTalk_{};
};

}  // namespace

void addUart(Device& device) {
    constexpr std::uint32_t highestRate = 400000;
    constexpr std::size_t mostToWrite = 50;
    const BusPorts<Port> ports(device, Bus::uart, PinMode::uart, Status::uart);
    ports.onOpenAndClose(OPEN_UART, CLOSE_UART);
    ports.onOrder(START_UART_READING, &Port::start);
    ports.onChange(STOP_UART_READING, &Port::stop);
    ports.onChange(RESET_UART, &Port::clear);
    ports.onChange(SET_UART_BAUD_RATE, [](Port& port, Request r) {
        const auto rate = r.last<std::uint32_t>();
        if (rate == 0 || rate > highestRate) return false;
        port.settings.baudRate = rate;
        return true;
    });
    const auto addMode = [&](Command command, std::uint8_t Port::Settings::*setting, std::uint8_t last) {
        ports.onChange(command, [setting, last](Port& port, Request r) {
            const std::uint8_t mode = r.u8();
            if (mode <= last) port.settings.*setting = mode;
            return mode <= last;
        });
    };
    addMode(SET_UART_DATA_SIZE, &Port::Settings::dataSize, 1);
    addMode(SET_UART_PARITY, &Port::Settings::parity, 3);
    addMode(SET_UART_NUM_STOP_BITS, &Port::Settings::stopBits, 3);
    ports.onChange(WRITE_UART, [](Port& port, Request r) {
        const ByteView bytes = r.lastCounted();
        return bytes.size() <= mostToWrite && port.write(bytes);
    });
}

}  // namespace zvr::sim
