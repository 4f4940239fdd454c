#include "memory_rows.h"

#include <cstdlib>
#include <stdexcept>

#include "expression/number_text.h"

namespace orvane::expr::test {

MemoryDictionary::MemoryDictionary()
{
    static std::uint64_t next = 1;
    identity_ = next++;
}

std::uint32_t MemoryDictionary::code(const std::string &text)
{
    const auto [entry, added] = codes_.emplace(text, static_cast<std::uint32_t>(texts_.size()));
    if (added)
        texts_.push_back(text);
    return entry->second;
}

MemoryRows::MemoryRows(std::vector<ScopeField> fields) : fields_(std::move(fields)), columns_(fields_.size())
{
}

void MemoryRows::add(const std::vector<std::string> &values)
{
    if (values.size() != fields_.size())
        throw std::runtime_error("a row needs one value per field");
    for (std::size_t i = 0; i < values.size(); ++i) {
        Column &column = columns_[i];
        bool null = values[i] == fields_[i].null_text;
        switch (storage_of(fields_[i].type)) {
        case Storage::Integer:
            column.integers.push_back(std::strtoll(values[i].c_str(), nullptr, 10));
            break;
        case Storage::Real:
            column.reals.push_back(std::strtod(values[i].c_str(), nullptr));
            null = column.reals.back() == std::strtod(fields_[i].null_text.c_str(), nullptr);
            break;
        case Storage::Text:
            column.codes.push_back(column.dictionary.code(values[i]));
            break;
        }
        column.nulls.push_back(null ? 1 : 0);
    }
    ++count_;
}

Result<ColumnView> MemoryRows::Batch::column(std::size_t column)
{
    ++asked[column];
    if (column == broken)
        return Status(Code::Io, "the disk is gone");
    const Column &from = rows_.columns_.at(column);
    ColumnView view;
    view.nulls = from.nulls.data() + first_;
    switch (storage_of(rows_.fields_[column].type)) {
    case Storage::Integer:
        view.integers = from.integers.data() + first_;
        break;
    case Storage::Real:
        view.reals = from.reals.data() + first_;
        break;
    case Storage::Text:
        view.codes = from.codes.data() + first_;
        view.dictionary = &from.dictionary;
        break;
    }
    return view;
}

std::string shown(const Value &value)
{
    if (value.presence == Missing)
        return "null";
    std::string text;
    switch (value.type) {
    case ValueType::Boolean:
        text = value.integer == 1 ? "true" : value.integer == 0 ? "false" : std::to_string(value.integer);
        break;
    case ValueType::Integer:
        text = std::to_string(value.integer);
        break;
    case ValueType::Real:
        text = "real " + number_text(value.real);
        break;
    case ValueType::Time:
        text = "time " + number_text(value.real);
        break;
    case ValueType::Yearday:
        text = "yearday " + std::to_string(value.integer);
        break;
    default:
        text = "'" + value.text + "'";
        break;
    }
    return value.presence == StoredNull ? text + " (null)" : text;
}

} // namespace orvane::expr::test
