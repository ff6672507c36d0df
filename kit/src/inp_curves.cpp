#include "inp_curves.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace kit
{

namespace
{

constexpr int kSamples = 100;              // of a law, over its range
constexpr int kFitPoints = 9;              // of a fitted cubic
constexpr double kLargestExponent = 20.0;  // of a three-point curve; EPANET takes no steeper one

/// With 6 significant digits: all that the library keeps of a point.
double rounded(double value)
{
    std::array<char, 32> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6).ptr;
    double result = 0.0;
    std::from_chars(text.data(), end, result);
    return result;
}

/// Position of the segment's end point for a flow: 1 .. count - 1, the outer segments beyond the ends.
std::size_t segmentEnd(const std::vector<HeadPoint>& points, double flow)
{
    const auto found = std::lower_bound(points.begin(), points.end(), flow,
                                        [](const HeadPoint& point, double q) { return point.flow < q; });
    const auto position = static_cast<std::size_t>(found - points.begin());
    return std::clamp(position, std::size_t{1}, points.size() - 1);
}

double lineSlope(const HeadPoint& from, const HeadPoint& to)
{
    return (to.head - from.head) / (to.flow - from.flow);
}

/// Whether flows increase and heads fall.
bool isFalling(const std::vector<HeadPoint>& points)
{
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (!(points[i].flow > points[i - 1].flow) || !(points[i].head < points[i - 1].head)) return false;
    }
    return points.front().flow >= 0.0 && points.front().head > 0.0;
}

/// p(u) = value + slope x + square x^2 + cube x^3 with x = u - at; u = flow / scale.
struct Cubic {
    double at = 0.0;
    double value = 0.0, slope = 0.0, square = 0.0, cube = 0.0;

    double operator()(double u) const
    {
        const double x = u - at;
        return value + x * (slope + x * (square + x * cube));
    }
    double derivative(double u) const
    {
        const double x = u - at;
        return slope + x * (2.0 * square + 3.0 * x * cube);
    }
    bool isFalling() const
    {
        for (int i = 0; i <= kSamples; ++i) {
            if (derivative(static_cast<double>(i) / kSamples) > 1e-9 * std::fabs(slope)) return false;
        }
        return true;
    }
};

/// Least squares of the square and the cube, the rest given, over u = 0 .. 1.
template <class Law> Cubic fittedCubic(const Law& law, double at, double value, double slope)
{
    double s44 = 0.0, s45 = 0.0, s55 = 0.0, r4 = 0.0, r5 = 0.0;
    for (int i = 0; i <= kSamples; ++i) {
        const double u = static_cast<double>(i) / kSamples;
        const double x2 = (u - at) * (u - at), x3 = x2 * (u - at);
        const double rest = law(u) - value - slope * (u - at);
        s44 += x2 * x2;
        s45 += x2 * x3;
        s55 += x3 * x3;
        r4 += x2 * rest;
        r5 += x3 * rest;
    }
    Cubic cubic{at, value, slope, 0.0, 0.0};
    const double determinant = s44 * s55 - s45 * s45;
    cubic.square = (r4 * s55 - r5 * s45) / determinant;
    cubic.cube = (s44 * r5 - s45 * r4) / determinant;
    if (cubic.isFalling()) return cubic;
    cubic.square = r4 / s44;
    cubic.cube = 0.0;
    if (cubic.isFalling()) return cubic;
    cubic.square = 0.0;
    return cubic;
}

/// u of the cubic's zero between the duty and 1; 1 when it has none there.
double zeroOf(const Cubic& cubic)
{
    double low = cubic.at, high = 1.0;
    if (cubic(high) >= 0.0) return 1.0;
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        (cubic(middle) > 0.0 ? low : high) = middle;
    }
    return low;
}

std::vector<HeadPoint> pointsOf(const Cubic& cubic, double end, double scale)
{
    std::vector<HeadPoint> points;
    for (int i = 0; i < kFitPoints; ++i) {
        const double u = end * i / (kFitPoints - 1);
        const HeadPoint point{rounded(u * scale), rounded(std::max(cubic(u), 0.0))};
        points.push_back(point);
    }
    return points;
}

