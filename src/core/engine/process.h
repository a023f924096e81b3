// What a forked child needs to know: which objects were made before it, and belong to its parent.
//
// A child has copies of the parent's objects but none of its threads, and a lock that one of them held is held for
// good. So nothing is asked of an object of before: it is told by its mark, and left alone.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace zvr {

namespace detail {
/// Grows in each forked child.
inline std::atomic<std::uint64_t> processGeneration{0};
}  // namespace detail

/// Remembers the process that it was made in.
class ProcessMark {
public:
    ProcessMark();
    /// Whether this is a forked child of that process.
    bool foreign() const noexcept { return detail::processGeneration.load(std::memory_order_relaxed) != generation_; }

private:
    std::uint64_t generation_;
};

/// What a failure says of an object that belongs to the parent.
std::string foreignMessage(const std::string& what);

/// One `Thing` for each process, made at first use and never destroyed. A child makes its own.
template <class Thing>
class PerProcess {
public:
    Thing& get() {
        Made* made = made_.load(std::memory_order_acquire);
        while (made == nullptr || made->mark.foreign()) {
            auto fresh = std::make_unique<Made>();
            if (made_.compare_exchange_strong(made, fresh.get(), std::memory_order_acq_rel))
                return fresh.release()->thing;
        }
        return made->thing;
    }

private:
    struct Made {
        ProcessMark mark;
        Thing thing;
    };
    std::atomic<Made*> made_{nullptr};
};

/// A descriptor that forked children are without: it is closed in them as they begin, so that they neither keep a port
/// or a line from the parent nor read what is meant for it.
class OwnDescriptor {
public:
    OwnDescriptor() = default;
    explicit OwnDescriptor(int descriptor);
    ~OwnDescriptor() { reset(); }
    OwnDescriptor(const OwnDescriptor&) = delete;
    OwnDescriptor& operator=(const OwnDescriptor&) = delete;

    /// -1 once it is closed.
    int get() const { return descriptor_; }
    void reset();

private:
    friend struct DescriptorsOfProcess;

    std::atomic<int> descriptor_{-1};
    OwnDescriptor *previous_ = nullptr, *next_ = nullptr;
};

/// Keeps a descriptor from programs that this process starts.
void closeOnExec(int descriptor);

}  // namespace zvr
