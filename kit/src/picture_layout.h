// picture_layout.h: where the nodes of a network are drawn: from its coordinates, or by a layout of its own when
// they say nothing.
#ifndef TAVELL_KIT_PICTURE_LAYOUT_H
#define TAVELL_KIT_PICTURE_LAYOUT_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "network.h"

namespace kit
{

/// From where the network is looked at: from above, from the front, or from above at a corner.
enum class View { plan, elevation, isometric };

/// "plan", "elevation", "isometric".
std::string_view viewName(View view);
std::optional<View> findView(std::string_view name);

using Point3 = std::array<double, 3>;

/// A point of the drawing, y upwards.
struct Point2 {
    double x = 0.0;
    double y = 0.0;
};

/// The network in a frame whose third axis points up. Lengths are metres, or units of the drawing when the
/// coordinates are schematic or the layout is automatic; heights are always metres.
struct Placement {
    std::vector<Point3> nodes;
    std::vector<std::vector<Point3>> vertices;  // by element, between its nodes
    bool isAutomatic = false;                   // the coordinates say nothing about the network
    bool isToScale = true;                      // horizontal lengths are metres
    double heightScale = 1.0;                   // stretches heights in elevations, so that they show
    bool isSeenFromSide = false;  // an elevation looks along the first axis, the second is wider
    View bestView = View::plan;   // plan, unless the network hardly has one
};

/// Places every node. The same network is always placed the same way; the cost grows in proportion to its size.
Placement placeNetwork(const Network& network);

/// A placed point as seen in a view.
Point2 project(const Point3& at, View view, const Placement& placement);

/// Plane positions for a graph of nodeCount nodes and edges of length 1 between them, from its connections
/// alone: pivot scaling (Brandes & Pich, 2007), then stochastic descent on the stress of all pairs of a small
/// component or of the pairs with a few pivots of a large one (Zheng, Pawar & Goodman, 2018). Components stand
/// side by side.
std::vector<Point2> layoutGraph(std::size_t nodeCount,
                                const std::vector<std::pair<std::size_t, std::size_t>>& edges);

}  // namespace kit

#endif
