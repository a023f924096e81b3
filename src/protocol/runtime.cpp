#include "protocol/runtime.h"

#include <set>

#include "analog/logger.h"
#include "core/immortal.h"
#include "core/threads.h"
#include "python/operation.h"
#include "python/raising.h"
#include "python/values.h"

namespace zvr::python {

namespace {

// All runtimes that are alive; touched under the interpreter lock only.
std::set<DeviceRuntime*>& runtimes() {
    static auto& all = immortal<std::set<DeviceRuntime*>>();
    return all;
}

void printFailure(py::handle failure) { callMethod(py::module_::import("pyzvr"), "printGenericError", failure); }

// A failed read of a thread, printed as the failure of Python that it is.
void reportRead(std::exception_ptr failure) noexcept {
    onInterpreter([&] {
        try {
            std::rethrow_exception(failure);
        } catch (const MissingClient&) {
            PyErr_SetString(PyExc_AttributeError, "'NoneType' object has no attribute 'recvAndSplitPacket'");
        } catch (...) {
            raiseCurrent();
        }
        printFailure(py::error_already_set().value());
    });
}

// A client that is not one of ours, or one with a step overridden in Python: it is read through the object's field.
class PythonSource final : public PacketSource {
public:
    PythonSource(SharedObject reference, const char* field, bool reports)
        : reference_(std::move(reference)), field_(field), reports_(reports) {}

    Reading receive(std::size_t length, std::vector<Packet>& packets) override {
        Reading reading = Reading::ended;
        onInterpreter([&] {
            const Object self = callObject(reference_.get());
            if (self.is_none()) return;
            const Object client = attribute(self, field_);
            if (client.is_none()) return;
            reading = Reading::idle;
            try {
                for (const py::handle packet : callMethod(client, "recvAndSplitPacket", py::int_(length))) {
                    const auto [command, data] = py::cast<std::pair<int, Object>>(packet);
                    packets.push_back({command, bytesOf(data)});
                    reading = Reading::data;
                }
            } catch (const py::error_already_set& failure) {
                // A failed read is one that brings nothing.
                if (!reports_ || failure.matches(attribute(py::module_::import("pyzvr"), "USBTimeoutError"))) return;
                printFailure(failure.value());
                reading = Reading::failed;
            }
        });
        return reading;
    }

private:
    const SharedObject reference_;
    const char* const field_;
    const bool reports_;
};

std::shared_ptr<Client> nativeClient(py::handle client) {
    if (!py::isinstance<Client>(client) || !hasOwnMethod(client, "recvAndSplitPacket") ||
        !hasOwnMethod(client, "recvPacket") || !hasOwnMethod(client, "_splitPacket")) {
        return nullptr;
    }
    return py::cast<std::shared_ptr<Client>>(client);
}

}  // namespace

SharedObject shared(py::handle object) {
    return {Py_NewRef(object.ptr()), [](PyObject* held) { onInterpreter([held] { Py_DECREF(held); }); }};
}

DeviceRuntime::~DeviceRuntime() {
    runtimes().erase(this);
    endAll();
}

void DeviceRuntime::enroll() { runtimes().insert(this); }

void DeviceRuntime::endAll() {
    setKilled(true);
    for (auto& [name, part] : parts_) part->end();
}

void DeviceRuntime::setKilled(bool killed) {
    *killed_ = killed;
    if (!killed) return;
    for (auto& [field, connection] : connections_) {
        connection.receiver->end();
        if (connection.client) connection.client->abandon();
        connection.receiver->setSource(nullptr);
    }
}

std::shared_ptr<Receiver> DeviceRuntime::startReceiver(py::handle self, const char* clientField, const char* threadName,
                                                       int readLength, bool reportsReads) {
    enroll();
    Receiver::Sink sink = [pools = pools](Packet packet) mutable {
        pools.file(packet.command, std::move(packet.data));
    };
    if (!hasOwnMethod(self, "_putToDataPool") || !hasOwnMethod(self, "_checkCommandType")) {
        sink = [reference = shared(callObject(hostObject("weakref", "ref"), self))](const Packet& packet) {
            if (!interpreterAlive()) return;
            const py::gil_scoped_acquire acquired;
            const Object object = callObject(reference.get());
            if (!object.is_none()) {
                callMethod(object, "_putToDataPool", py::int_(packet.command), toBytes(packet.data));
            }
        };
    }
    auto receiver = std::make_shared<Receiver>(threadName, readLength, std::move(sink), reportThreadFailure,
                                               reportsReads ? Receiver::ReportRead(reportRead) : nullptr);
    connections_[clientField] = {receiver, nullptr, reportsReads};
    receiver->start();
    return receiver;
}

void DeviceRuntime::setClient(py::handle self, const char* clientField, py::handle client) {
    const auto found = connections_.find(clientField);
    if (found == connections_.end()) return;
    Connection& connection = found->second;
    connection.client = nativeClient(client);
    if (connection.client || client.is_none()) {
        connection.receiver->setSource(connection.client);
    } else {
        const SharedObject reference = shared(callObject(hostObject("weakref", "ref"), self));
        connection.receiver->setSource(std::make_shared<PythonSource>(reference, clientField, connection.reportsReads));
    }
}

DeviceRuntime& runtimeOf(py::handle self) { return *py::cast<DeviceRuntime*>(attribute(self, "_runtime")); }

void endAllRuntimes() {
    drainLoggers();
    for (DeviceRuntime* runtime : runtimes()) runtime->endAll();
    const WithoutGil released;
    awaitAllThreads(Clock::now() + std::chrono::seconds(2));
}

}  // namespace zvr::python
