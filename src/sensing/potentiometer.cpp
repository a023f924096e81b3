// Digital potentiometers: resistors that a device sets.
#include "core/wire/failures.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

// Compat 29: opening and closing send nothing.
Task checkOnly(Op op, Object port) {
    op.call("_checkDPOTPort", port);
    co_return py::int_(0);
}

Task writeAll(Op op, Object port, Object values) {
    op.call("_checkDPOTPort", port);
    op.call("_checkDPOTChannelAmount", py::int_(py::len(values)));
    Payload data;
    data.add(port);
    for (const py::handle value : values) data.add(pack<float>(value, "value_list"));
    const Object reply = co_await exchange(op, POT_WRITE_ALL_CS, data.list());
    co_return statusOf(op, POT_WRITE_ALL_CS, reply);
}

}  // namespace

void definePotentiometer(Package& package) {
    const Parameter port{"port", "int", "port of the resistors, 0"};
    const Parameter channel{"channel", "int", "resistor, or number of resistors, 0 to 4"};
    const Parameter value{"value", "float", "resistance in the device's unit, 32-bit float"};
    const Definition checkDPOTPort{.name = "_checkDPOTPort",
                                   .parameters = {port},
                                   .doc = "Raises DPOTPortNotAvaliableError unless the port is 0.",
                                   .raises = {"DPOTPortNotAvaliableError: another port"},
                                   .body = [](py::handle, const Object& port) {
                                       if (!isOneOf(port, {0})) throw Failure(FailureId::DPOTPortNotAvaliableError);
                                   }};
    const Definition checkAmount{.name = "_checkDPOTChannelAmount",
                                 .parameters = {channel},
                                 .doc = "Raises DPOTChannelNotAvaliableError unless `channel` is 0 to 4.",
                                 .raises = {"DPOTChannelNotAvaliableError: `channel` is not 0 to 4"},
                                 .body = [](py::handle, const Object& channel) {
                                     if (!isOneOf(channel, {0, 1, 2, 3, 4}))
                                         throw Failure(FailureId::DPOTChannelNotAvaliableError);
                                 }};
    const Returns done{"int", "0"};
    Feature resistors(package, "DPOT", "Variable resistors.");
    resistors.shared(checkDPOTPort)
        .shared(checkAmount)
        .operation({.name = "DPOT_open",
                    .parameters = {port},
                    .doc = "Checks the port; nothing is sent.",
                    .returns = done,
                    .raises = {checkDPOTPort},
                    .body = checkOnly})
        .operation({.name = "DPOT_close",
                    .parameters = {port},
                    .doc = "Checks the port; nothing is sent.",
                    .returns = done,
                    .raises = {checkDPOTPort},
                    .body = checkOnly})
        .sharing({.checks = {checkDPOTPort(port), checkAmount(channel)}, .fields = {port | u8, channel | u8}})
        .operations({
            {.name = "DPOT_readByChannel",
             .sends = POT_READ,
             .reply = numberAt<std::uint32_t>(2, "resistance in the device's unit"),
             .doc = "Reads the value of a resistor."},
            {.name = "DPOT_writeByChannel",
             .sends = POT_WRITE_BY_CS,
             .fields = {value | f32},
             .doc = "Sets a resistor."},
        })
        .operation({.name = "DPOT_writeAllChannel",
                    .parameters = {port,
                                   {"value_list", "Sequence[float]",
                                    "up to 4 resistances in the device's unit, from channel 0 on"}},
                    .doc = "Sets several resistors at once.",
                    .returns = status(1).returns,
                    .raises = {checkDPOTPort, "DPOTChannelNotAvaliableError: more than 4 values"},
                    .body = writeAll});
}

}  // namespace zvr::python
