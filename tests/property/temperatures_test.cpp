// Temperatures against closed forms and the conservation of energy.
#include <gtest/gtest.h>

#include <cmath>

#include "support/networks.h"

using namespace support;

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kCp = 4179.0;                            // [J/(kg K)] of the circuit's default fluid
constexpr double kConductivity = 0.6039999723434448;      // [W/(m K)] of it
constexpr double kDefaultTemperature = 294.260009765625;  // [K] of it

ElementData heatedPipe(double diameter, int energyType, double energyValue)
{
    ElementData pipe;
    pipe.diameter = diameter;
    pipe.properties = {{static_cast<double>(TAVELL_ELEMENT_ENERGY_TYPE), static_cast<double>(energyType)},
                       {static_cast<double>(TAVELL_ELEMENT_ENERGY_VALUE), energyValue}};
    return pipe;
}

/// count equal elements of the given length in a row, a pressure inlet and a mass flow outlet.
Description row(const ElementData& element, int count, double length, double massFlow)
{
    Description d;
    d.gravity = {0.0, 0.0, 0.0};
    for (int i = 0; i <= count; ++i) {
        NodeData node;
        node.at = {length * i, 0.0, 0.0};
        d.nodes.push_back(node);
        if (i == 0) continue;
        d.elements.push_back(element);
        d.elements.back().start = i - 1;
        d.elements.back().end = i;
    }
    d.nodes.front().type = TAVELL_NODE_INLET;
    d.nodes.front().value = 3e5;
    d.nodes.back().type = TAVELL_NODE_OUTLET;
    d.nodes.back().constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    d.nodes.back().value = massFlow;
    return d;
}

void setInletTemperature(const Built& built, int node, double temperature)
{
    built.node(node)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, temperature);
}

double outletTemperature(const Built& built)
{
    const std::vector<double> temperatures = built.results(TAVELL_RESULT_NODE_TEMPERATURE);
    return temperatures.empty() ? std::nan("") : temperatures.back();
}

}  // namespace

