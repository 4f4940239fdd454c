#include "edit/key_index.h"

#include "table/field_value.h"

#include <algorithm>
#include <cstring>
#include <functional>

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

std::uint64_t hash_of(std::string_view key)
{
    // The library's hash leaves low bits that are not mixed with the high ones to chance.
    return static_cast<std::uint64_t>(std::hash<std::string_view>()(key)) * 0x9e3779b97f4a7c15u;
}

} // namespace

KeyIndex::KeyIndex(const Relation &relation)
{
    for (const KeyElement &element : relation.primary)
        for (const std::string *name : {&element.begin, &element.end})
            if (const int field = relation.field_index(*name); field >= 0)
                fields_.push_back(relation.fields()[static_cast<std::size_t>(field)]);
}

std::string KeyIndex::key_of(std::string_view record) const
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

void KeyIndex::start(std::int64_t records)
{
    version_ = 0;
    used_ = 0;
    slots_.clear();
    grow(static_cast<std::size_t>(records) + 1);
}

void KeyIndex::grow(std::size_t records)
{
    std::size_t size = 16;
    while (size < 2 * records)
        size *= 2;
    std::vector<Slot> old(size);
    old.swap(slots_);
    used_ = 0;
    for (const Slot &slot : old)
        if (slot.number >= 0)
            insert(slot.hash, slot.number);
}

void KeyIndex::insert(std::uint64_t hash, std::int64_t number)
{
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = (hash >> 20) & mask;
    while (slots_[at].number != empty)
        at = (at + 1) & mask;
    slots_[at] = Slot{hash, number};
    ++used_;
}

void KeyIndex::add(std::int64_t number, std::string_view key)
{
    if (4 * (used_ + 1) > 3 * slots_.size())
        grow(used_ + 1);
    insert(hash_of(key), number);
}

void KeyIndex::remove(std::int64_t number, std::string_view key)
{
    const std::uint64_t hash = hash_of(key);
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = (hash >> 20) & mask; slots_[at].number != empty; at = (at + 1) & mask)
        if (slots_[at].number == number && slots_[at].hash == hash)
            slots_[at].number = removed;
}

std::vector<std::int64_t> KeyIndex::candidates(std::string_view key) const
{
    const std::uint64_t hash = hash_of(key);
    const std::size_t mask = slots_.size() - 1;
    std::vector<std::int64_t> numbers;
    for (std::size_t at = (hash >> 20) & mask; slots_[at].number != empty; at = (at + 1) & mask)
        if (slots_[at].hash == hash && slots_[at].number >= 0)
            numbers.push_back(slots_[at].number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

} // namespace orvane
