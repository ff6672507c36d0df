// networks.h: the networks that are timed, as plain data.
#ifndef TAVELL_BENCH_NETWORKS_H
#define TAVELL_BENCH_NETWORKS_H

#include <optional>
#include <string>
#include <vector>

namespace bench
{

constexpr double kDensity = 998.2;       // [kg/m3], water at 20 degC
constexpr double kViscosity = 1.002e-3;  // [Pa s], water at 20 degC
constexpr double kRoughness = 1e-4;      // [m]
constexpr double kStubLength = 5.0;      // [m], from a node with a demand to its outlet

/// district: a random spanning tree of a street lattice and 15 % extra streets, numbered at random. About a fifth of
/// its nodes are dead ends, the mean degree is 2.3. grid: a square lattice with all its loops. line: one node after
/// the other.
enum class Family { kDistrict, kGrid, kLine };

struct Place {
    double x = 0.0;  // [m]
    double y = 0.0;  // [m]; all heights are 0
};

struct Pipe {
    int start = 0;          // node, from 0
    int end = 0;            // node, from 0
    double diameter = 0.0;  // [m]; the length is the distance of the ends
};

/// Water that leaves a node through a stub, a pipe of kStubLength to an outlet.
struct Demand {
    int node = 0;           // from 0
    double massFlow = 0.0;  // [kg/s]
    double diameter = 0.0;  // [m] of the stub
};

struct Network {
    std::vector<Place> nodes;
    std::vector<Pipe> pipes;
    std::vector<Demand> demands;
    std::vector<int> inlets;     // nodes, from 0
    double inletPressure = 0.0;  // [Pa], the same at all inlets
};

/// A network of so many nodes (>= 2), inlets among them and the outlets of the stubs not: the nodes that it has as an
/// EPANET file. Always the same for the same arguments.
Network generateNetwork(Family family, int nodes);

/// Where the outlet of a demand is.
Place outletPlace(const Network& network, const Demand& demand);

double pipeLength(const Network& network, const Pipe& pipe);  // [m]

/// "district", "grid" and "line".
std::string familyName(Family family);
std::optional<Family> familyByName(const std::string& name);

}  // namespace bench

#endif
