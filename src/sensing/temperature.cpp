// Thermocouples and resistance thermometers: the device makes degrees of what its sensors give.
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

std::vector<Check> sensorChecks(std::vector<Check> more = {}) {
    more.insert(more.begin(), {calls("_checkThermalPort", {"port"}), calls("_checkThermalChipSelect", {"channel"})});
    return more;
}

std::vector<Field> sensorThen(std::vector<Field> more = {}) {
    more.insert(more.begin(), {u8("port"), u8("channel")});
    return more;
}

// What the device refuses is not turned into a negative code here.
Reply statusByte(std::size_t place) { return byteAt(place, "the device's status as it is: 0, or why it refused"); }

Reply degrees() { return numberAt<float>(2, "degrees"); }

Reply degreesRounded() {
    return {[](py::handle, const Bytes& data) -> Object {
                return py::float_(roundDecimals(readBigEndian<float>(slice(data, 2, 4)), 3));
            },
            {"float", "degrees, rounded to 3 decimals", "the device"}};
}

template <FailureId failure, int last>
void checkUpTo(py::handle, const Object& value) {
    if (!isOneFrom(value, 0, last + 1)) throw Failure(failure);
}

void checkChipSelect(py::handle self, const Object& chipSelect) {
    if (isOneFrom(chipSelect, 0, traitsOf(self).temperature.sensors)) return;
    throw Failure(FailureId::ThermalChipSelectNotAvaliableError);
}

Result open(Op op, Object port) {
    op.call("_checkThermalPort", port);
    if (traitsOf(op.self()).temperature.sharesLines) {
        const py::list allowed(py::make_tuple("Idle", "DI", "DO"));
        co_await op.request("_checkThermalPinState", port, allowed);
    }
    const Object reply = co_await op.exchange(OPEN_THERMAL, payload(port));
    co_return itemOf(reply, 1);
}

Result getStatus(Op op, Object port, Object channel) {
    op.call("_checkThermalPort", port);
    op.call("_checkThermalChipSelect", channel);
    Payload data;
    data.add(port).add(channel);
    const auto mode = traitsNamed(op.call("_getDeviceName")).temperature.statusMode;
    if (mode) data.add(*mode);
    const Object reply = co_await op.exchange(GET_THERMAL_STATUS, data.list());
    co_return restOfSequence(reply, 2);
}

void defineChecks(Feature& thermal) {
    const auto define = [&](const char* name, const Parameter& parameter, const char* summary, const char* failure,
                            auto check) {
        thermal.shared(name, {parameter}, summary, {}, {std::string(failure) + ": another value"}, check);
    };
    define("_checkThermalChipSelect", {"cs", "int", "0 or 1; up to 6 on `TarnThermo`"}, "Refuses another sensor.",
           "ThermalChipSelectNotAvaliableError", Calls<checkChipSelect>{});
    define("_checkThermalFilterMode", {"mode", "int", "0 or 1"}, "Refuses another mode.", "ThermalModeNotVaildError",
           Calls<checkUpTo<FailureId::ThermalModeNotVaildError, 1>>{});
    define("_checkThermalSamplingMode", {"mode", "int", "0 to 4"}, "Refuses another mode.", "ThermalModeNotVaildError",
           Calls<checkUpTo<FailureId::ThermalModeNotVaildError, 4>>{});
    define("_checkThermalTCType", {"tc_type", "int", "0 to 7"}, "Refuses another type of thermocouple.",
           "ThermalTypeNotVaildError", Calls<checkUpTo<FailureId::ThermalTypeNotVaildError, 7>>{});
    define("_checkThermalRTDType", {"rtd_type", "int", "0 or 1"}, "Refuses another type of resistor.",
           "ThermalTypeNotVaildError", Calls<checkUpTo<FailureId::ThermalTypeNotVaildError, 1>>{});
}

Row typeRow(const char* check, const char* codes) {
    return {"Thermal_setType",
            {port, channel, {"type_", "int", codes}},
            sensorChecks({calls(check, {"type_"}), calls("_getDeviceName", {})}),
            SET_THERMAL_TYPE,
            sensorThen({u8("type_")}),
            statusByte(2),
            "Tells the device what its sensor is."};
}

