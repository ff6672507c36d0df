// ObjectPool_test.cpp: memory of many objects of one kind.
#include "model/ObjectPool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

using namespace Velcor::Tavell;

namespace
{

/// As large as a node, so that a block holds some ninety.
class Item final : public Pooled<Item>
{
public:
    explicit Item(int itsName) : name(itsName)
    {
        if (itsName < 0) throw std::invalid_argument("no name");
    }
    int name;

private:
    [[maybe_unused]] double m_rest[20] = {};
};

using Pool = ObjectPool<Item>;
using Items = std::vector<std::unique_ptr<Item>>;

Items make(Pool& pool, int count)
{
    Items items;
    for (int name = 0; name < count; ++name)
        items.emplace_back(new (pool) Item(name));
    return items;
}

}  // namespace

TEST(ObjectPool, objects_of_many_chunks_lie_apart_and_keep_what_they_hold)
{
    Pool pool;
    const Items items = make(pool, 30000);
    std::set<std::uintptr_t> places;
    for (int name = 0; name < 30000; ++name) {
        const auto& item = items[static_cast<std::size_t>(name)];
        ASSERT_EQ(item->name, name);
        places.insert(reinterpret_cast<std::uintptr_t>(item.get()));
    }
    ASSERT_EQ(places.size(), items.size());
    std::uintptr_t before = 0;
    for (const std::uintptr_t place : places) {
        ASSERT_GE(place - before, sizeof(Item));
        before = place;
    }
}

TEST(ObjectPool, knows_the_addresses_of_its_living_objects_only)
{
    Pool pool;
    Pool other;
    EXPECT_EQ(pool.find(nullptr), nullptr);
    EXPECT_EQ(pool.find(&pool), nullptr) << "an address, and nothing in the pool";
    Items items = make(pool, 200);
    for (const auto& item : items) {
        ASSERT_EQ(pool.find(item.get()), item.get());
        ASSERT_EQ(pool.find(reinterpret_cast<char*>(item.get()) + 1), nullptr) << "inside an object";
        ASSERT_EQ(other.find(item.get()), nullptr);
    }
    const Item* const gone = items[50].get();
    const char* const blockOfFirst = reinterpret_cast<const char*>(items[0].get()) - 1;
    items[50].reset();
    EXPECT_EQ(pool.find(gone), nullptr);
    EXPECT_EQ(pool.find(blockOfFirst), nullptr) << "in the head of a block";
    EXPECT_EQ(pool.find(items[51].get()), items[51].get());
}

TEST(ObjectPool, the_place_of_an_object_that_went_is_used_again)
{
    Pool pool;
    Items items = make(pool, 60);
    const Item* const place = items[7].get();
    items[7].reset();
    items[7].reset(new (pool) Item(7));
    EXPECT_EQ(items[7].get(), place);
}

TEST(ObjectPool, a_constructor_that_throws_leaves_no_object)
{
    Pool pool;
    const Items items = make(pool, 1);
    EXPECT_THROW(delete new (pool) Item(-1), std::invalid_argument);
    Item* const next = reinterpret_cast<Item*>(reinterpret_cast<char*>(items[0].get()) + sizeof(Item));
    EXPECT_EQ(pool.find(next), nullptr);
    const std::unique_ptr<Item> item(new (pool) Item(1));
    EXPECT_EQ(item.get(), next);
}

TEST(ObjectPool, an_emptied_pool_can_be_filled_again)
{
    Pool pool;
    for (int round = 0; round < 3; ++round) {
        const Items items = make(pool, 5000);
        ASSERT_EQ(pool.find(items.back().get()), items.back().get());
    }
}

TEST(ObjectPool, random_creation_and_release_answer_as_a_set_of_addresses)
{
    Pool pool;
    Items items;
    std::set<const Item*> living;
    std::vector<const Item*> seen;
    std::mt19937 random(11);
    for (int step = 0; step < 40000; ++step) {
        // In waves, so that chunks come and go.
        const unsigned growth = step / 5000 % 2 == 0 ? 8 : 1;
        if (items.empty() || random() % 10 < growth) {
            items.emplace_back(new (pool) Item(step));
            living.insert(items.back().get());
            seen.push_back(items.back().get());
        } else {
            const std::size_t which = random() % items.size();
            living.erase(items[which].get());
            std::swap(items[which], items.back());
            items.pop_back();
        }
        const Item* const asked = seen[random() % seen.size()];
        ASSERT_EQ(pool.find(asked) != nullptr, living.count(asked) > 0);
    }
}
