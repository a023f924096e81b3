// The SPI buses, and the chips on them. Each transfer selects the chip for its length.
#include "device/modules.h"
#include "modules/bus.h"

namespace zvr::sim {

namespace {

class Chip {
public:
    virtual ~Chip() = default;

    /// The bytes read back; the chip is selected during the transfer.
    virtual Bytes transfer(ByteView bytes) = 0;
    virtual bool follows(bool /*polarity*/, bool /*phase*/) const { return true; }
};

// Loopback.
class Loop : public Chip {
public:
    Bytes transfer(ByteView bytes) override { return {bytes.begin(), bytes.end()}; }
};

// A megabyte in pages of 256 bytes and sectors of 4096. While busy it only answers status reads.
class Flash : public Chip {
public:
    bool follows(bool polarity, bool phase) const override { return polarity == phase; }

    Bytes transfer(ByteView bytes) override {
        Bytes answer(bytes.size(), 0xFF);
        if (bytes.empty()) return answer;
        const auto fill = [&](std::size_t from, auto next) {
            for (std::size_t i = from; i < answer.size(); ++i) answer[i] = next(i - from);
        };
        const bool busy = Clock::now() < busyUntil_;
        if (bytes[0] == readStatus) {
            fill(1, [&](std::size_t) { return static_cast<std::uint8_t>(busy | enabled_ << 1); });
        } else if (!busy) {
            obey(bytes, fill);
        }
        return answer;
    }

private:
    using Clock = Scheduler::Clock;

    enum Code : std::uint8_t {
        program = 0x02,
        readData = 0x03,
        disable = 0x04,
        readStatus = 0x05,
        enable = 0x06,
        readFast = 0x0B,
        eraseSector = 0x20,
        readIdentity = 0x9F,
        eraseAll = 0xC7,
    };
    static constexpr std::size_t size = 1 << 20, page = 256, sector = 4096, addressEnd = 4;

    void obey(ByteView bytes, const auto& fill) {
        const std::size_t place = bytes.size() < addressEnd ? 0 : (bytes[1] << 16 | bytes[2] << 8 | bytes[3]) % size;
        switch (bytes[0]) {
            case readIdentity:
                return fill(1, [](std::size_t i) { return std::array<std::uint8_t, 3>{0xEF, 0x40, 0x14}[i % 3]; });
            case readData:
            case readFast:  // a byte later
                return fill(addressEnd + (bytes[0] == readFast),
                            [&](std::size_t i) { return memory_[(place + i) % size]; });
            case enable: enabled_ = true; return;
            case disable: enabled_ = false; return;
            case program:
                if (bytes.size() <= addressEnd || !end(std::chrono::microseconds(700))) return;
                for (std::size_t i = 0; i < bytes.size() - addressEnd; ++i) {
                    memory_[place / page * page + (place + i) % page] &= bytes[addressEnd + i];
                }
                return;
            case eraseSector:
                if (bytes.size() != addressEnd || !end(std::chrono::milliseconds(45))) return;
                std::fill_n(memory_.begin() + static_cast<std::ptrdiff_t>(place / sector * sector), sector, 0xFF);
                return;
            case eraseAll:
                if (end(std::chrono::milliseconds(500))) memory_.assign(size, 0xFF);
                return;
            default: return;
        }
    }

    // Changes need to be enabled, each for itself, and keep the chip busy.
    bool end(Clock::duration work) {
        if (!enabled_) return false;
        enabled_ = false;
        busyUntil_ = Clock::now() + work;
        return true;
    }

    Bytes memory_ = Bytes(size, 0xFF);
    bool enabled_ = false;
    Clock::time_point busyUntil_{};
};

std::uint8_t mirrored(std::uint8_t byte) {
    std::uint8_t result = 0;
    for (int i = 0; i < 8; ++i) result = static_cast<std::uint8_t>(result << 1 | (byte >> i & 1));
    return result;
}

class Port {
public:
    Port(const Device& device, int number) {
        for (const Peer& peer : device.peers.at(Bus::spi, number)) {
            if (peer.kind == PeerKind::loop) chip_ = std::make_unique<Loop>();
            if (peer.kind == PeerKind::flash) chip_ = std::make_unique<Flash>();
        }
    }

    struct Settings {
        bool words = false;  ///< of 16 bits
        bool lastBitFirst = false;
        bool polarity = false, phase = false;
    };

    void clear() { settings = {}; }

    /// Empty if half a word is left.
    std::optional<Bytes> transfer(ByteView bytes) {
        if (settings.words && bytes.size() % 2 != 0) return std::nullopt;
        if (!chip_ || !chip_->follows(settings.polarity, settings.phase)) return Bytes(bytes.size(), 0xFF);
        return turned(chip_->transfer(turned({bytes.begin(), bytes.end()})));
    }

    Settings settings;

private:
    // As the bits travel.
    Bytes turned(Bytes bytes) const {
        if (!settings.lastBitFirst) return bytes;
        for (std::uint8_t& byte : bytes) byte = mirrored(byte);
        for (std::size_t i = 1; settings.words && i < bytes.size(); i += 2) std::swap(bytes[i - 1], bytes[i]);
        return bytes;
    }

    std::unique_ptr<Chip> chip_;
};

}  // namespace

void addSpi(Device& device) {
    const BusPorts<Port> ports(device, Bus::spi, PinMode::spi, Status::spi);
    ports.onOpenAndClose(OPEN_SPI, CLOSE_SPI);
    ports.onChange(RESET_SPI, &Port::clear);
    const auto addSwitch = [&](Command command, bool Port::Settings::*setting) {
        ports.onChange(command, [setting](Port& port, Request r) {
            const std::uint8_t mode = r.u8();
            if (mode <= 1) port.settings.*setting = mode == 1;
            return mode <= 1;
        });
    };
    addSwitch(SET_SPI_DATA_SIZE, &Port::Settings::words);
    addSwitch(SET_SPI_FIRST_BIT, &Port::Settings::lastBitFirst);
    addSwitch(SET_SPI_CPOL, &Port::Settings::polarity);
    addSwitch(SET_SPI_CPHA, &Port::Settings::phase);
    ports.onChange(SET_SPI_PRESCALER, [](Port&, Request r) {
        const auto divider = r.last<std::uint16_t>();
        return std::has_single_bit(divider) && divider >= 2 && divider <= 256;
    });
    ports.onChange(WRITE_SPI, [](Port& port, Request r) { return port.transfer(r.lastCounted()).has_value(); });
    ports.onExchange(READ_AND_WRITE_SPI, [](Port& port, Request r) { return port.transfer(r.lastCounted()); });
    ports.onExchange(READ_SPI, [](Port& port, Request r) { return port.transfer(Bytes(r.u8())); });
}

}  // namespace zvr::sim
