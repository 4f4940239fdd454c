// Descriptors, and with them the parameter files that they and schemas are.
#include "check.h"
#include "fuzzers.h"
#include "world.h"

#include "base/yaml_text.h"
#include "catalog/descriptor.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace orvane::fuzz {

namespace {

// ---- Parameter files -----------------------------------------------------------------------------

// Where the line break at the beginning of a text ends: 0 where there is none.
std::size_t break_length(std::string_view text)
{
    for (const std::string_view end : {"\r\n", "\r", "\n", "\xc2\x85", "\xe2\x80\xa8", "\xe2\x80\xa9"})
        if (text.starts_with(end))
            return end.size();
    return 0;
}

class Lines
{
public:
    explicit Lines(std::string_view text)
    {
        std::size_t length = 0;
        while (!text.empty()) {
            const std::size_t end = break_length(text);
            if (end > 0)
                lengths_.push_back(std::exchange(length, 0));
            else
                ++length;
            text.remove_prefix(end > 0 ? end : 1);
        }
        lengths_.push_back(length);
    }

    // Whether there is such a line, and the column is in it or behind its end; or it is the line that would
    // follow the last one, where a value is that isn't there.
    bool have(int64_t line, int64_t column) const
    {
        if (line == static_cast<int64_t>(lengths_.size()) + 1)
            return column == 1;
        return line >= 1 && static_cast<std::size_t>(line) <= lengths_.size() && column >= 1 &&
               static_cast<std::size_t>(column) <= lengths_[static_cast<std::size_t>(line) - 1] + 1;
    }

private:
    std::vector<std::size_t> lengths_; // bytes, of which no character has less than one
};

// The parameters as a text in which every scalar is quoted and every mapping and list is written in a line.
// Keys have a question mark before them: without it they may not be longer than 1,024 characters as they are
// written.
std::string rewritten(const Pf *pf, bool is_list)
{
    const int64_t count = pfmaxtbl(pf);
    Tbl *const keys = is_list ? nullptr : pfkeys(pf);
    FUZZ_CHECK(is_list || maxtbl(keys) == count, std::to_string(count));
    std::string text = is_list ? "[" : "{";
    for (int64_t i = 0; i < count; ++i) {
        const std::string key = is_list ? std::to_string(i) : static_cast<const char *>(gettbl(keys, i));
        PfValue value{};
        const int kind = pfget(pf, key.c_str(), &value);
        text += i > 0 ? ", " : "";
        if (!is_list)
            text += "? " + yaml_quoted(key) + " : ";
        FUZZ_CHECK(kind == PFSTRING || kind == PFLIST || kind == PFARRAY, key);
        text += kind == PFSTRING ? yaml_quoted(value.text) : rewritten(value.pf, kind == PFLIST);
    }
    freetbl(keys, nullptr);
    return text + (is_list ? "]" : "}");
}

void check_places(const Pf *pf, bool is_list, const Lines &lines)
{
    const int64_t count = pfmaxtbl(pf);
    Tbl *const keys = is_list ? nullptr : pfkeys(pf);
    for (int64_t i = 0; i < count; ++i) {
        const std::string key = is_list ? std::to_string(i) : static_cast<const char *>(gettbl(keys, i));
        int64_t line = 0;
        int64_t column = 0;
        FUZZ_CHECK(pfwhere(pf, key.c_str(), &line, &column) == 0, key);
        FUZZ_CHECK(lines.have(line, column), key + " " + std::to_string(line) + ":" + std::to_string(column));
        PfValue value{};
        const int kind = pfget(pf, key.c_str(), &value);
        if (kind != PFSTRING)
            check_places(value.pf, kind == PFLIST, lines);
    }
    freetbl(keys, nullptr);
}

void check_parameters(std::string_view text)
{
    Pf *pf = nullptr;
    const int code = pfparse(text.data(), text.size(), "text", &pf);
    const std::string log = take_log();
    FUZZ_CHECK((code == 0) == (pf != nullptr) && (code == 0) == log.empty(), log);
    if (code < 0) {
        FUZZ_CHECK(log.rfind("text:", 0) == 0, log);
        return;
    }
    check_places(pf, false, Lines(text));
    const std::string again = rewritten(pf, false);
    pffree(pf);
    FUZZ_CHECK(pfparse(again.data(), again.size(), "again", &pf) == 0, again + "\n" + take_log());
    const std::string third = rewritten(pf, false);
    pffree(pf);
    FUZZ_CHECK(third == again, again + "\n" + third);
}

// ---- Descriptors ---------------------------------------------------------------------------------

std::string written(const Descriptor &descriptor)
{
    std::string text = "schema: " + yaml_quoted(descriptor.schema) + "\ndbpath: [";
    for (const std::string &folder : descriptor.dbpath)
        text += (text.back() == '[' ? "" : ", ") + yaml_quoted(folder);
    return text + "]\nlocks: " + (descriptor.locks == Locks::None ? "none" : "local") +
           "\ndurability: " + (descriptor.durability == Durability::Disk ? "disk" : "process") +
           "\nidserver: " + yaml_quoted(descriptor.idserver) +
           "\ndescription: " + yaml_quoted(descriptor.description) +
           "\ndetail: " + yaml_quoted(descriptor.detail) + "\n";
}

void check_descriptor(const std::string &text)
{
    const auto descriptor = read_descriptor(text, "file");
    if (!descriptor.ok()) {
        FUZZ_CHECK(descriptor.status().message().rfind("file:", 0) == 0,
                   std::string(descriptor.status().message()));
        const std::string log = take_log(); // of a text that is no parameter file the log says where
        FUZZ_CHECK(log.empty() || log.rfind("file:", 0) == 0, log);
        return;
    }
    FUZZ_CHECK(!descriptor->schema.empty(), "");
    FUZZ_CHECK(descriptor->schema.find('/') == std::string::npos, descriptor->schema);
    FUZZ_CHECK(!descriptor->dbpath.empty(), "");
    for (const std::string &folder : descriptor->dbpath)
        FUZZ_CHECK(!folder.empty() && folder.find(':') == std::string::npos, folder);
    const std::string form = written(*descriptor);
    const auto again = read_descriptor(form, "again");
    FUZZ_CHECK(again.ok(), form + "\n" + std::string(again.status().message()));
    FUZZ_CHECK(written(*again) == form, form + "\n" + written(*again));
}

// As a program meets it: the database opens and can be asked, or says why not.
void check_database(World &world, const std::string &text)
{
    world.files.write(World::descriptor_path, text);
    Dbptr db{};
    const int code = dbopen_database(World::descriptor_path, "r+", &db);
    const std::string log = take_log();
    FUZZ_CHECK((code == 0) == log.empty(), log);
    if (code < 0) {
        FUZZ_CHECK(db.database == dbINVALID && db.table == dbINVALID, log);
        return;
    }
    const auto descriptor = read_descriptor(text, "file");
    FUZZ_CHECK(descriptor.ok(), "a database whose descriptor is wrong opened");
    FUZZ_CHECK(::text(db, dbDATABASE_DESCRIPTION) == descriptor->description.c_str(), "");
    FUZZ_CHECK(::text(db, dbDATABASE_DETAIL) == descriptor->detail.c_str(), "");
    FUZZ_CHECK(::text(db, dbLOCKS) == (descriptor->locks == Locks::None ? "none" : "local"), "");
    FUZZ_CHECK(integer(db, dbTABLE_COUNT) == 3, take_log());

    // A record can be added and is where the descriptor puts it, or the reason is said.
    const Dbptr table = dblookup(db, "", "site", "dbALL", "dbALL");
    const int64_t number = dbadd(table, "AAK     2018001  2018365   42.5000 -9999999999.99900");
    const std::string why = take_log();
    FUZZ_CHECK((number == 0) == why.empty(), why);
    FUZZ_CHECK(integer(table, dbRECORD_COUNT) == (number == 0 ? 1 : 0), take_log());
    elog_clear();
    FUZZ_CHECK(OVdbclose(db) == 0, take_log());
}

} // namespace

void fuzz_descriptor(std::string_view input)
{
    elog_clear();
    check_parameters(input);
    check_descriptor(std::string(input));
    World world;
    check_database(world, std::string(input));
}

} // namespace orvane::fuzz
