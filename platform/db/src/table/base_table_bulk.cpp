// Changing many records of a base table.
#include "table/base_table.h"

#include "base/concat.h"
#include "column/column_update.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace orvane {

namespace {

using Clock = std::chrono::steady_clock;

// What is read, changed and written at a time. The note of a window is as long as the window, and is read by
// everybody who reads meanwhile.
constexpr std::int64_t window_bytes = 256 * 1024;
// Records between two that change are written with them, as they are, if there are no more than this.
constexpr std::int64_t gap_bytes = 8 * 1024;
// Others who wait for the lock ask for it every few milliseconds.
constexpr auto longest_hold = std::chrono::milliseconds(100);
constexpr auto pause_between = std::chrono::milliseconds(5);
// To have more records follow, one after the other, takes longer than to make the key index anew.
constexpr std::size_t keys_to_follow = 1000;

} // namespace

// Some records, and the neighbouring ones among which they lie.
struct BaseTable::BulkWindow {
    std::int64_t first = 0;
    std::int64_t end = 0;
    std::vector<std::int64_t> numbers; // of those to change, ascending
};

namespace {

// Goes through runs of numbers a window at a time.
class WindowCursor
{
public:
    WindowCursor(std::span<const RecordRun> runs, std::int64_t record_size)
        : runs_(runs), longest_(std::max<std::int64_t>(1, window_bytes / record_size)),
          gap_(gap_bytes / record_size), next_(runs.empty() ? 0 : runs.front().first)
    {
    }

    bool at_end() const { return run_ == runs_.size(); }

    template <typename Window>
    void take(Window &window)
    {
        window.numbers.clear();
        window.first = window.end = next_;
        while (!at_end() && next_ - window.end <= gap_ && next_ - window.first < longest_) {
            const std::int64_t end = std::min(runs_[run_].end, window.first + longest_);
            for (; next_ < end; ++next_)
                window.numbers.push_back(next_);
            window.end = end;
            if (next_ == runs_[run_].end && ++run_ < runs_.size())
                next_ = runs_[run_].first;
        }
    }

private:
    std::span<const RecordRun> runs_;
    const std::int64_t longest_; // records
    const std::int64_t gap_;
    std::size_t run_ = 0;
    std::int64_t next_;
};

void copy_over(std::span<char> record, std::size_t offset, std::string_view text)
{
    std::copy(text.begin(), text.end(), record.begin() + static_cast<std::ptrdiff_t>(offset));
}

} // namespace

// What is done with records, in ascending order.
struct BaseTable::BulkEdit {
    BulkEdit(BaseTable &table, const Work &work) : owner(table), asked(work) {}
    virtual ~BulkEdit() = default;

    virtual void begin_window() { stamp = owner.rules_.stamp_text(); }
    // Makes of a record's text, without its line feed, the new one.
    virtual void apply(std::int64_t number, std::span<char> record) = 0;
    // The records below `end` are in the file.
    virtual void tell(std::int64_t) {}

    std::size_t offset_of(int field) const
    {
        return static_cast<std::size_t>(owner.relation_.fields()[static_cast<std::size_t>(field)].offset);
    }
    void put_stamp(std::span<char> record) const
    {
        if (!stamp.empty())
            copy_over(record, offset_of(owner.rules_.timestamp()), stamp);
    }

    BaseTable &owner;
    const Work &asked;
    std::string stamp;
};

namespace {

// Records of one window that were the same kind of change.
struct ToldRecords {
    std::vector<std::int64_t> numbers;
    std::string before;
    std::string after;

    void clear()
    {
        numbers.clear();
        before.clear();
    }
    void add(std::int64_t number, std::string_view text)
    {
        numbers.push_back(number);
        before += text;
    }
    void tell(RecordChange change, std::int64_t end, const ChangeListener &listener) const
    {
        const auto last = std::lower_bound(numbers.begin(), numbers.end(), end);
        const auto count = static_cast<std::size_t>(last - numbers.begin());
        if (count == 0)
            return;
        change.records = {numbers.data(), count};
        change.before = std::string_view(before).substr(0, before.size() / numbers.size() * count);
        change.after = after;
        listener(change);
    }
};

} // namespace

