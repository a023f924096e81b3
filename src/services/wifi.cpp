// The battery-powered Wi-Fi devices: lights, power, radio, and the sensors that watch the box itself.
#include "services/services.h"

namespace zvr::python {

namespace {

const Returns done{"int", "always 0; the device's status is not checked", {}};
Reply doneReply() {
    return {[](py::handle, const Bytes&) -> Object { return py::int_(0); }, done};
}

// One line of a port, as a word with that line's bit.
template <int line>
Field lit() {
    return {"value", "u16 of bit " + std::to_string(line) + " for positive",
            [](Payload& data, py::handle value) { data.add(u16(borrow(value.ptr()) > py::int_(0) ? 1 << line : 0)); }};
}

template <int value>
Field fixedWord() {
    return {{}, std::to_string(value), [](Payload& data, py::handle) { data.add(u16(value)); }};
}

template <int line>
Row ledRow(const std::string& colour) {
    return {"Wifi_set" + colour + "LED",
            {{"value", "int", "above 0 the light is on, else off"}},
            {},
            SET_AND_WRITE_DO,
            {constant(0), fixedWord<1 << line>(), lit<line>()},
            doneReply(),
            "Turns a status light on or off and leaves the others."};
}

template <int line>
Row powerRow(const std::string& name, std::string doc) {
    const auto decode = [](py::handle, const Bytes& data) -> Object {
        return py::int_(readBigEndian<std::uint16_t>(slice(data, 1, 2)) >> line & 1);
    };
    return {name,
            {},
            {},
            READ_AND_GET_DI,
            {constant(1), fixedWord<1 << line>()},
            {decode, {"int", std::move(doc), "the device"}},
            "Reads an input of the power supply."};
}

Reply rssiReply() {
    return {[](py::handle, const Bytes& data) -> Object { return py::int_(int{byteOf(data, 0)} - 256); },
            {"int", "signal strength in dBm, -256 to -1", "the device"}};
}

Reply thermometerReply() {
    return {[](py::handle, const Bytes& data) -> Object {
                return py::float_(readBigEndian<std::int16_t>(slice(data, 0, 2)) / 128.0);
            },
            {"float", "temperature of the box in degrees Celsius", "the device"}};
}

}  // namespace

void defineWifiSettings(Package& package) {
    const Parameter tries{"retry_wifi_times", "int", "tries to join the network, 0 to 65535"};
    const Parameter apTime{"ap_time", "int", "time as an access point, 0 to 65535, in the device's unit"};
    const Field atLeastOne{"bandwidth", "at least 1:", [](Payload& data, py::handle value) {
                               const Object given = borrow(value.ptr());
                               data.add(given < py::int_(1) ? Object(py::int_(1)) : given);
                           }};
    Feature wifi(package, "Wifi", "Lights, power status and radio of a Wi-Fi device.", Feature::Base::none);
    wifi.field({"bandwidth", "int", "last bandwidth read"}).field({"rssi", "int", "last signal strength read, in dBm"});
    wifi.rows({ledRow<0>("Red"), ledRow<1>("Green"), ledRow<2>("Blue")});
    wifi.rows({powerRow<0>("Wifi_getPowerGoodStatus", "the line of the power supply: 0 or 1"),
               powerRow<1>("Wifi_getChargeStatus", "the line of the charger: 0 or 1")});
    // clang-format off
    wifi.rows({
        {"Wifi_resetLED", {}, {}, SET_AND_WRITE_DO, {constant(0), fixedWord<7>(), fixedWord<0>()}, doneReply(),
            "Turns all status lights off."},
        {"_setWifiConfiguration", {tries, apTime}, {}, SET_WIFI_CONFIGURATION, {word("retry_wifi_times"), word("ap_time")},
            status(0), "Sets how the device joins its network."},
        {"Wifi_getConfiguration", {}, {}, GET_WIFI_CONFIGURATION, {},
            numbersAt<std::uint16_t>(0, 2, "tries to join the network, and time as an access point"),
            "Reads how the device joins its network."},
        {"_Wifi_setBandwidth", {{"bandwidth", "int", "bandwidth in the device's numbering, at most 255; below 1 counts as 1"}},
            {isInt("bandwidth")}, SET_WIFI_BANDWIDTH, {atLeastOne}, status(0), "Sets the radio's bandwidth."},
        {"Wifi_getWifiBandWidth", {}, {}, GET_WIFI_BANDWIDTH, {},
            kept("bandwidth", byteAt(0, "bandwidth in the device's numbering")), "Reads the radio's bandwidth."},
        {"Wifi_readRSSI", {}, {}, GET_RSSI, {}, kept("rssi", rssiReply()), "Reads the signal strength."},
        {"_Wifi_setAP", {}, {}, SET_AP, {}, status(0), "Makes the device an access point."},
    });
    // clang-format on
}

void defineSystemAnalog(Package& package) {
    Feature sensors(package, "SystemAnalog", "Battery, acceleration and temperature of a Wi-Fi device.",
                    Feature::Base::none);
    sensors.field({"battery", "int", "last battery reading"}).field({"thermo", "float", "last temperature read"});
    Definition acceleration =
        defineExchange({"_Wifi_readAcceleration",
                        {},
                        {},
                        READ_ACCELERATION,
                        {},
                        numbersAt<std::uint16_t>(0, 3, "words of the x, y and z axis, in the device's unit"),
                        "Reads the acceleration. The awaitable form is `_Wifi_readAccleration_async`."});
    acceleration.twin = "_Wifi_readAccleration_async";  // the name it has always had
    sensors.add(std::move(acceleration));
    // clang-format off
    sensors.rows({
        {"Wifi_readBattery", {}, {}, GET_BATTERY, {},
            kept("battery", numberAt<std::uint16_t>(0, "battery word, in the device's unit")), "Reads the battery."},
        {"_Wifi_readThermo", {}, {}, GET_THERMOMETER, {}, kept("thermo", thermometerReply()),
            "Reads the temperature."},
        {"_Wifi_resetAIBuffer", {}, {}, AI_RESET_BUFFER, {constant(0)}, status(1),
            "Empties the device's buffer of samples."},
    });
    // clang-format on
}

}  // namespace zvr::python
