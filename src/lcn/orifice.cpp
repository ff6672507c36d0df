#include "orifice.h"

#include <cmath>

#include "constants.h"

namespace lcn
{

namespace
{
constexpr double kFlangeLength = 0.0508;    // [m] two inches: marks flange tappings
constexpr double kFlangeTapping = 0.0254;   // [m] one inch
constexpr double kLengthTolerance = 1e-10;  // [m]
constexpr double kSmallestRe = 10.0;   // [-] creeping flow: the coefficient is that of this Reynolds number
constexpr double kSmallPipe = 0.0712;  // [m] below it a further term applies
}  // namespace

Tappings tappingsOf(double length, double diameter)
{
    if (std::fabs(length - kFlangeLength) < kLengthTolerance)
        return {kFlangeTapping / diameter, kFlangeTapping / diameter};
    if (std::fabs(length - 1.5 * diameter) < kLengthTolerance) return {1.0, 0.47};
    return {0.0, 0.0};
}

double readerHarrisGallagher(double beta, double Re, const Tappings& tappings, double diameter)
{
    const double beta4 = std::pow(beta, 4.0);
    const double A = std::pow(19000.0 * beta / Re, 0.8);
    const double M2 = 2.0 * tappings.L2 / (1.0 - beta);
    double C = 0.5961 + 0.0261 * std::pow(beta, 2.0) - 0.216 * std::pow(beta, 8.0) +
               0.000521 * std::pow(1e6 * beta / Re, 0.7) +
               (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / Re, 0.3) +
               (0.043 + 0.080 * std::exp(-10.0 * tappings.L1) - 0.123 * std::exp(-7.0 * tappings.L1)) *
                   (1.0 - 0.11 * A) * beta4 / (1.0 - beta4) -
               0.031 * (M2 - 0.8 * std::pow(M2, 1.1)) * std::pow(beta, 1.3);
    // kept: the published term has D in millimetres; with D in metres it is about 0.031 (0.75 - beta) for
    // every small pipe, and solved orifice flows rest on that value.
    if (diameter < kSmallPipe) C += 0.011 * (0.75 - beta) * (2.8 - diameter / 25.4);
    return C;
}

double expansibility(double beta, double p1, double p2, double kappa)
{
    return 1.0 - (0.351 + 0.256 * std::pow(beta, 4.0) + 0.93 * std::pow(beta, 8.0)) *
                     (1.0 - std::pow(p2 / p1, 1.0 / kappa));
}

double orificeResistance(double beta, double Re, const Tappings& tappings, double diameter, double epsilon)
{
    if (Re <= kTiny) return 0.0;
    // As Re falls the correlation grows beyond all bounds (far outside its published range), and the loss of
    // an orifice that hardly flows would vanish below the last place of its pressures: no iteration could
    // settle it.
    const double usedRe = std::fmax(Re, kSmallestRe);
    const double C =
        readerHarrisGallagher(beta, usedRe, tappings, diameter) / std::sqrt(1.0 - std::pow(beta, 4.0));
    const double d = beta * diameter;
    return 0.5 / std::pow(C * epsilon * kPi * d * d / 4.0, 2.0);
}

double creepingOrificeResistance(double beta, const Tappings& tappings, double diameter)
{
    return orificeResistance(beta, kSmallestRe, tappings, diameter, 1.0);
}

}  // namespace lcn
