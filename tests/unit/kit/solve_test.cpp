#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tavell/Constants.h>

#include "certificate.h"
#include "element_kinds.h"
#include "network_for_tests.h"
#include "solution.h"

namespace kit
{

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kGravity = 9.80665;

/// One horizontal pipe of 100 m and 50 mm between two given pressures, with a node in the middle.
Network onePipe(double pressure)
{
    TestNetwork made;
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(pressure));
    made.node("middle", {50.0, 0.0, 0.0});
    made.node("b", {100.0, 0.0, 0.0}, pressureAt(0.0));
    made.pipe("first", "a", "middle", 0.05, 5e-5);
    made.pipe("second", "middle", "b", 0.05, 5e-5);
    return made.network();
}

/// Two junctions with demands between a reservoir and a second one, all kinds of elements that take a length.
TestNetwork smallTown()
{
    TestNetwork made;
    made.node("tank", {0.0, 0.0, 30.0}, pressureAt(0.0));
    made.node("north", {300.0, 400.0, 5.0}, outflow(4.0));
    made.node("south", {600.0, 0.0, 2.0}, outflow(6.0));
    made.node("pond", {900.0, 400.0, 20.0}, pressureAt(0.0));
    made.pipe("p1", "tank", "north", 0.1, 1e-4);
    made.pipe("p2", "tank", "south", 0.1, 1e-4);
    made.hazenWilliams("p3", "north", "south", 0.08, 130.0);
    made.generalLoss("p4", "pond", "north", 0.1, 4e6, 0.0);
    return made;
}

double largestDifference(const std::vector<double>& a, const std::vector<double>& b)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i)
        largest = std::max(largest, std::fabs(a[i] - b[i]));
    return largest;
}

bool hasCode(const Findings& findings, Code code)
{
    return std::any_of(findings.list().begin(), findings.list().end(),
                       [code](const Finding& finding) { return finding.code == code; });
}

}  // namespace

// Hagen (1839), Poiseuille (1840): Q = pi D^4 dp / (128 mu L); Re = 199 here, laminar.
TEST(SolveNetwork, laminar_pipe_follows_hagen_and_poiseuille)
{
    TestNetwork made;
    made.fluid(900.0, 0.1);
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(10000.0));
    made.node("b", {10.0, 0.0, 0.0}, pressureAt(0.0));
    made.pipe("pipe", "a", "b", 0.05, 0.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    const double flow = kPi * std::pow(0.05, 4) * 10000.0 / (128.0 * 0.1 * 10.0);
    EXPECT_NEAR(solution.volumeFlow[0], flow, 1e-6 * flow);
    EXPECT_NEAR(solution.massFlow[0], 900.0 * flow, 1e-6 * 900.0 * flow);
    EXPECT_NEAR(solution.externalMassFlow[0], 900.0 * flow, 1e-5);
    EXPECT_NEAR(solution.externalMassFlow[1], -900.0 * flow, 1e-5);
}

// dp = f L/D rho V^2/2 with f of Swamee and Jain (1976), both by hand for the solved flow.
TEST(SolveNetwork, turbulent_pipe_follows_swamee_and_jain)
{
    const Network network = onePipe(200000.0);
    const Solution solution = solveNetwork(network);
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    const double V = solution.velocity[0];
    const double Re = solution.fluid.density * V * 0.05 / solution.fluid.viscosity;
    EXPECT_GT(Re, 5000.0);
    EXPECT_NEAR(solution.reynolds[0], Re, 1e-9 * Re);
    const double x = std::log10(5e-5 / 0.05 / 3.7 + 5.74 / std::pow(Re, 0.9));
    const double drop = 0.25 / (x * x) * 100.0 / 0.05 * solution.fluid.density * V * V / 2.0;
    EXPECT_NEAR(drop, 200000.0, 0.5);
    EXPECT_NEAR(solution.pressure[1], 100000.0, 0.5);
}

