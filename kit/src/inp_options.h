// inp_options.h: the sections [OPTIONS] and [TIMES] of an EPANET input file.
#ifndef TAVELL_KIT_INP_OPTIONS_H
#define TAVELL_KIT_INP_OPTIONS_H

#include <optional>
#include <string>
#include <string_view>

#include "findings.h"
#include "inp_sections.h"
#include "inp_units.h"

namespace kit
{

/// What the file says about all of its lines, with EPANET's defaults.
struct InpFileOptions {
    InpUnits units;
    HeadLossLaw headLoss = HeadLossLaw::hazenWilliams;
    double specificGravity = 1.0;
    double viscosity = kInpWaterViscosity;  // [m2/s], kinematic
    double demandMultiplier = 1.0;
    std::string defaultPattern = "1";
    double patternStep = 3600.0;  // [s]
    double patternStart = 0.0;    // [s]
};

/// Reads both sections; what they ask for in vain is in the findings.
InpFileOptions readInpOptions(const InpDocument& document, Findings& findings);

/// A time [s] of EPANET: "1:30", "0:05:30", "1.5" (hours), or a number with SEC, MIN, HOURS or DAYS behind
/// it. Nothing when the text is none.
std::optional<double> inpTime(std::string_view text, std::string_view unit = {});

}  // namespace kit

#endif
