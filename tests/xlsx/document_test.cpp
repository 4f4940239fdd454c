#include "scratch_folder.h"

#include <QDateTime>
#include <QPoint>
#include <QSize>

#include <gtest/gtest.h>

#include <cmath>

#include <xlsxdocument.h>

namespace {

const QByteArray archiveMark("PK\x03\x04", 4);

TEST(Document, refuses_places_outside_the_sheet_and_says_so)
{
    QXlsx::Document sheet;
    EXPECT_FALSE(sheet.write(0, 1, 1));
    EXPECT_FALSE(sheet.write(-1, 1, 1));
    EXPECT_FALSE(sheet.write(1048577, 1, 1));
    EXPECT_EQ(sheet.errorText(), QStringLiteral("a sheet has no row 1048577"));
    EXPECT_FALSE(sheet.write(1, 0, 1));
    EXPECT_FALSE(sheet.write(1, 16385, 1));
    EXPECT_EQ(sheet.errorText(), QStringLiteral("a sheet has no column 16385"));
    EXPECT_TRUE(sheet.write(1048576, 16384, 1));
}

TEST(Document, refuses_text_longer_than_a_cell_and_keeps_the_cell_savable)
{
    const ScratchFolder folder;
    QXlsx::Document sheet;
    EXPECT_TRUE(sheet.write(1, 1, QString(32767, QLatin1Char('x'))));
    EXPECT_FALSE(sheet.write(2, 1, QString(32768, QLatin1Char('x'))));
    EXPECT_TRUE(sheet.errorText().contains(QLatin1String("32767")));
    EXPECT_FALSE(sheet.write(2, 1, QString(4682, QChar(1)))) << "each counts as the seven of its escape";
    EXPECT_TRUE(sheet.write(2, 1, QString(4681, QChar(1))));
    EXPECT_TRUE(sheet.saveAs(folder.path())) << sheet.errorText().toStdString();
}

TEST(Document, refuses_number_formats_that_would_be_cut)
{
    QXlsx::Document sheet;
    QXlsx::Format format;
    format.setNumberFormat(QString(127, QLatin1Char('0')));
    EXPECT_TRUE(sheet.write(1, 1, 5, format));
    format.setNumberFormat(QString(128, QLatin1Char('0')));
    EXPECT_FALSE(sheet.write(1, 1, 5, format));
    EXPECT_FALSE(sheet.errorText().isEmpty());
}

TEST(Document, refuses_values_without_a_text_form)
{
    QXlsx::Document sheet;
    EXPECT_FALSE(sheet.write(1, 1, QPoint(1, 2)));
    EXPECT_TRUE(sheet.errorText().contains(QLatin1String("QPoint")));
}

TEST(Document, refuses_widths_that_no_column_has)
{
    QXlsx::Document sheet;
    EXPECT_TRUE(sheet.setColumnWidth(1, 0));
    EXPECT_TRUE(sheet.setColumnWidth(16384, 255));
    EXPECT_FALSE(sheet.setColumnWidth(0, 10));
    EXPECT_FALSE(sheet.setColumnWidth(16385, 10));
    EXPECT_FALSE(sheet.setColumnWidth(1, -1));
    EXPECT_FALSE(sheet.setColumnWidth(1, 255.5));
    EXPECT_FALSE(sheet.setColumnWidth(1, std::nan("")));
}

TEST(Document, saves_an_empty_sheet)
{
    const ScratchFolder folder;
    EXPECT_TRUE(QXlsx::Document().saveAs(folder.path()));
    EXPECT_TRUE(folder.contents().startsWith(archiveMark));
    EXPECT_EQ(folder.names(), QStringList{QStringLiteral("sheet.xlsx")});
}

TEST(Document, may_be_written_on_and_saved_again)
{
    const ScratchFolder folder;
    QXlsx::Document sheet;
    EXPECT_TRUE(sheet.write(1, 1, 1));
    EXPECT_TRUE(sheet.saveAs(folder.path()));
    EXPECT_TRUE(sheet.write(2, 1, QStringLiteral("a row that the first file has not")));
    EXPECT_TRUE(sheet.saveAs(folder.path(QStringLiteral("second.xlsx"))));
    EXPECT_GT(folder.contents(QStringLiteral("second.xlsx")).size(), folder.contents().size());
}

} // namespace
