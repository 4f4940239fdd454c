// ovdb add: records from lines of text.
#include "changes.h"
#include "commands.h"
#include "formats.h"
#include "long_work.h"
#include "row_input.h"

#include <cstdio>

namespace ovdb {

namespace {

constexpr const char input_name[] = "standard input";

class Adding
{
public:
    Adding(Dbptr table, std::vector<Column> columns, bool checked)
        : table_(table), columns_(std::move(columns)), checked_(checked)
    {
    }

    void add_all(RowInput &input)
    {
        try {
            for (Row row; input.next(row);)
                add(row);
        } catch (const BadLine &bad) {
            throw Failure(ExitCode::Failed, place(bad.line()) + ": " + bad.what() + "\n" + so_far());
        } catch (const Failure &failure) {
            throw Failure(failure.code(), std::string(failure.what()) + "\n" + so_far());
        }
    }

    std::string summary() const
    {
        std::string text = "added " + records_text(added_);
        if (checked_)
            text += ", left out " + records_text(left_out_);
        return text;
    }

private:
    static std::string place(std::int64_t line)
    {
        return std::string(input_name) + ": line " + std::to_string(line);
    }

    std::string so_far() const { return summary() + " before that"; }

    void add(const Row &row)
    {
        stop_if_interrupted();
        Dbptr record = table_;
        record.record = dbNULL;
        bool done = dbget(record, nullptr, 0) >= 0; // the scratch record has nothing but nulls now
        record.record = dbSCRATCH;
        for (const Cell &cell : row.cells)
            done = done && put_text(record, columns_[cell.column].name, cell.text);
        if (!done || !add_scratch())
            fail_with_log(place(row.line), "");
        pass_on_remarks();
    }

    bool add_scratch()
    {
        if (!checked_) {
            const bool done = dbadd(table_, nullptr) >= 0;
            added_ += done ? 1 : 0;
            return done;
        }
        // A record that is new has a number that was none before.
        const std::int64_t count = number_answer(table_, dbRECORD_COUNT);
        const std::int64_t number = dbaddchk(table_, nullptr);
        if (number < 0)
            return false;
        ++(number < count ? left_out_ : added_);
        return true;
    }

    Dbptr table_;
    std::vector<Column> columns_;
    bool checked_;
    std::int64_t added_ = 0;
    std::int64_t left_out_ = 0;
};

} // namespace

void run_add(const Request &request)
{
    const Format &format = request.format ? *request.format : default_format();
    if (!format.separator && (!request.fields.empty() || request.header))
        throw Failure(ExitCode::Usage, "add: JSON names its fields itself; leave --fields and --header out");
    const Database database(request.operands[0], Database::Access::Change);
    const Dbptr table = table_to_change(database, "add");
    columns_of(table, request.fields); // names that are wrong are told before anything is read
    const auto columns = columns_of(table, {});
    const auto input = open_rows(
        stdin, format, RowLayout{columns, request.fields, request.header.value_or(format.has_header)});
    Adding adding(table, columns, request.checked);
    const LongWork work("adding");
    adding.add_all(*input);
    std::printf("%s\n", adding.summary().c_str());
}

} // namespace ovdb
