// element_hydraulics_test.cpp: each element kind's law, by hand numbers.
#include "lcn/element_hydraulics.h"

#include <gtest/gtest.h>

#include <cmath>

#include "lcn/curves.h"
#include "lcn/orifice.h"
#include "unit/support/solver_network.h"

using lcn::LinearisedLaw;
using SolverTest::makeCurve;
using SolverTest::SolverNetwork;

namespace
{

/// One element between two nodes.
struct OneElement : SolverNetwork {
    explicit OneElement(int type) : SolverNetwork(2) { add(type, 1, 2); }

    lcnNET_elems& e() const { return elements[1]; }

    /// Linearises at this mass flow; result receives what linearise returns.
    LinearisedLaw lineariseAt(double massflow, double* result = nullptr) const
    {
        e().Massflow = massflow;
        LinearisedLaw law{1.0, 2.0, 3.0, 4.0};
        const double r = lcn::linearise(nodes, elements, var, 1, law);
        if (result != nullptr) *result = r;
        return law;
    }

    double loss(double massflow, int direction) const
    {
        e().Massflow = massflow;
        return lcn::pressureLoss(nodes, elements, var, 1, direction);
    }

    double signedLoss(double massflow, int direction) const
    {
        e().Massflow = massflow;
        return lcn::signedPressureLoss(nodes, elements, var, 1, direction);
    }
};

void expectLaw(const LinearisedLaw& law, double c0, double c1, double r2, double g)
{
    const auto near = [](double value, double expected) {
        EXPECT_NEAR(value, expected, 1e-12 * std::fabs(expected) + 1e-300);
    };
    near(law.c0, c0);
    near(law.c1, c1);
    near(law.r2, r2);
    near(law.g, g);
}

/// A pump with rise/rho 50 - 2e6 q^2, ending at 0.005 m3/s.
OneElement pump()
{
    OneElement network(lcn::kPump);
    lcnNET_pumps& curve = network.e().Curve;
    curve.a = -50.0;
    curve.c = 2e6;
    curve.qmax = 0.005;
    return network;
}

}  // namespace

TEST(ElementHydraulics, kinds_are_told_apart_by_their_codes)
{
    for (int type = -1; type <= 12; ++type) {
        EXPECT_EQ(lcn::isQuadratic(type),
                  type == 1 || type == 5 || type == 7 || type == 8 || type == 9 || type == 10);
        EXPECT_EQ(lcn::isDarcyWeisbach(type), type == 1 || type == 9 || type == 10);
        EXPECT_EQ(lcn::isCurve(type), type == 2 || type == 3);
        EXPECT_EQ(lcn::hasLaw(type), type >= 1 && type <= 10);
    }
}

TEST(ElementHydraulics, a_darcy_weisbach_element_has_the_resistance_of_friction_and_minor_loss)
{
    for (const int type : {lcn::kPipe, lcn::kControlValve, lcn::kNonReturn}) {
        OneElement network(type);
        network.e().k = 3.6;
        // 0.1 kg/s: Re = 1e-4/0.01 x 1000 x 0.1 / 0.001 = 1000, f = 0.064;
        // r2 = (0.064 x 10 / 0.1 + 3.6) x 0.5 / 0.01^2 = 10 x 5000 = 50000
        double result = 0.0;
        expectLaw(network.lineariseAt(0.1, &result), 0.0, 0.0, 50000.0, 0.0);
        EXPECT_NEAR(result, 50000.0, 1e-8);
        // 50000 x 1000 x (1e-4)^2 = 0.5 Pa
        EXPECT_NEAR(network.loss(0.1, 1), 0.5, 1e-13);
        EXPECT_NEAR(network.loss(0.1, -1), -0.5, 1e-13);
        EXPECT_NEAR(network.loss(-0.1, 1), -0.5, 1e-13);
        EXPECT_NEAR(network.loss(-0.1, -1), 0.5, 1e-13);
        EXPECT_EQ(network.loss(0.0, 1), 0.0);
    }
}

