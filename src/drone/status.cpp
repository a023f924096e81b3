// The state of the flight controller, and its modes.
#include "drone/drone.h"

namespace zvr::python {

namespace {

Request reads(const char* name, Command command, Reply reply, const char* summary) {
    return {.name = name, .sends = command, .fields = {constant(0)}, .reply = std::move(reply), .doc = summary};
}

Request sets(const char* name, const Parameter& value, std::vector<Check> checks, Command command,
             const char* summary) {
    return {.name = name,
            .checks = std::move(checks),
            .sends = command,
            .fields = {constant(0), value | u8},
            .doc = summary};
}

constexpr std::pair<const char*, std::size_t> stateGroups[] = {
    {"current_posi_list", 1}, {"current_velo_list", 25}, {"current_acce_list", 49}};

// Sets new lists, so that lists already handed out keep their values.
void emptyState(py::handle self, std::vector<Object>& /*arguments*/) {
    for (const auto& [list, place] : stateGroups) setAttribute(self, list, py::list());
}

// An incomplete state leaves the lists empty.
Reply stateReply() {
    return {[](py::handle self, const Bytes& data) -> Object {
                std::vector<py::list> values;
                for (const auto& [list, place] : stateGroups) values.push_back(sixAxes(data, place));
                for (std::size_t i = 0; i < values.size(); ++i) setAttribute(self, stateGroups[i].first, values[i]);
                return py::int_(0);
            },
            {"int", "0; the values are in the lists of the object", "the device"}};
}

}  // namespace

void defineDroneStatus(ClassMaker& drone) {
    const Reply text = textReply("text of the firmware", std::string::npos, 1);
    const Parameter flightMode{"flight_mode", "int", "0 attitude, 1 position"}, sensorMode{"mode", "int", "0 or 1"};
    const auto oneOrZero = [](const char* name) { return Parameter{name, "int", "1 starts, 0 ends"}; };
    defineOperations(
        drone,
        {reads("Drone_getFirmwareVersion", DRONE_GET_FIRMWARE_VERSION, text, "Reads the version of the firmware."),
         reads("Drone_getSerialNumber", DRONE_GET_SERIAL_NUMBER, text, "Reads the serial number."),
         reads("Drone_readBattery", DRONE_READ_BATTERY, numbersAt<float>(1, 3, "three values in the device's units"),
               "Reads the battery."),
         reads("Drone_getFlightMode", DRONE_READ_FLIGHT_MODE, byteAt(1, "0 attitude, 1 position"),
               "Reads the flight mode."),
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
         reads("_Drone_readStatus", DRONE_READ_STATUS, byteAt(1, "the device's number"),
               "Reads the state of the device."),
         {.name = "_Drone_getPositionVelociyAcceleration",
          .sends = DRONE_READ_NED_STATE_RPYXYZ,
          .fields = {constant(0)},
          .reply = stateReply(),
          .adapt = emptyState,
          .doc =
              "Reads position, velocity and acceleration of one moment into the lists of the object, which are emptied "
              "before it asks."},
         sets("_Drone_setFlightMode", flightMode, {checkFlightMode()(flightMode)}, DRONE_SET_FLIGHT_MODE,
              "Sets the flight mode."),
         sets("Drone_setAltitudeSensorMode", sensorMode, {checkInputMode()(sensorMode)}, DRONE_SET_BAROMETER_MODE,
              "Chooses the sensor of the altitude."),
         sets("_Drone_setActiveStatus", oneOrZero("active_status"), {}, DRONE_SET_ACTIVE_STATUS,
              "Sets the active status."),
         sets("_Drone_setTakeoffStatus", oneOrZero("takeoff_status"), {}, DRONE_SET_TAKEOFF_STATUS,
              "Starts or ends a take-off."),
         sets("_Drone_setLandingStatus", oneOrZero("landing_status"), {}, DRONE_SET_LANDING_STATUS,
              "Starts or ends a landing."),
         {.name = "Drone_stopMovement",
          .sends = DRONE_STOP_MOVING,
          .fields = {constant(0), constant(0)},
          .doc = "Stops moving."}});
    // An operation that sets one fixed value.
    const auto setTo = [&](const char* name, const char* setting, int value, const char* doc) {
        drone.operation(
            {.name = name, .doc = doc, .returns = status(1).returns, .body = [setting, value](Op op) -> Task {
                 co_return co_await op.request(setting, py::int_(value));
             }});
    };
    setTo("Drone_setAttitudeMode", "_Drone_setFlightMode", 0, "Chooses the attitude mode.");
    setTo("Drone_setPositionMode", "_Drone_setFlightMode", 1, "Chooses the position mode.");
    setTo("Drone_activate", "_Drone_setActiveStatus", 1, "Makes it active.");
    setTo("Drone_deactivate", "_Drone_setActiveStatus", 0, "Makes it inactive.");
    setTo("Drone_startTakeOff", "_Drone_setTakeoffStatus", 1, "Takes off.");
    setTo("Drone_abortTakeOff", "_Drone_setTakeoffStatus", 0, "Aborts a take-off.");
    setTo("Drone_startLanding", "_Drone_setLandingStatus", 1, "Lands.");
    setTo("Drone_abortLanding", "_Drone_setLandingStatus", 0, "Aborts a landing.");
    const auto readState = [&](const char* name, const char* list, const char* doc, const char* returned) {
        drone.operation({.name = name,
                         .doc = doc,
                         .returns = {"list[float]", returned, "the device"},
                         .raises = {"IndexError: the reply is too short; the lists are empty then"},
                         .body = [list](Op op) -> Task {
                             co_await op.request("_Drone_getPositionVelociyAcceleration");
                             co_return attribute(op.self(), list);
                         }});
    };
    readState("Drone_getPositionWithNED", "current_posi_list", "Reads the position.",
              "roll, pitch and yaw in degrees, x (north), y (east) and z (down) in metres");
    readState("Drone_getVelocityWithNED", "current_velo_list", "Reads the velocity.",
              "angular rates in degrees per second, velocities in m/s");
    readState("Drone_getAccelerationWithNED", "current_velo_list",
              "Reads the state; the acceleration is then in `current_acce_list` (compatibility note 23).",
              "the velocity, as `Drone_getVelocityWithNED` gives it");
}

}  // namespace zvr::python
