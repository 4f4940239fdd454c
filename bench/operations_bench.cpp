// What operations on a generated catalogue cost, through the C interface:
//
//   operations_bench DATABASE [--first [--unchecked] | --progress] [--runs N] [--out FOLDER] [OPERATION...]
//
// Each operation is run once to decode its columns and then N times; with --first just once, so that a
// process that does one operation tells what the first one costs. Every run prints a line of JSON: wall and
// processor time, the process's memory at its highest, and a checksum of the answer that the same rows have
// in other engines (--unchecked goes without it, as it can take longer than the operation).
//
// With --progress an operation is run with a progress hook, and again with one that says stop: at its first
// call, at its second and so on. The line of JSON has the longest time without a call, and the longest that
// the operation took to return once it was told.

#include "memory_use.h"
#include "table_layout.h"
#include "view_rows.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstring>
#include <filesystem>
#include <functional>
#include <random>
#include <sys/resource.h>

namespace {

using bench::Answer;
using bench::answer_to;
using bench::fail;

using TextList = std::unique_ptr<Tbl, void (*)(Tbl *)>;

TextList list_of(std::initializer_list<const char *> texts)
{
    TextList list(newtbl(0), [](Tbl *tbl) { freetbl(tbl, nullptr); });
    for (const char *text : texts)
        pushtbl(list.get(), const_cast<char *>(text));
    return list;
}

// A progress hook that remembers when it was called, and stops what calls it for the n-th time.
class Watch
{
public:
    static constexpr int never = 0;

    explicit Watch(int stop_at) : m_stop_at(stop_at), m_last(Clock::now())
    {
        dbset_progress_hook(&Watch::called, this);
    }
    ~Watch() { dbset_progress_hook(nullptr, nullptr); }
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    void end() { note(); }
    int calls() const { return m_calls; }
    bool stopped() const { return m_stop_at != never && m_calls >= m_stop_at; }
    double longest_ms() const { return m_longest; }
    // From the last call, which may have been the answer that stops.
    double since_last_ms() const { return m_since_last; }

private:
    using Clock = std::chrono::steady_clock;

    void note()
    {
        const auto now = Clock::now();
        m_since_last = std::chrono::duration<double, std::milli>(now - m_last).count();
        m_longest = std::max(m_longest, m_since_last);
        m_last = now;
    }
    static int called(double, void *data)
    {
        auto &watch = *static_cast<Watch *>(data);
        watch.note();
        ++watch.m_calls;
        return watch.stopped() ? 1 : 0;
    }

    const int m_stop_at;
    int m_calls = 0;
    double m_longest = 0;
    double m_since_last = 0;
    Clock::time_point m_last;
};

// An operation that was told to stop did.
struct Stopped {
};

class Bench
{
public:
    Bench(const char *path, std::string out, bool checked)
        : m_path(path), m_out(std::move(out)), m_checked(checked)
    {
        open();
    }

    struct Operation {
        const char *name;
        std::function<Dbptr(Bench &)> run;             // what is measured; it may make a view
        std::function<Answer(Bench &, Dbptr)> answer;  // of that
        std::function<void(Bench &)> before = nullptr; // not measured
    };
    static const std::vector<Operation> &operations();

    void measure(const Operation &operation, bool first, int run)
    {
        if (operation.before)
            operation.before(*this);
        const double cpu_before = processor_seconds();
        const auto start = std::chrono::steady_clock::now();
        const Dbptr made = operation.run(*this);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        const double cpu = processor_seconds() - cpu_before;
        const long peak = peakKibibytes();
        if (run <= 0 && m_checked)
            m_answer = operation.answer(*this, made);
        free_views();
        if (run < 0)
            return;
        std::printf("{\"engine\": \"orvane\", \"operation\": \"%s\", \"mode\": \"%s\", \"rows\": %" PRId64
                    ", \"ms\": %.3f, \"cpu_ms\": %.3f, \"peak_mb\": %ld",
                    operation.name, first ? "first" : "again", m_arrivals, 1e3 * taken.count(), 1e3 * cpu,
                    peak / 1024);
        if (m_checked)
            std::printf(", \"count\": %" PRId64 ", \"checksum\": %" PRId64, m_answer.count,
                        m_answer.checksum);
        std::printf("}\n");
        std::fflush(stdout);
    }

