#include "fluid_laws.h"

#include <cmath>

#include "fluid_water.h"

namespace kit
{

namespace
{

constexpr double kIcePoint = 273.15;  // [K], 0 degC

/// One property of a mixture: sum_ij c_ij (x - xm)^i (y - ym)^j, x in percent by mass, y in degC; rows i,
/// columns j.
using MelinderTable = double[6][4];

/// Coefficients of one mixture, Melinder (2010).
struct Melinder {
    double xm;  // [%]
    double ym;  // [degC]
    MelinderTable density;
    MelinderTable specificHeat;
    MelinderTable conductivity;
    MelinderTable viscosity;  // natural logarithm of mPa s
    double freezing[6];       // [degC], of (x - xm)^i
};

constexpr Melinder kEthyleneGlycol = {30.8462,
                                      31.728,
                                      {{1034.0, -0.4781, -2.692e-3, 4.725e-6},
                                       {1.311, -6.876e-3, 4.805e-5, 1.69e-8},
                                       {7.49e-5, 7.855e-5, -3.995e-7, 4.982e-9},
                                       {-1.062e-4, 1.229e-6, -1.153e-8, 0.0},
                                       {-9.623e-7, -7.211e-8, 0.0, 0.0},
                                       {4.891e-8, 0.0, 0.0, 0.0}},
                                      {{3737.0, 2.93, -4.675e-3, -1.389e-5},
                                       {-17.99, 0.1046, -4.147e-4, 1.847e-7},
                                       {-9.933e-2, 3.516e-4, 5.109e-6, -7.138e-8},
                                       {2.61e-3, -1.189e-6, -1.643e-7, 0.0},
                                       {1.537e-5, -4.272e-7, 0.0, 0.0},
                                       {-1.618e-6, 0.0, 0.0, 0.0}},
                                      {{0.472, 8.903e-4, -1.058e-6, -2.789e-9},
                                       {-4.286e-3, -1.473e-5, 1.059e-7, -1.142e-10},
                                       {1.747e-5, 6.814e-8, -3.612e-9, 2.365e-12},
                                       {3.017e-8, -2.412e-9, 4.004e-11, 0.0},
                                       {-1.322e-9, 2.555e-11, 0.0, 0.0},
                                       {2.678e-11, 0.0, 0.0, 0.0}},
                                      {{0.4705, -2.55e-2, 1.782e-4, -7.669e-7},
                                       {2.471e-2, -1.171e-4, 1.052e-6, -1.634e-8},
                                       {3.328e-6, 1.086e-6, 1.051e-8, -6.475e-10},
                                       {1.659e-6, 3.157e-9, 4.063e-10, 0.0},
                                       {3.089e-8, 1.831e-10, 0.0, 0.0},
                                       {-1.865e-9, 0.0, 0.0, 0.0}},
                                      {-15.25, -0.808, -1.334e-2, -7.293e-5, 1.006e-6, 1.14e-9}};

constexpr Melinder kPropyleneGlycol = {30.7031,
                                       32.7083,
                                       {{1018.0, -0.5406, -2.666e-3, 1.347e-5},
                                        {0.7604, -9.45e-3, 5.541e-5, -1.343e-7},
                                        {-2.498e-3, 2.7e-5, -4.018e-7, 3.376e-9},
                                        {-1.55e-4, 2.829e-6, -7.175e-9, 0.0},
                                        {-1.131e-6, -2.221e-8, 0.0, 0.0},
                                        {2.342e-8, 0.0, 0.0, 0.0}},
                                       {{3882.0, 2.699, -1.659e-3, -1.032e-5},
                                        {-13.04, 5.07e-2, -4.752e-5, 1.522e-6},
                                        {-0.1598, 9.534e-5, 1.167e-5, -4.87e-8},
                                        {3.539e-4, 3.102e-5, -2.95e-7, 0.0},
                                        {5e-5, -7.135e-7, 0.0, 0.0},
                                        {-4.959e-7, 0.0, 0.0, 0.0}},
                                       {{0.4513, 7.955e-4, 3.482e-8, -5.966e-9},
                                        {-4.795e-3, -1.678e-5, 8.941e-8, 1.493e-10},
                                        {2.076e-5, 1.563e-7, -4.615e-9, 9.897e-12},
                                        {-9.083e-8, -2.518e-9, 6.543e-11, 0.0},
                                        {-5.952e-10, -3.605e-11, 0.0, 0.0},
                                        {2.104e-11, 0.0, 0.0, 0.0}},
                                       {{0.6837, -3.045e-2, 2.525e-4, -1.399e-6},
                                        {3.328e-2, -3.984e-4, 4.332e-6, -1.86e-8},
                                        {5.453e-5, -8.6e-8, -1.593e-8, -4.465e-11},
                                        {-3.9e-6, 1.054e-7, -1.589e-9, 0.0},
                                        {-1.587e-8, 4.475e-10, 0.0, 0.0},
                                        {3.564e-9, 0.0, 0.0, 0.0}},
                                       {-13.25, -0.6631, -1.094e-2, -2.283e-4, -3.409e-6, 1.465e-8}};

/// The polynomial of a table at dx = x - xm [%] and dy = y - ym [K].
double melinderSum(const MelinderTable& c, double dx, double dy)
{
    double sum = 0.0;
    double xPower = 1.0;
    for (const auto& row : c) {
        sum += xPower * (row[0] + dy * (row[1] + dy * (row[2] + dy * row[3])));
        xPower *= dx;
    }
    return sum;
}

LiquidValues melinderValues(const Melinder& mixture, double T, double x)
{
    const double dx = 100.0 * x - mixture.xm;
    const double dy = T - kIcePoint - mixture.ym;
    return {melinderSum(mixture.density, dx, dy), 1e-3 * std::exp(melinderSum(mixture.viscosity, dx, dy)),
            melinderSum(mixture.specificHeat, dx, dy), melinderSum(mixture.conductivity, dx, dy)};
}

double melinderFreezing(const Melinder& mixture, double x)
{
    const double dx = 100.0 * x - mixture.xm;
    double sum = 0.0;
    double power = 1.0;
    for (const double coefficient : mixture.freezing) {
        sum += coefficient * power;
        power *= dx;
    }
    return kIcePoint + sum;
}

/// Density [kg/m3] of seawater, Sharqawy, Lienhard & Zubair (2010) eq. 8, t 0..180 degC, S 0..0.16 kg/kg, 0.1
/// %.
double seawaterDensity(double t, double S)
{
    const double pure = 9.999e2 + t * (2.034e-2 + t * (-6.162e-3 + t * (2.261e-5 - 4.657e-8 * t)));
    const double salt =
        S * (8.020e2 + t * (-2.001 + t * (1.677e-2 - 3.060e-5 * t))) - 1.613e-5 * S * S * t * t;
    return pure + salt;
}

/// Dynamic viscosity [Pa s] of seawater, Sharqawy, Lienhard & Zubair (2010) eqs. 22 and 23, t 0..180 degC,
/// S 0..0.15 kg/kg, 1.5 %.
double seawaterViscosity(double t, double S)
{
    const double pure = 4.2844e-5 + 1.0 / (0.157 * (t + 64.993) * (t + 64.993) - 91.296);
    const double A = 1.541 + 1.998e-2 * t - 9.52e-5 * t * t;
    const double B = 7.974 - 7.561e-2 * t + 4.724e-4 * t * t;
    return pure * (1.0 + A * S + B * S * S);
}

/// Specific heat [J/(kg K)] of seawater, Jamieson, Tudhope, Morris & Cartwright (1969), as in Sharqawy,
/// Lienhard & Zubair (2010) eq. 9, T 273.15..453.15 K, s 0..180 g/kg, 0.28 %.
double seawaterSpecificHeat(double T, double s)
{
    const double A = 5.328 - 9.76e-2 * s + 4.04e-4 * s * s;
    const double B = -6.913e-3 + 7.351e-4 * s - 3.15e-6 * s * s;
    const double C = 9.6e-6 - 1.927e-6 * s + 8.23e-9 * s * s;
    const double D = 2.5e-9 + 1.666e-9 * s - 7.125e-12 * s * s;
    return 1e3 * (A + T * (B + T * (C + T * D)));
}

/// Thermal conductivity [W/(m K)] of seawater, Jamieson & Tudhope (1970), as in Sharqawy, Lienhard & Zubair
/// (2010) eq. 13, T 273.15..453.15 K, s 0..160 g/kg, 3 %.
double seawaterConductivity(double T, double s)
{
    const double exponent = std::log10(240.0 + 2e-4 * s) +
                            0.434 * (2.3 - (343.5 + 0.037 * s) / T) * std::cbrt(1.0 - T / (647.3 + 0.03 * s));
    return 1e-3 * std::pow(10.0, exponent);
}

/// Dynamic viscosity [Pa s] of glycerine in water, Cheng (2008), t 0..100 degC, w 0..1:
/// mu = mu_g exp(A alpha), A = ln(mu_w / mu_g).
double glycerineViscosity(double t, double w)
{
    const double glycerol = 12.1 * std::exp((-1233.0 + t) * t / (9900.0 + 70.0 * t));
    const double pureWater = 1.790e-3 * std::exp((-1230.0 - t) * t / (36100.0 + 360.0 * t));
    const double a = 0.705 - 0.0017 * t;
    const double b = (4.9 + 0.036 * t) * std::pow(a, 2.5);
    const double alpha = 1.0 - w + a * b * w * (1.0 - w) / (a * w + b * (1.0 - w));
    return glycerol * std::exp(std::log(pureWater / glycerol) * alpha);
}

/// Density [kg/m3] of glycerine in water, Volk & Kaehler (2018), w 0..1, fitted at 15..30 degC: the volumes
/// add up but for a contraction.
double glycerineDensity(double t, double w, double waterDensity)
{
    constexpr double kPi = 3.14159265358979323846;
    const double glycerol = 1273.0 - 0.612 * t;
    const double ideal = 1.0 / (w / glycerol + (1.0 - w) / waterDensity);
    const double A = 1.78e-6 * t * t - 1.82e-4 * t + 1.41e-2;
    // The sine is a rounding error below zero at w = 1.
    const double sine = std::fmax(0.0, std::sin(std::pow(w, 1.31) * kPi));
    return ideal * (1.0 + A * std::pow(sine, 0.81));
}

}  // namespace

LiquidValues seawater(double T, double S)
{
    const double t = T - kIcePoint;
    // The older correlations are in degrees of IPTS-68 and practical salinity, 1.00024 t and S / 1.00472.
    const double T68 = kIcePoint + 1.00024 * t;
    const double practical = 1e3 * S / 1.00472;
    return {seawaterDensity(t, S), seawaterViscosity(t, S), seawaterSpecificHeat(T68, practical),
            seawaterConductivity(T68, practical)};
}

LiquidValues ethyleneGlycol(double T, double x)
{
    return melinderValues(kEthyleneGlycol, T, x);
}

LiquidValues propyleneGlycol(double T, double x)
{
    return melinderValues(kPropyleneGlycol, T, x);
}

double ethyleneGlycolFreezing(double x)
{
    return melinderFreezing(kEthyleneGlycol, x);
}

double propyleneGlycolFreezing(double x)
{
    return melinderFreezing(kPropyleneGlycol, x);
}

LiquidValues glycerine(double T, double w)
{
    const double t = T - kIcePoint;
    const LiquidValues pureWater = water(T);

    // Pure glycerol: Daubert & Danner (1989), 92.094 kg/kmol.
    const double specificHeat = (68230.0 + 505.2 * T) / 92.094;
    const double conductivity = 0.258 + 1.134e-4 * T;
    // Mixtures: specific heats add up by mass, and conductivity is the geometric mean by mass. They are
    // within 5 % and 3 % of the values of Melinder (2010) at 0..40 degC and w up to 0.6.
    return {glycerineDensity(t, w, pureWater.density), glycerineViscosity(t, w),
            w * specificHeat + (1.0 - w) * pureWater.specificHeat,
            std::pow(conductivity, w) * std::pow(pureWater.conductivity, 1.0 - w)};
}

LiquidValues mineralOil(double T, const OilGrade& grade)
{
    const double t = T - kIcePoint;

    // Lubricating oils, API MPMS 11.1 / ASTM D1250 table 54D: rho = rho15 exp(-a dt (1 + 0.8 a dt)), a =
    // 0.6278 / rho15.
    const double expansion = 0.6278 / grade.density15 * (t - 15.0);
    const double density = grade.density15 * std::exp(-expansion * (1.0 + 0.8 * expansion));

    // Walther (1931), ASTM D341 above 2 mm2/s: lg lg(nu + 0.7) = A - B lg T, through both viscosities.
    const auto walther = [](double nu) { return std::log10(std::log10(nu + 0.7)); };
    const double B = (walther(grade.viscosity40) - walther(grade.viscosity100)) /
                     (std::log10(kIcePoint + 100.0) - std::log10(kIcePoint + 40.0));
    const double A = walther(grade.viscosity40) + B * std::log10(kIcePoint + 40.0);
    const double nu = std::pow(10.0, std::pow(10.0, A - B * std::log10(T))) - 0.7;

    // Petroleum liquids, Cragoe (1929): c = (0.388 + 0.00045 tF) / sqrt(d) [cal/(g K)], tF in degF, and
    // k = 0.1172 (1 - 0.00054 t) / d [W/(m K)], d the specific gravity at 60 degF: 4 % and 10 %.
    const double gravity = grade.density15 / 999.1;
    const double specificHeat = 4186.8 * (0.388 + 0.00045 * (1.8 * t + 32.0)) / std::sqrt(gravity);
    const double conductivity = 0.1172 * (1.0 - 0.00054 * t) / gravity;
    return {density, 1e-6 * nu * density, specificHeat, conductivity};
}

}  // namespace kit
