#include "schema/schema.h"

namespace orvane {

const Attribute *Schema::attribute(std::string_view attribute_name) const
{
    const auto found = attribute_index_.find(attribute_name);
    return found == attribute_index_.end() ? nullptr : &attributes_[static_cast<std::size_t>(found->second)];
}

int Schema::relation_index(std::string_view relation_name) const
{
    const auto found = relation_index_.find(relation_name);
    return found == relation_index_.end() ? -1 : found->second;
}

const Relation *Schema::relation(std::string_view relation_name) const
{
    const int index = relation_index(relation_name);
    return index < 0 ? nullptr : &relations_[static_cast<std::size_t>(index)];
}

const Relation *Schema::defining(std::string_view id_field) const
{
    for (const Relation &relation : relations_)
        if (!relation.defines.empty() && relation.defines == id_field)
            return &relation;
    return nullptr;
}

std::vector<std::string_view> Schema::attribute_names() const
{
    std::vector<std::string_view> names;
    for (const Attribute &attribute : attributes_)
        names.push_back(attribute.name);
    return names;
}

std::vector<std::string_view> Schema::relation_names() const
{
    std::vector<std::string_view> names;
    for (const Relation &relation : relations_)
        names.push_back(relation.name);
    return names;
}

Attribute &Schema::add_attribute(Attribute attribute)
{
    attributes_.push_back(std::move(attribute));
    attribute_index_.emplace(attributes_.back().name, static_cast<int>(attributes_.size() - 1));
    return attributes_.back();
}

bool Schema::mark_not_joined(std::string_view attribute_name)
{
    const auto found = attribute_index_.find(attribute_name);
    if (found != attribute_index_.end())
        attributes_[static_cast<std::size_t>(found->second)].not_joined = true;
    return found != attribute_index_.end();
}

Relation &Schema::add_relation(std::string relation_name)
{
    relations_.emplace_back();
    relations_.back().name = std::move(relation_name);
    relation_index_.emplace(relations_.back().name, static_cast<int>(relations_.size() - 1));
    return relations_.back();
}

} // namespace orvane
