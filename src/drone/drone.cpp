// The classes of the flight controller, and the limits of its checks.
#include "drone/drone.h"

#include "core/wire/failures.h"
#include "device/devices.h"

namespace zvr::python {

namespace {

struct Limit {
    const char* name;
    const char* type;
    double value;
    const char* doc;
};

constexpr Limit limits[] = {
    {"target_roll", "int", 0, "number of a target"},
    {"target_pitch", "int", 1, "number of a target"},
    {"target_yaw", "int", 2, "number of a target"},
    {"target_x", "int", 3, "number of a target"},
    {"target_y", "int", 4, "number of a target"},
    {"target_z", "int", 5, "number of a target"},
    {"roll_max_angle", "int", 15, "greatest angle in degrees"},
    {"roll_min_angle", "int", -15, "least angle in degrees"},
    {"roll_pitch_inposition_max_angle", "int", 5, "in degrees"},
    {"roll_pitch_inposition_min_angle", "int", -5, "in degrees"},
    {"yaw_inposition_max_angle", "int", 10, "in degrees"},
    {"yaw_inposition_min_angle", "int", -10, "in degrees"},
    {"z_max_position_NED", "int", 0, "greatest z in metres; down is positive"},
    {"z_min_position_NED", "int", -8, "least z in metres"},
    {"x_inposition_position", "float", 0.4, "in metres"},
};

constexpr const char* stateLists[] = {"current_posi_list", "current_velo_list", "current_acce_list"};

void refuseOutside(FailureId failure, py::handle self, const Object& value, const char* least, const char* most) {
    if (value < attribute(self, least) || value > attribute(self, most)) throw Failure(failure);
}

void checkAngle(py::handle self, const Object& target, const Object& angle) {
    for (const char* each : {"target_roll", "target_pitch", "target_yaw"}) {
        if (!target.equal(attribute(self, each))) continue;
        refuseOutside(FailureId::AngleNotAvaliableError, self, angle, "roll_min_angle", "roll_max_angle");
        return;
    }
}

void defineBased(Package& package) {
    ClassMaker based = package.makeClass("DroneBased", {}, "Limits and checks of a flight controller.");
    for (const Limit& limit : limits) based.field({limit.name, limit.type, limit.doc});
    based.method(checkInputMode()).method(checkFlightMode());
    based
        .method({.name = "__init__",
                 .doc = "Sets the limits.",
                 .body =
                     [](py::handle self) {
                         for (const Limit& limit : limits) {
                             const bool whole = std::string_view(limit.type) == "int";
                             setAttribute(self, limit.name,
                                          whole ? Object(py::int_(static_cast<int>(limit.value)))
                                                : Object(py::float_(limit.value)));
                         }
                     }})
        .method(
            {.name = "_checkHeightWithNED",
             .parameters = {{"height", "float", "z in metres; down is positive"}},
             .doc = "Raises HeightNotAvaliableError unless the height is within the limits. The moves do not call it.",
             .raises = {"HeightNotAvaliableError: it is out of the limits"},
             .body =
                 [](py::handle self, const Object& height) {
                     refuseOutside(FailureId::HeightNotAvaliableError, self, height, "z_min_position_NED",
                                   "z_max_position_NED");
                 }})
        .method(
            {.name = "_checkAngle",
             .parameters = {{"target", "int", "number of a target; x, y and z are not checked"},
                            {"angle", "float", "in degrees"}},
             .doc = "Raises AngleNotAvaliableError unless the angle is within the limits. The moves do not call it.",
             .raises = {"AngleNotAvaliableError: it is out of the limits"},
             .body = checkAngle});
}

}  // namespace

Definition checkInputMode() {
    return accepting("_checkInputMode", {"mode", "int", "0 or 1"}, FailureId::InputDataNotInRangeError, {0, 1});
}

Definition checkFlightMode() {
    return accepting("_checkFlightMode", {"mode", "int", "0 or 1"}, FailureId::FlightModeNotAvaliableError, {0, 1});
}

py::list sixAxes(ByteView data, std::size_t place) {
    py::list values;
    for (const double value : readNumbers<float>(slice(data, place, 6 * sizeof(float)))) {
        values.append(values.size() < 3 ? degreesOf(value) : value);
    }
    return values;
}

void defineDrone(Package& package) {
    defineBased(package);
    ClassMaker drone = package.makeClass("DroneModule", {"Packet", "DroneBased"},
                                         "A flight controller: status, modes and moves. It has a blocking form only.");
    drone.field({stateLists[0], "list[float]", "last position read: degrees for roll, pitch, yaw; m for x, y, z"})
        .field({stateLists[1], "list[float]", "last velocity read: degrees/s for roll, pitch, yaw; m/s for x, y, z"})
        .field({stateLists[2], "list[float]",
                "last acceleration read: degrees/s^2 for roll, pitch, yaw; m/s^2 for x, y, z"});
    drone.method({.name = "__init__", .doc = "Sets the limits and empties the state.", .body = [](py::handle self) {
                      callOf("DroneBased", "__init__", self);
                      for (const char* list : stateLists) setAttribute(self, list, py::list());
                  }});
    defineDroneStatus(drone);
    defineDroneMoves(drone);
}

}  // namespace zvr::python
