// The network commands: addresses that are kept and read back.
#include <algorithm>

#include "device/modules.h"

namespace zvr::sim {

namespace {

using Field = std::span<std::uint8_t>;

// Fields that one command reads and another writes, all at once.
void addSetting(Device& device, Command read, Command write, const std::vector<Field>& fields) {
    device.on(read, [fields](ByteView) {
        Bytes data;
        for (const Field field : fields) data.insert(data.end(), field.begin(), field.end());
        return data;
    });
    device.on(write, [fields](ByteView data) {
        std::size_t width = 0;
        for (const Field field : fields) width += field.size();
        if (data.size() != width) return reply(Status::parser);
        for (const Field field : fields) {
            std::ranges::copy(data.first(field.size()), field.begin());
            data = data.subspan(field.size());
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
