// Table files, and changes of them. The input is a table file; behind a line "%%" follow changes, one a line:
//     p RECORD FIELD VALUE    put a value
//     a VALUE|VALUE|…         add a record; k: if there is none with its key
//     m RECORD                mark
//     c                       crunch
//     g TEXT                  another program appends the text; with a $ at its end, a line
//     t COUNT                 another program cuts so many bytes off
// The file is tried as it is; and, since few texts have lines of the right width, with every line cut or
// filled up.
#include "check.h"
#include "fuzzers.h"
#include "world.h"

#include "column/record_stream.h"
#include "operations/derived.h"
#include "table/base_table.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace orvane::fuzz {

namespace {

constexpr std::size_t most_records = 40; // of a file that is tried with its lines fitted
constexpr std::size_t most_changes = 12;

const std::string path = World::table_path("every");

// ---- Reading -------------------------------------------------------------------------------------

// A number or text that a sorted view goes by; what can't be read counts as null.
struct SortKey {
    long double number = 0; // holds every integer
    std::string text;
    auto operator<=>(const SortKey &) const = default;
};

class Reader
{
public:
    explicit Reader(const MemoryFileSystem &files, Dbptr db)
        : table_(dblookup(db, "", "every", "dbALL", "dbALL")), bytes_(files.read(path)),
          base_(std::dynamic_pointer_cast<BaseTable>(record_table_of(table_))),
          record_size_(static_cast<std::size_t>(base_->record_size()))
    {
    }

    // What the calls answer fits the bytes, decoded columns fit what the calls answer, and views fit those.
    void check_all()
    {
        check();
        if (!whole_ || count_ == 0)
            return;
        const std::size_t field = bytes_.size() % base_->fields().size();
        check_order(field);
        check_groups(field);
        check_nulls(field);
    }

    void check()
    {
        count_ = is_taken() ? bytes_.size() / record_size_ : 0;
        FUZZ_CHECK(integer(table_, dbRECORD_COUNT) == static_cast<int64_t>(count_), bytes_);
        FUZZ_CHECK(take_log().empty() == is_taken(), bytes_);
        whole_ = true;
        for (std::size_t record = 0; record < count_; ++record)
            check_record(record);
        check_columns();
        elog_clear();
    }

private:
    // A first line of the right width, and a line feed where the last whole record ends.
    bool is_taken() const
    {
        const std::size_t line_feed = bytes_.find('\n');
        if (bytes_.size() < record_size_)
            return line_feed == std::string::npos;
        return line_feed == record_size_ - 1 &&
               bytes_[bytes_.size() / record_size_ * record_size_ - 1] == '\n';
    }

    std::string_view line(std::size_t record) const
    {
        return std::string_view(bytes_).substr(record * record_size_, record_size_);
    }
    std::string_view cell(std::size_t record, std::size_t field) const
    {
        const TableField &place = base_->fields()[field];
        return line(record).substr(static_cast<std::size_t>(place.offset),
                                   static_cast<std::size_t>(place.attribute->width));
    }
    Dbptr at(std::size_t record, int64_t field = dbALL) const
    {
        Dbptr pointer = table_;
        pointer.record = static_cast<int64_t>(record);
        pointer.field = field;
        return pointer;
    }

    void check_record(std::size_t record)
    {
        if (line(record).find('\n') != record_size_ - 1) {
            whole_ = false;
            char buffer[1000];
            FUZZ_CHECK(dbget(at(record), buffer, sizeof buffer) == dbERROR_FORMAT, take_log());
            FUZZ_CHECK(!take_log().empty(), "a failure says why");
            return;
        }
        FUZZ_CHECK(whole_text(at(record)) + "\n" == line(record), std::string(line(record)));
        for (std::size_t field = 0; field < base_->fields().size(); ++field) {
            const Dbptr place = at(record, static_cast<int64_t>(field));
            FUZZ_CHECK(whole_text(place) == cell(record, field), std::string(cell(record, field)));
            DbValue value{};
            const int code = dbgetv(place, nullptr, &value);
            const std::string log = take_log();
            FUZZ_CHECK(code == 0 || code == dbERROR_VALUE, log);
            FUZZ_CHECK((code == 0) == log.empty(), log);
            if (value.type == dbSTRING && value.text) {
                const std::string_view text = cell(record, field);
                FUZZ_CHECK(text.find('\0') != std::string_view::npos || value.text == trimmed_right(text),
                           value.text);
            }
            free(value.text);
        }
    }

