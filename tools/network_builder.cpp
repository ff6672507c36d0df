#include "network_builder.h"

#include <cstdlib>
#include <string>
#include <unordered_set>
#include <vector>

#include <tavell/Constants.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/IFluid.h>
#include <tavell/INode.h>

#include "element_kinds.h"

namespace
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IElement;
using Velcor::Tavell::IEntity;
using Velcor::Tavell::INode;

/// No heat enters the fluid through an element.
constexpr int kNoHeatType = TAVELL_ENERGY_FLUX;
constexpr double kNoHeat = 0.0;

void setFluid(const FluidData& fluid, ICircuit& circuit)
{
    if (fluid.name) circuit.GetFluid()->SetUIName(fluid.name->c_str());
    for (const auto& [property, value] : fluid.properties)
        circuit.GetFluid()->GetEntity()->SetProperty(property, value);
}

double fluidDensity(ICircuit& circuit)
{
    double density = 0.0;
    circuit.GetFluid()->GetEntity()->GetProperty(TAVELL_FLUID_DENSITY, &density);
    return density;
}

void addNodes(const Network& network, ICircuit& circuit)
{
    for (const Node& node : network.nodes) {
        INode* made = circuit.CreateNode();
        made->SetLocation(node.at[0], node.at[1], node.at[2]);
        made->GetEntity()->SetMeta(node.name.c_str());
    }
}

IElement* createCurveElement(const Element& element, INode* from, INode* to, ICircuit& circuit)
{
    std::vector<double> flows;
    std::vector<double> pressures;
    for (const CurvePoint& point : element.curve) {
        flows.push_back(point.volumeFlow);
        pressures.push_back(point.pressure);
    }
    const double density = element.referenceDensity.value_or(fluidDensity(circuit));
    const int count = static_cast<int>(flows.size());
    if (element.kind->type == TAVELL_PUMP)
        return circuit.CreatePump(from, to, flows.data(), pressures.data(), count, density, kNoHeatType,
                                  kNoHeat);
    return circuit.CreateLoss(from, to, flows.data(), pressures.data(), count, density, kNoHeatType, kNoHeat);
}

IElement* createSectionElement(const Section& section, INode* from, INode* to, ICircuit& circuit)
{
    if (section.wettedPerimeter > 0.0)
        return circuit.CreateNonRoundElement(from, to, section.wettedPerimeter, section.area, 0.0,
                                             kNoHeatType, kNoHeat);
    return circuit.CreateElement(from, to, section.diameter, section.area, 0.0, kNoHeatType, kNoHeat);
}

bool addElement(const Element& element, ICircuit& circuit)
{
    INode* from = circuit.GetNode(element.from);
    INode* to = circuit.GetNode(element.to);
    IElement* made = element.section ? createSectionElement(*element.section, from, to, circuit)
                                     : createCurveElement(element, from, to, circuit);
    if (made == nullptr) return false;
    made->SetType(element.kind->type);
    made->GetEntity()->SetMeta(element.name.c_str());
    for (const auto& [property, value] : element.properties)
        made->GetEntity()->SetProperty(property, value);
    return true;
}

/// Whether the node is where fluid that flows along the element's direction enters (inlet) or leaves
/// (outlet).
bool isAlongElement(const Boundary& boundary, const Element& element, std::size_t node)
{
    return boundary.isInlet ? element.from == node : element.to == node;
}

