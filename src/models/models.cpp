// The models as a table: what each is called, how it is reached, and what it offers.
#include "models/models.h"

#include <algorithm>
#include <functional>

#include "core/wire/bus_pins.h"
#include "device/devices.h"
#include "device/runtime.h"

namespace zvr::python {

namespace {

enum class Logging { none, first, last };

/// What a model's link decides: its device class, the argument that connects it, the order of construction, and when
/// the logger is made.
struct Family {
    const char* device;
    const char* connectArgument;
    std::vector<const char*> endings;  ///< of the classes of a module, as their constructors run
    Logging logging;
};
const Family usb{"USBDevice", "default", {"Module_async", "Module"}, Logging::last};
const Family ethernet{"ETHDevice", "192.168.1.110", {"Module", "Module_async"}, Logging::last};
const Family chassis{"ETHDevice", "192.168.1.110", {"Module_async", "Module"}, Logging::last};
const Family drive{"ETHDevice", "192.168.1.110", {"Module", "Module_async"}, Logging::none};
const Family wifi{"WifiDevice", "192.168.5.79", {"Module_async", "Module"}, Logging::first};
const Family serial{"UARTDevice", "COM5", {"Module"}, Logging::none};

/// A module of a model: the maps and numbers that its constructor takes, and a usual port of each of its functions.
struct ModuleUse {
    std::string prefix;
    std::function<py::tuple()> arguments = [] { return py::tuple(); };
    std::vector<std::pair<const char*, int>> usualPorts = {};
    const char* release = nullptr;  ///< ends the module's threads
};

struct Model {
    const char* name;
    const char* displayName;
    const Family& family;
    const char* what;
    std::vector<ModuleUse> modules;
};

/// Port and its pins, from the first to the last; a port may have several entries.
struct Pins {
    int port;
    int first;
    int last;
};
using PinMap = std::vector<Pins>;

py::dict toDict(const PinMap& map) {
    py::dict dict;
    for (const auto& [port, first, last] : map) {
        py::list pins = dict.attr("setdefault")(port, py::list());
        for (int pin = first; pin <= last; ++pin) pins.append(pin);
    }
    return dict;
}

ModuleUse dio(const PinMap& inputs, const PinMap& outputs, int pinsPerPort = 8) {
    return {"DIO",
            [=] { return py::make_tuple(toDict(inputs), toDict(outputs), pinsPerPort); },
            {{"DI", inputs[0].port}, {"DO", outputs[0].port}}};
}
ModuleUse dio(const PinMap& both, int pinsPerPort = 8) { return dio(both, both, pinsPerPort); }

PinMap slots() {
    PinMap map;
    for (int port = 0; port < 8; ++port) map.push_back({port, 0, 11});
    return map;
}

constexpr double voltsPerCount = 0.00030517578125;  // 10 / 32768
constexpr double voltsPerCount24 = 1.3904889343373708e-6;

/// Ports of a function, and what each has: lines as pairs of digital port and pin, or chips that have no lines.
using PortMap = std::function<py::dict()>;

PortMap chips(const std::vector<int>& ports) {
    return [ports] {
        py::dict map;
        for (const int port : ports) {
            py::list chip;
            chip.append(0);
            map[py::int_(port)] = chip;
        }
        return map;
    };
}

// Which lines these are is not known for certain; see the page of choices.
PortMap assumedLines(const std::vector<std::pair<int, Pins>>& ports) {
    return [ports] {
        py::dict map;
        for (const auto& [port, pins] : ports) {
            py::list lines;
            for (int pin = pins.first; pin <= pins.last; ++pin) lines.append(py::make_tuple(pins.port, pin));
            map[py::int_(port)] = lines;
        }
        return map;
    };
}

// Which lines these are is assumed too.
ModuleUse bus(const char* prefix, Bus kind, const std::vector<int>& ports, const char* release = nullptr) {
    const auto map = [=] {
        py::dict lines;
        for (const BusLines& each : busLines) {
            if (each.bus != kind || std::ranges::find(ports, each.port) == ports.end()) continue;
            py::list pins;
            for (int pin = each.firstPin; pin <= each.lastPin; ++pin) {
                pins.append(py::make_tuple(each.digitalPort, pin));
            }
            lines[py::int_(each.port)] = pins;
        }
        return py::make_tuple(lines);
    };
    return {prefix, map, {{prefix, ports[0]}}, release};
}

ModuleUse input16(int maxRate, bool variable, const PortMap& map = chips({0})) {
    return {"AI", [=] { return py::make_tuple(map(), maxRate, voltsPerCount, 8, variable); }, {{"AI", 0}}, "_AI_free"};
}

ModuleUse input24(int maxRate) {
    return {"AI24BitStreaming",
            [=] { return py::make_tuple(chips({0})(), maxRate, voltsPerCount24, 8); },
            {{"AI", 0}},
            "_AI_free"};
}

ModuleUse currents(const std::vector<int>& ports) {
    return {"AI24Bit", [=] { return py::make_tuple(chips(ports)()); }, {{"AI", 0}}};
}

ModuleUse output(const char* prefix, int low, int high, int maxRate, const PortMap& map = chips({0})) {
    return {prefix, [=] { return py::make_tuple(map(), low, high, 8, maxRate); }, {{"AO", 0}}};
}

// A thermocouple box has seven sensors on its one port, the others two on each.
ModuleUse thermal(const char* prefix, const PortMap& map) {
    return {prefix, [=] { return py::make_tuple(map()); }, {{"Thermal", 1}}};
}
PortMap channels(int port, int count) {
    return [=] { return toDict({{port, 0, count - 1}}); };
}

ModuleUse attitude() {
    return {"AHRS", [] { return py::make_tuple(chips({0})()); }, {{"AHRS", 0}}};
}

ModuleUse motion(const char* prefix, int usualPort, const PortMap& map = chips({0})) {
    return {prefix, [=] { return py::make_tuple(map()); }, {{"Motion", usualPort}}};
}

ModuleUse simple(const char* prefix) { return {prefix}; }
ModuleUse onPort0(const char* prefix) {
    return {prefix, [] { return py::tuple(); }, {{prefix, 0}}};
}

const std::vector<Model>& models() {
    static const ModuleUse system = simple("System"), network = simple("Network"), radio = simple("Wifi"),
                           sensors = simple("SystemAnalog"), sntp = simple("SNTP"), card = simple("SDCard"),
                           uart = bus("UART", Bus::uart, {1, 2}, "_UART_free"), i2c = bus("I2C", Bus::i2c, {1, 2}),
                           spi = bus("SPI", Bus::spi, {1, 2}), spi2 = bus("SPI", Bus::spi, {2}),
                           can = bus("CAN", Bus::can, {1}, "_CAN_free"), pwm = onPort0("PWM"),
                           counter = onPort0("Counter"), encoder = onPort0("Encoder");
    static const PinMap sable20 = {{0, 0, 7}, {1, 0, 3}, {2, 6, 7}, {3, 0, 5}},
                        sable21 = {{0, 0, 7}, {1, 0, 4}, {2, 6, 7}, {3, 0, 5}};
    static const PortMap sableSensors = assumedLines({{1, {3, 0, 1}}, {2, {3, 2, 3}}});
    static const std::vector<Model> table = {
        {"SableDio",
         "Sable-Dio",
         usb,
         "26 channels of 3.3 V digital I/O.",
         {system, uart, i2c, spi, dio({{0, 0, 7}, {1, 0, 5}, {2, 0, 3}, {2, 6, 7}, {3, 0, 5}}), pwm, counter, encoder}},
        {"SableAnalog",
         "Sable-Analog",
         usb,
         "20 digital channels, 8 analog inputs of 16 bits, 16 kHz.",
         {system, uart, i2c, spi2, input16(16000, true), dio(sable20), pwm, counter, encoder}},
        {"SableThermo",
         "Sable-Thermo",
         usb,
         "21 digital channels, 2 thermocouple inputs.",
         {system, uart, i2c, spi2, thermal("Thermocouple", sableSensors), dio(sable21), pwm, counter, encoder}},
        {"SableCan",
         "Sable-Can",
         usb,
         "20 digital channels, CAN V2.0B.",
         {system, uart, i2c, spi2, can, dio(sable20), pwm, counter, encoder}},
        {"SableRtd",
         "Sable-Rtd",
         usb,
         "21 digital channels, 2 RTD inputs.",
         {system, uart, i2c, spi2, thermal("ThermalResistance", sableSensors), dio(sable21), pwm, counter, encoder}},
        {"SableSink",
         "Sable-Sink",
         usb,
         "24 V digital I/O, 14 inputs and 12 outputs.",
         {system, dio({{0, 0, 7}, {1, 0, 5}}, {{2, 0, 7}, {3, 0, 3}}), pwm, counter, encoder}},
        {"SableMixed",
         "Sable-Mixed",
         usb,
         "16 digital channels, 8 analog inputs, 8 analog outputs.",
         {system, uart, i2c, input16(16000, true), output("AOStreaming", 0, 5, 16000, assumedLines({{0, {0, 0, 7}}})),
          dio({{0, 0, 7}, {1, 0, 3}, {2, 6, 7}, {3, 0, 1}}), pwm, counter, encoder}},
        {"HeronAnalog",
         "Heron-Analog",
         wifi,
         "8 analog inputs, 10 kHz.",
         {system, sensors, network, radio, input16(10000, true)}},
        {"HeronImu",
         "Heron-Imu",
         wifi,
         "8 analog inputs, 10 kHz, and a 9-axis inertial sensor.",
         {system, sensors, network, radio, input16(10000, true), attitude(), card}},
        {"HeronOut",
         "Heron-Out",
         wifi,
         "8 analog outputs and a 9-axis inertial sensor.",
         {system, sensors, network, radio, output("AO", -10, 10, 15000), attitude(), card}},
        {"HeronMixed",
         "Heron-Mixed",
         wifi,
         "Analog inputs and outputs, 8 digital inputs and 8 outputs.",
         {system, sensors, network, radio, input16(10000, true), output("AO", -10, 10, 15000),
          dio({{2, 0, 7}}, {{3, 0, 7}}), card}},
        {"HeronFast",
         "Heron-Fast",
         wifi,
         "8 analog inputs, 20 kHz.",
         {system, sensors, network, radio, input16(20000, true)}},
        {"TarnAnalog",
         "Tarn-Analog",
         ethernet,
         "8 analog inputs, 16 bits, 20 kHz.",
         {system, network, input16(20000, false), sntp}},
        {"TarnAnalog24",
         "Tarn-Analog24",
         ethernet,
         "8 analog inputs, 24 bits, 10 kHz.",
         {system, network, input24(10000), sntp}},
        {"TarnDio",
         "Tarn-Dio",
         ethernet,
         "24 V digital I/O with PWM, 8 inputs and 6 outputs.",
         {system, network, dio({{1, 0, 7}}, {{0, 0, 5}}), pwm, sntp}},
        {"TarnDioLite",
         "Tarn-Dio-Lite",
         ethernet,
         "24 V digital I/O, 16 inputs and 16 outputs.",
         {system, network, dio({{2, 0, 7}, {3, 0, 7}}, {{0, 0, 7}, {1, 0, 7}}), sntp}},
        {"TarnCurrent", "Tarn-Current", ethernet, "8 current inputs.", {system, network, currents({0}), sntp}},
        {"TarnCurrentVolt",
         "Tarn-Current-Volt",
         ethernet,
         "8 current inputs and 8 voltage inputs.",
         {system, network, currents({0, 1}), sntp}},
        {"TarnRelay",
         "Tarn-Relay",
         ethernet,
         "6 relays and 6 inputs.",
         {system, network, dio({{1, 0, 5}}, {{0, 0, 5}}), onPort0("Relay"), sntp}},
        {"TarnOut",
         "Tarn-Out",
         ethernet,
         "8 analog outputs, function generation.",
         {system, network, output("AOStreaming", -10, 10, 15000), sntp}},
        {"TarnPot", "Tarn-Pot", ethernet, "4 variable resistors.", {system, network, onPort0("DPOT"), sntp}},
        {"TarnThermo",
         "Tarn-Thermo",
         ethernet,
         "7 thermocouple inputs.",
         {system, network, thermal("Thermocouple", channels(1, 7)), sntp}},
        {"Lattice",
         "Lattice",
         chassis,
         "Chassis with four slots for exchangeable modules.",
         {system, network, input16(12000, false, chips({0, 1, 3})), output("AO", -10, 10, 15000, chips({0, 1, 3})),
          dio(slots(), 12), motion("MCX514", 1, chips({0, 1, 3}))}},
        {"Pawl", "Pawl-Drive", drive, "Stepper drive.", {system, network, motion("TMC5240", 0), sntp}},
        {"Ratchet", "Ratchet", ethernet, "Motion controller.", {system, motion("MCX514", 0), network, sntp}},
        {"Drone", "Drone", serial, "Flight controller on a serial line.", {simple("Drone")}},
    };
    return table;
}

std::vector<std::string> basesOf(const Model& model) {
    std::vector<std::string> bases{model.family.device};
    if (model.family.logging != Logging::none) bases.emplace_back("DataLogger");
    for (const char* ending : {"Module", "Module_async"}) {
        if (std::ranges::find(model.family.endings, std::string_view(ending)) == model.family.endings.end()) continue;
        for (const ModuleUse& use : model.modules) bases.push_back(use.prefix + ending);
    }
    return bases;
}

// The bases are not chained: each constructor is called by class, the device's first, with what the model offers.
void construct(const Model& model, py::handle self) {
    callOf(model.family.device, "__init__", self);
    if (model.family.logging == Logging::first) callOf("DataLogger", "__init__", self);
    for (const char* ending : model.family.endings) {
        for (const ModuleUse& use : model.modules) {
            const py::tuple offered = use.arguments();
            attribute(classNamed((use.prefix + ending).c_str()), "__init__")(self, *offered);
        }
    }
    if (model.family.logging == Logging::last) callOf("DataLogger", "__init__", self);
}

// The device first, then the logger, then what else has threads; each even if the one before failed.
void close(const Model& model, py::handle self, const Object& verbose) {
    if (isKilled(self)) return;
    std::vector<std::function<void()>> steps;
    steps.emplace_back([&] { callOf(model.family.device, "close", self, verbose); });
    if (model.family.logging != Logging::none) steps.emplace_back([&] { callMethod(self, "_Logger_close"); });
    for (const ModuleUse& use : model.modules) {
        if (use.release != nullptr) steps.emplace_back([&] { callMethod(self, use.release); });
    }
    std::exception_ptr first;
    for (const auto& step : steps) {
        try {
            step();
        } catch (...) {
            if (!first) first = std::current_exception();
        }
    }
    if (first) std::rethrow_exception(first);
}

// A Wi-Fi model has a test of its own before each step, so that a second `connect` opens no second data connection.
void defineWifiLink(ClassMaker& type) {
    type.method(
            {.name = "connect",
             .parameters = wifiConnectParameters(),
             .doc = "Connects commands and data; does nothing if it is connected.",
             .raises =
                 {"NetworkConnectionError: the device is not reached within 5 seconds; after a failed data side the "
                  "command side is connected, and disconnect ends it"},
             .body =
                 [](py::handle self, const Object& address, const Object& dataPort, const Object& commandPort,
                    const Object& verbose) {
                     if (isTrue(self, "connect_status_cmd")) return;
                     callOf("WifiDevice", "connect", self, address, dataPort, commandPort, verbose);
                 }})
        .method({.name = "disconnect",
                 .parameters = {verboseParameter},
                 .doc = "Ends both connections; does nothing if there is none.",
                 .raises = {"NetworkConnectionLostError: a connection was lost before"},
                 .body = [](py::handle self, const Object& verbose) {
                     if (isTrue(self, "connect_status_cmd")) callOf("WifiDevice", "disconnect", self, verbose);
                 }});
}

py::dict usualPortsOf(const Model& model) {
    py::dict ports;
    for (const ModuleUse& use : model.modules) {
        for (const auto& [function, port] : use.usualPorts) ports[function] = port;
    }
    return ports;
}

}  // namespace

void defineModels(Package& package) {
    py::dict labels, connectArguments, usualPorts;
    py::list handles;
    for (const Model& model : models()) {  // the table is there for good
        ClassMaker type =
            package.makeClass(model.name, basesOf(model), std::string(model.displayName) + ": " + model.what);
        type.method({.name = "__init__",
                     .doc = "Makes a handle and starts its threads.",
                     .body = [&model](py::handle self) { construct(model, self); }})
            .method({.name = "close",
                     .parameters = {verboseParameter},
                     .doc = "Ends connection, file and threads for good; a second call does nothing.",
                     .raises = {"NetworkConnectionLostError: the connection was lost before",
                                "OSError: the disk refuses the rest of the log; everything is ended all the same"},
                     .body = [&model](py::handle self, const Object& verbose) { close(model, self, verbose); }});
        if (&model.family == &wifi) defineWifiLink(type);
        const auto name = py::str(model.name);
        labels[name] = model.displayName;
        connectArguments[name] = model.family.connectArgument;
        usualPorts[name] = usualPortsOf(model);
        handles.append(name);
    }
    package.makeClass("LatticeLite", {"Lattice"}, "Lattice-Lite: the smaller chassis.");
    labels["LatticeLite"] = "Lattice-Lite";
    for (const py::dict& table : {connectArguments, usualPorts}) table["LatticeLite"] = table["Lattice"];
    handles.append("LatticeLite");
    package.makeClass("DeviceFinder", {"BroadcastDevice", "BroadcastModule_async", "BroadcastModule"},
                      "Device finder: finds devices on the network and on USB.");
    labels["DeviceFinder"] = "Device finder";
    labels["DataLogger"] = "Data logger";

    py::list products = handles.attr("copy")();
    products.append("Bollard");  // announced, without a class
    package.constant("LABEL_DICT", labels);
    package.constant("PRODUCT_LIST", products);
    package.constant("HANDLE_LIST", handles);
    package.constant("HANDLE_DICT", connectArguments);
    package.constant("HANDLE_PROPERTIES", usualPorts);
}

}  // namespace zvr::python
