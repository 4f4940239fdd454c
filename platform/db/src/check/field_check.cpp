#include "check/field_check.h"

#include "base/concat.h"
#include "column/number_decoding.h"
#include "edit/field_text.h"
#include "table/field_value.h"
#include "table/value_type.h"

#include <algorithm>

namespace orvane {

namespace {

constexpr std::size_t most_known_texts = 1 << 16;

// Whether a number stands at the right end of its field, as short as the format writes it, with so many
// decimals; -1: a whole number.
bool is_plain_form(std::string_view text, int decimals)
{
    const auto first = text.find_first_not_of(' ');
    if (first == std::string_view::npos)
        return false;
    text.remove_prefix(first);
    const bool negative = text[0] == '-';
    if (negative)
        text.remove_prefix(1);
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    std::size_t whole = 0;
    while (whole < text.size() && is_digit(text[whole]))
        ++whole;
    if (whole == 0 || (whole > 1 && text[0] == '0'))
        return false;
    if (decimals <= 0)
        return whole == text.size() && !(negative && decimals < 0 && text == "0");
    if (text.size() != whole + 1 + static_cast<std::size_t>(decimals) || text[whole] != '.')
        return false;
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(whole) + 1, text.end(), is_digit);
}

bool is_plain_format(const Attribute &attribute)
{
    const FieldFormat &format = attribute.parsed_format;
    return format.flags.empty() && ((format.conversion == 'd' && format.precision < 0) ||
                                    (format.conversion == 'f' && format.precision < 18));
}

int decimals_of(const FieldFormat &format)
{
    return format.conversion == 'd' ? -1 : format.precision < 0 ? 6 : format.precision;
}

// Whether the field stands as its format writes the value. A text that the format has no room for does, too.
bool has_form(const Attribute &attribute, bool plain_format, std::string_view text)
{
    if (plain_format)
        return is_plain_form(text, decimals_of(attribute.parsed_format));
    const auto value = decode_field(attribute, text);
    const auto printed = value ? field_text(attribute, *value) : Status(Code::Value, "no value");
    return !printed.ok() || *printed == text;
}

bool is_plain_text(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7f; });
}

// What a message of the rules of values says behind the field's name.
std::string_view without_field(std::string_view message, const std::string &field)
{
    const std::string before = concat("field ", field, ": ");
    return message.starts_with(before) ? message.substr(before.size()) : message;
}

class NumberBatch : public expr::ColumnBatch
{
public:
    NumberBatch(std::size_t size, const expr::ColumnView &view) : size_(size), view_(view) {}

    std::size_t size() const override { return size_; }
    Result<expr::ColumnView> column(std::size_t) override { return view_; }

private:
    std::size_t size_;
    expr::ColumnView view_;
};

} // namespace

// The records of a batch, and where their findings go.
struct FieldCheck::Here {
    const LineRun &run;
    std::int64_t first; // within the run
    std::int64_t count;
    std::int64_t record_size;
    FindingBatch &findings;

    const char *record(std::int64_t at) const { return run.records + (first + at) * record_size; }
    std::string_view text(std::int64_t at, const RelationField &field) const
    {
        return {record(at) + field.offset, static_cast<std::size_t>(field.attribute->width)};
    }
    // A finding about a byte of a record, and what follows it.
    Finding at(std::int64_t at, std::int64_t byte) const
    {
        Finding finding;
        const std::int64_t offset = run.offset + (first + at) * record_size;
        finding.line = run.line + first + at;
        finding.record = offset % record_size == 0 ? offset / record_size : -1;
        finding.offset = offset + byte;
        return finding;
    }
};

FieldCheck::FieldCheck(const Relation &relation) : relation_(relation)
{
    for (const RelationField &field : relation.fields()) {
        Column &column = columns_.emplace_back();
        const Attribute &attribute = *field.attribute;
        column.place = field;
        column.plain_format = is_plain_format(attribute);
        if (attribute.range.empty())
            continue;
        auto bound = expr::check_range(attribute.name, value_type(attribute.type), attribute.range);
        if (!bound.ok())
            column.range.broken = bound.status();
        else if (is_number(attribute.type))
            column.range.numbers.emplace(std::move(*bound));
        else
            column.range.texts.emplace(std::move(*bound));
    }
    for (const KeyElement &element : relation.primary)
        // The end of a range that is null is open.
        if (const int field = relation.field_index(element.begin); field >= 0 && !element.is_range())
            columns_[static_cast<std::size_t>(field)].key_element = key_elements_++;
    if (!relation.defines.empty())
        defined_ = relation.field_index(relation.defines);
}

