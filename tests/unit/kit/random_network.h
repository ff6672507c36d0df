// random_network.h: random networks that use every part of the network file, and the comparison of two
// networks.
#ifndef TAVELL_TESTS_RANDOM_NETWORK_H
#define TAVELL_TESTS_RANDOM_NETWORK_H

#include <random>
#include <string>

#include <gtest/gtest.h>
#include <tavell/Constants.h>

#include "catalogue.h"
#include "element_kinds.h"
#include "network.h"
#include "network_keys.h"

namespace kit_tests
{

/// Makes one network from a seed. Without extras it holds only what the pair of CSV tables can hold.
class RandomNetwork
{
public:
    explicit RandomNetwork(unsigned seed, bool hasExtras = true) : m_random(seed), m_hasExtras(hasExtras) {}

    kit::Network make()
    {
        m_network.coordinates = chance(0.5) ? kit::Coordinates::schematic : kit::Coordinates::geometry;
        if (m_hasExtras) addExtras();
        const std::size_t count = 4 + m_random() % 12;
        for (std::size_t i = 0; i < count; ++i)
            addNode(i, count);
        for (std::size_t i = 0; i + 1 < count; ++i)
            addElement(i, i + 1);
        addElement(0, count - 1);
        addElement(0, count - 2);
        if (m_hasExtras) addScenario();
        return m_network;
    }

private:
    bool chance(double probability) { return std::bernoulli_distribution(probability)(m_random); }

    /// A number with all its digits.
    double number(double from, double to)
    {
        return std::uniform_real_distribution<double>(from, to)(m_random);
    }

    std::string word(const char* what, std::size_t i)
    {
        static const char* const kOdd[] = {
            "", " \"quoted\"", ", comma; semicolon", " \xc3\xa9/~", " long name of a part", " "};
        return std::string(what) + ' ' + std::to_string(i) + kOdd[m_random() % 6];
    }

    std::vector<kit::CurvePoint> points()
    {
        std::vector<kit::CurvePoint> list;
        double flow = number(-0.01, 0.0);
        for (std::size_t i = 4 + m_random() % 4; i > 0; --i) {
            list.push_back({flow, number(0.0, 4e5)});
            flow += number(1e-4, 1e-2);
        }
        return list;
    }

    void addExtras()
    {
        m_network.title = "A title with \"quotes\" and \\";
        m_network.source = "Nowhere";
        m_network.gravity = {number(-1, 1), 0.0, number(-1, 0)};
        m_network.fluid.name = "water";
        if (chance(0.5)) m_network.fluid.temperature = number(280, 360);
        if (chance(0.5)) {
            m_network.fluid.name = "a brine";
            m_network.fluid.concentration = number(0, 1);
            for (const kit::FluidKey& key : kit::fluidKeys())
                m_network.fluid.properties.emplace_back(key.property, number(1e-4, 2000));
        }
        m_network.settings.minorLoss = static_cast<int>(m_random() % 3);
        m_network.settings.frictionMethod = chance(0.5) ? int{TAVELL_FRICTION_HAALAND} : 0;
        m_network.settings.solvesTemperatures = chance(0.5);
        m_network.settings.viscosityFollowsTemperature = chance(0.5);
        m_network.settings.pressureDatum = chance(0.5) ? 1e5 : 0.0;
        if (chance(0.5)) m_network.settings.velocityLimit = 3.0;
        m_network.resultUnits = {{"pressure", "bar"}, {"volume_flow", "l/min"}};
        m_network.materials["old iron"] = {number(1e-4, 1e-3), number(60, 140), "measured"};
        m_network.fittings["strainer"] = {number(0, 5), ""};
        m_network.curves["type A"] = {points(), number(900, 1100), "maker's sheet"};
        m_network.curves["type B"] = {points(), std::nullopt, ""};
    }

    void addNode(std::size_t i, std::size_t count)
    {
        kit::Node node;
        node.name = word("node", i);
        node.at = {number(-10, 10) + 100.0 * static_cast<double>(i), number(-1e3, 1e3), number(0, 50)};
        if (i == 0) node.boundary = kit::Boundary{true, number(1e5, 1e6), kit::Boundary::Flow::none, 0.0, {}};
        if (i + 1 == count)
            node.boundary =
                kit::Boundary{false, {}, kit::Boundary::Flow::mass, number(-1, 1), number(280, 360)};
        if (i == 1) node.boundary = kit::Boundary{true, {}, kit::Boundary::Flow::volume, number(0, 1), {}};
        if (i == 2) node.boundary = kit::Boundary{false, 1e5, kit::Boundary::Flow::mass, number(0, 1), {}};
        if (chance(0.2)) node.description = "where it is";
        m_network.nodes.push_back(node);
    }

