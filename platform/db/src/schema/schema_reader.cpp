#include "schema/schema_reader.h"

#include "base/concat.h"
#include "schema/attribute_reader.h"
#include "schema/relation_reader.h"

#include <algorithm>
#include <map>

namespace orvane {

namespace {

std::string stem_of(const std::string &file)
{
    const auto slash = file.rfind('/');
    std::string name = slash == std::string::npos ? file : file.substr(slash + 1);
    constexpr std::string_view ending = ".yaml";
    if (name.size() > ending.size() && name.ends_with(ending))
        name.resize(name.size() - ending.size());
    return name;
}

// Notes a name that the expression language and pointers into tables could not take.
void check_name(const ParameterMapping &mapping, const std::string &name, const char *what)
{
    if (!is_name(name))
        mapping.note(mapping.key_place(name), concat(what, " '", name,
                                                     "': a name is letters, digits and underscores, and does "
                                                     "not begin with a digit"));
}

// Answers the names of all attributes, also of those that could not be read.
std::vector<std::string> read_attributes(const ParameterMapping &root, Schema &schema)
{
    if (!root.require("attributes"))
        return {};
    const auto attributes = root.mapping("attributes", "attributes");
    if (!attributes)
        return {};
    for (const std::string &name : attributes->keys()) {
        check_name(*attributes, name, "attribute");
        if (const auto mapping = attributes->mapping(name, "attribute " + name))
            schema.add_attribute(read_attribute(name, *mapping));
    }
    return attributes->keys();
}

void read_relations(const ParameterMapping &root, const std::vector<std::string> &attributes, Schema &schema)
{
    if (!root.require("relations"))
        return;
    const auto relations = root.mapping("relations", "relations");
    if (!relations)
        return;
    if (relations->keys().empty())
        root.note(root.value_place("relations"), "relations: there are none");
    const std::vector<std::string_view> attribute_names(attributes.begin(), attributes.end());
    std::map<std::string, std::string> defined; // id field to the relation that defines it
    for (const std::string &name : relations->keys()) {
        check_name(*relations, name, "relation");
        const auto mapping = relations->mapping(name, "relation " + name);
        if (!mapping)
            continue;
        read_relation(name, *mapping, schema, attribute_names);
        const std::string &id = schema.relation(name)->defines;
        const auto [earlier, is_new] = defined.emplace(id, name);
        if (!id.empty() && !is_new)
            mapping->note(mapping->value_place("defines"),
                          concat("relation ", name, ": defines '", id, "', which relation ", earlier->second,
                                 " defines already"));
    }
}

void read_timestamp(const ParameterMapping &root, const std::vector<std::string> &attributes, Schema &schema)
{
    const auto timestamp = root.text("timestamp");
    if (!timestamp)
        return;
    schema.timestamp = timestamp->text;
    const Attribute *attribute = schema.attribute(timestamp->text);
    if (std::find(attributes.begin(), attributes.end(), timestamp->text) == attributes.end())
        root.note(timestamp->place,
                  concat("timestamp: '", timestamp->text, "' is not an attribute of the schema",
                         near_names_hint(timestamp->text, {attributes.begin(), attributes.end()})));
    else if (attribute && attribute->type != FieldType::Time && attribute->type != FieldType::String)
        root.note(timestamp->place, concat("timestamp: '", timestamp->text, "' is of type ",
                                           type_name(attribute->type), " where time or string was expected"));
}

void read_not_joined(const ParameterMapping &root, const std::vector<std::string> &attributes, Schema &schema)
{
    const auto names = root.texts("not_joined", false);
    if (!names)
        return;
    for (const PlacedText &name : *names)
        if (!schema.mark_not_joined(name.text) &&
            std::find(attributes.begin(), attributes.end(), name.text) == attributes.end())
            root.note(name.place, concat("not_joined: '", name.text, "' is not an attribute of the schema",
                                         near_names_hint(name.text, {attributes.begin(), attributes.end()})));
}

} // namespace

Result<std::shared_ptr<const Schema>> read_schema(const std::string &text, const std::string &file)
{
    const auto parameters = parse_parameters(text, file);
    if (!parameters.ok())
        return parameters.status();
    Findings findings(file);
    const ParameterMapping root(parameters->get(), "schema", Place{1, 1}, findings);
    root.refuse_other_keys(
        {"name", "description", "detail", "timestamp", "not_joined", "attributes", "relations"});
    auto schema = std::make_shared<Schema>();
    schema->file = file;
    schema->name = root.has("name") ? root.text_or_empty("name") : stem_of(file);
    schema->description = root.text_or_empty("description");
    schema->detail = root.text_or_empty("detail");
    const auto attributes = read_attributes(root, *schema);
    read_relations(root, attributes, *schema);
    read_timestamp(root, attributes, *schema);
    read_not_joined(root, attributes, *schema);
    if (!findings.empty())
        return findings.status();
    return std::shared_ptr<const Schema>(std::move(schema));
}

} // namespace orvane
