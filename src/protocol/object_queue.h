// A queue of rows in compact form that Python sees as a queue of objects.
#pragma once

#include "core/row_queue.h"
#include "core/stream_reader.h"
#include "protocol/runtime.h"
#include "python/classes.h"

namespace zvr::python {

/// What the rows of a queue are to Python.
struct ItemKind {
    py::list (*toList)(const std::vector<RowRun>& rows);
    /// The layout and the bytes of one row.
    std::pair<RowLayout, Bytes> (*fromItem)(py::handle item);
};

class ObjectQueue final : public RowQueue {
public:
    ObjectQueue(std::size_t capacity, const ItemKind& kind) : RowQueue(capacity), kind(kind) {}

    const ItemKind& kind;

    /// Takes up to `count` items without waiting.
    py::list takeObjects(std::size_t count) { return kind.toList(take(count)); }
};

using ObjectQueueType = py::class_<ObjectQueue, std::shared_ptr<ObjectQueue>>;

/// The feeding threads of one function of a device: frames of a stream in, rows out.
class Feeders final : public RuntimePart {
public:
    /// Makes a thread with its gate shut; `start` lets it run up to there.
    std::shared_ptr<StreamReader> add(const char* threadName, std::shared_ptr<StreamFifo> frames,
                                      std::shared_ptr<ObjectQueue> rows, RowLayout layout, FailureId overflowWarning);
    void start() const {
        for (const auto& reader : readers) reader->start();
    }
    void end() override {
        for (const auto& reader : readers) reader->end();
    }
    void kill() const {
        for (const auto& reader : readers) reader->kill();
    }

    std::vector<std::shared_ptr<StreamReader>> readers;
};

/// The threads that an object keeps under this name; a missing-attribute failure if it has none.
std::shared_ptr<Feeders> feedersOf(py::handle self, const char* partName);

/// Warns, from a thread of the library, that something was dropped.
StreamReader::OnOverflow warningOf(FailureId warning);

}  // namespace zvr::python
