#include "operations/generated_world.h"

#include "operations/sqlite_functions.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

constexpr size_t most_kept = 6;
constexpr int first_year = 2008;

struct KindRow {
    const char *type;
    int width;
    const char *format;
    const char *null;
};

const KindRow &rowOf(Kind kind)
{
    static const KindRow rows[] = {
        {"integer", 8, "%8d", "-1"},        {"boolean", 4, "%4d", "-1"},
        {"real", 10, "%10.3f", "-999.000"}, {"time", 17, "%17.5f", "-9999999999.99900"},
        {"yearday", 8, "%8d", "-1"},        {"string", 6, "%-6s", "-"},
    };
    return rows[static_cast<size_t>(kind)];
}

// The seconds at which a day begins, by the C library.
long long beginOfDay(int yearday)
{
    std::tm day{};
    day.tm_year = yearday / 1000 - 1900;
    day.tm_mday = yearday % 1000;
    return timegm(&day);
}

std::string anyValue(std::mt19937_64 &random, Kind kind)
{
    if (below(random, 7) == 0)
        return rowOf(kind).null;
    char text[40];
    switch (kind) {
    case Kind::Integer:
        return std::to_string(below(random, 12) - (below(random, 5) == 0 ? 10 : 0));
    case Kind::Boolean:
        return std::to_string(below(random, 2));
    case Kind::Real:
        std::snprintf(text, sizeof text, "%.3f", (below(random, 40) - 20) / 4.0);
        return text;
    case Kind::Time: // within some days, often right at their ends
        std::snprintf(text, sizeof text, "%.5f",
                      static_cast<double>(beginOfDay(first_year * 1000 + 1 + below(random, 5))) +
                          (below(random, 3) == 0 ? 0.0 : below(random, 8) * 10800.25) -
                          (below(random, 6) == 0 ? 0.00001 : 0.0));
        return text;
    case Kind::Yearday:
        return std::to_string(first_year * 1000 + 1 + below(random, 5));
    case Kind::Text: {
        static const char *const texts[] = {"A",  "AB", "ABC",  "B",   "a", "Z9", "A B", "_x",
                                            "12", "-3", "it's", "2.5", "",  " x", "P"};
        return texts[below(random, std::size(texts))];
    }
    }
    return {};
}

std::string inSql(const std::string &value, Kind kind)
{
    if (kind != Kind::Text)
        return value;
    std::string quoted = "'";
    for (const char c : value)
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    return quoted + "'";
}

// Names are shared by tables, so that inferred joins find some.
std::vector<GeneratedField> anyFields(std::mt19937_64 &random, int number)
{
    static const GeneratedField pool[] = {
        {"i1", Kind::Integer}, {"i2", Kind::Integer}, {"ib", Kind::Integer}, {"ie", Kind::Integer},
        {"b1", Kind::Boolean}, {"r1", Kind::Real},    {"r2", Kind::Real},    {"t1", Kind::Time},
        {"tb", Kind::Time},    {"te", Kind::Time},    {"y1", Kind::Yearday}, {"yb", Kind::Yearday},
        {"ye", Kind::Yearday}, {"s1", Kind::Text},    {"s2", Kind::Text},
    };
    std::vector<GeneratedField> fields{{"no" + std::to_string(number), Kind::Integer}};
    for (const GeneratedField &field : pool)
        if (below(random, 3) > 0)
            fields.push_back(field);
    return fields;
}

} // namespace

const char *nullTextOf(Kind kind)
{
    return rowOf(kind).null;
}

GeneratedWorld::GeneratedWorld(std::mt19937_64 &random)
{
    makeSchema(random);
    files_ = std::make_unique<TemporaryDatabase>("generated", schemaText());
    sqlite3 *sqlite = nullptr;
    if (sqlite3_open(":memory:", &sqlite) != SQLITE_OK)
        throw std::runtime_error("no SQLite");
    sqlite_.reset(sqlite);
    addFunctions(sqlite);
    for (GeneratedTable &table : tables_)
        fill(random, table);
    for (const char *in : {"in0", "in1"})
        execute(std::string("CREATE TABLE ") + in +
                " (pos INTEGER PRIMARY KEY, m0 INT, m1 INT, m2 INT, m3 INT)");
    open_ = std::make_unique<Opened>(files_->path());
    for (size_t i = 0; i < tables_.size(); ++i) {
        Side side{open_->table(tables_[i].name.c_str()), {static_cast<int>(i)}, {}, true};
        for (int row = 0; row < tables_[i].rows; ++row)
            side.rows.push_back({row});
        sides_.push_back(side);
    }
}

