// The network module: a device's addresses.
#include "services/services.h"

namespace zvr::python {

namespace {

// Both parts are kept in fields of their own.
Reply addressReply() {
    return {[](py::handle self, const Bytes& data) -> Object {
                const py::str address = addressText(data);
                const py::str mask = addressText(ByteView(data).subspan(std::min<std::size_t>(4, data.size())));
                setAttribute(self, "ip_addr", address);
                setAttribute(self, "subnet_mask", mask);
                py::list both;
                both.append(address);
                both.append(mask);
                return both;
            },
            {"list[str]", "dotted address and subnet mask; also kept in `ip_addr` and `subnet_mask`", "the device"}};
}

// Bytes without a leading zero.
Reply macReply() {
    return {[](py::handle, const Bytes& data) -> Object { return macText(data, "x"); },
            {"str", "six hexadecimal numbers without leading zeros", "the device"}};
}

// A second name of an operation: the same arguments, the same result.
template <class Function>
void defineAlias(Feature& network, const std::string& name, const std::string& original, Parameters parameters,
                 Reply reply, Function body) {
    network.operation(name, std::move(parameters), "Second name of `" + original + "`.", std::move(reply.returns), {},
                      body);
}

}  // namespace

void defineNetwork(Package& package) {
    const Parameter address{"ip_addr", "str", "dotted IPv4 address that the device takes"};
    const Parameter mask{"subnet_mask", "str", "dotted subnet mask", "\"255.255.255.0\""};
    Feature network(package, "Network", "A device's addresses.", Feature::Base::none);
    network.field({"gateway", "str", "last gateway read"})
        .field({"ip_addr", "str | None", "last address read, or connected to"})
        .field({"subnet_mask", "str", "last subnet mask read"})
        .field({"mac_addr", "str", "last MAC address read"})
        .rows({
            {"Net_getGateway", {}, {}, GET_GATEWAY, {}, kept("gateway", addressAt(0)), "Reads the gateway's address."},
            {"_setGateway",
             {{"gateway", "str", "dotted IPv4 address"}},
             {isText("gateway")},
             SET_GATEWAY,
             {python::address("gateway")},
             status(0),
             "Sets the gateway's address."},
            {"Net_getIPAddrAndSubmask", {}, {}, GET_IP, {}, addressReply(), "Reads address and subnet mask."},
            {"Net_setIPAddrAndSubmask",
             {address, mask},
             {isText("ip_addr"), isText("subnet_mask")},
             SET_IP,
             {python::address("ip_addr"), python::address("subnet_mask")},
             status(0),
             "Sets address and subnet mask. The open connection is not touched."},
            {"Net_getMACAddr", {}, {}, GET_MAC, {}, kept("mac_addr", macReply()), "Reads the MAC address."},
            {"_setMACAddr",
             {{"mac_addr", "str", "six hexadecimal numbers with colons between them"}},
             {isText("mac_addr")},
             SET_MAC,
             {mac("mac_addr")},
             status(0),
             "Sets the MAC address."},
        });
    defineAlias(network, "Sys_getGateway", "Net_getGateway", {}, addressAt(0),
                [](Op op) -> Result { co_return co_await op.request("Net_getGateway"); });
    defineAlias(network, "Sys_getIPAddrAndSubmask", "Net_getIPAddrAndSubmask", {}, addressReply(),
                [](Op op) -> Result { co_return co_await op.request("Net_getIPAddrAndSubmask"); });
    defineAlias(network, "Sys_getMACAddr", "Net_getMACAddr", {}, macReply(),
                [](Op op) -> Result { co_return co_await op.request("Net_getMACAddr"); });
    defineAlias(network, "Sys_setIPAddrAndSubmask", "Net_setIPAddrAndSubmask", {address, mask}, status(0),
                [](Op op, Object ip, Object submask) -> Result {
                    co_return co_await op.request("Net_setIPAddrAndSubmask", ip, submask);
                });
}

}  // namespace zvr::python
