#include "picture_layout.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <unordered_set>

namespace kit
{

namespace
{

constexpr std::string_view kViewNames[] = {"plan", "elevation", "isometric"};

/// Below this ratio of the extent in height to that on the ground heights are stretched.
constexpr double kFlattestElevation = 0.15;
constexpr double kStretchedElevation = 0.25;

/// Components up to this size are laid out by the distances of all their pairs.
constexpr std::size_t kAllPairsLimit = 250;

double dot(const Point3& a, const Point3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Point3 cross(const Point3& a, const Point3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Point3 unit(const Point3& a)
{
    const double length = std::sqrt(dot(a, a));
    return {a[0] / length, a[1] / length, a[2] / length};
}

/// Axes of the drawing: the third against gravity, the first as near to the network's first as can be.
std::array<Point3, 3> frameOf(const Network& network)
{
    const std::array<Point3, 3> own{Point3{1.0, 0.0, 0.0}, Point3{0.0, 1.0, 0.0}, Point3{0.0, 0.0, 1.0}};
    const Point3& gravity = network.gravity;
    const bool isWeightless = !(dot(gravity, gravity) > 0.0);
    if (network.coordinates == Coordinates::schematic || isWeightless) return own;

    const Point3 up = unit({-gravity[0], -gravity[1], -gravity[2]});
    if (up[2] > 0.9999) return own;
    const Point3 start = std::abs(up[0]) < 0.9 ? own[0] : own[1];
    const double along = dot(start, up);
    const Point3 first = unit({start[0] - along * up[0], start[1] - along * up[1], start[2] - along * up[2]});
    return {first, cross(up, first), up};
}

Point3 inFrame(const Point3& at, const std::array<Point3, 3>& frame)
{
    return {dot(at, frame[0]), dot(at, frame[1]), dot(at, frame[2])};
}

/// Smallest and largest value of each coordinate.
struct Box {
    Point3 low{};
    Point3 high{};
    double extent(std::size_t axis) const { return high[axis] - low[axis]; }
};

Box boxOf(const std::vector<Point3>& points)
{
    Box box;
    if (points.empty()) return box;
    box.low = box.high = points.front();
    for (const Point3& point : points) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            box.low[axis] = std::min(box.low[axis], point[axis]);
            box.high[axis] = std::max(box.high[axis], point[axis]);
        }
    }
    return box;
}

/// Whether at least half of the nodes share their place with another one.
bool isMostlyCoincident(const std::vector<Point3>& points)
{
    std::unordered_set<std::string_view> places;
    places.reserve(points.size());
    for (const Point3& point : points)
        places.insert(std::string_view(reinterpret_cast<const char*>(point.data()), sizeof(Point3)));
    return places.size() * 2 <= points.size();
}

bool isOnStraightLine(const std::vector<Point3>& points)
{
    const auto distance2 = [](const Point3& a, const Point3& b) {
        const Point3 d{a[0] - b[0], a[1] - b[1], a[2] - b[2]};
        return dot(d, d);
    };
    const Point3& origin = points.front();
    const Point3& far =
        *std::max_element(points.begin(), points.end(), [&](const Point3& a, const Point3& b) {
            return distance2(origin, a) < distance2(origin, b);
        });
    const double length2 = distance2(origin, far);
    if (!(length2 > 0.0)) return true;
    const Point3 direction = unit({far[0] - origin[0], far[1] - origin[1], far[2] - origin[2]});
    return std::all_of(points.begin(), points.end(), [&](const Point3& point) {
        const Point3 off =
            cross({point[0] - origin[0], point[1] - origin[1], point[2] - origin[2]}, direction);
        return dot(off, off) <= 1e-8 * length2;
    });
}

/// Whether elements meet in more than a single chain.
bool hasBranches(const Network& network)
{
    std::vector<std::size_t> count(network.nodes.size(), 0);
    for (const Element& element : network.elements) {
        if (++count[element.from] > 2 || ++count[element.to] > 2) return true;
    }
    return network.elements.size() >= network.nodes.size();
}

/// Whether the coordinates are placeholders: all the same, most of them shared, or a branched network on one
/// line.
bool saysNothing(const Network& network, std::vector<Point3> points)
{
    if (points.size() < 2) return false;
    if (network.coordinates == Coordinates::schematic) {
        for (Point3& point : points)
            point[2] = 0.0;
    }
    for (Point3& point : points) {
        for (double& x : point) {
            if (!std::isfinite(x)) return true;
            x += 0.0;  // a negative zero is a zero
        }
    }
    if (isMostlyCoincident(points)) return true;
    return points.size() > 2 && isOnStraightLine(points) && hasBranches(network);
}

/// 1, 2, 5, 10, 20 ...: the largest that is not above x.
double roundFactor(double x)
{
    if (!(x >= 2.0)) return 1.0;
    const double power = std::pow(10.0, std::floor(std::log10(x) + 1e-12));
    const double mantissa = x / power;
    if (mantissa >= 5.0) return 5.0 * power;
    return mantissa >= 2.0 ? 2.0 * power : power;
}

void chooseScales(Placement& placement)
{
    const Box box = boxOf(placement.nodes);
    const double ground = std::max(box.extent(0), box.extent(1));
    const double narrow = std::min(box.extent(0), box.extent(1));
    const double height = box.extent(2);
    placement.isSeenFromSide = box.extent(1) > 2.0 * box.extent(0);
    if (height > 0.0 && ground > 0.0) {
        const double ratio = height / ground;
        if (!placement.isToScale)
            placement.heightScale = kStretchedElevation / ratio;
        else if (ratio < kFlattestElevation)
            placement.heightScale = roundFactor(kStretchedElevation / ratio);
    }
    const bool hasNoPlan = narrow < 0.02 * std::max(ground, height) && height > 0.0;
    placement.bestView = hasNoPlan ? View::elevation : View::plan;
}

/// Neighbours of every node, one after the other.
struct Neighbours {
    std::vector<std::size_t> start;  // of each node in list, and the end
    std::vector<std::size_t> list;
};

Neighbours neighboursOf(std::size_t nodeCount, const std::vector<std::pair<std::size_t, std::size_t>>& edges)
{
    Neighbours result;
    result.start.assign(nodeCount + 1, 0);
    for (const auto& [a, b] : edges) {
        if (a == b) continue;
        ++result.start[a + 1];
        ++result.start[b + 1];
    }
    std::partial_sum(result.start.begin(), result.start.end(), result.start.begin());
    result.list.resize(result.start.back());
    std::vector<std::size_t> next(result.start.begin(), result.start.end() - 1);
    for (const auto& [a, b] : edges) {
        if (a == b) continue;
        result.list[next[a]++] = b;
        result.list[next[b]++] = a;
    }
    return result;
}

/// Members of every component, in the order of their first node.
std::vector<std::vector<std::size_t>> componentsOf(const Neighbours& neighbours)
{
    const std::size_t count = neighbours.start.size() - 1;
    std::vector<bool> isFound(count, false);
    std::vector<std::vector<std::size_t>> components;
    for (std::size_t first = 0; first < count; ++first) {
        if (isFound[first]) continue;
        isFound[first] = true;
        std::vector<std::size_t> members{first};
        for (std::size_t at = 0; at < members.size(); ++at) {
            const std::size_t node = members[at];
            for (std::size_t i = neighbours.start[node]; i < neighbours.start[node + 1]; ++i) {
                if (isFound[neighbours.list[i]]) continue;
                isFound[neighbours.list[i]] = true;
                members.push_back(neighbours.list[i]);
            }
        }
        components.push_back(std::move(members));
    }
    return components;
}

/// A small generator of its own: the same numbers on every system.
class Shuffler
{
public:
    std::size_t below(std::size_t limit)
    {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<std::size_t>((m_state >> 33U) % limit);
    }
    void shuffle(std::vector<std::uint32_t>& order)
    {
        for (std::size_t i = order.size(); i > 1; --i)
            std::swap(order[i - 1], order[below(i)]);
    }
    double fraction() { return static_cast<double>(below(1U << 20U)) / static_cast<double>(1U << 20U); }

private:
    std::uint64_t m_state = 20260101;
};

/// One component: its nodes have numbers of their own, 0..n-1.
class ComponentLayout
{
public:
    ComponentLayout(const std::vector<std::size_t>& members, const Neighbours& all,
                    std::vector<std::size_t>& localNumber)
        : m_count(members.size())
    {
        for (std::size_t i = 0; i < m_count; ++i)
            localNumber[members[i]] = i;
        m_near.start.reserve(m_count + 1);
        m_near.start.push_back(0);
        for (const std::size_t node : members) {
            for (std::size_t i = all.start[node]; i < all.start[node + 1]; ++i)
                m_near.list.push_back(localNumber[all.list[i]]);
            m_near.start.push_back(m_near.list.size());
        }
        m_at.resize(m_count);
    }

