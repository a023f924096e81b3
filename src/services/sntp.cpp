// The device's clock set from a time server.
#include "services/services.h"

namespace zvr::python {

void defineSntp(Package& package) {
    const Parameter server{"ip_addr", "str", "dotted IPv4 address of the time server", "\"255.255.255.255\""};
    const Parameter period{"period", "float", "time between synchronisations, 32-bit float, in the device's unit"};
    Feature sntp(package, "SNTP", "The device's clock set from a time server.", Feature::Base::none);
    // clang-format off
    sntp.rows({
        {"SNTP_syncNow", {}, {}, SNTP_SYNC_NOW, {}, status(0), "Synchronises the clock now."},
        {"SNTP_getSyncStatus", {}, {}, SNTP_GET_SYNC_STATUS, {},
            textReply("state of the synchronisation, in the device's words", std::string::npos, 1),
            "Reads the state of the synchronisation."},
        {"SNTP_getServerIP", {}, {}, SNTP_GET_SERVER_IP, {constant(0)}, addressAt(1), "Reads the time server's address."},
        {"SNTP_setServerIP", {server}, {isText("ip_addr")}, SNTP_SET_SERVER_IP, {constant(0), address("ip_addr")},
            status(0), "Sets the time server's address."},
        {"SNTP_getPeriod", {}, {}, SNTP_GET_SYNC_PERIOD, {},
            numberAt<float>(0, "time between synchronisations, in the device's unit"),
            "Reads the time between synchronisations."},
        {"SNTP_setPeriod", {period}, {}, SNTP_SET_SYNC_PERIOD, {f32("period")}, status(0),
            "Sets the time between synchronisations."},
    });
    // clang-format on
}

}  // namespace zvr::python