TEST(ElementHydraulics, the_stored_friction_factor_is_used_as_it_is_on_request)
{
    OneElement network(lcn::kPipe);
    network.e().Massflow = 0.1;
    network.e().friction = 0.02;
    LinearisedLaw law;
    lcn::linearise(network.nodes, network.elements, network.var, 1, law, lcn::Friction::kStored);
    EXPECT_NEAR(law.r2, 0.02 * 10.0 / 0.1 * 5000.0, 1e-9);
    EXPECT_EQ(network.e().friction, 0.02);
    EXPECT_NEAR(lcn::pressureLoss(network.nodes, network.elements, network.var, 1, 1, lcn::Friction::kStored),
                10000.0 * 1000.0 * 1e-8, 1e-12);
    EXPECT_EQ(network.e().friction, 0.02);
}

TEST(ElementHydraulics, the_linearisation_uses_the_relaxed_friction_factor)
{
    OneElement network(lcn::kPipe);
    network.var.relaxpp = 0.3;
    network.e().friction = 0.164;
    // 0.164 + 0.3 (0.064 - 0.164) = 0.134; r2 = 0.134 x 100 x 5000
    expectLaw(network.lineariseAt(0.1), 0.0, 0.0, 67000.0, 0.0);
}

TEST(ElementHydraulics, a_pump_is_the_line_through_its_operating_point_and_its_end)
{
    const OneElement network = pump();
    // Q = 0.003: p/rho = -50 + 2e6 x 9e-6 = -32, P = -32000; c1 = 32000/0.002, c0 = -32000 x 0.005/0.002
    double result = 1.0;
    expectLaw(network.lineariseAt(3.0, &result), -80000.0, 1.6e7, 0.0, 0.0);
    EXPECT_EQ(result, 0.0);
    expectLaw(network.lineariseAt(0.0), -50000.0, 1e7, 0.0, 0.0);
}

TEST(ElementHydraulics, a_pump_beyond_its_curve_is_the_line_from_its_shut_off_point_to_its_end)
{
    const OneElement network = pump();
    for (const double massflow : {-1.0, 5.0, 6.0})  // 5 kg/s is exactly the end
        expectLaw(network.lineariseAt(massflow), -50000.0, 50000.0 / 0.005, 0.0, 0.0);
}

TEST(ElementHydraulics, a_pump_without_an_end_has_no_slope)
{
    OneElement network = pump();
    network.e().Curve.qmax = 0.0;
    expectLaw(network.lineariseAt(1.0), -50000.0, 0.0, 0.0, 0.0);
}

TEST(ElementHydraulics, a_pumps_loss_is_minus_its_rise_and_its_shut_off_pressure_beyond_the_curve)
{
    const OneElement network = pump();
    EXPECT_NEAR(network.loss(3.0, 1), -32000.0, 1e-9);
    EXPECT_NEAR(network.loss(3.0, -1), 32000.0, 1e-9);
    EXPECT_NEAR(network.loss(0.0, 1), -50000.0, 1e-9);
    EXPECT_NEAR(network.loss(5.0, 1), 0.0, 1e-9);
    EXPECT_NEAR(network.loss(6.0, 1), -50000.0, 1e-9);
    EXPECT_NEAR(network.loss(-1.0, 1), 50000.0, 1e-9);
    EXPECT_NEAR(network.loss(-1.0, -1), -50000.0, 1e-9);
}

TEST(ElementHydraulics, a_loss_curve_is_the_chord_through_its_last_point)
{
    OneElement network(lcn::kLossCurve);
    network.e().Curve = makeCurve({0.001, 0.002, 0.003, 0.004}, {100.0, 300.0, 700.0, 2000.0});
    double result = 1.0;
    expectLaw(network.lineariseAt(1.0, &result), 0.0, 500000.0, 0.0, 0.0);
    EXPECT_EQ(result, 0.0);
    EXPECT_NEAR(network.loss(1.5, 1), 200.0, 1e-9);
    EXPECT_NEAR(network.loss(1.5, -1), -200.0, 1e-9);
    EXPECT_NEAR(network.loss(-1.5, 1), -2000.0, 1e-9);
    EXPECT_NEAR(network.loss(9.0, 1), 2000.0, 1e-9);
}