    std::vector<Point2> positions()
    {
        if (m_count == 1) return m_at;
        measureDistances();
        scaleByPivots();
        descend();
        return m_at;
    }

private:
    std::size_t pivotCount() const
    {
        if (m_count <= kAllPairsLimit) return m_count;
        if (m_count <= 20000) return 48;
        return m_count <= 200000 ? 20 : 8;
    }

    /// Steps from one node to every other, breadth first.
    void measureFrom(std::size_t from, std::vector<std::uint32_t>& steps)
    {
        constexpr auto kFar = std::numeric_limits<std::uint32_t>::max();
        steps.assign(m_count, kFar);
        steps[from] = 0;
        m_queue.assign(1, from);
        for (std::size_t at = 0; at < m_queue.size(); ++at) {
            const std::size_t node = m_queue[at];
            for (std::size_t i = m_near.start[node]; i < m_near.start[node + 1]; ++i) {
                if (steps[m_near.list[i]] != kFar) continue;
                steps[m_near.list[i]] = steps[node] + 1;
                m_queue.push_back(m_near.list[i]);
            }
        }
    }

    /// Pivots, each as far from those before as can be, and the steps from each; the region of a pivot is the
    /// nodes that are nearest to it.
    void measureDistances()
    {
        const std::size_t pivots = pivotCount();
        std::vector<std::uint32_t> nearest(m_count, std::numeric_limits<std::uint32_t>::max());
        m_region.assign(m_count, 0);
        m_steps.resize(pivots);
        measureFrom(0, m_steps[0]);
        std::size_t pivot = m_queue.back();
        for (std::size_t p = 0; p < pivots; ++p) {
            m_pivot.push_back(pivot);
            measureFrom(pivot, m_steps[p]);
            for (std::size_t i = 0; i < m_count; ++i) {
                if (m_steps[p][i] >= nearest[i]) continue;
                nearest[i] = m_steps[p][i];
                m_region[i] = static_cast<std::uint32_t>(p);
            }
            const auto farthest = std::max_element(nearest.begin(), nearest.end());
            pivot = static_cast<std::size_t>(farthest - nearest.begin());
        }
    }

