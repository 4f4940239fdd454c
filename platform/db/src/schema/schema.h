// A schema: the attributes and relations of a kind of database. Immutable once it is read; several open
// databases may share one.
#pragma once

#include "schema/relation.h"

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

class Schema
{
public:
    Schema() = default;
    // Relations point into the attributes.
    Schema(const Schema &) = delete;
    Schema &operator=(const Schema &) = delete;

    std::string name;
    std::string file; // the path it was read from
    std::string description;
    std::string detail;
    std::string timestamp; // the field that is set on every change; or empty

    const std::deque<Attribute> &attributes() const { return attributes_; }
    const std::deque<Relation> &relations() const { return relations_; }

    const Attribute *attribute(std::string_view attribute_name) const;
    // The relation's place in the list, or -1.
    int relation_index(std::string_view relation_name) const;
    const Relation *relation(std::string_view relation_name) const;
    // The relation that defines the id field, or null.
    const Relation *defining(std::string_view id_field) const;

    std::vector<std::string_view> attribute_names() const;
    std::vector<std::string_view> relation_names() const;

    // Deques, so that what is added stays where it is.
    Attribute &add_attribute(Attribute attribute);
    // Whether there is such an attribute.
    bool mark_not_joined(std::string_view attribute_name);
    Relation &add_relation(std::string relation_name);

private:
    std::deque<Attribute> attributes_;
    std::deque<Relation> relations_;
    std::unordered_map<std::string_view, int> attribute_index_;
    std::unordered_map<std::string_view, int> relation_index_;
};

} // namespace orvane
