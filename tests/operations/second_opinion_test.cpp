// Every operation on generated tables, compared with what SQLite makes of the same rows.
//
// $ORVANE_OPERATION_CASES sets the number of cases of each operation, or $ORVANE_OPERATION_SECONDS for how
// long each is tried; $ORVANE_OPERATION_SEED sets another beginning.
#include "operations/creation_replay.h"
#include "operations/generated_expression.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace {

long setting(const char *name, long otherwise)
{
    const char *text = std::getenv(name);
    return text ? std::atol(text) : otherwise;
}

// How long an operation is tried.
class Patience
{
public:
    // After so many cases.
    bool lasts(long done) const
    {
        return seconds_ > 0 ? std::chrono::steady_clock::now() - begin_ < std::chrono::seconds(seconds_)
                            : done < cases_;
    }

private:
    const long cases_ = setting("ORVANE_OPERATION_CASES", 20000);
    const long seconds_ = setting("ORVANE_OPERATION_SECONDS", 0);
    const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

std::mt19937_64 beginning(size_t of)
{
    return std::mt19937_64(static_cast<unsigned long>(setting("ORVANE_OPERATION_SEED", 3)) * 1000 + of);
}

using Rows = std::vector<std::vector<int>>;

// What an operation did, and what it should have done.
struct Outcome {
    Dbptr made;
    std::vector<int> members;
    Rows expected;
    std::string what; // for messages
};

// Rows of sides by their positions; a position below 0 is the null records.
void append(std::vector<int> &row, const Side &side, int position)
{
    for (size_t m = 0; m < side.members.size(); ++m)
        row.push_back(position < 0 ? -1 : side.rows[static_cast<size_t>(position)][m]);
}

Rows rowsAt(const Side &side, const Rows &positions)
{
    Rows rows;
    for (const auto &position : positions)
        append(rows.emplace_back(), side, position[0]);
    return rows;
}

Rows rowsAt(const Side &left, const Side &right, const Rows &positions)
{
    Rows rows;
    for (const auto &position : positions) {
        append(rows.emplace_back(), left, position[0]);
        append(rows.back(), right, position[1]);
    }
    return rows;
}

struct FieldOf {
    std::string ours;
    std::string sql; // without the side's name
    Kind kind;
};

std::string bareName(const FieldOf &field)
{
    return field.ours.substr(field.ours.find('.') + 1);
}

std::vector<FieldOf> fieldsOf(const GeneratedWorld &world, const Side &side)
{
    std::vector<FieldOf> fields;
    for (const int member : side.members) {
        const GeneratedTable &table = world.tables()[static_cast<size_t>(member)];
        for (const GeneratedField &field : table.fields)
            fields.push_back({table.name + "." + field.name, table.name + "_" + field.name, field.kind});
    }
    return fields;
}

// ---- Operations on one side ----------------------------------------------------------------------

Outcome subset(std::mt19937_64 &random, GeneratedWorld &world)
{
    const Side &side = world.anySide(random, 60);
    const GeneratedCondition condition = anyCondition(random, world, side, nullptr);
    const std::string sql =
        "SELECT pos FROM " + world.select(side, 0) + " l WHERE " + condition.sql + " ORDER BY pos";
    return {dbsubset(side.pointer, condition.ours.c_str(), nullptr), side.members,
            rowsAt(side, world.query(sql)), condition.ours + "\n" + sql};
}

struct SortFields {
    std::vector<std::string> ours;
    std::string ascending;
    std::string descending;
    std::string plain;
};

SortFields anySortFields(std::mt19937_64 &random, const GeneratedWorld &world, const Side &side)
{
    const auto fields = fieldsOf(world, side);
    SortFields chosen;
    for (int count = 1 + below(random, 3); count > 0; --count) {
        const FieldOf &field = fields[static_cast<size_t>(below(random, fields.size()))];
        const std::string comma = chosen.ours.empty() ? "" : ", ";
        chosen.ours.push_back(field.ours);
        chosen.ascending += comma + field.sql;
        chosen.descending += comma + field.sql + " DESC";
        chosen.plain += comma + field.sql;
    }
    return chosen;
}

Outcome sort(std::mt19937_64 &random, GeneratedWorld &world)
{
    const Side &side = world.anySide(random, 60);
    const SortFields fields = anySortFields(random, world, side);
    const bool reverse = below(random, 3) == 0;
    const bool unique = below(random, 3) == 0;
    const std::string order = reverse ? fields.descending : fields.ascending;
    const std::string from = " FROM " + world.select(side, 0);
    const std::string sql =
        unique ? "SELECT MIN(pos) AS first" + from + " GROUP BY " + fields.plain + " ORDER BY " + order
               : "SELECT pos" + from + " ORDER BY " + order + ", pos";
    const int flags = (reverse ? dbSORT_REVERSE : 0) + (unique ? dbSORT_UNIQUE : 0);
    return {dbsort(side.pointer, Names(fields.ours), flags, nullptr), side.members,
            rowsAt(side, world.query(sql)), sql};
}

// Grouped and ungrouped again; the bundles are looked at in between.
Outcome group(std::mt19937_64 &random, GeneratedWorld &world)
{
    const Side &side = world.anySide(random, 60);
    const SortFields fields = anySortFields(random, world, side);
    const std::string sql = "SELECT pos, DENSE_RANK() OVER (ORDER BY " + fields.plain + ") FROM " +
                            world.select(side, 0) + " ORDER BY " + fields.ascending + ", pos";
    const Rows expected = world.query(sql);
    const Dbptr groups = dbgroup(side.pointer, Names(fields.ours), nullptr, 1);
    std::vector<std::string> bundles;
    for (size_t i = 0; i < expected.size(); ++i)
        if (i + 1 == expected.size() || expected[i][1] != expected[i + 1][1]) {
            const size_t before =
                bundles.empty() ? 0 : std::stoul(bundles.back().substr(bundles.back().find('-') + 1));
            bundles.push_back(std::to_string(before) + "-" + std::to_string(i + 1));
        }
    EXPECT_EQ(integer(groups, dbRECORD_COUNT), static_cast<int64_t>(bundles.size())) << sql << take_log();
    for (size_t i = 0; i < bundles.size(); ++i)
        EXPECT_EQ(bundle(groups, static_cast<int64_t>(i)), bundles[i]) << sql;
    const Outcome outcome{dbungroup(groups, nullptr), side.members, rowsAt(side, expected), sql};
    EXPECT_EQ(dbfree(groups), 0);
    return outcome;
}

Outcome sever(std::mt19937_64 &random, GeneratedWorld &world)
{
    const Side *side = &world.anySide(random, 60);
    for (int attempt = 0; attempt < 10 && side->members.size() < 2; ++attempt)
        side = &world.anySide(random, 60);
    if (side->members.size() < 2) {
        // Nothing would be left.
        const std::string name = world.tables()[static_cast<size_t>(side->members[0])].name;
        EXPECT_LT(dbsever(side->pointer, name.c_str(), nullptr).table, 0);
        EXPECT_NE(take_log(), "");
        return {dbsort(side->pointer, Names(std::vector<std::string>{fieldsOf(world, *side)[0].ours}), 0,
                       nullptr),
                side->members,
                rowsAt(*side, world.query("SELECT pos FROM " + world.select(*side, 0) + " ORDER BY " +
                                          fieldsOf(world, *side)[0].sql + ", pos")),
                "sever of the only member"};
    }
    const auto dropped = static_cast<size_t>(below(random, side->members.size()));
    std::vector<int> members;
    std::string left;
    for (size_t m = 0; m < side->members.size(); ++m) {
        if (m == dropped)
            continue;
        members.push_back(side->members[m]);
        left += (left.empty() ? "m" : ", m") + std::to_string(m);
    }
    world.select(*side, 0); // fills in0
    const std::string sql = "SELECT " + left + " FROM in0 GROUP BY " + left + " ORDER BY MIN(pos)";
    const std::string name = world.tables()[static_cast<size_t>(side->members[dropped])].name;
    return {dbsever(side->pointer, name.c_str(), nullptr), members, world.query(sql),
            "sever " + name + "\n" + sql};
}

Outcome separate(std::mt19937_64 &random, GeneratedWorld &world)
{
    const Side &side = world.anySide(random, 60);
    const auto kept = static_cast<size_t>(below(random, side.members.size()));
    const GeneratedTable &table = world.tables()[static_cast<size_t>(side.members[kept])];
    const std::string number = table.name + "_" + table.fields[0].name;
    const std::string sql = "SELECT DISTINCT " + number + " FROM " + world.select(side, 0) + " WHERE " +
                            number + " >= 0 ORDER BY 1";
    return {dbseparate(side.pointer, table.name.c_str()), {side.members[kept]}, world.query(sql), sql};
}

// ---- Joins ---------------------------------------------------------------------------------------

// Two sides without a common member.
std::pair<const Side *, const Side *> twoSides(std::mt19937_64 &random, GeneratedWorld &world)
{
    for (;;) {
        const Side *left = &world.anySide(random, 40);
        const Side *right = &world.anySide(random, 40);
        bool common = false;
        for (const int member : left->members)
            common |= std::find(right->members.begin(), right->members.end(), member) != right->members.end();
        if (!common && left->members.size() + right->members.size() <= 4)
            return {left, right};
    }
}

std::vector<int> joinedMembers(const Side &left, const Side &right)
{
    std::vector<int> members = left.members;
    members.insert(members.end(), right.members.begin(), right.members.end());
    return members;
}

// The keys as they are given, or none where they are to be inferred.
struct Keys {
    std::vector<std::string> left;
    std::vector<std::string> right; // none: named as on the left
    std::vector<std::string> both;
    std::string sql;