    // How long it goes without asking the hook, and how long it goes on once it was told to stop.
    void watch(const Operation &operation)
    {
        int calls = 0;
        double longest_ms = 0;
        double longest_stop_ms = 0;
        for (int stop_at = Watch::never; stop_at <= calls; ++stop_at) {
            if (operation.before)
                operation.before(*this);
            Watch watch(stop_at);
            m_watch = &watch;
            try {
                operation.run(*this);
            } catch (const Stopped &) {
            }
            watch.end();
            m_watch = nullptr;
            if (stop_at == Watch::never)
                calls = std::min(watch.calls(), most_stops);
            longest_ms = std::max(longest_ms, watch.longest_ms());
            if (watch.stopped())
                longest_stop_ms = std::max(longest_stop_ms, watch.since_last_ms());
            free_views();
            forget_columns();
        }
        std::printf(
            "{\"engine\": \"orvane\", \"operation\": \"%s\", \"mode\": \"progress\", \"rows\": %" PRId64
            ", \"ms\": %.3f, \"stop_ms\": %.3f, \"calls\": %d}\n",
            operation.name, m_arrivals, longest_ms, longest_stop_ms, calls);
        std::fflush(stdout);
    }

private:
    static constexpr int most_stops = 10;

    void free_views()
    {
        for (const Dbptr view : m_views)
            dbfree(view);
        m_views.clear();
    }
    // So that the next run decodes them again.
    void forget_columns()
    {
        OVdbclose(m_db);
        open();
    }

    void require(bool done, const char *failure) const
    {
        if (!done && m_watch && m_watch->stopped())
            throw Stopped();
        if (!done)
            fail(failure);
    }

    static double processor_seconds()
    {
        struct rusage use = {};
        getrusage(RUSAGE_SELF, &use);
        const auto seconds = [](timeval time) {
            return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
        };
        return seconds(use.ru_utime) + seconds(use.ru_stime);
    }

    void open()
    {
        if (dbopen_database(m_path.c_str(), "r", &m_db) < 0)
            fail("cannot open " + m_path);
        m_arrivals = answer_to<int64_t>(table("arrival"), dbRECORD_COUNT);
    }
    Dbptr table(const char *name) const { return dblookup(m_db, nullptr, name, nullptr, nullptr); }

    // A view that is freed after the run.
    Dbptr keep(Dbptr view)
    {
        require(view.table >= 0, "an operation failed");
        m_views.insert(m_views.begin(), view);
        return view;
    }
    Dbptr join(Dbptr left, const char *right)
    {
        return keep(dbjoin(left, table(right), nullptr, nullptr, 0, nullptr, nullptr));
    }
    Dbptr subset(const char *expression) { return keep(dbsubset(table("arrival"), expression, nullptr)); }
    Dbptr sort(std::initializer_list<const char *> fields)
    {
        return keep(dbsort(table("arrival"), list_of(fields).get(), 0, nullptr));
    }

    Dbptr find_last();
    Dbptr export_csv(const char *from, const std::string &to) const;
    static Answer csv_answer(const std::string &path);
    void forget_unjoined() const;
    Answer unjoined_answer() const;
    Dbptr scroll() const;

    std::string csv_path() const { return m_out + "/exported.csv"; }
    std::string unjoined_path() const { return m_out + "/unjoined"; }

