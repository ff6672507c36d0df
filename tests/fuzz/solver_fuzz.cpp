// solver_fuzz.cpp: an input is a circuit; it is solved, and what a solve promises is checked on its results with laws
// written down here anew. Equations and sources: docs/theory.md.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "circuit_plan.h"
#include "fuzz_input.h"

namespace
{

using fuzz::CircuitPlan;
using fuzz::ElementPlan;
using fuzz::Input;
using fuzz::isSameNumber;
using fuzz::NodePlan;
using fuzz::shown;

constexpr int kMostIterations = 2000;
constexpr int kUnlimited = std::numeric_limits<int>::max();
constexpr int kMostUsual = 250;    // iterations of a solve that is not given all: what converges needs fewer
constexpr int kRepeatedUpTo = 60;  // iterations; longer solves are not done a second time
constexpr double kCriterion = 1e-6;       // [-] of the mass and pressure error
constexpr double kSlack = 1.001;          // [-] on it: sums in another order
constexpr double kGravity = 9.80665;      // [m/s2]
constexpr double kRounding = 2e-14;       // [-] of the terms of a pressure difference
constexpr double kColebrookSlack = 1e-6;  // [-] of a loss: the solver takes 1/sqrt(f) to 1e-6
constexpr double kCurveSlack = 1e-4;      // [-] of a curve's pressure: its points have 6 digits
constexpr double kUnsettledSteps = 40.0;  // flows below the criterion, at the steepest chord of a curve
constexpr double kLargestK = 400.0;       // [-] junction losses at both ends

/// The callback has no argument, so what it knows is here.
int steps = 0;     // calls
int stepsAllowed;  // until it asks to stop

bool countStep()
{
    return ++steps >= stepsAllowed;
}

struct Message {
    int id;
    std::vector<double> values;
};

struct Outcome {
    bool isConverged = false;
    int iterations = 0;
    std::array<std::vector<double>, 9> results;  // by key
    std::vector<Message> messages;
};

Outcome solve(vcICircuit* circuit, bool hasEnergy, int allowed)
{
    steps = 0;
    stepsAllowed = allowed;
    Outcome outcome;
    outcome.isConverged = vcICircuitSolve(circuit, hasEnergy ? 1 : 0, countStep) == 1;
    outcome.iterations = steps;
    for (std::size_t key = 0; key < outcome.results.size(); ++key) {
        vcIResultsSet* const set = vcICircuitGetResults(circuit, static_cast<int>(key));
        fuzz::require((set != nullptr) == outcome.isConverged, "results come with convergence");
        if (set == nullptr) continue;
        const double* const values = vcIResultsSetGetValues(set);
        outcome.results[key].assign(values, values + vcIResultsSetGetSize(set));
    }
    vcIFeedbackCollection* const feedback = vcICircuitGetFeedback(circuit);
    for (std::size_t i = 0; i < vcIFeedbackCollectionGetSize(feedback); ++i) {
        vcIFeedback* const message = vcIFeedbackCollectionGetFeedback(feedback, static_cast<int>(i));
        const double* const values = vcIFeedbackGetValues(message);
        outcome.messages.push_back({vcIFeedbackGetId(message),
                                    std::vector<double>(values, values + vcIFeedbackGetValueSize(message))});
    }
    return outcome;
}

bool has(const Outcome& outcome, int messageId)
{
    return std::any_of(outcome.messages.begin(), outcome.messages.end(),
                       [=](const Message& message) { return message.id == messageId; });
}

bool isSame(const std::vector<double>& a, const std::vector<double>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSameNumber);
}

bool isSame(const Outcome& a, const Outcome& b)
{
    const auto isSameMessage = [](const Message& l, const Message& r) {
        return l.id == r.id && isSame(l.values, r.values);
    };
    return a.isConverged == b.isConverged && a.iterations == b.iterations &&
           std::equal(a.results.begin(), a.results.end(), b.results.begin(),
                      [](const auto& l, const auto& r) { return isSame(l, r); }) &&
           std::equal(a.messages.begin(), a.messages.end(), b.messages.begin(), b.messages.end(),
                      isSameMessage);
}