    void check_columns()
    {
        Work work("fuzz");
        const Snapshot snapshot = base_->snapshot();
        std::vector<int> fields;
        for (std::size_t field = 0; field < base_->fields().size(); ++field)
            fields.push_back(static_cast<int>(field));
        const auto columns = base_->columns(fields, snapshot, work);
        FUZZ_CHECK(columns.ok() == whole_, columns.ok() ? bytes_ : std::string(columns.status().message()));
        if (!columns.ok())
            return;
        for (std::size_t field = 0; field < fields.size(); ++field)
            check_column(*(*columns)[field], field);
        if (count_ > 0)
            check_stream(snapshot, *columns, work);
    }

    void check_column(const Column &column, std::size_t field)
    {
        const Attribute &attribute = *base_->fields()[field].attribute;
        FUZZ_CHECK(column.count == static_cast<std::int64_t>(count_), attribute.name);
        bool has_nulls = false;
        for (std::size_t record = 0; record <= count_; ++record) {
            const std::string_view text =
                record < count_ ? cell(record, field) : std::string_view(attribute.null);
            const auto value = decode_field(attribute, text);
            const std::string about = attribute.name + " '" + std::string(text) + "'";
            switch (column.storage()) {
            case ColumnStorage::Integer:
                FUZZ_CHECK(column.integers[record] == (value ? value->integer : attribute.null_integer),
                           about);
                has_nulls |= record < count_ && column.integers[record] == attribute.null_integer;
                break;
            case ColumnStorage::Real:
                FUZZ_CHECK(column.reals[record] == (value ? value->real : attribute.null_real), about);
                has_nulls |= record < count_ && column.reals[record] == attribute.null_real;
                break;
            case ColumnStorage::Text:
                FUZZ_CHECK(column.texts->text(column.codes[record]) == trimmed_right(text), about);
                has_nulls |= record < count_ && column.codes[record] == column.null_code;
                break;
            }
        }
        FUZZ_CHECK(column.has_nulls || !has_nulls, attribute.name);
    }

    // Read piece by piece it is the same.
    void check_stream(const Snapshot &snapshot, const std::vector<ColumnPtr> &columns, Work &work)
    {
        const auto file = base_->open_records(snapshot, work);
        FUZZ_CHECK(file.ok(), std::string(file.status().message()));
        std::vector<RelationField> fields;
        for (const TableField &field : base_->fields())
            fields.push_back({field.attribute, field.offset});
        RecordStream stream(RecordSpan{**file, static_cast<std::int64_t>(count_), base_->record_size(), path},
                            fields);
        const auto half = static_cast<std::int64_t>(count_ / 2);
        for (const auto &[begin, end] :
             {std::pair<std::int64_t, std::int64_t>{0, half}, {half, static_cast<std::int64_t>(count_)}}) {
            const auto read = stream.read(begin, end);
            FUZZ_CHECK(read.ok() && *read, "");
            for (std::size_t field = 0; field < fields.size(); ++field)
                for (auto record = static_cast<std::size_t>(begin); record < static_cast<std::size_t>(end);
                     ++record)
                    check_same(*columns[field], record, stream.column(field),
                               record - static_cast<std::size_t>(begin));
        }
    }

