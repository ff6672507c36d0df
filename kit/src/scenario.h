// scenario.h: variants of a network as patches of its file's objects (RFC 7396), by the names of nodes and
// elements.
#ifndef TAVELL_KIT_SCENARIO_H
#define TAVELL_KIT_SCENARIO_H

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "findings.h"
#include "network.h"
#include "network_parts.h"

namespace kit
{

/// The network with a scenario's patches; nothing, and findings, when there is no such scenario or it does
/// not fit the network. The result has neither scenarios nor an expected answer; its title names the
/// scenario.
std::optional<Network> withScenario(const Network& network, const std::string& name, Findings& findings);

/// The network that scenarios change.
struct ScenarioBase {
    ScenarioBase(const Network& of, const Positions& nodesOf, const Positions& elementsOf)
        : network(of), nodes(nodesOf), elements(elementsOf)
    {
    }

    const Network& network;
    const Positions& nodes;
    const Positions& elements;
    /// The document it was read from, whose units the patches are in; null for patches in SI units.
    const nlohmann::json* document = nullptr;
    bool isSound = true;  // the network has no errors
};

/// Checks the patches of a scenario in a file by reading the patched network. Returns them in SI units,
/// without those that change nothing; nothing, and findings, when the patched network has errors. Those that
/// the network has without the patches are left out.
std::optional<nlohmann::json> checkedScenario(const ScenarioBase& base, const ObjectReader& scenario);

}  // namespace kit

#endif
