// validity_test.cpp: the validity states and their order.
#include "analysis/validity.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "circuits.h"

using namespace AnalysisTest;

namespace
{

/// A line of four nodes and three elements, which lacks nothing.
class Validity : public ::testing::Test
{
protected:
    Validity() { makeLine(circuit, 4); }

    IEntity* node(std::size_t position) { return circuit.GetNode(position)->GetEntity(); }

    /// Gives a node a constraint without its value.
    void constrainWithoutValue(std::size_t position, int constraint)
    {
        for (int property = TAVELL_NODE_REYNOLDS; property <= TAVELL_NODE_VELOCITY; ++property)
            node(position)->RemoveProperty(property);
        node(position)->SetProperty(TAVELL_NODE_CONSTRAINT, constraint);
    }

    PlainEnvironment environment;
    ObjectRegistry registry;
    Circuit circuit{registry};
};

}  // namespace

TEST_F(Validity, a_line_between_two_pressures_is_valid_with_inner_boundary_values)
{
    EXPECT_EQ(circuit.IsValid(), 1);
    EXPECT_TRUE(circuit.IsSuitableForAnalysis());
}

TEST_F(Validity, an_empty_circuit_lacks_elements)
{
    Circuit empty(registry);
    EXPECT_EQ(empty.IsValid(), 4);
    EXPECT_FALSE(empty.IsSuitableForAnalysis());
    EXPECT_FALSE(empty.Validate());
}

TEST_F(Validity, two_elements_and_ten_nodes_lack_elements)
{
    Circuit other(registry);
    addNodes(other, 10);
    addElement(other, 1, 2);
    addElement(other, 2, 3);
    EXPECT_EQ(other.IsValid(), 4);
}

TEST_F(Validity, two_elements_and_three_nodes_lack_elements_first)
{
    Circuit other(registry);
    makeLine(other, 3);
    EXPECT_EQ(other.IsValid(), 4);
}

TEST_F(Validity, three_elements_and_three_nodes_lack_nodes)
{
    Circuit other(registry);
    makeLine(other, 3);
    addElement(other, 3, 1);
    EXPECT_EQ(other.IsValid(), 5);
    EXPECT_FALSE(other.IsSuitableForAnalysis());
}

TEST_F(Validity, without_a_node_of_type_0_there_is_no_inlet)
{
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_EQ(circuit.IsValid(), 6);
    circuit.GetNode(3)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_EQ(circuit.IsValid(), 6);
}

TEST_F(Validity, without_a_node_of_type_2_there_is_no_outlet)
{
    circuit.GetNode(3)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_EQ(circuit.IsValid(), 7);
    circuit.GetNode(3)->SetType(3);
    EXPECT_EQ(circuit.IsValid(), 7);
}

TEST_F(Validity, an_absent_node_type_reads_as_inlet)
{
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    node(1)->RemoveProperty(TAVELL_NODE_MODE);
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, a_constraint_outside_0_to_4_is_invalid)
{
    node(1)->SetProperty(TAVELL_NODE_CONSTRAINT, 5.0);
    EXPECT_EQ(circuit.IsValid(), 3);
    node(1)->SetProperty(TAVELL_NODE_CONSTRAINT, -1.0);
    EXPECT_EQ(circuit.IsValid(), 3);
    node(1)->SetProperty(TAVELL_NODE_CONSTRAINT, 4.9);
    EXPECT_EQ(circuit.IsValid(), 1);
    EXPECT_TRUE(circuit.IsSuitableForAnalysis());
}

TEST_F(Validity, an_invalid_constraint_is_not_suitable)
{
    node(1)->SetProperty(TAVELL_NODE_CONSTRAINT, 5.0);
    EXPECT_FALSE(circuit.IsSuitableForAnalysis());
}

TEST_F(Validity, each_constraint_needs_its_value)
{
    const int valueOf[] = {TAVELL_NODE_PRESSURE, TAVELL_NODE_MASS_FLOW_RATE, TAVELL_NODE_REYNOLDS,
                           TAVELL_NODE_VELOCITY, TAVELL_NODE_MASS_FLOW_RATE};
    for (int constraint = 0; constraint <= 4; ++constraint) {
        constrainWithoutValue(1, constraint);
        EXPECT_EQ(circuit.IsValid(), 3) << constraint;
        node(1)->SetProperty(valueOf[constraint], 1.0);
        EXPECT_EQ(circuit.IsValid(), 1) << constraint;
    }
}