    void addElement(std::size_t from, std::size_t to)
    {
        const auto& kinds = kit::elementKinds();
        kit::Element element;
        element.kind = &kinds[m_random() % kinds.size()];
        element.name = word(element.kind->name, m_network.elements.size());
        element.from = from;
        element.to = to;
        element.length = number(3e3, 5e4);
        const kit::ElementKind& kind = *element.kind;
        if (kind.hasCurve)
            addCurve(element);
        else
            addSection(element);
        for (const kit::NumberKey& key : kind.numbers)
            addNumber(element, key);
        if (kind.material != kit::MaterialUse::none && chance(0.5))
            element.material = m_hasExtras && chance(0.5) ? "old iron" : "steel";
        if (kind.takesFittings && chance(0.5)) {
            element.fittings.push_back({"gate valve", 1});
            element.fittings.push_back({m_hasExtras ? "strainer" : "exit", 3});
        }
        if (chance(0.3)) element.heat = kit::Heat{TAVELL_ENERGY_RISE, number(-5, 5)};
        if (chance(0.3) && !kind.hasCurve) element.heat = kit::Heat{TAVELL_ENERGY_FLUX, number(-5, 5)};
        element.isClosed = chance(0.2);
        element.hasCheckValve = kind.canHaveCheckValve && chance(0.3);
        if (chance(0.3)) element.vertices = {{number(0, 1), 2.0, 0.0}, {number(0, 1), 1e-7, -3.0}};
        if (chance(0.2)) element.description = "to the left";
        m_network.elements.push_back(element);
    }

    void addCurve(kit::Element& element)
    {
        if (m_hasExtras && chance(0.5))
            element.curveName = "type A";
        else
            element.curve = points();
        if (chance(0.5)) element.referenceDensity = number(900, 1100);
    }

    void addSection(kit::Element& element)
    {
        if (chance(0.3)) {
            element.section = kit::Section{0.0, 0.4, number(0.005, 0.01)};
            return;
        }
        const double diameter = number(0.05, 0.5);
        const double area = 3.14159265358979323846 * diameter * diameter / 4.0;
        element.section = kit::Section{diameter, 0.0, chance(0.8) ? area : area * 0.9};
    }

    void addNumber(kit::Element& element, const kit::NumberKey& key)
    {
        const bool isCoefficient = key.property == TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT;
        if (key.need == kit::Need::optional && !isCoefficient && chance(0.5)) return;
        const bool isBelowDiameter =
            key.property == TAVELL_ELEMENT_ROUGHNESS || key.property == TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER;
        element.properties.emplace_back(key.property,
                                        isBelowDiameter ? number(1e-6, 1e-2) : number(0.1, 100));
    }

    void addScenario()
    {
        nlohmann::json patch = {
            {"nodes", {{m_network.nodes.back().name, {{"outlet", {{"mass_flow", 0.125}}}}}}},
            {"elements",
             {{m_network.elements.front().name, {{"description", "changed"}, {"heat", nullptr}}}}},
            {"gravity", {0.0, 0.0, -0.5}}};
        if (!m_network.elements.front().heat)
            patch["elements"][m_network.elements.front().name].erase("heat");
        m_network.scenarios["night"] = patch.dump();
    }

    std::mt19937 m_random;
    bool m_hasExtras;
    kit::Network m_network;
};

inline void expectSame(const kit::Boundary& a, const kit::Boundary& b)
{
    EXPECT_EQ(a.isInlet, b.isInlet);
    EXPECT_EQ(a.pressure, b.pressure);
    EXPECT_EQ(a.flowKind, b.flowKind);
    EXPECT_EQ(a.flow, b.flow);
    EXPECT_EQ(a.temperature, b.temperature);
}

inline void expectSame(const std::vector<kit::CurvePoint>& a, const std::vector<kit::CurvePoint>& b)
{
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].volumeFlow, b[i].volumeFlow);
        EXPECT_EQ(a[i].pressure, b[i].pressure);
    }
}

inline void expectSame(const kit::Node& a, const kit::Node& b)
{
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.at, b.at);
    EXPECT_EQ(a.description, b.description);
    ASSERT_EQ(a.boundary.has_value(), b.boundary.has_value());
    if (a.boundary) expectSame(*a.boundary, *b.boundary);
}

