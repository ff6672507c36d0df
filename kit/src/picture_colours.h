// picture_colours.h: what a network is coloured by, and how values become colours.
#ifndef TAVELL_KIT_PICTURE_COLOURS_H
#define TAVELL_KIT_PICTURE_COLOURS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "solution.h"
#include "units.h"

namespace kit
{

/// What a network is coloured by.
enum class PictureQuantity { none, pressure, head, velocity, massFlow, volumeFlow, temperature };

/// A quantity of pictures. Flows and velocities are shown by their magnitude; arrows give the direction.
struct PictureColumn {
    PictureQuantity quantity;
    std::string_view name;   // "mass_flow"
    std::string_view label;  // "Mass flow"
    bool isOfNodes;          // elements then take the mean of their ends
    Quantity unit;
};

/// Every quantity but none, in the order of choices.
const std::vector<PictureColumn>& pictureColumns();
const PictureColumn& columnOf(PictureQuantity quantity);
/// "none", "pressure", "head", "velocity", "mass_flow", "volume_flow", "temperature".
std::optional<PictureQuantity> findPictureQuantity(std::string_view name);

/// The values of a quantity by node or element in display units; empty when the solution has none that is
/// finite.
std::vector<double> pictureValues(const Solution& solution, PictureQuantity quantity, const UnitSet& units);

/// The values that the ends of a colour scale stand for.
struct ColourRange {
    double low = 0.0;
    double high = 1.0;
    bool hasLower = false;   // values below low exist and take its colour
    bool hasHigher = false;  // values above high exist and take its colour

    /// 0..1
    double fraction(double value) const;
};

/// The range of the finite values. Where a few values of many lie far from all others, they are left beyond
/// the end so that the others can be told apart.
ColourRange colourRange(const std::vector<double>& values);

/// A colour of a perceptually uniform scale that the colour-blind can read (viridis, van der Walt & Smith,
/// 2015) as "#rrggbb", fraction 0..1. The palest end is left out: it cannot be seen on white.
std::string colourOf(double fraction);

/// Round values from low to high, about so many.
std::vector<double> roundTicks(double low, double high, int about);

/// A number for people: at most four significant digits, no exponent between 1e-3 and 1e6.
std::string shortNumber(double value);

}  // namespace kit

#endif
