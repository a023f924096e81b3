// The library's own threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "core/engine/process.h"
#include "core/engine/waiting.h"

namespace zvr {

/// Waits until every thread that this library started in this process has ended, until `deadline` at most.
void awaitAllThreads(Deadline deadline);

/// Stops counting the calling thread, if the library started it: it will do no more work.
void forgetThisThread() noexcept;

/// Starts a thread of the library, for which awaitAllThreads waits until `body` has returned.
void startThread(const std::string& name, std::function<void()> body);

/// Starts a thread for a system call that cannot be cancelled. It is not counted: the process may exit while it runs.
void startUncountedThread(const std::string& name, std::function<void()> body);

/// The name of the calling thread if the library started it; else empty.
const std::string& currentThreadName();

/// A thread of the library that belongs to an object: others may query whether it lives, and a failure that ends it is
/// reported. The body itself holds what it needs. In a forked child the thread is not alive.
class OwnedThread {
public:
    /// Called with the failure, on the thread.
    using Report = std::function<void(const std::string& threadName, std::exception_ptr)>;

    OwnedThread(std::string name, Report report) : name_(std::move(name)), report_(std::move(report)) {}
    virtual ~OwnedThread() = default;
    OwnedThread(const OwnedThread&) = delete;
    OwnedThread& operator=(const OwnedThread&) = delete;

    const std::string& name() const { return name_; }
    /// Ends the thread soon, without losing data that can still be saved.
    virtual void end() = 0;
    bool alive() const;
    /// The system's handle and number of the thread that runs the body; 0 before it runs.
    std::uint64_t ident() const { return ident_; }
    long nativeId() const { return nativeId_; }
    /// Whether it belongs to the parent of this forked child.
    bool isForeign() const { return mark_.foreign(); }
    /// Waits for the thread's end; returns whether it has ended.
    bool awaitEnd(Deadline deadline, const InterruptCheck& onWait = {}) const;

protected:
    /// `body` must hold this object. Throws std::system_error in a forked child of the object's process.
    void startBody(std::function<void()> body);

private:
    const std::string name_;
    const Report report_;
    const ProcessMark mark_;
    mutable std::mutex mutex_;
    mutable std::condition_variable ended_;
    int running_ = 0;
    std::atomic<std::uint64_t> ident_{0};
    std::atomic<long> nativeId_{0};
};

}  // namespace zvr
