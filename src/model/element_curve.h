// element_curve.h: the points of a pump or loss curve to and from the text in which an element stores them.
#pragma once

#include <string>
#include <vector>

namespace Velcor::Tavell
{

/// Text of count values: each with kCurveDigits significant digits and a comma after it; "," for none.
std::string curveText(const double* values, int count);

/// The values of such a text; none for "". The last comma may be missing. Throws as requireReadable when what
/// stands before a comma is no number.
std::vector<double> curveValues(const std::string& text);

}  // namespace Velcor::Tavell
