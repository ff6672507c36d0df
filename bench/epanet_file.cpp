#include "epanet_file.h"

#include <cstddef>
#include <cstdio>
#include <vector>

#include "text_file.h"

namespace bench
{

namespace
{

constexpr double kFoot = 0.3048;                 // [m]
constexpr double kEpanetGravity = 32.2 * kFoot;  // [m/s2]
constexpr double kEpanetViscosity =
    1.1e-5 * kFoot * kFoot;  // [m2/s], EPANET's water, to which viscosity relates
constexpr double kLitresPerCubicMetre = 1000.0;
constexpr double kMillimetresPerMetre = 1000.0;
constexpr double kAccuracy = 1e-6;  // [-], sum of flow changes over sum of flows at which EPANET ends
constexpr int kTrials = 200;

/// Whether a node is an inlet, by node.
std::vector<bool> findInlets(const Network& network)
{
    std::vector<bool> isInlet(network.nodes.size(), false);
    for (const int inlet : network.inlets)
        isInlet[static_cast<std::size_t>(inlet)] = true;
    return isInlet;
}

/// Demand [kg/s] of every node.
std::vector<double> sumDemands(const Network& network)
{
    std::vector<double> demands(network.nodes.size(), 0.0);
    for (const Demand& demand : network.demands)
        demands[static_cast<std::size_t>(demand.node)] += demand.massFlow;
    return demands;
}

void writeNodes(std::FILE* file, const Network& network)
{
    const std::vector<bool> isInlet = findInlets(network);
    const std::vector<double> demands = sumDemands(network);
    std::fprintf(file, "[JUNCTIONS]\n");
    for (std::size_t i = 0; i < network.nodes.size(); ++i)
        if (!isInlet[i])
            std::fprintf(file, "N%zu 0 %.17g\n", i + 1, demands[i] / kDensity * kLitresPerCubicMetre);
    std::fprintf(file, "[RESERVOIRS]\n");
    for (const int inlet : network.inlets)
        std::fprintf(file, "N%d %.17g\n", inlet + 1, epanetHead(network.inletPressure));
}

void writePipes(std::FILE* file, const Network& network)
{
    std::fprintf(file, "[PIPES]\n");
    for (std::size_t p = 0; p < network.pipes.size(); ++p) {
        const Pipe& pipe = network.pipes[p];
        std::fprintf(file, "P%zu N%d N%d %.17g %.17g %.17g 0 Open\n", p + 1, pipe.start + 1, pipe.end + 1,
                     pipeLength(network, pipe), pipe.diameter * kMillimetresPerMetre,
                     kRoughness * kMillimetresPerMetre);
    }
}

void writeOptions(std::FILE* file)
{
    std::fprintf(file, "[OPTIONS]\nUnits LPS\nHeadloss D-W\nSpecific Gravity %.17g\nViscosity %.17g\n",
                 kDensity / kLitresPerCubicMetre, kViscosity / kDensity / kEpanetViscosity);
    std::fprintf(file, "Accuracy %.17g\nTrials %d\n", kAccuracy, kTrials);
    std::fprintf(file, "[TIMES]\nDuration 0\n[REPORT]\nStatus No\nSummary No\n[END]\n");
}

}  // namespace

double epanetHead(double pressure)
{
    return pressure / (kDensity * kEpanetGravity);
}

void writeEpanetFile(const Network& network, const std::string& path)
{
    TextFile file(path);
    std::fprintf(file.get(), "[TITLE]\nbenchmark\n");
    writeNodes(file.get(), network);
    writePipes(file.get(), network);
    writeOptions(file.get());
    file.close();
}

}  // namespace bench
