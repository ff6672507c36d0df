// What the results of a solve show.

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include <tavell/Constants.h>

#include "certificate.h"
#include "doctor_checks.h"
#include "doctor_graph.h"
#include "doctor_support.h"
#include "element_kinds.h"

namespace kit::doctor
{

namespace
{

constexpr double kDefaultVelocityLimit = 3.0;     // [m/s], usual for pipes that must not be noisy or erode
constexpr double kAtRest = 1e-6;                  // [-], of the mean flow: the criterion of the solve
constexpr double kLeastFlow = 1e-12;              // [kg/s], noise of a network at rest
constexpr double kResidualLimit = 1e-5;           // [-], of the mean flow and of the mean pressure
constexpr double kNoiseDrop = 1e-6;               // [-], of the greatest pressure
constexpr double kCurveTolerance = 1e-6;          // [-], of the last flow
constexpr double kAtmosphere = 101325.0;          // [Pa], standard atmosphere (ISO 2533)
constexpr double kAbsoluteFrom = 9e4;             // [Pa]: given pressures are absolute when none is lower
constexpr double kIceTemperature = 273.15;        // [K]
constexpr double kCriticalTemperature = 647.096;  // [K], of water
constexpr double kCriticalPressure = 22.064e6;    // [Pa], of water
constexpr std::size_t kMostResiduals = 5;         // places that are named

/// Vapour pressure of water [Pa], Wagner and Pruss (1993), T from 273.16 to 647.096 K; t = 1 - T/Tc:
/// ln(p/pc) = Tc/T (a1 t + a2 t^1.5 + a3 t^3 + a4 t^3.5 + a5 t^4 + a6 t^7.5)
double vapourPressureOfWater(double temperature)
{
    const double t = 1.0 - temperature / kCriticalTemperature;
    const double sum = -7.85951783 * t + 1.84408259 * std::pow(t, 1.5) - 11.7866497 * std::pow(t, 3) +
                       22.6807411 * std::pow(t, 3.5) - 15.9618719 * std::pow(t, 4) +
                       1.80122502 * std::pow(t, 7.5);
    return kCriticalPressure * std::exp(kCriticalTemperature / temperature * sum);
}

/// Whether a boundary brings or takes liquid, or could.
bool isLive(const Node& node)
{
    return node.boundary && (node.boundary->pressure || node.boundary->flow != 0.0);
}

class ResultChecks
{
public:
    ResultChecks(const Network& network, const Solution& solution, Findings& findings)
        : m_network(network), m_solution(solution), m_findings(findings),
          m_density(solution.fluid.density > 0.0 ? solution.fluid.density : liquidOf(network).density),
          m_isShut(network.elements.size(), false)
    {
        std::size_t count = 0;
        for (std::size_t i = 0; i < network.elements.size(); ++i) {
            if (network.elements[i].isClosed || !std::isfinite(solution.massFlow[i])) continue;
            m_meanFlow += std::fabs(solution.massFlow[i]);
            ++count;
        }
        if (count > 0) m_meanFlow /= static_cast<double>(count);
        m_pressureScale = largestPiezometricPressure();
    }

    void run()
    {
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            if (m_network.elements[i].isClosed) continue;
            checkCurve(i);
            checkControlValve(i);
        }
        checkShutValves();
        checkElementsAtRest();
        checkPressures();
        checkVelocities();
        checkResiduals();
    }

private:
    double flowOf(std::size_t element) const { return m_solution.massFlow[element]; }

