// IdIndex_test.cpp: the look-up table from whole numbers to objects.
#include "model/IdIndex.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <map>
#include <random>
#include <vector>

using namespace Velcor::Tavell;

TEST(IdIndex, an_empty_table_holds_nothing)
{
    IdIndex<int> index;
    EXPECT_EQ(index.find(0), nullptr);
    EXPECT_FALSE(index.erase(1));
    EXPECT_EQ(index.size(), 0U);
}

TEST(IdIndex, zero_negative_and_largest_numbers_are_ordinary_keys)
{
    int a = 0;
    int b = 0;
    constexpr int kLargest = std::numeric_limits<int>::max();
    constexpr int kLowest = std::numeric_limits<int>::min();
    IdIndex<int> index;
    index.set(0, &a);
    index.set(-1, &b);
    index.set(kLargest, &a);
    index.set(kLowest, &b);
    EXPECT_EQ(index.find(0), &a);
    EXPECT_EQ(index.find(-1), &b);
    EXPECT_EQ(index.find(kLargest), &a);
    EXPECT_EQ(index.find(kLowest), &b);
    EXPECT_EQ(index.size(), 4U);
    index.clear();
    EXPECT_EQ(index.find(0), nullptr);
    EXPECT_EQ(index.size(), 0U);
}

TEST(IdIndex, setting_a_number_again_replaces_its_object)
{
    int a = 0;
    int b = 0;
    for (const int id : {5, 5000}) {
        IdIndex<int> index;
        index.set(id, &a);
        index.set(id, &b);
        EXPECT_EQ(index.find(id), &b);
        EXPECT_EQ(index.size(), 1U);
    }
}

// Numbers far above the count are hashed at first; as lower ones come, the list grows over them.
TEST(IdIndex, numbers_counted_down_are_all_found)
{
    constexpr int kCount = 3000;
    std::vector<int> objects(kCount);
    IdIndex<int> index;
    for (int id = kCount; id-- > 0;) {
        index.set(id, &objects[static_cast<std::size_t>(id)]);
        ASSERT_EQ(index.size(), static_cast<std::size_t>(kCount - id));
        ASSERT_EQ(index.find(kCount - 1), &objects.back());
    }
    for (int id = 0; id < kCount; ++id)
        ASSERT_EQ(index.find(id), &objects[static_cast<std::size_t>(id)]);
}

TEST(IdIndex, random_changes_answer_as_a_map_does)
{
    for (const int spread : {50, 400, 3000, 100000}) {
        std::vector<int> objects(100);
        IdIndex<int> index;
        std::map<int, int*> reference;
        std::mt19937 random(3);
        const auto anyId = [&] { return static_cast<int>(random() % static_cast<unsigned>(spread)) - 20; };
        for (int step = 0; step < 20000; ++step) {
            const int id = anyId();
            if (random() % 10 < (step < 10000 ? 7U : 3U)) {
                int* const object = &objects[random() % objects.size()];
                index.set(id, object);
                reference[id] = object;
            } else {
                ASSERT_EQ(index.erase(id), reference.erase(id) > 0);
            }
            const int other = anyId();
            const auto found = reference.find(other);
            ASSERT_EQ(index.find(other), found == reference.end() ? nullptr : found->second);
            ASSERT_EQ(index.size(), reference.size());
        }
    }
}
