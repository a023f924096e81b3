#include "analog/input.h"

#include "analog/analog.h"
#include "core/engine/sample_memory.h"
#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "device/decoder_thread.h"
#include "device/protocol.h"
#include "device/queue_face.h"
#include "models/traits.h"
#include "python/raising.h"

namespace zvr::python {

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

std::pair<RowLayout, Bytes> fromFloats(py::handle row) {
    if (PySequence_Check(row.ptr()) == 0) throw py::type_error("a row is a sequence of numbers");
    Bytes bytes = doublesOf(row);
    const auto columns = static_cast<int>(bytes.size() / sizeof(double));
    return {RowLayout::values(columns), std::move(bytes)};
}

py::list toFloats(const std::vector<RowRun>& rows) {
    std::size_t count = 0;
    for (const RowRun& run : rows) count += run.rows;
    return toLists({rows}, count);
}

constexpr ItemKind floatRows{toFloats, fromFloats};

// One per chip select of each port; a single one if chip selects cannot be chosen.
std::vector<StreamKey> streamKeys(py::handle self, int command) {
    const AnalogInput& input = traitsOf(self).analogInput;
    const int chipSelects = input.enables == Enables::chipSelects ? input.chipSelects : 1;
    std::vector<StreamKey> keys;
    for (const Port& port : input.ports) {
        for (int chipSelect = 0; chipSelect < chipSelects; ++chipSelect) {
            keys.push_back({command, port.number, chipSelect});
        }
    }
    return keys;
}

// The current layout of rows, from the object's fields.
RowLayout layoutOf(py::handle self) {
    const auto columns = argument<int>(attribute(self, "ai_num_channels"), "ai_num_channels");
    const auto ratio = argument<double>(attribute(self, "ai_ratio"), "ai_ratio");
    if (columns < 1 || columns > 65535) throw py::value_error("a row has at least one channel");
    const bool is24 = traitsOf(self).analogInput.bits == 24;
    return is24 ? RowLayout::scaled24(columns, ratio) : RowLayout::scaled16(columns, ratio);
}

constexpr std::array decoders{
    DecoderFields{"ai_lock", "ai_data_queue_list", "ai_signal_queue_list", "ai_stream_thread"}};

std::vector<StreamKey> keysOf(py::handle self, std::size_t) {
    return streamKeys(self, py::cast<int>(attribute(self, "ai_strm_cmd")));
}

constexpr StreamedFunction inputFunction{.body = "_AIStreamThread",
                                         .killed = "ai_killed",
                                         .opened = "ai_open_flag",
                                         .overflow = FailureId::AIQueueOverflowWarning,
                                         .items = floatRows,
                                         .threads = decoders,
                                         .hasLists = true,
                                         .bodyTakesItems = true,
                                         .keysOf = keysOf,
                                         .layoutOf = layoutOf};

Object indexOfQueue(py::handle /*self*/, const Object& port, const Object& chipSelect) {
    for (const auto& [number, factor] : {std::pair{0, 2}, {3, 2}, {1, 3}}) {
        if (port.equal(py::int_(number))) return port * py::int_(factor) + chipSelect;
    }
    PyErr_SetString(PyExc_UnboundLocalError, "there is no queue for this port");
    throw py::error_already_set();
}

// Looks up the queues of each chip select of a port.
template <class Take>
void eachPair(py::handle self, const Object& port, Take take) {
    const bool hasOwnIndex = hasOwnMethod(self, "_AI_changePortToIndex");
    for (const py::handle chipSelect : chipSelectsOf(self, port)) {
        take(hasOwnIndex ? indexOfQueue(self, port, borrow(chipSelect.ptr()))
                         : callMethod(self, "_AI_changePortToIndex", port, chipSelect));
    }
}

Object queueAt(const Object& queues, const Object& index) { return own(PyObject_GetItem(queues.ptr(), index.ptr())); }

std::shared_ptr<RowFifo> ownRows(const Object& queue) {
    auto rows = nativeOrNothing<RowFifo>(queue);
    return rows && &rows->kind == &floatRows && !rows->isForeign() ? rows : nullptr;
}

// Calls `use` with the list of row queues, as far as that goes: a user may have replaced anything.
template <class Use>
void withQueues(py::handle self, Use use) {
    try {
        use(attribute(self, "ai_signal_queue_list"));
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_Exception)) throw;
    }
}

