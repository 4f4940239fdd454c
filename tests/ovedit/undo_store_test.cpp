#include "undo_store.h"

#include <random>

#include <gtest/gtest.h>

namespace {

TEST(UndoStore, givesBackWhatItKeepsInMemoryAndInAFile)
{
    UndoStore store;
    std::vector<std::pair<qint64, QByteArray>> kept;
    std::mt19937 random(3);
    for (int i = 0; i < 400; ++i) {
        QByteArray bytes(static_cast<int>(random() % 20000), '\0');
        for (char &byte : bytes) {
            byte = static_cast<char>(random());
        }
        kept.emplace_back(store.append(bytes.constData(), bytes.size()), bytes);
        ASSERT_GE(kept.back().first, 0);
        ASSERT_EQ(store.isInFile(), store.size() > UndoStore::bytesInMemory);
    }
    ASSERT_TRUE(store.isInFile());
    for (const auto &[offset, bytes] : kept) {
        ASSERT_EQ(store.read(offset, bytes.size()), bytes);
    }
    EXPECT_EQ(store.read(store.size() - 1, 2), QByteArray()) << "there is no more";
}

TEST(UndoStore, saysWhenThereIsNoRoom)
{
    UndoStore store("/nowhere/at/all");
    const QByteArray bytes(UndoStore::bytesInMemory, 'x');
    EXPECT_EQ(store.append(bytes.constData(), bytes.size()), 0);
    EXPECT_EQ(store.append("y", 1), -1);
    EXPECT_FALSE(store.error().isEmpty());
    EXPECT_EQ(store.append("z", 1), -1) << "nothing is kept behind a gap";
    EXPECT_EQ(store.read(0, 1), "x");
}

} // namespace
