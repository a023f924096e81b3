// The analog outputs: voltages that are written, and runs of generated or pushed samples.
#include <map>
#include <memory>

#include "device/modules.h"
#include "physics/output_port.h"

namespace zvr::sim {

namespace {

constexpr std::size_t mostPushed = 13;

// A port with its voltages as others see them.
struct Output {
    explicit Output(const AnalogOutputs& outputs) : port(outputs) {
        for (std::size_t channel = 0; channel < voltages.size(); ++channel) {
            voltages[channel] = [this, channel](Scheduler::Clock::time_point time) {
                return port.valueAt(channel, time);
            };
        }
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    OutputPort port;
    std::array<Voltage, mostAnalogChannels> voltages;
};

using Outputs = std::map<int, Output>;

std::uint8_t byteAt(ByteView rest, std::size_t place) { return slice(rest, place, 1)[0]; }
float floatAt(ByteView rest, std::size_t place) { return readBigEndian<float>(slice(rest, place, sizeof(float))); }

std::vector<double> floatsAt(ByteView rest, std::size_t place, std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(floatAt(rest, place + i * sizeof(float)));
    return values;
}

/// The commands of all ports.
class Commands {
public:
    explicit Commands(Device& device) : device_(device), outputs_(std::make_shared<Outputs>()) {
        const AnalogOutputs& model = device.model().analogOutputs;
        for (const int number : model.ports) outputs_->try_emplace(number, model);
        device.onReboot([outputs = outputs_, &device, &model] {
            device.takeSamples();
            for (auto& [number, output] : *outputs) output.port = OutputPort(model);
        });
        device.wiredOutput = [outputs = outputs_](int number, std::size_t channel) -> const Voltage* {
            const auto found = outputs->find(number);
            if (found == outputs->end() || !found->second.port.drives()) return nullptr;
            return &found->second.voltages.at(channel);
        };
    }

    /// A command that changes a port and answers with a status.
    void onChange(Command command, std::function<bool(OutputPort& port, ByteView rest)> change) const {
        device_.onPort(command, [this_ = *this, change = std::move(change)](std::uint8_t number, ByteView rest) {
            OutputPort* port = this_.find(number);
            return reply(number, port && change(*port, rest) ? Status::ok : Status::analogOutput);
        });
    }

    /// A command that answers with values. There is no place for a status: those of a port that is not there are 0.
    void onRead(Command command, std::size_t width, std::function<Bytes(OutputPort& port)> read) const {
        device_.onPort(command, [this_ = *this, width, read = std::move(read)](std::uint8_t number, ByteView) {
            OutputPort* port = this_.find(number);
            return reply(number, port ? read(*port) : Bytes(width));
        });
    }

    /// A command without a reply.
    void onOrder(Command command, std::function<void(OutputPort& port)> order) const {
        device_.onSilent(command, [this_ = *this, order = std::move(order)](ByteView data) {
            if (OutputPort* port = data.empty() ? nullptr : this_.find(data[0])) order(*port);
        });
    }

private:
    // The port as it is now, with the inputs that it leads to sampled up to now.
    OutputPort* find(int number) const {
        const auto found = outputs_->find(number);
        if (found == outputs_->end()) return nullptr;
        device_.takeSamples();
        found->second.port.settle();
        return &found->second.port;
    }

