#include "analog/input.h"

#include "analog/analog.h"
#include "core/constants.h"
#include "core/failures.h"
#include "python/model.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr const char* partName = "analog input";

/// The thread, and the lock under which a caller takes the same number of rows from several queues.
class InputStream final : public RuntimePart {
public:
    explicit InputStream(std::shared_ptr<StreamReader> reader) : reader(std::move(reader)) {}
    void end() override { reader->end(); }

    const std::shared_ptr<StreamReader> reader;
    std::mutex taking;
};

std::shared_ptr<InputStream> streamOf(py::handle self) {
    auto stream = runtimeOf(self).part<InputStream>(partName);
    if (!stream) throw py::attribute_error("the object has no analog input");
    return stream;
}

// The chassis has three chip selects on each of three ports, all others have one.
std::vector<StreamKey> streamKeys(py::handle self, int command) {
    if (!isModel(self, {"Lattice"})) return {{command, 0, 0}};
    std::vector<StreamKey> keys;
    for (const int port : {0, 1, 3}) {
        for (const int chipSelect : {0, 1, 2}) keys.push_back({command, port, chipSelect});
    }
    return keys;
}

void warnOfOverflow() {
    onInterpreter([] { callObject(failureClass(FailureId::AIQueueOverflowWarning)); });
}

RowLayout layoutFor(const RowLayout& now, int columns, double ratio) {
    return now.sample == RowLayout::Sample::scaled24 ? RowLayout::scaled24(columns, ratio)
                                                     : RowLayout::scaled16(columns, ratio);
}

int columnsOf(py::handle channels) {
    const int columns = py::cast<int>(channels);
    if (columns < 1 || columns > 65535) throw py::value_error("a row has at least one channel");
    return columns;
}

// The pairs of queues that a caller gives to the thread's body.
std::vector<StreamReader::Pair> pairsOf(py::handle frames, py::handle rows) {
    std::vector<StreamReader::Pair> pairs;
    const py::list rowQueues = py::list(borrow(rows.ptr()));
    std::size_t i = 0;
    for (const py::handle queue : frames) {
        if (i == rowQueues.size()) break;
        pairs.push_back({py::cast<std::shared_ptr<StreamFifo>>(queue),
                         py::cast<std::shared_ptr<RowQueue>>(Object(rowQueues[i++]))});
    }
    return pairs;
}

Object indexOfQueue(py::handle /*self*/, const Object& port, const Object& chipSelect) {
    for (const auto& [number, factor] : {std::pair{0, 2}, {3, 2}, {1, 3}}) {
        if (port.equal(py::int_(number))) return port * py::int_(factor) + chipSelect;
    }
    PyErr_SetString(PyExc_UnboundLocalError, "there is no queue for this port");
    throw py::error_already_set();
}

/// The row queues of a port's chip selects.
struct Selection {
    std::vector<Object> objects;
    std::vector<std::shared_ptr<RowQueue>> queues;  ///< shorter than `objects` if one of those is not ours

    bool ours() const { return queues.size() == objects.size(); }
    std::size_t size() const {
        std::size_t least = 2147483648;
        for (const Object& queue : objects) least = std::min(least, py::cast<std::size_t>(callMethod(queue, "qsize")));
        return least;
    }
};

Selection select(py::handle self, const Object& port) {
    Selection selection;
    const Object all = attribute(self, "ai_signal_queue_list");
    for (const py::handle chipSelect : chipSelectsOf(self, port)) {
        const Object index = callMethod(self, "_AI_changePortToIndex", port, chipSelect);
        const Object queue = own(PyObject_GetItem(all.ptr(), index.ptr()));
        selection.objects.push_back(queue);
        if (py::isinstance<RowQueue>(queue)) selection.queues.push_back(py::cast<std::shared_ptr<RowQueue>>(queue));
    }
    return selection;
}

// Waits until each queue has this many rows, for `delay` seconds at most; gives the number that all have.
Result awaitRows(Op op, std::shared_ptr<Selection> selection, std::size_t count, double delay) {
    const Deadline deadline = deadlineIn(delay);
    if (delay <= 0) co_return py::int_(0);
    constexpr double look = 0.001;
    while (selection->size() < count && Clock::now() < deadline) {
        if (!op.awaitable() && selection->ours()) {
            blocking([&](const Attend& attend) {
                for (const auto& queue : selection->queues) queue->waitForSize(count, deadline, attend);
                return true;
            });
            break;
        }
        const double left = std::chrono::duration<double>(deadline - Clock::now()).count();
        co_await op.sleep(std::clamp(left, 0.0, look));
    }
    co_return py::int_(std::min(selection->size(), count));
}

