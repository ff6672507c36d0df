// network_writer.h: a network as the canonical text of its file: one order of keys, one node or element per
// line, SI units, the shortest numbers that read back the same, defaults left out.
#ifndef TAVELL_KIT_NETWORK_WRITER_H
#define TAVELL_KIT_NETWORK_WRITER_H

#include <string>

#include <nlohmann/json_fwd.hpp>

#include "network.h"

namespace kit
{

/// The text of a network file; ends with a line end.
std::string networkText(const Network& network);

/// 64 hex digits that stand for what a solve of the network depends on: SHA-256 of its canonical text without
/// title, source, answer, descriptions, vertices, sources, units of results, the limit of velocities and
/// scenarios.
std::string networkHash(const Network& network);

/// The value of a node, an element, the fluid and the settings in a network file, in SI units. The fluid is
/// null when nothing is given; as an object it always is one.
nlohmann::ordered_json nodeObject(const Node& node);
nlohmann::ordered_json elementObject(const Network& network, const Element& element);
nlohmann::ordered_json fluidObject(const FluidChoice& fluid);
nlohmann::ordered_json settingsObject(const Settings& settings);
nlohmann::ordered_json gravityArray(const Network& network);

}  // namespace kit

#endif
