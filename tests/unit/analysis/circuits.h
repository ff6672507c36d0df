// circuits.h: circuits and an environment for the tests of the analysis.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "model/Circuit.h"
#include "model/ObjectRegistry.h"
#include "tavell/Constants.h"
#include "tavell/IPropertySet.h"

namespace AnalysisTest
{

using namespace Velcor::Tavell;

/// Sets an environment variable, or removes it (null), and puts the old state back when it goes out of scope.
class ScopedVariable
{
public:
    ScopedVariable(const char* name, const char* value) : m_name(name)
    {
        if (const char* old = std::getenv(name)) m_old = old;
        set(value);
    }
    ~ScopedVariable() { set(m_old ? m_old->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void set(const char* value)
    {
        if (value != nullptr)
            setenv(m_name.c_str(), value, 1);
        else
            unsetenv(m_name.c_str());
    }

    std::string m_name;
    std::optional<std::string> m_old;
};

constexpr const char* kDetailCheck = "TAVELL_DETAIL_CHECK";
constexpr const char* kDontCheckConnectivity = "TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY";

/// Both variables of the analysis absent while a test runs.
struct PlainEnvironment {
    ScopedVariable detail{kDetailCheck, nullptr};
    ScopedVariable connectivity{kDontCheckConnectivity, nullptr};
};

/// Creates `count` more nodes, one metre apart.
inline std::vector<INode*> addNodes(Circuit& circuit, int count)
{
    std::vector<INode*> nodes;
    for (int i = 0; i < count; ++i) {
        nodes.push_back(circuit.CreateNode());
        nodes.back()->SetLocation(static_cast<double>(circuit.GetNoNodes()), 0.0, 0.0);
    }
    return nodes;
}

/// An element whose ends hold these ids, whether or not nodes have them.
inline IElement* addElement(Circuit& circuit, int startId, int endId)
{
    IElement* element = circuit.CreateEmptyElement();
    element->GetEntity()->SetProperty(TAVELL_ELEMENT_START, startId);
    element->GetEntity()->SetProperty(TAVELL_ELEMENT_END, endId);
    return element;
}

/// Fills an empty circuit with nodes 1 to `count` in a row, joined by elements 1 to `count` - 1, the first node an
/// inlet and the last an outlet. Every node has the pressure constraint of a new node.
inline void makeLine(Circuit& circuit, int count)
{
    const std::vector<INode*> nodes = addNodes(circuit, count);
    for (int id = 1; id < count; ++id)
        addElement(circuit, id, id + 1);
    nodes.front()->SetType(TAVELL_NODE_INLET);
    nodes.back()->SetType(TAVELL_NODE_OUTLET);
}

/// Stores a text that bypasses the checks and notifications of the entity.
inline void setText(IEntity* entity, const char* name, const char* text)
{
    entity->GetWriteableProperties()->SetStringPropertyByName(name, text);
}

/// Every stored text of an entity with its id, to compare bit for bit.
inline std::string dump(IEntity* entity)
{
    IPropertySet* properties = entity->GetProperties();
    std::string text;
    for (std::size_t i = 0; i < static_cast<std::size_t>(properties->GetSize()); ++i)
        text += std::to_string(properties->GetProp(i)) + "=" + properties->GetStringValue(i) + "\n";
    return text;
}

/// Every stored text of every node and element of a circuit.
inline std::string dump(Circuit& circuit)
{
    std::string text;
    for (std::size_t i = 0; i < circuit.GetNoNodes(); ++i)
        text += dump(circuit.GetNode(i)->GetEntity());
    for (std::size_t i = 0; i < circuit.GetNoElements(); ++i)
        text += dump(circuit.GetElement(i)->GetEntity());
    return text;
}

}  // namespace AnalysisTest
