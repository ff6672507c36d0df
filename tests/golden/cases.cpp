#include "cases.h"

namespace GoldenTest
{

using support::Built;
using support::Description;
using support::ElementData;
using support::NodeData;

namespace
{

int addNode(Description& network, double x, double y, double z)
{
    NodeData node;
    node.at = {x, y, z};
    network.nodes.push_back(node);
    return static_cast<int>(network.nodes.size()) - 1;
}

int addBoundary(Description& network, double x, double y, double z, int type, int constraint, double value)
{
    const int position = addNode(network, x, y, z);
    NodeData& node = network.nodes.back();
    node.type = type;
    node.constraint = constraint;
    node.value = value;
    return position;
}

ElementData& addElement(Description& network, int start, int end, int type = TAVELL_PIPE,
                        double diameter = 0.1)
{
    ElementData element;
    element.start = start;
    element.end = end;
    element.type = type;
    element.diameter = diameter;
    network.elements.push_back(element);
    return network.elements.back();
}

ElementData& addPipe(Description& network, int start, int end, double diameter = 0.1)
{
    ElementData& pipe = addElement(network, start, end, TAVELL_PIPE, diameter);
    pipe.properties = {{TAVELL_ELEMENT_ROUGHNESS, 4.5e-5}};
    return pipe;
}

void addProperty(ElementData& element, int id, double value)
{
    element.properties.push_back({static_cast<double>(id), value});
}

void setEnergy(const Built& built, int element, int type, double value)
{
    built.element(element)->GetEntity()->SetProperty(TAVELL_ELEMENT_ENERGY_TYPE, static_cast<double>(type));
    built.element(element)->GetEntity()->SetProperty(TAVELL_ELEMENT_ENERGY_VALUE, value);
}

/// Element numbers that differ from the solver's.
void numberElementsFrom(const Built& built, int first)
{
    for (std::size_t i = 0; i < built.circuit().GetNoElements(); ++i)
        built.circuit().GetElement(i)->GetEntity()->SetProperty(
            TAVELL_ELEMENT_ID, static_cast<double>(first) + static_cast<double>(i));
}

void completePumpedLoop(const Built& built)
{
    numberElementsFrom(built, 101);
    setEnergy(built, 0, TAVELL_ENERGY_WALL_TEMPERATURE, 330.0);
    setEnergy(built, 1, TAVELL_ENERGY_HEAT, 1500.0);
    setEnergy(built, 2, TAVELL_ENERGY_FLUX, 250.0);
    setEnergy(built, 3, TAVELL_ENERGY_RISE, 2.0);
    setEnergy(built, 5, TAVELL_ENERGY_HEAT, -800.0);
    setEnergy(built, 6, TAVELL_ENERGY_WALL, 12.0);
    setEnergy(built, 9, TAVELL_ENERGY_FLUX_STORED, 75.0);
}

void completeInnerTarget(const Built& built)
{
    built.node(5)->GetEntity()->SetProperty(TAVELL_NODE_PRESSURE, 310000.0);
    built.node(5)->GetEntity()->SetProperty(TAVELL_NODE_MASS_FLOW_RATE, 0.75);
}

void completeViscosityLaw(const Built& built)
{
    built.circuit().GetEntity()->SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
    built.node(0)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, 350.0);
    built.node(3)->SetLocation(2.0, 2.0, 0.0);
}

void completeHeatedPipes(const Built& built)
{
    built.circuit().GetEntity()->SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
    built.node(0)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, 285.0);
    built.node(6)->GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, 325.0);
    setEnergy(built, 0, TAVELL_ENERGY_WALL_TEMPERATURE, 340.0);
    setEnergy(built, 1, TAVELL_ENERGY_FLUX, 2500.0);
    setEnergy(built, 2, TAVELL_ENERGY_RISE, -1.5);
    setEnergy(built, 3, TAVELL_ENERGY_HEAT, 4000.0);
    setEnergy(built, 4, TAVELL_ENERGY_WALL, 0.0);
    built.element(4)->GetEntity()->SetProperty(TAVELL_ELEMENT_TEMPERATURE, 280.0);
}

}  // namespace

