#include "comparison.h"

#include <cstddef>
#include <cstdio>

#include "connected_sets.h"
#include "epanet_file.h"
#include "text_file.h"

namespace bench
{

namespace
{

/// Every node that is joined to an inlet through turbulent pipes is in one set with all of these.
ConnectedSets joinTurbulent(const Network& network, const Results& results)
{
    ConnectedSets sets(static_cast<int>(network.nodes.size()));
    for (const int inlet : network.inlets)
        sets.join(network.inlets.front(), inlet);
    for (std::size_t p = 0; p < network.pipes.size(); ++p)
        if (isTurbulent(results, static_cast<int>(p)))
            sets.join(network.pipes[p].start, network.pipes[p].end);
    return sets;
}

}  // namespace

Comparison comparisonOf(const Network& network, const Results& results)
{
    Comparison comparison;
    ConnectedSets sets = joinTurbulent(network, results);
    for (std::size_t i = 0; i < network.nodes.size(); ++i)
        comparison.isCompared.push_back(sets.areJoined(network.inlets.front(), static_cast<int>(i)));

    comparison.network = network;
    comparison.network.pipes.clear();
    for (std::size_t p = 0; p < network.pipes.size(); ++p) {
        const Pipe& pipe = network.pipes[p];
        const int element = static_cast<int>(p);
        if (isTurbulent(results, element) || sets.join(pipe.start, pipe.end)) {
            comparison.network.pipes.push_back(pipe);
        } else {
            const double flow = massFlowOf(results, element);
            comparison.network.demands.push_back({pipe.start, flow, pipe.diameter});
            comparison.network.demands.push_back({pipe.end, -flow, pipe.diameter});
        }
    }
    return comparison;
}

void writeHeads(const Comparison& comparison, const Results& results, const std::string& path)
{
    TextFile file(path);
    std::fprintf(file.get(), "node,head_m,compared\n");
    for (std::size_t i = 0; i < comparison.isCompared.size(); ++i)
        std::fprintf(file.get(), "N%zu,%.17g,%d\n", i + 1,
                     epanetHead(pressureOf(results, static_cast<int>(i))), comparison.isCompared[i] ? 1 : 0);
    file.close();
}

}  // namespace bench
