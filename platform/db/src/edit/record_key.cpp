#include "edit/record_key.h"

#include "table/field_value.h"

#include <cstring>

namespace orvane {

namespace {

template <typename T>
void append_bytes(std::string &out, T value)
{
    char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    out.append(bytes, sizeof value);
}

void append_text(std::string &out, std::string_view text)
{
    append_bytes(out, text.size());
    out += text;
}

} // namespace

RecordKey::RecordKey(const Relation &relation, const Key &key)
{
    for (const KeyElement &element : key)
        for (const std::string *name : {&element.begin, &element.end})
            if (const int field = relation.field_index(*name); field >= 0)
                fields_.push_back(relation.fields()[static_cast<std::size_t>(field)]);
}

std::string RecordKey::of(std::string_view record) const
{
    std::string key;
    for (const RelationField &field : fields_) {
        const Attribute &attribute = *field.attribute;
        const std::string_view text =
            record.substr(static_cast<std::size_t>(field.offset), static_cast<std::size_t>(attribute.width));
        const auto value = decode_field(attribute, text);
        if (value && is_integer(attribute.type))
            append_bytes(key, value->integer);
        else if (value && is_real(attribute.type))
            append_bytes(key, value->real + 0.0); // -0.0 is 0.0
        else
            append_text(key, attribute.type == FieldType::String ? trimmed_right(text) : trimmed(text));
    }
    return key;
}

} // namespace orvane
