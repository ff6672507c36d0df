#include "translation.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "lcn/connection.h"
#include "lcn/constants.h"
#include "model/Circuit.h"
#include "model/element_curve.h"
#include "model/property_ids.h"
#include "tavell/Constants.h"

namespace Velcor::Tavell
{

namespace
{

constexpr double kSecondsPerHour = 3600.0;
constexpr double kKvPerCv = 0.865;  // [m3/h at 1 bar per US gal/min at 1 psi]

/// [m] start of the search for the lowest node. kept: 1e11 in single precision; it is reported as the
/// reference elevation of a circuit without nodes.
constexpr double kHeightLimit = 99999997952.0;

constexpr double kShortestElement = 1.0e-6;  // [m]

/// A stored number, or fallback when the entity has none.
double numberOr(const Entity& entity, int id, double fallback)
{
    return entity.has(id) ? entity.number(id) : fallback;
}

/// The numbers of an element or a node, taken out of its property set in one walk: reading them one after
/// another takes a search each. As in the set itself, an absent number reads 0.
class StoredNumbers
{
public:
    /// Reads a set; false when it holds something other than numbers, and has to be asked itself.
    bool read(const Properties& properties)
    {
        m_values.fill(0.0);
        return properties.visitNumbers(
            [this](int slot, double value) { m_values[static_cast<std::size_t>(slot)] = value; });
    }
    double number(int id) const { return m_values[static_cast<std::size_t>(propertySlot(id))]; }
    int wholeNumber(int id) const { return truncateToInt(number(id)); }

private:
    std::array<double, kPropertySlots> m_values;
};

/// Points and reference density of a pump's or loss's curve, and the flow it is fixed to.
void readCurve(const Element& element, lcnNET_elems& record)
{
    lcnNET_pumps curve;
    curve.FlowRate.assign(curveValues(element.properties().text(TAVELL_ELEMENT_FLOW_RATE)));
    curve.PressurePoints.assign(curveValues(element.properties().text(TAVELL_ELEMENT_PRESSURE)));
    const double density = element.number(TAVELL_ELEMENT_REFERENCE_DENSITY);
    if (density != 0.0) curve.RefDensity = density;
    record.Curve = curve;

    const double fixedFlow = element.number(TAVELL_ELEMENT_FIXED_MASS_FLOW);
    if (fixedFlow != 0.0) {
        record.FixedFlow = fixedFlow;
        record.fix = 1;
    }
}

/// The inputs that only one type has. Inputs has number(id), as the element itself.
template <typename Inputs>
void readInputsOfType(const Element& element, const Inputs& inputs, lcnNET_elems& record)
{
    switch (record.type) {
    case lcn::kPump:
    case lcn::kLossCurve:
        readCurve(element, record);
        break;
    case lcn::kHazenWilliams:
        record.HWcoeff = inputs.number(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT);
        break;
    case lcn::kOrifice:
        record.HWcoeff = inputs.number(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER);
        break;
    case lcn::kGeneralLoss:
        record.HWcoeff = inputs.number(TAVELL_ELEMENT_GENERAL_LOSS_CK);
        record.Param1 = inputs.number(TAVELL_ELEMENT_GENERAL_LOSS_A);
        record.Param2 = inputs.number(TAVELL_ELEMENT_GENERAL_LOSS_B);
        record.Param3 = inputs.number(TAVELL_ELEMENT_GENERAL_LOSS_C);
        record.Param4 = inputs.number(TAVELL_ELEMENT_GENERAL_LOSS_D);
        break;
    case lcn::kKvValve:
        record.HWcoeff = inputs.number(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT) / kSecondsPerHour;
        break;
    case lcn::kCvValve:
        record.HWcoeff = inputs.number(TAVELL_ELEMENT_VALVE_CV_COEFFICIENT) * kKvPerCv / kSecondsPerHour;
        break;
    case lcn::kControlValve:
        record.FixedFlow = inputs.number(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW);
        record.fix = 1;
        break;
    case lcn::kNonReturn:
        record.FixedFlow = 0.0;
        record.fix = 1;
        break;
    default:
        break;
    }
}

/// Every kind of energy input has a place of its own: [K] wall, [W/m2] flux, [K] rise, [W] heat.
template <typename Inputs> void readEnergyInput(const Inputs& inputs, lcnNET_elems& record)
{
    record.Energy_var = inputs.wholeNumber(TAVELL_ELEMENT_ENERGY_TYPE);
    const double value = inputs.number(TAVELL_ELEMENT_ENERGY_VALUE);
    switch (record.Energy_var) {
    case TAVELL_ENERGY_WALL_TEMPERATURE:
        record.MetalTemp = value;
        break;
    case TAVELL_ENERGY_RISE:
        record.TemperatureRise = value;
        break;
    case TAVELL_ENERGY_HEAT:
        record.heat = record.HeatFlux = value;
        break;
    default:
        record.HeatFlux = value;
        break;
    }
}

/// Solver type code of a model type; types without a law get a code without one.
int solverType(int modelType)
{
    return modelType == INT_MAX ? 0 : modelType + 1;
}

/// The inputs of an element but its wall temperature, in the order in which an unreadable one is told.
template <typename Inputs>
void readElement(const Element& element, const Inputs& inputs, lcnNET_elems& record)
{
    record.elem_no = inputs.wholeNumber(TAVELL_ELEMENT_ID);
    record.StartNode = inputs.wholeNumber(TAVELL_ELEMENT_START);
    record.EndNode = inputs.wholeNumber(TAVELL_ELEMENT_END);
    record.type = solverType(inputs.wholeNumber(TAVELL_ELEMENT_MODE));
    record.diam = inputs.number(TAVELL_ELEMENT_DIAMETER);
    record.Area = inputs.number(TAVELL_ELEMENT_AREA);
    record.rough = inputs.number(TAVELL_ELEMENT_ROUGHNESS);
    record.k = record.kSpecified = inputs.number(TAVELL_ELEMENT_K_SPECIFIED);
    record.WettedArea = inputs.number(TAVELL_ELEMENT_WETTEDPERIMETER);
    readEnergyInput(inputs, record);
    readInputsOfType(element, inputs, record);
}

void readElements(Circuit& circuit, Network& network, double startTemperature)
{
    const lcnNET_pumps noCurve;
    const double wallTemperature = numberOr(circuit.fluid(), TAVELL_FLUID_DEFAULT_TEMPERATURE, 0.0);
    std::vector<lcnNET_elems> records;
    records.reserve(circuit.elements().size() + 1);
    records.emplace_back(0, noCurve);  // solver numbers run from 1
    std::vector<std::size_t> withCurve;
    StoredNumbers numbers;
    for (const Element* element : circuit.elements()) {
        lcnNET_elems& record = records.emplace_back(0, noCurve);
        record.MetalTemp = wallTemperature;
        record.Temperature = startTemperature;
        if (numbers.read(element->properties()))
            readElement(*element, numbers, record);
        else
            readElement(*element, *element, record);
        if (record.type == lcn::kPump || record.type == lcn::kLossCurve)
            withCurve.push_back(records.size() - 1);
    }
    network.var.ElemTotal = static_cast<int>(records.size()) - 1;

    network.var.Pumps.resize(static_cast<int>(withCurve.size()) + 1);
    int curve = 0;
    for (const std::size_t e : withCurve)
        network.var.Pumps[++curve] = records[e].Curve;
    network.elements.assign(std::move(records));
}

/// Heights [m] above the lowest node, against the direction of gravity; the lowest node's own is the
/// reference elevation. The locations are those of the nodes in solver order, from position 0.
void setHeights(Circuit& circuit, Network& network, const std::vector<Location>& locations)
{
    double gx = 0.0, gy = 0.0, gz = 0.0;
    circuit.GetGravity(&gx, &gy, &gz);
    const auto height = [&](const Location& at) { return -(at.x * gx + at.y * gy + at.z * gz); };
    double smallest = kHeightLimit;
    for (const Location& at : locations)
        smallest = std::min(smallest, height(at));
    int i = 0;
    for (const Location& at : locations)
        network.nodes[++i].Height = height(at) - smallest;
    network.var.Datum = smallest;
}

BoundaryCondition readBoundary(const Node& node, int record, double defaultTemperature)
{
    BoundaryCondition boundary;
    boundary.record = record;
    boundary.isInlet = node.type() == TAVELL_NODE_INLET;
    if (boundary.isInlet)
        boundary.temperature = numberOr(node, TAVELL_NODE_FLUID_TEMPERATURE, defaultTemperature);
    boundary.constraint = node.constraint();
    switch (boundary.constraint) {
    case TAVELL_CONSTRAINT_PRESSURE:
        boundary.pressure = node.number(TAVELL_NODE_PRESSURE);
        break;
    case TAVELL_CONSTRAINT_MASS_FLOW:
        boundary.flow = node.number(TAVELL_NODE_MASS_FLOW_RATE);
        break;
    case TAVELL_CONSTRAINT_REYNOLDS:
        boundary.flow = node.number(TAVELL_NODE_REYNOLDS);
        break;
    case TAVELL_CONSTRAINT_VELOCITY:
        boundary.flow = node.number(TAVELL_NODE_VELOCITY);
        break;
    case TAVELL_CONSTRAINT_PRESSURE_AND_FLOW:
        boundary.pressure = node.number(TAVELL_NODE_PRESSURE);
        boundary.flow = node.number(TAVELL_NODE_MASS_FLOW_RATE);
        break;
    default:
        break;
    }
    return boundary;
}

/// Location and number of a node; its type. Inputs has number(id), as the node itself.
template <typename Inputs> int readNode(const Inputs& inputs, lcnNET_nodes& record)
{
    record.X = inputs.number(TAVELL_NODE_X);
    record.Y = inputs.number(TAVELL_NODE_Y);
    record.Z = inputs.number(TAVELL_NODE_Z);
    record.node_no = inputs.wholeNumber(TAVELL_NODE_ID);
    return inputs.wholeNumber(TAVELL_NODE_MODE);
}

/// Writes the locations, too, in solver order from position 0.
void readNodes(Circuit& circuit, Network& network, std::vector<Location>& locations)
{
    const lcn::array<int> noList;
    std::vector<lcnNET_nodes> records;
    records.reserve(circuit.nodes().size() + 1);
    locations.reserve(circuit.nodes().size());
    records.emplace_back(noList);  // solver numbers run from 1
    StoredNumbers numbers;
    for (const Node* node : circuit.nodes()) {
        lcnNET_nodes& record = records.emplace_back(noList);
        const int type =
            numbers.read(node->properties()) ? readNode(numbers, record) : readNode(*node, record);
        locations.push_back({record.X, record.Y, record.Z});
        if (type != TAVELL_NODE_INLET && type != TAVELL_NODE_OUTLET) continue;
        const int number = static_cast<int>(records.size()) - 1;
        network.boundaries.push_back(readBoundary(*node, number, network.var.Tav));
        if (type == TAVELL_NODE_INLET && network.var.InletNode == 0) network.var.InletNode = record.node_no;
    }
    network.var.NodeTotal = static_cast<int>(records.size()) - 1;
    network.nodes.assign(std::move(records));
}

/// Mean of the inlets' stored fluid temperatures [K] over all inlets: the first guess of every element's
/// temperature, until the starting values replace it. Not a number without an inlet. What is not readable
/// counts as 0 here, since reading the nodes will tell of it.
double meanInletTemperature(const Circuit& circuit)
{
    double sum = 0.0;
    double inlets = 0.0;
    for (const Node* node : circuit.nodes()) {
        const Properties& values = node->properties();
        if (truncateToInt(values.readableNumber(TAVELL_NODE_MODE).value_or(0.0)) != TAVELL_NODE_INLET)
            continue;
        inlets += 1.0;
        sum += values.readableNumber(TAVELL_NODE_FLUID_TEMPERATURE).value_or(0.0);
    }
    return sum / inlets;
}

void setSolverDefaults(lcnNET_var& var)
{
    var.numitermm = 2000;
    var.numiterpp = 2000;
    var.relaxpp = 0.5;
    var.Pav = var.compressible ? 101325.0 : 10000.0;
    var.Concrit = 1.0e-6;
    var.nxx = 2;
    var.Minor = 2;
    var.gasConstant = 287.0;
    var.heatRatio = 1.4;
    var.densityWeight = 0.5;
    var.temperatureWeight = 0.5;
    var.flowWeight = 1.0;
    var.gasModel = {1000000.0, 443.15, 126656.25};
}

int minorLossMode(double setting)
{
    if (setting == 1.0) return 1;
    return setting == 0.0 ? 0 : 2;
}

/// 0 and 2 to 6 are correlations; anything else is the default one.
int frictionMethod(int setting)
{
    return setting == 0 || (setting >= 2 && setting <= 6) ? setting : 1;
}

void readSettings(const Circuit& circuit, lcnNET_var& var)
{
    var.Minor = minorLossMode(circuit.number(TAVELL_CIRCUIT_MINOR_LOSS));
    var.ViscosityLaw = circuit.number(TAVELL_CIRCUIT_CALCULATE_VISCOSITY) != 0.0;
    var.FrictionMethod = frictionMethod(circuit.wholeNumber(TAVELL_CIRCUIT_FRICTION_FACTOR));
}

void readFluid(const Fluid& fluid, lcnNET_var& var)
{
    var.Density = numberOr(fluid, TAVELL_FLUID_DENSITY, var.Density);
    var.Tav = numberOr(fluid, TAVELL_FLUID_DEFAULT_TEMPERATURE, var.Tav);
    var.Cp = numberOr(fluid, TAVELL_FLUID_SPECIFIC_HEAT, var.Cp);
    var.Conductivity = numberOr(fluid, TAVELL_FLUID_CONDUCTIVITY, var.Conductivity);
    var.Viscosity = numberOr(fluid, TAVELL_FLUID_VISCOSITY, var.Viscosity);
    var.ViscA = numberOr(fluid, TAVELL_FLUID_VISCOSITY_COEFFICIENT_1, var.ViscA);
    var.ViscB = numberOr(fluid, TAVELL_FLUID_VISCOSITY_COEFFICIENT_2, var.ViscB);
    var.ViscC = numberOr(fluid, TAVELL_FLUID_VISCOSITY_COEFFICIENT_3, var.ViscC);
    if (std::fabs(var.Conductivity) > lcn::kTiny) var.Pr = var.Viscosity * var.Cp / var.Conductivity;
}

/// Unit vector and length of an element from its end nodes; two ends at one place have no direction.
void setGeometry(const lcn::NodeArray& nodes, lcnNET_elems& elem)
{
    const lcnNET_nodes& start = nodes[elem.LocalStartNode];
    const lcnNET_nodes& end = nodes[elem.LocalEndNode];
    elem.Vx = end.X - start.X;
    elem.Vy = end.Y - start.Y;
    elem.Vz = end.Z - start.Z;
    double s = elem.Vx * elem.Vx + elem.Vy * elem.Vy + elem.Vz * elem.Vz;
    if (s > DBL_MIN) {
        s = std::sqrt(s);
        elem.Vx /= s;
        elem.Vy /= s;
        elem.Vz /= s;
    }
    // not std::max: a length that is no number has to stay visible
    elem.length = s < kShortestElement ? kShortestElement : s;
    elem.WettedArea *= elem.length;
}

/// Mass flow [kg/s] that a flow constraint means for the element at its node.
double massFlowOf(const BoundaryCondition& boundary, const lcnNET_elems& elem, const lcnNET_var& var)
{
    switch (boundary.constraint) {
    case TAVELL_CONSTRAINT_REYNOLDS:
        return boundary.flow * var.Viscosity * elem.Area / elem.diam;
    case TAVELL_CONSTRAINT_VELOCITY:
        return boundary.flow * elem.Area * var.Density;
    default:
        return boundary.flow;
    }
}

/// The pressure part fixes the node, the flow part the first element joined to it unless that has a fixed
/// flow already.
void imposeBoundary(const BoundaryCondition& boundary, Network& network)
{
    lcnNET_nodes& node = network.nodes[boundary.record];
    if (boundary.isInlet) {
        node.Temperature = boundary.temperature;
        node.tempflag = 1;
    }
    const int kind = boundary.constraint;
    if (kind == TAVELL_CONSTRAINT_PRESSURE || kind == TAVELL_CONSTRAINT_PRESSURE_AND_FLOW) {
        node.flag = lcn::kPressureBoundary;
        node.Pressbound = boundary.pressure + network.var.Density * lcn::kGravity * node.Height;
        node.Pressure = node.Pressbound;
    }
    if (kind < TAVELL_CONSTRAINT_MASS_FLOW || kind > TAVELL_CONSTRAINT_PRESSURE_AND_FLOW ||
        node.no_branches == 0)
        return;
    lcnNET_elems& elem = network.elements[std::abs(node.LocalElements[1])];
    if (elem.fix == 1) return;
    elem.FixedFlow = massFlowOf(boundary, elem, network.var);
    elem.fix = 1;
}

}  // namespace

bool fitsSolver(std::size_t nodes, std::size_t elements)
{
    constexpr std::size_t kMostNodes = INT_MAX - 2;
    constexpr std::size_t kMostElements = (INT_MAX - 2) / 2;
    return nodes <= kMostNodes && elements <= kMostElements;
}

Network readModel(Circuit& circuit, bool energy)
{
    Network network;
    setSolverDefaults(network.var);
    readSettings(circuit, network.var);
    readFluid(circuit.fluid(), network.var);
    readElements(circuit, network, meanInletTemperature(circuit));
    std::vector<Location> locations;
    readNodes(circuit, network, locations);
    setHeights(circuit, network, locations);
    network.var.Energy = energy ? 1 : 0;
    return network;
}

void completeNetwork(Network& network)
{
    lcn::connect(network.nodes, network.elements, network.var);
    for (int e = 1; e <= network.var.ElemTotal; ++e)
        setGeometry(network.nodes, network.elements[e]);
    for (const BoundaryCondition& boundary : network.boundaries)
        imposeBoundary(boundary, network);
}

}  // namespace Velcor::Tavell
