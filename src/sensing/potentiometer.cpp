// Digital potentiometers: resistors that a device sets.
#include "core/wire/failures.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

// Nothing has to be sent for it.
Result checkOnly(Op op, Object port) {
    op.call("_checkDPOTPort", port);
    co_return py::int_(0);
}

Result writeAll(Op op, Object port, Object values) {
    op.call("_checkDPOTPort", port);
    op.call("_checkDPOTChannelAmount", py::int_(py::len(values)));
    Payload data;
    data.add(port);
    for (const py::handle value : values) data.add(pack<float>(value, "value_list"));
    const Object reply = co_await op.exchange(POT_WRITE_ALL_CS, data.list());
    co_return statusOf(bytesOf(reply), 1);
}

}  // namespace

void definePotentiometer(Package& package) {
    const Parameter port{"port", "int", "port of the resistors, 0"};
    const Parameter channel{"channel", "int", "resistor, or number of resistors, 0 to 4"};
    const Parameter value{"value", "float", "resistance in the device's unit, 32-bit float"};
    const Returns done{"int", "0"};
    const std::vector<Check> checks{calls("_checkDPOTPort", {"port"}), calls("_checkDPOTChannelAmount", {"channel"})};
    Feature resistors(package, "DPOT", "Variable resistors.");
    // clang-format off
    resistors
        .shared("_checkDPOTPort", {port}, "Refuses another port.", {}, {"DPOTPortNotAvaliableError: another port"},
                [](py::handle, const Object& port) {
                    if (!isOneOf(port, {0})) throw Failure(FailureId::DPOTPortNotAvaliableError);
                })
        .shared("_checkDPOTChannelAmount", {channel}, "Refuses another number.", {},
                {"DPOTChannelNotAvaliableError: another number"},
                [](py::handle, const Object& channel) {
                    if (!isOneOf(channel, {0, 1, 2, 3, 4})) throw Failure(FailureId::DPOTChannelNotAvaliableError);
                })
        .operation("DPOT_open", {port}, "Checks the port; nothing is sent.", done, {"@_checkDPOTPort"},
                   Calls<checkOnly>{})
        .operation("DPOT_close", {port}, "Checks the port; nothing is sent.", done, {"@_checkDPOTPort"},
                   Calls<checkOnly>{})
        .rows({
            {"DPOT_readByChannel", {port, channel}, checks, POT_READ, {u8("port"), u8("channel")},
                numberAt<std::uint32_t>(2, "resistance in the device's unit"), "Reads the value of a resistor."},
            {"DPOT_writeByChannel", {port, channel, value}, checks, POT_WRITE_BY_CS,
                {u8("port"), u8("channel"), f32("value")}, status(1), "Sets a resistor."},
        })
        .operation("DPOT_writeAllChannel",
                   {port, {"value_list", "Sequence[float]", "up to 4 resistances in the device's unit, from channel 0 on"}},
                   "Sets several resistors at once.", status(1).returns,
                   {"@_checkDPOTPort", "DPOTChannelNotAvaliableError: more than 4 values"}, Calls<writeAll>{});
    // clang-format on
}

}  // namespace zvr::python