std::size_t wantedRows(py::handle count) {
    return static_cast<std::size_t>(std::max(py::cast<Py_ssize_t>(count), Py_ssize_t{0}));
}

/// Takes the same number of rows from each queue, at most `count`.
std::pair<RowRuns, std::size_t> takeRows(py::handle self, const Selection& selection, std::size_t count, bool uniform) {
    const auto stream = streamOf(self);
    const WithoutGil released;
    const std::lock_guard lock(stream->taking);
    for (const auto& queue : selection.queues) {
        count = std::min(count, uniform ? queue->uniformRows().second : queue->size());
    }
    RowRuns runs;
    for (const auto& queue : selection.queues) runs.push_back(queue->take(count));
    return {std::move(runs), count};
}

// The steps for queues that are not ours: row by row through the object's own ways.
py::list readRowByRow(py::handle self, const Selection& selection, std::size_t rows, const Object& delay) {
    py::list result;
    for (std::size_t row = 0; row < rows; ++row) {
        py::list flat;
        for (const Object& queue : selection.objects) {
            callMethod(flat, "extend", callMethod(self, "_getStreamingFromPool", queue, py::int_(1), delay));
        }
        result.append(flat);
    }
    return result;
}

// What all readings begin with: the port is checked, and rows are waited for.
Result beginReading(Op op, Object port, Object delay, std::shared_ptr<Selection> selection, std::size_t count) {
    port = devicePort(op.self(), port);
    op.call("_checkAIPort", port);
    *selection = select(op.self(), port);
    co_return co_await op.run(awaitRows(op, selection, count, secondsOf(delay)));
}

Result readStreaming(Op op, Object port, Object count, Object delay) {
    const auto selection = std::make_shared<Selection>();
    const Object found = co_await op.run(beginReading(op, port, delay, selection, wantedRows(count)));
    const auto rows = py::cast<std::size_t>(found);
    if (selection->ours() && (op.awaitable() || hasOwnMethod(op.self(), "_getStreamingFromPool"))) {
        const auto [runs, taken] = takeRows(op.self(), *selection, rows, false);
        co_return toLists(runs, taken);
    }
    co_return readRowByRow(op.self(), *selection, rows, delay);
}

std::size_t columnsOf(const RowRuns& runs) {
    std::size_t columns = 0;
    for (const auto& chipSelect : runs) {
        if (!chipSelect.empty()) columns += static_cast<std::size_t>(chipSelect.front().layout.columns);
    }
    return columns;
}

void requireOurs(const Selection& selection) {
    if (!selection.ours()) throw py::type_error("the object's signal queues are not the library's own");
}

Result readBlock(Op op, Object port, Object count, Object delay) {
    const auto selection = std::make_shared<Selection>();
    const Object found = co_await op.run(beginReading(op, port, delay, selection, wantedRows(count)));
    requireOurs(*selection);
    const auto [runs, rows] = takeRows(op.self(), *selection, py::cast<std::size_t>(found), true);
    SampleBlock block;
    block.rows = rows;
    block.columns =
        rows != 0 ? columnsOf(runs)
                  : static_cast<std::size_t>(streamOf(op.self())->reader->layout().columns) * selection->queues.size();
    {
        const WithoutGil released;
        block.values = std::make_unique_for_overwrite<double[]>(block.rows * block.columns);
        writeRows(runs, block.columns, block.values.get());
    }
    co_return py::cast(std::move(block));
}

/// A caller's memory for doubles.
class WritableDoubles {
public:
    explicit WritableDoubles(py::handle object) {
        if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_WRITABLE | PyBUF_FORMAT | PyBUF_C_CONTIGUOUS) != 0) {
            throw py::error_already_set();
        }
        const std::string_view format = view_.format == nullptr ? "B" : view_.format;
        if (view_.itemsize != sizeof(double) || (format != "d" && format != "=d" && format != "@d")) {
            PyBuffer_Release(&view_);
            throw py::type_error("a writable buffer of doubles is wanted");
        }
    }
    ~WritableDoubles() { PyBuffer_Release(&view_); }
    WritableDoubles(const WritableDoubles&) = delete;
    WritableDoubles& operator=(const WritableDoubles&) = delete;

    double* data() const { return static_cast<double*>(view_.buf); }
    std::size_t size() const { return static_cast<std::size_t>(view_.len) / sizeof(double); }

