// suggestion.h: what a misspelt word may have meant.
#ifndef TAVELL_TOOLS_SUGGESTION_H
#define TAVELL_TOOLS_SUGGESTION_H

#include <string>
#include <vector>

/// The word nearest to a text; "" when none is near.
std::string nearestWord(const std::string& text, const std::vector<std::string>& words);

#endif
