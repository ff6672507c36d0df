// network_builder.h: a network as a circuit of the library.
#ifndef TAVELL_TOOLS_NETWORK_BUILDER_H
#define TAVELL_TOOLS_NETWORK_BUILDER_H

#include <tavell/ICircuit.h>

#include "network.h"
#include "problems.h"

/// Builds the network in an empty circuit, nodes and elements in file order. False, with problems, when the
/// library refuses an element.
bool buildCircuit(const Network& network, Velcor::Tavell::ICircuit& circuit, Problems& problems);

/// Whether the library takes the circuit for a solve and every element can be reached; if not, the problems
/// say why.
bool isReadyToSolve(const Network& network, Velcor::Tavell::ICircuit& circuit, Problems& problems);

#endif
