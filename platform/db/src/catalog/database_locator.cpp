#include "catalog/database_locator.h"

#include "base/concat.h"
#include "base/near_names.h"
#include "catalog/schema_locator.h"
#include "saved/saved_head.h"

#include <algorithm>
#include <optional>

namespace orvane {

namespace {

constexpr std::int64_t max_descriptor_bytes = 1 << 20;
constexpr std::size_t head_bytes = 4096;

// A path taken apart at the last dot of its last part: "dir/quakes" and "origin".
struct DottedPath {
    LocatedPath database;
    std::string table;
};

std::optional<DottedPath> split_at_dot(const LocatedPath &path)
{
    const std::string name = path.name();
    const auto dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == name.size())
        return std::nullopt;
    const std::string database = path.shown.substr(0, path.shown.size() - (name.size() - dot));
    return DottedPath{LocatedPath::from(database), name.substr(dot + 1)};
}

class DatabaseLocator
{
public:
    DatabaseLocator(FileSystem &files, LocatedPath path) : files_(files), path_(std::move(path)) {}

    Result<LocatedDatabase> locate()
    {
        const auto kind = kind_of(path_);
        if (!kind.ok())
            return kind.status();
        const bool is_file = *kind == FileKind::File;
        const auto dotted = split_at_dot(path_);
        if (is_file && (!dotted || looks_like_descriptor(head())))
            return with_descriptor(path_);
        if (dotted) {
            if (auto table = locate_table(*dotted, is_file))
                return std::move(*table);
        }
        if (is_file)
            return with_descriptor(path_);
        if (auto database = without_descriptor(path_))
            return std::move(*database);
        return nothing_there(*kind, dotted);
    }

private:
    Result<FileKind> kind_of(const LocatedPath &path)
    {
        const auto state = files_.state(path.absolute);
        if (!state.ok())
            return Status(state.status().code(),
                          concat(path.shown, ": cannot look for a database: ", state.status().message()));
        return state->kind;
    }

    // The first bytes of the file that the path names; none where it can't be read.
    std::string head()
    {
        const auto file = files_.open(path_.absolute);
        if (!file.ok())
            return {};
        std::string bytes(head_bytes, '\0');
        const auto got = (*file)->read_at(0, std::span<char>(bytes));
        return got.ok() ? bytes.substr(0, *got) : std::string();
    }

    Result<LocatedDatabase> with_descriptor(const LocatedPath &path)
    {
        const auto text = read_whole_file(files_, path.absolute, path.shown, max_descriptor_bytes);
        if (!text.ok())
            return text.status().with_line(concat(path.shown, ": cannot be read as a database descriptor"));
        auto descriptor = read_descriptor(*text, path.shown);
        if (!descriptor.ok())
            return descriptor.status();
        auto schema = SchemaLocator(files_, path.folder()).load(descriptor->schema);
        if (!schema.ok())
            return schema.status().with_line(
                concat(path.shown, ": cannot be opened without its schema ", descriptor->schema));
        return LocatedDatabase{path, true, std::move(*descriptor), std::move(*schema), -1};
    }

    // The database that table files of the default schema make, or nothing when there are none. A schema that
    // can't be had is a failure only where something hangs on it.
    std::optional<Result<LocatedDatabase>> without_descriptor(const LocatedPath &path)
    {
        const std::string name = default_schema_name();
        auto schema = SchemaLocator(files_, path.folder()).load(name);
        if (!schema.ok()) {
            default_schema_failure_ = schema.status();
            return std::nullopt;
        }
        const auto &relations = (*schema)->relations();
        const bool any = std::any_of(relations.begin(), relations.end(), [&](const Relation &relation) {
            const auto state = files_.state(path.with_ending("." + relation.name).absolute);
            return state.ok() && state->kind != FileKind::Missing;
        });
        if (!any)
            return std::nullopt;
        LocatedDatabase database{path, false, Descriptor(), std::move(*schema), -1};
        database.descriptor.schema = name;
        return Result<LocatedDatabase>(std::move(database));
    }

    // The database before the dot with its table behind it; nothing when that isn't what the path means.
    std::optional<Result<LocatedDatabase>> locate_table(const DottedPath &dotted, bool path_is_file)
    {
        const auto kind = kind_of(dotted.database);
        if (!kind.ok())
            return Result<LocatedDatabase>(kind.status());
        auto database = *kind == FileKind::File ? std::optional(with_descriptor(dotted.database))
                                                : without_descriptor(dotted.database);
        if (!database || !database->ok())
            return database;
        LocatedDatabase &found = database->value();
        found.table = found.schema->relation_index(dotted.table);
        if (found.table >= 0)
            return database;
        if (path_is_file && head().starts_with(saved_view_mark)) {
            found.saved_view = dotted.table;
            return database;
        }
        if (path_is_file)
            return std::nullopt;
        return Result<LocatedDatabase>(
            Status(Code::NotFound,
                   concat(path_.shown, ": schema ", found.schema->name, " has no table '", dotted.table, "'",
                          near_names_hint(dotted.table, found.schema->relation_names()))));
    }

    Status nothing_there(FileKind kind, const std::optional<DottedPath> &dotted)
    {
        if (kind == FileKind::Directory)
            return Status(Code::Format,
                          concat(path_.shown, ": is a directory where a database descriptor is ",
                                 "expected; give the path of the descriptor in it"));
        if (kind == FileKind::Other)
            return Status(Code::Format,
                          concat(path_.shown, ": is not a regular file, as a descriptor has to be"));
        const LocatedPath folder = path_.folder();
        const auto folder_kind = kind_of(folder);
        if (folder_kind.ok() && *folder_kind != FileKind::Directory)
            return Status(Code::NotFound,
                          concat(path_.shown, ": no such database: ",
                                 *folder_kind == FileKind::Missing ? "there is no folder " : "not a folder: ",
                                 folder.shown));
        const std::string schema = default_schema_name();
        Status failure(
            Code::NotFound,
            concat(path_.shown, ": no such database: there is neither a descriptor of that name nor ",
                   "a table file ", path_.name(), ".TABLE of schema ", schema, " in ", folder.shown,
                   dotted ? concat(", nor a database ", dotted->database.name()) : std::string()));
        return default_schema_failure_.ok() ? failure : failure.with_line(default_schema_failure_.message());
    }

    FileSystem &files_;
    LocatedPath path_;
    Status default_schema_failure_;
};

} // namespace

Result<LocatedDatabase> locate_database(FileSystem &files, const std::string &path)
{
    if (path.empty())
        return Status(Code::Argument, "cannot open a database: the path is empty");
    return DatabaseLocator(files, LocatedPath::from(path)).locate();
}

} // namespace orvane
