// circuit_plan.h: a random circuit as plain data, out of the bytes of an input, and the circuit that it stands for.
#ifndef TAVELL_TESTS_FUZZ_CIRCUIT_PLAN_H
#define TAVELL_TESTS_FUZZ_CIRCUIT_PLAN_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <utility>
#include <vector>

#include "fuzz_input.h"
#include "tavell/TavellFlat.h"

namespace fuzz
{

constexpr double kCurveDensity = 1000.0;  // [kg/m3]

struct NodePlan {
    std::array<double, 3> at{};  // [m]
    int type = TAVELL_NODE_INTERNAL;
    int constraint = TAVELL_CONSTRAINT_PRESSURE;
    double pressure = 1.0;     // [Pa]
    double flow = 0.0;         // [kg/s], [-] or [m/s], by constraint
    double temperature = 0.0;  // [K] of an inlet; 0 for none of its own
};

struct ElementPlan {
    std::size_t start = 0, end = 0;  // positions of nodes
    int type = TAVELL_PIPE;
    double diameter = 0.0, area = 0.0, roughness = 0.0;  // [m], [m2], [m]
    double k = 0.0;                                      // [-] specified
    double coefficient = 0.0;                            // C, bore [m], ck, Kv or Cv
    std::array<double, 4> exponents{};                   // a, b, c, d of a general loss
    double limit = 0.0;                                  // [kg/s] of a control valve
    double fixedFlow = 0.0;                              // [kg/s] of a pump or loss; 0 for none
    int energyType = TAVELL_ENERGY_FLUX;
    double energyValue = 0.0;
    std::vector<double> curveFlows, curvePressures;  // [m3/s], [Pa]
    bool isParabola = false;                         // the curve, which is a straight line else
};

struct CircuitPlan {
    std::vector<NodePlan> nodes;
    std::vector<ElementPlan> elements;
    std::array<double, 3> gravity{0.0, 0.0, -1.0};
    double density = 997.4, viscosity = 9.8e-4;  // [kg/m3], [Pa s]
    double specificHeat = 4179.0, conductivity = 0.604;
    double temperature = 294.26;                                // [K]
    std::array<double, 3> viscosityLaw{2.86e-5, 783.8, 396.8};  // [Pa s], [K], [K]
    bool followsViscosityLaw = false;
    int friction = 0;
    int minorLoss = 0;
    bool hasEnergy = false;
    bool isTame = true;  // all numbers are of sizes that occur
};

/// Makes a plan. Most inputs are tame; the others have numbers of any size in places.
class Planner
{
public:
    explicit Planner(Input& input) : m_input(input) {}

    CircuitPlan plan()
    {
        m_plan.isTame = !m_input.rarely(4);
        const unsigned shape = m_input.byte() % 8;
        m_palette = m_input.byte() % kPalettes.size();
        settings();
        const std::size_t count = 2 + m_input.below(39);
        for (std::size_t i = 0; i < count; ++i)
            addNode();
        joinNodes(shape);
        const std::size_t chords = m_input.below(12);
        for (std::size_t i = 0; i < chords; ++i)
            addElement(m_input.below(count), m_input.below(count));
        addBoundaries(count);
        return std::move(m_plan);
    }

private:
    static constexpr std::size_t kMostElements = 90;
    static constexpr std::array<std::array<int, 8>, 8> kPalettes{{
        {0, 0, 0, 0, 0, 0, 0, 0},
        {0, 0, 0, 3, 3, 3, 0, 3},
        {0, 0, 0, 4, 6, 7, 0, 0},
        {0, 0, 0, 1, 0, 0, 1, 3},
        {0, 0, 0, 8, 9, 8, 9, 0},
        {0, 0, 0, 5, 5, 2, 0, 2},
        {0, 1, 2, 3, 4, 5, 6, 7},
        {0, 9, 8, 1, 4, 5, 3, 6},
    }};

    double value(double lowest, double highest)
    {
        if (!m_plan.isTame) return m_input.between(lowest, highest);
        return lowest * std::pow(highest / lowest, m_input.byte() / 255.0);
    }
    double signedValue(double lowest, double highest)
    {
        const double size = value(lowest, highest);
        return m_input.flag() ? -size : size;
    }

