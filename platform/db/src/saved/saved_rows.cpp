#include "saved/saved_rows.h"

#include "base/concat.h"

#include <orvane/util.h>

#include <algorithm>

namespace orvane {

SavedRows::SavedRows(SavedHead head, std::string shown) : head_(std::move(head)), shown_(std::move(shown)) {}

// ---- Making the tables ---------------------------------------------------------------------------

std::shared_ptr<RecordTable> SavedRows::record_table(int number) const
{
    const PartTable &of = tables_[static_cast<std::size_t>(number)];
    if (of.base)
        return of.base;
    return of.grouped.lock();
}

std::shared_ptr<Table> SavedRows::table(int number) const
{
    if (auto view = tables_[static_cast<std::size_t>(number)].view.lock())
        return view;
    return record_table(number);
}

namespace {

std::string free_name(const Database &database, const std::string &wanted, std::span<const std::string> taken)
{
    std::string name = wanted;
    for (int number = 2;
         !database.check_view_name(name).ok() || std::find(taken.begin(), taken.end(), name) != taken.end();
         ++number)
        name = concat(wanted, '_', number);
    return name;
}

} // namespace

std::shared_ptr<Table> SavedRows::make_tables(Database &database, const std::string &name,
                                              std::span<const std::string> taken)
{
    std::vector<std::shared_ptr<Table>> made; // keeps what nothing else keeps yet
    for (std::size_t i = 0; i < head_.parts.size(); ++i) {
        const SavedPart &of = part(i);
        const bool is_view_itself = i + 1 == head_.parts.size();
        tables_.emplace_back();
        if (of.kind == PartKind::Table) {
            tables_.back().base =
                std::dynamic_pointer_cast<BaseTable>(database.shared_table(database.table_index(of.name)));
            continue;
        }
        if (of.kind == PartKind::Rows) {
            std::vector<ViewMember> members;
            for (const int member : of.members)
                members.push_back(view_member(record_table(member), {}, 0));
            auto view =
                std::make_shared<View>(is_view_itself ? name : of.name, std::move(members), of.creation);
            view->wait_for(shared_from_this());
            tables_.back().view = view;
            made.push_back(std::move(view));
        } else {
            auto grouped =
                std::make_shared<GroupedView>(is_view_itself ? name : free_name(database, of.name, taken),
                                              table(of.source), of.keys, RowNumbers{0}, of.creation);
            grouped->wait_for(shared_from_this());
            tables_.back().grouped = grouped;
            made.push_back(std::move(grouped));
        }
        if (!is_view_itself)
            database.remember_view(made.back());
    }
    return made.back();
}

// ---- Reading the rows ----------------------------------------------------------------------------

void SavedRows::read_later(SavedFile file)
{
    file_ = std::move(file);
}

Result<std::vector<SavedColumns>> SavedRows::read_file() const
{
    const auto state = file_.files->state(file_.path.absolute);
    if (!state.ok())
        return state.status();
    auto file = file_.files->open(file_.path.absolute);
    if (!file.ok())
        return file.status();
    if (!(*state == file_.state))
        return Status(Code::Io,
                      concat(shown_, ": the saved view was replaced or removed since the database was "
                                     "opened; open the database again"));
    LineReader lines(reading_file(std::move(*file)), shown_);
    const auto head = read_head_lines(lines, nullptr);
    if (!head.ok())
        return head.status();
    return read_saved_rows(lines, head_, nullptr);
}

void SavedRows::deliver()
{
    auto columns = read_file();
    if (columns.ok())
        give(std::move(*columns));
    else
        refuse(columns.status());
}

void SavedRows::deliver_before_renumbering(const RecordTable &table, std::uint64_t generation,
                                           std::int64_t records)
{
    const auto is_member = [&](const PartTable &of) { return of.base.get() == &table; };
    if (std::none_of(tables_.begin(), tables_.end(), is_member))
        return;
    renumbered_ = &table;
    renumbered_generation_ = generation;
    renumbered_records_ = records;
    deliver();
}

void SavedRows::refuse(const Status &why)
{
    for (const PartTable &of : tables_) {
        if (const auto view = of.view.lock())
            view->refuse(why);
        if (const auto grouped = of.grouped.lock())
            grouped->refuse(why);
    }
}

// ---- Handing them over ---------------------------------------------------------------------------

void SavedRows::count_records()
{
    records_.assign(tables_.size(), 0);
    for (std::size_t i = 0; i < tables_.size(); ++i)
        if (tables_[i].base)
            records_[i] = tables_[i].base.get() == renumbered_ ? renumbered_records_
                                                               : tables_[i].base->snapshot().records;
}

std::uint64_t SavedRows::generation(int number) const
{
    const auto table = record_table(number);
    return table.get() == renumbered_ ? renumbered_generation_ : table->generation();
}

void SavedRows::give(std::vector<SavedColumns> columns)
{
    count_records();
    renumber_.assign(tables_.size(), {});
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        if (part(i).kind == PartKind::Rows)
            give_rows(i, std::move(columns[i]));
        else if (part(i).kind == PartKind::Bundles)
            give_bundles(i, std::move(columns[i]));
    }
    tell_changes();
}

