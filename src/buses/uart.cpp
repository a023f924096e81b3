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

Result open(Op op, Object port) {
    const Object reply = co_await op.run(openPort<uartPorts>(op, port, OPEN_UART));
    if (!isStreamOpen(op.self(), uartFunction)) {
        setAttribute(op.self(), uartFunction.opened, py::bool_(true));
        co_await op.same("_UART_startReading", port);
        turnLocks(op.self(), uartFunction, "release");
    }
    co_return statusOf(bytesOf(reply), 1);
}

Result close(Op op, Object port) {
    op.call("_checkUARTPort", port);
    if (op.awaitable()) {
        co_await op.request("_UART_stopReading", port);
    } else {
        op.call("UART_stopReading", port, op.timeout());  // there is none: this form has always failed so
    }
    const Object reply = co_await op.exchange(CLOSE_UART, payload(port));
    closeStream(op.self(), uartFunction);
    co_return statusOf(bytesOf(reply), 1);
}

Result write(Op op, Object port, Object text) {
    op.call("_checkUARTPort", port);
    op.call("_checkUARTDataLength", text);
    Payload data;
    data.add(port).add(py::int_(py::len(text)));
    data.extend(codePoints(text, "write_data"));
    const Object reply = co_await op.exchange(WRITE_UART, data.list());
    co_return statusOf(bytesOf(reply), 1);
}

// Checks the arguments and gives the queue of the port.
Object signalQueue(const Op& op, const Object& port, const Object& count) {
    op.call("_checkUARTPort", port);
    checkIsInt(count);
    return attribute(op.self(), decoders[port.equal(py::int_(1)) ? 0 : 1].items);
}

Result read(Op op, Object port, Object count, Object delay) {
    const Object queue = signalQueue(op, port, count);
    const Object numbers = co_await op.same("_getStreamingFromPool", queue, count, delay);
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

Result readBytes(Op op, Object port, Object count, Object delay) {
    const Object queue = signalQueue(op, port, count);
    const Object numbers = co_await op.same("_getStreamingFromPool", queue, count, delay);
    co_return toBytes(bytesOf(numbers, "bytes"));
}

void defineChecks(Feature& uart) {
    const auto mode = [](const char* doc) { return Parameters{{"mode", "int", doc}}; };
    uart.shared("_checkUARTBaudRate", {{"baud_rate", "int", "speed in bits per second, at most 400000"}},
                "Refuses a higher speed.", {},
                {"InputTypeNotCorrectError: it is no integer", "UARTBaudRateNotSupportError: it is above 400000"},
                [](py::handle, const Object& rate) {
                    checkIsInt(rate);
                    if (rate > py::int_(400000)) throw Failure(FailureId::UARTBaudRateNotSupportError);
                })
        .shared("_checkUARTDataBit", mode("0 or 1"), "Refuses another mode.", {},
                {"UARTDataBitNotSupportError: another mode"},
                Calls<checkAccepted<FailureId::UARTDataBitNotSupportError, 0, 1>>{})
        .shared("_checkUARTParityMode", mode("0 to 3"), "Refuses another mode.", {},
                {"UARTParityNotSupportError: another mode"},
                Calls<checkAccepted<FailureId::UARTParityNotSupportError, 0, 1, 2, 3>>{})
        .shared("_checkUARTNumStopBitMode", mode("0 to 3"), "Refuses another mode.", {},
                {"UARTStopBitNotSupportError: another mode"},
                Calls<checkAccepted<FailureId::UARTStopBitNotSupportError, 0, 1, 2, 3>>{})
        .shared("_checkUARTDataLength", {{"data", "str | list[str]", "what is to be written"}},
                "Refuses more than 50 characters.", {},
                {"InputTypeNotCorrectError: it is neither text nor a list",
                 "UARTExceedMaxLengthError: it has more than 50 entries"},
                [](py::handle, const Object& data) {
                    checkIsTextOrList(data);
                    if (py::len(data) > longestWrite) throw Failure(FailureId::UARTExceedMaxLengthError);
                });
}

void defineStreaming(Feature& uart) {
    watchStream(uartFunction);
    uart.basedConstructor({}, Calls<constructBased>{})
        .field({"uart_killed", "bool", "set once, by `_UART_free`; ends the feeding threads"})
        .field({"uart_open_flag", "bool", "whether reading is on; both ports share it"});
    for (std::size_t i = 0; i < decoders.size(); ++i) {
        const std::string port = std::to_string(i + 1);
        uart.field({decoders[i].frames, "Fifo", "frames of port " + port + " as they came"})
            .field({decoders[i].items, "RowFifo", "bytes of port " + port})
            .field({decoders[i].lock, "Gate", "gate of its feeding thread, shut while nothing is open"})
            .field({decoders[i].thread, "DeviceThread", "its feeding thread"});
    }
    uart.shared("_UARTStreamThread",
                {{"lock", "Gate", "gate that each round passes"},
                 {"data_queue", "Fifo", "queue of frames"},
                 {"signal_queue", "RowFifo", "queue of bytes"}},
                "Body of a feeding thread: turns frames into bytes until `_UART_free`.", {}, {},
                [](py::handle self, const Object& lock, const Object& frames, const Object& bytes) {
                    runDecoderBody(self, uartFunction, {lock, frames, bytes});
                })
        .shared("_UART_free", {}, "Ends the feeding threads for good.", {}, {},
                [](py::handle self) { freeStream(self, uartFunction); });
}

}  // namespace

