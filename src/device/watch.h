// How the threads of an object notice that something they use has been replaced.
//
// Methods and fields of a device object may be set, patched and deleted at any time, on the object, on its class or on
// a class above it. Setting one on the object increments a counter here, through the attribute setters of Device;
// setting one on a class changes the class's version tag. A thread compares both on every iteration without a lock, and
// takes the interpreter lock to look again only when they differ.
#pragma once

#include <mutex>
#include <vector>

#include "python/common.h"

namespace zvr::python {

class Watch {
public:
    /// The state that a thread has seen.
    struct Seen {
        std::uint64_t changes = 0;
        unsigned version = 0;  ///< 0 for a class without one: attributes set on it are then not noticed
    };

    explicit Watch(py::handle self) { noteType(self); }

    /// Under the interpreter lock, after all parts have been looked up.
    Seen look() const noexcept { return {changes_, versionNow()}; }
    /// To be called before the look, so that changes meanwhile are noticed afterwards.
    std::uint64_t changes() const noexcept { return changes_; }
    bool changed(const Seen& seen) const noexcept {
        return changes_ != seen.changes || (seen.version != 0 && versionNow() != seen.version);
    }

    /// Something has been set or deleted. Under the interpreter lock.
    void touch(py::handle self);
    /// The object is gone. On any thread.
    void touch() noexcept;

    /// Makes the thread look again at each change from now on, while it lives.
    template <class Thread>
    void onChange(const std::shared_ptr<Thread>& thread) {
        const std::lock_guard lock(mutex_);
        observers_.push_back({thread, [](void* who) { static_cast<Thread*>(who)->lookAgain(); }});
    }

    /// Adds names of methods and fields that threads use; only these count as changes.
    static void watchNames(std::initializer_list<const char*> names);
    static bool watches(py::handle name);

private:
    struct Observer {
        std::weak_ptr<void> who;
        void (*wake)(void* who);
    };

    void noteType(py::handle self);
    unsigned versionNow() const noexcept;

    std::atomic<std::uint64_t> changes_{1};
    std::atomic<PyTypeObject*> type_{nullptr};
    std::vector<SharedObject> types_;  // keeps every former `type_` alive
    std::mutex mutex_;
    std::vector<Observer> observers_;
};

}  // namespace zvr::python
