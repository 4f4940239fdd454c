#include "parameter_reader.h"

#include <algorithm>
#include <new>
#include <yaml.h>

#include "parameter_error.h"
#include "parameter_source.h"
#include "utf8.h"
#include "white_space.h"
#include "yaml_complaint.h"

namespace orvane::util {
namespace {

// Far beyond what people write, and far below what a stack holds.
constexpr int most_depth = 100;

struct Event {
    yaml_event_t raw = {};
    Event() = default;
    Event(const Event &) = delete;
    Event &operator=(const Event &) = delete;
    ~Event() { yaml_event_delete(&raw); }
    yaml_event_type_t type() const { return raw.type; }
    PfPlace place() const { return place_of(raw.start_mark); }
};

/* Where a text's first character stands that is neither white space nor part of a comment. */
size_t content_start(std::string_view text)
{
    size_t at = 0;
    while (at < text.size() && (is_white(text[at]) || text[at] == '#')) {
        if (text[at] == '#')
            at = std::min(text.find_first_of("\r\n", at), text.size());
        else
            ++at;
    }
    return at;
}

/* The place of a byte of a text. */
PfPlace place_in(std::string_view text, size_t byte)
{
    PfPlace place;
    for (size_t at = 0; at < byte; at += utf8_length(text.substr(at))) {
        const bool ends_line =
            text[at] == '\n' || (text[at] == '\r' && !text.substr(at + 1).starts_with('\n'));
        place = ends_line ? PfPlace{place.line + 1, 1} : PfPlace{place.line, place.column + 1};
    }
    return place;
}

class Reader
{
public:
    Reader(std::string_view text, const std::string &name);
    ~Reader() { yaml_parser_delete(&parser_); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    std::unique_ptr<Pf> document();

private:
    void next(Event &event);
    void expect_end();
    void refuse_directives();
    void refuse_properties(const Event &event);
    char character_at(const yaml_mark_t &mark);
    std::unique_ptr<Pf> node(PfKind kind, const Event &start, int depth);
    void fill_list(Pf &list, int depth);
    void fill_array(Pf &array, int depth);
    PfEntry value(const Event &event, int depth);
    std::string scalar(const Event &event) const;
    [[noreturn]] void refuse(PfPlace place, const std::string &reason) const;

    std::string_view text_;
    std::shared_ptr<const std::string> name_;
    yaml_parser_t parser_ = {};
    // How far character_at has counted: events come in the order of the text.
    size_t seen_characters_ = 0;
    size_t seen_bytes_ = 0;
};

Reader::Reader(std::string_view text, const std::string &name)
    : text_(text), name_(std::make_shared<const std::string>(name))
{
    if (!yaml_parser_initialize(&parser_))
        throw std::bad_alloc();
    yaml_parser_set_encoding(&parser_, YAML_UTF8_ENCODING);
    yaml_parser_set_input_string(&parser_, reinterpret_cast<const unsigned char *>(text.data()), text.size());
}

void Reader::refuse(PfPlace place, const std::string &reason) const
{
    throw ParameterError(*name_, place, reason);
}

void Reader::next(Event &event)
{
    if (yaml_parser_parse(&parser_, &event.raw)) {
        if (event.type() == YAML_ALIAS_EVENT)
            refuse(event.place(),
                   "expected a value, found an alias (*name): write the value out, or put text "
                   "that starts with * in quotes");
        return;
    }
    if (parser_.error == YAML_MEMORY_ERROR)
        throw std::bad_alloc();
    const YamlComplaint complaint = yaml_complaint(parser_);
    refuse(complaint.place, complaint.reason);
}

/* The first byte of the character at a mark, 0 at the end of the text. */
char Reader::character_at(const yaml_mark_t &mark)
{
    while (seen_characters_ < mark.index && seen_bytes_ < text_.size()) {
        seen_bytes_ += utf8_length(text_.substr(seen_bytes_));
        ++seen_characters_;
    }
    return seen_bytes_ < text_.size() ? text_[seen_bytes_] : '\0';
}

/* Refuses an anchor or a tag. The bare tag "!" leaves no trace in the event of a scalar, so the text itself
 * is asked: no scalar starts with these characters otherwise. */
void Reader::refuse_properties(const Event &event)
{
    const bool empty = event.raw.start_mark.index == event.raw.end_mark.index;
    const char first = empty ? '\0' : character_at(event.raw.start_mark);
    if (first == '&')
        refuse(event.place(), "expected a value, found an anchor (&name): leave it out, or put text that "
                              "starts with & in quotes");
    if (first == '!')
        refuse(event.place(), "expected a value, found a tag (!type): leave it out, every value is text; or "
                              "put text that starts with ! in quotes");
}

std::string Reader::scalar(const Event &event) const
{
    const auto &data = event.raw.data.scalar;
    std::string text(reinterpret_cast<const char *>(data.value), data.length);
    if (text.find('\0') != std::string::npos)
        refuse(event.place(), "expected text, found a zero character (\\0) inside it");
    return text;
}

PfEntry Reader::value(const Event &event, int depth)
{
    PfEntry entry;
    entry.place = event.place();
    switch (event.type()) {
    case YAML_SCALAR_EVENT:
        refuse_properties(event);
        entry.text = scalar(event);
        break;
    case YAML_SEQUENCE_START_EVENT:
        entry.node = node(PFLIST, event, depth + 1);
        break;
    case YAML_MAPPING_START_EVENT:
        entry.node = node(PFARRAY, event, depth + 1);
        break;
    default:
        refuse(entry.place, "expected a value");
    }
    return entry;
}

std::unique_ptr<Pf> Reader::node(PfKind kind, const Event &start, int depth)
{
    refuse_properties(start);
    if (depth > most_depth)
        refuse(start.place(), "expected at most " + std::to_string(most_depth) +
                                  " lists and arrays inside each other, found more");
    auto made = std::make_unique<Pf>();
    made->kind = kind;
    made->place = start.place();
    made->file = name_;
    if (kind == PFLIST)
        fill_list(*made, depth);
    else
        fill_array(*made, depth);
    return made;
}

void Reader::fill_list(Pf &list, int depth)
{
    for (;;) {
        Event event;
        next(event);
        if (event.type() == YAML_SEQUENCE_END_EVENT)
            return;
        list.entries.push_back(value(event, depth));
    }
}

void Reader::fill_array(Pf &array, int depth)
{
    for (;;) {
        Event key;
        next(key);
        if (key.type() == YAML_MAPPING_END_EVENT)
            return;
        refuse_properties(key);
        if (key.type() != YAML_SCALAR_EVENT)
            refuse(key.place(), "expected a key that is plain text, found a list or an array as a key");
        const auto [place, fresh] = array.keys.emplace(scalar(key), array.entries.size());
        if (!fresh) {
            const PfPlace first = array.entries[place->second].key_place;
            refuse(key.place(), "expected each key once, found '" + place->first + "' again (first in line " +
                                    std::to_string(first.line) + ")");
        }
        Event event;
        next(event);
        PfEntry entry = value(event, depth);
        entry.key = &place->first;
        entry.key_place = key.place();
        array.entries.push_back(std::move(entry));
    }
}

/* Nothing but white space and comments may follow. The text is asked and not the parser, which would first
 * take in all that a second document may start with, at a cost that grows with its square. */
void Reader::expect_end()
{
    Event end;
    next(end);
    character_at(end.raw.end_mark);
    if (const size_t more = content_start(text_.substr(seen_bytes_)); seen_bytes_ + more < text_.size())
        refuse(place_in(text_, seen_bytes_ + more), "expected the end of the file, found a second document");
}

/* Directives are refused before the parser sees them, for the same reason. */
void Reader::refuse_directives()
{
    const size_t start = content_start(text_);
    if (text_.substr(start).starts_with('%'))
        refuse(place_in(text_, start),
               "expected keys and values, found a directive (a line that starts with %)");
}

std::unique_ptr<Pf> Reader::document()
{
    refuse_directives();
    Event stream;
    next(stream);
    Event start;
    next(start);
    std::unique_ptr<Pf> root;
    if (start.type() == YAML_DOCUMENT_START_EVENT) {
        Event event;
        next(event);
        if (event.type() == YAML_MAPPING_START_EVENT) {
            root = node(PFARRAY, event, 1);
        } else {
            refuse_properties(event);
            const bool nothing = event.type() == YAML_SCALAR_EVENT && event.raw.data.scalar.length == 0 &&
                                 event.raw.data.scalar.style == YAML_PLAIN_SCALAR_STYLE;
            if (!nothing)
                refuse(event.place(), std::string("expected keys and values (key: value), found ") +
                                          (event.type() == YAML_SCALAR_EVENT ? "bare text" : "a list"));
        }
        expect_end();
    }
    if (!root) { // an empty file
        root = std::make_unique<Pf>();
        root->file = name_;
    }
    root->root = true;
    return root;
}

} // namespace

std::unique_ptr<Pf> read_parameters(std::string_view text, const std::string &name)
{
    return Reader(checked_parameter_text(text.data() ? text : "", name), name).document();
}

} // namespace orvane::util
