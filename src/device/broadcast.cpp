// Finding devices without a connection: the broadcast operations.
#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "core/wire/failures.h"
#include "device/devices.h"
#include "device/feature.h"
#include "device/runtime.h"
#include "python/values.h"

namespace zvr::python {

namespace {

const Parameter macParameter{"mac_addr", "str", "MAC address of the device: six hexadecimal numbers with colons"};
const Parameter ipParameter{"ip_addr", "str", "new dotted IPv4 address of the device"};
const Parameter gatewayParameter{"gateway", "str", "dotted address of the gateway"};
const Parameter maskParameter{"subnet_mask", "str", "dotted subnet mask", "\"255.255.255.0\""};

// Part of a record, shorter if the record ends before.
ByteView part(const Bytes& record, std::size_t from, std::size_t count) {
    const ByteView rest = ByteView(record).subspan(std::min(from, record.size()));
    return rest.first(std::min(count, rest.size()));
}

py::list describe(const Bytes& record, std::size_t gatewayBytes) {
    py::list fields;
    fields.append(addressText(part(record, 0, 4)));
    fields.append(addressText(part(record, 4, 4)));
    fields.append(macText(part(record, 8, 6), "02x"));
    fields.append(textOf(part(record, 14, 32)));
    fields.append(textOf(part(record, 46, 8)));
    fields.append(textOf(part(record, 54, 16)));
    fields.append(textOf(part(record, 70, 32)));
    fields.append(addressText(part(record, 102, gatewayBytes)));
    return fields;
}

// Copies the replies received so far; the set itself stays live in the pool.
std::vector<Bytes> recordsOf(py::handle replies) {
    std::vector<Bytes> records;
    for (const py::handle record : replies) records.push_back(bytesOf(record));
    return records;
}

Awaiter ask(const Op& op, int command, const py::list& data) {
    return op.callSameForm("_broadcastPacket", py::int_(command), data);
}

// Compat 5: the blocking form takes three bytes of the gateway and so fails on every record.
Task enumerate(Op op) {
    const Object replies = co_await ask(op, GET_DEVICE_INFO, payload(0));
    py::list devices;
    for (const Bytes& record : recordsOf(replies)) devices.append(describe(record, op.awaitable() ? 4 : 3));
    co_return devices;
}

Task ring(Op op, Object mac) {
    checkIsText(mac, "mac_addr");
    Payload data;
    data.add(0).extend(macBytes(mac)).add(1);
    const Object replies = co_await ask(op, NETCOM_CHECK_MAC_RINGING, data.list());
    co_return toBytes(recordsOf(replies).at(0));
}

// The second of the statuses of all replies; it is not checked. Compat 7: a set holds equal replies once.
Task secondStatus(Op op, Command command, Payload data) {
    const Object replies = co_await ask(op, command, data.list());
    std::vector<int> statuses;
    for (const Bytes& record : recordsOf(replies)) statuses.push_back(record.at(1));
    co_return py::int_(statuses.at(1));
}

// Compat 6: the command's code, an integer, is used as a list of bytes.
Task reboot(Op op, Object mac) {
    checkIsText(mac, "mac_addr");
    Payload data;
    data.add(0).extend(py::int_(int{CHECK_MAC_AND_REBOOT})).extend(macBytes(mac));
    co_return co_await op.run(secondStatus(op, CHECK_MAC_AND_REBOOT, data));
}

Task setAddress(Op op, Object ip, Object mac, Object gateway, Object mask) {
    for (const auto& [value, name] : {std::pair{ip, "ip_addr"}, std::pair{mac, "mac_addr"},
                                      std::pair{gateway, "gateway"}, std::pair{mask, "subnet_mask"}})
        checkIsText(value, name);
    Payload data;
    data.add(0).extend(addressBytes(ip)).extend(addressBytes(mask)).extend(macBytes(mac)).extend(addressBytes(gateway));
    co_return co_await op.run(secondStatus(op, CHECK_MAC_AND_SET_IP, data));
}

}  // namespace

py::list describeRecord(const Bytes& record) { return describe(record, 4); }

void defineBroadcast(Package& package) {
    const Raises typeRaises{"InputTypeNotCorrectError: an argument is not a string",
                            "ValueError, OSError: an address is not well-formed"};
    const Returns status{"int", "the second status of all different answers; it is not checked", "the devices"};
    Feature finding(package, "Broadcast", "Finding devices.", Feature::Base::none);
    finding
        .withoutTimeout(
            {.name = "Bcst_enumerateNetworkDevices",
             .doc = "Finds the devices on the network, within 5 seconds. Use the awaitable form (compatibility "
                    "note 5).",
             .returns = {"list[list[str]]",
                         "for each device its address, subnet mask, MAC address, model, serial number, "
                         "alias, application information and gateway, in no order",
                         "the devices"},
             .raises = {"IndexError: in the blocking form, as soon as one device has answered"},
             .body = enumerate})
        .withoutTimeout({.name = "Bcst_checkMACAndRing",
                         .parameters = {macParameter},
                         .doc = "Makes one device ring.",
                         .returns = {"bytes", "the first answer", "the device"},
                         .raises = {typeRaises, "IndexError: no device answered within 5 seconds"},
                         .body = ring})
        .withoutTimeout({.name = "Bcst_checkMACAndReboot",
                         .parameters = {macParameter},
                         .doc = "Should restart one device, but fails for every address before anything is sent "
                                "(compatibility note 6).",
                         .returns = status,
                         .raises = {typeRaises, "TypeError: always"},
                         .body = reboot})
        .withoutTimeout({.name = "Bcst_checkMACAndSetIP",
                         .parameters = {ipParameter, macParameter, gatewayParameter, maskParameter},
                         .doc = "Sets the address of one device. Equal answers count as one, so a single device leads "
                                "to the error (compatibility note 7).",
                         .returns = status,
                         .raises = {typeRaises, "IndexError: fewer than two different answers came within 5 seconds"},
                         .body = setAddress});
    finding.shared({.name = "Bcst_enumerateUSBDevices",
                    .doc = "Finds the devices on USB.",
                    .returns = {"list[list[str]]", "serial number and product name of each", "the devices"},
                    .body = [](py::handle self) { return callMethod(self, "_getAllUSBDevices"); }});
}

}  // namespace zvr::python
