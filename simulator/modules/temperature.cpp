// Thermocouples and resistance thermometers: their sensors, and the device's conversion.
#include <array>
#include <cmath>
#include <map>
#include <memory>

#include "device/modules.h"
#include "modules/ports.h"

namespace zvr::sim {

namespace {

constexpr double noiseAmplitude = 0.2;  // degrees, of one sample
constexpr double junctionDegrees = 25;
constexpr std::uint8_t lastSamplingMode = 4, lastFilter = 1;

// A sensor that is taken for one of another type shows a wrong temperature.
class Kind {
public:
    static Kind thermocouple() { return {3, 7}; }
    static Kind resistor() { return {0, 1}; }

    std::uint8_t usual, last;  // types

    /// The device's reading of a sensor of the usual type at `degrees`, with its cold junction assumed at `junction`.
    double reading(double degrees, std::uint8_t type, double junction) const {
        if (last == 1) {
            constexpr std::array ohms = {100.0, 1000.0};  // at 0 degrees
            constexpr double slope = 0.00385;
            return ((1 + slope * degrees) * ohms[usual] / ohms[type] - 1) / slope;
        }
        constexpr std::array microvolts = {6.0, 68.0, 55.0, 41.0, 36.0, 11.0, 10.0, 48.0};  // per degree, roughly
        return junction + (degrees - junctionDegrees) * microvolts[usual] / microvolts[type];
    }
};

struct Sensor {
    double degrees = 0;
    std::uint8_t type = 0;
    std::uint8_t samplingMode = 0;
    bool measuresJunction = true;
    float junction = 0;  // set by the host
    float offset = 0, savedOffset = 0;
};

class Thermometer {
public:
    Thermometer(Device& device, Kind kind) : device_(device), kind_(kind) {
        const Model& model = device.model();
        for (double degrees = 20; const int port : model.thermometerPorts) {
            for (std::size_t i = 0; i < model.thermometersPerPort; ++i, degrees += 10) {
                ports_[static_cast<std::uint8_t>(port)].sensors.emplace_back().degrees = degrees;
            }
        }
        restart();
    }

    void restart() {
        for (auto& [number, port] : ports_) {
            port.isOpen = false;
            for (Sensor& sensor : port.sensors) {
                const float saved = sensor.savedOffset;
                sensor = {.degrees = sensor.degrees, .type = kind_.usual, .offset = saved, .savedOffset = saved};
            }
        }
    }

    bool setOpen(std::uint8_t number, bool open) {
        const auto port = ports_.find(number);
        if (port == ports_.end()) return false;
        port->second.isOpen = open;
        return true;
    }

    /// A sensor of an open port; nothing if there is none.
    Sensor* find(std::uint8_t number, std::uint8_t channel) {
        const auto port = ports_.find(number);
        const bool there = port != ports_.end() && port->second.isOpen && channel < port->second.sensors.size();
        return there ? &port->second.sensors[channel] : nullptr;
    }

    double junction() { return junctionDegrees + noise(noiseAmplitude); }
    double degrees(const Sensor& sensor) {
        const double junction = sensor.measuresJunction ? junctionDegrees : double{sensor.junction};
        // A reading is the mean of 1, 2, 4, 8 or 16 samples.
        return kind_.reading(sensor.degrees, sensor.type, junction) + sensor.offset +
               noise(noiseAmplitude / std::sqrt(1 << sensor.samplingMode));
    }

private:
    struct Port {
        bool isOpen = false;
        std::vector<Sensor> sensors;
    };

    double noise(double amplitude) {
        return Waveform{WaveKind::noise, 0, amplitude, 0}.at(0,
                                                             device_.signals.seed * std::uint64_t{1} << 32 | reads_++);
    }

    Device& device_;
    Kind kind_;
    std::map<std::uint8_t, Port> ports_;
    std::uint32_t reads_ = 0;
};

using Sensors = PortCommands<Sensor>;

// A setting of one byte, up to a last value.
void addSetting(const Sensors& sensors, Command command, std::uint8_t last, std::uint8_t Sensor::*setting) {
    sensors.onChange(command, [last, setting](Sensor& sensor, Request r) {
        const std::uint8_t value = r.u8();
        if (value <= last && setting != nullptr) sensor.*setting = value;
        return value <= last;
    });
}

void addDegrees(const Sensors& sensors, Command command, float Sensor::*degrees) {
    sensors.onChange(command, [degrees](Sensor& sensor, Request r) {
        const auto value = r.last<float>();
        if (std::isfinite(value)) sensor.*degrees = value;
        return std::isfinite(value);
    });
}

void addThermometer(Device& device, Kind kind) {
    const auto all = std::make_shared<Thermometer>(device, kind);
    device.onReboot([all] { all->restart(); });
    for (const auto& [command, open] : {std::pair{OPEN_THERMAL, true}, {CLOSE_THERMAL, false}}) {
        device.onPort(command, [all, open = open](std::uint8_t port, Request) {
            return reply(port, all->setOpen(port, open) ? Status::ok : Status::thermal);
        });
    }
    // The byte behind the port is the channel.
    const Sensors sensors(device, Status::thermal,
                          [all](std::uint8_t port, Request& r) { return all->find(port, r.u8()); });
    sensors.onRead(READ_THERMAL_COUPLE, sizeof(float),
                   [all](Sensor& each) { return static_cast<float>(all->degrees(each)); });
    sensors.onRead(READ_THERMAL_OFFSET, sizeof(float), &Sensor::offset);
    sensors.onRead(LOAD_THERMAL_OFFSET, sizeof(float), &Sensor::savedOffset);
    addSetting(sensors, SET_THERMAL_TYPE, kind.last, &Sensor::type);
    addSetting(sensors, SET_THERMAL_NOISE_FILTER, lastFilter, nullptr);
    addDegrees(sensors, WRITE_THERMAL_OFFSET, &Sensor::offset);
    addDegrees(sensors, SAVE_THERMAL_OFFSET, &Sensor::savedOffset);
    // No sensor is broken.
    device.onPort(GET_THERMAL_STATUS, [](std::uint8_t port, Request r) { return Bytes{port, r.u8(), 0}; });
    if (kind.last == Kind::resistor().last) return;
    sensors.onRead(READ_THERMAL_JUNCTION, sizeof(float),
                   [all](Sensor&) { return static_cast<float>(all->junction()); });
    addSetting(sensors, SET_THERMAL_OVER_SAMPLING, lastSamplingMode, &Sensor::samplingMode);
    addDegrees(sensors, WRITE_THERMAL_JUNCTION, &Sensor::junction);
    sensors.onChange(SET_THERMAL_JUNCTION_ON, [](Sensor& sensor, Request r) { sensor.measuresJunction = r.u8() != 0; });
}

}  // namespace

void addThermocouples(Device& device) { addThermometer(device, Kind::thermocouple()); }
void addResistanceThermometers(Device& device) { addThermometer(device, Kind::resistor()); }

}  // namespace zvr::sim
