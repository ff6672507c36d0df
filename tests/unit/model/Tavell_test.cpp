// Tavell_test.cpp: operations over all circuits.
#include "model/Tavell.h"

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

/// The circuit of the fixture is the first of the list.
class TavellTest : public Model
{
protected:
    Circuit& second = newCircuit();
    Circuit& third = newCircuit();

    /// Four nodes in a line between two pressures.
    static void makeSuitable(Circuit& line)
    {
        Node* last = &newNode(line, 0.0);
        last->SetType(TAVELL_NODE_INLET);
        last->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 2e5);
        for (int i = 1; i < 4; ++i) {
            Node& next = newNode(line, i);
            newPipe(line, *last, next);
            last = &next;
        }
        last->SetType(TAVELL_NODE_OUTLET);
        last->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 1e5);
    }

    /// Whether the feedback is no longer the one message that the test left there.
    static bool wasSolved(Circuit& solved)
    {
        FeedbackCollection& feedback = solved.feedback();
        return feedback.GetSize() != 1 || feedback.GetFeedback(0)->GetId() != TAVELL_FEEDBACK_RESERVED_10;
    }
};

}  // namespace

TEST_F(TavellTest, circuits_are_listed_in_order_of_creation)
{
    EXPECT_EQ(system.GetNoCircuits(), 3U);
    EXPECT_EQ(system.GetCircuit(0), &circuit);
    EXPECT_EQ(system.GetCircuit(2), &third);
    EXPECT_EQ(system.GetCircuit(system.GetNoCircuits()), nullptr);
    EXPECT_EQ(system.GetCircuit(static_cast<std::size_t>(-1)), nullptr);
}

TEST_F(TavellTest, a_circuit_is_released_once_and_the_later_ones_move_up)
{
    EXPECT_TRUE(system.ReleaseCircuit(&second));
    EXPECT_FALSE(system.ReleaseCircuit(&second));
    EXPECT_FALSE(system.ReleaseCircuit(nullptr));
    EXPECT_EQ(system.GetNoCircuits(), 2U);
    EXPECT_EQ(system.GetCircuit(0), &circuit);
    EXPECT_EQ(system.GetCircuit(1), &third);
}

TEST_F(TavellTest, a_circuit_of_another_system_is_not_released)
{
    Tavell other;
    EXPECT_FALSE(other.ReleaseCircuit(&circuit));
}

TEST_F(TavellTest, all_circuits_are_released_at_once)
{
    Node& node = newNode(second, 1.0);
    system.ReleaseAllCircuits();
    EXPECT_EQ(system.GetNoCircuits(), 0U);
    EXPECT_EQ(system.GetCircuit(0), nullptr);
    EXPECT_FALSE(system.ReleaseCircuit(&third));
    EXPECT_EQ(system.FindParentCircuitFromNode(&node), nullptr);
    EXPECT_NE(system.CreateCircuit(), nullptr);
    EXPECT_EQ(system.GetNoCircuits(), 1U);
}

TEST_F(TavellTest, the_parent_of_a_node_or_element_is_found_while_it_lives)
{
    Node& a = newNode(second, 0.0);
    Node& b = newNode(second, 1.0);
    Element& pipe = *newPipe(second, a, b);
    EXPECT_EQ(system.FindParentCircuitFromNode(&a), &second);
    EXPECT_EQ(system.FindParentCircuitFromElement(&pipe), &second);
    EXPECT_EQ(system.FindParentCircuitFromNode(nullptr), nullptr);
    EXPECT_EQ(system.FindParentCircuitFromElement(nullptr), nullptr);
    second.ReleaseNode(&a);
    second.ReleaseElement(&pipe);
    EXPECT_EQ(system.FindParentCircuitFromNode(&a), nullptr);
    EXPECT_EQ(system.FindParentCircuitFromElement(&pipe), nullptr);
    system.ReleaseCircuit(&second);
    EXPECT_EQ(system.FindParentCircuitFromNode(&b), nullptr);
}

TEST_F(TavellTest, an_empty_system_has_no_parents)
{
    Tavell empty;
    EXPECT_EQ(empty.FindParentCircuitFromNode(&newNode(circuit, 0.0)), nullptr);
    EXPECT_EQ(empty.FindParentCircuitFromElement(circuit.CreateEmptyElement()), nullptr);
    empty.MergeCircuits();
    empty.ValidateCircuits();
    empty.Solve(false, true, nullptr);
    EXPECT_EQ(empty.GetNoCircuits(), 0U);
}

// What a solve does to a circuit is seen on its feedback, which every solve rebuilds.
TEST_F(TavellTest, solving_after_validation_skips_what_is_not_suitable_and_solves_the_rest)
{
    makeSuitable(second);
    for (Circuit* each : {&circuit, &second, &third})
        each->feedback().append(TAVELL_FEEDBACK_RESERVED_10, {});
    system.Solve(false, true, nullptr);
    EXPECT_FALSE(wasSolved(circuit));
    EXPECT_TRUE(wasSolved(second));
    EXPECT_FALSE(wasSolved(third));
}

TEST_F(TavellTest, solving_without_validation_solves_every_circuit)
{
    for (Circuit* each : {&circuit, &second, &third})
        each->feedback().append(TAVELL_FEEDBACK_RESERVED_10, {});
    system.Solve(false, false, nullptr);
    EXPECT_TRUE(wasSolved(circuit));
    EXPECT_TRUE(wasSolved(second));
    EXPECT_TRUE(wasSolved(third));
}
