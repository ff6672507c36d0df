#include "circuits.h"

#include <cmath>

namespace reference
{

using support::Description;
using support::ElementData;
using support::NodeData;

namespace
{

using Edges = std::vector<std::array<int, 2>>;

Edges treeEdges(std::mt19937& random, int count)
{
    Edges edges;
    for (int i = 1; i < count; ++i)
        edges.push_back({pick(random, i), i});
    return edges;
}

Edges loopEdges(std::mt19937& random, int count)
{
    const int around = 2 + pick(random, count - 1);
    Edges edges;
    for (int i = 1; i < around; ++i)
        edges.push_back({i - 1, i});
    edges.push_back({around - 1, 0});
    for (int i = around; i < count; ++i)
        edges.push_back({pick(random, i), i});
    return edges;
}

Edges gridEdges(int count, int width)
{
    Edges edges;
    for (int i = 0; i < count; ++i) {
        if ((i + 1) % width != 0 && i + 1 < count) edges.push_back({i, i + 1});
        if (i + width < count) edges.push_back({i, i + width});
    }
    return edges;
}

Edges meshEdges(std::mt19937& random, int count)
{
    Edges edges = treeEdges(random, count);
    for (int extra = 1 + pick(random, count); extra > 0; --extra) {
        const int a = pick(random, count);
        const int b = pick(random, count);
        if (a != b) edges.push_back({a, b});
    }
    return edges;
}

Edges randomEdges(std::mt19937& random, int count)
{
    if (count < 2) return {};
    switch (pick(random, 5)) {
    case 0:
        return treeEdges(random, count);
    case 1:
        return loopEdges(random, count);
    case 2:
        return gridEdges(count, 2);
    case 3:
        return gridEdges(count, 1 + static_cast<int>(std::sqrt(static_cast<double>(count))));
    default:
        return meshEdges(random, count);
    }
}

void set(ElementData& element, int id, double value)
{
    element.properties.push_back({static_cast<double>(id), value});
}

/// Makes pipes of the pumps, control valves and non-return elements at ends without a pressure: what they do there
/// is a matter of its own, and no flow through them is left to be solved.
void usePipesAtFlowEnds(Description& d)
{
    std::vector<int> joined(d.nodes.size(), 0);
    for (const ElementData& element : d.elements) {
        ++joined[static_cast<std::size_t>(element.start)];
        ++joined[static_cast<std::size_t>(element.end)];
    }
    const auto isFlowEnd = [&](int node) {
        const auto n = static_cast<std::size_t>(node);
        const bool hasPressure =
            d.nodes[n].type != TAVELL_NODE_INTERNAL && d.nodes[n].constraint == TAVELL_CONSTRAINT_PRESSURE;
        return joined[n] == 1 && !hasPressure;
    };
    for (ElementData& element : d.elements) {
        const bool isOpen = element.type != TAVELL_PUMP && element.type != TAVELL_CONTROL_VALVE &&
                            element.type != TAVELL_NON_RETURN;
        if (!isOpen && (isFlowEnd(element.start) || isFlowEnd(element.end))) element.type = TAVELL_PIPE;
    }
}

/// A node at a stub of a few pipe diameters' length from an inner node.
void addStub(std::mt19937& random, Description& d, const NodeData& boundary, int at, double size)
{
    NodeData node = boundary;
    for (double& coordinate : node.at)
        coordinate = uniform(random, -1.0, 1.0);
    for (std::size_t axis = 0; axis < 3; ++axis)
        node.at[axis] = d.nodes[static_cast<std::size_t>(at)].at[axis] + 50.0 * size * node.at[axis];
    d.nodes.push_back(node);
    const int stub = static_cast<int>(d.nodes.size()) - 1;
    const bool outward = node.type == TAVELL_NODE_OUTLET;
    d.elements.push_back(randomElement(random, outward ? at : stub, outward ? stub : at, TAVELL_PIPE, size));
}

void addPressure(std::mt19937& random, Description& d, int type, double pressure, const Choice& choice,
                 double size)
{
    const int inner = pick(random, static_cast<int>(d.nodes.size()));
    NodeData& node = d.nodes[static_cast<std::size_t>(inner)];
    NodeData boundary;
    boundary.type = type;
    boundary.constraint = TAVELL_CONSTRAINT_PRESSURE;
    boundary.value = pressure;
    if (choice.innerBoundaries && d.nodes.size() > 3 && node.type == TAVELL_NODE_INTERNAL &&
        pick(random, 4) == 0) {
        boundary.at = node.at;
        node = boundary;
    } else if (node.type == TAVELL_NODE_INTERNAL) {
        addStub(random, d, boundary, inner, size);
    }
}

/// A demand of a velocity between a crawl and a rush, given in any of the three ways.
void addDemand(std::mt19937& random, Description& d, int at, double size)
{
    NodeData demand;
    demand.type = TAVELL_NODE_OUTLET;
    addStub(random, d, demand, at, size);
    NodeData& node = d.nodes.back();
    const ElementData& stub = d.elements.back();
    const double velocity = logUniform(random, 0.003, 2.0);
    const double area = 3.14159265358979323846 * stub.diameter * stub.diameter / 4.0;
    node.constraint = TAVELL_CONSTRAINT_MASS_FLOW + pick(random, 3);
    if (node.constraint == TAVELL_CONSTRAINT_MASS_FLOW)
        node.value = velocity * area * d.density;
    else if (node.constraint == TAVELL_CONSTRAINT_VELOCITY)
        node.value = velocity;
    else
        node.value = velocity * stub.diameter * d.density / d.viscosity;
}

}  // namespace

double uniform(std::mt19937& random, double low, double high)
{
    return low + (high - low) * static_cast<double>(random()) / 4294967296.0;
}

double logUniform(std::mt19937& random, double low, double high)
{
    return low * std::pow(high / low, uniform(random, 0.0, 1.0));
}

int pick(std::mt19937& random, int count)
{
    return static_cast<int>(random() % static_cast<unsigned>(count));
}

std::vector<int> passiveKinds()
{
    return {TAVELL_PIPE,    TAVELL_PIPE,         TAVELL_PIPE, TAVELL_PIPE,     TAVELL_HAZEN_WILLIAMS_PIPE,
            TAVELL_ORIFICE, TAVELL_GENERAL_LOSS, TAVELL_LOSS, TAVELL_KV_VALVE, TAVELL_CV_VALVE};
}

ElementData randomElement(std::mt19937& random, int start, int end, int kind, double size)
{
    ElementData element;
    element.start = start;
    element.end = end;
    element.type = kind;
    element.diameter = size * uniform(random, 0.6, 1.6);
    const double full = 3.14159265358979323846 * element.diameter * element.diameter / 4.0;
    if (pick(random, 5) == 0) element.area = full * uniform(random, 0.7, 1.4);
    if (pick(random, 3) > 0) set(element, TAVELL_ELEMENT_ROUGHNESS, size * logUniform(random, 1e-5, 2e-2));
    if (pick(random, 3) == 0) set(element, TAVELL_ELEMENT_K_SPECIFIED, logUniform(random, 0.1, 20.0));
    switch (kind) {
    case TAVELL_HAZEN_WILLIAMS_PIPE:
        set(element, TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, uniform(random, 70.0, 150.0));
        break;
    case TAVELL_GENERAL_LOSS:
        set(element, TAVELL_ELEMENT_GENERAL_LOSS_CK, logUniform(random, 0.01, 0.1));
        set(element, TAVELL_ELEMENT_GENERAL_LOSS_A, uniform(random, 0.95, 1.05));
        set(element, TAVELL_ELEMENT_GENERAL_LOSS_B, uniform(random, 0.8, 1.2));
        set(element, TAVELL_ELEMENT_GENERAL_LOSS_C, uniform(random, 4.7, 5.0));
        set(element, TAVELL_ELEMENT_GENERAL_LOSS_D, uniform(random, 1.2, 2.2));
        break;
    case TAVELL_ORIFICE:
        set(element, TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, element.diameter * uniform(random, 0.2, 0.75));
        break;
    case TAVELL_KV_VALVE:
        set(element, TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, full * logUniform(random, 5e3, 1e5));
        break;
    case TAVELL_CV_VALVE:
        set(element, TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, full * logUniform(random, 5e3, 1e5));
        break;
    case TAVELL_LOSS:
        for (int point = 1; point <= 5; ++point) {
            element.curveFlows.push_back(std::round(1e6 * full * point) / 1e6 + 1e-6 * point);
            element.curvePressures.push_back(std::round(20.0 * point * (point + pick(random, 3))));
        }
        break;
    case TAVELL_PUMP: {
        // a curve that falls ever more steeply, of numbers of few digits; its cubic meets the points nearly
        const double shutOff = std::round(logUniform(random, 1e3, 3e5) / 10.0) * 10.0;
        for (int point = 0; point <= 5; ++point) {
            const double part = point / 5.0;
            element.curveFlows.push_back(std::round(2e6 * full * part) / 1e6 + 1e-6 * point);
            element.curvePressures.push_back(std::round(shutOff * (1.0 - std::pow(part, 2.3))));
        }
        break;
    }
    case TAVELL_CONTROL_VALVE:
        set(element, TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, full * 1e3 * logUniform(random, 0.05, 2.0));
        break;
    default:
        break;
    }
    return element;
}

Description randomCircuit(std::mt19937& random, const Choice& choice)
{
    Description d;
    const double size = logUniform(random, 0.01, 0.3);
    const double span = logUniform(random, 100.0, 2000.0) * size;
    d.density = uniform(random, 700.0, 1300.0);
    d.viscosity = pick(random, 3) == 0 ? logUniform(random, 1e-3, 0.3) : uniform(random, 3e-4, 2e-3);
    d.friction = choice.allFrictionMethods ? pick(random, 7) : 0;
    double length = 0.0;
    for (double& component : d.gravity) {
        component = uniform(random, -1.0, 1.0);
        length += component * component;
    }
    const double strength = pick(random, 4) == 0 ? uniform(random, 0.0, 1.5) : 1.0;
    for (double& component : d.gravity)
        component *= strength / std::sqrt(length);

    const int count = choice.fewestNodes + pick(random, choice.mostNodes - choice.fewestNodes + 1);
    for (int i = 0; i < count; ++i) {
        NodeData node;
        for (double& coordinate : node.at)
            coordinate = uniform(random, 0.0, span);
        d.nodes.push_back(node);
    }
    for (const auto& edge : randomEdges(random, count)) {
        const int kind =
            choice.kinds[static_cast<std::size_t>(pick(random, static_cast<int>(choice.kinds.size())))];
        const bool turned = pick(random, 2) == 0;
        d.elements.push_back(randomElement(random, edge[turned ? 1 : 0], edge[turned ? 0 : 1], kind, size));
    }

    const double supply = logUniform(random, 1e5, 3e6);
    const double drop = logUniform(random, 10.0, 1e5);
    NodeData inlet;
    inlet.type = TAVELL_NODE_INLET;
    inlet.value = supply;
    addStub(random, d, inlet, pick(random, count), 1.5 * size);
    for (int more = pick(random, 3); more > 0; --more)
        addPressure(random, d, TAVELL_NODE_INLET, supply - uniform(random, 0.0, drop), choice, size);
    bool hasOutlet = false;
    for (int outlets = pick(random, 3); outlets > 0; --outlets) {
        addPressure(random, d, TAVELL_NODE_OUTLET, supply - uniform(random, 0.0, drop), choice, size);
        hasOutlet = true;
    }
    if (!choice.onlyPressures)
        for (int demands = pick(random, 4); demands > 0; --demands) {
            addDemand(random, d, pick(random, count), size);
            hasOutlet = true;
        }
    if (!hasOutlet) {
        NodeData outlet;
        outlet.type = TAVELL_NODE_OUTLET;
        outlet.value = supply - drop;
        addStub(random, d, outlet, pick(random, count), size);
    }
    usePipesAtFlowEnds(d);
    return d;
}

}  // namespace reference
