// A grouped view: bundles of rows that are equal in some fields. Its rows are records of their own, so that
// it can be a member of further views.
#pragma once

#include "view/view.h"

#include <utility>

namespace orvane {

class GroupedView : public RecordTable
{
public:
    // `firsts` has the first row of each bundle in the source, ascending, and behind the last one the end of
    // its rows. `keys` are fields of the source, equal within each bundle.
    GroupedView(std::string name, std::shared_ptr<Table> source, const std::vector<int> &keys,
                RowNumbers firsts, std::string creation);

    const std::string &name() const override { return relation_.name; }
    bool is_view() const override { return true; }
    const std::vector<const Relation *> &members() const override { return members_; }
    const std::vector<TableField> &fields() const override { return fields_; }
    int field_index(std::string_view field_name, int standing_on) const override;
    std::int64_t record_size() const override { return relation_.record_size(); }

    RecordCount count_records() override
    {
        const std::int64_t bundles = bundle_count();
        return RecordCount{bundles, refusal_};
    }
    // Bundles are numbered anew whenever the rows are that they stand for.
    std::int64_t numbering() override { return source_->numbering(); }
    std::int64_t version() override { return source_->version(); }
    Result<std::string_view> record(std::int64_t number) override;
    std::string_view special_record(SpecialRecord which) const override;
    Status set_scratch(std::string_view record_text) override;
    Result<std::string_view> cell(std::int64_t number, std::size_t field) override;
    std::optional<Bundle> bundle(std::int64_t number, std::size_t field) const override;

    Result<bool> is_present() override { return true; }
    std::string file_name() override { return {}; }
    std::string folder_name() override { return {}; }
    bool is_writable() override { return false; }
    std::string creation() const override { return creation_; }
    std::string description() const override;
    std::string detail() const override { return creation_; }

    Snapshot snapshot() override
    {
        const std::int64_t bundles = bundle_count();
        return Snapshot{bundles, 0, refusal_};
    }
    Result<std::vector<ColumnPtr>> columns(std::span<const int> fields, const Snapshot &as_of,
                                           Work &work) override;

    std::int64_t bundle_count() const { return static_cast<std::int64_t>(firsts().size()) - 1; }
    const std::shared_ptr<Table> &source() const { return source_; }
    const std::vector<int> &keys() const { return keys_; }
    const RowNumbers &firsts() const
    {
        if (delayed_)
            std::exchange(delayed_, nullptr)->deliver();
        return firsts_;
    }

    // As View does, for one that is made with no bundles: its firsts are {0}.
    void wait_for(std::shared_ptr<DelayedRows> rows) { delayed_ = std::move(rows); }
    void take_firsts(RowNumbers firsts);
    void refuse(Status why);

    // Rows of the source were numbered anew, as View::renumber answers. Bundles without rows go. Answers for
    // each old bundle its new number, null_row for those that went.
    std::vector<RowNumber> renumber(std::span<const RowNumber> moved);

private:
    bool is_key(std::size_t field) const { return field < keys_.size(); }
    Result<std::string_view> gone(std::int64_t number) const;

    std::shared_ptr<Table> source_;
    std::vector<int> keys_;
    RowNumbers firsts_;
    std::string creation_;
    Relation relation_;
    std::vector<const Relation *> members_;
    std::vector<TableField> fields_;
    std::string scratch_;
    std::string assembled_;
    mutable std::shared_ptr<DelayedRows> delayed_;
    Status refusal_;
};

// The attribute of the field `bundle`: "first-end" in its text.
const Attribute &bundle_attribute();

} // namespace orvane
