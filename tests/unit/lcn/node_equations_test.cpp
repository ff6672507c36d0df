// node_equations_test.cpp: the assembly of the node balances, by hand numbers.
#include "lcn/node_equations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "unit/support/solver_network.h"

using lcn::ElementEquation;
using lcn::NodeEquations;
using SolverTest::kArea;
using SolverTest::makeCurve;
using SolverTest::SolverNetwork;

namespace
{

constexpr double kDt = lcn::kSteadyState;

void expectNear(double value, double expected)
{
    EXPECT_NEAR(value, expected, 1e-12 * std::fabs(expected));
}

/// Two nodes at 150 and 100 kPa joined by one element of this type.
struct Pair : SolverNetwork {
    explicit Pair(int type) : SolverNetwork(2)
    {
        add(type, 1, 2);
        connect();
        nodes[1].Pressure = 150000.0;
        nodes[2].Pressure = 100000.0;
    }

    ElementEquation equation(double dt = kDt) const
    {
        return lcn::elementEquation(nodes, elements, var, 1, dt);
    }
};

/// Fixed node 1 at 150 kPa, free nodes 2 and 3 at 100 and 60 kPa; valves 1 -> 2 and 3 -> 2, a fixed flow of 0.5 kg/s
/// from 3 to the flow end 4.
struct Line : SolverNetwork {
    Line() : SolverNetwork(4)
    {
        add(lcn::kKvValve, 1, 2);
        add(lcn::kKvValve, 3, 2);
        add(lcn::kPipe, 3, 4);
        elem(1).HWcoeff = 4e6;
        elem(2).HWcoeff = 1e6;
        fixFlow(3, 0.5);
        connect();
        fixPressure(1, 150000.0);
        nodes[2].Pressure = 100000.0;
        nodes[3].Pressure = 60000.0;
        nodes[4].flag = lcn::kFlowBoundary;
        equations.size(var);
    }

    void assemble(double dt = kDt) { lcn::assembleNodeEquations(nodes, elements, var, dt, equations); }

    NodeEquations equations;
};

/// Three valves in a row of this resistance between fixed pressures of 150 and 50 kPa; both free nodes are at 100 kPa.
struct ValvesAboutRest : SolverNetwork {
    explicit ValvesAboutRest(double resistance) : SolverNetwork(4)
    {
        for (int i = 1; i <= 3; ++i)
            elem(add(lcn::kKvValve, i, i + 1)).HWcoeff = resistance;
        connect();
        fixPressure(1, 150000.0);
        fixPressure(4, 50000.0);
        nodes[2].Pressure = nodes[3].Pressure = 100000.0;
        equations.size(var);
    }

    void assemble() { lcn::assembleNodeEquations(nodes, elements, var, kDt, equations); }

    NodeEquations equations;
};

/// An element of this type with a set limit or target.
lcnNET_elems limited(int type, double massflow, double fixedFlow, int fix = 0)
{
    lcnNET_elems elem;
    elem.type = type;
    elem.FlowLimited = 1;
    elem.Massflow = massflow;
    elem.MassflowOld = 77.0;
    elem.FixedFlow = fixedFlow;
    elem.fix = fix;
    return elem;
}

void expectFixedAt(const lcnNET_elems& elem, double flow)
{
    EXPECT_EQ(elem.fix, 1);
    EXPECT_EQ(elem.Massflow, flow);
    EXPECT_EQ(elem.MassflowOld, flow);
    EXPECT_EQ(elem.FixedFlow, flow);
}

}  // namespace

TEST(NodeEquations, a_quadratic_element_is_solved_and_linearised_at_its_pressure_difference)
{
    Pair network(lcn::kKvValve);
    network.elem(1).HWcoeff = 4e6;
    // q = sqrt(50000/1000/4e6) = 3.5355e-3; d = 2 r2 q; g = 1/d
    const double q = std::sqrt(50.0 / 4e6);
    const ElementEquation part = network.equation();
    expectNear(part.flowEstimate, q);
    expectNear(part.massFlow, 1000.0 * q);
    expectNear(part.conductance, 1.0 / (8e6 * q));
    expectNear(part.flowResistance, 1000.0 * 8e6 * q);
}

