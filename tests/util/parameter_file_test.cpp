#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "c_text.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct PfRelease {
    void operator()(Pf *pf) const { pffree(pf); }
};
using PfOwner = std::unique_ptr<Pf, PfRelease>;

PfOwner parsed(const std::string &text)
{
    elog_clear();
    Pf *pf = nullptr;
    const int code = pfparse(text.data(), text.size(), "test.pf", &pf);
    EXPECT_EQ(code, 0) << log_text();
    EXPECT_EQ(elog_count(), 0) << log_text();
    return PfOwner(pf);
}

/* The error log after a text was refused. */
std::string refusal(const std::string &text)
{
    elog_clear();
    Pf *pf = nullptr;
    EXPECT_LT(pfparse(text.data(), text.size(), "test.pf", &pf), 0) << text.substr(0, 80);
    EXPECT_EQ(pf, nullptr);
    EXPECT_EQ(elog_count(), 1);
    return log_text();
}

std::vector<std::string> keys(const Pf *pf)
{
    std::vector<std::string> names;
    Tbl *list = pfkeys(pf);
    for (int64_t i = 0; i < maxtbl(list); ++i)
        names.emplace_back(static_cast<const char *>(gettbl(list, i)));
    freetbl(list, nullptr);
    return names;
}

std::string text(const Pf *pf, const std::string &key)
{
    PfValue value;
    const int kind = pfget(pf, key.c_str(), &value);
    EXPECT_EQ(kind, PFSTRING) << key;
    return kind == PFSTRING ? value.text : "(no text)";
}

const Pf *node(const Pf *pf, const std::string &key, PfKind kind)
{
    PfValue value;
    EXPECT_EQ(pfget(pf, key.c_str(), &value), kind) << key;
    EXPECT_EQ(value.text, nullptr);
    return value.pf;
}

std::string at(const Pf *pf, const char *key)
{
    int64_t line = 0, column = 0;
    EXPECT_EQ(pfwhere(pf, key, &line, &column), 0);
    return std::to_string(line) + ":" + std::to_string(column);
}

TEST(ParameterFile, GivesStringsListsAndArraysInFileOrder)
{
    const PfOwner pf = parsed("zeta: 1\n"
                              "alpha: [a, b, [c]]\n"
                              "map:\n"
                              "  inner: {x: y}\n"
                              "  block:\n"
                              "    - one\n"
                              "    - two words\n");
    EXPECT_THAT(keys(pf.get()), ElementsAre("zeta", "alpha", "map"));
    EXPECT_EQ(pfmaxtbl(pf.get()), 3);
    EXPECT_EQ(text(pf.get(), "zeta"), "1");
    const Pf *list = node(pf.get(), "alpha", PFLIST);
    EXPECT_EQ(pfmaxtbl(list), 3);
    EXPECT_EQ(text(list, "1"), "b");
    EXPECT_EQ(text(node(list, "2", PFLIST), "0"), "c");
    const Pf *map = node(pf.get(), "map", PFARRAY);
    EXPECT_EQ(text(node(map, "inner", PFARRAY), "x"), "y");
    EXPECT_EQ(text(node(map, "block", PFLIST), "1"), "two words");
}

TEST(ParameterFile, TakesEveryScalarAsTheTextItLooksLike)
{
    const PfOwner pf = parsed("null: null\n~: ~\nno: no\n1.0: 1.0\n0x1F: 0x1F\ntrue: yes\n<<: merge\n"
                              "empty:\n\"quoted\": \"a\\tb\"\nsingle: 'it''s'\n2018-02-07: 2018-02-07\n"
                              "folded: >\n  two\n  lines\nliteral: |\n  one\n  two\n");
    EXPECT_THAT(keys(pf.get()), ElementsAre("null", "~", "no", "1.0", "0x1F", "true", "<<", "empty", "quoted",
                                            "single", "2018-02-07", "folded", "literal"));
    for (const char *same : {"null", "~", "no", "1.0", "0x1F", "2018-02-07"})
        EXPECT_EQ(text(pf.get(), same), same);
    EXPECT_EQ(text(pf.get(), "true"), "yes");
    EXPECT_EQ(text(pf.get(), "<<"), "merge");
    EXPECT_EQ(text(pf.get(), "empty"), "");
    EXPECT_EQ(text(pf.get(), "quoted"), "a\tb");
    EXPECT_EQ(text(pf.get(), "single"), "it's");
    EXPECT_EQ(text(pf.get(), "folded"), "two lines\n");
    EXPECT_EQ(text(pf.get(), "literal"), "one\ntwo\n");
}

