// epanet_file.h: networks as EPANET input files.
#ifndef TAVELL_BENCH_EPANET_FILE_H
#define TAVELL_BENCH_EPANET_FILE_H

#include <string>

#include "networks.h"

namespace bench
{

/// Head [m] of a pressure [Pa] in EPANET, whose laws take gravity to be 32.2 ft/s2.
double epanetHead(double pressure);

/// Writes a network with EPANET's names N1.. for the nodes, P1.. for the pipes; inlets are reservoirs, and a demand is
/// taken at the node of its stub. Litres per second, Darcy-Weisbach. Throws when the file cannot be written.
void writeEpanetFile(const Network& network, const std::string& path);

}  // namespace bench

#endif
