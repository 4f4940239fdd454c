#include "operation/select.h"

#include "base/concat.h"
#include "operation/field_list.h"
#include "operation/row_reader.h"

#include <algorithm>

namespace orvane {

namespace {

// The first batch is small, so that a reader who wants a few lines has them at once.
constexpr std::int64_t first_batch_rows = 256;
constexpr std::size_t rows_between_polls = 4096;

bool are_all_fields(const Table &table, std::span<const std::string> names)
{
    return std::equal(
        names.begin(), names.end(), table.fields().begin(), table.fields().end(),
        [](const std::string &name, const TableField &field) { return name == field.attribute->name; });
}

// Writes batches of rows as lines.
class LineWriter
{
public:
    LineWriter(const Operand &operand, std::span<const SelectedField> fields, const TextForm &form,
               TextStream &stream)
        : form_(form), stream_(stream)
    {
        for (const SelectedField &selected : fields) {
            const View::FieldPlace place = operand.place_of(selected.field);
            const Table &member = *operand.members()[static_cast<std::size_t>(place.member)].table;
            const TableField &field = member.fields()[static_cast<std::size_t>(place.field)];
            pieces_.push_back(Piece{static_cast<std::size_t>(place.member),
                                    static_cast<std::size_t>(field.offset),
                                    static_cast<std::size_t>(field.attribute->width)});
        }
        lines_are_records_ = operand.members().size() == 1 && !form.delimited() && form.separator() == " " &&
                             fields.size() == operand.table().fields().size();
        for (std::size_t i = 0; i < fields.size(); ++i)
            lines_are_records_ = lines_are_records_ && fields[i].field == static_cast<int>(i);
    }

    Status write(const RowReader &reader, std::size_t count, Work &work)
    {
        if (lines_are_records_)
            return stream_.write({reader.record(0, 0),
                                  static_cast<std::size_t>(reader.record(0, count) - reader.record(0, 0))});
        for (std::size_t row = 0; row < count; ++row) {
            append_line(reader, row);
            if (Status written = stream_.write_if_long(); !written.ok())
                return written;
            if (row % rows_between_polls == 0)
                if (Status told = work.poll(); !told.ok())
                    return told;
        }
        return Status();
    }

private:
    struct Piece { // of a line: a field in the record of a member
        std::size_t member;
        std::size_t offset;
        std::size_t width;
    };

    void append_line(const RowReader &reader, std::size_t row)
    {
        std::string &out = stream_.text();
        const bool alone = pieces_.size() == 1;
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const Piece &piece = pieces_[i];
            if (i > 0)
                out.append(form_.separator());
            form_.append_field({reader.record(piece.member, row) + piece.offset, piece.width}, alone, out);
        }
        out += '\n';
    }

    const TextForm &form_;
    TextStream &stream_;
    std::vector<Piece> pieces_;
    bool lines_are_records_ = false; // the files have the lines as they are wanted
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
    LineWriter lines(operand, fields, form, stream);
    std::int64_t batch = std::min(first_batch_rows, reader.most());
    for (std::int64_t at = rows.first; at < rows.end; batch = std::min(2 * batch, reader.most())) {
        const std::int64_t end = std::min(rows.end, at + batch);
        if (Status read = reader.read(at, end); !read.ok())
            return read;
        if (Status written = lines.write(reader, static_cast<std::size_t>(end - at), work); !written.ok())
            return written;
        if (at == rows.first) // whoever reads along shall not wait for the first lines
            if (Status written = stream.finish(); !written.ok())
                return written;
        at = end;
        work.advance_to(static_cast<double>(at - rows.first) / static_cast<double>(rows.end - rows.first));
        if (Status told = work.poll(); !told.ok())
            return told;
    }
    return stream.finish();
}

} // namespace orvane
