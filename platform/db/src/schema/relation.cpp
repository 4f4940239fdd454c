#include "schema/relation.h"

namespace orvane {

int Relation::field_index(std::string_view field_name) const
{
    const auto found = index_.find(field_name);
    return found == index_.end() ? -1 : found->second;
}

std::vector<const KeyElement *> Relation::ranges() const
{
    std::vector<const KeyElement *> found;
    for (const Key *key : {&primary, &alternate, &foreign})
        for (const KeyElement &element : *key)
            if (element.is_range())
                found.push_back(&element);
    return found;
}

void Relation::add_field(const Attribute &attribute)
{
    const std::int64_t offset = record_size_;
    index_.emplace(attribute.name, static_cast<int>(fields_.size()));
    fields_.push_back(RelationField{&attribute, offset});
    // One byte after each field: a blank before the next one, or the line feed at the end.
    record_size_ = offset + attribute.width + 1;
    if (!null_record_.empty())
        null_record_ += ' ';
    null_record_ += null_field(attribute);
}

} // namespace orvane