private:
    Py_buffer view_{};
};

Result readInto(Op op, Object port, Object buffer, Object delay) {
    const auto memory = std::make_shared<WritableDoubles>(buffer);
    const auto selection = std::make_shared<Selection>();
    const auto perRow = static_cast<std::size_t>(streamOf(op.self())->reader->layout().columns);
    // How many rows fit is known once the rows are there: their width may be an older one.
    const Object found = co_await op.run(beginReading(op, port, delay, selection, memory->size() / perRow));
    requireOurs(*selection);
    std::size_t columns = 0;
    for (const auto& queue : selection->queues) {
        const auto [width, rows] = queue->uniformRows();
        columns += rows == 0 ? perRow : static_cast<std::size_t>(width);
    }
    const std::size_t room = memory->size() / columns;
    const auto [runs, rows] = takeRows(op.self(), *selection, std::min(py::cast<std::size_t>(found), room), true);
    {
        const WithoutGil released;
        writeRows(runs, columns, memory->data());
    }
    co_return py::int_(rows);
}

const Parameter countParameter{"num_samples", "int", "most rows to read"};
const Parameter delayParameter{"delay", "float", "seconds to wait at most for that many rows; with 0 nothing is read",
                               "0.005"};
const Raises portRaises{"@_checkAIPort"};

}  // namespace

const Parameter inputPortParameter{"port", "int", "port of the analog input; on the chassis the slot, 1, 2 or 4"};

Object chipSelectsOf(py::handle self, const Object& port) {
    for (const auto& [number, field] : {std::pair{0, "chip_select_p0"}, {1, "chip_select_p1"}, {3, "chip_select_p3"}}) {
        if (port.equal(py::int_(number))) return attribute(self, field);
    }
    PyErr_SetString(PyExc_UnboundLocalError, "there are chip selects for the ports 0, 1 and 3 only");
    throw py::error_already_set();
}

void constructInput(py::handle self, const InputOffer& offer) {
    DeviceRuntime& runtime = runtimeOf(self);
    setAttribute(self, "ai_dict", offer.ports);
    setAttribute(self, "ai_max_rate", offer.maxRate);
    const Command read = offer.variable ? READ_AI_ON_DEMAND_VARIABLE : READ_AI_ON_DEMAND;
    setAttribute(self, "ai_echo_cmd", py::int_(int{read}));
    setAttribute(self, "ai_strm_cmd", py::int_(int{offer.streamCommand}));
    setAttribute(self, "ai_mode", py::int_(0));
    for (const char* field : {"chip_select_p0", "chip_select_p1", "chip_select_p3"}) {
        py::list chipSelects;
        chipSelects.append(0);
        setAttribute(self, field, chipSelects);
    }
    setAttribute(self, "ai_open_flag", py::bool_(false));
    if (runtime.part<InputStream>(partName)) return;  // the twin's constructor ran before

    const int columns = columnsOf(offer.channels);
    const auto ratio = numberOf<double>(offer.ratio);
    const RowLayout layout =
        isModel(self, {"TarnAnalog24"}) ? RowLayout::scaled24(columns, ratio) : RowLayout::scaled16(columns, ratio);
    std::vector<StreamReader::Pair> pairs;
    py::list frames, rows;
    for (const StreamKey& key : streamKeys(self, offer.streamCommand)) {
        pairs.push_back({runtime.pools.stream->at(key), std::make_shared<RowQueue>(QUEUE_SIZE_MAX)});
        frames.append(py::cast(pairs.back().frames));
        rows.append(py::cast(pairs.back().rows));
    }
    const auto reader = std::make_shared<StreamReader>("_AIStreamThread", std::move(pairs), layout, reportThreadFailure,
                                                       warnOfOverflow);
    runtime.keep(partName, std::make_shared<InputStream>(reader));
    setAttribute(self, "ai_data_queue_list", frames);
    setAttribute(self, "ai_signal_queue_list", rows);
    setAttribute(self, "ai_lock", py::cast(std::shared_ptr<Gate>(reader, &reader->gate)));
    setAttribute(self, "ai_stream_thread", py::cast(std::shared_ptr<OwnedThread>(reader)));
    reader->start();
}