TEST(ElementHydraulics, a_loss_curve_without_points_or_ending_at_zero_flow_has_no_slope)
{
    OneElement network(lcn::kLossCurve);
    expectLaw(network.lineariseAt(1.0), 0.0, 0.0, 0.0, 0.0);
    network.e().Curve = makeCurve({-0.003, -0.002, -0.001, 0.0}, {1.0, 2.0, 3.0, 4.0});
    expectLaw(network.lineariseAt(1.0), 0.0, 0.0, 0.0, 0.0);
}

TEST(ElementHydraulics, hazen_williams_gives_its_resistance_its_minor_loss_and_its_secant)
{
    OneElement network(lcn::kHazenWilliams);
    network.e().HWcoeff = 2000.0;
    network.e().k = 2.0;
    const double Q = 0.005;
    const double head = 2000.0 * std::pow(Q, 1.85) + Q * Q * 2.0 * 5000.0;
    double result = 1.0;
    expectLaw(network.lineariseAt(5.0, &result), 0.0, 2000.0, 10000.0, head * 1000.0 / Q);
    EXPECT_EQ(result, 0.0);
    expectLaw(network.lineariseAt(-5.0), 0.0, 2000.0, 10000.0, head * 1000.0 / Q);
    EXPECT_NEAR(network.loss(5.0, 1), 1000.0 * head, 1e-9);
    EXPECT_NEAR(network.loss(5.0, -1), -1000.0 * head, 1e-9);
    EXPECT_NEAR(network.loss(-5.0, 1), -1000.0 * head, 1e-9);
    EXPECT_NEAR(network.loss(-5.0, -1), 1000.0 * head, 1e-9);
}

TEST(ElementHydraulics, the_secant_of_a_power_law_at_rest_is_10)
{
    for (const int type : {lcn::kHazenWilliams, lcn::kGeneralLoss}) {
        OneElement network(type);
        network.e().HWcoeff = 2000.0;
        network.e().Param4 = 1.9;
        expectLaw(network.lineariseAt(0.0), 0.0, 2000.0, 0.0, 10.0);
        EXPECT_EQ(network.loss(0.0, 1), 0.0);
    }
}

TEST(ElementHydraulics, a_general_losss_secant_takes_the_minor_loss_as_k_squared_over_4_a_to_the_4)
{
    OneElement network(lcn::kGeneralLoss);
    network.e().HWcoeff = 300.0;
    network.e().k = 2.0;
    network.e().Param1 = 1.1;
    network.e().Param4 = 1.7;
    const double Q = 0.005;
    const double power = std::pow(1000.0, 1.1 - 1.0) * 300.0 * std::pow(Q, 1.7);
    const double minor = 2.0 * (2.0 * 0.5 / 1e-4) * 0.5 / 1e-4;
    expectLaw(network.lineariseAt(5.0), 0.0, 300.0, 10000.0, (power + minor) * 1000.0 / Q);
    // the pressure loss has the minor loss of Darcy
    const double loss = 1000.0 * (power + 10000.0 * Q * Q);
    EXPECT_NEAR(network.loss(5.0, 1), loss, 1e-9 * loss);
    EXPECT_NEAR(network.loss(-5.0, 1), -loss, 1e-9 * loss);
    EXPECT_NEAR(network.loss(-5.0, -1), loss, 1e-9 * loss);
}

TEST(ElementHydraulics, a_valves_resistance_is_its_prepared_coefficient_and_its_loss_has_no_sign)
{
    for (const int type : {lcn::kKvValve, lcn::kCvValve}) {
        OneElement network(type);
        network.e().HWcoeff = 4e6;
        double result = 0.0;
        expectLaw(network.lineariseAt(-2.0, &result), 0.0, 0.0, 4e6, 0.0);
        EXPECT_EQ(result, 4e6);
        // 4e6 x 1000 x (2e-3)^2 = 16000
        for (const int direction : {1, -1})
            for (const double massflow : {2.0, -2.0})
                EXPECT_NEAR(network.loss(massflow, direction), 16000.0, 1e-9);
        EXPECT_NEAR(network.signedLoss(2.0, 1), 16000.0, 1e-9);
        EXPECT_NEAR(network.signedLoss(2.0, -1), -16000.0, 1e-9);
        EXPECT_NEAR(network.signedLoss(-2.0, 1), -16000.0, 1e-9);
        EXPECT_NEAR(network.signedLoss(-2.0, -1), 16000.0, 1e-9);
    }
}

