// The library's own threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "core/engine/process.h"
#include "core/engine/waiting.h"

namespace zvr {

/// Waits until no thread that this library started in this process runs any more, at most until `deadline`.
void awaitAllThreads(Deadline deadline);

/// Counts the calling thread out, if the library started it: it will do nothing any more.
void forgetThisThread() noexcept;

/// Starts a thread of the library. It counts in awaitAllThreads until `body` has returned.
void startThread(const std::string& name, std::function<void()> body);

/// Starts a thread for a call of the system that nobody can end. It does not count: the process may end under it.
void startUncountedThread(const std::string& name, std::function<void()> body);

/// The name of the thread that calls, if the library started it; else empty.
const std::string& currentThreadName();

/// A thread of the library that belongs to an object: others may ask for its life, and hear of the failure that ends
/// it. What its body needs is held by the body itself. A forked child has no such thread: there it is not alive.
class OwnedThread {
public:
    /// Told of the failure, on the thread.
    using Report = std::function<void(const std::string& threadName, std::exception_ptr)>;

    OwnedThread(std::string name, Report report) : name_(std::move(name)), report_(std::move(report)) {}
    virtual ~OwnedThread() = default;
    OwnedThread(const OwnedThread&) = delete;
    OwnedThread& operator=(const OwnedThread&) = delete;

    const std::string& name() const { return name_; }
    /// Ends the thread soon, with nothing lost that can still be saved.
    virtual void end() = 0;
    bool alive() const;
    /// What the system calls the thread that runs the body, and its number; 0 before it runs.
    std::uint64_t ident() const { return ident_; }
    long nativeId() const { return nativeId_; }
    /// Whether it belongs to the parent of this forked child.
    bool isForeign() const { return mark_.foreign(); }
    /// Waits for the thread's end; tells whether it came.
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