void defineInputStreaming(Feature& based) {
    based
        .property(
            {"ai_num_channels", "int", "Channels of a row of each chip select."},
            [](py::handle self) { return streamOf(self)->reader->layout().columns; },
            [](py::handle self, const Object& value) {
                StreamReader& reader = *streamOf(self)->reader;
                const RowLayout now = reader.layout();
                reader.setLayout(layoutFor(now, columnsOf(value), now.ratio));
            })
        .property(
            {"ai_ratio", "float", "Volts per count."},
            [](py::handle self) { return streamOf(self)->reader->layout().ratio; },
            [](py::handle self, const Object& value) {
                StreamReader& reader = *streamOf(self)->reader;
                const RowLayout now = reader.layout();
                reader.setLayout(layoutFor(now, now.columns, numberOf<double>(value)));
            })
        .property(
            {"ai_killed", "bool", "Set once, by `_AI_free`; ends the reader thread."},
            [](py::handle self) { return streamOf(self)->reader->ended(); },
            [](py::handle self, const Object& value) {
                if (PyObject_IsTrue(value.ptr()) != 0) streamOf(self)->reader->kill();
            })
        .field({"ai_data_queue_list", "list[Fifo]", "frames as they came, a queue per port and chip select"})
        .field({"ai_signal_queue_list", "list[RowFifo]", "rows of samples, in the same order"})
        .field({"ai_lock", "Gate", "gate of the reader thread, shut while the port is closed"})
        .field({"ai_stream_thread", "DeviceThread", "the reader thread"})
        .field({"ai_open_flag", "bool", "whether the port is open"})
        .shared("_AI_changePortToIndex", {{"port", "int", "0, 1 or 3"}, {"cs", "int", "chip select, 0 to 2"}},
                "Place of a pair of queues in the lists.", {"int", "0 to 8"}, {"UnboundLocalError: another port"},
                Calls<indexOfQueue>{})
        .shared("_AIStreamThread",
                {{"data_queue_list", "list[Fifo]", "queues of frames"},
                 {"signal_queue_list", "list[RowFifo]", "queues of rows"}},
                "Body of the reader thread: turns frames into rows until `_AI_free`.", {},
                {"ValueError: a frame is no whole number of rows"},
                [](py::handle self, const Object& frames, const Object& rows) {
                    const auto pairs = pairsOf(frames, rows);
                    const auto reader = streamOf(self)->reader;
                    const WithoutGil released;
                    reader->run(pairs);
                })
        .shared("_AI_free", {}, "Ends the reader thread for good.", {}, {}, [](py::handle self) {
            setAttribute(self, "ai_killed", py::bool_(true));
            const Object lock = attribute(self, "ai_lock");
            callMethod(lock, "acquire", py::bool_(false));
            for (const py::handle queue : attribute(self, "ai_data_queue_list")) callMethod(queue, "put", py::none());
            callMethod(lock, "release");
        });
}

void defineInputReading(Feature& module) {
    module
        .untimed(
            "AI_readStreaming", {inputPortParameter, countParameter, delayParameter},
            "Takes rows that have been streamed.",
            {"list[list[float]]",
             "rows of volts, the channels of all enabled chip selects behind each other; fewer rows than asked for, "
             "or none, if no more came in time",
             "the row queues"},
            portRaises, Calls<readStreaming>{})
        .untimed(
            "AI_readStreamingBlock", {inputPortParameter, countParameter, delayParameter},
            "Takes rows that have been streamed as one block of doubles.",
            {"SampleBlock", "volts, (rows, columns); rows of another width than the first are left for the next call",
             "the row queues"},
            portRaises, Calls<readBlock>{})
        .untimed("AI_readStreamingInto",
                 {inputPortParameter,
                  {"buffer", "Any", "writable, C-contiguous buffer of doubles, numpy.empty((rows, columns)) for one"},
                  delayParameter},
                 "Writes rows that have been streamed into the caller's memory, as many as fit.",
                 {"int", "number of rows written, from the beginning of the buffer on", "the row queues"},
                 {"@_checkAIPort", "TypeError: the buffer is not one of doubles", "BufferError: it is not writable"},
                 Calls<readInto>{})
        .shared("AI_getBacklog", {inputPortParameter}, "Tells how many rows wait to be read.",
                {"int", "rows that every enabled chip select has", "the row queues"}, portRaises,
                [](py::handle self, const Object& slot) {
                    const Object port = devicePort(self, slot);
                    callMethod(self, "_checkAIPort", port);
                    return select(self, port).size();
                })
        .shared("AI_getDroppedRows", {inputPortParameter}, "Tells how many rows were dropped because a queue was full.",
                {"int", "rows since construction, over the enabled chip selects", "the row queues"}, portRaises,
                [](py::handle self, const Object& slot) {
                    const Object port = devicePort(self, slot);
                    callMethod(self, "_checkAIPort", port);
                    std::uint64_t dropped = 0;
                    for (const auto& queue : select(self, port).queues) dropped += queue->dropped();
                    return dropped;
                });
}

