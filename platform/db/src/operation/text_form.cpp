#include "operation/text_form.h"

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

TextForm::TextForm(std::string_view separator, bool delimited)
    : separator_(separator), delimited_(delimited),
      has_plain_separator_(!separator.empty() &&
                           separator.find_first_not_of(separator.front()) == std::string_view::npos)
{
    for (const char c : separator_ + "\"\r\n")
        quoting_[static_cast<unsigned char>(c)] = true;
}

void TextForm::append_name(std::string_view name, const Attribute &attribute, bool alone,
                           std::string &out) const
{
    if (delimited_) {
        std::string text(most_bytes(name.size()), '\0');
        out.append(text.data(), put_delimited(name, alone, text.data()));
        return;
    }
    const auto width = static_cast<std::size_t>(attribute.width);
    const std::size_t blanks = width > name.size() ? width - name.size() : 0;
    const bool on_the_right = is_number(attribute.type);
    out.append(on_the_right ? blanks : 0, ' ').append(name).append(on_the_right ? 0 : blanks, ' ');
}

// An empty text that is alone in its line is quoted: an empty line is no record to most readers.
char *TextForm::put_delimited(std::string_view text, bool alone, char *to) const
{
    const auto is_quoting_one = [this](char c) { return is_quoting(c); };
    if (!(alone && text.empty()) && std::none_of(text.begin(), text.end(), is_quoting_one))
        return std::copy(text.begin(), text.end(), to);
    *to++ = '"';
    for (const char c : text) {
        if (c == '"')
            *to++ = '"';
        *to++ = c;
    }
    *to++ = '"';
    return to;
}

} // namespace orvane
