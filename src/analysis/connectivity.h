// connectivity.h: which part of a circuit can be reached from its first node.
#pragma once

namespace Velcor::Tavell
{

class Circuit;

/// Whether every node is an end of an element that can be reached from the first node; false for a circuit
/// without nodes. Always true while TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY is set in the environment, to any
/// value.
bool isConnected(const Circuit& circuit);

}  // namespace Velcor::Tavell
