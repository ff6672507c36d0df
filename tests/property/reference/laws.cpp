#include "laws.h"

#include <algorithm>
#include <cmath>

#include "dense.h"

namespace reference
{

using support::Description;
using support::ElementData;

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kGravity = 9.80665;  // [m/s2], ISO 80000-3

double signedSquare(double x)
{
    return x * std::fabs(x);
}

double distance(const Description& d, const ElementData& element)
{
    const auto& a = d.nodes[static_cast<std::size_t>(element.start)].at;
    const auto& b = d.nodes[static_cast<std::size_t>(element.end)].at;
    double squares = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        squares += (a[axis] - b[axis]) * (a[axis] - b[axis]);
    return std::sqrt(squares);
}

/// Colebrook (1939): the root x = 1/sqrt(f) of x + 2 log10(t/3.7 + 2.51 x/Re) by Newton's method. The
/// function is increasing and concave, so that steps from below the root never pass it.
double colebrook(double Re, double t)
{
    double x = 1.0;
    for (int step = 0; step < 60; ++step) {
        const double inner = t / 3.7 + 2.51 * x / Re;
        const double slope = 1.0 + 2.0 * 2.51 / (Re * inner * std::log(10.0));
        const double change = (x + 2.0 * std::log10(inner)) / slope;
        x -= change;
        if (std::fabs(change) < 1e-15 * x) break;
    }
    return 1.0 / (x * x);
}

/// Serghides (1984).
double serghides(double Re, double t)
{
    const double A = -2.0 * std::log10(t / 3.7 + 12.0 / Re);
    const double B = -2.0 * std::log10(t / 3.7 + 2.51 * A / Re);
    const double C = -2.0 * std::log10(t / 3.7 + 2.51 * B / Re);
    const double x = A - (B - A) * (B - A) / (C - 2.0 * B + A);
    return 1.0 / (x * x);
}

/// Altshul (1952) as given by Tsal (1989).
double altshul(double Re, double t)
{
    const double f = 0.11 * std::pow(68.0 / Re + t, 0.25);
    return f < 0.018 ? 0.85 * f + 0.0028 : f;
}

/// Evangelides, Papaevangelou and Tzimopoulos (2010).
double evangelides(double Re, double t)
{
    const double x = std::log10(t / 3.615 + 7.366 / std::pow(Re, 0.9142));
    return (0.2479 - 9.47e-5 * std::pow(7.0 - std::log10(Re), 4.0)) / (x * x);
}

/// Friction factor of any flow: 64/Re up to 2300 and never above 64, a straight line to 5000, turbulent.
double friction(int method, double Re, double t)
{
    if (Re < 1.0) return 64.0;
    if (Re <= 2300.0) return 64.0 / Re;
    if (Re >= 5000.0) return turbulentFriction(method, Re, t);
    const double part = (Re - 2300.0) / (5000.0 - 2300.0);
    return (1.0 - part) * 64.0 / 2300.0 + part * turbulentFriction(method, 5000.0, t);
}

/// Weisbach (1845), Darcy (1857): dp = (f L/D + K) rho V |V| / 2.
Law darcyWeisbach(const Description& d, const ElementData& element)
{
    const double A = areaOf(element);
    const double D = element.diameter;
    const double L = distance(d, element);
    const double K = propertyOf(element, TAVELL_ELEMENT_K_SPECIFIED);
    const double t = propertyOf(element, TAVELL_ELEMENT_ROUGHNESS) / D;
    const int method = static_cast<int>(d.friction);
    const double density = d.density;
    const double viscosity = d.viscosity;
    return [=](double m) {
        const double V = m / (density * A);
        const double f = friction(method, std::fabs(V) * density * D / viscosity, t);
        return (f * L / D + K) * density * signedSquare(V) / 2.0;
    };
}

/// dp / rho = r |Q|^n + K Q^2 / (2 A^2), with the sign of the flow.
Law powerLaw(const Description& d, const ElementData& element, double r, double n)
{
    const double A = areaOf(element);
    const double K = propertyOf(element, TAVELL_ELEMENT_K_SPECIFIED);
    const double density = d.density;
    return [=](double m) {
        const double Q = m / density;
        return density * (std::copysign(r * std::pow(std::fabs(Q), n), Q) + K * signedSquare(Q / A) / 2.0);
    };
}

/// Williams and Hazen (1905) in SI units.
Law hazenWilliams(const Description& d, const ElementData& element)
{
    const double C = propertyOf(element, TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT);
    const double slope = 10.67 / (std::pow(C, 1.85) * std::pow(element.diameter, 4.87));
    return powerLaw(d, element, 9.806 * slope * distance(d, element), 1.85);
}

Law generalLoss(const Description& d, const ElementData& element)
{
    const double r = std::pow(d.density, propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_A) - 1.0) *
                     propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_CK) *
                     std::pow(distance(d, element), propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_B)) /
                     std::pow(element.diameter, propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_C));
    return powerLaw(d, element, r, propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_D));
}

