// Element.h: a pipe, pump, valve, orifice or loss between two nodes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "CircuitIndex.h"
#include "Entity.h"
#include "ObjectPool.h"
#include "Observer.h"
#include "property_ids.h"
#include "tavell/IElement.h"

namespace Velcor::Tavell
{

class Circuit;

/// Made by its circuit, which observes it. Every typed value is one of its properties.
class Element final : public IElement,
                      public Entity,
                      public Patterns::Observer::Subject,
                      public IdentifierListener,
                      public Pooled<Element>
{
public:
    /// An element that has only its id. The circuit must outlive it.
    Element(Circuit& circuit, std::uint32_t id);

    int GetId() override;
    int GetType() override;
    void SetType(int type) override;
    int GetStartNodeId() override;
    int GetEndNodeId() override;
    void SwapNodes() override;
    bool UpdateCurveData(int type, const double* flowRates, const double* pressures, int count,
                         double referenceDensity) override;
    bool GetCurveData(double* referenceDensity, double* flowRates, double* pressures, int capacity,
                      int* count) override;
    IEntity* GetEntity() override;
    const IEntity* GetEntityConst() const override;

    void SetMeta(const char* meta) override;
    bool SetProperty(int id, double value) override;
    bool GetProperty(int id, double* value) override;

    // The same values for the library itself. Throw as requireReadable; absent ones read 0.
    int id() const { return wholeNumber(TAVELL_ELEMENT_ID); }
    int type() const { return wholeNumber(TAVELL_ELEMENT_MODE); }
    int startNodeId() const { return wholeNumber(TAVELL_ELEMENT_START); }
    int endNodeId() const { return wholeNumber(TAVELL_ELEMENT_END); }

    /// Stores the points of a curve as text, 6 significant digits each: volume flows [m3/s], pressures [Pa].
    /// Notifies no one.
    void storeCurve(const double* flowRates, const double* pressures, int count);

    Circuit& circuit() const { return m_circuit; }

    /// Rank in order of creation, given by OrderedObjects.
    std::uint64_t sequence() const { return m_sequence; }
    void setSequence(std::uint64_t sequence) { m_sequence = sequence; }

    /// For CircuitIndex.
    ElementFiling& filing() { return m_filing; }
    const ElementFiling& filing() const { return m_filing; }
    void identifiersChanged() override;

private:
    /// What a pipe has at first, and one more.
    static constexpr std::size_t kInitialProperties = 12;

    std::array<double, kInitialProperties> m_room;  // of the properties
    Circuit& m_circuit;
    std::uint64_t m_sequence = 0;
    ElementFiling m_filing;
};

/// Fewest points of a curve that an element accepts.
constexpr int kFewestCurvePoints = 4;

}  // namespace Velcor::Tavell
