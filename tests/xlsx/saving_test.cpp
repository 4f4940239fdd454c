#include "scratch_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <sys/stat.h>

#include <xlsxdocument.h>

#include "support/file_size_limit.h"

namespace {

const QStringList onlyTheSheet{QStringLiteral("sheet.xlsx")};

bool fill(QXlsx::Document &sheet, int rows)
{
    for (int row = 1; row <= rows; ++row) {
        if (!sheet.write(row, 1, QStringLiteral("the same text in every row"))) {
            return false;
        }
    }
    return true;
}

TEST(Saving, says_why_a_path_cannot_be_written)
{
    const ScratchFolder folder;
    const QXlsx::Document sheet;
    EXPECT_FALSE(sheet.saveAs(folder.path(QStringLiteral("no such folder/sheet.xlsx"))));
    EXPECT_TRUE(sheet.errorText().contains(QLatin1String("No such file or directory")));
    EXPECT_FALSE(sheet.saveAs(QFileInfo(folder.path()).path()));
    EXPECT_TRUE(sheet.errorText().contains(QLatin1String("Is a directory")));
    EXPECT_FALSE(sheet.saveAs(QStringLiteral("/dev/null")));
    EXPECT_FALSE(sheet.saveAs(QString()));
    EXPECT_EQ(folder.names(), QStringList());
}

TEST(Saving, replaces_a_file_and_keeps_its_mode)
{
    const ScratchFolder folder;
    folder.put(QStringLiteral("sheet.xlsx"), "old");
    ASSERT_EQ(chmod(folder.path().toLocal8Bit().constData(), 0640), 0);
    EXPECT_TRUE(QXlsx::Document().saveAs(folder.path()));
    EXPECT_TRUE(folder.contents().startsWith("PK"));
    struct stat status {
    };
    ASSERT_EQ(stat(folder.path().toLocal8Bit().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST(Saving, gives_a_new_file_the_mode_that_new_files_have)
{
    const ScratchFolder folder;
    const mode_t before = umask(027);
    EXPECT_TRUE(QXlsx::Document().saveAs(folder.path()));
    umask(before);
    struct stat status {
    };
    ASSERT_EQ(stat(folder.path().toLocal8Bit().constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST(Saving, writes_through_a_symbolic_link)
{
    const ScratchFolder folder;
    folder.put(QStringLiteral("sheet.xlsx"), "old");
    ASSERT_TRUE(QFile::link(folder.path(), folder.path(QStringLiteral("link.xlsx"))));
    EXPECT_TRUE(QXlsx::Document().saveAs(folder.path(QStringLiteral("link.xlsx"))));
    EXPECT_TRUE(QFileInfo(folder.path(QStringLiteral("link.xlsx"))).isSymLink());
    EXPECT_TRUE(folder.contents().startsWith("PK"));
}

// The archive would fit: its rows, on the way there, do not.
TEST(Saving, notices_rows_that_the_temporary_folder_did_not_take)
{
    const ScratchFolder folder;
    folder.put(QStringLiteral("sheet.xlsx"), "old");
    QXlsx::Document sheet;
    ASSERT_TRUE(fill(sheet, 10000));
    ASSERT_TRUE(sheet.saveAs(folder.path(QStringLiteral("whole.xlsx"))));
    const rlim_t limit = 600000; // more than the spooled cells, less than the rows in the file's form
    ASSERT_LT(rlim_t(folder.contents(QStringLiteral("whole.xlsx")).size()), limit);
    ASSERT_TRUE(QFile::remove(folder.path(QStringLiteral("whole.xlsx"))));
    const FileSizeLimit full(limit);
    EXPECT_FALSE(sheet.saveAs(folder.path()));
    EXPECT_TRUE(sheet.errorText().contains(QLatin1String("temporary folder")))
        << sheet.errorText().toStdString();
    EXPECT_EQ(folder.contents(), "old");
    EXPECT_EQ(folder.names(), onlyTheSheet);
}

TEST(Saving, leaves_the_old_file_when_the_archive_does_not_fit)
{
    const ScratchFolder folder;
    folder.put(QStringLiteral("sheet.xlsx"), "old");
    QXlsx::Document sheet;
    ASSERT_TRUE(sheet.write(1, 1, 1));
    const FileSizeLimit full(2500);
    EXPECT_FALSE(sheet.saveAs(folder.path()));
    EXPECT_FALSE(sheet.errorText().isEmpty());
    EXPECT_EQ(folder.contents(), "old");
    EXPECT_EQ(folder.names(), onlyTheSheet);
}

TEST(Saving, fails_after_cells_were_lost_on_a_full_disk)
{
    const ScratchFolder folder;
    QXlsx::Document sheet;
    {
        const FileSizeLimit full(1 << 20);
        EXPECT_FALSE(fill(sheet, 200000));
        EXPECT_TRUE(sheet.errorText().contains(QLatin1String("spool file")))
            << sheet.errorText().toStdString();
    }
    EXPECT_FALSE(sheet.saveAs(folder.path()));
    EXPECT_EQ(folder.names(), QStringList());
}

// ---- Watched from another thread ------------------------------------------------------------------------

class WatchedSaving : public testing::Test
{
protected:
    WatchedSaving()
    {
        for (int row = 1; row <= 200000; ++row) {
            sheet.write(row, 1, row * 0.25);
            sheet.write(row, 2, QStringLiteral("row %1").arg(row));
            sheet.write(row, 3, row % 7);
        }
    }

    const ScratchFolder folder;
    QXlsx::Document sheet;
};

TEST_F(WatchedSaving, tells_how_far_it_is)
{
    std::vector<double> told;
    std::atomic<bool> isDone = false;
    std::thread watcher([&] {
        while (!isDone) {
            told.push_back(sheet.savedFraction());
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const bool isSaved = sheet.saveAs(folder.path());
    isDone = true;
    watcher.join();
    ASSERT_TRUE(isSaved) << sheet.errorText().toStdString();
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    std::vector<double> different = told;
    different.erase(std::unique(different.begin(), different.end()), different.end());
    EXPECT_GT(different.size(), 10U);
    EXPECT_LT(told.front(), 0.3);
    EXPECT_GT(told.back(), 0.85);
    EXPECT_LE(told.back(), 1);
    // Half of the time is not spent at one place.
    const auto half = std::lower_bound(told.begin(), told.end(), 0.5) - told.begin();
    EXPECT_GT(half, static_cast<std::ptrdiff_t>(told.size() / 8));
    EXPECT_LT(half, static_cast<std::ptrdiff_t>(told.size() * 7 / 8));
}

TEST_F(WatchedSaving, can_be_stopped_and_done_again)
{
    std::thread user([&] {
        while (sheet.savedFraction() == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        sheet.stopSaving();
    });
    EXPECT_FALSE(sheet.saveAs(folder.path()));
    user.join();
    EXPECT_EQ(sheet.errorText(), QStringLiteral("stopped"));
    EXPECT_EQ(folder.names(), QStringList());
    EXPECT_TRUE(sheet.saveAs(folder.path())) << sheet.errorText().toStdString();
}

} // namespace
