#include "units.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <system_error>

#include "findings.h"

namespace kit
{

namespace
{

struct QuantityRow {
    Quantity quantity;
    std::string_view name;
    std::string_view words;  // with an article, for messages
};

constexpr QuantityRow kQuantities[] = {
    {Quantity::none, "none", "a pure number"},
    {Quantity::length, "length", "a length"},
    {Quantity::diameter, "diameter", "a diameter"},
    {Quantity::area, "area", "an area"},
    {Quantity::head, "head", "a head"},
    {Quantity::pressure, "pressure", "a pressure"},
    {Quantity::massFlow, "mass_flow", "a mass flow"},
    {Quantity::volumeFlow, "volume_flow", "a volume flow"},
    {Quantity::velocity, "velocity", "a velocity"},
    {Quantity::temperature, "temperature", "a temperature"},
    {Quantity::temperatureDifference, "temperature_difference", "a temperature difference"},
    {Quantity::density, "density", "a density"},
    {Quantity::viscosity, "viscosity", "a dynamic viscosity"},
    {Quantity::specificHeat, "specific_heat", "a specific heat"},
    {Quantity::conductivity, "conductivity", "a thermal conductivity"},
    {Quantity::heat, "heat", "a heat flow"},
    {Quantity::heatFlux, "heat_flux", "a heat flux"},
};

/// A unit of a quantity: SI value = (value + offset) multiplier / divisor. The offset [unit] is that of
/// temperature scales. Multiplier and divisor are whole numbers below 2^53 where the definition allows it, so
/// that 25 mm, which is 25 / 1000, is rounded once and is the same number as 0.025.
struct UnitRow {
    Quantity quantity;
    std::string_view name;
    double multiplier;
    double divisor;
    double offset;
};

// The definitions behind the numbers: inch 25.4 mm, foot 0.3048 m, pound 0.45359237 kg and standard gravity
// 9.80665 m/s2 (international yard and pound agreement, 1959; CGPM, 1901); US gallon 231 in3; imperial gallon
// 4.54609 l; acre 43560 ft2; mercury 13595.1 kg/m3, water 1000 kg/m3 (conventional columns, ISO 80000-4
// annex); BTU and calorie of the International Table, 1055.05585262 J and 4.1868 J (ISO 80000-5 annex).
constexpr double kPoundForce = 44482216152605.0;  // [1e-13 N], 0.45359237 kg at 9.80665 m/s2
constexpr double kCubicFoot = 28316846592.0;      // [1e-12 m3]
constexpr double kUsGallon = 3785411784.0;        // [1e-12 m3]
constexpr double kImperialGallon = 454609.0;      // [1e-8 m3]
constexpr double kBtu = 105505585262.0;           // [1e-8 J]

// clang-format off
constexpr UnitRow kUnits[] = {
    {Quantity::length, "m", 1, 1, 0},
    {Quantity::length, "um", 1, 1e6, 0},
    {Quantity::length, "mm", 1, 1e3, 0},
    {Quantity::length, "cm", 1, 100, 0},
    {Quantity::length, "km", 1e3, 1, 0},
    {Quantity::length, "in", 254, 1e4, 0},
    {Quantity::length, "ft", 3048, 1e4, 0},
    {Quantity::length, "yd", 9144, 1e4, 0},
    {Quantity::length, "mi", 1609344, 1e3, 0},

    {Quantity::diameter, "m", 1, 1, 0},
    {Quantity::diameter, "um", 1, 1e6, 0},
    {Quantity::diameter, "mm", 1, 1e3, 0},
    {Quantity::diameter, "cm", 1, 100, 0},
    {Quantity::diameter, "in", 254, 1e4, 0},
    {Quantity::diameter, "ft", 3048, 1e4, 0},

    {Quantity::area, "m2", 1, 1, 0},
    {Quantity::area, "mm2", 1, 1e6, 0},
    {Quantity::area, "cm2", 1, 1e4, 0},
    {Quantity::area, "in2", 64516, 1e8, 0},
    {Quantity::area, "ft2", 9290304, 1e8, 0},

    {Quantity::head, "m", 1, 1, 0},
    {Quantity::head, "mm", 1, 1e3, 0},
    {Quantity::head, "cm", 1, 100, 0},
    {Quantity::head, "in", 254, 1e4, 0},
    {Quantity::head, "ft", 3048, 1e4, 0},

    {Quantity::pressure, "Pa", 1, 1, 0},
    {Quantity::pressure, "hPa", 100, 1, 0},
    {Quantity::pressure, "kPa", 1e3, 1, 0},
    {Quantity::pressure, "MPa", 1e6, 1, 0},
    {Quantity::pressure, "bar", 1e5, 1, 0},
    {Quantity::pressure, "mbar", 100, 1, 0},
    {Quantity::pressure, "psi", kPoundForce, 6451600000.0, 0},
    {Quantity::pressure, "mH2O", 980665, 100, 0},
    {Quantity::pressure, "mmH2O", 980665, 1e5, 0},
    {Quantity::pressure, "ftH2O", 298906692, 1e5, 0},
    {Quantity::pressure, "inH2O", 24908891, 1e5, 0},
    {Quantity::pressure, "mmHg", 133322387415.0, 1e9, 0},
    {Quantity::pressure, "inHg", 3386388640341.0, 1e9, 0},
    {Quantity::pressure, "atm", 101325, 1, 0},
    {Quantity::pressure, "kgf/cm2", 980665, 10, 0},

    {Quantity::massFlow, "kg/s", 1, 1, 0},
    {Quantity::massFlow, "kg/min", 1, 60, 0},
    {Quantity::massFlow, "kg/h", 1, 3600, 0},
    {Quantity::massFlow, "g/s", 1, 1e3, 0},
    {Quantity::massFlow, "t/h", 1, 3.6, 0},
    {Quantity::massFlow, "lb/s", 45359237, 1e8, 0},
    {Quantity::massFlow, "lb/min", 45359237, 60e8, 0},
    {Quantity::massFlow, "lb/h", 45359237, 3600e8, 0},

    {Quantity::volumeFlow, "m3/s", 1, 1, 0},
    {Quantity::volumeFlow, "m3/min", 1, 60, 0},
    {Quantity::volumeFlow, "m3/h", 1, 3600, 0},
    {Quantity::volumeFlow, "m3/d", 1, 86400, 0},
    {Quantity::volumeFlow, "l/s", 1, 1e3, 0},
    {Quantity::volumeFlow, "l/min", 1, 60e3, 0},
    {Quantity::volumeFlow, "l/h", 1, 3600e3, 0},
    {Quantity::volumeFlow, "ml/min", 1, 60e6, 0},
    {Quantity::volumeFlow, "Ml/d", 1, 86.4, 0},
    {Quantity::volumeFlow, "ft3/s", kCubicFoot, 1e12, 0},
    {Quantity::volumeFlow, "ft3/min", kCubicFoot, 60e12, 0},
    {Quantity::volumeFlow, "US gal/min", kUsGallon, 60e12, 0},
    {Quantity::volumeFlow, "US Mgal/d", kUsGallon, 86400e6, 0},
    {Quantity::volumeFlow, "imp gal/min", kImperialGallon, 60e8, 0},
    {Quantity::volumeFlow, "imp Mgal/d", kImperialGallon, 86400e2, 0},
    {Quantity::volumeFlow, "acre ft/d", 43560 * kCubicFoot, 86400e12, 0},

    {Quantity::velocity, "m/s", 1, 1, 0},
    {Quantity::velocity, "mm/s", 1, 1e3, 0},
    {Quantity::velocity, "cm/s", 1, 100, 0},
    {Quantity::velocity, "m/min", 1, 60, 0},
    {Quantity::velocity, "km/h", 1, 3.6, 0},
    {Quantity::velocity, "ft/s", 3048, 1e4, 0},
    {Quantity::velocity, "ft/min", 3048, 60e4, 0},

    {Quantity::temperature, "K", 1, 1, 0},
    {Quantity::temperature, "degC", 1, 1, 273.15},
    {Quantity::temperature, "degF", 5, 9, 459.67},
    {Quantity::temperature, "degR", 5, 9, 0},

    {Quantity::temperatureDifference, "K", 1, 1, 0},
    {Quantity::temperatureDifference, "degC", 1, 1, 0},
    {Quantity::temperatureDifference, "degF", 5, 9, 0},
    {Quantity::temperatureDifference, "degR", 5, 9, 0},

    {Quantity::density, "kg/m3", 1, 1, 0},
    {Quantity::density, "g/cm3", 1e3, 1, 0},
    {Quantity::density, "kg/l", 1e3, 1, 0},
    {Quantity::density, "g/l", 1, 1, 0},
    {Quantity::density, "lb/ft3", 453592370000.0, kCubicFoot, 0},
    {Quantity::density, "lb/US gal", 453592370000.0, kUsGallon, 0},

    {Quantity::viscosity, "Pa s", 1, 1, 0},
    {Quantity::viscosity, "mPa s", 1, 1e3, 0},
    {Quantity::viscosity, "uPa s", 1, 1e6, 0},
    {Quantity::viscosity, "P", 1, 10, 0},
    {Quantity::viscosity, "cP", 1, 1e3, 0},
    {Quantity::viscosity, "lb/(ft s)", 45359237, 30480000, 0},
    {Quantity::viscosity, "lbf s/ft2", kPoundForce, 929030400000.0, 0},

    {Quantity::specificHeat, "J/(kg K)", 1, 1, 0},
    {Quantity::specificHeat, "kJ/(kg K)", 1e3, 1, 0},
    {Quantity::specificHeat, "kcal/(kg K)", 41868, 10, 0},
    {Quantity::specificHeat, "BTU/(lb degF)", 41868, 10, 0},

    {Quantity::conductivity, "W/(m K)", 1, 1, 0},
    {Quantity::conductivity, "mW/(m K)", 1, 1e3, 0},
    {Quantity::conductivity, "BTU/(h ft degF)", kBtu * 9, 3600 * 5 * 30480000.0, 0},

    {Quantity::heat, "W", 1, 1, 0},
    {Quantity::heat, "kW", 1e3, 1, 0},
    {Quantity::heat, "MW", 1e6, 1, 0},
    {Quantity::heat, "kcal/h", 4186.8, 3600, 0},
    {Quantity::heat, "BTU/h", kBtu, 3600e8, 0},
    {Quantity::heat, "hp", 550 * 0.3048 * kPoundForce, 1e13, 0},

    {Quantity::heatFlux, "W/m2", 1, 1, 0},
    {Quantity::heatFlux, "kW/m2", 1e3, 1, 0},
    {Quantity::heatFlux, "W/cm2", 1e4, 1, 0},
    {Quantity::heatFlux, "BTU/(h ft2)", kBtu, 3600 * 9290304.0, 0},
};

/// Other spellings of units. They are read, never written.
struct Alias {
    std::string_view text;
    std::string_view unit;
};

constexpr Alias kAliases[] = {
    {"metre", "m"}, {"meter", "m"}, {"inch", "in"}, {"inches", "in"}, {"foot", "ft"}, {"feet", "ft"},
    {"mile", "mi"}, {"yard", "yd"}, {"sq in", "in2"}, {"sq ft", "ft2"},
    {"N/m2", "Pa"}, {"lbf/in2", "psi"}, {"PSI", "psi"}, {"mWC", "mH2O"}, {"mmWC", "mmH2O"}, {"inWC", "inH2O"},
    {"at", "kgf/cm2"},
    {"t/hr", "t/h"}, {"kg/hr", "kg/h"}, {"lb/hr", "lb/h"}, {"lbm/s", "lb/s"}, {"lbm/min", "lb/min"},
    {"lbm/h", "lb/h"},
    {"CMS", "m3/s"}, {"m3/hr", "m3/h"}, {"CMH", "m3/h"}, {"m3/day", "m3/d"}, {"CMD", "m3/d"},
    {"L/s", "l/s"}, {"LPS", "l/s"}, {"L/min", "l/min"}, {"lpm", "l/min"}, {"LPM", "l/min"}, {"L/h", "l/h"},
    {"mL/min", "ml/min"}, {"ML/d", "Ml/d"}, {"MLD", "Ml/d"}, {"cfs", "ft3/s"}, {"CFS", "ft3/s"},
    {"cfm", "ft3/min"}, {"CFM", "ft3/min"},
    {"gpm", "US gal/min"}, {"GPM", "US gal/min"}, {"US gpm", "US gal/min"}, {"gal/min", "US gal/min"},
    {"MGD", "US Mgal/d"}, {"IMGD", "imp Mgal/d"}, {"imp gpm", "imp gal/min"},
    {"AFD", "acre ft/d"}, {"acre-ft/d", "acre ft/d"},
    {"m/sec", "m/s"}, {"fps", "ft/s"}, {"fpm", "ft/min"},
    {"C", "degC"}, {"F", "degF"}, {"deg C", "degC"}, {"deg F", "degF"}, {"deg R", "degR"},
    {"kg/L", "kg/l"}, {"g/L", "g/l"}, {"lbm/ft3", "lb/ft3"},
    {"Pa.s", "Pa s"}, {"mPa.s", "mPa s"}, {"kg/(m s)", "Pa s"}, {"N s/m2", "Pa s"}, {"Poise", "P"},
    {"J/kg K", "J/(kg K)"}, {"J/kg/K", "J/(kg K)"}, {"J/(kg degC)", "J/(kg K)"},
    {"kJ/kg K", "kJ/(kg K)"}, {"kJ/kg/K", "kJ/(kg K)"}, {"Btu/(lb degF)", "BTU/(lb degF)"},
    {"W/m K", "W/(m K)"}, {"W/m/K", "W/(m K)"}, {"W/(m degC)", "W/(m K)"},
    {"Btu/(h ft degF)", "BTU/(h ft degF)"},
    {"J/s", "W"}, {"Btu/h", "BTU/h"}, {"BTU/hr", "BTU/h"}, {"Btu/hr", "BTU/h"}, {"HP", "hp"},
    {"Btu/(h ft2)", "BTU/(h ft2)"},
};

/// Characters of units that have a plain spelling.
constexpr Alias kCharacters[] = {
    {"\xC2\xB2", "2"},        // superscript two
    {"\xC2\xB3", "3"},        // superscript three
    {"^", ""},
    {"\xC2\xB0", "deg"},      // degree sign
    {"\xC2\xB5", "u"},        // micro sign
    {"\xCE\xBC", "u"},        // Greek mu
    {"\xC2\xB7", " "},        // middle dot
    {"\xE2\x8B\x85", " "},    // dot operator
    {"*", " "},
    {"\xC2\xA0", " "},        // no-break space
    {"\xE2\x80\x89", " "},    // thin space
    {"\xE2\x80\xAF", " "},    // narrow no-break space
    {"\xE2\x84\x83", "degC"},
    {"\xE2\x84\x89", "degF"},
};

constexpr std::string_view kKinematicUnits[] = {"cSt", "St", "m2/s", "mm2/s", "ft2/s"};

struct NamedSet {
    std::string_view name;
    std::array<std::string_view, std::size(kQuantities)> units;  // in the order of kQuantities
};

constexpr NamedSet kSets[] = {
    {"si", {"", "m", "m", "m2", "m", "Pa", "kg/s", "m3/s", "m/s", "K", "K", "kg/m3", "Pa s", "J/(kg K)",
            "W/(m K)", "W", "W/m2"}},
    {"metric", {"", "m", "mm", "mm2", "m", "bar", "kg/s", "l/min", "m/s", "degC", "K", "kg/m3", "mPa s",
                "kJ/(kg K)", "W/(m K)", "kW", "kW/m2"}},
    {"us", {"", "ft", "in", "in2", "ft", "psi", "lb/s", "US gal/min", "ft/s", "degF", "degF", "lb/ft3", "cP",
            "BTU/(lb degF)", "BTU/(h ft degF)", "BTU/h", "BTU/(h ft2)"}},
};
// clang-format on

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::string_view trimmed(std::string_view text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

const QuantityRow& rowOf(Quantity quantity)
{
    return kQuantities[static_cast<std::size_t>(quantity)];
}

/// The unit with plain characters, single blanks and none at its ends: "m3/h" of "m³/h".
std::string plainSpelling(std::string_view unit)
{
    std::string plain;
    while (!unit.empty()) {
        const auto* const character =
            std::find_if(std::begin(kCharacters), std::end(kCharacters),
                         [&](const Alias& alias) { return unit.substr(0, alias.text.size()) == alias.text; });
        const bool isKnown = character != std::end(kCharacters);
        const std::string_view next = isKnown            ? character->unit
                                      : isBlank(unit[0]) ? std::string_view(" ")
                                                         : unit.substr(0, 1);
        unit.remove_prefix(isKnown ? character->text.size() : 1);
        const bool isSecondBlank = next == " " && (plain.empty() || plain.back() == ' ');
        if (!isSecondBlank) plain += next;
    }
    return std::string(trimmed(plain));
}

const UnitRow* findByName(std::string_view unit, Quantity quantity)
{
    const auto* const row = std::find_if(std::begin(kUnits), std::end(kUnits), [&](const UnitRow& candidate) {
        return candidate.quantity == quantity && candidate.name == unit;
    });
    return row == std::end(kUnits) ? nullptr : row;
}

const UnitRow* findUnit(std::string_view unit, Quantity quantity)
{
    if (const UnitRow* row = findByName(unit, quantity)) return row;

    const std::string plain = plainSpelling(unit);
    if (const UnitRow* row = findByName(plain, quantity)) return row;

    const auto* const alias = std::find_if(std::begin(kAliases), std::end(kAliases),
                                           [&](const Alias& row) { return row.text == plain; });
    return alias == std::end(kAliases) ? nullptr : findByName(alias->unit, quantity);
}

std::string listOfUnits(Quantity quantity)
{
    std::string list;
    for (const std::string& unit : unitsOf(quantity)) {
        if (!list.empty()) list += ", ";
        list += unit;
    }
    return list;
}

/// Why a unit is none of the quantity's, and what to write instead.
std::string unitError(std::string_view unit, Quantity quantity)
{
    const std::string words(rowOf(quantity).words);
    const std::string quoted = inQuotes(unit);
    if (quantity == Quantity::none) return words + " has no unit, so " + quoted + " cannot follow it";

    const std::string use = "; use " + listOfUnits(quantity);
    const std::string plain = plainSpelling(unit);
    const bool isKinematic =
        std::find(std::begin(kKinematicUnits), std::end(kKinematicUnits), plain) != std::end(kKinematicUnits);
    if (quantity == Quantity::viscosity && isKinematic) {
        return quoted +
               " is a unit of kinematic viscosity, and this is a dynamic one: multiply by the density" + use;
    }
    if (!plain.empty() && plain.front() == ',') {
        return "decimals are written with a point, not with a comma: " + quoted;
    }
    for (const QuantityRow& other : kQuantities) {
        if (findUnit(unit, other.quantity)) {
            std::string text = quoted + " is a unit of ";
            text += other.words;
            text += ", not of ";
            text += words;
            text += use;
            return text;
        }
    }
    return "the unit " + quoted + " of " + words + " is unknown" + use;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Takes the number off the front of the text. JSON's numbers, and those with a plus sign or without a digit
/// before the point. Nothing, and why in error, when there is none.
std::optional<double> takeNumber(std::string_view& text, std::string& error)
{
    const std::string_view whole = text;
    const bool isNegative = !text.empty() && text.front() == '-';
    if (!text.empty() && (isNegative || text.front() == '+')) text.remove_prefix(1);

    const bool startsWithPoint = text.size() > 1 && text[0] == '.' && isDigit(text[1]);
    if (!startsWithPoint && (text.empty() || !isDigit(text.front()))) {
        error = inQuotes(whole) + " does not begin with a number";
        return std::nullopt;
    }
    if (text.size() > 1 && text[0] == '0' && isDigit(text[1])) {
        error = "the number in " + inQuotes(whole) + " begins with a needless 0";
        return std::nullopt;
    }
    double value = 0.0;
    const std::from_chars_result result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc()) {
        error = "the number in " + inQuotes(whole) + " is too large or too small";
        return std::nullopt;
    }
    const std::string_view digits = text.substr(0, static_cast<std::size_t>(result.ptr - text.data()));
    const std::size_t point = digits.find('.');
    if (point != std::string_view::npos && (point + 1 == digits.size() || !isDigit(digits[point + 1]))) {
        error = "the number in " + inQuotes(whole) + " has no digit after its point";
        return std::nullopt;
    }
    text.remove_prefix(digits.size());
    return isNegative ? -value : value;
}

void setUnit(UnitSet& set, Quantity quantity, std::string_view unit)
{
    if (quantity != Quantity::none) set[quantity] = std::string(unit);
}

/// Adds "pressure=bar" to the set. False, and why in error, when it is no such text.
bool addUnit(UnitSet& set, std::string_view item, std::string& error)
{
    const std::size_t equals = item.find('=');
    const std::string_view name = trimmed(item.substr(0, equals));
    const std::string_view unit = trimmed(item.substr(equals + 1));
    const std::optional<Quantity> quantity = findQuantity(name);
    if (!quantity || *quantity == Quantity::none) {
        error = "the quantity " + inQuotes(name) + " is unknown; use";
        const char* separator = " ";
        for (const QuantityRow& row : kQuantities) {
            if (row.quantity == Quantity::none) continue;
            error += separator + std::string(row.name);
            separator = ", ";
        }
        return false;
    }
    const UnitRow* const row = findUnit(unit, *quantity);
    if (!row) {
        error = unitError(unit, *quantity);
        return false;
    }
    setUnit(set, *quantity, row->name);
    return true;
}

}  // namespace

std::string_view quantityName(Quantity quantity)
{
    return rowOf(quantity).name;
}

std::optional<Quantity> findQuantity(std::string_view name)
{
    for (const QuantityRow& row : kQuantities) {
        if (row.name == name) return row.quantity;
    }
    return std::nullopt;
}

std::string_view siUnit(Quantity quantity)
{
    const auto* const first = std::find_if(std::begin(kUnits), std::end(kUnits),
                                           [&](const UnitRow& row) { return row.quantity == quantity; });
    return first == std::end(kUnits) ? std::string_view() : first->name;
}

std::vector<std::string> unitsOf(Quantity quantity)
{
    std::vector<std::string> names;
    for (const UnitRow& row : kUnits) {
        if (row.quantity == quantity) names.emplace_back(row.name);
    }
    return names;
}

bool isUnitOf(std::string_view unit, Quantity quantity)
{
    return findUnit(unit, quantity) != nullptr;
}

double toSi(double value, std::string_view unit, Quantity quantity)
{
    const UnitRow* const row = unit.empty() ? nullptr : findUnit(unit, quantity);
    return row ? (value + row->offset) * row->multiplier / row->divisor : value;
}

double fromSi(double value, std::string_view unit, Quantity quantity)
{
    const UnitRow* const row = unit.empty() ? nullptr : findUnit(unit, quantity);
    return row ? value * row->divisor / row->multiplier - row->offset : value;
}

std::optional<double> parseQuantity(std::string_view text, Quantity quantity, std::string& error)
{
    text = trimmed(text);
    if (text.empty()) {
        error = "an empty text is not " + std::string(rowOf(quantity).words);
        return std::nullopt;
    }
    const std::string_view whole = text;
    const std::optional<double> value = takeNumber(text, error);
    if (!value) return std::nullopt;

    const std::string unit = std::string(trimmed(text));
    if (!unit.empty() && !findUnit(unit, quantity)) {
        error = unitError(unit, quantity);
        return std::nullopt;
    }
    const double si = toSi(*value, unit, quantity);
    if (!std::isfinite(si)) {
        error = "the number in " + inQuotes(whole) + " is too large";
        return std::nullopt;
    }
    return si;
}

std::optional<UnitSet> findUnitSet(std::string_view name)
{
    for (const NamedSet& row : kSets) {
        if (row.name != name) continue;
        UnitSet set;
        for (std::size_t k = 0; k < row.units.size(); ++k)
            setUnit(set, kQuantities[k].quantity, row.units[k]);
        return set;
    }
    return std::nullopt;
}

std::vector<std::string> unitSetNames()
{
    std::vector<std::string> names;
    for (const NamedSet& row : kSets)
        names.emplace_back(row.name);
    return names;
}

std::optional<UnitSet> parseUnitSet(std::string_view text, std::string& error)
{
    UnitSet set;
    bool isFirst = true;
    while (true) {
        const std::size_t comma = text.find(',');
        const std::string_view item = trimmed(text.substr(0, comma));
        const bool isNamedSet = item.find('=') == std::string_view::npos;
        if (isNamedSet) {
            const std::optional<UnitSet> named = findUnitSet(item);
            if (!named || !isFirst) {
                error = named ? "the set of units " + inQuotes(item) + " has to stand first"
                              : "the set of units " + inQuotes(item) +
                                    " is unknown; use si, metric, us or quantity=unit, such as pressure=bar";
                return std::nullopt;
            }
            set = *named;
        } else if (!addUnit(set, item, error)) {
            return std::nullopt;
        }
        if (comma == std::string_view::npos) return set;
        text.remove_prefix(comma + 1);
        isFirst = false;
    }
}

std::string displayUnit(const UnitSet& set, Quantity quantity)
{
    const auto found = set.find(quantity);
    return found == set.end() ? std::string(siUnit(quantity)) : found->second;
}

}  // namespace kit
