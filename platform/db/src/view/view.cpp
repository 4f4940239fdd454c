#include "view/view.h"

#include "base/concat.h"

#include <algorithm>
#include <utility>

namespace orvane {

ViewMember view_member(std::shared_ptr<RecordTable> table, RowNumbers rows, std::uint64_t generation)
{
    ViewMember member{std::move(table), std::move(rows)};
    member.generation = generation;
    RowBounds bounds;
    for (const RowNumber row : member.rows)
        bounds.add(row);
    member.end = bounds.end;
    member.has_null_rows = bounds.has_null_rows;
    return member;
}

Status outdated(const std::string &view_name, const RecordTable &member)
{
    return Status(Code::Stale,
                  concat("view ", view_name, " was made of table ", member.name(),
                         " before another program replaced it or cut it short; free the view and make ",
                         "it again"));
}

View::View(std::string name, std::vector<ViewMember> members, std::string creation)
    : name_(std::move(name)), member_tables_(std::move(members)), creation_(std::move(creation))
{
    for (std::size_t member = 0; member < member_tables_.size(); ++member)
        add_fields_of(static_cast<int>(member));
}

void View::add_fields_of(int member)
{
    const Table &table = *member_tables_[static_cast<std::size_t>(member)].table;
    relations_.insert(relations_.end(), table.members().begin(), table.members().end());
    const auto &fields = table.fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        fields_.push_back(fields[i]);
        fields_.back().offset += record_size_;
        places_.push_back({member, static_cast<int>(i)});
    }
    record_size_ += table.record_size();
    if (member > 0)
        null_record_ += ' ';
    null_record_ += table.special_record(SpecialRecord::Null);
}

// ---- Names ---------------------------------------------------------------------------------------

int find_view_field(const std::vector<TableField> &fields, std::string_view own_name,
                    std::string_view field_name, int standing_on)
{
    std::string_view table;
    std::string_view bare = field_name;
    if (const auto dot = field_name.rfind('.'); dot != std::string_view::npos) {
        table = field_name.substr(0, dot);
        bare = field_name.substr(dot + 1);
    }
    const auto find = [&](auto fits) {
        const auto found = std::find_if(fields.begin(), fields.end(), fits);
        return found == fields.end() ? -1 : static_cast<int>(found - fields.begin());
    };
    if (!table.empty()) {
        const int exact = find([&](const TableField &field) {
            return field.relation->name == table && field.attribute->name == bare;
        });
        if (exact >= 0 || table != own_name)
            return exact;
    }
    if (standing_on >= 0 && static_cast<std::size_t>(standing_on) < fields.size() &&
        fields[static_cast<std::size_t>(standing_on)].attribute->name == bare)
        return standing_on;
    return find([&](const TableField &field) { return field.attribute->name == bare; });
}

int View::field_index(std::string_view field_name, int standing_on) const
{
    return find_view_field(fields_, name_, field_name, standing_on);
}

// ---- Records -------------------------------------------------------------------------------------

Result<RowNumber> View::record_of(const ViewMember &member, std::int64_t row) const
{
    if (row < 0 || row >= row_count()) {
        const Status gone(Code::NotFound, concat("record ", row, " is not there: view ", name_, " has ",
                                                 row_count(), row_count() == 1 ? " row" : " rows"));
        return refusal_.ok() ? gone : gone.with_line(refusal_.message());
    }
    return member.rows[static_cast<std::size_t>(row)];
}

// Reading may be what notices that the file was replaced, so the question comes last.
template <typename Read>
Result<std::string_view> View::read_member(const ViewMember &member, Read read) const
{
    auto text = read(*member.table);
    if (member.table->generation() != member.generation)
        return outdated(name_, *member.table);
    return text;
}

Result<std::string_view> View::record(std::int64_t number)
{
    assembled_.clear();
    for (const ViewMember &member : member_tables_) {
        const auto record = record_of(member, number);
        if (!record.ok())
            return record.status();
        if (&member != &member_tables_.front())
            assembled_ += ' ';
        if (*record == null_row) {
            assembled_ += member.table->special_record(SpecialRecord::Null);
            continue;
        }
        const auto text = read_member(member, [&](RecordTable &table) { return table.record(*record); });
        if (!text.ok())
            return text;
        assembled_ += *text;
    }
    return std::string_view(assembled_);
}

Result<std::string_view> View::cell(std::int64_t number, std::size_t field)
{
    const FieldPlace place = places_[field];
    const ViewMember &member = member_tables_[static_cast<std::size_t>(place.member)];
    const auto record = record_of(member, number);
    if (!record.ok())
        return record.status();
    if (*record != null_row)
        return read_member(member, [&](RecordTable &table) {
            return table.cell(*record, static_cast<std::size_t>(place.field));
        });
    return std::string_view(null_record_)
        .substr(static_cast<std::size_t>(fields_[field].offset),
                static_cast<std::size_t>(fields_[field].attribute->width));
}

