// SPI: the device is the master, and every transfer is one request.
#include "buses/buses.h"
#include "buses/ports.h"

namespace zvr::python {

namespace {

constexpr PinnedPorts spiPorts{"SPI", "SPI_dict", "SPI_port", FailureId::SPIPortNotAvaliableError};

// The check gets its modes by name.
Pending checkLines(const Op& op, const Object& port) {
    const char* const check = "_checkSPIPinState";
    const py::list modes = freeModes();
    if (op.awaitable()) {
        return Pending::on(callByName(op.self(), internedTwin(check), {port}, {{"allow_state", modes}}));
    }
    return Pending::done(
        callByName(op.self(), interned(check), {port}, {{"allow_state", modes}, {"timeout", op.timeout()}}));
}

Result open(Op op, Object port) {
    op.call("_checkSPIPort", port);
    co_await checkLines(op, port);
    const Object reply = co_await op.exchange(OPEN_SPI, payload(port));
    co_return statusOf(bytesOf(reply), 1);
}

// Polarity first; the phase is sent even if that was refused.
Result setMode(Op op, Object port, Object mode) {
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
    const std::vector<Check> checks{calls("_checkSPIPort", {"port"})};

    Feature spi(package, "SPI", "Ports of an SPI bus whose master is the device.");
    definePorts<spiPorts>(spi);
    spi.shared("_checkSPIDataSize", {size}, "Refuses another size.", {}, {"SPIDataSizeNotVaildError: another mode"},
               Calls<checkAccepted<FailureId::SPIDataSizeNotVaildError, 0, 1>>{})
        .shared("_checkSPIFirstBit", {firstBit}, "Refuses another order.", {},
                {"SPIFirstBitNotVaildError: another mode"},
                Calls<checkAccepted<FailureId::SPIFirstBitNotVaildError, 0, 1>>{})
        .shared("_checkSPIMode", {mode}, "Refuses another mode.", {}, {"SPIModeNotVaildError: another mode"},
                Calls<checkAccepted<FailureId::SPIModeNotVaildError, 0, 1, 2, 3>>{})
        .shared("_checkSPIPrescaler", {prescaler}, "Refuses another divider.", {},
                {"SPIPrescalerNotVaildError: another divider"},
                Calls<checkAccepted<FailureId::SPIPrescalerNotVaildError, 2, 4, 8, 16, 32, 64, 128, 256>>{})
        .operation("SPI_open", {port}, "Opens a port and takes its lines.", status(1).returns,
                   {"@_checkSPIPort", "@_checkSPIPinState"}, Calls<open>{})
        .operation("SPI_setMode", {port, mode}, "Sets polarity and phase.",
                   {"int", "0, or a number that is not 0 if one of the two was refused", "the device"},
                   {"@_checkSPIPort", "@_checkSPIMode"}, Calls<setMode>{});
    // clang-format off
    spi.rows({
        {"SPI_read", {port, {"bytes_to_read", "int", "number of bytes, 0 to 255"}}, {checks[0], isInt("bytes_to_read")},
            READ_SPI, {u8("port"), u8("bytes_to_read")}, bytesFrom(2), "Reads bytes."},
        {"SPI_write", {port, data}, {checks[0], isList("write_data")}, WRITE_SPI,
            {u8("port"), length("write_data"), bytes("write_data")}, status(1), "Writes bytes."},
        {"SPI_readAndWrite", {port, data}, {checks[0], isList("write_data")}, READ_AND_WRITE_SPI,
            {u8("port"), length("write_data"), bytes("write_data")}, bytesFrom(2), "Writes bytes, and reads as many at the same time."},
        {"SPI_close", {port}, checks, CLOSE_SPI, {u8("port")}, status(1), "Closes a port and frees its lines."},
        {"SPI_reset", {port}, checks, RESET_SPI, {u8("port")}, status(1), "Puts a port back to its settings of the start."},
        {"SPI_setDataSize", {port, size}, {checks[0], calls("_checkSPIDataSize", {"mode"})}, SET_SPI_DATA_SIZE,
            {u8("port"), u8("mode")}, status(1), "Sets the size of the data."},
        {"SPI_setFirstBit", {port, firstBit}, {checks[0], calls("_checkSPIFirstBit", {"mode"})}, SET_SPI_FIRST_BIT,
            {u8("port"), u8("mode")}, status(1), "Sets which bit comes first."},
        {"SPI_setPrescaler", {port, prescaler}, {checks[0], calls("_checkSPIPrescaler", {"prescaler"})}, SET_SPI_PRESCALER,
            {u8("port"), packed<std::int16_t>("i16", "prescaler")}, status(1), "Sets the divider of the clock."},
        {"_SPI_setCPOL", {port, {"polarity", "int", "0 or 1"}}, {}, SET_SPI_CPOL, {u8("port"), u8("polarity")}, status(1),
            "Sets the polarity of the clock."},
        {"_SPI_setCPHA", {port, {"phase", "int", "0 or 1"}}, {}, SET_SPI_CPHA, {u8("port"), u8("phase")}, status(1),
            "Sets the phase of the clock."},
    });
    // clang-format on
}

}  // namespace zvr::python
