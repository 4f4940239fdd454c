// Saved views: beside a database and through a stream, read, written and read again. As hardly any text has
// the right checksum each is tried with that, too.
#include "check.h"
#include "fuzzers.h"
#include "saving/saved.h"
#include "world.h"

#include "base/checksum.h"

#include <cstdio>
#include <memory>
#include <string>

namespace orvane::fuzz {

namespace {

const std::string path = World::table_path("saved");
constexpr int64_t most_rows = 2000; // of a view that operations are tried with

void write_tables(World &world)
{
    world.files.write(World::table_path("arrival"),
                      record_text("arrival", "AAK|1517980333.125|12|2018038") + "\n" +
                          record_text("arrival", "KIV||13") + "\n" +
                          record_text("arrival", "AAK|1517980334.5|13|2018039") + "\n" +
                          record_text("arrival", "|1517980335.25||2018039") + "\n");
    world.files.write(World::table_path("site"), record_text("site", "AAK|2018001||42.6390") + "\n" +
                                                     record_text("site", "KIV|2018002|2018365|43.9562") +
                                                     "\n");
}

// A stream over a text.
class Reading
{
public:
    explicit Reading(const std::string &text)
        : file_(fmemopen(const_cast<char *>(text.empty() ? " " : text.data()),
                         std::max<std::size_t>(1, text.size()), "r"),
                &std::fclose)
    {
        FUZZ_CHECK(file_ != nullptr, "no stream");
        if (text.empty())
            std::fgetc(file_.get());
    }
    operator std::FILE *() const { return file_.get(); }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE *)> file_;
};

// What a call writes to a stream.
template <typename Call>
std::string written_by(Call call)
{
    char *bytes = nullptr;
    std::size_t size = 0;
    std::FILE *const stream = open_memstream(&bytes, &size);
    FUZZ_CHECK(stream != nullptr, "no stream");
    const int code = call(stream);
    std::fclose(stream);
    const std::string text(bytes, size);
    free(bytes);
    FUZZ_CHECK(code == 0, std::to_string(code) + " " + take_log());
    return text;
}

std::string written(Dbptr view)
{
    return written_by([&](std::FILE *stream) { return dbwrite_view(view, stream); });
}

// The view is one like any other: operations take it, and what they make holds rows of it.
void check_operations(Dbptr view)
{
    const int64_t rows = integer(view, dbRECORD_COUNT);
    const std::string first = list(view, dbTABLE_FIELDS).front();
    const Dbptr all = dbsubset(view, "1", "all");
    FUZZ_CHECK(all.table >= 0, take_log());
    FUZZ_CHECK(described(all, false) == described(view, false), described(all));
    const Dbptr sorted = dbsort(all, Names{first.c_str()}, dbSORT_UNIQUE, "sorted");
    FUZZ_CHECK((sorted.table >= 0) == take_log().empty(), first); // a bundle is nothing to sort by
    if (sorted.table >= 0)
        FUZZ_CHECK(integer(sorted, dbRECORD_COUNT) <= rows, first);
    const Dbptr rows_of_bundles = dbungroup(view, "ungrouped");
    FUZZ_CHECK((rows_of_bundles.table >= 0) == take_log().empty(), first);
    if (rows_of_bundles.table >= 0)
        described(rows_of_bundles);
    written_by([&](std::FILE *stream) { return dbselect(view, nullptr, stream, ",", 1); });
    elog_clear();
    FUZZ_CHECK(dbfree(all) == 0, take_log());
}

// A view that is written comes back as it was.
void check_writing(const Opened &open, Dbptr view)
{
    const std::string before = described(view);
    const std::string text = written(view);
    const Dbptr again = dbread_view(open.pointer, Reading(text), "again");
    FUZZ_CHECK(again.table >= 0, text + "\n" + take_log());
    FUZZ_CHECK(described(again) == before, before + "\n" + described(again));
    FUZZ_CHECK(dbfree(again) == 0, take_log());
    FUZZ_CHECK(dbsave_view(view) == 0, take_log());
    const Opened other(World::descriptor_path);
    const std::string name = ::text(view, dbTABLE_NAME);
    const Dbptr saved = other.table(name.c_str());
    FUZZ_CHECK(saved.table >= 0, take_log());
    FUZZ_CHECK(described(saved) == before, before + "\n" + described(saved));
    const std::string third = written(saved);
    FUZZ_CHECK(third == text, text + "\n" + third);
}

// What the file and the stream answer is the same: a view, or why there is none.
void try_text(const std::string &text)
{
    World world;
    write_tables(world);
    world.files.write(path, text);
    const Opened open(World::descriptor_path, "r+");
    FUZZ_CHECK(take_log().empty(), "a file beside the database is no failure to open that");
    const Dbptr view = open.table("saved");
    std::string why = take_log();
    const bool is_listed = view.table >= 0;
    FUZZ_CHECK(is_listed == why.empty(), why);
    bool is_taken = false;
    if (is_listed) {
        FUZZ_CHECK(text.starts_with("saved-view: "), text);
        const int64_t rows = integer(view, dbRECORD_COUNT);
        why = take_log();
        FUZZ_CHECK(rows >= 0 && (why.empty() || rows == 0), why);
        is_taken = why.empty();
    }
    const Dbptr streamed = dbread_view(open.pointer, Reading(text), "streamed");
    const std::string log = take_log();
    FUZZ_CHECK((streamed.table >= 0) == log.empty(), log);
    FUZZ_CHECK((streamed.table >= 0) == is_taken, why + "\n" + log);
    if (is_taken && integer(view, dbRECORD_COUNT) <= most_rows) {
        FUZZ_CHECK(described(streamed) == described(view), described(streamed) + "\n" + described(view));
        check_operations(view);
        check_writing(open, streamed);
        FUZZ_CHECK(dbfree(streamed) == 0, take_log());
    }
    const auto names = world.files.list(MemoryFileSystem::folder);
    for (const std::string &name : names.value())
        FUZZ_CHECK(!name.starts_with(".quakes"), name);
}

// The text with a last line that is right, behind the last line feed.
std::string with_checksum(const std::string &text)
{
    std::string body = text;
    const std::size_t end = body.rfind("\nend ");
    body.resize(end == std::string::npos ? body.size() : end + 1);
    Checksum checksum;
    checksum.add(body);
    char line[32];
    std::snprintf(line, sizeof line, "end %08x\n", static_cast<unsigned>(checksum.value()));
    return body + line;
}

} // namespace

void fuzz_saved_view(std::string_view input)
{
    const std::string text(input);
    try_text(text);
    const std::string right = with_checksum(text);
    if (right != text)
        try_text(right);
}

} // namespace orvane::fuzz
