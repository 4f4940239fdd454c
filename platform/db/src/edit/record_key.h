// The key of a record as bytes that are the same for equal keys, however their values are written.
#pragma once

#include "schema/relation.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class RecordKey
{
public:
    // The relation has to outlive the object. Both ends of a range belong to the key.
    RecordKey(const Relation &relation, const Key &key);

    bool empty() const { return fields_.empty(); }
    const std::vector<RelationField> &fields() const { return fields_; }

    // Numbers by value, texts without blanks at their ends.
    std::string of(std::string_view record) const;

private:
    std::vector<RelationField> fields_;
};

} // namespace orvane
