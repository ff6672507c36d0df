// connectivity.cpp: the walk from the first node along the elements; ICircuit::GetDisconnectedElements.
#include "connectivity.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

#include "model/Circuit.h"

namespace Velcor::Tavell
{

namespace
{

constexpr std::size_t kNoPlace = static_cast<std::size_t>(-1);

/// A circuit as the walk sees it. A place is the position of a node id in nodeIds; nodes that share an id
/// share their place, since an end means the first of them. A link is an element, at its position in the
/// circuit.
struct Network {
    struct Link {
        std::size_t start;  // place, kNoPlace when the end names no node
        std::size_t end;    // likewise
    };

    std::vector<int> nodeIds;               // ascending, each once
    std::vector<Link> links;                // in order of creation
    std::vector<std::size_t> joined;        // links of each place in order of creation, place after place
    std::vector<std::size_t> joinedBefore;  // by place, and one more: entries of `joined` before its own
    std::vector<bool> reached;              // by place; set by the walk
};

/// The ids of a circuit's nodes in ascending order, each once.
std::vector<int> distinctNodeIds(const Circuit& circuit)
{
    std::vector<int> ids;
    ids.reserve(circuit.nodes().size());
    for (const Node* node : circuit.nodes())
        ids.push_back(node->id());
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return ids;
}

/// The place of a node id; kNoPlace when no node has it.
std::size_t placeOf(const Network& network, int id)
{
    const auto found = std::lower_bound(network.nodeIds.begin(), network.nodeIds.end(), id);
    if (found == network.nodeIds.end() || *found != id) return kNoPlace;
    return static_cast<std::size_t>(found - network.nodeIds.begin());
}

/// Calls visit(place) for the nodes at the start and the end of a link; once when they are the same.
template <typename Visit> void forEachEnd(const Network::Link& link, Visit visit)
{
    if (link.start != kNoPlace) visit(link.start);
    if (link.end != kNoPlace && link.end != link.start) visit(link.end);
}

/// Calls visit(link) for the position of each link that is joined to a place, in order of creation.
template <typename Visit> void forEachJoined(const Network& network, std::size_t place, Visit visit)
{
    for (std::size_t entry = network.joinedBefore[place]; entry < network.joinedBefore[place + 1]; ++entry)
        visit(network.joined[entry]);
}

/// Fills joined and joinedBefore from the links: counts the links of each place, then puts each behind its
/// earlier ones.
void joinLinks(Network& network)
{
    const std::size_t places = network.nodeIds.size();
    network.joinedBefore.assign(places + 1, 0);
    for (const Network::Link& link : network.links)
        forEachEnd(link, [&](std::size_t place) { ++network.joinedBefore[place + 1]; });
    for (std::size_t place = 0; place < places; ++place)
        network.joinedBefore[place + 1] += network.joinedBefore[place];

    network.joined.resize(network.joinedBefore[places]);
    std::vector<std::size_t> next = network.joinedBefore;
    for (std::size_t position = 0; position < network.links.size(); ++position)
        forEachEnd(network.links[position],
                   [&](std::size_t place) { network.joined[next[place]++] = position; });
}

/// The network of a circuit, nothing reached yet.
Network networkOf(const Circuit& circuit)
{
    Network network;
    network.nodeIds = distinctNodeIds(circuit);
    network.links.reserve(circuit.elements().size());
    for (const Element* element : circuit.elements()) {
        const std::size_t start = placeOf(network, element->startNodeId());
        const std::size_t end = placeOf(network, element->endNodeId());
        network.links.push_back({start, end});
    }
    joinLinks(network);
    network.reached.assign(network.nodeIds.size(), false);
    return network;
}

/// Walks depth first from the links of a place and marks every place at their ends and beyond. The place
/// itself is marked as an end of a link, so not when it has none.
void walkFrom(Network& network, std::size_t first)
{
    std::vector<std::size_t> work;
    const auto pushLink = [&work](std::size_t link) { work.push_back(link); };
    forEachJoined(network, first, pushLink);
    while (!work.empty()) {
        const Network::Link& link = network.links[work.back()];
        work.pop_back();
        forEachEnd(link, [&](std::size_t place) {
            if (network.reached[place]) return;
            network.reached[place] = true;
            forEachJoined(network, place, pushLink);
        });
    }
}

/// The network of a circuit, with what can be reached from its first node marked. Without nodes there are no
/// links.
Network walkedNetworkOf(const Circuit& circuit)
{
    const Node* first = circuit.nodes().at(0);
    if (first == nullptr) return {};
    Network network = networkOf(circuit);
    walkFrom(network, placeOf(network, first->id()));
    return network;
}

/// Whether there are places and the walk reached all of them.
bool allReached(const Network& network)
{
    const auto& reached = network.reached;
    return !reached.empty() && std::find(reached.begin(), reached.end(), false) == reached.end();
}

/// The links joined to places out of reach, by ascending node id, those of a node in order of creation, each
/// once.
std::vector<std::size_t> gatherOutOfReach(const Network& network)
{
    std::vector<std::size_t> gathered;
    std::vector<bool> isGathered(network.links.size(), false);
    for (std::size_t place = 0; place < network.reached.size(); ++place) {
        if (network.reached[place]) continue;
        forEachJoined(network, place, [&](std::size_t link) {
            if (!isGathered[link]) gathered.push_back(link);
            isGathered[link] = true;
        });
    }
    return gathered;
}

/// Whether the environment switches the connectivity check off, whatever the value.
bool connectivityCheckDisabled()
{
    return std::getenv("TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY") != nullptr;
}

}  // namespace

bool isConnected(const Circuit& circuit)
{
    return connectivityCheckDisabled() || allReached(walkedNetworkOf(circuit));
}

bool Circuit::GetDisconnectedElements(IElement** out, int capacity, int* count)
{
    if (connectivityCheckDisabled()) {
        *count = 0;
        return true;
    }
    const Network network = walkedNetworkOf(*this);
    const std::vector<std::size_t> gathered = gatherOutOfReach(network);
    *count = static_cast<int>(gathered.size());
    if (!allReached(network) && capacity < *count) return false;
    std::transform(gathered.begin(), gathered.end(), out,
                   [this](std::size_t link) { return elements().at(link); });
    return true;
}

}  // namespace Velcor::Tavell
