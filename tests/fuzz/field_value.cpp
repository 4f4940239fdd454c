// Values of fields: put, read back, put again, added with their record; or refused, with nothing changed.
// Each line of the input is "FIELD TYPE VALUE": lat r 12.5
#include "check.h"
#include "fuzzers.h"
#include "world.h"

#include "table/record_table.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace orvane::fuzz {

namespace {

constexpr std::size_t most_values = 6; // of one input

// Two records, of which the first is changed and the second one has to stay.
std::string first_records()
{
    return record_text("every", "1|12|17|42.5|1.0|2.5|1517961600|2018038|AAK|NEIC") + "\n" +
           record_text("every", "0|13") + "\n";
}

struct Written {
    DbValue value{};
    std::string text; // of a text
};

// The value that a line names; none for another type's letter.
std::optional<Written> value_of(char type, std::string_view text)
{
    Written written;
    written.text = text;
    switch (type) {
    case 'b':
    case 'i':
    case 'y':
        written.value.type = type == 'b' ? dbBOOLEAN : type == 'i' ? dbINTEGER : dbYEARDAY;
        written.value.integer = std::strtoll(written.text.c_str(), nullptr, 0);
        return written;
    case 'r':
    case 't':
        written.value.type = type == 'r' ? dbREAL : dbTIME;
        written.value.real = std::strtod(written.text.c_str(), nullptr);
        return written;
    case 's':
        written.value.type = dbSTRING;
        return written;
    case 'd':
        written.value.type = dbDBPTR;
        for (int64_t *index : {&written.value.dbptr.database, &written.value.dbptr.table,
                               &written.value.dbptr.field, &written.value.dbptr.record})
            *index = std::strtoll(std::string(take_until(text, ' ')).c_str(), nullptr, 0);
        return written;
    default:
        return std::nullopt;
    }
}

class Table
{
public:
    explicit Table(World &world) : world_(world), open_(World::descriptor_path, "r+")
    {
        table_ = open_.table("every");
        lddate_ = field("lddate");
    }

    std::string bytes() const { return world_.files.read(World::table_path("every")); }
    Dbptr at(const char *name, int64_t record) const { return open_.field("every", name, record); }

