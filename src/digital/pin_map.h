// The digital lines behind the ports of other functions.
#pragma once

#include "core/wire/failures.h"
#include "device/feature.h"

namespace zvr::python {

/// The ports of a function, told to it by the model as a map from port to entries: pairs of digital port and pin, or
/// plain numbers for what has no line of its own.
struct PinnedPorts {
    const char* prefix;     ///< of the function's operations
    const char* field;      ///< of the object that holds the map
    const char* parameter;  ///< name of a port where its lines are asked for
    FailureId failure;      ///< of a port that is not there, or whose lines are in use
};

/// The digital ports that the entries name, each once.
py::list digitalPortsOf(py::handle entries);

/// Reads the modes of a port's lines, and throws the error if one is not in an allowed mode.
Task checkLines(Op op, PinnedPorts ports, Object port, Object allowed);

inline Object entriesOf(py::handle self, const PinnedPorts& ports, const Object& port) {
    return own(PyObject_GetItem(attribute(self, ports.field).ptr(), port.ptr()));
}

/// `_checkXPort`.
Definition portCheck(const PinnedPorts& ports);
/// `_checkXPinState`; `ending` and `asyncName` are for names that are not the usual ones.
Definition lineCheck(const PinnedPorts& ports, const char* ending = "", const char* asyncName = "");
/// `_X_getPinMapPort`.
Definition portLines(const PinnedPorts& ports);

}  // namespace zvr::python