/// Kv [m3/h] passes at 1 bar with water of 998.97 kg/m3 (IEC 60534-2-1).
Law valve(const Description& d, double Kv)
{
    const double density = d.density;
    return [=](double m) { return 1e5 * density / 998.97 * signedSquare(m / density * 3600.0 / Kv); };
}

/// Reader-Harris and Gallagher (1998). L1, L2: places of the tappings over the diameter D [m]. The term of small
/// pipes takes D in metres, as docs/theory.md says.
double dischargeCoefficient(double Re, double D, double beta, double L1, double L2)
{
    const double A = std::pow(19000.0 * beta / Re, 0.8);
    const double M2 = 2.0 * L2 / (1.0 - beta);
    const double beta4 = beta * beta * beta * beta;
    double C = 0.5961 + 0.0261 * beta * beta - 0.216 * beta4 * beta4;
    C += 0.000521 * std::pow(1e6 * beta / Re, 0.7);
    C += (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / Re, 0.3);
    C += (0.043 + 0.080 * std::exp(-10.0 * L1) - 0.123 * std::exp(-7.0 * L1)) * (1.0 - 0.11 * A) * beta4 /
         (1.0 - beta4);
    C -= 0.031 * (M2 - 0.8 * std::pow(M2, 1.1)) * std::pow(beta, 1.3);
    if (D < 0.0712) C += 0.011 * (0.75 - beta) * (2.8 - D / 25.4);
    return C;
}

Law orifice(const Description& d, const ElementData& element)
{
    const double D = element.diameter;
    const double A = areaOf(element);
    const double bore = propertyOf(element, TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER);
    const double beta = bore / D;
    const double density = d.density;
    const double viscosity = d.viscosity;
    const double length = distance(d, element);
    double L1 = 0.0;
    double L2 = 0.0;
    if (std::fabs(length - 0.0508) < 1e-10) {
        L1 = L2 = 0.0254 / D;
    } else if (std::fabs(length - 1.5 * D) < 1e-10) {
        L1 = 1.0;
        L2 = 0.47;
    }
    return [=](double m) {
        const double Re = std::max(10.0, std::fabs(m) * D / (A * viscosity));
        const double C = dischargeCoefficient(Re, D, beta, L1, L2);
        const double flowArea = C / std::sqrt(1.0 - std::pow(beta, 4.0)) * kPi * bore * bore / 4.0;
        return density * signedSquare(m / density / flowArea) / 2.0;
    };
}

