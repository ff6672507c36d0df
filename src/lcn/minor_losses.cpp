#include "minor_losses.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "junction_losses.h"

namespace lcn
{

namespace
{

void applyMode(lcnNET_elems& elem, int mode)
{
    if (mode == kSpecifiedLosses || (mode == 1 && elem.kSpecified > kTiny)) elem.k = elem.kSpecified;
    if (mode == kNoLosses) elem.k = 0.0;
}

double sumOfK(const ElementArray& elements, const lcnNET_var& var)
{
    double sum = 0.0;
    for (int e = 1; e <= var.ElemTotal; ++e)
        sum += elements[e].k;
    return sum;
}

/// Weight of the new coefficients: junction losses that keep changing sides are damped more and more, then
/// frozen.
double relaxation(int updates, double relaxpp)
{
    if (updates > 700) return 0.0;
    if (updates > 500) return 0.05;
    if (updates > 300) return 0.1;
    return relaxpp;
}

}  // namespace

void MinorLosses::start(const ElementArray& elements, lcnNET_var& var)
{
    const bool areKept = var.Minor != kNoLosses && var.warmStart() != 0;
    m_previousSum = 0.0;
    for (int e = 1; e <= var.ElemTotal; ++e) {
        // No junction has a loss yet: the starting flows all run from start to end, whatever way the elements
        // were drawn, and with short pipes the answer could depend on which junctions they make divide or
        // combine.
        if (!areKept) {
            elements[e].k = 0.0;
            applyMode(elements[e], var.Minor);
        }
        m_previousSum += elements[e].k;
    }
}

bool MinorLosses::update(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var)
{
    if (var.Minor == kNoLosses) return true;

    m_previous.resize(var.ElemTotal + 1);
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        m_previous[e] = elem.k;
        elem.k = 0.0;
        applyMode(elem, var.Minor);
    }
    // specified coefficients stand in the end where mode 0 asks for them
    if (var.Minor != kSpecifiedLosses) addJunctionLosses(nodes, elements, var);

    const double weight = relaxation(m_updates, var.relaxpp);
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        elem.k = std::min(elem.k, kLargestK);
        applyMode(elem, var.Minor);
        elem.k = m_previous[e] + weight * (elem.k - m_previous[e]);
    }

    const auto orOne = [](double x) { return std::fabs(x) < kTiny ? 1.0 : x; };
    const double sum = sumOfK(elements, var);
    m_error = std::fabs((orOne(sum) - orOne(m_previousSum)) / orOne(m_previousSum));
    m_previousSum = sum;
    ++m_updates;
    return m_error < var.Concrit;
}

}  // namespace lcn
