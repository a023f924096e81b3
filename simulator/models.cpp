#include "models.h"

#include <algorithm>

#include "modules.h"

namespace zvr::sim {

// clang-format off
std::span<const Model> models() {
    static const std::vector<Model> table = {
        // name         display name     link            clock pins fixed  port, inputs, outputs
        {"SableDio",    "Sable-Dio",     Link::usb,      1900, 8,   false, {{0, 0xFF, 0xFF}, {1, 0x3F, 0x3F}, {2, 0xCF, 0xCF}, {3, 0x3F, 0x3F}},
            {}, {addSystem, addDio}},
        {"TarnDio",     "Tarn-Dio",      Link::ethernet, 1900, 8,   true,  {{0, 0x00, 0x3F}, {1, 0xFF, 0x00}},
            {{0, 1}}, {addSystem, addNetwork, addDio}},
        {"TarnDioLite", "Tarn-Dio-Lite", Link::ethernet, 1900, 8,   false, {{0, 0x00, 0xFF}, {1, 0x00, 0xFF}, {2, 0xFF, 0x00}, {3, 0xFF, 0x00}},
            {{0, 2}, {1, 3}}, {addSystem, addNetwork, addDio}},
    };
    return table;
}
// clang-format on

const Model* findModel(std::string_view name) {
    const auto found = std::ranges::find(models(), name, &Model::name);
    return found == models().end() ? nullptr : &*found;
}

}  // namespace zvr::sim