TEST(ElementHydraulics, an_orifice_has_the_resistance_of_its_plate_at_the_pipes_reynolds_number)
{
    OneElement network(lcn::kOrifice);
    network.e().HWcoeff = 0.6;
    network.e().Param1 = 1.0;
    network.e().Param2 = 0.47;
    // 2 kg/s: Re = 20000
    const double r2 = lcn::orificeResistance(0.6, 20000.0, {1.0, 0.47}, 0.1, 1.0);
    double result = 0.0;
    expectLaw(network.lineariseAt(2.0, &result), 0.0, 0.0, r2, 0.0);
    EXPECT_EQ(result, network.lineariseAt(2.0).r2);
    for (const int direction : {1, -1})
        for (const double massflow : {2.0, -2.0})
            EXPECT_NEAR(network.loss(massflow, direction), r2 * 1000.0 * 4e-6, 1e-9);
    EXPECT_LT(network.signedLoss(-2.0, 1), 0.0);
    EXPECT_GT(network.signedLoss(-2.0, -1), 0.0);
    expectLaw(network.lineariseAt(0.0), 0.0, 0.0, 0.0, 0.0);
}

TEST(ElementHydraulics, an_orifice_in_a_gas_takes_the_expansibility_of_its_end_pressures)
{
    OneElement network(lcn::kOrifice);
    network.e().HWcoeff = 0.5;
    network.var.compressible = true;
    network.var.heatRatio = 1.4;
    network.nodes[1].Pressure = 0.9e5;  // against the direction of the element: the larger one is p1
    network.nodes[2].Pressure = 1e5;
    const double epsilon = lcn::expansibility(0.5, 1e5, 0.9e5, 1.4);
    EXPECT_LT(epsilon, 1.0);
    EXPECT_NEAR(network.lineariseAt(2.0).r2, lcn::orificeResistance(0.5, 20000.0, {0.0, 0.0}, 0.1, epsilon),
                1e-6);
}

TEST(ElementHydraulics, the_loss_agrees_in_sign_with_the_signed_loss_for_all_other_kinds)
{
    for (const int type : {1, 2, 3, 4, 6, 9, 10}) {
        OneElement network(type);
        network.e().HWcoeff = 100.0;
        network.e().Param4 = 2.0;
        network.e().Curve = makeCurve({0.001, 0.002, 0.003, 0.004}, {100.0, 300.0, 700.0, 2000.0});
        network.e().Curve.a = -1.0;
        network.e().Curve.qmax = 1.0;
        for (const int direction : {1, -1})
            for (const double massflow : {2.0, -2.0})
                EXPECT_EQ(network.signedLoss(massflow, direction), network.loss(massflow, direction));
    }
}

TEST(ElementHydraulics, a_type_without_a_law_gives_zeros)
{
    for (const int type : {0, 11, -1, 1000}) {
        OneElement network(type);
        network.e().HWcoeff = 5.0;
        network.e().k = 1.0;
        double result = 1.0;
        expectLaw(network.lineariseAt(2.0, &result), 0.0, 0.0, 0.0, 0.0);
        EXPECT_EQ(result, 0.0);
        EXPECT_EQ(network.loss(2.0, 1), 0.0);
        EXPECT_EQ(network.signedLoss(2.0, -1), 0.0);
        EXPECT_EQ(network.e().friction, 0.0);
    }
}

TEST(ElementHydraulics, an_element_without_an_area_and_without_a_minor_loss_needs_none)
{
    OneElement network(lcn::kHazenWilliams);
    network.e().HWcoeff = 2000.0;
    network.e().Area = 0.0;
    EXPECT_NEAR(network.loss(5.0, 1), 1000.0 * 2000.0 * std::pow(0.005, 1.85), 1e-9);
    EXPECT_EQ(network.lineariseAt(5.0).r2, 0.0);
}