/// The cubic through a pump's points by least squares (normal equations, flows scaled to 1) inside the curve;
/// outside it the straight line from the shut-off point through the zero of the cubic.
Law pump(const ElementData& element, double density)
{
    const double largest = element.curveFlows.back();
    DenseMatrix normal(4);
    std::vector<double> c(4, 0.0);
    for (std::size_t point = 0; point < element.curveFlows.size(); ++point) {
        const double x = element.curveFlows[point] / largest;
        const double powers[] = {1.0, x, x * x, x * x * x};
        for (std::size_t i = 0; i < 4; ++i) {
            c[i] += powers[i] * element.curvePressures[point];
            for (std::size_t j = 0; j < 4; ++j)
                normal.at(i, j) += powers[i] * powers[j];
        }
    }
    normal.factorise();
    normal.solve(c);
    const auto rise = [=](double Q) {
        const double x = Q / largest;
        return c[0] + x * (c[1] + x * (c[2] + x * c[3]));
    };
    double low = 0.0;
    double high = largest;
    while (rise(high) > 0.0)
        high *= 1.1;
    for (int halving = 0; halving < 100; ++halving)
        (rise((low + high) / 2.0) > 0.0 ? low : high) = (low + high) / 2.0;
    const double runOut = high;
    return [=](double m) {
        const double Q = m / density;
        return Q >= 0.0 && Q < runOut ? -rise(Q) : -c[0] * (1.0 - Q / runOut);
    };
}

}  // namespace

double areaOf(const ElementData& element)
{
    return element.area > 0.0 ? element.area : kPi * element.diameter * element.diameter / 4.0;
}

double propertyOf(const ElementData& element, int id)
{
    for (const auto& property : element.properties)
        if (static_cast<int>(property[0]) == id) return property[1];
    return 0.0;
}

double heightPotential(const Description& d, const support::NodeData& node)
{
    double along = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        along += d.gravity[axis] * node.at[axis];
    return -kGravity * along;
}

double turbulentFriction(int method, double Re, double t)
{
    switch (method) {
    case TAVELL_FRICTION_COLEBROOK:
        return colebrook(Re, t);
    case TAVELL_FRICTION_HAALAND: {
        const double x = -1.8 * std::log10(6.9 / Re + std::pow(t / 3.7, 1.11));
        return 1.0 / (x * x);
    }
    case TAVELL_FRICTION_SERGHIDES:
        return serghides(Re, t);
    case TAVELL_FRICTION_ALTSHUL:
        return altshul(Re, t);
    case TAVELL_FRICTION_EVANGELIDES:
        return evangelides(Re, t);
    default: {
        const double x = std::log10(t / 3.7 + 5.74 / std::pow(Re, 0.9));
        return 0.25 / (x * x);
    }
    }
}

Law lawOf(const Description& d, const ElementData& element)
{
    switch (element.type) {
    case TAVELL_PUMP:
        return pump(element, d.density);
    case TAVELL_LOSS: {
        const double perFlow = element.curvePressures.back() / (element.curveFlows.back() * d.density);
        return [=](double m) { return perFlow * m; };
    }
    case TAVELL_HAZEN_WILLIAMS_PIPE:
        return hazenWilliams(d, element);
    case TAVELL_ORIFICE:
        return orifice(d, element);
    case TAVELL_GENERAL_LOSS:
        return generalLoss(d, element);
    case TAVELL_KV_VALVE:
        return valve(d, propertyOf(element, TAVELL_ELEMENT_VALVE_KV_COEFFICIENT));
    case TAVELL_CV_VALVE:
        return valve(d, 0.865 * propertyOf(element, TAVELL_ELEMENT_VALVE_CV_COEFFICIENT));
    default:
        return darcyWeisbach(d, element);
    }
}

Law lawAtFlowEnd(const Description& d, const ElementData& element)
{
    if (element.type != TAVELL_LOSS) return lawOf(d, element);
    const double density = d.density;
    const std::vector<double> flows = element.curveFlows;
    const std::vector<double> drops = element.curvePressures;
    return [=](double m) {
        const double Q = m / density;
        if (Q < 0.0) return -drops.back();
        if (Q == 0.0 || Q >= flows.back()) return drops.back();
        if (Q <= flows.front()) return drops.front();
        std::size_t i = 1;
        while (flows[i] < Q)
            ++i;
        return drops[i - 1] + (drops[i] - drops[i - 1]) * (Q - flows[i - 1]) / (flows[i] - flows[i - 1]);
    };
}

}  // namespace reference