    static Tbl *list(const Names &names, const std::vector<std::string> &texts)
    {
        return texts.empty() ? nullptr : static_cast<Tbl *>(names);
    }
    Dbptr join(const Side &a, const Side &b, bool outer) const
    {
        const Names of_left(left), of_right(right), of_both(both);
        return dbjoin(a.pointer, b.pointer, list(of_left, left), list(of_right, right), outer,
                      list(of_both, both), nullptr);
    }
    Dbptr nojoin(const Side &a, const Side &b) const
    {
        const Names of_left(left), of_right(right);
        return dbnojoin(a.pointer, b.pointer, list(of_left, left), list(of_right, right), nullptr);
    }
};

bool isNumber(Kind kind)
{
    return kind == Kind::Integer || kind == Kind::Boolean || kind == Kind::Real;
}

std::string nullIf(const std::string &sql, Kind kind)
{
    const std::string null = nullTextOf(kind);
    return "NULLIF(" + sql + "," + (kind == Kind::Text ? "'" + null + "'" : null) + ")";
}

// A range, or a single value, with its lowest and highest value on the scale of seconds (days are whole) or
// as they are. The highest of a day lies before `below`, of other values it is `high` itself.
struct Ends {
    std::string low;
    std::string high;
    std::string beyond; // not included; empty where `high` is
};

Ends endsOf(const std::string &begin, const std::string &end, Kind kind, bool seconds)
{
    if (kind == Kind::Yearday && seconds)
        return {begin + "_b", "", end + "_e"};
    return {nullIf(begin, kind), nullIf(end, kind), ""};
}

// Whether the range that begins at `low` ends not before what begins at `from`; open ends are NULL.
std::string reaches(const Ends &ends, const std::string &from)
{
    return "COALESCE(" + (ends.beyond.empty() ? from + " <= " + ends.high : from + " < " + ends.beyond) +
           ",1)";
}

std::string notEmpty(const Ends &ends)
{
    return reaches(ends, ends.low);
}

// A pair of keys that the sides can be joined on, or nothing.
bool addKeys(std::mt19937_64 &random, const std::vector<FieldOf> &left, const std::vector<FieldOf> &right,
             Keys &keys)
{
    const FieldOf &a = left[static_cast<size_t>(below(random, left.size()))];
    const FieldOf &b = right[static_cast<size_t>(below(random, right.size()))];
    const bool days = (a.kind == Kind::Time && b.kind == Kind::Yearday) ||
                      (a.kind == Kind::Yearday && b.kind == Kind::Time);
    if (!(a.kind == b.kind || (isNumber(a.kind) && isNumber(b.kind)) || days))
        return false;
    // A range on either side ends with another field of the same kind.
    const auto endOf = [&](const FieldOf &begin, const std::vector<FieldOf> &fields) -> const FieldOf * {
        if (begin.kind == Kind::Text || begin.kind == Kind::Boolean || below(random, 3) > 0)
            return nullptr;
        const std::string table = begin.ours.substr(0, begin.ours.find('.'));
        for (size_t attempt = 0; attempt < 8; ++attempt) {
            const FieldOf &end = fields[static_cast<size_t>(below(random, fields.size()))];
            if (end.kind == begin.kind && end.ours != begin.ours && end.ours.starts_with(table + "."))
                return &end;
        }
        return nullptr;
    };
    const FieldOf *leftEnd = endOf(a, left);
    const FieldOf *rightEnd = endOf(b, right);
    const std::string l = "l." + a.sql;
    const std::string r = "r." + b.sql;
    std::string sql;
    if (!leftEnd && !rightEnd) {
        if (days)
            sql = a.kind == Kind::Time
                      ? "COALESCE(" + nullIf(l, a.kind) + " >= " + r + "_b AND " + l + " < " + r + "_e,0)"
                      : "COALESCE(" + nullIf(r, b.kind) + " >= " + l + "_b AND " + r + " < " + l + "_e,0)";
        else
            sql = "COALESCE(" + nullIf(l, a.kind) + " = " + nullIf(r, b.kind) + ",0)";
    } else {
        const Ends ofLeft = endsOf(l, leftEnd ? "l." + leftEnd->sql : l, a.kind, a.kind != b.kind);
        const Ends ofRight = endsOf(r, rightEnd ? "r." + rightEnd->sql : r, b.kind, a.kind != b.kind);
        sql = "(" + reaches(ofLeft, ofRight.low) + " AND " + reaches(ofRight, ofLeft.low) + " AND " +
              notEmpty(ofLeft) + " AND " + notEmpty(ofRight);
        if (!leftEnd)
            sql += " AND " + nullIf(l, a.kind) + " IS NOT NULL";
        if (!rightEnd)
            sql += " AND " + nullIf(r, b.kind) + " IS NOT NULL";
        sql += ")";
    }
    keys.left.push_back(a.ours + (leftEnd ? "::" + bareName(*leftEnd) : ""));
    keys.right.push_back(b.ours + (rightEnd ? "::" + bareName(*rightEnd) : ""));
    keys.sql += (keys.sql.empty() ? "" : " AND ") + sql;
    return true;
}

// Bare names mean the first member that has them, so that both sides have a field of each.
std::vector<std::pair<FieldOf, FieldOf>> commonFields(const std::vector<FieldOf> &left,
                                                      const std::vector<FieldOf> &right)
{
    std::vector<std::pair<FieldOf, FieldOf>> common;
    for (const FieldOf &a : left) {
        const auto sameName = [&](const FieldOf &b) { return bareName(a) == bareName(b); };
        const auto b = std::find_if(right.begin(), right.end(), sameName);
        const bool first = std::none_of(common.begin(), common.end(), [&](const auto &pair) {
            return bareName(pair.first) == bareName(a);
        });
        if (b != right.end() && first)
            common.emplace_back(a, *b);
    }
    return common;
}

std::string equalFields(const std::pair<FieldOf, FieldOf> &pair)
{
    return "COALESCE(" + nullIf("l." + pair.first.sql, pair.first.kind) + " = " +
           nullIf("r." + pair.second.sql, pair.second.kind) + ",0)";
}

// Fields of one name on both sides: all of them, inferred, or some of them, named once.
Keys commonKeys(std::mt19937_64 &random, const std::vector<FieldOf> &left, const std::vector<FieldOf> &right)
{
    auto common = commonFields(left, right);
    Keys keys;
    if (common.empty())
        return keys;
    const int form = below(random, 4); // by one list, by the list for both sides, or not at all
    if (form > 0) {
        std::shuffle(common.begin(), common.end(), random);
        common.resize(1 + static_cast<size_t>(below(random, std::min<size_t>(common.size(), 2))));
    }
    for (const auto &pair : common) {
        if (form == 1)
            keys.left.push_back(bareName(pair.first));
        else if (form == 2)
            keys.right.push_back(bareName(pair.first));
        else if (form == 3)
            keys.both.push_back(bareName(pair.first));
        keys.sql += (keys.sql.empty() ? "" : " AND ") + equalFields(pair);
    }
    if (form == 3) { // beside one that is given
        const auto &pair = common.front();
        keys.left.push_back(bareName(pair.first));
        keys.right.push_back(bareName(pair.second));
    }
    return keys;
}

Keys anyKeys(std::mt19937_64 &random, const GeneratedWorld &world, const Side &left, const Side &right)
{
    const auto ofLeft = fieldsOf(world, left);
    const auto ofRight = fieldsOf(world, right);
    if (below(random, 4) == 0)
        if (Keys keys = commonKeys(random, ofLeft, ofRight); !keys.sql.empty())
            return keys;
    Keys keys;
    const size_t wanted = 1 + static_cast<size_t>(below(random, 3) == 0 ? 1 + below(random, 2) : 0);
    while (keys.left.size() < wanted)
        addKeys(random, ofLeft, ofRight, keys);
    return keys;
}

std::string described(const Keys &keys, const std::string &sql)
{
    std::string text;
    for (const auto *list : {&keys.left, &keys.right, &keys.both}) {
        for (const std::string &key : *list)
            text += key + " ";
        text += "/ ";
    }
    return text + "\n" + sql;
}

Outcome joinOf(std::mt19937_64 &random, GeneratedWorld &world, bool outer)
{
    const auto [left, right] = twoSides(random, world);
    const Keys keys = anyKeys(random, world, *left, *right);
    const std::string sql = "SELECT l.pos, r.pos FROM " + world.select(*left, 0) + " l " +
                            (outer ? "LEFT " : "") + "JOIN " + world.select(*right, 1) + " r ON " + keys.sql +
                            " ORDER BY l.pos, r.pos";
    return {keys.join(*left, *right, outer), joinedMembers(*left, *right),
            rowsAt(*left, *right, world.query(sql)), described(keys, sql)};
}

Outcome join(std::mt19937_64 &random, GeneratedWorld &world)
{
    return joinOf(random, world, false);
}

Outcome outer(std::mt19937_64 &random, GeneratedWorld &world)
{
    return joinOf(random, world, true);
}

Outcome nojoin(std::mt19937_64 &random, GeneratedWorld &world)
{
    const auto [left, right] = twoSides(random, world);
    Keys keys = anyKeys(random, world, *left, *right);
    if (!keys.both.empty()) // a list that no-joins don't have
        keys.left = keys.right = keys.both;
    const std::string sql = "SELECT l.pos FROM " + world.select(*left, 0) +
                            " l WHERE NOT EXISTS (SELECT 1 FROM " + world.select(*right, 1) + " r WHERE " +
                            keys.sql + ") ORDER BY l.pos";
    return {keys.nojoin(*left, *right), left->members, rowsAt(*left, world.query(sql)), described(keys, sql)};
}

Outcome theta(std::mt19937_64 &random, GeneratedWorld &world)
{
    const auto [left, right] = twoSides(random, world);
    const GeneratedCondition condition = below(random, 4) == 0
                                             ? anyCondition(random, world, *left, right)
                                             : anyJoinCondition(random, world, *left, *right);
    const std::string sql = "SELECT l.pos, r.pos FROM " + world.select(*left, 0) + " l, " +
                            world.select(*right, 1) + " r WHERE " + condition.sql + " ORDER BY l.pos, r.pos";
    return {dbtheta(left->pointer, right->pointer, condition.ours.c_str(), nullptr),
            joinedMembers(*left, *right), rowsAt(*left, *right, world.query(sql)),
            condition.ours + "\n" + sql};
}

// ---- Running them --------------------------------------------------------------------------------

struct OperationRow {
    const char *name;
    Outcome (*run)(std::mt19937_64 &, GeneratedWorld &);
};

const OperationRow operations[] = {
    {"subset", subset}, {"sort", sort},   {"group", group},   {"sever", sever}, {"separate", separate},
    {"join", join},     {"outer", outer}, {"nojoin", nojoin}, {"theta", theta},
};

// What a view's creation text says makes the same rows again.
void checkCreation(Dbptr made, const std::vector<int> &members, const Rows &rows, const GeneratedWorld &world)
{
    const std::string creation = text(made, dbTABLE_CREATION);
    const Dbptr again = replay(world.pointer(), creation);
    EXPECT_EQ(world.rowsOf(again, members), rows) << creation << "\n" << world.describe();
    EXPECT_EQ(text(again, dbTABLE_CREATION), creation);
    EXPECT_EQ(dbfree(again), 0);
}

// Does what the row says and compares; a view that was made may be the input of further operations.
bool check(const OperationRow &row, std::mt19937_64 &random, GeneratedWorld &world, long *withRows = nullptr)
{
    Outcome outcome = row.run(random, world);
    if (outcome.made.table < 0) {
        ADD_FAILURE() << row.name << ": " << outcome.what << "\n" << take_log() << world.describe();
        return false;
    }
    const Rows rows = world.rowsOf(outcome.made, outcome.members);
    const std::string made = text(outcome.made, dbTABLE_CREATION);
    EXPECT_EQ(rows, outcome.expected) << row.name << ": " << outcome.what << "\n"
                                      << made << "\n"
                                      << world.describe();
    const bool same = rows == outcome.expected;
    if (withRows && !rows.empty())
        ++*withRows;
    if (same && below(random, 16) == 0)
        checkCreation(outcome.made, outcome.members, rows, world);
    world.keepOrFree(random, Side{outcome.made, outcome.members, std::move(outcome.expected), false});
    return same && !testing::Test::HasFailure();
}

class SecondOpinion : public testing::TestWithParam<size_t>
{
};

TEST_P(SecondOpinion, AgreesOnGeneratedTables)
{
    const OperationRow &row = operations[GetParam()];
    const Patience patience;
    const long casesPerWorld = 200;
    std::mt19937_64 random = beginning(GetParam());
    long done = 0;
    long withRows = 0;
    while (patience.lasts(done)) {
        GeneratedWorld world(random);
        // Views of other operations to begin with.
        for (int i = 0; i < 8; ++i)
            if (!check(operations[below(random, std::size(operations))], random, world))
                return;
        for (long i = 0; i < casesPerWorld && patience.lasts(done); ++i, ++done)
            if (!check(row, random, world, &withRows))
                return;
    }
    EXPECT_GT(withRows, done / 5) << "too few of the cases have an outcome";
    RecordProperty("cases", static_cast<int>(done));
    EXPECT_EQ(take_log(), "");
}

INSTANTIATE_TEST_SUITE_P(Operations, SecondOpinion, testing::Range(size_t{0}, std::size(operations)),
                         [](const auto &row) { return operations[row.param].name; });

TEST(SecondOpinionOnFind, AgreesOnGeneratedTables)
{
    const Patience patience;
    std::mt19937_64 random = beginning(999);
    for (long done = 0; patience.lasts(done);) {
        GeneratedWorld world(random);
        for (int i = 0; i < 8; ++i)
            if (!check(operations[below(random, std::size(operations))], random, world))
                return;
        for (int i = 0; i < 200 && patience.lasts(done); ++i, ++done) {
            const Side &side = world.anySide(random, 60);
            const GeneratedCondition condition = anyCondition(random, world, side, nullptr);
            const bool backwards = below(random, 2) == 0;
            Dbptr from = side.pointer;
            from.record = below(random, 3) == 0 ? int64_t{dbALL} : below(random, side.rows.size() + 1);
            std::string sql = std::string("SELECT ") + (backwards ? "MAX" : "MIN") + "(pos) FROM " +
                              world.select(side, 0) + " l WHERE " + condition.sql;
            if (from.record >= 0)
                sql += (backwards ? " AND pos < " : " AND pos > ") + std::to_string(from.record);
            const int expected = world.query(sql)[0][0];
            const int64_t found = dbfind(from, condition.ours.c_str(), backwards, nullptr);
            ASSERT_EQ(found, expected < 0 ? int64_t{dbERROR_NOT_FOUND} : expected)
                << condition.ours << "\n"
                << sql << "\n"
                << take_log() << world.describe();
        }
    }
    EXPECT_EQ(take_log(), "");
}

} // namespace
