// The features that geographic programs read (RFC 7946).
#include "geojson.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "element_kinds.h"

namespace
{

using kit::Element;
using kit::Network;
using kit::Solution;
using nlohmann::json;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Two nodes joined by a bent pipe and by a closed pump beside it.
Network pipeBesidePump()
{
    Network network;
    network.title = "pipe \"one\"";
    network.nodes = {{"a", {0.0, 0.0, 0.5}, {}, {}, 0}, {"b", {2.0, 2.0, 0.0}, {}, {}, 0}};
    network.nodes[1].boundary = kit::Boundary{};
    Element pipe;
    pipe.name = "pipe";
    pipe.kind = kit::findElementKind("pipe");
    pipe.to = 1;
    pipe.length = 7.5;
    pipe.section = kit::Section{0.025, 0.0, 0.0004909};
    pipe.vertices = {{2.0, 0.0, 0.25}};
    Element pump;
    pump.name = "pump";
    pump.kind = kit::findElementKind("pump");
    pump.to = 1;
    pump.isClosed = true;
    network.elements = {pipe, pump};
    return network;
}

}  // namespace

TEST(GeoJson, nodes_are_points_and_elements_lines_through_their_vertices)
{
    const json document = json::parse(kit::geojsonText(pipeBesidePump(), nullptr));
    EXPECT_EQ(document["type"], "FeatureCollection");
    EXPECT_EQ(document["name"], "pipe \"one\"");
    ASSERT_EQ(document["features"].size(), 4U);
    EXPECT_EQ(document["features"][0]["geometry"],
              json::parse(R"({"type":"Point","coordinates":[0,0,0.5]})"));
    EXPECT_EQ(document["features"][2]["geometry"],
              json::parse(R"({"type":"LineString","coordinates":[[0,0,0.5],[2,0,0.25],[2,2,0]]})"));
}

TEST(GeoJson, coordinates_are_marked_as_neither_longitude_nor_latitude)
{
    const json document = json::parse(kit::geojsonText(pipeBesidePump(), nullptr));
    EXPECT_EQ(document["crs"]["properties"]["name"], "LOCAL_CS[\"network\",UNIT[\"metre\",1]]");  // WKT 1
}

TEST(GeoJson, properties_name_both_ends_and_the_kind)
{
    const json document = json::parse(kit::geojsonText(pipeBesidePump(), nullptr));
    const json& pipe = document["features"][2]["properties"];
    EXPECT_EQ(pipe,
              json::parse(R"({"kind":"element","name":"pipe","type":"pipe","from":"a","to":"b","closed":false,
                                    "length_m":7.5,"diameter_m":0.025})"));
    EXPECT_EQ(document["features"][1]["properties"],
              json::parse(R"({"kind":"node","name":"b","boundary":"outlet"})"));
    EXPECT_EQ(document["features"][3]["properties"]["closed"], true);
}

TEST(GeoJson, values_that_do_not_exist_are_null)
{
    Solution solution;
    solution.pressure = {1e5, 123456.78901234567};
    solution.massFlow = {0.25, 0.0};
    solution.velocity = {0.5, kNaN};
    const json document = json::parse(kit::geojsonText(pipeBesidePump(), &solution));
    EXPECT_EQ(document["features"][1]["properties"]["pressure_pa"], 123456.78901234567);
    EXPECT_EQ(document["features"][2]["properties"]["mass_flow_kg_s"], 0.25);
    EXPECT_TRUE(document["features"][3]["properties"]["velocity_m_s"].is_null());
    EXPECT_FALSE(document["features"][2]["properties"].contains("reynolds"));
}

TEST(GeoJson, bytes_that_are_no_utf_8_do_not_break_the_document)
{
    Network network = pipeBesidePump();
    network.nodes[0].name = "caf\xE9";
    network.title = "\xFF";
    const json document = json::parse(kit::geojsonText(network, nullptr));
    EXPECT_EQ(document["features"][0]["properties"]["name"], "caf\xEF\xBF\xBD");
}

TEST(GeoJson, an_empty_network_has_no_features)
{
    EXPECT_EQ(json::parse(kit::geojsonText(Network{}, nullptr))["features"], json::array());
}
