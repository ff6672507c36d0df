// OrderedObjects_test.cpp: the owning list in order of creation.
#include "model/OrderedObjects.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace Velcor::Tavell;

namespace
{

class Item
{
public:
    explicit Item(int itsName, std::vector<int>* deaths = nullptr) : name(itsName), m_deaths(deaths) {}
    ~Item()
    {
        if (m_deaths != nullptr) m_deaths->push_back(name);
    }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;

    std::uint64_t sequence() const { return m_sequence; }
    void setSequence(std::uint64_t sequence) { m_sequence = sequence; }
    const int name;

private:
    std::uint64_t m_sequence = 0;
    std::vector<int>* m_deaths;
};

using List = OrderedObjects<Item>;

std::vector<int> namesByWalk(const List& list)
{
    std::vector<int> names;
    for (const Item* item : list)
        names.push_back(item->name);
    return names;
}

std::vector<int> namesByPosition(List& list)
{
    std::vector<int> names;
    for (std::size_t i = 0; i < list.size(); ++i) {
        names.push_back(list.at(i)->name);
        EXPECT_EQ(list.positionOf(*list.at(i)), i);
    }
    EXPECT_EQ(list.at(list.size()), nullptr);
    return names;
}

/// Releases `count` of `count` items one by one, at positions that pick() chooses, and looks at the list meanwhile.
template <class Pick> void releaseAll(int count, Pick pick)
{
    List list;
    std::vector<int> reference;
    for (int name = 0; name < count; ++name) {
        list.append(std::make_unique<Item>(name));
        reference.push_back(name);
    }
    while (!reference.empty()) {
        const std::size_t position = pick(reference.size());
        ASSERT_EQ(list.at(position)->name, reference[position]);
        list.release(*list.at(position));
        reference.erase(reference.begin() + static_cast<std::ptrdiff_t>(position));
        ASSERT_EQ(list.size(), reference.size());
        if (reference.size() % 17 == 0) {
            ASSERT_EQ(namesByPosition(list), reference);
            ASSERT_EQ(namesByWalk(list), reference);
        }
    }
    EXPECT_EQ(list.at(0), nullptr);
}

}  // namespace

TEST(OrderedObjects, an_empty_list_has_no_position_and_nothing_to_walk)
{
    const List list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.at(0), nullptr);
    EXPECT_EQ(list.at(static_cast<std::size_t>(-1)), nullptr);
    EXPECT_EQ(list.begin(), list.end());
}

TEST(OrderedObjects, sequence_numbers_grow_and_are_never_used_again)
{
    List list;
    const std::uint64_t first = list.append(std::make_unique<Item>(0)).sequence();
    Item& item = list.append(std::make_unique<Item>(1));
    const std::uint64_t second = item.sequence();
    list.release(item);
    const std::uint64_t third = list.append(std::make_unique<Item>(2)).sequence();
    EXPECT_LT(first, second);
    EXPECT_LT(second, third);
}

TEST(OrderedObjects, a_released_object_goes_to_the_caller)
{
    std::vector<int> deaths;
    List list;
    Item& item = list.append(std::make_unique<Item>(5, &deaths));
    {
        const std::unique_ptr<Item> released = list.release(item);
        EXPECT_EQ(released.get(), &item);
        EXPECT_TRUE(deaths.empty());
        EXPECT_TRUE(list.empty());
    }
    EXPECT_EQ(deaths, std::vector<int>{5});
}

TEST(OrderedObjects, clearing_destroys_the_oldest_first)
{
    std::vector<int> deaths;
    List list;
    for (int name = 0; name < 4; ++name)
        list.append(std::make_unique<Item>(name, &deaths));
    list.clear();
    EXPECT_EQ(deaths, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_TRUE(list.empty());
    list.append(std::make_unique<Item>(9));
    EXPECT_EQ(namesByPosition(list), std::vector<int>{9});
}

TEST(OrderedObjects, positions_stay_right_while_all_go_from_the_front)
{
    releaseAll(500, [](std::size_t) { return std::size_t{0}; });
}

TEST(OrderedObjects, positions_stay_right_while_all_go_from_the_back)
{
    releaseAll(500, [](std::size_t size) { return size - 1; });
}

TEST(OrderedObjects, positions_stay_right_while_all_go_at_random)
{
    std::mt19937 random(6);
    releaseAll(1000, [&random](std::size_t size) { return random() % size; });
}

TEST(OrderedObjects, random_appending_and_releasing_answers_as_a_vector)
{
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        List list;
        std::vector<int> reference;
        for (int step = 0; step < 400; ++step) {
            if (reference.empty() || random() % 5 < 3) {
                list.append(std::make_unique<Item>(step));
                reference.push_back(step);
            } else {
                const std::size_t position = random() % reference.size();
                list.release(*list.at(position));
                reference.erase(reference.begin() + static_cast<std::ptrdiff_t>(position));
            }
            if (random() % 4 == 0) {
                ASSERT_EQ(namesByPosition(list), reference);
            }
        }
        ASSERT_EQ(namesByWalk(list), reference);
    }
}
