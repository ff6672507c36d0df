#include "element_laws.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include <tavell/Constants.h>

#include "circuit_builder.h"
#include "element_inputs.h"
#include "element_kinds.h"

namespace kit
{

namespace
{

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = 3.14159265358979323846;

constexpr double kLaminarEnd = 2300.0;
constexpr double kTurbulentStart = 5000.0;
constexpr double kLaminarConstant = 64.0;        // f = 64 / Re
constexpr double kFrictionAtRest = 64.0;         // f up to Re 1
constexpr double kShortestLength = 1e-6;         // [m]
constexpr int kCurveDigits = 6;                  // of curve points
constexpr double kColdest = 273.15;              // [K], of Vogel's law
constexpr double kHottest = 373.15;              // [K]
constexpr double kSlowestOrifice = 10.0;         // Re below which the discharge coefficient stays
constexpr double kValveConstant = 1e5 / 998.97;  // [m2/s2], 1 bar over the density of water at 15.6 degC
constexpr double kKvPerCv = 0.865;
constexpr double kSecondsPerHour = 3600.0;
constexpr double kLeastSlope = 10.0;  // [Pa s/m3], of a loss curve

double square(double x)
{
    return x * x;
}

/// 1/sqrt(f) = -2 log10(t/3.7 + 2.51 x/Re) with x = 1/sqrt(f), by Newton's method from Swamee and Jain's
/// value.
double colebrook(double Re, double t)
{
    const double a = t / 3.7;
    const double b = 2.51 / Re;
    double x = -2.0 * std::log10(t / 3.7 + 5.74 / std::pow(Re, 0.9));
    for (int i = 0; i < 50; ++i) {
        const double miss = x + 2.0 * std::log10(a + b * x);
        const double slope = 1.0 + 2.0 * b / ((a + b * x) * std::log(10.0));
        const double step = miss / slope;
        x -= step;
        if (std::fabs(step) <= 1e-14 * std::fabs(x)) break;
    }
    return 1.0 / (x * x);
}

double serghides(double Re, double t)
{
    const double a = -2.0 * std::log10(t / 3.7 + 12.0 / Re);
    const double b = -2.0 * std::log10(t / 3.7 + 2.51 * a / Re);
    const double c = -2.0 * std::log10(t / 3.7 + 2.51 * b / Re);
    const double denominator = c - 2.0 * b + a;
    // The three agree to rounding when the iteration has settled.
    const double x = denominator == 0.0 ? a : a - square(b - a) / denominator;
    return 1.0 / (x * x);
}

double altshul(double Re, double t)
{
    const double f = 0.11 * std::pow(68.0 / Re + t, 0.25);
    return f >= 0.018 ? f : 0.85 * f + 0.0028;
}

double evangelides(double Re, double t)
{
    const double top = 0.2479 - 9.47e-5 * std::pow(7.0 - std::log10(Re), 4.0);
    return top / square(std::log10(t / 3.615 + 7.366 / std::pow(Re, 0.9142)));
}

double turbulentFriction(int method, double Re, double t)
{
    switch (method) {
    case TAVELL_FRICTION_COLEBROOK:
        return colebrook(Re, t);
    case TAVELL_FRICTION_HAALAND:
        return 1.0 / square(-1.8 * std::log10(6.9 / Re + std::pow(t / 3.7, 1.11)));
    case TAVELL_FRICTION_SERGHIDES:
        return serghides(Re, t);
    case TAVELL_FRICTION_ALTSHUL:
        return altshul(Re, t);
    case TAVELL_FRICTION_EVANGELIDES:
        return evangelides(Re, t);
    default:  // Swamee and Jain (1976)
        return 0.25 / square(std::log10(t / 3.7 + 5.74 / std::pow(Re, 0.9)));
    }
}

/// A number with 6 significant digits, as circuits keep the points of curves.
double withSixDigits(double value)
{
    std::array<char, 40> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, kCurveDigits)
            .ptr;
    double read = value;
    std::from_chars(text.data(), end, read);
    return read;
}

}  // namespace

double vogelViscosity(const FluidValues& fluid, double temperature)
{
    const double T = std::clamp(temperature, kColdest, kHottest);
    const double* c = fluid.viscosityCoefficients;
    return c[0] * std::exp((c[1] - 273.15) / (T + c[2] - 546.3));
}

