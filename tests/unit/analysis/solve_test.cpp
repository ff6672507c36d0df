// solve_test.cpp: a circuit solved from end to end, and what each kind of failure leaves.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "circuits.h"

using namespace AnalysisTest;

namespace
{

constexpr double kDensity = 997.4000244140625;

/// Four nodes in a row, 10 m apart, joined by pipes of 0.1 m; 2e5 Pa at the inlet, 1e5 Pa at the outlet.
class Solve : public ::testing::Test
{
protected:
    Solve()
    {
        makeLine(circuit, 4);
        for (std::size_t i = 0; i < 4; ++i)
            circuit.GetNode(i)->SetLocation(10.0 * static_cast<double>(i), 0.0, 0.0);
        for (std::size_t i = 0; i < 3; ++i) {
            set(i, TAVELL_ELEMENT_DIAMETER, 0.1);
            set(i, TAVELL_ELEMENT_AREA, 0.0078);
            set(i, TAVELL_ELEMENT_ROUGHNESS, 1e-4);
        }
        // specified coefficients only: the pipes share the pressure by their lengths, whatever their bends
        circuit.SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, 0.0);
        circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 2e5);
        circuit.GetNode(3)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 1e5);
    }

    void set(std::size_t element, int property, double value)
    {
        circuit.GetElement(element)->GetEntity()->SetProperty(property, value);
    }

    std::vector<double> values(int key)
    {
        IResultsSet* results = circuit.GetResults(key);
        if (results == nullptr || results->GetSize() == 0) return {};
        return {results->GetValues(), results->GetValues() + results->GetSize()};
    }

    std::vector<int> feedback()
    {
        std::vector<int> ids;
        for (std::size_t i = 0; i < circuit.GetFeedback()->GetSize(); ++i)
            ids.push_back(circuit.GetFeedback()->GetFeedback(i)->GetId());
        return ids;
    }

    /// A failed solve leaves no results and these feedback ids.
    void expectFailure(const std::vector<int>& ids)
    {
        EXPECT_FALSE(circuit.Solve(false));
        EXPECT_EQ(feedback(), ids);
        expectNoResults();
    }
    void expectNoResults()
    {
        EXPECT_FALSE(circuit.hasResults());
        EXPECT_TRUE(circuit.results().empty());
        for (int key = -1; key <= 9; ++key)
            EXPECT_EQ(circuit.GetResults(key), nullptr);
    }

    PlainEnvironment environment;
    ScopedVariable debug{"TAVELL_DEBUG_FILE", nullptr};
    ObjectRegistry registry;
    Circuit circuit{registry};
};

bool stop()
{
    return true;
}

int calls = 0;
bool countCalls()
{
    ++calls;
    return false;
}

}  // namespace

TEST_F(Solve, a_sound_circuit_converges_with_results_and_without_feedback)
{
    EXPECT_TRUE(circuit.Solve(false));
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(circuit.GetFeedback()->GetSize(), 0U);
    EXPECT_EQ(circuit.GetFeedback()->GetFeedback(0), nullptr);
    for (int key = 0; key <= 8; ++key)
        EXPECT_NE(circuit.GetResults(key), nullptr) << key;
    EXPECT_EQ(circuit.GetResults(-1), nullptr);
    EXPECT_EQ(circuit.GetResults(9), nullptr);
    EXPECT_EQ(circuit.IsValid(), TAVELL_VALID_HAS_RESULTS);
}

