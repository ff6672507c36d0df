#include "networks.h"

#include <cmath>
#include <limits>
#include <sstream>

namespace support
{

using namespace Velcor::Tavell;

namespace
{

constexpr double kPi = 3.14159265358979323846;

double areaOf(const ElementData& element)
{
    return element.area > 0.0 ? element.area : kPi * element.diameter * element.diameter / 4.0;
}

double propertyOf(const ElementData& element, int id, double fallback = 0.0)
{
    for (const auto& property : element.properties)
        if (static_cast<int>(property[0]) == id) return property[1];
    return fallback;
}

double heightOf(const Description& description, const NodeData& node)
{
    return -(node.at[0] * description.gravity[0] + node.at[1] * description.gravity[1] +
             node.at[2] * description.gravity[2]);
}

/// Swamee and Jain, laminar 64/Re, straight line between.
double darcyFriction(double Re, double relRough)
{
    const auto turbulent = [&](double R) {
        const double x = std::log10(relRough / 3.7 + 5.74 / std::pow(R, 0.9));
        return 0.25 / (x * x);
    };
    if (Re <= 0.0) return 64.0;
    if (Re <= 2300.0) return std::min(64.0, 64.0 / Re);
    if (Re >= 5000.0) return turbulent(Re);
    const double laminar = 64.0 / 2300.0;
    return laminar + (turbulent(5000.0) - laminar) * (Re - 2300.0) / 2700.0;
}

double darcyLoss(const Description& d, const ElementData& element, double Q)
{
    const double A = areaOf(element);
    const double V = Q / A;
    const double Re = std::fabs(V) * d.density * element.diameter / d.viscosity;
    const double f = darcyFriction(Re, propertyOf(element, TAVELL_ELEMENT_ROUGHNESS) / element.diameter);
    const double K = propertyOf(element, TAVELL_ELEMENT_K_SPECIFIED);
    return (f * lengthOf(d, element) / element.diameter + K) * d.density * V * std::fabs(V) / 2.0;
}

double hazenWilliamsLoss(const Description& d, const ElementData& element, double Q)
{
    const double C = propertyOf(element, TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT);
    const double head = 10.67 * lengthOf(d, element) * std::pow(std::fabs(Q), 1.85) /
                        (std::pow(C, 1.85) * std::pow(element.diameter, 4.87));
    return std::copysign(d.density * 9.806 * head, Q);
}

double generalLoss(const Description& d, const ElementData& element, double Q)
{
    const double head = std::pow(d.density, propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_A) - 1.0) *
                        propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_CK) *
                        std::pow(lengthOf(d, element), propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_B)) /
                        std::pow(element.diameter, propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_C)) *
                        std::pow(std::fabs(Q), propertyOf(element, TAVELL_ELEMENT_GENERAL_LOSS_D));
    return std::copysign(d.density * head, Q);
}

/// Kv in m3/h at 1 bar with water of 998.97 kg/m3: dp [bar] = (Q/Kv)^2 rho/998.97.
double valveLoss(const Description& d, double Kv, double Q)
{
    const double ratio = Q * 3600.0 / Kv;
    return std::copysign(1e5 * d.density / 998.97 * ratio * ratio, Q);
}

/// ISO 5167-2 with corner tappings and D above 71.12 mm, or below it with the small-pipe term in metres.
double orificeLoss(const Description& d, const ElementData& element, double Q)
{
    const double D = element.diameter;
    const double beta = propertyOf(element, TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER) / D;
    const double Re = std::fabs(Q) / areaOf(element) * d.density * D / d.viscosity;
    if (Re <= 0.0) return 0.0;
    const double b4 = std::pow(beta, 4);
    const double A = std::pow(19000.0 * beta / Re, 0.8);
    double C = 0.5961 + 0.0261 * beta * beta - 0.216 * b4 * b4 + 0.000521 * std::pow(1e6 * beta / Re, 0.7) +
               (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / Re, 0.3) +
               (0.043 + 0.080 - 0.123) * (1.0 - 0.11 * A) * b4 / (1.0 - b4);
    if (D < 0.0712) C += 0.011 * (0.75 - beta) * (2.8 - D / 25.4);
    const double flowPerRoot = C / std::sqrt(1.0 - b4) * kPi * beta * beta * D * D / 4.0;
    return std::copysign(d.density / 2.0 * Q * Q / (flowPerRoot * flowPerRoot), Q);
}

