// The product classes, made from the rows.
#include "models/models.h"

#include <algorithm>
#include <array>
#include <functional>

#include "core/wire/bus_pins.h"
#include "device/devices.h"
#include "device/runtime.h"
#include "models/traits.h"

namespace zvr::python {

namespace {

py::dict toDict(const std::vector<Pins>& lines) {
    py::dict map;
    for (const auto& [port, first, last] : lines) {
        py::list pins = map.attr("setdefault")(port, py::list());
        for (int pin = first; pin <= last; ++pin) pins.append(pin);
    }
    return map;
}

py::dict toDict(const Ports& ports) {
    py::dict map;
    for (const Port& port : ports) {
        py::list entries = map.attr("setdefault")(port.number, py::list());
        for (int number = port.first; number <= port.last; ++number) {
            entries.append(port.linesOn ? py::make_tuple(*port.linesOn, number) : Object(py::int_(number)));
        }
    }
    return map;
}

py::tuple mapOf(const Ports& ports) { return py::make_tuple(toDict(ports)); }

py::tuple linesOf(Bus bus, const std::vector<int>& numbers) {
    Ports ports;
    for (const BusLines& each : busLines) {
        if (each.bus != bus || std::ranges::count(numbers, each.port) == 0) continue;
        ports.push_back({each.port, each.digitalPort, each.firstPin, each.lastPin});
    }
    return mapOf(ports);
}

py::tuple nothing(const Model& /*model*/) { return py::tuple(); }

py::tuple temperatureArguments(const Model& model) {
    Ports ports = model.temperature.ports;
    for (Port& port : ports) port.last = port.linesOn ? port.last : model.temperature.sensors - 1;
    return mapOf(ports);
}
py::tuple motionArguments(const Model& model) { return mapOf(model.motion); }
py::tuple inputArguments(const Model& model) {
    const AnalogInput& input = model.analogInput;
    return py::make_tuple(toDict(input.ports), input.rates.at(0), input.ratio, input.channels);
}
py::tuple outputArguments(const Model& model) {
    const AnalogOutput& output = model.analogOutput;
    return py::make_tuple(toDict(output.ports), output.low, output.high, output.channels, output.rate);
}

/// A module's constructor arguments from the row, and its functions; each has the ports of one argument, or port 0
/// only.
struct ModuleKind {
    std::string_view prefix;               ///< of its classes
    py::tuple (*arguments)(const Model&);  ///< of its constructor
    std::vector<const char*> functions = {};
    const char* release = nullptr;  ///< ends its threads
    bool hasSlots = false;          ///< whether its ports are counted as slots on models with slots
};

const ModuleKind& kindOf(std::string_view prefix) {
    static const ModuleKind kinds[] = {
        {"DIO",
         [](const Model& model) -> py::tuple {  // newer pybind11 versions return a distinct tuple type
             const DigitalLines& lines = model.digital;
             return py::make_tuple(toDict(lines.inputs), toDict(lines.outputs), lines.pinsPerPort);
         },
         {"DI", "DO"}},
        {"UART", [](const Model& model) { return linesOf(Bus::uart, model.uart); }, {"UART"}, "_UART_free"},
        {"I2C", [](const Model& model) { return linesOf(Bus::i2c, model.i2c); }, {"I2C"}},
        {"SPI", [](const Model& model) { return linesOf(Bus::spi, model.spi); }, {"SPI"}},
        {"CAN", [](const Model& model) { return linesOf(Bus::can, model.can); }, {"CAN"}, "_CAN_free"},
        {"AI",
         [](const Model& model) {
             return py::tuple(inputArguments(model) + py::make_tuple(model.analogInput.variable));
         },
         {"AI"},
         "_AI_free",
         true},
        {"AI24BitStreaming", inputArguments, {"AI"}, "_AI_free", true},
        {"AI24Bit", [](const Model& model) { return mapOf(model.analogInput.ports); }, {"AI"}},
        {"AO", outputArguments, {"AO"}, nullptr, true},
        {"AOStreaming", outputArguments, {"AO"}, nullptr, true},
        {"Thermocouple", temperatureArguments, {"Thermal"}},
        {"ThermalResistance", temperatureArguments, {"Thermal"}},
        {"AHRS", [](const Model& model) { return mapOf(model.attitude); }, {"AHRS"}},
        {"MCX514", motionArguments, {"Motion"}, nullptr, true},
        {"TMC5240", motionArguments, {"Motion"}},
        {"PWM", nothing, {"PWM"}},
        {"Counter", nothing, {"Counter"}},
        {"Encoder", nothing, {"Encoder"}},
        {"Relay", nothing, {"Relay"}},
        {"DPOT", nothing, {"DPOT"}},
    };
    static const ModuleKind simple{"", nothing};
    const auto* const found = std::ranges::find(kinds, prefix, &ModuleKind::prefix);
    return found == std::end(kinds) ? simple : *found;
}

std::vector<std::string> basesOf(const Model& model) {
    if (!model.bases.empty()) return {model.bases.begin(), model.bases.end()};
    const ModelFamily& family = *model.family;
    std::vector<std::string> bases{family.device};
    if (family.logger != ModelFamily::Logger::none) bases.emplace_back("DataLogger");
    for (const char* module : model.modules) bases.push_back(std::string(module) + "Module");
    if (!family.hasAsync) return bases;
    for (const char* module : model.modules) bases.push_back(std::string(module) + "Module_async");
    return bases;
}

void constructModules(const Model& model, py::handle self, const char* ending) {
    for (const char* module : model.modules) {
        const py::tuple offered = kindOf(module).arguments(model);
        attribute(classNamed((std::string(module) + ending).c_str()), "__init__")(self, *offered);
    }
}

// The bases do not call super(): each constructor is called by class, the device's first, with the model's resources.
void construct(const Model& model, py::handle self, const Object& verbose) {
    const ModelFamily& family = *model.family;
    callOf(family.device, "__init__", self, verbose);
    if (family.logger == ModelFamily::Logger::first) callOf("DataLogger", "__init__", self);
    if (family.hasAsync && family.asyncFirst) constructModules(model, self, "Module_async");
    constructModules(model, self, "Module");
    if (family.hasAsync && !family.asyncFirst) constructModules(model, self, "Module_async");
    if (family.logger == ModelFamily::Logger::last) callOf("DataLogger", "__init__", self);
}

// Closes the device, then the logger, then all else that has threads; each step runs even if the previous one failed.
void close(const Model& model, py::handle self, const Object& verbose) {
    if (isKilled(self)) return;
    std::vector<std::function<void()>> steps;
    steps.emplace_back([&] { callOf(model.family->device, "close", self, verbose); });
    if (isForeign(self)) return steps[0]();  // the threads of all the rest are the parent's
    if (model.family->logger != ModelFamily::Logger::none)
        steps.emplace_back([&] { callMethod(self, "_Logger_close"); });
    for (const char* module : model.modules) {
        const char* const release = kindOf(module).release;
        if (release != nullptr) steps.emplace_back([&self, release] { callMethod(self, release); });
    }
    std::exception_ptr first;
    for (const auto& step : steps) {
        try {
            step();
        } catch (...) {
            if (!first) first = caught();
        }
    }
    if (first) std::rethrow_exception(first);
}

// A Wi-Fi model checks the state before each step, so that a second `connect` opens no second data connection.
void defineConnectingOnce(ClassMaker& type) {
    type.method({.name = "connect",
                 .parameters = wifiConnectParameters(),
                 .doc = "Connects commands and data; does nothing if it is connected.",
                 .raises = {"NetworkConnectionError: the device is not reached within 5 seconds; after a failed data "
                            "side the command side is connected, and disconnect ends it",
                            "NetworkConnectionLostError: the handle is disconnected or closed meanwhile, or another "
                            "connect of it begins"},
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
                     endConnects(self);
                     if (isTrue(self, "connect_status_cmd")) callOf("WifiDevice", "disconnect", self, verbose);
                 }});
}

// The first port of each function, in the caller's numbering.
py::dict usualPortsOf(const Model& model) {
    py::dict ports;
    for (const char* module : model.modules) {
        const ModuleKind& kind = kindOf(module);
        const py::tuple offered = kind.arguments(model);
        for (std::size_t i = 0; i < kind.functions.size(); ++i) {
            const Object first = offered.empty() ? Object(py::int_(0)) : Object(py::list(offered[i])[0]);
            ports[kind.functions[i]] = first + py::int_(int{kind.hasSlots && model.countsSlots});
        }
    }
    return ports;
}

// The traits that are not fields of an object.
py::dict describe(const Model& model) {
    const AnalogInput& input = model.analogInput;
    constexpr std::array enabled{"channels", "chip_selects", "nothing"};
    py::dict traits;
    py::list rates;
    for (const int rate : input.rates) rates.append(rate);
    traits["model"] = model.name;
    traits["first_year"] = model.family->firstYear;
    traits["counts_slots"] = model.countsSlots;
    traits["fixed_function"] = model.digital.fixedFunction;
    traits["bits"] = input.bits;
    traits["enables"] = enabled.at(static_cast<std::size_t>(input.enables));
    traits["max_rates"] = rates;
    traits["sensors"] = model.temperature.sensors;
    return traits;
}

// The rows have static lifetime.
void defineOwnMethods(ClassMaker& type, const Model& model) {
    type.method({.name = "__init__",
                 .parameters = {verboseParameter},
                 .doc = "Makes a handle and starts its threads.",
                 .body = [&model](py::handle self, const Object& verbose) { construct(model, self, verbose); }})
        .method({.name = "close",
                 .parameters = {verboseParameter},
                 .doc = "Closes connection, file and threads for good; a second call does nothing. Where there is a "
                        "connection, its end is printed in any case (compatibility note 31).",
                 .raises = {"NetworkConnectionLostError: the connection was lost before",
                            "OSError: the rest of the log cannot be written; everything is closed nevertheless"},
                 .body = [&model](py::handle self, const Object& verbose) { close(model, self, verbose); }});
    if (model.family->connectsOnce) defineConnectingOnce(type);
}

}  // namespace

void defineModels(Package& package) {
    py::dict labels, connectArguments, usualPorts;
    py::list handles, products;
    for (const Model& model : models()) {
        const bool isModel = model.listing == Listing::model;
        if (isModel || !model.bases.empty()) {
            ClassMaker type =
                package.makeClass(model.name, basesOf(model), std::string(model.displayName) + ": " + model.what);
            if (model.bases.empty()) defineOwnMethods(type, model);
        }
        const auto name = py::str(model.name);
        if (model.listing != Listing::tool) products.append(name);
        if (model.listing != Listing::announced) labels[name] = model.displayName;
        if (!isModel) continue;
        connectArguments[name] = model.family->connectArgument;
        usualPorts[name] = usualPortsOf(model);
        handles.append(name);
    }
    package.constant("LABEL_DICT", labels);
    package.constant("PRODUCT_LIST", products);
    package.constant("HANDLE_LIST", handles);
    package.constant("HANDLE_DICT", connectArguments);
    package.constant("HANDLE_PROPERTIES", usualPorts);
    package.module().def(
        "_traitsOf", [](const py::type& type) { return describe(traitsOf(type)); },
        "What the library takes for true of the model that a class is or derives from.");
}

}  // namespace zvr::python
