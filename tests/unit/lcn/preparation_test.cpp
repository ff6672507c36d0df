// preparation_test.cpp: prepared coefficients, starting values, open ends.
#include "lcn/preparation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "lcn/errors.h"
#include "unit/support/solver_network.h"

using SolverTest::makeCurve;
using SolverTest::SolverNetwork;

namespace
{

/// One element of this type between two nodes, prepared.
struct Prepared : SolverNetwork {
    explicit Prepared(int type) : SolverNetwork(2) { add(type, 1, 2); }
    lcnNET_elems& prepare()
    {
        lcn::prepareElementCoefficients(elements, var);
        return elements[1];
    }
};

/// Pipes 1-2, 2-3, 3-4 in a row: inner nodes 2 and 3.
struct Row : SolverNetwork {
    Row() : SolverNetwork(4)
    {
        for (int i = 1; i <= 3; ++i)
            add(lcn::kPipe, i, i + 1);
        connect();
    }
    void start() { lcn::setInitialValues(nodes, elements, var); }
};

/// The debug variable while a test runs.
class DebugVariable
{
public:
    explicit DebugVariable(const char* value)
    {
        if (value != nullptr)
            setenv("TAVELL_DEBUG_FILE", value, 1);
        else
            unsetenv("TAVELL_DEBUG_FILE");
    }
    ~DebugVariable() { unsetenv("TAVELL_DEBUG_FILE"); }
    DebugVariable(const DebugVariable&) = delete;
    DebugVariable& operator=(const DebugVariable&) = delete;
};

}  // namespace

TEST(Preparation, hazen_williams_takes_exponent_1_85_and_gravity_9_806)
{
    Prepared network(lcn::kHazenWilliams);
    network.elem(1).HWcoeff = 120.0;
    // 10 / 0.1^4.87 x (10.67 / 120^1.85 x 9.806)
    EXPECT_EQ(network.prepare().HWcoeff,
              10.0 / std::pow(0.1, 4.87) * (10.67 / std::pow(120.0, 1.85) * 9.806));
}

TEST(Preparation, an_orifice_gets_its_diameter_ratio_and_its_tappings)
{
    Prepared corner(lcn::kOrifice);
    corner.elem(1).HWcoeff = 0.06;
    corner.elem(1).Param1 = corner.elem(1).Param2 = 9.0;
    EXPECT_EQ(corner.prepare().HWcoeff, 0.06 / 0.1);
    EXPECT_EQ(corner.elem(1).Param1, 0.0);
    EXPECT_EQ(corner.elem(1).Param2, 0.0);

    Prepared flange(lcn::kOrifice);
    flange.elem(1).length = 0.0508;
    EXPECT_EQ(flange.prepare().Param1, 0.0254 / 0.1);
    EXPECT_EQ(flange.elem(1).Param2, 0.0254 / 0.1);

    Prepared radius(lcn::kOrifice);
    radius.elem(1).length = 0.15;
    EXPECT_EQ(radius.prepare().Param1, 1.0);
    EXPECT_EQ(radius.elem(1).Param2, 0.47);
}

TEST(Preparation, a_general_loss_gets_ck_times_length_to_the_b_over_diameter_to_the_c)
{
    Prepared network(lcn::kGeneralLoss);
    lcnNET_elems& elem = network.elem(1);
    elem.HWcoeff = 3.0;
    elem.Param1 = 7.0;
    elem.Param2 = 2.0;
    elem.Param3 = 1.0;
    elem.Param4 = 8.0;
    network.prepare();
    EXPECT_EQ(network.elem(1).HWcoeff, 3.0 * std::pow(10.0, 2.0) / std::pow(0.1, 1.0));
    EXPECT_NEAR(network.elem(1).HWcoeff, 3000.0, 1e-9);
    EXPECT_EQ(network.elem(1).Param1, 7.0);
    EXPECT_EQ(network.elem(1).Param4, 8.0);
}

TEST(Preparation, a_valve_gets_the_factor_over_its_coefficient_squared)
{
    for (const int type : {lcn::kKvValve, lcn::kCvValve}) {
        Prepared network(type);
        network.elem(1).HWcoeff = 0.01;
        EXPECT_EQ(network.prepare().HWcoeff, 1.0 / 0.01 / 0.01 * 100.10310619938537);
    }
}

