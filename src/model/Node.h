// Node.h: a junction or an end of the network.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "CircuitIndex.h"
#include "Entity.h"
#include "ObjectPool.h"
#include "Observer.h"
#include "property_ids.h"
#include "tavell/INode.h"

namespace Velcor::Tavell
{

class Circuit;

/// A point in space [m].
struct Location {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// Made by its circuit, which observes it. Every typed value is one of its properties.
class Node final : public INode,
                   public Entity,
                   public Patterns::Observer::Subject,
                   public IdentifierListener,
                   public Pooled<Node>
{
public:
    /// An inner node at the origin with a pressure constraint of 1 Pa. The circuit must outlive it.
    Node(Circuit& circuit, std::uint32_t id);

    int GetId() override;
    void GetLocation(double* x, double* y, double* z) override;
    void SetLocation(double x, double y, double z) override;
    void SetType(int type) override;
    int GetType() override;
    void SetConstraint(int constraint, double value) override;
    int GetConstraint() override;
    IEntity* GetEntity() override;
    const IEntity* GetEntityConst() const override;

    void SetMeta(const char* meta) override;
    bool SetProperty(int id, double value) override;

    // The same values for the library itself. Throw as requireReadable; absent ones read 0.
    int id() const { return wholeNumber(TAVELL_NODE_ID); }
    int type() const { return wholeNumber(TAVELL_NODE_MODE); }
    int constraint() const { return wholeNumber(TAVELL_NODE_CONSTRAINT); }
    Location location() const;

    Circuit& circuit() const { return m_circuit; }

    /// Rank in order of creation, given by OrderedObjects.
    std::uint64_t sequence() const { return m_sequence; }
    void setSequence(std::uint64_t sequence) { m_sequence = sequence; }

    /// For CircuitIndex.
    NodeFiling& filing() { return m_filing; }
    const NodeFiling& filing() const { return m_filing; }
    void identifiersChanged() override;

private:
    static constexpr std::size_t kInitialProperties = 7;

    std::array<double, kInitialProperties> m_room;  // of the properties
    Circuit& m_circuit;
    std::uint64_t m_sequence = 0;
    NodeFiling m_filing;
};

}  // namespace Velcor::Tavell