/// The file counts flows into or out of the network, the library along the node's element.
void setBoundary(const Boundary& boundary, const Element& element, std::size_t position, INode& node)
{
    node.SetType(boundary.isInlet ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
    const double flow = isAlongElement(boundary, element, position) ? boundary.flow : -boundary.flow;
    switch (boundary.flowKind) {
    case Boundary::Flow::none:
        break;
    case Boundary::Flow::mass:
        node.SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, flow);
        break;
    case Boundary::Flow::reynolds:
        node.SetConstraint(TAVELL_CONSTRAINT_REYNOLDS, flow);
        break;
    case Boundary::Flow::velocity:
        node.SetConstraint(TAVELL_CONSTRAINT_VELOCITY, flow);
        break;
    }
    if (!boundary.pressure) return;
    node.SetConstraint(TAVELL_CONSTRAINT_PRESSURE, *boundary.pressure);
    if (boundary.flowKind == Boundary::Flow::mass)
        node.GetEntity()->SetProperty(TAVELL_NODE_CONSTRAINT, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
}

/// A node with a given flow has one element; for others any of theirs will do.
void setBoundaries(const Network& network, ICircuit& circuit)
{
    std::vector<const Element*> elementAt(network.nodes.size(), nullptr);
    for (const Element& element : network.elements) {
        elementAt[element.from] = &element;
        elementAt[element.to] = &element;
    }
    for (std::size_t i = 0; i < network.nodes.size(); ++i) {
        const auto& boundary = network.nodes[i].boundary;
        if (boundary && elementAt[i] != nullptr)
            setBoundary(*boundary, *elementAt[i], i, *circuit.GetNode(i));
    }
}

/// Whether a solve refuses what is not suitable for analysis: the library reads the variable in the same way.
bool isDetailCheckOn()
{
    const char* value = std::getenv("TAVELL_DETAIL_CHECK");
    return value != nullptr && std::strtol(value, nullptr, 10) == 1;
}

/// What a validity state asks for; "" for the suitable ones and, unless the environment asks for detailed
/// checks, for a network that is merely small: two pipes in a row can be solved as well as two thousand.
std::string validityText(int state)
{
    switch (state) {
    case TAVELL_VALID:
    case TAVELL_VALID_INNER_BOUNDARY_VALUES:
    case TAVELL_VALID_HAS_RESULTS:
        return "";
    case TAVELL_INVALID_ELEMENT_COUNT:
    case TAVELL_INVALID_NODE_COUNT:
        return isDetailCheckOn() ? "TAVELL_DETAIL_CHECK asks for at least 3 elements and 4 nodes; unset it"
                                 : "";
    case TAVELL_INVALID_NO_INLET:
        return "no node has an \"inlet\"; a solve needs at least one";
    case TAVELL_INVALID_NO_OUTLET:
        return "no node has an \"outlet\"; a solve needs at least one";
    case TAVELL_INVALID_PRESSURE_AND_FLOW:
        return "a node with a given pressure and flow needs two other nodes with a pressure or a flow";
    case TAVELL_INVALID_DISCONNECTED:
        return "parts of the network are not connected; connect them or give each a file of its own";
    default:
        return "the library refuses the network with validity state " + std::to_string(state);
    }
}

}  // namespace

bool buildCircuit(const Network& network, ICircuit& circuit, Problems& problems)
{
    setFluid(network.fluid, circuit);
    circuit.SetGravity(network.gravity[0], network.gravity[1], network.gravity[2]);
    circuit.GetEntity()->SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, network.minorLoss);
    circuit.GetEntity()->SetProperty(TAVELL_CIRCUIT_FRICTION_FACTOR, network.frictionMethod);
    // Names tell parallel elements apart, so two between the same nodes are meant.
    circuit.SetCheckDuplicateElementAtNodes(false);
    addNodes(network, circuit);
    bool isBuilt = true;
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        if (addElement(network.elements[i], circuit)) continue;
        problems.add("/elements/" + std::to_string(i) + " (" + network.elements[i].name + ')',
                     "the library refuses this element; check its nodes and sizes");
        isBuilt = false;
    }
    if (isBuilt) setBoundaries(network, circuit);
    return isBuilt;
}

bool isReadyToSolve(const Network& network, ICircuit& circuit, Problems& problems)
{
    int count = 0;
    circuit.GetDisconnectedElements(nullptr, 0, &count);
    std::vector<IElement*> apart(static_cast<std::size_t>(count), nullptr);
    if (count > 0) circuit.GetDisconnectedElements(apart.data(), count, &count);
    const std::unordered_set<const IElement*> isApart(apart.begin(), apart.end());
    for (std::size_t i = 0; !isApart.empty() && i < network.elements.size(); ++i) {
        if (isApart.count(circuit.GetElement(i)) == 0) continue;
        problems.add("/elements/" + std::to_string(i) + " (" + network.elements[i].name + ')',
                     "cannot be reached from node " + inQuotes(network.nodes.front().name) +
                         "; connect it or put it into a file of its own");
    }
    circuit.Validate();
    const int state = circuit.IsValid();
    const bool isListed = state == TAVELL_INVALID_DISCONNECTED && !isApart.empty();
    const std::string asked = isListed ? "" : validityText(state);
    if (!asked.empty()) problems.addToFile(asked);
    return problems.isEmpty();
}