    static void check_same(const Column &a, std::size_t at_a, const Column &b, std::size_t at_b)
    {
        switch (a.storage()) {
        case ColumnStorage::Integer:
            FUZZ_CHECK(a.integers[at_a] == b.integers[at_b], std::to_string(at_a));
            break;
        case ColumnStorage::Real:
            FUZZ_CHECK(a.reals[at_a] == b.reals[at_b], std::to_string(at_a));
            break;
        case ColumnStorage::Text:
            FUZZ_CHECK(a.texts->text(a.codes[at_a]) == b.texts->text(b.codes[at_b]), std::to_string(at_a));
            break;
        }
    }

    SortKey key_of(std::size_t record, std::size_t field) const
    {
        const Attribute &attribute = *base_->fields()[field].attribute;
        const auto value = decode_field(attribute, cell(record, field));
        if (is_integer(attribute.type))
            return {static_cast<long double>(value ? value->integer : attribute.null_integer), {}};
        if (is_real(attribute.type))
            return {value ? value->real : attribute.null_real, {}};
        return {0, std::string(trimmed_right(cell(record, field)))};
    }

    // The records that a view's rows stand for.
    std::vector<int64_t> records_of(Dbptr view) const
    {
        const int64_t count = integer(view, dbRECORD_COUNT);
        std::vector<int64_t> rows;
        for (int64_t row = 0; row < count; ++row)
            rows.push_back(row);
        std::vector<int64_t> records(rows.size());
        FUZZ_CHECK(dbfind_rows(view, table_, rows.data(), rows.size(), records.data()) == 0, take_log());
        return records;
    }

    void check_order(std::size_t field) const
    {
        const std::string &name = base_->fields()[field].attribute->name;
        const Dbptr sorted = dbsort(table_, Names{name.c_str()}, 0, "sorted");
        FUZZ_CHECK(sorted.table >= 0, take_log());
        const auto records = records_of(sorted);
        FUZZ_CHECK(records.size() == count_, name);
        for (std::size_t row = 1; row < records.size(); ++row) {
            const auto before = static_cast<std::size_t>(records[row - 1]);
            const auto here = static_cast<std::size_t>(records[row]);
            const SortKey one = key_of(before, field);
            const SortKey two = key_of(here, field);
            FUZZ_CHECK(one < two || (one == two && before < here),
                       name + " " + std::to_string(row) + "\n" + bytes_);
        }
        FUZZ_CHECK(dbfree(sorted) == 0, take_log());
    }

    void check_groups(std::size_t field) const
    {
        const std::string &name = base_->fields()[field].attribute->name;
        const Dbptr sorted = dbsort(table_, Names{name.c_str()}, 0, "sorted");
        const Dbptr groups = dbgroup(table_, Names{name.c_str()}, "groups", 1);
        const Dbptr rows = dbungroup(groups, "rows");
        FUZZ_CHECK(groups.table >= 0 && rows.table >= 0, take_log());
        FUZZ_CHECK(records_of(rows) == records_of(sorted), name + "\n" + bytes_);
        for (const Dbptr view : {rows, groups, sorted})
            FUZZ_CHECK(dbfree(view) == 0, take_log());
    }

    void check_nulls(std::size_t field) const
    {
        const Attribute &attribute = *base_->fields()[field].attribute;
        if (attribute.type == FieldType::Dbptr)
            return; // of which expressions know nothing
        const Dbptr nulls = dbsubset(table_, ("isnull(" + attribute.name + ")").c_str(), "nulls");
        FUZZ_CHECK(nulls.table >= 0, take_log());
        std::vector<int64_t> expected;
        for (std::size_t record = 0; record < count_; ++record) {
            const std::string_view text = cell(record, field);
            if (!decode_field(attribute, text) || is_null_field(attribute, text))
                expected.push_back(static_cast<int64_t>(record));
        }
        FUZZ_CHECK(records_of(nulls) == expected, attribute.name + "\n" + bytes_);
        FUZZ_CHECK(dbfree(nulls) == 0, take_log());
    }

