// The analog inputs: settings, reads on demand, and runs.
#include <bit>
#include <cmath>
#include <map>
#include <memory>

#include "device/modules.h"
#include "physics/sampling.h"

namespace zvr::sim {

namespace {

using Clock = Scheduler::Clock;
using Choice = AnalogInputs::Choice;

enum Mode : std::uint8_t { onDemand = 0, someSamples = 1, continuous = 2 };

constexpr double defaultRate = 1000;
constexpr std::uint32_t defaultSamples = 1000;
constexpr std::uint8_t atOnce = 1, externalEdge = 2, lastTrigger = 7;
constexpr std::chrono::milliseconds untilEdge{50};
constexpr std::size_t mostChipSelects = 3;

struct Settings {
    Mode mode = onDemand;
    std::uint32_t samples = defaultSamples;
    float rate = defaultRate;
    std::size_t channels = mostAnalogChannels;
    std::uint8_t chipSelects = 1;  // bit i is chip select i
    std::uint8_t trigger = atOnce;
};

class Port {
public:
    Port(Device& device, std::uint8_t number)
        : device_(device), inputs_(device.model().analogInputs), number_(number), coding_(inputs_.coding) {
        if (number < inputs_.portUnits.size()) coding_.unit = inputs_.portUnits[number];
    }

    const Settings& settings() const { return settings_; }
    SampleCounters& counters() { return *counters_; }
    const SampleRun* run() const { return run_.get(); }

    void restart() {
        closeStreaming();
        settings_ = {};
        counters_ = std::make_shared<SampleCounters>();
    }

    bool setMode(std::uint8_t mode) {
        if (mode > continuous) return false;
        settings_.mode = static_cast<Mode>(mode);
        return true;
    }
    bool setSamples(std::uint32_t samples) {
        settings_.samples = samples;
        return true;
    }
    bool setRate(float rate) {
        if (!(rate > 0 && rate <= highestRate())) return false;
        settings_.rate = rate;
        return true;
    }
    bool setTrigger(std::uint8_t trigger) {
        if (trigger < atOnce || trigger > lastTrigger) return false;
        settings_.trigger = trigger;
        return true;
    }
    // A number of channels, or a mask of chip selects. A rate that is too high for as many becomes the highest.
    bool choose(std::uint8_t choice) {
        if (choice == 0) return false;
        if (inputs_.choice == Choice::channels && choice <= mostAnalogChannels) {
            settings_.channels = choice;
        } else if (inputs_.choice == Choice::chipSelects && choice < 1 << mostChipSelects) {
            settings_.chipSelects = choice;
        } else {
            return false;
        }
        settings_.rate = std::min(settings_.rate, highestRate());
        return true;
    }

    void openStreaming() { open_ = true; }
    void closeStreaming() {
        run_.reset();
        open_ = false;
    }
    // Without a place for a refusal, what cannot start does not.
    void start() {
        if (!open_ || settings_.mode == onDemand || (settings_.mode == someSamples && settings_.samples == 0)) return;
        RunPlan plan;
        plan.command = inputs_.stream;
        plan.port = number_;
        plan.chipSelects = chipSelects();
        plan.channels = settings_.channels;
        plan.rate = settings_.rate;
        if (settings_.mode == someSamples) plan.rows = settings_.samples;
        plan.start = Clock::now() + (settings_.trigger == externalEdge ? untilEdge : Clock::duration::zero());
        plan.coding = coding_;
        run_ = std::make_shared<SampleRun>(device_, std::move(plan), counters_);
        run_->advance();
    }
    void takeSamples() {
        if (run_) run_->advance();
    }
    void resume() {
        if (run_) run_->resume();
    }

