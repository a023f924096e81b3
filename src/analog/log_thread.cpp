#include "analog/log_thread.h"

#include <set>

#include "analog/log_parts.h"
#include "core/engine/never_destroyed.h"
#include "core/wire/constants.h"
#include "python/arguments.h"
#include "python/raising.h"

namespace zvr::python {

namespace {

// A Python lock cannot notify that it is free, so it is polled.
constexpr std::chrono::milliseconds lockPoll{20};
constexpr std::chrono::milliseconds lookEvery{50};
constexpr const char* bodyName = "_saveStreamingDataThread";

// Accessed under the interpreter lock only.
std::set<std::shared_ptr<LogThread>>& threads() {
    static auto& all = neverDestroyed<std::set<std::shared_ptr<LogThread>>>();
    return all;
}

Object held(const SharedObject& object) { return object ? borrow(object.get()) : Object(); }

}  // namespace

// While one of these exists the thread takes and writes nothing.
class LogThread::Standing {
public:
    explicit Standing(LogThread& thread) : thread_(thread) { ++thread_.standing_; }
    ~Standing() { --thread_.standing_; }
    Standing(const Standing&) = delete;
    Standing& operator=(const Standing&) = delete;

private:
    LogThread& thread_;
};

LogThread::Pause::Pause(LogThread& thread) : thread_(thread) {
    ++thread_.pauses_;
    try {
        const std::uint64_t begun = thread_.writes_.begun();
        blocking([&](const InterruptCheck& onWait) {
            waitInterruptibly(forever, onWait, [&](Deadline until) { return thread_.writes_.await(begun, until); });
        });
    } catch (...) {
        --thread_.pauses_;
        thread_.noteChange();
        throw;
    }
}

LogThread::Pause::~Pause() {
    --thread_.pauses_;
    thread_.noteChange();
}

LogThread::LogThread(py::handle owner)
    : OwnedThread(bodyName, reportThreadFailure),
      reference_(shared(own(PyWeakref_NewRef(owner.ptr(), nullptr)))),
      body_(owner, bodyName) {}

std::vector<std::shared_ptr<LogThread>> LogThread::all() { return {threads().begin(), threads().end()}; }

void LogThread::start() {
    threads().insert(shared_from_this());
    startBody([self = shared_from_this()] { self->run(); });
}

void LogThread::startOnHost(const Object& thread) {
    hostThread_ = shared(thread);
    callMethod(thread, "start");
    threads().insert(shared_from_this());
}

bool LogThread::works() const {
    if (isForeign()) return false;
    return hostThread_ ? isTrue(callMethod(hostThread_.get(), "is_alive")) : alive() && !finished_;
}

Object LogThread::owner() const { return callObject(reference_.get()); }

Object LogThread::present(LogField field) const {
    const auto place = static_cast<std::size_t>(field);
    const Object object = owner();
    Object found = object.is_none() ? held(heritage_[place]) : attributeOrNothing(object, logFieldNames[place]);
    return found && found.is_none() ? Object() : found;
}

// During GC the weak reference is already dead but the end has not been set yet.
bool LogThread::isOver() const {
    if (ended_) return true;
    const Object object = owner();
    const Object killed = object.is_none() ? Object() : attributeOrNothing(object, "killed");
    return killed && isTrue(killed);
}

void LogThread::noteChange() {
    if (isForeign()) return;
    {
        const std::lock_guard lock(mutex_);
        ++changes_;
    }
    changed_.notify_all();
    if (gate_) gate_->wake();
}

void LogThread::noteChange(LogField field, const Object& before, const Object& now) {
    if (field == LogField::file && !hostThread_ && works()) {
        file_ = now && !now.is_none() ? shared(now) : nullptr;
    }
    if (field == LogField::writer) reported_ = false;
    if (field == LogField::queue && before && !before.is_none() && !hostThread_ && works()) {
        replaced_.push_back({shared(before), sizeOf(before)});
    }
    noteChange();
    if (field == LogField::queue && !isForeign()) wake();
}

void LogThread::wake() {
    if (const Object queue = held(waiting_)) putMarker(queue);
}

void LogThread::inherit(LogFields left) {
    if (isForeign()) {
        // The file's buffered data is the parent's to write, so the file must never be closed here.
        (void)neverDestroyed(std::move(left));
        (void)neverDestroyed(shared_from_this());
        return;
    }
    ended_ = true;
    if (hostThread_ || finished_) {
        threads().erase(shared_from_this());
        return;
    }
    heritage_ = std::move(left);
    noteChange();
    const Object queue = held(waiting_);
    if (!queue) return;
    if (isOwnQueue(queue)) {
        putMarker(queue);
        return;
    }
    // An object may be collected at any moment, even while this thread holds the lock of that queue.
    startThread(name(), [queue = waiting_]() mutable { onInterpreter([&] { putMarker(queue.get()); }); });
}

void LogThread::end() {
    ended_ = true;
    noteChange();
    wake();
}

std::size_t LogThread::cancel() {
    cancelled_ = true;
    std::size_t rows = rowsInWork_;
    for (const Object& queue : queues()) {
        while (!isEmpty(queue)) {
            const Object item = take(queue, false);
            if (!item) break;
            if (item.is_none()) continue;
            ++lost_;
            rows += rowsOf(item);
        }
    }
    end();
    return rows;
}

std::vector<Object> LogThread::queues() const {
    std::vector<Object> all;
    for (const Replaced& before : replaced_) all.push_back(held(before.queue));
    if (Object queue = present(LogField::queue)) all.push_back(std::move(queue));
    return all;
}

// The queue to take from, and whether it is the current one. Items of replaced queues come first.
std::pair<Object, bool> LogThread::nextQueue() {
    while (!replaced_.empty()) {
        const Object first = held(replaced_.front().queue);
        const bool left = !isEmpty(first);
        if (left && replaced_.front().left > 0) {
            --replaced_.front().left;
            return {first, false};
        }
        replaced_.pop_front();
    }
    return {present(LogField::queue), true};
}

// The timeout of a wait for an item; the object must not be held during that wait.
Object LogThread::timeLimit() const {
    const Object object = owner();
    const Object limit = object.is_none() ? Object() : attributeOrNothing(object, "queue_timeout");
    return limit ? limit : py::int_(QUEUE_TIMEOUT);
}

// An item; null if none came.
Object LogThread::take(const Object& queue, bool waits) {
    try {
        if (!waits) return callMethod(queue, "get", py::bool_(false));
        return callMethod(queue, "get", py::bool_(true), timeLimit());
    } catch (const py::error_already_set& failure) {
        if (!failure.matches(pythonObject("queue", "Empty"))) throw;
        return {};
    }
}

void LogThread::awaitChange(std::uint64_t seen, Deadline deadline, const InterruptCheck& onWait) {
    const WithoutGil released;
    waitInterruptibly(deadline, onWait, [&](Deadline until) {
        std::unique_lock lock(mutex_);
        return waitOn(changed_, lock, until, [&] { return changes_ != seen; });
    });
}

template <class Look, class Over>
void LogThread::passGate(const InterruptCheck& onWait, const Look& look, const Over& over) {
    for (;;) {
        const std::uint64_t seen = changes_;
        if (over()) return;
        const Object lock = look();
        if (lock && tryPass(lock)) return;
        const Standing standing(*this);
        const auto gate = lock ? ownGate(lock) : nullptr;
        if (!gate) {
            awaitChange(seen, lock ? Clock::now() + lockPoll : forever, onWait);
            continue;
        }
        gate_ = gate;
        const WithoutGil released;
        waitInterruptibly(forever, onWait, [&](Deadline until) {
            const std::uint64_t turn = gate->turn();
            if (gate->locked() && changes_ == seen) gate->awaitTurn(turn, until);
            return !gate->locked() || changes_ != seen;
        });
    }
}

void LogThread::awaitPauseEnd(const InterruptCheck& onWait) {
    for (;;) {
        const std::uint64_t seen = changes_;
        if (pauses_ == 0) return;
        awaitChange(seen, forever, onWait);
    }
}

// Waits for a writer. Rows already taken wait for a file as queued ones do; only at the end may there be none.
Object LogThread::awaitWriter() {
    for (;;) {
        awaitPauseEnd({});
        const std::uint64_t seen = changes_;
        if (Object writer = present(LogField::writer)) return writer;
        if (isOver()) return {};
        const Standing standing(*this);
        awaitChange(seen, forever, {});
    }
}

bool LogThread::standsStill() const {
    if (standing_ == 0) return false;
    if (!present(LogField::writer)) return true;
    if (ended_ && !hostThread_) return false;
    const Object lock = present(LogField::lock);
    return !lock || isShut(lock);
}

void LogThread::write(const Object& writer, const Object& rows) {
    if (!writer) {
        ++lost_;
        return;
    }
    const Ledger::Entry entry(writes_);
    rowsInWork_ = rowsOf(rows);
    try {
        writeRows(writer, rows, cancelled_);
    } catch (...) {
        ++lost_;
        if (!std::exchange(reported_, true)) reportThreadFailure(name(), caught());
    }
    rowsInWork_ = 0;
}

// While the body is replaced by a user's, the thread only calls that one.
bool LogThread::otherBodyRuns(std::uint64_t seen) {
    Object object = owner();
    if (object.is_none()) return false;
    const auto queueOf = [](const Object& self) { return py::make_tuple(attribute(self, "save_data_queue")); };
    switch (body_.callOther(object, queueOf)) {
        case ThreadBody::Found::own: return false;
        case ThreadBody::Found::called: return true;
        case ThreadBody::Found::known: break;
    }
    if (ended_) return false;
    object = {};
    awaitChange(seen, Clock::now() + lookEvery, {});
    return true;
}

void LogThread::writeAll() {
    while (!cancelled_) {
        passGate(
            {}, [&] { return present(LogField::lock); }, [&] { return ended_.load(); });
        const std::uint64_t seen = changes_;
        if (otherBodyRuns(seen)) continue;
        const bool over = isOver();
        const auto [queue, newest] = nextQueue();
        if (over && (!queue || isEmpty(queue))) return;
        if (!queue) {
            awaitChange(seen, forever, {});
            continue;
        }
        const Ledger::Entry turn(turns_);
        const bool waits = !over && newest;
        if (waits) waiting_ = shared(queue);
        const Object item = take(queue, waits);
        waiting_.reset();
        if (item && !item.is_none()) write(awaitWriter(), item);
        const WithoutGil released;
    }
}

void LogThread::run() {
    onInterpreter([&] {
        try {
            writeAll();
        } catch (...) {
            reportThreadFailure(name(), caught());
        }
        finish();
    });
}

// Closes the file of an object that was dropped, or still exists at interpreter shutdown.
void LogThread::finish() {
    waiting_.reset();
    finished_ = true;
    threads().erase(shared_from_this());
    try {
        const Object file = ended_ ? present(LogField::file) : Object();
        if (file) callMethod(file, "close");
    } catch (...) {
        ++lost_;
        if (!std::exchange(reported_, true)) reportThreadFailure(name(), caught());
    }
    heritage_ = {};
    file_.reset();
    replaced_.clear();
    gate_.reset();
}

void LogThread::awaitWritten() {
    if (turns_.isMine() || !works()) return;
    if (hostThread_ && attribute(hostThread_.get(), "ident").equal(py::int_(PyThread_get_thread_ident()))) return;
    std::uint64_t size = 0;
    for (const Object& queue : queues()) size += sizeOf(queue);
    // One item per turn: the current one, then those of the queue. The marker ends a waiting turn.
    std::uint64_t target = turns_.begun() + size;
    Object queue = present(LogField::queue);
    if (queue && !standsStill()) putMarker(queue);
    for (;;) {
        if (!works() || standsStill()) return;
        const std::vector<Object> all = queues();
        if (std::ranges::all_of(all, [](const Object& each) { return isEmpty(each); })) {
            // Another thread took some items, or a user's body counts no turns.
            target = std::min(target, turns_.begun());
            if (hostThread_ && target == 0) return;
            if (!all.empty()) putMarker(all.back());
        }
        const bool poll = hostThread_ && turns_.begun() == 0;
        const Deadline look = Clock::now() + (poll ? lockPoll : lookEvery);
        const bool written = blocking([&](const InterruptCheck& onWait) {
            return waitInterruptibly(look, onWait, [&](Deadline until) { return turns_.await(target, until); });
        });
        if (written && !poll) return;
    }
}

void LogThread::writeRest() {
    if (isForeign() || works() || turns_.isMine() || (ended_ && finished_)) return;  // the file is already closed
    for (const Object& queue : queues()) {
        for (std::uint64_t left = sizeOf(queue); left > 0 && !isEmpty(queue); --left) {
            const Object item = take(queue, false);
            if (!item) break;
            if (!item.is_none()) write(present(LogField::writer), item);
            if (PyErr_CheckSignals() != 0) throw py::error_already_set();
        }
    }
}

void LogThread::drain() {
    const bool writes = works() && present(LogField::writer);
    end();
    if (!writes) return;
    awaitWritten();
    if (hostThread_) {
        const Pause pause(*this);
        if (const Object file = present(LogField::file)) callMethod(file, "flush");
        return;
    }
    // A write still in progress here will not finish.
    cancelled_ = true;
    noteChange();
    blocking([&](const InterruptCheck& onWait) { return awaitEnd(forever, onWait); });
}

Object LogThread::fileName() const {
    const Object file = present(LogField::file);
    Object name = file ? attributeOrNothing(file, "name") : Object();
    return name ? name : py::none();
}

void LogThread::runFor(py::handle owner, const Object& queue) {
    const InterruptCheck onWait = signalCheck();
    while (!isTrue(attribute(owner, "killed"))) {
        passGate(
            onWait, [&] { return attribute(owner, "save_data_lock"); }, [] { return false; });
        std::optional<Ledger::Entry> turn;
        const Object usual = attributeOrNothing(owner, "save_data_queue");
        if (usual && queue.is(usual)) turn.emplace(turns_);
        const Object rows = callMethod(queue, "get", py::bool_(true), attribute(owner, "queue_timeout"));
        if (!rows.is_none()) {
            awaitPauseEnd(onWait);
            const Ledger::Entry entry(writes_);
            writeRows(attribute(owner, "writer_csv"), rows, cancelled_);
        }
        blocking([](const InterruptCheck& look) {
            if (look) look();
        });
    }
}

}  // namespace zvr::python