    const Dbptr table_;
    const std::string bytes_;
    const std::shared_ptr<BaseTable> base_;
    const std::size_t record_size_;
    std::size_t count_ = 0;
    bool whole_ = true;
};

// ---- Changing ------------------------------------------------------------------------------------

class Editor
{
public:
    Editor(World &world, Dbptr db)
        : world_(world), table_(dblookup(db, "", "every", "dbALL", "dbALL")),
          base_(std::dynamic_pointer_cast<BaseTable>(record_table_of(table_))),
          record_size_(static_cast<std::size_t>(base_->record_size())), rules_(relation(), "lddate")
    {
        elog_clear();
    }

    // A line of changes, after which the file is as the change says, or as it was.
    void apply(std::string_view line)
    {
        before_ = world_.files.read(path);
        const char what = line.empty() ? ' ' : line.front();
        line.remove_prefix(std::min<std::size_t>(2, line.size()));
        switch (what) {
        case 'p':
            put(line);
            break;
        case 'a':
        case 'k':
            add(line, what == 'k');
            break;
        case 'm':
            mark(number(line));
            break;
        case 'c':
            crunch();
            break;
        case 'g':
            grow(line);
            break;
        case 't':
            world_.files.change(
                path, before_.substr(0, before_.size() - std::min(before_.size(),
                                                                  static_cast<std::size_t>(number(line)))));
            break;
        default:
            break;
        }
    }

private:
    const Relation &relation() const { return *base_->members().front(); }
    std::string after() const { return world_.files.read(path); }
    std::size_t count() const { return before_.size() / record_size_; }

    static int64_t number(std::string_view text)
    {
        return std::abs(std::strtol(std::string(text.substr(0, 9)).c_str(), nullptr, 10));
    }

    // Failures say why and leave the file.
    bool succeeded(int64_t code) const
    {
        const std::string log = take_log();
        FUZZ_CHECK((code >= 0) == log.empty(), log);
        FUZZ_CHECK(code >= 0 || after() == before_, log);
        return code >= 0;
    }

    // The bytes with the timestamp of one record made equal.
    std::string stamped(std::string bytes, std::size_t record) const
    {
        const RelationField &place = relation().fields().back();
        const auto first = record * record_size_ + static_cast<std::size_t>(place.offset);
        FUZZ_CHECK(first + static_cast<std::size_t>(place.attribute->width) <= bytes.size(), bytes);
        return bytes.replace(first, static_cast<std::size_t>(place.attribute->width), "T");
    }

    void put(std::string_view line)
    {
        Dbptr at = table_;
        at.record = number(take_until(line, ' '));
        const std::string name(take_until(line, ' '));
        std::string value(line);
        DbValue put{};
        put.type = dbSTRING;
        put.text = value.data();
        if (!succeeded(dbputv(at, name.c_str(), &put)))
            return;
        const auto record = static_cast<std::size_t>(at.record);
        FUZZ_CHECK(record < count(), after());
        const int field = relation().field_index(name);
        const RelationField &place = relation().fields()[static_cast<std::size_t>(field)];
        const auto first = record * record_size_ + static_cast<std::size_t>(place.offset);
        const auto width = static_cast<std::size_t>(place.attribute->width);
        std::string expected = before_;
        expected.replace(first, width, after().substr(first, width));
        FUZZ_CHECK(stamped(after(), record) == stamped(expected, record), after());
        const std::string_view stored = std::string_view(expected).substr(first, width);
        FUZZ_CHECK(decode_field(*place.attribute, stored) || is_null_field(*place.attribute, stored),
                   std::string(stored));
    }

    // A last line without its line feed becomes a record; one that isn't finished goes.
    std::string mended() const
    {
        std::string bytes = before_.substr(0, count() * record_size_);
        const std::string tail = before_.substr(bytes.size());
        return tail.size() == record_size_ - 1 ? bytes + tail + "\n" : bytes;
    }