double darcyFriction(int method, double reynolds, double relativeRoughness)
{
    const double Re = std::fabs(reynolds);
    if (Re <= 1.0) return kFrictionAtRest;
    if (Re <= kLaminarEnd) return kLaminarConstant / Re;
    if (Re >= kTurbulentStart) return turbulentFriction(method, Re, relativeRoughness);
    const double laminar = kLaminarConstant / kLaminarEnd;
    const double turbulent = turbulentFriction(method, kTurbulentStart, relativeRoughness);
    return laminar + (turbulent - laminar) * (Re - kLaminarEnd) / (kTurbulentStart - kLaminarEnd);
}

double orificeDischarge(double bore, double diameter, double length, double reynolds)
{
    const double beta = bore / diameter;
    const double Re = std::max(reynolds, kSlowestOrifice);
    double L1 = 0.0;  // corner tappings
    double L2 = 0.0;
    if (std::fabs(length - 0.0508) <= 1e-10) {
        L1 = L2 = 0.0254 / diameter;  // flange
    } else if (std::fabs(length - 1.5 * diameter) <= 1e-10) {
        L1 = 1.0;  // D and D/2
        L2 = 0.47;
    }
    const double A = std::pow(19000.0 * beta / Re, 0.8);
    const double M2 = 2.0 * L2 / (1.0 - beta);
    const double b4 = std::pow(beta, 4.0);
    double C = 0.5961 + 0.0261 * beta * beta - 0.216 * b4 * b4 + 0.000521 * std::pow(1e6 * beta / Re, 0.7) +
               (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / Re, 0.3) +
               (0.043 + 0.080 * std::exp(-10.0 * L1) - 0.123 * std::exp(-7.0 * L1)) * (1.0 - 0.11 * A) * b4 /
                   (1.0 - b4) -
               0.031 * (M2 - 0.8 * std::pow(M2, 1.1)) * std::pow(beta, 1.3);
    if (diameter < 0.0712) C += 0.011 * (0.75 - beta) * (2.8 - diameter / 25.4);
    return C;
}

PumpFit::PumpFit(const std::vector<CurvePoint>& points, double referenceDensity)
{
    std::vector<double> flows;
    std::vector<double> rises;
    for (const CurvePoint& point : points) {
        flows.push_back(withSixDigits(point.volumeFlow));
        rises.push_back(withSixDigits(point.pressure) / referenceDensity);
        m_scale = flows.size() == 1 ? std::fabs(flows.back()) : std::max(m_scale, std::fabs(flows.back()));
    }
    if (!(m_scale > 0.0)) m_scale = 1.0;
    for (double& flow : flows)
        flow /= m_scale;
    fit(flows, rises);
    m_endFlow = findEndFlow();
}

/// p(k+1) = (x - alpha(k)) p(k) - beta(k) p(k-1), orthogonal over the points; weight(k) = (y, p(k)) / (p(k),
/// p(k)).
void PumpFit::fit(const std::vector<double>& flows, const std::vector<double>& rises)
{
    const std::size_t count = flows.size();
    std::vector<double> before(count, 0.0);
    std::vector<double> now(count, 1.0);
    double sizeBefore = 1.0;
    for (std::size_t k = 0; k < kTerms; ++k) {
        double size = 0.0;
        double moment = 0.0;
        double product = 0.0;
        for (std::size_t i = 0; i < count; ++i) {
            size += now[i] * now[i];
            moment += flows[i] * now[i] * now[i];
            product += rises[i] * now[i];
        }
        m_weight[k] = product / size;
        m_alpha[k] = moment / size;
        m_beta[k] = k == 0 ? 0.0 : size / sizeBefore;
        sizeBefore = size;
        for (std::size_t i = 0; i < count; ++i) {
            const double next = (flows[i] - m_alpha[k]) * now[i] - m_beta[k] * before[i];
            before[i] = now[i];
            now[i] = next;
        }
    }
}

double PumpFit::cubic(double flow) const
{
    const double x = flow / m_scale;
    double before = 0.0;
    double now = 1.0;
    double sum = 0.0;
    for (std::size_t k = 0; k < kTerms; ++k) {
        sum += m_weight[k] * now;
        const double next = (x - m_alpha[k]) * now - m_beta[k] * before;
        before = now;
        now = next;
    }
    return sum;
}

