// The operations that make views, from a pointer's table to a view in the database.
#pragma once

#include "catalog/database.h"
#include "operation/derivation.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// Every operation answers the index of the view that it made, or a failure that left nothing behind.
// `standing_on` is the field that the pointer stands on, or -1. Remarks for the log are kept by the
// derivation.

Result<std::int64_t> derive_subset(Derivation &derivation, const std::shared_ptr<Table> &table,
                                   int standing_on, std::string_view expression);

struct SortFlags {
    bool reverse = false;
    bool unique = false;
};
Result<std::int64_t> derive_sort(Derivation &derivation, const std::shared_ptr<Table> &table, int standing_on,
                                 std::span<const std::string> fields, SortFlags flags);

Result<std::int64_t> derive_group(Derivation &derivation, const std::shared_ptr<Table> &table,
                                  int standing_on, std::span<const std::string> fields);
Result<std::int64_t> derive_ungroup(Derivation &derivation, const std::shared_ptr<Table> &table);

Result<std::int64_t> derive_sever(Derivation &derivation, const std::shared_ptr<Table> &table,
                                  std::string_view member);
Result<std::int64_t> derive_separate(Derivation &derivation, const std::shared_ptr<Table> &table,
                                     std::string_view member);

// Keys of a join: of each side as many, or none of either for inferred ones.
struct JoinKeyLists {
    std::vector<std::string> left;
    std::vector<std::string> right;
    std::vector<std::string> both; // further ones, which both sides have by one name
};
Result<std::int64_t> derive_join(Derivation &derivation, const std::shared_ptr<Table> &left,
                                 const std::shared_ptr<Table> &right, const JoinKeyLists &keys, bool outer);
Result<std::int64_t> derive_nojoin(Derivation &derivation, const std::shared_ptr<Table> &left,
                                   const std::shared_ptr<Table> &right, const JoinKeyLists &keys);
Result<std::int64_t> derive_theta(Derivation &derivation, const std::shared_ptr<Table> &left,
                                  const std::shared_ptr<Table> &right, std::string_view expression);

} // namespace orvane
