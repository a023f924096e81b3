#include "digital/pin_map.h"

namespace zvr::python {

py::list digitalPortsOf(py::handle entries) {
    py::set ports;
    for (const py::handle entry : entries) {
        if (PySequence_Check(entry.ptr()) != 0) ports.add(own(PySequence_GetItem(entry.ptr(), 0)));
    }
    return py::list(ports);
}

Result checkLines(Op op, Object entries, Object allowed, FailureId failure) {
    for (const py::handle port : digitalPortsOf(entries)) {
        const Object modes = co_await op.request("Sys_getPinModeInPort", port);
        for (const py::handle entry : entries) {
            if (PySequence_Check(entry.ptr()) == 0 || !own(PySequence_GetItem(entry.ptr(), 0)).equal(port)) continue;
            if (!checkFuncPinMap(entry, modes, allowed)) throw Failure(failure);
        }
    }
    co_return py::none();
}

}  // namespace zvr::python