TEST_F(Solve, three_equal_pipes_share_the_pressure_equally)
{
    ASSERT_TRUE(circuit.Solve(false));
    const std::vector<double> pressure = values(TAVELL_RESULT_PRESSURE);
    EXPECT_EQ(pressure[0], 2e5);
    EXPECT_NEAR(pressure[1], 2e5 - 1e5 / 3.0, 1.0);
    EXPECT_NEAR(pressure[2], 1e5 + 1e5 / 3.0, 1.0);
    EXPECT_EQ(pressure[3], 1e5);
    const std::vector<double> flow = values(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> difference = values(TAVELL_RESULT_PRESSURE_DIFFERENCE);
    // Swamee and Jain (1976) at the flow found
    const double V = flow[1] / kDensity / 0.0078;
    const double Re = V * kDensity * 0.1 / 0.0009800000116229057;
    const double x = std::log10(1e-3 / 3.7 + 5.74 / std::pow(Re, 0.9));
    EXPECT_NEAR(-difference[1], 0.25 / (x * x) * 100.0 * kDensity * V * V / 2.0, 1.0);
    EXPECT_NEAR(values(TAVELL_RESULT_REYNOLDS)[1], Re, 1e-6 * Re);
    EXPECT_NEAR(values(TAVELL_RESULT_VELOCITY)[1], V, 1e-12);
    EXPECT_NEAR(values(TAVELL_RESULT_VOLUME_FLOW)[1], flow[1] / kDensity, 1e-15);
    EXPECT_NEAR(values(TAVELL_RESULT_EXTERNAL_MASS_FLOW)[0], flow[0], 1e-12);
    EXPECT_NEAR(values(TAVELL_RESULT_EXTERNAL_MASS_FLOW)[3], -flow[2], 1e-12);
    EXPECT_NEAR(values(TAVELL_RESULT_EXTERNAL_MASS_FLOW)[1], 0.0, 2e-6 * flow[0]);
}

TEST_F(Solve, without_energy_temperatures_are_the_inlets_and_the_fluids)
{
    circuit.GetNode(0)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, 350.0);
    ASSERT_TRUE(circuit.Solve(false));
    EXPECT_EQ(values(TAVELL_RESULT_NODE_TEMPERATURE)[0], 350.0);
    EXPECT_EQ(values(TAVELL_RESULT_NODE_TEMPERATURE)[1], 294.260009765625);
    EXPECT_EQ(values(TAVELL_RESULT_ELEMENT_TEMPERATURE)[0], (350.0 + 294.260009765625) / 2.0);
}

TEST_F(Solve, node_pressures_are_static_whatever_the_height_of_the_circuit)
{
    ASSERT_TRUE(circuit.Solve(false));
    const std::vector<double> level = values(TAVELL_RESULT_MASS_FLOW);
    for (const double base : {0.0, -7.0, 100.0}) {
        for (std::size_t i = 0; i < 4; ++i)
            circuit.GetNode(i)->SetLocation(10.0 * static_cast<double>(i), 0.0, base + (i == 1 ? 5.0 : 0.0));
        ASSERT_TRUE(circuit.Solve(false));
        const std::vector<double> pressure = values(TAVELL_RESULT_PRESSURE);
        EXPECT_NEAR(pressure[0], 2e5, 1e-10);
        EXPECT_NEAR(pressure[3], 1e5, 1e-10);
        // the loss to node 2 is that of its longer pipe, 11.18 m of 32.36 m in all; its height takes the rest
        const double piezometric = 2e5 - 1e5 * std::sqrt(125.0) / (2.0 * std::sqrt(125.0) + 10.0);
        EXPECT_NEAR(pressure[1], piezometric - kDensity * 9.80665 * 5.0, 2.0);
    }
}

TEST_F(Solve, a_higher_outlet_takes_its_hydrostatic_pressure_from_the_flow)
{
    circuit.GetNode(3)->SetLocation(20.0, 0.0, 10.0);
    circuit.GetNode(3)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 2e5 - kDensity * 9.80665 * 10.0);
    ASSERT_TRUE(circuit.Solve(false));
    EXPECT_NEAR(values(TAVELL_RESULT_MASS_FLOW)[0], 0.0, 1e-3);
}

TEST_F(Solve, solving_again_gives_the_same_bits)
{
    ASSERT_TRUE(circuit.Solve(false));
    const std::vector<double> first = values(TAVELL_RESULT_MASS_FLOW);
    ASSERT_TRUE(circuit.Solve(false));
    EXPECT_EQ(values(TAVELL_RESULT_MASS_FLOW), first);
}

