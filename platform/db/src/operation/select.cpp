#include "operation/select.h"

#include "base/concat.h"
#include "operation/field_list.h"
#include "operation/line_maker.h"
#include "operation/row_reader.h"

#include <algorithm>

namespace orvane {

namespace {

// The first batch is small, so that a reader who wants a few lines has them at once.
constexpr std::int64_t first_batch_rows = 256;
// What is read for a part, or written of it if that is more: it stays in the processor's cache, and the hook
// is asked often enough also where what is written goes nowhere fast.
constexpr std::size_t part_bytes = 512 << 10;

bool are_all_fields(const Table &table, std::span<const std::string> names)
{
    return std::equal(
        names.begin(), names.end(), table.fields().begin(), table.fields().end(),
        [](const std::string &name, const TableField &field) { return name == field.attribute->name; });
}

// Writes rows as lines, which several threads make part by part.
class RowWriting
{
public:
    RowWriting(RowReader &reader, const LineMaker &lines, TextStream &stream, Work &work)
        : reader_(reader), lines_(lines), stream_(stream), work_(work), parts_(Work::part_slots()),
          part_rows_(static_cast<std::int64_t>(
              std::max<std::size_t>(1, part_bytes / std::max(reader.row_bytes(), lines.most_bytes() / 2))))
    {
    }

    // The rows [begin, end) in parts that are read where their lines are made.
    Status write_parts(std::int64_t begin, std::int64_t end, double share)
    {
        return work_.for_parts(
            end - begin, part_rows_, share,
            [&](std::int64_t from, std::int64_t to, unsigned slot) {
                Part &part = parts_[slot];
                if (Status read = reader_.read(begin + from, begin + to, part.records); !read.ok())
                    return read;
                make_lines(part.records, 0, static_cast<std::size_t>(to - from), part);
                return Status();
            },
            [&](std::int64_t from, std::int64_t to, unsigned slot) {
                const Part &part = parts_[slot];
                return write(part.records, 0, static_cast<std::size_t>(to - from), part);
            });
    }

    // The rows [begin, end), no more than the reader reads at a time, read before their lines are made.
    Status write_batch(std::int64_t begin, std::int64_t end, double share)
    {
        if (Status read = reader_.read(begin, end, batch_); !read.ok())
            return read;
        return work_.for_parts(
            end - begin, part_rows_, share,
            [&](std::int64_t from, std::int64_t to, unsigned slot) {
                make_lines(batch_, static_cast<std::size_t>(from), static_cast<std::size_t>(to),
                           parts_[slot]);
                return Status();
            },
            [&](std::int64_t from, std::int64_t to, unsigned slot) {
                return write(batch_, static_cast<std::size_t>(from), static_cast<std::size_t>(to),
                             parts_[slot]);
            });
    }

private:
    struct Part {
        RowRecords records;
        LineText text;
    };

    void make_lines(const RowRecords &records, std::size_t first, std::size_t end, Part &part) const
    {
        part.text.clear();
        if (!lines_.lines_are_records())
            lines_.append(records, first, end, part.text);
    }
    Status write(const RowRecords &records, std::size_t first, std::size_t end, const Part &part) const
    {
        if (!lines_.lines_are_records())
            return stream_.write(part.text.text());
        const char *const begin = records.record(0, first);
        return stream_.write({begin, static_cast<std::size_t>(records.record(0, end) - begin)});
    }

    RowReader &reader_;
    const LineMaker &lines_;
    TextStream &stream_;
    Work &work_;
    std::vector<Part> parts_;
    RowRecords batch_;
    const std::int64_t part_rows_;
};

} // namespace

std::vector<SelectedField> all_fields(const Table &table)
{
    std::vector<SelectedField> selected;
    for (std::size_t i = 0; i < table.fields().size(); ++i) {
        const TableField &field = table.fields()[i];
        const int found = table.field_index(field.attribute->name, -1);
        selected.push_back(
            {static_cast<int>(i), found == static_cast<int>(i)
                                      ? field.attribute->name
                                      : concat(field.relation->name, '.', field.attribute->name)});
    }
    return selected;
}

Result<std::vector<SelectedField>> selected_fields(const Table &table, int standing_on,
                                                   std::span<const std::string> names)
{
    if (names.empty())
        return Status(Code::Argument, "no fields are given");
    if (are_all_fields(table, names))
        return all_fields(table);
    std::vector<SelectedField> selected;
    for (const std::string &name : names) {
        const auto field = named_field(table, standing_on, name);
        if (!field.ok())
            return field.status();
        selected.push_back({*field, name});
    }
    return selected;
}

Status write_names(const Table &table, std::span<const SelectedField> fields, const TextForm &form,
                   TextStream &stream)
{
    std::string &out = stream.text();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const TableField &field = table.fields()[static_cast<std::size_t>(fields[i].field)];
        if (i > 0)
            out.append(form.separator());
        form.append_name(fields[i].name, *field.attribute, fields.size() == 1, out);
    }
    out += '\n';
    return stream.finish();
}

Status write_rows(const Operand &operand, const RowRange &rows, std::span<const SelectedField> fields,
                  const TextForm &form, TextStream &stream, Work &work)
{
    std::vector<bool> wanted(operand.members().size());
    for (const SelectedField &selected : fields)
        wanted[static_cast<std::size_t>(operand.place_of(selected.field).member)] = true;
    RowReader reader(operand, std::move(wanted), work);
    if (Status opened = reader.open(); !opened.ok())
        return opened;
    const LineMaker lines(operand, fields, form);
    RowWriting writing(reader, lines, stream, work);
    const bool by_parts = reader.is_for_any_thread();
    const std::int64_t most = by_parts ? rows.end - rows.first : reader.most();
    std::int64_t batch = std::min(first_batch_rows, most);
    for (std::int64_t at = rows.first; at < rows.end; batch = by_parts ? most : std::min(2 * batch, most)) {
        const std::int64_t end = std::min(rows.end, at + batch);
        const double share = static_cast<double>(end - at) / static_cast<double>(rows.end - at);
        if (Status written =
                by_parts ? writing.write_parts(at, end, share) : writing.write_batch(at, end, share);
            !written.ok())
            return written;
        if (at == rows.first) // whoever reads along shall not wait for the first lines
            if (Status written = stream.finish(); !written.ok())
                return written;
        at = end;
        if (Status told = work.poll(); !told.ok())
            return told;
    }
    return stream.finish();
}

} // namespace orvane
