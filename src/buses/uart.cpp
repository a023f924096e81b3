// UART ports as a bridge: bytes are written by request, and what arrives on the line comes as a stream.
#include "buses/buses.h"
#include "buses/ports.h"
#include "core/wire/constants.h"
#include "device/decoder_thread.h"

namespace zvr::python {

namespace {

constexpr PinnedPorts uartPorts{"UART", "uart_dict", "UART_port", FailureId::UARTPortNotAvaliableError};
constexpr std::size_t longestWrite = 50;
constexpr std::array decoders{
    DecoderFields{"uart_p1_lock", "uart_p1_data_queue", "uart_p1_signal_queue", "uart_p1_stream_thread"},
    DecoderFields{"uart_p2_lock", "uart_p2_data_queue", "uart_p2_signal_queue", "uart_p2_stream_thread"}};

template <class Make>
py::list listOfBytes(const std::vector<RowRun>& rows, Make make) {
    std::size_t count = 0;
    for (const RowRun& run : rows) count += run.rows;
    py::list list(count);
    Py_ssize_t place = 0;
    for (const RowRun& run : rows) {
        for (std::size_t i = 0; i < run.rows; ++i) PyList_SET_ITEM(list.ptr(), place++, make(run.bytes[i]));
    }
    return list;
}

py::list toNumbers(const std::vector<RowRun>& rows) {
    return listOfBytes(rows, [](std::uint8_t byte) { return PyLong_FromLong(byte); });
}

std::pair<RowLayout, Bytes> fromNumber(py::handle number) {
    py::list alone;
    alone.append(number);
    return {RowLayout::octets(1), bytesOf(alone)};
}

constexpr ItemKind octets{toNumbers, fromNumber};

constexpr StreamedFunction uartFunction{
    .body = "_UARTStreamThread",
    .killed = "uart_killed",
    .opened = "uart_open_flag",
    .overflow = FailureId::UARTQueueOverflowWarning,
    .items = octets,
    .threads = decoders,
    .bodyTakesLock = true,
    .bodyTakesItems = true,
    .opensBeforeMarks = true,
    .keysOf = [](py::handle, std::size_t thread) -> std::vector<StreamKey> {
        return {{.command = START_UART_READING, .port = static_cast<int>(thread) + 1}};
    },
    .layoutOf = [](py::handle) { return RowLayout::octets(1); },
    .itemsOf = [](py::handle, const Object& frame) { return frame; }};

void constructBased(py::handle self) { constructStream(self, uartFunction); }

void construct(py::handle self, const Object& ports) {
    setAttribute(self, "uart_dict", ports);
    callObject(attribute(packageObject("UARTBased"), "__init__"), self);
}

Task open(Op op, Object port) {
    const Object reply = co_await op.run(openPort(op, uartPorts, port, OPEN_UART));
    if (!isStreamOpen(op.self(), uartFunction)) {
        setAttribute(op.self(), uartFunction.opened, py::bool_(true));
        co_await op.callSameForm("_UART_startReading", port);
        turnLocks(op.self(), uartFunction, "release");
    }
    co_return statusOf(op, OPEN_UART, reply);
}

Task close(Op op, Object port) {
    op.call("_checkUARTPort", port);
    if (op.awaitable()) {
        co_await op.request("_UART_stopReading", port);
    } else {
        op.call("UART_stopReading", port, op.timeout());  // Compat 1: there is no such method
    }
    const Object reply = co_await exchange(op, CLOSE_UART, payload(port));
    closeStream(op.self(), uartFunction);
    co_return statusOf(op, CLOSE_UART, reply);
}

Task write(Op op, Object port, Object text) {
    op.call("_checkUARTPort", port);
    op.call("_checkUARTDataLength", text);
    Payload data;
    data.add(port).add(py::int_(py::len(text)));
    data.extend(codePoints(text, "write_data"));
    const Object reply = co_await exchange(op, WRITE_UART, data.list());
    co_return statusOf(op, WRITE_UART, reply);
}

// Checks the arguments and returns the queue of the port.
Object signalQueue(const Op& op, const Object& port, const Object& count) {
    op.call("_checkUARTPort", port);
    checkIsInt(count, "bytes_to_read");
    return attribute(op.self(), decoders[port.equal(py::int_(1)) ? 0 : 1].items);
}

Task read(Op op, Object port, Object count, Object delay) {
    const Object queue = signalQueue(op, port, count);
    const Object numbers = co_await op.callSameForm("_getStreamingFromPool", queue, count, delay);
    const py::list characters(py::len(numbers));
    Py_ssize_t place = 0;
    for (const py::handle number : numbers) {
        const auto code = static_cast<int>(wholeNumber(number, "byte", 0, 0x10FFFF));
        PyObject* const character = PyUnicode_FromOrdinal(code);
        if (character == nullptr) throw py::error_already_set();
        PyList_SET_ITEM(characters.ptr(), place++, character);
    }
    co_return characters;
}

Task readBytes(Op op, Object port, Object count, Object delay) {
    const Object queue = signalQueue(op, port, count);
    const Object numbers = co_await op.callSameForm("_getStreamingFromPool", queue, count, delay);
    co_return toBytes(bytesOf(numbers, "bytes"));
}

const Definition checkUARTBaudRate{
    .name = "_checkUARTBaudRate",
    .parameters = {{"baud_rate", "int", "speed in bits per second, at most 400000"}},
    .doc = "Raises UARTBaudRateNotSupportError if the speed is above 400000.",
    .raises = {"InputTypeNotCorrectError: it is not an integer", "UARTBaudRateNotSupportError: it is above 400000"},
    .body = [](py::handle, const Object& rate) {
        checkIsInt(rate, "baud_rate");
        if (rate > py::int_(400000)) throw Failure(FailureId::UARTBaudRateNotSupportError);
    }};
const Definition checkUARTDataLength{.name = "_checkUARTDataLength",
                                     .parameters = {{"data", "str | list[str]", "what is to be written"}},
                                     .doc = "Raises UARTExceedMaxLengthError if there are more than 50 characters.",
                                     .raises = {"InputTypeNotCorrectError: it is neither text nor a list",
                                                "UARTExceedMaxLengthError: it has more than 50 entries"},
                                     .body = [](py::handle, const Object& data) {
                                         checkIsTextOrList(data, "data");
                                         if (py::len(data) > longestWrite)
                                             throw Failure(FailureId::UARTExceedMaxLengthError);
                                     }};

const Definition checkUARTDataBit =
    accepting("_checkUARTDataBit", {"mode", "int", "0 or 1"}, FailureId::UARTDataBitNotSupportError, {0, 1});
const Definition checkUARTParityMode =
    accepting("_checkUARTParityMode", {"mode", "int", "0 to 3"}, FailureId::UARTParityNotSupportError, {0, 1, 2, 3});
const Definition checkUARTNumStopBitMode = accepting("_checkUARTNumStopBitMode", {"mode", "int", "0 to 3"},
                                                     FailureId::UARTStopBitNotSupportError, {0, 1, 2, 3});
void defineChecks(Feature& uart) {
    uart.shared(checkUARTBaudRate)
        .shared(checkUARTDataBit)
        .shared(checkUARTParityMode)
        .shared(checkUARTNumStopBitMode)
        .shared(checkUARTDataLength);
}

void defineStreaming(Feature& uart) {
    watchStream(uartFunction);
    uart.basedConstructor({}, constructBased)
        .field({"uart_killed", "bool", "set once, by `_UART_free`; ends the decoder threads"})
        .field({"uart_open_flag", "bool", "whether reading is on; both ports share it"});
    for (std::size_t i = 0; i < decoders.size(); ++i) {
        const std::string port = std::to_string(i + 1);
        uart.field({decoders[i].frames, "Fifo", "frames of port " + port + " as they came"})
            .field({decoders[i].items, "RowFifo", "bytes of port " + port})
            .field({decoders[i].lock, "Gate", "gate of its decoder thread, shut while nothing is open"})
            .field({decoders[i].thread, "DeviceThread", "its decoder thread"});
    }
    uart.shared({.name = "_UARTStreamThread",
                 .parameters = {{"lock", "Gate", "gate that each round passes"},
                                {"data_queue", "Fifo", "queue of frames"},
                                {"signal_queue", "RowFifo", "queue of bytes"}},
                 .doc = "Body of a decoder thread: turns frames into bytes until `_UART_free`.",
                 .body =
                     [](py::handle self, const Object& lock, const Object& frames, const Object& bytes) {
                         runDecoderBody(self, uartFunction, {lock, frames, bytes});
                     }})
        .shared({.name = "_UART_free", .doc = "Ends the decoder threads for good.", .body = [](py::handle self) {
                     freeStream(self, uartFunction);
                 }});
}

}  // namespace

void defineUart(Package& package) {
    const Parameter& port = busPort;
    const Definition checkUARTPort = portCheck(uartPorts), checkUARTPinState = lineCheck(uartPorts);
    const Raises portRaises{checkUARTPort};
    const Parameter count{"bytes_to_read", "int", "most bytes to take"};
    const Parameter delay{"delay", "float", "seconds to wait for that many, once; the awaitable form never waits",
                          "0.005"};
    const auto setting = [&](const char* name, const char* doc, const Definition& check, Command command,
                             const char* summary) {
        const Parameter mode{"mode", "int", doc};
        return Request{.name = name, .checks = {check(mode)}, .sends = command, .fields = {mode | u8}, .doc = summary};
    };

    Feature uart(package, "UART", "UART ports of the device, as a bridge.");
    uart.shared(checkUARTPort)
        .shared(portLines(uartPorts))
        .operation(checkUARTPinState)
        .field({"uart_dict", "dict[int, list[tuple[int, int]]]", "ports, each with its lines as digital port and pin"})
        .constructor({{"uart_dict", "dict[int, list[tuple[int, int]]]", "ports of the UART, each with its lines"}},
                     construct)
        .shared({.name = "UART_getPinMap",
                 .doc = "Returns which ports there are, and their lines.",
                 .returns = {"dict[int, list[tuple[int, int]]]", "lines as digital port and pin, by port",
                             "the model's table"},
                 .body = [](py::handle self) { return attribute(self, "uart_dict"); }});
    defineChecks(uart);
    defineStreaming(uart);
    uart.operation({.name = "UART_open",
                    .parameters = {port},
                    .doc = "Opens a port and takes its lines. The first one opened is read until a port is closed.",
                    .returns = status(1).returns,
                    .raises = {checkUARTPort, checkUARTPinState},
                    .body = open})
        .operation({.name = "UART_close",
                    .parameters = {port},
                    .doc = "Closes the port and stops reading on both ports. The blocking form fails, and sends "
                           "nothing (compatibility note 1).",
                    .returns = status(1).returns,
                    .raises = {checkUARTPort, "AttributeError: always, in the blocking form"},
                    .body = close})
        .operation({.name = "UART_write",
                    .parameters = {port,
                                   {"write_data", "str | list[str]",
                                    "at most 50 characters with codes up to 255, as text or as a list of single ones"}},
                    .doc = "Writes to the line.",
                    .returns = status(1).returns,
                    .raises = {checkUARTPort, checkUARTDataLength, "TypeError: an entry of the list is no character",
                               "ValueError: a character's code is above 255"},
                    .body = write})
        .withoutTimeout({.name = "_UART_startReading",
                         .parameters = {port},
                         .doc = "Starts the stream of what arrives on the line; there is no reply.",
                         .returns = {"int", "0"},
                         .raises = portRaises,
                         .body = [](Op op, Object port) -> Task {
                             op.call("_checkUARTPort", port);
                             co_await op.callSameForm("_sendPacketWithoutReply", py::int_(int{START_UART_READING}),
                                                      payload(port));
                             co_return py::int_(0);
                         }})
        .withoutTimeout(
            {.name = "UART_read",
             .parameters = {port, count, delay},
             .doc = "Takes what has arrived on the line.",
             .returns = {"list[str]", "characters, one for each byte; fewer, or none, if no more have arrived",
                         "the queue of the port"},
             .raises = {checkUARTPort, "InputTypeNotCorrectError: `bytes_to_read` is not an integer"},
             .body = read})
        .withoutTimeout({.name = "UART_readBytes",
                         .parameters = {port, count, delay},
                         .doc = "Takes what has arrived on the line, as bytes.",
                         .returns = {"bytes", "fewer, or none, if no more have arrived", "the queue of the port"},
                         .raises = {checkUARTPort, "InputTypeNotCorrectError: `bytes_to_read` is not an integer"},
                         .body = readBytes});
    const Parameter baudRate{"baud_rate", "int", "speed in bits per second, 0 to 400000"};
    uart.sharing({.checks = {checkUARTPort(port)}, .fields = {port | u8}})
        .operations({
            {.name = "_UART_stopReading", .sends = STOP_UART_READING, .doc = "Stops the stream."},
            {.name = "UART_reset", .sends = RESET_UART, .doc = "Resets a port to its initial settings."},
            {.name = "UART_setBaudRate",
             .checks = {checkUARTBaudRate(baudRate)},
             .sends = SET_UART_BAUD_RATE,
             .fields = {baudRate | u32},
             .doc = "Sets the speed."},
            setting("UART_setDataBit", "0 or 1 in the device's numbering", checkUARTDataBit, SET_UART_DATA_SIZE,
                    "Sets the number of data bits."),
            setting("UART_setParity", "0 to 3 in the device's numbering", checkUARTParityMode, SET_UART_PARITY,
                    "Sets the parity."),
            setting("UART_setNumStopBit", "0 to 3 in the device's numbering", checkUARTNumStopBitMode,
                    SET_UART_NUM_STOP_BITS, "Sets the number of stop bits."),
        });
}

}  // namespace zvr::python
