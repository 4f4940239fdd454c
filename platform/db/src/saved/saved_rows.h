// The rows of a view that was saved, on their way into the tables that it is put together of.
#pragma once

#include "catalog/database.h"
#include "saved/saved_text.h"

#include <memory>
#include <string>
#include <vector>

namespace orvane {

// Where a saved view lies, and what state its file was in when its head was read.
struct SavedFile {
    FileSystem *files = nullptr;
    LocatedPath path;
    FileState state;
};

class SavedRows : public DelayedRows, public std::enable_shared_from_this<SavedRows>
{
public:
    // `shown` names the view's text in notices.
    SavedRows(SavedHead head, std::string shown);

    // Makes the tables of the view, all but the base tables, without rows. The view itself has the name
    // given; grouped views inside it that can't have theirs, because another one has it, or is going to
    // (`taken`), get another one.
    std::shared_ptr<Table> make_tables(Database &database, const std::string &name,
                                       std::span<const std::string> taken);

    // Leaves the rows to be read from the file when they are asked for.
    void read_later(SavedFile file);
    // Gives the tables the rows that were read.
    void give(std::vector<SavedColumns> columns);

    void deliver() override;
    void deliver_before_renumbering(const RecordTable &table, std::uint64_t generation,
                                    std::int64_t records) override;

private:
    // A part as a table: one of the three. The tables keep each other, and themselves wait for this object.
    struct PartTable {
        std::shared_ptr<BaseTable> base;
        std::weak_ptr<View> view;
        std::weak_ptr<GroupedView> grouped;
    };

    const SavedPart &part(std::size_t number) const { return head_.parts[number]; }
    std::shared_ptr<RecordTable> record_table(int number) const;
    std::shared_ptr<Table> table(int number) const;
    Result<std::vector<SavedColumns>> read_file() const;
    void count_records();
    std::uint64_t generation(int number) const;
    void tell_changes() const;
    void give_rows(std::size_t number, SavedColumns columns);
    void give_bundles(std::size_t number, SavedColumns columns);
    void refuse(const Status &why);

    SavedHead head_;
    std::string shown_;
    SavedFile file_;
    std::vector<PartTable> tables_;
    const RecordTable *renumbered_ = nullptr; // a table of which these many records are the ones
    std::uint64_t renumbered_generation_ = 0;
    std::int64_t renumbered_records_ = 0;
    std::vector<std::int64_t> records_;            // by part: of a table, the records that it has now
    std::vector<std::vector<RowNumber>> renumber_; // by part: the new number of each row; empty: as they were
    std::int64_t gone_ = 0;                        // rows of the view that stood for records that are gone
};

} // namespace orvane
