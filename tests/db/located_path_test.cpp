#include "storage/located_path.h"

#include <gtest/gtest.h>

#include <filesystem>

using orvane::LocatedPath;

TEST(LocatedPath, keeps_the_form_in_which_it_was_given)
{
    const LocatedPath path = LocatedPath::from("dir/quakes");
    const std::string here = std::filesystem::current_path();
    EXPECT_EQ(path.shown, "dir/quakes");
    EXPECT_EQ(path.absolute, here + "/dir/quakes");
    EXPECT_EQ(path.folder().shown, "dir");
    EXPECT_EQ(path.folder().absolute, here + "/dir");
    EXPECT_EQ(path.name(), "quakes");
    EXPECT_EQ(path.with_ending(".origin").shown, "dir/quakes.origin");
}

TEST(LocatedPath, of_a_bare_name_is_in_the_working_folder)
{
    const LocatedPath folder = LocatedPath::from("quakes").folder();
    EXPECT_EQ(folder.shown, ".");
    EXPECT_EQ(folder.absolute, std::filesystem::current_path());
    EXPECT_EQ(folder.entry("x").shown, "x");
    EXPECT_EQ(LocatedPath::from("/quakes").folder().shown, "/");
    EXPECT_EQ(LocatedPath::from("/quakes").folder().entry("x").shown, "/x");
}

TEST(LocatedPath, takes_entries_relative_to_itself)
{
    const LocatedPath folder = LocatedPath::from("/data/dir");
    EXPECT_EQ(folder.entry("ref").shown, "/data/dir/ref");
    EXPECT_EQ(folder.entry("../ref").shown, "/data/dir/../ref");
    EXPECT_EQ(folder.entry("../ref").absolute, "/data/ref");
    EXPECT_EQ(folder.entry("/archive/ref").shown, "/archive/ref");
    EXPECT_EQ(folder.entry(".").shown, "/data/dir");
}