// Hazen-Williams as a general loss: h = 10.6668 C^-1.852 D^-4.871 L Q^1.852 with C 130, D 0.2 m, L 500 m and
// Q 0.03 m3/s; h = 10.6668 x 1.2152e-4 x 2541.0 x 500 x 1.5109e-3 = 2.4889 m by hand.
TEST(SolveNetwork, general_loss_gives_the_hazen_williams_head_by_hand)
{
    const double ck = kGravity * 10.6668 * std::pow(130.0, -1.852) * std::pow(0.2, -4.871);
    TestNetwork made;
    made.schematic();
    made.node("source", {0.0, 0.0, 0.0}, pressureAt(300000.0));
    made.node("tap", {1.0, 1.0, 0.0}, volumeOutflow(0.03));
    Element& pipe = made.generalLoss("pipe", "source", "tap", 0.2, ck, 1.0);
    pipe.length = 500.0;
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_NEAR(solution.volumeFlow[0], 0.03, 1e-9);
    EXPECT_NEAR(solution.head[0] - solution.head[1], 2.489, 2e-3);
}

TEST(SolveNetwork, demand_at_an_inner_node_equals_a_demand_pipe)
{
    const Solution stub = solveNetwork(smallTown().network());
    ASSERT_EQ(stub.outcome, Outcome::converged) << stub.findings.text();

    TestNetwork made = smallTown();
    for (const char* name : {"north", "south"}) {
        Node& node = made.nodeNamed(name);
        const std::string end = std::string(name) + " end";
        auto at = node.at;
        at[0] += 1.0;
        const auto boundary = node.boundary;
        node.boundary.reset();
        made.node(end, at, boundary);
        made.pipe(end, name, end, 0.1, 1e-4);
    }
    const Solution pipes = solveNetwork(made.network());
    ASSERT_EQ(pipes.outcome, Outcome::converged) << pipes.findings.text();
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(stub.pressure[i], pipes.pressure[i], 0.05);
        EXPECT_NEAR(stub.massFlow[i], pipes.massFlow[i], 1e-4);
    }
    EXPECT_EQ(stub.externalMassFlow[1], -4.0);
    EXPECT_EQ(stub.externalMassFlow[2], -6.0);
}