/// The first flow at which the cubic falls through zero: a search in small steps up to the last point, in
/// growing ones beyond it, then bisection.
double PumpFit::findEndFlow() const
{
    constexpr int kStepsToLast = 1000;
    constexpr double kGrowth = 1.001;
    constexpr double kFarthest = 1e6;  // times the last flow
    double low = 0.0;
    double high = m_scale / kStepsToLast;
    while (!(cubic(low) > 0.0 && cubic(high) <= 0.0)) {
        low = high;
        high = high < m_scale ? high + m_scale / kStepsToLast : high * kGrowth;
        if (high > kFarthest * m_scale) return kNotANumber;
    }
    for (int i = 0; i < 200 && low < high; ++i) {
        const double middle = low + (high - low) / 2.0;
        if (middle <= low || middle >= high) break;
        (cubic(middle) > 0.0 ? low : high) = middle;
    }
    return high;
}

bool PumpFit::isEndFound() const
{
    constexpr int kMostStarts = 98;
    constexpr int kSteps = 1000;
    constexpr double kTolerance = 1e-9;
    // a + b x + c x^2 + d x^3 of flows over the last one, from the cubic's values at -1, 0, 1 and 2
    const double a = cubic(0.0);
    const double c = (cubic(m_scale) + cubic(-m_scale)) / 2.0 - a;
    const double odd = (cubic(m_scale) - cubic(-m_scale)) / 2.0;
    const double d = (cubic(2.0 * m_scale) - a - 4.0 * c - 2.0 * odd) / 6.0;
    const double b = odd - d;
    const auto slopeAt = [&](double x) { return b + x * (2.0 * c + x * 3.0 * d); };
    for (int start = 1; start <= kMostStarts; ++start) {
        double x = start == 1 ? 0.0 : 1.0 / start;
        double change = 1.0;
        for (int step = 0; step < kSteps && std::fabs(change) > kTolerance * std::fabs(x); ++step) {
            change = (a + x * (b + x * (c + x * d))) / slopeAt(x);
            x -= change;
        }
        if (std::fabs(change) <= kTolerance * std::fabs(x) && x >= 0.0 && slopeAt(x) < 0.0) return true;
    }
    return false;
}

double PumpFit::rise(double flow, double density) const
{
    if (flow >= 0.0 && flow < m_endFlow) return density * cubic(flow);
    return density * cubic(0.0) * (1.0 - flow / m_endFlow);
}

std::vector<CurvePoint> pumpPoints(const std::vector<CurvePoint>& points, double referenceDensity)
{
    if (points.size() < 2 || PumpFit(points, referenceDensity).isEndFound()) return points;
    const CurvePoint& last = points.back();
    const CurvePoint& before = points[points.size() - 2];
    const double last2 = last.volumeFlow * last.volumeFlow;
    const double B = (before.pressure - last.pressure) / (last2 - before.volumeFlow * before.volumeFlow);
    const double A = last.pressure + B * last2;
    if (!(B > 0.0) || !(last.pressure > 0.0) || !(last.volumeFlow > 0.0)) return points;
    const double end = std::sqrt(A / B);
    const double halfWay = last.volumeFlow + (end - last.volumeFlow) / 2.0;
    std::vector<CurvePoint> continued = points;
    continued.push_back({halfWay, A - B * halfWay * halfWay});
    continued.push_back({end, 0.0});
    return PumpFit(continued, referenceDensity).isEndFound() ? continued : points;
}

ElementLaws::ElementLaws(const Network& network, const FluidValues& fluid)
    : m_network(network), m_fluid(fluid), m_pumps(network.elements.size())
{
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        const Element& element = network.elements[i];
        if (element.kind->type != TAVELL_PUMP || element.isClosed) continue;
        const ElementInputs inputs = inputsOf(network, element, fluid.density);
        if (inputs.curve == nullptr) continue;
        m_pumps[i].emplace(pumpPoints(*inputs.curve, inputs.referenceDensity), inputs.referenceDensity);
    }
}

