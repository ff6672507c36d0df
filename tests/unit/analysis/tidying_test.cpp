// tidying_test.cpp: the maintenance passes over identifiers.
#include "analysis/tidying.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "circuits.h"

using namespace AnalysisTest;

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Texts of an id that no object can keep: none, no number, not whole, not positive, not finite, beyond int.
const std::vector<const char*> kUnusableIds = {"",      "abc",     "0",          "-0",   "-3",
                                               "2.5",   "0.99999", "nan",        "inf",  "-inf",
                                               "1e999", "1e-999",  "2147483648", "1e300"};

/// Four nodes 1 to 4 in a row joined by elements 1 to 3.
class Tidying : public ::testing::Test
{
protected:
    Tidying() { makeLine(circuit, 4); }

    IdentifierChanges changes;

    IEntity* node(std::size_t position) { return circuit.GetNode(position)->GetEntity(); }
    IEntity* element(std::size_t position) { return circuit.GetElement(position)->GetEntity(); }

    std::vector<int> nodeIds()
    {
        std::vector<int> ids;
        for (std::size_t i = 0; i < circuit.GetNoNodes(); ++i)
            ids.push_back(circuit.GetNode(i)->GetId());
        return ids;
    }
    std::vector<int> elementIds()
    {
        std::vector<int> ids;
        for (std::size_t i = 0; i < circuit.GetNoElements(); ++i)
            ids.push_back(circuit.GetElement(i)->GetId());
        return ids;
    }
    std::vector<int> ends(std::size_t position)
    {
        return {circuit.GetElement(position)->GetStartNodeId(), circuit.GetElement(position)->GetEndNodeId()};
    }

    PlainEnvironment environment;
    ObjectRegistry registry;
    Circuit circuit{registry};
};

using Ids = std::vector<int>;

}  // namespace

TEST_F(Tidying, no_pass_changes_a_sound_circuit_or_its_results)
{
    circuit.setHasResults(true);
    const std::string before = dump(circuit);
    EXPECT_FALSE(mendElementIds(circuit, changes));
    EXPECT_FALSE(mendNodeIds(circuit, changes));
    EXPECT_FALSE(truncateEndIds(circuit, changes));
    EXPECT_FALSE(mendUnknownEnds(circuit, changes));
    EXPECT_FALSE(mendEqualEnds(circuit, changes));
    tidy(circuit, changes);
    EXPECT_EQ(dump(circuit), before);
    EXPECT_TRUE(circuit.hasResults());
}

TEST_F(Tidying, no_pass_changes_an_empty_circuit)
{
    Circuit empty(registry);
    EXPECT_FALSE(mendElementIds(empty, changes));
    EXPECT_FALSE(mendNodeIds(empty, changes));
    EXPECT_FALSE(truncateEndIds(empty, changes));
    EXPECT_FALSE(mendUnknownEnds(empty, changes));
    EXPECT_FALSE(mendEqualEnds(empty, changes));
    tidy(empty, changes);
}

TEST_F(Tidying, ids_in_another_notation_of_a_whole_number_stay_as_they_are)
{
    setText(element(0), "element_id", " 1e1");
    setText(element(1), "element_id", "0x14");
    setText(node(3), "node_id", "4.000 m");
    const std::string before = dump(circuit);
    tidy(circuit, changes);
    EXPECT_EQ(dump(circuit), before);
}

TEST_F(Tidying, the_largest_int_is_an_id)
{
    element(0)->SetProperty(TAVELL_ELEMENT_ID, 2147483647.0);
    node(0)->SetProperty(TAVELL_NODE_ID, 2147483647.0);
    EXPECT_FALSE(mendElementIds(circuit, changes));
    EXPECT_FALSE(mendNodeIds(circuit, changes));
}

TEST_F(Tidying, an_element_with_an_unusable_id_gets_the_next_one)
{
    int next = 4;
    for (const char* text : kUnusableIds) {
        setText(element(1), "element_id", text);
        EXPECT_TRUE(mendElementIds(circuit, changes)) << '"' << text << '"';
        EXPECT_EQ(elementIds(), (Ids{1, next, 3})) << '"' << text << '"';
        EXPECT_FALSE(mendElementIds(circuit, changes)) << '"' << text << '"';
        ++next;
    }
}