    void settings()
    {
        const unsigned choices = m_input.byte();
        m_plan.hasEnergy = choices % 4 == 3;
        m_plan.followsViscosityLaw = (choices / 4) % 4 == 3;
        const unsigned minor = (choices / 16) % 8;
        m_plan.minorLoss = minor < 4 ? 0 : minor < 6 ? 1 : 2;
        m_plan.friction = static_cast<int>(m_input.below(8));
        const unsigned others = m_input.byte();
        if (others % 8 == 7) m_plan.gravity = {signedValue(0.1, 1.0), signedValue(0.1, 1.0), 0.5};
        if (others / 8 % 8 == 7) m_plan.gravity = {0.0, 0.0, 0.0};
        if (others / 64 != 3) return;
        m_plan.density = value(500.0, 2000.0);
        m_plan.viscosity = value(1e-4, 1.0);
        m_plan.specificHeat = value(1000.0, 5000.0);
        m_plan.conductivity = value(0.05, 1.0);
        m_plan.temperature = value(260.0, 400.0);
        m_plan.viscosityLaw[0] = value(1e-5, 1e-3);
    }

    void addNode()
    {
        NodePlan node;
        for (double& coordinate : node.at)
            coordinate = m_plan.isTame || !m_input.rarely(64) ? m_input.byte() / 2.0 : m_input.number();
        node.at[2] /= 8.0;
        m_plan.nodes.push_back(node);
    }

    void joinNodes(unsigned shape)
    {
        const std::size_t count = m_plan.nodes.size();
        constexpr std::size_t kWidth = 6;
        for (std::size_t i = 1; i < count; ++i) {
            if (shape < 2) {  // a tree
                addElement(m_input.below(i), i);
            } else if (shape == 2) {  // a grid
                if (i % kWidth != 0) addElement(i - 1, i);
                if (i >= kWidth) addElement(i - kWidth, i);
            } else if (shape == 3) {  // a ladder
                addElement(i < 2 ? 0 : i - 2, i);
                if (i % 2 == 1) addElement(i - 1, i);
            } else if (shape == 4) {  // a star
                addElement(0, i);
            } else if (shape == 5) {  // in any way, perhaps in parts
                addElement(m_input.below(count), m_input.below(count));
            } else {  // a line, or a ring
                addElement(i - 1, i);
            }
        }
        if (shape == 7) addElement(count - 1, 0);
    }

    void addElement(std::size_t start, std::size_t end)
    {
        if (start == end || m_plan.elements.size() >= kMostElements) return;
        ElementPlan element;
        const unsigned choice = m_input.byte();
        element.type = kPalettes[m_palette][choice % 8];
        const bool isTurned = choice / 8 % 2 == 1;
        element.start = isTurned ? end : start;
        element.end = isTurned ? start : end;
        if (choice / 16 == 15) element.type = static_cast<int>(m_input.below(12));  // some without a law
        const bool isCurve = element.type == TAVELL_PUMP || element.type == TAVELL_LOSS;
        if (isCurve)
            addCurve(element);
        else
            addSection(element);
        if (m_plan.hasEnergy) addEnergy(element);
        m_plan.elements.push_back(element);
    }

    void addSection(ElementPlan& element)
    {
        const unsigned choice = m_input.byte();
        element.diameter = value(0.01, 0.5);
        element.area = std::acos(-1.0) / 4.0 * element.diameter * element.diameter;
        if (choice % 16 == 15) element.area *= value(0.3, 3.0);
        if (choice / 16 % 2 == 1)
            element.roughness = value(1e-7, 1e-3) * std::min(1.0, element.diameter * 10.0);
        if (choice / 32 % 4 == 3) element.k = value(0.01, 50.0);
        switch (element.type) {
        case TAVELL_HAZEN_WILLIAMS_PIPE:
            element.coefficient = value(60.0, 160.0);
            break;
        case TAVELL_ORIFICE:
            element.coefficient = value(0.2, 0.75) * element.diameter;
            break;
        case TAVELL_GENERAL_LOSS:
            element.coefficient = value(0.005, 0.05);
            element.exponents = {value(0.9, 1.1), value(0.8, 1.2), value(4.5, 5.1), value(1.5, 2.2)};
            break;
        case TAVELL_KV_VALVE:
        case TAVELL_CV_VALVE:
            element.coefficient = value(1.0, 500.0);
            break;
        case TAVELL_CONTROL_VALVE:
            element.limit = m_input.rarely(16) ? 0.0 : signedValue(0.01, 50.0);
            break;
        default:
            break;
        }
    }

