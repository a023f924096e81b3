#include "core/constants.h"
#include "devices/devices.h"
#include "protocol/runtime.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

constexpr Link commandLink{"client_cmd",      "connect_status_cmd", "recv_cmd_lock",
                           "recv_cmd_thread", "_recvCMDThread",     TCP_PKT_LENGTH_MAX};
constexpr Link dataLink{"client_data",      "connect_status_data", "recv_data_lock",
                        "recv_data_thread", "_recvDataThread",     TCP_DATA_LENGTH_MAX};

bool isTrue(py::handle self, const char* field) { return PyObject_IsTrue(attribute(self, field).ptr()) != 0; }

// Calls a method of one class on an object, whatever the object's own class makes of it.
template <class... Args>
Object callOf(const char* type, const char* name, py::handle self, const Args&... args) {
    return callObject(attribute(py::module_::import("pyzvr").attr(type), name), self, args...);
}

void connectLink(py::handle self, const Link& link, const Object& address, const Object& port) {
    const Object client = attribute(self, link.client);
    if (client.is_none()) throw Failure(FailureId::NetworkConnectionError, "The handle is closed.");
    setAttribute(self, link.status, callMethod(client, "connect", address, port));
}

void openGate(py::handle self, const Link& link) { callMethod(attribute(self, link.lock), "release"); }

// Runs what must happen even if the step before it failed, and lets the failure through after it.
template <class Step, class Rest>
void thenAlways(Step step, Rest rest) {
    std::exception_ptr failure;
    try {
        step();
    } catch (...) {
        failure = std::current_exception();
    }
    rest();
    if (failure) std::rethrow_exception(failure);
}

// What every close does: disconnects, ends the object in its own way, and says so, each even if the step before failed.
void closeDevice(py::handle self, const Object& verbose, void (*end)(py::handle self)) {
    if (runtimeOf(self).killed()) return;
    thenAlways(
        [&] {
            if (isTrue(self, commandLink.status)) callMethod(self, "disconnect");
        },
        [&] { thenAlways([&] { end(self); }, [&] { printMessage(verbose, "Closed handle", self); }); });
}

void runThread(py::handle self, const Link& link) {
    const auto receiver = py::cast<std::shared_ptr<Receiver>>(attribute(self, link.thread));
    const WithoutGil released;
    receiver->run();
}

void defineEthernet(Package& package) {
    ClassMaker type = package.makeClass("NetworkDevice", {"Device"}, "A device behind one TCP connection.");
    type.field({"ip_addr", "str | None", "address of the device; None until connected"});
    defineLinkFields<commandLink>(type, "TCPClient");
    type.method("__init__", {verboseParameter}, "Starts the receive thread, which waits for a connection.", {}, {},
                [](py::handle self, const Object& verbose) {
                    callOf("Device", "__init__", self);
                    setAttribute(self, "ip_addr", py::none());
                    openLink(self, commandLink, py::module_::import("pyzvr").attr("TCPClient")());
                    printMessage(verbose, "Opened handle", self);
                })
        .method("connect",
                {{"ip_addr", "str", "IPv4 address or host name", "\"192.168.1.110\""},
                 {"port", "int", "TCP port of the commands", "7"},
                 verboseParameter},
                "Connects to the device; does nothing if it is connected.", {},
                {"NetworkConnectionError: the device is not reached within 5 seconds"},
                [](py::handle self, const Object& address, const Object& port, const Object& verbose) {
                    if (isTrue(self, commandLink.status)) return;
                    connectLink(self, commandLink, address, port);
                    setAttribute(self, "ip_addr", address);
                    openGate(self, commandLink);
                    printMessage(verbose, "Connected to", self, address);
                })
        .method("disconnect", {verboseParameter}, "Ends the connection; does nothing if there is none.", {},
                {"NetworkConnectionLostError: the connection was lost before"},
                [](py::handle self, const Object& verbose) {
                    if (!isTrue(self, commandLink.status)) return;
                    shutLink(self, commandLink);
                    printMessage(verbose, "Disconnected from", self, attribute(self, "ip_addr"));
                })
        .method("close", {verboseParameter}, "Ends connection and threads for good; a second call does nothing.", {},
                {"NetworkConnectionLostError: the connection was lost before; everything is ended all the same"},
                [](py::handle self, const Object& verbose) {
                    closeDevice(self, verbose, [](py::handle object) {
                        callOf("Device", "close", object, py::bool_(false));
                        openGate(object, commandLink);
                        sleepBlocking(0.001);
                        setAttribute(object, commandLink.client, py::none());
                    });
                })
        .method("_recvCMDThread", {}, "Body of the receive thread: reads and files frames until the object is closed.",
                {}, {}, [](py::handle self) { runThread(self, commandLink); });
    package.makeClass("ETHDevice", {"NetworkDevice"}, "An Ethernet device.");
}

void defineWifi(Package& package) {
    ClassMaker type = package.makeClass("WifiDevice", {"NetworkDevice"},
                                        "A Wi-Fi device: one TCP connection for commands, one for streamed data.");
    defineLinkFields<dataLink>(type, "TCPClient");
    type.method("__init__", {verboseParameter}, "Starts the receive threads, which wait for a connection.", {}, {},
                [](py::handle self, const Object& verbose) {
                    callOf("NetworkDevice", "__init__", self, py::bool_(false));
                    openLink(self, dataLink, py::module_::import("pyzvr").attr("TCPClient")());
                    printMessage(verbose, "Opened handle", self);
                })
        .method("connect",
                {{"ip", "str", "IPv4 address or host name", "\"192.168.5.79\""},
                 {"port1", "int", "TCP port of the streamed data", "1336"},
                 {"port2", "int", "TCP port of the commands", "7"},
                 verboseParameter},
                "Connects commands and data. A second call opens another data connection in place of the first.", {},
                {"NetworkConnectionError: the device is not reached within 5 seconds; after a failed data side the "
                 "command side is connected"},
                [](py::handle self, const Object& address, const Object& dataPort, const Object& commandPort,
                   const Object& verbose) {
                    callOf("NetworkDevice", "connect", self, address, commandPort, py::bool_(false));
                    connectLink(self, dataLink, address, dataPort);
                    openGate(self, dataLink);
                    printMessage(verbose, "Connected to", self, attribute(self, "ip_addr"));
                })
        .method("disconnect", {verboseParameter}, "Ends both connections, as far as there are any.", {},
                {"NetworkConnectionLostError: a connection was lost before"},
                [](py::handle self, const Object& verbose) {
                    callOf("NetworkDevice", "disconnect", self, py::bool_(false));
                    if (!isTrue(self, dataLink.status)) return;
                    shutLink(self, dataLink);
                    printMessage(verbose, "Disconnected from", self, attribute(self, "ip_addr"));
                })
        .method("close", {verboseParameter}, "Ends connections and threads for good; a second call does nothing.", {},
                {"NetworkConnectionLostError: a connection was lost before; everything is ended all the same"},
                [](py::handle self, const Object& verbose) {
                    closeDevice(self, verbose, [](py::handle object) {
                        callOf("NetworkDevice", "close", object, py::bool_(false));
                        openGate(object, dataLink);
                    });
                })
        .method("_recvDataThread", {}, "Body of the data connection's receive thread.", {}, {},
                [](py::handle self) { runThread(self, dataLink); });
}

}  // namespace

void defineNetworkDevices(Package& package) {
    defineEthernet(package);
    defineWifi(package);
}

}  // namespace zvr::python