TEST(NodeEquations, a_quadratic_element_against_its_direction_has_a_negative_flow)
{
    Pair network(lcn::kKvValve);
    network.elem(1).HWcoeff = 4e6;
    std::swap(network.nodes[1].Pressure, network.nodes[2].Pressure);
    const double q = std::sqrt(50.0 / 4e6);
    const ElementEquation part = network.equation();
    expectNear(part.flowEstimate, -q);
    expectNear(part.massFlow, -1000.0 * q);
    expectNear(part.conductance, 1.0 / (8e6 * q));
}

TEST(NodeEquations, a_quadratic_element_without_resistance_or_without_a_difference_conducts_1e6)
{
    Pair network(lcn::kKvValve);
    network.elem(1).HWcoeff = 0.0;
    ElementEquation part = network.equation();
    EXPECT_EQ(part.flowEstimate, 0.0);
    EXPECT_EQ(part.conductance, 1e6);
    expectNear(part.flowResistance, 1000.0 / 1e6);

    network.elem(1).HWcoeff = 4e6;
    network.nodes[2].Pressure = network.nodes[1].Pressure;
    part = network.equation();
    EXPECT_EQ(part.flowEstimate, 0.0);
    EXPECT_EQ(part.massFlow, 0.0);
    EXPECT_EQ(part.conductance, 1e6);
}

TEST(NodeEquations, a_pipe_uses_its_friction_factor_at_its_present_flow)
{
    Pair network(lcn::kPipe);
    network.elem(1).Massflow = 0.1;  // Re 1000: f 0.064, r2 = 6.4 x 5000
    const double q = std::sqrt(50.0 / 32000.0);
    expectNear(network.equation().flowEstimate, q);
}

TEST(NodeEquations, inertia_takes_part_up_to_a_time_step_of_1e10)
{
    Pair network(lcn::kKvValve);
    network.elem(1).HWcoeff = 4e6;
    network.elem(1).MassflowOld = 3.0;
    // T = 10 / 0.01 / 2 = 500: r2 q^2 + T q = 50 + T 3/1000
    const double q = (std::sqrt(500.0 * 500.0 + 4.0 * 4e6 * (50.0 + 500.0 * 3.0 / 1000.0)) - 500.0) / 8e6;
    ElementEquation part = network.equation(2.0);
    expectNear(part.flowEstimate, q);
    expectNear(part.conductance, 1.0 / (8e6 * q + 500.0));
    expectNear(part.flowResistance, 1000.0 * (8e6 * q + 500.0));

    part = network.equation(1.1e10);
    expectNear(part.flowEstimate, std::sqrt(50.0 / 4e6));
    network.elem(1).Area = 0.0;
    expectNear(network.equation().flowEstimate, std::sqrt(50.0 / 4e6));  // no 0/0 in a steady state
}

TEST(NodeEquations, a_flow_weight_below_one_mixes_the_previous_flow_in)
{
    Pair network(lcn::kKvValve);
    network.elem(1).HWcoeff = 4e6;
    network.elem(1).MassflowOld = 2.0;
    network.var.flowWeight = 0.75;
    const double q = std::sqrt(50.0 / 4e6);
    const ElementEquation part = network.equation();
    const double g = 0.75 / (8e6 * q * 0.75);
    expectNear(part.conductance, g * 0.75);
    expectNear(part.massFlow, 0.25 * 2.0 + 0.75 * 1000.0 * q);
    expectNear(part.flowResistance, 1000.0 / g);
}

TEST(NodeEquations, a_pump_follows_the_line_of_its_linearisation)
{
    Pair network(lcn::kPump);
    std::swap(network.nodes[1].Pressure, network.nodes[2].Pressure);  // 50 kPa against it
    lcnNET_pumps& curve = network.elem(1).Curve;
    curve.a = -80.0;
    curve.c = 2e6;
    curve.qmax = std::sqrt(4e-5);
    network.elem(1).Massflow = 3.0;
    // at Q = 0.003: P = 1000 (-80 + 18) = -62000
    const double c1 = 62000.0 / (curve.qmax - 0.003);
    const double c0 = -62000.0 * curve.qmax / (curve.qmax - 0.003);
    const double q = (-50000.0 - c0) / c1;
    const ElementEquation part = network.equation();
    EXPECT_NEAR(part.flowEstimate, q, 1e-15);
    EXPECT_NEAR(part.massFlow, 1000.0 * q, 1e-12);
    expectNear(part.conductance, 1000.0 / c1);
    expectNear(part.flowResistance, c1);
}

