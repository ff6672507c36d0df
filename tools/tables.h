// tables.h: the results of a solve as aligned tables.
#ifndef TAVELL_TOOLS_TABLES_H
#define TAVELL_TOOLS_TABLES_H

#include <string>

#include <tavell/ICircuit.h>

#include "network.h"

/// Whether every result of the tables is there and finite.
bool hasUsableResults(Velcor::Tavell::ICircuit& circuit);

/// Title, node table, element table and expected answer; for a circuit with usable results.
std::string resultTables(const Network& network, Velcor::Tavell::ICircuit& circuit);

#endif
