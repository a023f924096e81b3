// The thread of a logger: takes rows from a queue and writes them to a file.
#pragma once

#include <deque>

#include "analog/ledger.h"
#include "core/engine/gate.h"
#include "core/engine/threads.h"
#include "device/runtime.h"
#include "device/thread_body.h"

namespace zvr::python {

/// The fields of a logger's object that its thread looks at.
enum class LogField { file, writer, queue, lock };
inline constexpr std::array<const char*, 4> logFieldNames{"f_handle", "writer_csv", "save_data_queue",
                                                          "save_data_lock"};
/// Their values; nothing where there is none.
using LogFields = std::array<SharedObject, logFieldNames.size()>;

/// What stands behind the object of a logger. The thread looks at the object's fields as they are at each step, and
/// keeps the object alive for no longer than a look. When the object is gone, it writes what is queued with what the
/// object left, closes the file and ends.
///
/// All members are for callers with the interpreter lock; those that wait let it go meanwhile.
class LogThread final : public OwnedThread, public std::enable_shared_from_this<LogThread> {
public:
    explicit LogThread(py::handle owner);

    void start();
    /// Lets a thread of the host do the work; what a class puts in the place of the thread's body runs there.
    void startOnHost(const Object& thread);
    /// Whether there is a thread that writes.
    bool works() const;

    /// To be told of every change of a watched field, with its value before and now; nothing where there is none.
    void noteChange(LogField field, const Object& before, const Object& now);
    void noteChange();
    /// The object goes, and leaves this.
    void inherit(LogFields left);
    /// Ends the thread when its queue is empty.
    void end();
    /// Ends the thread at once; returns how many rows, at most, are not written.
    std::size_t abandon();

    /// Waits until everything that is queued now is in the file; returns early if nobody writes: the gate is shut, no
    /// file is open, or the thread has ended.
    void awaitWritten();
    /// Writes what is queued now on this thread, if no other is there to do it.
    void writeRest();

    /// Ends the thread, whatever its gate, and waits until what is queued for an open file is on its way to the disk.
    void drain();

    /// Keeps all threads from writing, from the end of what they are at to the end of the scope.
    class Pause {
    public:
        explicit Pause(LogThread& thread);
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        LogThread& thread_;
    };

    /// The body for any queue, on this thread, until the object is killed; errors are the caller's.
    void runFor(py::handle owner, const Object& queue);

    /// Name of the file that is open, for a message.
    Object fileName() const;
    std::uint64_t lost() const { return lost_; }

    /// Those that have rows to write, or may have.
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
    SharedObject file_;              // held here, or the collector would close it together with an object that it takes
    std::deque<Replaced> replaced_;  // their items come before those of the present queue
    SharedObject waiting_;           // the queue that the thread waits in
    std::shared_ptr<Gate> gate_;
    std::size_t rowsInWork_ = 0;
    int standing_ = 0;
    int pauses_ = 0;
    bool finished_ = false;
    bool reported_ = false;
    std::atomic<bool> ended_{false};
    std::atomic<bool> abandoned_{false};
    std::uint64_t lost_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::atomic<std::uint64_t> changes_{0};
    Ledger turns_;   // each takes one item from the queue
    Ledger writes_;  // each begins with a look at the writer
};

}  // namespace zvr::python
