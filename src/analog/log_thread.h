// The thread of a logger: takes rows from a queue and writes them to a file.
#pragma once

#include <deque>

#include "analog/ledger.h"
#include "core/engine/gate.h"
#include "core/engine/threads.h"
#include "device/runtime.h"
#include "device/thread_body.h"

namespace zvr::python {

/// The fields of a logger's object that its thread uses.
enum class LogField { file, writer, queue, lock };
inline constexpr std::array<const char*, 4> logFieldNames{"f_handle", "writer_csv", "save_data_queue",
                                                          "save_data_lock"};
/// Their values; null if missing.
using LogFields = std::array<SharedObject, logFieldNames.size()>;

/// The native part of a logger. The thread reads the object's fields at each step and keeps the object alive only
/// during that. When the object is gone, the thread writes the queued rows with its last fields, closes the file and
/// ends.
///
/// All members require the interpreter lock; those that wait release it meanwhile.
class LogThread final : public OwnedThread, public std::enable_shared_from_this<LogThread> {
public:
    explicit LogThread(py::handle owner);

    void start();
    /// Uses a Python thread for the work, which runs a subclass's own thread body.
    void startOnHost(const Object& thread);
    /// Whether a thread is there to write.
    bool works() const;

    /// Called at every change of a field, with its old and new value; null for none.
    void noteChange(LogField field, const Object& before, const Object& now);
    void noteChange();
    /// The object is being deallocated and leaves these fields.
    void inherit(LogFields left);
    /// Ends the thread when its queue is empty.
    void end();
    /// Ends the thread at once; returns the largest possible number of unwritten rows.
    std::size_t cancel();

    /// Waits until everything queued so far is in the file; returns early if nothing is written because the gate is
    /// shut, no file is open, or the thread has ended.
    void awaitWritten();
    /// Writes the queued rows on this thread, if no other thread does.
    void writeRest();

    /// Ends the thread, even at a shut gate, and waits until the rows queued for an open file are flushed.
    void drain();

    /// Waits for writes in progress and blocks further ones for a scope.
    class Pause {
    public:
        explicit Pause(LogThread& thread);
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        LogThread& thread_;
    };

    /// Runs the body for any queue on this thread until the object is killed; errors propagate to the caller.
    void runFor(py::handle owner, const Object& queue);

    /// Name of the open file, for messages.
    Object fileName() const;
    std::uint64_t lost() const { return lost_; }

    /// All threads that may have rows to write.
    static std::vector<std::shared_ptr<LogThread>> all();

private:
    class Standing;
    struct Replaced {
        SharedObject queue;
        std::uint64_t left;
    };

    void run();
    void writeAll();
    bool otherBodyRuns(std::uint64_t seen);
    void finish();
    Object owner() const;
    Object present(LogField field) const;
    bool isOver() const;
    bool standsStill() const;
    std::pair<Object, bool> nextQueue();
    std::vector<Object> queues() const;
    Object timeLimit() const;
    Object take(const Object& queue, bool waits);
    template <class Look, class Over>
    void passGate(const InterruptCheck& onWait, const Look& look, const Over& over);
    void awaitPauseEnd(const InterruptCheck& onWait);
    Object awaitWriter();
    void awaitChange(std::uint64_t seen, Deadline deadline, const InterruptCheck& onWait);
    void write(const Object& writer, const Object& rows);
    void wake();

    const SharedObject reference_;  // weak
    ThreadBody body_;
    SharedObject hostThread_;
    LogFields heritage_;
    SharedObject file_;              // held here, so that the garbage collector does not close it with the object
    std::deque<Replaced> replaced_;  // their items come before those of the current queue
    SharedObject waiting_;           // the queue that the thread waits on
    std::shared_ptr<Gate> gate_;
    std::size_t rowsInWork_ = 0;
    int standing_ = 0;
    int pauses_ = 0;
    bool finished_ = false;
    bool reported_ = false;
    std::atomic<bool> ended_{false};
    std::atomic<bool> cancelled_{false};
    std::uint64_t lost_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<std::uint64_t> changes_{0};
    Ledger turns_;   // each takes one item from the queue
    Ledger writes_;  // each begins by looking up the writer
};

}  // namespace zvr::python
