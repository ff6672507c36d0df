#include "element_hydraulics.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "curves.h"
#include "friction.h"
#include "orifice.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

constexpr double kSecantAtRest = 10.0;  // [Pa s/m3] secant of a power law at zero flow

/// 1 / (2 A^2) [1/m4]; infinite without an area: no flow passes there.
double dynamicFactor(const lcnNET_elems& elem)
{
    return 0.5 / (elem.Area * elem.Area);
}

/// K / (2 A^2) [1/m4]; 0 without a minor loss, so that elements without an area need none.
double minorResistance(const lcnNET_elems& elem)
{
    return elem.k == 0.0 ? 0.0 : elem.k * dynamicFactor(elem);
}

/// Weisbach (1845), Darcy (1857): dp = (f L/D + K) rho Q^2 / (2 A^2), r2 [1/m4].
double darcyResistance(const lcnNET_elems& elem, double f)
{
    return (f * elem.length / elem.diam + elem.k) * dynamicFactor(elem);
}

double orificeResistanceOf(const NodeArray& nodes, const lcnNET_elems& elem, const lcnNET_var& var)
{
    const double Re = reynolds(elem, viscosity(var, elem.Temperature));
    double epsilon = 1.0;
    if (var.compressible) {
        const double pStart = nodes[elem.LocalStartNode].Pressure;
        const double pEnd = nodes[elem.LocalEndNode].Pressure;
        epsilon = expansibility(elem.HWcoeff, std::max(pStart, pEnd), std::min(pStart, pEnd), var.heatRatio);
    }
    return orificeResistance(elem.HWcoeff, Re, {elem.Param1, elem.Param2}, elem.diam, epsilon);
}

/// Resistance r2 [1/m4] of a quadratic kind.
double quadraticResistance(const NodeArray& nodes, lcnNET_elems& elem, const lcnNET_var& var,
                           Friction friction)
{
    if (isDarcyWeisbach(elem.type)) {
        if (friction == Friction::kEvaluate) frictionFactor(elem, var);
        return darcyResistance(elem,
                               friction == Friction::kUndamped ? undampedFriction(elem, var) : elem.friction);
    }
    return elem.type == kOrifice ? orificeResistanceOf(nodes, elem, var) : elem.HWcoeff;
}

/// p/rho [m2/s2] of the curve's cubic at Q [m3/s].
double cubic(const lcnNET_pumps& p, double Q)
{
    return p.a + p.b * Q + p.c * Q * Q + p.d * Q * Q * Q;
}

/// The straight line through the operating point and the zero-rise point (qmax, 0); beyond the curve through
/// the shut-off point and (qmax, 0).
void linearisePump(const lcnNET_elems& elem, double Q, LinearisedLaw& law)
{
    const lcnNET_pumps& p = elem.Curve;
    law.c0 = p.a;
    law.c1 = p.b;
    if (Q >= p.qmax || Q < 0.0) {
        law.c0 = p.a * elem.density;
        law.c1 = std::fabs(p.qmax) < kTiny ? 0.0 : -p.a * elem.density / p.qmax;
        return;
    }
    const double P = elem.density * cubic(p, Q);
    law.c1 = -P / (p.qmax - Q);
    law.c0 = P * p.qmax / (p.qmax - Q);
}

/// The chord from the origin through the last point: a straight curve is exact, and the iteration is stable
/// on any.
double lossCurveChord(const lcnNET_pumps& curve)
{
    const int n = curve.points();
    if (n == 0) return 0.0;
    const double lastFlow = curve.FlowRate[n - 1];
    return std::fabs(lastFlow) < kTiny ? 0.0 : curve.PressurePoints[n - 1] / lastFlow;
}

/// rho^(a-1) |Q|^d r [m2/s2], the power law of a general loss.
double generalPower(const lcnNET_elems& elem, double magnitude)
{
    return std::pow(elem.density, elem.Param1 - 1.0) * elem.HWcoeff * std::pow(magnitude, elem.Param4);
}

