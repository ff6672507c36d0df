// graphml.h: a network and its results as GraphML, for programs that work on graphs.
#ifndef TAVELL_KIT_GRAPHML_H
#define TAVELL_KIT_GRAPHML_H

#include <string>

#include "network.h"
#include "solution.h"

namespace kit
{

/// The text of a directed graph with nodes n0, n1 ... and edges e0, e1 ... in the network's order; names and
/// values are data with typed keys. A value that a node or an element does not have is left out. Without a
/// solution, or with one that has no results, only the network itself.
std::string graphmlText(const Network& network, const Solution* solution);

}  // namespace kit

#endif
