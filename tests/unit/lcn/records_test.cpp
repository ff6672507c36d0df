// records_test.cpp: defaults, copies and messages of the solver's records.
#include "lcn/records.h"

#include <gtest/gtest.h>

#include <vector>

TEST(Records, the_default_control_record_has_its_documented_values)
{
    const lcnNET_var var;
    EXPECT_EQ(var.Tav, 294.260009765625);
    EXPECT_EQ(var.Tav, static_cast<double>(294.26F));
    EXPECT_EQ(var.FrictionMethod, 1);
    EXPECT_EQ(var.ViscA, 2.86e-5);
    EXPECT_EQ(var.ViscB, 783.8);
    EXPECT_EQ(var.ViscC, 396.8);
    EXPECT_TRUE(var.name.empty());
    EXPECT_FALSE(var.Debug);
    EXPECT_FALSE(var.ViscosityLaw);
    EXPECT_FALSE(var.compressible);
    for (const int number : {var.numitermm, var.numiterpp, var.nxx, var.Energy, var.Minor, var.LimitedFlows,
                             var.ElemTotal, var.NodeTotal, var.InletNode, var.circuitNumber})
        EXPECT_EQ(number, 0);
    for (const double value : {var.Pav, var.Density, var.Viscosity, var.Cp, var.Pr, var.Conductivity,
                               var.Concrit, var.relaxpp, var.Datum, var.Q})
        EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(var.Messages.empty());
    EXPECT_TRUE(var.Pumps.isEmpty());
}

TEST(Records, a_default_curve_has_no_points_and_reference_density_1000)
{
    const lcnNET_pumps curve;
    EXPECT_EQ(curve.points(), 0);
    EXPECT_EQ(curve.RefDensity, 1000.0);
    for (const double value : {curve.a, curve.b, curve.c, curve.d, curve.qmax})
        EXPECT_EQ(value, 0.0);
}

TEST(Records, the_points_of_a_curve_are_counted_from_the_offset_of_the_pressures)
{
    lcnNET_pumps curve;
    lcn::array<double> all;
    all.resize(7);
    curve.PressurePoints = all.shiftedBy(2);
    EXPECT_EQ(curve.points(), 5);
}

TEST(Records, a_default_element_has_constraint_one_and_laminar_factor_64)
{
    const lcnNET_elems elem;
    EXPECT_EQ(elem.Constraint, 1);
    EXPECT_EQ(elem.LaminarFactor, 64.0);
    EXPECT_EQ(elem.HTE, 1.0);
    EXPECT_EQ(elem.fix, 0);
    EXPECT_EQ(elem.FlowLimited, 0);
    EXPECT_EQ(elem.Proximity, 0);
    EXPECT_EQ(elem.Massflow, 0.0);
    EXPECT_EQ(elem.friction, 0.0);
}

TEST(Records, a_record_copies_its_word_its_scalars_and_shares_its_arrays)
{
    lcnNET_elems elem(0x1234567890abcdefULL);
    elem.Massflow = 2.5;
    elem.Curve.FlowRate.resize(2);
    const lcnNET_elems copy(elem);
    EXPECT_EQ(copy.word(), 0x1234567890abcdefULL);
    elem.Massflow = 0.0;
    elem.Curve.FlowRate[1] = 4.0;
    EXPECT_EQ(copy.Massflow, 2.5);
    EXPECT_EQ(copy.Curve.FlowRate[1], 4.0);

    lcnNET_nodes node;
    node.Pressure = 3.0;
    node.LocalElements.resize(2);
    lcnNET_nodes other;
    other = node;
    node.LocalElements[1] = -7;
    EXPECT_EQ(other.Pressure, 3.0);
    EXPECT_EQ(other.LocalElements[1], -7);
}

TEST(Records, nodes_made_on_one_empty_list_share_it)
{
    const lcn::array<int> noList;
    const lcnNET_nodes node(noList);
    EXPECT_EQ(node.node_no, 0);
    EXPECT_TRUE(node.Elements.isEmpty());
    EXPECT_TRUE(node.Work.isEmpty());
}

TEST(Records, work_arrays_get_eight_and_two_zero_slots)
{
    lcnNET_var var;
    var.sizeWorkArrays();
    EXPECT_EQ(var.Control.size(), 8);
    EXPECT_EQ(var.FloatWork.size(), 15U);
    EXPECT_EQ(var.IntWork.size(), 2U);
    for (const auto& list : var.FloatWork)
        EXPECT_EQ(list.size(), 2);
    for (const auto& list : var.IntWork)
        EXPECT_EQ(list.size(), 2);
    EXPECT_EQ(var.warmStart(), 0);
}

TEST(Records, sizing_again_zeroes_what_an_earlier_solve_left)
{
    lcnNET_var var;
    var.sizeWorkArrays();
    var.warmStart() = 1;
    var.FloatWork[3][1] = 2.0F;
    var.sizeWorkArrays();
    EXPECT_EQ(var.warmStart(), 0);
    EXPECT_EQ(var.FloatWork[3][1], 0.0F);
}

TEST(Records, clearing_leaves_no_work_slots)
{
    lcnNET_var var;
    var.sizeWorkArrays();
    var.clearWorkArrays();
    EXPECT_TRUE(var.Control.isEmpty());
    for (const auto& list : var.FloatWork)
        EXPECT_TRUE(list.isEmpty());
    for (const auto& list : var.IntWork)
        EXPECT_TRUE(list.isEmpty());
}

TEST(Records, volume_flow_is_mass_flow_over_density_and_zero_without_one)
{
    lcnNET_elems elem;
    elem.Massflow = -3.0;
    EXPECT_EQ(elem.volumeFlow(), 0.0);
    elem.density = 1000.0;
    EXPECT_EQ(elem.volumeFlow(), -0.003);
}

TEST(Records, node_flags_and_element_codes_have_their_documented_values)
{
    EXPECT_EQ(lcn::kFreeNode, 0);
    EXPECT_EQ(lcn::kPressureBoundary, 1);
    EXPECT_EQ(lcn::kFlowBoundary, 2);
    EXPECT_EQ(lcn::kPipe, 1);
    EXPECT_EQ(lcn::kPump, 2);
    EXPECT_EQ(lcn::kLossCurve, 3);
    EXPECT_EQ(lcn::kHazenWilliams, 4);
    EXPECT_EQ(lcn::kOrifice, 5);
    EXPECT_EQ(lcn::kGeneralLoss, 6);
    EXPECT_EQ(lcn::kKvValve, 7);
    EXPECT_EQ(lcn::kCvValve, 8);
    EXPECT_EQ(lcn::kControlValve, 9);
    EXPECT_EQ(lcn::kNonReturn, 10);
}
