// The digital lines behind the ports of other functions.
#pragma once

#include "core/failures.h"
#include "python/classes.h"

namespace zvr::python {

/// The digital ports that the entries of a port name, each once. Entries are pairs of port and pin; a plain number has
/// no line of its own.
py::list digitalPortsOf(py::handle entries);

/// Reads the modes of the lines, and throws `failure` if one is not in an allowed mode.
Result checkLines(Op op, Object entries, Object allowed, FailureId failure);

}  // namespace zvr::python
