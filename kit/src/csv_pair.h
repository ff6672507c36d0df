// csv_pair.h: a network as two tables, one of nodes and one of elements, for spreadsheets.
#ifndef TAVELL_KIT_CSV_PAIR_H
#define TAVELL_KIT_CSV_PAIR_H

#include <optional>
#include <string>

#include "findings.h"
#include "network.h"

namespace kit
{

/// The network in two files; nothing, and every finding, when they cannot be used. flawed as for readNetworkFile.
std::optional<Network> readCsvPair(const std::string& nodesPath, const std::string& elementsPath,
                                   Findings& findings, std::optional<Network>* flawed = nullptr);

/// The same for texts in memory; the files name them in findings.
std::optional<Network> readCsvTexts(const std::string& nodes, const std::string& nodesFile,
                                    const std::string& elements, const std::string& elementsFile,
                                    Findings& findings, std::optional<Network>* flawed = nullptr);

/// The tables of a network, in SI units, with the columns that it needs. Materials, fittings and curves of
/// its own are written as their values.
std::string nodesCsv(const Network& network);
std::string elementsCsv(const Network& network);

/// A warning for every part of a network that its tables do not hold.
void reportCsvLosses(const Network& network, Findings& findings);

}  // namespace kit

#endif
