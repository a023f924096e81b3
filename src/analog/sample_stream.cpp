// Iterators over a stream's blocks in both forms: the stream is opened and started by the first block, and closed
// however the loop ends.
#include "analog/analog.h"
#include "analog/input.h"
#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "device/replies.h"
#include "device/row_fifo.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

// Interval at which a waiting read checks that the stream is alive.
constexpr std::chrono::milliseconds lookAfter{50};

/// Lives in the object's `_state`, under the interpreter lock.
struct StreamState {
    bool begun = false, over = false;
    bool isRead = false;               ///< a reader waits for a block
    bool opened = false;               ///< the port was opened here
    bool streams = false;              ///< the device was asked to stream
    bool hasLoop = false;              ///< it is registered with an event loop
    bool dropped = false;              ///< its last reference is gone; an event loop closes it
    bool closing = false;              ///< requests that close it are being awaited
    std::optional<std::uint64_t> run;  ///< rows of earlier runs are skipped
    std::uint64_t rows = 0;            ///< of the whole run; 0 for no limit
};

using HeldState = std::shared_ptr<StreamState>;

HeldState stateOf(py::handle self) { return native<StreamState>(attribute(self, "_state"), "_state"); }

/// The device in the form of the operation.
Op deviceOf(const Op& op) { return {attribute(op.self(), "_box"), op.awaitable() ? Object() : py::none()}; }
Object portOf(py::handle self) { return attribute(self, "_port"); }

bool isConnected(py::handle box) { return !isForeign(box) && isTrue(callMethod(box, "isConnected")); }

// Registers with the loop as asynchronous generators do: the loop closes dropped streams, and open ones at its end.
void tellLoop(py::handle self, StreamState& state) {
    if (std::exchange(state.hasLoop, true)) return;
    const py::tuple hooks = callObject(pythonObject("sys", "get_asyncgen_hooks"));
    setAttribute(self, "_finalizer", hooks[1]);
    if (const Object first = hooks[0]; !first.is_none()) callObject(first, self);
}

// The queue by which streams of a port know each other; nothing where it is not the library's own.
std::shared_ptr<RowFifo> rowsOf(const Op& device, const Object& port) {
    const Selection selection = select(device.self(), devicePort(device.self(), port));
    if (!selection.ours() || selection.objects.empty()) return nullptr;
    return nativeOrNothing<RowFifo>(selection.objects.front());
}

// Unless another stream has the port now.
Task endRun(Op device, Object port, HeldState state) {
    if (!isConnected(device.self())) co_return py::none();
    if (const auto rows = rowsOf(device, port); rows && rows->stream.lock() != state) co_return py::none();
    const struct Closing {
        StreamState& state;
        ~Closing() { state.closing = false; }
    } closing{*state};
    state->closing = true;
    if (state->streams) co_await device.callSameForm("AI_closeStreaming", port);
    if (state->opened) co_await device.callSameForm("AI_close", port);
    co_return py::none();
}

// A stream that was dropped in an event loop is closed later than the next one begins.
Task takePort(Op device, Object port, HeldState state) {
    const auto rows = rowsOf(device, port);
    if (!rows) co_return py::none();
    const auto before = std::static_pointer_cast<StreamState>(rows->stream.lock());
    if (before) {
        if (before->dropped && !std::exchange(before->over, true)) co_await device.run(endRun(device, port, before));
        // A blocking loop on the event loop's own thread would wait for itself.
        for (const Deadline limit = deadlineIn(PACKET_TIMEOUT); before->closing && Clock::now() < limit;) {
            co_await device.sleep(ECHO_DELAY);
        }
    }
    rows->stream = state;
    co_return py::none();
}

Task begin(Op op, HeldState state) {
    const Op device = deviceOf(op);
    const Object port = portOf(op.self());
    state->begun = true;
    co_await device.run(takePort(device, port, state));
    if (!isTrue(attribute(device.self(), "ai_open_flag"))) {
        co_await device.callSameForm("AI_open", port);
        state->opened = true;
    }
    const Object counted = devicePort(device.self(), port);
    ReplyPool(device.self()).drop(OPEN_AI_STREAMING);  // of a request that was sent twice before
    const Object settings = co_await device.callSameForm("AI_openStreaming", counted);
    state->streams = true;
    const Object mode = own(PySequence_GetItem(settings.ptr(), 2));
    if (mode.equal(py::int_(0))) {
        throw Failure(FailureId::AIModeNotAvaliableError,
                      "The port is in mode 0, in which it does not stream: AI_setMode chooses 1 or 2.");
    }
    if (mode.equal(py::int_(1))) {
        state->rows = argument<std::uint64_t>(own(PySequence_GetItem(settings.ptr(), 0)), "num_samples");
    }
    co_await device.callSameForm("AI_startStreaming", port);
    const Selection selection = select(device.self(), counted);
    if (selection.ours() && !selection.queues.empty()) state->run = selection.queues.front()->run().number;
    co_return py::none();
}

