#include "cell_spool.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

using namespace QXlsx;

namespace {

using Place = std::pair<std::uint32_t, std::uint16_t>;

SpooledCell textCell(std::uint32_t row, std::uint16_t column, const QByteArray &text)
{
    return {row, column, 0, {CellKind::Text, 0, text}};
}

std::vector<std::pair<Place, QByteArray>> readAll(CellSpool &spool)
{
    std::vector<std::pair<Place, QByteArray>> cells;
    spool.readInRowOrder([&](const SpooledCell &cell) {
        cells.push_back({{cell.row, cell.column}, cell.value.text});
    });
    return cells;
}

TEST(CellSpool, of_nothing_reads_nothing)
{
    CellSpool spool;
    EXPECT_TRUE(readAll(spool).empty());
}

// Enough text for several runs, in random order with places written again, against an ordered map.
TEST(CellSpool, reads_what_was_last_written_to_each_place_in_row_order)
{
    std::mt19937 random(20180207);
    CellSpool spool;
    std::map<Place, QByteArray> expected;
    for (int written = 0; written < 60000; ++written) {
        const Place place(random() % 2000, std::uint16_t(random() % 16));
        const QByteArray text = QByteArray::number(written) + QByteArray(int(random() % 500), 'x');
        spool.append(textCell(place.first, place.second, text));
        expected[place] = text;
    }
    const std::vector<std::pair<Place, QByteArray>> ordered(expected.begin(), expected.end());
    EXPECT_EQ(readAll(spool), ordered);
    EXPECT_EQ(readAll(spool), ordered) << "reading leaves the spool as it was";
}

TEST(CellSpool, takes_cells_after_it_was_read)
{
    CellSpool spool;
    spool.append(textCell(5, 1, "first"));
    EXPECT_EQ(readAll(spool).size(), 1u);
    spool.append(textCell(5, 1, "second"));
    spool.append(textCell(4, 9, "before"));
    const std::vector<std::pair<Place, QByteArray>> expected{{{4, 9}, "before"}, {{5, 1}, "second"}};
    EXPECT_EQ(readAll(spool), expected);
}

TEST(CellSpool, keeps_texts_longer_than_a_read_buffer)
{
    CellSpool spool;
    const QByteArray text(longestCellText * 3, 'x');
    for (std::uint32_t row = 0; row < 2000; ++row) { // over forty runs
        spool.append(textCell(row, 0, text));
    }
    std::uint32_t rows = 0;
    spool.readInRowOrder([&](const SpooledCell &cell) {
        EXPECT_EQ(cell.row, rows++);
        EXPECT_EQ(cell.value.text, text);
    });
    EXPECT_EQ(rows, 2000u);
}

TEST(CellSpool, keeps_kinds_numbers_and_formats)
{
    CellSpool spool;
    spool.append({7, 3, 12, {CellKind::DateTime, 43138.125, {}}});
    spool.append({7, 2, 0, {}});
    std::vector<SpooledCell> cells;
    spool.readInRowOrder([&](const SpooledCell &cell) { cells.push_back(cell); });
    ASSERT_EQ(cells.size(), 2u);
    EXPECT_EQ(cells[0].value.kind, CellKind::Blank);
    EXPECT_EQ(cells[1].value.kind, CellKind::DateTime);
    EXPECT_EQ(cells[1].value.number, 43138.125);
    EXPECT_EQ(cells[1].format, 12);
}

} // namespace
