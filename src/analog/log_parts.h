// The parts of a logger: a lock, a queue and a writer, each the library's own, Python's, or any compatible object.
#pragma once

#include <atomic>

#include "core/engine/gate.h"
#include "python/common.h"

namespace zvr::python {

/// The gate behind a lock; null for any other type, subclasses included, which are used through their methods.
std::shared_ptr<Gate> ownGate(py::handle lock);
bool isOwnQueue(py::handle queue);

bool isShut(py::handle lock);
/// Whether a thread may go on: takes the lock and releases it.
bool tryPass(py::handle lock);
/// Opens a gate or lock for a thread that waits at it.
void openLock(py::handle lock);
/// Shuts it without waiting.
void shutLock(py::handle lock);

bool isEmpty(py::handle queue);
std::uint64_t sizeOf(py::handle queue);
/// Puts the marker that wakes a thread; a full queue needs none.
void putMarker(py::handle queue);

std::size_t rowsOf(py::handle rows);
/// Writes rows; a block is written until `cancelled`.
void writeRows(py::handle writer, py::handle rows, const std::atomic<bool>& cancelled);

}  // namespace zvr::python
