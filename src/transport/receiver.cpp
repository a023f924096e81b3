#include "transport/receiver.h"

#ifdef __linux__
#include <pthread.h>
#endif

#include "core/immortal.h"

namespace zvr {

namespace {

// A source that brings nothing without waiting for it must not make the thread burn a core.
constexpr std::chrono::milliseconds idlePause{1};
// A dead link must not flood anybody with reports.
constexpr std::chrono::milliseconds firstPause{100}, longestPause{10'000};

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

}  // namespace

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
        body();
        body = nullptr;  // what it holds goes before the thread counts itself out
        counted.reset();
    }).detach();
}

Receiver::Receiver(std::string name, std::size_t readLength, Sink sink, Report report, ReportRead reportRead)
    : name_(std::move(name)),
      readLength_(readLength),
      sink_(std::move(sink)),
      report_(std::move(report)),
      reportRead_(std::move(reportRead)) {}

void Receiver::start() {
    ++running_;
    startThread(name_, [self = shared_from_this()] {
        try {
            self->run();
        } catch (...) {
            self->report_(self->name_, std::current_exception());
        }
        const std::lock_guard lock(self->mutex_);
        --self->running_;
        self->ended_.notify_all();
    });
}

void Receiver::run() {
    std::vector<Packet> packets;
    std::chrono::milliseconds pause = firstPause;
    while (!killed_) {
        const std::uint64_t turn = gate.pass();
        if (killed_) return;
        packets.clear();
        const Deadline begin = Clock::now();
        const Reading reading = cycle(packets);
        for (const Packet& packet : packets) sink_(packet);
        if (reading == Reading::ended) gate.awaitTurn(turn);
        if (reading == Reading::idle) gate.awaitTurn(turn, begin + idlePause);
        if (reading == Reading::failed) {
            gate.awaitTurn(turn, begin + pause);
            pause = std::min(2 * pause, longestPause);
        } else {
            pause = firstPause;
        }
    }
}

Reading Receiver::cycle(std::vector<Packet>& packets) {
    std::shared_ptr<PacketSource> source;
    {
        const std::lock_guard lock(mutex_);
        source = source_;
    }
    try {
        if (source) return source->receive(readLength_, packets);
        if (!reportRead_) return Reading::ended;
        throw MissingClient();
    } catch (const std::exception&) {
        // A network link that fails has ended: nothing comes until somebody turns the gate.
        if (!reportRead_) return Reading::ended;
        if (!killed_) reportRead_(std::current_exception());
        return Reading::failed;
    }
}

void Receiver::end() {
    killed_ = true;
    gate.release();
}

bool Receiver::awaitEnd(Deadline deadline, const Attend& attend) const {
    return waitAttended(deadline, attend, [&](Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(ended_, lock, until, [&] { return running_ == 0; });
    });
}

void Receiver::setSource(std::shared_ptr<PacketSource> source) {
    const std::lock_guard lock(mutex_);
    source_ = std::move(source);
}

}  // namespace zvr
