#include "command_line.h"

#include <gtest/gtest.h>

namespace {

CommandLine parsed(QStringList arguments)
{
    arguments.prepend("ovedit");
    return parseCommandLine(arguments);
}

TEST(CommandLine, isEmptyWithoutArguments)
{
    const CommandLine line = parsed({});
    EXPECT_TRUE(line.databases.isEmpty());
    EXPECT_EQ(line.openMode, "r");
    EXPECT_EQ(line.configFile, "");
    EXPECT_EQ(line.screenshot, "");
    EXPECT_FALSE(line.help || line.version);
    EXPECT_EQ(line.error, "");
}

TEST(CommandLine, takesDatabasesInTheirOrder)
{
    EXPECT_EQ(parsed({"a/quakes", "b/other.origin"}).databases, (QStringList{"a/quakes", "b/other.origin"}));
}

TEST(CommandLine, takesOptionsWithTheirFiles)
{
    const CommandLine line = parsed({"--config", "my.yaml", "--screenshot=x.png", "quakes"});
    EXPECT_EQ(line.configFile, "my.yaml");
    EXPECT_EQ(line.screenshot, "x.png");
    EXPECT_EQ(line.databases, QStringList{"quakes"});
    EXPECT_EQ(line.error, "");
}

TEST(CommandLine, takesALanguageThatThereIs)
{
    EXPECT_EQ(parsed({}).language, "");
    EXPECT_EQ(parsed({"--language", "de_AT"}).language, "de");
    EXPECT_EQ(parsed({"--language=en"}).language, "en");
    EXPECT_TRUE(parsed({"--language=xx"}).error.contains("'xx'; it knows en, de"));
    EXPECT_NE(parsed({"--language="}).error, "");
    EXPECT_NE(parsed({"--language"}).error, "");
}

TEST(CommandLine, opensForWritingOnlyWhenAsked)
{
    EXPECT_EQ(parsed({"--read-only", "q"}).openMode, "r");
    EXPECT_EQ(parsed({"--read-write", "q"}).openMode, "r+");
    EXPECT_NE(parsed({"--read-write", "--read-only"}).error, "");
}

TEST(CommandLine, knowsHelpAndVersion)
{
    EXPECT_TRUE(parsed({"-h"}).help);
    EXPECT_TRUE(parsed({"--help"}).help);
    EXPECT_TRUE(parsed({"-v"}).version);
    EXPECT_TRUE(parsed({"--version"}).version);
}

TEST(CommandLine, saysWhatIsWrong)
{
    EXPECT_TRUE(parsed({"--frobnicate"}).error.contains("frobnicate"));
    EXPECT_NE(parsed({"--config"}).error, "");
    EXPECT_NE(parsed({"--config="}).error, "");
    EXPECT_NE(parsed({"--screenshot="}).error, "");
    EXPECT_NE(parsed({"--screenshot=x.png", "a", "b"}).error, "");
    EXPECT_NE(parsed({""}).error, "");
}

TEST(CommandLine, describesEachOption)
{
    for (const char *option :
         {"--config", "--read-only", "--read-write", "--screenshot", "--help", "--version"}) {
        EXPECT_TRUE(commandLineHelp().contains(option)) << option;
    }
}

} // namespace
