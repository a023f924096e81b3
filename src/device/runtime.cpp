#include "device/runtime.h"

#include <algorithm>

#include "core/engine/never_destroyed.h"
#include "core/engine/threads.h"
#include "device/decoder_thread.h"
#include "device/frame_log.h"
#include "device/thread_body.h"
#include "python/operation.h"
#include "python/raising.h"
#include "python/values.h"

namespace zvr::python {

namespace {

// Longest wait at interpreter shutdown for threads that are inside foreign code.
constexpr std::chrono::milliseconds lastWait{200};

// The threads to end at interpreter shutdown; accessed under the interpreter lock.
std::vector<std::weak_ptr<OwnedThread>>& threadsAtExit() {
    static auto& threads = neverDestroyed<std::vector<std::weak_ptr<OwnedThread>>>();
    return threads;
}

void printFailure(py::handle failure) { callObject(packageObject("printGenericError"), failure); }

// Prints a failed read of a thread as a Python exception.
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

Packet packetOf(py::handle pair) {
    const py::tuple parts = py::tuple(borrow(pair.ptr()));
    if (parts.size() != 2) throw py::value_error("a packet is a pair of command code and data");
    return {argument<int>(parts[0], "cmd"), bytesOf(Object(parts[1]))};
}

// A foreign client, or one with a step overridden in Python: it is read through its methods.
class PythonSource final : public PacketSource {
public:
    /// `isKept` tells whether the object keeps the client alive. It may refer back to the object then, and a thread
    /// that kept it too would keep both for ever.
    PythonSource(const Object& client, bool isKept, bool reports)
        : client_(isKept ? weakReference(client) : shared(client)), reports_(reports) {}

    bool isOf(py::handle client) const { return held().is(client); }
    /// Whether it has found its client gone.
    bool isGone() const noexcept { return isGone_; }

    ReadStatus receive(std::size_t length, std::vector<Packet>& packets) override {
        ReadStatus reading = ReadStatus::ended;
        onInterpreter([&] {
            reading = ReadStatus::idle;
            try {
                const Object client = held();
                if (client.is_none()) {
                    isGone_ = true;
                    return;
                }
                const Object read = callMethod(client, "recvAndSplitPacket", py::int_(length));
                for (const py::handle packet : py::list(read)) {
                    packets.push_back(packetOf(packet));
                    reading = ReadStatus::data;
                }
            } catch (const py::error_already_set& failure) {
                // A failed read counts as one that received nothing.
                if (!reports_ || failure.matches(packageObject("USBTimeoutError"))) return;
                printFailure(failure.value());
                reading = ReadStatus::failed;
            }
        });
        return reading;
    }

private:
    // Or a strong one, if its type allows no other.
    static SharedObject weakReference(const Object& client) {
        PyObject* const weak = PyWeakref_NewRef(client.ptr(), nullptr);
        if (weak != nullptr) return shared(own(weak));
        if (!PyErr_ExceptionMatches(PyExc_TypeError)) throw py::error_already_set();
        PyErr_Clear();
        return shared(client);
    }
    Object held() const {
        return PyWeakref_CheckRef(client_.get()) != 0 ? callObject(client_.get()) : borrow(client_.get());
    }

    const SharedObject client_;
    const bool reports_;
    std::atomic<bool> isGone_{false};
};

/// Looks up the parts of a receive thread in its object.
class ReceiverSupervisor final : public ObjectSupervisor<Receiver> {
public:
    ReceiverSupervisor(py::handle self, const DeviceLink& link, std::shared_ptr<Watch> watch, DataPools pools)
        : ObjectSupervisor(self, link.body, std::move(watch)), link_(link), pools_(std::move(pools)) {}

    bool changed() const noexcept override {
        const auto foreign = foreign_.lock();
        return ObjectSupervisor::changed() || (foreign && foreign->isGone()) ||
               (ours_ &&
                (ours_->steps() != steps_ || (clientSeen_.version != 0 && clientWatch_->changed(clientSeen_))));
    }

private:
    Next look(Receiver& receiver, Object object) override {
        switch (body_.callOther(object, [](const Object&) { return py::tuple(); })) {
            case ThreadBody::Found::known: return Next::rest;
            case ThreadBody::Found::called: return body_.begunByOther() ? Next::end : Next::goOn;
            case ThreadBody::Found::own: break;
        }
        const Object killed = attributeOrNothing(object, "killed");
        if (killed && isTrue(killed)) return Next::end;
        setGate(receiver, attributeOrNothing(object, link_.lock));
        receiver.setSource(sourceOf(object));
        setSink(receiver, object);
        return Next::goOn;
    }

