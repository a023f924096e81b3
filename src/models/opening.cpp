// pyzvr.open: finds a device by its address or name, asks for its model, and connects a handle of that class.
#include <algorithm>

#include "core/wire/commands.h"
#include "core/wire/constants.h"
#include "device/devices.h"
#include "models/models.h"
#include "models/traits.h"
#include "python/op.h"
#include "python/raising.h"
#include "python/values.h"

namespace zvr::python {

namespace {

// Time for further devices with the same alias to answer after the first one.
constexpr std::chrono::milliseconds othersAnswer{500};
constexpr double lookSeconds = 0.01;

/// The caller's arguments for the connection; None if not given.
struct Connection {
    Object port, dataPort, baudRate, verbose;

    Object portOr(int usual) const { return port.is_none() ? Object(py::int_(usual)) : port; }
};

// Disconnects first, since closing alone prints a message.
void closeQuietly(py::handle handle) {
    for (const char* step : {"disconnect", "close"}) {
        try {
            callMethod(handle, step, py::bool_(false));
        } catch (const py::error_already_set& error) {
            if (!error.matches(PyExc_Exception)) throw;
        }
    }
}

/// Makes a handle and connects it; it is closed if that fails.
template <class Connect>
Object connected(const Object& type, const Object& verbose, Connect connect) {
    Object handle = type(py::arg("verbose") = verbose);
    try {
        connect(handle);
    } catch (...) {
        caught();
        closeQuietly(handle);
        throw;
    }
    return handle;
}

/// Asks a device through a temporary handle of any class with its link.
template <class Connect>
std::string askThrough(const char* type, const char* question, Connect connect) {
    const Object handle = connected(classNamed(type), py::bool_(false), connect);
    std::string answer;
    try {
        const Object told = callMethod(handle, question);
        answer = py::str(PyList_Check(told.ptr()) != 0 ? py::list(told)[0] : told);
    } catch (...) {
        caught();
        closeQuietly(handle);
        throw;
    }
    closeQuietly(handle);
    return answer;
}

Object classOf(const std::string& displayName) {
    for (const auto& [name, label] : py::dict(packageObject("LABEL_DICT"))) {
        if (label.equal(py::str(displayName))) return packageObject(std::string(py::str(name)).c_str());
    }
    throw Failure(FailureId::NetworkConnectionError,
                  "The device calls itself '" + displayName + "', and there is no class of this name.");
}

Object openAddress(const std::string& host, const Connection& how) {
    const py::str address(host);
    const Object port = how.portOr(7);
    const std::string name = askThrough("TarnDio", "Sys_getDriverInfo", [&](py::handle probe) {
        callMethod(probe, "connect", address, port, py::bool_(false));
    });
    const bool hasDataPort = std::string_view(traitsNamed(py::str(name)).family->link) == "wifi";
    return connected(classOf(name), how.verbose, [&](py::handle handle) {
        if (!hasDataPort) {
            callMethod(handle, "connect", address, port, how.verbose);
            return;
        }
        const Object data = how.dataPort.is_none() ? Object(py::int_(1336)) : how.dataPort;
        callMethod(handle, "connect", address, data, port, how.verbose);
    });
}

Object openLine(const std::string& line, const Connection& how) {
    const auto connect = [&](py::handle handle) {
        const py::dict named(py::arg("verbose") = how.verbose);
        if (!how.baudRate.is_none()) named["baudrate"] = how.baudRate;
        attribute(handle, "connect")(py::str(line), **named);
    };
    return connected(classNamed("Drone"), how.verbose, connect);
}

Object openUsb(const Object& serialNumber, const Object& product, const Connection& how) {
    return connected(classOf(py::str(product)), how.verbose,
                     [&](py::handle handle) { callMethod(handle, "connect", serialNumber, how.verbose); });
}

/// A network device's answer.
struct Answer {
    std::string address, mac, serialNumber, alias;

