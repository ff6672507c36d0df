// Circuits whose answer can be written down.
#include <gtest/gtest.h>

#include <cmath>

#include "support/networks.h"

using namespace support;

namespace
{

constexpr double kPi = 3.14159265358979323846;

/// A row of nodes one element length apart on the x axis, a pressure at either end.
Description row(const std::vector<ElementData>& elements, double length, double inlet, double outlet)
{
    Description d;
    for (std::size_t i = 0; i <= elements.size(); ++i) {
        NodeData node;
        node.at = {length * static_cast<double>(i), 0.0, 0.0};
        d.nodes.push_back(node);
    }
    d.nodes.front().type = TAVELL_NODE_INLET;
    d.nodes.front().value = inlet;
    d.nodes.back().type = TAVELL_NODE_OUTLET;
    d.nodes.back().value = outlet;
    for (std::size_t e = 0; e < elements.size(); ++e) {
        d.elements.push_back(elements[e]);
        d.elements.back().start = static_cast<int>(e);
        d.elements.back().end = static_cast<int>(e) + 1;
    }
    return d;
}

ElementData pipe(double diameter, double roughness = 0.0)
{
    ElementData element;
    element.diameter = diameter;
    element.properties = {{static_cast<double>(TAVELL_ELEMENT_ROUGHNESS), roughness}};
    return element;
}

ElementData with(ElementData element, int type, std::vector<std::array<double, 2>> properties)
{
    element.type = type;
    for (const auto& property : properties)
        element.properties.push_back(property);
    return element;
}

double onlyFlow(const Built& built)
{
    const std::vector<double> flows = built.results(TAVELL_RESULT_MASS_FLOW);
    return flows.empty() ? std::nan("") : flows.front();
}

}  // namespace

TEST(ClosedForm, laminar_pipe_follows_hagen_poiseuille)
{
    // Q = pi dp D^4 / (128 mu L), three pipes of 2 m in series at 30 Pa
    const Description d = row({pipe(0.01), pipe(0.01), pipe(0.01)}, 2.0, 100030.0, 100000.0);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const double Q = kPi * 30.0 * std::pow(0.01, 4) / (128.0 * d.viscosity * 6.0);
    EXPECT_NEAR(onlyFlow(built), d.density * Q, 1e-5 * d.density * Q);
}

TEST(ClosedForm, two_equal_pipes_in_series_share_the_pressure_equally)
{
    const Description d = row({pipe(0.1, 1e-4), pipe(0.1, 1e-4)}, 100.0, 3e5, 1e5);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_NEAR(built.results(TAVELL_RESULT_PRESSURE)[1], 2e5, 0.2);
    EXPECT_NEAR(lossOf(d, d.elements[0], onlyFlow(built)), 1e5, 1.0);
}

TEST(ClosedForm, static_fluid_column_shows_hydrostatic_pressure)
{
    // a closed riser: p falls by rho g z, nothing flows
    Description d = row({pipe(0.05), pipe(0.05), pipe(0.05)}, 0.0, 2e5, 0.0);
    for (std::size_t i = 0; i < d.nodes.size(); ++i)
        d.nodes[i].at = {0.0, 0.0, 4.0 * static_cast<double>(i)};
    d.nodes.back().constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    d.nodes.back().value = 0.0;
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
    for (std::size_t i = 0; i < pressure.size(); ++i)
        EXPECT_NEAR(pressure[i], 2e5 - d.density * 9.80665 * 4.0 * static_cast<double>(i), 1e-6);
    for (const double flow : built.results(TAVELL_RESULT_MASS_FLOW))
        EXPECT_EQ(flow, 0.0);
}

TEST(ClosedForm, hazen_williams_head_loss)
{
    // h = 10.67 L Q^1.85 / (C^1.85 D^4.87), dp = rho 9.806 h
    const ElementData element = with(pipe(0.2), TAVELL_HAZEN_WILLIAMS_PIPE, {{1016, 120.0}});
    const Description d = row({element, element}, 250.0, 3e5, 2e5);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const double head = 1e5 / d.density / 9.806;
    const double Q =
        std::pow(head * std::pow(120.0, 1.85) * std::pow(0.2, 4.87) / (10.67 * 500.0), 1.0 / 1.85);
    EXPECT_NEAR(onlyFlow(built), d.density * Q, 1e-5 * d.density * Q);
}

TEST(ClosedForm, kv_and_cv_valves_meet_their_definition)
{
    // Kv: m3/h of water (998.97 kg/m3) at 1 bar. Two valves in series, each at 1 bar, carry Kv.
    for (const bool imperial : {false, true}) {
        const double coefficient = imperial ? 20.0 / 0.865 : 20.0;
        const ElementData valve = with(pipe(0.05), imperial ? TAVELL_CV_VALVE : TAVELL_KV_VALVE,
                                       {{imperial ? 1019.0 : 1018.0, coefficient}});
        Description d = row({valve, valve}, 1.0, 3e5, 1e5);
        d.density = 998.97;
        const Built built(d);
        ASSERT_TRUE(built.solve()) << built.feedback();
        EXPECT_NEAR(built.results(TAVELL_RESULT_VOLUME_FLOW)[0] * 3600.0, 20.0, 1e-4);
    }
}

