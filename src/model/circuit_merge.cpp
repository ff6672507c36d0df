// circuit_merge.cpp: ITavell::MergeCircuits, joining circuits that meet in a node.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

#include "HashIndex.h"
#include "Tavell.h"
#include "property_ids.h"

namespace Velcor::Tavell
{

namespace
{

/// 64-bit FNV-1a hash (Fowler, Noll and Vo, 1991) of the eight bytes of a coordinate, in the order of memory.
/// 0.0 and -0.0 are one place.
std::uint64_t hashCoordinate(double coordinate)
{
    constexpr std::uint64_t kOffsetBasis = 0xcbf29ce484222325U;
    constexpr std::uint64_t kPrime = 0x100000001b3U;
    const double place = coordinate == 0.0 ? 0.0 : coordinate;
    std::array<unsigned char, sizeof place> bytes{};
    std::memcpy(bytes.data(), &place, sizeof place);
    std::uint64_t hash = kOffsetBasis;
    for (const unsigned char byte : bytes)
        hash = (hash ^ byte) * kPrime;
    return hash;
}

// kept: the key alone decides whether two nodes are at the same place, and it does not know one axis from
// another: a node at (1, 2, 3) meets one at (3, 2, 1). Which circuits merge rests on it.
std::uint64_t locationKey(const Node& node)
{
    const Location at = node.location();
    return hashCoordinate(at.x) ^ hashCoordinate(at.y) ^ hashCoordinate(at.z);
}

/// Adds the nodes and elements of one circuit to another.
class Absorption
{
public:
    /// Nodes of `absorbed` that meet a node of `receiver`, with that node.
    using Partners = HashIndex<const INode*, Node>;

    Absorption(Circuit& receiver, Circuit& absorbed, const Partners& partners)
        : m_receiver(receiver), m_absorbed(absorbed), m_partners(partners)
    {
    }

    void copyElements()
    {
        for (Element* element : m_absorbed.elements())
            copyElement(*element);
    }

private:
    /// Elements without a node at one end, and those that the receiver refuses, stay behind. Pumps and losses
    /// made from a curve are among them, since they have no diameter and no area.
    void copyElement(Element& element)
    {
        INode* start = standIn(m_absorbed.GetElementNode(&element, 0));
        INode* end = standIn(m_absorbed.GetElementNode(&element, 1));
        if (start == nullptr || end == nullptr) return;

        const double diameter = element.number(TAVELL_ELEMENT_DIAMETER);
        const double area = element.number(TAVELL_ELEMENT_AREA);
        const double wettedPerimeter = element.number(TAVELL_ELEMENT_WETTEDPERIMETER);
        auto* copy = static_cast<Element*>(m_receiver.CreateElement(start, end, diameter, area, 0.0, 0, 0.0));
        if (copy == nullptr) return;

        const double id = copy->number(TAVELL_ELEMENT_ID);
        const double startId = copy->number(TAVELL_ELEMENT_START);
        const double endId = copy->number(TAVELL_ELEMENT_END);
        copy->properties().copyFrom(element.properties());
        copy->Notify(0);
        copy->SetProperty(TAVELL_ELEMENT_ID, id);
        copy->SetProperty(TAVELL_ELEMENT_START, startId);
        copy->SetProperty(TAVELL_ELEMENT_END, endId);
        copy->SetProperty(TAVELL_ELEMENT_DIAMETER, diameter);
        copy->SetProperty(TAVELL_ELEMENT_AREA, area);
        copy->SetProperty(TAVELL_ELEMENT_WETTEDPERIMETER, wettedPerimeter);
    }

    /// The node of the receiver that takes the place of an absorbed one: its partner, else a new copy; null
    /// for null.
    // kept: a copy for every end of an element, so that elements which met in a node without a partner no
    // longer meet.
    INode* standIn(INode* node)
    {
        if (node == nullptr) return nullptr;
        if (Node* partner = m_partners.find(node)) return partner;

        auto* copy = static_cast<Node*>(m_receiver.CreateNode());
        const double id = copy->number(TAVELL_NODE_ID);
        copy->properties().copyFrom(static_cast<Node*>(node)->properties());
        copy->Notify(0);
        copy->SetProperty(TAVELL_NODE_ID, id);
        return copy;
    }

