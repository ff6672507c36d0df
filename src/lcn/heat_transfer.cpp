#include "heat_transfer.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "element_hydraulics.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

constexpr double kReStill = 10.0;             // [-] slower flow exchanges no heat with the wall
constexpr double kReLaminarEnd = 2300.0;      // [-]
constexpr double kReGnielinski = 3000.0;      // [-]
constexpr double kReDittusBoelter = 5e6;      // [-]
constexpr double kLaminarNusselt = 3.66;      // [-]
constexpr double kEqualTemperatures = 1e-13;  // [K]

// Energy inputs, field Energy_var.
constexpr int kWall = 0;
constexpr int kWallTemperature = 1;
constexpr int kFlux = 2;
constexpr int kRise = 3;
constexpr int kStoredFlux = 4;
constexpr int kHeat = 5;

// Sub-kinds of elements.
constexpr int kDoubledTransfer = 37;
constexpr int kGivenHeatA = 40;
constexpr int kGivenHeatB = 50;

/// f/8 (Re - from) Pr / (1 + 12.7 sqrt(f/8) (Pr^(2/3) - 1)), Gnielinski (1976).
double gnielinski(double reynoldsTerm, double Pr, double friction)
{
    const double f8 = friction / 8.0;
    return f8 * reynoldsTerm * Pr / (1.0 + 12.7 * std::sqrt(f8) * (std::pow(Pr, 2.0 / 3.0) - 1.0));
}

/// Convective heat-transfer coefficient [W/(m2 K)] of element e.
double convection(const NodeArray& nodes, const lcnNET_elems& elem, const lcnNET_var& var)
{
    if (!(elem.diam > 0.0)) return 0.0;
    const double mu = viscosity(var, elem.Temperature);
    const double Re = reynolds(elem, mu);
    const double Pr = prandtl(mu, var.Cp, var.Conductivity);
    const bool heated = upstreamTemperature(nodes, elem) < elem.MetalTemp;
    const double h = var.Conductivity * nusselt(Re, Pr, elem.friction, heated) / elem.diam * elem.HTE;
    return elem.subKind == kDoubledTransfer ? 2.0 * h : h;
}

/// Convection from a wall. Over a long slow pipe the fluid reaches the wall's temperature and cannot pass it:
/// without that bound the sweep over the temperatures diverges from about six transfer units; below two it
/// changes nothing.
double heatFromWall(const NodeArray& nodes, const lcnNET_elems& elem, const lcnNET_var& var)
{
    const double difference = elem.MetalTemp - elem.Temperature;
    if (!(std::fabs(difference) > kEqualTemperatures)) return 0.0;
    const double Q = elem.WettedArea * elem.hConvect * difference;
    const double most =
        std::fabs(var.Cp * elem.Massflow * (elem.MetalTemp - upstreamTemperature(nodes, elem)));
    return std::clamp(Q, -most, most);
}

double fluxOf(const lcnNET_elems& elem, double Q)
{
    return std::fabs(elem.WettedArea) < kTiny ? 0.0 : Q / elem.WettedArea;
}

}  // namespace

double prandtl(double mu, double Cp, double conductivity)
{
    return std::fabs(conductivity) < kTiny ? 0.0 : mu * Cp / conductivity;
}

double nusselt(double Re, double Pr, double friction, bool heated)
{
    if (!(Re >= kReStill)) return 0.0;
    if (Re <= kReLaminarEnd) return kLaminarNusselt;
    if (Re <= kReGnielinski) {
        // the turbulent end of the line is the correlation at Re 3000, where Re - 1000 is 2000
        const double turbulent = gnielinski(kReGnielinski - 1000.0, Pr, friction);
        return kLaminarNusselt +
               (turbulent - kLaminarNusselt) * (Re - kReLaminarEnd) / (kReGnielinski - kReLaminarEnd);
    }
    if (Re <= kReDittusBoelter) return gnielinski(Re - 1000.0, Pr, friction);
    return 0.023 * std::pow(Re, 0.8) * std::pow(Pr, heated ? 0.4 : 0.3);
}

double upstreamTemperature(const NodeArray& nodes, const lcnNET_elems& elem)
{
    return nodes[elem.Massflow >= 0.0 ? elem.LocalStartNode : elem.LocalEndNode].Temperature;
}

double elementHeat(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e)
{
    lcnNET_elems& elem = elements[e];
    if (var.Energy == 0 || elem.subKind == kGivenHeatA || elem.subKind == kGivenHeatB) return elem.heat;

    switch (elem.Energy_var) {
    case kWall:
    case kWallTemperature:
        if (isCurve(elem.type)) break;
        elem.hConvect = convection(nodes, elem, var);
        elem.heat = heatFromWall(nodes, elem, var);
        elem.HeatFlux = fluxOf(elem, elem.heat);
        break;
    case kFlux:
    case kStoredFlux:
        elem.heat = elem.WettedArea * elem.HeatFlux;
        break;
    case kRise:
        // kept: the rise counts along the element's direction, so that a reversed flow is cooled by it.
        elem.heat = var.Cp * elem.Massflow * elem.TemperatureRise;
        elem.HeatFlux = fluxOf(elem, elem.heat);
        break;
    case kHeat:
        elem.HeatFlux = fluxOf(elem, elem.heat);
        elem.hConvect = convection(nodes, elem, var);
        if (std::fabs(elem.hConvect) > kTiny && std::fabs(elem.WettedArea) > kTiny)
            elem.MetalTemp = elem.heat / (elem.hConvect * elem.WettedArea) + elem.Temperature;
        break;
    default:
        break;
    }
    return elem.heat;
}

}  // namespace lcn
