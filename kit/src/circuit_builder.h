// circuit_builder.h: a network as a circuit of the library, with the nodes and elements that only the circuit
// has.
#ifndef TAVELL_KIT_CIRCUIT_BUILDER_H
#define TAVELL_KIT_CIRCUIT_BUILDER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tavell/ICircuit.h>
#include <tavell/ITavell.h>

#include "findings.h"
#include "network.h"
#include "solution.h"

namespace kit
{

/// Position of a node or element that the circuit does not have.
constexpr std::size_t kNotInCircuit = static_cast<std::size_t>(-1);

/// Where a node of the network is in the circuit.
struct NodeInCircuit {
    std::size_t node = kNotInCircuit;
    std::size_t stubEnd = kNotInCircuit;  // hidden node at which a short element brings the node's given flow
};

/// Where an element of the network is in the circuit. Closed elements are nowhere.
struct ElementInCircuit {
    std::size_t first = kNotInCircuit;       // the element, or the half at its start
    std::size_t second = kNotInCircuit;      // the half at its end when a detour gives it its length
    std::size_t detourNode = kNotInCircuit;  // between the halves
};

/// What a node or element of the circuit belongs to in the network.
struct Owner {
    enum class Kind { node, element, none };

    Kind kind = Kind::none;
    std::size_t position = 0;
};

struct SystemReleaser {
    void operator()(Velcor::Tavell::ITavell* system) const { system->Release(); }
};

/// A circuit and how the network lies in it. Positions count from 0 in the order of creation.
struct BuiltCircuit {
    std::unique_ptr<Velcor::Tavell::ITavell, SystemReleaser> system;
    Velcor::Tavell::ICircuit* circuit = nullptr;
    FluidValues fluid;
    std::vector<NodeInCircuit> nodes;        // by node of the network
    std::vector<ElementInCircuit> elements;  // by element of the network
    std::vector<Owner> nodeOwners;           // by node of the circuit
    std::vector<Owner> elementOwners;        // by element of the circuit
    /// [Pa], by node of the network: what the circuit's static pressures are above the network's.
    std::vector<double> pressureOffsets;
};

/// Builds the network. Nothing, and findings, when it cannot be solved as it stands.
std::optional<BuiltCircuit> buildCircuit(const Network& network, Findings& findings);

/// "node tap 3", "element pipe 7".
std::string nodeLabel(const Network& network, std::size_t node);
std::string elementLabel(const Network& network, std::size_t element);
/// The same as a place with the network's file and the line of the object.
Place nodePlace(const Network& network, std::size_t node);
Place elementPlace(const Network& network, std::size_t element);

/// The friction of a check valve that stands in front of a Hazen-Williams pipe or a general loss is that of a
/// smooth round piece of this length [m].
double checkValveLength(const Element& element, double length);

/// Whether a check valve is an element of its own in the circuit.
bool hasCheckValveInFront(const Element& element);

/// Kv [m3/h at 1 bar] of the joint in front of an orifice whose given length chooses other tappings than the
/// distance between its nodes; 0 for none.
double jointKv(const Network& network, const Element& element);

/// Whether the element gets its length by a detour: its halves then take no part in computed junction losses.
bool needsDetour(const Network& network, const Element& element);

}  // namespace kit

#endif
