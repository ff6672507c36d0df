// heat_transfer_test.cpp: heat between wall and fluid. The numbers are by hand.
#include "lcn/heat_transfer.h"

#include <gtest/gtest.h>

#include <cmath>

#include "unit/support/solver_network.h"

using SolverTest::SolverNetwork;

namespace
{

/// One pipe from a node at 300 K to one at 320 K, 0.1 kg/s, wall at 350 K with 2 m2. Cp 4000 J/(kg K), conductivity
/// 0.5 W/(m K): Re 1000, Nu 3.66, h = 0.5 x 3.66 / 0.1 = 18.3 W/(m2 K), heat = 2 x 18.3 x 50 = 1830 W.
struct HeatedPipe : SolverNetwork {
    HeatedPipe() : SolverNetwork(2)
    {
        add(lcn::kPipe, 1, 2);
        connect();
        var.Energy = 1;
        var.Cp = 4000.0;
        var.Conductivity = 0.5;
        nodes[1].Temperature = 300.0;
        nodes[2].Temperature = 320.0;
        pipe().Temperature = 300.0;
        pipe().MetalTemp = 350.0;
        pipe().WettedArea = 2.0;
        pipe().Massflow = 0.1;
        pipe().friction = 0.03;
    }

    lcnNET_elems& pipe() const { return elem(1); }
    double heat() { return lcn::elementHeat(nodes, elements, var, 1); }

    /// Whether heat, flux, coefficient and wall temperature stay as stored.
    void expectStoredValuesStay()
    {
        pipe().heat = 77.0;
        pipe().HeatFlux = 5.0;
        pipe().hConvect = 6.0;
        EXPECT_EQ(heat(), 77.0);
        EXPECT_EQ(pipe().heat, 77.0);
        EXPECT_EQ(pipe().HeatFlux, 5.0);
        EXPECT_EQ(pipe().hConvect, 6.0);
        EXPECT_EQ(pipe().MetalTemp, 350.0);
    }
};

/// 0.023 x 1e7^0.8
constexpr double kDittusBoelterAt1e7 = 9156.46492;

}  // namespace

TEST(HeatTransfer, prandtl_is_viscosity_times_heat_capacity_over_conductivity)
{
    EXPECT_DOUBLE_EQ(lcn::prandtl(0.001, 4000.0, 0.5), 8.0);
    EXPECT_EQ(lcn::prandtl(0.001, 4000.0, 0.0), 0.0);
}

TEST(HeatTransfer, nusselt_is_zero_below_Re_10)
{
    EXPECT_EQ(lcn::nusselt(0.0, 7.0, 0.03, true), 0.0);
    EXPECT_EQ(lcn::nusselt(std::nextafter(10.0, 0.0), 7.0, 0.03, true), 0.0);
}

TEST(HeatTransfer, nusselt_is_3_66_from_Re_10_to_2300)
{
    EXPECT_EQ(lcn::nusselt(10.0, 7.0, 0.03, true), 3.66);
    EXPECT_EQ(lcn::nusselt(2300.0, 7.0, 0.03, false), 3.66);
}

// Gnielinski (1976), f 0.03, Pr 7: f/8 = 0.00375, 7^(2/3) = 3.6593057, denominator
// 1 + 12.7 x 0.0612372 x 2.6593057 = 3.0681766; Re 1e4: 0.00375 x 9000 x 7 / 3.0681766.
TEST(HeatTransfer, nusselt_is_gnielinski_at_Re_10000)
{
    EXPECT_NEAR(lcn::nusselt(1e4, 7.0, 0.03, true), 77.0001309, 1e-5);
    EXPECT_EQ(lcn::nusselt(1e4, 7.0, 0.03, true), lcn::nusselt(1e4, 7.0, 0.03, false));
}

// At Re 3000: 0.00375 x 2000 x 7 / 3.0681766 = 17.1111402; Re 2650 is half way between it and 3.66 at 2300.
TEST(HeatTransfer, nusselt_follows_a_straight_line_between_2300_and_3000)
{
    EXPECT_NEAR(lcn::nusselt(2650.0, 7.0, 0.03, true), (3.66 + 17.1111402) / 2.0, 1e-6);
}

