// What the flight controller tells of itself, and its modes.
#include "drone/drone.h"

namespace zvr::python {

namespace {

Row reads(const char* name, Command command, Reply reply, const char* summary) {
    return {name, {}, {}, command, {constant(0)}, std::move(reply), summary};
}

Row sets(const char* name, Parameter value, std::vector<Check> checks, Command command, const char* summary) {
    const Field field = u8(value.name);
    return {name, {std::move(value)}, std::move(checks), command, {constant(0), field}, status(1), summary};
}

constexpr std::pair<const char*, std::size_t> stateGroups[] = {
    {"current_posi_list", 1}, {"current_velo_list", 25}, {"current_acce_list", 49}};

// New lists: who keeps the old ones keeps their values.
void emptyState(py::handle self, std::vector<Object>& /*arguments*/) {
    for (const auto& [list, place] : stateGroups) setAttribute(self, list, py::list());
}

// A state of which a part is missing leaves the lists empty.
Reply stateReply() {
    return {[](py::handle self, const Bytes& data) -> Object {
                std::vector<py::list> values;
                for (const auto& [list, place] : stateGroups) values.push_back(sixAxes(data, place));
                for (std::size_t i = 0; i < values.size(); ++i) setAttribute(self, stateGroups[i].first, values[i]);
                return py::int_(0);
            },
            {"int", "0; the values are in the lists of the object", "the device"}};
}

/// One value of a setting, as an operation of its own.
template <const char* const& setting, int value>
void defineWrapper(ClassMaker& drone, const char* name, const char* summary) {
    drone.operation(name, {}, summary, status(1).returns, {},
                    [](Op op) -> Result { co_return co_await op.request(setting, py::int_(value)); });
}

template <const char* const& list>
void defineStateRead(ClassMaker& drone, const char* name, const char* summary, const char* doc) {
    drone.operation(name, {}, summary, {"list[float]", doc, "the device"},
                    {"IndexError: the reply is too short; the lists are empty then"}, [](Op op) -> Result {
                        co_await op.request("_Drone_getPositionVelociyAcceleration");
                        co_return attribute(op.self(), list);
                    });
}

constexpr const char* flightMode = "_Drone_setFlightMode";
constexpr const char* activeStatus = "_Drone_setActiveStatus";
constexpr const char* takeoffStatus = "_Drone_setTakeoffStatus";
constexpr const char* landingStatus = "_Drone_setLandingStatus";
constexpr const char* positions = "current_posi_list";
constexpr const char* velocities = "current_velo_list";

}  // namespace

void defineDroneStatus(ClassMaker& drone) {
    const Reply text = textReply("text of the firmware", std::string::npos, 1);
    const auto oneOrZero = [](const char* name) { return Parameter{name, "int", "1 starts, 0 ends"}; };
    // clang-format off
    drone.rows({
        reads("Drone_getFirmwareVersion", DRONE_GET_FIRMWARE_VERSION, text, "Reads the version of the firmware."),
        reads("Drone_getSerialNumber", DRONE_GET_SERIAL_NUMBER, text, "Reads the serial number."),
        reads("Drone_readBattery", DRONE_READ_BATTERY, numbersAt<float>(1, 3, "three values in the device's units"),
            "Reads the battery."),
        reads("Drone_getFlightMode", DRONE_READ_FLIGHT_MODE, byteAt(1, "0 attitude, 1 position"), "Reads the flight mode."),
        reads("Drone_getActiveStatus", DRONE_GET_ACTIVE_STATUS, byteAt(1, "the device's number"),
            "Reads whether it is active."),
        reads("Drone_getTakeOffStatus", DRONE_GET_TAKEOFF_STATUS, byteAt(1, "the device's number"),
            "Reads the state of the take-off."),
        reads("Drone_getLandingStatus", DRONE_GET_LANDING_STATUS, byteAt(1, "the device's number"),
            "Reads the state of the landing."),
        reads("Drone_readInposition", DRONE_READ_INPOSITION, bytesFrom(1, "the device's flags"),
            "Reads which targets are reached."),
        reads("Drone_readTaskControlMode", DRONE_READ_TASK_CONTROL_MODE, byteAt(1, "the device's number"),
            "Reads what it is doing."),
        reads("_Drone_readStatus", DRONE_READ_STATUS, byteAt(1, "the device's number"), "Reads the state of the device."),
        {"_Drone_getPositionVelociyAcceleration", {}, {}, DRONE_READ_NED_STATE_RPYXYZ, {constant(0)}, stateReply(),
            "Reads position, velocity and acceleration of one moment into the lists of the object, which are emptied "
            "before it asks.", emptyState},
        sets("_Drone_setFlightMode", {"flight_mode", "int", "0 attitude, 1 position"},
            {calls("_checkFlightMode", {"flight_mode"})}, DRONE_SET_FLIGHT_MODE, "Sets the flight mode."),
        sets("Drone_setAltitudeSensorMode", {"mode", "int", "0 or 1"}, {calls("_checkInputMode", {"mode"})},
            DRONE_SET_BAROMETER_MODE, "Chooses the sensor of the altitude."),
        sets("_Drone_setActiveStatus", oneOrZero("active_status"), {}, DRONE_SET_ACTIVE_STATUS, "Sets the active status."),
        sets("_Drone_setTakeoffStatus", oneOrZero("takeoff_status"), {}, DRONE_SET_TAKEOFF_STATUS, "Starts or ends a take-off."),
        sets("_Drone_setLandingStatus", oneOrZero("landing_status"), {}, DRONE_SET_LANDING_STATUS, "Starts or ends a landing."),
        {"Drone_stopMovement", {}, {}, DRONE_STOP_MOVING, {constant(0), constant(0)}, status(1), "Stops moving."},
    });
    // clang-format on
    defineWrapper<flightMode, 0>(drone, "Drone_setAttitudeMode", "Chooses the attitude mode.");
    defineWrapper<flightMode, 1>(drone, "Drone_setPositionMode", "Chooses the position mode.");
    defineWrapper<activeStatus, 1>(drone, "Drone_activate", "Makes it active.");
    defineWrapper<activeStatus, 0>(drone, "Drone_deactivate", "Makes it inactive.");
    defineWrapper<takeoffStatus, 1>(drone, "Drone_startTakeOff", "Takes off.");
    defineWrapper<takeoffStatus, 0>(drone, "Drone_abortTakeOff", "Ends a take-off before it is done.");
    defineWrapper<landingStatus, 1>(drone, "Drone_startLanding", "Lands.");
    defineWrapper<landingStatus, 0>(drone, "Drone_abortLanding", "Ends a landing before it is done.");
    defineStateRead<positions>(drone, "Drone_getPositionWithNED", "Reads the position.",
                               "roll, pitch and yaw in degrees, x (north), y (east) and z (down) in metres");
    defineStateRead<velocities>(drone, "Drone_getVelocityWithNED", "Reads the velocity.",
                                "that of roll, pitch and yaw in degrees, of x, y and z in metres per second");
    defineStateRead<velocities>(drone, "Drone_getAccelerationWithNED",
                                "Reads the state; the acceleration is then in `current_acce_list`.",
                                "the velocity, as `Drone_getVelocityWithNED` gives it");
}

}  // namespace zvr::python
