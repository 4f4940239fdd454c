// What checking a database finds: each finding with its place, counted by kind, and not more of a kind told
// than anybody would read.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

enum class FindingLevel {
    Error = 1, // something is wrong
    Note = 2,  // allowed, and perhaps not what was meant
    Repair = 3 // what was done about an error, or would be
};

enum class FindingKind {
    // Errors
    Folder,
    File,
    Line,
    Unfinished,
    UndoNote,
    Separator,
    Characters,
    Type,
    Range,
    KeyNull,
    KeyDouble,
    Dangling,
    Counter,
    SavedView,
    Schema,
    // Notes
    Form,
    KeyIncomplete,
    NoTable,
    NoCounter,
    HiddenFile,
    StrayFile,
    KeptFile,
    Leftover,
};
constexpr std::size_t finding_kinds = static_cast<std::size_t>(FindingKind::Leftover) + 1;

struct FindingKindRow {
    FindingKind kind;
    FindingLevel level;
    std::string_view name;
    std::string_view meaning; // one line
};
const FindingKindRow &row_of(FindingKind kind);

struct Finding {
    FindingKind kind = FindingKind::File;
    FindingLevel level = FindingLevel::Error; // set by what takes it, unless it is a repair
    std::string table = {};
    std::string file = {};
    std::int64_t line = -1;   // of the file, from 1; -1: it is about no line
    std::int64_t record = -1; // -1: none, or one that has no number because lines before it are no records
    std::int64_t offset = -1; // the first byte that it is about
    std::string field = {};
    std::string found = {};
    std::string message = {};
    std::int64_t more = 0; // it stands for so many others of its kind, table and field
};

// Takes findings in the order of their places, tells the first ones of each kind and field, and counts the
// others.
class Findings
{
public:
    using Sink = std::function<void(const Finding &)>;

    // At most `limit` are told of each kind in a field of a table, and one of notes about records; negative:
    // all.
    Findings(std::int64_t limit, Sink sink) : limit_(limit), sink_(std::move(sink)) {}

    void begin_file(std::string table, std::string file);
    // Of the file that was begun.
    void add(Finding finding);
    // So many others of the kind and field, which nobody has put into words.
    void add_uncounted(FindingKind kind, const std::string &field, std::int64_t count);
    // Tells how many were not told.
    void end_file();

    std::int64_t limit_of(FindingKind kind) const;
    std::int64_t errors() const { return errors_; }
    std::int64_t notes() const { return notes_; }
    // Errors of a kind in the present file.
    std::int64_t count(FindingKind kind) const;

private:
    struct Count {
        std::int64_t all = 0;
        std::int64_t told = 0;
    };
    Count &count_of(FindingKind kind, const std::string &field, std::int64_t findings);

    const std::int64_t limit_;
    const Sink sink_;
    std::string table_;
    std::string file_;
    std::map<std::pair<FindingKind, std::string>, Count> counts_;
    std::int64_t errors_ = 0;
    std::int64_t notes_ = 0;
};

// Findings of some records, made on any thread and in any order, and added to the others by their places.
class FindingBatch
{
public:
    explicit FindingBatch(const Findings &all) : all_(&all) {}

    // `make` puts the finding into words; it is not called for more than will be told.
    template <typename Make>
    void add(FindingKind kind, const std::string &field, const Make &make)
    {
        std::int64_t &count = counts_[{kind, field}];
        const std::int64_t limit = all_->limit_of(kind);
        if (++count > limit && limit >= 0)
            return;
        Finding finding = make();
        finding.kind = kind;
        finding.field = field;
        findings_.push_back(std::move(finding));
    }
    void add_to(Findings &all);

private:
    const Findings *all_;
    std::vector<Finding> findings_;
    std::map<std::pair<FindingKind, std::string>, std::int64_t> counts_;
};

// A text as messages show it: what can't be printed is escaped, and a long one is cut.
std::string shown_bytes(std::string_view bytes);

} // namespace orvane
