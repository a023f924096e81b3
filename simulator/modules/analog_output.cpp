// The analog outputs: voltages that are written, and runs of generated or pushed samples.
#include <map>
#include <memory>

#include "device/modules.h"
#include "modules/ports.h"
#include "physics/output_port.h"

namespace zvr::sim {

namespace {

constexpr std::size_t mostPushed = 13;

class Ports : public OutputVoltages {
public:
    explicit Ports(const AnalogOutputs& outputs) : outputs_(outputs) { restart(); }

    void restart() {
        for (const int number : outputs_.ports) ports_.insert_or_assign(number, OutputPort(outputs_));
    }
    OutputPort* find(int number) {
        const auto found = ports_.find(number);
        return found == ports_.end() ? nullptr : &found->second;
    }

    bool drives(int number, std::size_t channel) const override {
        const auto found = ports_.find(number);
        return found != ports_.end() && channel < outputs_.channels && found->second.drives();
    }
    double voltage(int number, std::size_t channel, Time time) const override {
        return ports_.at(number).valueAt(channel, time);
    }

private:
    const AnalogOutputs& outputs_;
    std::map<int, OutputPort> ports_;
};

using Commands = PortCommands<OutputPort>;

std::vector<double> floatsOf(Request& request, std::size_t count) {
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) values.push_back(request.f32());
    return values;
}

void addWriting(const Commands& commands, std::size_t channels) {
    for (const Command command : {OPEN_AO, OPEN_AIO}) commands.onChange(command, &OutputPort::open);
    for (const Command command : {CLOSE_AO, CLOSE_AIO}) commands.onChange(command, &OutputPort::close);
    commands.onChange(WRITE_AO_BY_CHANNEL, [channels](OutputPort& port, Request r) {
        const std::uint8_t channel = r.u8();
        const double value = r.f32();
        if (channel >= channels || !port.canWrite(channel, value)) return false;
        port.write(channel, value);
        return true;
    });
    commands.onChange(WRITE_AO_SYNCHRONIZED, [channels](OutputPort& port, Request r) {
        const std::vector<double> values = floatsOf(r, channels);
        for (std::size_t channel = 0; channel < channels; ++channel) {
            if (!port.canWrite(channel, values[channel])) return false;
        }
        for (std::size_t channel = 0; channel < channels; ++channel) port.write(channel, values[channel]);
        return true;
    });
}

// The byte before mask, channel or values is a chip select, of which there is one only.
void addSettings(const Commands& commands, const AnalogOutputs& outputs) {
    commands.onChange(SET_AO_SPAN, [](OutputPort& port, Request r) { return port.setSpan(r.u8()); });
    commands.onChange(SET_AO_MODE, [](OutputPort& port, Request r) {
        const std::uint8_t mode = r.u8();
        if (mode > OutputPort::continuous) return false;
        port.settings().mode = static_cast<OutputPort::Mode>(mode);
        return true;
    });
    commands.onChange(SET_AO_SAMPLING_RATE, [&outputs](OutputPort& port, Request r) {
        const float rate = r.f32();
        if (!(rate > 0 && rate <= outputs.rate)) return false;
        port.settings().rate = rate;
        return true;
    });
    commands.onChange(SET_AO_NUM_SAMPLES, [](OutputPort& port, Request r) { port.settings().samples = r.u32(); });
    commands.onChange(SET_AO_ENABLED_CHANNELS, [](OutputPort& port, Request r) {
        r.u8();
        port.settings().mask = r.u8();
    });
    commands.onChange(SET_AO_FORM, [&outputs](OutputPort& port, Request r) {
        r.u8();
        const std::uint8_t channel = r.u8(), kind = r.u8();
        if (channel >= outputs.channels || kind < Form::sine || kind > Form::triangle) return false;
        port.settings().forms[channel].kind = static_cast<Form::Kind>(kind);
        return true;
    });
    commands.onChange(SET_AO_FORM_PARAM, [&outputs](OutputPort& port, Request r) {
        r.u8();
        const std::uint8_t channel = r.u8();
        const std::vector<double> values = floatsOf(r, 5);
        const bool possible = std::ranges::all_of(values, [](double value) { return std::isfinite(value); }) &&
                              values[2] >= 0 && values[4] >= 0 && values[4] <= 1;
        if (channel >= outputs.channels || !possible) return false;
        Form& form = port.settings().forms[channel];
        form = {form.kind, values[0], values[1], values[2], values[3], values[4]};
        return true;
    });
}

void addStreaming(const Commands& commands) {
    commands.onRead(OPEN_AO_STREAMING, 1 + 4, [](OutputPort& port) {
        port.openStreaming();
        return reply(port.settings().mode, port.settings().rate);
    });
    commands.onOrder(START_AO_STREAMING, &OutputPort::start);
    commands.onChange(STOP_AO_STREAMING, &OutputPort::stop);
    commands.onChange(CLOSE_AO_STREAMING, &OutputPort::closeStreaming);
    commands.onRead(INIT_AO_BUFFER, 4 + 1, [](OutputPort& port) {
        port.initBuffer();
        return reply(std::uint32_t{OutputPort::bufferSize}, port.settings().mask);
    });
    commands.onChange(SET_AO_PUSH_TO_BUFFER, [](OutputPort& port, Request r) {
        r.u8();
        const std::size_t count = r.u8();
        return count <= mostPushed && port.push(floatsOf(r, count));
    });
}

void addReads(const Commands& commands, std::size_t channels) {
    commands.onRead(GET_AO_COUNTERS, 8, [](OutputPort& port) { return reply(port.made(), port.missing()); });
    commands.onRead(GET_AO_VALUES, 1 + channels * sizeof(float), [channels](OutputPort& port) {
        Bytes data{0};  // the chip select
        const Scheduler::Clock::time_point now = Scheduler::Clock::now();
        for (std::size_t channel = 0; channel < channels; ++channel) {
            append(data, static_cast<float>(port.valueAt(channel, now)));
        }
        return data;
    });
    commands.onRead(GET_AO_MODE, 1, [](OutputPort& port) { return port.settings().mode; });
    commands.onRead(GET_AO_STATE, 1, &OutputPort::state);
    commands.onRead(GET_AO_ENABLED_CHANNELS, 1, [](OutputPort& port) { return port.settings().mask; });
}

}  // namespace

void addAnalogOutput(Device& device) {
    const AnalogOutputs& outputs = device.model().analogOutputs;
    const auto ports = std::make_shared<Ports>(outputs);
    const auto takeSamples = [&device] {
        if (device.sampler) device.sampler->takeSamples();
    };
    device.outputVoltages.provide(ports);
    device.onReboot([ports, takeSamples] {
        takeSamples();
        ports->restart();
    });
    // The port at the current time, after sampling the inputs wired to it up to now.
    const Commands commands(device, Status::analogOutput, [ports, takeSamples](std::uint8_t number, Request&) {
        OutputPort* port = ports->find(number);
        if (port) {
            takeSamples();
            port->settle();
        }
        return port;
    });
    addWriting(commands, outputs.channels);
    if (!outputs.streams) return;
    addSettings(commands, outputs);
    addStreaming(commands);
    addReads(commands, outputs.channels);
}

}  // namespace zvr::sim
