#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "c_text.h"

namespace {

int released = 0;

void release_int(void *element)
{
    ++released;
    delete static_cast<int *>(element);
}

class ListAndArray : public testing::Test
{
protected:
    void SetUp() override
    {
        elog_clear();
        released = 0;
    }
};

TEST_F(ListAndArray, AListKeepsItsElementsInOrder)
{
    Tbl *list = newtbl(0);
    ASSERT_NE(list, nullptr);
    std::vector<int> numbers(1000);
    for (size_t i = 0; i < numbers.size(); ++i)
        EXPECT_EQ(pushtbl(list, &numbers[i]), static_cast<int64_t>(i));
    EXPECT_EQ(maxtbl(list), 1000);
    EXPECT_EQ(gettbl(list, 0), &numbers[0]);
    EXPECT_EQ(gettbl(list, 999), &numbers[999]);
    freetbl(list, nullptr);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ListAndArray, OutsideAListThereIsNothing)
{
    Tbl *list = newtbl(5);
    int element = 0;
    pushtbl(list, &element);
    for (const int64_t index : {int64_t(-1), int64_t(1), INT64_MAX, INT64_MIN})
        EXPECT_EQ(gettbl(list, index), nullptr);
    freetbl(list, nullptr);
    EXPECT_EQ(gettbl(nullptr, 0), nullptr);
    EXPECT_EQ(maxtbl(nullptr), 0);
    freetbl(nullptr, release_int);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ListAndArray, PushingOntoNothingIsAnError)
{
    EXPECT_EQ(pushtbl(nullptr, nullptr), -1);
    EXPECT_THAT(log_text(), testing::HasSubstr("pushtbl: expected a list"));
}

TEST_F(ListAndArray, AWildCapacityCostsNothing)
{
    for (const int64_t capacity : {INT64_MAX, INT64_MIN, int64_t(-1)}) {
        Tbl *list = newtbl(capacity);
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(maxtbl(list), 0);
        freetbl(list, nullptr);
    }
}

TEST_F(ListAndArray, FreeingAListReleasesEveryElement)
{
    Tbl *list = newtbl(0);
    for (int i = 0; i < 10; ++i)
        pushtbl(list, new int(i));
    freetbl(list, release_int);
    EXPECT_EQ(released, 10);
}

TEST_F(ListAndArray, AnArrayAnswersWhatWasStored)
{
    Arr *array = newarr();
    int one = 1, two = 2;
    EXPECT_EQ(setarr(array, "a", &one), nullptr);
    EXPECT_EQ(setarr(array, "", &two), nullptr);
    EXPECT_EQ(getarr(array, "a"), &one);
    EXPECT_EQ(getarr(array, ""), &two);
    EXPECT_EQ(getarr(array, "b"), nullptr);
    EXPECT_EQ(setarr(array, "a", &two), &one) << "the value that was replaced";
    EXPECT_EQ(getarr(array, "a"), &two);
    freearr(array, nullptr);
    EXPECT_EQ(elog_count(), 0);
}

TEST_F(ListAndArray, KeysComeInByteOrder)
{
    Arr *array = newarr();
    int value = 0;
    for (const char *key : {"b", "\xC3\xA9", "B", "a", "aa", "~"})
        setarr(array, key, &value);
    Tbl *keys = keysarr(array);
    std::vector<std::string> names;
    for (int64_t i = 0; i < maxtbl(keys); ++i)
        names.emplace_back(static_cast<const char *>(gettbl(keys, i)));
    EXPECT_THAT(names, testing::ElementsAre("B", "a", "aa", "b", "~", "\xC3\xA9"));
    freetbl(keys, nullptr);
    freearr(array, nullptr);
}

TEST_F(ListAndArray, FreeingAnArrayReleasesEveryValue)
{
    Arr *array = newarr();
    setarr(array, "a", new int(1));
    setarr(array, "b", new int(2));
    freearr(array, release_int);
    EXPECT_EQ(released, 2);
}

TEST_F(ListAndArray, ANullArrayOrKeyIsMet)
{
    Arr *array = newarr();
    EXPECT_EQ(setarr(nullptr, "a", nullptr), nullptr);
    EXPECT_EQ(setarr(array, nullptr, nullptr), nullptr);
    EXPECT_EQ(keysarr(nullptr), nullptr);
    EXPECT_EQ(elog_count(), 3);
    EXPECT_EQ(getarr(nullptr, "a"), nullptr);
    EXPECT_EQ(getarr(array, nullptr), nullptr);
    freearr(nullptr, release_int);
    freearr(array, release_int);
    EXPECT_EQ(released, 0);
    EXPECT_EQ(elog_count(), 3);
}

} // namespace
