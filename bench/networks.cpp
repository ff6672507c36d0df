#include "networks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <utility>

#include "connected_sets.h"
#include "random.h"

namespace bench
{

namespace
{

constexpr std::uint64_t kSeed = 20250607;
constexpr double kPi = 3.14159265358979323846;
constexpr double kSpacing = 80.0;       // [m] between lattice points
constexpr double kLargestShift = 20.0;  // [m] of a node off its lattice point, in x and in y
constexpr double kExtraStreets = 0.15;  // per node, beside the spanning tree
constexpr int kNodesPerInlet = 2000;
constexpr int kNodesPerDemand = 3;
constexpr double kSmallestDemand = 0.3;   // [kg/s]
constexpr double kLargestDemand = 0.9;    // [kg/s]
constexpr double kHighestVelocity = 0.7;  // [m/s], by which diameters are chosen
constexpr double kLowestPressure = 2e5;   // [Pa], about what the inlets' pressure leaves at the worst place
constexpr double kEstimatedFriction = 0.025;  // [-], Darcy friction factor of that estimate

/// [m], inner diameters to choose from.
constexpr double kDiameters[] = {0.032, 0.04, 0.05, 0.065, 0.08, 0.1, 0.125, 0.15, 0.2, 0.25, 0.3,
                                 0.35,  0.4,  0.45, 0.5,   0.6,  0.7, 0.8,   0.9,  1.0, 1.2};

using Street = std::pair<int, int>;

std::size_t index(int i)
{
    return static_cast<std::size_t>(i);
}

/// count points, row by row, the last row perhaps incomplete.
struct Lattice {
    int count = 0;
    int columns = 0;
    int rows = 0;
};

Lattice makeLattice(Family family, int count)
{
    if (family == Family::kLine) return {count, count, 1};
    const int columns = static_cast<int>(std::lround(std::sqrt(static_cast<double>(count))));
    return {count, columns, (count + columns - 1) / columns};
}

/// All pairs of neighbours.
std::vector<Street> latticeStreets(const Lattice& lattice)
{
    std::vector<Street> streets;
    streets.reserve(2 * index(lattice.count));
    for (int i = 0; i < lattice.count; ++i) {
        if ((i + 1) % lattice.columns != 0 && i + 1 < lattice.count) streets.emplace_back(i, i + 1);
        if (i + lattice.columns < lattice.count) streets.emplace_back(i, i + lattice.columns);
    }
    return streets;
}

std::vector<Place> latticePlaces(const Lattice& lattice, Random& random)
{
    std::vector<Place> places;
    places.reserve(index(lattice.count));
    for (int i = 0; i < lattice.count; ++i) {
        const int column = i % lattice.columns;
        const int row = i / lattice.columns;
        const double xShift = random.between(-kLargestShift, kLargestShift);
        const double yShift = random.between(-kLargestShift, kLargestShift);
        places.push_back({kSpacing * column + xShift, kSpacing * row + yShift});
    }
    return places;
}

/// Keeps a random spanning tree of the streets (Kruskal 1956 on random lengths) and kExtraStreets of the others.
std::vector<Street> thinOut(std::vector<Street> streets, int nodes, Random& random)
{
    random.shuffle(streets);
    ConnectedSets sets(nodes);
    std::vector<Street> kept;
    std::vector<Street> others;
    for (const Street& street : streets)
        (sets.join(street.first, street.second) ? kept : others).push_back(street);
    random.shuffle(others);
    const auto extra = static_cast<std::size_t>(std::lround(kExtraStreets * nodes));
    others.resize(std::min(others.size(), extra));
    kept.insert(kept.end(), others.begin(), others.end());
    random.shuffle(kept);
    return kept;
}

/// 0..length-1 in equal parts: the middle of one of them.
int middleOfPart(int part, int parts, int length)
{
    const std::int64_t halves = 2 * std::int64_t{part} + 1;
    return static_cast<int>(halves * length / (2 * std::int64_t{parts}));
}

/// One inlet per kNodesPerInlet nodes, in rows and columns over the whole lattice.
std::vector<int> placeInlets(const Lattice& lattice)
{
    const int inlets = std::max(1, lattice.count / kNodesPerInlet);
    const int rows =
        lattice.rows == 1 ? 1 : static_cast<int>(std::lround(std::sqrt(static_cast<double>(inlets))));
    std::vector<int> places;
    for (int row = 0; row < rows; ++row) {
        const int inRow = inlets * (row + 1) / rows - inlets * row / rows;
        const int y = middleOfPart(row, rows, lattice.rows);
        for (int column = 0; column < inRow; ++column) {
            const int x = middleOfPart(column, inRow, lattice.columns);
            places.push_back(std::min(y * lattice.columns + x, lattice.count - 1));
        }
    }
    return places;
}

/// Streets of every node: those of node i stand at first[i] to first[i + 1].
struct Neighbours {
    std::vector<int> first;
    std::vector<int> streets;
};

Neighbours findNeighbours(const std::vector<Street>& streets, int nodes)
{
    Neighbours result;
    result.first.assign(index(nodes) + 1, 0);
    for (const auto& [a, b] : streets) {
        ++result.first[index(a) + 1];
        ++result.first[index(b) + 1];
    }
    std::partial_sum(result.first.begin(), result.first.end(), result.first.begin());
    std::vector<int> next(result.first.begin(), result.first.end() - 1);
    result.streets.resize(2 * streets.size());
    for (std::size_t s = 0; s < streets.size(); ++s) {
        const auto& [a, b] = streets[s];
        result.streets[index(next[index(a)]++)] = static_cast<int>(s);
        result.streets[index(next[index(b)]++)] = static_cast<int>(s);
    }
    return result;
}

/// The way from the inlets to every node, breadth first.
struct Distances {
    std::vector<int> steps;  // of a node to the nearest inlet
    std::vector<int> order;  // nodes, nearest first
};

int otherEnd(const Street& street, int node)
{
    return street.first == node ? street.second : street.first;
}

Distances measureDistances(const std::vector<Street>& streets, const Neighbours& neighbours,
                           const std::vector<int>& inlets, int nodes)
{
    Distances result{std::vector<int>(index(nodes), -1), inlets};
    result.order.reserve(index(nodes));
    for (const int inlet : inlets)
        result.steps[index(inlet)] = 0;
    for (std::size_t done = 0; done < result.order.size(); ++done) {
        const int node = result.order[done];
        for (int k = neighbours.first[index(node)]; k < neighbours.first[index(node) + 1]; ++k) {
            const int other = otherEnd(streets[index(neighbours.streets[index(k)])], node);
            if (result.steps[index(other)] >= 0) continue;
            result.steps[index(other)] = result.steps[index(node)] + 1;
            result.order.push_back(other);
        }
    }
    return result;
}

/// Demands at a third of the nodes that are no inlets: at dead ends first, so that few pipes have no flow, then at
/// random.
std::vector<Demand> placeDemands(const Neighbours& neighbours, const Distances& distances, int nodes,
                                 Random& random)
{
    std::vector<int> candidates;
    for (int i = 0; i < nodes; ++i)
        if (distances.steps[index(i)] > 0) candidates.push_back(i);
    random.shuffle(candidates);
    std::stable_partition(candidates.begin(), candidates.end(), [&neighbours](int i) {
        return neighbours.first[index(i) + 1] - neighbours.first[index(i)] == 1;
    });
    candidates.resize(std::min(candidates.size(), index(nodes / kNodesPerDemand)));

    std::vector<Demand> demands;
    demands.reserve(candidates.size());
    for (const int node : candidates)
        demands.push_back({node, random.between(kSmallestDemand, kLargestDemand), 0.0});
    return demands;
}

/// First estimate of the flow in every street [kg/s], all >= 0: what a node needs comes in equal parts from its
/// neighbours that are one step nearer to an inlet. Streets between nodes equally near have none.
std::vector<double> estimateFlows(const std::vector<Street>& streets, const Neighbours& neighbours,
                                  const Distances& distances, const std::vector<Demand>& demands)
{
    std::vector<double> needed(distances.steps.size(), 0.0);
    for (const Demand& demand : demands)
        needed[index(demand.node)] = demand.massFlow;

    std::vector<double> flows(streets.size(), 0.0);
    std::vector<int> nearer;
    for (auto node = distances.order.rbegin(); node != distances.order.rend(); ++node) {
        nearer.clear();
        for (int k = neighbours.first[index(*node)]; k < neighbours.first[index(*node) + 1]; ++k) {
            const int street = neighbours.streets[index(k)];
            const int other = otherEnd(streets[index(street)], *node);
            if (distances.steps[index(other)] < distances.steps[index(*node)]) nearer.push_back(street);
        }
        for (const int street : nearer) {
            const double part = needed[index(*node)] / static_cast<double>(nearer.size());
            flows[index(street)] = part;
            needed[index(otherEnd(streets[index(street)], *node))] += part;
        }
    }
    return flows;
}

/// Smallest diameter of the list [m] that carries a mass flow [kg/s] at no more than kHighestVelocity.
double chooseDiameter(double massFlow)
{
    const double least = std::sqrt(4.0 * massFlow / (kPi * kDensity * kHighestVelocity));
    const double* const found = std::lower_bound(std::begin(kDiameters), std::end(kDiameters), least);
    return found == std::end(kDiameters) ? kDiameters[std::size(kDiameters) - 1] : *found;
}

/// Inlet pressure [Pa] that leaves kLowestPressure when the estimated flows run the shortest ways; in whole bar.
double chooseInletPressure(const Network& network, const std::vector<double>& flows,
                           const Distances& distances, const Neighbours& neighbours)
{
    constexpr double kBar = 1e5;  // [Pa]
    std::vector<double> loss(network.nodes.size(), 0.0);
    double largest = 0.0;
    for (const int node : distances.order) {
        for (int k = neighbours.first[index(node)]; k < neighbours.first[index(node) + 1]; ++k) {
            const int street = neighbours.streets[index(k)];
            const Pipe& pipe = network.pipes[index(street)];
            const int other = otherEnd({pipe.start, pipe.end}, node);
            if (distances.steps[index(other)] <= distances.steps[index(node)]) continue;
            const double area = 0.25 * kPi * pipe.diameter * pipe.diameter;
            const double velocity = flows[index(street)] / (kDensity * area);
            const double drop = kEstimatedFriction * pipeLength(network, pipe) / pipe.diameter * 0.5 *
                                kDensity * velocity * velocity;
            loss[index(other)] = std::max(loss[index(other)], loss[index(node)] + drop);
            largest = std::max(largest, loss[index(other)]);
        }
    }
    return kBar * std::ceil((kLowestPressure + largest) / kBar);
}

/// Numbers the nodes at random.
void renumber(std::vector<Street>& streets, std::vector<int>& inlets, std::vector<Place>& places,
              Random& random)
{
    std::vector<int> number(places.size());
    std::iota(number.begin(), number.end(), 0);
    random.shuffle(number);
    for (auto& [a, b] : streets) {
        a = number[index(a)];
        b = number[index(b)];
    }
    for (int& inlet : inlets)
        inlet = number[index(inlet)];
    std::vector<Place> moved(places.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        moved[index(number[i])] = places[i];
    places = std::move(moved);
}

}  // namespace

Network generateNetwork(Family family, int nodes)
{
    Random random(kSeed);
    const Lattice lattice = makeLattice(family, nodes);
    Network network;
    network.nodes = latticePlaces(lattice, random);
    network.inlets = placeInlets(lattice);
    std::vector<Street> streets = latticeStreets(lattice);
    if (family == Family::kDistrict) {
        streets = thinOut(std::move(streets), nodes, random);
        renumber(streets, network.inlets, network.nodes, random);
    }

    const Neighbours neighbours = findNeighbours(streets, nodes);
    const Distances distances = measureDistances(streets, neighbours, network.inlets, nodes);
    network.demands = placeDemands(neighbours, distances, nodes, random);
    for (Demand& demand : network.demands)
        demand.diameter = chooseDiameter(demand.massFlow);

    const std::vector<double> flows = estimateFlows(streets, neighbours, distances, network.demands);
    network.pipes.reserve(streets.size());
    for (std::size_t s = 0; s < streets.size(); ++s)
        network.pipes.push_back({streets[s].first, streets[s].second, chooseDiameter(flows[s])});
    network.inletPressure = chooseInletPressure(network, flows, distances, neighbours);
    return network;
}

Place outletPlace(const Network& network, const Demand& demand)
{
    const Place& place = network.nodes[index(demand.node)];
    return {place.x, place.y + kStubLength};
}

double pipeLength(const Network& network, const Pipe& pipe)
{
    const Place& start = network.nodes[index(pipe.start)];
    const Place& end = network.nodes[index(pipe.end)];
    return std::hypot(end.x - start.x, end.y - start.y);
}

std::string familyName(Family family)
{
    switch (family) {
    case Family::kDistrict:
        return "district";
    case Family::kGrid:
        return "grid";
    default:
        return "line";
    }
}

std::optional<Family> familyByName(const std::string& name)
{
    for (const Family family : {Family::kDistrict, Family::kGrid, Family::kLine})
        if (familyName(family) == name) return family;
    return std::nullopt;
}

}  // namespace bench
