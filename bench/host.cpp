#include "host.h"

#include <cmath>

namespace bench
{

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kFluidTemperature = 293.15;  // [K]
constexpr double kHazenWilliams = 140.0;      // [-], not used by the solve

void setFluidAndSettings(vcICircuit* circuit)
{
    vcICircuitSetGravity(circuit, 0.0, 0.0, -1.0);
    vcIEntity* const settings = vcICircuitGetEntity(circuit);
    vcIEntitySetProperty(settings, TAVELL_CIRCUIT_MINOR_LOSS, 0.0);
    vcIEntitySetProperty(settings, TAVELL_CIRCUIT_FRICTION_FACTOR, TAVELL_FRICTION_SWAMEE_JAIN);
    vcIEntity* const fluid = vcIFluidGetEntity(vcICircuitGetFluid(circuit));
    vcIEntitySetProperty(fluid, TAVELL_FLUID_DENSITY, kDensity);
    vcIEntitySetProperty(fluid, TAVELL_FLUID_VISCOSITY, kViscosity);
    vcIEntitySetProperty(fluid, TAVELL_FLUID_DEFAULT_TEMPERATURE, kFluidTemperature);
}

vcINode* addNode(vcICircuit* circuit, const Place& place)
{
    vcINode* const node = vcICircuitCreateNode(circuit);
    vcINodeSetLocation(node, place.x, place.y, 0.0);
    return node;
}

void fix(vcINode* node, int type, int constraint, double value)
{
    vcINodeSetType(node, type);
    vcINodeSetConstraint(node, constraint, value);
}

/// Eleven properties come with the element, the twelfth is the coefficient of Hazen and Williams.
void addPipe(vcICircuit* circuit, vcINode* start, vcINode* end, double diameter)
{
    const double area = 0.25 * kPi * diameter * diameter;
    vcIElement* const pipe =
        vcICircuitCreateElement(circuit, start, end, diameter, area, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    vcIEntity* const entity = vcIElementGetEntity(pipe);
    vcIEntitySetProperty(entity, TAVELL_ELEMENT_ROUGHNESS, kRoughness);
    vcIEntitySetProperty(entity, TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, kHazenWilliams);
}

/// Ids of the nodes or elements of a circuit, by position.
template <typename GetId> std::vector<int> readIds(std::size_t count, GetId getId)
{
    std::vector<int> ids(count);
    for (std::size_t i = 0; i < count; ++i)
        ids[i] = getId(static_cast<int>(i));
    return ids;
}

/// Copies consecutive result quantities, from key first on, to the objects with these ids.
template <std::size_t kQuantities>
bool readQuantities(vcICircuit* circuit, int first, const std::vector<int>& ids,
                    std::vector<std::array<double, kQuantities>>& objects)
{
    objects.resize(ids.size());
    for (std::size_t quantity = 0; quantity < kQuantities; ++quantity) {
        vcIResultsSet* const set = vcICircuitGetResults(circuit, first + static_cast<int>(quantity));
        if (set == nullptr || vcIResultsSetGetSize(set) != ids.size()) return false;
        const int* const resultIds = vcIResultsSetGetIds(set);
        const double* const values = vcIResultsSetGetValues(set);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            if (resultIds[i] != ids[i]) return false;
            objects[i][quantity] = values[i];
        }
    }
    return true;
}

}  // namespace

double pressureOf(const Results& results, int node)
{
    return results
        .nodes[static_cast<std::size_t>(node)][TAVELL_RESULT_PRESSURE - TAVELL_RESULT_NODE_TEMPERATURE];
}

double massFlowOf(const Results& results, int element)
{
    return results.elements[static_cast<std::size_t>(element)][TAVELL_RESULT_MASS_FLOW];
}

double reynoldsOf(const Results& results, int element)
{
    return results.elements[static_cast<std::size_t>(element)][TAVELL_RESULT_REYNOLDS];
}

double velocityOf(const Results& results, int element)
{
    return results.elements[static_cast<std::size_t>(element)][TAVELL_RESULT_VELOCITY];
}

bool isTurbulent(const Results& results, int element)
{
    constexpr double kTurbulentFrom = 5000.0;  // [-]
    return std::fabs(reynoldsOf(results, element)) > kTurbulentFrom;
}

vcICircuit* buildCircuit(vcITavell* system, const Network& network)
{
    vcICircuit* const circuit = vcITavellCreateCircuit(system);
    setFluidAndSettings(circuit);

    std::vector<vcINode*> nodes;
    nodes.reserve(network.nodes.size());
    for (const Place& place : network.nodes)
        nodes.push_back(addNode(circuit, place));
    for (const int inlet : network.inlets)
        fix(nodes[static_cast<std::size_t>(inlet)], TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE,
            network.inletPressure);

    for (const Pipe& pipe : network.pipes)
        addPipe(circuit, nodes[static_cast<std::size_t>(pipe.start)],
                nodes[static_cast<std::size_t>(pipe.end)], pipe.diameter);
    for (const Demand& demand : network.demands) {
        vcINode* const outlet = addNode(circuit, outletPlace(network, demand));
        fix(outlet, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, demand.massFlow);
        addPipe(circuit, nodes[static_cast<std::size_t>(demand.node)], outlet, demand.diameter);
    }
    return circuit;
}

bool readResults(vcICircuit* circuit, Results& results)
{
    const std::vector<int> nodeIds = readIds(vcICircuitGetNoNodes(circuit), [circuit](int i) {
        return vcINodeGetId(vcICircuitGetNode(circuit, i));
    });
    const std::vector<int> elementIds = readIds(vcICircuitGetNoElements(circuit), [circuit](int i) {
        return vcIElementGetId(vcICircuitGetElement(circuit, i));
    });
    return readQuantities(circuit, TAVELL_RESULT_NODE_TEMPERATURE, nodeIds, results.nodes) &&
           readQuantities(circuit, TAVELL_RESULT_REYNOLDS, elementIds, results.elements);
}

}  // namespace bench
