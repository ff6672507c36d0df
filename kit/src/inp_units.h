// inp_units.h: the units of an EPANET input file in SI, and the constants of EPANET's laws.
#ifndef TAVELL_KIT_INP_UNITS_H
#define TAVELL_KIT_INP_UNITS_H

#include <optional>
#include <string>
#include <string_view>

namespace kit
{

constexpr double kFoot = 0.3048;             // [m], international foot
constexpr double kInpGravity = 9.80665;      // [m/s2], heads of imported files to pressures
constexpr double kInpWaterDensity = 1000.0;  // [kg/m3], of specific gravity 1
constexpr double kInpWaterViscosity =
    1.1e-5 * kFoot * kFoot;  // [m2/s], EPANET: 1.1e-5 ft2/s, water at 20 degC

/// What one unit of a file is in SI. All follow from the flow keyword.
struct InpUnits {
    std::string keyword;  // "GPM"
    bool isMetric = false;
    double flow = 0.0;       // [m3/s]
    double length = 0.0;     // [m]: lengths, elevations, heads
    double diameter = 0.0;   // [m], of links
    double roughness = 0.0;  // [m], Darcy-Weisbach
    double power = 0.0;      // [m4/s], product of head and volume flow of a pump of power 1
    std::string flowUnit;    // name of the flow's unit in network files, "" when there is none
};

/// The units of a flow keyword in any case of letters; nothing when there is no such keyword.
std::optional<InpUnits> findInpUnits(std::string_view keyword);

/// "CFS, GPM, MGD ..."
std::string inpFlowKeywords();

enum class HeadLossLaw { hazenWilliams, darcyWeisbach, chezyManning };

/// Exponent of the flow in a law of head loss.
double flowExponent(HeadLossLaw law);

/// r of head loss = r Q^n [m, m3/s] of a pipe: Hazen-Williams coefficient C or Manning's n; length and
/// diameter [m]. Darcy-Weisbach has no such r.
double pipeResistance(HeadLossLaw law, double coefficient, double length, double diameter);

/// A circle's area [m2].
double circleArea(double diameter);

}  // namespace kit

#endif
