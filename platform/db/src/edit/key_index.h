// Where records with a primary key are, by a hash of the key.
#pragma once

#include "schema/relation.h"
#include "storage/block_cache.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class KeyIndex
{
public:
    // The relation has to outlive the index.
    explicit KeyIndex(const Relation &relation);

    // A relation without a primary key has no index.
    bool has_key() const { return !fields_.empty(); }

    // The key of a record, the same for equal ones: numbers by value, however they are written, texts without
    // blanks at their ends. Both ends of a range belong to the key.
    std::string key_of(std::string_view record) const;

    // The state of the file that the index is true for; 0: none.
    FileVersion version() const { return version_; }
    void set_version(FileVersion version) { version_ = version; }
    // Empties the index, which is true for nothing then, with room for so many records.
    void start(std::int64_t records);
    void add(std::int64_t number, std::string_view key);
    void remove(std::int64_t number, std::string_view key);

    // Records that may have the key, ascending: their keys are to be compared.
    std::vector<std::int64_t> candidates(std::string_view key) const;

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::int64_t number = empty;
    };
    static constexpr std::int64_t empty = -1;
    static constexpr std::int64_t removed = -2;

    void grow(std::size_t records);
    void insert(std::uint64_t hash, std::int64_t number);

    std::vector<RelationField> fields_;
    FileVersion version_ = 0;
    std::vector<Slot> slots_; // open addressing; their number is a power of two
    std::size_t used_ = 0;    // removed ones too
};

} // namespace orvane