    Device& device_;
    std::shared_ptr<Outputs> outputs_;
};

void addWriting(const Commands& commands) {
    const auto close = [](OutputPort& port, ByteView) {
        port.close();
        return true;
    };
    const auto open = [](OutputPort& port, ByteView) {
        port.open();
        return true;
    };
    for (const Command command : {OPEN_AO, OPEN_AIO}) commands.onChange(command, open);
    for (const Command command : {CLOSE_AO, CLOSE_AIO}) commands.onChange(command, close);
    commands.onChange(WRITE_AO_BY_CHANNEL, [](OutputPort& port, ByteView rest) {
        const std::uint8_t channel = byteAt(rest, 0);
        const double value = floatAt(rest, 1);
        if (channel >= mostAnalogChannels || !port.canWrite(channel, value)) return false;
        port.write(channel, value);
        return true;
    });
    commands.onChange(WRITE_AO_SYNCHRONIZED, [](OutputPort& port, ByteView rest) {
        const std::vector<double> values = floatsAt(rest, 0, mostAnalogChannels);
        for (std::size_t channel = 0; channel < values.size(); ++channel) {
            if (!port.canWrite(channel, values[channel])) return false;
        }
        for (std::size_t channel = 0; channel < values.size(); ++channel) port.write(channel, values[channel]);
        return true;
    });
}

void addSettings(const Commands& commands, double highestRate) {
    commands.onChange(SET_AO_SPAN, [](OutputPort& port, ByteView rest) { return port.setSpan(byteAt(rest, 0)); });
    commands.onChange(SET_AO_MODE, [](OutputPort& port, ByteView rest) {
        const std::uint8_t mode = byteAt(rest, 0);
        if (mode > OutputPort::continuous) return false;
        port.settings().mode = static_cast<OutputPort::Mode>(mode);
        return true;
    });
    commands.onChange(SET_AO_SAMPLING_RATE, [highestRate](OutputPort& port, ByteView rest) {
        const float rate = floatAt(rest, 0);
        if (!(rate > 0 && rate <= highestRate)) return false;
        port.settings().rate = rate;
        return true;
    });
    commands.onChange(SET_AO_NUM_SAMPLES, [](OutputPort& port, ByteView rest) {
        port.settings().samples = readBigEndian<std::uint32_t>(slice(rest, 0, 4));
        return true;
    });
    // Byte 0 of the rest is a chip select, of which there is one only.
    commands.onChange(SET_AO_ENABLED_CHANNELS, [](OutputPort& port, ByteView rest) {
        port.settings().mask = byteAt(rest, 1);
        return true;
    });
    commands.onChange(SET_AO_FORM, [](OutputPort& port, ByteView rest) {
        const std::uint8_t channel = byteAt(rest, 1), kind = byteAt(rest, 2);
        if (channel >= mostAnalogChannels || kind < Form::sine || kind > Form::triangle) return false;
        port.settings().forms[channel].kind = static_cast<Form::Kind>(kind);
        return true;
    });
    commands.onChange(SET_AO_FORM_PARAM, [](OutputPort& port, ByteView rest) {
        const std::uint8_t channel = byteAt(rest, 1);
        const std::vector<double> values = floatsAt(rest, 2, 5);
        const bool possible = std::ranges::all_of(values, [](double value) { return std::isfinite(value); }) &&
                              values[2] >= 0 && values[4] >= 0 && values[4] <= 1;
        if (channel >= mostAnalogChannels || !possible) return false;
        Form& form = port.settings().forms[channel];
        form = {form.kind, values[0], values[1], values[2], values[3], values[4]};
        return true;
    });
}

void addStreaming(const Commands& commands) {
    commands.onRead(OPEN_AO_STREAMING, 1 + 4, [](OutputPort& port) {
        port.openStreaming();
        Bytes data{port.settings().mode};
        appendBigEndian(data, port.settings().rate);
        return data;
    });
    commands.onOrder(START_AO_STREAMING, [](OutputPort& port) { port.start(); });
    const auto addStep = [&](Command command, void (OutputPort::*step)()) {
        commands.onChange(command, [step](OutputPort& port, ByteView) {
            (port.*step)();
            return true;
        });
    };
    addStep(STOP_AO_STREAMING, &OutputPort::stop);
    addStep(CLOSE_AO_STREAMING, &OutputPort::closeStreaming);
    commands.onRead(INIT_AO_BUFFER, 4 + 1, [](OutputPort& port) {
        port.initBuffer();
        Bytes data;
        appendBigEndian(data, static_cast<std::uint32_t>(OutputPort::bufferSize));
        data.push_back(port.settings().mask);
        return data;
    });
    commands.onChange(SET_AO_PUSH_TO_BUFFER, [](OutputPort& port, ByteView rest) {
        const std::size_t count = byteAt(rest, 1);
        return count <= mostPushed && port.push(floatsAt(rest, 2, count));
    });
}

void addReads(const Commands& commands) {
    commands.onRead(GET_AO_COUNTERS, 8, [](OutputPort& port) {
        Bytes data;
        appendBigEndian(data, port.made());
        appendBigEndian(data, port.missing());
        return data;
    });
    commands.onRead(GET_AO_VALUES, 1 + mostAnalogChannels * 4, [](OutputPort& port) {
        Bytes data{0};  // the chip select
        const Scheduler::Clock::time_point now = Scheduler::Clock::now();
        for (std::size_t channel = 0; channel < mostAnalogChannels; ++channel) {
            appendBigEndian(data, static_cast<float>(port.valueAt(channel, now)));
        }
        return data;
    });
    commands.onRead(GET_AO_MODE, 1, [](OutputPort& port) { return Bytes{port.settings().mode}; });
    commands.onRead(GET_AO_STATE, 1, [](OutputPort& port) { return Bytes{static_cast<std::uint8_t>(port.state())}; });
    commands.onRead(GET_AO_ENABLED_CHANNELS, 1, [](OutputPort& port) { return Bytes{port.settings().mask}; });
}

}  // namespace

void addAnalogOutput(Device& device) {
    const AnalogOutputs& outputs = device.model().analogOutputs;
    const Commands commands(device);
    addWriting(commands);
    if (!outputs.streams) return;
    addSettings(commands, outputs.rate);
    addStreaming(commands);
    addReads(commands);
}

}  // namespace zvr::sim