    const std::string m_path;
    const std::string m_out;
    const bool m_checked;
    Dbptr m_db;
    int64_t m_arrivals = 0;
    std::vector<Dbptr> m_views;
    std::string m_condition;
    int64_t m_found = -1;
    Answer m_answer;
    const Watch *m_watch = nullptr;
};

// ---- Operations that make no view ----------------------------------------------------------------

Dbptr Bench::find_last()
{
    m_found = dbfind(table("arrival"), m_condition.c_str(), 0, nullptr);
    require(m_found >= 0, "cannot find");
    return dbinvalid();
}

Dbptr Bench::export_csv(const char *from, const std::string &to) const
{
    std::FILE *file = std::fopen(to.c_str(), "w");
    if (file == nullptr)
        fail("cannot write " + to);
    const bool written = dbselect_hdr(table(from), nullptr, file, ",", 1) >= 0 &&
                         dbselect(table(from), nullptr, file, ",", 1) >= 0;
    require(std::fclose(file) == 0 && written, "cannot export");
    return dbinvalid();
}

// The lines below the header, and the sum of what stands third in them.
Answer Bench::csv_answer(const std::string &path)
{
    Answer answer;
    std::FILE *file = std::fopen(path.c_str(), "r");
    if (file == nullptr)
        fail("cannot read " + path);
    char line[4096];
    for (bool header = true; std::fgets(line, sizeof line, file); header = false) {
        const char *third = std::strchr(line, ',');
        third = third ? std::strchr(third + 1, ',') : nullptr;
        if (header || !third)
            continue;
        ++answer.count;
        answer.checksum += std::atoll(third + 1);
    }
    std::fclose(file);
    return answer;
}

void Bench::forget_unjoined() const
{
    for (const char *ending : {"", ".arrival", ".assoc", ".origin"})
        std::filesystem::remove(unjoined_path() + ending);
    std::filesystem::remove(m_out + "/css3.0.yaml");
}

// The records written, and arrivals × 1 + assocs × 2 + origins × 3.
Answer Bench::unjoined_answer() const
{
    Answer answer;
    int64_t weight = 1;
    for (const char *name : {"arrival", "assoc", "origin"}) {
        const auto size = static_cast<int64_t>(std::filesystem::file_size(unjoined_path() + "." + name));
        const int64_t records = size / answer_to<int64_t>(table(name), dbRECORD_SIZE);
        answer.count += records;
        answer.checksum += weight++ * records;
    }
    return answer;
}

// A thousand pages of 48 rows and 24 fields, anywhere in the table.
Dbptr Bench::scroll() const
{
    std::mt19937_64 random(1);
    Dbptr at = table("arrival");
    char text[256];
    for (int page = 0; page < 1000; ++page) {
        const auto first = static_cast<int64_t>(random() % static_cast<uint64_t>(m_arrivals - 48));
        for (int64_t row = 0; row < 48; ++row)
            for (int64_t field = 0; field < 24; ++field) {
                at.record = first + row;
                at.field = field;
                if (dbget(at, text, sizeof text) < 0)
                    fail("cannot read a cell");
            }
    }
    return dbinvalid();
}

// ---- All of them ---------------------------------------------------------------------------------

const std::vector<Bench::Operation> &Bench::operations()
{
    const auto ordered = [](Bench &, Dbptr view) { return bench::ordered_answer(view); };
    const auto unordered = [](Bench &, Dbptr view) { return bench::unordered_answer(view); };
    static const std::vector<Operation> all = {
        {"open",
         [](Bench &bench) {
             OVdbclose(bench.m_db);
             bench.open();
             return dbinvalid();
         },
         [](Bench &bench, Dbptr) {
             return Answer{bench.m_arrivals, 0};
         }},
        {"scroll", [](Bench &bench) { return bench.scroll(); },
         [](Bench &, Dbptr) {
             return Answer{1000, 0};
         }},
        {"subset_station", [](Bench &bench) { return bench.subset("sta == 'GPDB'"); }, ordered},
        {"subset_range",
         [](Bench &bench) { return bench.subset("time >= 1000000000 && time < 1150000000 && snr > 10"); },
         ordered},
        {"sort_time", [](Bench &bench) { return bench.sort({"time"}); }, ordered},
        {"sort_sta_time",
         [](Bench &bench) {
             return bench.sort({"sta", "time"});
         },
         ordered},
        {"join",
         [](Bench &bench) { return bench.join(bench.join(bench.table("arrival"), "assoc"), "origin"); },
         unordered},
        {"group_sta",
         [](Bench &bench) {
             return bench.keep(dbgroup(bench.table("arrival"), list_of({"sta"}).get(), nullptr, 1));
         },
         [](Bench &, Dbptr view) { return bench::bundles_answer(view); }},
        {"nojoin",
         [](Bench &bench) {
             return bench.keep(
                 dbnojoin(bench.table("arrival"), bench.table("assoc"), nullptr, nullptr, nullptr));
         },
         unordered},
        {"interval_join", [](Bench &bench) { return bench.join(bench.table("arrival"), "site"); }, unordered},
        {"theta_join",
         [](Bench &bench) {
             return bench.keep(dbtheta(bench.table("arrival"), bench.table("site"),
                                       "arrival.sta == site.sta && arrival.jdate >= site.ondate && "
                                       "arrival.jdate < site.offdate",
                                       nullptr));
         },
         unordered},
        {"find_last", [](Bench &bench) { return bench.find_last(); },
         [](Bench &bench, Dbptr) {
             return Answer{1, bench.m_found};
         },
         [](Bench &bench) {
             Dbptr last = bench.table("arrival");
             last.record = bench.m_arrivals - 1;
             DbValue value;
             if (dbgetv(last, "time", &value) < 0)
                 fail("cannot read the last arrival");
             char text[64];
             std::snprintf(text, sizeof text, "time == %.5f", value.real);
             bench.m_condition = text;
         }},
        {"export_csv", [](Bench &bench) { return bench.export_csv("arrival", bench.csv_path()); },
         [](Bench &bench, Dbptr) { return csv_answer(bench.csv_path()); },
         [](Bench &bench) { std::filesystem::remove(bench.csv_path()); }},
        {"unjoin",
         [](Bench &bench) {
             const Dbptr joined = bench.join(bench.join(bench.subset("sta == 'GPDB'"), "assoc"), "origin");
             bench.require(dbunjoin(joined, bench.unjoined_path().c_str(), 0) >= 0, "cannot unjoin");
             return dbinvalid();
         },
         [](Bench &bench, Dbptr) { return bench.unjoined_answer(); },
         [](Bench &bench) { bench.forget_unjoined(); }},
        // Not measured by default: the files that the others read.
        {"csv_files",
         [](Bench &bench) {
             for (const char *name : {"arrival", "assoc", "origin", "site"})
                 bench.export_csv(name, bench.m_out + "/" + name + ".csv");
             return dbinvalid();
         },
         [](Bench &, Dbptr) { return Answer{}; }},
    };
    return all;
}

} // namespace

