// A queue of rows in compact form, for Python a queue of objects.
#pragma once

#include <array>

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

/// Lists of rows to be filled anew, which costs less than making them: those that the program got last, once it has
/// dropped them. In `rows = read()` the last is in use until the new one has come, so the one before it is kept, too.
/// Under the interpreter lock.
class SpareLists {
public:
    /// A list that nobody else has, or a new one.
    py::list take();
    /// Keeps what the program gets, unless it is long.
    void keep(const py::list& rows);
    template <class Visit>
    void visit(Visit visit) const {
        for (const SharedObject& each : lists_) visit(each);
    }
    void clear() { lists_ = {}; }

private:
    static constexpr std::size_t most = 1000;  // rows
    std::array<SharedObject, 2> lists_;
};

class RowFifo final : public RowQueue {
public:
    RowFifo(std::size_t capacity, const ItemKind& kind) : RowQueue(capacity), kind(kind) {}

    const ItemKind& kind;
    /// State of the loop over blocks that streams into it, under the interpreter lock.
    std::weak_ptr<void> stream;
    SpareLists spareLists;

    /// Takes up to `count` items without waiting.
    py::list takeObjects(std::size_t count);

    /// For the garbage collector.
    template <class Visit>
    void visit(Visit visit) const {
        RowQueue::visit(visit);
        spareLists.visit(visit);
    }
    void clear() {
        RowQueue::clear();
        spareLists.clear();
    }
};

using RowFifoType = py::class_<RowFifo, std::shared_ptr<RowFifo>>;

}  // namespace zvr::python