    /// [Pa], heights counted from the lowest node, as a solve counts them.
    double largestPiezometricPressure() const
    {
        double lowest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i)
            lowest = std::min(lowest, staticHeightPressure(m_network, i, m_density));
        double largest = 0.0;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const double pressure =
                m_solution.pressure[i] + staticHeightPressure(m_network, i, m_density) - lowest;
            if (std::isfinite(pressure)) largest = std::max(largest, std::fabs(pressure));
        }
        return largest;
    }

    bool isAtRest(std::size_t element) const
    {
        return std::fabs(flowOf(element)) <= std::max(kAtRest * m_meanFlow, kLeastFlow);
    }

    /// Piezometric pressure of the start less that of the end [Pa].
    double dropOf(std::size_t element) const
    {
        const Element& e = m_network.elements[element];
        return m_solution.pressure[e.from] - m_solution.pressure[e.to] +
               staticHeightPressure(m_network, e.from, m_density) -
               staticHeightPressure(m_network, e.to, m_density);
    }

    double noiseDrop() const { return kNoiseDrop * std::max(m_pressureScale, 1.0); }

    void checkCurve(std::size_t i)
    {
        const Element& element = m_network.elements[i];
        if (!element.kind->hasCurve || hasFixedFlow(element)) return;
        const std::vector<CurvePoint>& points = pointsOf(m_network, element);
        if (points.empty()) return;
        const double flow = m_solution.volumeFlow[i];
        const double first = points.front().volumeFlow;
        const double last = points.back().volumeFlow;
        const double tolerance = kCurveTolerance * std::fabs(last);
        const bool isPump = element.kind->type == TAVELL_PUMP;
        const std::string does = "it carries " + shown(flow, Quantity::volumeFlow);
        std::string message;
        Code code = Code::loss_beyond_curve;
        if (flow < -std::max(tolerance, kAtRest * m_meanFlow / m_density)) {
            code = isPump ? Code::pump_flow_negative : Code::loss_beyond_curve;
            message = does + ", from its end to its start";
        } else if (flow > last + tolerance) {
            code = isPump ? Code::pump_beyond_curve : Code::loss_beyond_curve;
            message = does + ", and its curve ends at " + shown(last, Quantity::volumeFlow);
        } else if (isPump && flow < first - tolerance && flow > tolerance) {
            code = Code::pump_before_curve;
            message = does + ", and its curve begins at " + shown(first, Quantity::volumeFlow);
        } else {
            return;
        }
        addAtElement(m_network, i, code, std::move(message), m_findings).numbers = {
            {"volume_flow", flow, "m3/s"}, {"first_flow", first, "m3/s"}, {"last_flow", last, "m3/s"}};
    }

    void checkControlValve(std::size_t i)
    {
        if (m_network.elements[i].kind->type != TAVELL_CONTROL_VALVE || isAtRest(i) || flowOf(i) > 0.0)
            return;
        addAtElement(m_network, i, Code::control_valve_reversed,
                     "its flow of " + shown(-flowOf(i), Quantity::massFlow) +
                         " runs from its end to its start",
                     m_findings)
            .numbers = {{"mass_flow", flowOf(i), "kg/s"}};
    }

    /// A shut element that nothing goes around stays shut whatever happens elsewhere.
    void checkShutValves()
    {
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            m_isShut[i] =
                !element.isClosed && isNonReturn(element) && isAtRest(i) && dropOf(i) < -noiseDrop();
        }
        const Graph graph =
            makeGraph(m_network, [this](std::size_t i) { return !m_network.elements[i].isClosed; });
        const Forest forest = makeForest(m_network, graph);
        std::vector<bool> isBridge(m_network.elements.size(), false);
        for (const std::size_t node : forest.order) {
            if (forest.isBridgeAbove[node]) isBridge[forest.elementAbove[node]] = true;
        }
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            if (!m_isShut[i]) continue;
            addAtElement(m_network, i, isBridge[i] ? Code::valve_against_flow : Code::valve_shut,
                         "it is shut: the pressure behind it is " + shown(-dropOf(i), Quantity::pressure) +
                             " above that before it" + (isBridge[i] ? ", and nothing leads around it" : ""),
                         m_findings)
                .numbers = {{"reverse_pressure", -dropOf(i), "Pa"}};
        }
    }

    /// Why elements that are open and no shut valves carry nothing.
    void checkElementsAtRest()
    {
        const Graph graph = makeGraph(
            m_network, [this](std::size_t i) { return !m_network.elements[i].isClosed && !m_isShut[i]; });
        const std::vector<std::size_t> top = topsOfDeadEnds(graph);
        std::vector<bool> endsAtShutValve(m_network.nodes.size(), false);  // by top of a dead end
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            if (!m_isShut[i]) continue;
            for (const std::size_t node : {m_network.elements[i].from, m_network.elements[i].to}) {
                if (top[node] != kNone) endsAtShutValve[top[node]] = true;
            }
        }
        std::vector<std::size_t> deadEnds;
        std::vector<std::size_t> behindShut;
        std::vector<std::size_t> balanced;
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (element.isClosed || m_isShut[i] || element.from == element.to || !isAtRest(i)) continue;
            const std::size_t deadEnd = top[element.from] != kNone ? top[element.from] : top[element.to];
            if (deadEnd != kNone)
                (endsAtShutValve[deadEnd] ? behindShut : deadEnds).push_back(i);
            else if (element.kind->type != TAVELL_PUMP && std::fabs(dropOf(i)) <= noiseDrop())
                balanced.push_back(i);
            else
                addStuck(i);
        }
        addGroup(deadEnds, Code::dead_end, "carries nothing, because it leads to a closed end",
                 "carry nothing, because they lead to closed ends");
        addGroup(behindShut, Code::behind_shut_valve, "carries nothing, because a valve behind it is shut",
                 "carry nothing, because valves behind them are shut");
        addGroup(balanced, Code::balanced_element, "carries nothing: the pressures at its ends balance",
                 "carry nothing: the pressures at their ends balance");
    }

    /// By node: the topmost node of the dead end that it lies in; kNone for nodes that flow can pass or
    /// leave. Seen from a boundary, a dead end is what lies below a bridge without a boundary of its own.
    std::vector<std::size_t> topsOfDeadEnds(const Graph& graph) const
    {
        std::vector<std::size_t> live(m_network.nodes.size(), 0);
        std::vector<std::size_t> liveNodes;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (!isLive(m_network.nodes[i])) continue;
            live[i] = 1;
            liveNodes.push_back(i);
        }
        const Forest forest = makeForest(m_network, graph, liveNodes);
        sumUpwards(m_network, forest, live);
        std::vector<std::size_t> top(m_network.nodes.size(), kNone);
        for (const std::size_t node : forest.order) {
            const std::size_t element = forest.elementAbove[node];
            if (element != kNone) top[node] = top[otherEnd(m_network.elements[element], node)];
            const bool isCutOff = element == kNone || forest.isBridgeAbove[node];
            if (top[node] == kNone && isCutOff && live[node] == 0) top[node] = node;
        }
        return top;
    }

    void addStuck(std::size_t i)
    {
        const double drop = dropOf(i);
        addAtElement(m_network, i, Code::stuck_at_zero_flow,
                     "it carries nothing, although the pressures at its ends differ by " +
                         shown(std::fabs(drop), Quantity::pressure),
                     m_findings)
            .numbers = {{"mass_flow", flowOf(i), "kg/s"}, {"pressure_drop", drop, "Pa"}};
    }

    void addGroup(const std::vector<std::size_t>& elements, Code code, const std::string& one,
                  const std::string& many)
    {
        if (elements.empty()) return;
        addAtElements(m_network, elements, code,
                      elements.size() == 1 ? "it " + one
                                           : shownCount(elements.size(), "element") + ' ' + many,
                      m_findings)
            .numbers = {{"elements", static_cast<double>(elements.size()), ""}};
    }

    /// Whether the pressures of the network seem to be absolute: every given one is about an atmosphere or
    /// more.
    bool looksAbsolute() const
    {
        bool hasAny = false;
        for (const Node& node : m_network.nodes) {
            if (!node.boundary || !node.boundary->pressure) continue;
            hasAny = true;
            if (*node.boundary->pressure < kAbsoluteFrom) return false;
        }
        return hasAny;
    }

    void checkPressures()
    {
        const bool isAbsolute = looksAbsolute();
        const double vapour = vapourPressure();
        std::vector<std::size_t> impossible;
        std::vector<std::size_t> negative;
        std::vector<std::size_t> boiling;
        for (std::size_t i = 0; i < m_solution.pressure.size(); ++i) {
            const double pressure = m_solution.pressure[i];
            if (!std::isfinite(pressure)) continue;
            if (pressure < -kAtmosphere)
                impossible.push_back(i);
            else if (isAbsolute && pressure < 0.0)
                negative.push_back(i);
            else if (pressure + (isAbsolute ? 0.0 : kAtmosphere) < vapour)
                boiling.push_back(i);
        }
        addLowPressure(impossible, Code::pressure_impossible,
                       ", which is below a vacuum even when pressures count from the atmosphere");
        addLowPressure(
            negative, Code::pressure_below_zero,
            "; that is impossible if pressures are absolute, as the given ones look, and suction if "
            "they count from the atmosphere");
        addLowPressure(boiling, Code::near_vapour_pressure,
                       std::string(isAbsolute ? " absolute" : " against the atmosphere") +
                           "; water boils below " + shown(vapour, Quantity::pressure) + " absolute");
    }

    /// [Pa], absolute, of water at the temperature of the case; minus infinity for other liquids.
    double vapourPressure() const
    {
        const Liquid liquid = liquidOf(m_network);
        const double temperature =
            m_solution.fluid.temperature > 0.0 ? m_solution.fluid.temperature : liquid.temperature;
        if (!liquid.isWater || temperature < kIceTemperature || temperature >= kCriticalTemperature)
            return -std::numeric_limits<double>::infinity();
        return vapourPressureOfWater(temperature);
    }

    /// One finding for all nodes, the lowest first.
    void addLowPressure(std::vector<std::size_t>& nodes, Code code, const std::string& meaning)
    {
        if (nodes.empty()) return;
        std::sort(nodes.begin(), nodes.end(), [this](std::size_t a, std::size_t b) {
            return m_solution.pressure[a] != m_solution.pressure[b]
                       ? m_solution.pressure[a] < m_solution.pressure[b]
                       : a < b;
        });
        const double lowest = m_solution.pressure[nodes.front()];
        std::string message = "the pressure is " + shown(lowest, Quantity::pressure) + meaning;
        if (nodes.size() > 1) message += "; so it is at " + shownCount(nodes.size() - 1, "other node");
        addAtNodes(m_network, nodes, code, std::move(message), m_findings).numbers = {
            {"lowest_pressure", lowest, "Pa"}, {"nodes", static_cast<double>(nodes.size()), ""}};
    }

    void checkVelocities()
    {
        const double limit = m_network.settings.velocityLimit.value_or(kDefaultVelocityLimit);
        std::vector<std::size_t> fast;
        const auto speed = [this](std::size_t i) { return std::fabs(m_solution.velocity[i]); };
        for (std::size_t i = 0; i < m_solution.velocity.size(); ++i) {
            if (speed(i) > limit) fast.push_back(i);
        }
        if (fast.empty()) return;
        std::sort(fast.begin(), fast.end(), [&speed](std::size_t a, std::size_t b) {
            return speed(a) != speed(b) ? speed(a) > speed(b) : a < b;
        });
        std::string message = "its velocity of " + shown(speed(fast.front()), Quantity::velocity) +
                              " is above " + shown(limit, Quantity::velocity);
        if (fast.size() > 1)
            message += (fast.size() == 2 ? "; so is that of " : "; so are those of ") +
                       shownCount(fast.size() - 1, "other element");
        Finding& finding =
            addAtElements(m_network, fast, Code::velocity_above_limit, std::move(message), m_findings);
        if (m_network.settings.velocityLimit) finding.severity = Severity::warning;
        finding.numbers = {{"velocity", speed(fast.front()), "m/s"}, {"limit", limit, "m/s"}};
    }

    /// The largest entries of a list of residuals that are above a limit, the largest first.
    static std::vector<std::size_t> worstOf(const std::vector<double>& residuals, double limit)
    {
        std::vector<std::size_t> worst;
        for (std::size_t i = 0; i < residuals.size(); ++i) {
            if (std::fabs(residuals[i]) > limit) worst.push_back(i);
        }
        const std::size_t count = std::min(worst.size(), kMostResiduals);
        std::partial_sort(worst.begin(), worst.begin() + static_cast<std::ptrdiff_t>(count), worst.end(),
                          [&residuals](std::size_t a, std::size_t b) {
                              const double left = std::fabs(residuals[a]);
                              const double right = std::fabs(residuals[b]);
                              return left != right ? left > right : a < b;
                          });
        worst.resize(count);
        return worst;
    }

    void checkResiduals()
    {
        const std::vector<double> mass = massResiduals(m_network, m_solution);
        const std::vector<std::size_t> nodes =
            worstOf(mass, std::max(kResidualLimit * m_meanFlow, kLeastFlow));
        if (!nodes.empty()) {
            Finding& finding =
                addAtNodes(m_network, nodes, Code::worst_mass_residual,
                           "the flows here leave " + shown(mass[nodes.front()], Quantity::massFlow) + " over",
                           m_findings);
            for (const std::size_t node : nodes)
                finding.numbers.push_back({nodeLabel(m_network, node), mass[node], "kg/s"});
        }
        const std::vector<double> laws = lawMismatches(m_network, m_solution);
        const std::vector<std::size_t> elements =
            worstOf(laws, kResidualLimit * std::max(m_pressureScale, 1.0));
        if (elements.empty()) return;
        Finding& finding = addAtElements(m_network, elements, Code::worst_law_mismatch,
                                         "its pressure difference is " +
                                             shown(std::fabs(laws[elements.front()]), Quantity::pressure) +
                                             " away from that of its law at its flow",
                                         m_findings);
        for (const std::size_t element : elements)
            finding.numbers.push_back({elementLabel(m_network, element), laws[element], "Pa"});
    }

    const Network& m_network;
    const Solution& m_solution;
    Findings& m_findings;
    const double m_density;
    double m_meanFlow = 0.0;       // [kg/s]
    double m_pressureScale = 0.0;  // [Pa], of the pressures that the solve worked with
    std::vector<bool> m_isShut;    // by element: a valve that holds back flow
};

}  // namespace

void checkResults(const Network& network, const Solution& solution, Findings& findings)
{
    if (solution.hasResults()) ResultChecks(network, solution, findings).run();
}

}  // namespace kit::doctor