    /// Starting positions: the two main directions of the double-centred squared distances to the pivots.
    void scaleByPivots()
    {
        const std::size_t pivots = m_pivot.size();
        std::vector<double> columnMean(pivots, 0.0);
        std::vector<double> rowMean(m_count, 0.0);
        const auto squared = [&](std::size_t p, std::size_t i) {
            const auto d = static_cast<double>(m_steps[p][i]);
            return d * d;
        };
        for (std::size_t p = 0; p < pivots; ++p) {
            for (std::size_t i = 0; i < m_count; ++i) {
                columnMean[p] += squared(p, i) / static_cast<double>(m_count);
                rowMean[i] += squared(p, i) / static_cast<double>(pivots);
            }
        }
        const double mean =
            std::accumulate(columnMean.begin(), columnMean.end(), 0.0) / static_cast<double>(pivots);
        const auto centred = [&](std::size_t p, std::size_t i) {
            return -0.5 * (squared(p, i) - columnMean[p] - rowMean[i] + mean);
        };

        std::vector<double> first;
        for (int axis = 0; axis < 2; ++axis) {
            std::vector<double> direction(pivots);
            for (std::size_t p = 0; p < pivots; ++p)
                direction[p] = m_shuffler.fraction() - 0.5;
            std::vector<double> along(m_count);
            for (int step = 0; step < 30; ++step) {
                std::fill(along.begin(), along.end(), 0.0);
                for (std::size_t p = 0; p < pivots; ++p) {
                    for (std::size_t i = 0; i < m_count; ++i)
                        along[i] += direction[p] * centred(p, i);
                }
                for (std::size_t p = 0; p < pivots; ++p) {
                    direction[p] = 0.0;
                    for (std::size_t i = 0; i < m_count; ++i)
                        direction[p] += along[i] * centred(p, i);
                }
                if (axis == 1) removePart(direction, first);
                normalise(direction);
            }
            if (axis == 0) first = direction;
            for (std::size_t i = 0; i < m_count; ++i)
                (axis == 0 ? m_at[i].x : m_at[i].y) = along[i];
        }
        fitToSteps();
    }

