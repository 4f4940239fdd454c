#include "catalog/database_registry.h"

#include "base/concat.h"
#include "saved/saved_view.h"

namespace orvane {

DatabaseRegistry &DatabaseRegistry::of_process()
{
    static DatabaseRegistry registry;
    return registry;
}

std::shared_ptr<Storage> DatabaseRegistry::storage_of(FileSystem &files)
{
    std::weak_ptr<Storage> &kept = storages_[&files];
    auto storage = kept.lock();
    if (!storage) {
        storage = std::make_shared<Storage>(files);
        kept = storage;
    }
    return storage;
}

Result<std::int64_t> DatabaseRegistry::open(const std::string &path, const std::string &permissions,
                                            std::int64_t &table)
{
    table = -1;
    if (permissions != "r" && permissions != "r+")
        return Status(Code::Argument, concat(path, ": cannot be opened with permissions '", permissions,
                                             "': use 'r' to read, 'r+' to read and write"));
    FileSystem &files = current_file_system();
    auto located = locate_database(files, path);
    if (!located.ok())
        return located.status();
    table = located->table;
    auto storage = storage_of(files);
    const std::string saved_view = located->saved_view;
    auto opened = std::make_unique<Database>(std::move(*located), permissions == "r+", *storage);
    add_saved_views(*opened, files);
    if (!saved_view.empty()) {
        table = opened->table_index(saved_view);
        if (table < 0)
            return opened->refused_view(saved_view);
    }
    // Room first: when memory runs out, neither list may get an entry that the other lacks.
    databases_.reserve(databases_.size() + 1);
    storage_by_database_.push_back(std::move(storage));
    databases_.push_back(std::move(opened));
    return static_cast<std::int64_t>(databases_.size() - 1);
}

bool DatabaseRegistry::close(std::int64_t index)
{
    if (!database(index))
        return false;
    const auto at = static_cast<std::size_t>(index);
    databases_[at].reset();
    storage_by_database_[at].reset();
    return true;
}

std::int64_t DatabaseRegistry::index_of(const std::string &name) const
{
    for (std::size_t i = databases_.size(); i-- > 0;)
        if (databases_[i] && databases_[i]->name() == name)
            return static_cast<std::int64_t>(i);
    return -1;
}

} // namespace orvane
