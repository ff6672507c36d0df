// kit_api_units.h: units and choices that a caller of the C interface names.
#ifndef TAVELL_KIT_KIT_API_UNITS_H
#define TAVELL_KIT_KIT_API_UNITS_H

#include <cstddef>
#include <string>
#include <vector>

#include "network.h"
#include "units.h"

namespace kit
{

/// Units of printed values: those of a text, null or "" for those that the network asks for (it may be null
/// too). Refuses a text that names none.
UnitSet displayUnits(const char* text, const Network* network);

/// The position of a word among some, null and "" for the first. Refuses another word.
std::size_t choiceOf(const char* word, const std::vector<std::string>& words, const char* what);

}  // namespace kit

#endif
