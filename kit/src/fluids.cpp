#include "fluids.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

#include <nlohmann/json.hpp>

#include "findings.h"
#include "fluid_laws.h"
#include "fluid_water.h"

namespace kit
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr double kIcePoint = 273.15;                       // [K], 0 degC
constexpr double kExampleTemperature = kUsualTemperature;  // of the printed table
constexpr double kExampleConcentration = 0.3;              // [-], of mixtures that have no usual one
constexpr double kFitReach = 20.0;       // [K], of the viscosity coefficients to either side
constexpr double kLowestPole = -2000.0;  // [K], of the fit: below it the law is an exponential
constexpr std::size_t kTextWidth = 110;
constexpr double kSmallestFitStep = 1.0;  // [K], below which a side counts as the end of the range

/// A row of the table of fluids.
struct FluidRow {
    std::string_view name;
    std::array<std::string_view, 5> aliases;   // unused ones are empty
    FluidRange temperatures;                   // [K]
    std::optional<FluidRange> concentrations;  // [-], mass fraction; nothing for a fluid without one
    std::optional<double> usualConcentration;  // [-], taken when none is given
    std::string_view solute;                   // what the concentration is of
    LiquidValues (*values)(double temperature, double concentration);
    double (*freezing)(double concentration);  // [K]; null when it plays no part
    std::string_view sources;
    std::string_view accuracy;
};

// ISO 3448 gives the viscosity at 40 degC. That at 100 degC is the one of a viscosity index of 100 (ISO 2909,
// ASTM D2270, table 1), as of solvent-refined paraffinic oils. The densities are typical.
constexpr OilGrade kVg32 = {32.0, 5.362, 875.0};
constexpr OilGrade kVg46 = {46.0, 6.760, 879.0};
constexpr OilGrade kVg68 = {68.0, 8.731, 885.0};

constexpr std::string_view kGlycolSource = "Melinder, Properties of Secondary Working Fluids for Indirect "
                                           "Systems, IIR, 2010: density, viscosity, specific "
                                           "heat, conductivity and freezing point";
constexpr std::string_view kGlycolAccuracy = "at concentration 0 within 0.1 % (density), 2 % (viscosity), "
                                             "0.3 % (specific heat) and 1 % (conductivity) of "
                                             "IAPWS water; mixtures without inhibitors";
constexpr std::string_view kOilSource = "ISO 3448 (viscosity at 40 degC); ISO 2909 with a viscosity index of "
                                        "100 (at 100 degC); Walther 1931 / ASTM D341 "
                                        "(between); API MPMS 11.1 table 54D (expansion); Cragoe, NBS Misc. "
                                        "Publ. 97, 1929 (specific heat, conductivity)";
constexpr std::string_view kOilAccuracy = "a grade allows 10 % of viscosity at 40 degC, and density is "
                                          "typical; specific heat 4 %, conductivity 10 %";

LiquidValues pureWater(double temperature, double)
{
    return water(temperature);
}

LiquidValues oil32(double temperature, double)
{
    return mineralOil(temperature, kVg32);
}

LiquidValues oil46(double temperature, double)
{
    return mineralOil(temperature, kVg46);
}

LiquidValues oil68(double temperature, double)
{
    return mineralOil(temperature, kVg68);
}

