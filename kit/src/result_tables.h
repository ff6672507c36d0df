// result_tables.h: the results of a solve as tables for people and other programs.
#ifndef TAVELL_KIT_RESULT_TABLES_H
#define TAVELL_KIT_RESULT_TABLES_H

#include <string>

#include "certificate.h"
#include "network.h"
#include "solution.h"
#include "units.h"

namespace kit
{

enum class TableFormat {
    text,  // aligned tables: nodes, elements, expected answer, certificate
    csv,   // elements, an empty line, nodes; RFC 4180, full precision
    json   // one object
};

/// The results in the units of a set; ends with a line end. A solution without results has no tables.
std::string resultTables(const Network& network, const Solution& solution, const Certificate& certificate,
                         TableFormat format, const UnitSet& units);

}  // namespace kit

#endif
