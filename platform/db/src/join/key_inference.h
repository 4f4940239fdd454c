// By which keys two tables join when none are given.
#pragma once

#include "schema/schema.h"

#include <span>
#include <string>
#include <vector>

namespace orvane {

// Keys of two sides, element by element. An element is a field, or a range "ondate::offdate" which on the
// other side meets the same range (overlap) or a field (containment).
struct JoinKeys {
    std::vector<std::string> left;
    std::vector<std::string> right;
    bool empty() const { return left.empty(); }
};

// The members of a side are the relations that it is made of: one for a base table, several for a view.
// The first of these that fits whole: the right side's primary key, its alternate key; the left members'
// primary, then alternate keys; the id that either side defines; a foreign key; at last all fields that both
// sides have, without the timestamp, remarks and those that the schema lets not be joined. Empty when nothing
// fits.
//
// A plain element fits a field of that name which neither begins nor ends a range key on the other side and
// is one that the schema lets be joined. A range element fits the same range, or the first field there that
// it covers. A foreign key is an element of its own, as each refers to another table: the first that fits is
// taken, the right side's before the left's; the id of remarks is one to remarks only.
JoinKeys infer_join_keys(const Schema &schema, std::span<const Relation *const> left,
                         std::span<const Relation *const> right);

} // namespace orvane