const FluidRow kFluids[] = {
    {"water",
     {"pure water", "fresh water", "h2o"},
     {273.15, 473.15},
     std::nullopt,
     std::nullopt,
     "",
     pureWater,
     nullptr,
     "IAPWS-IF97 region 1 (density, specific heat); IAPWS R12-08 (viscosity); IAPWS R15-11 (conductivity)",
     "density 0.01 %, viscosity 1 %, specific heat 0.2 %, conductivity 1.5 %; at the standard atmosphere, "
     "above "
     "100 degC at saturation"},
    {"seawater",
     {"sea water", "salt water"},
     {273.15, 453.15},
     FluidRange{0.0, 0.15},
     0.035,
     "sea salt",
     seawater,
     nullptr,
     "Sharqawy, Lienhard & Zubair, Desalination and Water Treatment 16, 2010 (density, viscosity); Jamieson "
     "et al. "
     "1969 (specific heat); Jamieson & Tudhope 1970 (conductivity)",
     "density 0.1 %, viscosity 1.5 %, specific heat 0.28 %, conductivity 3 %"},
    {"ethylene glycol",
     {"monoethylene glycol", "ethylene glycol water", "meg", "eg"},
     {222.0, 373.15},
     FluidRange{0.0, 0.6},
     std::nullopt,
     "ethylene glycol",
     ethyleneGlycol,
     ethyleneGlycolFreezing,
     kGlycolSource,
     kGlycolAccuracy},
    {"propylene glycol",
     {"monopropylene glycol", "propylene glycol water", "mpg", "pg"},
     {223.2, 373.15},
     FluidRange{0.0, 0.6},
     std::nullopt,
     "propylene glycol",
     propyleneGlycol,
     propyleneGlycolFreezing,
     kGlycolSource,
     kGlycolAccuracy},
    {"mineral oil VG 32",
     {"ISO VG 32", "VG 32", "mineral oil 32", "mineral oil ISO VG 32"},
     {273.15, 393.15},
     std::nullopt,
     std::nullopt,
     "",
     oil32,
     nullptr,
     kOilSource,
     kOilAccuracy},
    {"mineral oil VG 46",
     {"ISO VG 46", "VG 46", "mineral oil 46", "mineral oil ISO VG 46", "mineral oil"},
     {273.15, 393.15},
     std::nullopt,
     std::nullopt,
     "",
     oil46,
     nullptr,
     kOilSource,
     kOilAccuracy},
    {"mineral oil VG 68",
     {"ISO VG 68", "VG 68", "mineral oil 68", "mineral oil ISO VG 68"},
     {273.15, 393.15},
     std::nullopt,
     std::nullopt,
     "",
     oil68,
     nullptr,
     kOilSource,
     kOilAccuracy},
    {"glycerine",
     {"glycerol", "glycerin", "glycerine water", "glycerol water"},
     {273.15, 373.15},
     FluidRange{0.0, 1.0},
     1.0,
     "glycerine",
     glycerine,
     nullptr,
     "Cheng, Ind. Eng. Chem. Res. 47, 2008 (viscosity); Volk & Kaehler, Experiments in Fluids 59, 2018 "
     "(density); "
     "Daubert & Danner 1989 (specific heat and conductivity of the pure liquid), IAPWS water and mixing by "
     "mass",
     "viscosity 5 %, density 0.1 % at 15..30 degC, specific heat 5 %, conductivity 3 %"},
};

/// A name in lower case without blanks, underscores and hyphens.
std::string plainName(std::string_view name)
{
    std::string plain;
    for (const char c : name) {
        if (c == ' ' || c == '_' || c == '-') continue;
        plain += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return plain;
}

const FluidRow* findFluid(std::string_view name)
{
    const std::string plain = plainName(name);
    if (plain.empty()) return nullptr;
    for (const FluidRow& row : kFluids) {
        if (plainName(row.name) == plain) return &row;
        for (const std::string_view alias : row.aliases) {
            if (plainName(alias) == plain) return &row;
        }
    }
    return nullptr;
}

/// A number with up to so many significant digits.
std::string digits(double value, int count)
{
    char text[32];
    const std::to_chars_result result =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, count);
    return {text, result.ptr};
}

/// "20 degC (293.15 K)"
std::string temperatureText(double temperature)
{
    const double celsius = std::round((temperature - kIcePoint) * 100.0) / 100.0;
    return digits(celsius, 5) + " degC (" + digits(temperature, 6) + " K)";
}

FluidRange temperaturesOf(const FluidRow& row, double concentration)
{
    FluidRange range = row.temperatures;
    if (row.freezing) range.lowest = std::max(range.lowest, row.freezing(concentration));
    return range;
}

/// The concentration that counts; nothing, and why in error, when it is missing, needless or out of range.
std::optional<double> usedConcentration(const FluidRow& row, std::optional<double> given, std::string& error)
{
    const std::string name(row.name);
    if (!row.concentrations) {
        if (!given) return 0.0;
        error = name + " has no concentration, and " + digits(*given, 6) + " is given";
        return std::nullopt;
    }
    const std::optional<double> used = given ? given : row.usualConcentration;
    const FluidRange& range = *row.concentrations;
    const std::string known = "from " + digits(range.lowest, 6) + " to " + digits(range.highest, 6);
    if (!used) {
        error =
            name + " needs a concentration, the mass fraction of " + std::string(row.solute) + " " + known;
        return std::nullopt;
    }
    if (!(*used >= range.lowest && *used <= range.highest)) {
        error = name + " is known at mass fractions of " + std::string(row.solute) + " " + known +
                ", not at " + digits(*used, 6);
        if (*used > 1.0 && *used <= 100.0) error += " (30 % is 0.3)";
        return std::nullopt;
    }
    return used;
}