inline void expectSame(const kit::Element& a, const kit::Element& b)
{
    EXPECT_EQ(a.name, b.name);
    EXPECT_EQ(a.kind, b.kind);
    EXPECT_EQ(a.from, b.from);
    EXPECT_EQ(a.to, b.to);
    ASSERT_EQ(a.section.has_value(), b.section.has_value());
    if (a.section) {
        EXPECT_EQ(a.section->diameter, b.section->diameter);
        EXPECT_EQ(a.section->wettedPerimeter, b.section->wettedPerimeter);
        EXPECT_EQ(a.section->area, b.section->area);
    }
    EXPECT_EQ(a.length, b.length);
    EXPECT_EQ(a.material, b.material);
    ASSERT_EQ(a.fittings.size(), b.fittings.size());
    for (std::size_t i = 0; i < a.fittings.size(); ++i) {
        EXPECT_EQ(a.fittings[i].name, b.fittings[i].name);
        EXPECT_EQ(a.fittings[i].count, b.fittings[i].count);
    }
    EXPECT_EQ(a.curveName, b.curveName);
    expectSame(a.curve, b.curve);
    EXPECT_EQ(a.referenceDensity, b.referenceDensity);
    EXPECT_EQ(a.properties, b.properties);
    ASSERT_EQ(a.heat.has_value(), b.heat.has_value());
    if (a.heat) {
        EXPECT_EQ(a.heat->type, b.heat->type);
        EXPECT_EQ(a.heat->value, b.heat->value);
    }
    EXPECT_EQ(a.isClosed, b.isClosed);
    EXPECT_EQ(a.hasCheckValve, b.hasCheckValve);
    EXPECT_EQ(a.vertices, b.vertices);
    EXPECT_EQ(a.description, b.description);
}

inline void expectSameParts(const kit::Network& a, const kit::Network& b)
{
    EXPECT_EQ(a.coordinates, b.coordinates);
    ASSERT_EQ(a.nodes.size(), b.nodes.size());
    ASSERT_EQ(a.elements.size(), b.elements.size());
    for (std::size_t i = 0; i < a.nodes.size(); ++i)
        expectSame(a.nodes[i], b.nodes[i]);
    for (std::size_t i = 0; i < a.elements.size(); ++i)
        expectSame(a.elements[i], b.elements[i]);
}

inline void expectSame(const kit::Settings& a, const kit::Settings& b)
{
    EXPECT_EQ(a.minorLoss, b.minorLoss);
    EXPECT_EQ(a.frictionMethod, b.frictionMethod);
    EXPECT_EQ(a.solvesTemperatures, b.solvesTemperatures);
    EXPECT_EQ(a.viscosityFollowsTemperature, b.viscosityFollowsTemperature);
    EXPECT_EQ(a.pressureDatum, b.pressureDatum);
    EXPECT_EQ(a.velocityLimit, b.velocityLimit);
}

inline void expectSame(const kit::Network& a, const kit::Network& b)
{
    expectSameParts(a, b);
    EXPECT_EQ(a.title, b.title);
    EXPECT_EQ(a.source, b.source);
    EXPECT_EQ(a.fluid.name, b.fluid.name);
    EXPECT_EQ(a.fluid.temperature, b.fluid.temperature);
    EXPECT_EQ(a.fluid.concentration, b.fluid.concentration);
    EXPECT_EQ(a.fluid.properties, b.fluid.properties);
    EXPECT_EQ(a.gravity, b.gravity);
    expectSame(a.settings, b.settings);
    EXPECT_EQ(a.resultUnits, b.resultUnits);
    EXPECT_EQ(a.scenarios, b.scenarios);
    ASSERT_EQ(a.materials.size(), b.materials.size());
    for (const auto& [name, material] : a.materials) {
        EXPECT_EQ(material.roughness, b.materials.at(name).roughness);
        EXPECT_EQ(material.hazenWilliams, b.materials.at(name).hazenWilliams);
        EXPECT_EQ(material.source, b.materials.at(name).source);
    }
    ASSERT_EQ(a.fittings.size(), b.fittings.size());
    for (const auto& [name, fitting] : a.fittings) {
        EXPECT_EQ(fitting.k, b.fittings.at(name).k);
        EXPECT_EQ(fitting.source, b.fittings.at(name).source);
    }
    ASSERT_EQ(a.curves.size(), b.curves.size());
    for (const auto& [name, curve] : a.curves) {
        expectSame(curve.points, b.curves.at(name).points);
        EXPECT_EQ(curve.referenceDensity, b.curves.at(name).referenceDensity);
        EXPECT_EQ(curve.source, b.curves.at(name).source);
    }
    ASSERT_EQ(a.answer.has_value(), b.answer.has_value());
    if (!a.answer) return;
    EXPECT_EQ(a.answer->text, b.answer->text);
    EXPECT_EQ(a.answer->tolerance, b.answer->tolerance);
    EXPECT_EQ(a.answer->nodes.size(), b.answer->nodes.size());
    EXPECT_EQ(a.answer->elements.size(), b.answer->elements.size());
}

}  // namespace kit_tests

#endif
