// Entity_test.cpp: properties and meta string as hosts see them, by kind of object.
#include "model/Entity.h"

#include <stdexcept>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

class EntityTest : public Model
{
protected:
    Node& node = newNode(circuit, 1.0);
    Element& element = *static_cast<Element*>(circuit.CreateEmptyElement());
    Fluid& fluid = circuit.fluid();
};

}  // namespace

TEST_F(EntityTest, properties_are_set_by_name_in_any_letter_case)
{
    EXPECT_TRUE(node.SetPropertyByName("NODE_X", 1.5));
    EXPECT_EQ(node.number(2001), 1.5);
}

TEST_F(EntityTest, an_unknown_name_is_refused_by_kinds_that_refuse_unknown_ids)
{
    EXPECT_FALSE(node.SetPropertyByName("node_w", 1.5));
    EXPECT_FALSE(element.SetPropertyByName(nullptr, 1.5));
    EXPECT_FALSE(circuit.SetPropertyByName("", 1.5));
    EXPECT_FALSE(node.HasProperty(-1));
}

// A fluid stores any id, so also the one that an unknown name stands for.
TEST_F(EntityTest, an_unknown_name_on_a_fluid_stores_the_id_minus_one)
{
    EXPECT_TRUE(fluid.SetPropertyByName("no such name", 1.5));
    EXPECT_FALSE(fluid.SetPropertyByName("no such name", 1.5));
    EXPECT_TRUE(fluid.HasProperty(-1));
    EXPECT_EQ(fluid.GetProperties()->GetProp(0), -1);
}

TEST_F(EntityTest, each_kind_takes_its_own_ids_only)
{
    for (int id = -10; id <= 5000; ++id) {
        EXPECT_EQ(element.SetProperty(id, 1.0), id >= 1000 && id <= 1026 && id != 1007) << id;
        EXPECT_EQ(node.SetProperty(id, 1.0), id >= 2000 && id <= 2011) << id;
        EXPECT_EQ(circuit.SetProperty(id, 1.0), id >= 3000 && id <= 3005) << id;
    }
    EXPECT_FALSE(element.HasProperty(1007));
    EXPECT_FALSE(node.HasProperty(1999));
    EXPECT_FALSE(circuit.HasProperty(3006));
}

TEST_F(EntityTest, a_fluid_takes_any_id)
{
    EXPECT_TRUE(fluid.SetProperty(1007, 1.0));
    EXPECT_TRUE(fluid.SetProperty(1003, 0.5));
    EXPECT_TRUE(fluid.HasProperty(1003));
}

TEST_F(EntityTest, setting_the_same_value_twice_is_no_change_for_a_fluid_and_accepted_by_a_node)
{
    EXPECT_TRUE(fluid.SetProperty(4001, 900.0));
    EXPECT_FALSE(fluid.SetProperty(4001, 900.0));
    EXPECT_TRUE(node.SetProperty(2006, 900.0));
    EXPECT_TRUE(node.SetProperty(2006, 900.0));
}

TEST_F(EntityTest, reading_an_absent_property_leaves_the_value_alone)
{
    double value = 42.0;
    EXPECT_FALSE(node.GetProperty(2009, &value));
    EXPECT_EQ(value, 42.0);
    EXPECT_FALSE(node.HasProperty(2009));
}

TEST_F(EntityTest, reading_an_unreadable_property_throws_and_leaves_the_value_alone)
{
    storeText(node, "node_pressure", "abc");
    double value = 42.0;
    EXPECT_TRUE(node.HasProperty(2006));
    EXPECT_THROW(node.GetProperty(2006, &value), std::invalid_argument);
    EXPECT_EQ(value, 42.0);
}

TEST_F(EntityTest, removing_works_once)
{
    EXPECT_TRUE(node.RemoveProperty(2006));
    EXPECT_FALSE(node.RemoveProperty(2006));
    EXPECT_FALSE(node.HasProperty(2006));
}

TEST_F(EntityTest, the_property_set_is_the_same_for_reading_and_writing)
{
    EXPECT_NE(node.GetProperties(), nullptr);
    EXPECT_EQ(node.GetProperties(), node.GetWriteableProperties());
}

TEST_F(EntityTest, meta_string_is_one_string_seen_through_both_interfaces)
{
    node.SetMeta("tank");
    EXPECT_STREQ(node.GetMeta(), "tank");
    EXPECT_STREQ(node.GetProperties()->GetMeta(), "tank");
    node.SetMeta(nullptr);
    EXPECT_STREQ(node.GetMeta(), "");
}

TEST_F(EntityTest, the_temperature_of_an_element_is_that_of_the_fluid)
{
    double value = 0.0;
    EXPECT_TRUE(element.GetProperty(1006, &value));
    EXPECT_EQ(value, 294.260009765625);
    element.SetProperty(1006, 350.0);
    fluid.SetProperty(4000, 300.0);
    EXPECT_TRUE(element.GetProperty(1006, &value));
    EXPECT_EQ(value, 300.0);
    EXPECT_EQ(storedText(element, 1006), "350");
}

TEST_F(EntityTest, the_temperature_of_an_element_is_absent_when_the_fluid_has_none)
{
    element.SetProperty(1006, 350.0);
    fluid.RemoveProperty(4000);
    double value = 42.0;
    EXPECT_FALSE(element.GetProperty(1006, &value));
    EXPECT_EQ(value, 42.0);
    EXPECT_TRUE(element.HasProperty(1006));
}

TEST_F(EntityTest, changes_of_a_node_or_element_drop_the_results)
{
    pretendResults(circuit);
    node.SetProperty(2006, 5.0);
    EXPECT_TRUE(tookResults(circuit));
    element.SetProperty(1003, 5.0);
    EXPECT_TRUE(tookResults(circuit));
    node.SetMeta("a");
    EXPECT_TRUE(tookResults(circuit));
    element.SetMeta("b");
    EXPECT_TRUE(tookResults(circuit));
    fluid.SetMeta("c");
    EXPECT_TRUE(tookResults(circuit));
    fluid.SetMeta("c");
    EXPECT_TRUE(tookResults(circuit)) << "a fluid notifies after every call";
    circuit.SetMeta("d");
    EXPECT_TRUE(tookResults(circuit));
    circuit.SetMeta("d");
    EXPECT_TRUE(tookResults(circuit)) << "a circuit drops results at every call";
    circuit.SetProperty(3003, 0.0);
    EXPECT_TRUE(tookResults(circuit));
}

TEST_F(EntityTest, what_changes_nothing_or_tells_no_one_keeps_the_results)
{
    node.SetMeta("a");
    pretendResults(circuit);
    node.SetProperty(2006, 1.0);
    node.SetProperty(1003, 1.0);
    node.SetMeta("a");
    element.SetMeta(nullptr);
    circuit.SetProperty(3003, 1.0);
    circuit.SetProperty(4001, 1.0);
    storeText(node, "node_pressure", "17");
    storeText(circuit, "circuit_minor_loss", "0");
    node.RemoveProperty(2006);
    circuit.RemoveProperty(3004);
    fluid.SetProperty(4001, 900.0);
    fluid.RemoveProperty(4002);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(circuit.results().size(), 1U);
}