/// The three temperatures [K] of the fit: the wanted one is the first, the middle or the last.
std::array<double, 3> fitTemperatures(double temperature, const FluidRange& range)
{
    const double low = std::max(range.lowest, temperature - kFitReach);
    const double high = std::min(range.highest, temperature + kFitReach);
    if (temperature - low < kSmallestFitStep) return {temperature, 0.5 * (temperature + high), high};
    if (high - temperature < kSmallestFitStep) return {low, 0.5 * (low + temperature), temperature};
    return {low, temperature, high};
}

/// Vogel's law mu = A exp(B / (T - C)) through the viscosity at three temperatures, as the library's
/// coefficients: c1 = A, c2 = B + 273.15, c3 = 546.3 - C.
void fitViscosity(const FluidRow& row, double concentration, FluidValues& values)
{
    const std::array<double, 3> T = fitTemperatures(values.temperature, temperaturesOf(row, concentration));
    std::array<double, 3> y{};
    for (std::size_t k = 0; k < 3; ++k)
        y[k] = std::log(row.values(T[k], concentration).viscosity);

    // (T3 - C) / (T1 - C) is the ratio of the slopes. Liquids steepen towards the cold, so it is above 1;
    // where a correlation does not, close to its ends, C is that of nearly an exponential through the outer
    // points.
    const double ratio = (y[0] - y[1]) / (T[1] - T[0]) / ((y[1] - y[2]) / (T[2] - T[1]));
    const double C = ratio > 1.0 ? std::max((ratio * T[0] - T[2]) / (ratio - 1.0), kLowestPole) : kLowestPole;
    const double B = (y[0] - y[2]) * (T[0] - C) * (T[2] - C) / (T[2] - T[0]);
    const double A = values.viscosity * std::exp(-B / (values.temperature - C));
    values.viscosityCoefficients[0] = A;
    values.viscosityCoefficients[1] = B + kIcePoint;
    values.viscosityCoefficients[2] = 2.0 * kIcePoint - C;
}

std::string listOfFluids()
{
    std::string list;
    for (const FluidRow& row : kFluids) {
        if (!list.empty()) list += ", ";
        list += row.name;
    }
    return list;
}

/// The concentration of the printed example values; 0 for fluids without one.
double exampleConcentration(const FluidRow& row)
{
    return row.concentrations ? row.usualConcentration.value_or(kExampleConcentration) : 0.0;
}

using Line = std::vector<std::string>;

/// The cell of a value of the table in the unit of the set.
std::string cell(double value, Quantity quantity, const UnitSet& units)
{
    return digits(fromSi(value, displayUnit(units, quantity), quantity), 5);
}

std::string rangeCell(const FluidRange& range, Quantity quantity, const UnitSet& units)
{
    return cell(range.lowest, quantity, units) + " .. " + cell(range.highest, quantity, units);
}

Line tableLine(const FluidRow& row, const UnitSet& units)
{
    const double concentration = exampleConcentration(row);
    const LiquidValues values = row.values(kExampleTemperature, concentration);
    return {std::string(row.name),
            rangeCell(row.temperatures, Quantity::temperature, units),
            row.concentrations ? rangeCell(*row.concentrations, Quantity::none, units) : "-",
            row.concentrations ? digits(concentration, 5) : "-",
            cell(values.density, Quantity::density, units),
            cell(values.viscosity, Quantity::viscosity, units),
            cell(values.specificHeat, Quantity::specificHeat, units),
            cell(values.conductivity, Quantity::conductivity, units)};
}

/// Lines with columns of one width each, two blanks apart.
std::string aligned(const std::vector<Line>& lines)
{
    std::vector<std::size_t> widths(lines.front().size(), 0);
    for (const Line& line : lines) {
        for (std::size_t k = 0; k < line.size(); ++k)
            widths[k] = std::max(widths[k], line[k].size());
    }
    std::string text;
    for (const Line& line : lines) {
        for (std::size_t k = 0; k < line.size(); ++k) {
            text += line[k];
            if (k + 1 < line.size()) text.append(widths[k] + 2 - line[k].size(), ' ');
        }
        text += '\n';
    }
    return text;
}

/// A line "  heading: text", broken between words.
std::string paragraph(const std::string& heading, std::string_view text)
{
    std::string lines;
    std::string line = "  " + heading + ":";
    while (!text.empty()) {
        const std::size_t blank = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, blank);
        if (line.size() + 1 + word.size() > kTextWidth) {
            lines += line + '\n';
            line = "   ";
        }
        line += ' ' + std::string(word);
        text.remove_prefix(std::min(blank + 1, text.size()));
    }
    return lines + line + '\n';
}

