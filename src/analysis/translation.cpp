#include "translation.h"

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "lcn/connection.h"
#include "lcn/constants.h"
#include "model/Circuit.h"
#include "model/element_curve.h"
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

/// The inputs that only one type has.
void readInputsOfType(const Element& element, lcnNET_elems& record)
{
    switch (record.type) {
    case lcn::kPump:
    case lcn::kLossCurve:
        readCurve(element, record);
        break;
    case lcn::kHazenWilliams:
        record.HWcoeff = element.number(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT);
        break;
    case lcn::kOrifice:
        record.HWcoeff = element.number(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER);
        break;
    case lcn::kGeneralLoss:
        record.HWcoeff = element.number(TAVELL_ELEMENT_GENERAL_LOSS_CK);
        record.Param1 = element.number(TAVELL_ELEMENT_GENERAL_LOSS_A);
        record.Param2 = element.number(TAVELL_ELEMENT_GENERAL_LOSS_B);
        record.Param3 = element.number(TAVELL_ELEMENT_GENERAL_LOSS_C);
        record.Param4 = element.number(TAVELL_ELEMENT_GENERAL_LOSS_D);
        break;
    case lcn::kKvValve:
        record.HWcoeff = element.number(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT) / kSecondsPerHour;
        break;
    case lcn::kCvValve:
        record.HWcoeff = element.number(TAVELL_ELEMENT_VALVE_CV_COEFFICIENT) * kKvPerCv / kSecondsPerHour;
        break;
    case lcn::kControlValve:
        record.FixedFlow = element.number(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW);
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
void readEnergyInput(const Element& element, lcnNET_elems& record)
{
    record.Energy_var = element.wholeNumber(TAVELL_ELEMENT_ENERGY_TYPE);
    const double value = element.number(TAVELL_ELEMENT_ENERGY_VALUE);
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

lcnNET_elems readElement(Element& element, const lcnNET_pumps& noCurve)
{
    lcnNET_elems record(0, noCurve);
    record.elem_no = element.id();
    record.StartNode = element.startNodeId();
    record.EndNode = element.endNodeId();
    record.type = solverType(element.type());
    record.diam = element.number(TAVELL_ELEMENT_DIAMETER);
    record.Area = element.number(TAVELL_ELEMENT_AREA);
    record.rough = element.number(TAVELL_ELEMENT_ROUGHNESS);
    element.GetProperty(TAVELL_ELEMENT_TEMPERATURE, &record.MetalTemp);
    record.k = record.kSpecified = element.number(TAVELL_ELEMENT_K_SPECIFIED);
    record.WettedArea = element.number(TAVELL_ELEMENT_WETTEDPERIMETER);
    readEnergyInput(element, record);
    readInputsOfType(element, record);
    return record;
}

void readElements(Circuit& circuit, Network& network)
{
    const lcnNET_pumps noCurve;
    std::vector<lcnNET_elems> records;
    records.reserve(circuit.elements().size() + 1);
    records.emplace_back(0, noCurve);  // solver numbers run from 1
    int curves = 0;
    for (Element* element : circuit.elements()) {
        records.push_back(readElement(*element, noCurve));
        if (records.back().type == lcn::kPump || records.back().type == lcn::kLossCurve) ++curves;
    }
    network.var.ElemTotal = static_cast<int>(records.size()) - 1;

    network.var.Pumps.resize(curves + 1);
    int curve = 0;
    for (const lcnNET_elems& record : records)
        if (record.type == lcn::kPump || record.type == lcn::kLossCurve)
            network.var.Pumps[++curve] = record.Curve;
    network.elements.assign(std::move(records));
}

/// Heights [m] above the lowest node, against the direction of gravity; the lowest node's own is the
/// reference elevation.
void setHeights(Circuit& circuit, Network& network)
{
    double gx = 0.0, gy = 0.0, gz = 0.0;
    circuit.GetGravity(&gx, &gy, &gz);
    double smallest = kHeightLimit;
    for (int i = 1; i <= network.var.NodeTotal; ++i) {
        lcnNET_nodes& node = network.nodes[i];
        node.Height = -(node.X * gx + node.Y * gy + node.Z * gz);
        smallest = std::min(smallest, node.Height);
    }
    for (int i = 1; i <= network.var.NodeTotal; ++i)
        network.nodes[i].Height -= smallest;
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

void readNodes(Circuit& circuit, Network& network)
{
    const lcn::array<int> noList;
    std::vector<lcnNET_nodes> records;
    records.reserve(circuit.nodes().size() + 1);
    records.emplace_back(noList);  // solver numbers run from 1
    for (const Node* node : circuit.nodes()) {
        records.emplace_back(noList);
        lcnNET_nodes& record = records.back();
        const Location location = node->location();
        record.node_no = node->id();
        record.X = location.x;
        record.Y = location.y;
        record.Z = location.z;

        const int type = node->type();
        if (type != TAVELL_NODE_INLET && type != TAVELL_NODE_OUTLET) continue;
        const int number = static_cast<int>(records.size()) - 1;
        network.boundaries.push_back(readBoundary(*node, number, network.var.Tav));
        if (type == TAVELL_NODE_INLET && network.var.InletNode == 0) network.var.InletNode = record.node_no;
    }
    network.var.NodeTotal = static_cast<int>(records.size()) - 1;
    network.nodes.assign(std::move(records));
}

/// Mean of the inlets' stored fluid temperatures [K] over all inlets: the first guess of every element's
/// temperature, until the starting values replace it. Not a number without an inlet.
void setAverageTemperature(const Circuit& circuit, Network& network)
{
    double sum = 0.0;
    double inlets = 0.0;
    for (const Node* node : circuit.nodes()) {
        if (node->type() != TAVELL_NODE_INLET) continue;
        inlets += 1.0;
        sum += node->number(TAVELL_NODE_FLUID_TEMPERATURE);
    }
    const double average = sum / inlets;
    for (int e = 1; e <= network.var.ElemTotal; ++e)
        network.elements[e].Temperature = average;
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

Network readModel(Circuit& circuit, bool energy)
{
    Network network;
    setSolverDefaults(network.var);
    readSettings(circuit, network.var);
    readFluid(circuit.fluid(), network.var);
    readElements(circuit, network);
    readNodes(circuit, network);
    setHeights(circuit, network);
    setAverageTemperature(circuit, network);
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
