// The digital lines: what each port can do, what is in use, stored and driven.
#include <map>
#include <memory>

#include "device/modules.h"
#include "modules/ports.h"

namespace zvr::sim {

namespace {

using Word = std::uint16_t;
constexpr Word wholePort = 0xFFFF;
constexpr std::size_t pinsOfWord = 16;

void change(Word& word, Word mask, Word value) { word = static_cast<Word>((word & ~mask) | (value & mask)); }

struct Configuration {
    Word enabled = 0;    // in use as digital line
    Word direction = 0;  // 1 is an output
    Word state = 0;      // stored level
};

struct Port {
    int number = 0;
    Word inputs = 0, outputs = 0;
    Configuration current, startup;
    Word driven = 0;  // only outputs in use have a bit here
    Word taken = 0;   // by other functions
    std::array<PinMode, pinsOfWord> functions{};
    std::array<std::uint32_t, pinsOfWord> switchings{};  // of each pin

    Word lines() const { return inputs | outputs; }
    Word eitherWay() const { return inputs & outputs; }
    Word fixedOutputs() const { return outputs & ~inputs; }
    Word activeOutputs() const { return current.enabled & current.direction; }
    void drive(Word mask) {
        const Word pins = mask & activeOutputs();
        const auto wanted = static_cast<Word>(((driven & ~pins) | (current.state & pins)) & activeOutputs());
        for (std::size_t pin = 0; pin < switchings.size(); ++pin) switchings[pin] += (wanted ^ driven) >> pin & 1;
        driven = wanted;
    }
    void store(Word mask, Word state) {
        mask &= lines();
        change(current.state, mask, state);
    }
};

class Lines : public DigitalLines {
public:
    explicit Lines(const Device& device) : device_(device), model_(device.model()) {
        for (const auto& lines : {model_.lines, model_.boardLines}) {
            for (const auto& [number, inputs, outputs] : lines) {
                Port& port = ports_[number];
                port.number = number;
                port.inputs = inputs;
                port.outputs = outputs;
                if (model_.fixedFunction) port.startup = {port.lines(), port.fixedOutputs(), 0};
            }
        }
        restart();
    }

    void restart() {
        for (auto& [number, port] : ports_) {
            port.current = port.startup;
            port.taken = 0;
            port.drive(wholePort);
        }
    }

    Port* find(int number) {
        const auto found = ports_.find(number);
        return found == ports_.end() ? nullptr : &found->second;
    }

    std::array<std::uint32_t, pinsOfWord> switchings(int number) const override { return ports_.at(number).switchings; }

    // Inputs in use show what is wired to them or comes from outside, outputs what they drive; all else is low.
    Word levels(int number) const override {
        const Port& port = ports_.at(number);
        Word arriving = device_.inputLevels ? device_.inputLevels->levels(number) : Word{0};
        for (const auto& [output, input] : model_.wires) {
            if (input == number) arriving |= ports_.at(output).driven;
        }
        if (const auto outside = device_.steered.levels.find(number); outside != device_.steered.levels.end()) {
            change(arriving, outside->second.mask, outside->second.levels);
        }
        return static_cast<Word>(port.driven | (arriving & port.current.enabled & ~port.current.direction));
    }

    // A mask may name the whole port; else it may name only pins that are there.
    Status checkMask(const Port& port, Word mask) const {
        return mask != wholePort && (mask & ~port.lines()) != 0 ? Status::pinIndex : Status::ok;
    }

    // Changes what is in use or what is saved. Lines of a fixed function stay in use, and those that have only one
    // direction stay in it.
    Status set(const Port& port, Configuration& configuration, Word mask, const Configuration& wanted) const {
        if (const Status status = checkMask(port, mask); status != Status::ok) return status;
        mask &= port.lines();
        const Word enabled = mask & wanted.enabled;
        const bool impossible =
            (enabled & wanted.direction & ~port.outputs) != 0 || (enabled & ~wanted.direction & ~port.inputs) != 0;
        if (impossible) return Status::digital;
        if (!model_.fixedFunction) change(configuration.enabled, mask, wanted.enabled);
        const Word turnable = model_.fixedFunction ? port.eitherWay() : wholePort;
        change(configuration.direction, mask & turnable, wanted.direction);
        change(configuration.state, mask, wanted.state);
        return Status::ok;
    }

    Status configure(Port& port, Word mask, const Configuration& wanted) const {
        if (const Status status = checkMask(port, mask); status != Status::ok) return status;
        // Lines that are taken can be meant only by the whole port, which leaves them as they are.
        if ((port.taken & (mask == wholePort ? wanted.enabled : mask)) != 0) return Status::digital;
        const Status status = set(port, port.current, mask & port.lines() & ~port.taken, wanted);
        if (status == Status::ok) port.drive(mask);
        return status;
    }

    void turn(int number, PinMode mode) override {
        Port* port = find(number);
        const bool isOutput = mode == PinMode::digitalOutput;
        if (port)
            configure(*port, wholePort,
                      {mode == PinMode::idle ? Word{0} : wholePort, isOutput ? wholePort : Word{0}, 0});
    }

