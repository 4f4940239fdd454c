#include "work/large_memory.h"

#include "work/machine_memory.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <mutex>
#include <new>
#include <sys/mman.h>

namespace orvane {

namespace {

constexpr std::size_t huge_page = 2 << 20;
constexpr std::size_t granule = 64 << 10;

std::size_t rounded(std::size_t bytes)
{
    return (bytes + granule - 1) / granule * granule;
}

// A part of the memory of the machine, and never more than makes sense.
std::size_t most_kept()
{
    constexpr std::size_t most = std::size_t{512} << 20;
    return std::min(most, machine_memory() / 32);
}

// At an address from which on huge pages fit; null where there is no room.
void *map(std::size_t bytes) noexcept
{
    void *const mapped = mmap(nullptr, bytes + huge_page, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    const auto start = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = (start + huge_page - 1) / huge_page * huge_page;
    if (aligned > start)
        munmap(mapped, aligned - start);
    if (const std::size_t behind = start + huge_page - aligned; behind > 0)
        munmap(reinterpret_cast<void *>(aligned + bytes), behind);
    void *const memory = reinterpret_cast<void *>(aligned);
    static_cast<void>(madvise(memory, bytes, MADV_HUGEPAGE));
    return memory;
}

// What was given back and waits for its next use, the oldest first.
class KeptMemory
{
public:
    // Null where nothing of about that size is there.
    void *take(std::size_t bytes) noexcept
    {
        const std::lock_guard lock(mutex_);
        std::size_t best = count_;
        for (std::size_t i = 0; i < count_; ++i)
            if (kept_[i].bytes >= bytes && kept_[i].bytes <= bytes + bytes / 2 &&
                (best == count_ || kept_[i].bytes < kept_[best].bytes))
                best = i;
        if (best == count_)
            return nullptr;
        const Kept found = kept_[best];
        remove(best);
        if (found.bytes > bytes)
            munmap(static_cast<char *>(found.memory) + bytes, found.bytes - bytes);
        return found.memory;
    }

    void keep(void *memory, std::size_t bytes) noexcept
    {
        const std::lock_guard lock(mutex_);
        if (bytes > most_) {
            munmap(memory, bytes);
            return;
        }
        while (count_ == kept_.size() || bytes_ + bytes > most_)
            let_go_of_oldest();
        static_cast<void>(madvise(memory, bytes, MADV_FREE));
        kept_[count_++] = Kept{memory, bytes};
        bytes_ += bytes;
    }

    void let_go() noexcept
    {
        const std::lock_guard lock(mutex_);
        while (count_ > 0)
            let_go_of_oldest();
    }

private:
    struct Kept {
        void *memory;
        std::size_t bytes;
    };

    void let_go_of_oldest() noexcept
    {
        munmap(kept_[0].memory, kept_[0].bytes);
        remove(0);
    }
    void remove(std::size_t at) noexcept
    {
        bytes_ -= kept_[at].bytes;
        std::copy(kept_.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                  kept_.begin() + static_cast<std::ptrdiff_t>(count_),
                  kept_.begin() + static_cast<std::ptrdiff_t>(at));
        --count_;
    }

    const std::size_t most_ = most_kept();
    std::mutex mutex_;
    std::array<Kept, 32> kept_{};
    std::size_t count_ = 0;
    std::size_t bytes_ = 0;
};

// Never destroyed: what outlives it in a process that ends may still give memory back.
KeptMemory &kept_memory()
{
    alignas(KeptMemory) static char place[sizeof(KeptMemory)];
    static KeptMemory *const kept = new (place) KeptMemory;
    return *kept;
}

} // namespace

void *take_large_memory(std::size_t bytes)
{
    const std::size_t size = rounded(bytes);
    if (void *memory = kept_memory().take(size))
        return memory;
    if (void *memory = map(size))
        return memory;
    kept_memory().let_go();
    if (void *memory = map(size))
        return memory;
    throw std::bad_alloc();
}

void give_large_memory(void *memory, std::size_t bytes) noexcept
{
    kept_memory().keep(memory, rounded(bytes));
}

} // namespace orvane
