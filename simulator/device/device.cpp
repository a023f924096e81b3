#include "device/device.h"

namespace zvr::sim {

Bytes padded(std::string_view text, std::size_t width) {
    Bytes bytes(text.begin(), text.end());
    bytes.resize(width);
    return bytes;
}

Device::Device(const Model& model, Identity identity, NetworkSettings network, Peers peers)
    : identity(std::move(identity)), network(network), peers(std::move(peers)), model_(model) {
    for (const Module& module : model.modules) module.add(*this);
}

void Device::add(Command command, Entry entry) {
    if (handlers_.try_emplace(command, std::move(entry)).second) return;
    std::string names;  // a number may have several
    for (const auto& [name, code] : commandTable()) {
        if (code == command) names += (names.empty() ? "" : " or ") + std::string(name);
    }
    throw std::logic_error("command " + std::to_string(command) + ", " + names + ", is registered twice");
}

void Device::onSilent(Command command, std::function<void(Request request)> handler) {
    const auto silent = [handler = std::move(handler)](Request request) {
        handler(request);
        return Bytes();
    };
    add(command, {silent, false, true});
}

void Device::onPort(Command command, PortHandler handler) {
    const auto selecting = [handler = std::move(handler)](Request request) {
        const std::uint8_t port = request.u8();
        return handler(port, Request(request.rest()));
    };
    add(command, {selecting, true, false});
}

void Device::reboot() {
    for (const auto& action : rebootActions_) action();
}

Packet Device::meant(Packet request) {
    if (request.command >> 8 != OPEN_CAN) return request;
    return {OPEN_CAN, reply(static_cast<std::uint8_t>(request.command), request.data)};
}

Bytes Device::replyFrame(int command, ByteView data) {
    return command == OPEN_CAN ? buildFrame(0, reply(std::uint8_t{OPEN_CAN}, data)) : buildFrame(command, data);
}

std::optional<Bytes> Device::handle(const Packet& request) {
    const auto found = handlers_.find(request.command);
    if (found == handlers_.end()) return std::nullopt;
    const Entry& entry = found->second;
    const auto refused = [&](std::uint8_t status) {
        if (!entry.selectsPort) return reply(status);
        return reply(request.data.empty() ? std::uint8_t{0} : request.data[0], status);
    };
    Bytes data;
    if (const auto refusal = steered.refusals.find(request.command); refusal != steered.refusals.end()) {
        data = refused(refusal->second);
    } else {
        try {
            data = entry.handler(Request(request.data));
        } catch (const WrongLength&) {
            data = refused(static_cast<std::uint8_t>(Status::parser));
        }
    }
    return entry.isSilent || steered.stalled ? std::nullopt : std::optional(std::move(data));
}

}  // namespace zvr::sim
