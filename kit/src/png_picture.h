// png_picture.h: an SVG document as PNG pixels.
#ifndef TAVELL_KIT_PNG_PICTURE_H
#define TAVELL_KIT_PNG_PICTURE_H

#include <string>

#include "findings.h"

namespace kit
{

/// Draws an SVG document, scale pixels to one of its units, and gives the bytes of a PNG file. False, and a
/// finding, when that fails, the picture would be too large, or the kit was built without librsvg.
bool writePng(const std::string& svg, double scale, std::string& pngBytes, Findings& findings);

}  // namespace kit

#endif