TEST(SolveNetwork, two_flows_at_the_ends_of_one_element_are_both_kept)
{
    TestNetwork made;
    made.node("in", {0.0, 0.0, 0.0}, inflow(2.0));
    made.node("out", {10.0, 0.0, 0.0}, outflow(3.0));
    made.node("level", {10.0, 10.0, 0.0}, pressureAt(1e5));
    made.pipe("pipe", "in", "out", 0.05, 0.0);
    made.pipe("feed", "level", "out", 0.05, 0.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_NEAR(solution.massFlow[0], 2.0, 1e-5);
    EXPECT_NEAR(solution.massFlow[1], 1.0, 1e-5);
}

TEST(SolveNetwork, flow_at_a_control_valve_goes_through_a_stub)
{
    TestNetwork made;
    made.node("source", {0.0, 0.0, 0.0}, pressureAt(3e5));
    made.node("middle", {10.0, 0.0, 0.0});
    made.node("tap", {20.0, 0.0, 0.0}, velocityOut(0.5));
    made.pipe("pipe", "source", "middle", 0.05, 0.0);
    made.controlValve("valve", "middle", "tap", 0.05, 5.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    // 0.5 m/s in the section of 50 mm
    const double flow = 0.5 * kPi * 0.05 * 0.05 / 4.0 * solution.fluid.density;
    EXPECT_NEAR(solution.massFlow[1], flow, 1e-6);
    EXPECT_NEAR(solution.externalMassFlow[2], -flow, 1e-12);
}

TEST(SolveNetwork, control_valve_at_a_dead_end_carries_nothing)
{
    TestNetwork made;
    made.node("source", {0.0, 0.0, 0.0}, pressureAt(3e5));
    made.node("middle", {10.0, 0.0, 0.0});
    made.node("tap", {10.0, 10.0, 0.0}, pressureAt(2e5));
    made.node("end", {20.0, 0.0, 0.0});
    made.pipe("pipe", "source", "middle", 0.05, 0.0);
    made.pipe("out", "middle", "tap", 0.05, 0.0);
    made.controlValve("valve", "middle", "end", 0.05, 5.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_NEAR(solution.massFlow[2], 0.0, 1e-5);
    EXPECT_NEAR(solution.pressure[3], solution.pressure[1], 0.1);
}

TEST(SolveNetwork, velocity_where_several_elements_meet_is_refused)
{
    TestNetwork made = smallTown();
    made.nodeNamed("south").boundary = velocityOut(1.0);
    const Solution solution = solveNetwork(made.network());
    EXPECT_FALSE(solution.hasResults());
    ASSERT_EQ(solution.findings.list().size(), 1U) << solution.findings.text();
    EXPECT_EQ(solution.findings.list().front().code, Code::needs_one_element);
    EXPECT_EQ(solution.findings.list().front().place.object, "node south");
}

TEST(SolveNetwork, pressure_and_flow_inside_the_network_are_refused)
{
    TestNetwork made = smallTown();
    made.nodeNamed("south").boundary->pressure = 1e5;
    const Solution solution = solveNetwork(made.network());
    EXPECT_FALSE(solution.hasResults());
    EXPECT_TRUE(hasCode(solution.findings, Code::pressure_and_flow_inside));
}

TEST(SolveNetwork, pressure_and_flow_into_a_dead_end_do_not_converge)
{
    TestNetwork made;
    Boundary both = inflow(1.0);
    both.pressure = 3e5;
    made.node("a", {0.0, 0.0, 0.0}, both);
    made.node("b", {10.0, 0.0, 0.0});
    made.pipe("p", "a", "b", 0.1, 0.0);
    EXPECT_EQ(solveNetwork(made.network()).outcome, Outcome::notConverged);
    made.nodeNamed("b").boundary = outflow(1.0);
    EXPECT_EQ(solveNetwork(made.network()).outcome, Outcome::converged);
}

TEST(SolveNetwork, orifice_between_two_given_pressures_is_not_left_at_rest)
{
    for (const bool isSchematic : {false, true}) {
        TestNetwork made;
        if (isSchematic) made.schematic();
        made.fluid(1000.0, 1e-3);
        made.node("a", {0.0, 0.0, 0.0}, pressureAt(2e5));
        made.node("b", {1.0, 0.0, 0.0}, pressureAt(1e5));
        made.round("o", TAVELL_ORIFICE, "a", "b", 0.1)
            .setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.05);
        const Solution solution = solveNetwork(made.network());
        ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
        // ISO 5167-2: C = 0.60539 at beta 0.5, Re 2.21e5, corner tappings; 1e5 Pa drive
        // 0.60539 / sqrt(1 - 0.0625) pi 0.05^2 / 4 sqrt(2 1e5 / 1000) m3/s.
        EXPECT_NEAR(solution.volumeFlow[0], 0.017362, 2e-6);
        EXPECT_TRUE(certify(made.network(), solution).isGood);
    }
}

TEST(SolveNetwork, dead_branch_behind_an_orifice_has_the_pressure_before_it)
{
    // The length chooses flange tappings; the branch ends at once or after another pipe.
    for (const bool isLong : {false, true}) {
        TestNetwork made;
        made.node("a", {0.0, 0.0, 0.0}, pressureAt(5e5));
        made.node("b", {10.0, 0.0, 0.0});
        made.node("c", {20.0, 0.0, 0.0}, pressureAt(1e5));
        made.node("d", {10.0, 0.0508, 0.0});
        made.pipe("1", "a", "b", 0.05, 0.0);
        made.pipe("2", "b", "c", 0.02, 0.0);
        made.round("o", TAVELL_ORIFICE, "d", "b", 0.05)
            .setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.02);
        if (isLong) {
            made.node("e", {10.0, 30.0, 0.0});
            made.pipe("3", "e", "d", 0.05, 0.0);
        } else {
            made.elementNamed("o").length = 0.075;
        }
        const Solution solution = solveNetwork(made.network());
        ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
        EXPECT_NEAR(solution.pressure[3], solution.pressure[1], 1e-3);
        EXPECT_EQ(solution.massFlow[2], 0.0);
        EXPECT_TRUE(certify(made.network(), solution).isGood);
    }
}

TEST(SolveNetwork, demand_of_nothing_does_not_keep_orifices_at_rest)
{
    TestNetwork made;
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(3e5));
    made.node("b", {10.0, 0.0, 0.0});
    made.node("c", {20.0, 0.0, 0.0}, pressureAt(1e5));
    made.node("tap", {10.0, 10.0, 0.0}, outflow(0.0));
    made.round("o1", TAVELL_ORIFICE, "a", "b", 0.1).setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.05);
    made.round("o2", TAVELL_ORIFICE, "b", "c", 0.1).setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.05);
    made.pipe("branch", "b", "tap", 0.1, 0.0);
    for (const int type : {TAVELL_PIPE, TAVELL_CONTROL_VALVE}) {
        made.elementNamed("branch").kind = elementKindOf(type);
        made.elementNamed("branch").setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 1.0);
        const Solution solution = solveNetwork(made.network());
        ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
        EXPECT_NEAR(solution.pressure[1], 2e5, 1.0);
        EXPECT_NEAR(solution.pressure[3], 2e5, 1.0);
        EXPECT_GT(solution.massFlow[0], 1.0);
        EXPECT_EQ(solution.externalMassFlow[3], 0.0);
        EXPECT_TRUE(certify(made.network(), solution).isGood);
    }
}

