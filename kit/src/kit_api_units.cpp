#include "kit_api_units.h"

#include "kit_api.h"

namespace kit
{

UnitSet displayUnits(const char* text, const Network* network)
{
    if (text != nullptr && *text != '\0') {
        std::string error;
        const auto units = parseUnitSet(text, error);
        if (!units) refuse(error, "correct the units");
        return *units;
    }
    UnitSet units;
    if (network == nullptr) return units;
    for (const auto& [name, unit] : network->resultUnits) {
        if (const auto quantity = findQuantity(name)) units[*quantity] = unit;
    }
    return units;
}

std::size_t choiceOf(const char* word, const std::vector<std::string>& words, const char* what)
{
    if (word == nullptr || *word == '\0') return 0;
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] == word) return i;
        list += (list.empty() ? "" : ", ") + inQuotes(words[i]);
    }
    refuse(std::string("the ") + what + ' ' + inQuotes(word) + " is unknown", "give one of " + list);
}

}  // namespace kit
