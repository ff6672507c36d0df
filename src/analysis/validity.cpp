// validity.cpp: the validity states in their order, each by one question; ICircuit::IsValid,
// IsSuitableForAnalysis and Validate.
#include "validity.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <utility>

#include "connectivity.h"
#include "model/Circuit.h"
#include "tavell/Constants.h"
#include "tidying.h"

namespace Velcor::Tavell
{

namespace
{

constexpr std::size_t kMinElements = 3;
constexpr std::size_t kMinNodes = 4;
constexpr int kMinOtherConstraints = 2;  // beside a constraint of pressure and flow

/// How many nodes of a circuit have a constraint of each sort.
struct ConstraintCounts {
    int pressure = 0;         // kind 0
    int flow = 0;             // kinds 1 to 3
    int pressureAndFlow = 0;  // kind 4
};

/// Whether some node has this type, TavellNodeType.
bool hasNodeOfType(const Circuit& circuit, int type)
{
    const auto& nodes = circuit.nodes();
    return std::any_of(nodes.begin(), nodes.end(), [type](const Node* node) { return node->type() == type; });
}

/// Whether both ends of every element name a node of the circuit.
bool everyEndNamesANode(const Circuit& circuit)
{
    const auto& elements = circuit.elements();
    return std::all_of(elements.begin(), elements.end(), [&circuit](const Element* element) {
        return circuit.findNode(element->startNodeId()) != nullptr &&
               circuit.findNode(element->endNodeId()) != nullptr;
    });
}

/// Whether a node carries the value that its constraint, TavellNodeConstraint, needs; false for an unknown
/// constraint.
bool hasConstraintValue(const Node& node, int constraint)
{
    switch (constraint) {
    case TAVELL_CONSTRAINT_PRESSURE:
        return node.has(TAVELL_NODE_PRESSURE);
    case TAVELL_CONSTRAINT_MASS_FLOW:
        return node.has(TAVELL_NODE_MASS_FLOW_RATE);
    case TAVELL_CONSTRAINT_REYNOLDS:
        return node.has(TAVELL_NODE_REYNOLDS);
    case TAVELL_CONSTRAINT_VELOCITY:
        return node.has(TAVELL_NODE_VELOCITY);
    case TAVELL_CONSTRAINT_PRESSURE_AND_FLOW:
        return node.has(TAVELL_NODE_MASS_FLOW_RATE) || node.has(TAVELL_NODE_PRESSURE);
    default:
        return false;
    }
}

/// The constraints of a circuit's nodes by sort; nothing when one is unknown or lacks its value.
std::optional<ConstraintCounts> countConstraints(const Circuit& circuit)
{
    ConstraintCounts counts;
    for (const Node* node : circuit.nodes()) {
        const int constraint = node->constraint();
        if (!hasConstraintValue(*node, constraint)) return std::nullopt;

        if (constraint == TAVELL_CONSTRAINT_PRESSURE)
            ++counts.pressure;
        else if (constraint == TAVELL_CONSTRAINT_PRESSURE_AND_FLOW)
            ++counts.pressureAndFlow;
        else
            ++counts.flow;
    }
    return counts;
}

/// Whether constraints of pressure and flow, which fix two values at one node, leave too few others to fix
/// the rest.
bool lacksOtherConstraints(const ConstraintCounts& counts)
{
    return counts.pressureAndFlow > 0 && counts.pressure + counts.flow < kMinOtherConstraints;
}

/// Whether a node carries a property that a boundary value is stored in.
bool hasBoundaryValue(const Node& node)
{
    constexpr std::array<int, 5> kBoundaryValues = {
        TAVELL_NODE_REYNOLDS, TAVELL_NODE_PRESSURE,          TAVELL_NODE_MASS_FLOW_RATE,
        TAVELL_NODE_VELOCITY, TAVELL_NODE_FLUID_TEMPERATURE,
    };
    return std::any_of(kBoundaryValues.begin(), kBoundaryValues.end(),
                       [&node](int property) { return node.has(property); });
}

/// Whether a node that is no inlet carries a boundary value.
bool hasInnerBoundaryValues(const Circuit& circuit)
{
    const auto& nodes = circuit.nodes();
    return std::any_of(nodes.begin(), nodes.end(), [](const Node* node) {
        return node->type() != TAVELL_NODE_INLET && hasBoundaryValue(*node);
    });
}

}  // namespace

bool detailCheckRequested()
{
    const char* value = std::getenv("TAVELL_DETAIL_CHECK");
    return value != nullptr && std::strtol(value, nullptr, 10) == 1;
}

int Circuit::IsValid()
{
    const bool detailed = detailCheckRequested();

    if (hasResults()) return TAVELL_VALID_HAS_RESULTS;
    if (elements().size() < kMinElements) return TAVELL_INVALID_ELEMENT_COUNT;
    if (nodes().size() < kMinNodes) return TAVELL_INVALID_NODE_COUNT;
    if (detailed && !isConnected(*this)) return TAVELL_INVALID_DISCONNECTED;
    if (!hasNodeOfType(*this, TAVELL_NODE_INLET)) return TAVELL_INVALID_NO_INLET;
    if (!hasNodeOfType(*this, TAVELL_NODE_OUTLET)) return TAVELL_INVALID_NO_OUTLET;
    if (detailed && !everyEndNamesANode(*this)) return TAVELL_INVALID_END_NODE;

    const std::optional<ConstraintCounts> counts = countConstraints(*this);
    if (!counts) return TAVELL_INVALID_CONSTRAINT;
    if (counts->pressure == 0) return TAVELL_INVALID_NO_PRESSURE;
    if (lacksOtherConstraints(*counts)) return TAVELL_INVALID_PRESSURE_AND_FLOW;
    return hasInnerBoundaryValues(*this) ? TAVELL_VALID_INNER_BOUNDARY_VALUES : TAVELL_VALID;
}

bool Circuit::IsSuitableForAnalysis()
{
    return IsValid() <= TAVELL_VALID_HAS_RESULTS;
}

bool Circuit::Validate()
{
    if (hasResults()) return IsSuitableForAnalysis();

    Checkpoint before = checkpoint();
    IdentifierChanges changes;
    try {
        tidy(*this, changes);
        return IsSuitableForAnalysis();
    } catch (...) {
        changes.undo();
        rollBack(std::move(before));
        throw;
    }
}

}  // namespace Velcor::Tavell