    explicit Answer(const py::list& fields)
        : address(py::str(fields[0])),
          mac(py::str(fields[2])),
          serialNumber(py::str(fields[4])),
          alias(py::str(fields[5])) {}
};

/// The addresses of the network devices for which `fits` is true; `isOnly` if there can be only one.
template <class Fits>
std::vector<std::string> findOnNetwork(py::handle finder, Fits fits, bool isOnly, std::string& others) {
    const py::list nothing = payload(0);
    const Object frame = callMethod(finder, "_preparePacket", py::int_(int{GET_DEVICE_INFO}), nothing);
    const Object client = attribute(finder, "client_udp");
    for (int i = 0; i < NUM_BCST_RETRIES; ++i) callMethod(client, "sendBcstPacket", frame);
    const Object records = attribute(finder, "data_pool_bcst")[py::int_(int{GET_DEVICE_INFO})];
    std::vector<std::string> found;
    for (Deadline end = deadlineIn(PACKET_TIMEOUT); Clock::now() < end; sleepBlocking(lookSeconds)) {
        std::vector<std::string> now;
        others.clear();
        for (const py::handle record : py::list(records)) {
            const Answer answer(describeRecord(bytesOf(borrow(record.ptr()))));
            if (fits(answer)) {
                now.push_back(answer.address);
            } else {
                others +=
                    (others.empty() ? "" : ", ") + answer.serialNumber + " (" + answer.alias + ") at " + answer.address;
            }
        }
        if (!now.empty() && isOnly) return now;
        if (found.empty() && !now.empty()) end = std::min(end, Clock::now() + othersAnswer);
        found = std::move(now);
    }
    return found;
}

template <class Fits>
Object openOnNetwork(const std::string& where, Fits fits, bool isOnly, const Connection& how) {
    std::string others;
    std::vector<std::string> found;
    {
        const Object finder = connected(classNamed("DeviceFinder"), py::bool_(false),
                                        [](py::handle handle) { callMethod(handle, "connect", py::bool_(false)); });
        thenAlways([&] { found = findOnNetwork(finder, fits, isOnly, others); }, [&] { closeQuietly(finder); });
    }
    if (found.size() == 1) return openAddress(found[0], how);
    if (found.empty()) {
        throw Failure(FailureId::NetworkConnectionError, "No device answers to '" + where + "'.")
            .noting("devices that answer: " + (others.empty() ? "none" : others));
    }
    std::string addresses;
    for (const std::string& each : found) addresses += (addresses.empty() ? "" : ", ") + each;
    throw Failure(FailureId::NetworkConnectionError, "Several devices answer to '" + where + "'.")
        .noting("at " + addresses);
}

// By serial number or alias: first devices on USB, then those on the network.
Object openNamed(const std::string& name, const Connection& how) {
    const py::str wanted(name);
    const py::list attached = callMethod(callObject(classNamed("Packet_based")), "_getAllUSBDevices");
    for (const py::handle pair : attached) {
        const py::list fields = borrow(pair.ptr());
        if (Object(fields[0]).equal(wanted)) return openUsb(fields[0], fields[1], how);
    }
    for (const py::handle pair : attached) {
        const py::list fields = borrow(pair.ptr());
        const std::string alias = askThrough("SableDio", "Sys_getDeviceAlias", [&](py::handle probe) {
            callMethod(probe, "connect", Object(fields[0]), py::bool_(false));
        });
        if (alias == name) return openUsb(fields[0], fields[1], how);
    }
    const auto fits = [&](const Answer& answer) { return answer.serialNumber == name || answer.alias == name; };
    return openOnNetwork(name, fits, false, how);
}

// The match of a pattern with a whole text, or None. Uses Python's re, since std::regex may overflow the stack on long
// texts.
Object matched(const char* pattern, const std::string& text) {
    return callObject(pythonObject("re", "fullmatch"), py::str(pattern), py::str(text));
}

Object open(const std::string& where, const Connection& how) {
    if (where.empty()) throw py::value_error("where: an address, a line, a serial number, an alias or a MAC is wanted");
    if (!matched("([0-9A-Fa-f]{1,2}[:-]){5}[0-9A-Fa-f]{1,2}", where).is_none()) {
        const auto number = [](std::string text) {
            std::ranges::replace(text, '-', ':');
            return macBytes(py::str(text));
        };
        const py::list wanted = number(where);
        return openOnNetwork(
            where, [&](const Answer& answer) { return wanted.equal(number(answer.mac)); }, true, how);
    }
    if (!matched(R"((?s)/.*|COM[0-9]+|\\\\.*)", where).is_none()) return openLine(where, how);
    if (const Object parts = matched("([^:]+):([0-9]{1,5})", where); !parts.is_none()) {
        if (!how.port.is_none()) throw py::value_error("port: 'where' names a port too");
        const Object host = callMethod(parts, "group", py::int_(1)), port = callMethod(parts, "group", py::int_(2));
        Connection withPort = how;
        withPort.port = py::int_(port);
        return openAddress(py::str(host), withPort);
    }
    const bool isAddress = where == "localhost" || where.find('.') != std::string::npos;
    return isAddress ? openAddress(where, how) : openNamed(where, how);
}

}  // namespace

void defineOpening(Package& package) {
    package.function(
        {.name = "open",
         .parameters = {{"where", "str",
                         "\"192.168.1.110\", \"box.local:7007\", \"/dev/ttyUSB0\", \"COM4\", a serial number, an alias "
                         "or a MAC address"},
                        {"port", "int | None", "TCP port of the commands, if `where` names none; 7 unless set", "None"},
                        {"data_port", "int | None", "TCP port of a Wi-Fi device's samples; 1336 unless set", "None"},
                        {"baudrate", "int | None", "speed of a serial line in bits per second", "None"},
                        verboseParameter},
         .doc = "Asks a device for its model and connects a handle of its class.\n\nA name with a dot or a port is an "
                "address. Other names are serial numbers and aliases: of the devices on USB first, then of those that "
                "answer on the network within 5 seconds. A device on a serial line is a drone.",
         .returns = {"Any", "a connected handle of the device's class, which a type checker cannot know", "the device"},
         .raises = {"NetworkConnectionError: no device or more than one answers to the name, there is no class for the "
                    "device, or the address is not reached",
                    "UARTConnectionError: the line cannot be opened",
                    "USBConnectionError, USBError: the USB device cannot be opened",
                    "ReceivePacketTimeoutError: the device found does not identify itself"},
         .body = [](py::handle, const std::string& where, const Object& port, const Object& dataPort,
                    const Object& baudRate, const Object& verbose) {
             return open(where, {port, dataPort, baudRate, verbose});
         }});
}

}  // namespace zvr::python