namespace {

Bytes doublesOf(py::handle row) {
    Bytes bytes;
    for (const py::handle value : row) {
        const auto number = numberOf<double>(value);
        const auto* first = reinterpret_cast<const std::uint8_t*>(&number);
        bytes.insert(bytes.end(), first, first + sizeof number);
    }
    return bytes;
}

void putRow(py::handle self, const Object& row) {
    const auto queue = py::cast<std::shared_ptr<RowQueue>>(self);
    Bytes bytes = doublesOf(row);
    const auto columns = static_cast<int>(bytes.size() / sizeof(double));
    if (queue->put(RowLayout::values(columns), std::move(bytes)) == 0) return;
    PyErr_SetNone(hostObject("queue", "Full").ptr());
    throw py::error_already_set();
}

Object getRow(py::handle self, Deadline deadline) {
    const auto queue = py::cast<std::shared_ptr<RowQueue>>(self);
    RowRuns runs{queue->take(1)};
    while (runs[0].empty()) {
        const std::size_t found =
            blocking([&](const Attend& attend) { return queue->waitForSize(1, deadline, attend); });
        runs[0] = queue->take(1);
        if (found == 0) {
            PyErr_SetNone(hostObject("queue", "Empty").ptr());
            throw py::error_already_set();
        }
    }
    return toLists(runs, 1)[0];
}

}  // namespace

void defineRowFifo(Package& package) {
    const Parameter row{"item", "Sequence[float]", "values of a row"};
    const Parameter waits{"block", "bool", "whether to wait", "True"};
    const Parameter timeout{"timeout", "float | None", "seconds to wait at most; None for no limit", "None"};
    const Returns values{"list[float]", "values of the row"};
    const auto type = py::class_<RowQueue, std::shared_ptr<RowQueue>>(
                          package.module(), "RowFifo", "Thread-safe queue of rows of samples, kept in compact form.")
                          .def(py::init<std::size_t>(), py::arg("maxsize") = QUEUE_SIZE_MAX);
    ClassMaker(type)
        .method("put", {row}, "Adds a row; never waits.", {}, {"queue.Full: no room"}, Calls<putRow>{})
        .method("put_nowait", {row}, "Adds a row.", {}, {"queue.Full: no room"}, Calls<putRow>{})
        .method(
            "get", {waits, timeout}, "Takes the oldest row.", values, {"queue.Empty: nothing came in time"},
            [](py::handle self, const Object& waits, const Object& timeout) {
                const bool now = PyObject_IsTrue(waits.ptr()) == 0;
                return getRow(self, now ? Clock::now() : timeout.is_none() ? forever : deadlineIn(secondsOf(timeout)));
            })
        .method("get_nowait", {}, "Takes the oldest row without waiting.", values, {"queue.Empty: nothing is there"},
                [](py::handle self) { return getRow(self, Clock::now()); })
        .method("qsize", {}, "Number of rows.", {"int"}, {},
                [](py::handle self) { return py::cast<RowQueue*>(self)->size(); })
        .method("empty", {}, "Whether it holds nothing.", {"bool"}, {},
                [](py::handle self) { return py::cast<RowQueue*>(self)->size() == 0; })
        .method("full", {}, "Whether it holds all it can.", {"bool"}, {},
                [](py::handle self) {
                    const auto& queue = *py::cast<RowQueue*>(self);
                    return queue.size() >= queue.capacity();
                })
        .property({"maxsize", "int", "Most rows it holds."},
                  [](py::handle self) { return py::cast<RowQueue*>(self)->capacity(); });
}

}  // namespace zvr::python