/// Third-order Taylor polynomial of product / Q about the duty flow: h (1 - x)(1 + x^2), x = Q / duty - 1. It
/// falls everywhere, to 0 at twice the duty flow.
PumpCurveFit fitPower(const PumpLaw& law, double dutyFlow)
{
    const double scale = 2.0 * dutyFlow;
    const double h = law.head(dutyFlow);
    const Cubic cubic{0.5, h, -2.0 * h, 4.0 * h, -8.0 * h};
    PumpCurveFit fit;
    fit.dutyFlow = dutyFlow;
    fit.points = pointsOf(cubic, 1.0, scale);
    fit.referenceHead = h;
    fit.rangeStart = 0.5 * dutyFlow;
    fit.rangeEnd = 1.5 * dutyFlow;
    for (int i = 0; i <= kSamples; ++i) {
        const double u = 0.25 + 0.5 * i / kSamples;
        fit.largestError = std::max(fit.largestError, std::fabs(cubic(u) - law.head(u * scale)));
    }
    return fit;
}

}  // namespace

PumpLaw PumpLaw::ofPower(double product)
{
    PumpLaw law;
    law.m_product = product;
    return law;
}

std::optional<PumpLaw> PumpLaw::ofPoints(const std::vector<HeadPoint>& points)
{
    PumpLaw law;
    law.m_kind = Kind::powerFunction;
    if (points.size() == 1) {
        // EPANET: shut-off at 4/3 of the point's head, no head at twice its flow, a parabola between.
        const HeadPoint& point = points.front();
        if (!(point.flow > 0.0) || !(point.head > 0.0)) return std::nullopt;
        law.m_a = 4.0 / 3.0 * point.head;
        law.m_b = point.head / 3.0 / (point.flow * point.flow);
        law.m_c = 2.0;
        return law;
    }
    if (points.empty() || !isFalling(points)) return std::nullopt;
    if (points.size() == 3 && points.front().flow == 0.0) {
        // Through all three points: a - b Q^c.
        law.m_a = points[0].head;
        law.m_c = std::log((law.m_a - points[2].head) / (law.m_a - points[1].head)) /
                  std::log(points[2].flow / points[1].flow);
        law.m_b = (law.m_a - points[1].head) / std::pow(points[1].flow, law.m_c);
        const bool isUsable = std::isfinite(law.m_b) && law.m_c > 0.0 && law.m_c <= kLargestExponent;
        return isUsable ? std::optional<PumpLaw>(law) : std::nullopt;
    }
    law.m_kind = Kind::lines;
    law.m_points = std::make_shared<const std::vector<HeadPoint>>(points);
    return law;
}

bool PumpLaw::isCubic() const
{
    return (m_kind == Kind::powerFunction && (m_c == 1.0 || m_c == 2.0 || m_c == 3.0)) ||
           (m_kind == Kind::lines && m_points->size() == 2);
}

std::size_t PumpLaw::segmentOf(double flow) const
{
    return segmentEnd(*m_points, flow);
}

double PumpLaw::head(double flow) const
{
    const double q = flow / m_speed;
    const double squared = m_speed * m_speed;
    if (m_kind == Kind::power)
        return flow > 0.0 ? squared * m_product / q : std::numeric_limits<double>::infinity();
    if (m_kind == Kind::powerFunction) return squared * (m_a - m_b * std::pow(q, m_c));
    const std::size_t i = segmentOf(q);
    return squared *
           ((*m_points)[i].head + lineSlope((*m_points)[i - 1], (*m_points)[i]) * (q - (*m_points)[i].flow));
}

