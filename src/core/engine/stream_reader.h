// The thread that decodes the frames of a stream: frames in, rows out.
//
// Who runs what: the thread passes the gate, takes the frames that the receive thread has filed in each data queue and
// puts them, as rows, into the paired row queue. The user's side opens and shuts the gate, sets the layout and ends the
// thread. The parts that the thread uses may be replaced while it runs: its supervisor then renews it, on the thread.
//
// While the thread waits, with nothing left to take, the receive thread may do its work: if the frame queue is empty
// and its rows fit, a frame is put directly into the row queue, which saves a hand-over. The route is a lock: the
// thread holds it except during its waits, and the receive thread takes it only if it is free.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "core/engine/gate.h"
#include "core/engine/pools.h"
#include "core/engine/row_queue.h"
#include "core/engine/supervisor.h"
#include "core/engine/threads.h"

namespace zvr {

class StreamReader final : public OwnedThread,
                           public DirectTaker<StreamItem>,
                           public std::enable_shared_from_this<StreamReader> {
public:
    struct Pair {
        std::shared_ptr<StreamFifo> frames;
        std::shared_ptr<RowQueue> rows;
    };
    /// Called with the number of dropped rows, on that thread; at most 1,000 times a second per queue.
    using OnOverflow = std::function<void(std::size_t rows)>;

    StreamReader(std::string name, std::vector<Pair> pairs, RowLayout layout, Report report, OnOverflow onOverflow,
                 std::shared_ptr<Supervisor<StreamReader>> supervisor = nullptr,
                 std::shared_ptr<Gate> gate = std::make_shared<Gate>());

    void start();
    void run();
    /// Ends the thread soon. The gate stays open.
    void end() override;
    /// Wakes the thread to ask its supervisor.
    void lookAgain() noexcept;

    /// From the next frame on.
    void setLayout(RowLayout layout);
    /// On the thread itself. With `waitsInQueue` it takes the next item even if the gate is shut meanwhile.
    void setRoute(std::vector<Pair> pairs, std::shared_ptr<Gate> gate, bool waitsInQueue = false);

    /// On the thread itself: waits until `lookAgain`, at most this long.
    void rest(std::chrono::milliseconds most);

    bool tryTake(const StreamFifo& queue, StreamItem& item) override;

    const std::shared_ptr<Gate> gate;

private:
    bool changed() const noexcept { return ended_ || (supervisor_ && supervisor_->changed()); }
    bool drainAll(std::size_t most);
    bool drain(const Pair& pair, std::size_t most);
    void tellOfOverflow(const RowQueue* queue, std::size_t dropped);

    /// Number of warnings of a queue in the current span.
    struct Warned {
        Deadline since{};
        std::size_t count = 0;
    };

    std::mutex route_;  // held by the thread except during its waits
    bool runs_ = false;
    std::vector<Pair> pairs_;
    std::shared_ptr<Gate> gateNow_ = gate;
    Gate::Passed passed_ = 0;
    bool waitsInQueue_ = false;
    const OnOverflow onOverflow_;
    const std::shared_ptr<Supervisor<StreamReader>> supervisor_;
    const std::shared_ptr<Notifier> notifier_ = std::make_shared<Notifier>();
    mutable std::mutex mutex_;
    RowLayout layout_;
    std::atomic<bool> ended_{false};
    std::map<const RowQueue*, Warned> warned_;
};

}  // namespace zvr
