// A program that changes or reads the table `event` of a database beside others, for tests that kill it or
// run many of it:
//
//     editing_worker change PATH FIRST_ID SEED    changes for ever; says each change before and after it
//     editing_worker write PATH FIRST_ID ADDS     adds records, changes and marks some, crunches now and then
//     editing_worker read PATH SEED               checks all it can see until its input ends
//
// A record of id N has the author "wN" or "xN", so that half a record shows.
#include <orvane/db.h>
#include <orvane/util.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <poll.h>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

[[noreturn]] void give_up(const std::string &what)
{
    char *log = elog_string(0);
    std::fprintf(stderr, "editing_worker: %s: %s\n", what.c_str(), log ? log : "");
    free(log);
    std::exit(3);
}

void say(const std::string &line)
{
    const std::string text = line + "\n";
    if (::write(1, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
        std::exit(4);
}

class Events
{
public:
    Events(const char *path, const char *permissions)
    {
        if (dbopen_database(path, permissions, &database_) < 0)
            give_up("open");
        table_ = dblookup(database_, "", "event", "", "");
    }
    ~Events() { OVdbclose(database_); }

    Dbptr table() const { return table_; }
    Dbptr at(int64_t number) const
    {
        Dbptr db = table_;
        db.record = number;
        return db;
    }
    int64_t count() const
    {
        int64_t number = 0;
        if (dbquery(table_, dbRECORD_COUNT, &number) < 0)
            give_up("count");
        return number;
    }

    int put(Dbptr record, const char *field, const std::string &text) const
    {
        DbValue value{};
        value.type = dbSTRING;
        value.text = const_cast<char *>(text.c_str());
        return dbputv(record, field, &value);
    }
    int64_t add(int64_t id, int64_t number, bool checked = false) const
    {
        const Dbptr scratch = at(dbSCRATCH);
        if (put(scratch, "evid", std::to_string(id)) < 0 ||
            put(scratch, "prefor", std::to_string(number)) < 0 ||
            put(scratch, "auth", "w" + std::to_string(id)) < 0)
            give_up("scratch");
        return checked ? dbaddchk(table_, nullptr) : dbadd(table_, nullptr);
    }
    // 0: the record is not there (any more).
    int64_t id(Dbptr record) const
    {
        DbValue value{};
        return dbgetv(record, "evid", &value) < 0 ? 0 : value.integer;
    }

private:
    Dbptr database_ = dbinvalid();
    Dbptr table_ = dbinvalid();
};

// ---- One that is killed --------------------------------------------------------------------------

std::map<int64_t, int64_t> numbers_of(const Events &events)
{
    std::map<int64_t, int64_t> numbers;
    const int64_t count = events.count();
    for (int64_t number = 0; number < count; ++number)
        if (const int64_t id = events.id(events.at(number)); id > 0)
            numbers[id] = number;
    return numbers;
}

int change(const char *path, int64_t next_id, unsigned seed)
{
    const Events events(path, "r+");
    std::mt19937 random(seed);
    auto numbers = numbers_of(events);
    say("ready");
    for (;;) {
        const unsigned dice = random() % 100;
        const auto value = static_cast<int64_t>(random() % 9999999 + 1);
        const std::string text = std::to_string(value);
        auto chosen = numbers.begin();
        if (!numbers.empty())
            std::advance(chosen, static_cast<std::ptrdiff_t>(random() % numbers.size()));
        if (numbers.size() < 50 || (dice < 35 && numbers.size() < 200)) {
            const int64_t id = next_id++;
            say("+ " + std::to_string(id) + " " + text);
            numbers[id] = events.add(id, value, dice % 2 == 0);
            if (numbers[id] < 0)
                give_up("add");
        } else if (dice < 75) {
            say("= " + std::to_string(chosen->first) + " " + text);
            if (events.put(events.at(chosen->second), "prefor", text) < 0)
                give_up("put");
        } else if (dice < 85) { // all at once
            say("* 0 " + text);
            std::vector<DbRows> rows;
            for (const auto &[id, number] : numbers)
                rows.push_back({number, number + 1});
            DbValue put{};
            put.type = dbINTEGER;
            put.integer = value;
            if (dbputv_rows(events.table(), "prefor", &put, rows.data(), rows.size(), nullptr) < 0)
                give_up("put_rows");
        } else if (dice < 94) {
            say("- " + std::to_string(chosen->first) + " 0");
            if (dbmark(events.at(chosen->second)) < 0)
                give_up("mark");
            numbers.erase(chosen);
        } else {
            say("c 0 0");
            if (dbcrunch(events.table()) < 0)
                give_up("crunch");
            numbers = numbers_of(events);
        }
        say("done");
    }
}

// ---- Many at a time ------------------------------------------------------------------------------

// Does something with the record of an id, found anew when another program crunched the table in between.
template <typename Act>
void with_record(const Events &events, int64_t id, int64_t number, const char *what, Act act)
{
    for (int attempt = 0;; ++attempt) {
        const int code = number >= 0 ? act(events.at(number)) : static_cast<int>(dbERROR_STALE);
        if (code >= 0)
            return;
        if ((code != dbERROR_STALE && code != dbERROR_NOT_FOUND) || attempt == 10000)
            give_up(what);
        elog_clear();
        number = dbfind(events.table(), ("evid == " + std::to_string(id)).c_str(), 0, nullptr);
        elog_clear(); // it may have changed again and again while it was read
    }
}

int write(const char *path, int64_t first_id, int64_t adds)
{
    const Events events(path, "r+");
    std::mt19937 random(static_cast<unsigned>(first_id));
    for (int64_t i = 0; i < adds; ++i) {
        const int64_t id = first_id + i;
        const int64_t number = events.add(id, id, i % 50 == 7);
        if (number < 0)
            give_up("add");
        if (i % 10 == 3)
            with_record(events, id, number, "mark", [&](Dbptr record) { return dbmark(record); });
        else if (i % 10 == 5)
            with_record(events, id, number, "put",
                        [&](Dbptr record) { return events.put(record, "auth", "x" + std::to_string(id)); });
        if (random() % 400 == 0 && dbcrunch(events.table()) < 0)
            give_up("crunch");
    }
    return 0;
}

std::string trimmed(std::string text)
{
    text.erase(0, text.find_first_not_of(' '));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// The id of a record that is whole, 0 for a marked one.
int64_t checked_id(const std::string &record)
{
    const int64_t id = std::atoll(record.substr(0, 8).c_str());
    const int64_t number = std::atoll(record.substr(9, 8).c_str());
    const std::string author = trimmed(record.substr(18, 15));
    const bool marked = id == -1 && number == -1 && author == "-";
    const std::string digits = std::to_string(id);
    if (!marked && (id <= 0 || number != id || (author != "w" + digits && author != "x" + digits)))
        give_up("a torn record: '" + record + "'");
    return marked ? 0 : id;
}

bool input_ended()
{
    pollfd input{0, POLLIN, 0};
    return ::poll(&input, 1, 0) > 0;
}

int read(const char *path, unsigned seed)
{
    const Events events(path, "r");
    std::mt19937 random(seed);
    char record[256];
    int64_t records = 0;
    int64_t rows = 0;
    while (!input_ended()) {
        const int64_t count = events.count();
        elog_clear();
        for (int i = 0; i < 200 && count > 0; ++i) {
            const auto number = static_cast<int64_t>(random() % static_cast<unsigned>(count));
            if (dbget(events.at(number), record, sizeof record) > 0) {
                checked_id(record);
                ++records;
            }
        }
        elog_clear();
        // The same row of a view is the same record, for as long as it is one.
        const Dbptr view = dbsubset(events.table(), "evid > 0 && evid % 7 == 1", nullptr);
        if (view.table < 0) {
            elog_clear(); // the table changed whenever it was read
            continue;
        }
        int64_t count_of_rows = 0;
        dbquery(view, dbRECORD_COUNT, &count_of_rows);
        std::vector<int64_t> ids(static_cast<size_t>(count_of_rows), -1);
        for (int pass = 0; pass < 2; ++pass)
            for (int64_t row = 0; row < std::min<int64_t>(count_of_rows, 500); ++row) {
                Dbptr at = view;
                at.record = row;
                if (dbget(at, record, sizeof record) <= 0)
                    continue;
                const int64_t id = checked_id(record);
                int64_t &known = ids[static_cast<size_t>(row)];
                if (id != 0 && (id % 7 != 1 || (known != -1 && known != id)))
                    give_up("row " + std::to_string(row) + " of a view shows another record: '" + record +
                            "'");
                known = id != 0 ? id : known;
                ++rows;
            }
        elog_clear();
        dbfree(view);
    }
    say(std::to_string(records) + " " + std::to_string(rows));
    return 0;
}

} // namespace

int main(int count, char **arguments)
{
    elog_set_notice_hook([](const char *, void *) {}, nullptr);
    const std::string mode = count > 3 ? arguments[1] : "";
    if (mode == "change" && count == 5)
        return change(arguments[2], std::atoll(arguments[3]),
                      static_cast<unsigned>(std::atoll(arguments[4])));
    if (mode == "write" && count == 5)
        return write(arguments[2], std::atoll(arguments[3]), std::atoll(arguments[4]));
    if (mode == "read" && count == 4)
        return read(arguments[2], static_cast<unsigned>(std::atoll(arguments[3])));
    std::fprintf(stderr, "usage: see the source\n");
    return 2;
}