void defineUart(Package& package) {
    const Parameter& port = busPort;
    const std::vector<Check> checks{calls("_checkUARTPort", {"port"})};
    const Raises portRaises{"@_checkUARTPort"};
    const Parameter count{"bytes_to_read", "int", "most bytes to take"};
    const Parameter delay{"delay", "float", "seconds to wait for that many, once; the awaitable form never waits",
                          "0.005"};
    const auto setting = [&](const char* name, const char* doc, const char* check, Command command,
                             const char* summary) {
        return Row{name,    {port, {"mode", "int", doc}}, {checks[0], calls(check, {"mode"})},
                   command, {u8("port"), u8("mode")},     status(1),
                   summary};
    };

    Feature uart(package, "UART", "UART ports of the device, as a bridge.");
    definePinCheck<uartPorts>(definePortCheck<uartPorts>(uart));
    uart.field({"uart_dict", "dict[int, list[tuple[int, int]]]", "ports, each with its lines as digital port and pin"})
        .constructor({{"uart_dict", "dict[int, list[tuple[int, int]]]", "ports of the UART, each with its lines"}},
                     Calls<construct>{})
        .shared("UART_getPinMap", {}, "Tells which ports there are, and their lines.",
                {"dict[int, list[tuple[int, int]]]", "lines as digital port and pin, by port", "the model's table"}, {},
                [](py::handle self) { return attribute(self, "uart_dict"); });
    defineChecks(uart);
    defineStreaming(uart);
    uart.operation("UART_open", {port},
                   "Opens a port and takes its lines. The first one opened is read from until a port is closed.",
                   status(1).returns, {"@_checkUARTPort", "@_checkUARTPinState"}, Calls<open>{})
        .operation("UART_close", {port},
                   "Closes a port; nothing is read from either after that. The blocking form fails, and sends nothing.",
                   status(1).returns, {"@_checkUARTPort", "AttributeError: always, in the blocking form"},
                   Calls<close>{})
        .operation("UART_write",
                   {port,
                    {"write_data", "str | list[str]",
                     "at most 50 characters with codes up to 255, as text or as a list of single ones"}},
                   "Writes to the line.", status(1).returns,
                   {"@_checkUARTPort", "@_checkUARTDataLength", "TypeError: an entry of the list is no character",
                    "ValueError: a character's code is above 255"},
                   Calls<write>{})
        .untimed("_UART_startReading", {port}, "Starts the stream of what arrives on the line; there is no reply.",
                 {"int", "0"}, portRaises,
                 [](Op op, Object port) -> Result {
                     op.call("_checkUARTPort", port);
                     co_await op.same("_sendPacketWithoutReply", py::int_(int{START_UART_READING}), payload(port));
                     co_return py::int_(0);
                 })
        .untimed("UART_read", {port, count, delay}, "Takes what has arrived on the line.",
                 {"list[str]", "characters, one for each byte; fewer, or none, where no more have come",
                  "the queue of the port"},
                 {"@_checkUARTPort", "InputTypeNotCorrectError: `bytes_to_read` is no integer"}, Calls<read>{})
        .untimed("UART_readBytes", {port, count, delay}, "Takes what has arrived on the line, as bytes.",
                 {"bytes", "fewer, or none, where no more have come", "the queue of the port"},
                 {"@_checkUARTPort", "InputTypeNotCorrectError: `bytes_to_read` is no integer"}, Calls<readBytes>{});
    // clang-format off
    uart.rows({
        {"_UART_stopReading", {port}, checks, STOP_UART_READING, {u8("port")}, status(1), "Stops the stream."},
        {"UART_reset", {port}, checks, RESET_UART, {u8("port")}, status(1), "Puts a port back to its settings of the start."},
        {"UART_setBaudRate", {port, {"baud_rate", "int", "speed in bits per second, 0 to 400000"}},
            {checks[0], calls("_checkUARTBaudRate", {"baud_rate"})}, SET_UART_BAUD_RATE,
            {u8("port"), packed<std::uint32_t>("u32", "baud_rate")}, status(1), "Sets the speed."},
        setting("UART_setDataBit", "0 or 1 in the device's numbering", "_checkUARTDataBit", SET_UART_DATA_SIZE, "Sets the number of data bits."),
        setting("UART_setParity", "0 to 3 in the device's numbering", "_checkUARTParityMode", SET_UART_PARITY, "Sets the parity."),
        setting("UART_setNumStopBit", "0 to 3 in the device's numbering", "_checkUARTNumStopBitMode", SET_UART_NUM_STOP_BITS, "Sets the number of stop bits."),
    });
    // clang-format on
}

}  // namespace zvr::python
