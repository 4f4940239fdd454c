#include "saved/saved_parts.h"

#include "base/concat.h"
#include "operation/operand.h"
#include "view/grouped_view.h"

namespace orvane {

namespace {

class Taking
{
public:
    explicit Taking(SavedParts &out) : out_(out) {}

    // The number of the part that a table is; adds it, and what it stands on before it.
    Result<int> part_of(const std::shared_ptr<Table> &table)
    {
        for (std::size_t i = 0; i < out_.kept.size(); ++i)
            if (out_.kept[i] == table)
                return static_cast<int>(i);
        if (const auto view = std::dynamic_pointer_cast<View>(table))
            return add_view(view);
        if (const auto grouped = std::dynamic_pointer_cast<GroupedView>(table))
            return add_groups(grouped);
        return add_table(std::dynamic_pointer_cast<BaseTable>(table));
    }

    // The view of all records of a base table.
    Result<int> add_all_records_of(const std::shared_ptr<Table> &table)
    {
        const auto member = part_of(table);
        if (!member.ok())
            return member;
        const SavedPart &of = out_.head.parts[static_cast<std::size_t>(*member)];
        SavedPart part;
        part.kind = PartKind::Rows;
        part.name = table->name();
        part.count = of.count;
        part.members = {*member};
        part.creation = table->creation();
        part.fields = of.fields;
        return add(std::move(part), {{nullptr}}, nullptr);
    }

private:
    int add(SavedPart part, RowColumnsToSave rows, std::shared_ptr<Table> table)
    {
        out_.head.parts.push_back(std::move(part));
        out_.rows.push_back(std::move(rows));
        out_.kept.push_back(std::move(table));
        return static_cast<int>(out_.kept.size() - 1);
    }

    static std::vector<std::string> field_names(const Table &table)
    {
        std::vector<std::string> names;
        for (const TableField &field : table.fields())
            names.push_back(concat(field.relation->name, '.', field.attribute->name));
        return names;
    }

    SavedPart described(const Table &table, PartKind kind, std::int64_t count) const
    {
        SavedPart part;
        part.kind = kind;
        part.name = table.name();
        part.count = count;
        part.fields = field_names(table);
        if (kind != PartKind::Table)
            part.creation = table.creation();
        return part;
    }

    Result<int> add_table(const std::shared_ptr<BaseTable> &table)
    {
        const Snapshot snapshot = table->snapshot();
        if (!snapshot.refusal.ok())
            return snapshot.refusal;
        if (snapshot.records >= max_view_rows)
            return Status(Code::Argument, concat("table ", table->name(), " has ", snapshot.records,
                                                 " records; views can be made of less than ", max_view_rows));
        SavedPart part = described(*table, PartKind::Table, snapshot.records);
        const FileState &state = table->file().state();
        part.has_file = state.kind != FileKind::Missing;
        part.modified = state.modification_time;
        return add(std::move(part), {}, table);
    }

    Result<int> add_view(const std::shared_ptr<View> &view)
    {
        Operand operand(view); // which looks whether the records are still there
        if (Status looked = operand.look(snapshots_); !looked.ok())
            return looked;
        SavedPart part = described(*view, PartKind::Rows, view->row_count());
        RowColumnsToSave rows;
        for (const ViewMember &member : view->member_tables()) {
            const auto number = part_of(member.table);
            if (!number.ok())
                return number;
            part.members.push_back(*number);
            rows.columns.push_back(member.rows.data());
        }
        return add(std::move(part), std::move(rows), view);
    }

    Result<int> add_groups(const std::shared_ptr<GroupedView> &grouped)
    {
        if (const Snapshot snapshot = grouped->snapshot(); !snapshot.refusal.ok())
            return snapshot.refusal;
        const auto source = part_of(grouped->source());
        if (!source.ok())
            return source;
        SavedPart part = described(*grouped, PartKind::Bundles, grouped->bundle_count());
        part.source = *source;
        part.keys = grouped->keys();
        return add(std::move(part), {{grouped->firsts().data()}}, grouped);
    }

    SavedParts &out_;
    Snapshots snapshots_;
};

} // namespace

Result<SavedParts> take_apart(const Database &database, const std::shared_ptr<Table> &table)
{
    SavedParts parts;
    parts.head.database = database.path().absolute;
    parts.head.schema = database.schema().name;
    Taking taking(parts);
    const auto last = table->is_view() ? taking.part_of(table) : taking.add_all_records_of(table);
    if (!last.ok())
        return last.status();
    return parts;
}

} // namespace orvane
