#include "fluid_water.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace kit
{

namespace
{

constexpr double kGasConstant = 461.526;          // [J/(kg K)], specific gas constant of IAPWS-IF97
constexpr double kCriticalTemperature = 647.096;  // [K]
constexpr double kCriticalDensity = 322.0;        // [kg/m3]
constexpr double kAtmosphere = 101325.0;          // [Pa]

/// A term n (7.1 - pi)^I (tau - 1.222)^J of the Gibbs energy.
struct GibbsTerm {
    int I;
    int J;
    double n;
};

// IAPWS-IF97, table 2
constexpr GibbsTerm kRegion1[] = {
    {0, -2, 0.14632971213167},       {0, -1, -0.84548187169114},       {0, 0, -0.37563603672040e1},
    {0, 1, 0.33855169168385e1},      {0, 2, -0.95791963387872},        {0, 3, 0.15772038513228},
    {0, 4, -0.16616417199501e-1},    {0, 5, 0.81214629983568e-3},      {1, -9, 0.28319080123804e-3},
    {1, -7, -0.60706301565874e-3},   {1, -1, -0.18990068218419e-1},    {1, 0, -0.32529748770505e-1},
    {1, 1, -0.21841717175414e-1},    {1, 3, -0.52838357969930e-4},     {2, -3, -0.47184321073267e-3},
    {2, 0, -0.30001780793026e-3},    {2, 1, 0.47661393906987e-4},      {2, 3, -0.44141845330846e-5},
    {2, 17, -0.72694996297594e-15},  {3, -4, -0.31679644845054e-4},    {3, 0, -0.28270797985312e-5},
    {3, 6, -0.85205128120103e-9},    {4, -5, -0.22425281908000e-5},    {4, -2, -0.65171222895601e-6},
    {4, 10, -0.14341729937924e-12},  {5, -8, -0.40516996860117e-6},    {8, -11, -0.12734301741641e-8},
    {8, -6, -0.17424871230634e-9},   {21, -29, -0.68762131295531e-18}, {23, -31, 0.14478307828521e-19},
    {29, -38, 0.26335781662795e-22}, {30, -39, -0.11947622640071e-22}, {31, -40, 0.18228094581404e-23},
    {32, -41, -0.93537087292458e-25}};

// IAPWS-IF97, table 34
constexpr double kRegion4[] = {
    0.11670521452767e4, -0.72421316703206e6, -0.17073846940092e2, 0.12020824702470e5, -0.32325550322333e7,
    0.14915108613530e2, -0.48232657361591e4, 0.40511340542057e6,  -0.23855557567849,  0.65017534844798e3};

// IAPWS R12-08, table 2: rows i of (1/T - 1)^i, columns j of (rho - 1)^j
constexpr double kViscosity[6][7] = {{5.20094e-1, 2.22531e-1, -2.81378e-1, 1.61913e-1, -3.25372e-2, 0.0, 0.0},
                                     {8.50895e-2, 9.99115e-1, -9.06851e-1, 2.57399e-1, 0.0, 0.0, 0.0},
                                     {-1.08374, 1.88797, -7.72479e-1, 0.0, 0.0, 0.0, 0.0},
                                     {-2.89555e-1, 1.26613, -4.89837e-1, 0.0, 6.98452e-2, 0.0, -4.35673e-3},
                                     {0.0, 0.0, -2.57040e-1, 0.0, 0.0, 8.72102e-3, 0.0},
                                     {0.0, 1.20573e-1, 0.0, 0.0, 0.0, 0.0, -5.93264e-4}};

// IAPWS R15-11, table 2: rows and columns as above
constexpr double kConductivity[5][6] = {
    {1.60397357, -0.646013523, 0.111443906, 0.102997357, -0.0504123634, 0.00609859258},
    {2.33771842, -2.78843778, 1.53616167, -0.463045512, 0.0832827019, -0.00719201245},
    {2.19650529, -4.54580785, 3.55777244, -1.40944978, 0.275418278, -0.0205938816},
    {-1.21051378, 1.60812989, -0.621178141, 0.0716373224, 0.0, 0.0},
    {-2.7203370, 4.57586331, -3.18369245, 1.1168348, -0.19268305, 0.012913842}};

/// The residual factor of both transport properties: exp(rho sum_i (1/T - 1)^i sum_j c_ij (rho - 1)^j), T and
/// rho reduced.
template <std::size_t rows, std::size_t columns>
double residualFactor(const double (&c)[rows][columns], double T, double rho)
{
    double sum = 0.0;
    double temperaturePower = 1.0;
    for (const auto& row : c) {
        double densityPower = 1.0;
        for (const double coefficient : row) {
            sum += temperaturePower * coefficient * densityPower;
            densityPower *= rho - 1.0;
        }
        temperaturePower *= 1.0 / T - 1.0;
    }
    return std::exp(rho * sum);
}

}  // namespace

double waterSaturationPressure(double T)
{
    const double* const n = kRegion4;
    const double theta = T + n[8] / (T - n[9]);
    const double A = theta * theta + n[0] * theta + n[1];
    const double B = n[2] * theta * theta + n[3] * theta + n[4];
    const double C = n[5] * theta * theta + n[6] * theta + n[7];
    return 1e6 * std::pow(2.0 * C / (-B + std::sqrt(B * B - 4.0 * A * C)), 4);
}

WaterState liquidWater(double T, double p)
{
    // gamma(pi, tau) = sum n (7.1 - pi)^I (tau - 1.222)^J with its derivatives:
    // v = R T / p pi gamma_pi, cp = -R tau^2 gamma_tautau
    const double pi = p / 16.53e6;
    const double tau = 1386.0 / T;
    double gammaPi = 0.0;
    double gammaTauTau = 0.0;
    for (const GibbsTerm& term : kRegion1) {
        const double piPower = std::pow(7.1 - pi, term.I);
        const double tauPower = std::pow(tau - 1.222, term.J);
        gammaPi -= term.n * term.I * piPower / (7.1 - pi) * tauPower;
        gammaTauTau += term.n * piPower * term.J * (term.J - 1) * tauPower / ((tau - 1.222) * (tau - 1.222));
    }
    return {p / (kGasConstant * T * pi * gammaPi), -kGasConstant * tau * tau * gammaTauTau};
}

double waterViscosity(double T, double rho)
{
    // mu = mu0 mu1, mu0 = 100 sqrt(T) / (H0 + H1/T + H2/T^2 + H3/T^3) [1e-6 Pa s], T and rho reduced
    const double t = T / kCriticalTemperature;
    const double mu0 =
        100.0 * std::sqrt(t) / (1.67752 + 2.20462 / t + 0.6366564 / (t * t) - 0.241605 / (t * t * t));
    return 1e-6 * mu0 * residualFactor(kViscosity, t, rho / kCriticalDensity);
}

double waterConductivity(double T, double rho)
{
    // k = k0 k1, k0 = sqrt(T) / (L0 + L1/T + L2/T^2 + L3/T^3 + L4/T^4) [1e-3 W/(m K)], T and rho reduced
    const double t = T / kCriticalTemperature;
    const double k0 = std::sqrt(t) / (2.443221e-3 + 1.323095e-2 / t + 6.770357e-3 / (t * t) -
                                      3.454586e-3 / (t * t * t) + 4.096266e-4 / (t * t * t * t));
    return 1e-3 * k0 * residualFactor(kConductivity, t, rho / kCriticalDensity);
}

LiquidValues water(double T)
{
    const WaterState state = liquidWater(T, std::max(kAtmosphere, waterSaturationPressure(T)));
    return {state.density, waterViscosity(T, state.density), state.specificHeat,
            waterConductivity(T, state.density)};
}

}  // namespace kit
