// friction.h: the Darcy friction factor.
#pragma once

#include <optional>

#include "records.h"

namespace lcn
{

/// Friction factor [-] of a fluid at rest, and of a correlation that has no answer.
inline constexpr double kFrictionAtRest = 64.0;

inline constexpr double kReLaminarEnd = 2300.0;      // [-] laminar up to here
inline constexpr double kReTurbulentStart = 5000.0;  // [-] turbulent from here

// Turbulent correlations: Re [-] > 0, relRough t = eps / D [-] >= 0.

/// Swamee and Jain (1976): f = 0.25 / [log10(t/3.7 + 5.74/Re^0.9)]^2. Published for Re 5e3..1e8, t
/// 1e-6..1e-2.
double swameeJain(double Re, double relRough);
/// Colebrook (1939): 1/sqrt(f) = -2 log10(t/3.7 + 2.51/(Re sqrt(f))), by false position; nothing when that
/// does not settle in 51 steps.
std::optional<double> colebrookWhite(double Re, double relRough);
/// Haaland (1983): f = 1 / [-1.8 log10(6.9/Re + (t/3.7)^1.11)]^2. Published for Re 4e3..1e8.
double haaland(double Re, double relRough);
/// Serghides (1984): Steffensen acceleration of three Colebrook steps. Published for Re > 2100.
double serghides(double Re, double relRough);
/// Altshul (1952), in the two-branch form of Tsal (1989): f' = 0.11 (68/Re + t)^0.25; f' if >= 0.018, else
/// 0.85 f' + 0.0028.
double altshul(double Re, double relRough);
/// Evangelides, Papaevangelou and Tzimopoulos (2010):
/// f = (0.2479 - 9.47e-5 (7 - log10 Re)^4) / [log10(t/3.615 + 7.366/Re^0.9142)]^2. Published for Re 1e4..1e7.
double evangelides(double Re, double relRough);

/// Turbulent friction factor [-] by correlation: 2 Colebrook-White, 3 Haaland, 4 Serghides, 5 Altshul, 6
/// Evangelides et al., any other method Swamee-Jain.
std::optional<double> turbulentFriction(int method, double Re, double relRough);

/// Friction factor [-] between Re 2300 and 5000: a straight line in Re from the laminar one there to fTurbulent,
/// the turbulent one at 5000.
double transitionFriction(double Re, double Cl, double fTurbulent);

/// Darcy friction factor [-] for any flow. Cl [-] is the laminar constant, f = Cl/Re (64 for a round pipe,
/// Hagen 1839, Poiseuille 1840). Laminar up to Re 2300, turbulent from 5000, a straight line in Re between.
double frictionLaw(int method, double Re, double relRough, double Cl);

/// Weight [-] of a new friction factor against the stored one.
double frictionWeight(const lcnNET_var& var);

/// Friction factor [-] of the law at the current flow. Types 1, 9, 10. Reads Massflow, density, Area, diam,
/// rough, LaminarFactor, Temperature.
double undampedFriction(const lcnNET_elems& elem, const lcnNET_var& var);

/// Moves elem.friction toward undampedFriction, which it returns; writes nothing else.
double frictionFactor(lcnNET_elems& elem, const lcnNET_var& var);

}  // namespace lcn