/// Neville's scheme through the first four points: exact for points on a cubic.
double interpolate(const std::vector<double>& x, const std::vector<double>& y, double at)
{
    std::vector<double> p(y.begin(), y.begin() + 4);
    for (std::size_t k = 1; k < 4; ++k)
        for (std::size_t i = 0; i + k < 4; ++i)
            p[i] = ((at - x[i + k]) * p[i] + (x[i] - at) * p[i + 1]) / (x[i] - x[i + k]);
    return p[0];
}

}  // namespace

double lengthOf(const Description& description, const ElementData& element)
{
    const auto& a = description.nodes[static_cast<std::size_t>(element.start)].at;
    const auto& b = description.nodes[static_cast<std::size_t>(element.end)].at;
    return std::max(1e-6, std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]));
}

double lossOf(const Description& d, const ElementData& element, double m)
{
    const double Q = m / d.density;
    switch (element.type) {
    case TAVELL_PUMP:
        return -interpolate(element.curveFlows, element.curvePressures, Q);
    case TAVELL_LOSS:
        return element.curvePressures.back() / element.curveFlows.back() * Q;
    case TAVELL_ORIFICE:
        return orificeLoss(d, element, Q);
    case TAVELL_HAZEN_WILLIAMS_PIPE:
        return hazenWilliamsLoss(d, element, Q);
    case TAVELL_GENERAL_LOSS:
        return generalLoss(d, element, Q);
    case TAVELL_KV_VALVE:
        return valveLoss(d, propertyOf(element, TAVELL_ELEMENT_VALVE_KV_COEFFICIENT), Q);
    case TAVELL_CV_VALVE:
        return valveLoss(d, 0.865 * propertyOf(element, TAVELL_ELEMENT_VALVE_CV_COEFFICIENT), Q);
    default:
        return darcyLoss(d, element, Q);
    }
}

Built::Built(const Description& description)
    : m_system(CreateTavell(false)), m_circuit(m_system->CreateCircuit())
{
    m_circuit->SetCheckDuplicateElementAtNodes(false);
    m_circuit->SetGravity(description.gravity[0], description.gravity[1], description.gravity[2]);
    m_circuit->GetEntity()->SetProperty(TAVELL_CIRCUIT_FRICTION_FACTOR, description.friction);
    m_circuit->GetEntity()->SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, description.minorLoss);
    m_circuit->GetFluid()->GetEntity()->SetProperty(TAVELL_FLUID_DENSITY, description.density);
    m_circuit->GetFluid()->GetEntity()->SetProperty(TAVELL_FLUID_VISCOSITY, description.viscosity);
    for (const NodeData& data : description.nodes) {
        INode* node = m_circuit->CreateNode();
        node->SetLocation(data.at[0], data.at[1], data.at[2]);
        node->SetType(data.type);
        node->SetConstraint(data.constraint, data.value);
    }
    for (const ElementData& data : description.elements) {
        INode* start = node(data.start);
        INode* end = node(data.end);
        IElement* element = nullptr;
        if (data.type == TAVELL_PUMP || data.type == TAVELL_LOSS) {
            const auto create = data.type == TAVELL_PUMP ? &ICircuit::CreatePump : &ICircuit::CreateLoss;
            element = (m_circuit->*create)(start, end, data.curveFlows.data(), data.curvePressures.data(),
                                           static_cast<int>(data.curveFlows.size()), description.density,
                                           TAVELL_ENERGY_FLUX, 0.0);
        } else {
            element = m_circuit->CreateElement(start, end, data.diameter, areaOf(data), 0.0,
                                               TAVELL_ENERGY_FLUX, 0.0);
            if (element != nullptr) element->SetType(data.type);
        }
        if (element == nullptr) throw std::logic_error("the circuit refused an element of a test network");
        for (const auto& property : data.properties)
            element->GetEntity()->SetProperty(static_cast<int>(property[0]), property[1]);
    }
}

std::vector<double> Built::results(int key) const
{
    IResultsSet* set = m_circuit->GetResults(key);
    if (set == nullptr || set->GetSize() == 0) return {};
    return std::vector<double>(set->GetValues(), set->GetValues() + set->GetSize());
}

std::string Built::feedback() const
{
    std::ostringstream text;
    IFeedbackCollection* all = m_circuit->GetFeedback();
    for (std::size_t i = 0; i < all->GetSize(); ++i) {
        IFeedback* item = all->GetFeedback(i);
        text << item->GetId() << "(";
        for (std::size_t v = 0; v < item->GetValueSize(); ++v)
            text << (v ? ", " : "") << item->GetValues()[v];
        text << ") ";
    }
    return text.str();
}

