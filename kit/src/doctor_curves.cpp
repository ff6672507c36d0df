// Curves: points that cannot be used, rises that do not fall, drops that do not rise, values of another unit.

#include <algorithm>
#include <cmath>
#include <functional>

#include <tavell/Constants.h>

#include "doctor_checks.h"
#include "doctor_support.h"
#include "element_kinds.h"

namespace kit::doctor
{

namespace
{

constexpr std::size_t kLeastPoints = 4;
constexpr double kSixDigits = 1e-6;               // [-], what the library keeps of a point
constexpr double kFlatTolerance = 1e-6;           // [-], of the greatest pressure: noise, no rise and no fall
constexpr double kLeastLikelyRise = 200.0;        // [Pa], below it a pump's rise was perhaps meant in m
constexpr double kGreatestLikelyCurveFlow = 20;   // [m3/s], above it flows were perhaps meant in l/s or m3/h
constexpr double kStraightLineTolerance = 0.05;   // [-], of the last pressure
constexpr double kGreatestLikelyCurveRise = 1e9;  // [Pa]

using Points = std::vector<CurvePoint>;

double greatestPressure(const Points& points)
{
    double greatest = 0.0;
    for (const CurvePoint& point : points)
        greatest = std::max(greatest, std::fabs(point.pressure));
    return greatest;
}

/// The position of the first point from which a curve goes the wrong way to the next; points.size() when it
/// does not.
std::size_t firstWrongStep(const Points& points, bool isRising)
{
    const double tolerance = kFlatTolerance * greatestPressure(points);
    for (std::size_t i = 0; i + 1 < points.size(); ++i) {
        const double step = points[i + 1].pressure - points[i].pressure;
        if (isRising ? step > tolerance : step < -tolerance) return i;
    }
    return points.size();
}

std::string pointText(const CurvePoint& point)
{
    return shown(point.pressure, Quantity::pressure) + " at " + shown(point.volumeFlow, Quantity::volumeFlow);
}

class CurveChecks
{
public:
    CurveChecks(const Network& network, Findings& findings) : m_network(network), m_findings(findings) {}

    void run()
    {
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (!element.kind->hasCurve || element.isClosed) continue;
            m_element = i;
            m_points = &pointsOf(m_network, element);
            if (!isUsable()) continue;
            checkValues(element.kind->type == TAVELL_PUMP);
            if (element.kind->type == TAVELL_PUMP)
                checkPump();
            else
                checkLoss();
        }
    }

private:
    Finding& add(Code code, std::string message)
    {
        return addAtElement(m_network, m_element, code, std::move(message), m_findings);
    }

    bool isUsable()
    {
        const Points& points = *m_points;
        if (points.size() < kLeastPoints) {
            add(Code::curve_unusable, "its curve has " + shownCount(points.size(), "point")).numbers = {
                {"points", static_cast<double>(points.size()), ""}};
            return false;
        }
        for (std::size_t i = 0; i + 1 < points.size(); ++i) {
            const double step = points[i + 1].volumeFlow - points[i].volumeFlow;
            if (step > kSixDigits * std::fabs(points[i + 1].volumeFlow)) continue;
            add(Code::curve_unusable, "the flow of point " + std::to_string(i + 2) + " of its curve (" +
                                          shown(points[i + 1].volumeFlow, Quantity::volumeFlow) +
                                          ") is not above that of the point before")
                .numbers = {{"point", static_cast<double>(i + 2), ""}};
            return false;
        }
        return true;
    }

    void checkValues(bool isPump)
    {
        const double rise = greatestPressure(*m_points);
        const double flow = m_points->back().volumeFlow;
        if (flow > kGreatestLikelyCurveFlow)
            add(Code::curve_values_unlikely,
                "its curve ends at " + shown(flow, Quantity::volumeFlow) + "; perhaps l/s or m3/h are meant")
                .numbers = {{"last_flow", flow, "m3/s"}};
        if (isPump && rise > 0.0 && rise < kLeastLikelyRise)
            add(Code::curve_values_unlikely, "the greatest rise of its curve is " +
                                                 shown(rise, Quantity::pressure) + "; perhaps " +
                                                 shownNumber(rise) + " m of head are meant")
                .numbers = {{"greatest_rise", rise, "Pa"}};
        if (rise > kGreatestLikelyCurveRise)
            add(Code::curve_values_unlikely,
                "the greatest pressure of its curve is " + shown(rise, Quantity::pressure))
                .numbers = {{"greatest_pressure", rise, "Pa"}};
    }

    void checkPump()
    {
        const Points& points = *m_points;
        const std::size_t wrong = firstWrongStep(points, true);
        if (points.back().pressure >= greatestPressure(points)) {
            add(Code::pump_curve_never_falls,
                "the rise of its curve is greatest at the last point, " + pointText(points.back()))
                .numbers = {{"last_rise", points.back().pressure, "Pa"}};
        } else if (wrong < points.size()) {
            add(Code::pump_curve_rises, "the rise of its curve grows from " + pointText(points[wrong]) +
                                            " to " + pointText(points[wrong + 1]))
                .numbers = {{"from_flow", points[wrong].volumeFlow, "m3/s"},
                            {"to_flow", points[wrong + 1].volumeFlow, "m3/s"}};
        }
    }

    void checkLoss()
    {
        const Points& points = *m_points;
        const std::size_t wrong = firstWrongStep(points, false);
        if (points.back().pressure <= 0.0) {
            add(Code::loss_curve_ends_low, "its curve ends at " + pointText(points.back())).numbers = {
                {"last_drop", points.back().pressure, "Pa"}};
            return;
        }
        if (wrong < points.size())
            add(Code::loss_curve_falls, "the drop of its curve falls from " + pointText(points[wrong]) +
                                            " to " + pointText(points[wrong + 1]))
                .numbers = {{"from_flow", points[wrong].volumeFlow, "m3/s"},
                            {"to_flow", points[wrong + 1].volumeFlow, "m3/s"}};
        else
            checkStraightness();
    }

    /// Inside a network a loss curve acts as the straight line from the origin through its last point.
    void checkStraightness()
    {
        const CurvePoint& last = m_points->back();
        double worst = 0.0;
        for (const CurvePoint& point : *m_points) {
            const double onLine = last.pressure * point.volumeFlow / last.volumeFlow;
            worst = std::max(worst, std::fabs(point.pressure - onLine));
        }
        if (worst <= kStraightLineTolerance * last.pressure) return;
        add(Code::loss_curve_not_straight,
            "its curve differs by up to " + shown(worst, Quantity::pressure) +
                " from the straight line through its last point, which is what a solve uses")
            .numbers = {{"greatest_difference", worst, "Pa"}};
    }

    const Network& m_network;
    Findings& m_findings;
    std::size_t m_element = 0;
    const Points* m_points = nullptr;
};

}  // namespace

void checkCurves(const Network& network, Findings& findings)
{
    CurveChecks(network, findings).run();
}

}  // namespace kit::doctor
