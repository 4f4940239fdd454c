#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "c_text.h"

namespace {

namespace fs = std::filesystem;

class Paths : public testing::Test
{
protected:
    void SetUp() override
    {
        elog_clear();
        char name[] = "/tmp/orvane-util-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        folder_ = name;
        before_ = fs::current_path();
        fs::current_path(folder_);
    }
    void TearDown() override
    {
        fs::current_path(before_);
        fs::remove_all(folder_);
    }

    std::string folder_;
    fs::path before_;
};

TEST_F(Paths, AreMadeAbsoluteAndFreeOfDots)
{
    const struct {
        std::string path, absolute;
    } cases[] = {
        {"/", "/"},
        {"//", "/"},
        {"/..", "/"},
        {"/a//b/", "/a/b"},
        {"/a/./b/.", "/a/b"},
        {"/a/../../b", "/b"},
        {"/a/b/..", "/a"},
        {"/a/...", "/a/..."},
        {"/a/.b/..c", "/a/.b/..c"},
        {"x", folder_ + "/x"},
        {"./x/../y", folder_ + "/y"},
        {"", folder_},
        {".", folder_},
        {"..", "/tmp"},
        {"\xC3\xA9 t", folder_ + "/\xC3\xA9 t"},
    };
    for (const auto &[path, absolute] : cases)
        EXPECT_EQ(taken(abspath(path.c_str())), absolute) << path;
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Paths, SymbolicLinksAreNotFollowed)
{
    fs::create_directory("real");
    fs::create_directory_symlink("real", "link");
    EXPECT_EQ(taken(abspath("link/x")), folder_ + "/link/x");
}

TEST_F(Paths, ANullPathIsAnError)
{
    EXPECT_EQ(abspath(nullptr), nullptr);
    EXPECT_EQ(elog_count(), 1);
}

TEST_F(Paths, AVanishedWorkingFolderIsAnErrorWithItsReason)
{
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(folder_ + "/gone");
    EXPECT_EQ(abspath("x"), nullptr);
    EXPECT_THAT(log_text(), testing::HasSubstr("No such file or directory"));
    EXPECT_EQ(taken(abspath("/x")), "/x");
}

TEST_F(Paths, AFilesTimeIsItsModificationTime)
{
    std::ofstream("file") << "x";
    const timespec times[2] = {{1, 0}, {1518013391, 250000000}};
    ASSERT_EQ(utimensat(AT_FDCWD, "file", times, 0), 0);
    EXPECT_DOUBLE_EQ(dfiletime("file"), 1518013391.25);
    const double now = std_now();
    std::ofstream("file") << "y";
    EXPECT_NEAR(dfiletime("file"), now, 60);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Paths, AMissingFilesTimeIsTheNullTime)
{
    EXPECT_EQ(dfiletime("none"), ORVANE_NULL_TIME);
    EXPECT_EQ(dfiletime(nullptr), ORVANE_NULL_TIME);
    EXPECT_EQ(dfiletime(""), ORVANE_NULL_TIME);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(Paths, PresenceIsToldOfAnythingThatExists)
{
    std::ofstream("file") << "";
    fs::create_symlink("none", "dangling");
    EXPECT_EQ(is_present("file"), 1);
    EXPECT_EQ(is_present("."), 1);
    EXPECT_EQ(is_present("none"), 0);
    EXPECT_EQ(is_present("dangling"), 0);
    EXPECT_EQ(is_present(""), 0);
    EXPECT_EQ(is_present(nullptr), 0);
    EXPECT_EQ(elog_count(), 0);
}

} // namespace
