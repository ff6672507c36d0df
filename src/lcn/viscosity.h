// viscosity.h: dynamic viscosity and Reynolds number.
#pragma once

#include "records.h"

namespace lcn
{

/// Dynamic viscosity [Pa s] of a liquid at T [K]: mu = A exp((B - 273.15) / (Tc + C - 546.3)), Tc = T clamped
/// to 273.15..373.15 K. Vogel (1921) in the constants of the fluid; A [Pa s], B and C [K].
double vogelViscosity(double A, double B, double C, double T);

/// Dynamic viscosity [Pa s] of the circuit's fluid at T [K]: the law above when ViscosityLaw is set, else
/// Viscosity.
double viscosity(const lcnNET_var& var, double T);

/// Reynolds number [-] of an element, >= 0: |m / rho / A| rho D / mu. 0.0 without density, area, diameter or
/// viscosity.
/// Reads Massflow, density, Area, diam.
double reynolds(const lcnNET_elems& elem, double mu);

/// Reynolds number per mass flow [s/kg] of an element: D / (A mu), 0.0 where reynolds is.
double reynoldsPerFlow(const lcnNET_elems& elem, double mu);

}  // namespace lcn
