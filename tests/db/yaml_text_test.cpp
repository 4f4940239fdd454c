// Any text written as a scalar is read as it was.
#include "base/yaml_text.h"

#include <gtest/gtest.h>

#include <orvane/util.h>

#include <string>

namespace {

std::string read_back(const std::string &quoted)
{
    const std::string file = "text: " + quoted + "\n";
    Pf *pf = nullptr;
    if (pfparse(file.data(), file.size(), "file", &pf) < 0) {
        elog_clear();
        return "(refused)";
    }
    PfValue value{};
    pfget(pf, "text", &value);
    const std::string text = value.text ? value.text : "(no text)";
    pffree(pf);
    return text;
}

// A character as UTF-8.
std::string utf8(unsigned code)
{
    const auto byte = [](unsigned value) { return static_cast<char>(value); };
    if (code < 0x80)
        return {byte(code)};
    if (code < 0x800)
        return {byte(0xc0 | code >> 6), byte(0x80 | (code & 0x3f))};
    if (code < 0x10000)
        return {byte(0xe0 | code >> 12), byte(0x80 | (code >> 6 & 0x3f)), byte(0x80 | (code & 0x3f))};
    return {byte(0xf0 | code >> 18), byte(0x80 | (code >> 12 & 0x3f)), byte(0x80 | (code >> 6 & 0x3f)),
            byte(0x80 | (code & 0x3f))};
}

TEST(YamlText, KeepsEveryCharacter)
{
    for (unsigned code = 1; code <= 0x10ffff; code += code < 0x11000 ? 1 : 0x101) {
        if (code >= 0xd800 && code <= 0xdfff)
            continue; // halves of pairs are no characters
        const std::string text = "a " + utf8(code) + " b" + utf8(code);
        ASSERT_EQ(read_back(orvane::yaml_quoted(text)), text) << std::hex << code;
    }
}

TEST(YamlText, PutsQuestionMarksInThePlaceOfOtherBytes)
{
    EXPECT_EQ(read_back(orvane::yaml_quoted("\xff\xc3 \xed\xa0\x80")), "?? ???");
}

} // namespace