// Rows with a record that is gone are left out; bundles that lost rows have other numbers.
void SavedRows::give_rows(std::size_t number, SavedColumns columns)
{
    const SavedPart &of = part(number);
    const auto rows = static_cast<std::size_t>(of.count);
    std::vector<RowNumber> &moved = renumber_[number];
    const auto drop = [&](std::size_t row) {
        moved.resize(rows, 0);
        moved[row] = null_row;
    };
    for (std::size_t m = 0; m < columns.size(); ++m) {
        const auto member = static_cast<std::size_t>(of.members[m]);
        const std::vector<RowNumber> &renumbered = renumber_[member];
        const std::int64_t end = part(member).kind == PartKind::Table ? records_[member] : part(member).count;
        if (renumbered.empty() && end >= part(member).count)
            continue;
        for (std::size_t row = 0; row < rows; ++row) {
            RowNumber &record = columns[m][row];
            if (record == null_row)
                continue;
            if (!renumbered.empty())
                record = renumbered[record];
            if (record == null_row || record >= end)
                drop(row);
        }
    }
    RowNumber kept = 0;
    for (RowNumber &row : moved)
        if (row != null_row)
            row = kept++;
    if (!moved.empty())
        for (RowNumbers &column : columns) {
            for (std::size_t row = 0; row < rows; ++row)
                if (moved[row] != null_row)
                    column[moved[row]] = column[row];
            column.resize(kept);
        }
    if (!moved.empty())
        gone_ += static_cast<std::int64_t>(rows) - kept;
    std::vector<std::uint64_t> generations;
    for (const int member : of.members)
        generations.push_back(generation(member));
    if (const auto view = tables_[number].view.lock())
        view->take_rows(std::move(columns), generations);
}

void SavedRows::give_bundles(std::size_t number, SavedColumns columns)
{
    const auto grouped = tables_[number].grouped.lock();
    if (!grouped)
        return;
    grouped->take_firsts(std::move(columns.front()));
    const auto &moved = renumber_[static_cast<std::size_t>(part(number).source)];
    if (!moved.empty())
        renumber_[number] = grouped->renumber(moved);
}

void SavedRows::tell_changes() const
{
    for (std::size_t i = 0; i < tables_.size(); ++i) {
        if (!tables_[i].base)
            continue;
        const SavedPart &before = part(i);
        const FileState &now = tables_[i].base->file().state();
        const bool is_renumbered = tables_[i].base.get() == renumbered_;
        const bool is_same_time =
            is_renumbered || ((now.kind != FileKind::Missing) == before.has_file &&
                              (!before.has_file || now.modification_time == before.modified));
        if (is_same_time && records_[i] == before.count)
            continue;
        elog_notice(
            "%s: table %s has changed since the view was saved: it had %lld records then and has %lld now; "
            "rows may stand for other records",
            shown_.c_str(), before.name.c_str(), static_cast<long long>(before.count),
            static_cast<long long>(records_[i]));
    }
    if (gone_ > 0)
        elog_notice("%s: %lld rows stood for records that are gone and were left out", shown_.c_str(),
                    static_cast<long long>(gone_));
}

} // namespace orvane
