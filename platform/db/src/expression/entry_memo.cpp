// What depends on one text column alone is worked out once per entry of the column's dictionary: the entries
// that a batch needs for the first time are made a batch of their own.
#include <algorithm>
#include <numeric>

#include "expression/comparison_masks.h"
#include "expression/evaluation.h"

namespace orvane::expr {

namespace {

// So many are worked out at once, before it is known which of them the rows have.
constexpr std::size_t most_at_once = 4096;
// Beyond these the rows are worked out one by one.
constexpr std::size_t max_entries = std::size_t{1} << 20;
constexpr std::size_t max_memo_bytes = std::size_t{64} << 20;

// Rows that hold the given entries of a dictionary in one column.
class EntryBatch : public ColumnBatch
{
public:
    EntryBatch(const std::vector<std::uint32_t> &codes, const std::vector<std::uint8_t> &nulls,
               const TextDictionary &dictionary)
        : codes_(codes), nulls_(nulls), dictionary_(dictionary)
    {
    }

    std::size_t size() const override { return codes_.size(); }
    Result<ColumnView> column(std::size_t) override
    {
        ColumnView view;
        view.codes = codes_.data();
        view.dictionary = &dictionary_;
        view.nulls = nulls_.data();
        return view;
    }

private:
    const std::vector<std::uint32_t> &codes_;
    const std::vector<std::uint8_t> &nulls_;
    const TextDictionary &dictionary_;
};

std::size_t bytes_per_entry(const BoundNode &node)
{
    if (is_condition(node))
        return 2;
    return 2 + (storage_of(node.type) == Storage::Text ? sizeof(std::string_view) + 16 : sizeof(double));
}

} // namespace

Status Evaluation::memo_for(const BoundNode &node, Run &run, Selection selection, const EntryMemo *&memo,
                            ColumnView &view)
{
    memo = nullptr;
    if (run.of_entries || node.dependence != BoundNode::Dependence::OneText)
        return {};
    if (Status status = column(node.column, run, view); !status.ok())
        return status;
    EntryMemo *const kept = memo_of_size(node, *view.dictionary);
    if (!kept)
        return {};
    Status status = learn(node, *kept, view, selection);
    if (status.ok())
        memo = kept;
    else
        kept->known.assign(kept->known.size(), 0);
    return status;
}

EntryMemo *Evaluation::memo_of_size(const BoundNode &node, const TextDictionary &dictionary)
{
    const std::size_t size = dictionary.size();
    const auto found = memos_.find(&node);
    EntryMemo *memo = found == memos_.end() ? nullptr : found->second.get();
    const std::size_t had = memo ? memo->known.size() : 0;
    const bool same = memo && memo->identity == dictionary.identity();
    if (same && had >= size)
        return memo;
    const std::size_t more = (size > had ? size - had : 0) * bytes_per_entry(node);
    if (size > max_entries || memo_bytes_ + more > max_memo_bytes)
        return nullptr;
    memo_bytes_ += more;
    if (!memo)
        memo = memos_.emplace(&node, std::make_unique<EntryMemo>()).first->second.get();
    memo->complete = false;
    if (!same) {
        memo->known.assign(memo->known.size(), 0);
        memo->arena.clear();
        memo->identity = dictionary.identity();
    }
    const auto fit = [&](auto &values) { values.resize(std::max(values.size(), size)); };
    fit(memo->known);
    if (is_condition(node)) {
        fit(memo->holds);
        return memo;
    }
    fit(memo->presences);
    switch (storage_of(node.type)) {
    case Storage::Integer:
        fit(memo->integers);
        break;
    case Storage::Real:
        fit(memo->reals);
        break;
    case Storage::Text:
        fit(memo->texts);
        break;
    }
    return memo;
}

Status Evaluation::learn(const BoundNode &node, EntryMemo &memo, const ColumnView &view, Selection selection)
{
    if (!view.nulls && learn_all(node, memo, *view.dictionary))
        return {};
    if (memo.complete) { // without the nulls that there are now
        memo.complete = false;
        memo.known.assign(memo.known.size(), 0);
    }
    std::vector<std::uint32_t> codes;
    std::vector<std::uint8_t> nulls;
    for_each(selection, [&](std::size_t position) {
        const std::uint32_t code = view.codes[position];
        if (memo.known[code])
            return;
        memo.known[code] = 1;
        codes.push_back(code);
        nulls.push_back(view.nulls ? view.nulls[position] : std::uint8_t{Present});
    });
    if (codes.empty())
        return {};
    EntryBatch entries(codes, nulls, *view.dictionary);
    return learn_entries(node, memo, entries, codes);
}

// False where the entries are too many, or one of them can't be worked out, which perhaps no row asks for.
bool Evaluation::learn_all(const BoundNode &node, EntryMemo &memo, const TextDictionary &dictionary)
{
    if (memo.complete || dictionary.size() > most_at_once)
        return memo.complete;
    std::vector<std::uint32_t> codes(dictionary.size());
    std::iota(codes.begin(), codes.end(), 0u);
    const std::vector<std::uint8_t> nulls(codes.size(), Present);
    EntryBatch entries(codes, nulls, dictionary);
    if (!learn_entries(node, memo, entries, codes).ok())
        return false;
    std::fill(memo.known.begin(), memo.known.end(), std::uint8_t{1});
    return memo.complete = true;
}

void Evaluation::take_known(const EntryMemo &memo, const ColumnView &view, Selection selection,
                            SelectionVector &out)
{
    if (!selection.positions) {
        mask_.resize(selection.count);
        mask_of_codes(view.codes, selection.count, memo.holds, memo.complete, mask_.data());
        take_mask(out);
        return;
    }
    out.resize(selection.count);
    std::size_t count = 0;
    for_each(selection, [&](std::size_t position) {
        out[count] = static_cast<std::uint32_t>(position);
        count += memo.holds[view.codes[position]];
    });
    out.resize(count);
}

Status Evaluation::learn_entries(const BoundNode &node, EntryMemo &memo, ColumnBatch &entries,
                                 const std::vector<std::uint32_t> &codes)
{
    entry_arena_.clear();
    Run run{entries, entry_arena_, true};
    const Selection all = first_positions(codes.size());
    if (is_condition(node)) {
        SelectionVector holding;
        if (Status status = condition(node, run, all, holding); !status.ok())
            return status;
        for (const std::uint32_t code : codes)
            memo.holds[code] = 0;
        for (const std::uint32_t position : holding)
            memo.holds[codes[position]] = 1;
        return {};
    }
    Vector vector;
    if (Status status = evaluate(node, run, all, vector); !status.ok())
        return status;
    const auto keep = [&](const auto &reader, auto &values) {
        for (std::size_t i = 0; i < codes.size(); ++i) {
            values[codes[i]] = reader[i];
            memo.presences[codes[i]] = reader.presence(i);
        }
    };
    switch (storage_of(node.type)) {
    case Storage::Integer:
        keep(Reader<std::int64_t>(vector), memo.integers);
        break;
    case Storage::Real:
        keep(Reader<double>(vector), memo.reals);
        break;
    case Storage::Text:
        keep(Reader<std::string_view>(vector), memo.texts);
        for (const std::uint32_t code : codes)
            memo.texts[code] = memo.arena.copy(memo.texts[code]);
        break;
    }
    if (memo.arena.exhausted())
        return Status(Code::Memory, "the texts that the expression makes need too much memory");
    return {};
}

} // namespace orvane::expr
