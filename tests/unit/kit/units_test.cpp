#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "units.h"

using kit::Quantity;

namespace
{

const std::vector<Quantity> kAll = {Quantity::none,
                                    Quantity::length,
                                    Quantity::diameter,
                                    Quantity::area,
                                    Quantity::head,
                                    Quantity::pressure,
                                    Quantity::massFlow,
                                    Quantity::volumeFlow,
                                    Quantity::velocity,
                                    Quantity::temperature,
                                    Quantity::temperatureDifference,
                                    Quantity::density,
                                    Quantity::viscosity,
                                    Quantity::specificHeat,
                                    Quantity::conductivity,
                                    Quantity::heat,
                                    Quantity::heatFlux};

/// The value of a text, or NaN and a failed test.
double parsed(const std::string& text, Quantity quantity)
{
    std::string error;
    const std::optional<double> value = kit::parseQuantity(text, quantity, error);
    EXPECT_TRUE(value) << text << ": " << error;
    return value.value_or(std::numeric_limits<double>::quiet_NaN());
}

/// Why a text is refused; a failed test when it is not.
std::string refusal(const std::string& text, Quantity quantity)
{
    std::string error;
    EXPECT_FALSE(kit::parseQuantity(text, quantity, error)) << text;
    return error;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

/// A unit as docs/units.md has it.
struct DocumentedUnit {
    double si = 0.0;                   // of 1 of the unit
    std::vector<std::string> aliases;  // other spellings
};

/// The texts between backquotes.
std::vector<std::string> quotedParts(const std::string& text)
{
    std::vector<std::string> parts;
    std::size_t start = text.find('`');
    while (start != std::string::npos) {
        const std::size_t end = text.find('`', start + 1);
        if (end == std::string::npos) break;
        parts.push_back(text.substr(start + 1, end - start - 1));
        start = text.find('`', end + 1);
    }
    return parts;
}

std::vector<std::string> cellsOf(const std::string& line)
{
    std::vector<std::string> cells;
    std::size_t start = 1;
    while (start < line.size()) {
        const std::size_t end = std::min(line.find('|', start), line.size());
        cells.push_back(line.substr(start, end - start));
        start = end + 1;
    }
    return cells;
}

/// The units of docs/units.md by the name of their quantity.
std::map<std::string, std::map<std::string, DocumentedUnit>> documentedUnits()
{
    std::map<std::string, std::map<std::string, DocumentedUnit>> units;
    std::ifstream file(TAVELL_SOURCE "/docs/units.md");
    std::string line;
    std::string quantity;
    while (std::getline(file, line)) {
        if (line.rfind("## `", 0) == 0) quantity = quotedParts(line).front();
        if (quantity.empty() || line.rfind("| `", 0) != 0) continue;
        const std::vector<std::string> cells = cellsOf(line);
        if (cells.size() < 4) continue;
        DocumentedUnit unit;
        const char* const number = cells[1].data() + 1;
        std::from_chars(number, cells[1].data() + cells[1].size(), unit.si);
        unit.aliases = quotedParts(cells[3]);
        units[quantity][quotedParts(cells[0]).front()] = unit;
    }
    return units;
}

}  // namespace

TEST(Units, names_of_quantities_are_found_again)
{
    for (const Quantity quantity : kAll) {
        EXPECT_EQ(kit::findQuantity(kit::quantityName(quantity)), quantity);
    }
    EXPECT_EQ(kit::quantityName(Quantity::massFlow), "mass_flow");
    EXPECT_FALSE(kit::findQuantity("weight"));
}

TEST(Units, the_si_unit_stands_first_and_changes_nothing)
{
    for (const Quantity quantity : kAll) {
        if (quantity == Quantity::none) continue;
        const std::vector<std::string> units = kit::unitsOf(quantity);
        ASSERT_FALSE(units.empty());
        EXPECT_EQ(units.front(), kit::siUnit(quantity));
        EXPECT_EQ(kit::toSi(0.1, units.front(), quantity), 0.1);
        EXPECT_EQ(kit::fromSi(0.1, "", quantity), 0.1);
    }
    EXPECT_EQ(kit::siUnit(Quantity::none), "");
    EXPECT_TRUE(kit::unitsOf(Quantity::none).empty());
}

TEST(Units, decimal_units_are_rounded_once)
{
    // The nearest double of the decimal number, as a compiler reads it.
    EXPECT_EQ(parsed("25 mm", Quantity::diameter), 0.025);
    EXPECT_EQ(parsed("0.3 mm", Quantity::diameter), 0.0003);
    EXPECT_EQ(parsed("50 um", Quantity::diameter), 50e-6);
    EXPECT_EQ(parsed("3 bar", Quantity::pressure), 3e5);
    EXPECT_EQ(parsed("7 cm", Quantity::length), 0.07);
    EXPECT_EQ(parsed("12 l/s", Quantity::volumeFlow), 0.012);
    EXPECT_EQ(parsed("12 l/min", Quantity::volumeFlow), 0.0002);
    EXPECT_EQ(parsed("36 m3/h", Quantity::volumeFlow), 0.01);
    EXPECT_EQ(parsed("1.002 mPa s", Quantity::viscosity), 0.001002);
    EXPECT_EQ(parsed("3 in", Quantity::diameter), 0.0762);
    EXPECT_EQ(parsed("100 ft", Quantity::length), 30.48);
}

TEST(Units, units_have_their_defined_values)
{
    // NIST Special Publication 811 (2008), appendix B.8, seven digits
    EXPECT_NEAR(kit::toSi(1, "psi", Quantity::pressure), 6894.757, 5e-4);
    EXPECT_NEAR(kit::toSi(1, "mmHg", Quantity::pressure), 133.3224, 5e-5);
    EXPECT_NEAR(kit::toSi(1, "inHg", Quantity::pressure), 3386.389, 5e-4);
    EXPECT_NEAR(kit::toSi(1, "ftH2O", Quantity::pressure), 2989.067, 5e-4);
    EXPECT_NEAR(kit::toSi(1, "inH2O", Quantity::pressure), 249.0889, 5e-5);
    EXPECT_NEAR(kit::toSi(1, "kgf/cm2", Quantity::pressure), 98066.5, 5e-2);
    EXPECT_NEAR(kit::toSi(1, "US gal/min", Quantity::volumeFlow), 6.309020e-5, 5e-12);
    EXPECT_NEAR(kit::toSi(1, "ft3/min", Quantity::volumeFlow), 4.719474e-4, 5e-11);
    EXPECT_NEAR(kit::toSi(1, "ft3/s", Quantity::volumeFlow), 2.831685e-2, 5e-9);
    EXPECT_NEAR(kit::toSi(1, "lb/s", Quantity::massFlow), 0.4535924, 5e-8);
    EXPECT_NEAR(kit::toSi(1, "lb/h", Quantity::massFlow), 1.259979e-4, 5e-11);
    EXPECT_NEAR(kit::toSi(1, "lb/ft3", Quantity::density), 16.01846, 5e-6);
    EXPECT_NEAR(kit::toSi(1, "lb/US gal", Quantity::density), 119.8264, 5e-5);
    EXPECT_NEAR(kit::toSi(1, "lb/(ft s)", Quantity::viscosity), 1.488164, 5e-7);
    EXPECT_NEAR(kit::toSi(1, "lbf s/ft2", Quantity::viscosity), 47.88026, 5e-6);
    EXPECT_NEAR(kit::toSi(1, "BTU/h", Quantity::heat), 0.2930711, 5e-8);
    EXPECT_NEAR(kit::toSi(1, "hp", Quantity::heat), 745.6999, 5e-5);
    EXPECT_NEAR(kit::toSi(1, "BTU/(h ft2)", Quantity::heatFlux), 3.154591, 5e-7);
    EXPECT_NEAR(kit::toSi(1, "BTU/(h ft degF)", Quantity::conductivity), 1.730735, 5e-7);
    EXPECT_NEAR(kit::toSi(1, "BTU/(lb degF)", Quantity::specificHeat), 4186.8, 5e-2);
    EXPECT_NEAR(kit::toSi(1, "kcal/h", Quantity::heat), 1.163, 1e-12);
    // by hand: an imperial gallon is 4.54609 l; 1e6 gallons a day; an acre foot is 43560 cubic feet
    EXPECT_NEAR(kit::toSi(1, "imp gal/min", Quantity::volumeFlow), 4.54609e-3 / 60, 1e-18);
    EXPECT_NEAR(kit::toSi(1, "US Mgal/d", Quantity::volumeFlow), 3785.411784 / 86400, 1e-15);
    EXPECT_NEAR(kit::toSi(1, "imp Mgal/d", Quantity::volumeFlow), 4546.09 / 86400, 1e-15);
    EXPECT_NEAR(kit::toSi(1, "acre ft/d", Quantity::volumeFlow), 43560 * 0.028316846592 / 86400, 1e-15);
    EXPECT_NEAR(kit::toSi(1, "Ml/d", Quantity::volumeFlow), 1000.0 / 86400, 1e-15);
}

TEST(Units, only_temperatures_have_an_offset)
{
    EXPECT_EQ(parsed("60 degC", Quantity::temperature), 333.15);
    EXPECT_NEAR(parsed("212 degF", Quantity::temperature), 373.15, 1e-12);
    EXPECT_NEAR(parsed("491.67 degR", Quantity::temperature), 273.15, 1e-12);
    EXPECT_EQ(kit::fromSi(293.15, "degC", Quantity::temperature), 20.0);
    EXPECT_NEAR(kit::fromSi(273.15, "degF", Quantity::temperature), 32.0, 1e-12);
    EXPECT_EQ(parsed("60 degC", Quantity::temperatureDifference), 60.0);
    EXPECT_EQ(parsed("9 degF", Quantity::temperatureDifference), 5.0);
}

TEST(Units, values_come_back_from_si)
{
    for (const Quantity quantity : kAll) {
        for (const std::string& unit : kit::unitsOf(quantity)) {
            for (const double value : {1.0, 0.1, -7.3, 123.456, 1e-9, 6.02e23}) {
                // Three roundings each way; an offset rounds at its own size.
                const bool hasOffset = quantity == Quantity::temperature && unit.rfind("deg", 0) == 0;
                const double size = std::fabs(value) + (hasOffset ? 500.0 : 0.0);
                const double back = kit::fromSi(kit::toSi(value, unit, quantity), unit, quantity);
                EXPECT_NEAR(back, value, 4 * std::numeric_limits<double>::epsilon() * size) << unit;
            }
        }
    }
}

TEST(Units, numbers_are_those_of_json_and_a_little_more)
{
    EXPECT_EQ(parsed("25mm", Quantity::length), 0.025);
    EXPECT_EQ(parsed("  25\tmm ", Quantity::length), 0.025);
    EXPECT_EQ(parsed("-3.5e2 kPa", Quantity::pressure), -3.5e5);
    EXPECT_EQ(parsed("+2", Quantity::length), 2.0);
    EXPECT_EQ(parsed(".5 m", Quantity::length), 0.5);
    EXPECT_EQ(parsed("-.5 m", Quantity::length), -0.5);
    EXPECT_EQ(parsed("1E3", Quantity::pressure), 1000.0);
    EXPECT_EQ(parsed("0", Quantity::length), 0.0);
    EXPECT_EQ(parsed("2.5", Quantity::none), 2.5);
}

TEST(Units, spellings_with_special_characters_are_read)
{
    EXPECT_EQ(parsed("60 \xC2\xB0"
                     "C",
                     Quantity::temperature),
              333.15);
    EXPECT_EQ(parsed("60\xE2\x84\x83", Quantity::temperature), 333.15);
    EXPECT_EQ(parsed("36 m\xC2\xB3/h", Quantity::volumeFlow), 0.01);
    EXPECT_EQ(parsed("36 m^3/h", Quantity::volumeFlow), 0.01);
    EXPECT_EQ(parsed("5 \xC2\xB5m", Quantity::diameter), 5e-6);
    EXPECT_EQ(parsed("5 \xCE\xBCm", Quantity::diameter), 5e-6);
    EXPECT_EQ(parsed("200 mm2", Quantity::area), 200e-6);
    EXPECT_EQ(parsed("200 mm\xC2\xB2", Quantity::area), 200e-6);
    EXPECT_EQ(parsed("2\xC2\xA0mPa\xC2\xB7s", Quantity::viscosity), 0.002);
    EXPECT_EQ(parsed("4.2 kJ/(kg K)", Quantity::specificHeat), 4200.0);
}

TEST(Units, names_of_flow_units_of_water_supply_are_read)
{
    const auto isSame = [](const char* a, const char* b) {
        return kit::toSi(1, a, Quantity::volumeFlow) == kit::toSi(1, b, Quantity::volumeFlow) &&
               kit::isUnitOf(a, Quantity::volumeFlow);
    };
    EXPECT_TRUE(isSame("CFS", "ft3/s"));
    EXPECT_TRUE(isSame("GPM", "US gal/min"));
    EXPECT_TRUE(isSame("MGD", "US Mgal/d"));
    EXPECT_TRUE(isSame("IMGD", "imp Mgal/d"));
    EXPECT_TRUE(isSame("AFD", "acre ft/d"));
    EXPECT_TRUE(isSame("LPS", "l/s"));
    EXPECT_TRUE(isSame("LPM", "l/min"));
    EXPECT_TRUE(isSame("MLD", "Ml/d"));
    EXPECT_TRUE(isSame("CMH", "m3/h"));
    EXPECT_TRUE(isSame("CMD", "m3/d"));
    EXPECT_TRUE(isSame("CMS", "m3/s"));
}

TEST(Units, what_is_no_number_is_refused)
{
    for (const char* text :
         {"", "  ", "mm", "- 5 mm", "nan", "inf m", "-inf", "e5", ".", "+", "--1", "0x10 m"}) {
        EXPECT_NE(refusal(text, Quantity::length), "") << text;
    }
    EXPECT_TRUE(contains(refusal("5. mm", Quantity::length), "no digit after its point"));
    EXPECT_TRUE(contains(refusal("007 mm", Quantity::length), "needless 0"));
    EXPECT_TRUE(contains(refusal("1,5 mm", Quantity::length), "with a point, not with a comma"));
    EXPECT_TRUE(contains(refusal("1e999 m", Quantity::length), "too large"));
    EXPECT_TRUE(contains(refusal("1e308 km", Quantity::length), "too large"));
    EXPECT_TRUE(contains(refusal(std::string("5\0mm", 4), Quantity::length), "unknown"));
}

TEST(Units, errors_name_the_units)
{
    EXPECT_EQ(refusal("25 mn", Quantity::diameter),
              "the unit \"mn\" of a diameter is unknown; use m, um, mm, cm, in, ft");
    EXPECT_EQ(refusal("3 bar", Quantity::area),
              "\"bar\" is a unit of a pressure, not of an area; use m2, mm2, cm2, in2, ft2");
    EXPECT_TRUE(contains(refusal("2 mm", Quantity::none), "a pure number has no unit"));
    EXPECT_TRUE(contains(refusal("2 MM", Quantity::length), "unknown"));
}

TEST(Units, kinematic_viscosity_is_not_dynamic_viscosity)
{
    for (const char* text : {"1 cSt", "1 mm2/s", "1 mm\xC2\xB2/s", "1 m2/s", "1 St"}) {
        EXPECT_TRUE(contains(refusal(text, Quantity::viscosity), "kinematic")) << text;
    }
}

TEST(Units, sets_have_a_unit_for_every_quantity)
{
    EXPECT_EQ(kit::unitSetNames(), (std::vector<std::string>{"si", "metric", "us"}));
    for (const std::string& name : kit::unitSetNames()) {
        const std::optional<kit::UnitSet> set = kit::findUnitSet(name);
        ASSERT_TRUE(set);
        for (const Quantity quantity : kAll) {
            const std::string unit = kit::displayUnit(*set, quantity);
            EXPECT_TRUE(quantity == Quantity::none ? unit.empty() : kit::isUnitOf(unit, quantity))
                << name << " " << unit;
        }
    }
    EXPECT_EQ(kit::displayUnit(*kit::findUnitSet("metric"), Quantity::pressure), "bar");
    EXPECT_EQ(kit::displayUnit(*kit::findUnitSet("us"), Quantity::volumeFlow), "US gal/min");
    EXPECT_FALSE(kit::findUnitSet("imperial"));
}

TEST(Units, sets_are_read_from_a_text)
{
    std::string error;
    const std::optional<kit::UnitSet> mixed = kit::parseUnitSet("us, length = m,mass_flow=kg/h", error);
    ASSERT_TRUE(mixed) << error;
    EXPECT_EQ(kit::displayUnit(*mixed, Quantity::length), "m");
    EXPECT_EQ(kit::displayUnit(*mixed, Quantity::massFlow), "kg/h");
    EXPECT_EQ(kit::displayUnit(*mixed, Quantity::pressure), "psi");

    const std::optional<kit::UnitSet> alone = kit::parseUnitSet("volume_flow=gpm", error);
    ASSERT_TRUE(alone) << error;
    EXPECT_EQ(kit::displayUnit(*alone, Quantity::volumeFlow), "US gal/min");
    EXPECT_EQ(kit::displayUnit(*alone, Quantity::pressure), "Pa");

    for (const char* text : {"", "imperial", "pressure=bar,us", "pressure", "pressure=m", "weight=kg",
                             "none=m", "us,", "pressure="}) {
        error.clear();
        EXPECT_FALSE(kit::parseUnitSet(text, error)) << text;
        EXPECT_NE(error, "") << text;
    }
}

TEST(Units, the_document_lists_every_unit_with_its_value)
{
    const auto documented = documentedUnits();
    for (const Quantity quantity : kAll) {
        if (quantity == Quantity::none) continue;
        const std::string name(kit::quantityName(quantity));
        const auto found = documented.find(name);
        ASSERT_NE(found, documented.end()) << name;
        const std::vector<std::string> units = kit::unitsOf(quantity);
        EXPECT_EQ(found->second.size(), units.size()) << name;
        for (const std::string& unit : units) {
            const auto row = found->second.find(unit);
            if (row == found->second.end()) {
                ADD_FAILURE() << name << ": " << unit << " is not in docs/units.md";
                continue;
            }
            // The slope, so that offsets of temperatures do not count.
            const double slope = kit::toSi(2, unit, quantity) - kit::toSi(1, unit, quantity);
            EXPECT_NEAR(row->second.si, slope, 1e-9 * slope + 1e-13 * kit::toSi(1, unit, quantity)) << unit;
            for (const std::string& alias : row->second.aliases) {
                EXPECT_TRUE(kit::isUnitOf(alias, quantity)) << alias;
                EXPECT_EQ(kit::toSi(1, alias, quantity), kit::toSi(1, unit, quantity)) << alias;
            }
        }
    }
}
