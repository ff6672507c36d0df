// Properties_test.cpp: storage of property values.
#include "model/Properties.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "model/property_ids.h"

using namespace Velcor::Tavell;

namespace
{

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

class CountingListener final : public IdentifierListener
{
public:
    void identifiersChanged() override { ++calls; }
    int calls = 0;
};

std::string textAt(Properties& properties, int id)
{
    return properties.GetStringValue(static_cast<std::size_t>(properties.GetIndex(id)));
}

}  // namespace

TEST(Properties, positions_count_in_ascending_order_of_id)
{
    Properties properties;
    properties.setNumber(2003, 3.0);
    properties.setNumber(1010, 1.0);
    properties.setText(2001, "2.5");
    EXPECT_EQ(properties.GetSize(), 3);
    EXPECT_EQ(properties.GetProp(0), 1010);
    EXPECT_EQ(properties.GetProp(1), 2001);
    EXPECT_EQ(properties.GetProp(2), 2003);
    EXPECT_STREQ(properties.GetName(0), "__element_flow_rate");
    EXPECT_EQ(properties.GetValue(1), 2.5);
    EXPECT_EQ(properties.GetIndex(2003), 2);
    EXPECT_EQ(properties.GetIndex(2002), -1);
}

TEST(Properties, positions_out_of_range_have_neutral_answers)
{
    Properties properties;
    properties.setNumber(2001, 3.0);
    for (const std::size_t position :
         {static_cast<std::size_t>(properties.GetSize()), static_cast<std::size_t>(-1)}) {
        EXPECT_EQ(properties.GetProp(position), -1);
        EXPECT_EQ(properties.GetValue(position), 0.0);
        EXPECT_STREQ(properties.GetName(position), "");
        EXPECT_EQ(properties.GetStringValue(position), nullptr);
    }
}

TEST(Properties, an_id_without_a_name_is_listed_without_one)
{
    Properties properties;
    properties.setNumber(1007, 1.0);
    properties.setNumber(-1, 2.0);
    EXPECT_EQ(properties.GetProp(0), -1);
    EXPECT_STREQ(properties.GetName(0), "");
    EXPECT_STREQ(properties.GetName(1), "");
}

TEST(Properties, a_number_has_the_text_of_20_digits_and_reads_back_exactly)
{
    Properties properties;
    properties.setNumber(2001, 0.1);
    EXPECT_STREQ(properties.GetStringValue(0), "0.10000000000000000555");
    EXPECT_EQ(properties.GetValue(0), 0.1);
    EXPECT_EQ(properties.text(2001), "0.10000000000000000555");
}

TEST(Properties, the_pointer_to_a_text_holds_until_the_value_changes)
{
    Properties properties;
    properties.setNumber(2001, 0.5);
    const char* text = properties.GetStringValue(0);
    properties.setNumber(2000, 1.0);
    properties.setNumber(2002, 2.0);
    properties.setNumber(2001, 0.5);
    EXPECT_EQ(properties.GetStringValue(1), text);
    EXPECT_STREQ(text, "0.5");
    properties.setNumber(2001, 0.25);
    EXPECT_STREQ(properties.GetStringValue(1), "0.25");
}

TEST(Properties, storing_tells_whether_the_text_changed)
{
    Properties properties;
    EXPECT_TRUE(properties.setNumber(2001, 1.0));
    EXPECT_FALSE(properties.setNumber(2001, 1.0));
    EXPECT_TRUE(properties.setNumber(2001, 0.0));
    EXPECT_TRUE(properties.setNumber(2001, -0.0)) << "0 and -0 are different texts";
    EXPECT_TRUE(properties.setNumber(2001, kNan));
    EXPECT_FALSE(properties.setNumber(2001, kNan));
    EXPECT_TRUE(properties.setNumber(2001, -kNan));
}

TEST(Properties, a_number_equals_a_stored_text_when_the_texts_are_equal)
{
    Properties properties;
    EXPECT_TRUE(properties.setText(2001, "0.5"));
    EXPECT_FALSE(properties.setNumber(2001, 0.5));
    EXPECT_TRUE(properties.setText(2001, "0.50"));
    EXPECT_TRUE(properties.setNumber(2001, 0.5)) << "0.50 is another text than 0.5";
    EXPECT_FALSE(properties.setText(2001, "0.5"));
    EXPECT_TRUE(properties.setText(2001, "abc"));
    EXPECT_TRUE(properties.setNumber(2001, 0.5));
    EXPECT_EQ(textAt(properties, 2001), "0.5");
}

TEST(Properties, an_empty_text_counts_as_changed_whenever_it_is_followed)
{
    Properties properties;
    EXPECT_TRUE(properties.setText(2001, ""));
    EXPECT_TRUE(properties.setText(2001, ""));
    EXPECT_EQ(textAt(properties, 2001), "");
    EXPECT_TRUE(properties.has(2001));
}

