// Join, outer join, no-join and theta join: rows of two tables.
#include "operation/derive.h"

#include "base/concat.h"
#include "join/key_inference.h"
#include "operation/join_terms.h"
#include "operation/match.h"
#include "operation/row_batch.h"
#include "operation/theta.h"

#include <algorithm>
#include <iterator>

namespace orvane {

namespace {

Status no_keys(const Table &left, const Table &right)
{
    return Status(Code::NotFound,
                  concat("there are no keys by which ", left.name(), " joins ", right.name(), "; name some"));
}

// The keys to be used: those given, or inferred ones.
Result<JoinKeyLists> keys_to_use(const Database &database, const Table &left, const Table &right,
                                 JoinKeyLists keys)
{
    if (keys.left.empty() && keys.right.empty()) {
        JoinKeys inferred = infer_join_keys(database.schema(), left.members(), right.members());
        if (inferred.empty() && keys.both.empty())
            return no_keys(left, right);
        keys.left = std::move(inferred.left);
        keys.right = std::move(inferred.right);
    } else if (keys.left.empty()) {
        keys.left = keys.right;
    } else if (keys.right.empty()) {
        keys.right = keys.left;
    }
    keys.left.insert(keys.left.end(), keys.both.begin(), keys.both.end());
    keys.right.insert(keys.right.end(), keys.both.begin(), keys.both.end());
    return keys;
}

// "arid orid", or "time=time::endtime" where the sides differ.
std::string joined_keys(const JoinKeyLists &keys)
{
    std::string text;
    for (std::size_t i = 0; i < keys.left.size(); ++i) {
        text.append(" ").append(keys.left[i]);
        if (keys.left[i] != keys.right[i])
            text.append("=").append(keys.right[i]);
    }
    return text;
}

// A table can be a member of a view once, as its fields are named by its name.
Status check_members(const Table &left, const Table &right)
{
    for (const Relation *relation : left.members())
        if (std::find(right.members().begin(), right.members().end(), relation) != right.members().end())
            return Status(Code::Argument, concat("table ", relation->name, " is in both ", left.name(),
                                                 " and ", right.name(), "; a view can have it only once"));
    return Status();
}

// Loads what the terms need and gives them their values.
Result<MatchTerms> match_terms(Operand &left, Operand &right, const JoinTerms &terms, Work &work)
{
    std::vector<int> of_left, of_right;
    for (const EqualTerm &term : terms.equal) {
        of_left.push_back(term.left);
        of_right.push_back(term.right);
    }
    for (const RangeTerm &term : terms.ranges) {
        of_left.insert(of_left.end(), {term.left.begin, term.left.end});
        of_right.insert(of_right.end(), {term.right.begin, term.right.end});
    }
    if (Status loaded = left.load(of_left, work); !loaded.ok())
        return loaded;
    if (Status loaded = right.load(of_right, work); !loaded.ok())
        return loaded;
    MatchTerms match;
    for (const EqualTerm &term : terms.equal) {
        EqualValues equal;
        equal.left.column = left.column(term.left);
        equal.right.column = right.column(term.right);
        match.equal.push_back(std::move(equal));
    }
    for (const RangeTerm &term : terms.ranges) {
        const auto intervals = [&](const Operand &operand, const RangeSide &side, IntervalScale scale) {
            return range_intervals(operand.column(side.begin), operand.column(side.end), side.is_point(),
                                   scale);
        };
        const IntervalScale scale = interval_scale(left.column(term.left.begin).column->type,
                                                   right.column(term.right.begin).column->type);
        match.intervals.push_back(
            MeetingIntervals{intervals(left, term.left, scale), intervals(right, term.right, scale)});
    }
    return match;
}

struct Sides {
    Operand left;
    Operand right;
};

Result<Sides> sides_of(Derivation &derivation, const std::shared_ptr<Table> &left,
                       const std::shared_ptr<Table> &right)
{
    auto left_operand = derivation.operand(left);
    if (!left_operand.ok())
        return left_operand.status();
    auto right_operand = derivation.operand(right);
    if (!right_operand.ok())
        return right_operand.status();
    return Sides{std::move(*left_operand), std::move(*right_operand)};
}

// What a join by keys works on.
struct KeyedSides {
    JoinKeyLists keys;
    Sides sides;
    MatchTerms match;
};

Result<KeyedSides> keyed_sides(Derivation &derivation, const std::shared_ptr<Table> &left,
                               const std::shared_ptr<Table> &right, const JoinKeyLists &given)
{
    auto keys = keys_to_use(derivation.database(), *left, *right, given);
    if (!keys.ok())
        return keys.status();
    const auto terms = join_terms(*left, *right, keys->left, keys->right);
    if (!terms.ok())
        return terms.status();
    auto sides = sides_of(derivation, left, right);
    if (!sides.ok())
        return sides.status();
    auto match = match_terms(sides->left, sides->right, *terms, derivation.work());
    if (!match.ok())
        return match.status();
    return KeyedSides{std::move(*keys), std::move(*sides), std::move(*match)};
}

Result<std::shared_ptr<Table>> view_of_pairs(Derivation &derivation, const Sides &sides, MatchedPairs pairs,
                                             std::string_view operation, std::string_view creation_line)
{
    auto members = sides.left.choose(std::move(pairs.left), derivation.work());
    if (!members.ok())
        return members.status();
    auto of_right = sides.right.choose(std::move(pairs.right), derivation.work());
    if (!of_right.ok())
        return of_right.status();
    std::move(of_right->begin(), of_right->end(), std::back_inserter(*members));
    const Table &left = sides.left.table();
    const Table &right = sides.right.table();
    return std::shared_ptr<Table>(std::make_shared<View>(derivation.name_for(left, &right, operation),
                                                         std::move(*members),
                                                         creation_after(left, &right, creation_line)));
}

} // namespace

Result<std::int64_t> derive_join(Derivation &derivation, const std::shared_ptr<Table> &left,
                                 const std::shared_ptr<Table> &right, const JoinKeyLists &given, bool outer)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        if (Status once = check_members(*left, *right); !once.ok())
            return once;
        auto keyed = keyed_sides(derivation, left, right, given);
        if (!keyed.ok())
            return keyed.status();
        auto &[keys, sides, match] = *keyed;
        auto pairs = matched_pairs(sides.left, sides.right, match,
                                   outer ? Unmatched::BesideNull : Unmatched::LeftOut, derivation.work());
        if (!pairs.ok())
            return pairs.status();
        return view_of_pairs(derivation, sides, std::move(*pairs), outer ? "outer" : "join",
                             concat("dbjoin", outer ? " -outer" : "", joined_keys(keys)));
    });
}