TEST_F(Solve, a_solve_leaves_the_model_as_it_was)
{
    const std::string before =
        dump(circuit) + dump(circuit.GetEntity()) + dump(circuit.GetFluid()->GetEntity());
    circuit.Solve(true);
    EXPECT_EQ(dump(circuit) + dump(circuit.GetEntity()) + dump(circuit.GetFluid()->GetEntity()), before);
}

TEST_F(Solve, a_missing_end_node_is_feedback_1_with_its_number)
{
    ASSERT_TRUE(circuit.Solve(false));
    set(1, TAVELL_ELEMENT_END, 42.0);
    expectFailure({TAVELL_FEEDBACK_NODE_MISSING});
    EXPECT_EQ(circuit.GetFeedback()->GetFeedback(0)->GetValues()[0], 42.0);
    set(1, TAVELL_ELEMENT_END, 0.0);
    expectFailure({TAVELL_FEEDBACK_NODE_MISSING});
    EXPECT_EQ(circuit.GetFeedback()->GetFeedback(0)->GetValues()[0], 0.0);
}

TEST_F(Solve, a_curve_without_points_is_feedback_14_with_its_numbers)
{
    circuit.GetElement(1)->SetType(TAVELL_PUMP);
    expectFailure({TAVELL_FEEDBACK_CURVE_ERROR});
    IFeedback* item = circuit.GetFeedback()->GetFeedback(0);
    ASSERT_EQ(item->GetValueSize(), 4U);
    EXPECT_EQ(item->GetValues()[0], 2.0);
    EXPECT_EQ(item->GetValues()[1], 2.0);
    EXPECT_EQ(item->GetValues()[2], 3.0);
    EXPECT_EQ(item->GetValues()[3], 1.0);
}

TEST_F(Solve, a_circuit_without_free_nodes_is_feedback_13)
{
    circuit.GetNode(1)->SetType(TAVELL_NODE_INLET);
    circuit.GetNode(2)->SetType(TAVELL_NODE_INLET);
    expectFailure({TAVELL_FEEDBACK_NO_INTERNAL_NODES});
    EXPECT_EQ(circuit.GetFeedback()->GetFeedback(0)->GetValueSize(), 0U);
}

TEST_F(Solve, an_empty_circuit_fails_without_feedback)
{
    Circuit empty(registry);
    EXPECT_FALSE(empty.Solve(false));
    EXPECT_EQ(empty.GetFeedback()->GetSize(), 0U);
    EXPECT_FALSE(empty.hasResults());
}

TEST_F(Solve, nodes_without_elements_and_elements_without_nodes_fail)
{
    Circuit nodesOnly(registry);
    addNodes(nodesOnly, 3);
    EXPECT_NO_THROW(nodesOnly.Solve(false));
    Circuit elementsOnly(registry);
    elementsOnly.CreateEmptyElement();
    EXPECT_FALSE(elementsOnly.Solve(false));
}

TEST_F(Solve, a_cancelled_solve_is_feedback_21_and_leaves_no_results)
{
    ASSERT_TRUE(circuit.Solve(false));
    EXPECT_FALSE(circuit.Solve(false, stop));
    expectNoResults();
    const std::vector<int> ids = feedback();
    ASSERT_FALSE(ids.empty());
    EXPECT_EQ(ids.back(), TAVELL_FEEDBACK_CANCELLED);
}

TEST_F(Solve, the_callback_is_asked_once_per_iteration_and_its_consent_changes_nothing)
{
    ASSERT_TRUE(circuit.Solve(false));
    const std::vector<double> flow = values(TAVELL_RESULT_MASS_FLOW);
    calls = 0;
    ASSERT_TRUE(circuit.Solve(false, countCalls));
    EXPECT_GT(calls, 5);
    EXPECT_EQ(values(TAVELL_RESULT_MASS_FLOW), flow);
}

