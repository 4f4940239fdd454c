#include "base/concat.h"
#include "saved/saved_head.h"
#include "schema/parameter_node.h"
#include "schema/schema.h"
#include "view/view.h"

#include <algorithm>
#include <charconv>

namespace orvane {

namespace {

constexpr std::string_view known_version = "1";
constexpr std::int64_t second = 1'000'000'000;

// A number of digits alone, below `end`.
bool read_number(std::string_view text, std::int64_t end, std::int64_t &number)
{
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && rest == text.data() + text.size() && number >= 0 && number < end;
}

// "-12.000000001"
bool read_time(std::string_view text, std::int64_t &nanoseconds)
{
    const bool negative = text.starts_with('-');
    if (negative)
        text.remove_prefix(1);
    const auto dot = text.find('.');
    std::int64_t whole = 0;
    std::int64_t rest = 0;
    if (dot == std::string_view::npos || text.size() - dot != 10 || text.find_first_of("+-") != text.npos ||
        !read_number(text.substr(0, dot), std::int64_t{1} << 33, whole) ||
        !read_number(text.substr(dot + 1), second, rest))
        return false;
    nanoseconds = (negative ? -1 : 1) * (whole * second + rest);
    return true;
}

class HeadReader
{
public:
    HeadReader(const Pf *pf, const std::string &file, const Schema *schema)
        : findings_(file), root_(pf, "saved view", Place{1, 1}, findings_), schema_(schema)
    {
    }

    Result<SavedHead> read()
    {
        static const std::vector<std::string_view> known{"saved-view", "database", "schema", "fields",
                                                         "parts"};
        root_.refuse_other_keys(known);
        const auto version = root_.text("saved-view");
        if (version && version->text != known_version)
            root_.note(version->place,
                       concat("saved-view: form ", version->text, " is not known; ", known_version, " is"));
        head_.database = root_.text_or_empty("database");
        head_.schema = root_.text_or_empty("schema");
        if (schema_) {
            check_schema();
            read_parts();
            if (findings_.empty())
                check_fields();
        }
        if (!findings_.empty())
            return findings_.status();
        return std::move(head_);
    }

private:
    void check_schema()
    {
        if (root_.require("schema") && head_.schema != schema_->name)
            root_.note(root_.value_place("schema"), concat("schema: the view is of schema '", head_.schema,
                                                           "', the database of ", schema_->name));
    }

    void read_parts()
    {
        if (!root_.require("parts"))
            return;
        const auto elements = root_.list("parts");
        if (!elements)
            return;
        for (const auto &element : *elements) {
            if (!element.mapping) {
                root_.note(element.place, "parts: a mapping was expected");
                return;
            }
            read_part(ParameterMapping(element.mapping, concat("part ", head_.parts.size()), element.place,
                                       findings_));
            if (!findings_.empty()) // parts stand on those before them
                return;
        }
        if (head_.parts.empty() || head_.view().kind == PartKind::Table)
            root_.note(root_.value_place("parts"), "parts: the last one has to be a view");
    }

    void read_part(const ParameterMapping &node)
    {
        static const std::vector<std::string_view> of_table{"table", "records", "modified"};
        static const std::vector<std::string_view> of_view{"view", "rows", "members", "creation"};
        static const std::vector<std::string_view> of_groups{"groups", "bundles", "of", "keys", "creation"};
        SavedPart part;
        if (node.has("table")) {
            node.refuse_other_keys(of_table);
            read_table(node, part);
        } else if (node.has("view")) {
            node.refuse_other_keys(of_view);
            read_view(node, part);
        } else if (node.has("groups")) {
            node.refuse_other_keys(of_groups);
            read_groups(node, part);
        } else {
            node.note(node.place(),
                      concat(node.what(), ": neither 'table' nor 'view' nor 'groups' is there"));
        }
        head_.parts.push_back(std::move(part));
    }

    std::int64_t count(const ParameterMapping &node, const char *key)
    {
        std::int64_t number = 0;
        if (!node.require(key))
            return 0;
        const auto text = node.text(key);
        if (text && !read_number(text->text, max_view_rows, number))
            node.note(text->place, concat(node.what(), ": ", key, ": '", text->text,
                                          "' is not a number below ", max_view_rows));
        return number;
    }

    void read_name(const ParameterMapping &node, const char *key, SavedPart &part)
    {
        part.name = node.text_or_empty(key);
        const auto is_odd = [](char c) {
            return c == '/' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
        };
        if (part.name.empty() || std::any_of(part.name.begin(), part.name.end(), is_odd))
            node.note(node.value_place(key), concat(node.what(), ": ", key, ": a name was expected"));
    }