TEST(Preparation, other_types_are_left_as_they_are)
{
    for (const int type : {-1, 0, 1, 9, 10, 11}) {
        Prepared network(type);
        network.elem(1).HWcoeff = 5.0;
        network.elem(1).Param1 = 6.0;
        EXPECT_EQ(network.prepare().HWcoeff, 5.0);
        EXPECT_EQ(network.elem(1).Param1, 6.0);
    }
}

TEST(Preparation, curves_are_fitted_by_their_kind)
{
    const std::vector<double> flows{0.0, 0.002, 0.004, 0.006};
    Prepared pump(lcn::kPump);
    pump.elem(1).Curve = makeCurve(flows, {50000.0, 46000.0, 34000.0, 14000.0});  // 50 - 1e6 q^2
    EXPECT_NEAR(pump.prepare().Curve.a, -50.0, 1e-9);
    EXPECT_NEAR(pump.elem(1).Curve.qmax, std::sqrt(5e-5), 1e-9);
    Prepared loss(lcn::kLossCurve);
    loss.elem(1).Curve = makeCurve(flows, {0.0, 4000.0, 16000.0, 36000.0});
    EXPECT_NEAR(loss.prepare().Curve.c, 1e6, 1e-2);
    EXPECT_EQ(loss.elem(1).Curve.qmax, 0.006);
}

TEST(Preparation, a_curve_that_cannot_be_fitted_raises_code_26_with_the_elements_numbers)
{
    for (const int type : {lcn::kPump, lcn::kLossCurve}) {
        Prepared network(type);
        network.var.InletNode = 20;
        try {
            network.prepare();
            FAIL();
        } catch (const lcn::FatalException& error) {
            EXPECT_STREQ(error.what(), "Error in curve, element 101 upstream node 10, downstream node 20 in "
                                       "Circuit with inlet node 20");
        }
        ASSERT_EQ(network.var.Messages.size(), 1U);
        EXPECT_EQ(network.var.Messages[0].parameters, (std::vector<double>{101.0, 10.0, 20.0, 20.0}));
    }
}

TEST(Preparation, refitting_touches_curves_only)
{
    Prepared network(lcn::kHazenWilliams);
    network.elem(1).HWcoeff = 120.0;
    lcn::fitCurves(network.elements, network.var);
    EXPECT_EQ(network.elem(1).HWcoeff, 120.0);
}

TEST(InitialValues, nodes_are_classified_by_their_branches_and_their_pressure)
{
    Row row;
    row.fixPressure(1, 3e5);
    row.nodes[2].flag = lcn::kFlowBoundary;
    row.start();
    EXPECT_EQ(row.nodes[1].flag, lcn::kPressureBoundary);
    EXPECT_EQ(row.nodes[2].flag, lcn::kFreeNode);
    EXPECT_EQ(row.nodes[3].flag, lcn::kFreeNode);
    EXPECT_EQ(row.nodes[4].flag, lcn::kFlowBoundary);
}

TEST(InitialValues, an_inner_node_with_a_pressure_keeps_it)
{
    Row row;
    row.fixPressure(2, 3e5);
    row.start();
    EXPECT_EQ(row.nodes[2].flag, lcn::kPressureBoundary);
    EXPECT_EQ(row.nodes[2].Pressure, 3e5);
}

TEST(InitialValues, pressures_start_at_the_mean_of_the_fixed_ones)
{
    Row row;
    row.fixPressure(1, 3e5);
    row.fixPressure(4, 1e5);
    row.nodes[1].Pressure = 0.0;
    row.start();
    EXPECT_EQ(row.nodes[1].Pressure, 3e5);
    EXPECT_EQ(row.nodes[2].Pressure, 2e5);
    EXPECT_EQ(row.nodes[3].Pressure, 2e5);
    EXPECT_EQ(row.nodes[4].Pressure, 1e5);
    EXPECT_EQ(row.elem(1).Pressure, 2.5e5);
    EXPECT_EQ(row.elem(2).Pressure, 2e5);
}

TEST(InitialValues, without_any_fixed_pressure_every_node_starts_at_zero)
{
    Row row;
    for (int i = 1; i <= 4; ++i)
        row.nodes[i].Pressure = 7.0;
    row.start();
    for (int i = 1; i <= 4; ++i)
        EXPECT_EQ(row.nodes[i].Pressure, 0.0);
}