    Circuit& m_receiver;
    Circuit& m_absorbed;
    const Partners& m_partners;
};

/// Joins the circuits of a system. Each circuit in turn absorbs the oldest younger one that it meets, until
/// it meets none; as it grows, it may meet more.
///
/// Which circuits stand at a place is looked up, not searched for: a circuit absorbs all others at each of
/// its places, so a place is asked about once, and the work grows with the number of nodes.
class Merge
{
public:
    Merge(ITavell& system, OrderedObjects<Circuit>& circuits) : m_system(system)
    {
        for (Circuit* circuit : circuits)
            addParticipant(*circuit);
        std::sort(m_presences.begin(), m_presences.end());
        m_presences.erase(std::unique(m_presences.begin(), m_presences.end()), m_presences.end());
    }

    void run()
    {
        for (std::size_t rank = 0; rank < m_participants.size(); ++rank)
            if (m_participants[rank].circuit != nullptr) absorbAllMet(rank);
    }

private:
    struct Participant {
        Circuit* circuit;                 // null once it is absorbed
        std::vector<std::uint64_t> keys;  // locations of its nodes, in node order
    };
    using Presence =
        std::pair<std::uint64_t, std::size_t>;  // location, rank of a participant with a node there

    /// The circuit that absorbs at present.
    struct Receiver {
        std::size_t rank;
        HashIndex<std::uint64_t, Node> nodeAt;  // by location; the youngest where several are at one
        std::set<std::size_t> met;              // ranks of the younger circuits that it meets
    };

    /// Reads all locations before anything changes: one that is no number throws here.
    void addParticipant(Circuit& circuit)
    {
        Participant participant{&circuit, {}};
        participant.keys.reserve(circuit.nodes().size());
        for (const Node* node : circuit.nodes()) {
            participant.keys.push_back(locationKey(*node));
            m_presences.emplace_back(participant.keys.back(), m_participants.size());
        }
        m_participants.push_back(std::move(participant));
    }

    void absorbAllMet(std::size_t rank)
    {
        Circuit& circuit = *m_participants[rank].circuit;
        Receiver receiver{rank, {}, {}};
        std::size_t position = 0;
        for (Node* node : circuit.nodes())
            placeNode(receiver, m_participants[rank].keys[position++], *node);

        while (!receiver.met.empty()) {
            const std::size_t next = *receiver.met.begin();
            receiver.met.erase(receiver.met.begin());
            absorb(receiver, m_participants[next]);
        }
    }

    /// Records a node of the receiver; at a new place it meets every younger circuit that has a node there.
    void placeNode(Receiver& receiver, std::uint64_t key, Node& node)
    {
        if (receiver.nodeAt.find(key) == nullptr) {
            auto presence =
                std::lower_bound(m_presences.begin(), m_presences.end(), Presence{key, receiver.rank + 1});
            for (; presence != m_presences.end() && presence->first == key; ++presence)
                if (m_participants[presence->second].circuit != nullptr)
                    receiver.met.insert(presence->second);
        }
        receiver.nodeAt.set(key, &node);
    }

    void absorb(Receiver& receiver, Participant& participant)
    {
        const Participant absorbed = std::exchange(participant, {nullptr, {}});
        if (!absorbed.circuit->elements().empty()) copyInto(receiver, absorbed);
        m_system.ReleaseCircuit(absorbed.circuit);
    }

    /// Copies the elements of a circuit and places the new nodes; when that fails, the receiver is as it was
    /// before and the exception goes on.
    void copyInto(Receiver& receiver, const Participant& absorbed)
    {
        Absorption::Partners partners;
        std::size_t position = 0;
        for (const Node* node : absorbed.circuit->nodes())
            if (Node* partner = receiver.nodeAt.find(absorbed.keys[position++])) partners.set(node, partner);

        Circuit& circuit = *m_participants[receiver.rank].circuit;
        Circuit::Checkpoint before = circuit.checkpoint();
        try {
            Absorption(circuit, *absorbed.circuit, partners).copyElements();
            for (std::size_t i = before.nodes; i < circuit.nodes().size(); ++i)
                placeNode(receiver, locationKey(*circuit.nodes().at(i)), *circuit.nodes().at(i));
        } catch (...) {
            circuit.rollBack(std::move(before));
            throw;
        }
        if (!circuit.hasGrownSince(before)) circuit.rollBack(std::move(before));
    }

    ITavell& m_system;
    std::vector<Participant> m_participants;  // by rank, the order of the list
    std::vector<Presence> m_presences;        // ascending, each once
};

}  // namespace

void Tavell::MergeCircuits()
{
    Merge(*this, m_circuits).run();
}

}  // namespace Velcor::Tavell
