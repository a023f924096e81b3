// The digital lines behind the ports of other functions.
#pragma once

#include "core/wire/failures.h"
#include "python/classes.h"

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

/// Reads the modes of a port's lines, and throws the failure if one is not in an allowed mode.
Result checkLines(Op op, const PinnedPorts& ports, Object port, Object allowed);

inline Object entriesOf(py::handle self, const PinnedPorts& ports, const Object& port) {
    return own(PyObject_GetItem(attribute(self, ports.field).ptr(), port.ptr()));
}

inline std::string nameOf(FailureId failure) { return std::string(rowOf(failure).name); }

/// `_checkXPort`.
template <const PinnedPorts& ports>
Feature& definePortCheck(Feature& feature) {
    return feature.shared(
        std::string("_check") + ports.prefix + "Port", {{"port", "int", "port as the device counts it"}},
        "Refuses a port that the model lacks.", {},
        {"InputTypeNotCorrectError: `port` is no integer", nameOf(ports.failure) + ": the model has no such port"},
        [](py::handle self, const Object& port) {
            checkIsInt(port);
            if (!attribute(self, ports.field).contains(port)) throw Failure(ports.failure);
        });
}

/// `_X_getPinMapPort` and `_checkXPinState`; `ending` and `twin` are for names of that check which are not the usual
/// ones.
template <const PinnedPorts& ports>
Feature& definePinCheck(Feature& feature, const char* ending = "", const char* twin = "") {
    const std::string prefix = ports.prefix;
    Definition state{
        "_check" + prefix + "PinState" + ending,
        {{"port", "int", "port as the device counts it"}, {"allow_state", "list[str]", "modes that are allowed"}},
        "Refuses a port whose lines are in use for something else.",
        {},
        {nameOf(ports.failure) + ": a line is in another mode"},
        steps([](Op op, Object port, Object allowed) -> Result {
            co_return co_await op.run(checkLines(op, ports, port, allowed));
        })};
    state.twin = twin;
    return feature
        .shared("_" + prefix + "_getPinMapPort", {{ports.parameter, "int", "port as the device counts it"}},
                "Digital ports of a port's lines.", {"list[int]", "each once", "the model's table"}, {},
                [](py::handle self, const Object& port) { return digitalPortsOf(entriesOf(self, ports, port)); })
        .add(std::move(state));
}

}  // namespace zvr::python