double ElementLaws::viscosity(double temperature) const
{
    if (!m_network.settings.viscosityFollowsTemperature || !std::isfinite(temperature))
        return m_fluid.viscosity;
    return vogelViscosity(m_fluid, temperature);
}

bool ElementLaws::isMinorLossGiven(std::size_t element) const
{
    const Element& asked = m_network.elements[element];
    switch (asked.kind->type) {
    case TAVELL_PIPE:
    case TAVELL_HAZEN_WILLIAMS_PIPE:
    case TAVELL_GENERAL_LOSS:
    case TAVELL_CONTROL_VALVE:
    case TAVELL_NON_RETURN:
        break;
    default:
        return true;
    }
    if (m_network.settings.minorLoss == 0) return true;
    if (m_network.settings.minorLoss != 1) return false;
    return needsDetour(m_network, asked) || inputsOf(m_network, asked, m_fluid.density).k > 0.0;
}

/// dp = (f L / D + K) rho Q |Q| / (2 A^2), Weisbach (1845), Darcy (1857)
LawTerms ElementLaws::pipe(const Element& element, double k, double roughness, double massFlow,
                           double temperature) const
{
    const Section& section = *element.section;
    const double diameter = section.hydraulicDiameter();
    const double velocity = massFlow / m_fluid.density / section.area;
    const double Re = std::fabs(velocity) * m_fluid.density * diameter / viscosity(temperature);
    const double length = std::max(lengthOf(m_network, element), kShortestLength);
    const double dynamic = m_fluid.density * velocity * std::fabs(velocity) / 2.0;
    LawTerms terms;
    terms.friction = darcyFriction(m_network.settings.frictionMethod, Re, roughness / diameter) * length /
                     diameter * dynamic;
    terms.minor = k * dynamic;
    return terms;
}

double ElementLaws::orificeDrop(const Element& element, double volumeFlow, double temperature) const
{
    if (volumeFlow == 0.0) return 0.0;
    const Section& section = *element.section;
    const double diameter = section.hydraulicDiameter();
    const double bore = element.property(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER).value_or(kNotANumber);
    const double Re =
        std::fabs(volumeFlow) / section.area * m_fluid.density * diameter / viscosity(temperature);
    // Nodes of a drawing are next to each other: an orifice without a length has corner tappings.
    const bool isDrawn = m_network.coordinates == Coordinates::schematic && !element.length;
    const double length = isDrawn ? 0.0 : lengthOf(m_network, element);
    const double C = orificeDischarge(bore, diameter, length, Re);
    const double passage = C / std::sqrt(1.0 - std::pow(bore / diameter, 4.0)) * kPi * bore * bore / 4.0;
    return m_fluid.density * volumeFlow * std::fabs(volumeFlow) / (2.0 * passage * passage);
}

/// dp = rho^a ck L^b / D^c |Q|^d
double ElementLaws::generalDrop(const Element& element, double volumeFlow) const
{
    const auto value = [&](int property) { return element.property(property).value_or(0.0); };
    const double drop = std::pow(m_fluid.density, value(TAVELL_ELEMENT_GENERAL_LOSS_A)) *
                        value(TAVELL_ELEMENT_GENERAL_LOSS_CK) *
                        std::pow(std::max(lengthOf(m_network, element), kShortestLength),
                                 value(TAVELL_ELEMENT_GENERAL_LOSS_B)) /
                        std::pow(element.section->hydraulicDiameter(), value(TAVELL_ELEMENT_GENERAL_LOSS_C)) *
                        std::pow(std::fabs(volumeFlow), value(TAVELL_ELEMENT_GENERAL_LOSS_D));
    return volumeFlow < 0.0 ? -drop : drop;
}

/// A check valve in front of an element is a short smooth pipe.
double ElementLaws::checkValveDrop(const Element& element, double massFlow, double temperature) const
{
    if (!hasCheckValveInFront(element)) return 0.0;
    Element valve = element;
    valve.length = checkValveLength(element, lengthOf(m_network, element));
    return pipe(valve, 0.0, 0.0, massFlow, temperature).friction;
}

/// IEC 60534-2-1: 1 bar at the flow Kv [m3/h] with water of 15.6 degC.
double ElementLaws::valveDrop(double kv, double volumeFlow) const
{
    return m_fluid.density * kValveConstant / square(kv / kSecondsPerHour) * volumeFlow *
           std::fabs(volumeFlow);
}