TEST(ParameterFile, TakesAnEmptyFileAsAnEmptyArray)
{
    for (const char *nothing : {"", "\n\n", "# a comment\n", "---\n", "---\n...\n", "\xEF\xBB\xBF"}) {
        const PfOwner pf = parsed(nothing);
        EXPECT_EQ(pfmaxtbl(pf.get()), 0);
        EXPECT_THAT(keys(pf.get()), ElementsAre());
        EXPECT_EQ(at(pf.get(), nullptr), "1:1");
    }
}

TEST(ParameterFile, TakesCarriageReturnsAndAByteOrderMark)
{
    const PfOwner pf = parsed("\xEF\xBB\xBF"
                              "a: 1\r\nlist:\r\n  - x\r\n  - y\r\ntext: |\r\n  one\r\n  two\r\n");
    EXPECT_EQ(text(pf.get(), "a"), "1");
    EXPECT_EQ(text(node(pf.get(), "list", PFLIST), "1"), "y");
    EXPECT_EQ(text(pf.get(), "text"), "one\ntwo\n");
}

TEST(ParameterFile, SaysWhereKeysAndValuesStand)
{
    const PfOwner pf = parsed("a: 1\n\n\xC3\xA9t\xC3\xA9:   {b: 2,\n  c: [x, y]}\n");
    EXPECT_EQ(at(pf.get(), "a"), "1:4");
    EXPECT_EQ(at(pf.get(), "\xC3\xA9t\xC3\xA9"), "3:8");
    const Pf *map = node(pf.get(), "\xC3\xA9t\xC3\xA9", PFARRAY);
    EXPECT_EQ(at(map, nullptr), "3:8");
    EXPECT_EQ(at(map, "b"), "3:12");
    EXPECT_EQ(at(node(map, "c", PFLIST), "1"), "4:10");
    int64_t line = 0, column = 0;
    EXPECT_EQ(pfwherekey(map, "c", &line, &column), 0);
    EXPECT_EQ(line, 4);
    EXPECT_EQ(column, 3);
    EXPECT_EQ(pfwherekey(map, "c", nullptr, nullptr), 0);
    EXPECT_LT(pfwhere(map, "missing", &line, &column), 0);
    EXPECT_LT(pfwherekey(map, nullptr, &line, &column), 0);
    EXPECT_STREQ(pfname(map), "test.pf");
}

TEST(ParameterFile, AnswersAMissingKeyWithoutAnError)
{
    const PfOwner pf = parsed("a: 1\nlist: [x]\n");
    PfValue value = {"before", pf.get()};
    EXPECT_LT(pfget(pf.get(), "b", &value), 0);
    EXPECT_EQ(value.text, nullptr);
    EXPECT_EQ(value.pf, nullptr);
    const Pf *list = node(pf.get(), "list", PFLIST);
    for (const char *index : {"1", "-1", "", " 0", "0x", "99999999999999999999"})
        EXPECT_LT(pfget(list, index, nullptr), 0) << index;
    EXPECT_EQ(pfget(list, "0", nullptr), PFSTRING);
    EXPECT_LT(pfget(nullptr, "a", nullptr), 0);
    EXPECT_LT(pfget(pf.get(), nullptr, nullptr), 0);
    EXPECT_EQ(pfkeys(list), nullptr);
    EXPECT_EQ(pfkeys(nullptr), nullptr);
    EXPECT_EQ(pfmaxtbl(nullptr), 0);
    EXPECT_EQ(pfname(nullptr), nullptr);
    EXPECT_EQ(elog_count(), 0);
}

TEST(ParameterFile, LeavesInnerNodesAloneWhenTheyAreReleased)
{
    const PfOwner pf = parsed("map: {a: 1}\n");
    PfValue value;
    ASSERT_EQ(pfget(pf.get(), "map", &value), PFARRAY);
    pffree(value.pf);
    pffree(nullptr);
    EXPECT_EQ(text(value.pf, "a"), "1");
}

struct Refused {
    const char *text;
    const char *place;
    const char *reason;
};