TEST(Temperatures, constant_flux_warms_by_flux_times_wall_over_capacity_flow)
{
    const Built built(row(heatedPipe(0.02, TAVELL_ENERGY_FLUX, 5000.0), 4, 1.5, 0.2));
    setInletTemperature(built, 0, 300.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    EXPECT_NEAR(outletTemperature(built), 300.0 + 5000.0 * kPi * 0.02 * 6.0 / (kCp * 0.2), 1e-4);
    // an element is at the mean of its ends
    EXPECT_NEAR(built.results(TAVELL_RESULT_ELEMENT_TEMPERATURE)[0],
                300.0 + 0.5 * 5000.0 * kPi * 0.02 * 1.5 / (kCp * 0.2), 1e-4);
}

TEST(Temperatures, fixed_rise_is_a_rise)
{
    const Built built(row(heatedPipe(0.02, TAVELL_ENERGY_RISE, 3.5), 4, 1.0, 0.2));
    setInletTemperature(built, 0, 290.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    EXPECT_NEAR(outletTemperature(built), 290.0 + 4 * 3.5, 1e-4);
}

TEST(Temperatures, fixed_heat_warms_by_heat_over_capacity_flow)
{
    const Built built(row(heatedPipe(0.02, TAVELL_ENERGY_HEAT, 1200.0), 4, 1.0, 0.2));
    setInletTemperature(built, 0, 290.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    EXPECT_NEAR(outletTemperature(built), 290.0 + 4 * 1200.0 / (kCp * 0.2), 1e-4);
}

TEST(Temperatures, laminar_flow_approaches_a_wall_temperature_exponentially)
{
    // Nu 3.66: dT/dx = 3.66 k pi (Tw - T) / (Cp m); 60 elements follow the exponential to NTU^2/12/60^2
    const int count = 60;
    const double length = 0.2, massFlow = 0.01;
    const Built built(row(heatedPipe(0.02, TAVELL_ENERGY_WALL_TEMPERATURE, 350.0), count, length, massFlow));
    setInletTemperature(built, 0, 300.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    ASSERT_LT(built.results(TAVELL_RESULT_REYNOLDS)[0], 2300.0);
    const std::vector<double> T = built.results(TAVELL_RESULT_NODE_TEMPERATURE);
    for (int i = 0; i <= count; ++i) {
        const double units = 3.66 * kConductivity * kPi * length * i / (kCp * massFlow);
        EXPECT_NEAR(T[static_cast<std::size_t>(i)], 350.0 - 50.0 * std::exp(-units), 2e-3) << "node " << i;
    }
}

TEST(Temperatures, fluid_never_passes_the_temperature_of_its_wall)
{
    // hundreds of transfer units in each element
    for (const double wall : {280.0, 360.0}) {
        const Built built(row(heatedPipe(0.02, TAVELL_ENERGY_WALL_TEMPERATURE, wall), 5, 400.0, 0.005));
        setInletTemperature(built, 0, 300.0);
        ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
        for (const double T : built.results(TAVELL_RESULT_NODE_TEMPERATURE)) {
            EXPECT_GE(T, std::min(300.0, wall) - 1e-6);
            EXPECT_LE(T, std::max(300.0, wall) + 1e-6);
        }
        EXPECT_NEAR(outletTemperature(built), wall, 1e-3);
    }
}

TEST(Temperatures, streams_mix_by_their_mass_flows)
{
    // two and three inlets with flows of their own into one node
    for (const int streams : {2, 3}) {
        Description d;
        d.gravity = {0.0, 0.0, 0.0};
        d.nodes.resize(static_cast<std::size_t>(streams) + 3);
        const int hub = streams;
        for (int i = 0; i < streams; ++i) {
            NodeData& node = d.nodes[static_cast<std::size_t>(i)];
            node.at = {-1.0, 1.0 * i, 0.0};
            node.type = TAVELL_NODE_INLET;
            node.constraint = TAVELL_CONSTRAINT_MASS_FLOW;
            node.value = 0.1 * (i + 1);
            ElementData pipe;
            pipe.start = i;
            pipe.end = hub;
            d.elements.push_back(pipe);
        }
        for (const int i : {hub, hub + 1}) {
            ElementData pipe;
            pipe.start = i;
            pipe.end = i + 1;
            d.elements.push_back(pipe);
            d.nodes[static_cast<std::size_t>(i) + 1].at = {1.0 + i - hub, 0.0, 0.0};
        }
        d.nodes.back().type = TAVELL_NODE_OUTLET;
        d.nodes.back().value = 1e5;
        const Built built(d);
        double flow = 0.0, energy = 0.0;
        for (int i = 0; i < streams; ++i) {
            setInletTemperature(built, i, 290.0 + 25.0 * i);
            flow += 0.1 * (i + 1);
            energy += 0.1 * (i + 1) * (290.0 + 25.0 * i);
        }
        ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
        EXPECT_NEAR(outletTemperature(built), energy / flow, 1e-4);
    }
}

TEST(Temperatures, energy_is_conserved_over_random_networks)
{
    std::mt19937 random(61);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        Description d =
            randomNetwork(random, 6 + i, i % 12, {TAVELL_PIPE, TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_KV_VALVE});
        // heat where fluid flows: what is given to a dead end stays there
        const Built cold(d);
        ASSERT_TRUE(cold.solve());
        const std::vector<double> m = cold.results(TAVELL_RESULT_MASS_FLOW);
        double heat = 0.0;
        for (std::size_t e = 0; e < m.size(); ++e) {
            if (std::fabs(m[e]) < 0.01) continue;
            const double Q = 2e4 * (unit(random) - 0.3);
            auto& properties = d.elements[e].properties;
            properties.push_back(
                {static_cast<double>(TAVELL_ELEMENT_ENERGY_TYPE), static_cast<double>(TAVELL_ENERGY_HEAT)});
            properties.push_back({static_cast<double>(TAVELL_ELEMENT_ENERGY_VALUE), Q});
            heat += Q;
        }
        const Built built(d);
        ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
        const std::vector<double> external = built.results(TAVELL_RESULT_EXTERNAL_MASS_FLOW);
        const std::vector<double> T = built.results(TAVELL_RESULT_NODE_TEMPERATURE);
        double out = 0.0;
        double largest = 0.0;
        for (std::size_t n = 0; n < T.size(); ++n) {
            if (d.nodes[n].type == TAVELL_NODE_INTERNAL) continue;
            out -= kCp * external[n] * (T[n] - kDefaultTemperature);
            largest = std::fmax(largest, std::fabs(kCp * external[n] * (T[n] - kDefaultTemperature)));
        }
        EXPECT_NEAR(out, heat, 1e-4 * (largest + std::fabs(heat)));
    }
}

namespace
{

/// A pumped loop at a fixed pressure: 500 W go in, a pipe of the given energy input takes them out or does not.
Description heatedLoop(const ElementData& secondPipe)
{
    Description d;
    d.gravity = {0.0, 0.0, 0.0};
    const std::array<double, 3> corners[] = {{0, 0, 0}, {5, 0, 0}, {5, 5, 0}, {0, 5, 0}, {-1, 0, 0}};
    for (const auto& at : corners) {
        NodeData node;
        node.at = at;
        d.nodes.push_back(node);
    }
    d.nodes[4].type = TAVELL_NODE_INLET;
    d.nodes[4].value = 2e5;
    ElementData pump;
    pump.type = TAVELL_PUMP;
    for (int i = 0; i < 5; ++i) {
        const double Q = 1e-4 * i;
        pump.curveFlows.push_back(Q);
        pump.curvePressures.push_back(2e4 - 1e11 * Q * Q);
    }
    pump.start = 0;
    pump.end = 1;
    d.elements.push_back(pump);
    ElementData heater = heatedPipe(0.02, TAVELL_ENERGY_HEAT, 500.0);
    heater.start = 1;
    heater.end = 2;
    d.elements.push_back(heater);
    ElementData cooler = secondPipe;
    cooler.start = 2;
    cooler.end = 3;
    d.elements.push_back(cooler);
    ElementData back = heatedPipe(0.02, TAVELL_ENERGY_FLUX, 0.0);
    back.start = 3;
    back.end = 0;
    d.elements.push_back(back);
    ElementData filling = back;
    filling.start = 4;
    filling.end = 0;
    d.elements.push_back(filling);
    return d;
}

}  // namespace

TEST(Temperatures, heated_loop_gives_its_heat_to_the_cooled_wall)
{
    const Description d = heatedLoop(heatedPipe(0.02, TAVELL_ENERGY_WALL_TEMPERATURE, 293.15));
    const Built built(d);
    setInletTemperature(built, 4, 293.15);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    const std::vector<double> m = built.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> T = built.results(TAVELL_RESULT_NODE_TEMPERATURE);
    EXPECT_NEAR(kCp * m[1] * (T[2] - T[1]), 500.0, 0.05);
    EXPECT_NEAR(kCp * m[2] * (T[2] - T[3]), 500.0, 0.05);
    EXPECT_GT(T[3], 293.15);
}

TEST(Temperatures, loop_that_is_only_heated_is_given_up_and_said_to_be_unsettled)
{
    // nothing takes the heat away: every sweep is warmer than the one before it
    static int iterations;
    iterations = 0;
    const Built built(heatedLoop(heatedPipe(0.02, TAVELL_ENERGY_FLUX, 0.0)));
    EXPECT_FALSE(built.circuit().Solve(true, [] {
        ++iterations;
        return false;
    }));
    EXPECT_EQ(built.feedbackIds().front(), TAVELL_FEEDBACK_TEMPERATURE_ERROR) << built.feedback();
    EXPECT_LT(iterations, 200);  // 100 unsettled temperature solves on settled flows, and the flows before
}

TEST(Temperatures, viscosity_that_follows_temperature_sets_the_flow)
{
    // laminar pipe at 333.15 K: Hagen-Poiseuille with mu = c1 exp((c2 - 273.15)/(T + c3 - 546.3))
    Description d = row(heatedPipe(0.01, TAVELL_ENERGY_FLUX, 0.0), 3, 2.0, 0.0);
    d.nodes.front().value = 100030.0;
    d.nodes.back().constraint = TAVELL_CONSTRAINT_PRESSURE;
    d.nodes.back().value = 100000.0;
    const Built built(d);
    setInletTemperature(built, 0, 333.15);
    built.circuit().GetEntity()->SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    const double mu = 2.86e-5 * std::exp((783.8 - 273.15) / (333.15 + 396.8 - 546.3));
    const double Q = kPi * 30.0 * std::pow(0.01, 4) / (128.0 * mu * 6.0);
    EXPECT_NEAR(built.results(TAVELL_RESULT_VOLUME_FLOW)[0], Q, 1e-5 * Q);
}

TEST(Temperatures, long_line_numbered_against_its_flow_settles_at_once)
{
    // five thousand pipes, each 0.01 K; a temperature that moved one node a sweep would never arrive
    const int count = 5000;
    Description d = row(heatedPipe(0.1, TAVELL_ENERGY_RISE, -0.01), count, 1.0, 0.0);
    d.nodes.front().type = TAVELL_NODE_OUTLET;
    d.nodes.front().value = 1e5;
    d.nodes.back().type = TAVELL_NODE_INLET;
    d.nodes.back().constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    d.nodes.back().value = -1.0;  // against the elements
    const Built built(d);
    setInletTemperature(built, count, 300.0);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    // Cp x Massflow x rise with a flow against the element: -1 x -0.01 warms
    EXPECT_NEAR(built.results(TAVELL_RESULT_NODE_TEMPERATURE)[0], 300.0 + 0.01 * count, 1e-3);
}

TEST(Temperatures, impossible_thermal_input_gives_finite_results_or_a_refusal)
{
    for (const auto& [id, value] : {std::pair<int, double>{TAVELL_FLUID_CONDUCTIVITY, 0.0},
                                    {TAVELL_FLUID_SPECIFIC_HEAT, 0.0},
                                    {TAVELL_FLUID_SPECIFIC_HEAT, -1.0},
                                    {TAVELL_FLUID_CONDUCTIVITY, std::nan("")}})
        for (const int type : {0, 1, 2, 3, 4, 5, 6, -1})
            for (const double energy : {-400.0, 0.0, 1e30, 1e308}) {
                SCOPED_TRACE(std::to_string(id) + " " + std::to_string(type) + " " + std::to_string(energy));
                const Built built(row(heatedPipe(0.02, type, energy), 3, 10.0, 0.2));
                built.circuit().GetFluid()->GetEntity()->SetProperty(id, value);
                if (built.solveWithTemperatures()) {
                    for (int key = 0; key <= 8; ++key)
                        for (const double result : built.results(key))
                            EXPECT_TRUE(std::isfinite(result)) << key;
                } else {
                    EXPECT_FALSE(built.feedbackIds().empty());
                }
            }
}

TEST(Temperatures, are_left_alone_when_energy_is_off)
{
    const Built built(row(heatedPipe(0.02, TAVELL_ENERGY_FLUX, 5000.0), 4, 1.5, 0.2));
    ASSERT_TRUE(built.solve());
    for (const double T : built.results(TAVELL_RESULT_NODE_TEMPERATURE))
        EXPECT_EQ(T, kDefaultTemperature);
}

TEST(Temperatures, dead_ends_keep_their_heat_to_themselves_and_numbering_does_not_matter)
{
    // a heated element in every place, dead ends included: what is left of a flow there must carry nothing
    std::mt19937 random(62);
    for (int i = 0; i < 30; ++i) {
        SCOPED_TRACE(i);
        Description d = randomNetwork(random, 8 + i, i % 6, {TAVELL_PIPE});
        for (ElementData& element : d.elements) {
            element.properties.push_back(
                {static_cast<double>(TAVELL_ELEMENT_ENERGY_TYPE), static_cast<double>(TAVELL_ENERGY_HEAT)});
            element.properties.push_back({static_cast<double>(TAVELL_ELEMENT_ENERGY_VALUE), 2000.0});
        }
        Description reversed = d;
        std::reverse(reversed.elements.begin(), reversed.elements.end());
        const Built a(d);
        const Built b(reversed);
        ASSERT_TRUE(a.solveWithTemperatures()) << a.feedback();
        ASSERT_TRUE(b.solveWithTemperatures()) << b.feedback();
        const std::vector<double> there = a.results(TAVELL_RESULT_NODE_TEMPERATURE);
        const std::vector<double> back = b.results(TAVELL_RESULT_NODE_TEMPERATURE);
        for (std::size_t n = 0; n < there.size(); ++n)
            EXPECT_NEAR(back[n], there[n], 1e-2) << "node " << n;
    }
}

TEST(Temperatures, heated_ring_without_through_flow_stays_finite_and_cool)
{
    // inlet - a - outlet, and behind a a ring of three pipes that nothing flows through
    Description d;
    d.gravity = {0.0, 0.0, 0.0};
    const std::array<double, 3> places[] = {{0, 0, 0}, {5, 0, 0}, {10, 0, 0},
                                            {5, 5, 0}, {8, 8, 0}, {2, 8, 0}};
    for (const auto& at : places) {
        NodeData node;
        node.at = at;
        d.nodes.push_back(node);
    }
    d.nodes[0].type = TAVELL_NODE_INLET;
    d.nodes[0].value = 2e5;
    d.nodes[2].type = TAVELL_NODE_OUTLET;
    d.nodes[2].value = 1.9e5;
    for (const auto& pair : {std::array<int, 2>{0, 1}, {1, 2}, {1, 3}, {3, 4}, {4, 5}, {5, 3}}) {
        ElementData pipe = heatedPipe(0.05, TAVELL_ENERGY_HEAT, pair[0] >= 3 ? 5000.0 : 0.0);
        pipe.start = pair[0];
        pipe.end = pair[1];
        d.elements.push_back(pipe);
    }
    const Built built(d);
    ASSERT_TRUE(built.solveWithTemperatures()) << built.feedback();
    EXPECT_NEAR(built.results(TAVELL_RESULT_NODE_TEMPERATURE)[2], kDefaultTemperature, 1e-3);
    for (const double T : built.results(TAVELL_RESULT_NODE_TEMPERATURE))
        EXPECT_LT(T, 400.0);
}