    bool use(const BusLines& lines, PinMode mode) override {
        Port* port = find(lines.digitalPort);
        const auto pins = static_cast<Word>((2U << lines.lastPin) - (1U << lines.firstPin));
        if (!port || (mode != PinMode::idle && (port->taken & pins) != 0)) return false;
        change(port->taken, pins, mode == PinMode::idle ? 0 : wholePort);
        if (mode != PinMode::idle) change(port->current.enabled, pins, 0);
        port->drive(pins);
        std::fill(&port->functions[lines.firstPin], &port->functions[lines.lastPin + 1], mode);
        return true;
    }

    std::vector<PinMode> modes(int number) const override {
        const auto found = ports_.find(number);
        if (found == ports_.end()) return {};
        const Port& port = found->second;
        std::vector<PinMode> modes;
        for (int pin = 0; pin < model_.pinsPerPort; ++pin) {
            const auto has = [&](Word word) { return (word >> pin & 1) != 0; };
            modes.push_back(!has(port.lines())            ? PinMode::disabled
                            : has(port.taken)             ? port.functions[pin]
                            : !has(port.current.enabled)  ? PinMode::idle
                            : has(port.current.direction) ? PinMode::digitalOutput
                                                          : PinMode::digitalInput);
        }
        return modes;
    }

private:
    const Device& device_;
    const Model& model_;
    std::map<int, Port> ports_;
};

using Ports = PortCommands<Port>;
using Shared = std::shared_ptr<Lines>;

Configuration configurationOf(Request& request) {
    const Word enabled = request.u16(), direction = request.u16(), state = request.u16();
    return {enabled, direction, state};
}

Bytes bytesOf(const Configuration& configuration, Word mask = wholePort) {
    const auto masked = [mask](Word word) { return static_cast<Word>(word & mask); };
    return reply(masked(configuration.enabled), masked(configuration.direction), masked(configuration.state));
}

void addConfiguration(const Ports& ports, const Shared& lines) {
    ports.onRead(LOAD_DIO_STARTUP, 3 * sizeof(Word), [](Port& port) { return bytesOf(port.startup); });
    ports.onChange(SAVE_DIO_STARTUP, [lines](Port& port, Request r) {
        return lines->set(port, port.startup, wholePort, configurationOf(r));
    });
    ports.onRead(GET_DIO_CURRENT, 3 * sizeof(Word),
                 [](Port& port, Request r) { return bytesOf(port.current, r.u16()); });
    ports.onChange(SET_DIO_CURRENT, [lines](Port& port, Request r) {
        const Word mask = r.u16();
        return lines->configure(port, mask, configurationOf(r));
    });
    ports.onChange(TOGGLE_DIO_DIR, [lines](Port& port, Request r) {
        const Word mask = r.u16(), state = r.u16();
        return lines->configure(port, mask, {port.current.enabled, static_cast<Word>(~port.current.direction), state});
    });
    const auto addWhole = [&](Command command, Word enabled, Word direction) {
        ports.onChange(command, [lines, enabled, direction](Port& port) {
            return lines->configure(port, wholePort, {enabled, direction, 0});
        });
    };
    addWhole(SET_SLOT_DI, wholePort, 0);
    addWhole(SET_SLOT_DO, wholePort, wholePort);
    addWhole(SET_SLOT_IDLE, 0, 0);
}

void addLevels(const Ports& ports, const Shared& lines) {
    const auto readInputs = [lines](Port& port) {
        const Word word = lines->levels(port.number);
        port.store(port.current.enabled & ~port.current.direction, word);
        return word;
    };
    ports.onRead(GET_DIO_STATE, sizeof(Word),
                 [](Port& port, Request r) { return static_cast<Word>(port.current.state & r.u16()); });
    ports.onChange(SET_DIO_STATE, [lines](Port& port, Request r) {
        const Word mask = r.u16(), state = r.u16();
        const Status status = lines->checkMask(port, mask);
        if (status == Status::ok) port.store(mask, state);
        return status;
    });
    ports.onRead(READ_AND_GET_DI, sizeof(Word),
                 [readInputs](Port& port, Request r) { return static_cast<Word>(readInputs(port) & r.u16()); });
    ports.onChange(WRITE_DO, [](Port& port) { port.drive(wholePort); });
    ports.onChange(READ_DI, [readInputs](Port& port) { readInputs(port); });
    ports.onRead(SET_AND_WRITE_DO, sizeof(Word), [](Port& port, Request r) {
        const Word pins = r.u16() & port.activeOutputs();
        port.store(pins, r.u16());
        port.drive(pins);
        return port.driven;
    });
    ports.onRead(TOGGLE_AND_WRITE_DO, sizeof(Word), [](Port& port, Request r) {
        const Word pins = r.u16() & port.activeOutputs();
        port.store(pins, static_cast<Word>(~port.driven));
        port.drive(pins);
        return port.driven;
    });
}

}  // namespace

void addDio(Device& device) {
    const auto lines = std::make_shared<Lines>(device);
    const Ports ports(device, Status::digital, [lines](std::uint8_t number, Request&) { return lines->find(number); });
    addConfiguration(ports, lines);
    addLevels(ports, lines);
    device.digitalLines.provide(lines);
    device.onReboot([lines] { lines->restart(); });
}

}  // namespace zvr::sim