struct BaseTable::BulkPut : BulkEdit {
    BulkPut(BaseTable &table, std::size_t put_field, std::string put_text, const Work &work)
        : BulkEdit(table, work), field(static_cast<int>(put_field)), text(std::move(put_text)),
          offset(offset_of(field)), is_told(asked.listener() && field != owner.rules_.timestamp())
    {
        values.after = text;
    }

    void begin_window() override
    {
        BulkEdit::begin_window();
        values.clear();
        unmarked.clear();
        unmarked.after = owner.relation_.null_record();
        std::span<char> filled(unmarked.after);
        copy_over(filled, offset, text);
        put_stamp(filled);
    }

    void apply(std::int64_t number, std::span<char> record) override
    {
        const std::string_view before(record.data() + offset, text.size());
        const std::string_view whole(record.data(), record.size());
        if (is_told && before != text) {
            if (whole == owner.relation_.null_record())
                unmarked.add(number, whole);
            else
                values.add(number, before);
        }
        copy_over(record, offset, text);
        put_stamp(record);
    }

    void tell(std::int64_t end) override
    {
        if (!is_told)
            return;
        RecordChange change{.kind = RecordChange::Kind::Values,
                            .relation = owner.relation_,
                            .generation = owner.file_.generation(),
                            .field = field};
        values.tell(change, end, *asked.listener());
        change.whole_records = true;
        unmarked.tell(change, end, *asked.listener());
    }

    const int field;
    const std::string text;
    const std::size_t offset;
    const bool is_told;
    ToldRecords values;
    ToldRecords unmarked; // what was marked isn't any more: back means the whole record
};

struct BaseTable::BulkMark : BulkEdit {
    BulkMark(BaseTable &table, const Work &work) : BulkEdit(table, work)
    {
        told.after = owner.relation_.null_record();
    }

    void begin_window() override { told.clear(); }

    void apply(std::int64_t number, std::span<char> record) override
    {
        const std::string_view before(record.data(), record.size());
        if (asked.listener() && before != told.after)
            told.add(number, before);
        copy_over(record, 0, told.after);
    }

    void tell(std::int64_t end) override
    {
        if (asked.listener())
            told.tell({.kind = RecordChange::Kind::Mark,
                       .relation = owner.relation_,
                       .generation = owner.file_.generation(),
                       .whole_records = true},
                      end, *asked.listener());
    }

    ToldRecords told;
};

struct BaseTable::BulkExchange : BulkEdit {
    BulkExchange(BaseTable &table, const RecordChange &told, Direction where, const Work &work)
        : BulkEdit(table, work), change(told), direction(where), length(told.after.size()),
          offset(told.whole_records ? 0 : offset_of(told.field))
    {
    }

    // What of a text counts: all but a whole record's timestamp.
    bool same(std::string_view a, std::string_view b) const
    {
        const int timestamp = owner.rules_.timestamp();
        if (!change.whole_records || timestamp < 0)
            return a == b;
        const std::size_t from = offset_of(timestamp);
        const std::size_t to = from + stamp.size();
        return a.substr(0, from) == b.substr(0, from) && a.substr(to) == b.substr(to);
    }

    void apply(std::int64_t, std::span<char> record) override
    {
        const std::string_view before = change.before.substr(length * position++, length);
        const bool back = direction == Direction::Back;
        const std::string_view expected = back ? change.after : before;
        const std::string_view wanted = back ? before : change.after;
        const std::string_view found(record.data() + offset, length);
        if (found == wanted)
            return;
        if (!same(found, expected) && !same(found, wanted)) {
            ++left;
            return;
        }
        copy_over(record, offset, wanted);
        if (!change.whole_records || wanted != owner.relation_.null_record())
            put_stamp(record);
    }

    const RecordChange &change;
    const Direction direction;
    const std::size_t length;
    const std::size_t offset;
    std::size_t position = 0;
    std::int64_t left = 0;
};

// ---- Windows -------------------------------------------------------------------------------------

