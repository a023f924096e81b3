// The counters of the relays. The relays themselves are digital outputs.
#include "core/wire/failures.h"
#include "sensing/sensing.h"

namespace zvr::python {

namespace {

// Nothing has to be sent for it.
Result checkOnly(Op op, Object port) {
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
    const Field which{"index", "255 if -1 else u8", [](Payload& data, py::handle index) {
                          data.add(isOneOf(index, {-1}) ? Object(py::int_(255)) : borrow(index.ptr()));
                      }};
    Feature relay(package, "Relay", "Counters of the relays.");
    relay
        .shared("_checkRelayPort", {port}, "Refuses another port.", {},
                {"InputTypeNotCorrectError: `port` is no integer", "RelayPortNotAvaliableError: another port"},
                [](py::handle, const Object& port) {
                    checkIsInt(port);
                    if (!isOneOf(port, {0})) throw Failure(FailureId::RelayPortNotAvaliableError);
                })
        .shared("_checkRelayindex", {index}, "Refuses a relay that there is not.", {},
                {"InputTypeNotCorrectError: `index` is no integer", "RelayCounterIndexError: another number"},
                [](py::handle, const Object& index) {
                    checkIsInt(index);
                    if (!isOneOf(index, {-1, 0, 1, 2, 3, 4, 5})) throw Failure(FailureId::RelayCounterIndexError);
                })
        .operation("Relay_open", {port}, "Checks the port; nothing is sent.", done, {"@_checkRelayPort"},
                   Calls<checkOnly>{})
        .operation("Relay_close", {port}, "Checks the port; nothing is sent.", done, {"@_checkRelayPort"},
                   Calls<checkOnly>{})
        .row({"Relay_read",
              {port, index},
              {calls("_checkRelayPort", {"port"}), calls("_checkRelayindex", {"index"})},
              RELAY_READ,
              {u8("port"), which},
              counters(),
              "Reads how often relays have switched."});
}

}  // namespace zvr::python
