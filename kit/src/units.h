// units.h: quantities and their units: "25 mm" to metres, pascals to "bar". Locale-independent.
#ifndef TAVELL_KIT_UNITS_H
#define TAVELL_KIT_UNITS_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kit
{

/// What a number measures. The name in files is that of quantityName.
enum class Quantity {
    none,                   // "none": a pure number, no unit
    length,                 // "length" [m]: coordinates, lengths of pipes
    diameter,               // "diameter" [m]: diameters, roughness, perimeters, bores
    area,                   // "area" [m2]
    head,                   // "head" [m] of the liquid
    pressure,               // "pressure" [Pa], also pressure differences
    massFlow,               // "mass_flow" [kg/s]
    volumeFlow,             // "volume_flow" [m3/s]
    velocity,               // "velocity" [m/s]
    temperature,            // "temperature" [K], a point on the scale: degC and degF have an offset
    temperatureDifference,  // "temperature_difference" [K]
    density,                // "density" [kg/m3]
    viscosity,              // "viscosity" [Pa s], dynamic
    specificHeat,           // "specific_heat" [J/(kg K)]
    conductivity,           // "conductivity" [W/(m K)]
    heat,                   // "heat" [W]
    heatFlux                // "heat_flux" [W/m2]
};

/// "pressure", "mass_flow" ...
std::string_view quantityName(Quantity quantity);
std::optional<Quantity> findQuantity(std::string_view name);

/// The SI unit of a quantity as files and tables write it: "Pa", "m3/s"; "" for none.
std::string_view siUnit(Quantity quantity);

/// Every unit of a quantity, the SI unit first: {"Pa", "kPa", "MPa", "bar", "mbar", "psi", "mH2O", "ftH2O", "atm"}.
std::vector<std::string> unitsOf(Quantity quantity);

/// Whether a unit is one of a quantity's. Case counts (mPa and MPa differ).
bool isUnitOf(std::string_view unit, Quantity quantity);

/// A value in a unit of the quantity as SI, and back. The unit is one of unitsOf; "" is the SI unit.
double toSi(double value, std::string_view unit, Quantity quantity);
double fromSi(double value, std::string_view unit, Quantity quantity);

/// A text such as "25 mm", "-3.5e2 kPa" or "60 degC" in SI. A text without a unit is in the SI unit. Nothing, and
/// why in error ("the unit \"mn\" of a length is unknown; use m, mm ..."), when it is no such text.
std::optional<double> parseQuantity(std::string_view text, Quantity quantity, std::string& error);

/// Display units by quantity.
using UnitSet = std::map<Quantity, std::string>;

/// A named set: "si", "metric" (bar, l/min, mm, degC ...), "us" (psi, US gal/min, inch, degF ...); nothing when there is
/// no such name.
std::optional<UnitSet> findUnitSet(std::string_view name);
std::vector<std::string> unitSetNames();

/// Units from a text such as "metric", "pressure=bar,mass_flow=kg/h" or "us,length=m"; nothing, and why in error,
/// otherwise. Quantities that it does not name keep their SI unit.
std::optional<UnitSet> parseUnitSet(std::string_view text, std::string& error);

/// The unit of a set for a quantity: the SI unit when the set has none.
std::string displayUnit(const UnitSet& set, Quantity quantity);

}  // namespace kit

#endif
