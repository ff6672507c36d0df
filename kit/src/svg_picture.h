// svg_picture.h: a network as a still picture.
#ifndef TAVELL_KIT_SVG_PICTURE_H
#define TAVELL_KIT_SVG_PICTURE_H

#include <optional>
#include <string>

#include "network.h"
#include "picture_colours.h"
#include "picture_layout.h"
#include "solution.h"

namespace kit
{

struct PictureOptions {
    std::optional<View> view;  // that which shows most, when absent
    /// What colours the network; pressure when absent. A quantity without values leaves it uncoloured.
    std::optional<PictureQuantity> quantity;
    double width = 1200.0;  // [px], at least 200
    UnitSet units;          // of the legend
};

/// The picture as an SVG document with title, legend, flow arrows, symbols and, where they find room, names.
/// The solution may be null. The same input gives the same bytes.
std::string svgPicture(const Network& network, const Solution* solution, const PictureOptions& options);

}  // namespace kit

#endif
