// The counters of the relays. The relays themselves are digital outputs.
#include "core/wire/failures.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

// Compat 29: opening and closing send nothing.
Task checkOnly(Op op, Object port) {
    op.call("_checkRelayPort", port);
    co_return py::int_(0);
}

Reply counters() {
    return {[](py::handle, const Bytes& data) -> Object {
                py::list counters;
                for (const std::uint32_t each : readNumbers<std::uint32_t>(restOf(data, 2))) counters.append(each);
                return counters;
            },
            {"list[int]", "counters of 32 bits", "the device"}};
}

}  // namespace

void defineRelay(Package& package) {
    const Parameter port{"port", "int", "port of the relays, 0"};
    const Parameter index{"index", "int", "relay, 0 to 5; -1 for all"};
    const Returns done{"int", "0"};
    const Encoding oneOrAll{"255 if -1 else u8", [](Payload& data, py::handle index, int) {
                                data.add(isOneOf(index, {-1}) ? Object(py::int_(255)) : borrow(index.ptr()));
                            }};
    const Definition checkPort = accepting("_checkRelayPort", port, FailureId::RelayPortNotAvaliableError, {0}),
                     checkIndex = accepting("_checkRelayindex", index, FailureId::RelayCounterIndexError,
                                            {-1, 0, 1, 2, 3, 4, 5});
    Feature relay(package, "Relay", "Counters of the relays.");
    relay.shared(checkPort)
        .shared(checkIndex)
        .operation({.name = "Relay_open",
                    .parameters = {port},
                    .doc = "Checks the port; nothing is sent.",
                    .returns = done,
                    .raises = {checkPort},
                    .body = checkOnly})
        .operation({.name = "Relay_close",
                    .parameters = {port},
                    .doc = "Checks the port; nothing is sent.",
                    .returns = done,
                    .raises = {checkPort},
                    .body = checkOnly})
        .operation(Request{.name = "Relay_read",
                           .checks = {checkPort(port), checkIndex(index)},
                           .sends = RELAY_READ,
                           .fields = {port | u8, index | oneOrAll},
                           .reply = counters(),
                           .doc = "Reads how often relays have switched."});
}

}  // namespace zvr::python
