// Where records with a primary key are, by a hash of the key.
#pragma once

#include "edit/record_key.h"
#include "storage/block_cache.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class KeyIndex
{
public:
    // The relation has to outlive the index.
    explicit KeyIndex(const Relation &relation) : key_(relation, relation.primary) {}

    // A relation without a primary key has no index.
    bool has_key() const { return !key_.empty(); }

    std::string key_of(std::string_view record) const { return key_.of(record); }

    // The state of the file that the index is true for; 0: none.
    FileVersion version() const { return version_; }
    void set_version(FileVersion version) { version_ = version; }

    // Forgets all records; it is true for nothing then. `generation` is that of the record numbers to come.
    void start(std::int64_t records, std::uint64_t generation);
    // Whether numbers mean the same records in a file of that generation with so many records, so that only
    // what changed has to be taken anew.
    bool can_follow(std::uint64_t generation, std::int64_t records) const
    {
        return generation_ == generation && records >= static_cast<std::int64_t>(hashes_.size());
    }
    // Records are compared in blocks of so many, by a checksum of their bytes.
    static constexpr std::int64_t block_records = 256;
    // Whether the block that begins with that record, a multiple of `block_records`, has these bytes as it
    // had when it was taken. If not they are remembered, and each of its records is to be put.
    bool is_same_block(std::int64_t first, std::string_view lines);
    // What a record is: one with that text, or, where that is none, one without a key.
    void put(std::int64_t number, std::optional<std::string_view> record);

    // The block of that record was changed since its bytes were compared: it is taken for another one next
    // time, also if it gets the same bytes again.
    void forget_block(std::int64_t number)
    {
        if (const auto block = static_cast<std::size_t>(number / block_records); block < sums_.size())
            sums_[block] = 0;
    }

    // Records that may have the key, ascending: their keys are to be compared.
    std::vector<std::int64_t> candidates(std::string_view key) const;

private:
    struct Slot {
        std::uint64_t hash = 0;
        std::int64_t number = empty;
    };
    static constexpr std::int64_t empty = -1;
    static constexpr std::int64_t removed = -2;
    static constexpr std::uint64_t no_key = 0;

    void grow(std::size_t records);
    void insert(std::uint64_t hash, std::int64_t number);
    void remove(std::uint64_t hash, std::int64_t number);

    RecordKey key_;
    FileVersion version_ = 0;
    std::uint64_t generation_ = ~std::uint64_t{0};
    std::vector<std::uint64_t> hashes_; // of the keys, by record; no_key: it has none
    std::vector<std::uint64_t> sums_;   // of the blocks; 0: not known
    std::vector<Slot> slots_;           // open addressing; their number is a power of two
    std::size_t used_ = 0;              // removed ones too
};

} // namespace orvane
