#include "digital/pin_map.h"

namespace zvr::python {

py::list digitalPortsOf(py::handle entries) {
    py::set ports;
    for (const py::handle entry : entries) {
        if (PySequence_Check(entry.ptr()) != 0) ports.add(own(PySequence_GetItem(entry.ptr(), 0)));
    }
    return py::list(ports);
}

Result checkLines(Op op, const PinnedPorts& ports, Object port, Object allowed) {
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

}  // namespace zvr::python
