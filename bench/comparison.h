// comparison.h: what of a solved network EPANET must find too.
#ifndef TAVELL_BENCH_COMPARISON_H
#define TAVELL_BENCH_COMPARISON_H

#include <string>
#include <vector>

#include "host.h"
#include "networks.h"

namespace bench
{

/// The friction factors of the library and of EPANET agree above a Reynolds number of 5000 only, and one slow pipe in a
/// loop changes the flows of the whole loop. In this network the slow pipes are therefore replaced by their solved
/// flows, taken at one end and given back at the other: where all laws agree, so must all heads. A slow pipe without
/// which a part would be cut off stays, and the nodes of that part are not compared.
struct Comparison {
    Network network;
    std::vector<bool> isCompared;  // by node
};

Comparison comparisonOf(const Network& network, const Results& results);

/// A CSV line per node: its name in the EPANET file, its head [m], 1 when it is compared. Throws when the file cannot
/// be written.
void writeHeads(const Comparison& comparison, const Results& results, const std::string& path);

}  // namespace bench

#endif
