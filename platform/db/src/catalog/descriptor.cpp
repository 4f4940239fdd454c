#include "catalog/descriptor.h"

#include "base/concat.h"
#include "base/yaml_text.h"
#include "schema/parameter_node.h"

#include <algorithm>

namespace orvane {

namespace {

const std::vector<std::string_view> known_keys{"schema",   "dbpath",      "locks", "durability",
                                               "idserver", "description", "detail"};

void read_schema_name(const ParameterMapping &root, Descriptor &descriptor)
{
    if (!root.require("schema"))
        return;
    const auto name = root.text("schema");
    if (!name)
        return;
    descriptor.schema = name->text;
    if (name->text.empty() || name->text.find('/') != std::string::npos)
        root.note(name->place, concat("schema: '", name->text,
                                      "' is not the name of a schema, such as css3.0; the folders in which "
                                      "it is looked for are set by $ORVANE_SCHEMA_PATH"));
}

// A single text may name several folders, separated by colons.
void read_dbpath(const ParameterMapping &root, Descriptor &descriptor)
{
    const auto texts = root.texts("dbpath", true);
    if (!texts)
        return;
    std::vector<std::string> folders;
    for (const PlacedText &text : *texts) {
        std::size_t start = 0;
        while (start <= text.text.size()) {
            const auto colon = std::min(text.text.find(':', start), text.text.size());
            if (colon > start)
                folders.push_back(text.text.substr(start, colon - start));
            else
                root.note(text.place, "dbpath: a folder's name is empty");
            start = colon + 1;
        }
    }
    if (!folders.empty())
        descriptor.dbpath = std::move(folders);
}

void read_locks(const ParameterMapping &root, Descriptor &descriptor)
{
    const auto locks = root.text("locks");
    if (!locks || locks->text == "local")
        return;
    if (locks->text == "none")
        descriptor.locks = Locks::None;
    else
        root.note(locks->place, concat("locks: '", locks->text, "' where local or none was expected"));
}

void read_durability(const ParameterMapping &root, Descriptor &descriptor)
{
    const auto durability = root.text("durability");
    if (!durability || durability->text == "process")
        return;
    if (durability->text == "disk")
        descriptor.durability = Durability::Disk;
    else
        root.note(durability->place,
                  concat("durability: '", durability->text, "' where process or disk was expected"));
}

} // namespace

Result<Descriptor> read_descriptor(const std::string &text, const std::string &file)
{
    const auto parameters = parse_parameters(text, file);
    if (!parameters.ok())
        return parameters.status().with_line(
            concat(file, ": is not a database descriptor; that is a text such as 'schema: css3.0'"));
    Findings findings(file);
    const ParameterMapping root(parameters->get(), "descriptor", Place{1, 1}, findings);
    root.refuse_other_keys(known_keys);
    Descriptor descriptor;
    read_schema_name(root, descriptor);
    read_dbpath(root, descriptor);
    read_locks(root, descriptor);
    read_durability(root, descriptor);
    descriptor.idserver = root.text_or_empty("idserver");
    descriptor.description = root.text_or_empty("description");
    descriptor.detail = root.text_or_empty("detail");
    if (!findings.empty())
        return findings.status();
    return descriptor;
}

std::string descriptor_text(const Descriptor &descriptor)
{
    std::string folders;
    for (const std::string &folder : descriptor.dbpath)
        folders.append(folders.empty() ? "" : ", ").append(folder == "." ? folder : yaml_quoted(folder));
    return concat("schema: ", yaml_quoted(descriptor.schema), "\ndbpath: [", folders,
                  "]\nlocks: ", descriptor.locks == Locks::Local ? "local" : "none",
                  "\ndurability: ", descriptor.durability == Durability::Disk ? "disk" : "process",
                  "\nidserver: ", yaml_quoted(descriptor.idserver),
                  "\ndescription: ", yaml_quoted(descriptor.description),
                  "\ndetail: ", yaml_quoted(descriptor.detail), "\n");
}

bool looks_like_descriptor(std::string_view head)
{
    while (!head.empty()) {
        const auto end = std::min(head.find('\n'), head.size());
        std::string_view line = head.substr(0, end);
        head.remove_prefix(std::min(end + 1, head.size()));
        const auto start = line.find_first_not_of(" \t\r");
        if (start == std::string_view::npos || line[start] == '#' || line.starts_with("---") ||
            line.starts_with("%YAML"))
            continue;
        line.remove_prefix(start);
        if (line.front() == '{')
            return true;
        if (line.front() == '"' || line.front() == '\'')
            line.remove_prefix(1);
        for (std::string_view key : known_keys) {
            if (!line.starts_with(key))
                continue;
            const auto after = line.find_first_not_of("\"' \t", key.size());
            if (after != std::string_view::npos && line[after] == ':')
                return true;
        }
        return false;
    }
    return false;
}

} // namespace orvane
