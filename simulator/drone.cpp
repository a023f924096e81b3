// The flight controller: who it is.
#include "modules.h"

namespace zvr::sim {

void addDroneIdentity(Device& device) {
    // Requests select no port, but replies begin with its number.
    device.on(DRONE_GET_SERIAL_NUMBER, [&device](ByteView) { return reply(0, viewOf(device.identity.serial)); });
    device.on(DRONE_GET_FIRMWARE_VERSION, [](ByteView) { return reply(0, viewOf("3.2.6")); });
}

}  // namespace zvr::sim
