// HashIndex_test.cpp: the look-up table from a key to an object.
#include "model/HashIndex.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>
#include <vector>

using namespace Velcor::Tavell;

namespace
{

/// Compares a table with a map over random insertions, replacements and removals.
template <class Key, class MakeKey> void compareWithMap(MakeKey makeKey, unsigned seed)
{
    std::vector<int> objects(100);
    HashIndex<Key, int> index;
    std::map<Key, int*> reference;
    std::mt19937 random(seed);
    for (int step = 0; step < 100000; ++step) {
        const Key key = makeKey(static_cast<unsigned>(random() % 3000));
        // First mostly growing, then mostly shrinking.
        const unsigned growth = step < 50000 ? 7 : 3;
        if (random() % 10 < growth) {
            int* object = &objects[random() % objects.size()];
            index.set(key, object);
            reference[key] = object;
        } else {
            ASSERT_EQ(index.erase(key), reference.erase(key) > 0);
        }
        const Key other = makeKey(static_cast<unsigned>(random() % 3000));
        const auto found = reference.find(other);
        ASSERT_EQ(index.find(other), found == reference.end() ? nullptr : found->second);
        ASSERT_EQ(index.size(), reference.size());
    }
    for (unsigned i = 0; i < 3000; ++i) {
        const auto found = reference.find(makeKey(i));
        ASSERT_EQ(index.find(makeKey(i)), found == reference.end() ? nullptr : found->second);
    }
}

}  // namespace

TEST(HashIndex, an_empty_table_holds_nothing)
{
    HashIndex<int, int> index;
    EXPECT_EQ(index.find(0), nullptr);
    EXPECT_FALSE(index.erase(0));
    EXPECT_EQ(index.size(), 0U);
}

TEST(HashIndex, zero_negative_and_null_are_ordinary_keys)
{
    int a = 0;
    int b = 0;
    HashIndex<int, int> numbers;
    numbers.set(0, &a);
    numbers.set(-1, &b);
    EXPECT_EQ(numbers.find(0), &a);
    EXPECT_EQ(numbers.find(-1), &b);
    HashIndex<const int*, int> pointers;
    EXPECT_EQ(pointers.find(nullptr), nullptr);
    pointers.set(nullptr, &a);
    EXPECT_EQ(pointers.find(nullptr), &a);
}

TEST(HashIndex, setting_a_key_again_replaces_its_object)
{
    int a = 0;
    int b = 0;
    HashIndex<int, int> index;
    index.set(5, &a);
    index.set(5, &b);
    EXPECT_EQ(index.find(5), &b);
    EXPECT_EQ(index.size(), 1U);
}

TEST(HashIndex, a_cleared_table_can_be_used_again)
{
    int a = 0;
    HashIndex<int, int> index;
    index.set(5, &a);
    index.clear();
    EXPECT_EQ(index.find(5), nullptr);
    index.set(6, &a);
    EXPECT_EQ(index.find(6), &a);
}

TEST(HashIndex, whole_numbers_are_kept_as_in_a_map)
{
    compareWithMap<int>([](unsigned i) { return static_cast<int>(i) - 1500; }, 1);
}

TEST(HashIndex, pairs_are_kept_as_in_a_map)
{
    compareWithMap<std::pair<int, int>>(
        [](unsigned i) { return std::pair<int, int>(static_cast<int>(i % 50), -static_cast<int>(i / 50)); },
        2);
}

TEST(HashIndex, addresses_are_kept_as_in_a_map)
{
    const std::vector<int> places(3000);
    compareWithMap<const int*>([&places](unsigned i) { return &places[i]; }, 3);
}

TEST(HashIndex, large_numbers_are_kept_as_in_a_map)
{
    compareWithMap<std::uint64_t>([](unsigned i) { return std::uint64_t{i} << 50; }, 4);
}