TEST(InitialValues, temperatures_start_at_the_average_but_fixed_ones_stay)
{
    Row row;
    row.nodes[1].tempflag = 1;
    row.nodes[1].Temperature = 350.0;
    row.start();
    EXPECT_EQ(row.nodes[1].Temperature, 350.0);
    EXPECT_EQ(row.nodes[2].Temperature, 300.0);
    EXPECT_EQ(row.elem(1).Temperature, 325.0);
    EXPECT_EQ(row.elem(2).Temperature, 300.0);
}

TEST(InitialValues, densities_start_at_the_fluids)
{
    Row row;
    row.var.Density = 870.0;
    row.start();
    EXPECT_EQ(row.elem(2).density, 870.0);
}

TEST(InitialValues, without_flow_conditions_every_element_starts_at_0_1)
{
    Row row;
    row.start();
    for (int e = 1; e <= 3; ++e)
        EXPECT_EQ(row.elem(e).Massflow, 0.1);
}

TEST(InitialValues, flows_start_at_half_the_smallest_fixed_one_and_fixed_ones_at_their_own)
{
    Row row;
    row.fixFlow(1, 3.0);
    row.fixFlow(3, -1.0);
    row.start();
    EXPECT_EQ(row.elem(1).Massflow, 3.0);
    EXPECT_EQ(row.elem(2).Massflow, 0.5);
    EXPECT_EQ(row.elem(3).Massflow, -1.0);
    EXPECT_EQ(row.var.LimitedFlows, 0);
}

TEST(InitialValues, a_target_counts_for_the_starting_flow_and_is_remembered)
{
    Row row;
    row.elem(2).FlowLimited = 1;
    row.elem(2).FixedFlow = -0.6;
    row.start();
    EXPECT_EQ(row.elem(1).Massflow, 0.3);
    EXPECT_EQ(row.elem(2).Massflow, 0.3);
    EXPECT_EQ(row.var.LimitedFlows, 1);
}

TEST(InitialValues, a_fixed_flow_on_an_inner_pipe_becomes_a_target)
{
    Row row;
    row.fixFlow(2, 2.0);
    row.start();
    EXPECT_EQ(row.elem(2).fix, 0);
    EXPECT_EQ(row.elem(2).FlowLimited, 1);
    EXPECT_EQ(row.elem(2).Massflow, 0.0);
    EXPECT_EQ(row.elem(2).FixedFlow, 2.0);
    EXPECT_EQ(row.var.LimitedFlows, 1);
    EXPECT_EQ(row.elem(1).Massflow, 1.0);
}

TEST(InitialValues, a_fixed_flow_on_an_end_pipe_or_on_another_type_stays_fixed)
{
    Row row;
    row.fixFlow(1, 2.0);
    row.elem(2).type = lcn::kPump;
    row.fixFlow(2, 1.0);
    row.start();
    EXPECT_EQ(row.elem(1).fix, 1);
    EXPECT_EQ(row.elem(2).fix, 1);
    EXPECT_EQ(row.elem(2).FlowLimited, 0);
}

TEST(InitialValues, control_valves_and_non_returns_inside_start_open)
{
    for (const int type : {lcn::kControlValve, lcn::kNonReturn}) {
        Row row;
        row.elem(2).type = type;
        row.fixFlow(2, type == lcn::kControlValve ? 4.0 : 0.0);
        row.start();
        EXPECT_EQ(row.elem(2).fix, 0);
        EXPECT_EQ(row.elem(2).FlowLimited, 0);
        // the valve's limit counts for the starting flow, the other's zero does not
        EXPECT_EQ(row.elem(2).Massflow, type == lcn::kControlValve ? 2.0 : 0.1);
    }
}

TEST(InitialValues, control_valves_and_non_returns_at_a_flow_end_stay_fixed)
{
    for (const int type : {lcn::kControlValve, lcn::kNonReturn}) {
        Row row;
        row.elem(1).type = type;
        row.fixFlow(1, type == lcn::kControlValve ? 4.0 : 0.0);
        row.start();
        EXPECT_EQ(row.elem(1).fix, 1);
        EXPECT_EQ(row.elem(1).Massflow, type == lcn::kControlValve ? 4.0 : 0.0);
    }
}

