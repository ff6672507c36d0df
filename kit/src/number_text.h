// number_text.h: numbers as text, the same in every locale.
#ifndef TAVELL_KIT_NUMBER_TEXT_H
#define TAVELL_KIT_NUMBER_TEXT_H

#include <string>

namespace kit
{

/// A number with at most so many significant digits.
std::string shortNumber(double value, int digits = 4);

/// A number with a fixed count of decimals; what rounds to zero has no minus sign.
std::string fixedNumber(double value, int decimals);

/// A number as d.ddde+xx with 5 significant digits.
std::string scientificNumber(double value);

/// The shortest digits that read back as the same number, without an exponent from 1e-4 to 1e15; valid JSON
/// for finite numbers.
std::string exactNumber(double value);

}  // namespace kit

#endif