void GeneratedWorld::makeSchema(std::mt19937_64 &random)
{
    const int count = 3 + below(random, 2);
    for (int i = 0; i < count; ++i)
        tables_.push_back({"t" + std::to_string(i), anyFields(random, i), 0});
    for (size_t a = 0; a < tables_.size(); ++a) // now and then the same names as a longer one begins with
        if (below(random, 8) == 0)
            tables_[a].name += "x";
}

std::string GeneratedWorld::schemaText() const
{
    std::string attributes;
    std::string relations;
    std::vector<std::string> known;
    for (const GeneratedTable &table : tables_) {
        std::string fields;
        for (const GeneratedField &field : table.fields) {
            fields += (fields.empty() ? "" : ", ") + field.name;
            if (std::find(known.begin(), known.end(), field.name) != known.end())
                continue;
            known.push_back(field.name);
            const KindRow &row = rowOf(field.kind);
            attributes += "  " + field.name + ": {type: " + row.type +
                          ", width: " + std::to_string(row.width) + ", format: \"" + row.format +
                          "\", null: \"" + row.null + "\"}\n";
        }
        relations +=
            "  " + table.name + ": {fields: [" + fields + "], primary: [" + table.fields[0].name + "]}\n";
    }
    return "name: generated\nattributes:\n" + attributes + "relations:\n" + relations;
}

void GeneratedWorld::fill(std::mt19937_64 &random, GeneratedTable &table)
{
    static const int sizes[] = {0, 1, 2, 3, 5, 8, 13, 21, 30, 40};
    table.rows = sizes[below(random, std::size(sizes))];
    std::string create = "CREATE TABLE " + table.name + " (";
    for (size_t i = 0; i < table.fields.size(); ++i) {
        const GeneratedField &field = table.fields[i];
        const char *type = field.kind == Kind::Text                               ? " TEXT"
                           : field.kind == Kind::Real || field.kind == Kind::Time ? " REAL"
                                                                                  : " INTEGER";
        create += (i > 0 ? ", " : "") + field.name + type + (i == 0 ? " PRIMARY KEY" : "");
        if (field.kind == Kind::Yearday)
            create += ", " + field.name + "_b REAL, " + field.name + "_e REAL";
    }
    execute(create + ")");
    std::vector<TemporaryDatabase::Row> rows;
    std::string insert;
    for (int row = 0; row <= table.rows; ++row) {
        const bool nullRecord = row == table.rows; // SQLite has one more, for outer joins
        TemporaryDatabase::Row ours;
        std::string values;
        for (size_t i = 0; i < table.fields.size(); ++i) {
            const Kind kind = table.fields[i].kind;
            const std::string value = nullRecord ? nullTextOf(kind)
                                      : i == 0   ? std::to_string(row)
                                                 : anyValue(random, kind);
            ours.push_back(value);
            values += (i > 0 ? "," : "") + inSql(value, kind);
            if (kind == Kind::Yearday)
                values += value == "-1" ? ",NULL,NULL"
                                        : "," + std::to_string(beginOfDay(std::stoi(value))) + "," +
                                              std::to_string(beginOfDay(std::stoi(value) + 1));
        }
        insert += (insert.empty() ? "(" : ",(") + values + ")";
        if (!nullRecord)
            rows.push_back(ours);
    }
    execute("INSERT INTO " + table.name + " VALUES " + insert);
    if (table.rows > 0 || below(random, 2) == 0) // without rows, a table with an empty file or with none
        files_->addTable(table.name, rows);
}

const Side &GeneratedWorld::anySide(std::mt19937_64 &random, size_t most)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        const Side &side = sides_[static_cast<size_t>(below(random, sides_.size()))];
        if (side.rows.size() <= most)
            return side;
    }
    return sides_[static_cast<size_t>(below(random, tables_.size()))];
}

