// The device's clock set from a time server.
#include "services/services.h"

namespace zvr::python {

void defineSntp(Package& package) {
    const Parameter server{"ip_addr", "str", "dotted IPv4 address of the time server", "\"255.255.255.255\""};
    const Parameter period{"period", "float", "time between synchronisations, 32-bit float, in the device's unit"};
    Feature sntp(package, "SNTP", "The device's clock set from a time server.", Feature::Base::none);
    sntp.operations(
        {{.name = "SNTP_syncNow", .sends = SNTP_SYNC_NOW, .reply = status(0), .doc = "Synchronises the clock now."},
         {.name = "SNTP_getSyncStatus",
          .sends = SNTP_GET_SYNC_STATUS,
          .reply = textReply("state of the synchronisation, in the device's words", std::string::npos, 1),
          .doc = "Reads the state of the synchronisation."},
         {.name = "SNTP_getServerIP",
          .sends = SNTP_GET_SERVER_IP,
          .fields = {constant(0)},
          .reply = addressAt(1),
          .doc = "Reads the time server's address."},
         {.name = "SNTP_setServerIP",
          .checks = {isText(server)},
          .sends = SNTP_SET_SERVER_IP,
          .fields = {constant(0), server | address},
          .reply = status(0),
          .doc = "Sets the time server's address."},
         {.name = "SNTP_getPeriod",
          .sends = SNTP_GET_SYNC_PERIOD,
          .reply = numberAt<float>(0, "time between synchronisations, in the device's unit"),
          .doc = "Reads the time between synchronisations."},
         {.name = "SNTP_setPeriod",
          .sends = SNTP_SET_SYNC_PERIOD,
          .fields = {period | f32},
          .reply = status(0),
          .doc = "Sets the time between synchronisations."}});
}

}  // namespace zvr::python