void BaseTable::follow_window(FileVersion version_before, const BulkWindow &window, std::string_view after)
{
    if (file_.version() != version_before)
        return;
    std::vector<RecordRun> runs;
    for (const std::int64_t number : window.numbers)
        append_number(runs, number);
    const std::int64_t size = record_size();
    storage_.columns.update(version_before, [&](int field, Column &column) {
        return update_column(column, relation_.fields()[static_cast<std::size_t>(field)], after, size,
                             window.first, runs);
    });
    if (index_.version() != version_before)
        return;
    for (const std::int64_t number : window.numbers) {
        const auto at = static_cast<std::size_t>((number - window.first) * size);
        const auto length = static_cast<std::size_t>(size - 1);
        index_.forget_block(number);
        put_into_index(number, after.substr(at, length));
    }
}

Status BaseTable::change_window(FileEditor &editor, const BulkWindow &window, BulkEdit &edit, Work &work,
                                std::int64_t &done)
{
    std::string before;
    if (Status read = editor.read_run(window.first, window.end - window.first, before); !read.ok())
        return read;
    std::string after = before;
    const auto size = static_cast<std::size_t>(record_size());
    edit.begin_window();
    for (const std::int64_t number : window.numbers) {
        const std::span<char> line =
            std::span<char>(after).subspan(static_cast<std::size_t>(number - window.first) * size, size);
        if (Status checked = editor.check_line(number, {line.data(), size}); !checked.ok())
            return checked;
        edit.apply(number, line.first(size - 1));
    }
    const FileVersion version = file_.version();
    std::int64_t lines = 0;
    Status written = editor.overwrite_run(window.first, before, after, work, lines);
    BulkWindow whole = window;
    whole.end = window.first + lines;
    whole.numbers.erase(std::lower_bound(whole.numbers.begin(), whole.numbers.end(), whole.end),
                        whole.numbers.end());
    follow_window(version, whole, after);
    edit.tell(whole.end);
    done += static_cast<std::int64_t>(whole.numbers.size());
    return written;
}

Status BaseTable::change_many(std::uint64_t generation, std::span<const RecordRun> records, BulkEdit &edit,
                              Work &work, std::int64_t &done)
{
    done = 0;
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    const std::int64_t count = count_of(records);
    if (count > static_cast<std::int64_t>(keys_to_follow))
        index_.set_version(0);
    WindowCursor cursor(records, record_size());
    BulkWindow window;
    while (!cursor.at_end()) {
        {
            auto hold = editor_.begin(FileEditor::Purpose::Change, work);
            if (!hold.ok())
                return hold.status();
            const auto begin = Clock::now();
            while (!cursor.at_end() && Clock::now() - begin < longest_hold) {
                cursor.take(window);
                if (file_.generation() != generation)
                    return stale(window.first);
                if (Status changed = change_window(hold->editor(), window, edit, work, done); !changed.ok())
                    return changed;
            }
        }
        if (cursor.at_end())
            break;
        work.advance_to(static_cast<double>(done) / static_cast<double>(count));
        if (Status asked = work.poll(); !asked.ok())
            return asked;
        std::this_thread::sleep_for(pause_between);
    }
    return Status();
}

// ---- Changes -------------------------------------------------------------------------------------

Status BaseTable::put_many(std::span<const RecordRun> records, std::size_t field, const FieldValue &value,
                           Work &work, std::int64_t &done)
{
    return put_many_as_of(file_.generation(), records, field, value, work, done);
}

Status BaseTable::put_many_as_of(std::uint64_t generation, std::span<const RecordRun> records,
                                 std::size_t field, const FieldValue &value, Work &work, std::int64_t &done)
{
    done = 0;
    if (Status writable = check_writable(); !writable.ok())
        return writable;
    auto text = rules_.field_text(field, value);
    if (!text.ok())
        return of_file(text.status(), "");
    BulkPut put(*this, field, std::move(*text), work);
    return change_many(generation, records, put, work, done);
}

Status BaseTable::mark_many(std::span<const RecordRun> records, Work &work, std::int64_t &done)
{
    BulkMark mark(*this, work);
    return change_many(file_.generation(), records, mark, work, done);
}

Status BaseTable::exchange(const RecordChange &change, Direction direction, Work &work, std::int64_t &left)
{
    std::vector<RecordRun> runs;
    for (const std::int64_t number : change.records)
        append_number(runs, number);
    BulkExchange exchange(*this, change, direction, work);
    std::int64_t done = 0;
    Status exchanged = change_many(change.generation, runs, exchange, work, done);
    left = exchange.left;
    return exchanged;
}

} // namespace orvane
