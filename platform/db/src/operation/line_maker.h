// Lines of text made of records.
#pragma once

#include "operation/operand.h"
#include "operation/record_marks.h"
#include "operation/row_reader.h"
#include "operation/select.h"
#include "operation/text_form.h"
#include "work/buffer.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace orvane {

// Text that grows at its end.
class LineText
{
public:
    void clear() { size_ = 0; }
    std::string_view text() const { return {bytes_.data(), size_}; }

    // Where so many bytes can be put behind the text; which ends where `end_at` says, then.
    char *room_for(std::size_t count)
    {
        if (bytes_.size() - size_ < count)
            bytes_.resize(std::max(2 * bytes_.size(), size_ + count));
        return bytes_.data() + size_;
    }
    void end_at(const char *end) { size_ = static_cast<std::size_t>(end - bytes_.data()); }

private:
    Buffer<char> bytes_;
    std::size_t size_ = 0;
};

// Of any number of threads at a time.
class LineMaker
{
public:
    // The form outlives it.
    LineMaker(const Operand &operand, std::span<const SelectedField> fields, const TextForm &form);

    // Whether the only member's records are the lines that are wanted.
    bool lines_are_records() const { return lines_are_records_; }
    // No line is longer.
    std::size_t most_bytes() const { return most_bytes_; }

    // Appends the lines of the rows [first, end) of those that were read.
    void append(const RowRecords &records, std::size_t first, std::size_t end, LineText &out) const;

private:
    struct Piece { // of a line: a field in the record of a member
        std::size_t member;
        std::size_t offset;
        std::size_t width;
    };
    // The part of a member's record in which there are fields that are marked.
    struct Stretch {
        std::size_t member;
        std::size_t first;
        std::size_t end;
    };

    void append_trimmed(const RowRecords &records, std::size_t first, std::size_t end, LineText &out) const;
    void append_full(const RowRecords &records, std::size_t first, std::size_t end, LineText &out) const;
    char *put_separator(char *to) const;

    const TextForm &form_;
    std::vector<Piece> pieces_;
    std::vector<Stretch> stretches_;
    std::vector<std::size_t> stretch_of_; // of each piece
    std::size_t most_bytes_ = 0;
    bool lines_are_records_ = false;
};

} // namespace orvane
