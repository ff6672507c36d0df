// network_file.h: a network file (JSON, docs/network-file.md) as a network.
#ifndef TAVELL_KIT_NETWORK_FILE_H
#define TAVELL_KIT_NETWORK_FILE_H

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "findings.h"
#include "network.h"

namespace kit
{

/// The network in a file; nothing, and every finding, when the file cannot be used. flawed, when it is not null,
/// then gets the network if its errors leave its nodes and elements their meaning, so that it can be examined
/// further.
std::optional<Network> readNetworkFile(const std::string& path, Findings& findings,
                                       std::optional<Network>* flawed = nullptr);

/// The same for a text (UTF-8) that is in memory; file names it in findings.
std::optional<Network> readNetworkText(const std::string& text, const std::string& file, Findings& findings,
                                       std::optional<Network>* flawed = nullptr);

/// The same for a document that is part of another one. pointer: where it stands there, "/network" for
/// example. Its findings have no lines; appendWithLines adds them.
std::optional<Network> readNetworkDocument(const nlohmann::json& document, const std::string& pointer,
                                           const std::string& file, Findings& findings,
                                           std::optional<Network>* flawed = nullptr);

}  // namespace kit

#endif
