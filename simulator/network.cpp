// The network commands: addresses that are kept and read back.
#include <memory>

#include "modules.h"

namespace zvr::sim {

namespace {

// One setting of a fixed width with a command to read and one to write it.
void addSetting(Device& device, Command read, Command write, Bytes initial) {
    const auto value = std::make_shared<Bytes>(std::move(initial));
    device.on(read, [value](ByteView) { return *value; });
    device.on(write, [value](ByteView data) {
        if (data.size() != value->size()) return reply(Status::parser);
        value->assign(data.begin(), data.end());
        return reply(Status::ok);
    });
}

}  // namespace

void addNetwork(Device& device) {
    addSetting(device, GET_IP, SET_IP, {192, 168, 1, 110, 255, 255, 255, 0});
    addSetting(device, GET_GATEWAY, SET_GATEWAY, {192, 168, 1, 1});
    addSetting(device, GET_MAC, SET_MAC, {0x02, 0x0A, 0x5A, 0x00, 0x00, 0x01});
}

}  // namespace zvr::sim
