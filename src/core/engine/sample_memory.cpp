#include "core/engine/sample_memory.h"

#include <sys/mman.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

#include "core/engine/never_destroyed.h"

namespace zvr {

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
constexpr std::size_t slabBytes = 2 * largePage;
constexpr std::size_t keptSlabs = 3;
constexpr std::size_t smallBlock = 16384;  // bytes; smaller blocks do not share a slab, since one could keep it alive
constexpr std::size_t alignment = 64;

constexpr std::size_t roundedUp(std::size_t bytes, std::size_t unit) { return (bytes + unit - 1) / unit * unit; }

std::shared_ptr<std::byte> inLargePages(std::size_t bytes) {
    auto* const memory = static_cast<std::byte*>(std::aligned_alloc(largePage, roundedUp(bytes, largePage)));
    if (memory == nullptr) throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
    ::madvise(memory, bytes, MADV_HUGEPAGE);  // a hint
#endif
    return {memory, std::free};
}

/// Consecutive blocks; reused from the beginning once all of them are released.
struct Slab {
    const std::shared_ptr<std::byte> memory = inLargePages(slabBytes);
    std::size_t used = 0;
    std::atomic<std::size_t> blocks{0};
};

class Slabs {
public:
    /// Null if another thread holds the lock, or held it at the fork of this process.
    std::shared_ptr<double> take(std::size_t bytes) {
        const std::unique_lock lock(mutex_, std::try_to_lock);
        if (!lock) return nullptr;
        bytes = roundedUp(bytes, alignment);
        for (const auto& slab : slabs_) {
            if (!slab) continue;
            if (slab->blocks.load(std::memory_order_acquire) == 0) slab->used = 0;
            if (slabBytes - slab->used >= bytes) return blockOf(slab, bytes);
        }
        auto& oldest = slabs_[made_++ % keptSlabs];
        oldest = std::make_shared<Slab>();
        return blockOf(oldest, bytes);
    }

private:
    struct Block {
        explicit Block(std::shared_ptr<Slab> of) : slab(std::move(of)) { ++slab->blocks; }
        ~Block() { slab->blocks.fetch_sub(1, std::memory_order_release); }
        Block(const Block&) = delete;
        Block& operator=(const Block&) = delete;

        const std::shared_ptr<Slab> slab;
    };

    static std::shared_ptr<double> blockOf(const std::shared_ptr<Slab>& slab, std::size_t bytes) {
        const auto block = std::make_shared<Block>(slab);
        auto* const place = reinterpret_cast<double*>(slab->memory.get() + slab->used);
        slab->used += bytes;
        return {block, place};
    }

    std::mutex mutex_;
    std::array<std::shared_ptr<Slab>, keptSlabs> slabs_;
    std::size_t made_ = 0;
};

}  // namespace

std::shared_ptr<double> sampleMemory(std::size_t count) {
    static auto& slabs = neverDestroyed<Slabs>();
    const std::size_t bytes = count * sizeof(double);
    if (bytes > largePage) {
        const auto memory = inLargePages(bytes);
        return {memory, reinterpret_cast<double*>(memory.get())};
    }
    if (bytes >= smallBlock) {
        if (auto block = slabs.take(bytes)) return block;
    }
    const std::shared_ptr<double[]> alone = std::make_unique_for_overwrite<double[]>(count);
    return {alone, alone.get()};
}

}  // namespace zvr
