// The unstructured grid that ParaView reads. The format: VTK file formats, XML, serial unstructured grid.
#include "vtu.h"

#include <algorithm>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "element_kinds.h"
#include "xml_text.h"

namespace
{

using kit::Element;
using kit::Network;
using kit::Solution;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// a - bent pipe - b - pump - c, the pipe with two vertices at a quarter and at half of its drawn length of 4
/// m.
Network bentPipeAndPump()
{
    Network network;
    network.nodes = {{"a", {0.0, 0.0, 0.0}, {}, {}, 0},
                     {"b", {2.0, 2.0, 0.0}, {}, {}, 0},
                     {"c", {3.0, 2.0, 0.5}, {}, {}, 0}};
    network.nodes[0].boundary = kit::Boundary{};
    network.nodes[0].boundary->isInlet = true;
    Element pipe;
    pipe.name = "bent <pipe>";
    pipe.kind = kit::findElementKind("pipe");
    pipe.from = 0;
    pipe.to = 1;
    pipe.section = kit::Section{0.025, 0.0, 0.0004909};
    pipe.vertices = {{1.0, 0.0, 0.0}, {2.0, 0.0, 0.0}};
    Element pump;
    pump.name = "p";
    pump.kind = kit::findElementKind("pump");
    pump.from = 1;
    pump.to = 2;
    network.elements = {pipe, pump};
    return network;
}

Solution solutionOf()
{
    Solution solution;
    solution.pressure = {100.0, 60.0, 160.0};
    solution.head = {kNaN, kNaN, kNaN};
    solution.nodeTemperature = {300.0, 300.0, 300.0};
    solution.externalMassFlow = {0.1, 0.0, -0.1};
    solution.massFlow = {0.1, 0.1};
    solution.velocity = {0.30000000000000004, kNaN};
    return solution;
}

/// The numbers or codes of an array of the file, separated by blanks; "" when it has no such array.
std::string arrayText(const std::string& text, const std::string& name)
{
    const std::size_t start = text.find("Name=\"" + name + '"');
    if (start == std::string::npos) return "";
    const std::size_t open = text.find(">\n", start) + 2;
    std::string array = text.substr(open, text.find("\n        </DataArray>", open) - open);
    std::replace(array.begin(), array.end(), '\n', ' ');
    return array;
}

}  // namespace

TEST(Vtu, elements_with_vertices_are_polylines_through_points_of_their_own)
{
    const std::string text = kit::vtuText(bentPipeAndPump(), nullptr);
    EXPECT_NE(text.find("NumberOfPoints=\"5\" NumberOfCells=\"2\""), std::string::npos);
    EXPECT_EQ(arrayText(text, "Points"), "0 0 0 2 2 0 3 2 0.5 1 0 0 2 0 0");
    EXPECT_EQ(arrayText(text, "connectivity"), "0 3 4 1 1 2");
    EXPECT_EQ(arrayText(text, "offsets"), "4 6");
    EXPECT_EQ(arrayText(text, "types"), "4 3");  // VTK_POLY_LINE and VTK_LINE
    EXPECT_EQ(arrayText(text, "is_node"), "1 1 1 0 0");
}

TEST(Vtu, vertices_carry_the_values_between_the_two_nodes)
{
    const Solution solution = solutionOf();
    const std::string text = kit::vtuText(bentPipeAndPump(), &solution);
    EXPECT_EQ(arrayText(text, "pressure_pa"), "100 60 160 90 80");  // at 1/4 and 1/2 of 4 m
    EXPECT_EQ(arrayText(text, "external_mass_flow_kg_s"), "0.1 0 -0.1 0 0");
}

TEST(Vtu, numbers_read_back_as_the_same_and_missing_ones_are_nan)
{
    const Solution solution = solutionOf();
    const std::string text = kit::vtuText(bentPipeAndPump(), &solution);
    EXPECT_EQ(arrayText(text, "velocity_m_s"), "0.30000000000000004 nan");
    EXPECT_EQ(arrayText(text, "diameter_m"), "0.025 nan");
}

TEST(Vtu, names_are_the_codes_of_their_bytes)
{
    Network network = bentPipeAndPump();
    network.elements[1].name = "\xC3\xBC";
    const std::string text = kit::vtuText(network, nullptr);
    EXPECT_EQ(arrayText(text, "name"), "97 0 98 0 99 0 0 0");
    const std::string ofCells = text.substr(text.find("<CellData>"));
    EXPECT_EQ(arrayText(ofCells, "name"),
              "98 101 110 116 32 60 112 105 112 101 62 0 195 188 0");  // U+00FC is 2 bytes
}

TEST(Vtu, quantities_that_nothing_has_are_left_out)
{
    const Solution solution = solutionOf();
    const std::string solved = kit::vtuText(bentPipeAndPump(), &solution);
    EXPECT_EQ(solved.find("head_m"), std::string::npos);         // no gravity
    EXPECT_EQ(solved.find("temperature_k"), std::string::npos);  // not solved
    const std::string unsolved = kit::vtuText(bentPipeAndPump(), nullptr);
    EXPECT_EQ(unsolved.find("pressure_pa"), std::string::npos);
    EXPECT_NE(unsolved.find("diameter_m"), std::string::npos);
    const Solution failed;
    EXPECT_EQ(kit::vtuText(bentPipeAndPump(), &failed), unsolved);
}

TEST(Vtu, a_network_without_elements_is_a_cloud_of_points)
{
    Network network;
    network.nodes = {{"only", {1.0, 2.0, 3.0}, {}, {}, 0}};
    const std::string text = kit::vtuText(network, nullptr);
    EXPECT_NE(text.find("NumberOfPoints=\"1\" NumberOfCells=\"0\""), std::string::npos);
    EXPECT_EQ(arrayText(text, "Points"), "1 2 3");
}

TEST(XmlText, markup_is_escaped_and_line_ends_survive)
{
    EXPECT_EQ(kit::xmlText("a<b>&\"c\"\t\n\r"), "a&lt;b&gt;&amp;&quot;c&quot;&#9;&#10;&#13;");
    EXPECT_EQ(kit::xmlText("Schieber n\xC3\xB6rdlich \xF0\x9F\x9A\xB0"),
              "Schieber n\xC3\xB6rdlich \xF0\x9F\x9A\xB0");
}

TEST(XmlText, what_xml_cannot_hold_becomes_the_replacement_character)
{
    const std::string replacement = "\xEF\xBF\xBD";
    EXPECT_EQ(kit::xmlText(std::string("a\0b", 3)), "a" + replacement + "b");
    EXPECT_EQ(kit::xmlText("\x1B[1m"), replacement + "[1m");
    EXPECT_EQ(kit::xmlText("\xEF\xBF\xBE"), replacement);            // U+FFFE
    EXPECT_EQ(kit::xmlText("\xED\xA0\x80"), replacement);            // U+D800, a surrogate
    EXPECT_EQ(kit::xmlText("\xC0\xAF"), replacement + replacement);  // "/" in two bytes
    EXPECT_EQ(kit::xmlText("\xE2\x82"), replacement + replacement);  // ends too early
    EXPECT_EQ(kit::xmlText("\xF5\x80\x80\x80"), replacement + replacement + replacement + replacement);
}