// Calls `tell` with each row queue of a port.
template <class Tell>
void tellQueues(py::handle self, const Object& port, Tell tell) {
    withQueues(self, [&](const Object& all) {
        eachPair(self, port, [&](const Object& index) {
            if (const auto rows = ownRows(queueAt(all, index))) tell(*rows);
        });
    });
}

void requireOurs(const Selection& selection) {
    if (!selection.ours()) throw py::type_error("the object's signal queues are not the library's own");
}

// Takes rows of one width under the locks of their queues, without the interpreter lock.
RowsTaken takeUniform(const Selection& selection, const RowsWanted& wanted) {
    requireOurs(selection);
    const WithoutGil released;
    return RowQueue::takeUniform(selection.queues, wanted);
}

}  // namespace

std::size_t Selection::size() const {
    std::size_t least = 2147483648;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        least = std::min(
            least, haveOwnSizes ? queues[i]->size() : argument<std::size_t>(callMethod(objects[i], "qsize"), "qsize"));
    }
    return least;
}

Selection select(py::handle self, const Object& port) {
    Selection selection;
    const Object all = attribute(self, "ai_signal_queue_list");
    eachPair(self, port, [&](const Object& index) {
        const Object queue = queueAt(all, index);
        selection.objects.push_back(queue);
        const auto ours = nativeOrNothing<RowFifo>(queue);
        if (ours && &ours->kind == &floatRows && hasOwnMethod(queue, "get")) selection.queues.push_back(ours);
        selection.haveOwnSizes = selection.haveOwnSizes && selection.ours() && hasOwnMethod(queue, "qsize");
    });
    return selection;
}

Task awaitRows(Op op, std::shared_ptr<Selection> selection, std::size_t count, Deadline deadline) {
    constexpr double pause = 0.001;
    const auto runtime = runtimeOrNothing(op.self());
    EndOfReads end(deadline);
    while (selection->size() < count) {
        const auto look = end.nextLook(runtime && runtime->isOver());
        if (!look) break;
        const Deadline until = *look;
        if (!op.awaitable() && selection->ours()) {
            blocking([&](const InterruptCheck& onWait) {
                for (const auto& queue : selection->queues) queue->waitForSize(count, until, onWait);
                return true;
            });
            continue;
        }
        if (op.awaitable() && selection->haveOwnSizes && runtime) {
            const auto lacks = [&](const auto& queue) { return queue->size() < count; };
            const auto queue = std::ranges::find_if(selection->queues, lacks);
            if (queue != selection->queues.end()) co_await RowsAwaiter(runtime->wakers, *queue, count, until);
            continue;
        }
        const double left = std::chrono::duration<double>(deadline - Clock::now()).count();
        co_await op.sleep(std::clamp(left, 0.0, pause));
    }
    const std::size_t found = selection->size();
    if (found == 0 && count > 0) requireConnection(op.self());
    co_return py::int_(std::min(found, count));
}

std::shared_ptr<SampleBlock> takeBlock(py::handle self, const Object& port, const Selection& selection,
                                       std::size_t count) {
    auto block = std::make_shared<SampleBlock>();
    if (traitsOf(self).analogInput.enables == Enables::chipSelects) {
        for (const py::handle each : chipSelectsOf(self, port)) {
            if (block->chipSelectCount == block->chipSelects.size()) break;
            block->chipSelects[block->chipSelectCount++] = argument<std::uint8_t>(each, "chip_select");
        }
    }
    const RowsTaken taken = takeUniform(selection, {.rows = count, .consecutive = true});
    block->rows = taken.rows;
    block->columns = taken.columns;
    block->place = taken.place;
    if (taken.rows == 0) {
        const auto width = argument<std::size_t>(attribute(self, "ai_num_channels"), "ai_num_channels");
        block->columns = width * selection.queues.size();
    }
    const WithoutGil released;
    block->values = sampleMemory(block->rows * block->columns);
    writeRows(taken, block->values.get());
    return block;
}

void noteRate(py::handle self, int port, double rate) {
    tellQueues(self, py::int_(port), [&](RowFifo& rows) { rows.setRate(rate); });
}

// Frames received before this call belong to earlier runs.
void noteStart(py::handle self, const Object& port) {
    const std::uint64_t before = StreamItem::newest;
    tellQueues(self, port, [&](RowFifo& rows) { rows.beginRun(before); });
}

