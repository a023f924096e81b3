// Where the replies to an object's requests are filed, and the order of serialized requests.
#pragma once

#include "device/runtime.h"
#include "python/event_loop.h"

namespace zvr::python {

/// The object's pool of replies: the library's own or a user's mapping.
struct ReplyPool {
    explicit ReplyPool(py::handle self)
        : object(attribute(self, "data_pool_echo")),
          ours(nativeOrNothing<EchoPool>(object)),
          runtime(ownRuntime(self)) {}

    /// Without the interpreter lock.
    std::optional<Bytes> await(EchoPool::Key key, Deadline deadline, const InterruptCheck& onWait) const {
        if (runtime && runtime->commands()) return runtime->commands()->await(*ours, key, deadline, onWait);
        return ours->await(key, deadline, onWait);
    }

    /// Takes a reply from a foreign mapping; null if there is none.
    Object takeForeign(const Object& key) const {
        const int contained = entering([&] { return PySequence_Contains(object.ptr(), key.ptr()); });
        if (contained < 0) throw py::error_already_set();
        return contained != 0 ? callMethod(object, "pop", key) : Object();
    }

    /// What lies under the key is an answer to a request of before.
    void drop(EchoPool::Key key) const {
        if (ours) ours->take(key);
    }

    const Object object;
    const std::shared_ptr<EchoPool> ours;
    const std::shared_ptr<DeviceRuntime> runtime;

private:
    static std::shared_ptr<DeviceRuntime> ownRuntime(py::handle self) {
        auto runtime = runtimeOrNothing(self);
        if (runtime) runtime->requireOwn();
        return runtime;
    }
};

/// The turn of a request if an object serializes requests with the same key. A reply that is already there when the
/// turn begins answers an earlier request and is dropped.
class RequestTurn {
public:
    /// Null if requests are not serialized.
    static std::shared_ptr<RequestTurn> of(py::handle self, EchoPool::Key key) {
        const Object serialize = attributeOrNothing(self, "serialize");
        const auto runtime = serialize && isTrue(serialize) ? runtimeOrNothing(self) : nullptr;
        if (!runtime) return nullptr;
        runtime->requireOwn();
        if (runtime->turnsMade.insert(key).second) runtime->turns->put(key, {});
        return std::make_shared<RequestTurn>(runtime, key);
    }

    RequestTurn(std::shared_ptr<DeviceRuntime> runtime, EchoPool::Key key)
        : runtime_(std::move(runtime)), turns_(runtime_->turns), key_(key) {}
    ~RequestTurn() {
        if (mine_) turns_->put(key_, {});
    }
    RequestTurn(const RequestTurn&) = delete;
    RequestTurn& operator=(const RequestTurn&) = delete;

    bool tryBegin(py::handle self) {
        if (!turns_->take(key_)) return false;
        mine_ = true;
        ReplyPool(self).drop(key_);
        return true;
    }
    void begin(py::handle self) {
        while (!tryBegin(self)) {
            blocking([&](const InterruptCheck& onWait) {
                if (auto token = turns_->await(key_, forever, onWait)) turns_->put(key_, std::move(*token));
            });
        }
    }
    ReplyAwaiter wait() const { return {runtime_->wakers, turns_, key_}; }

private:
    const std::shared_ptr<DeviceRuntime> runtime_;
    const std::shared_ptr<EchoPool> turns_;
    const EchoPool::Key key_;
    bool mine_ = false;
};

}  // namespace zvr::python
