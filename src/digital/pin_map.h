// The digital lines behind the ports of other functions.
#pragma once

#include "core/wire/failures.h"
#include "device/feature.h"

namespace zvr::python {

/// The ports of a function. The model passes them as a map from port to entries: pairs of digital port and pin, or
/// plain numbers for entries without a digital line.
struct PinnedPorts {
    const char* prefix;     ///< of the function's operations
    const char* field;      ///< of the object that holds the map
    const char* parameter;  ///< name of the port argument in `_X_getPinMapPort`
    FailureId failure;      ///< for a missing port, or one whose lines are in use
};

/// The distinct digital ports of the entries.
py::list digitalPortsOf(py::handle entries);

/// Reads the modes of a port's lines, and throws the error if one is not in an allowed mode.
Task checkLines(Op op, PinnedPorts ports, Object port, Object allowed);

inline Object entriesOf(py::handle self, const PinnedPorts& ports, const Object& port) {
    return own(PyObject_GetItem(attribute(self, ports.field).ptr(), port.ptr()));
}

/// `_checkXPort`.
Definition portCheck(const PinnedPorts& ports);
/// `_checkXPinState`; `ending` and `asyncName` are for irregular names.
Definition lineCheck(const PinnedPorts& ports, const char* ending = "", const char* asyncName = "");
/// `_X_getPinMapPort`.
Definition portLines(const PinnedPorts& ports);

}  // namespace zvr::python
