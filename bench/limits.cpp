// What this machine can do, as simply as it can be asked for: limits FILE THREADS. FILE is a large one that
// is in the page cache. Prints a line of JSON a figure, each the best of five:
//
// read     bytes a second from the page cache, in blocks that stay in the second-level cache
// scan     bytes a second from memory, added up
// decode   times of 17 characters a second into numbers, from memory that is in the cache
// radix    keys of 46 bits with their rows a second, put in order
// probe    look-ups a second in a table of ten million entries, in no order
// scatter  entries a second put in no order into such a table

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr size_t entries = 10'000'000;

// Large arrays in huge pages, cleared beforehand.
template <typename T>
class Array
{
public:
    explicit Array(size_t count) : m_bytes((count * sizeof(T) / page + 1) * page)
    {
        m_data = static_cast<T *>(std::aligned_alloc(page, m_bytes));
        madvise(m_data, m_bytes, MADV_HUGEPAGE);
        std::memset(static_cast<void *>(m_data), 0, m_bytes);
    }
    ~Array() { std::free(m_data); }
    Array(const Array &) = delete;
    Array &operator=(const Array &) = delete;
    T &operator[](size_t at) { return m_data[at]; }
    T *data() { return m_data; }

private:
    static constexpr size_t page = 2 << 20;
    size_t m_bytes;
    T *m_data;
};

volatile uint64_t sink;

// Runs the body once in each thread, five times; prints how much of `what` all did a second.
void measure(const char *name, unsigned threads, double what,
             const std::function<void(unsigned thread)> &body)
{
    double best = 0;
    for (int run = 0; run < 5; ++run) {
        const auto start = std::chrono::steady_clock::now();
        std::vector<std::thread> helpers;
        for (unsigned thread = 1; thread < threads; ++thread)
            helpers.emplace_back(body, thread);
        body(0);
        for (std::thread &helper : helpers)
            helper.join();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        best = std::max(best, what / taken.count());
    }
    std::printf("{\"limit\": \"%s\", \"threads\": %u, \"per_second\": %.0f}\n", name, threads, best);
    std::fflush(stdout);
}

uint64_t next(uint64_t &state)
{
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
}

uint64_t eight_digits(const char *at)
{
    uint64_t text;
    std::memcpy(&text, at, 8);
    text &= 0x0f0f0f0f0f0f0f0fu;
    text = text * 10 + (text >> 8);
    constexpr uint64_t pairs = 0x000000ff000000ffu;
    return ((text & pairs) * (100 + (uint64_t{1000000} << 32)) +
            ((text >> 16) & pairs) * (1 + (uint64_t{10000} << 32))) >>
           32;
}

void measure_radix(unsigned threads)
{
    // Each thread sorts a part of its own; parts that are one would take a pass more.
    Array<uint64_t> source(entries), keys(entries), other(entries);
    Array<uint32_t> rows(entries), other_rows(entries);
    uint64_t state = 88172645463325252u;
    for (size_t i = 0; i < entries; ++i)
        source[i] = next(state) >> 18;
    measure("radix", threads, static_cast<double>(entries), [&](unsigned thread) {
        const size_t begin = entries / threads * thread;
        const size_t count = entries / threads;
        uint64_t *from = keys.data() + begin, *to = other.data() + begin;
        uint32_t *from_rows = rows.data() + begin, *to_rows = other_rows.data() + begin;
        for (size_t i = 0; i < count; ++i) {
            from[i] = source[begin + i];
            from_rows[i] = static_cast<uint32_t>(begin + i);
        }
        constexpr int bits = 10; // five passes
        constexpr size_t buckets = 1 << bits;
        for (int shift = 0; shift < 46; shift += bits) {
            std::vector<uint32_t> places(buckets);
            for (size_t i = 0; i < count; ++i)
                ++places[(from[i] >> shift) & (buckets - 1)];
            uint32_t place = 0;
            for (uint32_t &count_here : places)
                place += std::exchange(count_here, place);
            for (size_t i = 0; i < count; ++i) {
                const uint32_t at = places[(from[i] >> shift) & (buckets - 1)]++;
                to[at] = from[i];
                to_rows[at] = from_rows[i];
            }
            std::swap(from, to);
            std::swap(from_rows, to_rows);
        }
        sink = from[count / 2];
    });
}

} // namespace

int main(int argc, char **argv)
{
    const int file = argc > 1 ? open(argv[1], O_RDONLY) : -1;
    if (file < 0) {
        std::fprintf(stderr, "usage: limits FILE [THREADS]\n");
        return 2;
    }
    const unsigned threads = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 2;
    const auto size = std::min<int64_t>(lseek(file, 0, SEEK_END), int64_t{4} << 30);

    measure("read", threads, static_cast<double>(size), [&](unsigned thread) {
        constexpr int64_t block = 256 << 10;
        std::vector<char> buffer(block);
        for (int64_t at = thread * block; at < size; at += threads * block)
            if (pread(file, buffer.data(), block, at) <= 0)
                break;
        sink = static_cast<uint64_t>(buffer[0]);
    });
    {
        Array<uint64_t> values(entries * 4);
        measure("scan", threads, static_cast<double>(entries) * 4 * 8, [&](unsigned thread) {
            const size_t part = entries * 4 / threads;
            uint64_t sum = 0;
            for (size_t i = part * thread; i < part * (thread + 1); ++i)
                sum += values[i];
            sink = sum;
        });
    }
    {
        std::string text;
        for (int i = 0; i < 2000; ++i)
            text += " 1234567890.12345 ";
        measure("decode", threads, 2000.0 * 2000 * threads, [&](unsigned) {
            double sum = 0;
            for (int run = 0; run < 2000; ++run)
                for (int i = 0; i < 2000; ++i) {
                    const char *at = text.data() + i * 18 + 1;
                    const uint64_t whole = eight_digits(at) * 100 + static_cast<uint64_t>(at[8] - '0') * 10 +
                                           static_cast<uint64_t>(at[9] - '0');
                    const uint64_t decimals = eight_digits(at + 8) % 100000;
                    sum += static_cast<double>(whole * 100000 + decimals) / 100000;
                }
            sink = static_cast<uint64_t>(sum);
        });
    }
    measure_radix(threads);
    Array<uint32_t> table(entries), places(entries);
    uint64_t state = 88172645463325252u;
    for (size_t i = 0; i < entries; ++i)
        places[i] = static_cast<uint32_t>(next(state) % entries);
    const size_t part = entries / threads;
    measure("probe", threads, static_cast<double>(entries), [&](unsigned thread) {
        uint64_t sum = 0;
        for (size_t i = part * thread; i < part * (thread + 1); ++i)
            sum += table[places[i]];
        sink = sum;
    });
    measure("scatter", threads, static_cast<double>(entries), [&](unsigned thread) {
        for (size_t i = part * thread; i < part * (thread + 1); ++i)
            table[places[i]] = static_cast<uint32_t>(i);
        sink = table[0];
    });
    close(file);
}
