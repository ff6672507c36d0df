// network_file.h: a network file (JSON, docs/network-file.md) as plain data.
#ifndef TAVELL_TOOLS_NETWORK_FILE_H
#define TAVELL_TOOLS_NETWORK_FILE_H

#include <optional>
#include <string>

#include "network.h"
#include "problems.h"

/// The network in a file; nothing, and every problem found, when the file cannot be used.
std::optional<Network> readNetworkFile(const std::string& path, Problems& problems);

#endif
