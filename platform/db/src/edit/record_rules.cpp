#include "edit/record_rules.h"

#include "base/concat.h"
#include "edit/field_text.h"
#include "table/value_type.h"

#include <orvane/util.h>

namespace orvane {

namespace {

expr::Value expression_value(const FieldValue &value)
{
    expr::Value out;
    out.type = value_type(value.type);
    out.integer = value.integer;
    out.real = value.real;
    out.text = value.text;
    return out;
}

} // namespace

RecordRules::RecordRules(const Relation &relation, std::string_view timestamp)
    : relation_(relation), timestamp_(timestamp.empty() ? -1 : relation.field_index(timestamp)),
      ranges_(relation.fields().size())
{
}

std::string_view RecordRules::field_of(std::string_view record, std::size_t field) const
{
    const RelationField &place = relation_.fields()[field];
    return record.substr(static_cast<std::size_t>(place.offset),
                         static_cast<std::size_t>(place.attribute->width));
}

void RecordRules::put(std::string &record, std::size_t field, std::string_view text) const
{
    const RelationField &place = relation_.fields()[field];
    record.replace(static_cast<std::size_t>(place.offset), static_cast<std::size_t>(place.attribute->width),
                   text);
}

void RecordRules::stamp(std::string &record) const
{
    if (timestamp_ >= 0)
        put(record, static_cast<std::size_t>(timestamp_), stamp_text());
}

std::string RecordRules::stamp_text() const
{
    if (timestamp_ < 0)
        return {};
    FieldValue now;
    now.type = FieldType::Time;
    now.real = std_now();
    // A schema whose timestamp has no room for the present time leaves it unset.
    const Attribute &attribute = *relation_.fields()[static_cast<std::size_t>(timestamp_)].attribute;
    const auto text = orvane::field_text(attribute, now);
    return text.ok() ? *text : null_field(attribute);
}

bool RecordRules::is_marked(std::string_view record) const
{
    for (std::size_t field = 0; field < relation_.fields().size(); ++field)
        if (!is_null_field(*relation_.fields()[field].attribute, field_of(record, field)))
            return false;
    return true;
}

Status RecordRules::check_range(std::size_t field, const FieldValue &value)
{
    const Attribute &attribute = *relation_.fields()[field].attribute;
    if (attribute.range.empty())
        return Status();
    if (!ranges_[field]) {
        auto bound = expr::check_range(attribute.name, value_type(attribute.type), attribute.range);
        ranges_[field].emplace();
        if (bound.ok())
            ranges_[field]->check.emplace(std::move(*bound));
        else
            ranges_[field]->broken = bound.status();
    }
    Range &range = *ranges_[field];
    if (!range.check)
        return Status(Code::Format, concat("field ", attribute.name, ": its range cannot be asked; mend the ",
                                           "schema: ", range.broken.message()));
    const auto admitted = range.check->admits(expression_value(value));
    if (!admitted.ok())
        return admitted.status();
    return *admitted ? Status()
                     : Status(Code::Value, concat("field ", attribute.name,
                                                  ": the value is out of range: ", attribute.range));
}

// What was printed counts, too: digits that a format leaves out may be what kept a value within its range.
Status RecordRules::check_stored(std::size_t field, std::string_view text)
{
    const Attribute &attribute = *relation_.fields()[field].attribute;
    if (is_null_field(attribute, text))
        return Status();
    const auto stored = decode_field(attribute, text);
    if (!stored)
        return Status(Code::Value,
                      concat("field ", attribute.name, ": '", trimmed(text),
                             "' cannot be read back as a value of type ", type_name(attribute.type)));
    return check_range(field, *stored);
}

Result<std::string> RecordRules::field_text(std::size_t field, const FieldValue &value)
{
    const Attribute &attribute = *relation_.fields()[field].attribute;
    auto text = orvane::field_text(attribute, value);
    if (!text.ok())
        return text;
    if (Status stored = check_stored(field, *text); !stored.ok())
        return stored;
    // Digits that the format leaves out may have been what was out of range, too.
    if (is_real(attribute.type) && is_real(value.type) && !is_null_field(attribute, *text)) {
        FieldValue exact = value;
        exact.type = attribute.type;
        if (Status admitted = check_range(field, exact); !admitted.ok())
            return admitted;
    }
    return text;
}

Status RecordRules::check_record(std::string_view text)
{
    const auto length = static_cast<std::size_t>(relation_.record_size() - 1);
    if (text.size() != length)
        return Status(Code::Value,
                      concat("the record is ", text.size(), " bytes long where ", length, " are expected"));
    bool has_value = false;
    for (std::size_t field = 0; field < relation_.fields().size(); ++field) {
        const RelationField &place = relation_.fields()[field];
        const auto end = static_cast<std::size_t>(place.offset + place.attribute->width);
        if (end < length && text[end] != ' ')
            return Status(Code::Value, concat("the record has no blank at byte ", end, ", behind field ",
                                              place.attribute->name));
        const std::string_view part = field_of(text, field);
        if (Status fits = check_field_text(*place.attribute, part); !fits.ok())
            return fits;
        if (Status fits = check_stored(field, part); !fits.ok())
            return fits;
        has_value |= static_cast<int>(field) != timestamp_ && !is_null_field(*place.attribute, part);
    }
    return has_value ? Status() : Status(Code::Value, "the record has nothing but nulls");
}

} // namespace orvane
