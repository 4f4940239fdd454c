// A program is killed at random moments while it changes a table: what it acknowledged is there, what it was
// at is there whole or not at all, and the next program works. $ORVANE_CRASH_KILLS is the number of kills.
#include "edited.h"
#include "worker_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <thread>

namespace {

using Model = std::map<int64_t, int64_t>; // id to number

struct Step {
    char what = 0;
    int64_t id = 0;
    int64_t number = 0;
};

void carry_out(const Step &step, Model &model)
{
    if (step.what == '+' || step.what == '=')
        model[step.id] = step.number;
    else if (step.what == '-')
        model.erase(step.id);
    else if (step.what == '*')
        for (auto &[id, number] : model)
            number = step.number;
}

// What the program acknowledged goes into the model; what it was at is answered.
std::optional<Step> replay(const std::string &output, Model &model, int &acknowledged, int64_t &next_id)
{
    std::optional<Step> open;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (line == "ready")
            continue;
        if (line == "done") {
            carry_out(*open, model);
            open.reset();
            ++acknowledged;
            continue;
        }
        Step step;
        std::istringstream(line) >> step.what >> step.id >> step.number;
        open = step;
        next_id = std::max(next_id, step.id + 1);
    }
    return open;
}

Model read_table(const Opened &opened)
{
    Model found;
    const int64_t count = integer(opened.table("event"), dbRECORD_COUNT);
    for (int64_t number = 0; number < count; ++number) {
        const std::string record = get(opened.record("event", number));
        const int64_t id = std::atoll(record.substr(0, 8).c_str());
        const std::string author = trim(record.substr(18, 15));
        if (id == -1) {
            EXPECT_EQ(record, get(opened.record("event", dbNULL))) << number;
            continue;
        }
        EXPECT_EQ(author, "w" + std::to_string(id)) << record;
        EXPECT_EQ(found.count(id), 0u) << "double: " << record;
        found[id] = std::atoll(record.substr(9, 8).c_str());
    }
    EXPECT_EQ(take_log(), "");
    return found;
}

int wanted_kills(int usual)
{
    const char *setting = std::getenv("ORVANE_CRASH_KILLS");
    return setting ? std::atoi(setting) : usual;
}

} // namespace

class Crash : public testing::TestWithParam<const char *>
{
};

TEST_P(Crash, loses_nothing_that_was_acknowledged)
{
    const bool to_disk = std::string(GetParam()) == "disk";
    const int kills = wanted_kills(to_disk ? 20 : 200);
    TemporaryDatabase files;
    files.writeFile("quakes", std::string("schema: small\ndurability: ") + GetParam() + "\n");
    std::mt19937 random(std::random_device{}());
    Model model;
    int64_t next_id = 1;
    int acknowledged = 0;
    int at_work = 0;
    for (int kill = 0; kill < kills; ++kill) {
        WorkerProcess worker(
            {"change", files.path(), std::to_string(next_id), std::to_string(random() % 1000000)});
        worker.wait_for_output();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % (to_disk ? 40000 : 8000)));
        worker.kill();
        const std::string output = worker.output();
        ASSERT_FALSE(output.empty());
        const auto open = replay(output, model, acknowledged, next_id);
        at_work += open ? 1 : 0;
        Opened opened(files.path(), "r");
        const Model found = read_table(opened);
        Model after = model;
        if (open)
            carry_out(*open, after);
        ASSERT_TRUE(found == model || found == after)
            << "kill " << kill << ", " << (open ? std::string(1, open->what) : "") << " "
            << (open ? open->id : 0);
        ASSERT_FALSE(HasFailure());
        model = found;
        if (kill % 10 == 0) { // the next program works
            Opened next(files.path(), "r+");
            const int64_t id = next_id++;
            ASSERT_GE(
                dbaddchk(next.table("event"),
                         files.record("event", {std::to_string(id), "5", "w" + std::to_string(id)}).c_str()),
                0)
                << take_log();
            model[id] = 5;
        }
    }
    EXPECT_GT(acknowledged, kills);
    EXPECT_GT(at_work, kills / 10);
    RecordProperty("acknowledged", acknowledged);
    RecordProperty("killed_at_work", at_work);
    std::printf("%d kills, %d of them at work; %d changes acknowledged\n", kills, at_work, acknowledged);
}

INSTANTIATE_TEST_SUITE_P(Durability, Crash, testing::Values("process", "disk"),
                         [](const auto &each) { return std::string(each.param); });
