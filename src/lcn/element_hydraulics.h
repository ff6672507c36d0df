// element_hydraulics.h: the law of each element kind, as a pressure loss and as a straight line or parabola
// in the flow.
#pragma once

#include "records.h"

namespace lcn
{

/// Exponent of the flow in the Hazen-Williams law [-].
inline constexpr double kHazenWilliamsExponent = 1.85;

/// Linearised law of an element: dp = c0 + c1 Q (pumps, loss curves), dp = r2 rho Q^2 (quadratic kinds), g
/// the secant dp / |Q| (Hazen-Williams, general loss; c1 and r2 then carry the law's own constants).
struct LinearisedLaw {
    double c0 = 0.0;  // [Pa]
    double c1 = 0.0;  // [Pa s/m3]; for types 4 and 6 the prepared resistance
    double r2 = 0.0;  // [1/m4]
    double g = 0.0;   // [Pa s/m3]
};

/// Whether a friction factor is brought up to the current flow first, or used as it is stored because the
/// flow has not changed since, or taken from the law without damping and not stored.
enum class Friction { kEvaluate, kStored, kUndamped };

/// Quadratic kinds: pipe, orifice, both valves, control valve, non-return element.
bool isQuadratic(int type);
/// Kinds with a friction factor: pipe, control valve, non-return element.
bool isDarcyWeisbach(int type);
/// Kinds given by a curve: pump, loss curve.
bool isCurve(int type);
/// Kinds that have a law at all, 1 to 10.
bool hasLaw(int type);

/// Linearises element e about its current flow; all zeros for a type without a law. Returns r2 for the
/// quadratic kinds, else 0. Reads the element's geometry, coefficients, Massflow, density; an orifice in a
/// gas also its end pressures.
/// Writes friction (kEvaluate).
double linearise(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                 LinearisedLaw& law, Friction friction = Friction::kEvaluate);

/// Pressure change [Pa] over element e at its current flow, seen in direction +1 (start to end) or -1.
/// Orifices and valves (types 5, 7, 8) give its magnitude whatever the direction. 0 for a type without a law.
double pressureLoss(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                    int direction, Friction friction = Friction::kEvaluate);

/// The same with a sign for every kind: > 0 where pressure falls in the direction given.
double signedPressureLoss(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                          int direction, Friction friction = Friction::kEvaluate);

}  // namespace lcn
