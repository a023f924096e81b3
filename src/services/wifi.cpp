// The battery-powered Wi-Fi devices: lights, power, radio, and the sensors of the box itself.
#include "services/services.h"

namespace zvr::python {

namespace {

// Compat 20
const Returns done{"int", "always 0; the device's status is not checked (compatibility note 20)", {}};
Reply doneReply() {
    return {[](py::handle, const Bytes&) -> Object { return py::int_(0); }, done};
}

// A word with one bit set for a positive value.
constexpr Encoding bitIfPositive(const char* kind, int line) {
    return {kind,
            [](Payload& data, py::handle value, int line) {
                data.add(u16(borrow(value.ptr()) > py::int_(0) ? 1 << line : 0));
            },
            line};
}

Request setLed(const std::string& colour, int line, const Encoding& lit) {
    const Parameter value{"value", "int", "above 0 the light is on, else off"};
    return {.name = "Wifi_set" + colour + "LED",
            .sends = SET_AND_WRITE_DO,
            .fields = {constant(0), constantWord(1 << line), value | lit},
            .reply = doneReply(),
            .doc = "Turns a status light on or off and leaves the others."};
}

Request readPower(const std::string& name, int line, std::string doc) {
    const auto decode = [line](py::handle, const Bytes& data) -> Object {
        return py::int_(readBigEndian<std::uint16_t>(slice(data, 1, 2)) >> line & 1);
    };
    return {.name = name,
            .sends = READ_AND_GET_DI,
            .fields = {constant(1), constantWord(1 << line)},
            .reply = {decode, {"int", std::move(doc), "the device"}},
            .doc = "Reads an input of the power supply."};
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
    const Parameter bandwidth{"bandwidth", "int",
                              "bandwidth in the device's numbering, at most 255; below 1 counts as 1"};
    const Encoding atLeastOne{"at least 1:", [](Payload& data, py::handle value, int) {
                                  const Object given = borrow(value.ptr());
                                  data.add(given < py::int_(1) ? Object(py::int_(1)) : given);
                              }};
    Feature wifi(package, "Wifi", "Lights, power status and radio of a Wi-Fi device.", Feature::Base::none);
    wifi.field({"bandwidth", "int", "last bandwidth read"}).field({"rssi", "int", "last signal strength read, in dBm"});
    wifi.operations({
        setLed("Red", 0, bitIfPositive("u16 of bit 0 for positive", 0)),
        setLed("Green", 1, bitIfPositive("u16 of bit 1 for positive", 1)),
        setLed("Blue", 2, bitIfPositive("u16 of bit 2 for positive", 2)),
    });
    wifi.operations({
        readPower("Wifi_getPowerGoodStatus", 0, "the line of the power supply: 0 or 1"),
        readPower("Wifi_getChargeStatus", 1, "the line of the charger: 0 or 1"),
    });
    wifi.operations(
        {{.name = "Wifi_resetLED",
          .sends = SET_AND_WRITE_DO,
          .fields = {constant(0), constantWord(7), constantWord(0)},
          .reply = doneReply(),
          .doc = "Turns all status lights off."},
         {.name = "_setWifiConfiguration",
          .sends = SET_WIFI_CONFIGURATION,
          .fields = {tries | u16, apTime | u16},
          .reply = status(0),
          .doc = "Sets how the device joins its network."},
         {.name = "Wifi_getConfiguration",
          .sends = GET_WIFI_CONFIGURATION,
          .reply = numbersAt<std::uint16_t>(0, 2, "tries to join the network, and time as an access point"),
          .doc = "Reads how the device joins its network."},
         {.name = "_Wifi_setBandwidth",
          .checks = {isInt(bandwidth)},
          .sends = SET_WIFI_BANDWIDTH,
          .fields = {bandwidth | atLeastOne},
          .reply = status(0),
          .doc = "Sets the radio's bandwidth."},
         {.name = "Wifi_getWifiBandWidth",
          .sends = GET_WIFI_BANDWIDTH,
          .reply = kept("bandwidth", byteAt(0, "bandwidth in the device's numbering")),
          .doc = "Reads the radio's bandwidth."},
         {.name = "Wifi_readRSSI",
          .sends = GET_RSSI,
          .reply = kept("rssi", rssiReply()),
          .doc = "Reads the signal strength."},
         {.name = "_Wifi_setAP", .sends = SET_AP, .reply = status(0), .doc = "Makes the device an access point."}});
}

void defineSystemAnalog(Package& package) {
    Feature sensors(package, "SystemAnalog", "Battery, acceleration and temperature of a Wi-Fi device.",
                    Feature::Base::none);
    sensors.field({"battery", "int", "last battery reading"}).field({"thermo", "float", "last temperature read"});
    Definition acceleration = Request{
        .name = "_Wifi_readAcceleration",
        .sends = READ_ACCELERATION,
        .reply = numbersAt<std::uint16_t>(0, 3, "words of the x, y and z axis, in the device's unit"),
        .doc = "Reads the acceleration. The awaitable form is `_Wifi_readAccleration_async` (compatibility note 4)."};
    acceleration.asyncName = "_Wifi_readAccleration_async";  // Compat 4
    sensors.operation(acceleration);
    sensors.operations({
        {.name = "Wifi_readBattery",
         .sends = GET_BATTERY,
         .reply = kept("battery", numberAt<std::uint16_t>(0, "battery word, in the device's unit")),
         .doc = "Reads the battery."},
        {.name = "_Wifi_readThermo",
         .sends = GET_THERMOMETER,
         .reply = kept("thermo", thermometerReply()),
         .doc = "Reads the temperature."},
        {.name = "_Wifi_resetAIBuffer",
         .sends = AI_RESET_BUFFER,
         .fields = {constant(0)},
         .doc = "Empties the device's buffer of samples."},
    });
}

}  // namespace zvr::python
