#include "operation/join_terms.h"

#include "base/concat.h"
#include "base/near_names.h"

namespace orvane {

namespace {

constexpr std::string_view range_mark = "::";

std::string_view kind_of(const Table &table)
{
    return table.is_view() ? "view " : "table ";
}

Result<int> named_field(const Table &table, const std::string &name)
{
    const int field = table.field_index(name, -1);
    if (field >= 0)
        return field;
    std::vector<std::string_view> known;
    for (const TableField &other : table.fields())
        known.push_back(other.attribute->name);
    return Status(Code::NotFound, concat("no field '", name, "' in ", kind_of(table), table.name(),
                                         near_names_hint(name, known)));
}

struct Element {
    std::string text;
    RangeSide side;
    bool is_range = false;
    FieldType type = FieldType::String; // of the field, or of both ends
};

FieldType type_of(const Table &table, int field)
{
    return table.fields()[static_cast<std::size_t>(field)].attribute->type;
}

// The prefix of a range, "site.ondate::offdate", is that of both ends.
Result<Element> element_named(const Table &table, const std::string &text)
{
    Element element;
    element.text = text;
    const auto mark = text.find(range_mark);
    element.is_range = mark != std::string::npos;
    const std::string begin_name = text.substr(0, mark);
    const auto begin = named_field(table, begin_name);
    if (!begin.ok())
        return begin.status();
    element.side = RangeSide{*begin, *begin};
    element.type = type_of(table, *begin);
    if (!element.is_range)
        return element;
    std::string end_name = text.substr(mark + range_mark.size());
    if (const auto dot = begin_name.rfind('.');
        dot != std::string::npos && end_name.find('.') == std::string::npos)
        end_name = begin_name.substr(0, dot + 1) + end_name;
    const auto end = named_field(table, end_name);
    if (!end.ok())
        return end.status();
    element.side.end = *end;
    if (type_of(table, *end) != element.type || !is_number(element.type))
        return Status(Code::Argument,
                      concat("'", text, "' is no range: both ends have to be numbers of one type"));
    return element;
}

// Whether values of the types can be compared, as ranges or for equality.
bool comparable(FieldType a, FieldType b)
{
    const auto is_text = [](FieldType type) { return type == FieldType::String; };
    if (a == FieldType::Dbptr || b == FieldType::Dbptr)
        return false;
    return is_text(a) == is_text(b);
}

} // namespace

Result<JoinTerms> join_terms(const Table &left, const Table &right, std::span<const std::string> left_keys,
                             std::span<const std::string> right_keys)
{
    if (left_keys.size() != right_keys.size())
        return Status(Code::Argument, concat("there are ", left_keys.size(), " keys of ", left.name(),
                                             " and ", right_keys.size(), " of ", right.name()));
    if (left_keys.empty())
        return Status(Code::Argument, "no keys are given");
    JoinTerms terms;
    for (std::size_t i = 0; i < left_keys.size(); ++i) {
        const auto of_left = element_named(left, left_keys[i]);
        if (!of_left.ok())
            return of_left.status();
        const auto of_right = element_named(right, right_keys[i]);
        if (!of_right.ok())
            return of_right.status();
        if (!comparable(of_left->type, of_right->type))
            return Status(Code::Argument,
                          concat("'", of_left->text, "' of ", left.name(), " is of type ",
                                 type_name(of_left->type), ", '", of_right->text, "' of ", right.name(),
                                 " of type ", type_name(of_right->type), ": they can't be compared"));
        if (of_left->is_range || of_right->is_range)
            terms.ranges.push_back(RangeTerm{of_left->side, of_right->side});
        else
            terms.equal.push_back(EqualTerm{of_left->side.begin, of_right->side.begin});
    }
    return terms;
}

} // namespace orvane