TEST(ClosedForm, valve_drawn_against_the_flow_carries_the_same_flow)
{
    ElementData valve = with(pipe(0.05), TAVELL_KV_VALVE, {{1018, 20.0}});
    Description d = row({pipe(0.1, 1e-5), valve, pipe(0.1, 1e-5)}, 1.0, 3e5, 1e5);
    const Built forward(d);
    std::swap(d.elements[1].start, d.elements[1].end);
    const Built backward(d);
    ASSERT_TRUE(forward.solve());
    ASSERT_TRUE(backward.solve()) << backward.feedback();
    const std::vector<double> there = forward.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> back = backward.results(TAVELL_RESULT_MASS_FLOW);
    EXPECT_NEAR(back[1], -there[1], 1e-5 * there[1]);
    EXPECT_NEAR(back[0], there[0], 1e-5 * there[0]);
}

TEST(ClosedForm, general_loss_with_constant_friction_factor)
{
    // dp = f L/D rho V^2/2 is ck = 8 f / pi^2, a = 1, b = 1, c = 5, d = 2
    const double f = 0.02;
    const ElementData loss =
        with(pipe(0.3), TAVELL_GENERAL_LOSS,
             {{1020, 8.0 * f / (kPi * kPi)}, {1021, 1.0}, {1022, 1.0}, {1023, 5.0}, {1024, 2.0}});
    const Description d = row({loss, loss, loss}, 500.0, 4e5, 2e5);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const double V = std::sqrt(2.0 * 2e5 / (f * 1500.0 / 0.3 * d.density));
    const double m = d.density * V * kPi * 0.3 * 0.3 / 4.0;
    EXPECT_NEAR(onlyFlow(built), m, 1e-5 * m);
}

TEST(ClosedForm, orifice_meets_its_own_coefficient)
{
    // corner tappings, D = 0.2 m, beta = 0.6; C by Reader-Harris and Gallagher at the resulting Reynolds
    // number
    const ElementData plate = with(pipe(0.2), TAVELL_ORIFICE, {{1017, 0.12}});
    Description d = row({pipe(0.2), plate, pipe(0.2)}, 1.0, 2.5e5, 1e5);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
    const double Q = built.results(TAVELL_RESULT_VOLUME_FLOW)[1];
    const double beta = 0.6, b4 = std::pow(beta, 4);
    const double Re = Q / (kPi * 0.01) * d.density * 0.2 / d.viscosity;
    const double A = std::pow(19000.0 * beta / Re, 0.8);
    const double C = 0.5961 + 0.0261 * beta * beta - 0.216 * std::pow(beta, 8) +
                     0.000521 * std::pow(1e6 * beta / Re, 0.7) +
                     (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / Re, 0.3) +
                     (0.043 + 0.080 - 0.123) * (1.0 - 0.11 * A) * b4 / (1.0 - b4);
    const double expected = C / std::sqrt(1.0 - b4) * kPi * 0.12 * 0.12 / 4.0 *
                            std::sqrt(2.0 * (pressure[1] - pressure[2]) / d.density);
    EXPECT_NEAR(Q, expected, 1e-5 * expected);
}

TEST(ClosedForm, pump_lifts_at_the_intersection_of_pump_and_system_curve)
{
    // rise = 3e5 - 2e9 Q^2 Pa against rho g 10 m and two Kv valves as the system
    ElementData pump;
    pump.type = TAVELL_PUMP;
    for (int i = 0; i < 5; ++i) {
        const double Q = 0.0025 * i;
        pump.curveFlows.push_back(Q);
        pump.curvePressures.push_back(3e5 - 2e9 * Q * Q);
    }
    const ElementData valve = with(pipe(0.05), TAVELL_KV_VALVE, {{1018, 25.0}});
    Description d = row({valve, pump, valve}, 1.0, 1e5, 1e5);
    d.nodes[3].at[2] = 10.0;
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();

    const double r = 1e5 * d.density / 998.97 * std::pow(3600.0 / 25.0, 2);  // Pa per (m3/s)^2, each valve
    const double Q = std::sqrt((3e5 - d.density * 9.80665 * 10.0) / (2e9 + 2.0 * r));
    EXPECT_NEAR(built.results(TAVELL_RESULT_VOLUME_FLOW)[1], Q, 1e-5 * Q);
    EXPECT_NEAR(built.results(TAVELL_RESULT_PRESSURE_DIFFERENCE)[1], 3e5 - 2e9 * Q * Q, 5.0);
}

TEST(ClosedForm, straight_loss_curve_is_a_linear_resistance)
{
    ElementData loss;
    loss.type = TAVELL_LOSS;
    loss.curveFlows = {0.001, 0.002, 0.003, 0.004};
    loss.curvePressures = {5e4, 1e5, 1.5e5, 2e5};
    const Description d = row({loss, loss}, 1.0, 3e5, 1e5);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_NEAR(built.results(TAVELL_RESULT_VOLUME_FLOW)[0], 1e5 / 5e7, 1e-8);
}