TEST(InitialValues, a_control_valve_at_a_fixed_pressure_end_starts_open)
{
    Row row;
    row.elem(1).type = lcn::kControlValve;
    row.fixFlow(1, 4.0);
    row.fixPressure(1, 1e5);
    row.start();
    EXPECT_EQ(row.elem(1).fix, 0);
    EXPECT_EQ(row.elem(1).Massflow, 2.0);
}

TEST(OpenEnds, an_end_without_a_condition_is_closed)
{
    const DebugVariable debug(nullptr);
    Row row;
    row.fixPressure(1, 1e5);
    row.start();
    lcn::applyDebugAndOpenEnds(row.nodes, row.elements, row.var);
    EXPECT_EQ(row.elem(1).fix, 0);
    EXPECT_EQ(row.elem(3).fix, 1);
    EXPECT_EQ(row.elem(3).FixedFlow, 0.0);
    EXPECT_EQ(row.elem(3).Massflow, 0.0);
}

TEST(OpenEnds, an_end_whose_element_has_a_fixed_flow_is_left_alone)
{
    const DebugVariable debug(nullptr);
    Row row;
    row.fixFlow(3, 1.5);
    row.start();
    lcn::applyDebugAndOpenEnds(row.nodes, row.elements, row.var);
    EXPECT_EQ(row.elem(3).FixedFlow, 1.5);
    EXPECT_EQ(row.elem(1).FixedFlow, 0.0);
    EXPECT_EQ(row.elem(1).fix, 1);
}

TEST(OpenEnds, an_end_whose_number_its_element_does_not_name_is_left_alone)
{
    const DebugVariable debug(nullptr);
    Row row;
    row.start();
    row.nodes[4].node_no = 99;
    lcn::applyDebugAndOpenEnds(row.nodes, row.elements, row.var);
    EXPECT_EQ(row.elem(3).fix, 0);
}

TEST(Debug, only_the_number_1_turns_it_on)
{
    // values that read as 1 are left to the test of the debug files: turning it on may write them
    for (const char* value : {static_cast<const char*>(nullptr), "2", "0", "", "yes", "-1", "11"}) {
        const DebugVariable debug(value);
        Row row;
        row.start();
        lcn::applyDebugAndOpenEnds(row.nodes, row.elements, row.var);
        EXPECT_FALSE(row.var.Debug) << (value == nullptr ? "not set" : value);
    }
}

TEST(KeepAsPrevious, every_current_value_is_copied)
{
    Row row;
    row.elem(2).Pressure = 1.0;
    row.elem(2).Massflow = 2.0;
    row.elem(2).Temperature = 3.0;
    row.elem(2).density = 4.0;
    row.nodes[3].Pressure = 5.0;
    row.nodes[3].Temperature = 6.0;
    lcn::keepAsPrevious(row.nodes, row.elements, row.var);
    EXPECT_EQ(row.elem(2).PressureOld, 1.0);
    EXPECT_EQ(row.elem(2).MassflowOld, 2.0);
    EXPECT_EQ(row.elem(2).TemperatureOld, 3.0);
    EXPECT_EQ(row.elem(2).densityOld, 4.0);
    EXPECT_EQ(row.nodes[3].PressureOld, 5.0);
    EXPECT_EQ(row.nodes[3].TemperatureOld, 6.0);
}

TEST(FlowBetweenFixedPressures, it_meets_the_elements_law)
{
    // 50 kPa over 10 m of 0.1 m pipe: turbulent, the friction factor follows the flow
    SolverNetwork network(2);
    network.add(lcn::kPipe, 1, 2);
    network.elem(1).rough = 1e-4;
    network.elem(1).Massflow = 0.1;
    network.connect();
    network.fixPressure(1, 150000.0);
    network.fixPressure(2, 100000.0);
    lcn::setFlowsBetweenFixedPressures(network.nodes, network.elements, network.var);
    const double Q = network.elem(1).Massflow / 1000.0;
    const double Re = Q / 0.01 * 0.1 / 1e-6;
    const double x = std::log10(1e-3 / 3.7 + 5.74 / std::pow(Re, 0.9));
    const double loss = 0.25 / (x * x) * 100.0 * 500.0 * (Q / 0.01) * (Q / 0.01);
    EXPECT_NEAR(loss, 50000.0, 0.1);  // 1e-6 in the flow, twice that in the loss
    lcn::settleFlowBetweenFixedPressures(network.nodes, network.elements, network.var, 1, 1e-13);
    EXPECT_NEAR(network.elem(1).Massflow / 1000.0, Q, 1e-5 * Q);
}