void View::read_ahead(std::int64_t first, std::int64_t end)
{
    end = std::min(end, row_count());
    std::vector<std::int64_t> records;
    for (const ViewMember &member : member_tables()) {
        if (member.table->generation() != member.generation)
            continue;
        records.clear();
        for (std::int64_t row = std::max<std::int64_t>(first, 0); row < end; ++row)
            if (const RowNumber record = member.rows[static_cast<std::size_t>(row)]; record != null_row)
                records.push_back(record);
        std::sort(records.begin(), records.end());
        records.erase(std::unique(records.begin(), records.end()), records.end());
        member.table->read_ahead_records(records);
    }
}

std::optional<Bundle> View::bundle(std::int64_t number, std::size_t field) const
{
    const FieldPlace place = places_[field];
    const ViewMember &member = member_tables_[static_cast<std::size_t>(place.member)];
    const auto record = record_of(member, number);
    if (!record.ok() || *record == null_row)
        return std::nullopt;
    return member.table->bundle(*record, static_cast<std::size_t>(place.field));
}

// A view of one table has that table's scratch record. A view of several has one of nothing but nulls, as
// what is put into it could be added to none of them.
RecordTable *View::table_of_scratch() const
{
    RecordTable &first = *member_tables_.front().table;
    return member_tables_.size() == 1 && first.has_record_file() ? &first : nullptr;
}

std::string_view View::special_record(SpecialRecord which) const
{
    if (which == SpecialRecord::Null)
        return null_record_;
    const RecordTable *table = table_of_scratch();
    return table ? table->special_record(which) : null_record_;
}

Status View::set_scratch(std::string_view record_text)
{
    if (RecordTable *table = table_of_scratch())
        return table->set_scratch(record_text);
    return Status(Code::Argument, concat("view ", name_, " has no scratch record of its own; tables have"));
}

Status View::put_scratch(std::size_t field, const FieldValue &value)
{
    RecordTable *table = table_of_scratch();
    return table ? table->put_scratch(static_cast<std::size_t>(places_[field].field), value)
                 : Table::put_scratch(field, value);
}

bool View::is_writable()
{
    return std::all_of(member_tables_.begin(), member_tables_.end(),
                       [](const ViewMember &member) { return member.table->is_writable(); });
}

std::string View::description() const
{
    std::string names;
    for (const Relation *relation : relations_)
        names.append(names.empty() ? "" : ", ").append(relation->name);
    return "view of " + names;
}

// ---- Changing ------------------------------------------------------------------------------------

// The record of a member that can be changed by a row.
Result<RowNumber> View::changeable_record(const ViewMember &member, std::int64_t number) const
{
    auto record = record_of(member, number);
    if (record.ok() && *record == null_row)
        return Status(Code::Argument, concat("view ", name_, ": row ", number, " has no record of table ",
                                             member.table->name(), " that could be changed"));
    return record;
}

Status View::check_put(std::int64_t number, std::size_t field, const FieldValue &value)
{
    const FieldPlace place = places_[field];
    const ViewMember &member = member_tables_[static_cast<std::size_t>(place.member)];
    const auto record = changeable_record(member, number);
    return record.ok() ? member.table->check_put(*record, static_cast<std::size_t>(place.field), value)
                       : record.status();
}

Status View::put(std::int64_t number, std::size_t field, const FieldValue &value, Work &work)
{
    const FieldPlace place = places_[field];
    const ViewMember &member = member_tables_[static_cast<std::size_t>(place.member)];
    const auto record = changeable_record(member, number);
    if (!record.ok())
        return record.status();
    return member.table->put_as_of(member.generation, *record, static_cast<std::size_t>(place.field), value,
                                   work);
}

Status View::put_many(std::span<const RecordRun> rows, std::size_t field, const FieldValue &value, Work &work,
                      std::int64_t &done)
{
    done = 0;
    const FieldPlace place = places_[field];
    const ViewMember &member = member_tables_[static_cast<std::size_t>(place.member)];
    RowNumbers records;
    std::int64_t without = 0;
    for (const RecordRun &run : rows)
        for (std::int64_t row = run.first; row < run.end; ++row) {
            const auto record = record_of(member, row);
            if (!record.ok())
                return record.status();
            if (*record == null_row)
                ++without;
            else
                records.push_back(*record);
        }
    if (!std::is_sorted(records.begin(), records.end()))
        std::sort(records.begin(), records.end());
    std::vector<RecordRun> runs;
    for (const RowNumber record : records)
        if (runs.empty() || runs.back().end <= record) // of one record there may be several rows
            append_number(runs, record);
    if (Status put = member.table->put_many_as_of(member.generation, runs,
                                                  static_cast<std::size_t>(place.field), value, work, done);
        !put.ok() || without == 0)
        return put;
    return Status(Code::Argument,
                  concat("view ", name_, ": ", without, without == 1 ? " row has" : " rows have",
                         " no record of table ", member.table->name(), " that could be changed"));
}

