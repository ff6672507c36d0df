#include "svg_picture.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "element_kinds.h"
#include "png_picture.h"

namespace
{

/// A reservoir, a pipe to a junction, a pump from there to an outlet and a closed pipe beside it.
kit::Network smallNetwork()
{
    kit::Network network;
    network.title = "Small & <sharp>";
    network.nodes.resize(3);
    const char* names[] = {"well", "junction", "tap \"1\""};
    for (std::size_t i = 0; i < 3; ++i) {
        network.nodes[i].name = names[i];
        network.nodes[i].at = {100.0 * static_cast<double>(i), i == 1 ? 60.0 : 0.0, 0.0};
    }
    network.nodes[0].boundary = kit::Boundary{};
    network.nodes[0].boundary->isInlet = true;
    network.nodes[0].boundary->pressure = 1e5;
    network.nodes[2].boundary = kit::Boundary{};
    network.nodes[2].boundary->flowKind = kit::Boundary::Flow::mass;
    network.nodes[2].boundary->flow = 1.0;
    network.elements.resize(3);
    const char* kinds[] = {"pipe", "pump", "pipe"};
    const std::size_t from[] = {0, 1, 0};
    const std::size_t to[] = {1, 2, 2};
    for (std::size_t e = 0; e < 3; ++e) {
        kit::Element& element = network.elements[e];
        element.name = "element " + std::to_string(e);
        element.kind = kit::findElementKind(kinds[e]);
        element.from = from[e];
        element.to = to[e];
    }
    network.elements[2].isClosed = true;
    return network;
}

kit::Solution smallSolution()
{
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    kit::Solution solution;
    solution.outcome = kit::Outcome::converged;
    solution.fluid.density = 1000.0;
    solution.pressure = {1e5, 0.5e5, 3e5};
    solution.head = {10.2, 5.1, 30.6};
    solution.nodeTemperature = {293.15, 293.15, 293.15};
    solution.externalMassFlow = {1.0, 0.0, -1.0};
    solution.massFlow = {1.0, 1.0, 0.0};
    solution.volumeFlow = {1e-3, 1e-3, 0.0};
    solution.velocity = {0.5, kNone, 0.0};
    solution.reynolds = {1e4, kNone, 0.0};
    solution.pressureDifference = {-0.5e5, 2.5e5, 2e5};
    solution.elementTemperature = {293.15, 293.15, kNone};
    return solution;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

}  // namespace

TEST(SvgPicture, names_are_written_as_xml)
{
    const std::string svg = kit::svgPicture(smallNetwork(), nullptr, {});
    EXPECT_TRUE(contains(svg, "<title>Small &amp; &lt;sharp&gt;</title>"));
    EXPECT_TRUE(contains(svg, "tap &quot;1&quot;</text>"));
    EXPECT_FALSE(contains(svg, "<sharp>"));
}

TEST(SvgPicture, the_same_input_gives_the_same_bytes)
{
    const kit::Network network = smallNetwork();
    const kit::Solution solution = smallSolution();
    EXPECT_EQ(kit::svgPicture(network, &solution, {}), kit::svgPicture(network, &solution, {}));
}

TEST(SvgPicture, the_legend_is_in_the_units_of_the_reader)
{
    const kit::Solution solution = smallSolution();
    kit::PictureOptions options;
    options.units = {{kit::Quantity::pressure, "bar"}};
    const std::string svg = kit::svgPicture(smallNetwork(), &solution, options);
    EXPECT_TRUE(contains(svg, ">Pressure</text>"));
    EXPECT_TRUE(contains(svg, ">in bar</text>"));
    EXPECT_TRUE(contains(svg, ">2.5</text>"));  // a tick between 0.5 and 3 bar
}

TEST(SvgPicture, colours_follow_the_quantity)
{
    const kit::Solution solution = smallSolution();
    kit::PictureOptions byPressure;
    kit::PictureOptions byVelocity;
    byVelocity.quantity = kit::PictureQuantity::velocity;
    EXPECT_NE(kit::svgPicture(smallNetwork(), &solution, byPressure),
              kit::svgPicture(smallNetwork(), &solution, byVelocity));
}

TEST(SvgPicture, arrows_stand_where_something_flows_and_turn_with_the_flow)
{
    kit::Solution solution = smallSolution();
    const auto arrows = [&] {
        const std::string svg = kit::svgPicture(smallNetwork(), &solution, {});
        const std::size_t start = svg.find(" d=\"M", svg.find("<path fill=\"#1c2530\""));
        return svg.substr(start + 4, svg.find('"', start + 4) - start - 4);
    };
    const std::string forward = arrows();
    EXPECT_EQ(countOf(forward, "M"), 2U);  // the closed element has none
    solution.massFlow[0] = -1.0;
    EXPECT_NE(arrows(), forward);
}

TEST(SvgPicture, without_results_there_is_no_legend)
{
    const std::string svg = kit::svgPicture(smallNetwork(), nullptr, {});
    EXPECT_TRUE(contains(svg, "no results"));
    EXPECT_FALSE(contains(svg, ">Pressure</text>"));
}

TEST(SvgPicture, a_pump_a_vessel_and_a_closed_element_have_symbols)
{
    const std::string svg = kit::svgPicture(smallNetwork(), nullptr, {});
    EXPECT_EQ(countOf(svg, "<circle r=\"9\"/>"), 1U);
    EXPECT_EQ(countOf(svg, "#4a90c2"), 1U);
    EXPECT_EQ(countOf(svg, "stroke-dasharray"), 1U);
}

TEST(SvgPicture, temperatures_that_were_not_solved_are_said_and_not_coloured)
{
    kit::Solution solution = smallSolution();
    kit::PictureOptions options;
    options.quantity = kit::PictureQuantity::temperature;
    const std::string svg = kit::svgPicture(smallNetwork(), &solution, options);
    EXPECT_TRUE(contains(svg, "no values of temperature"));
    EXPECT_FALSE(contains(svg, ">Temperature</text>"));
    solution.hasTemperatures = true;
    EXPECT_TRUE(contains(kit::svgPicture(smallNetwork(), &solution, options), ">Temperature</text>"));
}

TEST(SvgPicture, one_value_everywhere_has_no_scale)
{
    kit::Solution solution = smallSolution();
    solution.pressure = {2e5, 2e5, 2e5 + 1e-6};
    const std::string svg = kit::svgPicture(smallNetwork(), &solution, {});
    EXPECT_TRUE(contains(svg, ">the same everywhere</text>"));
}

TEST(SvgPicture, the_ends_of_a_narrow_scale_can_be_told_apart)
{
    kit::Solution solution = smallSolution();
    solution.pressure = {200000.0, 199998.0, 199999.0};
    kit::PictureOptions options;
    options.units = {{kit::Quantity::pressure, "bar"}};
    const std::string svg = kit::svgPicture(smallNetwork(), &solution, options);
    EXPECT_TRUE(contains(svg, ">2</text>"));
    EXPECT_TRUE(contains(svg, ">1.99998</text>"));
}

TEST(SvgPicture, the_colour_of_an_element_runs_from_end_to_end)
{
    const kit::Solution solution = smallSolution();
    const std::string svg = kit::svgPicture(smallNetwork(), &solution, {});
    // the pump goes from the lowest pressure to the highest: 48 shades, the end of the scale is not quite reached
    EXPECT_TRUE(contains(svg, "<path stroke=\"" + kit::colourOf(0.5 / 48.0) + '"'));
    EXPECT_TRUE(contains(svg, "<path stroke=\"" + kit::colourOf(47.5 / 48.0) + '"'));
}

TEST(SvgPicture, the_symbol_of_a_very_short_pump_stands_beside_it)
{
    kit::Network network = smallNetwork();
    network.nodes[2].at = {100.1, 60.0, 0.0};
    const std::string svg = kit::svgPicture(network, nullptr, {});
    EXPECT_EQ(countOf(svg, "<circle r=\"9\"/>"), 1U);
    EXPECT_TRUE(contains(svg, "stroke=\"#66717e\" stroke-width=\"1\""));  // its leader
    EXPECT_TRUE(contains(svg, ">element 1</text>"));
}

TEST(SvgPicture, any_network_gives_numbers_that_are_numbers)
{
    kit::Network network = smallNetwork();
    for (kit::Node& node : network.nodes)
        node.at = {0.0, 0.0, 0.0};
    kit::PictureOptions options;
    options.width = std::numeric_limits<double>::infinity();
    for (const kit::View view : {kit::View::plan, kit::View::elevation, kit::View::isometric}) {
        options.view = view;
        const std::string svg = kit::svgPicture(network, nullptr, options);
        EXPECT_FALSE(contains(svg, "nan") || contains(svg, "inf"));
    }
    EXPECT_TRUE(contains(kit::svgPicture(kit::Network{}, nullptr, {}), "</svg>"));
}

TEST(PictureColours, the_scale_runs_from_dark_to_light)
{
    EXPECT_EQ(kit::colourOf(0.0), "#440154");  // viridis at 0
    EXPECT_EQ(kit::colourOf(-1.0), kit::colourOf(0.0));
    EXPECT_EQ(kit::colourOf(2.0), kit::colourOf(1.0));
}

TEST(PictureColours, ticks_are_round_and_inside)
{
    EXPECT_EQ(kit::roundTicks(0.0, 10.0, 5), (std::vector<double>{0.0, 2.0, 4.0, 6.0, 8.0, 10.0}));
    EXPECT_EQ(kit::roundTicks(-3.0, 7.0, 2), (std::vector<double>{0.0, 5.0}));
    EXPECT_EQ(kit::roundTicks(4.0, 4.0, 5), (std::vector<double>{4.0}));
}

TEST(PictureColours, a_lone_giant_does_not_hide_the_others)
{
    std::vector<double> values(100);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<double>(i);
    EXPECT_FALSE(kit::colourRange(values).hasHigher);
    values[50] = 1e6;
    const kit::ColourRange range = kit::colourRange(values);
    EXPECT_TRUE(range.hasHigher);
    EXPECT_LT(range.high, 100.0);
    EXPECT_EQ(range.fraction(1e6), 1.0);
}

TEST(PictureColours, numbers_are_short)
{
    EXPECT_EQ(kit::shortNumber(0.0), "0");
    EXPECT_EQ(kit::shortNumber(12.3456), "12.35");
    EXPECT_EQ(kit::shortNumber(-0.5), "-0.5");
    EXPECT_EQ(kit::shortNumber(1234567.0), "1.23e+06");
    EXPECT_EQ(kit::shortNumber(std::numeric_limits<double>::quiet_NaN()), "-");
}

TEST(PngPicture, an_svg_becomes_a_png_or_a_finding_says_why_not)
{
    const std::string svg = kit::svgPicture(smallNetwork(), nullptr, {});
    std::string bytes;
    kit::Findings findings;
    if (kit::writePng(svg, 1.0, bytes, findings)) {
        EXPECT_EQ(bytes.substr(1, 3), "PNG");
        EXPECT_TRUE(findings.isEmpty());
        std::string large;
        ASSERT_TRUE(kit::writePng(svg, 2.0, large, findings));
        EXPECT_EQ(bytes[18] * 256 + static_cast<unsigned char>(bytes[19]),
                  1200);  // the IHDR's width, big-endian
        EXPECT_EQ(large[18] * 256 + static_cast<unsigned char>(large[19]), 2400);
    } else {
        EXPECT_EQ(findings.list().front().code, kit::Code::png_not_built);
    }
}

TEST(PngPicture, what_is_no_picture_is_a_finding)
{
    std::string bytes = "old";
    kit::Findings findings;
    EXPECT_FALSE(kit::writePng("no picture", 1.0, bytes, findings));
    EXPECT_TRUE(findings.hasErrors());
    EXPECT_TRUE(bytes.empty());
}

TEST(PngPicture, a_picture_of_too_many_pixels_is_a_finding)
{
    std::string bytes;
    kit::Findings findings;
    EXPECT_FALSE(kit::writePng(kit::svgPicture(smallNetwork(), nullptr, {}), 1e6, bytes, findings));
    EXPECT_TRUE(findings.hasErrors());
}
