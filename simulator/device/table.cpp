// The models as JSON, for comparison with other tables of the models.
#include <array>
#include <ostream>
#include <sstream>

#include "device/models.h"

namespace zvr::sim {

namespace {

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string jsonOf(bool value) { return value ? "true" : "false"; }
std::string jsonOf(std::string_view text) { return quoted(text); }
std::string jsonOf(const char* text) { return quoted(text); }
std::string jsonOf(const std::string& json) { return json; }  // already encoded
template <class Number>
std::string jsonOf(Number number) {
    std::ostringstream text;
    text.precision(17);
    text << number;
    return text.str();
}

template <class Items>
std::string list(const Items& items, auto toJson) {
    std::string json;
    for (const auto& item : items) json += (json.empty() ? "" : ", ") + jsonOf(toJson(item));
    return '[' + json + ']';
}
template <class Items>
std::string list(const Items& items) {
    return list(items, [](const auto& item) { return item; });
}

class Members {
public:
    template <class Value>
    Members& add(const auto& name, const Value& value) {
        json_ += (json_.empty() ? "" : ", ") + quoted(name) + ": " + jsonOf(value);
        return *this;
    }
    std::string json() const { return '{' + json_ + '}'; }

private:
    std::string json_;
};

// The pins of each port that has any.
std::string pinsOf(const std::vector<PortLines>& lines, std::uint16_t PortLines::*kind) {
    Members ports;
    for (const PortLines& port : lines) {
        std::vector<int> pins;
        for (int pin = 0; pin < 16; ++pin) {
            if ((port.*kind >> pin & 1) != 0) pins.push_back(pin);
        }
        if (!pins.empty()) ports.add(std::to_string(port.port), list(pins));
    }
    return ports.json();
}

std::string inputsOf(const AnalogInputs& inputs) {
    constexpr std::array choices{"nothing", "channels", "chip_selects"};
    Members ports;
    for (const int port : inputs.ports) {
        const auto number = static_cast<std::size_t>(port);
        ports.add(std::to_string(port),
                  Members()
                      .add("channels", inputs.channels)
                      .add("bits", inputs.coding.bytes * 8)
                      .add("unit", number < inputs.portUnits.size() ? inputs.portUnits[number] : inputs.coding.unit)
                      .add("streams", inputs.stream != Command{})
                      .add("chosen", choices.at(static_cast<std::size_t>(inputs.choice)))
                      .add("max_rates", list(inputs.rates))
                      .json());
    }
    return ports.json();
}

std::string outputsOf(const AnalogOutputs& outputs) {
    Members ports;
    for (const int port : outputs.ports) {
        ports.add(std::to_string(port), Members()
                                            .add("channels", outputs.channels)
                                            .add("least", outputs.least)
                                            .add("most", outputs.most)
                                            .add("max_rate", outputs.rate)
                                            .add("streams", outputs.streams)
                                            .json());
    }
    return ports.json();
}

// The lines of each port of each bus, as pairs of digital port and pin.
std::string busesOf(const Model& model) {
    constexpr std::array names{"uart", "i2c", "spi", "can"};
    Members buses;
    for (const BusPortNumbers& bus : model.buses) {
        Members ports;
        for (const BusLines& lines : busLines) {
            if (lines.bus != bus.bus || !model.hasBus(bus.bus, lines.port)) continue;
            std::vector<std::string> pins;
            for (int pin = lines.firstPin; pin <= lines.lastPin; ++pin) {
                pins.push_back(list(std::array{lines.digitalPort, pin}));
            }
            ports.add(std::to_string(lines.port), list(pins));
        }
        buses.add(names.at(static_cast<std::size_t>(bus.bus)), ports.json());
    }
    return buses.json();
}

std::string thermometersOf(const Model& model) {
    Members ports;
    for (const int port : model.thermometerPorts) ports.add(std::to_string(port), model.thermometersPerPort);
    return ports.json();
}

std::string rowOf(const Model& model) {
    constexpr std::array links{"ethernet", "wifi", "usb", "serial"};
    return Members()
        .add("model", model.name)
        .add("name", model.displayName)
        .add("links", list(std::array{links.at(static_cast<std::size_t>(model.link))}))
        .add("modules", list(model.modules, [](const Module& module) { return module.name; }))
        .add("first_year", model.firstYear)
        .add("fixed_function", model.fixedFunction)
        .add("pins_per_port", model.pinsPerPort)
        .add("digital_inputs", pinsOf(model.lines, &PortLines::inputs))
        .add("digital_outputs", pinsOf(model.lines, &PortLines::outputs))
        .add("board_inputs", pinsOf(model.boardLines, &PortLines::inputs))
        .add("board_outputs", pinsOf(model.boardLines, &PortLines::outputs))
        .add("wires", list(model.wires,
                           [](const Wire& wire) {
                               return list(std::array{wire.output, wire.input});
                           }))
        .add("buses", busesOf(model))
        .add("analog_inputs", inputsOf(model.analogInputs))
        .add("analog_outputs", outputsOf(model.analogOutputs))
        .add("thermometers", thermometersOf(model))
        .add("motion_ports", list(model.motionPorts))
        .json();
}

}  // namespace

void printTable(std::ostream& out) {
    std::string rows;
    for (const Model& model : models()) rows += (rows.empty() ? " " : ",\n ") + rowOf(model);
    out << "[\n" << rows << "\n]\n";
}

}  // namespace zvr::sim
