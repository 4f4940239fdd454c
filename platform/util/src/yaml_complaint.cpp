#include "yaml_complaint.h"

#include <string_view>

namespace orvane::util {
namespace {

struct Wording {
    std::string_view problem; // the parser's
    std::string_view ours;
};

constexpr Wording wordings[] = {
    {"did not find expected key", "expected a key (key: value) indented like those before it"},
    {"did not find expected ',' or ']'", "expected ',' or ']'"},
    {"did not find expected ',' or '}'", "expected ',' or '}'"},
    {"did not find expected '-' indicator", "expected '- ' and the next element of the list"},
    {"did not find expected <document start>", "expected the end of the file or a key (key: value)"},
    {"did not find expected node content", "expected a value"},
    {"could not find expected ':'", "expected ':' and a value after the key"},
    {"mapping values are not allowed in this context",
     "expected one key in a line and ': ' only after it; put a value that contains ': ' in quotes"},
    {"mapping keys are not allowed in this context", "expected a value, found '?' and a key"},
    {"block sequence entries are not allowed in this context",
     "expected a value; a list starts in a line of its own"},
    {"found character that cannot start any token", "expected a key or a value; put text that starts with @, "
                                                    "%, ` or a tab in quotes, and indent with blanks"},
    {"found a tab character that violates indentation", "expected blanks, found a tab: indent with blanks"},
    {"found unexpected end of stream", "expected the quote that ends the text, found the end of the file"},
    {"found unexpected document indicator",
     "expected the quote that ends the text, found the start of a second document"},
    {"found unknown escape character",
     "expected an escape such as \\n, \\\" or \\\\ (in single quotes a backslash is only itself)"},
    {"found unknown directive name",
     "expected keys and values, found a directive (a line that starts with %)"},
};

} // namespace

PfPlace place_of(const yaml_mark_t &mark)
{
    return {static_cast<int64_t>(mark.line) + 1, static_cast<int64_t>(mark.column) + 1};
}

YamlComplaint yaml_complaint(const yaml_parser_t &parser)
{
    const std::string_view problem = parser.problem ? parser.problem : "the text is not YAML";
    // A reader error comes before any mark is set; it stands where the scanner has got to.
    YamlComplaint complaint{place_of(parser.error == YAML_READER_ERROR ? parser.mark : parser.problem_mark),
                            ""};
    for (const Wording &wording : wordings) {
        if (wording.problem == problem)
            complaint.reason = wording.ours;
    }
    if (complaint.reason.empty())
        complaint.reason = "expected YAML: " + std::string(problem);
    if (parser.context) {
        const PfPlace start = place_of(parser.context_mark);
        complaint.reason += " (" + std::string(parser.context) + " that starts in line " +
                            std::to_string(start.line) + ", column " + std::to_string(start.column) + ")";
    }
    return complaint;
}

} // namespace orvane::util
