// A simulated device: its commands, and the state shared by its modules.
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

/// Status bytes of a device's replies.
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

/// Version of every simulated device: that of the interface whose commands it implements.
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

/// External levels at the digital inputs of a port: a mask of pins, and their levels.
struct OutsideLevels {
    std::uint16_t mask = 0, levels = 0;
};

/// Changes to a device while it runs.
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
    std::chrono::system_clock::duration clockOffset{};  ///< offset of the clock from the host's
    double pace = 1;                                    ///< speed factor of flight and swaying

    /// Time since the start, scaled by the pace.
    double seconds() const { return pace * std::chrono::duration<double>(Clock::now() - start_).count(); }

    /// A command whose reply begins with its status or value. A handler that throws WrongLength refuses its request as
    /// malformed. Registering a command twice is an error.
    void on(Command command, Handler handler) { add(command, {std::move(handler), false, false}); }
    /// A command whose first byte selects a port; the reply repeats it.
    void onPort(Command command, PortHandler handler);
    /// A command that is never answered.
    void onSilent(Command command, std::function<void(Request request)> handler);
    bool knows(int command) const { return handlers_.contains(command); }
    /// Registers what a module does when the device restarts.
    void onReboot(std::function<void()> action) { rebootActions_.push_back(std::move(action)); }
    void reboot();

    /// Sends an unsolicited frame to all listening clients. False if any client has lost it.
    bool stream(int command, ByteView data) {
        return stream(command, std::make_shared<const Bytes>(buildFrame(command, data)));
    }
    /// The same with a frame that has been built.
    bool stream(int command, const Frame& frame) {
        return !steered.stalled && sink && sink->sendUnsolicited(command, frame);
    }
    bool hasRoom() const { return !steered.stalled && sink && sink->hasRoom(); }
    /// Handles requests but sends no replies and no other frames.
    void stall(bool stalled) {
        steered.stalled = stalled;
        tellRoom();
    }

    /// Registers what a module does when there may be room again. It must not send immediately.
    void onRoom(std::function<void()> action) { roomActions_.push_back(std::move(action)); }
    void tellRoom() const {
        for (const auto& action : roomActions_) action();
    }

    Scheduler scheduler;
    Steered steered;
    Signals signals;  ///< of the analog inputs
    Tracks tracks;    ///< of the axes

    Provided<DigitalLines> digitalLines;
    Provided<InputLevels> inputLevels;
    Provided<SlotModes> slotModes;
    Provided<PulseSource> pulseSource;
    Provided<OutputVoltages> outputVoltages;
    Provided<Sampler> sampler;
    Provided<FrameSink> sink;  ///< provided by the device's link

    /// The data of the reply; empty for an unknown command, one that is never answered, or while the device stalls.
    std::optional<Bytes> handle(const Packet& request);

    /// Corrects a request whose first byte 48, OPEN_CAN, was parsed as half of a two-byte code.
    static Packet meant(Packet request);
    /// The frame of a reply. That of OPEN_CAN has two command bytes, so that clients parse it correctly.
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
