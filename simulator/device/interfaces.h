// Interfaces between the modules of a device. Each is provided by one module at most.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/wire/bus_pins.h"
#include "core/wire/bytes.h"
#include "physics/oscillator.h"

namespace zvr::sim {

/// The use of a pin.
enum class PinMode : std::uint8_t {
    disabled = 0,
    idle = 1,
    digitalInput = 2,
    digitalOutput = 3,
    uart = 4,
    i2c = 5,
    spi = 6,
    can = 7,
};

/// A whole frame, ready to be sent to any number of clients.
using Frame = std::shared_ptr<const Bytes>;

/// The lines of the digital ports.
class DigitalLines {
public:
    static constexpr const char* name = "DigitalLines";
    virtual ~DigitalLines() = default;

    virtual std::vector<PinMode> modes(int port) const = 0;
    virtual std::uint16_t levels(int port) const = 0;
    /// How often each line of a port has been switched.
    virtual std::array<std::uint32_t, 16> switchings(int port) const = 0;
    /// Turns a whole port into inputs or outputs, or releases it.
    virtual void turn(int port, PinMode mode) = 0;
    /// Claims the lines of a bus, or releases them to idle. False if another function uses one.
    virtual bool use(const BusLines& lines, PinMode mode) = 0;
};

/// External sources at digital inputs.
class InputLevels {
public:
    static constexpr const char* name = "InputLevels";
    virtual ~InputLevels() = default;
    virtual std::uint16_t levels(int port) = 0;
};

/// The modes of a chassis's slots.
class SlotModes {
public:
    static constexpr const char* name = "SlotModes";
    static constexpr std::uint8_t idle = 0, inputs = 1, outputs = 2, motion = 4, last = 6;
    static constexpr std::size_t slotCount = 4, portsOfSlot = 2;
    using Modes = std::array<std::uint8_t, slotCount>;
    virtual ~SlotModes() = default;
    virtual const Modes& modes() const = 0;
    /// A slot is identified by its first port. False if there is no such slot or mode.
    virtual bool setMode(std::uint8_t port, std::uint8_t mode) = 0;
};

/// The signals at the inputs of the pulse counters.
class PulseSource {
public:
    static constexpr const char* name = "PulseSource";
    virtual ~PulseSource() = default;
    virtual Oscillator pulses(std::size_t channel) const = 0;
};

/// The analog outputs, for the inputs wired to them.
class OutputVoltages {
public:
    static constexpr const char* name = "OutputVoltages";
    using Time = std::chrono::steady_clock::time_point;
    virtual ~OutputVoltages() = default;
    virtual bool drives(int port, std::size_t channel) const = 0;
    virtual double voltage(int port, std::size_t channel, Time time) const = 0;
};

/// The analog inputs: takes the samples that are due before the signals change.
class Sampler {
public:
    static constexpr const char* name = "Sampler";
    virtual ~Sampler() = default;
    virtual void takeSamples() = 0;
};

/// The clients that receive unsolicited frames.
class FrameSink {
public:
    static constexpr const char* name = "FrameSink";
    virtual ~FrameSink() = default;
    /// False if a client has lost it.
    virtual bool sendUnsolicited(int command, const Frame& frame) = 0;
    /// Whether there are clients, and none has more than a few frames waiting.
    virtual bool hasRoom() const = 0;
};

/// The one provider of an interface, if there is any.
template <class Interface>
class Provided {
public:
    /// A second provider is an error.
    void provide(std::shared_ptr<Interface> provider) {
        if (provider_) throw std::logic_error(std::string("a second module provides ") + Interface::name);
        provider_ = std::move(provider);
    }
    void withdraw() { provider_.reset(); }
    explicit operator bool() const { return provider_ != nullptr; }
    /// Throws where no module provides what another one needs.
    Interface* operator->() const {
        if (!provider_) throw std::logic_error(std::string("no module provides ") + Interface::name);
        return provider_.get();
    }

private:
    std::shared_ptr<Interface> provider_;
};

}  // namespace zvr::sim
