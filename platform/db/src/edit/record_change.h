// A change of records of a base table, as those are told who keep what was there.
#pragma once

#include "schema/relation.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace orvane {

struct RecordChange {
    enum class Kind {
        Values,
        Mark,
        Add,
        Renumbering, // records went, and others have their numbers
    };

    Kind kind;
    const Relation &relation;
    std::uint64_t generation = 0;               // of the record numbers
    int field = -1;                             // whose values were put
    bool whole_records = false;                 // what the texts are; else those of the field
    std::span<const std::int64_t> records = {}; // ascending
    std::string_view before = {};               // a text for each record, without anything between them
    std::string_view after = {};                // one text, which all of them have
};

} // namespace orvane