TEST(SolveNetwork, inlets_alone_are_solved)
{
    TestNetwork made;
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(3e5));
    made.node("b", {10.0, 0.0, 0.0});
    made.node("c", {20.0, 0.0, 0.0}, pressureAt(1e5));
    made.pipe("p", "a", "b", 0.1, 0.0);
    made.pipe("q", "b", "c", 0.1, 0.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_NEAR(solution.pressure[1], 2e5, 1.0);
    EXPECT_TRUE(solution.findings.list().empty()) << solution.findings.text();
}

TEST(SolveNetwork, detour_equals_a_straight_pipe_of_its_length)
{
    TestNetwork straight;
    TestNetwork bent;
    for (TestNetwork* made : {&straight, &bent}) {
        const bool isBent = made == &bent;
        made->node("tank", {0.0, 0.0, 30.0}, pressureAt(0.0));
        made->node("a", {isBent ? 200.0 : 500.0, 0.0, 30.0}, outflow(1.0));
        made->node("b", {isBent ? 200.0 : 500.0, isBent ? 10.0 : 300.0, 30.0}, outflow(2.0));
        made->pipe("pipe", "tank", "a", 0.1, 1e-4).setProperty(TAVELL_ELEMENT_K_SPECIFIED, 2.0);
        made->hazenWilliams("hw", "a", "b", 0.08, 120.0);
        if (!isBent) continue;
        made->elementNamed("pipe").length = 500.0;
        made->elementNamed("hw").length = 300.0;
    }
    const Solution expected = solveNetwork(straight.network());
    const Solution found = solveNetwork(bent.network());
    ASSERT_EQ(expected.outcome, Outcome::converged) << expected.findings.text();
    ASSERT_EQ(found.outcome, Outcome::converged) << found.findings.text();
    EXPECT_LT(largestDifference(expected.pressure, found.pressure), 0.05);
    EXPECT_LT(largestDifference(expected.massFlow, found.massFlow), 1e-5);
}