TEST(NodeEquations, a_loss_curve_follows_its_chord)
{
    Pair network(lcn::kLossCurve);
    network.elem(1).Curve = makeCurve({0.001, 0.002, 0.003, 0.004}, {100.0, 300.0, 700.0, 2000.0});
    const ElementEquation part = network.equation();
    expectNear(part.flowEstimate, 50000.0 / 500000.0);
    expectNear(part.conductance, 1000.0 / 500000.0);
    expectNear(part.massFlow, 100.0);
    expectNear(part.flowResistance, 500000.0);
}

TEST(NodeEquations, a_curve_without_a_slope_takes_10)
{
    Pair network(lcn::kLossCurve);
    const ElementEquation part = network.equation();
    expectNear(part.flowEstimate, 5000.0);
    expectNear(part.conductance, 100.0);
    expectNear(part.flowResistance, 10.0);
}

TEST(NodeEquations, hazen_williams_is_solved_for_its_flow)
{
    for (const double sign : {1.0, -1.0}) {
        Pair network(lcn::kHazenWilliams);
        network.elem(1).HWcoeff = 2000.0;
        network.elem(1).k = 2.0;
        network.elem(1).Massflow = 1.0;
        if (sign < 0.0) std::swap(network.nodes[1].Pressure, network.nodes[2].Pressure);
        const ElementEquation part = network.equation();
        const double q = std::fabs(part.flowEstimate);
        EXPECT_NEAR(2000.0 * std::pow(q, 1.85) + 10000.0 * q * q, 50.0, 1e-11);
        EXPECT_EQ(std::signbit(part.flowEstimate), sign < 0.0);
        const double d = 1.85 * 2000.0 * std::pow(q, 0.85) + 2.0 * 10000.0 * q;
        expectNear(part.conductance, 1.0 / d);
        expectNear(part.flowResistance, 1000.0 * d);
        expectNear(part.massFlow, 1000.0 * part.flowEstimate);
    }
}

TEST(NodeEquations, a_general_loss_is_solved_for_its_flow)
{
    Pair network(lcn::kGeneralLoss);
    network.elem(1).HWcoeff = 300.0;
    network.elem(1).Param1 = 1.1;
    network.elem(1).Param4 = 1.7;
    network.elem(1).Massflow = 1.0;
    const double a = 300.0 * std::pow(1000.0, 1.1 - 1.0);
    const double q = std::pow(50.0 / a, 1.0 / 1.7);  // no minor loss: explicit
    const ElementEquation part = network.equation();
    EXPECT_NEAR(part.flowEstimate, q, 1e-12 * q);
    const double d = 1.7 * a * std::pow(q, 0.7);
    EXPECT_NEAR(part.conductance, 1.0 / d, 1e-11 / d);
    EXPECT_NEAR(part.flowResistance, 1000.0 * d, 1e-8 * d);
}

TEST(NodeEquations, a_power_law_without_a_difference_has_no_flow_and_a_slope_of_1e_minus_6)
{
    for (const int type : {lcn::kHazenWilliams, lcn::kGeneralLoss}) {
        Pair network(type);
        network.elem(1).HWcoeff = 2000.0;
        network.elem(1).Param1 = 1.0;
        network.elem(1).Param4 = 1.9;
        network.nodes[2].Pressure = network.nodes[1].Pressure;
        const ElementEquation part = network.equation();
        EXPECT_EQ(part.flowEstimate, 0.0);
        expectNear(part.conductance, 1e6);
        expectNear(part.flowResistance, 1e-3);
    }
}

TEST(NodeEquations, a_general_loss_linear_in_the_flow_keeps_its_slope_at_rest)
{
    Pair network(lcn::kGeneralLoss);
    network.elem(1).HWcoeff = 250.0;
    network.elem(1).Param1 = 1.0;
    network.elem(1).Param4 = 1.0;
    network.nodes[2].Pressure = network.nodes[1].Pressure;
    expectNear(network.equation().conductance, 1.0 / 250.0);
}

TEST(NodeEquations, a_power_law_below_one_does_not_divide_by_zero_at_rest)
{
    Pair network(lcn::kGeneralLoss);
    network.elem(1).HWcoeff = 250.0;
    network.elem(1).Param1 = 1.0;
    network.elem(1).Param4 = 0.5;
    network.nodes[2].Pressure = network.nodes[1].Pressure;
    const ElementEquation part = network.equation();
    EXPECT_TRUE(std::isfinite(part.conductance));
    EXPECT_EQ(part.flowEstimate, 0.0);
}