    /// One row, of what is there now.
    Bytes read(std::uint8_t chipSelect) {
        // Signals go by rows, and a read is a row whose number is the time in steps that are short enough.
        constexpr double steps = 1e6;
        const Clock::time_point now = Clock::now();
        const auto step = static_cast<std::uint64_t>(std::chrono::duration<double>(now - start_).count() * steps);
        Bytes row(settings_.channels * coding_.bytes);
        for (std::size_t channel = 0; channel < settings_.channels; ++channel) {
            std::uint8_t* to = row.data() + channel * coding_.bytes;
            const bool counts = device_.signals.waves[channel].kind == WaveKind::count;
            if (const Voltage* wired = device_.wiredOutput(number_, channel)) {
                writeCode(coding_.codeOf((*wired)(now)), coding_.bytes, to);
            } else {
                const std::uint64_t stream = number_ * 16U + chipSelect;
                const CodeSource source(device_.signals, channel, stream, steps, coding_, false);
                source.write(counts ? reads_[chipSelect] : step, 1, to, 0);
            }
        }
        ++reads_[chipSelect];
        ++counters_->reads;
        return row;
    }

private:
    float highestRate() const {
        const bool byChipSelects = inputs_.choice == Choice::chipSelects;
        const std::size_t chosen =
            byChipSelects ? static_cast<std::size_t>(std::popcount(settings_.chipSelects)) : settings_.channels;
        return static_cast<float>(inputs_.highestRate(chosen));
    }
    std::vector<std::uint8_t> chipSelects() const {
        std::vector<std::uint8_t> chosen;
        for (std::uint8_t i = 0; i < mostChipSelects; ++i) {
            if ((settings_.chipSelects >> i & 1) != 0) chosen.push_back(i);
        }
        return chosen;
    }

    Device& device_;
    const AnalogInputs& inputs_;
    const std::uint8_t number_;
    Coding coding_;
    Settings settings_;
    bool open_ = false;
    std::shared_ptr<SampleCounters> counters_ = std::make_shared<SampleCounters>();
    std::shared_ptr<SampleRun> run_;
    std::map<std::uint8_t, std::uint64_t> reads_;  // by chip select
    const Clock::time_point start_ = Clock::now();
};

using Ports = std::map<int, Port>;

/// The commands of all ports.
class Commands {
public:
    explicit Commands(Device& device) : device_(device), ports_(std::make_shared<Ports>()) {
        for (const int number : device.model().analogInputs.ports) {
            ports_->try_emplace(number, device, static_cast<std::uint8_t>(number));
        }
        device.onReboot([ports = ports_] {
            for (auto& [number, port] : *ports) port.restart();
        });
        device.takeSamples = [ports = ports_] {
            for (auto& [number, port] : *ports) port.takeSamples();
        };
        device.onRoom([ports = ports_] {
            for (auto& [number, port] : *ports) port.resume();
        });
    }

    /// A command that changes a port and answers with a status.
    void onChange(Command command, std::function<bool(Port& port, ByteView rest)> change) const {
        device_.onPort(command, [ports = ports_, change = std::move(change)](std::uint8_t number, ByteView rest) {
            const auto found = ports->find(number);
            if (found == ports->end()) return reply(number, Status::analogInput);
            if (change(found->second, rest)) return reply(number, Status::ok);
            ++found->second.counters().refusals;
            return reply(number, Status::analogInput);
        });
    }

    /// A command that answers with values. There is no place for a status: those of a port that is not there are 0.
    void onRead(Command command, std::size_t width, std::function<Bytes(Port& port, ByteView rest)> read) const {
        device_.onPort(command, [ports = ports_, width, read = std::move(read)](std::uint8_t number, ByteView rest) {
            const auto found = ports->find(number);
            return reply(number, found != ports->end() ? read(found->second, rest) : Bytes(width));
        });
    }

    /// The same with values that do not repeat the port.
    void onCounters(Command command, std::size_t count,
                    std::function<std::vector<std::uint32_t>(Port& port)> read) const {
        device_.on(command, [ports = ports_, count, read = std::move(read)](ByteView data) {
            const auto found = ports->find(slice(data, 0, 1)[0]);
            Bytes bytes;
            const auto values = found != ports->end() ? read(found->second) : std::vector<std::uint32_t>(count);
            for (const std::uint32_t value : values) appendBigEndian(bytes, value);
            return bytes;
        });
    }