    void addCurve(ElementPlan& element)
    {
        const unsigned choice = m_input.byte();
        const double highest = value(1e4, 1e6);  // [Pa]
        const double most = value(1e-4, 0.2);    // [m3/s]
        const std::size_t points = 4 + choice % 3;
        element.isParabola = choice / 4 % 2 == 1;
        for (std::size_t i = 0; i < points; ++i) {
            const double part = static_cast<double>(i) / static_cast<double>(points - 1);
            element.curveFlows.push_back(most * part);
            const double drop = element.isParabola ? part * part : part;
            element.curvePressures.push_back(element.type == TAVELL_PUMP ? highest * (1.0 - drop)
                                                                         : highest * drop);
        }
        if (!m_plan.isTame && m_input.rarely(4))
            element.curvePressures[m_input.below(points)] = m_input.number();
        if (choice / 8 % 8 == 7) element.fixedFlow = signedValue(0.01, 20.0);
        if (choice / 64 != 3) return;
        element.diameter = value(0.02, 0.5);
        element.area = std::acos(-1.0) / 4.0 * element.diameter * element.diameter;
    }

    void addEnergy(ElementPlan& element)
    {
        element.energyType = static_cast<int>(m_input.below(6));
        constexpr std::array<double, 6> kSizes{1.0, 300.0, 1000.0, 5.0, 1000.0, 1000.0};
        const double size = kSizes[static_cast<std::size_t>(element.energyType)];
        element.energyValue = m_input.flag() ? 0.0 : signedValue(size, size * 1.3);
        if (element.energyType == TAVELL_ENERGY_WALL_TEMPERATURE) element.energyValue = value(260.0, 370.0);
    }

    /// A pressure at the first node, mostly one at the last, any condition at a few others.
    void addBoundaries(std::size_t count)
    {
        setBoundary(m_plan.nodes[0], TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE);
        const unsigned choice = m_input.byte();
        setBoundary(m_plan.nodes[count - 1], TAVELL_NODE_OUTLET,
                    choice % 4 == 3 ? static_cast<int>(m_input.below(5)) : TAVELL_CONSTRAINT_PRESSURE);
        for (unsigned i = 0; i < choice / 4 % 8; ++i) {
            NodePlan& node = m_plan.nodes[m_input.below(count)];
            const unsigned kind = m_input.byte();
            setBoundary(node, kind % 2 == 1 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET,
                        static_cast<int>(kind / 2 % 5));
        }
    }

    void setBoundary(NodePlan& node, int type, int constraint)
    {
        node.type = type;
        node.constraint = constraint;
        node.pressure = value(5e4, 2e6);
        if (constraint == TAVELL_CONSTRAINT_REYNOLDS)
            node.flow = signedValue(10.0, 1e6);
        else if (constraint != TAVELL_CONSTRAINT_PRESSURE)
            node.flow = signedValue(0.01, 10.0);
        if (type == TAVELL_NODE_INLET && m_plan.hasEnergy) node.temperature = value(280.0, 360.0);
    }

