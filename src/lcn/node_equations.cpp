#include "node_equations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "constants.h"
#include "orifice.h"
#include "pressure_groups.h"

namespace lcn
{

namespace
{

constexpr int kNewtonSteps = 101;
constexpr double kNewtonTolerance = 1e-13;    // [-] last relative step of the flow
constexpr double kSecantAtRest = 10.0;        // [Pa s/m3]
constexpr double kCurveSlopeAtRest = 10.0;    // [Pa s/m3]
constexpr double kSmallestPowerSlope = 1e-6;  // [Pa s m3/(kg m3)] slope of a power law at zero flow
constexpr double kDrowningRatio = 1e12;       // [-] of conductances that share one matrix
constexpr double kRestRatio = 1e3;            // [-] of an element at rest to the largest other conductance

double signOf(double x)
{
    return (x > 0.0) - (x < 0.0);
}

/// x^n for x >= 0 with 0^n = 0 for every exponent but 0, so that a slope at rest stays finite.
double power(double x, double n)
{
    return x == 0.0 && n != 0.0 ? 0.0 : std::pow(x, n);
}

double drop(const NodeArray& nodes, const lcnNET_elems& elem)
{
    return nodes[elem.LocalStartNode].Pressure - nodes[elem.LocalEndNode].Pressure;
}

/// Inertia of the liquid column per flow area and time step [1/(m s)]; nothing in a steady state.
double inertia(const lcnNET_elems& elem, double dt)
{
    return dt <= kSteadyTimeStep ? elem.length / elem.Area / dt : 0.0;
}

/// r2 rho Q^2 + (T + c1) rho Q = |dp| + T m_old solved for Q, linearised there.
ElementEquation quadraticEquation(const lcnNET_elems& elem, const LinearisedLaw& law, double dp, double T,
                                  double w)
{
    const double rho = elem.density;
    const double b = T + law.c1;
    double q = 0.0;
    if (!(std::fabs(law.r2) < kTiny)) {  // true for a law that is no number: it must show in the flow
        const double c = -std::fabs(dp) / rho - T * elem.MassflowOld / rho;
        q = signOf(law.r2 * dp) * std::fabs((std::sqrt(b * b - 4.0 * law.r2 * c) - b) / (2.0 * law.r2));
    } else if (!(std::fabs(law.c1) < kTiny)) {
        q = dp / rho / law.c1;
    }
    const double d = 2.0 * law.r2 * std::fabs(q) * w + T + law.c1 * w;
    const double g = std::fabs(d) < kTiny ? kLargeConductance : w / d;
    ElementEquation part;
    part.conductance = g * w;
    part.massFlow = (1.0 - w) * elem.MassflowOld + w * rho * q;
    part.flowEstimate = q;
    part.flowResistance = std::fabs(g) < kTiny ? rho * kLargeConductance : rho / g;
    return part;
}

ElementEquation curveEquation(const lcnNET_elems& elem, const LinearisedLaw& law, double dp)
{
    const double c1 = std::fabs(law.c1) < kTiny ? kCurveSlopeAtRest : law.c1;
    const double q = (dp - law.c0) / c1;
    return {elem.density / c1, elem.density * q, q, c1};
}

/// Volume flow [m3/s] >= 0 at which a q^n + r2 q^2 = head [m2/s2], by Newton's method from q.
double powerLawFlow(double a, double n, double r2, double head, double q, double criterion)
{
    double step = std::numeric_limits<double>::infinity();
    for (int i = 0; i < kNewtonSteps; ++i) {
        const double residual = a * power(q, n) + r2 * q * q - head;
        if (std::fabs(residual) <= criterion && std::fabs(step) <= kNewtonTolerance * q) return q;
        const double slope = n * a * power(q, n - 1.0) + 2.0 * r2 * q;
        if (std::fabs(slope) < kTiny) return q;
        const double next = q - residual / slope;
        if (next < 0.0) return q;
        step = next - q;
        q = next;
    }
    return q;
}

/// Hazen-Williams and general losses. kept: these two do not take part in the flow weight; a steady solve has
/// weight 1.
ElementEquation powerEquation(const lcnNET_elems& elem, const LinearisedLaw& law, double dp, double criterion)
{
    const bool general = elem.type == kGeneralLoss;
    const double rho = elem.density;
    const double n = general ? elem.Param4 : kHazenWilliamsExponent;
    const double a = general ? law.c1 * std::pow(rho, elem.Param1 - 1.0) : law.c1;
    const double secant = std::fabs(law.g) < kTiny ? kSecantAtRest : law.g;

    const double magnitude =
        powerLawFlow(a, n, law.r2, std::fabs(dp) / rho, std::fabs(dp / secant), criterion);
    const double q = signOf(dp / secant) * magnitude;
    double d = n * a * power(magnitude, n - 1.0) + 2.0 * law.r2 * magnitude;
    if (std::fabs(d) < kTiny) d = kSmallestPowerSlope;
    return {1.0 / d, q * rho, q, d * rho};
}

/// Storage: the density change of the last element at each node, times half the volume of all its elements.
void addStorage(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, double dt,
                NodeEquations& equations)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const lcnNET_nodes& node = nodes[i];
        if (node.flag != kFreeNode || node.no_branches == 0) continue;
        double volume = 0.0;
        for (int b = 1; b <= node.no_branches; ++b) {
            const lcnNET_elems& elem = elements[std::abs(node.LocalElements[b])];
            volume += 0.5 * elem.Area * elem.length;
        }
        const lcnNET_elems& last = elements[std::abs(node.LocalElements[node.no_branches])];
        // kept: the last element's density stands for all of them; the term vanishes in a steady state.
        equations.rhs[static_cast<std::size_t>(i)] -= (last.density - last.densityOld) * volume / dt;
    }
}

