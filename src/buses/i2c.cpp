// I2C: the device is the master, and every transfer is one request.
#include "buses/buses.h"
#include "buses/ports.h"

namespace zvr::python {

namespace {

constexpr PinnedPorts i2cPorts{"I2C", "I2C_dict", "I2C_port", FailureId::I2CPortNotAvaliableError};
constexpr std::array<std::uint32_t, 4> clockRates{100'000, 400'000, 1'000'000, 3'400'000};  // Hz

Task open(Op op, Object port) {
    const Object reply = co_await op.run(openPort(op, i2cPorts, port, OPEN_I2C));
    co_return statusOf(op, OPEN_I2C, reply);
}

Task setClockRate(Op op, Object port, Object mode) {
    op.call("_checkI2CPort", port);
    op.call("_checkI2CClockRate", mode);
    std::uint32_t rate = 0;
    for (std::size_t i = 0; i < clockRates.size(); ++i) {
        if (mode.equal(py::int_(i))) rate = clockRates[i];
    }
    const Object reply = co_await exchange(op, SET_I2C_FREQUENCY, payload(port, pack<std::uint32_t>(py::int_(rate))));
    co_return statusOf(op, SET_I2C_FREQUENCY, reply);
}

}  // namespace

void defineI2c(Package& package) {
    const Parameter& port = busPort;
    const Parameter sizeMode{"mode", "int", "size of addresses, 0 or 1 in the device's numbering"};
    const Parameter clockMode{"mode", "int", "0: 100 kHz, 1: 400 kHz, 2: 1 MHz, 3: 3.4 MHz"};
    const Definition checkI2CClockRate =
        accepting("_checkI2CClockRate", clockMode, FailureId::I2CClockNotSupportError, {0, 1, 2, 3});
    const Definition checkI2CAddressSize =
        accepting("_checkI2CAddressSize", sizeMode, FailureId::I2CAddressSizeNotVaildError, {0, 1});
    const Definition checkI2CPort = portCheck(i2cPorts), checkI2CPinState = lineCheck(i2cPorts);

    Feature i2c(package, "I2C", "Ports of an I2C bus whose master is the device.");
    definePorts(i2c, i2cPorts);
    i2c.shared(checkI2CClockRate)
        .shared(checkI2CAddressSize)
        .operation({.name = "I2C_open",
                    .parameters = {port},
                    .doc = "Opens a port and takes its lines.",
                    .returns = status(1).returns,
                    .raises = {checkI2CPort, checkI2CPinState},
                    .body = open})
        .operation({.name = "I2C_setClockRate",
                    .parameters = {port, clockMode},
                    .doc = "Sets the clock.",
                    .returns = status(1).returns,
                    .raises = {checkI2CPort, checkI2CClockRate},
                    .body = setClockRate});
    const Parameter from{"read_address", "int", "address on the bus, 0 to 255"};
    const Parameter count{"bytes_to_read", "int", "number of bytes, 0 to 255"};
    const Parameter to{"write_address", "int", "address on the bus, 0 to 255"};
    const Parameter data{"write_data", "list[int]", "at most 255 bytes"};
    i2c.sharing({.checks = {checkI2CPort(port)}, .fields = {port | u8}})
        .operations({
            {.name = "I2C_read",
             .checks = {isInt(from), isInt(count)},
             .sends = READ_I2C,
             .fields = {from | u8, count | u8},
             .reply = byteListFrom(3),
             .doc = "Reads from a chip."},
            {.name = "I2C_write",
             .checks = {isInt(to), isList(data)},
             .sends = WRITE_I2C,
             .fields = {to | u8, data | length, data | bytes},
             .doc = "Writes to a chip."},
            {.name = "I2C_close", .sends = CLOSE_I2C, .doc = "Closes a port and frees its lines."},
            {.name = "I2C_reset", .sends = RESET_I2C, .doc = "Resets a port to its initial settings."},
            {.name = "I2C_setAddressSize",
             .checks = {checkI2CAddressSize(sizeMode)},
             .sends = SET_I2C_ADDR_SIZE,
             .fields = {sizeMode | u8},
             .doc = "Sets the size of addresses."},
        });
}

}  // namespace zvr::python
