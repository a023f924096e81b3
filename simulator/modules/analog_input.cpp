// The analog inputs: settings, reads on demand, and runs.
#include <bit>
#include <cmath>
#include <map>
#include <memory>

#include "device/modules.h"
#include "modules/ports.h"
#include "modules/sampling.h"

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
    std::size_t channels;
    std::uint8_t chipSelects = 1;  // bit i is chip select i
    std::uint8_t trigger = atOnce;
};

class Port {
public:
    Port(Device& device, std::uint8_t number)
        : device_(device),
          inputs_(device.model().analogInputs),
          number_(number),
          coding_(inputs_.coding),
          settings_{.channels = inputs_.channels} {
        if (number < inputs_.portUnits.size()) coding_.unit = inputs_.portUnits[number];
    }

    const Settings& settings() const { return settings_; }
    const SampleCounters& counters() const { return *counters_; }
    void clearCounters() { *counters_ = {}; }
    void refused() { ++counters_->refusals; }
    const SampleRun* run() const { return run_.get(); }

    void restart() {
        closeStreaming();
        settings_ = {.channels = inputs_.channels};
        counters_ = std::make_shared<SampleCounters>();
    }

    bool setMode(std::uint8_t mode) {
        if (mode > continuous) return false;
        settings_.mode = static_cast<Mode>(mode);
        return true;
    }
    void setSamples(std::uint32_t samples) { settings_.samples = samples; }
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
        if (inputs_.choice == Choice::channels && choice <= inputs_.channels) {
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
    // The reply has no status, so a failed start is silent.
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
        run_ = std::make_unique<SampleRun>(device_, std::move(plan), counters_);
        run_->advance();
    }
    void takeSamples() {
        if (run_) run_->advance();
    }
    void resume() {
        if (run_) run_->resume();
    }

    /// One row of the current values.
    Bytes read(std::uint8_t chipSelect) {
        // Signals go by rows, and a read is a row whose number is the time in steps that are short enough.
        constexpr double steps = 1e6;
        const Clock::time_point now = Clock::now();
        const auto step = static_cast<std::uint64_t>(std::chrono::duration<double>(now - start_).count() * steps);
        Bytes row(settings_.channels * coding_.bytes);
        for (std::size_t channel = 0; channel < settings_.channels; ++channel) {
            std::uint8_t* to = row.data() + channel * coding_.bytes;
            const bool counts = device_.signals.at(channel).kind == WaveKind::count;
            if (device_.outputVoltages && device_.outputVoltages->drives(number_, channel)) {
                writeCode(coding_.codeOf(device_.outputVoltages->voltage(number_, channel, now)), coding_.bytes, to);
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
    std::unique_ptr<SampleRun> run_;
    std::map<std::uint8_t, std::uint64_t> reads_;  // by chip select
    const Clock::time_point start_ = Clock::now();
};

class Ports : public Sampler {
public:
    explicit Ports(Device& device) {
        for (const int number : device.model().analogInputs.ports) {
            ports_.try_emplace(number, device, static_cast<std::uint8_t>(number));
        }
    }

    Port* find(int number) {
        const auto found = ports_.find(number);
        return found == ports_.end() ? nullptr : &found->second;
    }
    void each(void (Port::*action)()) {
        for (auto& [number, port] : ports_) (port.*action)();
    }
    void takeSamples() override { each(&Port::takeSamples); }

private:
    std::map<int, Port> ports_;
};

using Commands = PortCommands<Port>;

void addSettings(const Commands& commands) {
    commands.onChange(SET_AI_MODE, [](Port& port, Request r) { return port.setMode(r.u8()); });
    commands.onChange(SET_AI_NUM_SAMPLES, [](Port& port, Request r) { port.setSamples(r.last<std::uint32_t>()); });
    commands.onChange(SET_AI_SAMPLING_RATE, [](Port& port, Request r) { return port.setRate(r.last<float>()); });
    commands.onChange(SET_AI_ENABLED_CS, [](Port& port, Request r) { return port.choose(r.u8()); });
    commands.onChange(AI_SET_TRIG_MODE, [](Port& port, Request r) { return port.setTrigger(r.u8()); });
}

void addReads(const Commands& commands, const AnalogInputs& inputs) {
    const std::size_t width = 1 + inputs.channels * inputs.coding.bytes;
    // The byte after the port repeats the selected chip select or kind of reading.
    commands.onRead(inputs.read, width, [&inputs, width](Port& port, Request r) {
        const std::uint8_t second = inputs.read == READ_AI_ON_DEMAND_VARIABLE ? std::uint8_t{0} : r.u8();
        if (inputs.read == READ_AI_ON_DEMAND && second >= mostChipSelects) return Bytes(width);
        return reply(second, port.read(inputs.read == READ_AI_ON_DEMAND ? second : 0));
    });
    if (inputs.coding.bytes == 2) {
        commands.onRead(AI_GET_DATA, width, [](Port& port, Request r) {
            const std::uint8_t second = r.u8();
            return reply(second, port.read(0));
        });
    }
}

// Their replies do not repeat the port.
void addCounters(Device& device, const std::shared_ptr<Ports>& ports) {
    device.on(GET_AI_COUNTERS, [ports](Request r) {
        const Port* port = ports->find(r.u8());
        const SampleCounters of = port ? port->counters() : SampleCounters{};
        return reply(of.rows, of.samples, of.framesMade, of.framesSent, of.framesDropped, of.lateRows, of.runs,
                     of.reads, of.refusals);
    });
    device.on(CHECK_BUFFER_STATUS, [ports](Request r) {
        const Port* port = ports->find(r.u8());
        const SampleCounters of = port ? port->counters() : SampleCounters{};
        const SampleRun* run = port ? port->run() : nullptr;
        const auto waiting = static_cast<std::uint32_t>(run ? run->waitingRows() : 0);
        const auto size = static_cast<std::uint32_t>(run ? run->frameRows() : 0);
        return reply(waiting, size, of.framesMade, of.framesDropped);
    });
}

void addStreaming(const Commands& commands, Command start) {
    commands.onRead(OPEN_AI_STREAMING, 1 + 4 + 4 + 1, [](Port& port) {
        port.openStreaming();
        return reply(Status::ok, port.settings().samples, port.settings().rate, port.settings().mode);
    });
    commands.onOrder(start, &Port::start);
    commands.onChange(CLOSE_AI_STREAMING, &Port::closeStreaming);
}

}  // namespace

void addAnalogInput(Device& device) {
    const AnalogInputs& inputs = device.model().analogInputs;
    const auto ports = std::make_shared<Ports>(device);
    device.sampler.provide(ports);
    device.onReboot([ports] { ports->each(&Port::restart); });
    device.onRoom([ports] { ports->each(&Port::resume); });
    const Commands commands(device, Status::analogInput,
                            [ports](std::uint8_t number, Request&) { return ports->find(number); });
    // Ports are ready without being opened.
    commands.onChange(OPEN_AI, [](Port&) {});
    commands.onChange(CLOSE_AI, &Port::closeStreaming);
    commands.onChange(CLEAR_DATA, &Port::clearCounters);
    addSettings(commands);
    addReads(commands, inputs);
    addCounters(device, ports);
    if (inputs.stream != Command{}) addStreaming(commands, inputs.stream);
}

}  // namespace zvr::sim