double PumpLaw::slope(double flow) const
{
    const double q = flow / m_speed;
    if (m_kind == Kind::power) return -m_speed * m_product / (q * q);
    if (m_kind == Kind::powerFunction) return -m_speed * m_b * m_c * std::pow(q, m_c - 1.0);
    const std::size_t i = segmentOf(q);
    return m_speed * lineSlope((*m_points)[i - 1], (*m_points)[i]);
}

double PumpLaw::zeroFlow() const
{
    if (m_kind == Kind::power) return std::numeric_limits<double>::infinity();
    if (m_kind == Kind::powerFunction) return m_speed * std::pow(m_a / m_b, 1.0 / m_c);
    // The head falls from point to point, so the first segment that ends at or below 0 has the zero.
    const auto found =
        std::lower_bound(m_points->begin() + 1, m_points->end() - 1, 0.0,
                         [](const HeadPoint& point, double zero) { return point.head > zero; });
    const auto i = static_cast<std::size_t>(found - m_points->begin());
    return m_speed *
           ((*m_points)[i].flow - (*m_points)[i].head / lineSlope((*m_points)[i - 1], (*m_points)[i]));
}

PumpCurveFit fitPump(const PumpLaw& law, double dutyFlow)
{
    if (law.isPower()) return fitPower(law, dutyFlow);
    const double scale = law.zeroFlow();
    const auto scaled = [&law, scale](double u) { return law.head(u * scale); };
    const double at = std::min(dutyFlow / scale, 1.0);
    const Cubic cubic = fittedCubic(scaled, at, scaled(at), law.slope(at * scale) * scale);
    PumpCurveFit fit;
    fit.dutyFlow = at * scale;
    fit.points = pointsOf(cubic, zeroOf(cubic), scale);
    fit.referenceHead = law.shutoffHead();
    fit.rangeEnd = scale;
    for (int i = 0; i <= kSamples; ++i) {
        const double u = static_cast<double>(i) / kSamples;
        fit.largestError = std::max(fit.largestError, std::fabs(cubic(u) - scaled(u)));
    }
    return fit;
}

std::optional<ValveLaw> ValveLaw::ofPoints(std::vector<HeadPoint> points)
{
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (!(points[i].flow > points[i - 1].flow)) return std::nullopt;
    }
    if (points.empty() || !(points.front().flow >= 0.0) || !(points.back().flow > 0.0)) return std::nullopt;
    if (!(points.back().head > 0.0)) return std::nullopt;
    if (points.size() == 1) points.insert(points.begin(), HeadPoint{});
    ValveLaw law;
    law.m_points = std::make_shared<const std::vector<HeadPoint>>(std::move(points));
    return law;
}

std::size_t ValveLaw::segmentOf(double flow) const
{
    return segmentEnd(*m_points, flow);
}

double ValveLaw::head(double flow) const
{
    const std::size_t i = segmentOf(flow);
    return (*m_points)[i].head + slope(flow) * (flow - (*m_points)[i].flow);
}

double ValveLaw::slope(double flow) const
{
    const std::size_t i = segmentOf(flow);
    return lineSlope((*m_points)[i - 1], (*m_points)[i]);
}

PowerFit fitValve(const ValveLaw& law, double dutyFlow)
{
    // Exponents that the solve takes without trouble; a flat or a very steep part of a curve gets the nearest
    // one.
    constexpr double kLeastExponent = 0.5, kMostExponent = 4.0;
    PowerFit fit;
    fit.dutyFlow = law.head(dutyFlow) > 0.0 ? dutyFlow : law.largestFlow();
    const double h = law.head(fit.dutyFlow);
    fit.exponent = std::clamp(fit.dutyFlow * law.slope(fit.dutyFlow) / h, kLeastExponent, kMostExponent);
    fit.factor = h / std::pow(fit.dutyFlow, fit.exponent);
    for (int i = 1; i <= kSamples; ++i) {
        const double q = law.largestFlow() * i / kSamples;
        fit.largestError =
            std::max(fit.largestError, std::fabs(fit.factor * std::pow(q, fit.exponent) - law.head(q)));
    }
    return fit;
}

}  // namespace kit
