#include "core/threads.h"

#include <thread>

#ifdef __linux__
#include <pthread.h>
#endif

#include "core/immortal.h"

namespace zvr {

namespace {

struct ThreadCount {
    std::mutex mutex;
    std::condition_variable changed;
    int running = 0;
};

// Never destroyed: a thread may count itself out while the process ends.
ThreadCount& threadCount() {
    static const auto& count = immortal(std::make_unique<ThreadCount>());
    return *count;
}

thread_local std::string threadName;

}  // namespace

const std::string& currentThreadName() { return threadName; }

void awaitAllThreads(Deadline deadline) {
    ThreadCount& count = threadCount();
    std::unique_lock lock(count.mutex);
    waitOn(count.changed, lock, deadline, [&] { return count.running == 0; });
}

void startThread(const std::string& name, std::function<void()> body) {
    struct Counted {
        Counted() {
            const std::lock_guard lock(threadCount().mutex);
            ++threadCount().running;
        }
        ~Counted() {
            const std::lock_guard lock(threadCount().mutex);
            --threadCount().running;
            threadCount().changed.notify_all();
        }
    };
    auto counted = std::make_unique<Counted>();
    std::thread([name, body = std::move(body), counted = std::move(counted)]() mutable {
#ifdef __linux__
        pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
#endif
        threadName = name;
        body();
        body = nullptr;  // what it holds goes before the thread counts itself out
        counted.reset();
    }).detach();
}

bool OwnedThread::alive() const {
    const std::lock_guard lock(mutex_);
    return running_ > 0;
}

bool OwnedThread::awaitEnd(Deadline deadline, const Attend& attend) const {
    return waitAttended(deadline, attend, [&](Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(ended_, lock, until, [&] { return running_ == 0; });
    });
}

void OwnedThread::startBody(std::function<void()> body) {
    {
        const std::lock_guard lock(mutex_);
        ++running_;
    }
    startThread(name_, [this, body = std::move(body)] {
        try {
            body();
        } catch (...) {
            report_(name_, std::current_exception());
        }
        const std::lock_guard lock(mutex_);
        --running_;
        ended_.notify_all();
    });
}

}  // namespace zvr