TEST(SolveNetwork, schematic_network_equals_its_geometry)
{
    const TestNetwork geometry = smallTown();
    TestNetwork drawing = smallTown();
    drawing.schematic();
    for (const char* name : {"p1", "p2", "p3"})
        drawing.elementNamed(name).length = geometry.distance(name);
    double x = 0.0;
    for (const char* name : {"tank", "north", "south", "pond"})
        drawing.nodeNamed(name).at = {x += 1.0, 2.0, geometry.nodeNamed(name).at[2]};
    const Solution expected = solveNetwork(geometry.network());
    const Solution found = solveNetwork(drawing.network());
    ASSERT_EQ(expected.outcome, Outcome::converged) << expected.findings.text();
    ASSERT_EQ(found.outcome, Outcome::converged) << found.findings.text();
    EXPECT_LT(largestDifference(expected.pressure, found.pressure), 0.2);
    EXPECT_LT(largestDifference(expected.head, found.head), 2e-5);
    EXPECT_LT(largestDifference(expected.massFlow, found.massFlow), 1e-4);
}

TEST(SolveNetwork, pressure_datum_changes_nothing)
{
    TestNetwork made = smallTown();
    const Solution expected = solveNetwork(made.network());
    made.network().settings.pressureDatum = 1e6;
    const Solution found = solveNetwork(made.network());
    ASSERT_EQ(expected.outcome, Outcome::converged) << expected.findings.text();
    ASSERT_EQ(found.outcome, Outcome::converged) << found.findings.text();
    EXPECT_EQ(found.pressure[0], 0.0);
    EXPECT_LT(largestDifference(expected.pressure, found.pressure), 0.5);
    EXPECT_LT(largestDifference(expected.massFlow, found.massFlow), 1e-4);
}

TEST(SolveNetwork, pump_curve_that_ends_far_above_no_rise_is_continued)
{
    // Falling points whose cubic turns up again behind the last one.
    TestNetwork made;
    made.fluid(1000.0, 1e-3);
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(1e5));
    made.node("b", {1.0, 0.0, 0.0});
    made.node("c", {2.0, 0.0, 0.0});
    made.node("d", {3.0, 0.0, 0.0}, pressureAt(3.5e5));
    made.pipe("suction", "a", "b", 0.08, 0.0);
    made.curve("pump", TAVELL_PUMP, "b", "c",
               {{0.0, 4e5}, {1e-3, 3.8e5}, {2e-3, 3.5e5}, {3e-3, 3.1e5}, {4e-3, 2.65e5}});
    made.pipe("delivery", "c", "d", 0.08, 0.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    // 2.5e5 Pa and the little that the pipes lose: beyond the last point, on the parabola A - B Q^2 through the last
    // two, 3.6786e5 - 6.4286e9 Q^2; with the 2.5e5 Pa alone 4.28e-3 m3/s.
    EXPECT_NEAR(solution.volumeFlow[1], 4.28e-3, 0.1e-3);
    EXPECT_TRUE(certify(made.network(), solution).isGood);
    EXPECT_EQ(solution.findings.list().front().code, Code::pump_curve_continued);
}

TEST(SolveNetwork, closed_element_has_no_flow_and_the_pressures_of_its_nodes)
{
    TestNetwork made = smallTown();
    made.elementNamed("p3").isClosed = true;
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_EQ(solution.massFlow[2], 0.0);
    EXPECT_EQ(solution.velocity[2], 0.0);
    EXPECT_TRUE(std::isnan(solution.elementTemperature[2]));
    EXPECT_EQ(solution.pressureDifference[2], solution.pressure[2] - solution.pressure[1]);
    EXPECT_NEAR(solution.massFlow[1], 6.0, 1e-4);
}

