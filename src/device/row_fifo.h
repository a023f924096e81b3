// A queue of rows in compact form, for Python a queue of objects.
#pragma once

#include "core/engine/row_queue.h"
#include "python/classes.h"

namespace zvr::python {

/// Converts the rows of a queue to Python items and back.
struct ItemKind {
    py::list (*toList)(const std::vector<RowRun>& rows);
    /// The layout and the bytes of one row; throws if the item is no row.
    std::pair<RowLayout, Bytes> (*fromItem)(py::handle item);
};

/// The object of a row that a user put.
inline Object objectOf(const RowRun& run) { return borrow(static_cast<PyObject*>(run.object.get())); }

/// Pauses Python's garbage collector while thousands of objects are made that cannot form cycles.
class CollectorPause {
public:
    CollectorPause() : wasOn_(PyGC_Disable() != 0) {}
    ~CollectorPause() {
        if (wasOn_) PyGC_Enable();
    }
    CollectorPause(const CollectorPause&) = delete;
    CollectorPause& operator=(const CollectorPause&) = delete;

private:
    const bool wasOn_;
};

class RowFifo final : public RowQueue {
public:
    RowFifo(std::size_t capacity, const ItemKind& kind) : RowQueue(capacity), kind(kind) {}

    const ItemKind& kind;
    /// State of the loop over blocks that streams into it, under the interpreter lock.
    std::weak_ptr<void> stream;

    /// Takes up to `count` items without waiting.
    py::list takeObjects(std::size_t count);
};

using RowFifoType = py::class_<RowFifo, std::shared_ptr<RowFifo>>;

}  // namespace zvr::python
