// What this machine can do, as simply as it can be asked for: limits FILE THREADS. FILE is a large one that
// is in the page cache. Prints a line of JSON a figure, each the best of five:
//
// read     bytes a second from the page cache, in blocks that stay in the second-level cache
// scan     bytes a second from memory, added up
// decode   times of 17 characters a second into numbers, from memory that is in the cache
// radix    keys of 46 bits with their rows a second, put in order
// probe    look-ups a second in a table of ten million entries, in no order
// scatter  entries a second put in no order into such a table
//
// And steps of operations, each on rows of the widths that the operation reads and writes:
//
// pick     rows a second whose code is asked for: codes of 4 bytes read, the rows of one of 500 codes written
// sift     rows a second of which two numbers of 8 bytes are in a range and above a limit; one in 15 is
// written spread   rows a second put in place by their codes, of which there are 500: counted, then written
// mark     keys of 8 bytes a second put into a set of bits, in no order
// lack     rows a second whose key of 8 bytes is looked for in such a set, in no order; one in 10 is written
// meet     rows a second joined by a code of 4 bytes and a number of 8 bytes within one of up to three
//          ranges of that code; both rows of each pair are written, for seven in ten

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

// As ORVANE_WIDE_VECTORS of the engine.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define WIDE_VECTORS __attribute__((target_clones("avx2", "default")))
#else
#define WIDE_VECTORS
#endif

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

// Puts keys with their rows in order of some bits, from one place to another.
void radix_pass(const uint64_t *from, const uint32_t *from_rows, size_t count, int shift, int bits,
                uint64_t *to, uint32_t *to_rows)
{
    uint32_t places[1 << 10] = {};
    const uint64_t mask = (uint64_t{1} << bits) - 1;
    for (size_t i = 0; i < count; ++i)
        ++places[from[i] >> shift & mask];
    uint32_t place = 0;
    for (uint64_t bucket = 0; bucket <= mask; ++bucket)
        place += std::exchange(places[bucket], place);
    for (size_t i = 0; i < count; ++i) {
        const uint32_t at = places[from[i] >> shift & mask]++;
        to[at] = from[i];
        to_rows[at] = from_rows[i];
    }
}

void measure_radix(unsigned threads)
{
    // Each thread sorts a part of its own: first by the highest bits, then what has these in common, in the
    // second-level cache.
    Array<uint64_t> source(entries), keys(entries);
    Array<uint32_t> source_rows(entries), rows(entries);
    uint64_t state = 88172645463325252u;
    for (size_t i = 0; i < entries; ++i) {
        source[i] = next(state) >> 18;
        source_rows[i] = static_cast<uint32_t>(i);
    }
    measure("radix", threads, static_cast<double>(entries), [&](unsigned thread) {
        const size_t begin = entries / threads * thread;
        const size_t count = entries / threads;
        constexpr int low_bits = 36, pass_bits = 9;
        radix_pass(source.data() + begin, source_rows.data() + begin, count, low_bits, 10,
                   keys.data() + begin, rows.data() + begin);
        std::vector<uint64_t> other;
        std::vector<uint32_t> other_rows;
        for (size_t first = begin, end; first < begin + count; first = end) {
            for (end = first; end < begin + count && keys[end] >> low_bits == keys[first] >> low_bits;)
                ++end;
            if (other.size() < end - first) {
                other.resize(end - first);
                other_rows.resize(end - first);
            }
            uint64_t *from = keys.data() + first, *to = other.data();
            uint32_t *from_rows = rows.data() + first, *to_rows = other_rows.data();
            for (int shift = 0; shift < low_bits;
                 shift += pass_bits) { // four of them: in the end it is in place
                radix_pass(from, from_rows, end - first, shift, pass_bits, to, to_rows);
                std::swap(from, to);
                std::swap(from_rows, to_rows);
            }
        }
        sink = keys[begin + count / 2];
    });
}

// ---- Steps of operations ---------------------------------------------------------------------------

constexpr size_t codes_count = 500;
constexpr size_t at_once = 2048; // rows, whose numbers stay in the nearest cache

// Writes the positions of bytes that are 1.
size_t positions_of(const uint8_t *mask, size_t count, uint32_t first, uint32_t *out)
{
    size_t found = 0;
    for (size_t at = 0; at < count; at += 8) {
        uint64_t bytes;
        std::memcpy(&bytes, mask + at, 8);
        if (bytes == 0)
            continue;
        for (size_t i = at; i < at + 8; ++i) {
            out[found] = first + static_cast<uint32_t>(i);
            found += mask[i];
        }
    }
    return found;
}

WIDE_VECTORS void mask_equal(const uint32_t *codes, size_t count, uint32_t code, uint8_t *mask)
{
    for (size_t i = 0; i < count; ++i)
        mask[i] = codes[i] == code ? 1 : 0;
}

WIDE_VECTORS void mask_within(const double *a, const double *b, size_t count, uint8_t *mask)
{
    for (size_t i = 0; i < count; ++i)
        mask[i] = static_cast<uint8_t>((a[i] >= 0.3 ? 1 : 0) & (a[i] < 0.5 ? 1 : 0) & (b[i] > 0.67 ? 1 : 0));
}

// Calls `body` with the rows of a thread, some at a time.
template <typename Body>
void for_rows(unsigned thread, unsigned threads, Body body)
{
    const size_t part = entries / threads / at_once * at_once;
    const size_t end = thread + 1 == threads ? entries / at_once * at_once : part * (thread + 1);
    for (size_t at = part * thread; at < end; at += at_once)
        body(at);
}

