// FirstHolderIndex_test.cpp: the oldest holder of a key.
#include "model/FirstHolderIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace Velcor::Tavell;

namespace
{

struct Holder {
    std::uint64_t age = 0;
    int key = -1;  // -1: not filed
    std::uint64_t sequence() const { return age; }
};

}  // namespace

TEST(FirstHolderIndex, finds_the_oldest_whatever_the_order_of_filing)
{
    Holder oldest{1};
    Holder middle{2};
    Holder youngest{3};
    FirstHolderIndex<int, Holder> index;
    index.insert(7, middle);
    EXPECT_EQ(index.find(7), &middle);
    index.insert(7, youngest);
    EXPECT_EQ(index.find(7), &middle);
    index.insert(7, oldest);
    EXPECT_EQ(index.find(7), &oldest);
    EXPECT_EQ(index.find(8), nullptr);
}

TEST(FirstHolderIndex, the_next_oldest_follows_when_the_oldest_goes)
{
    Holder a{1};
    Holder b{2};
    Holder c{3};
    FirstHolderIndex<int, Holder> index;
    for (Holder* holder : {&c, &b, &a})
        index.insert(7, *holder);
    index.erase(7, a);
    EXPECT_EQ(index.find(7), &b);
    index.erase(7, c);
    EXPECT_EQ(index.find(7), &b);
    index.erase(7, b);
    EXPECT_EQ(index.find(7), nullptr);
}

TEST(FirstHolderIndex, random_filing_answers_as_a_walk_in_order_of_age)
{
    std::vector<Holder> holders(40);
    for (std::size_t i = 0; i < holders.size(); ++i)
        holders[i].age = 10 * i;
    FirstHolderIndex<int, Holder> index;
    std::mt19937 random(4);
    for (int step = 0; step < 20000; ++step) {
        Holder& holder = holders[random() % holders.size()];
        if (holder.key >= 0) index.erase(holder.key, holder);
        holder.key = static_cast<int>(random() % 8) - 1;
        if (holder.key >= 0) index.insert(holder.key, holder);

        for (int key = 0; key < 7; ++key) {
            const auto first =
                std::find_if(holders.begin(), holders.end(), [key](const Holder& h) { return h.key == key; });
            ASSERT_EQ(index.find(key), first == holders.end() ? nullptr : &*first);
        }
    }
}
