#include "operation/subset.h"

#include "column/record_stream.h"
#include "operation/row_batch.h"

#include <orvane/util.h>

#include <algorithm>
#include <map>
#include <memory>

namespace orvane {

namespace {

constexpr auto batch_rows = static_cast<std::int64_t>(expr::ExpressionExecutor::batch_size);
constexpr std::int64_t rows_per_block = 32 * batch_rows;
constexpr std::int64_t parts_per_block = 32; // of found rows, when they are put together

std::vector<int> columns_of(const expr::BoundExpression &expression)
{
    const auto columns = expression.columns();
    return {columns.begin(), columns.end()};
}

// The parts one after the other.
Result<RowNumbers> joined(const std::vector<RowNumbers> &parts, Work &work)
{
    std::vector<std::size_t> starts;
    std::size_t count = 0;
    for (const RowNumbers &part : parts) {
        starts.push_back(count);
        count += part.size();
    }
    RowNumbers all(count);
    if (count == 0)
        return all;
    Status done = work.for_blocks(static_cast<std::int64_t>(parts.size()), parts_per_block, 0.5,
                                  [&](std::int64_t begin, std::int64_t end, unsigned) {
                                      for (auto i = static_cast<std::size_t>(begin);
                                           i < static_cast<std::size_t>(end); ++i)
                                          std::copy(parts[i].begin(), parts[i].end(),
                                                    all.begin() + static_cast<std::ptrdiff_t>(starts[i]));
                                      return Status();
                                  });
    if (!done.ok())
        return done;
    return all;
}

// Records as they are read, as expressions read them.
class StreamBatch : public expr::ColumnBatch
{
public:
    // `fields` are those of the stream, by their places in the table.
    StreamBatch(const RecordStream &stream, const std::vector<int> &fields) : stream_(stream), fields_(fields)
    {
    }

    void set_size(std::size_t size) { size_ = size; }
    std::size_t size() const override { return size_; }
    Result<expr::ColumnView> column(std::size_t column) override
    {
        const auto found = std::find(fields_.begin(), fields_.end(), static_cast<int>(column));
        return view_of_records(stream_.column(static_cast<std::size_t>(found - fields_.begin())), size_,
                               nulls_[column]);
    }

private:
    const RecordStream &stream_;
    const std::vector<int> &fields_;
    std::size_t size_ = 0;
    std::map<std::size_t, std::vector<std::uint8_t>> nulls_;
};

// What one thread tests rows with.
class Tester
{
public:
    Tester(const expr::BoundExpression &condition, double now) : executor_(condition, now) {}
    virtual ~Tester() = default;

    // The rows of [begin, end) for which the condition is true go behind those in `found`.
    virtual Status test(std::int64_t begin, std::int64_t end, RowNumbers &found) = 0;

protected:
    Status select(expr::ColumnBatch &batch, std::int64_t first, RowNumbers &found)
    {
        if (Status selected = executor_.select_all(batch, positions_); !selected.ok())
            return selected;
        const std::size_t before = found.size();
        found.resize(before + positions_.size());
        for (std::size_t i = 0; i < positions_.size(); ++i)
            found[before + i] = static_cast<RowNumber>(first) + positions_[i];
        return Status();
    }

private:
    expr::ExpressionExecutor executor_;
    expr::SelectionVector positions_;
};

class ColumnTester : public Tester
{
public:
    ColumnTester(const Operand &operand, const expr::BoundExpression &condition, double now)
        : Tester(condition, now), batch_(operand)
    {
    }
    Status test(std::int64_t begin, std::int64_t end, RowNumbers &found) override
    {
        for (std::int64_t at = begin; at < end; at += batch_rows) {
            batch_.set_range(at, static_cast<std::size_t>(std::min(batch_rows, end - at)));
            if (Status selected = select(batch_, at, found); !selected.ok())
                return selected;
        }
        return Status();
    }

private:
    RowBatch batch_;
};

class StreamTester : public Tester
{
public:
    StreamTester(const RecordSpan &records, std::span<const RelationField> relation_fields,
                 const std::vector<int> &fields, const expr::BoundExpression &condition, double now)
        : Tester(condition, now), stream_(records, relation_fields), batch_(stream_, fields)
    {
    }
    Status test(std::int64_t begin, std::int64_t end, RowNumbers &found) override
    {
        for (std::int64_t at = begin; at < end; at += stream_.most()) {
            const std::int64_t last = std::min(end, at + stream_.most());
            const auto read = stream_.read(at, last);
            if (!read.ok())
                return read.status();
            if (!*read) {
                shortened_ = true;
                return Status(Code::NotFound, "the file became shorter while it was read");
            }
            batch_.set_size(static_cast<std::size_t>(last - at));
            if (Status selected = select(batch_, at, found); !selected.ok())
                return selected;
        }
        return Status();
    }
    const RecordStream &stream() const { return stream_; }
    bool shortened() const { return shortened_; }

private:
    RecordStream stream_;
    StreamBatch batch_;
    bool shortened_ = false;
};

// Tests the rows of an operand, from decoded columns or from the file as it is read.
class RowTest
{
public:
    RowTest(Operand &operand, const expr::BoundExpression &condition, Work &work)
        : operand_(operand), condition_(condition), work_(work), now_(std_now()),
          fields_(columns_of(condition)), testers_(thread_limit())
    {
    }

