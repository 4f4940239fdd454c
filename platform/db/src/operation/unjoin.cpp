#include "operation/unjoin.h"

#include "base/concat.h"
#include "catalog/new_database.h"
#include "operation/operand.h"
#include "storage/replacement_file.h"
#include "view/grouped_view.h"

#include <algorithm>
#include <vector>

namespace orvane {

namespace {

constexpr std::int64_t piece_bytes = 1 << 20;
constexpr int max_attempts = 4; // at tables that keep changing

// ---- Which records -------------------------------------------------------------------------------

struct Wanted {
    std::shared_ptr<BaseTable> table;
    Snapshot snapshot;
    std::vector<bool> records;
};

// Finds the records that rows stand for, down to the base tables.
class Finding
{
public:
    explicit Finding(Snapshots &snapshots) : snapshots_(snapshots) {}

    // All rows.
    Status find(const std::shared_ptr<Table> &table)
    {
        const RecordCount count = table->count_records();
        if (!count.refusal.ok())
            return count.refusal;
        return find(table, std::vector<bool>(static_cast<std::size_t>(count.records), true));
    }

    std::vector<Wanted> take() { return std::move(wanted_); }

private:
    // The chosen ones.
    Status find(const std::shared_ptr<Table> &table, const std::vector<bool> &chosen)
    {
        if (const auto view = std::dynamic_pointer_cast<View>(table))
            return find_in_view(view, chosen);
        if (const auto grouped = std::dynamic_pointer_cast<GroupedView>(table))
            return find_in_groups(*grouped, chosen);
        return want(std::dynamic_pointer_cast<BaseTable>(table), chosen);
    }

    Status find_in_view(const std::shared_ptr<View> &view, const std::vector<bool> &chosen)
    {
        Operand operand(view); // which looks whether the records are still there
        if (Status looked = operand.look(snapshots_); !looked.ok())
            return looked;
        for (const ViewMember &member : view->member_tables()) {
            std::vector<bool> records(member.end);
            for (std::size_t row = 0; row < chosen.size(); ++row)
                if (chosen[row] && member.rows[row] != null_row)
                    records[member.rows[row]] = true;
            if (Status found = find(member.table, records); !found.ok())
                return found;
        }
        return Status();
    }

    Status find_in_groups(const GroupedView &grouped, const std::vector<bool> &chosen)
    {
        const RowNumbers &firsts = grouped.firsts();
        std::vector<bool> rows(firsts.back());
        for (std::size_t bundle = 0; bundle < chosen.size(); ++bundle)
            if (chosen[bundle])
                std::fill(rows.begin() + firsts[bundle], rows.begin() + firsts[bundle + 1], true);
        return find(grouped.source(), rows);
    }

    Status want(const std::shared_ptr<BaseTable> &table, const std::vector<bool> &chosen)
    {
        auto known = std::find_if(wanted_.begin(), wanted_.end(),
                                  [&](const Wanted &wanted) { return wanted.table == table; });
        if (known == wanted_.end()) {
            wanted_.push_back(Wanted{table, snapshots_.of(table), {}});
            known = wanted_.end() - 1;
            if (!known->snapshot.refusal.ok())
                return known->snapshot.refusal;
        }
        known->records.resize(std::max(known->records.size(), chosen.size()));
        for (std::size_t record = 0; record < chosen.size(); ++record)
            if (chosen[record])
                known->records[record] = true;
        return Status();
    }

    Snapshots &snapshots_;
    std::vector<Wanted> wanted_;
};

// ---- Copying them --------------------------------------------------------------------------------

// Reads records piece by piece, on several threads, and writes those that are wanted.
class Copying
{
public:
    // `share` as in Work::for_parts.
    Copying(const Wanted &wanted, ReplacementFile &out, Work &work, double share)
        : wanted_(wanted), out_(out), work_(work), share_(share), record_size_(wanted.table->record_size()),
          per_piece_(std::max<std::int64_t>(1, piece_bytes / record_size_)), pieces_(Work::part_slots())
    {
    }

    Status copy()
    {
        if (wanted_.records.empty())
            return Status();
        const auto file = wanted_.table->open_records(wanted_.snapshot, work_);
        if (!file.ok())
            return file.status();
        return work_.for_parts(
            static_cast<std::int64_t>(wanted_.records.size()), per_piece_, share_,
            [&](std::int64_t first, std::int64_t end, unsigned slot) {
                return read_piece(**file, first, end, pieces_[slot]);
            },
            [&](std::int64_t, std::int64_t, unsigned slot) {
                return pieces_[slot].chosen.empty() ? Status() : out_.write(pieces_[slot].chosen);
            });
    }

private:
    struct Piece {
        std::vector<char> bytes; // of all records
        std::string chosen;      // those of the ones that are wanted
    };

