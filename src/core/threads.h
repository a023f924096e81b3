// The library's own threads.
#pragma once

#include <functional>
#include <string>

#include "core/waiting.h"

namespace zvr {

/// Waits until no thread that this library started runs any more, at most until `deadline`.
void awaitAllThreads(Deadline deadline);

/// Starts a thread of the library. It counts in awaitAllThreads until `body` has returned.
void startThread(const std::string& name, std::function<void()> body);

/// The name of the thread that calls, if the library started it; else empty.
const std::string& currentThreadName();

/// A thread of the library that belongs to an object: others may ask for its life, and hear of the failure that ends
/// it. What its body needs is held by the body itself.
class OwnedThread {
public:
    /// Told of the failure, on the thread.
    using Report = std::function<void(const std::string& threadName, std::exception_ptr)>;

    OwnedThread(std::string name, Report report) : name_(std::move(name)), report_(std::move(report)) {}
    virtual ~OwnedThread() = default;
    OwnedThread(const OwnedThread&) = delete;
    OwnedThread& operator=(const OwnedThread&) = delete;

    const std::string& name() const { return name_; }
    bool alive() const;
    /// Waits for the thread's end; tells whether it came.
    bool awaitEnd(Deadline deadline, const Attend& attend = {}) const;

protected:
    /// `body` must hold this object.
    void startBody(std::function<void()> body);

private:
    const std::string name_;
    const Report report_;
    mutable std::mutex mutex_;
    mutable std::condition_variable ended_;
    int running_ = 0;
};

}  // namespace zvr
