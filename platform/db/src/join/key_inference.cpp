#include "join/key_inference.h"

#include <algorithm>
#include <optional>

namespace orvane {

namespace {

using Members = std::span<const Relation *const>;

// The relation whose fields are comments rather than data.
constexpr std::string_view remark_relation = "remark";

bool has_field(Members members, std::string_view field)
{
    return std::any_of(members.begin(), members.end(),
                       [&](const Relation *relation) { return relation->has_field(field); });
}

// Whether the field is there and tells which record is meant.
bool has_telling_field(Members members, std::string_view field)
{
    return std::any_of(members.begin(), members.end(), [&](const Relation *relation) {
        const int index = relation->field_index(field);
        return index >= 0 && !relation->fields()[static_cast<std::size_t>(index)].attribute->not_joined;
    });
}

bool bounds_a_range(Members members, std::string_view field)
{
    for (const Relation *relation : members)
        for (const KeyElement *range : relation->ranges())
            if (range->begin == field || range->end == field)
                return true;
    return false;
}

bool has_range(Members members, const KeyElement &sought)
{
    for (const Relation *relation : members)
        for (const KeyElement *range : relation->ranges())
            if (range->begin == sought.begin && range->end == sought.end)
                return true;
    return false;
}

// What the element meets on the other side: a field, or the same range; none where it doesn't fit.
std::optional<std::string> fit(const KeyElement &element, Members other)
{
    if (!element.is_range()) {
        const bool fits = has_telling_field(other, element.begin) && !bounds_a_range(other, element.begin);
        return fits ? std::optional(element.begin) : std::nullopt;
    }
    if (has_range(other, element))
        return element.text();
    for (const std::string &covered : element.covers)
        if (has_field(other, covered))
            return covered;
    return std::nullopt;
}

enum class Side { Left, Right };

// The keys when the whole of a key, which belongs to one side, fits the other.
JoinKeys fit_whole(const Key &key, Side of, Members other)
{
    JoinKeys keys;
    for (const KeyElement &element : key) {
        auto met = fit(element, other);
        if (!met)
            return {};
        keys.left.push_back(of == Side::Left ? element.text() : *met);
        keys.right.push_back(of == Side::Right ? element.text() : *met);
    }
    return keys;
}

JoinKeys fit_any_member(Members members, Key Relation::*which, Side of, Members other)
{
    for (const Relation *relation : members)
        if (auto keys = fit_whole(relation->*which, of, other); !keys.empty())
            return keys;
    return {};
}

JoinKeys fit_defined_id(Members members, Side of, Members other)
{
    for (const Relation *relation : members) {
        if (relation->defines.empty())
            continue;
        if (auto keys = fit_whole({KeyElement{relation->defines, "", {}}}, of, other); !keys.empty())
            return keys;
    }
    return {};
}

// The id of a comment leads to the comment and to nothing else: two records are no more related for one
// remark.
JoinKeys fit_foreign_key(const Schema &schema, Members members, Side of, Members other)
{
    const Relation *remarks = schema.relation(remark_relation);
    const bool to_remarks = std::find(other.begin(), other.end(), remarks) != other.end();
    for (const Relation *relation : members)
        for (const KeyElement &element : relation->foreign) {
            if (remarks && !to_remarks && element.begin == remarks->defines)
                continue;
            if (auto keys = fit_whole({element}, of, other); !keys.empty())
                return keys;
        }
    return {};
}

JoinKeys common_fields(const Schema &schema, Members left, Members right)
{
    const Relation *remarks = schema.relation(remark_relation);
    JoinKeys keys;
    for (const Relation *relation : left)
        for (const RelationField &field : relation->fields()) {
            const std::string &name = field.attribute->name;
            const bool counts = name != schema.timestamp && !(remarks && remarks->has_field(name)) &&
                                std::find(keys.left.begin(), keys.left.end(), name) == keys.left.end();
            if (!counts || field.attribute->not_joined || !has_field(right, name) ||
                bounds_a_range(left, name) || bounds_a_range(right, name))
                continue;
            keys.left.push_back(name);
            keys.right.push_back(name);
        }
    return keys;
}

} // namespace

JoinKeys infer_join_keys(const Schema &schema, Members left, Members right)
{
    struct KeyRule {
        Key Relation::*key;
        Side of;
    };
    constexpr KeyRule rules[] = {
        {&Relation::primary, Side::Right},
        {&Relation::alternate, Side::Right},
        {&Relation::primary, Side::Left},
        {&Relation::alternate, Side::Left},
    };
    for (const KeyRule &rule : rules) {
        const bool is_left = rule.of == Side::Left;
        if (auto keys = fit_any_member(is_left ? left : right, rule.key, rule.of, is_left ? right : left);
            !keys.empty())
            return keys;
    }
    if (auto keys = fit_defined_id(right, Side::Right, left); !keys.empty())
        return keys;
    if (auto keys = fit_defined_id(left, Side::Left, right); !keys.empty())
        return keys;
    if (auto keys = fit_foreign_key(schema, right, Side::Right, left); !keys.empty())
        return keys;
    if (auto keys = fit_foreign_key(schema, left, Side::Left, right); !keys.empty())
        return keys;
    return common_fields(schema, left, right);
}

} // namespace orvane
