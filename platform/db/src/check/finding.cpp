#include "check/finding.h"

#include "base/concat.h"

#include <algorithm>

namespace orvane {

namespace {

using enum FindingKind;
constexpr FindingLevel error = FindingLevel::Error;
constexpr FindingLevel note = FindingLevel::Note;

// clang-format off
constexpr FindingKindRow rows[] = {
    {Folder, error, "folder", "a folder of the dbpath that is not there"},
    {File, error, "file", "a table's file that cannot be read"},
    {Line, error, "line", "a line that is no record: too short or too long"},
    {Unfinished, error, "unfinished", "a last line without a line feed"},
    {UndoNote, error, "undo-note", "a change that was left half done by a program that was killed"},
    {Separator, error, "separator", "no blank between two fields"},
    {Characters, error, "characters", "control characters, or bytes that are no UTF-8"},
    {Type, error, "type", "a text that is no value of the field's type"},
    {Range, error, "range", "a value out of the attribute's range"},
    {KeyNull, error, "key-null", "a record whose primary key is null"},
    {KeyDouble, error, "key-double", "a record with the primary or alternate key of another one"},
    {Dangling, error, "dangling", "a foreign key that its table does not have"},
    {Counter, error, "counter", "an id in lastid that is behind the ids in use"},
    {SavedView, error, "saved-view", "a saved view that cannot be read"},
    {Schema, error, "schema", "a range in the schema that cannot be asked"},
    {Form, note, "form", "a value that is not written as its format writes it"},
    {KeyIncomplete, note, "key-incomplete", "a record a part of whose primary key is null"},
    {NoTable, note, "no-table", "foreign keys to a table without a file"},
    {NoCounter, note, "no-counter", "a counter in lastid of no id of the schema"},
    {HiddenFile, note, "hidden-file", "a table's file in a later folder of the dbpath, which counts for nothing"},
    {StrayFile, note, "stray-file", "a file that belongs to no table"},
    {KeptFile, note, "kept-file", "what a repair put aside, or the file before it"},
    {Leftover, note, "leftover", "a temporary file of a program that was killed"},
};
// clang-format on
static_assert(std::size(rows) == finding_kinds);

constexpr bool in_order()
{
    for (std::size_t i = 0; i < std::size(rows); ++i)
        if (static_cast<std::size_t>(rows[i].kind) != i)
            return false;
    return true;
}
static_assert(in_order());

} // namespace

const FindingKindRow &row_of(FindingKind kind)
{
    return rows[static_cast<std::size_t>(kind)];
}

void Findings::begin_file(std::string table, std::string file)
{
    table_ = std::move(table);
    file_ = std::move(file);
    counts_.clear();
}

std::int64_t Findings::limit_of(FindingKind kind) const
{
    const bool is_of_many = kind == FindingKind::Form || kind == FindingKind::KeyIncomplete;
    return limit_ < 0 || !is_of_many ? limit_ : std::min<std::int64_t>(limit_, 1);
}

Findings::Count &Findings::count_of(FindingKind kind, const std::string &field, std::int64_t findings)
{
    Count &count = counts_[{kind, field}];
    count.all += findings;
    (row_of(kind).level == FindingLevel::Error ? errors_ : notes_) += findings;
    return count;
}

void Findings::add(Finding finding)
{
    if (finding.table.empty())
        finding.table = table_;
    if (finding.file.empty())
        finding.file = file_;
    if (finding.level == FindingLevel::Repair) {
        sink_(finding);
        return;
    }
    finding.level = row_of(finding.kind).level;
    Count &count = count_of(finding.kind, finding.field, 1);
    const std::int64_t limit = limit_of(finding.kind);
    if (limit >= 0 && count.told >= limit)
        return;
    ++count.told;
    sink_(finding);
}

void Findings::add_uncounted(FindingKind kind, const std::string &field, std::int64_t count)
{
    if (count > 0)
        count_of(kind, field, count);
}

void Findings::end_file()
{
    for (const auto &[what, count] : counts_) {
        if (count.all == count.told)
            continue;
        Finding rest;
        rest.kind = what.first;
        rest.level = row_of(what.first).level;
        rest.table = table_;
        rest.file = file_;
        rest.field = what.second;
        rest.more = count.all - count.told;
        rest.message = concat("and ", rest.more, " more of these");
        sink_(rest);
    }
    counts_.clear();
}

std::int64_t Findings::count(FindingKind kind) const
{
    std::int64_t all = 0;
    for (const auto &[what, count] : counts_)
        all += what.first == kind ? count.all : 0;
    return all;
}

void FindingBatch::add_to(Findings &all)
{
    std::stable_sort(findings_.begin(), findings_.end(),
                     [](const Finding &left, const Finding &right) { return left.offset < right.offset; });
    for (Finding &finding : findings_) {
        --counts_[{finding.kind, finding.field}];
        all.add(std::move(finding));
    }
    for (const auto &[what, rest] : counts_)
        all.add_uncounted(what.first, what.second, rest);
    findings_.clear();
    counts_.clear();
}

std::string shown_bytes(std::string_view bytes)
{
    constexpr std::size_t longest = 80;
    constexpr char digits[] = "0123456789abcdef";
    std::string out;
    for (const char c : bytes.substr(0, longest)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte < 0x7f && c != '\\')
            out += c;
        else if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else
            out.append("\\x").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
    }
    return out + (bytes.size() > longest ? "…" : "");
}

} // namespace orvane