/// Lowers the conductance of elements at rest where it would drown all others: in a matrix of 1e6 beside
/// 1e-10, as in a grid of microchannels whose inner pressures start equal, the boundary is lost to rounding
/// and with it the solution.
/// They stay a thousand times more conductive than any element whose law has spoken.
void lowerConductancesAtRest(const ElementArray& elements, const lcnNET_var& var, NodeEquations& equations)
{
    std::vector<char> atRest(equations.coef.size(), 0);
    for (const int e : equations.withoutDrop)
        atRest[static_cast<std::size_t>(e)] =
            equations.coef[static_cast<std::size_t>(e)] == kLargeConductance;
    double largest = 0.0;
    for (std::size_t e = 1; e < atRest.size(); ++e)
        if (!atRest[e]) largest = std::fmax(largest, equations.coef[e]);
    if (!(largest > 0.0) || !(largest < kLargeConductance / kDrowningRatio)) return;

    // summed anew: what is small against 1e6 is not to be had by subtraction
    std::fill(equations.diag.begin(), equations.diag.end(), 0.0);
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const auto slot = static_cast<std::size_t>(e);
        const lcnNET_elems& elem = elements[e];
        if (atRest[slot]) {
            equations.coef[slot] = kRestRatio * largest;
            equations.flowResistance[slot] = elem.density / equations.coef[slot];
        }
        equations.diag[static_cast<std::size_t>(elem.LocalStartNode)] += equations.coef[slot];
        equations.diag[static_cast<std::size_t>(elem.LocalEndNode)] += equations.coef[slot];
    }
}

}  // namespace

void NodeEquations::size(const lcnNET_var& var)
{
    const auto nodes = static_cast<std::size_t>(var.NodeTotal) + 1;
    const auto elements = static_cast<std::size_t>(var.ElemTotal) + 1;
    diag.assign(nodes, 0.0);
    rhs.assign(nodes, 0.0);
    coef.assign(elements, 0.0);
    flowEstimate.assign(elements, 0.0);
    flowResistance.assign(elements, 0.0);
    withoutDrop.clear();
    withoutDrop.reserve(elements);
}

void applyFlowLimit(lcnNET_elems& elem)
{
    const double limit = std::fabs(elem.FixedFlow);
    const double flow = std::fabs(elem.Massflow);
    const auto fixAtLimit = [&] {
        elem.fix = 1;
        elem.FixedFlow = limit * signOf(elem.Massflow);
        elem.Massflow = elem.MassflowOld = elem.FixedFlow;
    };
    switch (elem.type) {
    case kNonReturn:
        if (elem.Massflow < -kTiny && elem.fix == 0) {
            elem.fix = 1;
            elem.Massflow = elem.MassflowOld = elem.FixedFlow = 0.0;
        }
        break;
    case kControlValve:
        if (limit > flow)
            elem.fix = 0;
        else if (elem.fix == 0 && flow > kTiny)
            fixAtLimit();
        break;
    default:
        if (flow <= kTiny)
            elem.Massflow = elem.FixedFlow;
        else
            fixAtLimit();
    }
}

