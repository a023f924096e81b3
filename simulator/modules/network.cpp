// The network commands: addresses that are kept and read back.
#include <algorithm>

#include "device/modules.h"

namespace zvr::sim {

namespace {

using Field = std::span<std::uint8_t>;

// Fields that one command reads and another writes, all at once.
void addSetting(Device& device, Command read, Command write, const std::vector<Field>& fields) {
    device.on(read, [fields](Request) { return reply(fields); });
    device.on(write, [fields](Request r) {
        std::size_t width = 0;
        for (const Field field : fields) width += field.size();
        for (Request values(r.lastBytes(width)); const Field field : fields) {
            std::ranges::copy(values.bytes(field.size()), field.begin());
        }
        return reply(Status::ok);
    });
}

}  // namespace

void addNetwork(Device& device) {
    NetworkSettings& network = device.network;
    addSetting(device, GET_IP, SET_IP, {network.ip, network.mask});
    addSetting(device, GET_GATEWAY, SET_GATEWAY, {network.gateway});
    addSetting(device, GET_MAC, SET_MAC, {network.mac});
}

}  // namespace zvr::sim