TEST(NodeEquations, the_flow_weight_has_no_part_in_a_power_law)
{
    Pair network(lcn::kHazenWilliams);
    network.elem(1).HWcoeff = 2000.0;
    network.elem(1).Massflow = 1.0;
    network.elem(1).MassflowOld = 9.0;
    const ElementEquation whole = network.equation();
    network.var.flowWeight = 0.5;
    const ElementEquation half = network.equation();
    EXPECT_EQ(whole.massFlow, half.massFlow);
    EXPECT_EQ(whole.conductance, half.conductance);
}

TEST(NodeEquations, a_type_without_a_law_has_no_part)
{
    for (const int type : {0, 11, -1}) {
        const ElementEquation part = Pair(type).equation();
        EXPECT_EQ(part.conductance, 0.0);
        EXPECT_EQ(part.massFlow, 0.0);
        EXPECT_EQ(part.flowEstimate, 0.0);
        EXPECT_EQ(part.flowResistance, 0.0);
    }
}

TEST(NodeEquations, a_line_of_three_elements_assembles_as_by_hand)
{
    Line network;
    network.assemble();
    const double q1 = std::sqrt(50.0 / 4e6);  // 1 -> 2, 50 kPa
    const double q2 = std::sqrt(40.0 / 1e6);  // 2 -> 3, against element 2
    const double g1 = 1.0 / (2.0 * 4e6 * q1);
    const double g2 = 1.0 / (2.0 * 1e6 * q2);
    const NodeEquations& eq = network.equations;
    EXPECT_EQ(eq.diag[1], 1.0);
    EXPECT_EQ(eq.rhs[1], 0.0);
    expectNear(eq.diag[2], g1 + g2);
    expectNear(eq.rhs[2], 1000.0 * (q1 - q2));
    expectNear(eq.diag[3], g2);
    expectNear(eq.rhs[3], 1000.0 * q2 - 0.5);
    EXPECT_EQ(eq.diag[4], 1.0);
    EXPECT_EQ(eq.rhs[4], 0.0);
    expectNear(eq.coef[1], g1);
    expectNear(eq.coef[2], g2);
    EXPECT_EQ(eq.coef[3], 0.0);
    expectNear(eq.flowEstimate[1], q1);
    expectNear(eq.flowEstimate[2], -q2);
    expectNear(eq.flowResistance[1], 1000.0 / g1);
    expectNear(eq.flowResistance[2], 1000.0 / g2);
}

TEST(NodeEquations, assembling_twice_gives_the_same)
{
    Line network;
    network.assemble();
    const std::vector<double> diag = network.equations.diag;
    const std::vector<double> rhs = network.equations.rhs;
    network.assemble();
    EXPECT_EQ(network.equations.diag, diag);
    EXPECT_EQ(network.equations.rhs, rhs);
}

TEST(NodeEquations, a_fixed_element_counts_with_its_weighted_flow)
{
    Line network;
    network.elem(3).MassflowOld = 0.9;
    network.var.flowWeight = 0.5;
    network.elem(1).fix = network.elem(2).fix = 1;  // no other flows
    network.elem(1).FixedFlow = network.elem(2).FixedFlow = 0.0;
    network.assemble();
    expectNear(network.equations.rhs[3], -(0.5 * 0.9 + 0.5 * 0.5));
}

TEST(NodeEquations, a_free_node_with_fixed_elements_only_has_a_conductance_of_1e6)
{
    Line network;
    network.fixFlow(2, 0.25);
    network.assemble();
    EXPECT_EQ(network.equations.diag[3], 1e6);
    expectNear(network.equations.rhs[3], -0.25 - 0.5);
}

TEST(NodeEquations, a_free_node_without_elements_has_a_conductance_of_1e6)
{
    SolverNetwork network(1);
    NodeEquations equations;
    equations.size(network.var);
    network.connect();
    lcn::assembleNodeEquations(network.nodes, network.elements, network.var, kDt, equations);
    EXPECT_EQ(equations.diag[1], 1e6);
    EXPECT_EQ(equations.rhs[1], 0.0);
}