TEST(SolveNetwork, node_that_only_closed_elements_touch_has_no_pressure)
{
    TestNetwork made = smallTown();
    made.node("far", {50.0, 50.0, 0.0});
    made.pipe("shut", "far", "north", 0.1, 0.0).isClosed = true;
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_TRUE(std::isnan(solution.pressure[4]));
    EXPECT_TRUE(std::isnan(solution.nodeTemperature[4]));
    EXPECT_TRUE(std::isnan(solution.pressureDifference[4]));
    ASSERT_EQ(solution.findings.list().size(), 1U) << solution.findings.text();
    EXPECT_EQ(solution.findings.list().front().code, Code::node_shut_off);
    EXPECT_EQ(solution.findings.list().front().place.object, "node far");
}

TEST(SolveNetwork, check_valve_lets_no_flow_back)
{
    for (const char* name : {"p1", "p3", "p4"}) {
        TestNetwork made = smallTown();
        const Solution open = solveNetwork(made.network());
        ASSERT_EQ(open.outcome, Outcome::converged) << open.findings.text();
        const std::size_t position = made.positionOf(name);
        const bool isForward = open.massFlow[position] > 0.0;

        made.network().elements[position].hasCheckValve = true;
        const Solution along = solveNetwork(made.network());
        std::swap(made.network().elements[position].from, made.network().elements[position].to);
        const Solution against = solveNetwork(made.network());
        ASSERT_EQ(along.outcome, Outcome::converged) << name << along.findings.text();
        ASSERT_EQ(against.outcome, Outcome::converged) << name << against.findings.text();
        const Solution& passing = isForward ? along : against;
        const Solution& shut = isForward ? against : along;
        EXPECT_NEAR(std::fabs(passing.massFlow[position]), std::fabs(open.massFlow[position]),
                    1e-4 * std::fabs(open.massFlow[position]))
            << name;
        EXPECT_NEAR(shut.massFlow[position], 0.0, 1e-5) << name;
    }
}

TEST(SolveNetwork, network_without_an_unknown_pressure_is_solved)
{
    TestNetwork made;
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(2e5));
    made.node("b", {100.0, 0.0, 0.0}, pressureAt(1e5));
    made.pipe("pipe", "a", "b", 0.05, 5e-5);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    Network halves = onePipe(1e5);
    halves.nodes[0].boundary->pressure = 2e5;
    halves.nodes[2].boundary->pressure = 1e5;
    EXPECT_NEAR(solution.massFlow[0], solveNetwork(halves).massFlow[0], 1e-5);
    EXPECT_EQ(solution.massFlow.size(), 1U);
}

TEST(SolveNetwork, parts_with_pressures_of_their_own_are_solved_with_a_warning)
{
    TestNetwork made = smallTown();
    made.node("c", {5000.0, 0.0, 0.0}, pressureAt(1e5));
    made.node("d", {5010.0, 0.0, 0.0}, outflow(1.0));
    made.pipe("apart", "c", "d", 0.05, 0.0);
    const Solution solution = solveNetwork(made.network());
    ASSERT_EQ(solution.outcome, Outcome::converged) << solution.findings.text();
    EXPECT_TRUE(hasCode(solution.findings, Code::parts_not_connected));
    EXPECT_NEAR(solution.massFlow[4], 1.0, 1e-9);
}