Result<std::int64_t> derive_nojoin(Derivation &derivation, const std::shared_ptr<Table> &left,
                                   const std::shared_ptr<Table> &right, const JoinKeyLists &given)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        auto keyed = keyed_sides(derivation, left, right, given);
        if (!keyed.ok())
            return keyed.status();
        auto &[keys, sides, match] = *keyed;
        auto rows = unmatched_rows(sides.left, sides.right, match, derivation.work());
        if (!rows.ok())
            return rows.status();
        auto members = sides.left.choose(std::move(*rows), derivation.work());
        if (!members.ok())
            return members.status();
        return std::shared_ptr<Table>(std::make_shared<View>(
            derivation.name_for(*left, right.get(), "nojoin"), std::move(*members),
            creation_after(*left, right.get(), concat("dbnojoin", joined_keys(keys)))));
    });
}

Result<std::int64_t> derive_theta(Derivation &derivation, const std::shared_ptr<Table> &left,
                                  const std::shared_ptr<Table> &right, std::string_view expression)
{
    return derivation.run([&]() -> Result<std::shared_ptr<Table>> {
        if (Status once = check_members(*left, *right); !once.ok())
            return once;
        const auto parsed = expr::ParsedExpression::parse(expression);
        if (!parsed.ok())
            return parsed.status();
        const auto condition = expr::BoundExpression::bind_condition(*parsed, TwoTableScope(*left, *right));
        if (!condition.ok())
            return condition.status();
        auto sides = sides_of(derivation, left, right);
        if (!sides.ok())
            return sides.status();
        const auto terms = theta_terms(sides->left, sides->right, *condition, derivation.work());
        if (!terms.ok())
            return terms.status();
        auto pairs = matched_pairs(sides->left, sides->right, *terms, Unmatched::LeftOut, derivation.work());
        if (!pairs.ok())
            return pairs.status();
        return view_of_pairs(derivation, *sides, std::move(*pairs), "theta", concat("dbtheta ", expression));
    });
}

} // namespace orvane