std::vector<int> Built::feedbackIds() const
{
    std::vector<int> ids;
    IFeedbackCollection* all = m_circuit->GetFeedback();
    for (std::size_t i = 0; i < all->GetSize(); ++i)
        ids.push_back(all->GetFeedback(i)->GetId());
    return ids;
}

LawCheck checkLaws(const Description& d, const Built& built)
{
    LawCheck check;
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
    if (flow.size() != d.elements.size() || pressure.size() != d.nodes.size()) {
        check.mass = check.pressure = std::numeric_limits<double>::infinity();
        check.worst = "no results: " + built.feedback();
        return check;
    }

    std::vector<double> inflow(d.nodes.size(), 0.0);
    std::vector<int> ends(d.nodes.size(), 0);
    double total = 0.0;
    double lowest = std::numeric_limits<double>::infinity();
    for (const NodeData& node : d.nodes)
        lowest = std::min(lowest, heightOf(d, node));
    // total pressure, counted from the lowest node as the measure of convergence does
    const auto piezometric = [&](int node) {
        const auto n = static_cast<std::size_t>(node);
        return pressure[n] + d.density * 9.80665 * (heightOf(d, d.nodes[n]) - lowest);
    };
    double largestMiss = 0.0;
    for (std::size_t e = 0; e < d.elements.size(); ++e) {
        const ElementData& element = d.elements[e];
        inflow[static_cast<std::size_t>(element.start)] -= flow[e];
        inflow[static_cast<std::size_t>(element.end)] += flow[e];
        ++ends[static_cast<std::size_t>(element.start)];
        ++ends[static_cast<std::size_t>(element.end)];
        total += std::fabs(flow[e]);

        const double drop = piezometric(element.start) - piezometric(element.end);
        // a loss curve at rest shows its last point's pressure at a dead end, whatever its chord says
        if (element.type == TAVELL_LOSS && flow[e] == 0.0) continue;
        const double mean = (piezometric(element.start) + piezometric(element.end)) / 2.0;
        const double miss = std::fabs((drop - lossOf(d, element, flow[e])) / mean);
        check.pressure += miss;
        if (!(miss <= largestMiss)) {
            largestMiss = miss;
            check.worst = "element " + std::to_string(e) + " type " + std::to_string(element.type) +
                          " flow " + std::to_string(flow[e]) + " drop " + std::to_string(drop) + " law " +
                          std::to_string(lossOf(d, element, flow[e]));
        }
    }
    const double average = total / static_cast<double>(d.elements.size());
    for (std::size_t n = 0; n < d.nodes.size(); ++n) {
        if (ends[n] < 2 || d.nodes[n].type != TAVELL_NODE_INTERNAL) continue;
        const double error = average > 0.0 ? std::fabs(inflow[n]) / average : std::fabs(inflow[n]);
        if (!(error <= check.mass)) check.mass = error;
    }
    return check;
}

namespace
{

ElementData randomElement(std::mt19937& random, int start, int end, int type)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    ElementData element;
    element.start = start;
    element.end = end;
    element.type = type;
    element.diameter = 0.05 + 0.25 * unit(random);
    const auto set = [&](int id, double value) {
        element.properties.push_back({static_cast<double>(id), value});
    };
    set(TAVELL_ELEMENT_ROUGHNESS, 1e-5 + 4e-4 * unit(random));
    switch (type) {
    case TAVELL_HAZEN_WILLIAMS_PIPE:
        set(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 80.0 + 70.0 * unit(random));
        break;
    case TAVELL_GENERAL_LOSS:
        set(TAVELL_ELEMENT_GENERAL_LOSS_CK, 0.01 + 0.02 * unit(random));
        set(TAVELL_ELEMENT_GENERAL_LOSS_A, 0.95 + 0.1 * unit(random));
        set(TAVELL_ELEMENT_GENERAL_LOSS_B, 0.8 + 0.4 * unit(random));
        set(TAVELL_ELEMENT_GENERAL_LOSS_C, 4.8 + 0.2 * unit(random));
        set(TAVELL_ELEMENT_GENERAL_LOSS_D, 1.75 + 0.25 * unit(random));
        break;
    case TAVELL_ORIFICE:
        set(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, (0.3 + 0.4 * unit(random)) * element.diameter);
        break;
    case TAVELL_LOSS: {
        const double resistance = 1e5 + 2e6 * unit(random);  // [Pa s/m3]
        for (int i = 1; i <= 4; ++i) {
            element.curveFlows.push_back(0.01 * i);
            element.curvePressures.push_back(0.01 * i * resistance);
        }
        break;
    }
    case TAVELL_KV_VALVE:
        set(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 50.0 + 200.0 * unit(random));
        break;
    case TAVELL_CV_VALVE:
        set(TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, 60.0 + 200.0 * unit(random));
        break;
    case TAVELL_PIPE:
        if (unit(random) < 0.3) set(TAVELL_ELEMENT_K_SPECIFIED, 5.0 * unit(random));
        break;
    default:
        break;
    }
    return element;
}

}  // namespace

