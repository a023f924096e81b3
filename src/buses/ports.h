// What the ports of all buses share: the lines behind them, and opening.
#pragma once

#include "core/wire/commands.h"
#include "digital/pin_map.h"
#include "python/exchange.h"

namespace zvr::python {

inline const Parameter busPort{"port", "int", "port of the bus"};

/// The modes of lines that a bus may take.
py::list freeModes();

/// Checks port and lines and sends the command; gives the reply. What else is to be done comes before its status.
template <const PinnedPorts& ports>
Result openPort(Op op, Object port, Command command) {
    const std::string prefix = ports.prefix;
    op.call(("_check" + prefix + "Port").c_str(), port);
    co_await op.request(("_check" + prefix + "PinState").c_str(), port, freeModes());
    co_return co_await op.exchange(command, payload(port));
}

/// The map that the model gave, a constructor that takes it, the checks of port and lines, and `getter`, which gives
/// the map.
template <const PinnedPorts& ports>
void definePorts(Feature& bus) {
    definePinCheck<ports>(definePortCheck<ports>(bus));
    bus.offers(
           {{ports.field, "dict[int, list[tuple[int, int]]]", "ports, each with its lines as digital port and pin"}})
        .shared(std::string(ports.prefix) + "_getPinMap", {}, "Tells which ports there are, and their lines.",
                {"dict[int, list[tuple[int, int]]]", "lines as digital port and pin, by port", "the model's table"}, {},
                [](py::handle self) { return attribute(self, ports.field); });
}

/// A list of the reply's bytes from this place on.
Reply bytesFrom(std::size_t place);

}  // namespace zvr::python
