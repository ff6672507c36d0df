// Input that no real circuit has: it is answered with false and feedback, never with a crash, a hang or part
// of a result.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/networks.h"
#include "tavell/IPropertySet.h"

using namespace support;

namespace
{

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

Description sound()
{
    std::mt19937 random(41);
    return randomNetwork(random, 8, 3, {TAVELL_PIPE});
}

void expectRefusal(const Built& built)
{
    EXPECT_FALSE(built.solve());
    EXPECT_FALSE(built.feedbackIds().empty());
    for (int key = 0; key <= 8; ++key)
        EXPECT_EQ(built.circuit().GetResults(key), nullptr);
}

void expectFiniteOrRefusal(const Built& built)
{
    if (!built.solve()) {
        expectRefusal(built);
        return;
    }
    for (int key = 0; key <= 8; ++key)
        for (const double value : built.results(key))
            EXPECT_TRUE(std::isfinite(value)) << "key " << key;
}

}  // namespace

TEST(BadInput, coordinates_that_are_no_numbers_are_refused)
{
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        const Built built(sound());
        built.node(2)->SetLocation(bad, 0.0, 0.0);
        expectRefusal(built);
    }
}

TEST(BadInput, element_sizes_that_are_no_numbers_never_reach_a_result)
{
    const Description description = sound();
    for (const int id :
         {TAVELL_ELEMENT_DIAMETER, TAVELL_ELEMENT_AREA, TAVELL_ELEMENT_ROUGHNESS, TAVELL_ELEMENT_K_SPECIFIED})
        for (const double bad : {kNaN, kInfinity, -kInfinity, 0.0, -1.0})
            for (std::size_t e = 0; e < description.elements.size(); e += 3) {
                SCOPED_TRACE(std::to_string(id) + " := " + std::to_string(bad) + " on " + std::to_string(e));
                const Built built(description);
                built.element(static_cast<int>(e))->GetEntity()->SetProperty(id, bad);
                expectFiniteOrRefusal(built);
            }
}

TEST(BadInput, constraint_values_that_are_no_numbers_are_refused)
{
    const Description description = sound();
    for (std::size_t n = 0; n < description.nodes.size(); ++n) {
        if (description.nodes[n].type == TAVELL_NODE_INTERNAL) continue;
        for (const double bad : {kNaN, kInfinity}) {
            Description changed = description;
            changed.nodes[n].value = bad;
            const Built built(changed);
            expectRefusal(built);
        }
    }
}

TEST(BadInput, fluid_values_that_are_no_numbers_never_reach_a_result)
{
    for (const int id : {TAVELL_FLUID_DENSITY, TAVELL_FLUID_VISCOSITY})
        for (const double bad : {kNaN, kInfinity, 0.0, -1.0}) {
            SCOPED_TRACE(std::to_string(id) + " := " + std::to_string(bad));
            const Built built(sound());
            built.circuit().GetFluid()->GetEntity()->SetProperty(id, bad);
            expectFiniteOrRefusal(built);
        }
}

TEST(BadInput, every_type_without_its_inputs_is_refused_or_finite)
{
    for (int type = -1; type <= 12; ++type) {
        SCOPED_TRACE(type);
        const Built built(sound());
        built.element(1)->SetType(type);
        expectFiniteOrRefusal(built);
    }
}

TEST(BadInput, element_without_nodes_is_reported_with_number_0)
{
    const Built built(sound());
    built.circuit().CreateEmptyElement();
    expectRefusal(built);
    EXPECT_EQ(built.feedback(), "1(0) ");
}

TEST(BadInput, element_whose_node_was_released_is_reported_with_the_nodes_number)
{
    const Built built(sound());
    INode* node = built.node(3);
    const int id = node->GetId();
    ASSERT_TRUE(built.circuit().ReleaseNode(node));
    expectRefusal(built);
    EXPECT_EQ(built.feedback(), "1(" + std::to_string(id) + ") ");
}

TEST(BadInput, node_without_elements_is_no_obstacle)
{
    const Built built(sound());
    INode* lonely = built.circuit().CreateNode();
    ASSERT_TRUE(built.solve()) << built.feedback();
    lonely->SetType(TAVELL_NODE_OUTLET);
    lonely->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 1.0);
    EXPECT_TRUE(built.solve()) << built.feedback();
    lonely->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 1e5);
    EXPECT_TRUE(built.solve()) << built.feedback();
}

TEST(BadInput, empty_circuit_is_refused_without_feedback)
{
    const Built built(Description{});
    EXPECT_FALSE(built.solve());
    EXPECT_TRUE(built.feedbackIds().empty());
}

TEST(BadInput, circuit_of_fixed_pressures_only_has_no_internal_node)
{
    Description d;
    d.nodes.resize(2);
    d.nodes[0].type = TAVELL_NODE_INLET;
    d.nodes[1].type = TAVELL_NODE_OUTLET;
    d.nodes[1].at = {1.0, 0.0, 0.0};
    d.elements.resize(1);
    d.elements[0].end = 1;
    const Built built(d);
    expectRefusal(built);
    EXPECT_EQ(built.feedback(), "13() ");
}

