// Eight programs write one table, with marks and crunches between, and four read it. $ORVANE_CROWD_ADDS is
// the number of records that all of them add.
#include "edited.h"
#include "worker_process.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <sstream>

TEST(SeveralPrograms, lose_nothing_double_nothing_and_show_nothing_torn)
{
    constexpr int writers = 8;
    constexpr int readers = 4;
    constexpr int64_t ids_each = 10'000'000;
    const char *setting = std::getenv("ORVANE_CROWD_ADDS");
    const int64_t adds = (setting ? std::atoll(setting) : 16000) / writers;
    TemporaryDatabase files;
    files.addTable("event", {});

    std::vector<std::unique_ptr<WorkerProcess>> reading;
    for (int reader = 0; reader < readers; ++reader)
        reading.push_back(std::make_unique<WorkerProcess>(
            std::vector<std::string>{"read", files.path(), std::to_string(reader)}));
    std::vector<std::unique_ptr<WorkerProcess>> writing;
    for (int writer = 0; writer < writers; ++writer)
        writing.push_back(std::make_unique<WorkerProcess>(std::vector<std::string>{
            "write", files.path(), std::to_string(writer * ids_each + 1), std::to_string(adds)}));
    for (const auto &writer : writing)
        ASSERT_EQ(writer->wait(), 0);
    int64_t records_read = 0;
    int64_t rows_read = 0;
    for (const auto &reader : reading) {
        reader->end_input();
        EXPECT_EQ(reader->wait(), 0);
        int64_t records = 0;
        int64_t rows = 0;
        std::istringstream(reader->output()) >> records >> rows;
        records_read += records;
        rows_read += rows;
    }

    Opened opened(files.path(), "r");
    std::set<int64_t> found;
    const int64_t count = integer(opened.table("event"), dbRECORD_COUNT);
    for (int64_t number = 0; number < count; ++number) {
        const std::string record = get(opened.record("event", number));
        const int64_t id = std::atoll(record.substr(0, 8).c_str());
        if (id == -1)
            continue;
        const int64_t i = (id - 1) % ids_each;
        EXPECT_EQ(trim(record.substr(18, 15)), (i % 10 == 5 ? "x" : "w") + std::to_string(id));
        EXPECT_TRUE(found.insert(id).second) << "double: " << record;
    }
    std::set<int64_t> expected;
    for (int writer = 0; writer < writers; ++writer)
        for (int64_t i = 0; i < adds; ++i)
            if (i % 10 != 3)
                expected.insert(writer * ids_each + 1 + i);
    EXPECT_EQ(found, expected);
    EXPECT_GT(records_read, 100);
    EXPECT_EQ(take_log(), "");
    std::printf("%zu records, %lld records and %lld rows read\n", found.size(),
                static_cast<long long>(records_read), static_cast<long long>(rows_read));
}
