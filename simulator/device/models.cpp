#include "device/models.h"

#include <algorithm>

#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::uint16_t pins(int first, int last) {
    return static_cast<std::uint16_t>((1U << (last + 1)) - (1U << first));
}

constexpr PortLines inputs(int port, std::uint16_t pins) { return {port, pins, 0}; }
constexpr PortLines outputs(int port, std::uint16_t pins) { return {port, 0, pins}; }
constexpr PortLines eitherWay(int port, std::uint16_t pins) { return {port, pins, pins}; }

// The three LEDs and two power inputs of a Wi-Fi model.
std::vector<PortLines> boardLines() { return {outputs(ledPort, pins(0, 2)), inputs(powerPort, pins(0, 1))}; }

// Two ports in each of the four slots of a chassis.
std::vector<PortLines> slotLines() {
    std::vector<PortLines> lines(8);
    for (int port = 0; PortLines & each : lines) each = eitherWay(port++, pins(0, 11));
    return lines;
}

using Choice = AnalogInputs::Choice;

AnalogInputs inputs16(double rate) {
    return {{0}, {}, READ_AI_ON_DEMAND, START_AI_STREAMING, Choice::nothing, {rate}, {}};
}

// Clients choose how many channels there are.
AnalogInputs variableInputs(std::vector<double> rates) {
    return {{0}, {}, READ_AI_ON_DEMAND_VARIABLE, START_AI_STREAMING_VARIABLE, Choice::channels, std::move(rates), {}};
}

AnalogInputs usbInputs() { return variableInputs({16000, 8000, 6300, 4000, 3200, 2600, 2200, 2000}); }

AnalogInputs inputs24(double rate) {
    return {{0}, {3, 1.3904889343373708e-6, false}, READAI24BIT, AI_START_STREAMING_24BIT, Choice::nothing, {rate}, {}};
}

// In mA on port 0, and in V on port 1.
AnalogInputs currentInputs(std::vector<int> ports) {
    constexpr double half = 1 << 23;
    return {std::move(ports), {3, 1, true}, READAI24BIT, {}, Choice::nothing, {1000}, {25 / half, 50 / half}};
}

// Slot 3 of a chassis has no analog module.
AnalogInputs slotInputs() {
    return {{0, 1, 3}, {}, READ_AI_ON_DEMAND, START_AI_STREAMING, Choice::chipSelects, {12000, 6000, 4000}, {}};
}

AnalogOutputs heldOutputs(std::vector<int> ports) { return {std::move(ports), -10, 10, 15000, false}; }
AnalogOutputs streamedOutputs(double least, double most, double rate) { return {{0}, least, most, rate, true}; }

}  // namespace

