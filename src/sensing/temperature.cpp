// Thermocouples and resistance thermometers: the device converts its sensors' signals to degrees.
#include "core/engine/scale.h"
#include "core/wire/failures.h"
#include "digital/pin_map.h"
#include "models/traits.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

const Parameter port{"port", "int", "port of the sensors"};
const Parameter channel{"channel", "int", "sensor of the port, 0 or 1; up to 6 on `TarnThermo`"};
const Parameter temperature{"temperature", "float", "degrees, 32-bit float"};
constexpr PinnedPorts sensorPorts{"Thermal", "thermal_dict", "thermal_port", FailureId::ThermalPortNotAvaliableError};

// Compat 20: a refusal is not converted to a negative code.
Reply statusByte(std::size_t place) {
    return byteAt(place, "the device's status byte: 0, or the reason of a refusal (compatibility note 20)");
}

Reply degrees() { return numberAt<float>(2, "degrees"); }

Reply degreesRounded() {
    return {[](py::handle, const Bytes& data) -> Object {
                return py::float_(roundDecimals(readBigEndian<float>(slice(data, 2, 4)), 3));
            },
            {"float", "degrees, rounded to 3 decimals", "the device"}};
}

void checkUpTo(FailureId failure, int last, const Object& value) {
    for (int accepted = 0; accepted <= last; ++accepted) {
        if (value.equal(py::int_(accepted))) return;
    }
    throw Failure(failure);
}

Definition upTo(const char* name, const Parameter& parameter, FailureId failure, int last) {
    const std::string error(rowOf(failure).name), range = "0 to " + std::to_string(last);
    return {.name = name,
            .parameters = {parameter},
            .doc = "Raises " + error + " unless `" + parameter.name + "` is " + range + ".",
            .raises = {error + ": `" + parameter.name + "` is not " + range},
            .body = [failure, last](py::handle, const Object& value) { checkUpTo(failure, last, value); }};
}

const Definition checkThermalPort{.name = "_checkThermalPort",
                                  .parameters = {port},
                                  .doc = "Raises ThermalPortNotAvaliableError unless the model has the port.",
                                  .raises = {"ThermalPortNotAvaliableError: the model has no such port"},
                                  .body = [](py::handle self, const Object& port) {
                                      if (!attribute(self, "thermal_dict").contains(port)) {
                                          throw Failure(FailureId::ThermalPortNotAvaliableError);
                                      }
                                  }};
const Definition checkChipSelect{.name = "_checkThermalChipSelect",
                                 .parameters = {{"cs", "int", "0 or 1; up to 6 on `TarnThermo`"}},
                                 .doc = "Raises ThermalChipSelectNotAvaliableError unless the model has the sensor.",
                                 .raises = {"ThermalChipSelectNotAvaliableError: another value"},
                                 .body = [](py::handle self, const Object& chipSelect) {
                                     checkUpTo(FailureId::ThermalChipSelectNotAvaliableError,
                                               traitsOf(self).temperature.sensors - 1, chipSelect);
                                 }};
const FailureId modeFailure = FailureId::ThermalModeNotVaildError, typeFailure = FailureId::ThermalTypeNotVaildError;
const Definition checkFilterMode = upTo("_checkThermalFilterMode", {"mode", "int", "0 or 1"}, modeFailure, 1),
                 checkSamplingMode = upTo("_checkThermalSamplingMode", {"mode", "int", "0 to 4"}, modeFailure, 4),
                 checkCoupleType = upTo("_checkThermalTCType", {"tc_type", "int", "0 to 7"}, typeFailure, 7),
                 checkResistorType = upTo("_checkThermalRTDType", {"rtd_type", "int", "0 or 1"}, typeFailure, 1),
                 checkPinState = lineCheck(sensorPorts);
// Read but not checked.
const Definition deviceName{.name = "_getDeviceName"};

// Common to requests to one sensor.
const Common ofSensor{.checks = {checkThermalPort(port), checkChipSelect(channel)},
                      .fields = {port | u8, channel | u8}};

Task open(Op op, Object port) {
    op.call("_checkThermalPort", port);
    if (traitsOf(op.self()).temperature.sharesLines) {
        const py::list allowed(py::make_tuple("Idle", "DI", "DO"));
        co_await op.request("_checkThermalPinState", port, allowed);
    }
    const Object reply = co_await exchange(op, OPEN_THERMAL, payload(port));
    co_return itemOf(reply, 1);
}

Task getStatus(Op op, Object port, Object channel) {
    op.call("_checkThermalPort", port);
    op.call("_checkThermalChipSelect", channel);
    Payload data;
    data.add(port).add(channel);
    const auto mode = traitsNamed(op.call("_getDeviceName")).temperature.statusMode;
    if (mode) data.add(*mode);
    const Object reply = co_await exchange(op, GET_THERMAL_STATUS, data.list());
    co_return restOfSequence(reply, 2);
}

Request setType(const Definition& check, const char* codes) {
    const Parameter type{"type_", "int", codes};
    return {.name = "Thermal_setType",
            .checks = {check(type), deviceName()},
            .sends = SET_THERMAL_TYPE,
            .fields = {type | u8},
            .reply = statusByte(2),
            .doc = "Sets the type of a sensor."};
}

