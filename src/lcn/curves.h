// curves.h: characteristic curves of pumps and losses.
#pragma once

#include <array>
#include <optional>

#include "records.h"

namespace lcn
{

/// Least-squares cubic c0 + c1 x + c2 x^2 + c3 x^3 through the curve's points, x = flow [m3/s], y = pressure
/// / RefDensity [m2/s2]; Householder QR without pivoting (Golub 1965). Nothing when there are fewer than 4
/// points, the counts differ, a number is not finite or the flows do not increase strictly.
std::optional<std::array<double, 4>> fitCubic(const lcnNET_pumps& curve);

/// Fits a pump's curve: coefficients a..d are minus the pressure rise, qmax [m3/s] is where the rise falls to
/// zero.
/// False when the points cannot be fitted. Raises kCurveError with zeros when no falling zero is found.
bool preparePump(lcnNET_pumps& curve, lcnNET_var& var);

/// Fits a loss's curve: coefficients b..d are the pressure drop, a is 0; qmax [m3/s] is the last flow point.
/// False when the points cannot be fitted.
bool prepareLoss(lcnNET_pumps& curve);

/// Pressure drop [Pa] of a loss curve at Q [m3/s], linear between its points; the first point's pressure up
/// to the first flow, the last one's above the last flow and for Q <= 0.
double lossCurvePressure(const lcnNET_pumps& curve, double Q);

}  // namespace lcn
