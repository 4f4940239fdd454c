// A generated schema with generated tables, in a database of ours and in one of SQLite, for a second opinion
// on what operations do.
#pragma once

#include "operations/derived.h"

#include <memory>
#include <random>
#include <sqlite3.h>
#include <string>
#include <vector>

enum class Kind { Integer, Boolean, Real, Time, Yearday, Text };

struct GeneratedField {
    std::string name;
    Kind kind = Kind::Integer;
};

// What a test writes for a null, and what is stored for it.
const char *nullTextOf(Kind kind);

struct GeneratedTable {
    std::string name;
    std::vector<GeneratedField> fields; // the first holds the record's number
    int rows = 0;
};

// A table or view as both sides see it: our pointer, and which records each row has.
struct Side {
    Dbptr pointer;
    std::vector<int> members;           // tables of the world
    std::vector<std::vector<int>> rows; // of each row, a record of each member; -1: the null record
    bool isBase = false;
};

class GeneratedWorld
{
public:
    explicit GeneratedWorld(std::mt19937_64 &random);

    Dbptr pointer() const { return open_->pointer; }
    const std::vector<GeneratedTable> &tables() const { return tables_; }
    // Of base tables and kept views one, of no more than so many rows.
    const Side &anySide(std::mt19937_64 &random, size_t most);
    const Side &base(size_t table) const { return sides_[table]; }

    // A view of ours as a side; frees it unless it is kept for further operations.
    std::vector<std::vector<int>> rowsOf(Dbptr view, const std::vector<int> &members) const;
    void keepOrFree(std::mt19937_64 &random, Side made);

    // A side as a SQL sub-select: column `pos`, then TABLE_FIELD for all fields; of yeardays also
    // TABLE_FIELD_b and _e, the seconds at which the day begins and ends. `slot` is 0 for the left side and 1
    // for the right.
    std::string select(const Side &side, int slot) const;
    // The rows of a query as integers; a NULL is -1.
    std::vector<std::vector<int>> query(const std::string &sql) const;

    std::string describe() const;

private:
    void execute(const std::string &sql) const;
    void makeSchema(std::mt19937_64 &random);
    void fill(std::mt19937_64 &random, GeneratedTable &table);
    std::string schemaText() const;

    struct CloseSqlite {
        void operator()(sqlite3 *db) const { sqlite3_close(db); }
    };

    std::vector<GeneratedTable> tables_;
    std::unique_ptr<TemporaryDatabase> files_;
    std::unique_ptr<Opened> open_;
    std::unique_ptr<sqlite3, CloseSqlite> sqlite_;
    std::vector<Side> sides_; // base tables, then kept views
};

inline int below(std::mt19937_64 &random, size_t end)
{
    return end == 0 ? 0 : static_cast<int>(random() % end);
}