    Input& m_input;
    CircuitPlan m_plan;
    std::size_t m_palette = 0;
};

/// Sets what an element has beside what it was made with.
inline void setElement(vcIElement* handle, const ElementPlan& plan)
{
    vcIEntity* const entity = vcIElementGetEntity(handle);
    const auto set = [entity](int id, double value) { vcIEntitySetProperty(entity, id, value); };
    vcIElementSetType(handle, plan.type);
    set(TAVELL_ELEMENT_ROUGHNESS, plan.roughness);
    set(TAVELL_ELEMENT_DIAMETER, plan.diameter);
    set(TAVELL_ELEMENT_AREA, plan.area);
    switch (plan.type) {
    case TAVELL_PUMP:
    case TAVELL_LOSS:
        if (plan.fixedFlow != 0.0) set(TAVELL_ELEMENT_FIXED_MASS_FLOW, plan.fixedFlow);
        break;
    case TAVELL_HAZEN_WILLIAMS_PIPE:
        set(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, plan.coefficient);
        break;
    case TAVELL_ORIFICE:
        set(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, plan.coefficient);
        break;
    case TAVELL_GENERAL_LOSS:
        set(TAVELL_ELEMENT_GENERAL_LOSS_CK, plan.coefficient);
        for (int i = 0; i < 4; ++i)
            set(TAVELL_ELEMENT_GENERAL_LOSS_A + i, plan.exponents[static_cast<std::size_t>(i)]);
        break;
    case TAVELL_KV_VALVE:
        set(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, plan.coefficient);
        break;
    case TAVELL_CV_VALVE:
        set(TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, plan.coefficient);
        break;
    case TAVELL_CONTROL_VALVE:
        set(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, plan.limit);
        break;
    default:
        break;
    }
}

/// A circuit of its own. Elements that the circuit refuses, those between nodes at one place, leave the plan.
class BuiltCircuit
{
public:
    explicit BuiltCircuit(CircuitPlan& plan)
        : m_system(vcCreateTavell()), m_circuit(vcITavellCreateCircuit(m_system))
    {
        vcICircuitSetCheckDuplicateElementAtNodes(m_circuit, 0);
        setCircuit(plan);
        for (const NodePlan& node : plan.nodes)
            addNode(node);
        const auto isRefused = [this](const ElementPlan& element) { return !addElement(element); };
        // in order, each once: the elements that stay are those of the circuit
        std::vector<ElementPlan> kept;
        for (const ElementPlan& element : plan.elements)
            if (!isRefused(element)) kept.push_back(element);
        plan.elements = std::move(kept);
    }
    ~BuiltCircuit() { vcITavellRelease(m_system); }
    BuiltCircuit(const BuiltCircuit&) = delete;
    BuiltCircuit& operator=(const BuiltCircuit&) = delete;

    vcICircuit* circuit() const { return m_circuit; }

private:
    void setCircuit(const CircuitPlan& plan)
    {
        vcICircuitSetGravity(m_circuit, plan.gravity[0], plan.gravity[1], plan.gravity[2]);
        vcIEntity* const circuit = vcICircuitGetEntity(m_circuit);
        vcIEntitySetProperty(circuit, TAVELL_CIRCUIT_MINOR_LOSS, plan.minorLoss);
        vcIEntitySetProperty(circuit, TAVELL_CIRCUIT_FRICTION_FACTOR, plan.friction);
        vcIEntitySetProperty(circuit, TAVELL_CIRCUIT_CALCULATE_VISCOSITY,
                             plan.followsViscosityLaw ? 1.0 : 0.0);
        vcIEntity* const fluid = vcIFluidGetEntity(vcICircuitGetFluid(m_circuit));
        for (const auto& [id, value] : {std::pair(+TAVELL_FLUID_DEFAULT_TEMPERATURE, plan.temperature),
                                        {TAVELL_FLUID_DENSITY, plan.density},
                                        {TAVELL_FLUID_SPECIFIC_HEAT, plan.specificHeat},
                                        {TAVELL_FLUID_CONDUCTIVITY, plan.conductivity},
                                        {TAVELL_FLUID_VISCOSITY, plan.viscosity},
                                        {TAVELL_FLUID_VISCOSITY_COEFFICIENT_1, plan.viscosityLaw[0]},
                                        {TAVELL_FLUID_VISCOSITY_COEFFICIENT_2, plan.viscosityLaw[1]},
                                        {TAVELL_FLUID_VISCOSITY_COEFFICIENT_3, plan.viscosityLaw[2]}})
            vcIEntitySetProperty(fluid, id, value);
    }