TEST(ParameterFile, RefusesWhatItDoesNotTakeWithPlaceAndExpectation)
{
    const Refused cases[] = {
        {"a: &x 1\n", "1:4", "anchor"},
        {"a: 1\nb: *x\n", "2:4", "alias"},
        {"a: !!str 1\n", "1:4", "tag"},
        {"a: ! 1\n", "1:4", "tag"},
        {"a: ! \"quoted\"\n", "1:4", "tag"},
        {"\xC3\xA9: \xC3\xA9\nb: ! x\n", "2:4", "tag"},
        {"a: !mine {b: c}\n", "1:4", "tag"},
        {"a: ! [b]\n", "1:4", "tag"},
        {"a: !!null\n", "1:4", "tag"},
        {"!!str a: 1\n", "1:1", "tag"},
        {"&k a: 1\n", "1:1", "anchor"},
        {"a: {&k b: 1}\n", "1:5", "anchor"},
        {"a: 1\n---\nb: 2\n", "2:1", "second document"},
        {"a: 1\n...\n---\n", "3:1", "second document"},
        {"%YAML 1.1\n---\na: 1\n", "1:1", "directive"},
        {"%TAG ! tag:x,2000:\n---\na: 1\n", "1:1", "directive"},
        {"%FOO bar\n---\na: 1\n", "1:1", "directive"},
        {"# \xC3\xA9\r\n \t\n%YAML 1.1\n---\na: 1\n", "3:1", "directive"},
        {"a: 1\n...\n%YAML 1.1\n---\nb: 2\n", "3:1", "second document"},
        {"a: 1\n...\n# c\n  b: 2\n", "4:3", "second document"},
        {"a: 1\nb: 2\na: 3\n", "3:1", "'a' again (first in line 1)"},
        {"m: {x: 1, x: 2}\n", "1:11", "'x' again"},
        {"[a]: 1\n", "1:1", "as a key"},
        {"? {a: b}\n: 1\n", "1:3", "as a key"},
        {"- a\n- b\n", "1:1", "found a list"},
        {"just text\n", "1:1", "found bare text"},
        {"null\n", "1:1", "found bare text"},
        {"a: [1, 2\nb: 3\n", "2:2", "expected ',' or ']'"},
        {"a: {b: 1\n", "2:1", "expected ',' or '}'"},
        {"a: b: c\n", "1:5", "quotes"},
        {"a: 1\n b: 2\n", "2:3", "expected one key"},
        {"a: 1\nb\nc: 2\n", "3:1", "expected ':'"},
        {"a:\n\t- 1\n", "2:1", "expected"},
        {"a: \"open\n", "2:1", "quote"},
        {"a: \"\\q\"\n", "1:5", "escape"},
        {"a: @x\n", "1:4", "quotes"},
        {"a: \"x\\0y\"\n", "1:4", "zero character"},
        {"a: caf\xE9\n", "1:7", "expected UTF-8 text, found the byte 0xE9"},
        {"\xC3\xA9: 1\nb: \xC3\xA9\xC0\xAF\n", "2:5", "0xC0"},
        {"a: \xED\xA0\x80\n", "1:4", "0xED"},
        {"a: 1\r\nb: \x01\r\n", "2:4", "control character 0x01"},
        {"a: 1\rb: \x7F\r", "2:4", "control character 0x7F"},
        {"\xFF\xFE"
         "a",
         "1:1", "0xFF"},
    };
    for (const Refused &refused : cases) {
        const std::string message = refusal(refused.text);
        EXPECT_THAT(message, StartsWith(std::string("test.pf:") + refused.place + ": ")) << refused.text;
        EXPECT_THAT(message, HasSubstr(refused.reason)) << refused.text;
        EXPECT_THAT(message, HasSubstr("expected")) << refused.text;
    }
}

TEST(ParameterFile, EndsWithTheDocument)
{
    for (const char *end :
         {"", "\n", "\n...", "\n...\n", "\n# comment", "\n...\n  # comment\n\n", " # comment\n"}) {
        const PfOwner pf = parsed(std::string("---\na: 1") + end);
        EXPECT_EQ(text(pf.get(), "a"), "1") << end;
    }
}