    static void removePart(std::vector<double>& direction, const std::vector<double>& other)
    {
        const double part = std::inner_product(direction.begin(), direction.end(), other.begin(), 0.0);
        for (std::size_t p = 0; p < direction.size(); ++p)
            direction[p] -= part * other[p];
    }

    static void normalise(std::vector<double>& direction)
    {
        const double length =
            std::sqrt(std::inner_product(direction.begin(), direction.end(), direction.begin(), 0.0));
        if (!(length > 0.0)) return;
        for (double& part : direction)
            part /= length;
    }

    /// Scales the positions so that the widest extent is the largest number of steps, and moves nodes that fell
    /// on one another a little apart.
    void fitToSteps()
    {
        double widest = 0.0;
        for (const Point2& at : m_at)
            widest = std::max({widest, std::abs(at.x), std::abs(at.y)});
        const double steps = largestSteps();
        const double scale = widest > 0.0 ? 0.5 * steps / widest : 0.0;
        for (Point2& at : m_at) {
            at.x = at.x * scale + 0.1 * (m_shuffler.fraction() - 0.5);
            at.y = at.y * scale + 0.1 * (m_shuffler.fraction() - 0.5);
        }
    }

    double largestSteps() const
    {
        std::uint32_t largest = 1;
        for (const auto& steps : m_steps)
            largest = std::max(largest, *std::max_element(steps.begin(), steps.end()));
        return static_cast<double>(largest);
    }

    /// For a pivot and a number of steps d, how many nodes of its region are at most d/2 away: for so many the
    /// pair with the pivot stands (Ortmann, Klimenta & Brandes, 2016).
    std::vector<std::vector<double>> regionCounts() const
    {
        std::vector<std::vector<double>> counts(m_pivot.size());
        for (std::size_t i = 0; i < m_count; ++i) {
            std::vector<double>& count = counts[m_region[i]];
            const std::size_t steps = m_steps[m_region[i]][i];
            if (count.size() <= steps) count.resize(steps + 1, 0.0);
            count[steps] += 1.0;
        }
        for (std::vector<double>& count : counts)
            std::partial_sum(count.begin(), count.end(), count.begin());
        return counts;
    }

    /// Moves a node by a share of what its distance to another is wrong by; both move when it is no pivot pair.
    void correct(std::size_t i, std::size_t j, double steps, double weight, bool movesBoth)
    {
        const double dx = m_at[i].x - m_at[j].x;
        const double dy = m_at[i].y - m_at[j].y;
        const double distance = std::max(std::sqrt(dx * dx + dy * dy), 1e-9);
        const double shift = std::min(weight, 1.0) * (distance - steps) / (2.0 * distance);
        m_at[i].x -= shift * dx;
        m_at[i].y -= shift * dy;
        if (!movesBoth) return;
        m_at[j].x += shift * dx;
        m_at[j].y += shift * dy;
    }

