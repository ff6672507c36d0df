// element_curve.cpp: curve points as text.
#include "element_curve.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "number_text.h"

namespace Velcor::Tavell
{

// kept: 6 significant digits, where every other property has 20: a curve reads back as these rounded points,
// and the curves fitted through them rest on that.
std::string curveText(const double* values, int count)
{
    if (count <= 0) return ",";
    std::string text;
    for (int i = 0; i < count; ++i)
        text.append(formatNumber(values[i], kCurveDigits)).push_back(',');
    return text;
}

std::vector<double> curveValues(const std::string& text)
{
    std::vector<double> values;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(','), rest.size());
        values.push_back(readNumber(rest.substr(0, length)));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    return values;
}

}  // namespace Velcor::Tavell