    void addNode(const NodePlan& plan)
    {
        vcINode* const node = vcICircuitCreateNode(m_circuit);
        vcINodeSetLocation(node, plan.at[0], plan.at[1], plan.at[2]);
        vcINodeSetType(node, plan.type);
        if (plan.type == TAVELL_NODE_INTERNAL) return;
        const bool isPressure = plan.constraint == TAVELL_CONSTRAINT_PRESSURE;
        vcINodeSetConstraint(node, plan.constraint, isPressure ? plan.pressure : plan.flow);
        vcIEntity* const entity = vcINodeGetEntity(node);
        if (plan.constraint == TAVELL_CONSTRAINT_PRESSURE_AND_FLOW) {
            vcIEntitySetProperty(entity, TAVELL_NODE_PRESSURE, plan.pressure);
            vcIEntitySetProperty(entity, TAVELL_NODE_MASS_FLOW_RATE, plan.flow);
        }
        if (plan.temperature != 0.0)
            vcIEntitySetProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE, plan.temperature);
    }

    bool addElement(const ElementPlan& plan)
    {
        vcINode* const start = vcICircuitGetNode(m_circuit, static_cast<int>(plan.start));
        vcINode* const end = vcICircuitGetNode(m_circuit, static_cast<int>(plan.end));
        vcIElement* element = nullptr;
        if (plan.curveFlows.empty()) {
            element = vcICircuitCreateElement(m_circuit, start, end, plan.diameter, plan.area, plan.k,
                                              plan.energyType, plan.energyValue);
        } else {
            const auto create = plan.type == TAVELL_PUMP ? vcICircuitCreatePump : vcICircuitCreateLoss;
            element = create(m_circuit, start, end, plan.curveFlows.data(), plan.curvePressures.data(),
                             static_cast<int>(plan.curveFlows.size()), kCurveDensity, plan.energyType,
                             plan.energyValue);
        }
        if (element == nullptr) return false;
        setElement(element, plan);
        return true;
    }

    vcITavell* m_system;
    vcICircuit* m_circuit;
};

inline void print(const CircuitPlan& plan)
{
    std::fprintf(stderr,
                 "%s, density %s, viscosity %s%s, gravity %s %s %s, friction %d, minor loss %d, energy %d\n",
                 plan.isTame ? "tame" : "wild", shown(plan.density).c_str(), shown(plan.viscosity).c_str(),
                 plan.followsViscosityLaw ? " by law" : "", shown(plan.gravity[0]).c_str(),
                 shown(plan.gravity[1]).c_str(), shown(plan.gravity[2]).c_str(), plan.friction,
                 plan.minorLoss, plan.hasEnergy ? 1 : 0);
    std::size_t position = 0;
    for (const NodePlan& node : plan.nodes)
        std::fprintf(stderr,
                     "node %zu at %s %s %s type %d constraint %d pressure %s flow %s temperature %s\n",
                     position++, shown(node.at[0]).c_str(), shown(node.at[1]).c_str(),
                     shown(node.at[2]).c_str(), node.type, node.constraint, shown(node.pressure).c_str(),
                     shown(node.flow).c_str(), shown(node.temperature).c_str());
    position = 0;
    for (const ElementPlan& element : plan.elements) {
        std::fprintf(
            stderr,
            "element %zu type %d from %zu to %zu D %s A %s eps %s K %s coefficient %s limit %s fixed %s "
            "energy %d %s",
            position++, element.type, element.start, element.end, shown(element.diameter).c_str(),
            shown(element.area).c_str(), shown(element.roughness).c_str(), shown(element.k).c_str(),
            shown(element.coefficient).c_str(), shown(element.limit).c_str(),
            shown(element.fixedFlow).c_str(), element.energyType, shown(element.energyValue).c_str());
        for (std::size_t i = 0; i < element.curveFlows.size(); ++i)
            std::fprintf(stderr, " (%s, %s)", shown(element.curveFlows[i]).c_str(),
                         shown(element.curvePressures[i]).c_str());
        std::fprintf(stderr, "\n");
    }
}

}  // namespace fuzz

#endif
