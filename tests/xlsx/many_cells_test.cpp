#include "scratch_folder.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <xlsxdocument.h>

namespace {

long peakMebibytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

#ifdef __SANITIZE_ADDRESS__
constexpr long allowedGrowth = 48 + 256; // freed memory stays in quarantine
#else
constexpr long allowedGrowth = 48;
#endif

// In memory these cells are well over a hundred mebibytes.
TEST(ManyCells, are_written_column_by_column_in_bounded_memory)
{
    constexpr int rows = 100000;
    constexpr int columns = 25;
    const ScratchFolder folder;
    const long before = peakMebibytes();
    QXlsx::Document sheet;
    for (int column = 1; column <= columns; ++column) {
        for (int row = 1; row <= rows; ++row) {
            const bool text = column % 5 == 0;
            ASSERT_TRUE(sheet.write(row, column,
                                    text ? QVariant(QStringLiteral("text of row %1").arg(row))
                                         : QVariant(row * 0.5)));
        }
    }
    ASSERT_TRUE(sheet.saveAs(folder.path())) << sheet.errorText().toStdString();
    EXPECT_LT(peakMebibytes() - before, allowedGrowth);
    EXPECT_GT(folder.contents().size(), 1 << 20);
}

} // namespace
