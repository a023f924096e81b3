#include "core/engine/threads.h"

#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#ifdef __linux__
#include <pthread.h>
#include <unistd.h>
#endif

namespace zvr {

namespace {

struct ThreadCount {
    std::mutex mutex;
    std::condition_variable changed;
    int running = 0;
};

// Per process: a forked child starts with none.
ThreadCount& threadCount() {
    static PerProcess<ThreadCount> counts;
    return counts.get();
}

// The process in which this thread is counted, if it is.
thread_local std::optional<ProcessMark> countedIn;
thread_local std::string ownName;

void startDetached(const std::string& name, std::function<void()> body, bool counts) {
    std::thread([name, body = std::move(body), counts]() mutable {
        if (counts) countedIn.emplace();
        ownName = name;
#ifdef __linux__
        pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
#endif
        body();
        body = nullptr;  // destroy what it holds before the thread is no longer counted
        forgetThisThread();
    }).detach();
}

}  // namespace

void forgetThisThread() noexcept {
    const std::optional<ProcessMark> counted = std::exchange(countedIn, std::nullopt);
    if (!counted || counted->foreign()) return;
    ThreadCount& count = threadCount();
    const std::lock_guard lock(count.mutex);
    --count.running;
    count.changed.notify_all();
}

const std::string& currentThreadName() { return ownName; }

void awaitAllThreads(Deadline deadline) {
    ThreadCount& count = threadCount();
    std::unique_lock lock(count.mutex);
    waitOn(count.changed, lock, deadline, [&] { return count.running == 0; });
}

void startThread(const std::string& name, std::function<void()> body) {
    ThreadCount& count = threadCount();
    {
        const std::lock_guard lock(count.mutex);
        ++count.running;
    }
    try {
        startDetached(name, std::move(body), true);
    } catch (...) {
        const std::lock_guard lock(count.mutex);
        --count.running;
        throw;
    }
}

void startUncountedThread(const std::string& name, std::function<void()> body) {
    startDetached(name, std::move(body), false);
}

bool OwnedThread::alive() const {
    if (isForeign()) return false;
    const std::lock_guard lock(mutex_);
    return running_ > 0;
}

bool OwnedThread::awaitEnd(Deadline deadline, const InterruptCheck& onWait) const {
    if (isForeign()) return true;
    return waitInterruptibly(deadline, onWait, [&](Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(ended_, lock, until, [&] { return running_ == 0; });
    });
}

void OwnedThread::startBody(std::function<void()> body) {
    if (isForeign()) throw std::system_error(std::make_error_code(std::errc::operation_not_permitted), name_);
    {
        const std::lock_guard lock(mutex_);
        ++running_;
    }
    startThread(name_, [this, body = std::move(body)] {
#ifdef __linux__
        ident_ = pthread_self();
        nativeId_ = ::gettid();
#endif
        try {
            body();
        } catch (...) {
            report_(name_, std::current_exception());
        }
        if (isForeign()) return;
        const std::lock_guard lock(mutex_);
        --running_;
        ended_.notify_all();
    });
}

}  // namespace zvr