double turbulentFriction(int method, double Re, double t)
{
    const auto square = [](double x) { return x * x; };
    switch (method) {
    case TAVELL_FRICTION_COLEBROOK: {
        double x = 7.0;  // 1/sqrt(f); each step brings it nearer by a factor of at least 5
        for (int step = 0; step < 200; ++step)
            x = -2.0 * std::log10(t / 3.7 + 2.51 * x / Re);
        return 1.0 / square(x);
    }
    case TAVELL_FRICTION_HAALAND:
        return 1.0 / square(-1.8 * std::log10(6.9 / Re + std::pow(t / 3.7, 1.11)));
    case TAVELL_FRICTION_SERGHIDES: {
        const double A = -2.0 * std::log10(t / 3.7 + 12.0 / Re);
        const double B = -2.0 * std::log10(t / 3.7 + 2.51 * A / Re);
        const double C = -2.0 * std::log10(t / 3.7 + 2.51 * B / Re);
        return 1.0 / square(A - square(B - A) / (C - 2.0 * B + A));
    }
    case TAVELL_FRICTION_ALTSHUL: {
        const double f = 0.11 * std::pow(68.0 / Re + t, 0.25);
        return f >= 0.018 ? f : 0.85 * f + 0.0028;
    }
    case TAVELL_FRICTION_EVANGELIDES:
        return (0.2479 - 9.47e-5 * std::pow(7.0 - std::log10(Re), 4.0)) /
               square(std::log10(t / 3.615 + 7.366 / std::pow(Re, 0.9142)));
    default:
        return 0.25 / square(std::log10(t / 3.7 + 5.74 / std::pow(Re, 0.9)));
    }
}

double friction(int method, double Re, double t)
{
    if (Re == 0.0) return 64.0;
    if (Re <= 2300.0) return std::min(64.0 / Re, 64.0);
    if (Re >= 5000.0) return turbulentFriction(method, Re, t);
    const double laminar = 64.0 / 2300.0;
    return laminar + (turbulentFriction(method, 5000.0, t) - laminar) * (Re - 2300.0) / 2700.0;
}

/// ISO 5167-2 with tappings by the length; the term for small pipes has D in metres.
double orificeLoss(const ElementPlan& element, double length, double Re, double rho, double Q)
{
    const double D = element.diameter;
    const double beta = element.coefficient / D;
    double L1 = 0.0, L2 = 0.0;
    if (std::fabs(length - 0.0508) < 1e-10) L1 = L2 = 0.0254 / D;
    if (std::fabs(length - 1.5 * D) < 1e-10) {
        L1 = 1.0;
        L2 = 0.47;
    }
    const double usedRe = std::max(Re, 10.0);
    const double A = std::pow(19000.0 * beta / usedRe, 0.8);
    const double M2 = 2.0 * L2 / (1.0 - beta);
    const double beta4 = std::pow(beta, 4.0);
    double C = 0.5961 + 0.0261 * beta * beta - 0.216 * beta4 * beta4 +
               0.000521 * std::pow(1e6 * beta / usedRe, 0.7) +
               (0.0188 + 0.0063 * A) * std::pow(beta, 3.5) * std::pow(1e6 / usedRe, 0.3) +
               (0.043 + 0.080 * std::exp(-10.0 * L1) - 0.123 * std::exp(-7.0 * L1)) * (1.0 - 0.11 * A) *
                   beta4 / (1.0 - beta4) -
               0.031 * (M2 - 0.8 * std::pow(M2, 1.1)) * std::pow(beta, 1.3);
    if (D < 0.0712) C += 0.011 * (0.75 - beta) * (2.8 - D / 25.4);
    const double throat =
        C / std::sqrt(1.0 - beta4) * std::acos(-1.0) / 4.0 * std::pow(element.coefficient, 2.0);
    return 0.5 * rho * Q * Q / (throat * throat);
}

