#include "operation/text_form.h"

#include "table/field_value.h"

#include <algorithm>

namespace orvane {

Result<TextForm> TextForm::make(std::string_view separator, bool delimited)
{
    if (delimited && separator.empty())
        return Status(Code::Argument, "the separator is empty where trimmed fields have to be told apart");
    if (delimited && separator.find_first_of("\"\r\n") != std::string_view::npos)
        return Status(Code::Argument,
                      "the separator holds a quote or an end of line, which have a meaning of "
                      "their own between trimmed fields");
    return TextForm(separator, delimited);
}

TextForm::TextForm(std::string_view separator, bool delimited) : separator_(separator), delimited_(delimited)
{
    for (const char c : separator_ + "\"\r\n")
        quoted_[static_cast<unsigned char>(c)] = true;
}

void TextForm::append_field(std::string_view text, bool alone, std::string &out) const
{
    if (delimited_)
        append_delimited(trimmed(text), alone, out);
    else
        out.append(text);
}

void TextForm::append_name(std::string_view name, const Attribute &attribute, bool alone,
                           std::string &out) const
{
    if (delimited_)
        return append_delimited(name, alone, out);
    const auto width = static_cast<std::size_t>(attribute.width);
    const std::size_t blanks = width > name.size() ? width - name.size() : 0;
    const bool on_the_right = is_number(attribute.type);
    out.append(on_the_right ? blanks : 0, ' ').append(name).append(on_the_right ? 0 : blanks, ' ');
}

// An empty text that is alone in its line is quoted: an empty line is no record to most readers.
void TextForm::append_delimited(std::string_view text, bool alone, std::string &out) const
{
    const auto needs_quotes = [this](char c) { return quoted_[static_cast<unsigned char>(c)]; };
    if (!(alone && text.empty()) && std::none_of(text.begin(), text.end(), needs_quotes)) {
        out.append(text);
        return;
    }
    out += '"';
    for (const char c : text) {
        if (c == '"')
            out += '"';
        out += c;
    }
    out += '"';
}

} // namespace orvane
