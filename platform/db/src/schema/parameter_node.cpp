#include "schema/parameter_node.h"

#include "base/concat.h"

#include <algorithm>

namespace orvane {

namespace {

const char *kind_name(int kind)
{
    return kind == PFSTRING  ? "a text"
           : kind == PFLIST  ? "a list"
           : kind == PFARRAY ? "a mapping"
                             : "nothing";
}

Place place_of_value(const Pf *pf, const char *key)
{
    Place place;
    pfwhere(pf, key, &place.line, &place.column);
    return place;
}

} // namespace

Result<ParameterFile> parse_parameters(const std::string &text, const std::string &file)
{
    if (const auto zero = text.find('\0'); zero != std::string::npos)
        return Status(Code::Format, concat(file, ": is binary: byte ", zero, " is zero, text was expected"));
    Pf *pf = nullptr;
    if (pfparse(text.data(), text.size(), file.c_str(), &pf) < 0)
        return Status(Code::Format,
                      concat(file, ": is not a parameter file (YAML mappings, lists and texts)"));
    return ParameterFile(pf);
}

std::vector<std::string> ParameterMapping::keys() const
{
    std::vector<std::string> names;
    Tbl *list = pfkeys(pf_);
    for (std::int64_t i = 0; i < maxtbl(list); ++i)
        names.emplace_back(static_cast<const char *>(gettbl(list, i)));
    freetbl(list, nullptr);
    return names;
}

Place ParameterMapping::key_place(const std::string &key) const
{
    Place place;
    pfwherekey(pf_, key.c_str(), &place.line, &place.column);
    return place;
}

Place ParameterMapping::value_place(const std::string &key) const
{
    return place_of_value(pf_, key.c_str());
}

bool ParameterMapping::has(const std::string &key) const
{
    return pfget(pf_, key.c_str(), nullptr) > 0;
}

void ParameterMapping::refuse_other_keys(const std::vector<std::string_view> &known) const
{
    for (const std::string &key : keys())
        if (std::find(known.begin(), known.end(), key) == known.end()) {
            auto hint = near_names_hint(key, known);
            if (hint.empty())
                hint = "; known are: " + joined(known);
            note(key_place(key), concat(what_, ": unknown key '", key, "'", hint));
        }
}

bool ParameterMapping::require(const std::string &key) const
{
    if (has(key))
        return true;
    note(place_, concat(what_, ": '", key, "' is missing"));
    return false;
}

std::optional<PlacedText> ParameterMapping::text(const std::string &key) const
{
    PfValue value{};
    const int kind = pfget(pf_, key.c_str(), &value);
    if (kind < 0)
        return std::nullopt;
    if (kind != PFSTRING) {
        note(value_place(key),
             concat(what_, ": '", key, "' is ", kind_name(kind), " where a text was expected"));
        return std::nullopt;
    }
    return PlacedText{value.text, value_place(key)};
}

std::string ParameterMapping::text_or_empty(const std::string &key) const
{
    auto found = text(key);
    return found ? std::move(found->text) : std::string();
}

std::optional<ParameterMapping> ParameterMapping::mapping(const std::string &key,
                                                          const std::string &what) const
{
    PfValue value{};
    const int kind = pfget(pf_, key.c_str(), &value);
    if (kind < 0)
        return std::nullopt;
    if (kind != PFARRAY) {
        note(value_place(key), concat(what, " is ", kind_name(kind), " where a mapping was expected"));
        return std::nullopt;
    }
    return ParameterMapping(value.pf, what, key_place(key), *findings_);
}

std::optional<std::vector<ParameterMapping::Element>> ParameterMapping::list(const std::string &key,
                                                                             bool single_allowed) const
{
    PfValue value{};
    const int kind = pfget(pf_, key.c_str(), &value);
    if (kind < 0)
        return std::nullopt;
    if (kind == PFSTRING && single_allowed)
        return std::vector<Element>{Element{value_place(key), std::string(value.text), nullptr, false}};
    if (kind != PFLIST) {
        note(value_place(key),
             concat(what_, ": '", key, "' is ", kind_name(kind), " where a list was expected"));
        return std::nullopt;
    }
    std::vector<Element> elements;
    const Pf *items = value.pf;
    for (std::int64_t i = 0; i < pfmaxtbl(items); ++i) {
        const std::string index = std::to_string(i);
        PfValue item{};
        const int item_kind = pfget(items, index.c_str(), &item);
        Element element;
        element.place = place_of_value(items, index.c_str());
        if (item_kind == PFSTRING)
            element.text = item.text;
        element.mapping = item_kind == PFARRAY ? item.pf : nullptr;
        element.is_list = item_kind == PFLIST;
        elements.push_back(std::move(element));
    }
    return elements;
}

std::optional<std::vector<PlacedText>> ParameterMapping::texts(const std::string &key,
                                                               bool single_allowed) const
{
    const auto elements = list(key, single_allowed);
    if (!elements)
        return std::nullopt;
    std::vector<PlacedText> found;
    for (const Element &element : *elements) {
        if (element.text)
            found.push_back(PlacedText{*element.text, element.place});
        else
            note(element.place,
                 concat(what_, ": an element of '", key, "' is ", element.is_list ? "a list" : "a mapping",
                        " where a text was expected"));
    }
    return found;
}

} // namespace orvane
