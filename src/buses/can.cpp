// CAN: frames are written by request, and received frames arrive as a stream of records.
#include "buses/buses.h"
#include "buses/can_frame.h"
#include "buses/ports.h"
#include "core/wire/constants.h"
#include "device/decoder_thread.h"

namespace zvr::python {

namespace {

constexpr PinnedPorts canPorts{"CAN", "can_dict", "CAN_port", FailureId::CANPortNotAvaliableError};

py::list toFrames(const std::vector<RowRun>& rows) {
    const CollectorPause pause;
    std::size_t count = 0;
    for (const RowRun& run : rows) count += run.rows;
    py::list frames(count);
    Py_ssize_t place = 0;
    for (const RowRun& run : rows) {
        const std::uint8_t* wire = run.bytes;
        for (std::size_t i = 0; i < run.rows; ++i, wire += CanFrame::wireBytes) {
            const std::span<const std::uint8_t, CanFrame::wireBytes> record(wire, CanFrame::wireBytes);
            PyList_SET_ITEM(frames.ptr(), place++, CanFrameType::make(CanFrame(record)).release().ptr());
        }
    }
    return frames;
}

std::pair<RowLayout, Bytes> fromFrame(py::handle frame) {
    const auto& content = CanFrameType::of(frame);
    Bytes bytes(content.idBytes.begin(), content.idBytes.end());
    bytes.insert(bytes.end(), content.data.begin(), content.data.end());
    return {RowLayout::records(CanFrame::wireBytes), std::move(bytes)};
}

constexpr ItemKind canFrames{toFrames, fromFrame};

constexpr std::array decoders{DecoderFields{"can_lock", "can_data_queue", "can_frame_queue", "can_stream_thread"}};

constexpr StreamedFunction canFunction{
    .body = "_CANStreamThread",
    .killed = "can_killed",
    .opened = "can_open_flag",
    .overflow = FailureId::CANQueueOverflowWarning,
    .items = canFrames,
    .threads = decoders,
    .keysOf = [](py::handle, std::size_t) -> std::vector<StreamKey> { return {{.command = START_CAN}}; },
    .layoutOf = [](py::handle) { return RowLayout::records(CanFrame::wireBytes); }};

void constructBased(py::handle self) { constructStream(self, canFunction); }

void construct(py::handle self, const Object& ports) {
    setAttribute(self, "can_dict", ports);
    callObject(attribute(packageObject("CANBased"), "__init__"), self);
    const Object pool = attribute(self, "data_pool_strm");
    setAttribute(self, "can_data_queue", own(PyObject_GetItem(pool.ptr(), py::int_(int{START_CAN}).ptr())));
}

// Compat 30: the name of the pin check ends in an underscore, that of its async variant does not.
Task open(Op op, Object port) {
    op.call("_checkCANPort", port);
    if (op.awaitable()) {
        co_await op.request("_checkCANPinState", port, freeModes());
    } else {
        co_await op.request("_checkCANPinState_", port, freeModes());
    }
    const Object reply = co_await exchange(op, OPEN_CAN, payload(port));
    if (!isStreamOpen(op.self(), canFunction)) {
        setAttribute(op.self(), canFunction.opened, py::bool_(true));
        turnLocks(op.self(), canFunction, "release");
    }
    co_return statusOf(op, OPEN_CAN, reply);
}

// The device never answers a start, so the blocking form times out.
Task start(Op op, Object port) {
    op.call("_checkCANPort", port);
    if (op.awaitable()) {
        co_await op.callSameForm("_sendPacketWithoutReply", py::int_(int{START_CAN}), payload(port));
    } else {
        co_await exchange(op, START_CAN, payload(port));  // Compat 22
    }
    co_return py::int_(0);
}

Task close(Op op, Object port) {
    op.call("_checkCANPort", port);
    const Object stopped = co_await op.request("CAN_stop", port);
    // Compat 21: a result that is already negative raises its own error.
    if (const Object refusal = refusalOf(stopped)) co_return refusal;
    const Object reply = co_await exchange(op, CLOSE_CAN, payload(port));
    closeStream(op.self(), canFunction);
    co_return statusOf(op, CLOSE_CAN, reply);
}

// The delay is passed by keyword.
Awaiter take(const Op& op, const Object& queue, const Object& count, const Object& delay) {
    const char* const method = "_getStreamingFromPool";
    if (op.awaitable())
        return Awaiter::on(callByName(op.self(), internedAsyncName(method), {queue, count}, {{"delay", delay}}));
    return Awaiter::done(callByName(op.self(), interned(method), {queue, count}, {{"delay", delay}}));
}

// The 12 bytes of a frame.
template <class... Args>
Object wireOf(const Args&... args) {
    return attribute(callObject(attribute(py::module_::import("pyzvr"), "CANFrame"), args...), "frame_in_list");
}

py::int_ plainInt(const Object& value) { return py::int_(value); }

Task write(Op op, Object port, Object id, Object data, Object remote, Object extended) {
    op.call("_checkCANPort", port);
    checkIsInt(id, "id_");
    checkIsBool(remote, "remote");
    checkIsBool(extended, "extended_id");
    if (truthOf(remote)) data = toList(Bytes(CanFrame::dataBytes));
    checkIsList(data, "data");
    op.call("_checkCANDataRangeAndLength", data);
    Payload sent;
    sent.add(port).add(0).extend(wireOf(id, extended, remote, data));
    const Object reply = co_await exchange(op, WRITE_CAN, sent.list());
    co_return statusOf(op, WRITE_CAN, reply);
}

Task setFilter(Op op, Object port, Object index, Object id, Object remote, Object extended) {
    op.call("_checkCANPort", port);
    Payload sent;
    sent.add(port).add(index).extend(wireOf(id, plainInt(extended), plainInt(remote)));
    const Object reply = co_await exchange(op, SET_CAN_RX_FILTER_OR_MASK, sent.list());
    co_return statusOf(op, SET_CAN_RX_FILTER_OR_MASK, reply);
}

const Definition checkCANSpeed =
    accepting("_checkCANSpeed", {"speed", "int", "0 to 3"}, FailureId::CANSpeedNotVaildError, {0, 1, 2, 3});
const Definition checkCANTXIndex =
    accepting("_checkCANTXIndex", {"mode", "int", "0 to 2"}, FailureId::CANTXNotVaildError, {0, 1, 2});
const Definition checkCANTXPriority =
    accepting("_checkCANTXPriority", {"mode", "int", "0 to 3"}, FailureId::CANTXPriorityNotVaildError, {0, 1, 2, 3});
const Definition checkCANDataRangeAndLength{
    .name = "_checkCANDataRangeAndLength",
    .parameters = {{"data", "list[int]", "bytes of a frame"}},
    .doc = "Raises CANDataLengthNotVaildError for more than 8 entries, InputDataNotInRangeError unless all are bytes.",
    .raises = {"CANDataLengthNotVaildError: more than 8 entries", "InputDataNotInRangeError: one is not 0 to 255"},
    .body = [](py::handle, const Object& data) {
        if (py::len(data) > CanFrame::dataBytes) throw Failure(FailureId::CANDataLengthNotVaildError);
        checkItems(data, py::int_(0), py::int_(255), py::str("The specified CAN data elements not in range"));
    }};

void defineChecks(Feature& can) {
    can.shared(checkCANSpeed)
        .standalone(checkCANTXIndex)
        .standalone(checkCANTXPriority)
        .shared(checkCANDataRangeAndLength);
}

void defineStreaming(Feature& can) {
    watchStream(canFunction);
    can.basedConstructor({}, constructBased)
        .field({"can_killed", "bool", "set once, by `_CAN_free`; ends the decoder thread"})
        .field({"can_open_flag", "bool", "whether the port is open"})
        .field({"can_data_queue", "Fifo", "records as they came"})
        .field({"can_frame_queue", "RowFifo", "frames that wait to be read"})
        .field({"can_lock", "Gate", "gate of the decoder thread, shut while the port is closed"})
        .field({"can_stream_thread", "DeviceThread", "the decoder thread"})
        .shared({.name = "_CANStreamThread",
                 .parameters = {{"queue_", "Fifo", "queue of records"}},
                 .doc = "Body of the decoder thread: turns records into frames until `_CAN_free`.",
                 .raises = {"ValueError: the data is no whole number of records"},
                 .body = [](py::handle self,
                            const Object& frames) { runDecoderBody(self, canFunction, {.frames = frames}); }})
        .shared({.name = "_CAN_free", .doc = "Ends the decoder thread for good.", .body = [](py::handle self) {
                     freeStream(self, canFunction);
                 }});
}

}  // namespace

void defineCan(Package& package) {
    const Parameter& port = busPort;
    const Parameter id{"id_", "int", "identifier, 11 bits, or 29 where `extended_id`"};
    const Parameter remote{"remote", "bool", "whether it is for remote frames"};
    const Parameter extended{"extended_id", "bool", "whether the identifier has 29 bits"};
    const Parameter turned{"status", "bool", "whether it is on"};
    const Definition checkCANPort = portCheck(canPorts),
                     checkCANPinState = lineCheck(canPorts, "_", "_checkCANPinState_async");
    const Raises portRaises{checkCANPort};

    Feature can(package, "CAN", "A node of a CAN bus.");
    can.shared(checkCANPort)
        .shared(portLines(canPorts))
        .operation(checkCANPinState)
        .field({"can_dict", "dict[int, list[tuple[int, int]]]", "ports, each with its lines as digital port and pin"})
        .constructor({{"can_dict", "dict[int, list[tuple[int, int]]]", "ports of the CAN, each with its lines"}},
                     construct)
        .shared({.name = "CAN_getPort",
                 .doc = "Returns which ports there are.",
                 .returns = {"list[int]", "port numbers", "the model's table"},
                 .body = [](py::handle self) { return py::list(attribute(self, "can_dict")); }});
    defineChecks(can);
    defineStreaming(can);
    can.operation({.name = "CAN_open",
                   .parameters = {port},
                   .doc = "Opens a port and takes its lines.",
                   .returns = status(1).returns,
                   .raises = {checkCANPort, checkCANPinState},
                   .body = open})
        .operation({.name = "CAN_start",
                    .parameters = {port},
                    .doc = "Joins the bus and starts the stream of its frames. There is no reply, yet the blocking "
                           "form waits for one (compatibility note 22).",
                    .returns = {"int", "0"},
                    .raises = portRaises,
                    .body = start})
        .operation({.name = "CAN_close",
                    .parameters = {port},
                    .doc = "Leaves the bus, closes a port and frees its lines.",
                    .returns = {"int",
                                "0, or the negative code of the refusal; after a refused stop the port stays open "
                                "(compatibility note 21)",
                                "the device"},
                    .raises = portRaises,
                    .body = close})
        .operation(
            {.name = "CAN_write",
             .parameters = {port,
                            id,
                            {"data", "list[int]", "at most 8 bytes; ignored for a remote frame"},
                            remote.withDefault("False"),
                            extended.withDefault("False")},
             .doc = "Sends a frame; it always has 8 bytes.",
             .returns = status(1).returns,
             .raises =
                 {checkCANPort, checkCANDataRangeAndLength,
                  "InputTypeNotCorrectError: `id_` is not an integer, a flag is not a bool, or `data` is not a list",
                  "OverflowError: a standard identifier of more than 11 bits"},
             .body = write})
        .operation(
            {.name = "CAN_setRXFilterOrMask",
             .parameters = {port, {"index", "int", "filter or mask, in the device's numbering"}, id, remote, extended},
             .doc = "Sets a filter, or a mask of the identifier's bits that filters compare.",
             .returns = status(1).returns,
             .raises = portRaises,
             .body = setFilter})
        .withoutTimeout(
            {.name = "CAN_read",
             .parameters = {port,
                            {"num_frames", "int", "most frames to take"},
                            {"delay", "float", "seconds to wait for that many, once; the awaitable form never waits",
                             "0.005"}},
             .doc = "Takes received frames.",
             .returns = {"list[CANFrame]", "frames, oldest first; fewer, or none, if no more have arrived",
                         "the queue of frames"},
             .body = [](Op op, Object, std::int64_t count, Object delay) -> Task {
                 const Object queue = attribute(op.self(), "can_frame_queue");
                 co_return co_await take(op, queue, py::int_(count), delay);
             }});
    const Parameter speed{"speed_mode", "int", "0 to 3 in the device's numbering"};
    const Parameter buffer{"tx_mode", "int", "transmit buffer, 0 to 2"};
    const Parameter priority{"priority_mode", "int", "0 to 3"};
    const Parameter onOff{"on_off", "bool", "whether frames are filtered"};
    can.sharing({.checks = {checkCANPort(port)}, .fields = {port | u8}})
        .operations({
            {.name = "CAN_stop", .sends = STOP_CAN, .doc = "Leaves the bus."},
            {.name = "CAN_setSpeed",
             .checks = {checkCANSpeed(speed)},
             .sends = SET_CAN_SPEED,
             .fields = {speed | u8},
             .doc = "Sets the speed of the bus."},
            {.name = "_CAN_setEnableInterrupt",
             .sends = SET_CAN_ENABLED_ITR,
             .fields = {turned | asInt},
             .doc = "Turns the controller's interrupts on or off."},
            {.name = "_CAN_setTXPriority",
             .checks = {checkCANTXIndex(buffer), checkCANTXPriority(priority)},
             .sends = SET_CAN_TX_PRIORITY,
             .fields = {buffer | u8, priority | u8},
             .doc = "Sets the priority of a transmit buffer."},
            {.name = "_CAN_setRXRollover",
             .sends = SET_CAN_RX_ROLLOVER,
             .fields = {turned | asInt},
             .doc = "Turns the rollover of a full receive buffer to the next one on or off."},
            {.name = "CAN_setRXFilteringOn",
             .sends = SET_CAN_RX_FILTERING_ON,
             .fields = {onOff | asInt},
             .doc = "Turns filtering on or off."},
            {.name = "_CAN_getInterrupts",
             .sends = GET_CAN_INTERRUPTS,
             .reply = numbersAt<std::uint8_t>(1, 3, "enabled interrupts, their state, and that of errors"),
             .doc = "Reads the controller's interrupts."},
            {.name = "_CAN_getErrors",
             .sends = GET_CAN_ERRORS,
             .reply = numbersAt<std::uint8_t>(1, 2, "transmit and receive error counters"),
             .doc = "Reads the error counters."},
            {.name = "_CAN_getCounters",
             .sends = GET_CAN_COUNTERS,
             .reply = numbersAt<std::uint32_t>(1, 6, "the device's 6 counters"),
             .doc = "Reads the device's counters."},
        });
}

}  // namespace zvr::python
