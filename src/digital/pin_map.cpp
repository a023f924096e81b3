#include "digital/pin_map.h"

namespace zvr::python {

py::list digitalPortsOf(py::handle entries) {
    py::set ports;
    for (const py::handle entry : entries) {
        if (PySequence_Check(entry.ptr()) != 0) ports.add(own(PySequence_GetItem(entry.ptr(), 0)));
    }
    return py::list(ports);
}

Task checkLines(Op op, PinnedPorts ports, Object port, Object allowed) {
    const std::string digitalPorts = std::string("_") + ports.prefix + "_getPinMapPort";
    for (const py::handle each : py::list(op.call(digitalPorts.c_str(), port))) {
        const Object digitalPort = borrow(each.ptr());
        const Object modes = co_await op.request("Sys_getPinModeInPort", digitalPort);
        for (const py::handle entry : py::list(entriesOf(op.self(), ports, port))) {
            if (PySequence_Check(entry.ptr()) == 0) continue;
            if (!own(PySequence_GetItem(entry.ptr(), 0)).equal(digitalPort)) continue;
            if (!isPinFree(entry, modes, allowed)) throw Failure(ports.failure);
        }
    }
    co_return py::none();
}

Definition portCheck(const PinnedPorts& ports) {
    return {.name = std::string("_check") + ports.prefix + "Port",
            .parameters = {{"port", "int", "port as the device counts it"}},
            .doc = "Raises " + std::string(rowOf(ports.failure).name) + " unless the model has the port.",
            .raises = {"InputTypeNotCorrectError: `port` is not an integer",
                       std::string(rowOf(ports.failure).name) + ": the model has no such port"},
            .body = [ports](py::handle self, const Object& port) {
                checkIsInt(port, "port");
                const Object here = attribute(self, ports.field);
                const int known = PySequence_Contains(here.ptr(), port.ptr());
                if (known < 0) throw py::error_already_set();
                if (known == 0) throw notAmong(ports.failure, here);
            }};
}

Definition lineCheck(const PinnedPorts& ports, const char* ending, const char* asyncName) {
    return {
        .name = std::string("_check") + ports.prefix + "PinState" + ending,
        .parameters = {{"port", "int", "port in the device's numbering"},
                       {"allow_state", "list[str]", "modes that are allowed"}},
        .doc = "Raises " + std::string(rowOf(ports.failure).name) +
               " unless all lines of the port are in an allowed mode.",
        .raises = {std::string(rowOf(ports.failure).name) + ": a line is in another mode"},
        .body = [ports](Op op, Object port, Object allowed) { return checkLines(std::move(op), ports, port, allowed); },
        .asyncName = asyncName};
}

Definition portLines(const PinnedPorts& ports) {
    return {
        .name = std::string("_") + ports.prefix + "_getPinMapPort",
        .parameters = {{ports.parameter, "int", "port as the device counts it"}},
        .doc = "Lists the digital ports of a port's lines.",
        .returns = {"list[int]", "each once", "the model's table"},
        .body = [ports](py::handle self, const Object& port) { return digitalPortsOf(entriesOf(self, ports, port)); }};
}

}  // namespace zvr::python