void lineariseHazenWilliams(const lcnNET_elems& elem, double Q, LinearisedLaw& law)
{
    law.r2 = minorResistance(elem);
    law.c1 = elem.HWcoeff;
    const double magnitude = std::fabs(Q);
    law.g = magnitude < kTiny
                ? kSecantAtRest
                : (elem.HWcoeff * std::pow(magnitude, kHazenWilliamsExponent) + Q * Q * law.r2) *
                      elem.density / magnitude;
}

void lineariseGeneralLoss(const lcnNET_elems& elem, double Q, LinearisedLaw& law)
{
    law.r2 = minorResistance(elem);
    law.c1 = elem.HWcoeff;
    const double magnitude = std::fabs(Q);
    // kept: the minor loss enters as K^2 / (4 A^4) here and as Q^2 K / (2 A^2) for Hazen-Williams; g is only
    // the start of the search for the flow, and that search's path rests on it.
    const double minor = law.r2 == 0.0 ? 0.0 : elem.k * law.r2 * dynamicFactor(elem);
    law.g = magnitude < kTiny ? kSecantAtRest
                              : (generalPower(elem, magnitude) + minor) * elem.density / magnitude;
}

double pumpLoss(const lcnNET_elems& elem, double Q)
{
    const lcnNET_pumps& p = elem.Curve;
    return Q >= 0.0 && Q <= p.qmax ? elem.density * cubic(p, Q) : p.a * elem.density;
}

double powerLoss(const lcnNET_elems& elem, double Q)
{
    const double power = elem.type == kGeneralLoss
                             ? generalPower(elem, std::fabs(Q))
                             : elem.HWcoeff * std::pow(std::fabs(Q), kHazenWilliamsExponent);
    return elem.density * (power + minorResistance(elem) * Q * Q);
}

}  // namespace

bool isQuadratic(int type)
{
    return type == kPipe || type == kOrifice || (type >= kKvValve && type <= kNonReturn);
}

bool isDarcyWeisbach(int type)
{
    return type == kPipe || type == kControlValve || type == kNonReturn;
}

bool isCurve(int type)
{
    return type == kPump || type == kLossCurve;
}

bool hasLaw(int type)
{
    return type >= kPipe && type <= kNonReturn;
}

double linearise(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                 LinearisedLaw& law, Friction friction)
{
    law = {};
    lcnNET_elems& elem = elements[e];
    if (isQuadratic(elem.type)) {
        law.r2 = quadraticResistance(nodes, elem, var, friction);
        return law.r2;
    }
    const double Q = elem.volumeFlow();
    switch (elem.type) {
    case kPump:
        linearisePump(elem, Q, law);
        break;
    case kLossCurve:
        law.c1 = lossCurveChord(elem.Curve);
        break;
    case kHazenWilliams:
        lineariseHazenWilliams(elem, Q, law);
        break;
    case kGeneralLoss:
        lineariseGeneralLoss(elem, Q, law);
        break;
    default:
        break;
    }
    return 0.0;
}

double pressureLoss(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                    int direction, Friction friction)
{
    lcnNET_elems& elem = elements[e];
    const double Q = elem.volumeFlow();
    const double s = Q >= 0.0 ? direction : -direction;
    switch (elem.type) {
    case kPipe:
    case kControlValve:
    case kNonReturn:
        return s * std::fabs(quadraticResistance(nodes, elem, var, friction) * elem.density * Q * Q);
    case kPump:
        return s * pumpLoss(elem, Q);
    case kLossCurve:
        return s * lossCurvePressure(elem.Curve, Q);
    case kHazenWilliams:
    case kGeneralLoss:
        return s * powerLoss(elem, Q);
    // kept: no sign here; the two callers that need one add it.
    case kOrifice:
    case kKvValve:
    case kCvValve:
        return quadraticResistance(nodes, elem, var, friction) * elem.density * Q * Q;
    default:
        return 0.0;
    }
}

double signedPressureLoss(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                          int direction, Friction friction)
{
    const double loss = pressureLoss(nodes, elements, var, e, direction, friction);
    const int type = elements[e].type;
    if (type != kOrifice && type != kKvValve && type != kCvValve) return loss;
    return (elements[e].Massflow >= 0.0 ? direction : -direction) * loss;
}

}  // namespace lcn