TEST(NodeEquations, parallel_elements_add_up)
{
    SolverNetwork network(2);
    for (int i = 0; i < 2; ++i)
        network.elem(network.add(lcn::kKvValve, 1, 2)).HWcoeff = 4e6;
    network.connect();
    network.nodes[1].Pressure = 50000.0;
    NodeEquations equations;
    equations.size(network.var);
    lcn::assembleNodeEquations(network.nodes, network.elements, network.var, kDt, equations);
    const double q = std::sqrt(50.0 / 4e6);
    expectNear(equations.diag[1], 2.0 / (8e6 * q));
    expectNear(equations.rhs[1], -2000.0 * q);
    expectNear(equations.rhs[2], 2000.0 * q);
}

TEST(NodeEquations, an_element_from_a_node_to_itself_moves_nothing)
{
    Line network;
    network.assemble();
    const double rhs = network.equations.rhs[2];
    Line withLoop;
    withLoop.elem(withLoop.add(lcn::kPipe, 2, 2)).Massflow = 1.0;
    withLoop.connect();
    withLoop.equations.size(withLoop.var);
    withLoop.assemble();
    EXPECT_EQ(withLoop.equations.rhs[2], rhs);
    EXPECT_EQ(withLoop.equations.flowEstimate[4], 0.0);
}

TEST(NodeEquations, storage_is_the_density_change_of_the_last_element_times_half_the_volumes)
{
    Line network;
    network.assemble(2.0);
    const double without = network.equations.rhs[2];
    // node 2 has elements 1 and 2, the last one is 2: (1000 - 999) x 0.5 x 0.01 x (10 + 10) / 2
    network.elem(2).densityOld = 999.0;
    network.elem(1).densityOld = 900.0;
    network.assemble(2.0);
    EXPECT_NEAR(network.equations.rhs[2], without - 0.05, 1e-12);
    EXPECT_EQ(network.equations.rhs[1], 0.0);

    network.assemble(1.1e10);
    const double steady = network.equations.rhs[2];
    network.elem(2).densityOld = 1000.0;
    network.assemble(1.1e10);
    EXPECT_EQ(network.equations.rhs[2], steady);
}

TEST(NodeEquations, conductances_at_rest_are_a_thousand_times_the_largest_where_1e6_would_drown_all)
{
    // 150, 100, 100 and 50 kPa; r2 = 2e16: 1 / (2 sqrt(2e16 x 50000 / 1000)) = 5e-10, and 1e3 x 5e-10 at rest
    ValvesAboutRest network(2e16);
    network.assemble();
    expectNear(network.equations.coef[1], 5e-10);
    expectNear(network.equations.coef[2], 5e-7);
    expectNear(network.equations.coef[3], 5e-10);
    expectNear(network.equations.flowResistance[2], 1000.0 / 5e-7);
    expectNear(network.equations.diag[2], 5e-10 + 5e-7);
    expectNear(network.equations.diag[3], 5e-7 + 5e-10);
}

TEST(NodeEquations, conductances_at_rest_are_1e6_beside_any_of_a_millionth_or_more)
{
    // r2 = 2e6: 1 / (2 sqrt(2e6 x 50)) = 5e-5
    ValvesAboutRest network(2e6);
    network.assemble();
    expectNear(network.equations.coef[1], 5e-5);
    EXPECT_EQ(network.equations.coef[2], 1e6);
    expectNear(network.equations.diag[2], 1e6 + 5e-5);
}

TEST(NodeEquations, conductances_at_rest_are_1e6_where_everything_rests)
{
    ValvesAboutRest network(2e16);
    network.nodes[1].Pressure = network.nodes[4].Pressure = 100000.0;
    network.assemble();
    for (int e = 1; e <= 3; ++e)
        EXPECT_EQ(network.equations.coef[static_cast<std::size_t>(e)], 1e6) << e;
    EXPECT_EQ(network.equations.diag[2], 2e6);
}

TEST(NodeEquations, equal_pressures_are_listed_for_unfixed_quadratic_elements_only)
{
    SolverNetwork network(2);
    for (const int type : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})
        network.add(type, 1, 2);
    network.fixFlow(network.add(lcn::kPipe, 1, 2), 1.0);
    network.connect();
    NodeEquations equations;
    equations.size(network.var);
    lcn::assembleNodeEquations(network.nodes, network.elements, network.var, kDt, equations);
    EXPECT_EQ(equations.withoutDrop, (std::vector<int>{1, 5, 7, 8, 9, 10}));
    network.nodes[1].Pressure = 1.0;
    lcn::assembleNodeEquations(network.nodes, network.elements, network.var, kDt, equations);
    EXPECT_TRUE(equations.withoutDrop.empty());
}