int main(int argc, char **argv)
{
    bool first = false;
    bool progress = false;
    bool checked = true;
    int runs = 5;
    const char *path = nullptr;
    std::string out = std::filesystem::temp_directory_path().string();
    std::vector<std::string> wanted;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--first")
            first = true;
        else if (argument == "--progress")
            progress = true;
        else if (argument == "--unchecked")
            checked = false;
        else if (argument == "--runs" && i + 1 < argc)
            runs = std::atoi(argv[++i]);
        else if (argument == "--out" && i + 1 < argc)
            out = argv[++i];
        else if (!path)
            path = argv[i];
        else
            wanted.push_back(argument);
    }
    if (!path) {
        std::fprintf(
            stderr,
            "usage: operations_bench DATABASE [--first [--unchecked] | --progress] [--runs N] [--out FOLDER] "
            "[OPERATION...]\n");
        return 2;
    }
    Bench bench(path, out, checked);
    for (const Bench::Operation &operation : Bench::operations()) {
        const std::string name = operation.name;
        if (wanted.empty() ? name == "csv_files"
                           : std::find(wanted.begin(), wanted.end(), name) == wanted.end())
            continue;
        if (progress) {
            bench.watch(operation);
            continue;
        }
        if (first) {
            bench.measure(operation, true, 0);
            continue;
        }
        for (int run = -1; run < runs; ++run)
            bench.measure(operation, false, run);
    }
}
