// An open database: its descriptor, its schema, and its tables.
#pragma once

#include "catalog/database_locator.h"
#include "storage/storage.h"
#include "table/base_table.h"
#include "view/grouped_view.h"

#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

class Database
{
public:
    // The storage has to outlive the database.
    Database(LocatedDatabase located, bool writable, Storage &storage);
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    const std::string &name() const { return path_.shown; }
    const LocatedPath &path() const { return path_; }
    const Descriptor &descriptor() const { return descriptor_; }
    const Schema &schema() const { return *schema_; }
    bool opened_for_writing() const { return writable_; }

    // Tables by index: base tables 0…n-1 in schema order, then views. Null where there is none (any more).
    Table *table(std::int64_t index) const
    {
        return index >= 0 && index < static_cast<std::int64_t>(tables_.size())
                   ? tables_[static_cast<std::size_t>(index)].get()
                   : unlisted_table(index).get(); // what needs it keeps it
    }
    // One beyond the last index.
    std::int64_t table_end() const { return static_cast<std::int64_t>(tables_.size()); }
    // Base tables and views.
    std::int64_t table_count() const;
    // The index of a base table or view, or -1.
    std::int64_t table_index(std::string_view table_name) const;
    std::vector<std::string_view> table_names() const;

    // A base table or view to be kept by what is made of it.
    std::shared_ptr<Table> shared_table(std::int64_t index) const
    {
        return index >= first_unlisted ? unlisted_table(index)
               : table(index)          ? tables_[static_cast<std::size_t>(index)]
                                       : nullptr;
    }
    // Whether the list of tables shows a table that is there.
    bool is_listed(std::int64_t index) const { return index < first_unlisted; }

    // ---- Views ----

    // Whether a new view can have the name: the failure says why not.
    Status check_view_name(std::string_view view_name) const;
    // Puts a view behind all tables and views so far and answers its index, which no other one gets.
    std::int64_t add_view(std::shared_ptr<Table> view);
    // Knows a view that no list shows, so that it follows when records are numbered anew.
    void remember_view(const std::shared_ptr<Table> &view);
    // A saved view that can't be read, and why.
    void note_refused_view(const std::string &view_name, Status why)
    {
        refused_views_[view_name] = std::move(why);
    }
    Status refused_view(const std::string &view_name) const
    {
        const auto found = refused_views_.find(view_name);
        return found == refused_views_.end() ? Status() : found->second;
    }
    const std::map<std::string, Status> &refused_views() const { return refused_views_; }
    // Takes a view out of the list. It lives on while bundles or members of other views need it.
    void free_view(std::int64_t index);
    // The index by which pointers reach a table that bundles stand in, also when no list shows it (any more).
    std::int64_t index_for_bundles(const std::shared_ptr<Table> &source);
    // The index of a base table or view by its name, also of a freed grouped view that is a member of another
    // view: its fields are still named by its name. -1 where there is none.
    std::int64_t index_for_lookup(std::string_view table_name);
    // Records of a base table, which had their numbers at that generation, were numbered anew: `renumbered`
    // has the new number of each old one, null_row for those that are gone. Every view over the table
    // follows, those that no list shows too.
    void renumber(RecordTable &table, std::uint64_t generation, std::span<const RowNumber> renumbered);

    // ---- Changing ----

    // Removes the marked records of a base table, or the flagged rows of a view, and has all views follow.
    Status crunch(Table &table, Work &work);
    // The next number for the records that an id field names: one more than the one kept in the table lastid,
    // if the schema has that, and than the greatest in use. Kept there as given out.
    Result<std::int64_t> next_id(std::string_view id_field, Work &work);

    // Has the table lastid count an id from there on, if it is behind.
    Status raise_counter(std::string_view id_field, std::int64_t in_use, Work &work);

    // An operation runs in this database: another one, or closing, is refused meanwhile.
    bool operation_running = false;

    // Keeps a text that was made to answer a question about a table (null: about the database) until the same
    // question is asked again, and answers where it is kept.
    const std::string &keep_answer(int question, const Table *about, std::string text)
    {
        return answers_[{question, about}] = std::move(text);
    }

private:
    LocatedPath path_;
    Descriptor descriptor_;
    std::shared_ptr<const Schema> schema_;
    bool writable_;
    // Rows of a view got new numbers, null_row for those that went: what is grouped of it follows.
    void follow_rows(const Table &view, std::span<const RowNumber> moved);
    Result<std::int64_t> greatest_in_use(const Relation &relation, std::string_view id_field, Work &work);
    Result<std::int64_t> count_up(std::string_view id_field, std::int64_t at_least, Work &work);
    std::shared_ptr<Table> unlisted_table(std::int64_t index) const;
    // A grouped view of that name which something keeps.
    std::shared_ptr<Table> freed_member(std::string_view name) const;

    std::vector<std::shared_ptr<Table>> tables_; // null where a view was freed
    // Tables of bundles that no list shows, by their indexes from `first_unlisted` on.
    static constexpr std::int64_t first_unlisted = std::int64_t{1} << 40;
    std::vector<std::weak_ptr<Table>> unlisted_;
    std::vector<std::weak_ptr<Table>> all_views_; // listed or not
    std::map<std::pair<int, const Table *>, std::string> answers_;
    std::map<std::string, Status> refused_views_;
};

} // namespace orvane
