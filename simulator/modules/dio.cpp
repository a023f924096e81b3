// The digital lines: what each port can do, what is in use, stored and driven.
#include <map>
#include <memory>

#include "device/modules.h"

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
    Word inputs = 0, outputs = 0;
    Configuration current, startup;
    Word driven = 0;  // only outputs in use have a bit here
    Word taken = 0;   // by other functions
    std::array<PinMode, pinsOfWord> functions{};
    std::array<std::uint32_t, 16> switchings{};  // of each pin

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

Word wordAt(ByteView data, std::size_t place) { return readBigEndian<Word>(slice(data, place, 2)); }

class Lines {
public:
    explicit Lines(const Device& device) : device_(device), model_(device.model()) {
        for (const auto& lines : {model_.lines, model_.boardLines}) {
            for (const auto& [number, inputs, outputs] : lines) {
                Port& port = ports_[number];
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

    std::array<std::uint32_t, 16> switchings(int number) const { return ports_.at(number).switchings; }

    // Inputs in use show what is wired to them or comes from outside, outputs what they drive; all else is low.
    Word levels(int number) const {
        const Port& port = ports_.at(number);
        Word arriving = device_.inputLevels(number);
        for (const auto& [output, input] : model_.wires) {
            if (input == number) arriving |= ports_.at(output).driven;
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

    bool use(const BusLines& lines, PinMode mode) {
        Port* port = find(lines.digitalPort);
        const auto pins = static_cast<Word>((2U << lines.lastPin) - (1U << lines.firstPin));
        if (!port || (mode != PinMode::idle && (port->taken & pins) != 0)) return false;
        change(port->taken, pins, mode == PinMode::idle ? 0 : wholePort);
        if (mode != PinMode::idle) change(port->current.enabled, pins, 0);
        port->drive(pins);
        std::fill(&port->functions[lines.firstPin], &port->functions[lines.lastPin + 1], mode);
        return true;
    }

    std::vector<PinMode> modes(int number) const {
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

using Change = std::function<Status(Lines&, Port&, ByteView rest)>;
using Read = std::function<std::vector<Word>(Lines&, int number, Port&, ByteView rest)>;

// A command that changes a port and answers with a status.
void addChange(Device& device, Command command, const std::shared_ptr<Lines>& lines, Change change) {
    device.onPort(command, [lines, change = std::move(change)](std::uint8_t number, ByteView rest) {
        Port* port = lines->find(number);
        return reply(number, port ? change(*lines, *port, rest) : Status::digital);
    });
}

// A command that answers with words; those of a port that is not there are 0.
void addRead(Device& device, Command command, const std::shared_ptr<Lines>& lines, std::size_t count, Read read) {
    device.onPort(command, [lines, count, read = std::move(read)](std::uint8_t number, ByteView rest) {
        Bytes data{number};
        Port* port = lines->find(number);
        for (const Word word : port ? read(*lines, number, *port, rest) : std::vector<Word>(count)) {
            appendBigEndian(data, word);
        }
        return data;
    });
}

std::vector<Word> wordsOf(const Configuration& configuration, Word mask = wholePort) {
    return {static_cast<Word>(configuration.enabled & mask), static_cast<Word>(configuration.direction & mask),
            static_cast<Word>(configuration.state & mask)};
}

void addConfiguration(Device& device, const std::shared_ptr<Lines>& lines) {
    addRead(device, LOAD_DIO_STARTUP, lines, 3,
            [](Lines&, int, Port& port, ByteView) { return wordsOf(port.startup); });
    addChange(device, SAVE_DIO_STARTUP, lines, [](Lines& all, Port& port, ByteView rest) {
        return all.set(port, port.startup, wholePort, {wordAt(rest, 0), wordAt(rest, 2), wordAt(rest, 4)});
    });
    addRead(device, GET_DIO_CURRENT, lines, 3,
            [](Lines&, int, Port& port, ByteView rest) { return wordsOf(port.current, wordAt(rest, 0)); });
    addChange(device, SET_DIO_CURRENT, lines, [](Lines& all, Port& port, ByteView rest) {
        return all.configure(port, wordAt(rest, 0), {wordAt(rest, 2), wordAt(rest, 4), wordAt(rest, 6)});
    });
    addChange(device, TOGGLE_DIO_DIR, lines, [](Lines& all, Port& port, ByteView rest) {
        const auto direction = static_cast<Word>(~port.current.direction);
        return all.configure(port, wordAt(rest, 0), {port.current.enabled, direction, wordAt(rest, 2)});
    });
    const auto addWhole = [&](Command command, Word enabled, Word direction) {
        addChange(device, command, lines, [enabled, direction](Lines& all, Port& port, ByteView) {
            return all.configure(port, wholePort, {enabled, direction, 0});
        });
    };
    addWhole(SET_SLOT_DI, wholePort, 0);
    addWhole(SET_SLOT_DO, wholePort, wholePort);
    addWhole(SET_SLOT_IDLE, 0, 0);
}

void addLevels(Device& device, const std::shared_ptr<Lines>& lines) {
    addRead(device, GET_DIO_STATE, lines, 1, [](Lines&, int, Port& port, ByteView rest) {
        return std::vector<Word>{static_cast<Word>(port.current.state & wordAt(rest, 0))};
    });
    addChange(device, SET_DIO_STATE, lines, [](Lines& all, Port& port, ByteView rest) {
        const Word mask = wordAt(rest, 0);
        const Word state = wordAt(rest, 2);
        const Status status = all.checkMask(port, mask);
        if (status == Status::ok) port.store(mask, state);
        return status;
    });
    addRead(device, READ_AND_GET_DI, lines, 1, [](Lines& all, int number, Port& port, ByteView rest) {
        const Word word = all.levels(number);
        port.store(port.current.enabled & ~port.current.direction, word);
        return std::vector<Word>{static_cast<Word>(word & wordAt(rest, 0))};
    });
    addChange(device, WRITE_DO, lines, [](Lines&, Port& port, ByteView) {
        port.drive(wholePort);
        return Status::ok;
    });
    device.onPort(READ_DI, [lines](std::uint8_t number, ByteView) {
        Port* port = lines->find(number);
        if (!port) return reply(number, Status::digital);
        port->store(port->current.enabled & ~port->current.direction, lines->levels(number));
        return reply(number, Status::ok);
    });
    addRead(device, SET_AND_WRITE_DO, lines, 1, [](Lines&, int, Port& port, ByteView rest) {
        const Word pins = wordAt(rest, 0) & port.activeOutputs();
        port.store(pins, wordAt(rest, 2));
        port.drive(pins);
        return std::vector<Word>{port.driven};
    });
    addRead(device, TOGGLE_AND_WRITE_DO, lines, 1, [](Lines&, int, Port& port, ByteView rest) {
        const Word pins = wordAt(rest, 0) & port.activeOutputs();
        port.store(pins, static_cast<Word>(~port.driven));
        port.drive(pins);
        return std::vector<Word>{port.driven};
    });
}

}  // namespace

void addDio(Device& device) {
    const auto lines = std::make_shared<Lines>(device);
    addConfiguration(device, lines);
    addLevels(device, lines);
    device.pinModes = [lines](int port) { return lines->modes(port); };
    device.usePins = [lines](const BusLines& bus, PinMode mode) { return lines->use(bus, mode); };
    device.switchings = [lines](int port) { return lines->switchings(port); };
    device.onReboot([lines] { lines->restart(); });
}

}  // namespace zvr::sim
