// result_mapping_test.cpp: result sets from solved records.
#include "analysis/result_mapping.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

#include "lcn/viscosity.h"
#include "tavell/Constants.h"
#include "unit/support/solver_network.h"

using namespace Velcor::Tavell;
using SolverTest::SolverNetwork;

namespace
{

/// One element of each type 0 to 11 from node 1 to node 2, each with 2 kg/s, and a pipe 2 -> 3 with -0.5 kg/s.
struct Records : SolverNetwork {
    Records() : SolverNetwork(3)
    {
        for (int type = 0; type <= 11; ++type)
            elem(add(type, 1, 2)).Massflow = 2.0;
        elem(add(lcn::kPipe, 2, 3)).Massflow = -0.5;
        connect();
        for (int i = 1; i <= 3; ++i) {
            nodes[i].Pressure = 1000.0 * i;
            nodes[i].Temperature = 300.0 + i;
        }
        for (int e = 1; e <= var.ElemTotal; ++e)
            elem(e).Temperature = 310.0 + e;
    }

    std::vector<double> values(int key)
    {
        auto results = mapResults(nodes, elements, var);
        ResultsSet& set = results.at(key);
        return {set.GetValues(), set.GetValues() + set.GetSize()};
    }
    std::vector<int> ids(int key)
    {
        auto results = mapResults(nodes, elements, var);
        ResultsSet& set = results.at(key);
        return {set.GetIds(), set.GetIds() + set.GetSize()};
    }
};

bool hasVelocity(int type)
{
    return type == 1 || type == 3 || type == 4 || type == 9 || type == 10;
}

}  // namespace

TEST(ResultMapping, keys_0_to_5_are_of_elements_and_6_to_8_of_nodes)
{
    Records records;
    auto results = mapResults(records.nodes, records.elements, records.var);
    ASSERT_EQ(results.size(), 9U);
    for (int key = 0; key <= 8; ++key) {
        EXPECT_EQ(results.at(key).IsNodal(), key >= 6) << key;
        EXPECT_EQ(results.at(key).GetSize(), key >= 6 ? 3U : 13U) << key;
    }
}

TEST(ResultMapping, ids_are_the_hosts_in_solver_order)
{
    Records records;
    EXPECT_EQ(records.ids(TAVELL_RESULT_PRESSURE), (std::vector<int>{10, 20, 30}));
    EXPECT_EQ(records.ids(TAVELL_RESULT_EXTERNAL_MASS_FLOW), (std::vector<int>{10, 20, 30}));
    const std::vector<int> elements = records.ids(TAVELL_RESULT_MASS_FLOW);
    for (int e = 1; e <= 13; ++e)
        EXPECT_EQ(elements[static_cast<std::size_t>(e) - 1], 100 + e);
}

TEST(ResultMapping, only_pipes_loss_curves_and_limited_resistances_have_a_velocity)
{
    Records records;
    const std::vector<double> velocity = records.values(TAVELL_RESULT_VELOCITY);
    const std::vector<double> reynolds = records.values(TAVELL_RESULT_REYNOLDS);
    for (int type = 0; type <= 11; ++type) {
        const auto at = static_cast<std::size_t>(type);
        // 2 / 1000 / 0.01 = 0.2 m/s; Re = 1000 x 0.2 x 0.1 / 0.001
        EXPECT_NEAR(velocity[at], hasVelocity(type) ? 0.2 : 0.0, 1e-15) << type;
        EXPECT_NEAR(reynolds[at], hasVelocity(type) ? 20000.0 : 0.0, 1e-9) << type;
    }
    EXPECT_NEAR(velocity[12], -0.05, 1e-15);
    EXPECT_NEAR(reynolds[12], -5000.0, 1e-9);
}

TEST(ResultMapping, flows_are_signed_and_volume_flow_is_mass_flow_over_density)
{
    Records records;
    records.elem(2).density = 800.0;
    EXPECT_EQ(records.values(TAVELL_RESULT_MASS_FLOW)[12], -0.5);
    EXPECT_EQ(records.values(TAVELL_RESULT_VOLUME_FLOW)[12], -0.5 / 1000.0);
    EXPECT_EQ(records.values(TAVELL_RESULT_VOLUME_FLOW)[1], 2.0 / 800.0);
}

