// Works bound nodes out over batches: the inside of the executor, also used to fold constants.
#pragma once

#include <memory>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "expression/bound_expression.h"
#include "expression/column_batch.h"

namespace orvane::expr {

// What a node that depends on one text column alone gave for the entries of the column's dictionary.
struct EntryMemo {
    std::uint64_t identity = 0;
    std::vector<std::uint8_t> known; // per code: whether it has been worked out
    std::vector<std::uint8_t> holds; // of conditions; the others leave it empty and have values
    bool complete = false;           // all entries are known, as texts that are no nulls
    std::vector<std::int64_t> integers;
    std::vector<double> reals;
    std::vector<std::string_view> texts;
    std::vector<std::uint8_t> presences;
    TextArena arena; // of texts
};

class Evaluation
{
public:
    explicit Evaluation(double now);

    // The positions at which the condition is true.
    Status select(const BoundNode &node, ColumnBatch &batch, Selection selection, SelectionVector &out);
    // The values at the positions, appended.
    Status values(const BoundNode &node, ColumnBatch &batch, Selection selection, std::vector<Value> &out);

private:
    // One batch, or entries of a dictionary that stand for one.
    struct Run {
        ColumnBatch &batch;
        TextArena &arena;
        bool of_entries = false;
        std::vector<std::pair<std::size_t, ColumnView>> columns = {};
    };

    Status condition(const BoundNode &node, Run &run, Selection selection, SelectionVector &out);
    Status conjunction(const BoundNode &node, Run &run, Selection selection, SelectionVector &out);
    Status disjunction(const BoundNode &node, Run &run, Selection selection, SelectionVector &out);
    Status negation(const BoundNode &node, Run &run, Selection selection, SelectionVector &out);
    Status test(const BoundNode &node, Run &run, Selection selection, SelectionVector &out);
    // Tests that are known as masks, one after the other, over the first `count` positions.
    Status masked(std::span<const BoundNodePtr> tests, Run &run, std::size_t count, SelectionVector &out);
    Status narrow(const BoundNode &test, Run &run, std::size_t count);
    void take_mask(SelectionVector &out) const;
    // The positions whose entries the memo says the condition holds of.
    void take_known(const EntryMemo &memo, const ColumnView &view, Selection selection, SelectionVector &out);

    Status evaluate(const BoundNode &node, Run &run, Selection selection, Vector &out);
    Status field(const BoundNode &node, Run &run, Selection selection, Vector &out);
    Status call(const BoundNode &node, Run &run, Selection selection, Vector &out);
    Status conditional(const BoundNode &node, Run &run, Selection selection, Vector &out);
    Status condition_values(const BoundNode &node, Run &run, Selection selection, Vector &out);
    Status children(const BoundNode &node, Run &run, Selection selection, std::vector<Vector> &out);

    // The memo of a node in this run with the selected entries worked out; null where it has none.
    Status memo_for(const BoundNode &node, Run &run, Selection selection, const EntryMemo *&memo,
                    ColumnView &view);
    EntryMemo *memo_of_size(const BoundNode &node, const TextDictionary &dictionary);
    Status learn(const BoundNode &node, EntryMemo &memo, const ColumnView &view, Selection selection);
    bool learn_all(const BoundNode &node, EntryMemo &memo, const TextDictionary &dictionary);
    Status learn_entries(const BoundNode &node, EntryMemo &memo, ColumnBatch &entries,
                         const std::vector<std::uint32_t> &codes);

    Status column(std::size_t index, Run &run, ColumnView &view);

    double now_;
    std::vector<std::uint8_t> mask_;
    BufferPool pool_;
    TextArena arena_;
    TextArena entry_arena_;
    std::size_t memo_bytes_ = 0;
    std::unordered_map<const BoundNode *, std::unique_ptr<EntryMemo>> memos_;
};

// Whether the node is a condition, which select() takes.
bool is_condition(const BoundNode &node);

} // namespace orvane::expr
