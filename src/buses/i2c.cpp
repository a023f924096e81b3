// I2C: the device is the master, and every transfer is one request.
#include "buses/buses.h"
#include "buses/ports.h"

namespace zvr::python {

namespace {

constexpr PinnedPorts i2cPorts{"I2C", "I2C_dict", "I2C_port", FailureId::I2CPortNotAvaliableError};
constexpr std::array<std::uint32_t, 4> clockRates{100'000, 400'000, 1'000'000, 3'400'000};  // Hz

Result open(Op op, Object port) {
    const Object reply = co_await op.run(openPort<i2cPorts>(op, port, OPEN_I2C));
    co_return statusOf(bytesOf(reply), 1);
}

Result setClockRate(Op op, Object port, Object mode) {
    op.call("_checkI2CPort", port);
    op.call("_checkI2CClockRate", mode);
    std::uint32_t rate = 0;
    for (std::size_t i = 0; i < clockRates.size(); ++i) {
        if (mode.equal(py::int_(i))) rate = clockRates[i];
    }
    const Object reply = co_await op.exchange(SET_I2C_FREQUENCY, payload(port, pack<std::uint32_t>(py::int_(rate))));
    co_return statusOf(bytesOf(reply), 1);
}

}  // namespace

void defineI2c(Package& package) {
    const Parameter& port = busPort;
    const Parameter sizeMode{"mode", "int", "size of addresses, 0 or 1 in the device's numbering"};
    const Parameter clockMode{"mode", "int", "0: 100 kHz, 1: 400 kHz, 2: 1 MHz, 3: 3.4 MHz"};
    const std::vector<Check> checks{calls("_checkI2CPort", {"port"})};

    Feature i2c(package, "I2C", "Ports of an I2C bus whose master is the device.");
    definePorts<i2cPorts>(i2c);
    i2c.shared("_checkI2CClockRate", {clockMode}, "Refuses another clock.", {},
               {"I2CClockNotSupportError: another mode"},
               Calls<checkAccepted<FailureId::I2CClockNotSupportError, 0, 1, 2, 3>>{})
        .shared("_checkI2CAddressSize", {sizeMode}, "Refuses another size.", {},
                {"I2CAddressSizeNotVaildError: another mode"},
                Calls<checkAccepted<FailureId::I2CAddressSizeNotVaildError, 0, 1>>{})
        .operation("I2C_open", {port}, "Opens a port and takes its lines.", status(1).returns,
                   {"@_checkI2CPort", "@_checkI2CPinState"}, Calls<open>{})
        .operation("I2C_setClockRate", {port, clockMode}, "Sets the clock.", status(1).returns,
                   {"@_checkI2CPort", "@_checkI2CClockRate"}, Calls<setClockRate>{});
    // clang-format off
    i2c.rows({
        {"I2C_read", {port, {"read_address", "int", "address on the bus, 0 to 255"}, {"bytes_to_read", "int", "number of bytes, 0 to 255"}},
            {checks[0], isInt("read_address"), isInt("bytes_to_read")}, READ_I2C,
            {u8("port"), u8("read_address"), u8("bytes_to_read")}, bytesFrom(3), "Reads from a chip."},
        {"I2C_write", {port, {"write_address", "int", "address on the bus, 0 to 255"}, {"write_data", "list[int]", "at most 255 bytes"}},
            {checks[0], isInt("write_address"), isList("write_data")}, WRITE_I2C,
            {u8("port"), u8("write_address"), length("write_data"), bytes("write_data")}, status(1), "Writes to a chip."},
        {"I2C_close", {port}, checks, CLOSE_I2C, {u8("port")}, status(1), "Closes a port and frees its lines."},
        {"I2C_reset", {port}, checks, RESET_I2C, {u8("port")}, status(1), "Puts a port back to its settings of the start."},
        {"I2C_setAddressSize", {port, sizeMode}, {checks[0], calls("_checkI2CAddressSize", {"mode"})}, SET_I2C_ADDR_SIZE,
            {u8("port"), u8("mode")}, status(1), "Sets the size of addresses."},
    });
    // clang-format on
}

}  // namespace zvr::python