/// The state of a port's queues.
struct Look {
    std::size_t waiting;       ///< rows available
    std::uint64_t came;        ///< rows of the run, including dropped ones
    bool isComplete, isEnded;  ///< all rows of the run have come; the device sends no more
};

Look lookAt(const Selection& selection, const StreamState& state) {
    Look look{.waiting = selection.size(), .came = std::uint64_t(-1), .isComplete = state.rows != 0, .isEnded = false};
    for (const auto& queue : selection.queues) {
        const RowQueue::Run run = queue->run();
        look.came = std::min(look.came, run.rows);
        look.isEnded = look.isEnded || run.ended;
    }
    look.isComplete = look.isComplete && look.came >= state.rows;
    return look;
}

// The next block; None after the last.
Task findBlock(Op op, HeldState state) {
    if (state->over) co_return py::none();
    if (!state->begun) co_await op.run(begin(op, state));
    const Op device = deviceOf(op);
    const Object box = borrow(device.self().ptr()), port = devicePort(box, portOf(op.self()));
    const auto rows = argument<std::size_t>(attribute(op.self(), "_rows"), "rows");
    std::optional<std::uint64_t> before;
    while (!state->over) {
        const bool isLost = !isConnected(box);
        const auto selection = std::make_shared<Selection>(select(box, port));
        if (!selection->ours()) throw py::type_error("the object's signal queues are not the library's own");
        const Look look = lookAt(*selection, *state);
        // Rows may still be on their way when the end is reported.
        const bool isQuiet = before && *before == look.came;
        before = look.came;
        const bool isOver = look.isComplete || ((isLost || look.isEnded) && isQuiet);
        if (look.waiting >= rows || (isOver && look.waiting != 0)) {
            const auto block = takeBlock(box, port, *selection, rows);
            if (block->rows != 0 && (!state->run || block->place.run >= *state->run)) co_return py::cast(block);
            continue;
        }
        if (isOver && isLost) throw Failure(FailureId::NetworkConnectionLostError);
        if (isOver) co_return py::none();
        const std::uint64_t left = state->rows == 0 ? rows : look.waiting + state->rows - look.came;
        const std::size_t wanted = std::min<std::uint64_t>(rows, left);
        co_await op.run(awaitRows(device, selection, wanted, Clock::now() + lookAfter));
    }
    co_return py::none();
}

Task closeStream(Op op) {
    const HeldState state = stateOf(op.self());
    if (std::exchange(state->over, true)) co_return py::none();
    co_return co_await op.run(endRun(deviceOf(op), portOf(op.self()), state));
}

/// Marks a stream as being read, for a scope.
class Turn {
public:
    explicit Turn(HeldState state) : state_(std::move(state)) {
        if (state_->isRead) throw std::runtime_error("somebody else waits for the next block of this stream");
        state_->isRead = true;
    }
    ~Turn() { state_->isRead = false; }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    const HeldState state_;
};

// Whether a coroutine is being closed, so that it must not await.
bool forbidsWaiting(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const py::error_already_set& raised) {
        return raised.matches(PyExc_GeneratorExit);
    } catch (...) {
        return false;
    }
}

Task nextBlock(Op op) {
    const HeldState state = stateOf(op.self());
    const Turn turn(state);
    if (op.awaitable()) tellLoop(op.self(), *state);
    if (op.awaitable() && LoopWakers::loopIsDue()) co_await op.sleep(0);
    std::exception_ptr error;
    Object block = py::none();
    try {
        block = co_await op.run(findBlock(op, state));
    } catch (...) {
        error = caught();
    }
    if (!block.is_none()) co_return block;
    if (!error || !forbidsWaiting(error)) {
        try {
            co_await op.run(closeStream(op));
        } catch (...) {
            if (!error) error = caught();
        }
    }
    if (error) std::rethrow_exception(error);
    PyErr_SetNone(op.awaitable() ? PyExc_StopAsyncIteration : PyExc_StopIteration);
    throw py::error_already_set();
}

// An error of closing must not hide the one that ended the block of statements.
Task leave(Op op, Object failure) {
    const bool isClean = py::len(failure) == 0 || py::tuple(failure)[0].is_none();
    std::exception_ptr error;
    try {
        co_await op.run(closeStream(op));
    } catch (...) {
        error = caught();
    }
    if (error && isClean) std::rethrow_exception(error);
    co_return py::none();
}

