#include "expression/range_check.h"

#include <atomic>

namespace orvane::expr {

namespace {

// A dictionary of one text, and a number of its own for each.
class OneText : public TextDictionary
{
public:
    explicit OneText(std::string_view text) : text_(text)
    {
        // Counts down from the top, where the dictionaries of columns, which count up, never come.
        static std::atomic<std::uint64_t> next{~std::uint64_t{0}};
        identity_ = next--;
    }

    std::uint64_t identity() const override { return identity_; }
    std::size_t size() const override { return 1; }
    std::string_view text(std::uint32_t) const override { return text_; }

private:
    std::string_view text_;
    std::uint64_t identity_ = 0;
};

class OneRow : public ColumnBatch
{
public:
    explicit OneRow(const Value &value) : value_(value), dictionary_(value.text) {}

    std::size_t size() const override { return 1; }
    Result<ColumnView> column(std::size_t) override
    {
        ColumnView view;
        view.integers = &value_.integer;
        view.reals = &value_.real;
        view.codes = &code_;
        view.dictionary = &dictionary_;
        return view;
    }

private:
    const Value &value_;
    OneText dictionary_;
    std::uint32_t code_ = 0;
};

} // namespace

Result<BoundExpression> check_range(std::string_view attribute, ValueType type, std::string_view range)
{
    const Result<ParsedExpression> parsed = ParsedExpression::parse(range);
    if (!parsed.ok())
        return parsed.status();
    const FieldListScope scope({{std::string(attribute), {}, type}});
    return BoundExpression::bind_condition(*parsed, scope);
}

Result<bool> RangeCheck::admits(const Value &value)
{
    if (value.presence != Present)
        return true;
    OneRow row(value);
    SelectionVector inside;
    if (Status status = executor_.select_all(row, inside); !status.ok())
        return status;
    return !inside.empty();
}

} // namespace orvane::expr