void defineThermal(Package& package) {
    Feature thermal(package, "Thermal", "Temperature sensors.");
    for (const Definition& check :
         {checkChipSelect, checkFilterMode, checkSamplingMode, checkCoupleType, checkResistorType}) {
        thermal.shared(check);
    }
    thermal.shared(portLines(sensorPorts))
        .operation(checkPinState)
        .constructorFields(
            {{"thermal_dict", "dict[int, list[Any]]", "ports of the sensors, each with its channels or lines"}})
        .shared(checkThermalPort)
        .shared({.name = "Thermal_getPinMap",
                 .doc = "Returns which ports there are.",
                 .returns = {"dict[int, list[Any]]", "ports, each with its channels or lines", "the model's table"},
                 .body = [](py::handle self) { return attribute(self, "thermal_dict"); }})
        .operation({.name = "Thermal_open",
                    .parameters = {port},
                    .doc = "Opens a port, whose lines must be idle or digital.",
                    .returns = statusByte(1).returns,
                    .raises = {checkThermalPort, checkPinState},
                    .body = open})
        .operation({.name = "Thermal_getStatus",
                    .parameters = {port, channel},
                    .doc = "Reads the state of a sensor.",
                    .returns = {"bytes", "the device's state bytes", "the device, from byte 2 of its reply on"},
                    .raises = {checkThermalPort, checkChipSelect},
                    .body = getStatus});
    const Parameter filter{"mode", "int", "0 or 1"};
    const std::vector<Check> isDegrees{isNumber(temperature)};
    thermal.operation(Request{.name = "Thermal_close",
                              .checks = {checkThermalPort(port)},
                              .sends = CLOSE_THERMAL,
                              .fields = {port | u8},
                              .reply = statusByte(1),
                              .doc = "Closes a port."});
    thermal.sharing(ofSensor).operations({
        {.name = "Thermal_readSensor",
         .sends = READ_THERMAL_COUPLE,
         .reply = degreesRounded(),
         .doc = "Reads the temperature of a sensor."},
        {.name = "_Thermal_setNoiseFilter",
         .checks = {checkFilterMode(filter)},
         .sends = SET_THERMAL_NOISE_FILTER,
         .fields = {filter | u8},
         .reply = statusByte(2),
         .doc = "Chooses the noise filter of a sensor."},
        {.name = "_Thermal_readOffset",
         .sends = READ_THERMAL_OFFSET,
         .reply = degrees(),
         .doc = "Reads the offset in use."},
        {.name = "_Thermal_loadOffset",
         .sends = LOAD_THERMAL_OFFSET,
         .reply = degrees(),
         .doc = "Reads the saved offset."},
        {.name = "_Thermal_writeOffset",
         .checks = isDegrees,
         .sends = WRITE_THERMAL_OFFSET,
         .fields = {temperature | f32},
         .reply = statusByte(2),
         .doc = "Sets the offset in use."},
        {.name = "_Thermal_saveOffset",
         .checks = isDegrees,
         .sends = SAVE_THERMAL_OFFSET,
         .fields = {temperature | f32},
         .reply = statusByte(2),
         .doc = "Saves an offset."},
    });
}

void defineThermocouple(Package& package) {
    Feature couple(package, "ThermocoupleModule", {"ThermalModule", "ThermalBased"}, "Thermocouples.");
    const Parameter samples{"mode", "int", "number of samples of a reading, 0 to 4, in the device's numbering"};
    const Parameter measured{"status", "bool", "whether the device measures it"};
    couple.sharing(ofSensor).operations({
        setType(checkCoupleType, "type of the thermocouple, 0 to 7, in the device's numbering"),
        {.name = "Thermal_setOverSampling",
         .checks = {checkSamplingMode(samples)},
         .sends = SET_THERMAL_OVER_SAMPLING,
         .fields = {samples | u8},
         .reply = statusByte(2),
         .doc = "Chooses how many samples make a reading."},
        {.name = "_Thermal_readJunction",
         .sends = READ_THERMAL_JUNCTION,
         .reply = degrees(),
         .doc = "Reads the temperature of the cold junction."},
        {.name = "_Thermal_setJunctionOn",
         .checks = {check(checkIsBool, measured)},
         .sends = SET_THERMAL_JUNCTION_ON,
         .fields = {measured | asInt},
         .reply = statusByte(2),
         .doc = "Chooses where the temperature of the cold junction comes from."},
        {.name = "_Thermal_writeJunction",
         .sends = WRITE_THERMAL_JUNCTION,
         .fields = {temperature | f32},
         .reply = statusByte(2),
         .doc = "Sets the temperature of the cold junction."},
    });
}

}  // namespace

void defineTemperature(Package& package) {
    defineThermal(package);
    defineThermocouple(package);
    Feature resistor(package, "ThermalResistanceModule", {"ThermalModule", "ThermalBased"}, "Resistance thermometers.");
    resistor.sharing(ofSensor).operations(
        {setType(checkResistorType, "type of the resistor, 0 or 1, in the device's numbering")});
}

}  // namespace zvr::python