TEST_F(Tidying, an_element_without_an_id_gets_the_next_one)
{
    element(0)->RemoveProperty(TAVELL_ELEMENT_ID);
    EXPECT_TRUE(mendElementIds(circuit, changes));
    EXPECT_EQ(elementIds(), (Ids{4, 2, 3}));
    EXPECT_FALSE(mendElementIds(circuit, changes));
}

TEST_F(Tidying, of_elements_with_the_same_id_the_oldest_keeps_it)
{
    for (std::size_t i = 0; i < 3; ++i)
        element(i)->SetProperty(TAVELL_ELEMENT_ID, 2.0);
    EXPECT_TRUE(mendElementIds(circuit, changes));
    EXPECT_EQ(elementIds(), (Ids{2, 4, 5}));
    EXPECT_FALSE(mendElementIds(circuit, changes));
}

TEST_F(Tidying, an_element_id_that_a_younger_element_holds_is_not_free)
{
    element(0)->RemoveProperty(TAVELL_ELEMENT_ID);
    element(1)->SetProperty(TAVELL_ELEMENT_ID, 4.0);
    element(2)->SetProperty(TAVELL_ELEMENT_ID, 5.0);
    EXPECT_TRUE(mendElementIds(circuit, changes));
    EXPECT_EQ(elementIds(), (Ids{6, 4, 5}));
}

TEST_F(Tidying, an_element_id_that_was_handed_out_is_not_given_to_a_new_element)
{
    element(0)->RemoveProperty(TAVELL_ELEMENT_ID);
    ASSERT_TRUE(mendElementIds(circuit, changes));
    ASSERT_EQ(circuit.GetElement(0)->GetId(), 4);
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 5);
}

TEST_F(Tidying, a_node_with_an_unusable_id_gets_the_next_one)
{
    int next = 5;
    for (const char* text : kUnusableIds) {
        addNodes(circuit, 0);
        setText(node(3), "node_id", text);
        EXPECT_TRUE(mendNodeIds(circuit, changes)) << '"' << text << '"';
        EXPECT_EQ(nodeIds(), (Ids{1, 2, 3, next})) << '"' << text << '"';
        EXPECT_FALSE(mendNodeIds(circuit, changes)) << '"' << text << '"';
        ++next;
    }
}

TEST_F(Tidying, a_node_without_an_id_gets_the_next_one)
{
    node(2)->RemoveProperty(TAVELL_NODE_ID);
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    EXPECT_EQ(nodeIds(), (Ids{1, 2, 5, 4}));
    EXPECT_FALSE(mendNodeIds(circuit, changes));
}

TEST_F(Tidying, of_nodes_with_the_same_id_the_oldest_keeps_it_and_its_elements)
{
    node(2)->SetProperty(TAVELL_NODE_ID, 2.0);
    addElement(circuit, 2, 4);
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    EXPECT_EQ(nodeIds(), (Ids{1, 2, 5, 4}));
    EXPECT_EQ(ends(3), (Ids{2, 4}));
    EXPECT_EQ(circuit.GetElementNode(circuit.GetElement(3), 0), circuit.GetNode(1));
    EXPECT_FALSE(mendNodeIds(circuit, changes));
}

TEST_F(Tidying, a_node_id_that_a_younger_node_holds_is_not_free)
{
    node(0)->RemoveProperty(TAVELL_NODE_ID);
    node(1)->SetProperty(TAVELL_NODE_ID, 5.0);
    node(3)->SetProperty(TAVELL_NODE_ID, 6.0);
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    EXPECT_EQ(nodeIds(), (Ids{7, 5, 3, 6}));
}

TEST_F(Tidying, a_node_id_that_an_end_names_is_not_free)
{
    addElement(circuit, 5, 6);
    node(2)->SetProperty(TAVELL_NODE_ID, 4.0);
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    // Node 3 had the id that node 4 has too; being older it keeps it.
    EXPECT_EQ(nodeIds(), (Ids{1, 2, 4, 7}));
    EXPECT_EQ(ends(3), (Ids{5, 6}));
    EXPECT_EQ(circuit.GetElementNode(circuit.GetElement(3), 0), nullptr);
}