Status View::mark_many(std::span<const RecordRun> rows, Work &work, std::int64_t &done)
{
    done = 0;
    for (const RecordRun &run : rows)
        for (std::int64_t row = run.first; row < run.end; ++row, ++done)
            if (Status marked = mark(row, work); !marked.ok())
                return marked;
    return Status();
}

Status View::mark(std::int64_t number, Work &)
{
    if (const auto record = record_of(member_tables_.front(), number); !record.ok())
        return record.status();
    flagged_.resize(static_cast<std::size_t>(row_count()));
    flagged_[static_cast<std::size_t>(number)] = true;
    return Status();
}

std::vector<RowNumber> View::crunch()
{
    std::vector<RowNumber> moved(flagged_.size());
    RowNumber kept = 0;
    for (std::size_t row = 0; row < flagged_.size(); ++row)
        moved[row] = flagged_[row] ? null_row : kept++;
    if (kept == moved.size())
        return {};
    move_rows(moved);
    return moved;
}

std::int64_t View::numbering()
{
    std::int64_t replaced = 0;
    for (const ViewMember &member : member_tables()) {
        static_cast<void>(member.table->snapshot());
        replaced += static_cast<std::int64_t>(member.table->generation() - member.generation);
    }
    // The two halves don't meet: nobody crunches a view two thousand million times.
    return (replaced << 31) + moved_rows_;
}

std::int64_t View::version()
{
    std::int64_t version = moved_rows_;
    for (const ViewMember &member : member_tables())
        version += member.table->version(); // each of them only grows
    return version;
}

void View::move_rows(const std::vector<RowNumber> &moved)
{
    RecordMoves moves;
    moves.from = moved_rows_;
    moves.to = ++moved_rows_;
    std::size_t kept = 0;
    for (std::size_t row = 0; row < moved.size(); ++row)
        if (moved[row] != null_row)
            ++kept;
        else
            moves.gone.push_back(static_cast<std::int64_t>(row));
    last_moves_ = std::move(moves);
    for (ViewMember &member : member_tables_) {
        for (std::size_t row = 0; row < moved.size(); ++row)
            if (moved[row] != null_row)
                member.rows[moved[row]] = member.rows[row];
        member.rows.resize(kept);
        member = view_member(std::move(member.table), std::move(member.rows), member.generation);
    }
    for (std::size_t row = 0; row < flagged_.size(); ++row)
        if (moved[row] != null_row)
            flagged_[moved[row]] = flagged_[row];
    if (!flagged_.empty())
        flagged_.resize(kept);
}

// ---- Rows that come later ------------------------------------------------------------------------

void View::fetch_rows() const
{
    std::exchange(delayed_, nullptr)->deliver();
}

void View::take_rows(std::vector<RowNumbers> columns, std::span<const std::uint64_t> generations)
{
    delayed_.reset();
    for (std::size_t m = 0; m < member_tables_.size(); ++m)
        member_tables_[m] =
            view_member(std::move(member_tables_[m].table), std::move(columns[m]), generations[m]);
}

void View::refuse(Status why)
{
    delayed_.reset();
    refusal_ = std::move(why);
}

// ---- Numbering anew ------------------------------------------------------------------------------

std::vector<RowNumber> View::renumber(const RecordTable &table, std::uint64_t generation,
                                      std::span<const RowNumber> renumbered)
{
    std::vector<RowNumber> moved;
    for (ViewMember &member : member_tables_) {
        if (member.table.get() != &table || member.generation != generation)
            continue;
        moved.resize(static_cast<std::size_t>(row_count()), 0);
        for (std::size_t row = 0; row < member.rows.size(); ++row) {
            RowNumber &record = member.rows[row];
            if (record == null_row)
                continue;
            record = record < renumbered.size() ? renumbered[record] : null_row;
            if (record == null_row)
                moved[row] = null_row;
        }
        member.generation = table.generation(); // the numbers hold for the records as they are now
    }
    RowNumber kept = 0;
    for (RowNumber &row : moved)
        if (row != null_row)
            row = kept++;
    if (!moved.empty())
        move_rows(moved);
    return moved;
}

} // namespace orvane