/// Checks one converged solve.
class Verification
{
public:
    Verification(const CircuitPlan& plan, const Outcome& outcome)
        : m_plan(plan), m_outcome(outcome), m_flow(outcome.results[TAVELL_RESULT_MASS_FLOW]),
          m_pressure(outcome.results[TAVELL_RESULT_PRESSURE])
    {
    }

    void run()
    {
        checkFinite();
        countBranches();
        averageFlow();
        checkMass();
        checkRelations();
        if (!m_plan.isTame) return;
        findFixedFlows();
        findHeights();
        checkFixedFlows();
        checkLimits();
        checkLaws();
        checkCurves();
        checkTemperatures();
    }

private:
    void require(bool isTrue, const std::string& fact) const
    {
        if (isTrue) return;
        fuzz::print(m_plan);
        for (std::size_t e = 0; e < m_flow.size(); ++e)
            std::fprintf(stderr, "flow %zu: %s, Re %s\n", e, shown(m_flow[e]).c_str(),
                         shown(m_outcome.results[TAVELL_RESULT_REYNOLDS][e]).c_str());
        for (std::size_t i = 0; i < m_pressure.size(); ++i)
            std::fprintf(stderr, "pressure %zu: %s\n", i, shown(m_pressure[i]).c_str());
        for (const Message& message : m_outcome.messages)
            std::fprintf(stderr, "message %d\n", message.id);
        std::fprintf(stderr, "after %d iterations\n", m_outcome.iterations);
        fuzz::require(false, fact.c_str());
    }

    void checkFinite() const
    {
        for (std::size_t key = 0; key < m_outcome.results.size(); ++key) {
            const std::vector<double>& values = m_outcome.results[key];
            const bool isNodal = key >= TAVELL_RESULT_NODE_TEMPERATURE;
            require(values.size() == (isNodal ? m_plan.nodes.size() : m_plan.elements.size()),
                    "one result each");
            for (const double value : values)
                if (!std::isfinite(value)) require(false, "results are finite, key " + std::to_string(key));
        }
    }

    void countBranches()
    {
        m_branches.assign(m_plan.nodes.size(), 0);
        for (const ElementPlan& element : m_plan.elements) {
            ++m_branches[element.start];
            ++m_branches[element.end];
        }
    }

    void averageFlow()
    {
        double sum = 0.0;
        for (const double flow : m_flow)
            sum += std::fabs(flow);
        m_average = m_flow.empty() ? 0.0 : sum / static_cast<double>(m_flow.size());
        if (m_average < 3e-38) m_average = 1.0;  // a circuit at rest
    }

