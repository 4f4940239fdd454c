// A relation of a schema: the fields of a table, and the keys by which its records are found.
#pragma once

#include "schema/attribute.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

// An element of a key: a field, or a range between two fields that can hold a value of the fields in
// `covers` of other tables, the first that is there.
struct KeyElement {
    std::string begin; // the field, or the field with the range's lower end
    std::string end;   // the field with the range's upper end; empty for a plain element
    std::vector<std::string> covers;

    bool is_range() const { return !end.empty(); }
    // "ondate::offdate", or the field's name.
    std::string text() const { return is_range() ? begin + "::" + end : begin; }
};

using Key = std::vector<KeyElement>;

struct RelationField {
    const Attribute *attribute; // owned by the schema
    std::int64_t offset;        // the field's first byte in the record
};

class Relation
{
public:
    std::string name;
    std::string description;
    std::string detail;
    std::string defines; // the id field whose values this relation gives out; or empty
    Key primary;
    Key alternate;
    Key foreign;

    const std::vector<RelationField> &fields() const { return fields_; }
    // Bytes of a record, the line feed included.
    std::int64_t record_size() const { return record_size_; }
    // The field's place in the list, or -1.
    int field_index(std::string_view field_name) const;
    bool has_field(std::string_view field_name) const { return field_index(field_name) >= 0; }
    // All range elements of its keys.
    std::vector<const KeyElement *> ranges() const;
    // A record of nothing but nulls, without a line feed.
    const std::string &null_record() const { return null_record_; }

    // Appends a field. The attribute has to outlive the relation.
    void add_field(const Attribute &attribute);

private:
    std::vector<RelationField> fields_;
    std::unordered_map<std::string_view, int> index_; // the names are those of the attributes
    std::int64_t record_size_ = 0;
    std::string null_record_;
};

} // namespace orvane