TEST(SolveNetwork, temperatures_that_nothing_holds_back_are_said_to_be_unsettled)
{
    // a pumped loop into which 500 W go and out of which nothing takes them: every sweep is warmer than the one before
    TestNetwork made;
    made.node("a", {0.0, 0.0, 0.0});
    made.node("b", {5.0, 0.0, 0.0});
    made.node("c", {5.0, 5.0, 0.0});
    made.node("d", {0.0, 5.0, 0.0});
    made.node("filling", {-1.0, 0.0, 0.0}, pressureAt(2e5));
    made.curve("pump", TAVELL_PUMP, "a", "b",
               {{0.0, 2e4}, {1e-4, 1.9e4}, {2e-4, 1.6e4}, {3e-4, 1.1e4}, {4e-4, 4e3}});
    made.pipe("heater", "b", "c", 0.02, 0.0).heat = Heat{TAVELL_ENERGY_HEAT, 500.0};
    made.pipe("across", "c", "d", 0.02, 0.0);
    made.pipe("back", "d", "a", 0.02, 0.0);
    made.pipe("filling pipe", "filling", "a", 0.02, 0.0);
    made.network().settings.solvesTemperatures = true;
    const Solution solution = solveNetwork(made.network());
    EXPECT_EQ(solution.outcome, Outcome::notConverged);
    EXPECT_TRUE(hasCode(solution.findings, Code::temperatures_not_settled)) << solution.findings.text();
    EXPECT_FALSE(hasCode(solution.findings, Code::minor_losses_not_settled)) << solution.findings.text();
}

TEST(SolveNetwork, network_without_a_pressure_is_refused)
{
    TestNetwork made;
    made.node("a", {0.0, 0.0, 0.0}, inflow(1.0));
    made.node("b", {100.0, 0.0, 0.0}, outflow(1.0));
    made.pipe("pipe", "a", "b", 0.05, 5e-5);
    const Solution solution = solveNetwork(made.network());
    EXPECT_FALSE(solution.hasResults());
    EXPECT_TRUE(hasCode(solution.findings, Code::no_given_pressure));
}

TEST(SolveNetwork, unbalanced_part_is_named_by_a_node_of_the_network)
{
    TestNetwork made = smallTown();
    made.node("c", {5000.0, 0.0, 0.0}, inflow(1.0));
    made.node("d", {5010.0, 0.0, 0.0});
    made.node("e", {5020.0, 0.0, 0.0}, outflow(3.0));
    made.pipe("apart 1", "c", "d", 0.05, 0.0);
    made.pipe("apart 2", "d", "e", 0.05, 0.0);
    const Solution solution = solveNetwork(made.network());
    EXPECT_EQ(solution.outcome, Outcome::notConverged);
    EXPECT_FALSE(solution.hasResults());
    EXPECT_TRUE(solution.findings.hasErrors());
    EXPECT_TRUE(hasCode(solution.findings, Code::not_converged));
    // What the measures say of it stands in that finding alone.
    EXPECT_FALSE(hasCode(solution.findings, Code::mass_not_balanced));
    EXPECT_FALSE(hasCode(solution.findings, Code::laws_not_met));
    EXPECT_FALSE(hasCode(solution.findings, Code::iteration_limit));
}

TEST(SolveNetwork, stopped_solve_is_cancelled_with_its_iteration)
{
    int calls = 0;
    Progress progress;
    progress.user = &calls;
    progress.isStopWanted = [](void* user, int iteration) {
        *static_cast<int*>(user) = iteration;
        return iteration == 3;
    };
    const Solution solution = solveNetwork(smallTown().network(), progress);
    EXPECT_EQ(solution.outcome, Outcome::cancelled);
    EXPECT_FALSE(solution.hasResults());
    EXPECT_EQ(solution.iterations, 3);
    EXPECT_EQ(calls, 3);
    EXPECT_TRUE(hasCode(solution.findings, Code::solve_cancelled)) << solution.findings.text();
}

TEST(SolveNetwork, exception_of_the_progress_function_cancels)
{
    Progress progress;
    progress.isStopWanted = [](void*, int) -> bool { throw std::runtime_error("stop"); };
    EXPECT_EQ(solveNetwork(smallTown().network(), progress).outcome, Outcome::cancelled);
}

TEST(SolveNetwork, same_input_gives_the_same_bits)
{
    const Solution first = solveNetwork(smallTown().network());
    const Solution second = solveNetwork(smallTown().network());
    EXPECT_EQ(first.pressure, second.pressure);
    EXPECT_EQ(first.massFlow, second.massFlow);
    EXPECT_EQ(first.iterations, second.iterations);
}

}  // namespace kit
