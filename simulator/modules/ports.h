// Commands of numbered ports: whether there is such a port, what is refused, and what is answered.
#pragma once

#include <functional>
#include <optional>

#include "device/device.h"

namespace zvr::sim {

/// Commands whose requests begin with the bytes that select a port (or a channel, or a sensor), which their replies
/// repeat. A missing port, or one not in a state for the command, is refused with the status of the feature.
///
/// An action is called with the port and, if it takes it, the rest of the request; it may be a member of the port.
template <class Port>
class PortCommands {
public:
    /// The object selected by a number and the bytes read after it; empty refuses the request.
    using Find = std::function<Port*(std::uint8_t number, Request& request)>;

    PortCommands(Device& device, Status refusal, Find find)
        : device_(device), refusal_(refusal), find_(std::move(find)) {}

    /// A command that changes a port and answers with a status: the action's, or by its bool whether it was done. A
    /// port with a member `refused` is notified of refusals.
    template <class Change>
    void onChange(Command command, Change change) const {
        add(command, [refusal = refusal_, change](Port* port, Request request) {
            const Status status = port ? statusOf(change, *port, request, refusal) : refusal;
            if constexpr (requires { port->refused(); }) {
                if (port && status != Status::ok) port->refused();
            }
            return reply(status);
        });
    }

    /// A command that answers with values. Where there is no place for a status, there are zeros instead of them.
    template <class Read>
    void onRead(Command command, std::size_t width, Read read) const {
        add(command, [width, read](Port* port, Request request) {
            return port ? reply(call(read, *port, request)) : Bytes(width);
        });
    }

    /// The same where a status takes the place of the values.
    template <class Read>
    void onRead(Command command, Read read) const {
        add(command, [refusal = refusal_, read](Port* port, Request request) {
            return port ? reply(call(read, *port, request)) : reply(refusal);
        });
    }

    /// A command that answers with a status and values; empty refuses.
    template <class Read>
    void onExchange(Command command, Read read) const {
        add(command, [refusal = refusal_, read](Port* port, Request request) {
            const std::optional<Bytes> bytes = port ? call(read, *port, request) : std::nullopt;
            return bytes ? reply(Status::ok, *bytes) : reply(refusal);
        });
    }

    /// A command without a reply.
    template <class Order>
    void onOrder(Command command, Order order) const {
        device_.onSilent(command, [find = find_, order](Request request) {
            Port* port = request.left() == 0 ? nullptr : find(request.u8(), request);
            if (port) call(order, *port, request);
        });
    }

private:
    template <class Action>
    static decltype(auto) call(const Action& action, Port& port, Request request) {
        if constexpr (std::is_invocable_v<const Action&, Port&, Request>) {
            return std::invoke(action, port, request);
        } else {
            return std::invoke(action, port);
        }
    }

    template <class Change>
    static Status statusOf(const Change& change, Port& port, Request request, Status refusal) {
        using Result = decltype(call(change, port, request));
        if constexpr (std::is_void_v<Result>) {
            call(change, port, request);
            return Status::ok;
        } else if constexpr (std::is_same_v<Result, Status>) {
            return call(change, port, request);
        } else {
            return call(change, port, request) ? Status::ok : refusal;
        }
    }

    void add(Command command, std::function<Bytes(Port* port, Request request)> answer) const {
        device_.onPort(command, [find = find_, answer = std::move(answer)](std::uint8_t number, Request request) {
            Port* port = find(number, request);
            const ByteView selected = request.taken();
            return reply(number, selected, answer(port, request));
        });
    }

    Device& device_;
    Status refusal_;
    Find find_;
};

}  // namespace zvr::sim