void noteEnd(py::handle self, int port) {
    tellQueues(self, py::int_(port), [](RowFifo& rows) {
        rows.endRun();
        rows.spareLists.clear();
    });
}

void dropSpareLists(py::handle self) {
    withQueues(self, [](const Object& all) {
        for (const py::handle queue : py::list(all)) {
            if (const auto rows = ownRows(borrow(queue.ptr()))) rows->spareLists.clear();
        }
    });
}

namespace {

// For foreign queues or overridden methods: reads row by row through the object.
Task readRowByRow(Op op, std::shared_ptr<Selection> selection, std::size_t rows, Object delay) {
    py::list result;
    for (std::size_t row = 0; row < rows; ++row) {
        py::list flat;
        for (const Object& queue : selection->objects) {
            const Object part = co_await op.callSameForm("_getStreamingFromPool", queue, py::int_(1), delay);
            callMethod(flat, "extend", part);
        }
        result.append(flat);
    }
    co_return result;
}

// Begins every read: checks the port and waits for rows.
Task beginReading(Op op, Object port, double delay, std::shared_ptr<Selection> selection, std::size_t count) {
    port = devicePort(op.self(), port);
    op.call("_checkAIPort", port);
    *selection = select(op.self(), port);
    if (delay <= 0) co_return py::int_(0);
    co_return co_await op.run(awaitRows(op, selection, count, deadlineIn(delay)));
}

std::size_t atLeastNone(Py_ssize_t count) { return static_cast<std::size_t>(std::max(count, Py_ssize_t{0})); }

Task readStreaming(Op op, Object port, Py_ssize_t count, Object delay) {
    const auto selection = std::make_shared<Selection>();
    const double seconds = secondsOf(delay, "delay");
    const Object found = co_await op.run(beginReading(op, port, seconds, selection, atLeastNone(count)));
    const auto rows = py::cast<std::size_t>(found);
    const char* const take = op.awaitable() ? "_getStreamingFromPool_async" : "_getStreamingFromPool";
    if (!selection->ours() || !hasOwnMethod(op.self(), take)) {
        co_return co_await op.run(readRowByRow(op, selection, rows, delay));
    }
    const RowsTaken taken = RowQueue::takeTogether(selection->queues, rows);
    if (selection->queues.empty()) co_return toLists(taken.runs, taken.rows);
    SpareLists& spare = static_cast<RowFifo&>(*selection->queues.front()).spareLists;
    const py::list lists = toLists(taken.runs, taken.rows, spare.take());
    spare.keep(lists);
    co_return lists;
}

Task readBlock(Op op, Object port, Py_ssize_t count, Seconds delay) {
    const auto selection = std::make_shared<Selection>();
    const Object found = co_await op.run(beginReading(op, port, delay, selection, atLeastNone(count)));
    co_return py::cast(takeBlock(op.self(), devicePort(op.self(), port), *selection, py::cast<std::size_t>(found)));
}

/// A caller's memory for doubles.
class WritableDoubles {
public:
    explicit WritableDoubles(py::handle object) {
        if (PyObject_GetBuffer(object.ptr(), &view_, PyBUF_WRITABLE | PyBUF_FORMAT | PyBUF_C_CONTIGUOUS) != 0) {
            if (PyErr_ExceptionMatches(PyExc_TypeError) == 0) throw py::error_already_set();
            PyErr_Clear();
            refuseType("buffer", "a writable buffer of doubles", object);
        }
        const std::string_view format = view_.format == nullptr ? "B" : view_.format;
        if (view_.itemsize != sizeof(double) || (format != "d" && format != "=d" && format != "@d")) {
            PyBuffer_Release(&view_);
            refuseType("buffer", "a writable buffer of doubles", object);
        }
    }
    ~WritableDoubles() { PyBuffer_Release(&view_); }
    WritableDoubles(const WritableDoubles&) = delete;
    WritableDoubles& operator=(const WritableDoubles&) = delete;

    double* data() const { return static_cast<double*>(view_.buf); }
    std::size_t size() const { return static_cast<std::size_t>(view_.len) / sizeof(double); }
    /// Its last dimension; 0 for memory that has one dimension only.
    std::size_t columns() const { return view_.ndim < 2 ? 0 : static_cast<std::size_t>(view_.shape[view_.ndim - 1]); }