    Status read_piece(RandomAccessFile &file, std::int64_t first, std::int64_t end, Piece &piece) const
    {
        piece.chosen.clear();
        const auto begins = wanted_.records.begin() + static_cast<std::ptrdiff_t>(first);
        if (std::none_of(begins, wanted_.records.begin() + static_cast<std::ptrdiff_t>(end),
                         [](bool wanted) { return wanted; }))
            return Status();
        piece.bytes.resize(static_cast<std::size_t>((end - first) * record_size_));
        const auto got = file.read_at(first * record_size_, std::span<char>(piece.bytes));
        if (!got.ok())
            return got.status();
        for (std::int64_t record = first; record < end; ++record) {
            if (!wanted_.records[static_cast<std::size_t>(record)])
                continue;
            const auto at = static_cast<std::size_t>((record - first) * record_size_);
            const auto size = static_cast<std::size_t>(record_size_);
            if (at + size > *got) {
                work_.meet_change();
                return Status(Code::NotFound, concat("record ", record, " of table ", wanted_.table->name(),
                                                     " is gone: the file was cut short while it was read"));
            }
            const std::string_view text(piece.bytes.data() + at, size);
            if (text.find('\n') != size - 1)
                return Status(Code::Format, concat("record ", record, " of table ", wanted_.table->name(),
                                                   " has its line feed out of place; mend the file"));
            piece.chosen.append(text);
        }
        return Status();
    }

    const Wanted &wanted_;
    ReplacementFile &out_;
    Work &work_;
    const double share_;
    const std::int64_t record_size_;
    const std::int64_t per_piece_;
    std::vector<Piece> pieces_; // of the slots
};

// ---- The database --------------------------------------------------------------------------------

class NewDatabase
{
public:
    NewDatabase(const Database &source, FileSystem &files, LocatedPath path)
        : source_(source), files_(files), path_(std::move(path))
    {
    }

    // A descriptor or a table file there is of a database that stays as it is.
    Status check_place()
    {
        if (Status free = check_missing(path_); !free.ok())
            return free;
        for (const Relation &relation : source_.schema().relations())
            if (Status free = check_missing(path_.with_ending("." + relation.name)); !free.ok())
                return free;
        return Status();
    }

    Status write_tables(std::vector<Wanted> tables, Work &work)
    {
        auto left = static_cast<double>(tables.size());
        for (const Wanted &wanted : tables) {
            ReplacementFile *file = nullptr;
            if (Status made = make(path_.with_ending("." + wanted.table->name()), file); !made.ok())
                return made;
            if (Status copied = Copying(wanted, *file, work, 1 / left--).copy(); !copied.ok())
                return copied;
        }
        return Status();
    }

    // The new database has to find the schema that the old one has: it may be one that lies beside that.
    Status write_schema()
    {
        const Schema &schema = source_.schema();
        const auto copy = schema_to_copy(files_, path_, schema);
        if (!copy.ok())
            return copy.status();
        if (!*copy)
            return Status();
        ReplacementFile *file = nullptr;
        if (Status made = make(path_.folder().entry(schema.name + ".yaml"), file); !made.ok())
            return made;
        return file->write(**copy);
    }

    Status write_descriptor()
    {
        Descriptor descriptor = source_.descriptor();
        descriptor.dbpath = {"."};
        ReplacementFile *file = nullptr;
        if (Status made = make(path_, file); !made.ok())
            return made;
        return file->write(descriptor_text(descriptor));
    }

    // All files come to stand under their names, or none.
    Status commit()
    {
        if (Status free = check_place(); !free.ok())
            return free;
        for (const auto &file : made_)
            if (Status committed = file->commit(); !committed.ok()) {
                for (const auto &other : made_)
                    other->take_back();
                return committed;
            }
        return Status();
    }

private:
    Status check_missing(const LocatedPath &path)
    {
        const auto state = files_.state(path.absolute);
        if (!state.ok())
            return state.status();
        return state->kind == FileKind::Missing
                   ? Status()
                   : Status(Code::Argument,
                            concat(path.shown, ": is there already; a new database needs a name of its own"));
    }

    Status make(const LocatedPath &path, ReplacementFile *&file)
    {
        auto made = ReplacementFile::make(files_, path);
        if (!made.ok())
            return made.status();
        file = made->get();
        made_.push_back(std::move(*made));
        return Status();
    }

    const Database &source_;
    FileSystem &files_;
    LocatedPath path_;
    std::vector<std::unique_ptr<ReplacementFile>> made_;
};

} // namespace

namespace {

Status unjoin_once(const Database &database, FileSystem &files, const std::shared_ptr<Table> &table,
                   const LocatedPath &path, Work &work)
{
    NewDatabase made(database, files, path);
    if (Status free = made.check_place(); !free.ok())
        return free;
    Finding finding(work.snapshots());
    if (Status found = finding.find(table); !found.ok())
        return found;
    if (Status written = made.write_schema(); !written.ok())
        return written;
    if (Status written = made.write_tables(finding.take(), work); !written.ok())
        return written;
    if (Status written = made.write_descriptor(); !written.ok())
        return written;
    return made.commit();
}

} // namespace

// A table that changes while it is copied is copied anew: half of each would be a database that never was.
Status unjoin(const Database &database, FileSystem &files, const std::shared_ptr<Table> &table,
              const LocatedPath &path, Work &work)
{
    for (int attempt = 1;; ++attempt) {
        Status done = unjoin_once(database, files, table, path, work);
        if (done.ok() || !work.take_change() || attempt == max_attempts)
            return done;
    }
}

} // namespace orvane