TEST(FlowLimit, a_non_return_element_shuts_on_reverse_flow_only)
{
    lcnNET_elems elem = limited(lcn::kNonReturn, -0.1, 0.0);
    lcn::applyFlowLimit(elem);
    expectFixedAt(elem, 0.0);

    for (const double flow : {0.1, 0.0, -3e-38}) {
        elem = limited(lcn::kNonReturn, flow, 0.0);
        lcn::applyFlowLimit(elem);
        EXPECT_EQ(elem.fix, 0);
        EXPECT_EQ(elem.Massflow, flow);
    }
}

TEST(FlowLimit, a_shut_non_return_element_stays_as_it_is)
{
    lcnNET_elems elem = limited(lcn::kNonReturn, -0.1, 5.0, 1);
    lcn::applyFlowLimit(elem);
    EXPECT_EQ(elem.Massflow, -0.1);
    EXPECT_EQ(elem.FixedFlow, 5.0);
}

TEST(FlowLimit, a_control_valve_below_its_limit_is_released)
{
    for (const int fix : {0, 1}) {
        lcnNET_elems elem = limited(lcn::kControlValve, -1.0, 2.0, fix);
        lcn::applyFlowLimit(elem);
        EXPECT_EQ(elem.fix, 0);
        EXPECT_EQ(elem.Massflow, -1.0);
        EXPECT_EQ(elem.FixedFlow, 2.0);
    }
}

TEST(FlowLimit, a_control_valve_at_or_above_its_limit_holds_it_in_the_direction_of_flow)
{
    lcnNET_elems elem = limited(lcn::kControlValve, 3.0, 2.0);
    lcn::applyFlowLimit(elem);
    expectFixedAt(elem, 2.0);
    elem = limited(lcn::kControlValve, -3.0, 2.0);
    lcn::applyFlowLimit(elem);
    expectFixedAt(elem, -2.0);
    elem = limited(lcn::kControlValve, 2.0, -2.0);
    lcn::applyFlowLimit(elem);
    expectFixedAt(elem, 2.0);
}

TEST(FlowLimit, a_control_valve_of_limit_zero_without_flow_is_not_fixed)
{
    lcnNET_elems elem = limited(lcn::kControlValve, 0.0, 0.0);
    lcn::applyFlowLimit(elem);
    EXPECT_EQ(elem.fix, 0);
}

TEST(FlowLimit, any_other_element_takes_its_target_and_holds_it_once_it_flows)
{
    lcnNET_elems elem = limited(lcn::kPipe, 0.0, -2.0);
    lcn::applyFlowLimit(elem);
    EXPECT_EQ(elem.fix, 0);
    EXPECT_EQ(elem.Massflow, -2.0);
    EXPECT_EQ(elem.MassflowOld, 77.0);
    lcn::applyFlowLimit(elem);
    expectFixedAt(elem, -2.0);
    elem = limited(lcn::kPump, 0.5, -2.0);
    lcn::applyFlowLimit(elem);
    expectFixedAt(elem, 2.0);
}

TEST(FlowLimit, the_assembly_imposes_limits_only_where_flow_limited_is_set)
{
    Line network;
    network.elem(2).type = lcn::kNonReturn;
    network.elem(2).Massflow = -1.0;
    network.elem(2).Constraint = 1;
    network.assemble();
    EXPECT_EQ(network.elem(2).fix, 0);
    network.elem(2).FlowLimited = 1;
    network.assemble();
    EXPECT_EQ(network.elem(2).fix, 1);
    EXPECT_EQ(network.equations.coef[2], 0.0);
}

TEST(FlowLimit, a_target_between_two_free_nodes_is_held_from_the_first_assembly)
{
    Line network;
    network.elem(2).FlowLimited = 1;
    network.elem(2).FixedFlow = 0.75;
    network.elem(2).Massflow = 0.0;
    network.assemble();
    expectFixedAt(network.elem(2), 0.75);
    expectNear(network.equations.rhs[3], -0.75 - 0.5);
}