ElementEquation elementEquation(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                                int e, double dt, Friction friction)
{
    LinearisedLaw law;
    linearise(nodes, elements, var, e, law, friction);
    const lcnNET_elems& elem = elements[e];
    const double dp = drop(nodes, elem);
    // The law of an orifice at rest is 0; with it no pressure difference would ever set the liquid in motion.
    if (elem.type == kOrifice && law.r2 == 0.0)
        law.r2 = creepingOrificeResistance(elem.HWcoeff, {elem.Param1, elem.Param2}, elem.diam);
    if (isQuadratic(elem.type)) return quadraticEquation(elem, law, dp, inertia(elem, dt), var.flowWeight);
    if (isCurve(elem.type)) return curveEquation(elem, law, dp);
    if (hasLaw(elem.type)) return powerEquation(elem, law, dp, var.Concrit);
    return {};
}

void clearNodeEquations(NodeEquations& equations)
{
    std::fill(equations.diag.begin(), equations.diag.end(), 0.0);
    std::fill(equations.rhs.begin(), equations.rhs.end(), 0.0);
    equations.withoutDrop.clear();
    equations.withoutConductance.clear();
}

void addToNodeEquations(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                        double dt, const std::vector<int>& listed, NodeEquations& equations,
                        Friction friction)
{
    const double w = var.flowWeight;
    for (const int e : listed) {
        lcnNET_elems& elem = elements[e];
        const auto slot = static_cast<std::size_t>(e);
        equations.coef[slot] = 0.0;
        // a loop from a node to itself has no part in any balance
        if (elem.LocalStartNode == elem.LocalEndNode) continue;
        if (!hasBalance(nodes[elem.LocalStartNode]) && !hasBalance(nodes[elem.LocalEndNode])) continue;

        if (elem.FlowLimited != 0) {
            // the first call may take over a fixed flow, the second holds it: beside a fixed pressure, too
            applyFlowLimit(elem);
            applyFlowLimit(elem);
        }
        ElementEquation part;
        if (elem.fix != 0)
            part.massFlow = (1.0 - w) * elem.MassflowOld + w * elem.FixedFlow;
        else {
            part = elementEquation(nodes, elements, var, e, dt, friction);
            if (isQuadratic(elem.type) && drop(nodes, elem) == 0.0) equations.withoutDrop.push_back(e);
        }
        equations.coef[slot] = part.conductance;
        equations.flowEstimate[slot] = part.flowEstimate;
        equations.flowResistance[slot] = part.flowResistance;

        const auto start = static_cast<std::size_t>(elem.LocalStartNode);
        const auto end = static_cast<std::size_t>(elem.LocalEndNode);
        equations.diag[start] += part.conductance;
        equations.rhs[start] -= part.massFlow;
        equations.diag[end] += part.conductance;
        equations.rhs[end] += part.massFlow;
    }
}

void completeNodeEquations(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                           double dt, NodeEquations& equations)
{
    if (!equations.withoutDrop.empty()) lowerConductancesAtRest(elements, var, equations);
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const auto slot = static_cast<std::size_t>(i);
        if (nodes[i].flag != kFreeNode) {
            equations.diag[slot] = 1.0;
            equations.rhs[slot] = 0.0;
        } else if (std::fabs(equations.diag[slot]) < kTiny) {
            equations.diag[slot] = kLargeConductance;
            equations.withoutConductance.push_back(i);
        }
    }
    if (dt <= kSteadyTimeStep) addStorage(nodes, elements, var, dt, equations);
}

void assembleNodeEquations(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                           double dt, NodeEquations& equations, Friction friction)
{
    std::vector<int> all(static_cast<std::size_t>(var.ElemTotal));
    std::iota(all.begin(), all.end(), 1);
    clearNodeEquations(equations);
    addToNodeEquations(nodes, elements, var, dt, all, equations, friction);
    completeNodeEquations(nodes, elements, var, dt, equations);
}

}  // namespace lcn
