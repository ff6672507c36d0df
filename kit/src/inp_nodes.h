// inp_nodes.h: junctions, reservoirs and tanks of an EPANET input file.
#ifndef TAVELL_KIT_INP_NODES_H
#define TAVELL_KIT_INP_NODES_H

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "findings.h"
#include "inp_demands.h"
#include "inp_options.h"
#include "inp_sections.h"
#include "network.h"

namespace kit
{

struct InpNode {
    std::string id;
    InpNodeKind kind = InpNodeKind::junction;
    double elevation = 0.0;  // [m]; of a reservoir its head, of a tank its bottom
    double level = 0.0;      // [m], of a tank above its bottom
    std::size_t line = 0;

    bool hasFixedHead() const { return kind != InpNodeKind::junction; }
    double fixedHead() const { return elevation + level; }
};

struct InpNodes {
    std::vector<InpNode> list;
    std::unordered_map<std::string, std::size_t> positions;  // by ID

    /// Position of an ID; nothing, and a finding, when there is none.
    std::optional<std::size_t> find(const std::string& id, InpReader& reader) const;
};

/// "junction", "reservoir", "tank"
std::string_view nodeWord(InpNodeKind kind);

InpNodes readInpNodes(const InpDocument& document, const InpFileOptions& options, const InpPatterns& patterns,
                      Findings& findings);

/// Sets x and y of the network's nodes, which are those of the list in its order, from [COORDINATES]. Nodes
/// without coordinates stand on a lattice beside the others.
void placeInpNodes(const InpDocument& document, const InpNodes& nodes, Network& network, Findings& findings);

}  // namespace kit

#endif
