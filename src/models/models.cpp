// The models as a table: what each is called, how it is reached, and what it offers.
#include "models/models.h"

#include <functional>

#include "core/immortal.h"

namespace zvr::python {

namespace {

/// A module of a model, and the maps and numbers that its constructor takes.
struct ModuleUse {
    const char* prefix;
    std::function<py::tuple()> arguments = [] { return py::tuple(); };
};

struct Model {
    const char* name;
    const char* displayName;
    const char* device;
    const char* what;
    std::vector<ModuleUse> modules;
};

/// Port and its pins, from the first to the last.
struct Pins {
    int port;
    int first;
    int last;
};
using PinMap = std::vector<Pins>;

py::dict toDict(const PinMap& map) {
    py::dict dict;
    for (const auto& [port, first, last] : map) {
        py::list pins;
        for (int pin = first; pin <= last; ++pin) pins.append(pin);
        dict[py::int_(port)] = pins;
    }
    return dict;
}

ModuleUse dio(const PinMap& inputs, const PinMap& outputs, int pinsPerPort = 8) {
    return {"DIO", [=] { return py::make_tuple(toDict(inputs), toDict(outputs), pinsPerPort); }};
}

const ModuleUse system{"System"};
const ModuleUse network{"Network"};

// clang-format off
const std::vector<Model>& models() {
    static const std::vector<Model> table = {
        {"TarnDio",     "Tarn-Dio",      "ETHDevice", "24 V digital I/O, 8 inputs and 6 outputs.",
            {system, network, dio({{1, 0, 7}}, {{0, 0, 5}})}},
        {"TarnDioLite", "Tarn-Dio-Lite", "ETHDevice", "24 V digital I/O, 16 inputs and 16 outputs.",
            {system, network, dio({{2, 0, 7}, {3, 0, 7}}, {{0, 0, 7}, {1, 0, 7}})}},
    };
    return table;
}
// clang-format on

std::vector<std::string> classesOf(const Model& model, const char* ending) {
    std::vector<std::string> names;
    for (const ModuleUse& use : model.modules) names.push_back(std::string(use.prefix) + ending);
    return names;
}

Object constructorOf(const std::string& type) {
    return py::module_::import("pyzvr").attr(type.c_str()).attr("__init__");
}

// The bases are not chained: each constructor is called by class, the device's first, with what the model offers.
Object construct(const Definition& definition, py::handle self, Arguments /*unused*/) {
    const Model& model = models()[definition.tag];
    constructorOf(model.device)(self);
    for (const char* ending : {"Module", "Module_async"}) {
        for (const ModuleUse& use : model.modules) {
            constructorOf(std::string(use.prefix) + ending)(self, *use.arguments());
        }
    }
    return py::none();
}

}  // namespace

void defineModels(Package& package) {
    py::dict labels;
    py::list products;
    for (std::size_t i = 0; i < models().size(); ++i) {
        const Model& model = models()[i];
        std::vector<std::string> bases{model.device};
        for (const char* ending : {"Module", "Module_async"}) {
            for (std::string& name : classesOf(model, ending)) bases.push_back(std::move(name));
        }
        Definition constructor{"__init__", {}, "Makes a handle and starts its threads.", {}, {}, construct};
        constructor.tag = i;
        package.makeClass(model.name, bases, std::string(model.displayName) + ": " + model.what)
            .add(std::move(constructor), Form::method);
        labels[model.name] = model.displayName;
        products.append(model.name);
    }
    labels["DeviceFinder"] = "Device finder";
    labels["DataLogger"] = "Data logger";
    labels["Drone"] = "Drone";
    package.constant("LABEL_DICT", labels);
    package.constant("PRODUCT_LIST", products);
}

}  // namespace zvr::python