void measure_subsets(unsigned threads, Array<uint32_t> &codes)
{
    Array<uint32_t> out(entries + at_once);
    measure("pick", threads, static_cast<double>(entries), [&](unsigned thread) {
        uint8_t mask[at_once];
        size_t place = entries / threads * thread;
        for_rows(thread, threads, [&](size_t at) {
            mask_equal(codes.data() + at, at_once, 7, mask);
            place += positions_of(mask, at_once, static_cast<uint32_t>(at), out.data() + place);
        });
        sink = place;
    });
    Array<double> a(entries), b(entries);
    uint64_t state = 88172645463325252u;
    for (size_t i = 0; i < entries; ++i) {
        a[i] = static_cast<double>(next(state) >> 11) / 9007199254740992.0;
        b[i] = static_cast<double>(next(state) >> 11) / 9007199254740992.0;
    }
    measure("sift", threads, static_cast<double>(entries), [&](unsigned thread) {
        uint8_t mask[at_once];
        size_t place = entries / threads * thread;
        for_rows(thread, threads, [&](size_t at) {
            mask_within(a.data() + at, b.data() + at, at_once, mask);
            place += positions_of(mask, at_once, static_cast<uint32_t>(at), out.data() + place);
        });
        sink = place;
    });
}

void measure_spread(unsigned threads, Array<uint32_t> &codes)
{
    Array<uint32_t> out(entries);
    const size_t part = entries / threads;
    measure("spread", threads, static_cast<double>(entries), [&](unsigned thread) {
        // In a half of the places of its own: that writes as much as if all threads had counted first.
        std::vector<uint32_t> counts(codes_count);
        for (size_t i = part * thread; i < part * (thread + 1); ++i)
            ++counts[codes[i]];
        uint32_t place = static_cast<uint32_t>(part * thread);
        for (size_t code = 0; code < codes_count; ++code)
            place += std::exchange(counts[code], place);
        for (size_t i = part * thread; i < part * (thread + 1); ++i)
            out[counts[codes[i]]++] = static_cast<uint32_t>(i);
        sink = out[part * thread];
    });
}

void measure_sets(unsigned threads, Array<uint32_t> &places)
{
    Array<int64_t> keys(entries);
    for (size_t i = 0; i < entries; ++i)
        keys[i] = places[i] + int64_t{1};
    std::vector<std::vector<uint64_t>> sets(threads, std::vector<uint64_t>(entries / 64 + 1));
    const size_t part = entries / threads;
    measure("mark", threads, static_cast<double>(entries), [&](unsigned thread) {
        std::vector<uint64_t> &bits = sets[thread];
        for (size_t i = part * thread; i < part * (thread + 1); ++i) {
            const auto id = static_cast<uint64_t>(keys[i] - 1);
            bits[id / 64] |= uint64_t{1} << (id % 64);
        }
    });
    // One in ten is to be missing.
    uint64_t state = 88172645463325252u;
    std::vector<uint64_t> &bits = sets.front();
    std::fill(bits.begin(), bits.end(), ~uint64_t{0});
    for (size_t i = 0; i < entries / 10; ++i) {
        const uint64_t id = next(state) % entries;
        bits[id / 64] &= ~(uint64_t{1} << (id % 64));
    }
    Array<uint32_t> out(entries + 1);
    measure("lack", threads, static_cast<double>(entries), [&](unsigned thread) {
        size_t place = part * thread;
        for (size_t i = part * thread; i < part * (thread + 1); ++i) {
            const auto id = static_cast<uint64_t>(keys[i] - 1);
            out[place] = static_cast<uint32_t>(i);
            place += ~(bits[id / 64] >> (id % 64)) & 1;
        }
        sink = place;
    });
}

void measure_meet(unsigned threads, Array<uint32_t> &codes)
{
    constexpr size_t room = 3;
    struct Range {
        int64_t low = 1;
        int64_t high = 0;
    };
    std::vector<Range> ranges(codes_count * room);
    std::vector<uint32_t> rows(codes_count * room);
    uint64_t state = 88172645463325252u;
    for (size_t code = 0; code < codes_count; ++code)
        for (size_t i = 0; i < 1 + code % room; ++i) {
            const auto low = static_cast<int64_t>(next(state) % 1000);
            ranges[code * room + i] = {low, low + 350};
            rows[code * room + i] = static_cast<uint32_t>(code * room + i);
        }
    Array<int64_t> numbers(entries);
    for (size_t i = 0; i < entries; ++i)
        numbers[i] = static_cast<int64_t>(next(state) % 1000);
    const size_t part = entries / threads;
    Array<uint32_t> left(entries * 2), right(entries * 2);
    measure("meet", threads, static_cast<double>(entries), [&](unsigned thread) {
        size_t place = 2 * part * thread;
        for (size_t i = part * thread; i < part * (thread + 1); ++i) {
            const int64_t number = numbers[i];
            const size_t bucket = codes[i] * room;
            for (size_t k = bucket; k < bucket + room; ++k) {
                left[place] = static_cast<uint32_t>(i);
                right[place] = rows[k];
                place += static_cast<size_t>((ranges[k].low <= number ? 1 : 0) &
                                             (number <= ranges[k].high ? 1 : 0));
            }
        }
        sink = place;
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
    measure_sets(threads, places);
    Array<uint32_t> codes(entries);
    for (size_t i = 0; i < entries; ++i)
        codes[i] = static_cast<uint32_t>(next(state) % codes_count);
    measure_subsets(threads, codes);
    measure_spread(threads, codes);
    measure_meet(threads, codes);
    close(file);
}