TEST(BadInput, loop_from_a_node_to_itself_carries_nothing)
{
    const Built built(sound());
    IElement* loop = built.circuit().CreateEmptyElement();
    loop->GetEntity()->SetProperty(TAVELL_ELEMENT_START, 3.0);
    loop->GetEntity()->SetProperty(TAVELL_ELEMENT_END, 3.0);
    loop->GetEntity()->SetProperty(TAVELL_ELEMENT_DIAMETER, 0.1);
    loop->GetEntity()->SetProperty(TAVELL_ELEMENT_AREA, 0.01);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_EQ(built.results(TAVELL_RESULT_MASS_FLOW).back(), 0.0);
}

TEST(BadInput, unreadable_number_throws_and_leaves_results_and_feedback)
{
    const Built built(sound());
    ASSERT_TRUE(built.solve());
    const std::vector<double> before = built.results(TAVELL_RESULT_PRESSURE);
    for (const char* name : {"node_pressure", "node_x", "node_id", "node_mode", "node_constraint"}) {
        SCOPED_TRACE(name);
        const Description description = sound();
        int inlet = 0;
        while (description.nodes[static_cast<std::size_t>(inlet)].type != TAVELL_NODE_INLET)
            ++inlet;
        auto* properties = built.node(inlet)->GetEntity()->GetWriteableProperties();
        const std::string text = properties->GetStringValue(static_cast<std::size_t>(
            properties->GetIndex(name == std::string("node_x")            ? TAVELL_NODE_X
                                 : name == std::string("node_id")         ? TAVELL_NODE_ID
                                 : name == std::string("node_mode")       ? TAVELL_NODE_MODE
                                 : name == std::string("node_constraint") ? TAVELL_NODE_CONSTRAINT
                                                                          : TAVELL_NODE_PRESSURE)));
        ASSERT_TRUE(properties->SetStringPropertyByName(name, "abc"));
        EXPECT_THROW(built.circuit().Solve(false, nullptr), std::invalid_argument);
        EXPECT_EQ(built.results(TAVELL_RESULT_PRESSURE), before);
        ASSERT_TRUE(properties->SetStringPropertyByName(name, text.c_str()));
    }
    EXPECT_TRUE(built.solve());
}

TEST(BadInput, pump_without_a_usable_curve_is_reported_with_its_nodes)
{
    Description d = sound();
    const Built built(d);
    built.element(0)->SetType(TAVELL_PUMP);
    expectRefusal(built);
    ASSERT_EQ(built.feedbackIds(), std::vector<int>{14});
    EXPECT_EQ(built.circuit().GetFeedback()->GetFeedback(0)->GetValues()[0], built.element(0)->GetId());
}

TEST(BadInput, unbalanced_part_without_a_pressure_is_named_and_refused)
{
    Description d = sound();
    for (NodeData& node : d.nodes)
        if (node.type != TAVELL_NODE_INTERNAL && node.constraint == TAVELL_CONSTRAINT_PRESSURE) {
            node.constraint = TAVELL_CONSTRAINT_MASS_FLOW;
            node.value = 0.5;
        }
    const Built built(d);
    expectRefusal(built);
    EXPECT_EQ(built.feedbackIds().front(), TAVELL_FEEDBACK_UNBALANCED_PART);
}

TEST(BadInput, balanced_part_without_a_pressure_is_solved_at_its_starting_pressure_and_named)
{
    // inlet flow 2 kg/s, outlet flow 2 kg/s, no pressure anywhere: flows are known, pressures up to a
    // constant
    Description d;
    d.gravity = {0.0, 0.0, 0.0};
    for (int i = 0; i < 4; ++i) {
        NodeData node;
        node.at = {10.0 * i, 0.0, 0.0};
        d.nodes.push_back(node);
        if (i == 0) continue;
        ElementData pipe;
        pipe.start = i - 1;
        pipe.end = i;
        d.elements.push_back(pipe);
    }
    d.nodes[0].type = TAVELL_NODE_INLET;
    d.nodes[3].type = TAVELL_NODE_OUTLET;
    for (const std::size_t n : {0U, 3U}) {
        d.nodes[n].constraint = TAVELL_CONSTRAINT_MASS_FLOW;
        d.nodes[n].value = 2.0;
    }
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_EQ(built.feedback(), "17(2) 19(1) 19(3) ");
    for (const double flow : built.results(TAVELL_RESULT_MASS_FLOW))
        EXPECT_NEAR(flow, 2.0, 2e-6 * 2.0);
}

TEST(BadInput, cancellation_stops_the_solve_and_says_so)
{
    const Built built(sound());
    EXPECT_FALSE(built.circuit().Solve(false, [] { return true; }));
    EXPECT_EQ(built.feedbackIds().back(), TAVELL_FEEDBACK_CANCELLED);
    EXPECT_TRUE(built.solve());
    EXPECT_TRUE(built.feedbackIds().empty());
}
