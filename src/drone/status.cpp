// What the flight controller tells of itself.
#include "drone/drone.h"

namespace zvr::python {

void defineDrone(Package& package) {
    ClassMaker drone =
        package.makeClass("DroneModule", {"Packet"}, "A flight controller: identity. It has a blocking form only.");
    const Reply text = textReply("text of the firmware", std::string::npos, 1);
    // clang-format off
    for (Row& row : std::vector<Row>{
        {"Drone_getFirmwareVersion", {}, {}, DRONE_GET_FIRMWARE_VERSION, {constant(0)}, text,
            "Reads the version of the firmware."},
        {"Drone_getSerialNumber", {}, {}, DRONE_GET_SERIAL_NUMBER, {constant(0)}, text, "Reads the serial number."},
    }) {
        drone.add(defineExchange(std::move(row)), Form::blocking);
    }
    // clang-format on
}

}  // namespace zvr::python
