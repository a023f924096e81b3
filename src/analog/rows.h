// Rows of samples for Python: lists of floats, or one block of doubles.
#pragma once

#include <array>

#include "core/engine/row_queue.h"
#include "device/feature.h"

namespace zvr::python {

/// Rows of several chip selects: the same number of each.
using RowRuns = std::vector<std::vector<RowRun>>;

/// A list of rows, each the values of all chip selects in their order. Equal 16-bit codes share one float object.
/// Reuses `result` if it has that many rows, nobody else has it or a row of it, and nobody changed them.
py::list toLists(const RowRuns& runs, std::size_t rows, py::list result = py::list());

/// Rows and columns of doubles in contiguous memory, exported by the buffer protocol without a copy.
struct SampleBlock {
    std::size_t rows = 0, columns = 0;
    std::shared_ptr<double> values;
    RowPlace place = {};
    /// The chip selects in column order; none if channels are numbered consecutively.
    std::array<std::uint8_t, 3> chipSelects{};
    std::uint8_t chipSelectCount = 0;
};

/// Writes taken rows, each with the values of all queues in order; needs no interpreter lock.
void writeRows(const RowsTaken& taken, double* out);

}  // namespace zvr::python
