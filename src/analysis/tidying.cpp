// tidying.cpp: the passes that ICircuit::Validate runs over the identifiers of a circuit.
#include "tidying.h"

#include <cmath>
#include <limits>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "model/Circuit.h"
#include "model/number_text.h"
#include "tavell/Constants.h"

namespace Velcor::Tavell
{

namespace
{

/// The id stored under a property; nothing unless it is a positive whole number that an int can hold.
std::optional<int> storedId(const Entity& entity, int property)
{
    const std::optional<double> number = entity.properties().readableNumber(property);
    const bool isId = number && *number >= 1.0 && *number <= std::numeric_limits<int>::max() &&
                      *number == std::trunc(*number);
    if (!isId) return std::nullopt;
    return static_cast<int>(*number);
}

/// The ids in use in a circuit's nodes or elements, and who has none of its own.
template <typename Object> struct Census {
    std::unordered_set<int> taken;
    std::vector<Object*> withoutId;  // in order of creation
};

/// The census of objects whose id is stored under a property; of several with the same id the oldest has it.
template <typename Object> Census<Object> censusOf(OrderedObjects<Object>& objects, int property)
{
    Census<Object> census;
    census.taken.reserve(objects.size());
    for (Object* object : objects) {
        const std::optional<int> id = storedId(*object, property);
        const bool hasIdOfItsOwn = id && census.taken.insert(*id).second;
        if (!hasIdOfItsOwn) census.withoutId.push_back(object);
    }
    return census;
}

/// The id that an end of an element (TAVELL_ELEMENT_START or TAVELL_ELEMENT_END) names; nothing when it is
/// absent or its text is no number.
std::optional<int> namedId(const Element& element, int end)
{
    const std::optional<double> number = element.properties().readableNumber(end);
    if (!number) return std::nullopt;
    return truncateToInt(*number);
}

/// Calls visit(element, end, id) for every end of a circuit's elements that names an id, existing or not.
template <typename Visit> void forEachNamedId(Circuit& circuit, Visit visit)
{
    for (Element* element : circuit.elements())
        for (const int end : {TAVELL_ELEMENT_START, TAVELL_ELEMENT_END})
            if (const std::optional<int> id = namedId(*element, end)) visit(*element, end, *id);
}

/// The node that each id means: the first with that id as it is read, so 0 for an absent one.
std::unordered_map<int, Node*> nodesById(Circuit& circuit)
{
    std::unordered_map<int, Node*> nodes;
    for (Node* node : circuit.nodes()) {
        const std::optional<double> number = node->properties().readableNumber(TAVELL_NODE_ID);
        if (number || !node->has(TAVELL_NODE_ID)) nodes.emplace(truncateToInt(number.value_or(0.0)), node);
    }
    return nodes;
}

/// Stores an end as the number that it is read as; returns whether that changed it.
bool truncateEnd(Element& element, int end, IdentifierChanges& changes)
{
    const std::optional<int> id = namedId(element, end);
    if (!id || element.number(end) == *id) return false;
    changes.set(element, end, *id);
    return true;
}

}  // namespace

void IdentifierChanges::set(Node& node, int property, double value)
{
    keepIndexOf(node.circuit());
    m_changes.push_back({&node, nullptr, property, {}});
    m_changes.back().former = node.properties().take(property);
    node.SetProperty(property, value);
}

void IdentifierChanges::set(Element& element, int property, double value)
{
    keepIndexOf(element.circuit());
    m_changes.push_back({nullptr, &element, property, {}});
    m_changes.back().former = element.properties().take(property);
    element.SetProperty(property, value);
}

void IdentifierChanges::undo()
{
    for (auto change = m_changes.rbegin(); change != m_changes.rend(); ++change) {
        if (change->node != nullptr)
            change->node->properties().putBack(change->property, std::move(change->former));
        else
            change->element->properties().putBack(change->property, std::move(change->former));
    }
    if (m_circuit != nullptr) m_circuit->restoreIndex(std::move(*m_index));
    for (const Change& change : m_changes) {
        if (change.node != nullptr)
            CircuitIndex::readIdentifiers(*change.node);
        else
            CircuitIndex::readIdentifiers(*change.element);
    }
    m_changes.clear();
    m_circuit = nullptr;
}

/// Filing anew may need memory, which a change that is taken back may not: the old index is kept for that.
void IdentifierChanges::keepIndexOf(Circuit& circuit)
{
    if (m_circuit != nullptr) return;
    m_index = circuit.index();
    m_circuit = &circuit;
}

bool mendElementIds(Circuit& circuit, IdentifierChanges& changes)
{
    const Census<Element> census = censusOf(circuit.elements(), TAVELL_ELEMENT_ID);
    for (Element* element : census.withoutId)
        changes.set(*element, TAVELL_ELEMENT_ID, circuit.takeElementId(census.taken));
    return !census.withoutId.empty();
}

bool mendNodeIds(Circuit& circuit, IdentifierChanges& changes)
{
    Census<Node> census = censusOf(circuit.nodes(), TAVELL_NODE_ID);
    if (census.withoutId.empty()) return false;

    const std::unordered_map<int, Node*> meant = nodesById(circuit);
    forEachNamedId(circuit, [&](Element&, int, int id) { census.taken.insert(id); });
    for (Node* node : census.withoutId)
        changes.set(*node, TAVELL_NODE_ID, circuit.takeNodeId(census.taken));

    forEachNamedId(circuit, [&](Element& element, int end, int id) {
        const auto node = meant.find(id);
        if (node != meant.end() && node->second->id() != id) changes.set(element, end, node->second->id());
    });
    return true;
}

bool truncateEndIds(Circuit& circuit, IdentifierChanges& changes)
{
    bool changed = false;
    for (Element* element : circuit.elements())
        for (const int end : {TAVELL_ELEMENT_START, TAVELL_ELEMENT_END})
            changed = truncateEnd(*element, end, changes) || changed;
    return changed;
}

bool mendUnknownEnds(Circuit& /*circuit*/, IdentifierChanges& /*changes*/)
{
    return false;
}

bool mendEqualEnds(Circuit& /*circuit*/, IdentifierChanges& /*changes*/)
{
    return false;
}

void tidy(Circuit& circuit, IdentifierChanges& changes)
{
    mendElementIds(circuit, changes);
    mendNodeIds(circuit, changes);
    truncateEndIds(circuit, changes);
    const bool unknownEndsMended = mendUnknownEnds(circuit, changes);
    const bool equalEndsMended = mendEqualEnds(circuit, changes);
    if (unknownEndsMended || equalEndsMended) truncateEndIds(circuit, changes);
}

}  // namespace Velcor::Tavell