Case pumpedLoop()
{
    Case result;
    result.name = "pumped_loop";
    result.complete = completePumpedLoop;
    Description& d = result.network;
    const int well = addBoundary(d, 0, 0, -2, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 150000.0);
    const int suction = addNode(d, 5, 0, 0);
    const int discharge = addNode(d, 6, 0, 0);
    const int west = addNode(d, 50, 0, 10);
    const int east = addNode(d, 50, 40, 10);
    const int afterLoss = addNode(d, 90, 40, 12);
    const int tank = addBoundary(d, 100, 40, 12, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 200000.0);
    const int demand = addBoundary(d, 60, 0, 10, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 4.0);
    const int afterFixed = addNode(d, 50, 60, 10);
    const int sink = addBoundary(d, 50, 80, 5, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 180000.0);

    addPipe(d, well, suction, 0.15);
    ElementData& pump = addElement(d, suction, discharge, TAVELL_PUMP);
    pump.curveFlows = {0.0, 0.005, 0.01, 0.015, 0.02, 0.025};
    pump.curvePressures = {450000.0, 441000.0, 412000.0, 355000.0, 280000.0, 170000.0};
    addPipe(d, discharge, west, 0.125);
    addProperty(d.elements.back(), TAVELL_ELEMENT_K_SPECIFIED, 2.5);
    addProperty(addElement(d, west, east, TAVELL_HAZEN_WILLIAMS_PIPE),
                TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 130.0);
    ElementData& against = addElement(d, east, west, TAVELL_HAZEN_WILLIAMS_PIPE, 0.08);
    addProperty(against, TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 100.0);
    addProperty(against, TAVELL_ELEMENT_K_SPECIFIED, 1.5);
    ElementData& loss = addElement(d, east, afterLoss, TAVELL_LOSS);
    loss.curveFlows = {0.001, 0.005, 0.01, 0.02, 0.03};
    loss.curvePressures = {1500.0, 9000.0, 21000.0, 43000.0, 60000.0};
    addPipe(d, afterLoss, tank);
    addPipe(d, west, demand, 0.08);
    ElementData& fixedLoss = addElement(d, east, afterFixed, TAVELL_LOSS);
    fixedLoss.curveFlows = {0.001, 0.002, 0.003, 0.004};
    fixedLoss.curvePressures = {600.0, 1900.0, 4700.0, 7800.0};
    addProperty(fixedLoss, TAVELL_ELEMENT_FIXED_MASS_FLOW, 2.5);
    addPipe(d, afterFixed, sink, 0.08);
    return result;
}

Case valvesAndOrifice()
{
    Case result;
    result.name = "valves_and_orifice";
    Description& d = result.network;
    d.friction = TAVELL_FRICTION_COLEBROOK;
    const int inlet = addBoundary(d, 0, 0, 0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 500000.0);
    const int header = addNode(d, 2, 0, 0);
    const int afterKv = addNode(d, 3, 2, 0);
    const int afterCv = addNode(d, 3, 1, 0);
    const int afterOrifice = addNode(d, 3, 0, 0);
    const int afterLoss = addNode(d, 3, -1, 0);
    const int afterControl = addNode(d, 3, -2, 0);
    const int collector = addNode(d, 12, 0, 1);
    const int vessel = addBoundary(d, 14, 0, 1, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 150000.0);
    const int demand = addBoundary(d, 20, 0, 1, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 2.0);
    const int openEnd = addNode(d, 12, 6, 1);

    addPipe(d, inlet, header, 0.2);
    addProperty(addElement(d, header, afterKv, TAVELL_KV_VALVE), TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 40.0);
    addProperty(addElement(d, afterCv, header, TAVELL_CV_VALVE), TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, 50.0);
    addProperty(addElement(d, header, afterOrifice, TAVELL_ORIFICE), TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER,
                0.06);
    ElementData& loss = addElement(d, header, afterLoss, TAVELL_GENERAL_LOSS);
    addProperty(loss, TAVELL_ELEMENT_GENERAL_LOSS_CK, 0.02);
    addProperty(loss, TAVELL_ELEMENT_GENERAL_LOSS_A, 1.0);
    addProperty(loss, TAVELL_ELEMENT_GENERAL_LOSS_B, 1.0);
    addProperty(loss, TAVELL_ELEMENT_GENERAL_LOSS_C, 5.0);
    addProperty(loss, TAVELL_ELEMENT_GENERAL_LOSS_D, 1.9);
    ElementData& control = addElement(d, header, afterControl, TAVELL_CONTROL_VALVE, 0.05);
    addProperty(control, TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 1.25);
    addProperty(control, TAVELL_ELEMENT_ROUGHNESS, 1e-5);
    addPipe(d, afterKv, collector, 0.05);
    addPipe(d, afterCv, collector, 0.05);
    addPipe(d, afterOrifice, collector, 0.05);
    addPipe(d, afterLoss, collector, 0.05);
    addPipe(d, afterControl, collector, 0.05);
    addElement(d, collector, vessel, TAVELL_NON_RETURN, 0.15);
    addElement(d, collector, header, TAVELL_NON_RETURN, 0.15);
    addPipe(d, vessel, demand, 0.05);
    addPipe(d, collector, openEnd, 0.05);
    return result;
}