TEST_F(Tidying, a_node_id_that_was_handed_out_is_not_given_to_a_new_node)
{
    node(0)->SetProperty(TAVELL_NODE_ID, 0.0);
    ASSERT_TRUE(mendNodeIds(circuit, changes));
    ASSERT_EQ(circuit.GetNode(0)->GetId(), 5);
    circuit.SetCheckNodeIdTaken(false);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 6);
}

TEST_F(Tidying, ends_follow_a_node_that_gets_another_id)
{
    node(1)->SetProperty(TAVELL_NODE_ID, -2.5);
    element(0)->SetProperty(TAVELL_ELEMENT_END, -2.0);
    element(1)->SetProperty(TAVELL_ELEMENT_START, -2.75);
    ASSERT_EQ(circuit.GetElementNode(circuit.GetElement(1), 0), circuit.GetNode(1));
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    EXPECT_EQ(nodeIds(), (Ids{1, 5, 3, 4}));
    EXPECT_EQ(ends(0), (Ids{1, 5}));
    EXPECT_EQ(ends(1), (Ids{5, 3}));
    EXPECT_EQ(ends(2), (Ids{3, 4}));
    EXPECT_FALSE(mendNodeIds(circuit, changes));
}

TEST_F(Tidying, ends_follow_the_oldest_node_with_their_id_although_a_younger_one_keeps_it)
{
    // Both read as 3; the older one is not whole, so the younger one keeps the id.
    node(1)->SetProperty(TAVELL_NODE_ID, 3.5);
    ASSERT_EQ(circuit.GetElementNode(circuit.GetElement(1), 1), circuit.GetNode(1));
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    EXPECT_EQ(nodeIds(), (Ids{1, 5, 3, 4}));
    EXPECT_EQ(circuit.GetElementNode(circuit.GetElement(1), 1), circuit.GetNode(1));
}

TEST_F(Tidying, every_end_means_the_same_node_before_and_after)
{
    node(0)->SetProperty(TAVELL_NODE_ID, 7.5);
    node(1)->SetProperty(TAVELL_NODE_ID, 7.0);
    node(2)->RemoveProperty(TAVELL_NODE_ID);
    node(3)->SetProperty(TAVELL_NODE_ID, 7.0);
    for (const int id : {7, 0, 3, 5, 6})
        addElement(circuit, id, 7);
    std::vector<INode*> before;
    for (std::size_t i = 0; i < circuit.GetNoElements(); ++i)
        for (const std::size_t which : {0u, 1u})
            before.push_back(circuit.GetElementNode(circuit.GetElement(i), which));
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    std::vector<INode*> after;
    for (std::size_t i = 0; i < circuit.GetNoElements(); ++i)
        for (const std::size_t which : {0u, 1u})
            after.push_back(circuit.GetElementNode(circuit.GetElement(i), which));
    EXPECT_EQ(after, before);
    const Ids ids = nodeIds();
    EXPECT_EQ(std::set<int>(ids.begin(), ids.end()).size(), 4u);
}

TEST_F(Tidying, absent_ends_and_ends_that_are_no_numbers_are_left_alone)
{
    circuit.CreateEmptyElement();
    setText(element(1), "element_end", "abc");
    node(2)->RemoveProperty(TAVELL_NODE_ID);
    tidy(circuit, changes);
    EXPECT_FALSE(element(3)->HasProperty(TAVELL_ELEMENT_START));
    EXPECT_FALSE(element(3)->HasProperty(TAVELL_ELEMENT_END));
    IPropertySet* properties = element(1)->GetProperties();
    const int position = properties->GetIndex(TAVELL_ELEMENT_END);
    EXPECT_STREQ(properties->GetStringValue(static_cast<std::size_t>(position)), "abc");
}

