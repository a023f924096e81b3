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
#include "core/wire/constants.h"
#include "core/wire/frame.h"
#include "device/interfaces.h"
#include "device/models.h"
#include "device/request.h"
#include "device/scheduler.h"
#include "modules/peers.h"
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

/// Text filled with zeros to a width, or cut to it.
Bytes padded(std::string_view text, std::size_t width);

/// Of every simulated device; that of the interface, whose commands it knows.
inline constexpr std::string_view firmwareVersion = LIBRARY_VERSION;

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

/// What comes to the digital inputs of a port from outside: pins by a mask, and their levels.
struct OutsideLevels {
    std::uint16_t mask = 0, levels = 0;
};

/// What is changed of a device while it runs.
struct Steered {
    bool stalled = false;
    std::map<int, OutsideLevels> levels;   // by port
    std::map<int, std::uint8_t> refusals;  // a status by command
};

/// Serves any number of connections from one thread.
class Device {
public:
    using Handler = std::function<Bytes(Request request)>;
    using PortHandler = std::function<Bytes(std::uint8_t port, Request rest)>;

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
    /// as one that cannot be parsed. A command that is registered already is an error.
    void on(Command command, Handler handler) { add(command, {std::move(handler), false, false}); }
    /// A command whose first byte selects a port; the reply repeats it.
    void onPort(Command command, PortHandler handler);
    /// A command that is never answered.
    void onSilent(Command command, std::function<void(Request request)> handler);
    bool knows(int command) const { return handlers_.contains(command); }
    /// What a module does when the device restarts.
    void onReboot(std::function<void()> action) { rebootActions_.push_back(std::move(action)); }
    void reboot();

    /// Sends an unsolicited frame to whoever listens. False if a client has lost it.
    bool stream(int command, ByteView data) {
        return stream(command, std::make_shared<const Bytes>(buildFrame(command, data)));
    }
    /// The same with a frame that is built already.
    bool stream(int command, const Frame& frame) {
        return !steered.stalled && sink && sink->sendUnsolicited(command, frame);
    }
    bool hasRoom() const { return !steered.stalled && sink && sink->hasRoom(); }
    /// Handles requests and answers none, and sends nothing.
    void stall(bool stalled) {
        steered.stalled = stalled;
        tellRoom();
    }

    /// What a module does when there may be room again. It must not send at once.
    void onRoom(std::function<void()> action) { roomActions_.push_back(std::move(action)); }
    void tellRoom() const {
        for (const auto& action : roomActions_) action();
    }

    Scheduler scheduler;
    Steered steered;
    Signals signals;  ///< at the analog inputs
    Tracks tracks;    ///< along the axes

    Provided<DigitalLines> digitalLines;
    Provided<InputLevels> inputLevels;
    Provided<SlotModes> slotModes;
    Provided<PulseSource> pulseSource;
    Provided<OutputVoltages> outputVoltages;
    Provided<Sampler> sampler;
    Provided<FrameSink> sink;  ///< provided by what links the device to its clients

    /// The data of the reply; nothing to a command that the device does not know, or never answers, or while it stalls.
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

    void add(Command command, Entry entry);

    const Model& model_;
    const Clock::time_point start_ = Clock::now();
    std::map<int, Entry> handlers_;
    std::vector<std::function<void()>> rebootActions_, roomActions_;
};

}  // namespace zvr::sim