Json rangeJson(const FluidRange& range)
{
    return Json::array({range.lowest, range.highest});
}

Json fluidJson(const FluidRow& row)
{
    Json aliases = Json::array();
    for (const std::string_view alias : row.aliases) {
        if (!alias.empty()) aliases.push_back(alias);
    }
    const double concentration = exampleConcentration(row);
    const LiquidValues values = row.values(kExampleTemperature, concentration);
    Json object{
        {"name", row.name}, {"aliases", std::move(aliases)}, {"temperature", rangeJson(row.temperatures)}};
    if (row.concentrations) object["concentration"] = rangeJson(*row.concentrations);
    if (row.usualConcentration) object["usual_concentration"] = *row.usualConcentration;
    Json example{{"temperature", kExampleTemperature}};
    if (row.concentrations) example["concentration"] = concentration;
    example["density"] = values.density;
    example["viscosity"] = values.viscosity;
    example["specific_heat"] = values.specificHeat;
    example["conductivity"] = values.conductivity;
    object["example"] = std::move(example);
    object["sources"] = row.sources;
    object["accuracy"] = row.accuracy;
    return object;
}

}  // namespace

std::vector<std::string> fluidNames()
{
    std::vector<std::string> names;
    for (const FluidRow& row : kFluids)
        names.emplace_back(row.name);
    return names;
}

bool isKnownFluid(std::string_view name)
{
    return findFluid(name) != nullptr;
}

std::optional<FluidRange> fluidConcentrations(std::string_view name)
{
    const FluidRow* const row = findFluid(name);
    return row ? row->concentrations : std::nullopt;
}

std::optional<FluidRange> fluidTemperatures(std::string_view name, std::optional<double> concentration)
{
    const FluidRow* const row = findFluid(name);
    if (!row) return std::nullopt;
    return concentration ? temperaturesOf(*row, *concentration) : row->temperatures;
}

std::optional<FluidValues> fluidValues(const std::string& name, double temperature,
                                       std::optional<double> concentration, std::string& error)
{
    const FluidRow* const row = findFluid(name);
    if (!row) {
        error = "the fluid " + inQuotes(name) + " is unknown; use " + listOfFluids();
        return std::nullopt;
    }
    const std::optional<double> used = usedConcentration(*row, concentration, error);
    if (!used) return std::nullopt;

    const FluidRange range = temperaturesOf(*row, *used);
    if (!(temperature >= range.lowest && temperature <= range.highest)) {
        error = std::string(row->name);
        if (row->freezing) error += " at a mass fraction of " + digits(*used, 6);
        error += " is known from " + temperatureText(range.lowest) + " to " + temperatureText(range.highest) +
                 ", not at " + temperatureText(temperature);
        return std::nullopt;
    }

    const LiquidValues liquid = row->values(temperature, *used);
    FluidValues values;
    values.name = row->name;
    values.temperature = temperature;
    values.density = liquid.density;
    values.viscosity = liquid.viscosity;
    values.specificHeat = liquid.specificHeat;
    values.conductivity = liquid.conductivity;
    fitViscosity(*row, *used, values);
    return values;
}

std::string fluidTable(const UnitSet& units)
{
    const auto heading = [&](const char* name, Quantity quantity) {
        return std::string(name) + " [" + displayUnit(units, quantity) + "]";
    };
    std::vector<Line> lines{
        {"fluid", heading("temperature", Quantity::temperature), "concentration [-]", "example at [-]",
         heading("density", Quantity::density), heading("viscosity", Quantity::viscosity),
         heading("specific heat", Quantity::specificHeat), heading("conductivity", Quantity::conductivity)}};
    for (const FluidRow& row : kFluids)
        lines.push_back(tableLine(row, units));

    std::string text = aligned(lines);
    text +=
        "\nThe values are those at 20 degC and the concentration \"example at\". A concentration is the mass "
        "fraction of the\nsolute. Mixtures with glycol are known from their freezing point on.\n";
    for (const FluidRow& row : kFluids) {
        std::string others;
        for (const std::string_view alias : row.aliases) {
            if (alias.empty()) continue;
            if (!others.empty()) others += ", ";
            others += alias;
        }
        text += "\n" + std::string(row.name) + "\n" + paragraph("other names", others) +
                paragraph("sources", row.sources) + paragraph("accuracy", row.accuracy);
    }
    return text;
}

std::string fluidTableJson()
{
    Json array = Json::array();
    for (const FluidRow& row : kFluids)
        array.push_back(fluidJson(row));
    return array.dump(2) + "\n";
}

}  // namespace kit
