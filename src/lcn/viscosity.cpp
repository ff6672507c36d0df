#include "viscosity.h"

#include <algorithm>
#include <cmath>

#include "constants.h"

namespace lcn
{

namespace
{
constexpr double kLawFrom = 273.15;  // [K] range of the law: liquid water at ambient pressure
constexpr double kLawTo = 373.15;    // [K]
}  // namespace

double vogelViscosity(double A, double B, double C, double T)
{
    const double Tc = std::clamp(T, kLawFrom, kLawTo);
    return A * std::exp((B - 273.15) / (Tc + C - 546.3));
}

double viscosity(const lcnNET_var& var, double T)
{
    return var.ViscosityLaw ? vogelViscosity(var.ViscA, var.ViscB, var.ViscC, T) : var.Viscosity;
}

double reynolds(const lcnNET_elems& elem, double mu)
{
    if (std::fabs(elem.density) < kTiny || std::fabs(elem.Area) < kTiny || std::fabs(mu) < kTiny) return 0.0;
    return std::fabs(elem.Massflow / elem.density / elem.Area) * elem.density * elem.diam / mu;
}

double reynoldsPerFlow(const lcnNET_elems& elem, double mu)
{
    if (std::fabs(elem.density) < kTiny || std::fabs(elem.Area) < kTiny || std::fabs(mu) < kTiny) return 0.0;
    return elem.diam / elem.Area / mu;
}

}  // namespace lcn
