#include "scratch_folder.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <xlsxdocument.h>

#ifdef __SANITIZE_ADDRESS__
// The sanitizer's own; its headers are not installed everywhere.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

#ifdef __SANITIZE_ADDRESS__
// The peak is that of the sanitizer, which keeps what is freed: what is in use tells whether cells stay in
// memory.
long usedMebibytes()
{
    return static_cast<long>(__sanitizer_get_current_allocated_bytes() >> 20);
}
#else
// At the peak.
long usedMebibytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}
#endif

constexpr long allowedGrowth = 48;

// In memory these cells are well over a hundred mebibytes.
TEST(ManyCells, are_written_column_by_column_in_bounded_memory)
{
    constexpr int rows = 100000;
    constexpr int columns = 25;
    const ScratchFolder folder;
    const long before = usedMebibytes();
    QXlsx::Document sheet;
    for (int column = 1; column <= columns; ++column) {
        for (int row = 1; row <= rows; ++row) {
            const bool text = column % 5 == 0;
            ASSERT_TRUE(sheet.write(row, column,
                                    text ? QVariant(QStringLiteral("text of row %1").arg(row))
                                         : QVariant(row * 0.5)));
        }
    }
    EXPECT_LT(usedMebibytes() - before, allowedGrowth);
    ASSERT_TRUE(sheet.saveAs(folder.path())) << sheet.errorText().toStdString();
    EXPECT_LT(usedMebibytes() - before, allowedGrowth);
    EXPECT_GT(folder.contents().size(), 1 << 20);
}

} // namespace
