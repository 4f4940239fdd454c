#include "operations/creation_replay.h"

#include "operations/derived.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

namespace {

struct Keys {
    std::vector<std::string> left;
    std::vector<std::string> right;
};

// A call with what stands behind its name.
struct Line {
    std::string call;
    std::string rest;

    // Takes an option out of the rest.
    bool take(const std::string &option)
    {
        if (!rest.starts_with(option + " "))
            return false;
        rest.erase(0, option.size() + 1);
        return true;
    }
    std::vector<std::string> words() const
    {
        std::istringstream in(rest);
        return {std::istream_iterator<std::string>(in), {}};
    }
    // "arid time=time::endtime"
    Keys keys() const
    {
        Keys keys;
        for (const std::string &word : words()) {
            const size_t sign = word.find('=');
            keys.left.push_back(word.substr(0, sign));
            keys.right.push_back(sign == std::string::npos ? word : word.substr(sign + 1));
        }
        return keys;
    }
};

class Replay
{
public:
    explicit Replay(Dbptr database) : database_(database) {}

    Dbptr run(const std::string &creation)
    {
        std::istringstream lines(creation);
        for (std::string line; std::getline(lines, line);) {
            const size_t blank = line.find(' ');
            follow({line.substr(0, blank), blank == std::string::npos ? "" : line.substr(blank + 1)});
        }
        EXPECT_EQ(stack_.size(), 1u) << creation;
        return pop();
    }

private:
    Dbptr pop()
    {
        if (stack_.empty())
            return {dbINVALID, dbINVALID, dbINVALID, dbINVALID};
        const Dbptr top = stack_.back();
        stack_.pop_back();
        return top;
    }

    void follow(Line line)
    {
        if (line.call == "dbopen") {
            stack_.push_back(dblookup(database_, "", line.rest.c_str(), "", ""));
            return;
        }
        const bool two = line.call == "dbjoin" || line.call == "dbnojoin" || line.call == "dbtheta";
        const Dbptr right = two ? pop() : Dbptr{};
        const Dbptr left = pop();
        stack_.push_back(two ? joined(left, right, line) : derived(left, line));
        EXPECT_GE(stack_.back().table, 0) << line.call << " " << line.rest << "\n" << take_log();
        freeView(left);
        if (two)
            freeView(right);
    }

    static void freeView(Dbptr used)
    {
        if (integer(used, dbTABLE_IS_VIEW) == 1) {
            EXPECT_EQ(dbfree(used), 0);
        }
    }

    static Dbptr derived(Dbptr of, Line line)
    {
        const char *rest = line.rest.c_str();
        if (line.call == "dbsubset")
            return dbsubset(of, rest, nullptr);
        if (line.call == "dbsort") {
            const int reverse = line.take("-reverse") ? dbSORT_REVERSE : 0;
            const int unique = line.take("-unique") ? dbSORT_UNIQUE : 0;
            return dbsort(of, Names(line.words()), reverse | unique, nullptr);
        }
        if (line.call == "dbgroup")
            return dbgroup(of, Names(line.words()), nullptr, 1);
        if (line.call == "dbungroup")
            return dbungroup(of, nullptr);
        if (line.call == "dbsever")
            return dbsever(of, rest, nullptr);
        if (line.call == "dbseparate")
            return dbseparate(of, rest);
        return {dbINVALID, dbINVALID, dbINVALID, dbINVALID};
    }

    static Dbptr joined(Dbptr left, Dbptr right, Line line)
    {
        if (line.call == "dbtheta")
            return dbtheta(left, right, line.rest.c_str(), nullptr);
        const int outer = line.take("-outer") ? 1 : 0;
        const Keys keys = line.keys();
        if (line.call == "dbnojoin")
            return dbnojoin(left, right, Names(keys.left), Names(keys.right), nullptr);
        return dbjoin(left, right, Names(keys.left), Names(keys.right), outer, nullptr, nullptr);
    }

    const Dbptr database_;
    std::vector<Dbptr> stack_;
};

} // namespace

Dbptr replay(Dbptr database, const std::string &creation)
{
    return Replay(database).run(creation);
}
