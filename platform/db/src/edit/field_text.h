// From a value to the text of a field, and what a field may hold.
#pragma once

#include "base/status.h"
#include "schema/attribute.h"
#include "table/field_value.h"

#include <string>
#include <string_view>

namespace orvane {

// The text of a field for a value, printed by the attribute's format and as wide as the field: numbers to the
// right, text to the left. The value may be of another type if it is one of the field's too: a whole number
// for a real one, a text that reads as a number or time, a number for a text. What does not fit is refused,
// never cut or rounded beyond the format. The range is not asked about.
Result<std::string> field_text(const Attribute &attribute, const FieldValue &value);

// Whether the text, of the field's width, can stand in the field.
Status check_field_text(const Attribute &attribute, std::string_view text);

// Whether the text is UTF-8 without control characters; `of` begins the message.
Status check_characters(std::string_view text, std::string_view of);

// A day that the calendar has, as yyyyddd.
bool is_yearday(std::int64_t number);

} // namespace orvane
