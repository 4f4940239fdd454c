#include "catalog/schema_locator.h"

#include "base/concat.h"
#include "base/near_names.h"
#include "schema/schema_reader.h"

#include <algorithm>
#include <cstdlib>
#include <dlfcn.h>
#include <map>

namespace orvane {

namespace {

constexpr std::int64_t max_schema_bytes = 16 << 20;

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

// The schemas that were installed with this library, found from where the library itself lies.
std::string installed_folder()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void *>(&installed_folder), &info) == 0 || !info.dli_fname)
        return "";
    return LocatedPath::from(info.dli_fname).folder().entry(ORVANE_LIB_TO_SCHEMAS).absolute;
}

// Schemas of open databases, so that a process reads one only once while it doesn't change.
struct SharedSchema {
    FileState state;
    std::weak_ptr<const Schema> schema;
};

std::map<std::string, SharedSchema> &shared_schemas()
{
    static std::map<std::string, SharedSchema> schemas;
    return schemas;
}

Result<std::shared_ptr<const Schema>> read_or_share(FileSystem &files, const LocatedPath &path,
                                                    const FileState &state)
{
    SharedSchema &shared = shared_schemas()[path.absolute];
    if (auto schema = shared.schema.lock(); schema && shared.state == state)
        return schema;
    const auto text = read_whole_file(files, path.absolute, path.shown, max_schema_bytes);
    if (!text.ok())
        return text.status();
    auto schema = read_schema(*text, path.shown);
    if (schema.ok())
        shared = SharedSchema{state, *schema};
    return schema;
}

} // namespace

std::string default_schema_name()
{
    const std::string name = environment("ORVANE_SCHEMA");
    return name.empty() ? "css3.0" : name;
}

SchemaLocator::SchemaLocator(FileSystem &files, const LocatedPath &descriptor_folder) : files_(files)
{
    const std::string list = environment("ORVANE_SCHEMA_PATH");
    std::size_t start = 0;
    while (start < list.size()) {
        const auto colon = std::min(list.find(':', start), list.size());
        if (colon > start)
            folders_.push_back(LocatedPath::from(list.substr(start, colon - start)));
        start = colon + 1;
    }
    folders_.push_back(descriptor_folder);
    if (const std::string installed = installed_folder(); !installed.empty())
        folders_.push_back(LocatedPath::from(installed));
}

Result<std::shared_ptr<const Schema>> SchemaLocator::load(const std::string &name) const
{
    std::vector<std::string> tried;
    for (const LocatedPath &folder : folders_) {
        const LocatedPath path = folder.entry(name + ".yaml");
        const auto state = files_.state(path.absolute);
        if (!state.ok())
            return Status(state.status().code(), concat("schema ", name, ": ", state.status().message()));
        if (state->kind == FileKind::Missing) {
            tried.push_back(path.shown);
            continue;
        }
        return read_or_share(files_, path, *state);
    }
    return Status(Code::NotFound, concat("schema ", name, ": not found; looked for ",
                                         joined(std::vector<std::string_view>(tried.begin(), tried.end())),
                                         "; put it there, or its folder into $ORVANE_SCHEMA_PATH"));
}

} // namespace orvane