TEST_F(Solve, feedback_is_rebuilt_by_every_solve)
{
    circuit.Solve(false, stop);
    ASSERT_GT(circuit.GetFeedback()->GetSize(), 0U);
    EXPECT_TRUE(circuit.Solve(false));
    EXPECT_EQ(circuit.GetFeedback()->GetSize(), 0U);
}

TEST_F(Solve, the_detail_check_refuses_an_unsuitable_circuit_and_changes_nothing)
{
    circuit.Solve(false, stop);
    const std::vector<int> ids = feedback();
    ASSERT_FALSE(ids.empty());
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    const ScopedVariable check(kDetailCheck, "1");
    calls = 0;
    EXPECT_FALSE(circuit.Solve(false, countCalls));
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(feedback(), ids);
    // a text that is no number is not even read
    setText(circuit.GetElement(2)->GetEntity(), "element_diameter", "wide");
    EXPECT_FALSE(circuit.Solve(false));
}

TEST_F(Solve, any_other_value_of_the_detail_check_skips_it)
{
    for (const char* value : {"2", "yes", "", "0", "-1"}) {
        const ScopedVariable check(kDetailCheck, value);
        Circuit unsuitable(registry);
        EXPECT_FALSE(unsuitable.IsSuitableForAnalysis());
        EXPECT_FALSE(unsuitable.Solve(false));  // by the solver: an empty list
        circuit.GetNode(3)->SetType(TAVELL_NODE_INTERNAL);
        circuit.clearResults();
        EXPECT_FALSE(circuit.IsSuitableForAnalysis());
        EXPECT_TRUE(circuit.Solve(false)) << value;
    }
}

TEST_F(Solve, the_detail_check_lets_a_suitable_circuit_pass)
{
    for (const char* value : {"1", " 1", "1x"}) {
        const ScopedVariable check(kDetailCheck, value);
        EXPECT_TRUE(circuit.Solve(false)) << value;
    }
}

TEST_F(Solve, a_text_that_is_no_number_leaves_results_and_feedback_as_they_were)
{
    circuit.GetNode(3)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 1e5);
    ASSERT_TRUE(circuit.Solve(false));
    const std::vector<double> flow = values(TAVELL_RESULT_MASS_FLOW);
    setText(circuit.GetElement(2)->GetEntity(), "element_diameter", "wide");
    try {
        circuit.Solve(false);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid stod argument");
    }
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(values(TAVELL_RESULT_MASS_FLOW), flow);

    setText(circuit.GetElement(2)->GetEntity(), "element_diameter", "1e999");
    EXPECT_THROW(circuit.Solve(false), std::out_of_range);
    EXPECT_TRUE(circuit.hasResults());

    setText(circuit.GetElement(2)->GetEntity(), "element_diameter", "0.1");
    circuit.Solve(false, stop);
    const std::vector<int> ids = feedback();
    setText(circuit.GetNode(2)->GetEntity(), "node_z", "up");
    EXPECT_THROW(circuit.Solve(false), std::invalid_argument);
    EXPECT_EQ(feedback(), ids);
}

TEST_F(Solve, a_fatal_failure_leaves_no_results_of_the_solve_before)
{
    // the text goes past the notifications that drop results: only the solve itself can
    ASSERT_TRUE(circuit.Solve(false));
    setText(circuit.GetElement(1)->GetEntity(), "element_end", "99");
    ASSERT_TRUE(circuit.hasResults());
    expectFailure({TAVELL_FEEDBACK_NODE_MISSING});
}

