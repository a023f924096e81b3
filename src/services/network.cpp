// The network module: a device's addresses.
#include "services/services.h"

namespace zvr::python {

namespace {

// Each part is kept in its own field.
Reply addressReply() {
    return {[](py::handle self, const Bytes& data) -> Object {
                const py::str address = addressText(data);
                const py::str mask = addressText(ByteView(data).subspan(std::min<std::size_t>(4, data.size())));
                setAttribute(self, "ip_addr", address);  // Compat 25
                setAttribute(self, "subnet_mask", mask);
                py::list both;
                both.append(address);
                both.append(mask);
                return both;
            },
            {"list[str]",
             "dotted address and subnet mask; also kept in `ip_addr` and `subnet_mask` (compatibility note 25)",
             "the device"}};
}

// Bytes without a leading zero.
Reply macReply() {
    return {[](py::handle, const Bytes& data) -> Object { return macText(data, "x"); },
            {"str", "six hexadecimal numbers without leading zeros", "the device"}};
}

// A second name of an operation: the same arguments, the same result.
Definition alias(const std::string& name, const std::string& original, Parameters parameters, Returns returns,
                 Body body) {
    return {.name = name,
            .parameters = std::move(parameters),
            .doc = "Second name of `" + original + "`.",
            .returns = std::move(returns),
            .body = std::move(body)};
}

}  // namespace

void defineNetwork(Package& package) {
    const Parameter gateway{"gateway", "str", "dotted IPv4 address"};
    const Parameter macAddress{"mac_addr", "str", "six hexadecimal numbers with colons between them"};
    const Parameter ip{"ip_addr", "str", "new dotted IPv4 address of the device"};
    const Parameter mask{"subnet_mask", "str", "dotted subnet mask", "\"255.255.255.0\""};
    Feature network(package, "Network", "A device's addresses.", Feature::Base::none);
    network.field({"gateway", "str", "last gateway read"})
        .field({"ip_addr", "str | None", "last address read, or connected to"})
        .field({"subnet_mask", "str", "last subnet mask read"})
        .field({"mac_addr", "str", "last MAC address read"})
        .operations({
            {.name = "Net_getGateway",
             .sends = GET_GATEWAY,
             .reply = kept("gateway", addressAt(0)),
             .doc = "Reads the gateway's address."},
            {.name = "_setGateway",
             .checks = {isText(gateway)},
             .sends = SET_GATEWAY,
             .fields = {gateway | address},
             .reply = status(0),
             .doc = "Sets the gateway's address."},
            {.name = "Net_getIPAddrAndSubmask",
             .sends = GET_IP,
             .reply = addressReply(),
             .doc = "Reads address and subnet mask."},
            {.name = "Net_setIPAddrAndSubmask",
             .checks = {isText(ip), isText(mask)},
             .sends = SET_IP,
             .fields = {ip | address, mask | address},
             .reply = status(0),
             .doc = "Sets address and subnet mask. The open connection is not touched."},
            {.name = "Net_getMACAddr",
             .sends = GET_MAC,
             .reply = kept("mac_addr", macReply()),
             .doc = "Reads the MAC address."},
            {.name = "_setMACAddr",
             .checks = {isText(macAddress)},
             .sends = SET_MAC,
             .fields = {macAddress | mac},
             .reply = status(0),
             .doc = "Sets the MAC address."},
        });
    const auto aliasOfRead = [&](const std::string& name, const std::string& original, const Reply& reply) {
        network.operation(alias(name, original, {}, reply.returns,
                                [original](Op op) -> Task { co_return co_await op.request(original.c_str()); }));
    };
    aliasOfRead("Sys_getGateway", "Net_getGateway", addressAt(0));
    aliasOfRead("Sys_getIPAddrAndSubmask", "Net_getIPAddrAndSubmask", addressReply());
    aliasOfRead("Sys_getMACAddr", "Net_getMACAddr", macReply());
    network.operation(alias("Sys_setIPAddrAndSubmask", "Net_setIPAddrAndSubmask", {ip, mask}, status(0).returns,
                            [](Op op, Object ip, Object submask) -> Task {
                                co_return co_await op.request("Net_setIPAddrAndSubmask", ip, submask);
                            }));
}

}  // namespace zvr::python
