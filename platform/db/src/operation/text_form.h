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

    // Appends a field's text. `alone`: it is the only one of its line.
    void append_field(std::string_view text, bool alone, std::string &out) const;
    // Appends a field's name: where fields have their full width, in that of its own and on the side of its
    // values. A longer name is not cut.
    void append_name(std::string_view name, const Attribute &attribute, bool alone, std::string &out) const;

private:
    TextForm(std::string_view separator, bool delimited);
    void append_delimited(std::string_view text, bool alone, std::string &out) const;

    std::string separator_;
    bool delimited_;
    std::array<bool, 256> quoted_{}; // characters because of which a text is quoted
};

} // namespace orvane
