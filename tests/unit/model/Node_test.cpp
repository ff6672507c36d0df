// Node_test.cpp: typed access to the properties of a node.
#include "model/Node.h"

#include <stdexcept>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

class NodeTest : public Model
{
protected:
    Node& node = *static_cast<Node*>(circuit.CreateNode());
};

}  // namespace

TEST_F(NodeTest, a_new_node_is_an_inner_node_at_the_origin_with_a_pressure_of_1)
{
    double x = 9.0;
    double y = 9.0;
    double z = 9.0;
    node.GetLocation(&x, &y, &z);
    EXPECT_EQ(node.GetId(), 1);
    EXPECT_EQ(node.GetType(), 1);
    EXPECT_EQ(node.GetConstraint(), 0);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    EXPECT_EQ(z, 0.0);
    EXPECT_EQ(node.number(2006), 1.0);
    EXPECT_EQ(node.GetProperties()->GetSize(), 7);
    EXPECT_STREQ(node.GetMeta(), "");
}

TEST_F(NodeTest, typed_values_and_properties_are_the_same)
{
    node.SetLocation(1.0, 2.0, 3.0);
    node.SetType(2);
    EXPECT_EQ(node.number(2001), 1.0);
    EXPECT_EQ(node.number(2002), 2.0);
    EXPECT_EQ(node.number(2003), 3.0);
    EXPECT_EQ(node.number(2004), 2.0);
    node.SetProperty(2004, 0.0);
    EXPECT_EQ(node.GetType(), 0);
}

TEST_F(NodeTest, whole_numbers_are_truncated_toward_zero)
{
    node.SetProperty(2000, 7.9);
    node.SetProperty(2004, -1.9);
    storeText(node, "node_constraint", "3.99");
    EXPECT_EQ(node.GetId(), 7);
    EXPECT_EQ(node.GetType(), -1);
    EXPECT_EQ(node.GetConstraint(), 3);
}

TEST_F(NodeTest, absent_values_read_zero)
{
    for (int id = 2000; id <= 2011; ++id)
        node.RemoveProperty(id);
    double x = 9.0;
    double y = 9.0;
    double z = 9.0;
    node.GetLocation(&x, &y, &z);
    EXPECT_EQ(node.GetId(), 0);
    EXPECT_EQ(node.GetType(), 0);
    EXPECT_EQ(node.GetConstraint(), 0);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    EXPECT_EQ(z, 0.0);
}

TEST_F(NodeTest, types_are_kept_as_they_are_given)
{
    for (const int type : {-5, 0, 1, 2, 3, 1000000}) {
        node.SetType(type);
        EXPECT_EQ(node.GetType(), type);
    }
}

TEST_F(NodeTest, each_constraint_stores_its_value_in_a_property_of_its_own)
{
    const int valueProperty[] = {2006, 2007, 2005, 2008, 2011};
    for (int constraint = 0; constraint <= 4; ++constraint) {
        node.SetConstraint(constraint, 100.0 + constraint);
        EXPECT_EQ(node.GetConstraint(), constraint);
        EXPECT_EQ(node.number(valueProperty[constraint]), 100.0 + constraint);
    }
    EXPECT_EQ(node.number(2006), 100.0) << "values of other kinds stay";
    EXPECT_EQ(node.number(2005), 102.0);
}

TEST_F(NodeTest, an_unknown_constraint_stores_no_value)
{
    const int before = node.GetProperties()->GetSize();
    node.SetConstraint(7, 5.0);
    EXPECT_EQ(node.number(2010), 7.0);
    EXPECT_EQ(node.GetProperties()->GetSize(), before);
    EXPECT_EQ(node.number(2006), 1.0);
    node.SetConstraint(-1, 5.0);
    EXPECT_EQ(node.GetConstraint(), -1);
    EXPECT_EQ(node.GetProperties()->GetSize(), before);
}

TEST_F(NodeTest, changes_drop_the_results_and_repetitions_do_not)
{
    pretendResults(circuit);
    node.SetLocation(0.0, 0.0, 0.0);
    node.SetType(1);
    node.SetConstraint(0, 1.0);
    EXPECT_TRUE(circuit.hasResults());
    node.SetLocation(0.0, 0.0, 1.0);
    EXPECT_TRUE(tookResults(circuit));
    node.SetType(2);
    EXPECT_TRUE(tookResults(circuit));
    node.SetConstraint(0, 2.0);
    EXPECT_TRUE(tookResults(circuit));
    node.SetConstraint(9, 2.0);
    EXPECT_TRUE(tookResults(circuit));
}

TEST_F(NodeTest, its_entity_is_the_same_pointer_const_or_not)
{
    EXPECT_NE(node.GetEntity(), nullptr);
    EXPECT_EQ(node.GetEntity(), node.GetEntityConst());
}

TEST_F(NodeTest, an_unreadable_value_throws_and_writes_no_output)
{
    storeText(node, "node_z", "deep");
    storeText(node, "node_id", "");
    double x = 9.0;
    double y = 9.0;
    double z = 9.0;
    EXPECT_THROW(node.GetLocation(&x, &y, &z), std::invalid_argument);
    EXPECT_EQ(x, 9.0);
    EXPECT_THROW(node.GetId(), std::invalid_argument);
}
