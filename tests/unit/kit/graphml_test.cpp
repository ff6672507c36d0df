// The graph that programs for graphs read (GraphML, graphml.graphdrawing.org).
#include "graphml.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "element_kinds.h"

namespace
{

using kit::Element;
using kit::Network;
using kit::Solution;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Two parallel elements from a to b, the second closed.
Network twoInParallel()
{
    Network network;
    network.nodes = {{"a & b", {0.0, 0.0, 0.5}, {}, {}, 0}, {"c", {3.0, 4.0, 0.5}, {}, {}, 0}};
    network.nodes[0].boundary = kit::Boundary{};
    network.nodes[0].boundary->isInlet = true;
    Element element;
    element.kind = kit::findElementKind("pipe");
    element.to = 1;
    element.name = "one";
    network.elements.push_back(element);
    element.name = "two";
    element.isClosed = true;
    network.elements.push_back(element);
    return network;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(GraphMl, parallel_elements_stay_apart_by_their_edge_ids)
{
    const std::string text = kit::graphmlText(twoInParallel(), nullptr);
    EXPECT_TRUE(contains(text, "edgedefault=\"directed\""));
    EXPECT_TRUE(
        contains(text, "<edge id=\"e0\" source=\"n0\" target=\"n1\"><data key=\"e_name\">one</data>"));
    EXPECT_TRUE(contains(text, "<edge id=\"e1\" source=\"n0\" target=\"n1\"><data key=\"e_name\">two</data>"
                               "<data key=\"e_type\">pipe</data><data key=\"e_closed\">true</data>"));
}

TEST(GraphMl, nodes_have_their_name_and_place)
{
    const std::string text = kit::graphmlText(twoInParallel(), nullptr);
    EXPECT_TRUE(contains(text, "<node id=\"n0\"><data key=\"n_name\">a &amp; b</data>"
                               "<data key=\"n_boundary\">inlet</data><data key=\"n_x_m\">0</data>"
                               "<data key=\"n_y_m\">0</data><data key=\"n_z_m\">0.5</data></node>"));
    EXPECT_TRUE(contains(text, "<data key=\"e_length_m\">5</data>"));  // 3, 4, 5
}

TEST(GraphMl, every_key_that_is_used_is_declared_with_its_type)
{
    Solution solution;
    solution.pressure = {1e5, 9e4};
    solution.massFlow = {0.5, 0.0};
    const std::string text = kit::graphmlText(twoInParallel(), &solution);
    EXPECT_TRUE(contains(
        text, "<key id=\"n_pressure_pa\" for=\"node\" attr.name=\"pressure_pa\" attr.type=\"double\"/>"));
    EXPECT_TRUE(contains(
        text,
        "<key id=\"e_mass_flow_kg_s\" for=\"edge\" attr.name=\"mass_flow_kg_s\" attr.type=\"double\"/>"));
    EXPECT_TRUE(contains(text, "<data key=\"n_pressure_pa\">1e+05</data>"));
    EXPECT_FALSE(contains(text, "e_diameter_m"));
}

TEST(GraphMl, values_that_do_not_exist_are_left_out)
{
    Solution solution;
    solution.pressure = {1e5, 9e4};
    solution.velocity = {0.5, kNaN};
    const std::string text = kit::graphmlText(twoInParallel(), &solution);
    const std::size_t second = text.find("<edge id=\"e1\"");
    EXPECT_LT(text.find("e_velocity_m_s\">0.5<"), second);
    EXPECT_EQ(text.find("e_velocity_m_s", second), std::string::npos);
    EXPECT_FALSE(contains(text, "nan"));
}
