// Views made at random come back equal.
#include "saving/saved.h"

#include <gtest/gtest.h>

#include <random>

namespace {

class RandomViews : public testing::TestWithParam<int>
{
protected:
    RandomViews() : random(static_cast<uint64_t>(GetParam()))
    {
        const auto any = [&](int end) { return std::to_string(1 + random() % static_cast<uint64_t>(end)); };
        const auto station = [&] { return std::string(1, static_cast<char>('A' + random() % 4)); };
        std::vector<TemporaryDatabase::Row> arrivals;
        std::vector<TemporaryDatabase::Row> assocs;
        std::vector<TemporaryDatabase::Row> origins;
        for (int i = 0; i < 40; ++i) {
            arrivals.push_back(
                {station(), any(50) + ".5", std::to_string(i), "-1", random() % 2 ? "P" : "S"});
            assocs.push_back({any(50), any(15), station(), "P"});
            origins.push_back({any(80), any(170), any(600), any(1000), any(15), any(5)});
        }
        files.addTable("arrival", arrivals);
        files.addTable("assoc", assocs);
        files.addTable("origin", origins);
    }

    Dbptr derived(const Opened &open, Dbptr from, int number)
    {
        const std::string name = "view" + std::to_string(number);
        const auto fields = list(from, dbTABLE_FIELDS);
        const std::string &field = fields[random() % fields.size()];
        static const char *const tables[] = {"arrival", "assoc", "origin"};
        const char *const other = tables[random() % 3];
        const auto members = list(from, dbVIEW_TABLES);
        switch (random() % 8) {
        case 0:
            return dbsort(from, Names(std::vector<std::string>{field}), static_cast<int>(random() % 4),
                          name.c_str());
        case 1:
            return dbgroup(from, Names(std::vector<std::string>{field}), name.c_str(), 1);
        case 2:
            return dbungroup(from, name.c_str());
        case 3:
        case 4:
            return dbjoin(from, open.table(other), nullptr, nullptr, static_cast<int>(random() % 2), nullptr,
                          name.c_str());
        case 5:
            return dbsever(from, members[random() % members.size()].c_str(), name.c_str());
        case 6:
            return dbnojoin(from, open.table(other), nullptr, nullptr, name.c_str());
        default:
            return dbsubset(from, (field + " != 3").c_str(), name.c_str());
        }
    }

    std::mt19937_64 random;
    TemporaryDatabase files;
};

TEST_P(RandomViews, ComeBackEqual)
{
    std::vector<std::pair<std::string, std::string>> saved; // name, what it is like
    const Notices notices;
    {
        const Opened open(files.path());
        std::vector<Dbptr> sides{open.table("arrival"), open.table("assoc"), open.table("origin")};
        for (int number = 0; number < 60; ++number) {
            const Dbptr made = derived(open, sides[random() % sides.size()], number);
            elog_clear(); // no keys, nothing grouped, nothing left: these are no views
            if (made.table < 0 || integer(made, dbRECORD_COUNT) > 3000)
                continue;
            sides.push_back(made);
            saved.emplace_back(text(made, dbTABLE_NAME), described(made));
            Stream stream;
            ASSERT_EQ(dbwrite_view(made, stream), 0) << take_log();
            stream.text(); // back to its beginning
            const Dbptr read = dbread_view(open.pointer, stream, "read");
            ASSERT_GE(read.table, 0) << take_log() << stream.text();
            EXPECT_EQ(described(read), saved.back().second);
            EXPECT_EQ(dbfree(read), 0);
            ASSERT_EQ(dbsave_view(made), 0) << take_log();
        }
    }
    ASSERT_GT(saved.size(), 10u);
    const Opened open(files.path());
    for (const auto &[name, before] : saved)
        EXPECT_EQ(described(open.table(name.c_str())), before)
            << TemporaryDatabase::readFile(files.tablePath(name));
    EXPECT_EQ(notices.text, "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomViews, testing::Range(1, 13));

} // namespace