TEST(HeatTransfer, nusselt_is_continuous_at_both_ends_of_the_line)
{
    EXPECT_NEAR(lcn::nusselt(std::nextafter(2300.0, 3000.0), 7.0, 0.03, true), 3.66, 1e-9);
    const double at3000 = lcn::nusselt(3000.0, 7.0, 0.03, true);
    EXPECT_NEAR(at3000, 17.1111402, 1e-6);
    EXPECT_NEAR(lcn::nusselt(std::nextafter(3000.0, 4000.0), 7.0, 0.03, true), at3000, 1e-9);
}

// 7^0.4 = 2.1779064, 7^0.3 = 1.7927900
TEST(HeatTransfer, nusselt_is_dittus_boelter_above_5e6)
{
    EXPECT_NEAR(lcn::nusselt(1e7, 7.0, 0.03, true), kDittusBoelterAt1e7 * 2.1779064, 0.01);
    EXPECT_NEAR(lcn::nusselt(1e7, 7.0, 0.03, false), kDittusBoelterAt1e7 * 1.7927900, 0.01);
}

TEST(HeatTransfer, nusselt_at_5e6_is_still_gnielinski)
{
    // 0.00375 x 4999000 x 7 / 3.0681766
    EXPECT_NEAR(lcn::nusselt(5e6, 7.0, 0.03, true), 42769.295, 1e-3);
}

TEST(HeatTransfer, the_upstream_node_is_where_the_flow_comes_from)
{
    HeatedPipe net;
    EXPECT_EQ(lcn::upstreamTemperature(net.nodes, net.pipe()), 300.0);
    net.pipe().Massflow = -0.1;
    EXPECT_EQ(lcn::upstreamTemperature(net.nodes, net.pipe()), 320.0);
    net.pipe().Massflow = 0.0;
    EXPECT_EQ(lcn::upstreamTemperature(net.nodes, net.pipe()), 300.0);
}

TEST(HeatTransfer, kinds_0_and_1_are_convection_from_the_wall)
{
    for (const int kind : {0, 1}) {
        HeatedPipe net;
        net.pipe().Energy_var = kind;
        EXPECT_NEAR(net.heat(), 1830.0, 1e-9) << kind;
        EXPECT_NEAR(net.pipe().heat, 1830.0, 1e-9) << kind;
        EXPECT_NEAR(net.pipe().HeatFlux, 915.0, 1e-9) << kind;
        EXPECT_NEAR(net.pipe().hConvect, 18.3, 1e-12) << kind;
    }
}

TEST(HeatTransfer, a_colder_wall_takes_heat)
{
    HeatedPipe net;
    net.pipe().MetalTemp = 250.0;
    EXPECT_NEAR(net.heat(), -1830.0, 1e-9);
}

TEST(HeatTransfer, kinds_2_and_4_are_flux_times_wetted_area)
{
    for (const int kind : {2, 4}) {
        HeatedPipe net;
        net.pipe().Energy_var = kind;
        net.pipe().HeatFlux = 30.0;
        EXPECT_EQ(net.heat(), 60.0) << kind;
        EXPECT_EQ(net.pipe().heat, 60.0) << kind;
        EXPECT_EQ(net.pipe().HeatFlux, 30.0) << kind;
    }
}

TEST(HeatTransfer, kind_3_is_a_rise_of_the_whole_flow)
{
    HeatedPipe net;
    net.pipe().Energy_var = 3;
    net.pipe().TemperatureRise = 5.0;
    EXPECT_DOUBLE_EQ(net.heat(), 2000.0);  // 4000 x 0.1 x 5
    EXPECT_DOUBLE_EQ(net.pipe().HeatFlux, 1000.0);
}

TEST(HeatTransfer, kind_3_counts_along_the_direction_of_the_element)
{
    HeatedPipe net;
    net.pipe().Energy_var = 3;
    net.pipe().TemperatureRise = 5.0;
    net.pipe().Massflow = -0.1;
    EXPECT_DOUBLE_EQ(net.heat(), -2000.0);
}

