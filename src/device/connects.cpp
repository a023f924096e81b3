#include "device/connects.h"

#include "device/device_class.h"
#include "device/runtime.h"
#include "python/arguments.h"

namespace zvr::python {

namespace {

thread_local std::shared_ptr<ConnectCall> callOfThread;

constexpr const char* cancelledText = "The call was cancelled.";

// The sockets of foreign clients are not known.
void disconnectQuietly(py::handle client) {
    try {
        callMethod(client, "disconnect");
    } catch (const py::error_already_set& error) {
        if (!error.matches(PyExc_Exception)) throw;
    }
}

}  // namespace

ConnectCall::ConnectCall(const std::shared_ptr<DeviceRuntime>& runtime)
    : runtime_(runtime), number_(runtime->connects.ask()) {}

std::shared_ptr<ConnectCall> ConnectCall::current() { return callOfThread; }

InterruptCheck ConnectCall::wanted(const std::shared_ptr<ConnectCall>& call) {
    if (!call) return {};
    return [call] { call->requireWanted(); };
}

bool ConnectCall::isOver() const { return isCancelled_ || runtime_->connects.isOver(number_); }

void ConnectCall::requireWanted() const {
    if (isOver()) throw Failure(runtime_->linkFailure, runtime_->connects.why());
}

void ConnectCall::begin(const DeviceClass& device) {
    if (isCancelled_) throw Failure(runtime_->linkFailure, cancelledText);
    if (device_ != nullptr) return;
    device_ = &device;
    runtime_->connects.begin(number_);
}

void ConnectCall::settle(py::handle client) {
    if (!isOver()) {
        isConnected_ = true;
        return;
    }
    const auto ours = nativeOrNothing<Client>(client);
    if (const auto sockets = std::dynamic_pointer_cast<SocketClient>(ours)) {
        const WithoutGil released;
        if (socket_) sockets->letGoOf(socket_);
    } else if (!ours && !runtime_->connects.isBegun()) {
        disconnectQuietly(client);
    }
    requireWanted();
}

void ConnectCall::cancel(py::handle self) {
    isCancelled_ = true;
    if (device_ == nullptr || runtime_->connects.isOver(number_)) return;
    runtime_->connects.end(cancelledText);
    if (isConnected_) dropLink(self, *device_);
}

Connecting::Connecting(std::shared_ptr<ConnectCall> call) : call_(std::move(call)) {
    outer_ = std::exchange(callOfThread, call_);
}

Connecting::Connecting(const std::shared_ptr<DeviceRuntime>& runtime, const DeviceClass& device) {
    const auto outer = ConnectCall::current();
    call_ = outer && outer->runtime_ == runtime ? outer : std::make_shared<ConnectCall>(runtime);
    call_->begin(device);
    outer_ = std::exchange(callOfThread, call_);
}

Connecting::~Connecting() { callOfThread = std::move(outer_); }

}  // namespace zvr::python
