// viscosity_test.cpp: viscosity over temperature, Reynolds number.
#include "lcn/viscosity.h"

#include <gtest/gtest.h>

#include <cmath>

#include "lcn/records.h"

namespace
{

double waterLaw(double T)
{
    const lcnNET_var var;  // its defaults are those of water
    return lcn::vogelViscosity(var.ViscA, var.ViscB, var.ViscC, T);
}

lcnNET_elems pipe(double massflow)
{
    lcnNET_elems elem;
    elem.Massflow = massflow;
    elem.density = 1000.0;
    elem.Area = 0.01;
    elem.diam = 0.1;
    return elem;
}

}  // namespace

TEST(Viscosity, the_law_gives_about_one_millipascal_second_for_water_at_20_degrees)
{
    // 1.0016e-3 Pa s at 20 degC, IAPWS (2008); the law is a fit within a few per cent
    EXPECT_NEAR(waterLaw(293.15), 1.0016e-3, 3e-5);
}

TEST(Viscosity, the_law_agrees_with_a_hand_calculation)
{
    // (783.8 - 273.15) / (293.15 + 396.8 - 546.3) = 510.65 / 143.65 = 3.554820
    EXPECT_NEAR(waterLaw(293.15), 2.86e-5 * std::exp(510.65 / 143.65), 1e-15);
    EXPECT_EQ(lcn::vogelViscosity(2.0, 273.15, 1000.0, 300.0), 2.0);  // exponent 0
}

TEST(Viscosity, temperatures_outside_0_to_100_degrees_count_as_the_nearer_end)
{
    EXPECT_EQ(waterLaw(-50.0), waterLaw(273.15));
    EXPECT_EQ(waterLaw(273.0), waterLaw(273.15));
    EXPECT_EQ(waterLaw(400.0), waterLaw(373.15));
    EXPECT_GT(waterLaw(273.15), waterLaw(273.16));
    EXPECT_LT(waterLaw(373.15), waterLaw(373.14));
}

TEST(Viscosity, without_the_law_the_constant_value_holds_at_any_temperature)
{
    lcnNET_var var;
    var.Viscosity = 0.002;
    EXPECT_EQ(lcn::viscosity(var, 280.0), 0.002);
    EXPECT_EQ(lcn::viscosity(var, 350.0), 0.002);
    var.ViscosityLaw = true;
    EXPECT_EQ(lcn::viscosity(var, 350.0), waterLaw(350.0));
}

TEST(Reynolds, it_is_velocity_times_diameter_over_kinematic_viscosity)
{
    // 2 kg/s: V = 2 / 1000 / 0.01 = 0.2 m/s; Re = 0.2 x 1000 x 0.1 / 0.001 = 20000
    EXPECT_NEAR(lcn::reynolds(pipe(2.0), 0.001), 20000.0, 1e-9);
}

TEST(Reynolds, it_is_positive_for_either_direction_of_flow)
{
    EXPECT_EQ(lcn::reynolds(pipe(-2.0), 0.001), lcn::reynolds(pipe(2.0), 0.001));
    EXPECT_EQ(lcn::reynolds(pipe(0.0), 0.001), 0.0);
}

TEST(Reynolds, it_is_zero_without_density_area_diameter_or_viscosity)
{
    lcnNET_elems elem = pipe(2.0);
    elem.density = 0.0;
    EXPECT_EQ(lcn::reynolds(elem, 0.001), 0.0);
    elem = pipe(2.0);
    elem.Area = 0.0;
    EXPECT_EQ(lcn::reynolds(elem, 0.001), 0.0);
    elem = pipe(2.0);
    elem.diam = 0.0;
    EXPECT_EQ(lcn::reynolds(elem, 0.001), 0.0);
    EXPECT_EQ(lcn::reynolds(pipe(2.0), 0.0), 0.0);
}