    /// Throws Failure InputDataNotInRangeError if rows of this width do not fit.
    void requireRows(std::size_t width) const {
        const std::string wanted = std::to_string(width) + " is wanted";
        if (columns() != 0 && columns() != width) {
            throw Failure(FailureId::InputDataNotInRangeError,
                          "buffer: its last dimension is " + std::to_string(columns()) + ", the row's width " + wanted);
        }
        if (size() < width) {
            throw Failure(FailureId::InputDataNotInRangeError,
                          "buffer: it holds " + std::to_string(size()) + " doubles, at least a row of " + wanted);
        }
    }

private:
    Py_buffer view_{};
};

Task readInto(Op op, Object port, Object buffer, Seconds delay) {
    const auto memory = std::make_shared<WritableDoubles>(buffer);
    const auto selection = std::make_shared<Selection>();
    co_await op.run(beginReading(op, port, 0, selection, 0));
    // Waiting rows may have an older width.
    std::size_t width =
        argument<std::uint32_t>(attribute(op.self(), "ai_num_channels"), "ai_num_channels") * selection->objects.size();
    if (selection->size() > 0) width = takeUniform(*selection, {.rows = 0}).columns;
    memory->requireRows(width);
    if (delay <= 0) co_return py::int_(0);
    const std::size_t most = memory->size() / std::max(width, std::size_t{1});
    const Object found = co_await op.run(awaitRows(op, selection, most, deadlineIn(delay)));
    const RowsWanted wanted{py::cast<std::size_t>(found), memory->size(), memory->columns()};
    const RowsTaken taken = takeUniform(*selection, wanted);
    if (wanted.rows != 0 && taken.rows == 0 && most != 0) memory->requireRows(taken.columns);
    {
        const WithoutGil released;
        writeRows(taken, memory->data());
    }
    co_return py::int_(taken.rows);
}

const Parameter countParameter{"num_samples", "int", "most rows to read"};
const Parameter delayParameter{"delay", "float", "longest wait for that many rows in seconds; with 0 nothing is read",
                               "0.005"};
const Raises portRaises{checkAIPort};

}  // namespace

Object chipSelectsOf(py::handle self, const Object& port) {
    for (const auto& [number, field] : {std::pair{0, "chip_select_p0"}, {1, "chip_select_p1"}, {3, "chip_select_p3"}}) {
        if (port.equal(py::int_(number))) return attribute(self, field);
    }
    PyErr_SetString(PyExc_UnboundLocalError, "there are chip selects for the ports 0, 1 and 3 only");
    throw py::error_already_set();
}

void constructInput(py::handle self, const InputOffer& offer) {
    setAttribute(self, "ai_dict", offer.ports);
    setAttribute(self, "ai_max_rate", offer.maxRate);
    setAttribute(self, "ai_ratio", offer.ratio);
    setAttribute(self, "ai_num_channels", offer.channels);
    const Command read = offer.variable ? READ_AI_ON_DEMAND_VARIABLE : READ_AI_ON_DEMAND;
    setAttribute(self, "ai_echo_cmd", py::int_(int{read}));
    setAttribute(self, "ai_strm_cmd", py::int_(int{offer.streamCommand}));
    setAttribute(self, "ai_mode", py::int_(0));
    for (const char* field : {"chip_select_p0", "chip_select_p1", "chip_select_p3"}) {
        py::list chipSelects;
        chipSelects.append(0);
        setAttribute(self, field, chipSelects);
    }
    constructStream(self, inputFunction);
}