// Closes a dropped stream, on the event loop that read it if there is one.
void drop(py::handle self) {
    const Object kept = attributeOrNothing(self, "_state");
    const HeldState state = kept ? nativeOrNothing<StreamState>(kept) : nullptr;
    if (!state || state->over || (!state->streams && !state->opened)) return;
    state->dropped = true;
    const Object finalizer = attributeOrNothing(self, "_finalizer");
    if (finalizer && !finalizer.is_none()) {
        callObject(finalizer, self);
    } else if (interpreterAlive()) {
        closeStream(Op(self, py::none())).runThrough();
    }
}

void construct(py::handle self, const Object& box, const Object& port, std::int64_t rows) {
    if (rows < 1 || rows > QUEUE_SIZE_MAX) {
        throw py::value_error("rows: 1 to " + std::to_string(QUEUE_SIZE_MAX) + " are wanted, not " +
                              std::to_string(rows));
    }
    callMethod(box, "_checkAIPort", devicePort(box, port));
    setAttribute(self, "_box", box);
    setAttribute(self, "_port", port);
    setAttribute(self, "_rows", py::int_(rows));
    setAttribute(self, "_state", py::cast(std::make_shared<StreamState>()));
}

Object itself(py::handle self) { return borrow(self.ptr()); }

const Parameter rowsParameter{"rows", "int", "rows of a block, 1 to 1000000"};

}  // namespace

const Definition streamOfBlocks{
    .name = "AI_stream",
    .parameters = {inputPortParameter, rowsParameter},
    .doc =
        "Iterates over the blocks of a new run with `for` or `async for`: the port streams from the first block until "
        "the loop ends. Set mode, rate and channels before.",
    .returns = {"SampleStream", "blocks of so many consecutive rows", "the row queues"},
    .raises = {checkAIPort, "TypeError: `rows` is not an integer", "ValueError: `rows` is out of range"},
    .body = [](py::handle self, const Object& port, const Object& rows) {
        return callObject(packageObject("SampleStream"), self, port, rows);
    }};

void defineSampleStream(Package& package) {
    const py::class_<StreamState, HeldState> state(package.module(), "_SampleStreamState", "State of a stream.");
    const Raises lost{"NetworkConnectionLostError: the connection has ended; all received rows were returned before",
                      "AIModeNotAvaliableError: the port is in mode 0"};
    const auto bothForms = [](ClassMaker& type, const Definition& definition) {
        type.add(definition, Form::method).add(definition, Form::awaitable);
    };
    ClassMaker type = package.makeClass(
        "SampleStream", {},
        "Iterator over a stream's blocks, made by AI_stream.\n\nThe first block opens and starts the stream, and the "
        "port too if none is open. It is closed when the run of mode 1 or the loop ends, by `break` and errors too; "
        "`with` and `async with` close it at once if it outlives the loop. A block is shorter before a gap, which the "
        "next one reports as `dropped_before`, and at the end. Unread rows of an earlier run are dropped.");
    type.method({.name = "__init__",
                 .parameters = {{"box", "Any", "device object"}, inputPortParameter, rowsParameter},
                 .doc = "Sends nothing to the device yet.",
                 .raises = {checkAIPort, "ValueError: `rows` is out of range"},
                 .body = construct})
        .method({.name = "__iter__", .doc = "Itself.", .returns = {"Self"}, .body = itself})
        .method({.name = "__aiter__", .doc = "Itself.", .returns = {"Self"}, .body = itself})
        .method({.name = "__del__", .doc = "Closes it.", .body = drop});
    bothForms(type, {.name = "__next__",
                     .doc = "Waits for the next block.",
                     .returns = {"SampleBlock"},
                     .raises = lost,
                     .body = nextBlock,
                     .asyncName = "__anext__"});
    bothForms(type, {.name = "close",
                     .doc = "Ends the stream; a second call does nothing.",
                     .body = closeStream,
                     .asyncName = "aclose"});
    bothForms(type, {.name = "__enter__",
                     .doc = "Itself.",
                     .returns = {"Self"},
                     .body = [](Op op) -> Task { co_return borrow(op.self().ptr()); },
                     .asyncName = "__aenter__"});
    bothForms(type, {.name = "__exit__",
                     .parameters = {{"*failure", "object", "error that ends the block of statements"}},
                     .doc = "Ends the stream.",
                     .body = leave,
                     .asyncName = "__aexit__"});
}

}  // namespace zvr::python
