#include "device/device.h"

namespace zvr::sim {

Bytes reply(std::uint8_t first, ByteView rest) {
    Bytes data(rest.begin(), rest.end());
    data.insert(data.begin(), first);
    return data;
}

Bytes padded(std::string_view text, std::size_t width) {
    Bytes bytes(text.begin(), text.end());
    bytes.resize(width);
    return bytes;
}

Device::Device(const Model& model, Identity identity, NetworkSettings network, Peers peers)
    : identity(std::move(identity)), network(network), peers(std::move(peers)), model_(model) {
    for (const Module& module : model.modules) module.add(*this);
}

void Device::on(Command command, Handler handler) { handlers_[command] = {std::move(handler), false, false}; }

void Device::onSilent(Command command, std::function<void(ByteView data)> handler) {
    handlers_[command] = {[handler = std::move(handler)](ByteView data) {
                              handler(data);
                              return Bytes();
                          },
                          false, true};
}

void Device::onPort(Command command, std::function<Bytes(std::uint8_t port, ByteView rest)> handler) {
    handlers_[command] = {
        [handler = std::move(handler)](ByteView data) { return handler(slice(data, 0, 1)[0], data.subspan(1)); }, true,
        false};
}

void Device::reboot() {
    for (const auto& action : rebootActions_) action();
}

Packet Device::meant(Packet request) {
    if (request.command >> 8 != OPEN_CAN) return request;
    return {OPEN_CAN, reply(static_cast<std::uint8_t>(request.command), request.data)};
}

Bytes Device::replyFrame(int command, ByteView data) {
    return command == OPEN_CAN ? buildFrame(0, reply(OPEN_CAN, data)) : buildFrame(command, data);
}

std::optional<Bytes> Device::handle(const Packet& request) {
    const auto found = handlers_.find(request.command);
    if (found == handlers_.end()) return std::nullopt;
    try {
        Bytes data = found->second.handler(request.data);
        return found->second.isSilent ? std::nullopt : std::optional(std::move(data));
    } catch (const WrongLength&) {
        if (!found->second.selectsPort) return reply(Status::parser);
        return reply(request.data.empty() ? 0 : request.data[0], Status::parser);
    }
}

}  // namespace zvr::sim