    static void setGate(Receiver& receiver, const Object& lock) {
        const auto gate = nativeOrNothing<Gate>(lock);
        if (gate || !lock || lock.is_none()) {
            receiver.setGate(gate);
            return;
        }
        receiver.setForeignGate([held = shared(lock)] {
            if (!interpreterAlive()) return false;
            const WithGil acquired;
            return passInTurn(held.get());
        });
    }

    std::shared_ptr<PacketSource> sourceOf(const Object& object) {
        const Object client = attributeOrNothing(object, link_.client);
        auto ours = nativeOrNothing<Client>(client);
        if (ours != ours_) {
            ours_ = ours;
            clientWatch_ = ours ? std::make_unique<Watch>(client) : nullptr;
        }
        if (!client || client.is_none()) return nullptr;
        if (ours) steps_ = ours->steps();
        if (ours && hasOwnMethod(client, "recvAndSplitPacket") && hasOwnMethod(client, "recvPacket") &&
            hasOwnMethod(client, "_splitPacket")) {
            clientSeen_ = clientWatch_->look();
            foreign_.reset();
            return ours;
        }
        if (ours) clientSeen_ = clientWatch_->look();
        auto foreign = foreign_.lock();
        if (!foreign || !foreign->isOf(client)) {
            PyObject* const kept = PyDict_GetItemWithError(dictionaryOf(object).ptr(), interned(link_.client));
            const bool isKept = kept == client.ptr();
            foreign = std::make_shared<PythonSource>(client, isKept, link_.reportsReads);
        }
        foreign_ = foreign;
        return foreign;
    }

    void setSink(Receiver& receiver, const Object& object) {
        const auto echo = nativeOrNothing<EchoPool>(attributeOrNothing(object, "data_pool_echo"));
        const auto stream = nativeOrNothing<StreamPool>(attributeOrNothing(object, "data_pool_strm"));
        const auto broadcast = nativeOrNothing<BroadcastPool>(attributeOrNothing(object, "data_pool_bcst"));
        if (echo && stream && broadcast && hasOwnMethod(object, "_putToDataPool") &&
            hasOwnMethod(object, "_checkCommandType")) {
            pools_ = {echo, stream, broadcast};
            const auto file = [pools = pools_, client = std::weak_ptr(ours_)](Packet packet) mutable {
                if (framesAreLogged()) logReceived(client, packet);
                pools.file(packet.command, std::move(packet.data));
            };
            receiver.setSink(file, [stream, broadcast] {
                return !stream->holdsForeign() && !broadcast->holdsForeign() && !framesAreLogged();
            });
            return;
        }
        const auto callSteps = [self = self_, client = std::weak_ptr(ours_)](const Packet& packet) {
            if (!interpreterAlive()) return;
            if (framesAreLogged()) logReceived(client, packet);
            const WithGil acquired;
            const Object object = callObject(self.get());
            if (!object.is_none()) {
                callMethod(object, "_putToDataPool", py::int_(packet.command), toBytes(packet.data));
            }
        };
        receiver.setSink(callSteps, [] { return false; });
    }