    /// Stress sum w (distance - steps)^2, w = 1 / steps^2, by stochastic descent with a falling step size.
    void descend()
    {
        const bool hasAllPairs = m_pivot.size() == m_count;
        const std::vector<std::vector<double>> counts =
            hasAllPairs ? std::vector<std::vector<double>>{} : regionCounts();
        const int rounds = m_count <= kAllPairsLimit ? 100 : 30;
        const double largest = largestSteps();
        const double decay = std::log(0.05 / (largest * largest)) / static_cast<double>(rounds - 1);
        std::vector<std::uint32_t> order(m_count);
        std::iota(order.begin(), order.end(), 0U);
        for (int round = 0; round < rounds; ++round) {
            const double size = largest * largest * std::exp(decay * round);
            m_shuffler.shuffle(order);
            for (const std::size_t i : order) {
                for (std::size_t e = m_near.start[i]; e < m_near.start[i + 1]; ++e)
                    correct(i, m_near.list[e], 1.0, size, true);
                for (std::size_t p = 0; p < m_pivot.size(); ++p) {
                    const std::uint32_t steps = m_steps[p][i];
                    if (steps < 2 || (hasAllPairs && m_pivot[p] < i)) continue;
                    const auto d = static_cast<double>(steps);
                    double weight = size / (d * d);
                    if (!hasAllPairs) {
                        const std::vector<double>& count = counts[p];
                        const std::size_t half = steps / 2;
                        weight *= count.empty() ? 1.0 : count[std::min(half, count.size() - 1)];
                    }
                    correct(i, m_pivot[p], d, weight, hasAllPairs);
                }
            }
        }
    }

    std::size_t m_count;
    Neighbours m_near;
    std::vector<Point2> m_at;
    std::vector<std::size_t> m_queue;
    std::vector<std::size_t> m_pivot;
    std::vector<std::vector<std::uint32_t>> m_steps;  // by pivot, to every node
    std::vector<std::uint32_t> m_region;              // the nearest pivot of every node
    Shuffler m_shuffler;
};

/// Turns points so that they spread along x, and moves their lower left corner to the origin; returns their
/// size.
Point2 straighten(std::vector<Point2>& points)
{
    Point2 mean;
    for (const Point2& point : points) {
        mean.x += point.x / static_cast<double>(points.size());
        mean.y += point.y / static_cast<double>(points.size());
    }
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (const Point2& point : points) {
        xx += (point.x - mean.x) * (point.x - mean.x);
        xy += (point.x - mean.x) * (point.y - mean.y);
        yy += (point.y - mean.y) * (point.y - mean.y);
    }
    const double angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
    Point2 low{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    Point2 high{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};
    for (Point2& point : points) {
        const double x = point.x - mean.x;
        const double y = point.y - mean.y;
        point = {x * std::cos(angle) + y * std::sin(angle), y * std::cos(angle) - x * std::sin(angle)};
        low = {std::min(low.x, point.x), std::min(low.y, point.y)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y)};
    }
    for (Point2& point : points)
        point = {point.x - low.x, point.y - low.y};
    return {high.x - low.x, high.y - low.y};
}

/// Turns every component so that its inlets stand at the left.
void turnInletsLeft(const Network& network, std::vector<Point3>& points)
{
    double inlets = 0.0;
    double all = 0.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        all += points[i][0] / static_cast<double>(points.size());
        const std::optional<Boundary>& boundary = network.nodes[i].boundary;
        if (!boundary || !boundary->isInlet) continue;
        inlets += points[i][0];
        ++count;
    }
    if (count == 0 || inlets / static_cast<double>(count) <= all) return;
    for (Point3& point : points)
        point[0] = 2.0 * all - point[0];
}

}  // namespace

std::string_view viewName(View view)
{
    return kViewNames[static_cast<std::size_t>(view)];
}

