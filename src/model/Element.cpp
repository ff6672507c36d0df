// Element.cpp: typed access to the properties of an element.
#include "Element.h"

#include <algorithm>
#include <vector>

#include "Circuit.h"
#include "element_curve.h"
#include "number_text.h"
#include "property_ids.h"

namespace Velcor::Tavell
{

Element::Element(Circuit& circuit, std::uint32_t id) : m_circuit(circuit)
{
    properties().useRoom(m_room);
    properties().setNumber(TAVELL_ELEMENT_ID, id);
}

int Element::GetId()
{
    return id();
}

int Element::GetType()
{
    return type();
}

void Element::SetType(int type)
{
    SetProperty(TAVELL_ELEMENT_MODE, type);
}

int Element::GetStartNodeId()
{
    return startNodeId();
}

int Element::GetEndNodeId()
{
    return endNodeId();
}

void Element::SwapNodes()
{
    const int start = startNodeId();
    const int end = endNodeId();
    Properties& values = properties();
    if (isTextOf(values.text(TAVELL_ELEMENT_START), end, kPropertyDigits) &&
        isTextOf(values.text(TAVELL_ELEMENT_END), start, kPropertyDigits))
        return;

    // The look-up learns of both ends at once: whatever fails then, neither has changed.
    values.reserve({TAVELL_ELEMENT_START, TAVELL_ELEMENT_END});
    values.setListener(nullptr);
    PropertyChanges changes(values);
    changes.setNumber(TAVELL_ELEMENT_START, end);
    changes.setNumber(TAVELL_ELEMENT_END, start);
    values.setListener(this);
    m_circuit.refile(*this);
    changes.keep();
    Notify(0);
}

bool Element::UpdateCurveData(int type, const double* flowRates, const double* pressures, int count,
                              double referenceDensity)
{
    if (type != TAVELL_PUMP && type != TAVELL_LOSS) return false;
    if (flowRates == nullptr || pressures == nullptr || count < kFewestCurvePoints) return false;
    PropertyChanges changes(properties());
    changes.setNumber(TAVELL_ELEMENT_MODE, type);
    changes.setNumber(TAVELL_ELEMENT_REFERENCE_DENSITY, referenceDensity);
    changes.setText(TAVELL_ELEMENT_FLOW_RATE, curveText(flowRates, count));
    changes.setText(TAVELL_ELEMENT_PRESSURE, curveText(pressures, count));
    changes.keep();
    Notify(0);
    return true;
}

bool Element::GetCurveData(double* referenceDensity, double* flowRates, double* pressures, int capacity,
                           int* count)
{
    if (type() == TAVELL_PIPE) {
        *count = -1;
        return false;
    }
    const std::vector<double> flows = curveValues(properties().text(TAVELL_ELEMENT_FLOW_RATE));
    *count = static_cast<int>(flows.size());
    if (capacity < *count) return false;

    // Everything is read before anything is written, so that a text that is no number leaves the arrays
    // alone.
    const std::vector<double> rises = curveValues(properties().text(TAVELL_ELEMENT_PRESSURE));
    if (rises.size() < flows.size()) return false;
    const double density = number(TAVELL_ELEMENT_REFERENCE_DENSITY);

    std::copy(flows.begin(), flows.end(), flowRates);
    std::copy_n(rises.begin(), flows.size(), pressures);
    if (has(TAVELL_ELEMENT_REFERENCE_DENSITY) && referenceDensity != nullptr) *referenceDensity = density;
    return true;
}

IEntity* Element::GetEntity()
{
    return this;
}

const IEntity* Element::GetEntityConst() const
{
    return this;
}

void Element::SetMeta(const char* meta)
{
    if (properties().setMeta(meta)) Notify(0);
}

bool Element::SetProperty(int id, double value)
{
    if (!isElementProperty(id)) return false;
    if (properties().setNumber(id, value)) Notify(0);
    return true;
}

// kept: the temperature of an element is that of its circuit's fluid, whatever the element stores: results
// and wall temperatures start from the one fluid temperature.
bool Element::GetProperty(int id, double* value)
{
    if (id == TAVELL_ELEMENT_TEMPERATURE)
        return m_circuit.fluid().GetProperty(TAVELL_FLUID_DEFAULT_TEMPERATURE, value);
    return Entity::GetProperty(id, value);
}

void Element::storeCurve(const double* flowRates, const double* pressures, int count)
{
    properties().setText(TAVELL_ELEMENT_FLOW_RATE, curveText(flowRates, count));
    properties().setText(TAVELL_ELEMENT_PRESSURE, curveText(pressures, count));
}

void Element::identifiersChanged()
{
    m_circuit.refile(*this);
}

}  // namespace Velcor::Tavell