Case innerTarget()
{
    Case result;
    result.name = "inner_target";
    result.complete = completeInnerTarget;
    Description& d = result.network;
    d.friction = TAVELL_FRICTION_ALTSHUL;
    const int inlet = addBoundary(d, 0, 0, 0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 300000.0);
    const int fork = addNode(d, 10, 0, 0);
    const int metered = addBoundary(d, 20, 10, 0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 1.5);
    const int join = addNode(d, 30, 0, 0);
    const int outlet = addBoundary(d, 40, 0, 0, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 100000.0);
    const int feed = addBoundary(d, 10, -8, 0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW, 0.0);

    addPipe(d, inlet, fork);
    addPipe(d, fork, metered, 0.05);
    addPipe(d, metered, join, 0.05);
    addPipe(d, fork, join, 0.06);
    addPipe(d, join, outlet);
    addPipe(d, feed, fork, 0.05);
    ElementData& pump = addElement(d, fork, join, TAVELL_PUMP);
    pump.curveFlows = {0.0, 0.001, 0.002, 0.003, 0.004};
    pump.curvePressures = {90000.0, 86000.0, 71000.0, 44000.0, 10000.0};
    addProperty(pump, TAVELL_ELEMENT_FIXED_MASS_FLOW, 0.5);
    return result;
}

Case viscosityLaw()
{
    Case result;
    result.name = "viscosity_law";
    result.complete = completeViscosityLaw;
    Description& d = result.network;
    d.friction = TAVELL_FRICTION_HAALAND;
    d.gravity = {-1.0, 0.0, 0.0};
    const int hot = addBoundary(d, 3, 0, 0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 120000.0);
    const int cold = addBoundary(d, 3, 4, 0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 121000.0);
    const int mixing = addNode(d, 2, 2, 0);
    const int samePlace = addNode(d, 2, 2, 1);
    const int outlet = addBoundary(d, 1, 2, 2.5, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_VELOCITY, 0.4);

    addPipe(d, hot, mixing, 0.025);
    addPipe(d, cold, mixing, 0.025);
    addPipe(d, mixing, samePlace, 0.04);
    addPipe(d, samePlace, outlet, 0.04);
    return result;
}

Case heatedPipes()
{
    Case result;
    result.name = "heated_pipes";
    result.complete = completeHeatedPipes;
    result.energy = true;
    Description& d = result.network;
    d.friction = TAVELL_FRICTION_SERGHIDES;
    const int cold = addBoundary(d, 0, 0, 0, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 200000.0);
    int last = cold;
    for (int i = 1; i <= 4; ++i) {
        const int next = addNode(d, 10.0 * i, 0, 0.5 * i);
        addPipe(d, last, next, 0.03);
        last = next;
    }
    const int outlet = addBoundary(d, 50, 0, 2, TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 0.8);
    const int warm = addBoundary(d, 30, 5, 1.5, TAVELL_NODE_INLET, TAVELL_CONSTRAINT_MASS_FLOW, 0.3);
    addPipe(d, last, outlet, 0.03);
    addPipe(d, warm, 3, 0.02);
    return result;
}

std::vector<Case> allCases()
{
    return {pumpedLoop(), valvesAndOrifice(), innerTarget(), viscosityLaw(), heatedPipes()};
}

}  // namespace GoldenTest