    static bool isBoundary(const NodePlan& node) { return node.type != TAVELL_NODE_INTERNAL; }
    static bool hasPressure(const NodePlan& node)
    {
        return isBoundary(node) && (node.constraint == TAVELL_CONSTRAINT_PRESSURE ||
                                    node.constraint == TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
    }
    static bool hasFlow(const NodePlan& node)
    {
        return isBoundary(node) && node.constraint != TAVELL_CONSTRAINT_PRESSURE;
    }
    bool isFlowEnd(std::size_t node) const
    {
        return m_branches[node] == 1 && !hasPressure(m_plan.nodes[node]);
    }

    /// Whether its pressure stands for that of a part without one: its balance is what those of all others leave.
    bool isHeld(std::size_t node) const
    {
        return std::any_of(m_outcome.messages.begin(), m_outcome.messages.end(), [=](const Message& message) {
            return message.id == TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE &&
                   message.values[0] == static_cast<double>(node + 1);
        });
    }

    void checkMass() const
    {
        std::vector<double> balance(m_plan.nodes.size(), 0.0);
        std::vector<double> sizes(balance);
        for (std::size_t e = 0; e < m_flow.size(); ++e) {
            const ElementPlan& element = m_plan.elements[e];
            balance[element.start] -= m_flow[e];
            balance[element.end] += m_flow[e];
            sizes[element.start] += std::fabs(m_flow[e]);
            sizes[element.end] += std::fabs(m_flow[e]);
        }
        const std::vector<double>& external = m_outcome.results[TAVELL_RESULT_EXTERNAL_MASS_FLOW];
        for (std::size_t i = 0; i < balance.size(); ++i) {
            const double rounding = kRounding * sizes[i];
            require(std::fabs(balance[i] + external[i]) <= rounding,
                    "the external flow of node " + std::to_string(i));
            if (hasPressure(m_plan.nodes[i]) || m_branches[i] < 2) continue;
            const double allowed =
                kSlack * kCriterion * m_average * (isHeld(i) ? static_cast<double>(balance.size()) : 1.0);
            require(std::fabs(balance[i]) <= allowed + rounding,
                    "the mass balance of node " + std::to_string(i) + ": " + shown(balance[i]) + " of " +
                        shown(m_average));
        }
    }

    /// The quantities that follow from others.
    void checkRelations() const
    {
        const auto near = [](double a, double b) {
            return std::fabs(a - b) <= 1e-14 * (std::fabs(a) + std::fabs(b));
        };
        for (std::size_t e = 0; e < m_flow.size(); ++e) {
            const ElementPlan& element = m_plan.elements[e];
            const double difference = m_pressure[element.end] - m_pressure[element.start];
            require(difference == m_outcome.results[TAVELL_RESULT_PRESSURE_DIFFERENCE][e],
                    "pressure differences");
            if (!m_plan.isTame) continue;
            const double Q = m_outcome.results[TAVELL_RESULT_VOLUME_FLOW][e];
            require(near(Q, m_flow[e] / m_plan.density), "volume flows");
            const bool hasVelocity = element.type == TAVELL_PIPE || element.type == TAVELL_LOSS ||
                                     element.type == TAVELL_HAZEN_WILLIAMS_PIPE ||
                                     element.type == TAVELL_CONTROL_VALVE ||
                                     element.type == TAVELL_NON_RETURN;
            const double V = hasVelocity && element.area > 0.0 ? Q / element.area : 0.0;
            require(near(m_outcome.results[TAVELL_RESULT_VELOCITY][e], V), "velocities");
            require(near(m_outcome.results[TAVELL_RESULT_REYNOLDS][e],
                         V * m_plan.density * element.diameter / viscosity(e)),
                    "Reynolds numbers");
        }
    }

    double viscosity(std::size_t e) const
    {
        if (!m_plan.followsViscosityLaw) return m_plan.viscosity;
        const double T = std::clamp(m_outcome.results[TAVELL_RESULT_ELEMENT_TEMPERATURE][e], 273.15, 373.15);
        const auto& law = m_plan.viscosityLaw;
        return law[0] * std::exp((law[1] - 273.15) / (T + law[2] - 546.3));
    }

    double reynolds(std::size_t e) const
    {
        const ElementPlan& element = m_plan.elements[e];
        if (element.area == 0.0) return 0.0;
        return std::fabs(m_flow[e]) / element.area * element.diameter / viscosity(e);
    }

    /// Flows that conditions fix: of pumps and losses, of the first element at a boundary node, of open ends. Control
    /// valves and non-return elements keep their own limit.
    void findFixedFlows()
    {
        m_fixed.assign(m_flow.size(), std::nullopt);
        const auto hasLimit = [this](std::size_t e) {
            const int type = m_plan.elements[e].type;
            return type == TAVELL_CONTROL_VALVE || type == TAVELL_NON_RETURN;
        };
        for (std::size_t e = 0; e < m_flow.size(); ++e) {
            const ElementPlan& element = m_plan.elements[e];
            if (!element.curveFlows.empty() && element.fixedFlow != 0.0) m_fixed[e] = element.fixedFlow;
        }
        for (std::size_t i = 0; i < m_plan.nodes.size(); ++i) {
            const NodePlan& node = m_plan.nodes[i];
            const std::size_t e = firstElementAt(i);
            if (!hasFlow(node) || e == m_flow.size() || m_fixed[e] || hasLimit(e) || isBetweenPressures(e))
                continue;
            m_fixed[e] = massFlowOf(node, m_plan.elements[e]);
        }
        for (std::size_t i = 0; i < m_plan.nodes.size(); ++i) {
            if (!isFlowEnd(i)) continue;
            const std::size_t e = firstElementAt(i);
            if (hasLimit(e)) m_fixed[e] = m_plan.elements[e].limit;
            if (!m_fixed[e]) m_fixed[e] = 0.0;
        }
    }

    /// A pipe in the middle of the network between two fixed pressures, which follows its law.
    bool isBetweenPressures(std::size_t e) const
    {
        const ElementPlan& element = m_plan.elements[e];
        return element.type == TAVELL_PIPE && hasPressure(m_plan.nodes[element.start]) &&
               hasPressure(m_plan.nodes[element.end]) && m_branches[element.start] > 1 &&
               m_branches[element.end] > 1;
    }

    /// By order of creation; the number of elements when there is none.
    std::size_t firstElementAt(std::size_t node) const
    {
        std::size_t e = 0;
        while (e < m_flow.size() && m_plan.elements[e].start != node && m_plan.elements[e].end != node)
            ++e;
        return e;
    }

    double massFlowOf(const NodePlan& node, const ElementPlan& element) const
    {
        if (node.constraint == TAVELL_CONSTRAINT_REYNOLDS)
            return node.flow * m_plan.viscosity * element.area / element.diameter;
        if (node.constraint == TAVELL_CONSTRAINT_VELOCITY) return node.flow * element.area * m_plan.density;
        return node.flow;
    }

    /// Against gravity, above the lowest node.
    void findHeights()
    {
        double lowest = std::numeric_limits<double>::infinity();
        for (const NodePlan& node : m_plan.nodes) {
            const auto& g = m_plan.gravity;
            m_height.push_back(-(node.at[0] * g[0] + node.at[1] * g[1] + node.at[2] * g[2]));
            lowest = std::min(lowest, m_height.back());
        }
        for (double& height : m_height)
            height -= lowest;
    }

    double piezometric(std::size_t node) const
    {
        return m_pressure[node] + m_plan.density * kGravity * m_height[node];
    }
    /// The terms of a node's pressure, whose rounding a difference has.
    double sizeOf(std::size_t node) const
    {
        return std::fabs(m_pressure[node]) + m_plan.density * kGravity * (m_height[node] + 200.0);
    }

    void checkFixedFlows() const
    {
        for (std::size_t e = 0; e < m_flow.size(); ++e)
            if (m_fixed[e])
                require(std::fabs(m_flow[e] - *m_fixed[e]) <= 1e-12 * std::fabs(*m_fixed[e]),
                        "element " + std::to_string(e) + " has its fixed flow " + shown(*m_fixed[e]));
    }

    void checkLimits() const
    {
        double largest = 0.0;
        for (std::size_t i = 0; i < m_pressure.size(); ++i)
            largest = std::max(largest, std::fabs(piezometric(i)));
        for (std::size_t e = 0; e < m_flow.size(); ++e) {
            const ElementPlan& element = m_plan.elements[e];
            if (m_fixed[e]) continue;
            const std::string name = "element " + std::to_string(e);
            if (element.type == TAVELL_CONTROL_VALVE)
                require(std::fabs(m_flow[e]) <= std::fabs(element.limit) * (1.0 + 1e-9),
                        name + " keeps its limit");
            if (element.type != TAVELL_NON_RETURN) continue;
            require(m_flow[e] >= -kSlack * kCriterion * m_average, name + " has no flow from its end");
            if (m_flow[e] == 0.0)
                require(piezometric(element.start) - piezometric(element.end) <=
                            1.1e-9 * largest + kRounding * (sizeOf(element.start) + sizeOf(element.end)),
                        name + " is not shut against the flow");
        }
    }

    double lengthOf(const ElementPlan& element) const
    {
        const auto& a = m_plan.nodes[element.start].at;
        const auto& b = m_plan.nodes[element.end].at;
        return std::max(1e-6, std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]));
    }

    /// Loss from start to end [Pa] with a minor loss coefficient; nothing for kinds without a plain law.
    std::optional<double> lossOf(std::size_t e, double K) const
    {
        const ElementPlan& element = m_plan.elements[e];
        const double rho = m_plan.density;
        const double Q = std::fabs(m_flow[e]) / rho;
        const double L = lengthOf(element);
        const double dynamic = K == 0.0 ? 0.0 : K * Q * Q / (2.0 * element.area * element.area);
        double loss = 0.0;  // [m2/s2]
        switch (element.type) {
        case TAVELL_PIPE:
        case TAVELL_CONTROL_VALVE:
        case TAVELL_NON_RETURN: {
            const double f = friction(m_plan.friction, reynolds(e), element.roughness / element.diameter);
            loss = f * L / element.diameter * Q * Q / (2.0 * element.area * element.area) + dynamic;
            break;
        }
        case TAVELL_HAZEN_WILLIAMS_PIPE:
            loss = 10.67 * 9.806 * L /
                       (std::pow(element.coefficient, 1.85) * std::pow(element.diameter, 4.87)) *
                       std::pow(Q, 1.85) +
                   dynamic;
            break;
        case TAVELL_GENERAL_LOSS: {
            const auto& [a, b, c, d] = element.exponents;
            loss = std::pow(rho, a - 1.0) * element.coefficient * std::pow(L, b) /
                       std::pow(element.diameter, c) * std::pow(Q, d) +
                   dynamic;
            break;
        }
        case TAVELL_ORIFICE:
            loss = orificeLoss(element, L, reynolds(e), rho, Q) / rho;
            break;
        case TAVELL_KV_VALVE:
        case TAVELL_CV_VALVE: {
            const double X = (element.type == TAVELL_CV_VALVE ? 0.865 : 1.0) * element.coefficient / 3600.0;
            loss = 100.10310619938537 / (X * X) * Q * Q;
            break;
        }
        default:
            return std::nullopt;
        }
        return std::copysign(rho * loss, m_flow[e]);
    }

    /// The coefficient in force; nothing when it is computed from junctions.
    std::optional<double> minorLossOf(const ElementPlan& element) const
    {
        if (m_plan.minorLoss == 0 || (m_plan.minorLoss == 1 && element.k > 0.0)) return element.k;
        return std::nullopt;
    }

    static bool usesMinorLoss(int type)
    {
        return type == TAVELL_PIPE || type == TAVELL_HAZEN_WILLIAMS_PIPE || type == TAVELL_GENERAL_LOSS ||
               type == TAVELL_CONTROL_VALVE || type == TAVELL_NON_RETURN;
    }

    /// Whether the pressure error knows the element: it has a law, and its flow is not fixed inside the network.
    bool isMeasured(std::size_t e) const
    {
        const ElementPlan& element = m_plan.elements[e];
        if (!(reynolds(e) > 1.0001) || !lossOf(e, 0.0)) return false;
        if (isFlowEnd(element.start) && isFlowEnd(element.end)) return false;  // no pressure to go by
        if (m_fixed[e]) return isFlowEnd(element.start) || isFlowEnd(element.end);
        const bool isAtLimit = element.type == TAVELL_CONTROL_VALVE &&
                               std::fabs(m_flow[e]) >= std::fabs(element.limit) * (1.0 - 1e-9);
        return !isAtLimit;
    }

    /// The relative slack of a law that is computed in another way here.
    double slackOf(const ElementPlan& element) const
    {
        const bool isDarcy = element.type == TAVELL_PIPE || element.type == TAVELL_CONTROL_VALVE ||
                             element.type == TAVELL_NON_RETURN;
        double slack = 1e-12;
        if (isDarcy && m_plan.friction == TAVELL_FRICTION_COLEBROOK) slack += kColebrookSlack;
        return slack;
    }

    /// The sum of the relative misses stays below the criterion; a computed K is between none and the largest.
    void checkLaws() const
    {
        double misses = 0.0;
        double allowed = kSlack * kCriterion;
        double worst = -1.0;
        std::size_t worstElement = 0;
        for (std::size_t e = 0; e < m_flow.size(); ++e) {
            if (!isMeasured(e)) continue;
            const ElementPlan& element = m_plan.elements[e];
            const double drop = piezometric(element.start) - piezometric(element.end);
            const double mean = std::fabs(piezometric(element.start) + piezometric(element.end)) / 2.0;
            const double rounding = kRounding * (sizeOf(element.start) + sizeOf(element.end));
            if (std::fabs(drop) <= 1e-11 + rounding || mean <= 1e6 * rounding) continue;
            const std::optional<double> K = usesMinorLoss(element.type) ? minorLossOf(element) : 0.0;
            if (!K) {
                checkBounds(e, drop, mean, rounding);
                continue;
            }
            const double law = *lossOf(e, *K);
            const double miss = std::fabs(drop - law) / mean;
            misses += miss;
            allowed += (rounding + slackOf(element) * std::fabs(law)) / mean;
            if (!(miss <= worst)) {
                worst = miss;
                worstElement = e;
            }
        }
        require(misses <= allowed, "laws hold: sum of misses " + shown(misses) + ", largest " + shown(worst) +
                                       " at element " + std::to_string(worstElement));
    }

    void checkBounds(std::size_t e, double drop, double mean, double rounding) const
    {
        const double along = m_flow[e] < 0.0 ? -drop : drop;
        const double slack = kSlack * kCriterion * mean + rounding;
        const double least = std::fabs(*lossOf(e, 0.0)) * (1.0 - slackOf(m_plan.elements[e])) - slack;
        const double most = std::fabs(*lossOf(e, kLargestK)) * (1.0 + slackOf(m_plan.elements[e])) + slack;
        require(along >= least && along <= most, "element " + std::to_string(e) + " loses " + shown(along) +
                                                     ", at least " + shown(least) + " and at most " +
                                                     shown(most));
    }

    /// Drop from start to end [Pa] of a curve inside the network: a pump on its cubic, which its points lie on, beyond
    /// it on the straight line from its shut-off point to its last one; a loss on the line to its last point.
    double curveDrop(std::size_t e) const
    {
        const ElementPlan& element = m_plan.elements[e];
        const double Q = m_flow[e] / m_plan.density;
        const double part = Q / element.curveFlows.back();
        if (element.type == TAVELL_LOSS) return element.curvePressures.back() * part;
        const double fall = element.isParabola && part >= 0.0 && part < 1.0 ? part * part : part;
        return -element.curvePressures[0] * (1.0 - fall) * m_plan.density / fuzz::kCurveDensity;
    }

    void checkCurves() const
    {
        for (std::size_t e = 0; e < m_flow.size(); ++e) {
            const ElementPlan& element = m_plan.elements[e];
            if (element.curveFlows.empty() || m_fixed[e]) continue;
            const double drop = piezometric(element.start) - piezometric(element.end);
            const double expected = curveDrop(e);
            const double size = std::max(
                {element.curvePressures.front(), element.curvePressures.back(), std::fabs(expected)});
            const double rounding = kRounding * (sizeOf(element.start) + sizeOf(element.end));
            // nothing but the mass balance tells how far a loss is from its answer
            const double unsettled =
                element.type == TAVELL_LOSS
                    ? kUnsettledSteps * kCriterion * m_average / m_plan.density / element.curveFlows.back()
                    : 0.0;
            const double ofPressures =
                kCriterion * (std::fabs(piezometric(element.start)) + std::fabs(piezometric(element.end)));
            require(std::fabs(drop - expected) <= (kCurveSlack + unsettled) * size + ofPressures + rounding,
                    "the curve of element " + std::to_string(e) + ": drop " + shown(drop) + ", expected " +
                        shown(expected));
        }
    }

    /// Without heat no temperature is beyond those that come in and the one that was there.
    void checkTemperatures() const
    {
        double lowest = m_plan.temperature;
        double highest = m_plan.temperature;
        for (const NodePlan& node : m_plan.nodes) {
            if (node.temperature == 0.0) continue;
            lowest = std::min(lowest, node.temperature);
            highest = std::max(highest, node.temperature);
        }
        for (const ElementPlan& element : m_plan.elements) {
            const bool isFlux =
                element.energyType == TAVELL_ENERGY_FLUX || element.energyType == TAVELL_ENERGY_FLUX_STORED;
            if (!isFlux || element.energyValue != 0.0) return;
        }
        for (const std::size_t key : {TAVELL_RESULT_NODE_TEMPERATURE, TAVELL_RESULT_ELEMENT_TEMPERATURE})
            for (const double T : m_outcome.results[key])
                require(T >= lowest * (1.0 - 1e-6) && T <= highest * (1.0 + 1e-6),
                        "temperatures stay between those of the sources: " + shown(T));
    }

    const CircuitPlan& m_plan;
    const Outcome& m_outcome;
    const std::vector<double>& m_flow;           // [kg/s] by element
    const std::vector<double>& m_pressure;       // [Pa] static, by node
    std::vector<int> m_branches;                 // ends of elements, by node
    std::vector<double> m_height;                // [m] by node
    std::vector<std::optional<double>> m_fixed;  // [kg/s] by element
    double m_average = 0.0;                      // [kg/s]
};