TEST(Properties, texts_are_set_by_name_in_any_letter_case)
{
    Properties properties;
    EXPECT_TRUE(properties.SetStringPropertyByName("NODE_x", "7 m"));
    EXPECT_TRUE(properties.SetStringPropertyByName("node_x", "7 m")) << "true whether or not it changed";
    EXPECT_EQ(textAt(properties, 2001), "7 m");
    EXPECT_EQ(properties.number(2001), 7.0);
}

TEST(Properties, unknown_names_and_null_texts_store_nothing)
{
    Properties properties;
    EXPECT_FALSE(properties.SetStringPropertyByName("node_w", "1"));
    EXPECT_FALSE(properties.SetStringPropertyByName("", "1"));
    EXPECT_FALSE(properties.SetStringPropertyByName(nullptr, "1"));
    EXPECT_FALSE(properties.SetStringPropertyByName("node_x", nullptr));
    EXPECT_EQ(properties.GetSize(), 0);
}

TEST(Properties, any_named_property_can_be_set_as_text_whatever_the_object)
{
    Properties properties;
    EXPECT_TRUE(properties.SetStringPropertyByName("fluid_density", "900"));
    EXPECT_TRUE(properties.SetStringPropertyByName("element_id", "4"));
    EXPECT_EQ(properties.GetSize(), 2);
}

TEST(Properties, a_text_of_the_set_itself_can_be_stored_again)
{
    Properties properties;
    properties.setText(2001, "12345678901234567890 and more than fits into a short string");
    properties.SetStringPropertyByName("node_x", properties.GetStringValue(0) + 5);
    EXPECT_EQ(textAt(properties, 2001), "678901234567890 and more than fits into a short string");
    properties.SetStringPropertyByName("node_y", properties.GetStringValue(0));
    EXPECT_EQ(textAt(properties, 2002), textAt(properties, 2001));
}

TEST(Properties, an_unreadable_text_throws_when_it_is_read_and_not_when_it_is_stored)
{
    Properties properties;
    properties.setText(2001, "abc");
    properties.setText(2002, "1e999");
    EXPECT_THROW(properties.GetValue(0), std::invalid_argument);
    EXPECT_THROW(properties.GetValue(1), std::out_of_range);
    EXPECT_THROW(static_cast<void>(properties.number(2001)), std::invalid_argument);
    EXPECT_FALSE(properties.readableNumber(2001).has_value());
    EXPECT_FALSE(properties.readableNumber(2003).has_value());
    EXPECT_EQ(textAt(properties, 2001), "abc");
    properties.setNumber(2001, 3.0);
    EXPECT_EQ(properties.number(2001), 3.0);
    EXPECT_EQ(properties.readableNumber(2001), 3.0);
}

TEST(Properties, an_absent_property_reads_zero_and_never_its_fallback)
{
    const Properties properties;
    EXPECT_FALSE(properties.has(1016));
    EXPECT_EQ(properties.number(1016), 0.0);
    EXPECT_EQ(properties.text(1016), "");
}

TEST(Properties, a_removed_property_is_gone_with_its_text)
{
    Properties properties;
    properties.setText(2001, "abc");
    EXPECT_TRUE(properties.remove(2001));
    EXPECT_FALSE(properties.remove(2001));
    EXPECT_EQ(properties.GetSize(), 0);
    properties.setNumber(2001, 2.0);
    EXPECT_EQ(textAt(properties, 2001), "2");
}

TEST(Properties, meta_string_is_empty_at_first_and_null_counts_as_empty)
{
    Properties properties;
    EXPECT_STREQ(properties.GetMeta(), "");
    EXPECT_FALSE(properties.setMeta(nullptr));
    EXPECT_TRUE(properties.setMeta("pipe 7"));
    EXPECT_FALSE(properties.setMeta("pipe 7"));
    EXPECT_STREQ(properties.GetMeta(), "pipe 7");
    EXPECT_TRUE(properties.setMeta(nullptr));
    EXPECT_STREQ(properties.GetMeta(), "");
}

TEST(Properties, a_copy_is_whole_and_independent)
{
    Properties from;
    from.setNumber(2001, 0.1);
    from.setText(2002, "abc");
    from.setMeta("origin");
    Properties to;
    to.setNumber(2009, 1.0);
    to.copyFrom(from);
    from.setText(2002, "xyz");
    EXPECT_EQ(to.GetSize(), 2);
    EXPECT_EQ(textAt(to, 2001), "0.10000000000000000555");
    EXPECT_EQ(textAt(to, 2002), "abc");
    EXPECT_THROW(to.GetValue(1), std::invalid_argument);
    EXPECT_STREQ(to.GetMeta(), "origin");
}