TEST_F(Validity, no_other_value_satisfies_a_single_constraint)
{
    const int valueOf[] = {TAVELL_NODE_PRESSURE, TAVELL_NODE_MASS_FLOW_RATE, TAVELL_NODE_REYNOLDS,
                           TAVELL_NODE_VELOCITY};
    for (int constraint = 0; constraint <= 3; ++constraint) {
        constrainWithoutValue(1, constraint);
        for (int property = TAVELL_NODE_REYNOLDS; property <= TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT;
             ++property)
            if (property != valueOf[constraint] && property != TAVELL_NODE_CONSTRAINT)
                node(1)->SetProperty(property, 1.0);
        EXPECT_EQ(circuit.IsValid(), 3) << constraint;
    }
}

TEST_F(Validity, pressure_and_flow_is_satisfied_by_a_pressure_too)
{
    constrainWithoutValue(1, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
    node(1)->SetProperty(TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT, 1.0);
    EXPECT_EQ(circuit.IsValid(), 3);
    node(1)->SetProperty(TAVELL_NODE_PRESSURE, 1.0);
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, without_a_pressure_constraint_nothing_fixes_the_level)
{
    for (std::size_t i = 0; i < 4; ++i)
        circuit.GetNode(i)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 0.1);
    EXPECT_EQ(circuit.IsValid(), 9);
    circuit.GetNode(3)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE_AND_FLOW, 1.0);
    EXPECT_EQ(circuit.IsValid(), 9);
    EXPECT_FALSE(circuit.IsSuitableForAnalysis());
}

TEST_F(Validity, pressure_and_flow_needs_two_other_constraints)
{
    for (std::size_t i = 1; i < 4; ++i)
        circuit.GetNode(i)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE_AND_FLOW, 1.0);
    EXPECT_EQ(circuit.IsValid(), 10);
    EXPECT_FALSE(circuit.IsSuitableForAnalysis());
    circuit.GetNode(1)->SetConstraint(TAVELL_CONSTRAINT_VELOCITY, 1.0);
    EXPECT_EQ(circuit.IsValid(), 1);
    circuit.GetNode(1)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 1.0);
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, missing_values_come_before_missing_pressures)
{
    for (std::size_t i = 0; i < 4; ++i)
        constrainWithoutValue(i, TAVELL_CONSTRAINT_MASS_FLOW);
    EXPECT_EQ(circuit.IsValid(), 3);
}

TEST_F(Validity, an_outlet_carries_the_value_of_its_constraint_so_the_state_is_1)
{
    for (std::size_t i = 0; i < 3; ++i)
        circuit.GetNode(i)->SetType(TAVELL_NODE_INLET);
    EXPECT_EQ(circuit.IsValid(), 1);
    constrainWithoutValue(3, TAVELL_CONSTRAINT_PRESSURE);
    EXPECT_EQ(circuit.IsValid(), 3);
}

TEST_F(Validity, results_count_before_everything_else)
{
    const ScopedVariable detail(kDetailCheck, "1");
    Circuit empty(registry);
    empty.setHasResults(true);
    EXPECT_EQ(empty.IsValid(), 2);
    EXPECT_TRUE(empty.IsSuitableForAnalysis());
    EXPECT_TRUE(empty.Validate());
}

TEST_F(Validity, a_change_of_the_circuit_ends_state_2)
{
    circuit.setHasResults(true);
    EXPECT_EQ(circuit.IsValid(), 2);
    circuit.GetNode(0)->SetLocation(7.0, 8.0, 9.0);
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, a_disconnected_circuit_is_found_by_the_detail_check_only)
{
    addNodes(circuit, 1);
    EXPECT_EQ(circuit.IsValid(), 1);
    {
        const ScopedVariable detail(kDetailCheck, "1");
        EXPECT_EQ(circuit.IsValid(), 11);
        EXPECT_FALSE(circuit.IsSuitableForAnalysis());
        const ScopedVariable connectivity(kDontCheckConnectivity, "");
        EXPECT_EQ(circuit.IsValid(), 1);
    }
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, connectivity_comes_after_the_counts_and_before_the_types)
{
    const ScopedVariable detail(kDetailCheck, "1");
    addNodes(circuit, 1);
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_EQ(circuit.IsValid(), 11);
    Circuit few(registry);
    addNodes(few, 10);
    EXPECT_EQ(few.IsValid(), 4);
}

