#include "inp_units.h"

#include <cmath>

#include "inp_sections.h"

namespace kit
{

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kCubicFoot = kFoot * kFoot * kFoot;  // [m3]
constexpr double kDay = 86400.0;                      // [s]
constexpr double kUsGallon = 3.785411784e-3;          // [m3]
constexpr double kImperialGallon = 4.54609e-3;        // [m3]

// EPANET's pumps of constant power: head [ft] = 8.814 power [hp] / flow [ft3/s] (550 ft lbf/s over 62.4
// lbf/ft3).
constexpr double kPowerHead = 8.814 * kFoot * kCubicFoot;  // [m4/s] per horsepower
constexpr double kHorsepower = 0.7457;                     // [kW], as EPANET has it

struct FlowRow {
    std::string_view keyword;
    double flow;  // [m3/s]
    bool isMetric;
    std::string_view unit;  // in network files
};

// Exact units, but for the acre-foot per day: EPANET counts 1.9837 of them in 1 ft3/s, exact are 1.98347, and
// the head loss would differ by 0.02 %.
// clang-format off
constexpr FlowRow kFlows[] = {
    {"CFS",  kCubicFoot,                   false, "ft3/s"},
    {"GPM",  kUsGallon / 60.0,             false, "US gal/min"},
    {"MGD",  1e6 * kUsGallon / kDay,       false, "US Mgal/d"},
    {"IMGD", 1e6 * kImperialGallon / kDay, false, "imp Mgal/d"},
    {"AFD",  kCubicFoot / 1.9837,          false, ""},
    {"LPS",  1e-3,                         true,  "l/s"},
    {"LPM",  1e-3 / 60.0,                  true,  "l/min"},
    {"MLD",  1e3 / kDay,                   true,  "Ml/d"},
    {"CMH",  1.0 / 3600.0,                 true,  "m3/h"},
    {"CMD",  1.0 / kDay,                   true,  "m3/d"},
    {"CMS",  1.0,                          true,  "m3/s"},
    {"SI",   1e-3,                         true,  "l/s"},
};
// clang-format on

}  // namespace

std::optional<InpUnits> findInpUnits(std::string_view keyword)
{
    for (const FlowRow& row : kFlows) {
        if (keyword.size() != row.keyword.size() || !startsWithWord(keyword, row.keyword)) continue;
        InpUnits units;
        units.keyword = row.keyword;
        units.isMetric = row.isMetric;
        units.flow = row.flow;
        units.flowUnit = row.unit;
        units.length = row.isMetric ? 1.0 : kFoot;
        units.diameter = row.isMetric ? 1e-3 : kFoot / 12.0;
        units.roughness = row.isMetric ? 1e-3 : 1e-3 * kFoot;
        units.power = row.isMetric ? kPowerHead / kHorsepower : kPowerHead;
        return units;
    }
    return std::nullopt;
}

std::string inpFlowKeywords()
{
    std::string text;
    for (const FlowRow& row : kFlows) {
        if (!text.empty()) text += ", ";
        text += row.keyword;
    }
    return text;
}

double flowExponent(HeadLossLaw law)
{
    return law == HeadLossLaw::hazenWilliams ? 1.852 : 2.0;
}

double pipeResistance(HeadLossLaw law, double coefficient, double length, double diameter)
{
    // EPANET's constants are those of feet and ft3/s: h = a L D^-m Q^n. In metres a becomes a 0.3048^(m - 3
    // n).
    if (law == HeadLossLaw::hazenWilliams) {
        // Williams and Hazen (1905), h = 4.727 L C^-1.852 D^-4.871 Q^1.852 in feet; 10.667 in metres.
        const double a = 4.727 * std::pow(kFoot, 4.871 - 3.0 * 1.852);
        return a * length * std::pow(coefficient, -1.852) * std::pow(diameter, -4.871);
    }
    // Manning (1891), V = 1.49 / n R^(2/3) S^(1/2) in feet with R = D / 4; EPANET has 1.333 for 4/3.
    const double velocityFactor = 4.0 / (1.49 * kPi);
    const double a = velocityFactor * velocityFactor * std::pow(4.0, 1.333) * std::pow(kFoot, 5.333 - 6.0);
    return a * length * coefficient * coefficient * std::pow(diameter, -5.333);
}

double circleArea(double diameter)
{
    return kPi / 4.0 * diameter * diameter;
}

}  // namespace kit
