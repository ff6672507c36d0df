// geojson.h: a network and its results as GeoJSON (RFC 7946), for QGIS and other geographic programs.
#ifndef TAVELL_KIT_GEOJSON_H
#define TAVELL_KIT_GEOJSON_H

#include <string>

#include "network.h"
#include "solution.h"

namespace kit
{

/// The text of a FeatureCollection: a Point for every node, a LineString for every element. Coordinates are
/// those of the network, in metres. A value that a node or an element does not have is null. Without a
/// solution, or with one that has no results, only the network itself.
std::string geojsonText(const Network& network, const Solution* solution);

}  // namespace kit

#endif
