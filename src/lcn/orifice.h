// orifice.h: flow through an orifice plate.
#pragma once

namespace lcn
{

/// Tapping distances of an orifice plate, in pipe diameters: L1 upstream of the plate, L2 downstream of it.
struct Tappings {
    double L1;
    double L2;
};

/// Tapping arrangement selected by the element's length [m]: 0.0508 (2 in) flange tappings (1 in each), 1.5
/// diameters D and D/2 tappings, any other length corner tappings. diameter [m].
Tappings tappingsOf(double length, double diameter);

/// Discharge coefficient [-] of an orifice plate without the approach factor: Reader-Harris and Gallagher
/// (1998), ISO 5167-2:2003 equation (4). beta [-] bore over pipe diameter, Re [-] > 0 on the pipe diameter,
/// diameter [m].
/// Published for beta 0.1..0.75, Re from 5e3; not checked here.
double readerHarrisGallagher(double beta, double Re, const Tappings& tappings, double diameter);

/// Expansibility [-] of a gas: ISO 5167-2:2003 equation (5). p1 >= p2 [Pa], kappa [-] isentropic exponent.
double expansibility(double beta, double p1, double p2, double kappa);

/// Resistance r2 [1/m4] of dp = r2 rho Q^2: 0.5 / (C / sqrt(1 - beta^4) epsilon pi d^2 / 4)^2, d = beta D.
/// 0.0 for Re <= 3e-38; C is that of Re 10 below it. epsilon [-] expansibility, 1 for a liquid.
double orificeResistance(double beta, double Re, const Tappings& tappings, double diameter, double epsilon);

/// The same resistance in creeping flow, at Re 10 and below, of a liquid.
double creepingOrificeResistance(double beta, const Tappings& tappings, double diameter);

}  // namespace lcn