TEST_F(Solve, numbers_that_are_none_or_infinite_end_in_false_with_feedback)
{
    const double noNumber = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double bad : {noNumber, infinite, -infinite}) {
        circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, bad);
        EXPECT_FALSE(circuit.Solve(false));
        EXPECT_FALSE(feedback().empty());
        expectNoResults();
        circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 2e5);

        for (const int property : {TAVELL_ELEMENT_DIAMETER, TAVELL_ELEMENT_AREA, TAVELL_ELEMENT_ROUGHNESS}) {
            set(1, property, bad);
            if (!circuit.Solve(false)) {
                EXPECT_FALSE(feedback().empty()) << property << " " << bad;
                expectNoResults();
            }
            for (const double flow : values(TAVELL_RESULT_MASS_FLOW))
                EXPECT_TRUE(std::isfinite(flow)) << property << " " << bad;
            set(1, property, property == TAVELL_ELEMENT_DIAMETER ? 0.1 : 0.0078);
        }
        circuit.GetNode(1)->SetLocation(bad, 0.0, 0.0);
        EXPECT_FALSE(circuit.Solve(false));
        EXPECT_FALSE(feedback().empty());
        expectNoResults();
        circuit.GetNode(1)->SetLocation(10.0, 0.0, 0.0);
    }
    EXPECT_TRUE(circuit.Solve(false));
}

TEST_F(Solve, an_open_end_without_a_condition_carries_no_flow)
{
    circuit.GetNode(3)->SetType(TAVELL_NODE_INTERNAL);
    ASSERT_TRUE(circuit.Solve(false));
    EXPECT_EQ(values(TAVELL_RESULT_MASS_FLOW)[2], 0.0);
    EXPECT_NEAR(values(TAVELL_RESULT_PRESSURE)[3], 2e5, 1.0);
}

TEST_F(Solve, a_part_without_pressure_is_told_and_the_rest_has_results)
{
    const std::vector<INode*> nodes = addNodes(circuit, 3);  // ids 5, 6, 7 in a ring
    addElement(circuit, 5, 6);
    addElement(circuit, 6, 7);
    addElement(circuit, 7, 5);
    for (std::size_t e = 3; e < 6; ++e) {
        set(e, TAVELL_ELEMENT_DIAMETER, 0.1);
        set(e, TAVELL_ELEMENT_AREA, 0.0078);
    }
    EXPECT_TRUE(circuit.Solve(false));
    EXPECT_EQ(feedback(), std::vector<int>{TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE});
    EXPECT_EQ(circuit.GetFeedback()->GetFeedback(0)->GetValues()[0], 5.0);
}

TEST_F(Solve, a_circuit_fed_and_drained_by_different_flows_only_is_told_with_the_difference)
{
    circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 2.0);
    circuit.GetNode(3)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 1.5);
    EXPECT_FALSE(circuit.Solve(false));
    ASSERT_FALSE(feedback().empty());
    EXPECT_EQ(feedback()[0], TAVELL_FEEDBACK_UNBALANCED_PART);
    EXPECT_EQ(circuit.GetFeedback()->GetFeedback(0)->GetValues()[0], 2.0);
    EXPECT_NEAR(circuit.GetFeedback()->GetFeedback(0)->GetValues()[1], 0.5, 1e-15);
}

TEST_F(Solve, equal_flows_in_and_out_solve_about_a_held_pressure)
{
    circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 2.0);
    circuit.GetNode(3)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 2.0);
    EXPECT_TRUE(circuit.Solve(false));
    EXPECT_EQ(feedback(), (std::vector<int>{TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE,
                                            TAVELL_FEEDBACK_PART_FED_BY, TAVELL_FEEDBACK_PART_FED_BY}));
    for (const double flow : values(TAVELL_RESULT_MASS_FLOW))
        EXPECT_NEAR(flow, 2.0, 1e-5);
    EXPECT_EQ(values(TAVELL_RESULT_PRESSURE)[1], 0.0);
}

namespace
{
Circuit* changedByCallback = nullptr;
}

TEST_F(Solve, a_circuit_that_its_callback_changes_gets_no_results)
{
    changedByCallback = &circuit;
    EXPECT_FALSE(circuit.Solve(false, [] {
        changedByCallback->GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 3e5);
        return false;
    }));
    EXPECT_EQ(circuit.GetResults(TAVELL_RESULT_PRESSURE), nullptr);
    EXPECT_NE(circuit.IsValid(), TAVELL_VALID_HAS_RESULTS);
    EXPECT_TRUE(circuit.Solve(false));
}
