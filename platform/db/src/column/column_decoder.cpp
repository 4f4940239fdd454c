#include "column/column_decoder.h"

#include "base/concat.h"
#include "base/wide_vectors.h"
#include "column/number_decoding.h"
#include "table/field_value.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <type_traits>

namespace orvane {

namespace {

constexpr std::int64_t block_bytes = 4 << 20; // that a thread takes at a time
constexpr std::int64_t piece_bytes = 256
                                     << 10; // of them, read at a time: what stays in the second-level cache

// What one thread decodes with.
struct ThreadState {
    std::vector<char> buffer;
    std::vector<FieldDecoder> decoders;
    std::vector<std::unique_ptr<TextEntries>> texts; // per field; null for numbers
};

class Decoding
{
public:
    Decoding(const RecordSpan &records, std::span<const RelationField> fields, Work &work)
        : records_(records), fields_(fields), work_(work), threads_(thread_limit()),
          block_(std::max<std::int64_t>(1, block_bytes / records.record_size))
    {
        for (const RelationField &field : fields)
            columns_.push_back(new_column(*field.attribute, records.count));
        block_threads_.resize(static_cast<std::size_t>((records.count + block_ - 1) / block_));
        for (ThreadState &thread : threads_)
            prepare(thread);
    }

    Result<std::vector<std::shared_ptr<Column>>> run()
    {
        Status done = work_.for_blocks(
            records_.count, block_, 0.5, [this](std::int64_t begin, std::int64_t end, unsigned thread) {
                block_threads_[static_cast<std::size_t>(begin / block_)] = static_cast<std::uint8_t>(thread);
                return decode_block(begin, end, threads_[thread]);
            });
        for (std::size_t i = 0; i < fields_.size() && done.ok(); ++i)
            done = finish(i);
        if (!done.ok())
            return done;
        return std::move(columns_);
    }

private:
    void prepare(ThreadState &thread) const
    {
        for (const RelationField &field : fields_) {
            const bool text = column_storage(field.attribute->type) == ColumnStorage::Text;
            thread.texts.push_back(text ? std::make_unique<TextEntries>() : nullptr);
            thread.decoders.emplace_back(field, records_.record_size, thread.texts.back().get());
        }
    }

    Status decode_block(std::int64_t begin, std::int64_t end, ThreadState &thread)
    {
        const auto read = scan_records(records_, begin, end, thread.buffer,
                                       [&](std::int64_t first, std::int64_t count, const char *records) {
                                           for (std::size_t i = 0; i < fields_.size(); ++i)
                                               thread.decoders[i].decode(records, first, count, *columns_[i]);
                                           return Status();
                                       });
        if (!read.ok())
            return read.status();
        if (!*read) {
            shortened_ = true;
            return Status(Code::NotFound, concat(records_.shown, ": became shorter while it was read"));
        }
        return Status();
    }

    Status finish(std::size_t field)
    {
        Column &column = *columns_[field];
        for (const ThreadState &thread : threads_) {
            column.has_nulls |= thread.decoders[field].met_null();
            column.unreadable += thread.decoders[field].unreadable();
        }
        return column.storage() == ColumnStorage::Text ? merge_texts(field) : Status();
    }

    // Each thread gave codes of its own: makes them those of one dictionary.
    Status merge_texts(std::size_t field)
    {
        Column &column = *columns_[field];
        auto all = std::make_shared<TextEntries>();
        std::vector<std::vector<std::uint32_t>> merged(threads_.size());
        for (std::size_t thread = 0; thread < threads_.size(); ++thread) {
            const TextEntries &own = *threads_[thread].texts[field];
            for (std::uint32_t code = 0; code < own.size(); ++code) {
                merged[thread].push_back(all->code_of(own.text(code)));
                if (code % 4096 == 0)
                    if (Status told = work_.poll(); !told.ok())
                        return told;
            }
        }
        column.null_code = all->code_of(trimmed_right(fields_[field].attribute->null));
        column.codes.back() = column.null_code;
        const std::int64_t group = 8 * block_;
        Status done =
            work_.for_blocks(column.count, group, 0.2, [&](std::int64_t begin, std::int64_t end, unsigned) {
                for (std::int64_t at = begin; at < end; at += block_) {
                    const auto thread = block_threads_[static_cast<std::size_t>(at / block_)];
                    if (thread == 0)
                        continue; // whose texts came first, and have the codes that they had
                    const auto &codes = merged[thread];
                    const auto last = static_cast<std::size_t>(std::min(end, at + block_));
                    for (auto i = static_cast<std::size_t>(at); i < last; ++i)
                        column.codes[i] = codes[column.codes[i]];
                }
                return Status();
            });
        column.has_nulls = all->size() > 0 && met_text(merged, column.null_code);
        column.texts = std::move(all);
        return done;
    }

