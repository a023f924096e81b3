// The models, one row each.
#include <algorithm>
#include <string_view>

#include "core/engine/never_destroyed.h"
#include "models/model.h"

namespace zvr::python {

namespace {

using Logger = ModelFamily::Logger;

constexpr ModelFamily usb{.link = "usb", .device = "USBDevice", .connectArgument = "default", .asyncFirst = true};
constexpr ModelFamily ethernet{.link = "ethernet", .device = "ETHDevice", .connectArgument = "192.168.1.110"};
constexpr ModelFamily chassis{
    .link = "ethernet", .device = "ETHDevice", .connectArgument = "192.168.1.110", .asyncFirst = true};
constexpr ModelFamily drive{
    .link = "ethernet", .device = "ETHDevice", .connectArgument = "192.168.1.110", .logger = Logger::none};
constexpr ModelFamily wifi{.link = "wifi",
                           .device = "WifiDevice",
                           .connectArgument = "192.168.5.79",
                           .asyncFirst = true,
                           .logger = Logger::first,
                           .firstYear = 2000,
                           .nameMark = "Wifi",
                           .connectsOnce = true};
constexpr ModelFamily serial{
    .link = "serial", .device = "UARTDevice", .connectArgument = "COM5", .hasAsync = false, .logger = Logger::none};

DigitalLines eitherWay(const std::vector<Pins>& lines) { return {.inputs = lines, .outputs = lines}; }

std::vector<Pins> wholePorts(int count, int pins) {
    std::vector<Pins> map;
    for (int port = 0; port < count; ++port) map.push_back({port, 0, pins - 1});
    return map;
}

// A row that derives from a model copies it, except for the members that a derived class sets itself.
std::vector<Model> complete(std::vector<Model> rows) {
    for (Model& row : rows) {
        if (row.bases.empty()) continue;
        const auto base = std::ranges::find(rows, std::string_view(row.bases[0]), &Model::name);
        if (base == rows.end()) continue;
        Model whole = *base;
        whole.name = row.name;
        whole.displayName = row.displayName;
        whole.what = row.what;
        whole.bases = row.bases;
        row = std::move(whole);
    }
    return rows;
}

}  // namespace

// clang-format off
const std::vector<Model>& models() {
    using enum Enables;
    static const DigitalLines sable20 = eitherWay({{0, 0, 7}, {1, 0, 3}, {2, 6, 7}, {3, 0, 5}}),
                              sable21 = eitherWay({{0, 0, 7}, {1, 0, 4}, {2, 6, 7}, {3, 0, 5}});
    // Which lines the sensors have is not known for certain.
    static const TemperatureSensors sableSensors{.ports = {{1, 3, 0, 1}, {2, 3, 2, 3}}};
    static const AnalogInput sableInput{.rates = {16000, 8000, 6300, 4000, 3200, 2600, 2200, 2000},
                                        .triggerModes = 7, .variable = true},
                             heronInput{.enables = nothing, .rates = {10000}, .variable = true, .streamsPort0 = true};
    static const AnalogOutput heronOutput{.sharesLines = false};
    static const auto* const table = &neverDestroyed(complete({
        {.name = "SableDio", .displayName = "Sable-Dio", .family = &usb, .what = "26 channels of 3.3 V digital I/O.",
         .modules = {"System", "UART", "I2C", "SPI", "DIO", "PWM", "Counter", "Encoder"},
         .digital = eitherWay({{0, 0, 7}, {1, 0, 5}, {2, 0, 3}, {2, 6, 7}, {3, 0, 5}}),
         .uart = {1, 2}, .i2c = {1, 2}, .spi = {1, 2}},
        {.name = "SableAnalog", .displayName = "Sable-Analog", .family = &usb,
         .what = "20 digital channels, 8 analog inputs of 16 bits, 16 kHz.",
         .modules = {"System", "UART", "I2C", "SPI", "AI", "DIO", "PWM", "Counter", "Encoder"},
         .digital = sable20, .uart = {1, 2}, .i2c = {1, 2}, .spi = {2}, .analogInput = sableInput},
        {.name = "SableThermo", .displayName = "Sable-Thermo", .family = &usb,
         .what = "21 digital channels, 2 thermocouple inputs.",
         .modules = {"System", "UART", "I2C", "SPI", "Thermocouple", "DIO", "PWM", "Counter", "Encoder"},
         .digital = sable21, .uart = {1, 2}, .i2c = {1, 2}, .spi = {2},
         .temperature = {.ports = sableSensors.ports, .statusMode = 1}},
        {.name = "SableCan", .displayName = "Sable-Can", .family = &usb, .what = "20 digital channels, CAN V2.0B.",
         .modules = {"System", "UART", "I2C", "SPI", "CAN", "DIO", "PWM", "Counter", "Encoder"},
         .digital = sable20, .uart = {1, 2}, .i2c = {1, 2}, .spi = {2}, .can = {1}},
        {.name = "SableRtd", .displayName = "Sable-Rtd", .family = &usb, .what = "21 digital channels, 2 RTD inputs.",
         .modules = {"System", "UART", "I2C", "SPI", "ThermalResistance", "DIO", "PWM", "Counter", "Encoder"},
         .digital = sable21, .uart = {1, 2}, .i2c = {1, 2}, .spi = {2}, .temperature = sableSensors},
        {.name = "SableSink", .displayName = "Sable-Sink", .family = &usb,
         .what = "24 V digital I/O, 14 inputs and 12 outputs.",
         .modules = {"System", "DIO", "PWM", "Counter", "Encoder"},
         .digital = {.inputs = {{0, 0, 7}, {1, 0, 5}}, .outputs = {{2, 0, 7}, {3, 0, 3}}, .fixedFunction = true}},
        {.name = "SableMixed", .displayName = "Sable-Mixed", .family = &usb,
         .what = "16 digital channels, 8 analog inputs, 8 analog outputs.",
         .modules = {"System", "UART", "I2C", "AI", "AOStreaming", "DIO", "PWM", "Counter", "Encoder"},
         .digital = eitherWay({{0, 0, 7}, {1, 0, 3}, {2, 6, 7}, {3, 0, 1}}), .uart = {1, 2}, .i2c = {1, 2},
         // Which lines the outputs have is not known for certain either.
         .analogInput = sableInput,
         .analogOutput = {.ports = {{0, 1, 0, 3}, {0, 2, 6, 7}, {0, 3, 0, 1}}, .low = 0, .high = 5, .rate = 16000}},
        {.name = "HeronAnalog", .displayName = "Heron-Analog", .family = &wifi, .what = "8 analog inputs, 10 kHz.",
         .modules = {"System", "SystemAnalog", "Network", "Wifi", "AI"},
         .analogInput = heronInput},
        {.name = "HeronImu", .displayName = "Heron-Imu", .family = &wifi,
         .what = "8 analog inputs, 10 kHz, and a 9-axis inertial sensor.",
         .modules = {"System", "SystemAnalog", "Network", "Wifi", "AI", "AHRS", "SDCard"},
         .analogInput = heronInput},
        {.name = "HeronOut", .displayName = "Heron-Out", .family = &wifi,
         .what = "8 analog outputs and a 9-axis inertial sensor.",
         .modules = {"System", "SystemAnalog", "Network", "Wifi", "AO", "AHRS", "SDCard"},
         .analogOutput = heronOutput},
        {.name = "HeronMixed", .displayName = "Heron-Mixed", .family = &wifi,
         .what = "Analog inputs and outputs, 8 digital inputs and 8 outputs.",
         .modules = {"System", "SystemAnalog", "Network", "Wifi", "AI", "AO", "DIO", "SDCard"},
         .digital = {.inputs = {{2, 0, 7}}, .outputs = {{3, 0, 7}}, .fixedFunction = true},
         .analogInput = {.rates = {10000}, .variable = true, .streamsPort0 = true}, .analogOutput = heronOutput},
        {.name = "HeronFast", .displayName = "Heron-Fast", .family = &wifi, .what = "8 analog inputs, 20 kHz.",
         .modules = {"System", "SystemAnalog", "Network", "Wifi", "AI"},
         .analogInput = {.enables = nothing, .rates = {20000}, .variable = true, .streamsPort0 = true}},
        {.name = "TarnAnalog", .displayName = "Tarn-Analog", .family = &ethernet,
         .what = "8 analog inputs, 16 bits, 20 kHz.",
         .modules = {"System", "Network", "AI", "SNTP"},
         .analogInput = {.enables = nothing, .rates = {20000}, .opensByItself = true}},
        {.name = "TarnAnalog24", .displayName = "Tarn-Analog24", .family = &ethernet,
         .what = "8 analog inputs, 24 bits, 10 kHz.",
         .modules = {"System", "Network", "AI24BitStreaming", "SNTP"},
         .analogInput = {.bits = 24, .ratio = 1.3904889343373708e-6, .enables = nothing, .rates = {10000},
                         .opensByItself = true}},
        {.name = "TarnDio", .displayName = "Tarn-Dio", .family = &ethernet,
         .what = "24 V digital I/O with PWM, 8 inputs and 6 outputs.",
         .modules = {"System", "Network", "DIO", "PWM", "SNTP"},
         .digital = {.inputs = {{1, 0, 7}}, .outputs = {{0, 0, 5}}, .fixedFunction = true}},
        {.name = "TarnDioLite", .displayName = "Tarn-Dio-Lite", .family = &ethernet,
         .what = "24 V digital I/O, 16 inputs and 16 outputs.",
         .modules = {"System", "Network", "DIO", "SNTP"},
         .digital = {.inputs = {{2, 0, 7}, {3, 0, 7}}, .outputs = {{0, 0, 7}, {1, 0, 7}}}},
        {.name = "TarnCurrent", .displayName = "Tarn-Current", .family = &ethernet, .what = "8 current inputs.",
         .modules = {"System", "Network", "AI24Bit", "SNTP"},
         .analogInput = {.bits = 24, .enables = nothing, .configuresPort0 = true}},
        {.name = "TarnCurrentVolt", .displayName = "Tarn-Current-Volt", .family = &ethernet,
         .what = "8 current inputs and 8 voltage inputs.",
         .modules = {"System", "Network", "AI24Bit", "SNTP"},
         .analogInput = {.ports = {{0}, {1}}, .bits = 24, .enables = nothing, .configuresPort0 = true}},
        {.name = "TarnRelay", .displayName = "Tarn-Relay", .family = &ethernet, .what = "6 relays and 6 inputs.",
         .modules = {"System", "Network", "DIO", "Relay", "SNTP"},
         .digital = {.inputs = {{1, 0, 5}}, .outputs = {{0, 0, 5}}, .fixedFunction = true}},
        {.name = "TarnOut", .displayName = "Tarn-Out", .family = &ethernet,
         .what = "8 analog outputs, function generation.",
         .modules = {"System", "Network", "AOStreaming", "SNTP"},
         .analogOutput = {.opensByItself = true}},
        {.name = "TarnPot", .displayName = "Tarn-Pot", .family = &ethernet, .what = "4 variable resistors.",
         .modules = {"System", "Network", "DPOT", "SNTP"}},
        {.name = "TarnThermo", .displayName = "Tarn-Thermo", .family = &ethernet, .what = "7 thermocouple inputs.",
         .modules = {"System", "Network", "Thermocouple", "SNTP"},
         .temperature = {.ports = {{1}}, .sensors = 7, .sharesLines = false}},
        {.name = "Lattice", .displayName = "Lattice", .family = &chassis,
         .what = "Chassis with four slots for exchangeable modules.",
         .modules = {"System", "Network", "AI", "AO", "DIO", "MCX514"}, .countsSlots = true,
         .digital = {.inputs = wholePorts(8, 12), .outputs = wholePorts(8, 12), .pinsPerPort = 12,
                     .fixedFunction = true},
         .analogInput = {.ports = {{0}, {1}, {3}}, .enables = chipSelects, .rates = {12000, 6000, 4000},
                         .opensByItself = true},
         .analogOutput = {.ports = {{0}, {1}, {3}}, .opensByItself = true},
         .motion = {{0}, {1}, {3}}},
        {.name = "Pawl", .displayName = "Pawl-Drive", .family = &drive, .what = "Stepper drive.",
         .modules = {"System", "Network", "TMC5240", "SNTP"}},
        {.name = "Ratchet", .displayName = "Ratchet", .family = &ethernet, .what = "Motion controller.",
         .modules = {"System", "MCX514", "Network", "SNTP"}},
        {.name = "Drone", .displayName = "Drone", .family = &serial, .what = "Flight controller on a serial line.",
         .modules = {"Drone"}},
        {.name = "LatticeLite", .displayName = "Lattice-Lite", .what = "The smaller chassis.", .bases = {"Lattice"}},
        {.name = "DeviceFinder", .displayName = "Device finder", .what = "Finds devices on the network and on USB.",
         .listing = Listing::tool, .bases = {"BroadcastDevice", "BroadcastModule_async", "BroadcastModule"}},
        {.name = "DataLogger", .displayName = "Data logger", .listing = Listing::tool},
        {.name = "Bollard", .listing = Listing::announced},
    }));
    return *table;
}
// clang-format on

}  // namespace zvr::python
