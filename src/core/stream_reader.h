// The reader thread of an analog input: frames in, rows out.
//
// Who runs what: the thread passes the gate, takes what the receive thread has filed in each data queue and puts it, as
// rows, into the row queue beside it. The user's side turns the gate, sets the layout and ends the thread.
#pragma once

#include <functional>
#include <string>

#include "core/gate.h"
#include "core/pools.h"
#include "core/row_queue.h"
#include "core/threads.h"

namespace zvr {

class StreamReader final : public OwnedThread, public std::enable_shared_from_this<StreamReader> {
public:
    struct Pair {
        std::shared_ptr<StreamFifo> frames;
        std::shared_ptr<RowQueue> rows;
    };
    /// Told that rows were dropped, on that thread; once a second at most.
    using OnOverflow = std::function<void()>;

    StreamReader(std::string name, std::vector<Pair> pairs, RowLayout layout, Report report, OnOverflow onOverflow);

    void start();
    /// The body of the thread on other queues and another gate or the same ones, until `end`.
    void run(const std::vector<Pair>& pairs, Gate& gate);
    void run() { run(pairs_, gate); }
    /// The thread ends when it next looks around.
    void kill() { ended_ = true; }
    /// Ends the thread soon. The gate stays open.
    void end();
    bool ended() const { return ended_; }

    RowLayout layout() const;
    void setLayout(RowLayout layout);

    const std::vector<Pair>& pairs() const { return pairs_; }

    Gate gate;

private:
    bool drain(const Pair& pair);

    const std::vector<Pair> pairs_;
    const OnOverflow onOverflow_;
    const std::shared_ptr<Bell> bell_ = std::make_shared<Bell>();
    mutable std::mutex mutex_;
    RowLayout layout_;
    std::atomic<bool> ended_{false};
    Deadline nextWarning_{};
};

}  // namespace zvr