    static bool met_text(const std::vector<std::vector<std::uint32_t>> &merged, std::uint32_t code)
    {
        return std::any_of(merged.begin(), merged.end(), [&](const auto &codes) {
            return std::find(codes.begin(), codes.end(), code) != codes.end();
        });
    }

public:
    bool shortened() const { return shortened_; }

private:
    const RecordSpan &records_;
    std::span<const RelationField> fields_;
    Work &work_;
    std::vector<ThreadState> threads_;
    const std::int64_t block_; // records
    std::vector<std::shared_ptr<Column>> columns_;
    std::vector<std::uint8_t> block_threads_; // which thread decoded a block
    std::atomic<bool> shortened_ = false;
};

} // namespace

namespace {

// As std::count does, in sums of bytes, which a compiler turns into far fewer instructions.
ORVANE_WIDE_VECTORS std::size_t count_line_feeds(std::span<const char> bytes)
{
    constexpr std::size_t lanes = 64;
    constexpr std::size_t most = 255; // that a byte can count
    std::size_t count = 0;
    std::size_t at = 0;
    while (bytes.size() - at >= lanes) {
        std::array<std::uint8_t, lanes> sums{};
        const std::size_t groups = std::min((bytes.size() - at) / lanes, most);
        for (std::size_t group = 0; group < groups; ++group, at += lanes)
            for (std::size_t lane = 0; lane < lanes; ++lane)
                sums[lane] = static_cast<std::uint8_t>(sums[lane] + (bytes[at + lane] == '\n' ? 1 : 0));
        for (const std::uint8_t sum : sums)
            count += sum;
    }
    return count + static_cast<std::size_t>(
                       std::count(bytes.begin() + static_cast<std::ptrdiff_t>(at), bytes.end(), '\n'));
}

// The failure of the first of the records, from `begin` on, that has a line feed before its end.
Status line_feed_within(const RecordSpan &records, std::int64_t begin, std::string_view bytes)
{
    const auto size = static_cast<std::size_t>(records.record_size);
    std::size_t at = bytes.find('\n');
    while (at % size == size - 1)
        at = bytes.find('\n', at + 1);
    const std::int64_t record = begin + static_cast<std::int64_t>(at / size);
    const std::int64_t start = record * records.record_size;
    return Status(Code::Format,
                  concat(records.shown, ": record ", record, ", bytes ", start, " to ",
                         start + records.record_size - 1, ", has a line feed at byte ",
                         start + static_cast<std::int64_t>(at % size), ", before its end; mend the file"));
}

// Whether the records from `begin` on have their line feeds at their ends alone.
Status check_line_feeds(const RecordSpan &records, std::int64_t begin, std::span<const char> bytes)
{
    const auto size = static_cast<std::size_t>(records.record_size);
    const std::size_t count = bytes.size() / size;
    for (std::size_t i = 0; i < count; ++i)
        if (bytes[(i + 1) * size - 1] != '\n') {
            const std::int64_t record = begin + static_cast<std::int64_t>(i);
            return Status(Code::Format,
                          concat(records.shown, ": record ", record, ", bytes ", record * records.record_size,
                                 " to ", (record + 1) * records.record_size - 1,
                                 ", has no line feed at its end; mend the file"));
        }
    if (count_line_feeds(bytes) != count)
        return line_feed_within(records, begin, {bytes.data(), bytes.size()});
    return Status();
}

Status cannot_read(const RecordSpan &records, std::int64_t begin, std::int64_t end, const Status &why)
{
    return Status(why.code(), concat(records.shown, ": cannot read records ", begin, " to ", end - 1, ": ",
                                     why.message()));
}

} // namespace

Result<bool> read_records(const RecordSpan &records, std::int64_t begin, std::int64_t end,
                          std::vector<char> &buffer)
{
    buffer.resize(static_cast<std::size_t>((end - begin) * records.record_size));
    const auto got = records.file.read_at(begin * records.record_size, buffer);
    if (!got.ok())
        return cannot_read(records, begin, end, got.status());
    if (*got < buffer.size())
        return false;
    Status checked = check_line_feeds(records, begin, buffer);
    return checked.ok() ? Result<bool>(true) : checked;
}

Result<bool> scan_records(const RecordSpan &records, std::int64_t begin, std::int64_t end,
                          std::vector<char> &buffer, const TakeRecords &take)
{
    const std::int64_t size = records.record_size;
    buffer.resize(static_cast<std::size_t>(std::max<std::int64_t>(1, piece_bytes / size) * size));
    Status taken;
    const auto got = records.file.read_pieces(
        begin * size, (end - begin) * size, buffer, [&](std::int64_t offset, std::span<const char> piece) {
            const std::int64_t first = offset / size;
            taken = check_line_feeds(records, first, piece);
            if (taken.ok())
                taken = take(first, static_cast<std::int64_t>(piece.size()) / size, piece.data());
            return taken;
        });
    if (!taken.ok())
        return taken;
    if (!got.ok())
        return cannot_read(records, begin, end, got.status());
    return *got == (end - begin) * size;
}

Result<std::vector<std::shared_ptr<Column>>> decode_columns(const RecordSpan &records,
                                                            std::span<const RelationField> fields, Work &work)
{
    Decoding decoding(records, fields, work);
    auto columns = decoding.run();
    if (decoding.shortened())
        work.meet_change();
    return columns;
}

// ---- The fields of a block -----------------------------------------------------------------------

namespace {

template <typename T>
bool has_value(const T *values, std::int64_t count, T value)
{
    bool met = false;
    for (std::int64_t i = 0; i < count; ++i)
        met |= values[i] == value;
    return met;
}

} // namespace

void FieldDecoder::decode(const char *records, std::int64_t first, std::int64_t count, Column &column)
{
    const char *at = records + field_.offset;
    switch (column.storage()) {
    case ColumnStorage::Integer:
        decode_integers(at, count, column.integers.data() + first);
        break;
    case ColumnStorage::Real:
        decode_reals(at, count, column.reals.data() + first);
        break;
    case ColumnStorage::Text:
        if (field_.attribute->width <= 8)
            decode_short_texts(at, count, column.codes.data() + first);
        else
            decode_texts(at, count, column.codes.data() + first);
        break;
    }
}

template <typename T>
bool FieldDecoder::read_plain(const char *at, std::int64_t n, T &value) const
{
    // What stands before the first record is not ours to read.
    if (fixed_.usable() && (n > 0 || field_.offset >= fixed_.bytes_before()) && fixed_.read(at, value))
        return true;
    if constexpr (std::is_same_v<T, double>)
        return decode_plain_real(at, at + field_.attribute->width, value);
    else
        return decode_plain_integer(at, at + field_.attribute->width, value);
}

template <typename T>
std::int64_t FieldDecoder::read_usual(const char *at, std::int64_t n, std::int64_t count, T *out) const
{
    return wide_.usable() && (n > 0 || field_.offset >= wide_.bytes_before())
               ? wide_.read(at, record_size_, count, out)
               : 0;
}

void FieldDecoder::decode_integers(const char *at, std::int64_t count, std::int64_t *out)
{
    const std::int64_t width = field_.attribute->width;
    const std::int64_t null = field_.attribute->null_integer;
    const bool boolean = field_.attribute->type == FieldType::Boolean;
    for (std::int64_t i = 0; i < count; ++i) {
        i += read_usual(at + i * record_size_, i, count - i, out + i);
        if (i == count)
            break;
        const char *const field = at + i * record_size_;
        std::int64_t value = 0;
        if (!read_plain(field, i, value) || (boolean && value != 0 && value != 1)) {
            const auto read = decode_field(*field_.attribute, {field, static_cast<std::size_t>(width)});
            unreadable_ += read ? 0 : 1;
            value = read ? read->integer : null;
        }
        out[i] = value;
    }
    met_null_ |= has_value(out, count, null);
}

void FieldDecoder::decode_reals(const char *at, std::int64_t count, double *out)
{
    const std::int64_t width = field_.attribute->width;
    const double null = field_.attribute->null_real;
    for (std::int64_t i = 0; i < count; ++i) {
        i += read_usual(at + i * record_size_, i, count - i, out + i);
        if (i == count)
            break;
        const char *const field = at + i * record_size_;
        double value = 0;
        if (!read_plain(field, i, value)) {
            const auto read = decode_field(*field_.attribute, {field, static_cast<std::size_t>(width)});
            unreadable_ += read ? 0 : 1;
            value = read ? read->real : null;
        }
        out[i] = value;
    }
    met_null_ |= has_value(out, count, null);
}

void FieldDecoder::decode_texts(const char *at, std::int64_t count, std::uint32_t *out)
{
    const auto width = static_cast<std::size_t>(field_.attribute->width);
    std::uint32_t last = TextEntries::none; // the same text often comes several times in a row
    for (std::int64_t i = 0; i < count; ++i, at += record_size_) {
        const std::string_view text = trimmed_right({at, width});
        if (last == TextEntries::none || texts_->text(last) != text)
            last = texts_->code_of(text);
        out[i] = last;
    }
}

void FieldDecoder::decode_short_texts(const char *at, std::int64_t count, std::uint32_t *out)
{
    const auto width = static_cast<std::size_t>(field_.attribute->width);
    recent_.resize(recent_count);
    // With what stands before the field, which is then left out; before the first record is nothing of ours.
    const std::size_t before = sizeof(std::uint64_t) - width;
    const bool whole_words = std::endian::native == std::endian::little;
    for (std::int64_t i = 0; i < count; ++i, at += record_size_) {
        std::uint64_t packed = 0;
        if (whole_words && (i > 0 || field_.offset >= static_cast<std::int64_t>(before))) {
            std::memcpy(&packed, at - before, sizeof packed);
            packed >>= 8 * before;
        } else {
            std::memcpy(&packed, at, width);
        }
        RecentText &recent = recent_[(packed * 0x9e3779b97f4a7c15u) >> 52];
        if (recent.packed != packed || recent.code == TextEntries::none) {
            recent.packed = packed;
            recent.code = texts_->code_of(trimmed_right({at, width}));
        }
        out[i] = recent.code;
    }
}

} // namespace orvane