TEST(HeatTransfer, kind_3_at_zero_flow_adds_nothing)
{
    HeatedPipe net;
    net.pipe().Energy_var = 3;
    net.pipe().TemperatureRise = 5.0;
    net.pipe().Massflow = 0.0;
    net.pipe().heat = 77.0;
    EXPECT_EQ(net.heat(), 0.0);
    EXPECT_EQ(net.pipe().heat, 0.0);
}

TEST(HeatTransfer, kind_5_keeps_the_heat_and_computes_the_wall_temperature)
{
    HeatedPipe net;
    net.pipe().Energy_var = 5;
    net.pipe().heat = 1830.0;
    net.pipe().MetalTemp = 0.0;
    EXPECT_EQ(net.heat(), 1830.0);
    EXPECT_EQ(net.pipe().HeatFlux, 915.0);
    EXPECT_NEAR(net.pipe().hConvect, 18.3, 1e-12);
    EXPECT_NEAR(net.pipe().MetalTemp, 350.0, 1e-9);  // 300 + 1830 / (18.3 x 2)
}

TEST(HeatTransfer, kind_5_keeps_the_wall_temperature_where_nothing_is_convected)
{
    HeatedPipe still;
    still.pipe().Energy_var = 5;
    still.pipe().heat = 1830.0;
    still.pipe().Massflow = 0.0;
    EXPECT_EQ(still.heat(), 1830.0);
    EXPECT_EQ(still.pipe().MetalTemp, 350.0);

    HeatedPipe dry;
    dry.pipe().Energy_var = 5;
    dry.pipe().heat = 1830.0;
    dry.pipe().WettedArea = 0.0;
    EXPECT_EQ(dry.heat(), 1830.0);
    EXPECT_EQ(dry.pipe().MetalTemp, 350.0);
    EXPECT_EQ(dry.pipe().HeatFlux, 0.0);
}

TEST(HeatTransfer, other_kinds_keep_what_is_stored)
{
    for (const int kind : {-1, 6, 99}) {
        HeatedPipe net;
        net.pipe().Energy_var = kind;
        net.expectStoredValuesStay();
    }
}

TEST(HeatTransfer, pumps_and_loss_curves_keep_their_heat_with_kinds_0_and_1)
{
    for (const int type : {lcn::kPump, lcn::kLossCurve})
        for (const int kind : {0, 1}) {
            HeatedPipe net;
            net.pipe().type = type;
            net.pipe().Energy_var = kind;
            net.expectStoredValuesStay();
        }
}

TEST(HeatTransfer, pumps_and_loss_curves_take_a_flux_like_any_other)
{
    for (const int type : {lcn::kPump, lcn::kLossCurve}) {
        HeatedPipe net;
        net.pipe().type = type;
        net.pipe().Energy_var = 2;
        net.pipe().HeatFlux = 30.0;
        EXPECT_EQ(net.heat(), 60.0);
    }
}

TEST(HeatTransfer, sub_kinds_40_and_50_keep_what_is_stored)
{
    for (const int subKind : {40, 50}) {
        HeatedPipe net;
        net.pipe().subKind = subKind;
        net.expectStoredValuesStay();
    }
}

TEST(HeatTransfer, without_Energy_everything_keeps_what_is_stored)
{
    for (int kind = 0; kind <= 5; ++kind) {
        HeatedPipe net;
        net.var.Energy = 0;
        net.pipe().Energy_var = kind;
        net.expectStoredValuesStay();
    }
}

TEST(HeatTransfer, sub_kind_37_doubles_the_coefficient)
{
    HeatedPipe net;
    net.pipe().subKind = 37;
    EXPECT_NEAR(net.heat(), 3660.0, 1e-9);
    EXPECT_NEAR(net.pipe().hConvect, 36.6, 1e-12);
}

TEST(HeatTransfer, HTE_multiplies_the_coefficient)
{
    HeatedPipe net;
    net.pipe().HTE = 0.5;
    EXPECT_NEAR(net.heat(), 915.0, 1e-9);
    EXPECT_NEAR(net.pipe().hConvect, 9.15, 1e-12);
}