void defineInputStreaming(Feature& based) {
    watchStream(inputFunction);
    Watch::watchNames({"ai_num_channels", "ai_ratio"});
    based.field({"ai_num_channels", "int", "channels of a row of each chip select"})
        .field({"ai_ratio", "float", "volts per count"})
        .field({"ai_killed", "bool", "set once, by `_AI_free`; ends the decoder thread"})
        .field({"ai_data_queue_list", "list[Fifo]", "frames as they came, a queue per port and chip select"})
        .field({"ai_signal_queue_list", "list[RowFifo]", "rows of samples, in the same order"})
        .field({"ai_lock", "Gate", "gate of the decoder thread, shut while the port is closed"})
        .field({"ai_stream_thread", "DeviceThread", "the decoder thread"})
        .field({"ai_open_flag", "bool", "whether the port is open"})
        .shared({.name = "_AI_changePortToIndex",
                 .parameters = {{"port", "int", "0, 1 or 3"}, {"cs", "int", "chip select"}},
                 .doc = "Index of a pair of queues in the lists.",
                 .returns = {"int", "counted from 0"},
                 .raises = {"UnboundLocalError: another port"},
                 .body = indexOfQueue})
        .shared({.name = "_AIStreamThread",
                 .parameters = {{"data_queue_list", "list[Fifo]", "queues of frames"},
                                {"signal_queue_list", "list[RowFifo]", "queues of rows"}},
                 .doc = "Body of the decoder thread: turns frames into rows until `_AI_free`.",
                 .raises = {"ValueError: a frame is no whole number of rows"},
                 .body =
                     [](py::handle self, const Object& frames, const Object& rows) {
                         runDecoderBody(self, inputFunction, {.frames = frames, .items = rows});
                     }})
        .shared({.name = "_AI_free", .doc = "Ends the decoder thread for good.", .body = [](py::handle self) {
                     freeStream(self, inputFunction);
                     dropSpareLists(self);
                 }});
}

void defineInputReading(Feature& module) {
    module
        .withoutTimeout({.name = "AI_readStreaming",
                         .parameters = {inputPortParameter, countParameter, delayParameter},
                         .doc = "Takes streamed rows.",
                         .returns = {"list[list[float]]",
                                     "rows of volts, all channels of the enabled chip selects in order; fewer rows "
                                     "than requested, or none, if no more came in time",
                                     "the row queues"},
                         .raises = portRaises,
                         .body = readStreaming})
        .withoutTimeout({.name = "AI_readStreamingBlock",
                         .parameters = {inputPortParameter, countParameter, delayParameter},
                         .doc = "Takes streamed rows as one block of doubles.",
                         .returns = {"SampleBlock",
                                     "volts, (rows, columns); rows of another width, of another run or after a gap are "
                                     "left for the next call",
                                     "the row queues"},
                         .raises = portRaises,
                         .body = readBlock})
        .withoutTimeout(
            {.name = "AI_readStreamingInto",
             .parameters = {inputPortParameter,
                            {"buffer", "Any",
                             "writable, C-contiguous buffer of doubles, such as numpy.empty((rows, columns))"},
                            delayParameter},
             .doc = "Writes as many streamed rows into the caller's memory as fit.",
             .returns = {"int", "number of rows written, from the beginning of the buffer on", "the row queues"},
             .raises = {checkAIPort, "TypeError: the buffer is not one of doubles", "BufferError: it is not writable",
                        "InputDataNotInRangeError: its last dimension is not the row's width, or it holds less than a "
                        "row"},
             .body = readInto})
        .shared(streamOfBlocks)
        .shared({.name = "AI_getBacklog",
                 .parameters = {inputPortParameter},
                 .doc = "Returns how many rows wait to be read.",
                 .returns = {"int", "rows available from every enabled chip select", "the row queues"},
                 .raises = portRaises,
                 .body =
                     [](py::handle self, const Object& slot) {
                         const Object port = devicePort(self, slot);
                         callMethod(self, "_checkAIPort", port);
                         return select(self, port).size();
                     }})
        .shared({.name = "AI_getDroppedRows",
                 .parameters = {inputPortParameter},
                 .doc = "Returns how many rows were dropped because a queue was full.",
                 .returns = {"int", "rows since construction, over the enabled chip selects", "the row queues"},
                 .raises = portRaises,
                 .body = [](py::handle self, const Object& slot) {
                     const Object port = devicePort(self, slot);
                     callMethod(self, "_checkAIPort", port);
                     std::uint64_t dropped = 0;
                     for (const auto& queue : select(self, port).queues) dropped += queue->dropped();
                     return dropped;
                 }});
}

void completeRowFifo(Package& package) {
    py::reinterpret_borrow<RowFifoType>(package.get("RowFifo"))
        .def(py::init(
                 [](const Object& maxsize) { return std::make_shared<RowFifo>(queueCapacity(maxsize), floatRows); }),
             py::arg("maxsize") = QUEUE_SIZE_MAX);
}

}  // namespace zvr::python
