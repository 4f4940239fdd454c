#include "schema/relation_reader.h"

#include "base/concat.h"

#include <algorithm>
#include <set>

namespace orvane {

namespace {

// Reads a relation; knows what its keys are checked against.
class RelationReader
{
public:
    RelationReader(const ParameterMapping &mapping, Relation &relation, const Schema &schema,
                   const std::vector<std::string_view> &known_attributes)
        : mapping_(mapping), relation_(relation), schema_(schema), known_attributes_(known_attributes)
    {
    }

    void read_fields()
    {
        if (!mapping_.require("fields"))
            return;
        const auto names = mapping_.texts("fields");
        if (!names)
            return;
        fields_known_ = true;
        if (names->empty())
            mapping_.note(mapping_.value_place("fields"), concat(mapping_.what(), ": has no fields"));
        for (const PlacedText &name : *names) {
            if (!field_names_.insert(name.text).second) {
                mapping_.note(name.place,
                              concat(mapping_.what(), ": field '", name.text, "' is listed twice"));
                continue;
            }
            if (!is_attribute(name.text))
                mapping_.note(name.place, concat(mapping_.what(), ": field '", name.text,
                                                 "' is not an attribute of the schema",
                                                 near_names_hint(name.text, known_attributes_)));
            if (const Attribute *attribute = schema_.attribute(name.text))
                relation_.add_field(*attribute);
        }
    }

    void read_key(const std::string &which, Key &key)
    {
        const auto elements = mapping_.list(which);
        if (!elements)
            return;
        std::set<std::string> seen;
        for (const auto &element : *elements) {
            auto read = element.text      ? plain_or_range(which, *element.text, element.place)
                        : element.mapping ? range_with_covers(which, element.mapping, element.place)
                                          : (note_kind(which, element.place), std::nullopt);
            if (!read)
                continue;
            if (!seen.insert(read->text()).second)
                mapping_.note(element.place, concat(mapping_.what(), ": '", read->text(),
                                                    "' stands twice in '", which, "'"));
            key.push_back(std::move(*read));
        }
    }

    void read_defines()
    {
        const auto defines = mapping_.text("defines");
        if (!defines)
            return;
        if (is_field(defines->text))
            relation_.defines = defines->text;
        else
            mapping_.note(defines->place, concat(mapping_.what(), ": defines '", defines->text,
                                                 "', which is not among its fields", hint(defines->text)));
    }

private:
    bool is_attribute(const std::string &name) const
    {
        return std::find(known_attributes_.begin(), known_attributes_.end(), name) != known_attributes_.end();
    }
    // Where the fields themselves can't be read, every name passes: one finding is enough.
    bool is_field(const std::string &name) const { return !fields_known_ || field_names_.count(name) > 0; }
    std::string hint(const std::string &name) const
    {
        return near_names_hint(name, std::vector<std::string_view>(field_names_.begin(), field_names_.end()));
    }

    void note_kind(const std::string &which, Place place)
    {
        mapping_.note(place,
                      concat(mapping_.what(), ": an element of '", which,
                             "' is a list where a field, a range or {range: …, covers: […]} was expected"));
    }

    bool check_field(const std::string &which, const std::string &name, Place place)
    {
        if (is_field(name))
            return true;
        mapping_.note(place, concat(mapping_.what(), ": '", name, "' in '", which,
                                    "' is not among its fields", hint(name)));
        return false;
    }

    std::optional<KeyElement> plain_or_range(const std::string &which, const std::string &text, Place place)
    {
        const auto colons = text.find("::");
        if (colons == std::string::npos)
            return check_field(which, text, place) ? std::optional(KeyElement{text, "", {}}) : std::nullopt;
        KeyElement range{text.substr(0, colons), text.substr(colons + 2), {}};
        if (range.begin.empty() || range.end.empty() || range.begin == range.end) {
            mapping_.note(place, concat(mapping_.what(), ": '", text, "' in '", which,
                                        "' is not a range of two fields, 'begin::end'"));
            return std::nullopt;
        }
        const bool begin_known = check_field(which, range.begin, place);
        const bool end_known = check_field(which, range.end, place);
        return begin_known && end_known ? std::optional(range) : std::nullopt;
    }

    std::optional<KeyElement> range_with_covers(const std::string &which, const Pf *pf, Place place)
    {
        const ParameterMapping element(pf, concat(mapping_.what(), ", ", which), place, mapping_.findings());
        element.refuse_other_keys({"range", "covers"});
        std::optional<KeyElement> range;
        if (element.require("range"))
            if (const auto text = element.text("range")) {
                range = plain_or_range(which, text->text, text->place);
                if (range && !range->is_range()) {
                    element.note(text->place, concat(mapping_.what(), ": '", text->text,
                                                     "' is not a range of two fields, 'begin::end'"));
                    range.reset();
                }
            }
        for (const PlacedText &name : element.texts("covers").value_or(std::vector<PlacedText>())) {
            if (!is_attribute(name.text))
                element.note(name.place, concat(mapping_.what(), ": covers '", name.text,
                                                "', which is not an attribute of the schema",
                                                near_names_hint(name.text, known_attributes_)));
            else if (range)
                range->covers.push_back(name.text);
        }
        return range;
    }

    const ParameterMapping &mapping_;
    Relation &relation_;
    const Schema &schema_;
    const std::vector<std::string_view> &known_attributes_;
    bool fields_known_ = false;
    std::set<std::string> field_names_; // those of the file, also where the attribute is missing
};

} // namespace

void read_relation(const std::string &name, const ParameterMapping &mapping, Schema &schema,
                   const std::vector<std::string_view> &known_attributes)
{
    mapping.refuse_other_keys(
        {"fields", "primary", "alternate", "foreign", "defines", "description", "detail"});
    Relation &relation = schema.add_relation(name);
    relation.description = mapping.text_or_empty("description");
    relation.detail = mapping.text_or_empty("detail");
    RelationReader reader(mapping, relation, schema, known_attributes);
    reader.read_fields();
    reader.read_key("primary", relation.primary);
    reader.read_key("alternate", relation.alternate);
    reader.read_key("foreign", relation.foreign);
    reader.read_defines();
}

} // namespace orvane
