// The I2C buses, and the chips on them.
#include <cmath>
#include <numbers>

#include "device/modules.h"
#include "modules/bus.h"

namespace zvr::sim {

namespace {

class Chip {
public:
    Chip(std::uint8_t address, std::uint32_t fastest) : address(address), fastest(fastest) {}
    virtual ~Chip() = default;

    /// The bytes of one transfer.
    virtual void write(ByteView bytes) = 0;
    virtual std::uint8_t read() = 0;

    const std::uint8_t address;
    const std::uint32_t fastest;  ///< clock that it follows, in Hz
};

// 256 bytes. The first byte of a write is the place of the next one; writes stay within a page, reads go around.
class Eeprom : public Chip {
public:
    explicit Eeprom(std::uint8_t address) : Chip(address, 1000000) { memory_.fill(0xFF); }

    void write(ByteView bytes) override {
        if (bytes.empty()) return;
        place_ = bytes[0];
        for (const std::uint8_t byte : bytes.subspan(1)) {
            memory_[place_] = byte;
            place_ = static_cast<std::uint8_t>((place_ & ~(page - 1)) | ((place_ + 1) & (page - 1)));
        }
    }
    std::uint8_t read() override { return memory_[place_++]; }

private:
    static constexpr int page = 8;

    std::array<std::uint8_t, 256> memory_;
    std::uint8_t place_ = 0;
};

// Registers: 0 temperature, in 1/256 of a degree with 1/8 of resolution, 1 configuration, 2 and 3 limits. The first
// byte of a write is the register.
class Thermometer : public Chip {
public:
    Thermometer(std::uint8_t address, double degrees) : Chip(address, 400000), degrees_(degrees) {}

    void write(ByteView bytes) override {
        if (bytes.empty()) return;
        register_ = bytes[0] % registers_.size();
        half_ = 0;
        for (const std::uint8_t byte : bytes.subspan(1)) {
            if (register_ != 0) at(half_) = byte;
            half_ = (half_ + 1) % width();
        }
        half_ = 0;
    }
    std::uint8_t read() override {
        if (half_ == 0) registers_[0] = now();
        const std::uint8_t byte = at(half_);
        half_ = (half_ + 1) % width();
        return byte;
    }

private:
    static constexpr int configuration = 1;

    std::size_t width() const { return register_ == configuration ? 1 : 2; }
    std::uint8_t& at(std::size_t half) { return registers_[register_][half]; }

    std::array<std::uint8_t, 2> now() const {
        constexpr double period = 60, swing = 5, steps = 8;
        const double seconds = std::chrono::duration<double>(Scheduler::Clock::now() - start_).count();
        const double degrees = degrees_ + swing * std::sin(2 * std::numbers::pi * seconds / period);
        const int value = static_cast<int>(std::lround(degrees * steps)) * 32;
        return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
    }

    const double degrees_;
    const Scheduler::Clock::time_point start_ = Scheduler::Clock::now();
    std::array<std::array<std::uint8_t, 2>, 4> registers_{{{}, {}, {75, 0}, {80, 0}}};
    std::size_t register_ = 0, half_ = 0;
};

class Port {
public:
    Port(const Device& device, int number) {
        for (const Peer& peer : device.peers.at(Bus::i2c, number)) {
            if (peer.kind == PeerKind::eeprom) {
                chips_.push_back(std::make_unique<Eeprom>(peer.number<std::uint8_t>(0)));
            } else if (peer.kind == PeerKind::thermometer) {
                chips_.push_back(std::make_unique<Thermometer>(peer.number<std::uint8_t>(0), peer.real(1)));
            }
        }
    }

    void clear() {
        clock_ = 100000;
        wideAddresses_ = false;
    }

    bool setClock(std::uint32_t clock) {
        if (clock != 100000 && clock != 400000 && clock != 1000000 && clock != 3400000) return false;
        clock_ = clock;
        return true;
    }
    bool setAddressSize(std::uint8_t mode) {
        if (mode > 1) return false;
        wideAddresses_ = mode == 1;
        return true;
    }

    /// The chip that acknowledges an address; nothing if there is none.
    Chip* find(std::uint8_t address) const {
        for (const auto& chip : chips_) {
            if (!wideAddresses_ && chip->address == address && clock_ <= chip->fastest) return chip.get();
        }
        return nullptr;
    }

private:
    std::vector<std::unique_ptr<Chip>> chips_;
    std::uint32_t clock_ = 100000;
    bool wideAddresses_ = false;
};

}  // namespace

void addI2c(Device& device) {
    const BusPorts<Port> ports(device, Bus::i2c, PinMode::i2c, Status::i2c);
    ports.onOpenAndClose(OPEN_I2C, CLOSE_I2C);
    ports.onChange(RESET_I2C, &Port::clear);
    ports.onChange(SET_I2C_FREQUENCY, [](Port& port, Request r) { return port.setClock(r.last<std::uint32_t>()); });
    ports.onChange(SET_I2C_ADDR_SIZE, [](Port& port, Request r) { return port.setAddressSize(r.u8()); });
    ports.onChange(WRITE_I2C, [](Port& port, Request r) {
        const std::uint8_t address = r.u8();
        const ByteView bytes = r.lastCounted();
        Chip* chip = port.find(address);
        if (chip) chip->write(bytes);
        return chip != nullptr;
    });
    // The bytes come behind their number.
    ports.onExchange(READ_I2C, [](Port& port, Request r) -> std::optional<Bytes> {
        const std::uint8_t address = r.u8(), count = r.u8();
        Chip* chip = port.find(address);
        if (!chip) return std::nullopt;
        Bytes bytes{count};
        while (bytes.size() <= count) bytes.push_back(chip->read());
        return bytes;
    });
}

}  // namespace zvr::sim
