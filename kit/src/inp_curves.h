// inp_curves.h: the curves of pumps and valves as EPANET has them, and their fits to the laws of the library.
#ifndef TAVELL_KIT_INP_CURVES_H
#define TAVELL_KIT_INP_CURVES_H

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kit
{

/// A point of a curve: volume flow [m3/s] and head [m].
struct HeadPoint {
    double flow = 0.0;
    double head = 0.0;
};

/// Points that the laws of one curve share.
using SharedPoints = std::shared_ptr<const std::vector<HeadPoint>>;

/// The head of a pump over its flow.
class PumpLaw
{
public:
    /// head = product / flow, product [m4/s].
    static PumpLaw ofPower(double product);
    /// From the points of a curve: one point, three points from flow 0, or straight lines between points.
    /// Nothing when they make no falling curve.
    static std::optional<PumpLaw> ofPoints(const std::vector<HeadPoint>& points);

    /// By the laws of affinity: flow with the speed [-], head with its square, power with its cube.
    void setSpeed(double speed) { m_speed = speed; }
    double speed() const { return m_speed; }

    bool isPower() const { return m_kind == Kind::power; }
    /// Whether the law is itself a cubic of the flow, so that its fit is exact.
    bool isCubic() const;
    double head(double flow) const;   // [m], flow > 0 for constant power
    double slope(double flow) const;  // [m/(m3/s)]
    /// [m3/s], at which the head falls to 0; infinite for constant power.
    double zeroFlow() const;
    /// [m], at flow 0; infinite for constant power.
    double shutoffHead() const { return head(0.0); }

private:
    enum class Kind {
        power,          // product / Q
        powerFunction,  // a - b Q^c
        lines           // straight between points and beyond them
    };

    std::size_t segmentOf(double flow) const;

    Kind m_kind = Kind::power;
    double m_speed = 1.0;
    double m_product = 0.0;
    double m_a = 0.0, m_b = 0.0, m_c = 0.0;
    SharedPoints m_points;
};

/// A pump's law as points of one cubic.
struct PumpCurveFit {
    std::vector<HeadPoint> points;  // on the cubic, flows strictly increasing from 0
    double dutyFlow = 0.0;          // [m3/s], where head and slope are those of the law
    double largestError =
        0.0;  // [m], over the points' range; for constant power from half to 1.5 times the duty
    double referenceHead = 0.0;  // [m], to compare it with: at shut-off; for constant power at the duty
    double rangeStart = 0.0;     // [m3/s], of largestError
    double rangeEnd = 0.0;
};

/// The cubic that has the law's head and slope at the duty flow (> 0) and fits the rest of it by least
/// squares.
PumpCurveFit fitPump(const PumpLaw& law, double dutyFlow);

/// Head loss of a valve's curve: straight lines between points, the first and the last one extended.
class ValveLaw
{
public:
    /// Nothing when no point has a positive flow and loss, or flows do not increase.
    static std::optional<ValveLaw> ofPoints(std::vector<HeadPoint> points);

    double head(double flow) const;   // [m], flow > 0
    double slope(double flow) const;  // [m/(m3/s)]
    double largestFlow() const { return m_points->back().flow; }
    /// [m3/s], the middle of the curve's flows.
    double middleFlow() const { return 0.5 * largestFlow(); }

private:
    std::size_t segmentOf(double flow) const;

    SharedPoints m_points;
};

/// head = factor Q^exponent.
struct PowerFit {
    double factor = 0.0;  // [m/(m3/s)^exponent]
    double exponent = 1.0;
    double dutyFlow = 0.0;      // [m3/s], where head and slope are those of the law
    double largestError = 0.0;  // [m], from 0 to the largest flow of the curve
};

PowerFit fitValve(const ValveLaw& law, double dutyFlow);

}  // namespace kit

#endif
