// fluids.h: the table of liquids that a network may name: density, viscosity, specific heat and conductivity
// by temperature and concentration, each from a named publication.
#ifndef TAVELL_KIT_FLUIDS_H
#define TAVELL_KIT_FLUIDS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "solution.h"
#include "units.h"

namespace kit
{

/// [K], 20 degC: the temperature of a fluid of the table when a network gives none.
constexpr double kUsualTemperature = 293.15;

/// Both ends belong to the range.
struct FluidRange {
    double lowest = 0.0;
    double highest = 0.0;
};

/// The names of the fluids, in the order of the table: "water", "seawater", "ethylene glycol" ...
std::vector<std::string> fluidNames();

/// Whether a name or an alias is one of the table. Case, blanks, underscores and hyphens do not count.
bool isKnownFluid(std::string_view name);

/// The range of the mass fraction [-] of a fluid; nothing when it has none or is unknown.
std::optional<FluidRange> fluidConcentrations(std::string_view name);

/// The range of temperature [K] of a fluid at a mass fraction [-]; without one that of the table. A mixture's
/// begins where it freezes. Nothing when the fluid is unknown.
std::optional<FluidRange> fluidTemperatures(std::string_view name, std::optional<double> concentration);

/// The values of a fluid at a temperature [K] and a mass fraction of its solute [-]; the coefficients follow
/// its viscosity from 20 K below to 20 K above, within its range, and are exact at the temperature itself.
/// Nothing, and why in error, when the fluid is unknown, it needs a concentration or has none, or a value is
/// out of its range.
std::optional<FluidValues> fluidValues(const std::string& name, double temperature,
                                       std::optional<double> concentration, std::string& error);

/// A text for people: each fluid with its ranges, its values at 20 degC, its sources and their accuracy.
std::string fluidTable(const UnitSet& units);

/// The same as a JSON array, in SI units; ends with a line end.
std::string fluidTableJson();

}  // namespace kit

#endif