    // Loads what is needed, or opens the file where that has no room.
    Status prepare()
    {
        const Operand::Member &member = operand_.members().front();
        const bool own_records =
            operand_.members().size() == 1 && !member.rows && member.snapshot.records > 0;
        if (!own_records || member.table->has_room_for(fields_, member.snapshot))
            return operand_.load(fields_, work_);
        auto file = member.table->open_records(member.snapshot, work_);
        if (!file.ok())
            return file.status();
        file_ = std::move(*file);
        shown_ = member.table->file_name();
        const auto &all = member.table->members().front()->fields();
        for (const int field : fields_)
            relation_fields_.push_back(all[static_cast<std::size_t>(field)]);
        return Status();
    }

    // The rows of [first, last) for which the condition is true, in order.
    Result<RowNumbers> rows(std::int64_t first, std::int64_t last, double share)
    {
        std::vector<RowNumbers> found(static_cast<std::size_t>((last - first) / rows_per_block + 1));
        Status done = work_.for_blocks(
            last - first, rows_per_block, share, [&](std::int64_t begin, std::int64_t end, unsigned thread) {
                return of_thread(thread).test(first + begin, first + end,
                                              found[static_cast<std::size_t>(begin / rows_per_block)]);
            });
        for (const StreamTester *stream : streams())
            if (stream->shortened())
                work_.meet_change();
        if (!done.ok())
            return done;
        return joined(found, work_);
    }

    // What was met in all that was tested, for the end; decoded columns tell of themselves.
    void tell_unreadable() const
    {
        const auto all = streams();
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            std::int64_t count = 0;
            for (const StreamTester *stream : all)
                count += stream->stream().unreadable(i);
            if (count > 0)
                operand_.members().front().table->tell_unreadable(fields_[i], count);
        }
    }

private:
    Tester &of_thread(unsigned thread)
    {
        auto &tester = testers_[thread];
        if (tester)
            return *tester;
        if (!file_) {
            tester = std::make_unique<ColumnTester>(operand_, condition_, now_);
            return *tester;
        }
        const Operand::Member &member = operand_.members().front();
        const RecordSpan records{*file_, member.snapshot.records, member.table->record_size(), shown_};
        tester = std::make_unique<StreamTester>(records, relation_fields_, fields_, condition_, now_);
        return *tester;
    }

    // Those of the threads that took part, where the file is read as a stream.
    std::vector<const StreamTester *> streams() const
    {
        std::vector<const StreamTester *> streams;
        if (file_)
            for (const auto &tester : testers_)
                if (tester)
                    streams.push_back(static_cast<const StreamTester *>(tester.get()));
        return streams;
    }

    Operand &operand_;
    const expr::BoundExpression &condition_;
    Work &work_;
    const double now_; // the same for all rows
    const std::vector<int> fields_;
    std::unique_ptr<RandomAccessFile> file_; // where columns have no room
    std::string shown_;
    std::vector<RelationField> relation_fields_;
    std::vector<std::unique_ptr<Tester>> testers_;
};

} // namespace

Result<expr::BoundExpression> bind_condition(const Table &table, int standing_on, std::string_view text)
{
    const auto parsed = expr::ParsedExpression::parse(text);
    if (!parsed.ok())
        return parsed.status();
    return expr::BoundExpression::bind_condition(*parsed, scope_of(table, standing_on));
}

Result<RowNumbers> subset_rows(Operand &operand, const expr::BoundExpression &condition, Work &work)
{
    RowTest test(operand, condition, work);
    if (Status prepared = test.prepare(); !prepared.ok())
        return prepared;
    auto rows = test.rows(0, operand.row_count(), 0.7);
    test.tell_unreadable();
    return rows;
}

namespace {

// The first or last row of [begin, end) for which the condition is true; -1 where there is none.
Result<std::int64_t> searched(RowTest &test, std::int64_t begin, std::int64_t end, bool backwards)
{
    // Longer and longer stretches, so that a row that is near is found at once.
    std::int64_t stretch = rows_per_block / 8;
    while (begin < end) {
        const std::int64_t first = backwards ? std::max(begin, end - stretch) : begin;
        const std::int64_t last = backwards ? end : std::min(end, begin + stretch);
        const auto rows = test.rows(first, last, 0.1);
        if (!rows.ok())
            return rows.status();
        if (!rows->empty())
            return static_cast<std::int64_t>(backwards ? rows->back() : rows->front());
        (backwards ? end : begin) = backwards ? first : last;
        stretch = std::min<std::int64_t>(stretch * 2, 64 * rows_per_block);
    }
    return std::int64_t{-1};
}

} // namespace

Result<std::int64_t> find_row(Operand &operand, const expr::BoundExpression &condition, std::int64_t from,
                              bool backwards, Work &work)
{
    RowTest test(operand, condition, work);
    if (Status prepared = test.prepare(); !prepared.ok())
        return prepared;
    const std::int64_t count = operand.row_count();
    const std::int64_t begin = backwards ? 0 : std::clamp<std::int64_t>(from + 1, 0, count);
    const std::int64_t end = backwards && from >= 0 ? std::min(from, count) : count;
    auto found = searched(test, begin, end, backwards);
    test.tell_unreadable();
    return found;
}

} // namespace orvane
