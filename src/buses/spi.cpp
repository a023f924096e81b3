// SPI: the device is the master, and every transfer is one request.
#include "buses/buses.h"
#include "buses/ports.h"

namespace zvr::python {

namespace {

constexpr PinnedPorts spiPorts{"SPI", "SPI_dict", "SPI_port", FailureId::SPIPortNotAvaliableError};

// The check takes its modes by keyword.
Awaiter checkLines(const Op& op, const Object& port) {
    const char* const check = "_checkSPIPinState";
    const py::list modes = freeModes();
    if (op.awaitable()) {
        return Awaiter::on(callByName(op.self(), internedAsyncName(check), {port}, {{"allow_state", modes}}));
    }
    return Awaiter::done(
        callByName(op.self(), interned(check), {port}, {{"allow_state", modes}, {"timeout", op.timeout()}}));
}

Task open(Op op, Object port) {
    op.call("_checkSPIPort", port);
    co_await checkLines(op, port);
    const Object reply = co_await exchange(op, OPEN_SPI, payload(port));
    co_return statusOf(op, OPEN_SPI, reply);
}

// Sends the polarity first, then the phase even if the polarity was refused.
Task setMode(Op op, Object port, Object mode) {
    op.call("_checkSPIPort", port);
    op.call("_checkSPIMode", mode);
    const py::int_ high(isOneOf(mode, {2, 3}) ? 1 : 0), low(isOneOf(mode, {1, 3}) ? 1 : 0);
    const Object polarity = co_await op.request("_SPI_setCPOL", port, high);
    const Object phase = co_await op.request("_SPI_setCPHA", port, low);
    co_return polarity | phase;
}

}  // namespace

void defineSpi(Package& package) {
    const Parameter& port = busPort;
    const Parameter data{"write_data", "list[int]", "at most 255 bytes"};
    const Parameter size{"mode", "int", "size of the data, 0 or 1 in the device's numbering"};
    const Parameter firstBit{"mode", "int", "which bit comes first, 0 or 1 in the device's numbering"};
    const Parameter mode{"mode", "int", "SPI mode 0 to 3: polarity, then phase"};
    const Parameter prescaler{"prescaler", "int", "divider of the clock: 2, 4, 8, 16, 32, 64, 128 or 256"};
    const Definition checkSPIDataSize =
        accepting("_checkSPIDataSize", size, FailureId::SPIDataSizeNotVaildError, {0, 1});
    const Definition checkSPIFirstBit =
        accepting("_checkSPIFirstBit", firstBit, FailureId::SPIFirstBitNotVaildError, {0, 1});
    const Definition checkSPIMode = accepting("_checkSPIMode", mode, FailureId::SPIModeNotVaildError, {0, 1, 2, 3});
    const Definition checkSPIPrescaler = accepting(
        "_checkSPIPrescaler", prescaler, FailureId::SPIPrescalerNotVaildError, {2, 4, 8, 16, 32, 64, 128, 256});
    const Definition checkSPIPort = portCheck(spiPorts), checkSPIPinState = lineCheck(spiPorts);

    Feature spi(package, "SPI", "Ports of an SPI bus whose master is the device.");
    definePorts(spi, spiPorts);
    spi.shared(checkSPIDataSize)
        .shared(checkSPIFirstBit)
        .shared(checkSPIMode)
        .shared(checkSPIPrescaler)
        .operation({.name = "SPI_open",
                    .parameters = {port},
                    .doc = "Opens a port and takes its lines.",
                    .returns = status(1).returns,
                    .raises = {checkSPIPort, checkSPIPinState},
                    .body = open})
        .operation({.name = "SPI_setMode",
                    .parameters = {port, mode},
                    .doc = "Sets polarity and phase.",
                    .returns = {"int", "0, or a number that is not 0 if one of the two was refused", "the device"},
                    .raises = {checkSPIPort, checkSPIMode},
                    .body = setMode});
    const Parameter count{"bytes_to_read", "int", "number of bytes, 0 to 255"};
    spi.sharing({.checks = {checkSPIPort(port)}, .fields = {port | u8}})
        .operations({
            {.name = "SPI_read",
             .checks = {isInt(count)},
             .sends = READ_SPI,
             .fields = {count | u8},
             .reply = byteListFrom(2),
             .doc = "Reads bytes."},
            {.name = "SPI_write",
             .checks = {isList(data)},
             .sends = WRITE_SPI,
             .fields = {data | length, data | bytes},
             .doc = "Writes bytes."},
            {.name = "SPI_readAndWrite",
             .checks = {isList(data)},
             .sends = READ_AND_WRITE_SPI,
             .fields = {data | length, data | bytes},
             .reply = byteListFrom(2),
             .doc = "Writes bytes, and reads as many at the same time."},
            {.name = "SPI_close", .sends = CLOSE_SPI, .doc = "Closes a port and frees its lines."},
            {.name = "SPI_reset", .sends = RESET_SPI, .doc = "Resets a port to its initial settings."},
            {.name = "SPI_setDataSize",
             .checks = {checkSPIDataSize(size)},
             .sends = SET_SPI_DATA_SIZE,
             .fields = {size | u8},
             .doc = "Sets the size of the data."},
            {.name = "SPI_setFirstBit",
             .checks = {checkSPIFirstBit(firstBit)},
             .sends = SET_SPI_FIRST_BIT,
             .fields = {firstBit | u8},
             .doc = "Sets which bit comes first."},
            {.name = "SPI_setPrescaler",
             .parameters = {port, prescaler},
             .checks = {checkSPIPrescaler(prescaler)},
             .sends = SET_SPI_PRESCALER,
             .fields = {prescaler | i16},
             .doc = "Sets the divider of the clock."},
        });
    // These two do not check the port.
    spi.operations({
        {.name = "_SPI_setCPOL",
         .sends = SET_SPI_CPOL,
         .fields = {port | u8, Parameter{"polarity", "int", "0 or 1"} | u8},
         .doc = "Sets the polarity of the clock."},
        {.name = "_SPI_setCPHA",
         .sends = SET_SPI_CPHA,
         .fields = {port | u8, Parameter{"phase", "int", "0 or 1"} | u8},
         .doc = "Sets the phase of the clock."},
    });
}

}  // namespace zvr::python