TEST_F(Validity, an_end_that_names_no_node_is_found_by_the_detail_check_only)
{
    addElement(circuit, 1, 99);
    EXPECT_EQ(circuit.IsValid(), 1);
    const ScopedVariable detail(kDetailCheck, "1");
    EXPECT_EQ(circuit.IsValid(), 8);
    EXPECT_FALSE(circuit.IsSuitableForAnalysis());
    circuit.GetElement(3)->SwapNodes();
    EXPECT_EQ(circuit.IsValid(), 8);
    circuit.GetElement(3)->GetEntity()->SetProperty(TAVELL_ELEMENT_START, 4.0);
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, an_end_that_names_no_node_comes_after_the_types_and_before_the_constraints)
{
    const ScopedVariable detail(kDetailCheck, "1");
    circuit.CreateEmptyElement();
    node(1)->SetProperty(TAVELL_NODE_CONSTRAINT, 5.0);
    EXPECT_EQ(circuit.IsValid(), 8);
    circuit.GetNode(3)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_EQ(circuit.IsValid(), 7);
}

TEST_F(Validity, the_detail_check_is_on_when_its_variable_reads_as_1)
{
    for (const char* value : {"1", " 1", "+1", "01", "1abc", "1.9", "1 2"}) {
        const ScopedVariable detail(kDetailCheck, value);
        EXPECT_TRUE(detailCheckRequested()) << '"' << value << '"';
    }
    for (const char* value :
         {"", "0", "2", "-1", "11", "yes", "true", "0x1", "4294967297", "99999999999999999999"}) {
        const ScopedVariable detail(kDetailCheck, value);
        EXPECT_FALSE(detailCheckRequested()) << '"' << value << '"';
    }
    EXPECT_FALSE(detailCheckRequested());
}

TEST_F(Validity, is_valid_changes_nothing)
{
    const ScopedVariable detail(kDetailCheck, "1");
    setText(node(2), "node_id", "3.5");
    const std::string before = dump(circuit);
    circuit.IsValid();
    circuit.IsSuitableForAnalysis();
    EXPECT_EQ(dump(circuit), before);
}

TEST_F(Validity, a_text_that_is_no_number_reaches_the_caller)
{
    setText(node(1), "node_constraint", "abc");
    try {
        circuit.IsValid();
        FAIL() << "a text was read as a number";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid stod argument");
    }
    setText(node(1), "node_constraint", "0");
    EXPECT_EQ(circuit.IsValid(), 1);
}

TEST_F(Validity, validate_mends_ids_and_answers_for_the_mended_circuit)
{
    // Two elements with the id 3 and an end stored as 2.25, which reads as 2.
    circuit.GetElement(1)->GetEntity()->SetProperty(TAVELL_ELEMENT_ID, 3.0);
    circuit.GetElement(1)->GetEntity()->SetProperty(TAVELL_ELEMENT_START, 2.25);
    EXPECT_TRUE(circuit.Validate());
    EXPECT_EQ(circuit.GetElement(1)->GetId(), 3);
    EXPECT_EQ(circuit.GetElement(2)->GetId(), 4);
    double start = 0.0;
    circuit.GetElement(1)->GetEntity()->GetProperty(TAVELL_ELEMENT_START, &start);
    EXPECT_EQ(start, 2.0);
}

TEST_F(Validity, validate_answers_false_for_an_unsuitable_circuit)
{
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_FALSE(circuit.Validate());
}

TEST_F(Validity, validate_leaves_a_circuit_with_results_alone)
{
    setText(circuit.GetElement(1)->GetEntity(), "element_id", "abc");
    circuit.setHasResults(true);
    const std::string before = dump(circuit);
    EXPECT_TRUE(circuit.Validate());
    EXPECT_EQ(dump(circuit), before);
    EXPECT_TRUE(circuit.hasResults());
}

TEST_F(Validity, validate_leaves_a_sound_circuit_as_it_is)
{
    const std::string before = dump(circuit);
    EXPECT_TRUE(circuit.Validate());
    EXPECT_EQ(dump(circuit), before);
}

TEST_F(Validity, a_validate_that_throws_leaves_every_identifier_as_it_was)
{
    node(2)->SetProperty(TAVELL_NODE_ID, 2.0);  // taken by the second node
    node(1)->GetProperties()->SetStringPropertyByName("node_mode", "abc");
    EXPECT_THROW(circuit.Validate(), std::invalid_argument);
    EXPECT_EQ(circuit.GetNode(2)->GetId(), 2);
    // the counter too: the next node gets the id that it would have got before
    EXPECT_EQ(circuit.CreateNode()->GetId(), 5);
}
