#include "device/row_fifo.h"

#include <algorithm>

#include "core/wire/constants.h"
#include "device/protocol.h"
#include "device/queue_face.h"
#include "python/op.h"
#include "python/raising.h"

namespace zvr::python {

py::list SpareLists::take() {
    for (SharedObject& each : lists_) {
        if (each == nullptr || Py_REFCNT(each.get()) != 1) continue;
        const py::list rows = py::reinterpret_borrow<py::list>(each.get());
        each.reset();
        return rows;
    }
    return py::list();
}

void SpareLists::keep(const py::list& rows) {
    if (rows.size() > most) return;
    if (lists_.front()) std::swap(lists_.front(), lists_.back());
    lists_.front() = shared(rows);
}

py::list RowFifo::takeObjects(std::size_t count) {
    const std::vector<RowRun> runs = take(count);
    if (std::ranges::none_of(runs, [](const RowRun& run) { return run.object != nullptr; })) return kind.toList(runs);
    py::list items;
    for (const RowRun& run : runs) {
        if (run.object) {
            items.append(objectOf(run));
        } else {
            callMethod(items, "extend", kind.toList({run}));
        }
    }
    return items;
}

namespace {

using HeldQueue = std::shared_ptr<RowFifo>;

struct Access {
    using Queue = RowFifo;

    // An item that is no row of this queue is kept and given back unchanged; it cannot be converted to numbers.
    static bool put(const HeldQueue& queue, const Object& item, Deadline deadline) {
        std::pair<RowLayout, Bytes> row{RowLayout::records(1), Bytes(1)};
        try {
            auto made = queue->kind.fromItem(item);
            if (!made.second.empty()) row = std::move(made);
        } catch (const py::error_already_set& error) {
            if (!error.matches(PyExc_Exception)) throw;
        } catch (const std::exception&) {
            row = {RowLayout::records(1), Bytes(1)};
        }
        const SharedObject kept = shared(item);
        return blocking(
            [&](const InterruptCheck& onWait) { return queue->putRow(row.first, row.second, kept, deadline, onWait); });
    }

    static Object take(const HeldQueue& queue) {
        const py::list taken = queue->takeObjects(1);
        return taken.empty() ? Object() : Object(taken[0]);
    }
};

}  // namespace

void defineRowFifo(Package& package) {
    const RowFifoType bound(
        package.module(), "RowFifo",
        "Thread-safe queue of a stream's items, kept in compact form: rows of samples, bytes, or frames.",
        collectable<RowFifo>([](const std::shared_ptr<void>& object) { return static_cast<PyObject*>(object.get()); }));
    ClassMaker type(bound);
    defineQueueFace<Access>(type, "Any",
                            "a row of samples as a list of floats, a byte as an integer, a CANFrame, or any object");
    refusePickling(bound);
    type.method({.name = "get_many",
                 .parameters = {{"count", "int", "most items to take"}},
                 .doc = "Takes the oldest items without waiting.",
                 .returns = {"list[Any]", "items, oldest first; fewer, or none, if there are no more"},
                 .body =
                     [](const HeldQueue& queue, std::int64_t count) {
                         return queue->takeObjects(static_cast<std::size_t>(std::max(count, std::int64_t{0})));
                     }})
        .property({"dropped", "int", "Items of the stream dropped for lack of room since the queue was made."},
                  [](const HeldQueue& queue) { return queue->dropped(); });
}

}  // namespace zvr::python
