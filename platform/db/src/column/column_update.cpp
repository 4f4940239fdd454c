#include "column/column_update.h"

#include "column/column_decoder.h"

namespace orvane {

bool update_column(Column &column, const RelationField &field, std::string_view line, std::int64_t number)
{
    if (number < 0 || number > column.count)
        return false;
    // Others that look at the texts count on them.
    if (column.storage() == ColumnStorage::Text && column.texts.use_count() != 1)
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
    // A null that was there before and is gone does no harm.
    column.has_nulls |= decoder.met_null();
    if (column.storage() == ColumnStorage::Text)
        column.has_nulls |= column.codes[static_cast<std::size_t>(number)] == column.null_code;
    column.unreadable += decoder.unreadable();
    return true;
}

} // namespace orvane
