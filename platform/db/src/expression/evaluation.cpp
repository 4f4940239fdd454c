#include "expression/evaluation.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "expression/comparison_masks.h"

namespace orvane::expr {

namespace {

using Kind = BoundNode::Kind;

// The value of one position of a vector.
Value taken(const Vector &vector, ValueType type, std::size_t position)
{
    Value value;
    value.type = type;
    switch (storage_of(type)) {
    case Storage::Integer: {
        const Reader<std::int64_t> reader(vector);
        value.integer = reader[position];
        value.presence = static_cast<Presence>(reader.presence(position));
        break;
    }
    case Storage::Real: {
        const Reader<double> reader(vector);
        value.real = reader[position];
        value.presence = static_cast<Presence>(reader.presence(position));
        break;
    }
    case Storage::Text: {
        const Reader<std::string_view> reader(vector);
        value.text = reader[position];
        value.presence = static_cast<Presence>(reader.presence(position));
        break;
    }
    }
    return value;
}

template <typename T>
void copy_positions(const Vector &from, Selection selection, T *values, std::uint8_t *presences)
{
    const Reader<T> reader(from);
    for_each(selection, [&](std::size_t position) {
        values[position] = reader[position];
        presences[position] = reader.presence(position);
    });
}

void copy_positions(const Vector &from, Storage storage, Selection selection, Vector &out)
{
    switch (storage) {
    case Storage::Integer:
        return copy_positions<std::int64_t>(from, selection, out.integers(), out.presences());
    case Storage::Real:
        return copy_positions<double>(from, selection, out.reals(), out.presences());
    case Storage::Text:
        return copy_positions<std::string_view>(from, selection, out.texts(), out.presences());
    }
}

// Vectors have a value for each position up to the last that is selected.
std::size_t extent(Selection selection)
{
    if (!selection.positions || selection.count == 0)
        return selection.count;
    return std::size_t{selection.positions[selection.count - 1]} + 1;
}

void take_all(Selection selection, SelectionVector &out)
{
    out.clear();
    for_each(selection, [&](std::size_t position) { out.push_back(static_cast<std::uint32_t>(position)); });
}

} // namespace

bool is_condition(const BoundNode &node)
{
    switch (node.kind) {
    case Kind::Test:
    case Kind::And:
    case Kind::Or:
    case Kind::Not:
        return true;
    default:
        return node.kind == Kind::Constant && node.type == ValueType::Boolean;
    }
}

Evaluation::Evaluation(double now) : now_(now) {}

Status Evaluation::select(const BoundNode &node, ColumnBatch &batch, Selection selection,
                          SelectionVector &out)
{
    arena_.clear();
    Run run{batch, arena_};
    return condition(node, run, selection, out);
}

Status Evaluation::values(const BoundNode &node, ColumnBatch &batch, Selection selection,
                          std::vector<Value> &out)
{
    arena_.clear();
    Run run{batch, arena_};
    Vector vector;
    if (Status status = evaluate(node, run, selection, vector); !status.ok())
        return status;
    for_each(selection, [&](std::size_t position) { out.push_back(taken(vector, node.type, position)); });
    return {};
}

Status Evaluation::column(std::size_t index, Run &run, ColumnView &view)
{
    for (const auto &[known, column] : run.columns) {
        if (known == index) {
            view = column;
            return {};
        }
    }
    Result<ColumnView> answer = run.batch.column(index);
    if (!answer.ok())
        return answer.status();
    view = *answer;
    run.columns.emplace_back(index, view);
    return {};
}

// ---- Conditions ------------------------------------------------------------------------------------------

Status Evaluation::condition(const BoundNode &node, Run &run, Selection selection, SelectionVector &out)
{
    out.clear();
    if (selection.count == 0)
        return {};
    if (node.kind == Kind::Constant) {
        if (node.constant.presence == Present && node.constant.integer != 0)
            take_all(selection, out);
        return {};
    }
    const EntryMemo *memo = nullptr;
    ColumnView view;
    if (Status status = memo_for(node, run, selection, memo, view); !status.ok())
        return status;
    if (memo) {
        take_known(*memo, view, selection, out);
        return {};
    }
    switch (node.kind) {
    case Kind::And:
        return conjunction(node, run, selection, out);
    case Kind::Or:
        return disjunction(node, run, selection, out);
    case Kind::Not:
        return negation(node, run, selection, out);
    default:
        return test(node, run, selection, out);
    }
}

Status Evaluation::conjunction(const BoundNode &node, Run &run, Selection selection, SelectionVector &out)
{
    SelectionVector survivors;
    std::span<const BoundNodePtr> rest(node.children);
    if (!selection.positions) {
        const auto others =
            std::find_if(rest.begin(), rest.end(), [](const auto &child) { return !child->mask; });
        const auto masks = static_cast<std::size_t>(others - rest.begin());
        if (masks > 0) {
            if (Status status = masked(rest.first(masks), run, selection.count, out); !status.ok())
                return status;
            if (out.empty() || masks == rest.size())
                return {};
            survivors.swap(out);
            selection = selection_of(survivors);
            rest = rest.subspan(masks);
        }
    }
    for (const BoundNodePtr &child : rest) {
        if (Status status = condition(*child, run, selection, out); !status.ok())
            return status;
        if (out.empty())
            return {};
        survivors.swap(out);
        selection = selection_of(survivors);
    }
    out.swap(survivors);
    return {};
}

Status Evaluation::disjunction(const BoundNode &node, Run &run, Selection selection, SelectionVector &out)
{
    SelectionVector untrue;
    SelectionVector holding;
    Selection rest = selection;
    for (const BoundNodePtr &child : node.children) {
        if (Status status = condition(*child, run, rest, holding); !status.ok())
            return status;
        if (holding.empty())
            continue;
        untrue = difference(rest, holding);
        rest = selection_of(untrue);
        if (untrue.empty())
            break;
    }
    // No child held anywhere where the rest is still the whole.
    out = rest.count == selection.count ? SelectionVector() : difference(selection, untrue);
    return {};
}

Status Evaluation::negation(const BoundNode &node, Run &run, Selection selection, SelectionVector &out)
{
    SelectionVector holding;
    if (Status status = condition(*node.children[0], run, selection, holding); !status.ok())
        return status;
    out = difference(selection, holding);
    return {};
}

Status Evaluation::masked(std::span<const BoundNodePtr> tests, Run &run, std::size_t count,
                          SelectionVector &out)
{
    mask_.assign(count, 1);
    for (const BoundNodePtr &test : tests) {
        if (Status status = narrow(*test, run, count); !status.ok())
            return status;
        // What is asked of no row need not be read.
        if (!std::memchr(mask_.data(), 1, count))
            break;
    }
    take_mask(out);
    return {};
}

void Evaluation::take_mask(SelectionVector &out) const
{
    out.resize(mask_.size());
    out.resize(positions_of_mask(mask_.data(), mask_.size(), out.data()));
}

Status Evaluation::narrow(const BoundNode &test, Run &run, std::size_t count)
{
    ColumnView view;
    if (Status status = column(test.children[0]->column, run, view); !status.ok())
        return status;
    test.mask(view, test.children[1]->constant, count, mask_.data());
    return {};
}

Status Evaluation::test(const BoundNode &node, Run &run, Selection selection, SelectionVector &out)
{
    if (node.mask && !selection.positions) {
        mask_.assign(selection.count, 1);
        if (Status status = narrow(node, run, selection.count); !status.ok())
            return status;
        take_mask(out);
        return {};
    }
    std::vector<Vector> arguments;
    if (Status status = children(node, run, selection, arguments); !status.ok())
        return status;
    out.resize(selection.count);
    out.resize(node.test(node, arguments, selection, out.data()));
    return {};
}

// ---- Values ----------------------------------------------------------------------------------------------

Status Evaluation::evaluate(const BoundNode &node, Run &run, Selection selection, Vector &out)
{
    if (node.kind == Kind::Constant) {
        out = Vector::single(node.constant, pool_);
        return {};
    }
    if (node.kind == Kind::Now) {
        Value now;
        now.type = ValueType::Time;
        now.real = now_;
        out = Vector::single(now, pool_);
        return {};
    }
    if (node.kind == Kind::Field)
        return field(node, run, selection, out);
    if (is_condition(node))
        return condition_values(node, run, selection, out);
    const EntryMemo *memo = nullptr;
    ColumnView view;
    if (Status status = memo_for(node, run, selection, memo, view); !status.ok())
        return status;
    if (!memo)
        return node.kind == Kind::Conditional ? conditional(node, run, selection, out)
                                              : call(node, run, selection, out);
    out = Vector::empty(storage_of(node.type), extent(selection), pool_);
    for_each(selection, [&](std::size_t position) {
        const std::uint32_t code = view.codes[position];
        out.presences()[position] = memo->presences[code];
        if (storage_of(node.type) == Storage::Integer)
            out.integers()[position] = memo->integers[code];
        else if (storage_of(node.type) == Storage::Real)
            out.reals()[position] = memo->reals[code];
        else
            out.texts()[position] = memo->texts[code];
    });
    return {};
}

Status Evaluation::field(const BoundNode &node, Run &run, Selection selection, Vector &out)
{
    ColumnView view;
    if (Status status = column(node.column, run, view); !status.ok())
        return status;
    switch (storage_of(node.type)) {
    case Storage::Integer:
        out = Vector::of_integers(view.integers, view.nulls);
        return {};
    case Storage::Real:
        out = Vector::of_reals(view.reals, view.nulls);
        return {};
    case Storage::Text:
        break;
    }
    out = Vector::empty(Storage::Text, extent(selection), pool_);
    for_each(selection, [&](std::size_t position) {
        out.texts()[position] = view.dictionary->text(view.codes[position]);
        out.presences()[position] = view.nulls ? view.nulls[position] : std::uint8_t{Present};
    });
    return {};
}

Status Evaluation::children(const BoundNode &node, Run &run, Selection selection, std::vector<Vector> &out)
{
    out.resize(node.children.size());
    for (std::size_t i = 0; i < out.size(); ++i)
        if (Status status = evaluate(*node.children[i], run, selection, out[i]); !status.ok())
            return status;
    return {};
}

Status Evaluation::call(const BoundNode &node, Run &run, Selection selection, Vector &out)
{
    std::vector<Vector> arguments;
    if (Status status = children(node, run, selection, arguments); !status.ok())
        return status;
    out = Vector::empty(storage_of(node.type), extent(selection), pool_);
    KernelContext context{run.arena, node};
    node.kernel(context, arguments, selection, out);
    if (run.arena.exhausted())
        return Status(Code::Memory, "the texts that the expression makes need too much memory");
    return {};
}

Status Evaluation::conditional(const BoundNode &node, Run &run, Selection selection, Vector &out)
{
    SelectionVector yes;
    if (Status status = condition(*node.children[0], run, selection, yes); !status.ok())
        return status;
    const SelectionVector no = difference(selection, yes);
    out = Vector::empty(storage_of(node.type), extent(selection), pool_);
    const std::array<Selection, 2> chosen = {selection_of(yes), selection_of(no)};
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        if (chosen[i].count == 0)
            continue;
        Vector branch;
        if (Status status = evaluate(*node.children[i + 1], run, chosen[i], branch); !status.ok())
            return status;
        copy_positions(branch, storage_of(node.type), chosen[i], out);
    }
    return {};
}

Status Evaluation::condition_values(const BoundNode &node, Run &run, Selection selection, Vector &out)
{
    SelectionVector holding;
    if (Status status = condition(node, run, selection, holding); !status.ok())
        return status;
    out = Vector::empty(Storage::Integer, extent(selection), pool_);
    for_each(selection, [&](std::size_t position) {
        out.integers()[position] = 0;
        out.presences()[position] = Present;
    });
    for (const std::uint32_t position : holding)
        out.integers()[position] = 1;
    return {};
}

} // namespace orvane::expr
