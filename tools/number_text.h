// number_text.h: numbers as text, the same in every locale.
#ifndef TAVELL_TOOLS_NUMBER_TEXT_H
#define TAVELL_TOOLS_NUMBER_TEXT_H

#include <string>

/// A number with at most so many significant digits.
std::string shortNumber(double value, int digits = 4);

/// A number with a fixed count of decimals; what rounds to zero has no minus sign.
std::string fixedNumber(double value, int decimals);

/// A number as d.ddde+xx with 5 significant digits.
std::string scientificNumber(double value);

#endif