// Neighbouring numbers at 300 lie 5.7e-14 apart: the next one is within 1e-13 K, the one after it is not.
TEST(HeatTransfer, temperatures_within_1e_13_K_count_as_equal)
{
    HeatedPipe net;
    const double next = std::nextafter(300.0, 400.0);
    net.pipe().MetalTemp = next;
    EXPECT_EQ(net.heat(), 0.0);
    net.pipe().MetalTemp = std::nextafter(next, 400.0);
    EXPECT_GT(net.heat(), 0.0);
}

TEST(HeatTransfer, slow_flow_takes_no_heat_from_the_wall)
{
    HeatedPipe net;
    net.pipe().Massflow = 0.00099;  // Re 9.9
    EXPECT_EQ(net.heat(), 0.0);
    net.pipe().Massflow = 0.00101;  // Re 10.1
    EXPECT_GT(net.heat(), 0.0);
}

// Re 1e7, Pr 8: h = 0.5 Nu / 0.1; 8^0.4 = 2.2973967, 8^0.3 = 1.8660660
TEST(HeatTransfer, heating_is_told_from_cooling_by_the_upstream_node)
{
    HeatedPipe net;
    net.pipe().Massflow = 1000.0;
    net.heat();
    EXPECT_NEAR(net.pipe().hConvect, 5.0 * kDittusBoelterAt1e7 * 2.2973967, 0.05);

    net.pipe().MetalTemp = 310.0;
    net.pipe().Massflow = -1000.0;  // from the node at 320 K
    net.heat();
    EXPECT_NEAR(net.pipe().hConvect, 5.0 * kDittusBoelterAt1e7 * 1.8660660, 0.05);

    net.pipe().MetalTemp = 320.0;  // equal temperatures count as cooling
    net.heat();
    EXPECT_NEAR(net.pipe().hConvect, 5.0 * kDittusBoelterAt1e7 * 1.8660660, 0.05);
}

// 20 transfer units: h x area = 20 x Cp x flow = 8000 W/K. The flow can take 400 W/K x 50 K.
TEST(HeatTransfer, a_wall_gives_no_more_than_brings_the_flow_to_its_temperature)
{
    HeatedPipe net;
    net.pipe().WettedArea = 8000.0 / 18.3;
    EXPECT_NEAR(net.heat(), 20000.0, 1e-9);
    net.pipe().MetalTemp = 250.0;
    EXPECT_NEAR(net.heat(), -20000.0, 1e-9);
}

// The settled mean temperature of n transfer units is 300 + 50 (n/2) / (1 + n/2): the wall gives 400 n (350 - mean),
// which is less than 20000 up to n = 2.
TEST(HeatTransfer, the_bound_changes_nothing_below_two_transfer_units)
{
    for (const double units : {0.1, 1.0, 1.9}) {
        HeatedPipe net;
        net.pipe().WettedArea = 400.0 * units / 18.3;
        net.pipe().Temperature = 300.0 + 50.0 * (units / 2.0) / (1.0 + units / 2.0);
        EXPECT_NEAR(net.heat(), 400.0 * units * (350.0 - net.pipe().Temperature), 1e-9) << units;
        EXPECT_LT(net.pipe().heat, 20000.0) << units;
    }
}

TEST(HeatTransfer, without_wetted_area_there_is_neither_heat_nor_flux)
{
    HeatedPipe net;
    net.pipe().WettedArea = 0.0;
    EXPECT_EQ(net.heat(), 0.0);
    EXPECT_EQ(net.pipe().HeatFlux, 0.0);
}

TEST(HeatTransfer, without_cross_section_diameter_or_conductivity_nothing_is_convected)
{
    HeatedPipe flat;
    flat.pipe().Area = 0.0;
    EXPECT_EQ(flat.heat(), 0.0);
    EXPECT_EQ(flat.pipe().hConvect, 0.0);

    HeatedPipe thin;
    thin.pipe().diam = 0.0;
    EXPECT_EQ(thin.heat(), 0.0);
    EXPECT_EQ(thin.pipe().hConvect, 0.0);

    HeatedPipe insulating;
    insulating.var.Conductivity = 0.0;
    EXPECT_EQ(insulating.heat(), 0.0);
    EXPECT_EQ(insulating.pipe().hConvect, 0.0);
}