    const DeviceLink& link_;
    DataPools pools_;
    std::shared_ptr<Client> ours_;  // whose steps are compared
    std::uint64_t steps_ = 0;
    std::unique_ptr<Watch> clientWatch_;
    Watch::Seen clientSeen_;
    std::weak_ptr<PythonSource> foreign_;
};

}  // namespace

bool DeviceRuntime::isCut() const {
    return std::ranges::any_of(receivers_, [](const auto& receiver) { return receiver->isCut(); });
}

void DeviceRuntime::requireLinks() const {
    for (const auto& receiver : receivers_) receiver->requireLink();
}

DeviceRuntime::DeviceRuntime(py::handle self)
    : watch(std::make_shared<Watch>(self)), reference(shared(callObject(pythonObject("weakref", "ref"), self))) {}

namespace {

// Removes and returns the callbacks registered until `moment`. Runs no Python code, so the list does not change
// meanwhile.
std::vector<Object> takeAskedBefore(std::int64_t moment, const Object& asked) {
    std::vector<Object> taken;
    for (Py_ssize_t i = 0; PyList_Check(asked.ptr()) != 0 && i < PyList_GET_SIZE(asked.ptr());) {
        PyObject* const each = PyList_GET_ITEM(asked.ptr(), i);
        const bool isOurs =
            PyTuple_Check(each) != 0 && PyTuple_GET_SIZE(each) == 3 && PyLong_Check(PyTuple_GET_ITEM(each, 2)) != 0;
        if (!isOurs || PyLong_AsLongLong(PyTuple_GET_ITEM(each, 2)) > moment) {
            ++i;
        } else {
            taken.push_back(borrow(each));
            PyList_SetSlice(asked.ptr(), i, i + 1, nullptr);
        }
    }
    return taken;
}

}  // namespace

void tellLoss(const SharedObject& reference, const std::exception_ptr& loss, Deadline when, bool isNew) {
    const std::string name = "_connectionLost";
    startThread(name, [reference, loss, moment = when.time_since_epoch().count(), isNew, name] {
        onInterpreter([&] {
            const Object self = callObject(reference.get());
            if (self.is_none()) return;
            Object reason;
            try {
                std::rethrow_exception(loss);
            } catch (...) {
                raiseCurrent();
                reason = py::error_already_set().value();
            }
            if (isNew) logOf(self, LogLevel::warning, [&] { return "lost: " + std::string(py::str(reason)); });
            if (const auto runtime = runtimeOrNothing(self); runtime && runtime->isCut()) runtime->endReads();
            for (const Object& callback : takeAskedBefore(moment, attribute(self, lossCallbacks))) {
                const Object called = own(PySequence_GetItem(callback.ptr(), 0));
                const Object loop = own(PySequence_GetItem(callback.ptr(), 1));
                try {
                    if (loop.is_none()) {
                        callObject(called, reason);
                    } else {
                        callMethod(loop, "call_soon_threadsafe", called, reason);
                    }
                } catch (...) {
                    reportThreadFailure(name, caught());
                }
            }
        });
    });
}

void askForLoss(py::handle self, const Object& callback, const Object& loop) {
    const auto runtime = runtimeOf(self);
    runtime->requireOwn();
    const py::tuple asked = py::make_tuple(callback, loop, py::int_(Clock::now().time_since_epoch().count()));
    callMethod(attribute(self, lossCallbacks), "append", asked);
    try {
        runtime->requireLinks();
    } catch (const Failure&) {
        tellLoss(runtime->reference, caught(), Clock::now(), false);
    }
}

void logOf(py::handle self, LogLevel level, const std::function<std::string()>& what) {
    logEvent(level, [&] {
        const std::string place = placeOf(self);
        return Py_TYPE(self.ptr())->tp_name + (place.empty() ? "" : " at " + place) + ": " + what();
    });
}

namespace {

[[noreturn]] void refuseWithoutLink(py::handle self, const DeviceRuntime* runtime) {
    if (runtime != nullptr) runtime->requireOwn();
    throw Failure(runtime != nullptr ? runtime->linkFailure : FailureId::NetworkConnectionLostError,
                  isTrue(attribute(self, "killed")) ? closedForGood : notConnected);
}

}  // namespace

Object clientOf(py::handle self) {
    Object client = attribute(self, "client_cmd");
    if (client.is_none()) refuseWithoutLink(self, runtimeOrNothing(self).get());
    return client;
}

void requireConnection(py::handle self) {
    const auto runtime = runtimeOrNothing(self);
    if (!runtime) return;
    runtime->requireOwn();
    if (!runtime->isOver()) return;
    runtime->requireLinks();
    refuseWithoutLink(self, runtime.get());
}

void DeviceRuntime::endWaits() {
    for (const auto& receiver : receivers_) receiver->endWaits();
    endReads();
}

void DeviceRuntime::endReads() {
    for (const StreamKey& key : pools.stream->keys()) {
        if (const auto frames = pools.stream->find(key).own) frames->endWaits();
    }
    for (const auto& each : rows_) {
        if (const auto rows = each.lock()) rows->endWaits();
    }
}

void DeviceRuntime::endAll() {
    if (mark.foreign()) return;
    connects.close();
    for (const auto& receiver : receivers_) {
        receiver->end();
        receiver->closeLink();
    }
    endWaits();
    watch->touch();
}

std::shared_ptr<Receiver> DeviceRuntime::startReceiver(py::handle self, const DeviceLink& link) {
    auto receiver = std::make_shared<Receiver>(link.body, link.readLength, reportThreadFailure,
                                               link.reportsReads ? Receiver::ReportRead(reportRead) : nullptr,
                                               std::make_shared<ReceiverSupervisor>(self, link, watch, pools));
    if (link.anybodySends) receiver->ignoreUnfiled();
    receivers_.push_back(receiver);
    if (std::string_view(link.client) == "client_cmd") {
        wakers.receiver = receiver;
        linkFailure = link.failure;
    }
    receiver->onLoss([reference = reference](const LinkLoss& reason, Deadline when) {
        tellLoss(reference, std::make_exception_ptr(reason), when, true);
    });
    watch->onChange(receiver);
    endAtExit(receiver);
    receiver->start();
    return receiver;
}

std::shared_ptr<DeviceRuntime> runtimeOrNothing(py::handle self) {
    return nativeOrNothing<DeviceRuntime>(attributeOrNothing(self, "_runtime"));
}

std::shared_ptr<DeviceRuntime> runtimeOf(py::handle self) {
    auto runtime = runtimeOrNothing(self);
    if (!runtime) {
        throw py::attribute_error(std::string("'") + Py_TYPE(self.ptr())->tp_name +
                                  "' object has no runtime: its device class has not been constructed");
    }
    return runtime;
}

void DeviceRuntime::requireOwn() const {
    if (mark.foreign()) throw Failure(FailureId::NetworkConnectionLostError, foreignMessage("The handle"));
}

bool isForeign(py::handle self) {
    const auto runtime = runtimeOrNothing(self);
    return runtime && runtime->mark.foreign();
}

void requireOwn(py::handle self) {
    if (const auto runtime = runtimeOrNothing(self)) runtime->requireOwn();
}

bool isKilled(py::handle self) { return isTrue(attribute(self, "killed")); }

void runReceiverBody(py::handle self, const DeviceLink& link) {
    while (!isKilled(self)) {
        passLock(attribute(self, link.lock));
        py::list packets;
        try {
            packets =
                py::list(callMethod(attribute(self, link.client), "recvAndSplitPacket", py::int_(link.readLength)));
        } catch (const py::error_already_set& failure) {
            if (!failure.matches(PyExc_Exception)) throw;
            const bool quiet = failure.matches(packageObject("USBTimeoutError")) ||
                               (failure.matches(PyExc_AttributeError) && isKilled(self));
            if (link.reportsReads && !quiet) printFailure(failure.value());
        }
        if (packets.empty()) sleepBlocking(0.001);
        for (const py::handle packet : packets) {
            const Packet parts = packetOf(packet);
            callMethod(self, "_putToDataPool", py::int_(parts.command), toBytes(parts.data));
        }
    }
}

Object threadObject(const std::shared_ptr<OwnedThread>& thread) {
    return py::cast(std::shared_ptr<OwnedThread>(thread.get(), [thread](OwnedThread*) { thread->end(); }));
}

void endAtExit(const std::shared_ptr<OwnedThread>& thread) {
    auto& threads = threadsAtExit();
    std::erase_if(threads, [](const auto& each) { return each.expired(); });
    threads.push_back(thread);
}

void leaveLibrary() {
    leaveInterpreter();
    for (const auto& each : threadsAtExit()) {
        if (const auto thread = each.lock()) thread->end();
    }
    const WithoutGil released;
    awaitAllThreads(Clock::now() + lastWait);
}

}  // namespace zvr::python
