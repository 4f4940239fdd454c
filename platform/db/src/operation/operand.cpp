#include "operation/operand.h"

#include "base/concat.h"
#include "base/wide_vectors.h"
#include "work/machine_memory.h"

#include <algorithm>
#include <array>
#include <string>

namespace orvane {

namespace {

constexpr std::int64_t rows_per_block = 128 << 10;

template <typename T>
void gather_values(const RowColumn &from, const RowNumber *chosen, const Buffer<T> &values, Buffer<T> &out,
                   std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        out[i] = values[from.at(chosen[i])];
}

// The records of the chosen rows, which may be where they are put.
void choose_rows(const RowNumber *of_member, std::span<const RowNumber> chosen, RowNumber *out)
{
    if (!of_member) {
        if (out != chosen.data())
            std::copy(chosen.begin(), chosen.end(), out);
        return;
    }
    for (std::size_t i = 0; i < chosen.size(); ++i)
        out[i] = chosen[i] == null_row ? null_row : of_member[chosen[i]];
}

// In several sums, of which a compiler makes wide ones.
ORVANE_WIDE_VECTORS RowBounds bounds_of(std::span<const RowNumber> rows)
{
    constexpr std::size_t lanes = 32;
    std::array<RowNumber, lanes> ends{};
    std::array<RowNumber, lanes> least;
    least.fill(null_row); // of the rows' ends: 0 where one is the null record
    const RowNumber *const row = rows.data();
    const std::size_t whole = rows.size() / lanes * lanes;
    for (std::size_t at = 0; at < whole; at += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const RowNumber end = row[at + lane] + 1;
            ends[lane] = ends[lane] > end ? ends[lane] : end;
            least[lane] = least[lane] < end ? least[lane] : end;
        }
    RowBounds bounds{*std::max_element(ends.begin(), ends.end()),
                     whole > 0 && *std::min_element(least.begin(), least.end()) == 0};
    for (std::size_t at = whole; at < rows.size(); ++at)
        bounds.add(row[at]);
    return bounds;
}

} // namespace

void RowColumn::gather(const RowNumber *chosen, Column &out) const
{
    const auto count = static_cast<std::size_t>(out.count);
    out.has_nulls = has_nulls;
    switch (column->storage()) {
    case ColumnStorage::Integer:
        gather_values(*this, chosen, column->integers, out.integers, count);
        break;
    case ColumnStorage::Real:
        gather_values(*this, chosen, column->reals, out.reals, count);
        break;
    case ColumnStorage::Text:
        gather_values(*this, chosen, column->codes, out.codes, count);
        out.texts = column->texts;
        out.null_code = column->null_code;
        out.codes.back() = column->null_code;
        break;
    }
}

Operand::Operand(std::shared_ptr<Table> table) : table_(std::move(table))
{
    if (auto view = std::dynamic_pointer_cast<View>(table_)) {
        places_ = view->field_places();
        for (const ViewMember &member : view->member_tables())
            members_.push_back(Member{member.table, member.rows.data(), member.has_null_rows, {}, {}});
        view_ = std::move(view);
    } else {
        for (std::size_t field = 0; field < table_->fields().size(); ++field)
            places_.push_back({0, static_cast<int>(field)});
        members_.push_back(Member{std::dynamic_pointer_cast<RecordTable>(table_), nullptr, false, {}, {}});
    }
    for (Member &member : members_)
        member.columns.resize(member.table->fields().size());
}

Status Operand::look(Snapshots &snapshots)
{
    looked_ = true;
    if (view_ && !view_->refusal().ok())
        return view_->refusal();
    for (std::size_t i = 0; i < members_.size(); ++i) {
        Member &member = members_[i];
        member.snapshot = snapshots.of(member.table);
        if (member.snapshot.records >= max_view_rows)
            return Status(Code::Argument,
                          concat("table ", member.table->name(), " has ", member.snapshot.records,
                                 " records; views can be made of less than ", max_view_rows));
        if (view_ && view_->member_tables()[i].generation != member.snapshot.generation)
            return outdated(table_->name(), *member.table);
        if (view_ && view_->member_tables()[i].end > member.snapshot.records) {
            const Status gone(Code::NotFound,
                              concat("view ", table_->name(), " has rows of records of table ",
                                     member.table->name(), " that are gone: it has ", member.snapshot.records,
                                     " records now; free the ", "view and make it again"));
            return member.snapshot.refusal.ok() ? gone : gone.with_line(member.snapshot.refusal.message());
        }
    }
    row_count_ = view_ ? view_->row_count() : members_.front().snapshot.records;
    return Status();
}

Status Operand::load(std::span<const int> fields, Work &work)
{
    if (!looked_)
        if (Status looked = look(work.snapshots()); !looked.ok())
            return looked;
    for (std::size_t i = 0; i < members_.size(); ++i) {
        Member &member = members_[i];
        std::vector<int> wanted;
        for (const int field : fields) {
            const View::FieldPlace place = place_of(field);
            const auto at = static_cast<std::size_t>(place.field);
            if (place.member == static_cast<int>(i) && !member.columns[at] &&
                std::find(wanted.begin(), wanted.end(), place.field) == wanted.end())
                wanted.push_back(place.field);
        }
        if (wanted.empty())
            continue;
        auto columns = member.table->columns(wanted, member.snapshot, work);
        if (!columns.ok())
            return columns.status();
        for (std::size_t k = 0; k < wanted.size(); ++k)
            member.columns[static_cast<std::size_t>(wanted[k])] = std::move((*columns)[k]);
    }
    return Status();
}

RowColumn Operand::column(int field) const
{
    const View::FieldPlace place = place_of(field);
    const Member &member = members_[static_cast<std::size_t>(place.member)];
    const Column *column = member.columns[static_cast<std::size_t>(place.field)].get();
    return RowColumn{column, member.rows, column->has_nulls || member.has_null_rows};
}

Result<std::vector<ViewMember>> Operand::choose(RowNumbers chosen, Work &work) const
{
    std::vector<ViewMember> made;
    for (const Member &member : members_) {
        // The rows of a table are the records: those of the last member can stay where they are.
        const bool stay = !member.rows && &member == &members_.back();
        RowNumbers other(stay ? 0 : chosen.size());
        RowNumbers &rows = stay ? chosen : other;
        std::vector<RowBounds> bounds(thread_limit());
        Status done = work.for_blocks(static_cast<std::int64_t>(chosen.size()), rows_per_block, 0.3,
                                      [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                                          const auto from = static_cast<std::size_t>(begin);
                                          const auto count = static_cast<std::size_t>(end - begin);
                                          choose_rows(member.rows, {&chosen[from], count}, &rows[from]);
                                          bounds[thread].add(bounds_of({&rows[from], count}));
                                          return Status();
                                      });
        if (!done.ok())
            return done;
        made.push_back(ViewMember{member.table, std::move(rows)});
        made.back().generation = member.snapshot.generation;
        for (const RowBounds &found : bounds) {
            made.back().end = std::max(made.back().end, found.end);
            made.back().has_null_rows |= found.has_null_rows;
        }
    }
    return made;
}

std::vector<Status> Operand::remarks() const
{
    std::vector<Status> remarks;
    for (const Member &member : members_)
        if (!member.snapshot.refusal.ok())
            remarks.push_back(member.snapshot.refusal);
    return remarks;
}

// ---- Memory --------------------------------------------------------------------------------------

Status check_memory(double bytes, const std::string &what)
{
    if (bytes < 64 << 20)
        return Status();
    const auto available = static_cast<double>(available_memory());
    if (bytes <= available)
        return Status();
    const auto megabytes = [](double number) { return static_cast<std::int64_t>(number / (1 << 20)); };
    return Status(Code::Memory, concat("out of memory: ", what, ", which takes ", megabytes(bytes), " MB; ",
                                       megabytes(available), " MB are free"));
}

} // namespace orvane
