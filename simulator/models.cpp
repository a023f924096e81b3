#include "models.h"

#include <algorithm>

#include "modules.h"

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

}  // namespace

// clang-format off
std::span<const Model> models() {
    using enum Link;
    static const std::vector<Model> table = {
        // name, display name, link, first year, pins of a port, fixed function
        //     lines
        //     wires, modules
        {"SableDio", "Sable-Dio", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 5)), eitherWay(2, pins(0, 3) | pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableAnalog", "Sable-Analog", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableThermo", "Sable-Thermo", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 4)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableCan", "Sable-Can", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableRtd", "Sable-Rtd", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 4)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 5))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableSink", "Sable-Sink", usb, 1900, 8, true,
            {inputs(0, pins(0, 7)), inputs(1, pins(0, 5)), outputs(2, pins(0, 7)), outputs(3, pins(0, 3))},
            {{2, 0}, {3, 1}}, {addSystem, addDio, addPwm, addCounter, addEncoder}},
        {"SableMixed", "Sable-Mixed", usb, 1900, 8, false,
            {eitherWay(0, pins(0, 7)), eitherWay(1, pins(0, 3)), eitherWay(2, pins(6, 7)), eitherWay(3, pins(0, 1))},
            {}, {addSystem, addDio, addPwm, addCounter, addEncoder}},

        {"HeronAnalog", "Heron-Analog", wifi, 2000, 8, true, boardLines(), {}, {addSystem, addNetwork, addWifi, addDio}},
        {"HeronImu",    "Heron-Imu",    wifi, 2000, 8, true, boardLines(), {}, {addSystem, addNetwork, addWifi, addDio, addSdCard}},
        {"HeronOut",    "Heron-Out",    wifi, 2000, 8, true, boardLines(), {}, {addSystem, addNetwork, addWifi, addDio, addSdCard}},
        {"HeronMixed",  "Heron-Mixed",  wifi, 2000, 8, true,
            {outputs(ledPort, pins(0, 2)), inputs(powerPort, pins(0, 1)), inputs(2, pins(0, 7)), outputs(3, pins(0, 7))},
            {{3, 2}}, {addSystem, addNetwork, addWifi, addDio, addSdCard}},
        {"HeronFast",   "Heron-Fast",   wifi, 2000, 8, true, boardLines(), {}, {addSystem, addNetwork, addWifi, addDio}},

        {"TarnAnalog",      "Tarn-Analog",       ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"TarnAnalog24",    "Tarn-Analog24",     ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"TarnDio",         "Tarn-Dio",          ethernet, 1900, 8, true,
            {outputs(0, pins(0, 5)), inputs(1, pins(0, 7))},
            {{0, 1}}, {addSystem, addNetwork, addSntp, addDio, addPwm}},
        {"TarnDioLite",     "Tarn-Dio-Lite",     ethernet, 1900, 8, false,
            {outputs(0, pins(0, 7)), outputs(1, pins(0, 7)), inputs(2, pins(0, 7)), inputs(3, pins(0, 7))},
            {{0, 2}, {1, 3}}, {addSystem, addNetwork, addSntp, addDio}},
        {"TarnCurrent",     "Tarn-Current",      ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"TarnCurrentVolt", "Tarn-Current-Volt", ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"TarnRelay",       "Tarn-Relay",        ethernet, 1900, 8, true,
            {outputs(0, pins(0, 5)), inputs(1, pins(0, 5))},
            {{0, 1}}, {addSystem, addNetwork, addSntp, addDio}},
        {"TarnOut",         "Tarn-Out",          ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"TarnPot",         "Tarn-Pot",          ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"TarnThermo",      "Tarn-Thermo",       ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},

        {"Lattice",     "Lattice",      ethernet, 1900, 12, true, slotLines(), {}, {addSystem, addNetwork, addDio, addSlots}},
        {"LatticeLite", "Lattice-Lite", ethernet, 1900, 12, true, slotLines(), {}, {addSystem, addNetwork, addDio, addSlots}},
        {"Pawl",        "Pawl-Drive",   ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"Ratchet",     "Ratchet",      ethernet, 1900, 8, false, {}, {}, {addSystem, addNetwork, addSntp}},
        {"Drone",       "Drone",        serial,   1900, 8, false, {}, {}, {addDroneIdentity}},
    };
    return table;
}
// clang-format on

const Model* findModel(std::string_view name) {
    const auto found = std::ranges::find(models(), name, &Model::name);
    return found == models().end() ? nullptr : &*found;
}

}  // namespace zvr::sim