TEST(ClosedForm, parallel_pipes_split_by_their_conductance)
{
    // laminar: flow goes with D^4; two parallel pipes between the same inner nodes
    Description d = row({pipe(0.02), pipe(0.01), pipe(0.02)}, 1.0, 100004.0, 100000.0);
    ElementData second = d.elements[1];
    second.diameter = 0.008;
    d.elements.push_back(second);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    EXPECT_NEAR(flow[1] / flow[3], std::pow(0.01 / 0.008, 4), 1e-4);
    EXPECT_NEAR(flow[1] + flow[3], flow[0], 1e-5 * flow[0]);
}

TEST(ClosedForm, reynolds_and_velocity_constraints_set_the_flow)
{
    for (const int constraint : {TAVELL_CONSTRAINT_REYNOLDS, TAVELL_CONSTRAINT_VELOCITY}) {
        Description d = row({pipe(0.1), pipe(0.05), pipe(0.1)}, 1.0, 2e5, 0.0);
        d.nodes.back().constraint = constraint;
        d.nodes.back().value = constraint == TAVELL_CONSTRAINT_REYNOLDS ? 20000.0 : 0.5;
        const Built built(d);
        ASSERT_TRUE(built.solve()) << built.feedback();
        if (constraint == TAVELL_CONSTRAINT_REYNOLDS)
            EXPECT_NEAR(built.results(TAVELL_RESULT_REYNOLDS)[2], 20000.0, 1e-8);
        else
            EXPECT_NEAR(built.results(TAVELL_RESULT_VELOCITY)[2], 0.5, 1e-12);
    }
}

TEST(ClosedForm, small_flows_from_a_single_pressure_are_found)
{
    // every pressure starts equal, and the first corrections are below the last place of the pressure
    for (const auto& [pressure, flow] : {std::array<double, 2>{1e5, 1e-5}, {1e5, 1e-6}, {3e7, 3e-3}}) {
        SCOPED_TRACE(flow);
        Description d = row({pipe(0.02), pipe(0.02), pipe(0.02), pipe(0.02)}, 1.0, pressure, 0.0);
        d.nodes.back().constraint = TAVELL_CONSTRAINT_MASS_FLOW;
        d.nodes.back().value = flow;
        const Built built(d);
        ASSERT_TRUE(built.solve()) << built.feedback();
        for (const double m : built.results(TAVELL_RESULT_MASS_FLOW))
            EXPECT_NEAR(m, flow, 4e-6 * flow);
    }
}

TEST(ClosedForm, pump_with_a_strongly_curved_characteristic_between_two_fixed_pressures)
{
    // rise 1e5 (1 - q/0.01)^3 - 50 q/0.01 Pa against 1e4 Pa; the chords from the zero-rise point lead to and
    // fro
    const auto rise = [](double q) { return 1e5 * std::pow(1.0 - q / 0.01, 3) - 50.0 * q / 0.01; };
    Description d = row({pipe(0.1), pipe(0.1)}, 1.0, 1e5, 1e5);
    d.nodes.back().value = 1.1e5;
    ElementData pump;
    pump.type = TAVELL_PUMP;
    for (int i = 0; i < 6; ++i) {
        pump.curveFlows.push_back(0.002 * i);
        pump.curvePressures.push_back(rise(0.002 * i));
    }
    pump.start = 0;
    pump.end = 2;
    d.elements.push_back(pump);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const double Q = built.results(TAVELL_RESULT_VOLUME_FLOW)[2];
    EXPECT_GT(Q, 0.0);
    EXPECT_NEAR(rise(Q), 1e4, 5.0);  // curve points are kept to six digits
}

TEST(ClosedForm, grid_of_microchannels_is_solved_although_all_its_pressures_start_equal)
{
    // laminar channels: the middle of a symmetric grid stands at the mean pressure
    for (const double diameter : {1e-4, 2e-4, 3e-4}) {
        SCOPED_TRACE(diameter);
        Description d = grid(5, 5, 0.0);
        d.gravity = {0.0, 0.0, 0.0};
        for (NodeData& node : d.nodes)
            for (double& coordinate : node.at)
                coordinate *= 0.01;
        for (ElementData& element : d.elements)
            element.diameter = diameter;
        d.nodes[26].constraint = TAVELL_CONSTRAINT_PRESSURE;  // the corner across from the inlet
        d.nodes[26].value = 1e5;
        d.nodes[25].value = 1.1e5;
        const Built built(d);
        ASSERT_TRUE(built.solve()) << built.feedback();
        EXPECT_TRUE(built.feedbackIds().empty()) << built.feedback();
        EXPECT_NEAR(built.results(TAVELL_RESULT_PRESSURE)[12], 1.05e5, 1.0);
    }
}
