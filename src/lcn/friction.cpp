#include "friction.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

constexpr int kColebrookSteps = 51;
constexpr double kColebrookTolerance = 1e-6;  // [-] on 1/sqrt(f)
constexpr double kUndampedFrom = 0.4;         // [-] relaxpp from which a friction factor is taken whole

double square(double x)
{
    return x * x;
}

}  // namespace

double swameeJain(double Re, double relRough)
{
    const double x = std::log10(relRough / 3.7 + 5.74 / std::pow(Re, 0.9));
    return 0.25 / (x * x);
}

std::optional<double> colebrookWhite(double Re, double relRough)
{
    // residual in x = 1/sqrt(f)
    const auto g = [=](double x) { return -x - 2.0 * std::log10(relRough / 3.7 + 2.51 * x / Re); };

    const double x0 = 1.0 / std::sqrt(swameeJain(Re, relRough));
    double a = 0.9 * x0;
    double b = 1.1 * x0;
    double c = x0;
    for (int step = 0; step < kColebrookSteps; ++step) {
        if (g(a) * g(b) < 0.0)
            c = b;
        else
            a = b;
        const double next = a - (c - a) * g(a) / (g(c) - g(a));
        if (std::fabs(next - b) < kColebrookTolerance) return 1.0 / square(next);
        b = next;
    }
    return std::nullopt;
}

double haaland(double Re, double relRough)
{
    return 1.0 / square(-1.8 * std::log10(6.9 / Re + std::pow(relRough / 3.7, 1.11)));
}

double serghides(double Re, double relRough)
{
    const double A = -2.0 * std::log10(relRough / 3.7 + 12.0 / Re);
    const double B = -2.0 * std::log10(relRough / 3.7 + 2.51 * A / Re);
    const double C = -2.0 * std::log10(relRough / 3.7 + 2.51 * B / Re);
    const double curvature = C - 2.0 * B + A;
    // three equal steps: the iteration has settled and there is nothing to accelerate
    const double x = std::fabs(curvature) < kTiny ? A : A - square(B - A) / curvature;
    return 1.0 / square(x);
}

double altshul(double Re, double relRough)
{
    const double f = 0.11 * std::pow(68.0 / Re + relRough, 0.25);
    return f >= 0.018 ? f : 0.85 * f + 0.0028;
}

double evangelides(double Re, double relRough)
{
    const double y = 7.0 - std::log10(Re);
    return (0.2479 - 9.47e-05 * (y * y * y * y)) /
           square(std::log10(relRough / 3.615 + 7.366 / std::pow(Re, 0.9142)));
}

std::optional<double> turbulentFriction(int method, double Re, double relRough)
{
    switch (method) {
    case 2:
        return colebrookWhite(Re, relRough);
    case 3:
        return haaland(Re, relRough);
    case 4:
        return serghides(Re, relRough);
    case 5:
        return altshul(Re, relRough);
    case 6:
        return evangelides(Re, relRough);
    default:
        return swameeJain(Re, relRough);
    }
}

double transitionFriction(double Re, double Cl, double fTurbulent)
{
    const double fLaminar = Cl / kReLaminarEnd;
    return fLaminar + (fTurbulent - fLaminar) * (Re - kReLaminarEnd) / (kReTurbulentStart - kReLaminarEnd);
}

double frictionLaw(int method, double Re, double relRough, double Cl)
{
    if (Re <= kTiny) return kFrictionAtRest;
    if (Re <= kReLaminarEnd) return std::min(Cl / Re, kFrictionAtRest);
    if (Re >= kReTurbulentStart) return turbulentFriction(method, Re, relRough).value_or(kFrictionAtRest);

    // kept: a correlation without a root counts as 0 here and as 64 above 5000; solved flows rest on it.
    const double fTurbulent = turbulentFriction(method, kReTurbulentStart, relRough).value_or(0.0);
    return transitionFriction(Re, Cl, fTurbulent);
}

double frictionWeight(const lcnNET_var& var)
{
    // kept: damped only below 0.4: an ordinary solve (0.5) takes f whole, a stagnating one (0.1) damps it.
    return var.relaxpp >= kUndampedFrom ? 1.0 : var.relaxpp;
}

double undampedFriction(const lcnNET_elems& elem, const lcnNET_var& var)
{
    const double Re = reynolds(elem, viscosity(var, elem.Temperature));
    return frictionLaw(var.FrictionMethod, Re, elem.rough / elem.diam, elem.LaminarFactor);
}

double frictionFactor(lcnNET_elems& elem, const lcnNET_var& var)
{
    const double f = undampedFriction(elem, var);
    elem.friction += frictionWeight(var) * (f - elem.friction);
    return f;
}

}  // namespace lcn