std::vector<Finding> FieldCheck::broken_ranges() const
{
    std::vector<Finding> findings;
    for (const Column &column : columns_)
        if (!column.range.broken.ok()) {
            Finding &finding = findings.emplace_back();
            finding.kind = FindingKind::Schema;
            finding.field = column.place.attribute->name;
            finding.found = column.place.attribute->range;
            const std::string_view why = column.range.broken.message();
            finding.message = concat("its range cannot be asked: ", why.substr(0, why.find('\n')));
        }
    return findings;
}

void FieldCheck::wrong_text(FindingKind kind, const Column &column, const Here &here, std::int64_t at,
                            std::string_view message) const
{
    here.findings.add(kind, column.place.attribute->name, [&] {
        Finding finding = here.at(at, column.place.offset);
        finding.found = shown_bytes(trimmed(here.text(at, column.place)));
        finding.message = message;
        return finding;
    });
}

void FieldCheck::out_of_range(const Column &column, const Here &here, std::int64_t at) const
{
    wrong_text(FindingKind::Range, column, here, at,
               concat("is out of range: ", column.place.attribute->range));
}

void FieldCheck::check_separators(const Here &here)
{
    for (std::size_t i = 0; i + 1 < columns_.size(); ++i) {
        const RelationField &field = columns_[i].place;
        const std::int64_t byte = field.offset + field.attribute->width;
        for (std::int64_t at = 0; at < here.count; ++at) {
            if (here.record(at)[byte] == ' ')
                continue;
            here.findings.add(FindingKind::Separator, field.attribute->name, [&] {
                Finding finding = here.at(at, byte);
                finding.found = shown_bytes({here.record(at) + byte, 1});
                finding.message =
                    concat("stands where a blank is expected, between the fields ", field.attribute->name,
                           " and ", columns_[i + 1].place.attribute->name);
                return finding;
            });
        }
    }
}

FieldCheck::State FieldCheck::check_integer(const Column &column, const Here &here, std::int64_t at,
                                            std::string_view text)
{
    std::int64_t &value = integers_[static_cast<std::size_t>(at)];
    const Attribute &attribute = *column.place.attribute;
    if (!decode_plain_integer(text.data(), text.data() + text.size(), value)) {
        const auto read = decode_integer(text);
        if (!read)
            return check_other(column, here, at, text);
        value = *read;
    }
    if (value == attribute.null_integer)
        return Null;
    const bool fits = attribute.type == FieldType::Boolean   ? value == 0 || value == 1
                      : attribute.type == FieldType::Yearday ? is_yearday(value)
                                                             : true;
    return fits ? Good : check_other(column, here, at, text);
}

FieldCheck::State FieldCheck::check_real(const Column &column, const Here &here, std::int64_t at,
                                         std::string_view text)
{
    double &value = reals_[static_cast<std::size_t>(at)];
    const Attribute &attribute = *column.place.attribute;
    if (!decode_plain_real(text.data(), text.data() + text.size(), value)) {
        const auto read = attribute.type == FieldType::Time ? decode_time(text) : decode_real(text);
        if (!read)
            return check_other(column, here, at, text);
        value = *read;
    }
    return value == attribute.null_real ? Null : Good;
}

FieldCheck::State FieldCheck::check_text(Column &column, const Here &here, std::int64_t at,
                                         std::string_view text)
{
    const Attribute &attribute = *column.place.attribute;
    if (!is_plain_text(text))
        if (Status characters = check_characters(text, concat("field ", attribute.name)); !characters.ok()) {
            wrong_text(FindingKind::Characters, column, here, at,
                       without_field(characters.message(), attribute.name));
            return Bad;
        }
    if (is_null_field(attribute, text))
        return Null;
    if (column.range.texts) {
        const std::string key(trimmed_right(text));
        auto known = column.range.known.find(key);
        if (known == column.range.known.end()) {
            expr::Value value;
            value.type = expr::ValueType::Text;
            value.text = key;
            const auto admitted = column.range.texts->admits(value);
            if (column.range.known.size() >= most_known_texts)
                column.range.known.clear();
            known = column.range.known.emplace(key, admitted.ok() && *admitted).first;
        }
        if (!known->second)
            out_of_range(column, here, at);
    }
    if (text[0] == ' ' && trimmed(text) != "")
        wrong_text(FindingKind::Form, column, here, at, "does not begin at the left of its field");
    return Good;
}