Description randomNetwork(std::mt19937& random, int count, int extra, const std::vector<int>& types)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    const auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const auto pickType = [&] {
        return types[static_cast<std::size_t>(pick(static_cast<int>(types.size())))];
    };

    Description d;
    for (int i = 0; i < count; ++i) {
        NodeData node;
        node.at = {100.0 * unit(random), 100.0 * unit(random), 20.0 * unit(random)};
        d.nodes.push_back(node);
    }
    const auto ends = [&](int a, int b) {
        return unit(random) < 0.5 ? std::array<int, 2>{a, b} : std::array<int, 2>{b, a};
    };
    for (int i = 1; i < count; ++i) {
        const auto [start, end] = ends(pick(i), i);
        d.elements.push_back(randomElement(random, start, end, pickType()));
    }
    for (int i = 0; i < extra; ++i) {
        const int a = pick(count);
        const int b = pick(count);
        if (a != b) d.elements.push_back(randomElement(random, a, b, pickType()));
    }

    const auto addStub = [&](int at, int type, int constraint, double value, bool outward) {
        NodeData node;
        const auto& from = d.nodes[static_cast<std::size_t>(at)].at;
        node.at = {from[0] + 1.0 + unit(random), from[1], from[2]};
        node.type = type;
        node.constraint = constraint;
        node.value = value;
        d.nodes.push_back(node);
        const int stub = static_cast<int>(d.nodes.size()) - 1;
        d.elements.push_back(randomElement(random, outward ? at : stub, outward ? stub : at, TAVELL_PIPE));
    };
    addStub(pick(count), TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 8e5, false);
    if (unit(random) < 0.5) addStub(pick(count), TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_PRESSURE, 6e5, true);
    const int demands = 1 + count / 4;
    for (int i = 0; i < demands; ++i)
        addStub(pick(count), TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, 0.1 + 3.0 * unit(random), true);
    return d;
}

Description grid(int width, int height, double demand)
{
    Description d;
    const auto at = [&](int x, int y) { return y * width + x; };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            NodeData node;
            node.at = {10.0 * x, 10.0 * y, 0.0};
            d.nodes.push_back(node);
        }
    const auto addPipe = [&](int a, int b, double diameter) {
        ElementData pipe;
        pipe.start = a;
        pipe.end = b;
        pipe.diameter = diameter;
        pipe.properties.push_back({static_cast<double>(TAVELL_ELEMENT_ROUGHNESS), 1e-4});
        d.elements.push_back(pipe);
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (x + 1 < width) addPipe(at(x, y), at(x + 1, y), 0.1);
            if (y + 1 < height) addPipe(at(x, y), at(x, y + 1), 0.1);
        }
    const auto addStub = [&](int from, int type, int constraint, double value) {
        NodeData node = d.nodes[static_cast<std::size_t>(from)];
        node.at[2] -= 1.0;
        node.type = type;
        node.constraint = constraint;
        node.value = value;
        d.nodes.push_back(node);
        const int stub = static_cast<int>(d.nodes.size()) - 1;
        if (type == TAVELL_NODE_INLET)
            addPipe(stub, from, 0.3);
        else
            addPipe(from, stub, 0.1);
    };
    addStub(at(0, 0), TAVELL_NODE_INLET, TAVELL_CONSTRAINT_PRESSURE, 5e5);
    addStub(at(width - 1, height - 1), TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, demand);
    addStub(at(width - 1, 0), TAVELL_NODE_OUTLET, TAVELL_CONSTRAINT_MASS_FLOW, demand);
    return d;
}

}  // namespace support
