#include "device/frame_log.h"

#include "core/wire/commands.h"
#include "core/wire/frame.h"
#include "python/log.h"
#include "python/values.h"

namespace zvr::python {

namespace {

void logFrame(const Client* client, const char* direction, int command, ByteView frame) noexcept {
    onInterpreter([&] {
        frameLog.tell(LogLevel::debug, [&] {
            const std::string_view name = nameOfCommand(command);
            const std::string label = name.empty() ? "command " + std::to_string(command) : std::string(name);
            const Object hex = callMethod(toBytes(frame), "hex", py::str(" "));
            return (client == nullptr ? "" : client->place()) + direction + label + ": " + std::string(py::str(hex));
        });
    });
}

void logSent(const Client& client, ByteView frame) { logFrame(&client, " > ", commandOf(frame), frame); }

}  // namespace

bool framesAreLogged() noexcept { return Client::sendListener != nullptr; }

void askForFrameLog() { Client::sendListener = frameLog.listens(LogLevel::debug) ? logSent : nullptr; }

void logReceived(const std::weak_ptr<Client>& client, const Packet& packet) noexcept {
    const auto held = client.lock();
    logFrame(held.get(), " < ", packet.command, buildFrame(packet.command, packet.data));
}

}  // namespace zvr::python