// What the quick ways don't take: a pointer, or a text that may be no value.
FieldCheck::State FieldCheck::check_other(const Column &column, const Here &here, std::int64_t at,
                                          std::string_view text)
{
    const Attribute &attribute = *column.place.attribute;
    if (Status characters = check_characters(text, concat("field ", attribute.name)); !characters.ok()) {
        wrong_text(FindingKind::Characters, column, here, at,
                   without_field(characters.message(), attribute.name));
        return Bad;
    }
    if (is_null_field(attribute, text))
        return Null;
    if (Status fits = check_field_text(attribute, text); !fits.ok()) {
        wrong_text(FindingKind::Type, column, here, at,
                   concat("is no value of type ", type_name(attribute.type)));
        return Bad;
    }
    return Good;
}

void FieldCheck::check_number_range(Column &column, const Here &here)
{
    const auto count = static_cast<std::size_t>(here.count);
    bool any = false;
    for (std::size_t at = 0; at < count; ++at) {
        unfit_[at] = states_[at] != Good;
        any |= states_[at] == Good;
    }
    if (!any)
        return;
    expr::ColumnView view;
    view.integers = integers_.data();
    view.reals = reals_.data();
    view.nulls = unfit_.data();
    NumberBatch numbers(count, view);
    inside_.clear();
    if (!column.range.numbers->select_all(numbers, inside_).ok())
        return; // what needs too much memory says nothing about the values
    auto next = inside_.begin();
    for (std::size_t at = 0; at < count; ++at) {
        const bool is_inside = next != inside_.end() && *next == at;
        if (is_inside)
            ++next;
        else if (states_[at] == Good)
            out_of_range(column, here, static_cast<std::int64_t>(at));
    }
}

void FieldCheck::check_column(Column &column, const Here &here)
{
    const Attribute &attribute = *column.place.attribute;
    const bool defines = defined_ >= 0 && &column == &columns_[static_cast<std::size_t>(defined_)];
    const bool whole = is_integer(attribute.type);
    const bool real = is_real(attribute.type);
    for (std::int64_t at = 0; at < here.count; ++at) {
        const std::string_view text = here.text(at, column.place);
        const State state = whole                                 ? check_integer(column, here, at, text)
                            : real                                ? check_real(column, here, at, text)
                            : attribute.type == FieldType::String ? check_text(column, here, at, text)
                                                                  : check_other(column, here, at, text);
        const auto index = static_cast<std::size_t>(at);
        states_[index] = state;
        values_[index] += state == Null ? 0 : 1;
        key_nulls_[index] += state == Null && column.key_element >= 0 ? 1 : 0;
        if (state == Good && defines && whole)
            greatest_id_ = std::max(greatest_id_, integers_[index]);
        if ((whole || real) && state != Bad && !has_form(attribute, column.plain_format, text))
            wrong_text(FindingKind::Form, column, here, at,
                       concat("is not written as ", attribute.format, " writes it"));
    }
    if (column.range.numbers)
        check_number_range(column, here);
}

void FieldCheck::check_keys(const Here &here)
{
    for (std::int64_t at = 0; at < here.count; ++at) {
        const auto index = static_cast<std::size_t>(at);
        if (values_[index] == 0) {
            ++marked_;
            continue;
        }
        if (key_nulls_[index] == 0)
            continue;
        const bool all = key_nulls_[index] == key_elements_;
        here.findings.add(all ? FindingKind::KeyNull : FindingKind::KeyIncomplete, {}, [&] {
            Finding finding = here.at(at, 0);
            std::string names;
            for (const Column &column : columns_)
                if (column.key_element >= 0 &&
                    is_null_field(*column.place.attribute, here.text(at, column.place)))
                    names.append(names.empty() ? "" : ", ").append(column.place.attribute->name);
            finding.message =
                concat(all ? "the primary key is null: " : "a part of the primary key is null: ", names);
            return finding;
        });
    }
}

void FieldCheck::check(const LineRun &run, std::int64_t first, std::int64_t count, FindingBatch &findings)
{
    const Here here{run, first, count, relation_.record_size(), findings};
    const auto size = static_cast<std::size_t>(count);
    integers_.resize(size);
    reals_.resize(size);
    states_.resize(size);
    unfit_.resize(size);
    values_.assign(size, 0);
    key_nulls_.assign(size, 0);
    check_separators(here);
    for (Column &column : columns_)
        check_column(column, here);
    check_keys(here);
}

} // namespace orvane
