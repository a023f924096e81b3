// A simulated device: the commands that it knows, and what its modules share.
#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "core/wire/commands.h"
#include "core/wire/frame.h"
#include "device/models.h"
#include "device/scheduler.h"
#include "modules/peers.h"
#include "physics/oscillator.h"
#include "physics/track.h"
#include "physics/waveform.h"

namespace zvr::sim {

/// Status bytes that a device answers.
enum class Status : std::uint8_t {
    ok = 0,
    notEnabled = 10,
    pinIndex = 11,
    clock = 20,
    i2c = 21,
    spi = 22,
    uart = 23,
    pwm = 25,
    pulse = 26,
    encoder = 27,
    eeprom = 40,
    core = 42,
    digital = 50,
    relay = 51,
    analogInput = 52,
    analogOutput = 53,
    motion = 54,
    drive = 55,
    thermal = 56,
    can = 57,
    tcp = 71,
    bootloader = 73,
    parser = 80,
};

/// What a pin is used for.
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

inline Bytes reply(Status status) { return {static_cast<std::uint8_t>(status)}; }
inline Bytes reply(std::uint8_t port, Status status) { return {port, static_cast<std::uint8_t>(status)}; }

/// One byte, such as a port or a length, and what follows it.
Bytes reply(std::uint8_t first, ByteView rest);

/// Text filled with zeros to a width, or cut to it.
Bytes padded(std::string_view text, std::size_t width);

struct Identity {
    std::string serial = "SIM00001";
    std::string alias = "bench";
};

struct NetworkSettings {
    std::array<std::uint8_t, 4> ip{127, 0, 0, 1};
    std::array<std::uint8_t, 4> mask{255, 255, 255, 0};
    std::array<std::uint8_t, 4> gateway{192, 168, 1, 1};
    std::array<std::uint8_t, 6> mac{0x02, 0x0A, 0x5A, 0x00, 0x00, 0x01};
};

/// A whole frame, ready to be sent to any number of clients.
using Frame = std::shared_ptr<const Bytes>;

/// Serves any number of connections from one thread.
class Device {
public:
    using Handler = std::function<Bytes(ByteView data)>;

    explicit Device(const Model& model, Identity identity = {}, NetworkSettings network = {}, Peers peers = {});
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const Model& model() const { return model_; }
    Identity identity;
    NetworkSettings network;
    const Peers peers;
    std::chrono::system_clock::duration clockOffset{};  ///< that the clock is ahead of the host's
    double pace = 1;                                    ///< how many times faster what flies or sways does so

    /// Since the start, of what goes by the pace.
    double seconds() const { return pace * std::chrono::duration<double>(Clock::now() - start_).count(); }

    /// A command whose reply begins with its status or value. A handler that throws WrongLength refuses its request
    /// as one that cannot be parsed.
    void on(Command command, Handler handler);
    /// A command whose first byte selects a port; the reply repeats it.
    void onPort(Command command, std::function<Bytes(std::uint8_t port, ByteView rest)> handler);
    /// A command that is never answered.
    void onSilent(Command command, std::function<void(ByteView data)> handler);
    bool knows(int command) const { return handlers_.contains(command); }
    /// What a module does when the device restarts.
    void onReboot(std::function<void()> action) { rebootActions_.push_back(std::move(action)); }
    void reboot();

    /// Sends an unsolicited frame to whoever listens.
    bool stream(int command, ByteView data) {
        return streamFrame(command, std::make_shared<const Bytes>(buildFrame(command, data)));
    }

    /// The same with a frame that is built already. False if a client has lost it; set by what links the device to its
    /// clients.
    std::function<bool(int command, const Frame& frame)> streamFrame = [](int, const Frame&) { return true; };

    /// Whether somebody listens, and nobody lets more than a few frames wait; set by what links the device to them.
    std::function<bool()> hasRoom = [] { return false; };

    /// What a module does when there may be room again. It must not send at once.
    void onRoom(std::function<void()> action) { roomActions_.push_back(std::move(action)); }
    void tellRoom() const {
        for (const auto& action : roomActions_) action();
    }

    /// What is to be done later.
    Scheduler scheduler;

    /// What is at the analog inputs.
    Signals signals;

    /// What is along the axes.
    Tracks tracks;

    /// The output that leads to an analog input; nothing if there is none that drives it.
    std::function<const Voltage*(int port, std::size_t channel)> wiredOutput = [](int, std::size_t) {
        return static_cast<const Voltage*>(nullptr);
    };

    /// Takes the samples that are due, before what they show changes.
    std::function<void()> takeSamples = [] {};

    /// What each pin of a port is used for; set by the module that has the lines.
    std::function<std::vector<PinMode>(int port)> pinModes = [](int) { return std::vector<PinMode>(); };

    /// Takes the lines of a bus from digital use, or gives them back idle. False if another function has one; set by
    /// the module that has the lines.
    std::function<bool(const BusLines& lines, PinMode mode)> usePins = [](const BusLines&, PinMode) { return false; };

    /// How often each line of a port has been switched; set by the module that has the lines.
    std::function<std::array<std::uint32_t, 16>(int port)> switchings = [](int) {
        return std::array<std::uint32_t, 16>{};
    };

    /// What reaches the inputs of a port beside its wires.
    std::function<std::uint16_t(int port)> inputLevels = [](int) { return std::uint16_t{0}; };

    /// What turns at the input of a pulse counter: 1 kHz from outside, or what a module leads there.
    std::function<Oscillator(std::size_t channel)> pulses = [outside = Oscillator(1000)](std::size_t) {
        return outside;
    };

    /// The data of the reply; nothing to a command that the device does not know, or never answers.
    std::optional<Bytes> handle(const Packet& request);

    /// A request as it was meant: a first byte of 48, OPEN_CAN, reads as half of a two-byte code.
    static Packet meant(Packet request);
    /// The frame of a reply. That of OPEN_CAN has two command bytes, so that it is read as what it is.
    static Bytes replyFrame(int command, ByteView data);

private:
    struct Entry {
        Handler handler;
        bool selectsPort;
        bool isSilent;
    };

    using Clock = std::chrono::steady_clock;

    const Model& model_;
    const Clock::time_point start_ = Clock::now();
    std::map<int, Entry> handlers_;
    std::vector<std::function<void()>> rebootActions_, roomActions_;
};

}  // namespace zvr::sim