void defineThermal(Package& package) {
    Feature thermal(package, "Thermal", "Temperature sensors.");
    defineChecks(thermal);
    definePinCheck<sensorPorts>(thermal)
        .offers({{"thermal_dict", "dict[int, list[Any]]", "ports of the sensors, each with its channels or lines"}})
        .shared("_checkThermalPort", {port}, "Refuses a port that the model lacks.", {},
                {"ThermalPortNotAvaliableError: the model has no such port"},
                [](py::handle self, const Object& port) {
                    if (!attribute(self, "thermal_dict").contains(port)) {
                        throw Failure(FailureId::ThermalPortNotAvaliableError);
                    }
                })
        .shared("Thermal_getPinMap", {}, "Tells which ports there are.",
                {"dict[int, list[Any]]", "ports, each with its channels or lines", "the model's table"}, {},
                [](py::handle self) { return attribute(self, "thermal_dict"); })
        .operation("Thermal_open", {port}, "Opens a port, whose lines must be idle or digital.", statusByte(1).returns,
                   {"@_checkThermalPort", "@_checkThermalPinState"}, Calls<open>{})
        .operation("Thermal_getStatus", {port, channel}, "Reads the state of a sensor.",
                   {"bytes", "the device's state bytes", "the device, from byte 2 of its reply on"},
                   {"@_checkThermalPort", "@_checkThermalChipSelect", "@_getDeviceName"}, Calls<getStatus>{});
    const Parameters sensor{port, channel}, sensorAndDegrees{port, channel, temperature};
    const std::vector<Check> isDegrees = sensorChecks({isNumber("temperature")});
    // clang-format off
    thermal.rows({
        {"Thermal_close", {port}, {calls("_checkThermalPort", {"port"})}, CLOSE_THERMAL, {u8("port")}, statusByte(1),
            "Closes a port."},
        {"Thermal_readSensor", sensor, sensorChecks(), READ_THERMAL_COUPLE, sensorThen(), degreesRounded(),
            "Reads the temperature of a sensor."},
        {"_Thermal_setNoiseFilter", {port, channel, {"mode", "int", "0 or 1"}},
            sensorChecks({calls("_checkThermalFilterMode", {"mode"})}), SET_THERMAL_NOISE_FILTER,
            sensorThen({u8("mode")}), statusByte(2), "Chooses the noise filter of a sensor."},
        {"_Thermal_readOffset", sensor, sensorChecks(), READ_THERMAL_OFFSET, sensorThen(), degrees(),
            "Reads the offset in use."},
        {"_Thermal_loadOffset", sensor, sensorChecks(), LOAD_THERMAL_OFFSET, sensorThen(), degrees(),
            "Reads the saved offset."},
        {"_Thermal_writeOffset", sensorAndDegrees, isDegrees, WRITE_THERMAL_OFFSET, sensorThen({f32("temperature")}),
            statusByte(2), "Sets the offset in use."},
        {"_Thermal_saveOffset", sensorAndDegrees, isDegrees, SAVE_THERMAL_OFFSET, sensorThen({f32("temperature")}),
            statusByte(2), "Saves an offset."},
    });
    // clang-format on
}

void defineThermocouple(Package& package) {
    Feature couple(package, "ThermocoupleModule", {"ThermalModule", "ThermalBased"}, "Thermocouples.");
    const Check isBool{{}, {"status"}, [](py::handle status) { checkInputType(status, py::type::of(py::bool_())); }};
    const Field asNumber{
        "status", {}, [](Payload& data, py::handle status) { data.add(py::int_(borrow(status.ptr()))); }};
    // clang-format off
    couple.rows({
        typeRow("_checkThermalTCType", "type of the thermocouple, 0 to 7, in the device's numbering"),
        {"Thermal_setOverSampling",
            {port, channel, {"mode", "int", "number of samples of a reading, 0 to 4, in the device's numbering"}},
            sensorChecks({calls("_checkThermalSamplingMode", {"mode"})}), SET_THERMAL_OVER_SAMPLING,
            sensorThen({u8("mode")}), statusByte(2), "Chooses how many samples make a reading."},
        {"_Thermal_readJunction", {port, channel}, sensorChecks(), READ_THERMAL_JUNCTION, sensorThen(), degrees(),
            "Reads the temperature of the cold junction."},
        {"_Thermal_setJunctionOn", {port, channel, {"status", "bool", "whether the device measures it"}},
            sensorChecks({isBool}), SET_THERMAL_JUNCTION_ON, sensorThen({asNumber}), statusByte(2),
            "Chooses where the temperature of the cold junction comes from."},
        {"_Thermal_writeJunction", {port, channel, temperature}, sensorChecks(), WRITE_THERMAL_JUNCTION,
            sensorThen({f32("temperature")}), statusByte(2), "Sets the temperature of the cold junction."},
    });
    // clang-format on
}

}  // namespace

void defineTemperature(Package& package) {
    defineThermal(package);
    defineThermocouple(package);
    Feature resistor(package, "ThermalResistanceModule", {"ThermalModule", "ThermalBased"}, "Resistance thermometers.");
    resistor.row(typeRow("_checkThermalRTDType", "type of the resistor, 0 or 1, in the device's numbering"));
}

}  // namespace zvr::python