TEST(ResultMapping, the_pressure_difference_is_end_minus_start)
{
    Records records;
    EXPECT_EQ(records.values(TAVELL_RESULT_PRESSURE_DIFFERENCE)[0], 1000.0);
    records.nodes[2].Pressure = 250.0;
    EXPECT_EQ(records.values(TAVELL_RESULT_PRESSURE_DIFFERENCE)[0], -750.0);
}

TEST(ResultMapping, temperatures_and_pressures_are_those_of_the_records)
{
    Records records;
    EXPECT_EQ(records.values(TAVELL_RESULT_NODE_TEMPERATURE), (std::vector<double>{301.0, 302.0, 303.0}));
    EXPECT_EQ(records.values(TAVELL_RESULT_PRESSURE), (std::vector<double>{1000.0, 2000.0, 3000.0}));
    EXPECT_EQ(records.values(TAVELL_RESULT_ELEMENT_TEMPERATURE)[4], 315.0);
}

TEST(ResultMapping, with_the_viscosity_law_the_reynolds_number_follows_the_elements_temperature)
{
    Records records;
    records.var.ViscosityLaw = true;
    // element 2 is a pipe at 312 K; the law of water at 312 K
    const double mu = 2.86e-5 * std::exp((783.8 - 273.15) / (312.0 + 396.8 - 546.3));
    EXPECT_NEAR(records.values(TAVELL_RESULT_REYNOLDS)[1], 1000.0 * 0.2 * 0.1 / mu, 1e-6);
    records.elem(2).Temperature = 500.0;
    const double muHot = 2.86e-5 * std::exp((783.8 - 273.15) / (373.15 + 396.8 - 546.3));
    EXPECT_NEAR(records.values(TAVELL_RESULT_REYNOLDS)[1], 1000.0 * 0.2 * 0.1 / muHot, 1e-6);
}

TEST(ResultMapping, without_area_diameter_or_viscosity_there_is_no_reynolds_number)
{
    Records records;
    records.elem(2).Area = 0.0;
    EXPECT_EQ(records.values(TAVELL_RESULT_VELOCITY)[1], 0.0);
    EXPECT_EQ(records.values(TAVELL_RESULT_REYNOLDS)[1], 0.0);
    Records noDiameter;
    noDiameter.elem(2).diam = 0.0;
    EXPECT_EQ(noDiameter.values(TAVELL_RESULT_REYNOLDS)[1], 0.0);
    Records noViscosity;
    noViscosity.var.Viscosity = 0.0;
    EXPECT_EQ(noViscosity.values(TAVELL_RESULT_REYNOLDS)[1], 0.0);
}

TEST(ResultMapping, the_external_mass_flow_is_what_leaves_a_node_through_its_elements)
{
    Records records;
    const std::vector<double> external = records.values(TAVELL_RESULT_EXTERNAL_MASS_FLOW);
    EXPECT_EQ(external[0], 24.0);           // 12 elements carry 2 kg/s away
    EXPECT_EQ(external[1], -(24.0 + 0.5));  // and bring it here, with 0.5 kg/s against the last one
    EXPECT_EQ(external[2], 0.5);
}

TEST(ResultMapping, a_node_without_flow_has_a_plain_zero)
{
    SolverNetwork network(1);
    network.connect();
    auto results = mapResults(network.nodes, network.elements, network.var);
    const double value = results.at(TAVELL_RESULT_EXTERNAL_MASS_FLOW).GetValues()[0];
    EXPECT_EQ(value, 0.0);
    EXPECT_FALSE(std::signbit(value));
    EXPECT_EQ(results.at(TAVELL_RESULT_MASS_FLOW).GetSize(), 0U);
}

TEST(ResultMapping, a_loop_from_a_node_to_itself_has_no_external_flow)
{
    SolverNetwork network(1);
    network.elem(network.add(lcn::kPipe, 1, 1)).Massflow = 3.0;
    network.connect();
    auto results = mapResults(network.nodes, network.elements, network.var);
    EXPECT_EQ(results.at(TAVELL_RESULT_EXTERNAL_MASS_FLOW).GetValues()[0], 0.0);
}

TEST(ResultMapping, gathering_needs_as_many_ids_as_values)
{
    ResultsSet set = gatherNodeResults({1, 2}, {5.0, 6.0});
    EXPECT_TRUE(set.IsNodal());
    EXPECT_EQ(set.GetIds()[1], 2);
    EXPECT_EQ(set.GetValues()[1], 6.0);
    try {
        gatherNodeResults({1, 2}, {5.0});
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Sizes don't match in NodeResults::Set");
    }
}