/// The line from the origin through the last point.
double ElementLaws::lossDrop(std::size_t element, double volumeFlow) const
{
    const auto* points = inputsOf(m_network, m_network.elements[element], m_fluid.density).curve;
    if (points == nullptr || points->empty()) return kNotANumber;
    const CurvePoint& last = points->back();
    const double slope = withSixDigits(last.pressure) / withSixDigits(last.volumeFlow);
    return (std::fabs(slope) > 0.0 ? slope : kLeastSlope) * volumeFlow;
}

double ElementLaws::lossCurve(std::size_t element, double volumeFlow) const
{
    const auto* points = inputsOf(m_network, m_network.elements[element], m_fluid.density).curve;
    if (points == nullptr || points->empty()) return kNotANumber;
    const auto flowAt = [&](std::size_t i) { return withSixDigits((*points)[i].volumeFlow); };
    const auto pressureAt = [&](std::size_t i) { return withSixDigits((*points)[i].pressure); };
    const std::size_t last = points->size() - 1;
    if (volumeFlow > flowAt(last)) return pressureAt(last);
    std::size_t i = 0;
    while (i < last && flowAt(i) < volumeFlow)
        ++i;
    if (i == 0) return pressureAt(0);
    const double share = (volumeFlow - flowAt(i - 1)) / (flowAt(i) - flowAt(i - 1));
    return pressureAt(i - 1) + (pressureAt(i) - pressureAt(i - 1)) * share;
}

LawTerms ElementLaws::at(std::size_t position, double massFlow, double temperature) const
{
    const Element& element = m_network.elements[position];
    const ElementInputs inputs = inputsOf(m_network, element, m_fluid.density);
    const double flow = massFlow / m_fluid.density;
    const double k = isMinorLossGiven(position) ? inputs.k : 0.0;
    LawTerms terms;
    switch (element.kind->type) {
    case TAVELL_PIPE:
    case TAVELL_CONTROL_VALVE:
    case TAVELL_NON_RETURN:
        return pipe(element, k, inputs.roughness, massFlow, temperature);
    case TAVELL_HAZEN_WILLIAMS_PIPE: {
        double length = std::max(lengthOf(m_network, element), kShortestLength);
        if (hasCheckValveInFront(element)) length -= checkValveLength(element, length);
        // Williams and Hazen (1905): dp / rho = 10.67 g L |Q|^1.85 / (C^1.85 D^4.87), g = 9.806 m/s2
        const double drop =
            m_fluid.density * 10.67 * 9.806 * length * std::pow(std::fabs(flow), 1.85) /
            (std::pow(inputs.hazenWilliams, 1.85) * std::pow(element.section->hydraulicDiameter(), 4.87));
        terms = pipe(element, k, 0.0, massFlow, temperature);
        terms.friction = std::copysign(drop, flow) + checkValveDrop(element, massFlow, temperature);
        break;
    }
    case TAVELL_GENERAL_LOSS:
        terms = pipe(element, k, 0.0, massFlow, temperature);
        terms.friction = checkValveDrop(element, massFlow, temperature);
        terms.other = generalDrop(element, flow);
        break;
    case TAVELL_ORIFICE:
        terms.other = orificeDrop(element, flow, temperature);
        if (const double kv = jointKv(m_network, element); kv > 0.0) terms.other += valveDrop(kv, flow);
        break;
    case TAVELL_KV_VALVE:
    case TAVELL_CV_VALVE: {
        const bool isKv = element.kind->type == TAVELL_KV_VALVE;
        const double given =
            element.property(isKv ? TAVELL_ELEMENT_VALVE_KV_COEFFICIENT : TAVELL_ELEMENT_VALVE_CV_COEFFICIENT)
                .value_or(kNotANumber);
        terms.other = valveDrop(isKv ? given : kKvPerCv * given, flow);
        break;
    }
    case TAVELL_PUMP:
        terms.rise = m_pumps[position] ? m_pumps[position]->rise(flow, m_fluid.density) : kNotANumber;
        break;
    case TAVELL_LOSS:
        terms.other = lossDrop(position, flow);
        break;
    default:
        terms.other = kNotANumber;
        break;
    }
    return terms;
}

}  // namespace kit
