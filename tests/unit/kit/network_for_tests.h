// network_for_tests.h: small networks by a few words per part.
#ifndef TAVELL_TESTS_KIT_NETWORK_FOR_TESTS_H
#define TAVELL_TESTS_KIT_NETWORK_FOR_TESTS_H

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <tavell/Constants.h>

#include "element_kinds.h"
#include "network.h"

namespace kit
{

inline Boundary flowBoundary(bool isInlet, Boundary::Flow kind, double flow)
{
    Boundary boundary;
    boundary.isInlet = isInlet;
    boundary.flowKind = kind;
    boundary.flow = flow;
    return boundary;
}

inline Boundary pressureAt(double pressure)
{
    Boundary boundary;
    boundary.isInlet = true;
    boundary.pressure = pressure;
    return boundary;
}

inline Boundary inflow(double massFlow)
{
    return flowBoundary(true, Boundary::Flow::mass, massFlow);
}

inline Boundary outflow(double massFlow)
{
    return flowBoundary(false, Boundary::Flow::mass, massFlow);
}

inline Boundary volumeOutflow(double flow)
{
    return flowBoundary(false, Boundary::Flow::volume, flow);
}

inline Boundary velocityOut(double velocity)
{
    return flowBoundary(false, Boundary::Flow::velocity, velocity);
}

/// A network that grows part by part. References to parts hold until the next part of their kind.
class TestNetwork
{
public:
    void fluid(double density, double viscosity)
    {
        m_network.fluid.properties = {{TAVELL_FLUID_DENSITY, density}, {TAVELL_FLUID_VISCOSITY, viscosity}};
    }

    void schematic() { m_network.coordinates = Coordinates::schematic; }

    Node& node(const std::string& name, std::array<double, 3> at, std::optional<Boundary> boundary = {})
    {
        Node node;
        node.name = name;
        node.at = at;
        node.boundary = boundary;
        m_network.nodes.push_back(node);
        return m_network.nodes.back();
    }

    Element& element(const std::string& name, int type, const std::string& from, const std::string& to)
    {
        Element element;
        element.name = name;
        element.kind = elementKindOf(type);
        element.from = nodePosition(from);
        element.to = nodePosition(to);
        m_network.elements.push_back(element);
        return m_network.elements.back();
    }

    Element& round(const std::string& name, int type, const std::string& from, const std::string& to,
                   double diameter)
    {
        constexpr double kPi = 3.14159265358979323846;
        Element& made = element(name, type, from, to);
        made.section = Section{diameter, 0.0, kPi * diameter * diameter / 4.0};
        return made;
    }

    Element& pipe(const std::string& name, const std::string& from, const std::string& to, double diameter,
                  double roughness)
    {
        Element& made = round(name, TAVELL_PIPE, from, to, diameter);
        made.setProperty(TAVELL_ELEMENT_ROUGHNESS, roughness);
        return made;
    }

    Element& hazenWilliams(const std::string& name, const std::string& from, const std::string& to,
                           double diameter, double coefficient)
    {
        Element& made = round(name, TAVELL_HAZEN_WILLIAMS_PIPE, from, to, diameter);
        made.setProperty(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, coefficient);
        return made;
    }

    /// dp / rho = ck L^b Q^1.852
    Element& generalLoss(const std::string& name, const std::string& from, const std::string& to,
                         double diameter, double ck, double b)
    {
        Element& made = round(name, TAVELL_GENERAL_LOSS, from, to, diameter);
        made.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_CK, ck);
        made.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_A, 1.0);
        made.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_B, b);
        made.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_C, 0.0);
        made.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_D, 1.852);
        return made;
    }

    Element& controlValve(const std::string& name, const std::string& from, const std::string& to,
                          double diameter, double limit)
    {
        Element& made = round(name, TAVELL_CONTROL_VALVE, from, to, diameter);
        made.setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, limit);
        return made;
    }

    Element& curve(const std::string& name, int type, const std::string& from, const std::string& to,
                   std::vector<CurvePoint> points)
    {
        Element& made = element(name, type, from, to);
        made.curve = std::move(points);
        return made;
    }

    Network& network() { return m_network; }
    const Network& network() const { return m_network; }

    std::size_t positionOf(const std::string& name) const
    {
        std::size_t i = 0;
        while (i < m_network.elements.size() && m_network.elements[i].name != name)
            ++i;
        return i;
    }

    std::size_t nodePosition(const std::string& name) const
    {
        std::size_t i = 0;
        while (i < m_network.nodes.size() && m_network.nodes[i].name != name)
            ++i;
        return i;
    }

    Element& elementNamed(const std::string& name) { return m_network.elements.at(positionOf(name)); }
    Node& nodeNamed(const std::string& name) { return m_network.nodes.at(nodePosition(name)); }
    const Node& nodeNamed(const std::string& name) const { return m_network.nodes.at(nodePosition(name)); }

    /// Between the end nodes of an element [m].
    double distance(const std::string& name) const
    {
        const Element& element = m_network.elements.at(positionOf(name));
        const auto& a = m_network.nodes[element.from].at;
        const auto& b = m_network.nodes[element.to].at;
        return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
    }

private:
    Network m_network;
};

}  // namespace kit

#endif