/// A solve that is stopped says so and leaves no trace in the next one.
void checkCancellation(const CircuitPlan& plan, vcICircuit* circuit, const Outcome& outcome, int stoppedAt)
{
    if (stoppedAt > outcome.iterations) return;
    const Outcome stopped = solve(circuit, plan.hasEnergy, stoppedAt);
    fuzz::require(!stopped.isConverged && stopped.iterations == stoppedAt,
                  "a solve stops when it is asked to");
    fuzz::require(has(stopped, TAVELL_FEEDBACK_CANCELLED), "a solve that was stopped says so");
}

void checkOutcome(const Outcome& outcome)
{
    fuzz::require(outcome.iterations <= kMostIterations, "a solve ends at its limit");
    fuzz::require(outcome.isConverged || !outcome.messages.empty(), "a solve that fails says why");
    fuzz::require(!has(outcome, TAVELL_FEEDBACK_CANCELLED), "a solve that was not stopped does not say so");
    constexpr std::array<int, 6> kRemarks{5, 12, 16, 17, 18, 19};
    for (const Message& message : outcome.messages) {
        const bool isRemark = std::count(kRemarks.begin(), kRemarks.end(), message.id) > 0;
        fuzz::require(!outcome.isConverged || isRemark, "valid results come with remarks only");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    for (const char* name :
         {"TAVELL_DEBUG_FILE", "TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY", "TAVELL_DETAIL_CHECK"})
        ::unsetenv(name);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    const unsigned choice = input.byte();
    const int stoppedAt = 1 + static_cast<int>(choice % 64);
    const int allowed = choice / 64 == 3 ? kUnlimited : kMostUsual;
    CircuitPlan plan = fuzz::Planner(input).plan();
    const fuzz::BuiltCircuit built(plan);
    const Outcome outcome = solve(built.circuit(), plan.hasEnergy, allowed);
    if (outcome.iterations >= allowed) return 0;
    checkOutcome(outcome);
    if (outcome.isConverged) Verification(plan, outcome).run();
    if (outcome.iterations > kRepeatedUpTo) return 0;

    checkCancellation(plan, built.circuit(), outcome, stoppedAt);
    fuzz::require(isSame(outcome, solve(built.circuit(), plan.hasEnergy, kUnlimited)),
                  "solved again, the same bits");
    const fuzz::BuiltCircuit another(plan);
    fuzz::require(isSame(outcome, solve(another.circuit(), plan.hasEnergy, kUnlimited)),
                  "built and solved again, the same bits");
    return 0;
}
