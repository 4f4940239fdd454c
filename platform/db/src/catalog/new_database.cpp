#include "catalog/new_database.h"

#include "base/concat.h"
#include "catalog/schema_locator.h"
#include "schema/schema_reader.h"

#include <algorithm>

namespace orvane {

namespace {

constexpr std::int64_t max_schema_bytes = 16 << 20;
constexpr std::string_view schema_ending = ".yaml";

bool is_file_name(const std::string &schema)
{
    return schema.ends_with(schema_ending) || schema.find('/') != std::string::npos;
}

Result<std::string> text_of_schema(FileSystem &files, const std::string &file)
{
    const LocatedPath path = LocatedPath::from(file);
    return read_whole_file(files, path.absolute, path.shown, max_schema_bytes);
}

// A file that is new; it goes with the object unless it is kept.
class NewFile
{
public:
    NewFile(FileSystem &files, LocatedPath path) : files_(files), path_(std::move(path)) {}
    ~NewFile()
    {
        if (made_ && !kept_)
            static_cast<void>(files_.remove(path_.absolute).ok());
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    Status write(std::string_view text)
    {
        if (Status free = check_free(); !free.ok())
            return free;
        auto file = files_.open_to_write(path_.absolute, Creation::New);
        if (!file.ok()) {
            // It may have come since.
            Status free = check_free();
            return free.ok() ? cannot(file.status()) : free;
        }
        made_ = true;
        Status written = write_all(**file, 0, std::span<const char>(text.data(), text.size()));
        if (written.ok())
            written = (*file)->sync();
        if (written.ok())
            written = files_.sync_folder(path_.folder().absolute);
        return written.ok() ? written : cannot(written);
    }
    void keep() { kept_ = true; }
    Status check_free() const
    {
        const auto state = files_.state(path_.absolute);
        if (!state.ok())
            return cannot(state.status());
        return state->kind == FileKind::Missing
                   ? Status()
                   : Status(Code::Io, concat(path_.shown, ": there is a file already; it was left as it is"));
    }

private:
    Status cannot(const Status &why) const
    {
        return Status(why.code(), concat(path_.shown, ": cannot be written: ", why.message()));
    }
    FileSystem &files_;
    const LocatedPath path_;
    bool made_ = false;
    bool kept_ = false;
};

} // namespace

Result<std::shared_ptr<const Schema>> find_schema(FileSystem &files, const LocatedPath &folder,
                                                  const std::string &name_or_file)
{
    if (!is_file_name(name_or_file))
        return SchemaLocator(files, folder).load(name_or_file);
    const auto text = text_of_schema(files, name_or_file);
    if (!text.ok())
        return text.status();
    return read_schema(*text, name_or_file);
}

std::vector<std::string> schema_names(FileSystem &files, const LocatedPath &folder)
{
    std::vector<std::string> names;
    const SchemaLocator locator(files, folder);
    for (const LocatedPath &place : locator.folders()) {
        const auto entries = files.list(place.absolute);
        for (const std::string &entry : entries.ok() ? *entries : std::vector<std::string>()) {
            const std::string name =
                entry.substr(0, entry.size() - std::min(entry.size(), schema_ending.size()));
            if (!entry.ends_with(schema_ending) || name.empty() || name[0] == '.' ||
                std::find(names.begin(), names.end(), name) != names.end())
                continue;
            // Other files of that ending lie in the folder of a database, too.
            if (locator.load(name).ok())
                names.push_back(name);
        }
    }
    return names;
}

Result<std::optional<std::string>> schema_to_copy(FileSystem &files, const LocatedPath &descriptor,
                                                  const Schema &schema)
{
    const auto found = SchemaLocator(files, descriptor.folder()).load(schema.name);
    if (!found.ok() && found.status().code() != Code::NotFound)
        return found.status();
    if (found.ok() && (*found)->file == schema.file)
        return std::optional<std::string>();
    const auto text = text_of_schema(files, schema.file);
    if (!text.ok())
        return text.status();
    if (!found.ok())
        return std::optional(*text);
    const auto other = text_of_schema(files, (*found)->file);
    if (other.ok() && *other == *text)
        return std::optional<std::string>();
    return Status(Code::Argument, concat(descriptor.shown, ": another schema ", schema.name, ", ",
                                         (*found)->file, ", would be that of the new database"));
}

Status create_database(FileSystem &files, const LocatedPath &path, Descriptor descriptor)
{
    const LocatedPath folder = path.folder();
    const auto there = files.state(folder.absolute);
    if (!there.ok())
        return there.status();
    if (there->kind != FileKind::Directory)
        return Status(Code::NotFound, concat(path.shown, ": there is no folder ", folder.shown));
    NewFile file(files, path);
    if (Status free = file.check_free(); !free.ok())
        return free;
    const auto schema = find_schema(files, folder, descriptor.schema);
    if (!schema.ok())
        return schema.status();
    if (is_file_name(descriptor.schema))
        descriptor.schema = (*schema)->name;
    const auto copy = schema_to_copy(files, path, **schema);
    if (!copy.ok())
        return copy.status();
    NewFile schema_file(files, folder.entry(descriptor.schema + std::string(schema_ending)));
    if (*copy)
        if (Status written = schema_file.write(**copy); !written.ok())
            return written;
    if (Status written = file.write(descriptor_text(descriptor)); !written.ok())
        return written;
    schema_file.keep();
    file.keep();
    return Status();
}

} // namespace orvane