TEST(Properties, the_listener_hears_of_identifiers_only)
{
    Properties properties;
    CountingListener listener;
    properties.setListener(&listener);
    properties.setNumber(2001, 1.0);
    properties.setNumber(1000, 1.0);
    EXPECT_EQ(listener.calls, 0);
    properties.setNumber(2000, 1.0);
    properties.setNumber(2000, 1.0);
    EXPECT_EQ(listener.calls, 1) << "once: the second call changed nothing";
    properties.SetStringPropertyByName("element_start", "3");
    properties.remove(1001);
    properties.copyFrom(Properties());
    EXPECT_EQ(listener.calls, 4);
}

TEST(Properties, numbers_are_visited_in_ascending_order_of_slot)
{
    Properties properties;
    properties.setNumber(2003, 3.0);
    properties.setNumber(1000, 1.0);
    properties.setNumber(4007, 4.0);
    std::vector<std::pair<int, double>> visited;
    const auto visit = [&visited](int slot, double value) {
        visited.emplace_back(propertyOfSlot(slot), value);
    };
    EXPECT_TRUE(properties.visitNumbers(visit));
    EXPECT_EQ(visited, (std::vector<std::pair<int, double>>{{1000, 1.0}, {2003, 3.0}, {4007, 4.0}}));
}

TEST(Properties, a_set_with_a_text_or_an_id_beyond_the_slots_is_not_visited)
{
    const auto visit = [](int, double) { ADD_FAILURE(); };
    Properties withText;
    withText.setText(2001, "1");
    EXPECT_FALSE(withText.visitNumbers(visit));
    Properties withOther;
    withOther.setNumber(7000, 1.0);
    EXPECT_FALSE(withOther.visitNumbers(visit));
    Properties withMeta;
    withMeta.setMeta("pipe 7");
    EXPECT_TRUE(withMeta.visitNumbers(visit));
}

TEST(Properties, a_full_room_is_left_for_a_larger_one)
{
    std::array<double, 2> room;
    Properties properties;
    properties.useRoom(room);
    for (int id = 2011; id >= 2000; --id)
        properties.setNumber(id, id);
    for (int id = 2000; id <= 2011; ++id)
        EXPECT_EQ(properties.number(id), id);
    EXPECT_TRUE(properties.remove(2000));
    EXPECT_EQ(properties.GetValue(0), 2001.0);
    EXPECT_EQ(properties.GetSize(), 11);
}

// The reference keeps every value as text in a map, which is what the set means to a host.
// Ids with a slot of their own and ids without one stand side by side; the room is too small for all.
TEST(Properties, random_changes_answer_as_a_map_of_texts_does)
{
    const char* texts[] = {"", "0.5", "0.50", "abc", "1e999", "nan", "-0", " 3 ", "100000", "1e5"};
    const double numbers[] = {0.5, 0.0, -0.0, kNan, 1e5, 0.1, -kNan};
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        std::array<double, 3> room;
        Properties properties;
        if (round % 2 == 0) properties.useRoom(room);
        std::map<int, std::string> reference;
        for (int step = 0; step < 100; ++step) {
            const int bases[] = {-3, 990, 1990, 2995, 3990};
            const int id = bases[round % 3 == 0 ? random() % 5 : 2] + static_cast<int>(random() % 30);
            const bool isNew = reference.count(id) == 0;
            const bool asNumber = random() % 2 == 0;
            const double number = numbers[random() % std::size(numbers)];
            const std::string text = asNumber ? formatNumber(number, 20) : texts[random() % std::size(texts)];
            if (random() % 5 == 0) {
                ASSERT_EQ(properties.remove(id), reference.erase(id) > 0);
                continue;
            }
            const bool changes = isNew || reference[id].empty() || reference[id] != text;
            ASSERT_EQ(asNumber ? properties.setNumber(id, number) : properties.setText(id, text), changes);
            reference[id] = text;
            if (random() % 3 == 0) {
                ASSERT_EQ(textAt(properties, id), text);
            }
        }
        ASSERT_EQ(properties.GetSize(), static_cast<int>(reference.size()));
        Properties copy;
        copy.copyFrom(properties);
        std::size_t position = 0;
        for (const auto& [id, text] : reference) {
            ASSERT_EQ(properties.GetProp(position), id);
            ASSERT_EQ(properties.GetIndex(id), static_cast<int>(position));
            ASSERT_EQ(copy.GetProp(position), id);
            ASSERT_EQ(copy.GetStringValue(position), text);
            ASSERT_EQ(properties.GetStringValue(position++), text);
        }
        ASSERT_EQ(properties.GetProp(position), -1);
    }
}