// clang-format off
std::span<const Model> models() {
    using enum Link;
    static const std::vector<Model> table = {
        // name, display name, link, first year, pins of a port, fixed function
        //     lines
        //     wires, modules
        //     analog inputs, analog outputs
        {"SableDio", "Sable-Dio", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 5)), eitherWay(2, pins(0, 3) | pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder, addUart, addI2c, addSpi}},
        {"SableAnalog", "Sable-Analog", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder, addUart, addI2c, addSpi, addAnalogInput},
            usbInputs()},
        {"SableThermo", "Sable-Thermo", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 4)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder, addUart, addI2c, addSpi, addThermocouples}},
        {"SableCan", "Sable-Can", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder, addUart, addI2c, addSpi, addCan}},
        {"SableRtd", "Sable-Rtd", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 4)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder, addUart, addI2c, addSpi, addResistanceThermometers}},
        {"SableSink", "Sable-Sink", usb, 1900, 8, true,
            {inputs(0, pins(0, 7)), inputs(1, pins(0, 5)), outputs(2, pins(0, 7)), outputs(3, pins(0, 3))},
            {{2, 0}, {3, 1}}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableMixed", "Sable-Mixed", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 1))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder, addUart, addI2c, addAnalogInput, addAnalogOutput},
            usbInputs(), streamedOutputs(0, 5, 16000)},

        {"HeronAnalog", "Heron-Analog", wifi, 2000, 8, true, boardLines(), {},
            {addSystem, addNetwork, addWifi, addDio, addAnalogInput},
            variableInputs({10000})},
        {"HeronImu",    "Heron-Imu",    wifi, 2000, 8, true, boardLines(), {},
            {addSystem, addNetwork, addWifi, addDio, addSdCard, addAttitude, addAnalogInput},
            variableInputs({10000})},
        {"HeronOut",    "Heron-Out",    wifi, 2000, 8, true, boardLines(), {},
            {addSystem, addNetwork, addWifi, addDio, addSdCard, addAttitude, addAnalogOutput},
            {}, heldOutputs({0})},
        {"HeronMixed",  "Heron-Mixed",  wifi, 2000, 8, true,
            {outputs(ledPort, pins(0, 2)), inputs(powerPort, pins(0, 1)), inputs(2, pins(0, 7)), outputs(3, pins(0, 7))},
            {{3, 2}}, {addSystem, addNetwork, addWifi, addDio, addSdCard, addAnalogInput, addAnalogOutput},
            variableInputs({10000}), heldOutputs({0})},
        {"HeronFast",   "Heron-Fast",   wifi, 2000, 8, true, boardLines(), {},
            {addSystem, addNetwork, addWifi, addDio, addAnalogInput},
            variableInputs({20000})},

        {"TarnAnalog",      "Tarn-Analog",       ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addAnalogInput}, inputs16(20000)},
        {"TarnAnalog24",    "Tarn-Analog24",     ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addAnalogInput}, inputs24(10000)},
        {"TarnDio",         "Tarn-Dio",          ethernet, 1900, 8, true,
            {outputs(0, pins(0, 5)), inputs(1, pins(0, 7))},
            {{0, 1}}, {addSystem, addNetwork, addSntp, addDio, addPwm}},
        {"TarnDioLite",     "Tarn-Dio-Lite",     ethernet, 1900, 8, false,
            {outputs(0, pins(0, 7)), outputs(1, pins(0, 7)), inputs(2, pins(0, 7)), inputs(3, pins(0, 7))},
            {{0, 2}, {1, 3}}, {addSystem, addNetwork, addSntp, addDio}},
        {"TarnCurrent",     "Tarn-Current",      ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addAnalogInput}, currentInputs({0})},
        {"TarnCurrentVolt", "Tarn-Current-Volt", ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addAnalogInput}, currentInputs({0, 1})},
        {"TarnRelay",       "Tarn-Relay",        ethernet, 1900, 8, true,
            {outputs(0, pins(0, 5)), inputs(1, pins(0, 5))},
            {{0, 1}}, {addSystem, addNetwork, addSntp, addDio, addRelay}},
        {"TarnOut",         "Tarn-Out",          ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addAnalogOutput},
            {}, streamedOutputs(-10, 10, 15000)},
        {"TarnPot",         "Tarn-Pot",          ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addPotentiometer}},
        {"TarnThermo",      "Tarn-Thermo",       ethernet, 1900, 8, false, {}, {},
            {addSystem, addNetwork, addSntp, addSevenThermocouples}},

        {"Lattice",     "Lattice",      ethernet, 1900, 12, true, slotLines(), {},
            {addSystem, addNetwork, addDio, addSlots, addAnalogInput, addAnalogOutput, addSlotMotion},
            slotInputs(), heldOutputs({0, 1, 3})},
        {"LatticeLite", "Lattice-Lite", ethernet, 1900, 12, true, slotLines(), {},
            {addSystem, addNetwork, addDio, addSlots, addAnalogInput, addAnalogOutput, addSlotMotion},
            slotInputs(), heldOutputs({0, 1, 3})},
        {"Pawl",        "Pawl-Drive",   ethernet, 1900, 8, true, {inputs(1, pins(0, 2)), outputs(2, pins(0, 0))}, {},
            {addSystem, addNetwork, addSntp, addDio, addStepper}},
        {"Ratchet",     "Ratchet",      ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp, addMotion}},
        {"Drone",       "Drone",        serial,   1900, 8, false, {}, {}, {addDrone}},
    };
    return table;
}
// clang-format on

const Model* findModel(std::string_view name) {
    const auto found = std::ranges::find(models(), name, &Model::name);
    return found == models().end() ? nullptr : &*found;
}

}  // namespace zvr::sim