TEST_F(Tidying, ends_that_are_not_whole_are_stored_as_they_are_read)
{
    const double stored[] = {2.75, -2.75, 0.5, -0.5, 3.0000000001, kNan, kInfinity, -kInfinity, 1e10, -1e300};
    for (const double value : stored) {
        element(1)->SetProperty(TAVELL_ELEMENT_START, value);
        element(2)->SetProperty(TAVELL_ELEMENT_END, value);
        const int start = circuit.GetElement(1)->GetStartNodeId();
        const int end = circuit.GetElement(2)->GetEndNodeId();
        EXPECT_TRUE(truncateEndIds(circuit, changes)) << value;
        double storedStart = kNan;
        double storedEnd = kNan;
        element(1)->GetProperty(TAVELL_ELEMENT_START, &storedStart);
        element(2)->GetProperty(TAVELL_ELEMENT_END, &storedEnd);
        EXPECT_EQ(storedStart, start) << value;
        EXPECT_EQ(storedEnd, end) << value;
        EXPECT_EQ(circuit.GetElement(1)->GetStartNodeId(), start) << value;
        EXPECT_EQ(circuit.GetElement(2)->GetEndNodeId(), end) << value;
        EXPECT_FALSE(truncateEndIds(circuit, changes)) << value;
    }
}

TEST_F(Tidying, an_end_between_0_and_minus_1_is_stored_without_a_sign)
{
    element(1)->SetProperty(TAVELL_ELEMENT_START, -0.5);
    EXPECT_TRUE(truncateEndIds(circuit, changes));
    IPropertySet* properties = element(1)->GetProperties();
    const int position = properties->GetIndex(TAVELL_ELEMENT_START);
    EXPECT_STREQ(properties->GetStringValue(static_cast<std::size_t>(position)), "0");
}

TEST_F(Tidying, ends_that_name_no_node_or_the_same_node_stay)
{
    addElement(circuit, 98, 99);
    addElement(circuit, 2, 2);
    addElement(circuit, -5, 0);
    const std::string before = dump(circuit);
    tidy(circuit, changes);
    EXPECT_EQ(dump(circuit), before);
}

TEST_F(Tidying, tidying_twice_changes_nothing_more)
{
    setText(element(0), "element_id", "abc");
    setText(element(2), "element_end", "3.5");
    setText(node(0), "node_id", "1e999");
    setText(node(2), "node_id", "2");
    tidy(circuit, changes);
    EXPECT_EQ(elementIds(), (Ids{4, 2, 3}));
    EXPECT_EQ(nodeIds(), (Ids{5, 2, 6, 4}));
    EXPECT_EQ(ends(2), (Ids{3, 3}));
    const std::string after = dump(circuit);
    tidy(circuit, changes);
    EXPECT_EQ(dump(circuit), after);
}

TEST_F(Tidying, a_mended_circuit_has_no_results)
{
    circuit.setHasResults(true);
    node(2)->GetProperties()->SetStringPropertyByName("node_id", "2");
    EXPECT_TRUE(mendNodeIds(circuit, changes));
    EXPECT_FALSE(circuit.hasResults());
}

TEST_F(Tidying, changes_can_be_taken_back_to_the_letter)
{
    node(1)->GetProperties()->SetStringPropertyByName("node_id", "2.50");
    node(2)->RemoveProperty(TAVELL_NODE_ID);
    element(0)->GetProperties()->SetStringPropertyByName("element_id", "abc");
    element(1)->GetProperties()->SetStringPropertyByName("element_end", "3.75");
    tidy(circuit, changes);
    ASSERT_NE(node(2)->GetProperties()->GetIndex(TAVELL_NODE_ID), -1);

    changes.undo();
    const auto textOf = [](IEntity* entity, int id) {
        IPropertySet* set = entity->GetProperties();
        return std::string(set->GetStringValue(static_cast<std::size_t>(set->GetIndex(id))));
    };
    EXPECT_EQ(textOf(node(1), TAVELL_NODE_ID), "2.50");
    EXPECT_FALSE(node(2)->HasProperty(TAVELL_NODE_ID));
    EXPECT_EQ(textOf(element(0), TAVELL_ELEMENT_ID), "abc");
    EXPECT_EQ(textOf(element(1), TAVELL_ELEMENT_END), "3.75");
}
