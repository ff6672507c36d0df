// translation.h: from the model of a circuit to the records of the solver.
#pragma once

#include <cstddef>
#include <vector>

#include "lcn/records.h"

namespace Velcor::Tavell
{

class Circuit;

/// What a boundary node imposes, read from the model before the records are connected.
struct BoundaryCondition {
    int record = 0;  // solver number of the node
    bool isInlet = false;
    double temperature = 0.0;  // [K], inlets
    int constraint = 0;        // TavellNodeConstraint
    double pressure = 0.0;     // [Pa] static
    double flow = 0.0;         // [kg/s], [-] or [m/s] by constraint
};

/// One circuit in the solver's terms. Solver numbers run from 1 in order of creation.
struct Network {
    lcnNET_var var;
    lcn::NodeArray nodes;
    lcn::ElementArray elements;
    std::vector<BoundaryCondition> boundaries;
};

/// Whether the solver can number so many nodes and elements: it counts element ends, two for each element and
/// one slot more, with 32 bits.
bool fitsSolver(std::size_t nodes, std::size_t elements);

/// Reads the whole model: element inputs by type, locations and heights, settings, fluid, boundary
/// conditions. Changes nothing; throws when a stored number is not readable.
Network readModel(Circuit& circuit, bool energy);

/// Connects the records, sets directions and lengths of the elements and imposes the boundary conditions. An
/// element whose end names no node raises lcn::FatalException.
void completeNetwork(Network& network);

}  // namespace Velcor::Tavell
