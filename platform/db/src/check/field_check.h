// Checks the fields of whole records: what stands between them, characters, types, ranges, and the nulls of
// the primary key. Of one thread; each has its own.
#pragma once

#include "check/finding.h"
#include "expression/range_check.h"
#include "schema/relation.h"
#include "table/record_lines.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

class FieldCheck
{
public:
    // The relation has to outlive the object.
    explicit FieldCheck(const Relation &relation);

    // Ranges of the schema that can't be asked: one per field, with the reason.
    std::vector<Finding> broken_ranges() const;

    // At most `batch` records of a run, from its record `first` on.
    static constexpr std::int64_t batch = 2048;
    void check(const LineRun &run, std::int64_t first, std::int64_t count, FindingBatch &findings);

    // Of all records so far.
    std::int64_t marked() const { return marked_; }
    // The greatest number in the field that the relation defines; 0 where there is none.
    std::int64_t greatest_id() const { return greatest_id_; }

private:
    struct Range {
        std::optional<expr::ExpressionExecutor> numbers; // over a batch
        std::optional<expr::RangeCheck> texts;           // one by one
        std::unordered_map<std::string, bool> known;     // of texts that were met
        Status broken;
    };
    struct Column {
        RelationField place;
        Range range;
        bool plain_format = false; // what the format prints is told without printing
        int key_element = -1;      // of the primary key; a range is none
    };
    enum State : std::uint8_t { Good, Null, Bad };
    struct Here; // the batch that is being checked

    void check_separators(const Here &here);
    void check_column(Column &column, const Here &here);
    State check_integer(const Column &column, const Here &here, std::int64_t at, std::string_view text);
    State check_real(const Column &column, const Here &here, std::int64_t at, std::string_view text);
    State check_text(Column &column, const Here &here, std::int64_t at, std::string_view text);
    State check_other(const Column &column, const Here &here, std::int64_t at, std::string_view text);
    void check_number_range(Column &column, const Here &here);
    void check_keys(const Here &here);
    void out_of_range(const Column &column, const Here &here, std::int64_t at) const;
    void wrong_text(FindingKind kind, const Column &column, const Here &here, std::int64_t at,
                    std::string_view message) const;

    const Relation &relation_;
    std::vector<Column> columns_;
    int key_elements_ = 0;
    int defined_ = -1; // its field of the id that it defines
    std::int64_t marked_ = 0;
    std::int64_t greatest_id_ = 0;

    // Of the batch
    std::vector<std::int64_t> integers_;
    std::vector<double> reals_;
    std::vector<std::uint8_t> states_;
    std::vector<std::uint8_t> unfit_; // for the range: null or no value
    std::vector<int> values_;         // fields that are not null, per record
    std::vector<int> key_nulls_;      // elements of the primary key that are
    expr::SelectionVector inside_;
};

} // namespace orvane
