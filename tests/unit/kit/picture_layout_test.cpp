#include "picture_layout.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "element_kinds.h"
#include "network.h"

namespace
{

kit::Node nodeAt(const std::string& name, double x, double y, double z)
{
    kit::Node node;
    node.name = name;
    node.at = {x, y, z};
    return node;
}

kit::Element pipe(const std::string& name, std::size_t from, std::size_t to)
{
    kit::Element element;
    element.name = name;
    element.kind = kit::findElementKind("pipe");
    element.from = from;
    element.to = to;
    return element;
}

/// Four nodes in a ring, at the given places.
kit::Network ring(const std::vector<kit::Point3>& places)
{
    kit::Network network;
    for (const kit::Point3& at : places)
        network.nodes.push_back(nodeAt("n" + std::to_string(network.nodes.size()), at[0], at[1], at[2]));
    for (std::size_t i = 0; i < places.size(); ++i)
        network.elements.push_back(pipe("p" + std::to_string(i), i, (i + 1) % places.size()));
    return network;
}

double distance(const kit::Point2& a, const kit::Point2& b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// Edges of a grid of side x side nodes.
std::vector<std::pair<std::size_t, std::size_t>> gridEdges(std::size_t side)
{
    std::vector<std::pair<std::size_t, std::size_t>> edges;
    for (std::size_t row = 0; row < side; ++row) {
        for (std::size_t column = 0; column < side; ++column) {
            const std::size_t node = row * side + column;
            if (column + 1 < side) edges.emplace_back(node, node + 1);
            if (row + 1 < side) edges.emplace_back(node, node + side);
        }
    }
    return edges;
}

}  // namespace

TEST(PictureLayout, coordinates_are_used_as_they_are)
{
    const kit::Network network = ring({{0, 0, 1}, {10, 0, 2}, {10, 8, 3}, {0, 8, 4}});
    const kit::Placement placement = kit::placeNetwork(network);
    EXPECT_FALSE(placement.isAutomatic);
    EXPECT_EQ(placement.nodes[2], (kit::Point3{10, 8, 3}));
    EXPECT_EQ(placement.bestView, kit::View::plan);
}

TEST(PictureLayout, placeholders_give_an_automatic_layout_that_keeps_heights)
{
    const kit::Network network = ring({{0, 0, 5}, {0, 0, 5}, {0, 0, 5}, {0, 0, 5}});
    const kit::Placement placement = kit::placeNetwork(network);
    EXPECT_TRUE(placement.isAutomatic);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(placement.nodes[i][2], 5.0);
        for (std::size_t j = 0; j < i; ++j) {
            const double apart = std::hypot(placement.nodes[i][0] - placement.nodes[j][0],
                                            placement.nodes[i][1] - placement.nodes[j][1]);
            EXPECT_GT(apart, 0.5) << i << ' ' << j;
        }
    }
}

TEST(PictureLayout, a_chain_on_a_line_is_drawn_as_it_is_but_a_ring_on_a_line_is_not)
{
    kit::Network network = ring({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}});
    EXPECT_TRUE(kit::placeNetwork(network).isAutomatic);
    network.elements.pop_back();
    EXPECT_FALSE(kit::placeNetwork(network).isAutomatic);
}

TEST(PictureLayout, a_network_in_a_vertical_plane_is_best_seen_from_the_front)
{
    const kit::Placement placement = kit::placeNetwork(ring({{0, 0, 0}, {4, 0, 0}, {4, 0, 3}, {0, 0, 3}}));
    EXPECT_EQ(placement.bestView, kit::View::elevation);
    const kit::Point2 seen = kit::project(placement.nodes[2], kit::View::elevation, placement);
    EXPECT_EQ(seen.x, 4.0);
    EXPECT_EQ(seen.y, 3.0);
}

TEST(PictureLayout, height_is_taken_against_gravity)
{
    kit::Network network = ring({{0, 0, 0}, {4, 0, 0}, {4, 3, 1}, {0, 3, 1}});
    network.gravity = {0.0, -1.0, 0.0};
    const kit::Placement placement = kit::placeNetwork(network);
    EXPECT_DOUBLE_EQ(placement.nodes[2][2], 3.0);
    EXPECT_DOUBLE_EQ(placement.nodes[2][0], 4.0);
}

TEST(PictureLayout, heights_of_a_flat_network_are_stretched_by_a_round_factor)
{
    const kit::Placement placement =
        kit::placeNetwork(ring({{0, 0, 0}, {1000, 0, 10}, {1000, 800, 10}, {0, 800, 0}}));
    EXPECT_EQ(placement.heightScale, 20.0);  // 0.25 / (10 / 1000) = 25, rounded down to 1, 2 or 5
    EXPECT_EQ(kit::project({0, 0, 10}, kit::View::elevation, placement).y, 200.0);
}

TEST(PictureLayout, the_layout_of_a_graph_is_always_the_same)
{
    const auto edges = gridEdges(20);
    const std::vector<kit::Point2> first = kit::layoutGraph(400, edges);
    const std::vector<kit::Point2> second = kit::layoutGraph(400, edges);
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].x, second[i].x);
        EXPECT_EQ(first[i].y, second[i].y);
    }
}

TEST(PictureLayout, a_chain_is_laid_out_nearly_straight)
{
    std::vector<std::pair<std::size_t, std::size_t>> edges;
    for (std::size_t i = 0; i + 1 < 10; ++i)
        edges.emplace_back(i, i + 1);
    const std::vector<kit::Point2> at = kit::layoutGraph(10, edges);
    EXPECT_NEAR(distance(at[0], at[9]), 9.0, 0.5);  // nine edges of length 1
}

TEST(PictureLayout, the_far_corners_of_a_large_grid_stay_far_apart)
{
    constexpr std::size_t kSide = 40;  // 1600 nodes: distances to pivots only
    const std::vector<kit::Point2> at = kit::layoutGraph(kSide * kSide, gridEdges(kSide));
    const double diagonal = distance(at.front(), at.back());
    double longest = 0.0;
    for (const auto& [a, b] : gridEdges(kSide))
        longest = std::max(longest, distance(at[a], at[b]));
    EXPECT_GT(diagonal, 0.5 * 2.0 * (kSide - 1));  // 78 steps apart; a folded grid has them near one another
    EXPECT_LT(longest, 4.0);                       // no edge crosses the drawing
}

TEST(PictureLayout, parts_stand_side_by_side)
{
    const std::vector<kit::Point2> at = kit::layoutGraph(5, {{0, 1}, {1, 2}, {3, 4}});
    for (const std::size_t a : {0U, 1U, 2U}) {
        for (const std::size_t b : {3U, 4U})
            EXPECT_GT(distance(at[a], at[b]), 0.9) << a << ' ' << b;
    }
}

TEST(PictureLayout, empty_and_single_networks_have_a_placement)
{
    EXPECT_TRUE(kit::placeNetwork(kit::Network{}).nodes.empty());
    kit::Network one;
    one.nodes.push_back(nodeAt("only", 0, 0, 0));
    EXPECT_EQ(kit::placeNetwork(one).nodes.size(), 1U);
    EXPECT_TRUE(kit::layoutGraph(0, {}).empty());
}

TEST(PictureLayout, views_are_found_by_their_names)
{
    for (const kit::View view : {kit::View::plan, kit::View::elevation, kit::View::isometric})
        EXPECT_EQ(kit::findView(kit::viewName(view)), view);
    EXPECT_FALSE(kit::findView("front"));
}
