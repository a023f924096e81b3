// Lets a forked child recognise the objects that were made before the fork and belong to its parent.
//
// A child has copies of the parent's objects but none of its threads, and a lock that one of them held is held for
// ever. So an object made before the fork is recognised by its mark and never used.
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

/// Remembers the process in which it was made.
class ProcessMark {
public:
    ProcessMark();
    /// Whether this is a forked child of that process.
    bool foreign() const noexcept { return detail::processGeneration.load(std::memory_order_relaxed) != generation_; }

private:
    std::uint64_t generation_;
};

/// The error message for an object that belongs to the parent.
std::string foreignMessage(const std::string& what);

/// One `Thing` per process, made at first use and never destroyed. A forked child makes its own.
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

/// A descriptor that is closed at the start of every forked child, so that the child neither keeps a port or line
/// occupied nor reads the parent's data.
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

/// Sets close-on-exec: programs started by this process do not inherit the descriptor.
void closeOnExec(int descriptor);

}  // namespace zvr