    /// A command without a reply.
    void onOrder(Command command, std::function<void(Port& port)> order) const {
        device_.onSilent(command, [ports = ports_, order = std::move(order)](ByteView data) {
            const auto found = data.empty() ? ports->end() : ports->find(data[0]);
            if (found != ports->end()) order(found->second);
        });
    }

private:
    Device& device_;
    std::shared_ptr<Ports> ports_;
};

std::uint8_t byteOf(ByteView rest) { return slice(rest, 0, 1)[0]; }

void addSettings(const Commands& commands) {
    commands.onChange(SET_AI_MODE, [](Port& port, ByteView rest) { return port.setMode(byteOf(rest)); });
    commands.onChange(SET_AI_NUM_SAMPLES,
                      [](Port& port, ByteView rest) { return port.setSamples(readBigEndian<std::uint32_t>(rest)); });
    commands.onChange(SET_AI_SAMPLING_RATE,
                      [](Port& port, ByteView rest) { return port.setRate(readBigEndian<float>(rest)); });
    commands.onChange(SET_AI_ENABLED_CS, [](Port& port, ByteView rest) { return port.choose(byteOf(rest)); });
    commands.onChange(AI_SET_TRIG_MODE, [](Port& port, ByteView rest) { return port.setTrigger(byteOf(rest)); });
}

void addReads(const Commands& commands, const AnalogInputs& inputs) {
    const std::size_t width = 1 + mostAnalogChannels * inputs.coding.bytes;
    // The byte behind the port repeats what has been chosen, a chip select or a way of reading.
    commands.onRead(inputs.read, width, [&inputs, width](Port& port, ByteView rest) {
        const std::uint8_t second = inputs.read == READ_AI_ON_DEMAND_VARIABLE ? 0 : byteOf(rest);
        if (inputs.read == READ_AI_ON_DEMAND && second >= mostChipSelects) return Bytes(width);
        return reply(second, port.read(inputs.read == READ_AI_ON_DEMAND ? second : 0));
    });
    if (inputs.coding.bytes == 2) {
        commands.onRead(AI_GET_DATA, width,
                        [](Port& port, ByteView rest) { return reply(byteOf(rest), port.read(0)); });
    }
}

void addCounters(const Commands& commands) {
    commands.onCounters(GET_AI_COUNTERS, 9, [](Port& port) -> std::vector<std::uint32_t> {
        const SampleCounters& of = port.counters();
        return {of.rows,     of.samples, of.framesMade, of.framesSent, of.framesDropped,
                of.lateRows, of.runs,    of.reads,      of.refusals};
    });
    commands.onCounters(CHECK_BUFFER_STATUS, 4, [](Port& port) -> std::vector<std::uint32_t> {
        const SampleRun* run = port.run();
        const auto waiting = static_cast<std::uint32_t>(run ? run->waitingRows() : 0);
        const auto size = static_cast<std::uint32_t>(run ? run->frameRows() : 0);
        return {waiting, size, port.counters().framesMade, port.counters().framesDropped};
    });
    commands.onChange(CLEAR_DATA, [](Port& port, ByteView) {
        port.counters() = {};
        return true;
    });
}

void addStreaming(const Commands& commands, Command start) {
    commands.onRead(OPEN_AI_STREAMING, 1 + 4 + 4 + 1, [](Port& port, ByteView) {
        port.openStreaming();
        Bytes data = reply(Status::ok);
        appendBigEndian(data, port.settings().samples);
        appendBigEndian(data, port.settings().rate);
        data.push_back(port.settings().mode);
        return data;
    });
    commands.onOrder(start, [](Port& port) { port.start(); });
    commands.onChange(CLOSE_AI_STREAMING, [](Port& port, ByteView) {
        port.closeStreaming();
        return true;
    });
}

}  // namespace

void addAnalogInput(Device& device) {
    const AnalogInputs& inputs = device.model().analogInputs;
    const Commands commands(device);
    // Ports are ready without being opened.
    commands.onChange(OPEN_AI, [](Port&, ByteView) { return true; });
    commands.onChange(CLOSE_AI, [](Port& port, ByteView) {
        port.closeStreaming();
        return true;
    });
    addSettings(commands);
    addReads(commands, inputs);
    addCounters(commands);
    if (inputs.stream != Command{}) addStreaming(commands, inputs.stream);
}

}  // namespace zvr::sim
