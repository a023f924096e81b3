// The models as a table: what each is called, how it is reached, and what it offers.
#include "models/models.h"

#include <algorithm>
#include <functional>

#include "devices/devices.h"
#include "protocol/runtime.h"

namespace zvr::python {

namespace {

/// What a model's link decides: its device class, the argument that connects it, and the order of construction.
struct Family {
    const char* device;
    const char* connectArgument;
    std::vector<const char*> endings;  ///< of the classes of a module, as their constructors run
};
const Family usb{"USBDevice", "default", {"Module_async", "Module"}};
const Family ethernet{"ETHDevice", "192.168.1.110", {"Module", "Module_async"}};
const Family chassis{"ETHDevice", "192.168.1.110", {"Module_async", "Module"}};
const Family wifi{"WifiDevice", "192.168.5.79", {"Module_async", "Module"}};
const Family serial{"UARTDevice", "COM5", {"Module"}};

/// A module of a model: the maps and numbers that its constructor takes, and a usual port of each of its functions.
struct ModuleUse {
    std::string prefix;
    std::function<py::tuple()> arguments = [] { return py::tuple(); };
    std::vector<std::pair<const char*, int>> usualPorts = {};
};

struct Model {
    const char* name;
    const char* displayName;
    const Family& family;
    const char* what;
    std::vector<ModuleUse> modules;
    std::vector<const char*> toCome = {};  ///< modules that the device has and the library does not have yet
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

ModuleUse simple(const char* prefix) { return {prefix}; }
ModuleUse onPort0(const char* prefix) {
    return {prefix, [] { return py::tuple(); }, {{prefix, 0}}};
}

// clang-format off
const std::vector<Model>& models() {
    static const ModuleUse system = simple("System"), network = simple("Network"), radio = simple("Wifi"),
                           sensors = simple("SystemAnalog"), sntp = simple("SNTP"), card = simple("SDCard"),
                           pwm = onPort0("PWM"), counter = onPort0("Counter"), encoder = onPort0("Encoder");
    static const PinMap sable20 = {{0, 0, 7}, {1, 0, 3}, {2, 6, 7}, {3, 0, 5}},
                        sable21 = {{0, 0, 7}, {1, 0, 4}, {2, 6, 7}, {3, 0, 5}};
    static const std::vector<Model> table = {
        {"SableDio", "Sable-Dio", usb, "26 channels of 3.3 V digital I/O.",
            {system, dio({{0, 0, 7}, {1, 0, 5}, {2, 0, 3}, {2, 6, 7}, {3, 0, 5}}), pwm, counter, encoder},
            {"UART", "I2C", "SPI", "DataLogger"}},
        {"SableAnalog", "Sable-Analog", usb, "20 digital channels, 8 analog inputs of 16 bits, 16 kHz.",
            {system, dio(sable20), pwm, counter, encoder}, {"UART", "I2C", "SPI", "AI", "DataLogger"}},
        {"SableThermo", "Sable-Thermo", usb, "21 digital channels, 2 thermocouple inputs.",
            {system, dio(sable21), pwm, counter, encoder}, {"UART", "I2C", "SPI", "Thermocouple", "DataLogger"}},
        {"SableCan", "Sable-Can", usb, "20 digital channels, CAN V2.0B.",
            {system, dio(sable20), pwm, counter, encoder}, {"UART", "I2C", "SPI", "CAN", "DataLogger"}},
        {"SableRtd", "Sable-Rtd", usb, "21 digital channels, 2 RTD inputs.",
            {system, dio(sable21), pwm, counter, encoder}, {"UART", "I2C", "SPI", "ThermalResistance", "DataLogger"}},
        {"SableSink", "Sable-Sink", usb, "24 V digital I/O, 14 inputs and 12 outputs.",
            {system, dio({{0, 0, 7}, {1, 0, 5}}, {{2, 0, 7}, {3, 0, 3}}), pwm, counter, encoder}, {"DataLogger"}},
        {"SableMixed", "Sable-Mixed", usb, "16 digital channels, 8 analog inputs, 8 analog outputs.",
            {system, dio({{0, 0, 7}, {1, 0, 3}, {2, 6, 7}, {3, 0, 1}}), pwm, counter, encoder},
            {"UART", "I2C", "AI", "AOStreaming", "DataLogger"}},
        {"HeronAnalog", "Heron-Analog", wifi, "8 analog inputs, 10 kHz.",
            {system, sensors, network, radio}, {"AI", "DataLogger"}},
        {"HeronImu", "Heron-Imu", wifi, "8 analog inputs, 10 kHz, and a 9-axis inertial sensor.",
            {system, sensors, network, radio, card}, {"AI", "AHRS", "DataLogger"}},
        {"HeronOut", "Heron-Out", wifi, "8 analog outputs and a 9-axis inertial sensor.",
            {system, sensors, network, radio, card}, {"AO", "AHRS", "DataLogger"}},
        {"HeronMixed", "Heron-Mixed", wifi, "Analog inputs and outputs, 8 digital inputs and 8 outputs.",
            {system, sensors, network, radio, dio({{2, 0, 7}}, {{3, 0, 7}}), card}, {"AI", "AO", "DataLogger"}},
        {"HeronFast", "Heron-Fast", wifi, "8 analog inputs, 20 kHz.",
            {system, sensors, network, radio}, {"AI", "DataLogger"}},
        {"TarnAnalog", "Tarn-Analog", ethernet, "8 analog inputs, 16 bits, 20 kHz.",
            {system, network, sntp}, {"AI", "DataLogger"}},
        {"TarnAnalog24", "Tarn-Analog24", ethernet, "8 analog inputs, 24 bits, 10 kHz.",
            {system, network, sntp}, {"AI24BitStreaming", "DataLogger"}},
        {"TarnDio", "Tarn-Dio", ethernet, "24 V digital I/O with PWM, 8 inputs and 6 outputs.",
            {system, network, dio({{1, 0, 7}}, {{0, 0, 5}}), pwm, sntp}, {"DataLogger"}},
        {"TarnDioLite", "Tarn-Dio-Lite", ethernet, "24 V digital I/O, 16 inputs and 16 outputs.",
            {system, network, dio({{2, 0, 7}, {3, 0, 7}}, {{0, 0, 7}, {1, 0, 7}}), sntp}, {"DataLogger"}},
        {"TarnCurrent", "Tarn-Current", ethernet, "8 current inputs.",
            {system, network, sntp}, {"AI24Bit", "DataLogger"}},
        {"TarnCurrentVolt", "Tarn-Current-Volt", ethernet, "8 current inputs and 8 voltage inputs.",
            {system, network, sntp}, {"AI24Bit", "DataLogger"}},
        {"TarnRelay", "Tarn-Relay", ethernet, "6 relays and 6 inputs.",
            {system, network, dio({{1, 0, 5}}, {{0, 0, 5}}), sntp}, {"Relay", "DataLogger"}},
        {"TarnOut", "Tarn-Out", ethernet, "8 analog outputs, function generation.",
            {system, network, sntp}, {"AOStreaming", "DataLogger"}},
        {"TarnPot", "Tarn-Pot", ethernet, "4 variable resistors.",
            {system, network, sntp}, {"DPOT", "DataLogger"}},
        {"TarnThermo", "Tarn-Thermo", ethernet, "7 thermocouple inputs.",
            {system, network, sntp}, {"Thermocouple", "DataLogger"}},
        {"Lattice", "Lattice", chassis, "Chassis with four slots for exchangeable modules.",
            {system, network, dio(slots(), 12)}, {"AI", "AO", "MCX514", "DataLogger"}},
        {"Pawl", "Pawl-Drive", ethernet, "Stepper drive.",
            {system, network, sntp}, {"TMC5240"}},
        {"Ratchet", "Ratchet", ethernet, "Motion controller.",
            {system, network, sntp}, {"MCX514", "DataLogger"}},
        {"Drone", "Drone", serial, "Flight controller on a serial line.", {simple("Drone")}},
    };
    return table;
}
// clang-format on

std::vector<std::string> basesOf(const Model& model) {
    std::vector<std::string> bases{model.family.device};
    for (const char* ending : {"Module", "Module_async"}) {
        if (std::ranges::find(model.family.endings, std::string_view(ending)) == model.family.endings.end()) continue;
        for (const ModuleUse& use : model.modules) bases.push_back(use.prefix + ending);
    }
    return bases;
}

std::string docOf(const Model& model) {
    std::string doc = std::string(model.displayName) + ": " + model.what;
    for (std::size_t i = 0; i < model.toCome.size(); ++i) {
        doc += (i == 0 ? "\n\nNot in the library yet: " : ", ") + std::string(model.toCome[i]);
    }
    return doc + (model.toCome.empty() ? "" : ".");
}

// The bases are not chained: each constructor is called by class, the device's first, with what the model offers.
Object construct(const Definition& definition, py::handle self, Arguments /*unused*/) {
    const Model& model = models()[definition.tag];
    callOf(model.family.device, "__init__", self);
    for (const char* ending : model.family.endings) {
        for (const ModuleUse& use : model.modules) {
            const py::tuple offered = use.arguments();
            attribute(classNamed((use.prefix + ending).c_str()), "__init__")(self, *offered);
        }
    }
    return py::none();
}

// A Wi-Fi model has a test of its own before each step, so that a second `connect` opens no second data connection.
void defineWifiLink(ClassMaker& type) {
    type.method("connect", wifiConnectParameters(), "Connects commands and data; does nothing if it is connected.", {},
                {"NetworkConnectionError: the device is not reached within 5 seconds; after a failed data side the "
                 "command side is connected, and disconnect ends it"},
                [](py::handle self, const Object& address, const Object& dataPort, const Object& commandPort,
                   const Object& verbose) {
                    if (isTrue(self, "connect_status_cmd")) return;
                    callOf("WifiDevice", "connect", self, address, dataPort, commandPort, verbose);
                })
        .method("disconnect", {verboseParameter}, "Ends both connections; does nothing if there is none.", {},
                {"NetworkConnectionLostError: a connection was lost before"},
                [](py::handle self, const Object& verbose) {
                    if (isTrue(self, "connect_status_cmd")) callOf("WifiDevice", "disconnect", self, verbose);
                });
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
    for (std::size_t i = 0; i < models().size(); ++i) {
        const Model& model = models()[i];
        ClassMaker type = package.makeClass(model.name, basesOf(model), docOf(model));
        Definition constructor{"__init__", {}, "Makes a handle and starts its threads.", {}, {}, construct};
        constructor.tag = i;
        type.add(std::move(constructor), Form::method);
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
