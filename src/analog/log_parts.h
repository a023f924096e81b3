// What a logger writes through: a lock, a queue and a writer, each the library's own, the host's, or anything of the
// kind.
#pragma once

#include <atomic>

#include "core/engine/gate.h"
#include "python/common.h"

namespace zvr::python {

/// The gate that the lock is; nothing for a lock of another type, a subclass included: that is used by its methods.
std::shared_ptr<Gate> ownGate(py::handle lock);
bool isOwnQueue(py::handle queue);

bool isShut(py::handle lock);
/// Whether a thread may go on: the lock is taken and given back.
bool tryPass(py::handle lock);
/// Lets a thread through that stands at this gate or lock.
void openLock(py::handle lock);
/// Shuts it, without ever waiting.
void shutLock(py::handle lock);

bool isEmpty(py::handle queue);
std::uint64_t sizeOf(py::handle queue);
/// Puts what only wakes a thread; a full queue needs none.
void putMarker(py::handle queue);

std::size_t rowsOf(py::handle rows);
/// Writes rows, or as many of a block as there is time for until it is abandoned.
void writeRows(py::handle writer, py::handle rows, const std::atomic<bool>& abandoned);

}  // namespace zvr::python