TEST(ParameterFile, RefusesManyDirectivesAtOnce)
{
    std::string directives;
    for (int i = 0; i < 400000; ++i)
        directives += "%TAG !a" + std::to_string(i) + "! tag:x\n";
    const double before = std_now();
    EXPECT_THAT(refusal(directives), StartsWith("test.pf:1:1: "));
    EXPECT_THAT(refusal("a: 1\n...\n" + directives), StartsWith("test.pf:3:1: "));
    EXPECT_LT(std_now() - before, 60) << "a cost that grows with the square of the file takes minutes";
}

TEST(ParameterFile, BoundsTheDepth)
{
    const int deepest = 99; // within the root array
    const PfOwner pf = parsed("a: " + std::string(deepest, '[') + std::string(deepest, ']') + "\n");
    EXPECT_EQ(pfmaxtbl(pf.get()), 1);
    EXPECT_THAT(refusal("a: " + std::string(deepest + 1, '[')), HasSubstr("expected at most 100 lists"));
    EXPECT_THAT(refusal("a: " + std::string(100000, '[')), HasSubstr("test.pf:1:"));
    EXPECT_THAT(refusal(std::string(100000, '{')), HasSubstr("test.pf:1:"));
    std::string indented;
    for (int depth = 0; depth < 1000; ++depth)
        indented += std::string(static_cast<size_t>(depth), ' ') + "a:\n";
    EXPECT_THAT(refusal(indented), StartsWith("test.pf:101:101: expected at most 100"));
    std::string dashes = "a:\n";
    for (int i = 0; i < 50000; ++i)
        dashes += "- ";
    EXPECT_THAT(refusal(dashes), HasSubstr("test.pf:2:"));
}