    void read_table(const ParameterMapping &node, SavedPart &part)
    {
        part.kind = PartKind::Table;
        read_name(node, "table", part);
        part.count = count(node, "records");
        if (const auto time = node.text("modified")) {
            part.has_file = true;
            if (!read_time(time->text, part.modified))
                node.note(time->place, concat(node.what(), ": modified: '", time->text,
                                              "' is not a time, such as 1300000000.000000000"));
        }
        const Relation *relation = schema_->relation(part.name);
        if (!relation) {
            node.note(node.value_place("table"),
                      concat(node.what(), ": schema ", schema_->name, " has no table '", part.name, "'",
                             near_names_hint(part.name, schema_->relation_names())));
            return;
        }
        for (const RelationField &field : relation->fields())
            part.fields.push_back(concat(part.name, '.', field.attribute->name));
    }

    void read_creation(const ParameterMapping &node, SavedPart &part)
    {
        const auto lines = node.texts("creation");
        for (std::size_t i = 0; lines && i < lines->size(); ++i)
            part.creation.append(i > 0 ? "\n" : "").append((*lines)[i].text);
    }

    // A part before this one.
    int part_number(const ParameterMapping &node, const char *key, const PlacedText &text)
    {
        std::int64_t number = 0;
        if (read_number(text.text, static_cast<std::int64_t>(head_.parts.size()), number))
            return static_cast<int>(number);
        node.note(text.place,
                  concat(node.what(), ": ", key, ": '", text.text, "' is no part before this one"));
        return -1;
    }

    void read_view(const ParameterMapping &node, SavedPart &part)
    {
        part.kind = PartKind::Rows;
        read_name(node, "view", part);
        part.count = count(node, "rows");
        read_creation(node, part);
        const auto members = node.texts("members");
        if (!members || members->empty()) {
            node.note(node.place(), concat(node.what(), ": members: numbers of parts were expected"));
            return;
        }
        for (const PlacedText &text : *members) {
            const int member = part_number(node, "members", text);
            if (member < 0)
                return;
            const SavedPart &of = head_.parts[static_cast<std::size_t>(member)];
            if (of.kind == PartKind::Rows ||
                std::find(part.members.begin(), part.members.end(), member) != part.members.end()) {
                node.note(text.place, concat(node.what(), ": members: ", member,
                                             of.kind == PartKind::Rows ? " is a view, which has no records"
                                                                       : " is there twice"));
                return;
            }
            part.members.push_back(member);
            part.fields.insert(part.fields.end(), of.fields.begin(), of.fields.end());
        }
    }

    void read_groups(const ParameterMapping &node, SavedPart &part)
    {
        part.kind = PartKind::Bundles;
        read_name(node, "groups", part);
        part.count = count(node, "bundles");
        read_creation(node, part);
        const auto source = node.text("of");
        part.source = source ? part_number(node, "of", *source) : -1;
        if (part.source < 0 || head_.parts[static_cast<std::size_t>(part.source)].kind == PartKind::Table) {
            node.note(node.place(), concat(node.what(), ": of: the number of a view was expected"));
            return;
        }
        const auto &known = head_.parts[static_cast<std::size_t>(part.source)].fields;
        for (const PlacedText &key : node.texts("keys").value_or(std::vector<PlacedText>())) {
            const auto found = std::find(known.begin(), known.end(), key.text);
            if (found == known.end()) {
                node.note(key.place, concat(node.what(), ": keys: part ", part.source, " has no field '",
                                            key.text, "'"));
                return;
            }
            part.keys.push_back(static_cast<int>(found - known.begin()));
            part.fields.push_back(concat(part.name, '.', key.text.substr(key.text.rfind('.') + 1)));
        }
        part.fields.push_back(part.name + ".bundle");
    }

    // A table that has other fields than it had is another table.
    void check_fields()
    {
        const auto fields = root_.texts("fields");
        const auto &expected = head_.view().fields;
        const std::size_t count = fields ? fields->size() : 0;
        for (std::size_t i = 0; i < std::min(count, expected.size()); ++i)
            if ((*fields)[i].text != expected[i]) {
                root_.note((*fields)[i].place,
                           concat("fields: '", (*fields)[i].text, "' stands where schema ", schema_->name,
                                  " has '", expected[i], "'"));
                return;
            }
        if (count != expected.size())
            root_.note(root_.value_place("fields"), concat("fields: there are ", count, " where schema ",
                                                           schema_->name, " has ", expected.size()));
    }

    Findings findings_;
    ParameterMapping root_;
    const Schema *schema_;
    SavedHead head_;
};

} // namespace

Result<SavedHead> read_saved_head(const std::string &text, const std::string &file, const Schema *schema)
{
    const auto parameters = parse_parameters(text, file);
    if (!parameters.ok())
        return parameters.status().with_line(concat(file, ": the head of the saved view cannot be read"));
    return HeadReader(parameters->get(), file, schema).read();
}

} // namespace orvane
