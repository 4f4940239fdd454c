#include "column/column_update.h"

#include "column/column_decoder.h"

namespace orvane {

namespace {

// Others that look at the texts count on them.
bool can_follow(const Column &column)
{
    return column.storage() != ColumnStorage::Text || column.texts.use_count() == 1;
}

// A null that was there before and is gone does no harm.
void take_over(Column &column, const FieldDecoder &decoder, const RecordRun &run)
{
    column.has_nulls |= decoder.met_null();
    if (column.storage() == ColumnStorage::Text)
        for (std::int64_t number = run.first; number < run.end; ++number)
            column.has_nulls |= column.codes[static_cast<std::size_t>(number)] == column.null_code;
}

} // namespace

bool update_column(Column &column, const RelationField &field, std::string_view line, std::int64_t number)
{
    if (number < 0 || number > column.count || !can_follow(column))
        return false;
    if (number == column.count) {
        switch (column.storage()) {
        case ColumnStorage::Integer:
            column.integers.push_back(column.null_integer);
            break;
        case ColumnStorage::Real:
            column.reals.push_back(column.null_real);
            break;
        case ColumnStorage::Text:
            column.codes.push_back(column.null_code);
            break;
        }
        ++column.count;
    }
    auto *texts = const_cast<TextEntries *>(column.texts.get());
    FieldDecoder decoder(field, static_cast<std::int64_t>(line.size()), texts);
    decoder.decode(line.data(), number, 1, column);
    take_over(column, decoder, {number, number + 1});
    column.unreadable += decoder.unreadable();
    return true;
}

bool update_column(Column &column, const RelationField &field, std::string_view lines,
                   std::int64_t record_size, std::int64_t first, std::span<const RecordRun> runs)
{
    if (first < 0 || (!runs.empty() && runs.back().end > column.count) || !can_follow(column))
        return false;
    auto *texts = const_cast<TextEntries *>(column.texts.get());
    FieldDecoder decoder(field, record_size, texts);
    for (const RecordRun &run : runs) {
        decoder.decode(lines.data() + (run.first - first) * record_size, run.first, run.end - run.first,
                       column);
        take_over(column, decoder, run);
    }
    column.unreadable += decoder.unreadable();
    return true;
}

} // namespace orvane