    struct Span {
        std::size_t first;
        std::size_t width;
    };
    Span field(const char *name) const
    {
        const Dbptr place = open_.field("every", name);
        return {static_cast<std::size_t>(integer(place, dbFIELD_INDEX)),
                static_cast<std::size_t>(integer(place, dbFIELD_SIZE))};
    }
    // The text with the timestamps of its records made equal.
    std::string without_stamps(std::string text) const
    {
        const auto size = static_cast<std::size_t>(integer(table_, dbRECORD_SIZE));
        for (std::size_t record = 0; record + size <= text.size(); record += size)
            text.replace(record + lddate_.first, lddate_.width, lddate_.width, 'T');
        return text;
    }
    Dbptr pointer() const { return table_; }

private:
    World &world_;
    Opened open_;
    Dbptr table_;
    Span lddate_{};
};

std::string put_text(Dbptr at, DbValue value, const std::string &text, int &code)
{
    std::string copy = text;
    if (value.type == dbSTRING)
        value.text = copy.data();
    code = dbputv(at, nullptr, &value);
    const std::string log = take_log();
    FUZZ_CHECK((code == 0) == log.empty(), log);
    FUZZ_CHECK(code == 0 || code == dbERROR_VALUE, std::to_string(code) + " " + log);
    return log;
}

// What is read is what was put, as far as the format has digits for it.
void check_read(const Written &written, Dbptr at)
{
    DbValue read{};
    FUZZ_CHECK(dbgetv(at, nullptr, &read) == 0, take_log());
    const std::string text = read.text ? read.text : "";
    free(read.text);
    DbValue null{};
    FUZZ_CHECK(dbquery(at, dbNULL, &null) == 0, take_log());
    const std::string null_text = null.text ? null.text : "";
    free(null.text);
    const std::string format = orvane::fuzz::whole_text(at) + " of " + ::text(at, dbFIELD_FORMAT);
    const DbValue &value = written.value;
    const bool given_integer = value.type == dbBOOLEAN || value.type == dbINTEGER || value.type == dbYEARDAY;
    const bool given_real = value.type == dbREAL || value.type == dbTIME;
    if (read.type == dbBOOLEAN || read.type == dbINTEGER || read.type == dbYEARDAY) {
        if (given_integer)
            FUZZ_CHECK(read.integer == value.integer, format);
        if (given_real)
            FUZZ_CHECK(static_cast<double>(read.integer) == value.real, format);
    } else if (read.type == dbREAL || read.type == dbTIME) {
        double expected = given_integer ? static_cast<double>(value.integer) : value.real;
        if (value.type == dbSTRING) {
            char *end = nullptr;
            expected = std::strtod(written.text.c_str(), &end);
            if (*end != '\0' || end == written.text.c_str())
                return; // a date, or with blanks
        }
        if (expected != null.real) {
            char printed[512];
            std::snprintf(printed, sizeof printed, ::text(at, dbFIELD_FORMAT).c_str(), expected);
            FUZZ_CHECK(read.real == std::strtod(printed, nullptr), format + ", expected " + printed);
        } else {
            FUZZ_CHECK(read.real == expected, format);
        }
    } else if (read.type == dbSTRING && value.type == dbSTRING) {
        const std::size_t end = written.text.find_last_not_of(' ');
        FUZZ_CHECK(text == written.text.substr(0, end == std::string::npos ? 0 : end + 1), text);
    } else if (read.type == dbDBPTR && value.type == dbDBPTR) {
        FUZZ_CHECK(std::memcmp(&read.dbptr, &value.dbptr, sizeof read.dbptr) == 0, format);
    }
}

void check_stored(const Table &table, const char *name, const Written &written, const std::string &before)
{
    const std::string after = table.bytes();
    const auto [first, width] = table.field(name);
    const std::string stored = after.substr(first, width);
    std::string expected = before;
    expected.replace(first, width, stored);
    FUZZ_CHECK(table.without_stamps(after) == table.without_stamps(expected), after);
    FUZZ_CHECK(whole_text(table.at(name, 0)) == stored, stored);
    check_read(written, table.at(name, 0));

    // What is there can be put once more, and nothing changes.
    int code = 0;
    DbValue again{};
    again.type = dbSTRING;
    const std::string log = put_text(table.at(name, 0), again, stored, code);
    FUZZ_CHECK(code == 0, "'" + stored + "': " + log);
    FUZZ_CHECK(table.without_stamps(table.bytes()) == table.without_stamps(after), table.bytes());

    // The scratch record takes it, too, in the same form.
    put_text(table.at(name, dbSCRATCH), written.value, written.text, code);
    FUZZ_CHECK(code == 0, stored);
    FUZZ_CHECK(whole_text(table.at(name, dbSCRATCH)) == stored || std::strcmp(name, "lddate") == 0, stored);

    // A record with it can be added, and has the key that it has.
    const std::string record =
        after.substr(0, static_cast<std::size_t>(integer(table.pointer(), dbRECORD_SIZE)) - 1);
    const std::string whole = table.bytes();
    const int64_t number = dbadd(table.pointer(), record.c_str());
    if (number < 0) {
        FUZZ_CHECK(take_log().find("nothing but nulls") != std::string::npos, record);
        FUZZ_CHECK(table.bytes() == whole, "a record that is refused leaves the table");
        return;
    }
    FUZZ_CHECK(number == integer(table.pointer(), dbRECORD_COUNT) - 1, std::to_string(number));
    FUZZ_CHECK(table.without_stamps(table.bytes()) == table.without_stamps(whole + record + "\n"), record);
    const int64_t same = dbaddchk(table.pointer(), record.c_str());
    FUZZ_CHECK(same == 0, std::to_string(same) + take_log());
    FUZZ_CHECK(dbmark(table.pointer().record == dbALL ? table.at(name, number) : table.pointer()) == 0,
               take_log());
    FUZZ_CHECK(dbcrunch(table.pointer()) == 0, take_log());
    FUZZ_CHECK(table.without_stamps(table.bytes()) == table.without_stamps(whole), table.bytes());
}

} // namespace

void fuzz_field_value(std::string_view input)
{
    if (input.find('\0') != std::string_view::npos)
        return; // ends a text for a call
    World world;
    world.files.write(World::table_path("every"), first_records());
    const Table table(world);
    FUZZ_CHECK(integer(table.pointer(), dbRECORD_COUNT) == 2, take_log());
    for (std::size_t count = 0; count < most_values && !input.empty(); ++count) {
        std::string_view line = take_until(input, '\n');
        const std::string name(take_until(line, ' '));
        const std::string_view type = take_until(line, ' ');
        const auto written = value_of(type.empty() ? ' ' : type.front(), line);
        const Dbptr at = table.at(name.c_str(), 0);
        elog_clear();
        if (!written || at.field < 0)
            continue;
        const std::string before = table.bytes();
        int code = 0;
        const std::string log = put_text(at, written->value, written->text, code);
        if (name == "lddate")
            continue; // takes the present time, whatever is put there
        if (code == 0) {
            check_stored(table, name.c_str(), *written, before);
        } else {
            FUZZ_CHECK(table.bytes() == before, log);
            put_text(table.at(name.c_str(), dbSCRATCH), written->value, written->text, code);
            FUZZ_CHECK(code != 0, "the scratch record takes what a record doesn't: " + log);
        }
    }
    FUZZ_CHECK(world.notices.empty(), world.notices);
}

} // namespace orvane::fuzz