std::vector<std::vector<int>> GeneratedWorld::rowsOf(Dbptr view, const std::vector<int> &members) const
{
    std::vector<std::vector<int>> rows(
        static_cast<size_t>(std::max<int64_t>(0, integer(view, dbRECORD_COUNT))));
    for (const int member : members) {
        const GeneratedTable &table = tables_[static_cast<size_t>(member)];
        Dbptr at = dblookup(view, "", "", (table.name + "." + table.fields[0].name).c_str(), "");
        for (size_t row = 0; row < rows.size(); ++row) {
            char text[32] = "";
            at.record = static_cast<int64_t>(row);
            rows[row].push_back(dbget(at, text, sizeof text) < 0 ? -99 : std::atoi(text));
        }
    }
    return rows;
}

void GeneratedWorld::keepOrFree(std::mt19937_64 &random, Side made)
{
    if (made.rows.size() > 60 || made.members.size() > 3 || below(random, 3) > 0) {
        EXPECT_EQ(dbfree(made.pointer), 0);
        return;
    }
    if (sides_.size() < tables_.size() + most_kept) {
        sides_.push_back(std::move(made));
        return;
    }
    Side &replaced = sides_[tables_.size() + static_cast<size_t>(below(random, most_kept))];
    EXPECT_EQ(dbfree(replaced.pointer), 0);
    replaced = std::move(made);
}

std::string GeneratedWorld::select(const Side &side, int slot) const
{
    const std::string in = "in" + std::to_string(slot);
    if (!side.isBase) {
        execute("DELETE FROM " + in);
        std::string values;
        for (size_t row = 0; row < side.rows.size(); ++row) {
            values += (row > 0 ? ",(" : "(") + std::to_string(row);
            for (size_t m = 0; m < 4; ++m)
                values += "," + (m < side.rows[row].size() ? std::to_string(side.rows[row][m]) : "NULL");
            values += ")";
        }
        if (!values.empty())
            execute("INSERT INTO " + in + " VALUES " + values);
    }
    std::string columns =
        side.isBase ? tables_[static_cast<size_t>(side.members[0])].fields[0].name + " AS pos" : in + ".pos";
    std::string from = side.isBase ? "" : in;
    for (size_t m = 0; m < side.members.size(); ++m) {
        const GeneratedTable &table = tables_[static_cast<size_t>(side.members[m])];
        for (const GeneratedField &field : table.fields) {
            columns += ", " + table.name + "." + field.name + " AS " + table.name + "_" + field.name;
            if (field.kind == Kind::Yearday)
                for (const char *end : {"_b", "_e"})
                    columns += ", " + table.name + "." + field.name + end + " AS " + table.name + "_" +
                               field.name + end;
        }
        from += from.empty() ? table.name
                             : " JOIN " + table.name + " ON " + table.name + "." + table.fields[0].name +
                                   " = " + in + ".m" + std::to_string(m);
    }
    const std::string where =
        side.isBase ? " WHERE " + tables_[static_cast<size_t>(side.members[0])].fields[0].name + " >= 0" : "";
    return "(SELECT " + columns + " FROM " + from + where + ")";
}

std::vector<std::vector<int>> GeneratedWorld::query(const std::string &sql) const
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(sqlite_.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
        throw std::runtime_error(std::string(sqlite3_errmsg(sqlite_.get())) + " in " + sql);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> owner(statement, sqlite3_finalize);
    std::vector<std::vector<int>> rows;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        std::vector<int> row;
        for (int i = 0; i < sqlite3_column_count(statement); ++i)
            row.push_back(
                sqlite3_column_type(statement, i) == SQLITE_NULL ? -1 : sqlite3_column_int(statement, i));
        rows.push_back(std::move(row));
    }
    return rows;
}

void GeneratedWorld::execute(const std::string &sql) const
{
    char *message = nullptr;
    if (sqlite3_exec(sqlite_.get(), sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK)
        throw std::runtime_error(std::string(message ? message : "?") + " in " + sql);
}

std::string GeneratedWorld::describe() const
{
    std::string text = schemaText();
    for (const GeneratedTable &table : tables_) {
        text += table.name + ":\n";
        const std::string path = files_->tablePath(table.name);
        if (std::filesystem::exists(path))
            text += TemporaryDatabase::readFile(path);
    }
    return text;
}
