#include "buses/ports.h"

namespace zvr::python {

py::list freeModes() {
    py::list modes;
    for (const char* mode : {"Idle", "DI", "DO"}) modes.append(mode);
    return modes;
}

Task openPort(Op op, PinnedPorts ports, Object port, Command command) {
    const std::string prefix = ports.prefix;
    op.call(("_check" + prefix + "Port").c_str(), port);
    co_await op.request(("_check" + prefix + "PinState").c_str(), port, freeModes());
    co_return co_await exchange(op, command, payload(port));
}

void definePorts(Feature& bus, const PinnedPorts& ports) {
    bus.shared(portCheck(ports))
        .shared(portLines(ports))
        .operation(lineCheck(ports))
        .constructorFields(
            {{ports.field, "dict[int, list[tuple[int, int]]]", "ports, each with its lines as digital port and pin"}})
        .shared({.name = std::string(ports.prefix) + "_getPinMap",
                 .doc = "Returns which ports there are, and their lines.",
                 .returns = {"dict[int, list[tuple[int, int]]]", "lines as digital port and pin, by port",
                             "the model's table"},
                 .body = [field = ports.field](py::handle self) { return attribute(self, field); }});
}

Reply byteListFrom(std::size_t place) {
    return {[place](py::handle, const Bytes& data) -> Object {
                return toList(ByteView(data).subspan(std::min(place, data.size())));
            },
            {"list[int]", "bytes received; a refusal shows only in their number", "the device"}};
}

}  // namespace zvr::python