class ParameterFileOnDisk : public testing::Test
{
protected:
    void SetUp() override
    {
        char name[] = "/tmp/orvane-util-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder_ = name;
        elog_clear();
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string file(const std::string &name, const std::string &content) const
    {
        const std::string path = folder_ + "/" + name;
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    std::string unreadable(const std::string &path) const
    {
        Pf *pf = nullptr;
        elog_clear();
        EXPECT_LT(pfread(path.c_str(), &pf), 0);
        EXPECT_EQ(pf, nullptr);
        return log_text();
    }

    std::string folder_;
};

TEST_F(ParameterFileOnDisk, IsReadWhole)
{
    std::string content;
    for (int i = 0; i < 20000; ++i)
        content += "key" + std::to_string(i) + ": value " + std::to_string(i) + "\n";
    const std::string path = file("large.pf", content);
    Pf *pf = nullptr;
    ASSERT_EQ(pfread(path.c_str(), &pf), 0) << log_text();
    const PfOwner owner(pf);
    EXPECT_EQ(pfmaxtbl(pf), 20000);
    EXPECT_EQ(text(pf, "key19999"), "value 19999");
    EXPECT_EQ(pfname(pf), path);
}

TEST_F(ParameterFileOnDisk, NamesTheFileInErrors)
{
    const std::string path = file("wrong.pf", "a: [\n");
    EXPECT_THAT(unreadable(path), StartsWith(path + ":2:1: expected"));
}

TEST_F(ParameterFileOnDisk, SaysWhatToDoWhenItCannotBeRead)
{
    EXPECT_THAT(unreadable(folder_), StartsWith(folder_ + ": expected a parameter file, found a folder"));
    EXPECT_THAT(unreadable(folder_ + "/none"), HasSubstr("there is no such file"));
    EXPECT_THAT(unreadable(folder_ + "/none"), StartsWith(folder_ + "/none: "));
    const std::string large = file("huge.pf", "");
    std::filesystem::resize_file(large, (16u << 20) + 1);
    EXPECT_THAT(unreadable(large), HasSubstr("larger than 16 MiB"));
}

TEST_F(ParameterFileOnDisk, SaysThatReadingIsNotPermitted)
{
    const std::string path = file("secret.pf", "a: 1\n");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    if (geteuid() == 0) { // root may read anything: the same check in a child without that right
        const pid_t child = fork();
        if (child == 0) {
            std::filesystem::permissions(folder_, std::filesystem::perms::all);
            if (setuid(65534) != 0)
                _exit(2);
            Pf *pf = nullptr;
            const int code = pfread(path.c_str(), &pf);
            const std::string message = log_text();
            _exit(code < 0 && message.find("must be readable by you") != std::string::npos ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    } else {
        EXPECT_THAT(unreadable(path), HasSubstr("must be readable by you"));
    }
}

TEST(ParameterFile, MeetsNullPointersWithAnError)
{
    elog_clear();
    Pf *pf = nullptr;
    EXPECT_LT(pfread(nullptr, &pf), 0);
    EXPECT_LT(pfread("/dev/null", nullptr), 0);
    EXPECT_LT(pfparse(nullptr, 3, "x", &pf), 0);
    EXPECT_LT(pfparse("a: 1", 4, "x", nullptr), 0);
    EXPECT_EQ(elog_count(), 4);
    elog_clear();
    ASSERT_EQ(pfparse("a: 1", 4, nullptr, &pf), 0);
    pffree(pf);
    ASSERT_EQ(pfparse(nullptr, 0, "x", &pf), 0);
    pffree(pf);
    EXPECT_EQ(elog_count(), 0);
}

/* Walks everything that a parsed file gives out, so that a sanitizer sees all of it. */
int64_t walk(const Pf *pf, int depth)
{
    EXPECT_LE(depth, 100);
    int64_t seen = 0;
    Tbl *names = pfkeys(pf);
    for (int64_t i = 0; i < pfmaxtbl(pf); ++i) {
        const std::string key = names ? static_cast<const char *>(gettbl(names, i)) : std::to_string(i);
        PfValue value;
        const int kind = pfget(pf, key.c_str(), &value);
        int64_t line = 0, column = 0;
        EXPECT_EQ(pfwhere(pf, key.c_str(), &line, &column), 0);
        EXPECT_GT(line, 0);
        EXPECT_GT(column, 0);
        seen += kind == PFSTRING ? static_cast<int64_t>(std::string(value.text).size() + 1)
                                 : walk(value.pf, depth + 1);
    }
    freetbl(names, nullptr);
    return seen;
}

TEST(ParameterFile, MeetsArbitraryTextWithAResultOrOneError)
{
    std::mt19937 random(20180207);
    const std::string alphabet = "ab :-[]{},\n\n  \t#'\"&*!|>%@?~\\0\r\xC3\xA9";
    int taken_count = 0, refused_count = 0;
    for (int round = 0; round < 60000; ++round) {
        std::string content(random() % 60, '\0');
        const bool any_byte = round % 4 == 0;
        for (char &c : content)
            c = any_byte ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
        elog_clear();
        Pf *pf = nullptr;
        const int code = pfparse(content.data(), content.size(), "fuzz", &pf);
        if (code == 0) {
            ++taken_count;
            ASSERT_NE(pf, nullptr);
            EXPECT_EQ(elog_count(), 0);
            walk(pf, 1);
            pffree(pf);
        } else {
            ++refused_count;
            EXPECT_EQ(pf, nullptr);
            EXPECT_EQ(elog_count(), 1);
            EXPECT_THAT(log_text(), testing::ContainsRegex("^fuzz:[1-9][0-9]*:[1-9][0-9]*: .*expected"));
        }
        ASSERT_FALSE(HasFailure()) << testing::PrintToString(content);
    }
    EXPECT_GT(taken_count, 500);
    EXPECT_GT(refused_count, 500);
}

TEST(ParameterFile, MeetsDamagedFilesWithAResultOrOneError)
{
    const std::string sound =
        "schema: css3.0\ndbpath: [., /archive/ref]\nlocks: local\nrelations:\n  origin:\n"
        "    fields: [lat, lon]\n    detail: |\n      text \xC3\xA9\n      more\n"
        "  arrival: {fields: [sta, time], primary: ['sta', \"time\"]}\n";
    std::mt19937 random(7);
    for (int round = 0; round < 30000; ++round) {
        std::string content = sound;
        for (unsigned damage = 0; damage <= random() % 4; ++damage) {
            const size_t place = random() % content.size();
            switch (random() % 3) {
            case 0:
                content[place] = static_cast<char>(random());
                break;
            case 1:
                content.erase(place, random() % 10);
                break;
            default:
                content.insert(place, 1, "[]{}:\n\t&*!'\"-"[random() % 13]);
            }
        }
        elog_clear();
        Pf *pf = nullptr;
        const int code = pfparse(content.data(), content.size(), "damaged", &pf);
        EXPECT_EQ(code == 0, pf != nullptr);
        EXPECT_EQ(elog_count(), code == 0 ? 0 : 1);
        if (pf)
            walk(pf, 1);
        pffree(pf);
        ASSERT_FALSE(HasFailure()) << content;
    }
}

} // namespace
