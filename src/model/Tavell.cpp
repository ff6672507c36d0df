// Tavell.cpp: operations over all circuits of a system object.
#include "Tavell.h"

#include <memory>

namespace Velcor::Tavell
{

void Tavell::Release()
{
    delete this;
}

ICircuit* Tavell::CreateCircuit()
{
    Circuit& circuit = m_circuits.append(std::make_unique<Circuit>(m_registry));
    try {
        m_registry.circuits.set(&circuit, &circuit);
    } catch (...) {
        m_circuits.release(circuit);
        throw;
    }
    return &circuit;
}

std::size_t Tavell::GetNoCircuits()
{
    return m_circuits.size();
}

ICircuit* Tavell::GetCircuit(std::size_t index)
{
    return m_circuits.at(index);
}

bool Tavell::ReleaseCircuit(ICircuit* circuit)
{
    const Circuit* known = m_registry.circuits.find(circuit);
    if (known == nullptr) return false;
    m_registry.circuits.erase(circuit);
    m_circuits.release(*known);
    return true;
}

void Tavell::ReleaseAllCircuits()
{
    m_registry.circuits.clear();
    m_circuits.clear();
}

void Tavell::Solve(bool energy, bool validateFirst, bool (*cancel)())
{
    // By position: the cancellation callback may create a circuit.
    for (std::size_t i = 0; i < m_circuits.size(); ++i) {
        Circuit& circuit = *m_circuits.at(i);
        if (validateFirst && !circuit.Validate()) continue;
        circuit.Solve(energy, cancel);
    }
}

void Tavell::ValidateCircuits()
{
    for (Circuit* circuit : m_circuits)
        circuit->Validate();
}

ICircuit* Tavell::FindParentCircuitFromNode(INode* node)
{
    return m_registry.circuitOf(node);
}

ICircuit* Tavell::FindParentCircuitFromElement(IElement* element)
{
    return m_registry.circuitOf(element);
}

}  // namespace Velcor::Tavell