std::optional<View> findView(std::string_view name)
{
    for (const View view : {View::plan, View::elevation, View::isometric}) {
        if (name == viewName(view)) return view;
    }
    return std::nullopt;
}

std::vector<Point2> layoutGraph(std::size_t nodeCount,
                                const std::vector<std::pair<std::size_t, std::size_t>>& edges)
{
    const Neighbours neighbours = neighboursOf(nodeCount, edges);
    std::vector<std::vector<std::size_t>> components = componentsOf(neighbours);
    std::stable_sort(components.begin(), components.end(),
                     [](const auto& a, const auto& b) { return a.size() > b.size(); });

    std::vector<std::size_t> localNumber(nodeCount, 0);
    std::vector<std::vector<Point2>> placed;
    std::vector<Point2> sizes;
    double area = 0.0;
    for (const std::vector<std::size_t>& members : components) {
        placed.push_back(ComponentLayout(members, neighbours, localNumber).positions());
        sizes.push_back(straighten(placed.back()));
        area += (sizes.back().x + 2.0) * (sizes.back().y + 2.0);
    }

    // Components in rows, the largest first, downwards; a gap of two steps between them.
    std::vector<Point2> result(nodeCount);
    const double rowWidth = std::max(sizes.empty() ? 0.0 : sizes.front().x, 1.4 * std::sqrt(area));
    Point2 corner;
    double rowHeight = 0.0;
    for (std::size_t c = 0; c < components.size(); ++c) {
        if (corner.x > 0.0 && corner.x + sizes[c].x > rowWidth) {
            corner = {0.0, corner.y - rowHeight - 2.0};
            rowHeight = 0.0;
        }
        for (std::size_t i = 0; i < components[c].size(); ++i)
            result[components[c][i]] = {corner.x + placed[c][i].x, corner.y - sizes[c].y + placed[c][i].y};
        corner.x += sizes[c].x + 2.0;
        rowHeight = std::max(rowHeight, sizes[c].y);
    }
    return result;
}

Placement placeNetwork(const Network& network)
{
    Placement placement;
    const std::array<Point3, 3> frame = frameOf(network);
    placement.nodes.reserve(network.nodes.size());
    for (const Node& node : network.nodes)
        placement.nodes.push_back(inFrame(node.at, frame));
    placement.vertices.resize(network.elements.size());

    placement.isAutomatic = saysNothing(network, placement.nodes);
    placement.isToScale = !placement.isAutomatic && network.coordinates == Coordinates::geometry;
    if (placement.isAutomatic) {
        std::vector<std::pair<std::size_t, std::size_t>> edges;
        edges.reserve(network.elements.size());
        for (const Element& element : network.elements)
            edges.emplace_back(element.from, element.to);
        const std::vector<Point2> plane = layoutGraph(network.nodes.size(), edges);
        for (std::size_t i = 0; i < plane.size(); ++i) {
            const double height = placement.nodes[i][2];
            placement.nodes[i] = {plane[i].x, plane[i].y, std::isfinite(height) ? height : 0.0};
        }
        turnInletsLeft(network, placement.nodes);
    } else {
        for (std::size_t e = 0; e < network.elements.size(); ++e) {
            for (const Point3& vertex : network.elements[e].vertices)
                placement.vertices[e].push_back(inFrame(vertex, frame));
        }
    }
    chooseScales(placement);
    if (placement.isAutomatic) placement.bestView = View::plan;
    return placement;
}

Point2 project(const Point3& at, View view, const Placement& placement)
{
    const double height = at[2] * placement.heightScale;
    switch (view) {
    case View::plan:
        return {at[0], at[1]};
    case View::elevation:
        return {placement.isSeenFromSide ? at[1] : at[0], height};
    case View::isometric:
        break;
    }
    constexpr double kCosine30 = 0.8660254037844386;
    return {(at[0] - at[1]) * kCosine30, (at[0] + at[1]) * 0.5 + height};
}

}  // namespace kit
