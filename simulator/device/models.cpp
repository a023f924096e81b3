#include "device/models.h"

#include <algorithm>

#include "device/modules.h"

namespace zvr::sim {

namespace {

constexpr std::uint16_t pins(int first, int last) {
    return static_cast<std::uint16_t>((1U << (last + 1)) - (1U << first));
}

constexpr PortLines inputs(int port, std::uint16_t pins) { return {.port = port, .inputs = pins, .outputs = 0}; }
constexpr PortLines outputs(int port, std::uint16_t pins) { return {.port = port, .inputs = 0, .outputs = pins}; }
constexpr PortLines eitherWay(int port, std::uint16_t pins) { return {.port = port, .inputs = pins, .outputs = pins}; }

// The three LEDs and two power inputs of a Wi-Fi model.
std::vector<PortLines> boardLines() { return {outputs(ledPort, pins(0, 2)), inputs(powerPort, pins(0, 1))}; }

// Two ports in each of the four slots of a chassis.
std::vector<PortLines> slotLines() {
    std::vector<PortLines> lines(8);
    for (int port = 0; PortLines & each : lines) each = eitherWay(port++, pins(0, 11));
    return lines;
}

using Choice = AnalogInputs::Choice;

// Clients choose the number of channels.
AnalogInputs variableInputs(std::vector<double> rates) {
    return {.ports = {0},
            .read = READ_AI_ON_DEMAND_VARIABLE,
            .stream = START_AI_STREAMING_VARIABLE,
            .choice = Choice::channels,
            .rates = std::move(rates)};
}

AnalogInputs usbInputs() { return variableInputs({16000, 8000, 6300, 4000, 3200, 2600, 2200, 2000}); }

// In mA on port 0, and in V on port 1.
AnalogInputs currentInputs(std::vector<int> ports) {
    constexpr double half = 1 << 23;
    return {.ports = std::move(ports),
            .coding = {.bytes = 3, .unit = 1, .offsetBinary = true},
            .read = READAI24BIT,
            .rates = {1000},
            .portUnits = {25 / half, 50 / half}};
}

// Slot 3 of a chassis has no analog module.
AnalogInputs slotInputs() {
    return {.ports = {0, 1, 3},
            .read = READ_AI_ON_DEMAND,
            .stream = START_AI_STREAMING,
            .choice = Choice::chipSelects,
            .rates = {12000, 6000, 4000}};
}

constexpr Module system{"System", addSystem}, network{"Network", addNetwork}, wifi{"Wifi", addWifi},
    sntp{"SNTP", addSntp}, card{"SDCard", addSdCard}, dio{"DIO", addDio}, slots{"Slots", addSlots}, pwm{"PWM", addPwm},
    counter{"Counter", addCounter}, encoder{"Encoder", addEncoder}, uart{"UART", addUart}, i2c{"I2C", addI2c},
    spi{"SPI", addSpi}, can{"CAN", addCan}, ai{"AI", addAnalogInput}, ai24{"AI24BitStreaming", addAnalogInput},
    currents{"AI24Bit", addAnalogInput}, ao{"AO", addAnalogOutput}, aoStreaming{"AOStreaming", addAnalogOutput},
    thermocouple{"Thermocouple", addThermocouples}, rtd{"ThermalResistance", addResistanceThermometers},
    ahrs{"AHRS", addAttitude}, relay{"Relay", addRelay}, dpot{"DPOT", addPotentiometer}, mcx514{"MCX514", addMcx514},
    tmc5240{"TMC5240", addTmc5240}, drone{"Drone", addDrone};

// clang-format off
const std::vector<Model>& table() {
    const std::vector<PortLines> sable20{eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
                                 sable21{eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 4)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))};
    const std::vector<BusPortNumbers> sableBuses{{Bus::uart, {1, 2}}, {Bus::i2c, {1, 2}}, {Bus::spi, {2}}};
    static const std::vector<Model> rows = {
        {.name = "SableDio", .displayName = "Sable-Dio", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder, uart, i2c, spi},
         .lines = {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 5)), eitherWay(2, pins(0, 3) | pins(6, 7)), eitherWay(3, pins(0, 5))},
         .buses = {{Bus::uart, {1, 2}}, {Bus::i2c, {1, 2}}, {Bus::spi, {1, 2}}}},
        {.name = "SableAnalog", .displayName = "Sable-Analog", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder, uart, i2c, spi, ai},
         .lines = sable20, .buses = sableBuses, .analogInputs = usbInputs()},
        {.name = "SableThermo", .displayName = "Sable-Thermo", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder, uart, i2c, spi, thermocouple},
         .lines = sable21, .buses = sableBuses, .thermometerPorts = {1, 2}, .thermometersPerPort = 2},
        {.name = "SableCan", .displayName = "Sable-Can", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder, uart, i2c, spi, can},
         .lines = sable20, .buses = {{Bus::uart, {1, 2}}, {Bus::i2c, {1, 2}}, {Bus::spi, {2}}, {Bus::can, {1}}}},
        {.name = "SableRtd", .displayName = "Sable-Rtd", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder, uart, i2c, spi, rtd},
         .lines = sable21, .buses = sableBuses, .thermometerPorts = {1, 2}, .thermometersPerPort = 2},
        {.name = "SableSink", .displayName = "Sable-Sink", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder},
         .fixedFunction = true,
         .lines = {inputs(0, pins(0, 7)), inputs(1, pins(0, 5)), outputs(2, pins(0, 7)), outputs(3, pins(0, 3))},
         .wires = {{.output = 2, .input = 0}, {.output = 3, .input = 1}}},
        {.name = "SableMixed", .displayName = "Sable-Mixed", .link = Link::usb,
         .modules = {system, dio, pwm, counter, encoder, uart, i2c, ai, aoStreaming},
         .lines = {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 1))},
         .buses = {{Bus::uart, {1, 2}}, {Bus::i2c, {1, 2}}},
         .analogInputs = usbInputs(),
         .analogOutputs = {.ports = {0}, .least = 0, .most = 5, .rate = 16000, .streams = true}},

        {.name = "HeronAnalog", .displayName = "Heron-Analog", .link = Link::wifi,
         .modules = {system, network, wifi, dio, ai},
         .firstYear = 2000, .fixedFunction = true, .boardLines = boardLines(),
         .analogInputs = variableInputs({10000})},
        {.name = "HeronImu", .displayName = "Heron-Imu", .link = Link::wifi,
         .modules = {system, network, wifi, dio, card, ahrs, ai},
         .firstYear = 2000, .fixedFunction = true, .boardLines = boardLines(),
         .analogInputs = variableInputs({10000})},
        {.name = "HeronOut", .displayName = "Heron-Out", .link = Link::wifi,
         .modules = {system, network, wifi, dio, card, ahrs, ao},
         .firstYear = 2000, .fixedFunction = true, .boardLines = boardLines(),
         .analogOutputs = {.ports = {0}}},
        {.name = "HeronMixed", .displayName = "Heron-Mixed", .link = Link::wifi,
         .modules = {system, network, wifi, dio, card, ai, ao},
         .firstYear = 2000, .fixedFunction = true,
         .lines = {inputs(2, pins(0, 7)), outputs(3, pins(0, 7))}, .boardLines = boardLines(),
         .wires = {{.output = 3, .input = 2}},
         .analogInputs = variableInputs({10000}), .analogOutputs = {.ports = {0}}},
        {.name = "HeronFast", .displayName = "Heron-Fast", .link = Link::wifi,
         .modules = {system, network, wifi, dio, ai},
         .firstYear = 2000, .fixedFunction = true, .boardLines = boardLines(),
         .analogInputs = variableInputs({20000})},

        {.name = "TarnAnalog", .displayName = "Tarn-Analog", .link = Link::ethernet,
         .modules = {system, network, sntp, ai},
         .analogInputs = {.ports = {0}, .read = READ_AI_ON_DEMAND, .stream = START_AI_STREAMING, .rates = {20000}}},
        {.name = "TarnAnalog24", .displayName = "Tarn-Analog24", .link = Link::ethernet,
         .modules = {system, network, sntp, ai24},
         .analogInputs = {.ports = {0}, .coding = {.bytes = 3, .unit = 1.3904889343373708e-6}, .read = READAI24BIT,
                          .stream = AI_START_STREAMING_24BIT, .rates = {10000}}},
        {.name = "TarnDio", .displayName = "Tarn-Dio", .link = Link::ethernet,
         .modules = {system, network, sntp, dio, pwm},
         .fixedFunction = true, .lines = {outputs(0, pins(0, 5)), inputs(1, pins(0, 7))},
         .wires = {{.output = 0, .input = 1}}},
        {.name = "TarnDioLite", .displayName = "Tarn-Dio-Lite", .link = Link::ethernet,
         .modules = {system, network, sntp, dio},
         .lines = {outputs(0, pins(0, 7)), outputs(1, pins(0, 7)), inputs(2, pins(0, 7)), inputs(3, pins(0, 7))},
         .wires = {{.output = 0, .input = 2}, {.output = 1, .input = 3}}},
        {.name = "TarnCurrent", .displayName = "Tarn-Current", .link = Link::ethernet,
         .modules = {system, network, sntp, currents}, .analogInputs = currentInputs({0})},
        {.name = "TarnCurrentVolt", .displayName = "Tarn-Current-Volt", .link = Link::ethernet,
         .modules = {system, network, sntp, currents}, .analogInputs = currentInputs({0, 1})},
        {.name = "TarnRelay", .displayName = "Tarn-Relay", .link = Link::ethernet,
         .modules = {system, network, sntp, dio, relay},
         .fixedFunction = true, .lines = {outputs(0, pins(0, 5)), inputs(1, pins(0, 5))},
         .wires = {{.output = 0, .input = 1}}},
        {.name = "TarnOut", .displayName = "Tarn-Out", .link = Link::ethernet,
         .modules = {system, network, sntp, aoStreaming}, .analogOutputs = {.ports = {0}, .streams = true}},
        {.name = "TarnPot", .displayName = "Tarn-Pot", .link = Link::ethernet,
         .modules = {system, network, sntp, dpot}},
        {.name = "TarnThermo", .displayName = "Tarn-Thermo", .link = Link::ethernet,
         .modules = {system, network, sntp, thermocouple}, .thermometerPorts = {1}, .thermometersPerPort = 7},

        {.name = "Lattice", .displayName = "Lattice", .link = Link::ethernet,
         .modules = {system, network, dio, slots, ai, ao, mcx514},
         .pinsPerPort = 12, .fixedFunction = true, .lines = slotLines(),
         .analogInputs = slotInputs(), .analogOutputs = {.ports = {0, 1, 3}}, .motionPorts = {0, 1, 3}},
        {.name = "LatticeLite", .displayName = "Lattice-Lite", .link = Link::ethernet,
         .modules = {system, network, dio, slots, ai, ao, mcx514},
         .pinsPerPort = 12, .fixedFunction = true, .lines = slotLines(),
         .analogInputs = slotInputs(), .analogOutputs = {.ports = {0, 1, 3}}, .motionPorts = {0, 1, 3}},
        {.name = "Pawl", .displayName = "Pawl-Drive", .link = Link::ethernet,
         .modules = {system, network, sntp, dio, tmc5240},
         .fixedFunction = true, .lines = {inputs(1, pins(0, 2)), outputs(2, pins(0, 0))}, .motionPorts = {0}},
        {.name = "Ratchet", .displayName = "Ratchet", .link = Link::ethernet,
         .modules = {system, network, sntp, mcx514}, .motionPorts = {0}},
        {.name = "Drone", .displayName = "Drone", .link = Link::serial, .modules = {drone}},
    };
    return rows;
}
// clang-format on

}  // namespace

std::span<const Model> models() { return table(); }

const Model* findModel(std::string_view name) {
    const auto found = std::ranges::find(models(), name, &Model::name);
    return found == models().end() ? nullptr : &*found;
}

}  // namespace zvr::sim
