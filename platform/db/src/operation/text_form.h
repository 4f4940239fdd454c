// How fields are written as text: in full width as they stand, or trimmed and quoted as RFC 4180 has it.
#pragma once

#include "base/status.h"
#include "schema/attribute.h"

#include <array>
#include <string>
#include <string_view>

namespace orvane {

class TextForm
{
public:
    // Fails where a file with the separator couldn't be read back.
    static Result<TextForm> make(std::string_view separator, bool delimited);

    const std::string &separator() const { return separator_; }
    bool delimited() const { return delimited_; }

    // Whether a text is quoted because of a character.
    bool is_quoting(char c) const { return quoting_[static_cast<unsigned char>(c)]; }
    // Whether the separator is made of one character, so that there are four that are quoting.
    bool has_plain_separator() const { return has_plain_separator_; }

    // A trimmed text of so many bytes takes no more than this.
    static constexpr std::size_t most_bytes(std::size_t size) { return 2 * size + 2; }
    // Puts a trimmed text where there is room for it, and answers where it ends. `alone`: it is the only one
    // of its line.
    char *put_delimited(std::string_view text, bool alone, char *to) const;
    // Appends a field's name: where fields have their full width, in that of its own and on the side of its
    // values. A longer name is not cut.
    void append_name(std::string_view name, const Attribute &attribute, bool alone, std::string &out) const;

private:
    TextForm(std::string_view separator, bool delimited);

    std::string separator_;
    bool delimited_;
    bool has_plain_separator_;
    std::array<bool, 256> quoting_{};
};

} // namespace orvane
