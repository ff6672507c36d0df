// vtu.h: a network and its results as VTK XML unstructured grid (.vtu), for ParaView.
#ifndef TAVELL_KIT_VTU_H
#define TAVELL_KIT_VTU_H

#include <string>

#include "network.h"
#include "solution.h"

namespace kit
{

/// The text of the file: nodes as points, elements as lines, elements with vertices as polylines through
/// points of their own. A vertex carries the values of the two nodes, in proportion to the drawn length, and
/// no name. Without a solution, or with one that has no results, only the network itself.
std::string vtuText(const Network& network, const Solution* solution);

}  // namespace kit

#endif
