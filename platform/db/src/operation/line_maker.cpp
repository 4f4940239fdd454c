#include "operation/line_maker.h"

#include "table/field_value.h"

#include <cstring>

namespace orvane {

namespace {

constexpr std::size_t copied_at_once = 16; // bytes: most fields have fewer

// Copies a text and, where nothing is in the way, some of what is behind it, which costs less than to count.
inline char *put(const char *text, std::size_t size, const char *end_of_bytes, char *to)
{
    if (size <= copied_at_once && static_cast<std::size_t>(end_of_bytes - text) >= copied_at_once)
        std::memcpy(to, text, copied_at_once);
    else
        std::memcpy(to, text, size);
    return to + size;
}

} // namespace

LineMaker::LineMaker(const Operand &operand, std::span<const SelectedField> fields, const TextForm &form)
    : form_(form)
{
    for (const SelectedField &selected : fields) {
        const View::FieldPlace place = operand.place_of(selected.field);
        const Table &member = *operand.members()[static_cast<std::size_t>(place.member)].table;
        const TableField &field = member.fields()[static_cast<std::size_t>(place.field)];
        const Piece piece{static_cast<std::size_t>(place.member), static_cast<std::size_t>(field.offset),
                          static_cast<std::size_t>(field.attribute->width)};
        most_bytes_ += TextForm::most_bytes(piece.width) + form.separator().size();
        const auto known = std::find_if(stretches_.begin(), stretches_.end(), [&](const Stretch &stretch) {
            return stretch.member == piece.member;
        });
        stretch_of_.push_back(static_cast<std::size_t>(known - stretches_.begin()));
        if (known == stretches_.end())
            stretches_.push_back({piece.member, piece.offset, piece.offset + piece.width});
        else
            *known = {piece.member, std::min(known->first, piece.offset),
                      std::max(known->end, piece.offset + piece.width)};
        pieces_.push_back(piece);
    }
    most_bytes_ += 1 + copied_at_once;
    lines_are_records_ = operand.members().size() == 1 && !form.delimited() && form.separator() == " " &&
                         fields.size() == operand.table().fields().size();
    for (std::size_t i = 0; i < fields.size(); ++i)
        lines_are_records_ = lines_are_records_ && fields[i].field == static_cast<int>(i);
}

void LineMaker::append(const RowRecords &records, std::size_t first, std::size_t end, LineText &out) const
{
    if (form_.delimited())
        append_trimmed(records, first, end, out);
    else
        append_full(records, first, end, out);
}

inline char *LineMaker::put_separator(char *to) const
{
    const std::string &separator = form_.separator();
    if (separator.size() == 1) {
        *to = separator.front();
        return to + 1;
    }
    std::memcpy(to, separator.data(), separator.size());
    return to + separator.size();
}

void LineMaker::append_trimmed(const RowRecords &records, std::size_t first, std::size_t end,
                               LineText &out) const
{
    const bool alone = pieces_.size() == 1;
    std::vector<RecordMarks> marks(stretches_.size(), RecordMarks(form_));
    std::vector<const char *> ends; // of all records of a member
    for (const Stretch &stretch : stretches_) {
        const auto bytes = records.first_records(stretch.member, end);
        ends.push_back(bytes.data() + bytes.size());
    }
    for (std::size_t row = first; row < end; ++row) {
        for (std::size_t i = 0; i < stretches_.size(); ++i)
            marks[i].look(records.record(stretches_[i].member, row) + stretches_[i].first,
                          stretches_[i].end - stretches_[i].first);
        char *to = out.room_for(most_bytes_);
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const Piece &piece = pieces_[i];
            const std::size_t stretch = stretch_of_[i];
            const char *const field = records.record(piece.member, row) + piece.offset;
            if (i > 0)
                to = put_separator(to);
            if (piece.width > RecordMarks::most_width) {
                to = form_.put_delimited(trimmed({field, piece.width}), alone, to);
                continue;
            }
            const RecordMarks::Text found =
                marks[stretch].text(piece.offset - stretches_[stretch].first, piece.width);
            if (found.quoted || (alone && found.size == 0))
                to = form_.put_delimited({field + found.first, found.size}, alone, to);
            else
                to = put(field + found.first, found.size, ends[stretch], to);
        }
        *to++ = '\n';
        out.end_at(to);
    }
}

void LineMaker::append_full(const RowRecords &records, std::size_t first, std::size_t end,
                            LineText &out) const
{
    for (std::size_t row = first; row < end; ++row) {
        char *to = out.room_for(most_bytes_);
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const Piece &piece = pieces_[i];
            if (i > 0)
                to = put_separator(to);
            std::memcpy(to, records.record(piece.member, row) + piece.offset, piece.width);
            to += piece.width;
        }
        *to++ = '\n';
        out.end_at(to);
    }
}

} // namespace orvane