    void add(std::string_view line, bool checked)
    {
        const std::string record = record_text("every", line);
        const bool was_there = world_.files.has(path);
        const int64_t at = checked ? dbaddchk(table_, record.c_str()) : dbadd(table_, record.c_str());
        if (!succeeded(at)) {
            FUZZ_CHECK(world_.files.has(path) == was_there, "a file was left");
            return;
        }
        if (checked && after() == before_) {
            FUZZ_CHECK(at < static_cast<int64_t>(count()), record);
            return;
        }
        const std::string expected = mended() + record + "\n";
        FUZZ_CHECK(at == static_cast<int64_t>(expected.size() / record_size_) - 1, std::to_string(at));
        FUZZ_CHECK(stamped(after(), static_cast<std::size_t>(at)) ==
                       stamped(expected, static_cast<std::size_t>(at)),
                   after());
    }

    void mark(int64_t record)
    {
        Dbptr at = table_;
        at.record = record;
        if (!succeeded(dbmark(at)))
            return;
        FUZZ_CHECK(record < static_cast<int64_t>(count()), after());
        std::string expected = before_;
        expected.replace(static_cast<std::size_t>(record) * record_size_, record_size_ - 1,
                         relation().null_record());
        FUZZ_CHECK(after() == expected, after());
    }

    void crunch()
    {
        if (!succeeded(dbcrunch(table_)))
            return;
        const std::string whole = mended();
        std::string expected;
        for (std::size_t first = 0; first < whole.size(); first += record_size_)
            if (!rules_.is_marked(std::string_view(whole).substr(first, record_size_ - 1)))
                expected += whole.substr(first, record_size_);
        FUZZ_CHECK(after() == expected, after() + "\n" + expected);
    }

    void grow(std::string_view line)
    {
        std::string text(line);
        if (text.ends_with('$')) {
            text.back() = '\n';
            text.insert(0, record_size_ - std::min(record_size_, text.size()), ' ');
        }
        world_.files.change(path, before_ + text);
    }

    World &world_;
    const Dbptr table_;
    const std::shared_ptr<BaseTable> base_;
    const std::size_t record_size_;
    const RecordRules rules_;
    std::string before_;
};

void try_file(std::string_view bytes, std::string_view changes)
{
    World world;
    world.files.write(path, bytes);
    const Opened open(World::descriptor_path, "r+");
    Reader(world.files, open.pointer).check_all();
    Editor editor(world, open.pointer);
    for (std::size_t change = 0; change < most_changes && !changes.empty(); ++change) {
        editor.apply(take_until(changes, '\n'));
        // What is kept of the file follows the change.
        Reader(world.files, open.pointer).check();
    }
    // What is read of it anew is the same.
    const Opened again(World::descriptor_path);
    Reader(world.files, again.pointer).check_all();
    const auto names = world.files.list(MemoryFileSystem::folder);
    for (const std::string &name : names.value())
        FUZZ_CHECK(name == "quakes" || name == "quakes.every" || name == "fuzz.yaml", name);
}

std::string with_fitted_lines(std::string_view text)
{
    static const std::size_t width = record_text("every", "").size();
    std::string fit;
    for (const std::string_view line : split(text, '\n'))
        if (fit.size() < most_records * (width + 1))
            fit += fitted(line, width, false) + "\n";
    // A last line that isn't finished stays so.
    if (!text.empty() && text.back() != '\n')
        fit.resize(fit.size() - std::min<std::size_t>(fit.size(), 1 + text.size() % 3 * 40));
    return fit;
}

} // namespace

void fuzz_table_file(std::string_view input)
{
    const std::size_t end = std::min(input.find("%%\n"), input.size());
    const std::string_view bytes = input.substr(0, end);
    const std::string_view changes = input.substr(std::min(end + 3, input.size()));
    if (changes.find('\0') != std::string_view::npos)
        return; // ends a text for a call
    try_file(bytes, changes);
    const std::string fit = with_fitted_lines(bytes);
    if (fit != bytes)
        try_file(fit, changes);
}

} // namespace orvane::fuzz