TEST(FlowBetweenFixedPressures, it_is_zero_between_equal_pressures_and_negative_uphill)
{
    SolverNetwork network(2);
    network.add(lcn::kKvValve, 1, 2);
    network.elem(1).HWcoeff = 4e6;
    network.elem(1).Massflow = 9.0;
    network.connect();
    network.fixPressure(1, 1e5);
    network.fixPressure(2, 1e5);
    lcn::setFlowsBetweenFixedPressures(network.nodes, network.elements, network.var);
    EXPECT_EQ(network.elem(1).Massflow, 0.0);
    network.fixPressure(2, 1.5e5);
    lcn::setFlowsBetweenFixedPressures(network.nodes, network.elements, network.var);
    EXPECT_NEAR(network.elem(1).Massflow, -1000.0 * std::sqrt(50.0 / 4e6), 1e-12);
}

TEST(FlowBetweenFixedPressures, fixed_flows_and_elements_at_free_nodes_are_left_alone)
{
    SolverNetwork network(3);
    network.add(lcn::kKvValve, 1, 2);
    network.add(lcn::kKvValve, 2, 3);
    network.connect();
    network.fixPressure(1, 1e5);
    network.fixPressure(2, 2e5);
    network.fixFlow(1, 5.0);
    network.elem(2).Massflow = 7.0;
    lcn::setFlowsBetweenFixedPressures(network.nodes, network.elements, network.var);
    EXPECT_EQ(network.elem(1).Massflow, 5.0);
    EXPECT_EQ(network.elem(2).Massflow, 7.0);
}

TEST(FlowBetweenFixedPressures, an_element_without_a_law_carries_none)
{
    SolverNetwork network(2);
    network.add(11, 1, 2);
    network.elem(1).Massflow = 7.0;
    network.connect();
    network.fixPressure(1, 1e5);
    network.fixPressure(2, 2e5);
    lcn::setFlowsBetweenFixedPressures(network.nodes, network.elements, network.var);
    EXPECT_EQ(network.elem(1).Massflow, 0.0);
}

TEST(FlowBetweenFixedPressures, power_laws_pumps_and_loss_curves_settle_too)
{
    SolverNetwork network(2);
    network.elem(network.add(lcn::kHazenWilliams, 1, 2)).HWcoeff = 2000.0;
    network.add(lcn::kPump, 2, 1);
    network.add(lcn::kLossCurve, 1, 2);
    network.elem(2).Curve.a = -80.0;
    network.elem(2).Curve.c = 2e6;
    network.elem(2).Curve.qmax = std::sqrt(4e-5);
    network.elem(3).Curve = makeCurve({0.1, 0.2, 0.3, 0.4}, {10000.0, 20000.0, 30000.0, 40000.0});
    for (int e = 1; e <= 3; ++e)
        network.elem(e).Massflow = 0.1;
    network.connect();
    network.fixPressure(1, 150000.0);
    network.fixPressure(2, 100000.0);
    lcn::setFlowsBetweenFixedPressures(network.nodes, network.elements, network.var);
    EXPECT_NEAR(network.elem(1).Massflow, 1000.0 * std::pow(50.0 / 2000.0, 1.0 / 1.85), 1e-6);
    EXPECT_NEAR(network.elem(2).Massflow, 1000.0 * std::sqrt(30.0 / 2e6), 1e-4);  // 80 - 2e6 q^2 = 50
    EXPECT_NEAR(network.elem(3).Massflow, 500.0, 1e-9);                           // chord 1e5 Pa s/m3
}

TEST(FlowEnd, an_element_has_one_when_either_end_is_a_flow_boundary)
{
    Row row;
    row.start();
    EXPECT_TRUE(lcn::hasFlowEnd(row.nodes, row.elem(1)));
    EXPECT_FALSE(lcn::hasFlowEnd(row.nodes, row.elem(2)));
    EXPECT_TRUE(lcn::hasFlowEnd(row.nodes, row.elem(3)));
}
