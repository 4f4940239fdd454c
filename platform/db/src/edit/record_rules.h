// What the records of a relation may hold, checked before anything is written.
#pragma once

#include "base/status.h"
#include "expression/range_check.h"
#include "schema/relation.h"
#include "table/field_value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class RecordRules
{
public:
    // The relation, owned by the schema, has to outlive the rules. `timestamp` is the name of the schema's,
    // or empty.
    RecordRules(const Relation &relation, std::string_view timestamp);

    // The text of a field for a value that its type, width and range admit.
    Result<std::string> field_text(std::size_t field, const FieldValue &value);
    // Whether a record's text, without its line feed, can be added: its length, the blanks between its
    // fields, and each field's characters, type and range. A record of nothing but nulls can't; the timestamp
    // doesn't count there.
    Status check_record(std::string_view text);

    // Puts the present time into the record's timestamp, if it has one.
    void stamp(std::string &record) const;
    // The place of the timestamp among the fields, or -1, and the text that it has now.
    int timestamp() const { return timestamp_; }
    std::string stamp_text() const;
    // Whether every field, the timestamp too, is null: such a record counts as marked.
    bool is_marked(std::string_view record) const;

    // The part of a record's text that is a field.
    std::string_view field_of(std::string_view record, std::size_t field) const;
    // Puts a field's text into a record.
    void put(std::string &record, std::size_t field, std::string_view text) const;

private:
    Status check_range(std::size_t field, const FieldValue &value);
    Status check_stored(std::size_t field, std::string_view text);

    const Relation &relation_;
    const int timestamp_; // its place among the fields, or -1
    struct Range {
        Status broken; // why the schema's range can't be asked
        std::optional<expr::RangeCheck> check;
    };
    std::vector<std::optional<Range>> ranges_; // by field, made when they are first asked
};

} // namespace orvane
