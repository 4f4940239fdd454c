#include "tab_separated.h"

#include <ostream>

#include <gtest/gtest.h>

namespace {

QString textOf(const std::vector<QStringList> &lines)
{
    QString text;
    for (const QStringList &line : lines) {
        for (int i = 0; i < line.size(); ++i) {
            text += i > 0 ? QStringLiteral("\t") : QString();
            appendCell(text, line[i]);
        }
        text += '\n';
    }
    return text;
}

std::string written(const QStringList &line)
{
    return textOf({line}).toStdString();
}

TEST(TabSeparated, QuotesOnlyWhatNeedsIt)
{
    EXPECT_EQ(written({"AAK", "42.6", "a b, c; 'd'"}), "AAK\t42.6\ta b, c; 'd'\n");
    EXPECT_EQ(written({"a\tb"}), "\"a\tb\"\n");
    EXPECT_EQ(written({"a\nb", "a\rb"}), "\"a\nb\"\t\"a\rb\"\n");
    EXPECT_EQ(written({"5\" pipe"}), "\"5\"\" pipe\"\n");
    EXPECT_EQ(written({QString(), ""}), "\t\"\"\n") << "no value, and one that is empty";
}

TEST(TabSeparated, ReadsBackWhatItWrites)
{
    const std::vector<QStringList> tables[] = {
        {},
        {{QString()}},
        {{"a"}},
        {{"a", QString(), ""}, {QString(), QString(), QString()}},
        {{"a\tb", "\"", "\"\"", "line\nline", "end\r\n"}, {"x", "y", "z", " ", "\t"}},
        {{QString::fromUtf8("Z\xC3\xBCrich")}, {QString()}},
    };
    for (const std::vector<QStringList> &cells : tables) {
        const std::vector<QStringList> read = tabSeparatedCells(textOf(cells));
        ASSERT_EQ(read.size(), cells.size()) << textOf(cells).toStdString();
        for (std::size_t line = 0; line < cells.size(); ++line) {
            EXPECT_EQ(read[line], cells[line]);
            for (int i = 0; i < cells[line].size(); ++i) {
                EXPECT_EQ(read[line][i].isNull(), cells[line][i].isNull());
            }
        }
    }
}

TEST(TabSeparated, ReadsWhatOthersWrite)
{
    using Lines = std::vector<QStringList>;
    EXPECT_EQ(tabSeparatedCells("a\tb\r\nc\td\r\n"), (Lines{{"a", "b"}, {"c", "d"}}));
    EXPECT_EQ(tabSeparatedCells("a\tb"), (Lines{{"a", "b"}}));
    EXPECT_EQ(tabSeparatedCells("a\t"), (Lines{{"a", QString()}}));
    EXPECT_EQ(tabSeparatedCells("5\" pipe\t\"q\"tail"), (Lines{{"5\" pipe", "qtail"}}));
    EXPECT_EQ(tabSeparatedCells("\"never closed\tx\n"), (Lines{{"never closed\tx\n"}}));
    EXPECT_EQ(tabSeparatedCells("a\rb"), (Lines{{"a\rb"}}));
    EXPECT_EQ(tabSeparatedCells(""), Lines{});
}

} // namespace
