#include "view/grouped_view.h"

#include "base/concat.h"
#include "operation/operand.h"

namespace orvane {

const Attribute &bundle_attribute()
{
    static const Attribute attribute = [] {
        Attribute made;
        made.name = "bundle";
        made.type = FieldType::Dbptr;
        made.width = 24;
        made.format = "%-24s";
        made.parsed_format = *parse_field_format(made.format);
        made.null = std::string(1, '-');
        made.description = "rows of the group";
        made.detail =
            "The rows that have these values: the number of the first, and one beyond that of the last, in "
            "the view that was grouped.";
        return made;
    }();
    return attribute;
}

GroupedView::GroupedView(std::string name, std::shared_ptr<Table> source, const std::vector<int> &keys,
                         RowNumbers firsts, std::string creation)
    : source_(std::move(source)), keys_(keys), firsts_(std::move(firsts)), creation_(std::move(creation))
{
    relation_.name = std::move(name);
    relation_.description = description();
    for (const int key : keys_)
        relation_.add_field(*source_->fields()[static_cast<std::size_t>(key)].attribute);
    relation_.add_field(bundle_attribute());
    for (const RelationField &field : relation_.fields())
        fields_.push_back(TableField{field.attribute, &relation_, field.offset});
    members_.push_back(&relation_);
    scratch_ = relation_.null_record();
}

int GroupedView::field_index(std::string_view field_name, int standing_on) const
{
    return find_view_field(fields_, name(), field_name, standing_on);
}

Result<std::string_view> GroupedView::gone(std::int64_t number) const
{
    const Status gone(Code::NotFound, concat("record ", number, " is not there: view ", name(), " has ",
                                             bundle_count(), bundle_count() == 1 ? " bundle" : " bundles"));
    return refusal_.ok() ? gone : gone.with_line(refusal_.message());
}

void GroupedView::take_firsts(RowNumbers firsts)
{
    delayed_.reset();
    firsts_ = std::move(firsts);
}

void GroupedView::refuse(Status why)
{
    delayed_.reset();
    refusal_ = std::move(why);
}

Result<std::string_view> GroupedView::record(std::int64_t number)
{
    std::string text;
    for (std::size_t field = 0; field < fields_.size(); ++field) {
        const auto part = cell(number, field);
        if (!part.ok())
            return part;
        if (field > 0)
            text += ' ';
        text += *part;
    }
    assembled_ = std::move(text);
    return std::string_view(assembled_);
}

Result<std::string_view> GroupedView::cell(std::int64_t number, std::size_t field)
{
    if (number < 0 || number >= bundle_count())
        return gone(number);
    const auto at = static_cast<std::size_t>(number);
    if (is_key(field))
        return source_->cell(firsts_[at], static_cast<std::size_t>(keys_[field]));
    assembled_ = concat(firsts_[at], '-', firsts_[at + 1]);
    assembled_.resize(static_cast<std::size_t>(bundle_attribute().width), ' ');
    return std::string_view(assembled_);
}

std::optional<Bundle> GroupedView::bundle(std::int64_t number, std::size_t field) const
{
    if (is_key(field) || number < 0 || number >= bundle_count())
        return std::nullopt;
    const auto at = static_cast<std::size_t>(number);
    return Bundle{source_, firsts_[at], firsts_[at + 1]};
}

std::string_view GroupedView::special_record(SpecialRecord which) const
{
    return which == SpecialRecord::Scratch ? std::string_view(scratch_) : relation_.null_record();
}

Status GroupedView::set_scratch(std::string_view)
{
    return Status(Code::Argument, concat("view ", name(), " has no scratch record of its own; tables have"));
}

std::string GroupedView::description() const
{
    return "groups of " + source_->name();
}

Result<std::vector<ColumnPtr>> GroupedView::columns(std::span<const int> fields, const Snapshot &, Work &work)
{
    std::vector<int> wanted;
    for (const int field : fields)
        if (is_key(static_cast<std::size_t>(field)))
            wanted.push_back(keys_[static_cast<std::size_t>(field)]);
    Operand source(source_);
    if (Status loaded = source.load(wanted, work); !loaded.ok())
        return loaded;
    std::vector<ColumnPtr> columns;
    for (const int field : fields) {
        const auto &attribute = *fields_[static_cast<std::size_t>(field)].attribute;
        auto column = new_column(attribute, bundle_count());
        if (is_key(static_cast<std::size_t>(field))) {
            source.column(keys_[static_cast<std::size_t>(field)]).gather(firsts_.data(), *column);
        } else {
            // Bundles have no value that could be compared; they sort as they stand.
            auto texts = std::make_shared<TextEntries>();
            column->null_code = texts->code_of("-");
            column->codes.back() = column->null_code;
            for (std::size_t i = 0; i + 1 < firsts_.size(); ++i)
                column->codes[i] = texts->code_of(concat(firsts_[i], '-', firsts_[i + 1]));
            column->texts = std::move(texts);
        }
        columns.push_back(std::move(column));
    }
    return columns;
}

std::vector<RowNumber> GroupedView::renumber(std::span<const RowNumber> moved)
{
    std::vector<RowNumber> renumbered(static_cast<std::size_t>(bundle_count()), null_row);
    RecordMoves moves{source_->last_moves().from, source_->last_moves().to, {}};
    RowNumbers firsts;
    RowNumber left = 0; // rows of the source that are left up to here
    for (std::size_t bundle = 0; bundle + 1 < firsts_.size(); ++bundle) {
        const RowNumber first = left;
        for (RowNumber row = firsts_[bundle]; row < firsts_[bundle + 1]; ++row)
            if (row < moved.size() && moved[row] != null_row)
                ++left;
        if (left == first) {
            moves.gone.push_back(static_cast<std::int64_t>(bundle));
            continue;
        }
        renumbered[bundle] = static_cast<RowNumber>(firsts.size());
        firsts.push_back(first);
    }
    firsts.push_back(left);
    firsts_.swap(firsts);
    last_moves_ = std::move(moves);
    return renumbered;
}

} // namespace orvane
