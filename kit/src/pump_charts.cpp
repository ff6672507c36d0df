#include "pump_charts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include <tavell/Constants.h>

#include "catalogue.h"
#include "element_inputs.h"
#include "element_kinds.h"
#include "element_laws.h"

namespace kit
{

namespace
{

/// Points of the drawn curve of a pump.
constexpr int kCurvePoints = 60;

/// Flows of the points of a system curve by the flow at the duty point.
constexpr std::array<double, 7> kFlowShares{0.02, 0.25, 0.5, 0.75, 1.0, 1.2, 1.4};
constexpr std::size_t kFewestSolvedPoints = 4;

/// [Pa], what stands between two nodes beyond their static pressures and heights: the second less the first.
double liftBetween(const Network& network, const Solution& solution, std::size_t from, std::size_t to)
{
    const double weight = solution.fluid.density * gravityOf(network);
    const double byHead = (solution.head[to] - solution.head[from]) * weight;
    return std::isfinite(byHead) && weight > 0.0 ? byHead : solution.pressure[to] - solution.pressure[from];
}

/// [Pa], what the pump adds to the static pressure and the height.
double riseOf(const Network& network, const Solution& solution, const Element& pump)
{
    return liftBetween(network, solution, pump.from, pump.to);
}

/// The curve of the pump's law from no flow to where the rise ends, at most a little beyond the last given
/// point or the duty.
std::vector<CurvePoint> lawCurve(const PumpFit& fit, double lastGiven, double dutyFlow, double density)
{
    const double last = 1.1 * std::max(lastGiven, dutyFlow);
    std::vector<CurvePoint> curve;
    for (int i = 0; i <= kCurvePoints; ++i) {
        const double flow = last * i / kCurvePoints;
        const double rise = fit.rise(flow, density);
        if (!std::isfinite(rise) || (rise < 0.0 && flow > lastGiven)) break;
        curve.push_back({flow, rise});
    }
    return curve;
}

/// Adds a flow into the network at a node; false where what the node imposes cannot take it.
bool addFlow(Node& node, double massFlow, double density)
{
    if (!node.boundary) node.boundary = Boundary{};
    Boundary& boundary = *node.boundary;
    if (boundary.pressure) return boundary.flowKind == Boundary::Flow::none;
    const double sign = boundary.isInlet ? 1.0 : -1.0;
    double before = 0.0;
    if (boundary.flowKind == Boundary::Flow::mass)
        before = sign * boundary.flow;
    else if (boundary.flowKind == Boundary::Flow::volume)
        before = sign * boundary.flow * density;
    else if (boundary.flowKind != Boundary::Flow::none)
        return false;
    const double sum = before + massFlow;
    boundary.isInlet = sum >= 0.0;
    boundary.flowKind = Boundary::Flow::mass;
    boundary.flow = std::abs(sum);
    return true;
}

/// Elements at every node: those of node n are list[start[n]] to list[start[n + 1] - 1].
struct Incidence {
    std::vector<std::size_t> start;
    std::vector<std::size_t> list;

    explicit Incidence(const Network& network) : start(network.nodes.size() + 1, 0)
    {
        for (const Element& element : network.elements) {
            ++start[element.from + 1];
            ++start[element.to + 1];
        }
        for (std::size_t i = 1; i < start.size(); ++i)
            start[i] += start[i - 1];
        list.resize(start.back());
        std::vector<std::size_t> next(start.begin(), start.end() - 1);
        for (std::size_t e = 0; e < network.elements.size(); ++e) {
            list[next[network.elements[e].from]++] = e;
            list[next[network.elements[e].to]++] = e;
        }
    }
};

/// Whether a pressure is given somewhere that open elements other than the pump lead to from a node. Without
/// one on both sides of the pump nothing but one flow of the pump can be.
bool reachesPressure(const Network& network, const Incidence& incidence, std::size_t from, std::size_t pump)
{
    std::vector<bool> isFound(network.nodes.size(), false);
    std::vector<std::size_t> queue{from};
    isFound[from] = true;
    for (std::size_t at = 0; at < queue.size(); ++at) {
        const std::size_t node = queue[at];
        const std::optional<Boundary>& boundary = network.nodes[node].boundary;
        if (boundary && boundary->pressure) return true;
        for (std::size_t i = incidence.start[node]; i < incidence.start[node + 1]; ++i) {
            const std::size_t e = incidence.list[i];
            const Element& element = network.elements[e];
            const std::size_t other = element.from == node ? element.to : element.from;
            if (e == pump || element.isClosed || isFound[other]) continue;
            isFound[other] = true;
            queue.push_back(other);
        }
    }
    return false;
}

bool isBeyond(void* most, int step)
{
    return step > *static_cast<const int*>(most);
}

/// The rise that the network asks of a pump at a mass flow [Pa]: solved with the pump taken out and its flow
/// given at its two nodes, in at most so many iterations. NaN when there is no answer.
double askedRise(const Network& network, std::size_t pump, double massFlow, double density,
                 int mostIterations)
{
    constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
    Network without = network;
    Element& element = without.elements[pump];
    element.isClosed = true;
    if (!addFlow(without.nodes[element.from], -massFlow, density) ||
        !addFlow(without.nodes[element.to], massFlow, density))
        return kNone;
    const Solution solution = solveNetwork(without, {isBeyond, &mostIterations});
    if (!solution.hasResults() || solution.outcome != Outcome::converged) return kNone;
    return riseOf(without, solution, element);
}

/// Empty when the network has too few answers.
std::vector<CurvePoint> solvedSystem(const Network& network, const Solution& solution,
                                     const Incidence& incidence, const PumpChart& chart)
{
    const Element& pump = network.elements[chart.element];
    if (!reachesPressure(network, incidence, pump.from, chart.element) ||
        !reachesPressure(network, incidence, pump.to, chart.element))
        return {};

    const int mostIterations = 100 + 4 * solution.iterations;
    const double density = solution.fluid.density;
    std::vector<CurvePoint> points;
    std::size_t missing = 0;
    for (const double share : kFlowShares) {
        CurvePoint point = chart.duty;
        if (share != 1.0) {
            point.volumeFlow = share * chart.duty.volumeFlow;
            point.pressure =
                askedRise(network, chart.element, point.volumeFlow * density, density, mostIterations);
        }
        if (std::isfinite(point.pressure))
            points.push_back(point);
        else if (++missing + kFewestSolvedPoints > kFlowShares.size())
            return {};
    }
    return points;
}

/// Where a walk along the largest flows ends, and the rise of the pumps that it passed.
struct Walk {
    std::size_t end = 0;
    double pumped = 0.0;  // [Pa]
};

/// Follows the largest flow from a node, down the flow (direction 1) or up it (-1), until it ends, meets a
/// given pressure, the target or a node a second time.
Walk follow(const Network& network, const Solution& solution, const Incidence& incidence, std::size_t from,
            std::size_t target, double direction, std::size_t pump)
{
    Walk walk{from, 0.0};
    std::vector<bool> isPassed(network.nodes.size(), false);
    while (walk.end != target && !isPassed[walk.end]) {
        isPassed[walk.end] = true;
        const std::optional<Boundary>& boundary = network.nodes[walk.end].boundary;
        if (boundary && boundary->pressure) break;
        std::size_t best = network.elements.size();
        double largest = 0.0;
        for (std::size_t i = incidence.start[walk.end]; i < incidence.start[walk.end + 1]; ++i) {
            const std::size_t e = incidence.list[i];
            const double away = network.elements[e].from == walk.end ? direction : -direction;
            const double flow = away * solution.massFlow[e];
            if (e == pump || !(flow > largest)) continue;
            largest = flow;
            best = e;
        }
        if (best == network.elements.size()) break;
        const Element& element = network.elements[best];
        if (element.kind != nullptr && element.kind->type == TAVELL_PUMP)
            walk.pumped += riseOf(network, solution, element);
        walk.end = element.from == walk.end ? element.to : element.from;
    }
    return walk;
}

/// The static lift of a pump [Pa]: what it has to raise without flow, judged by where the largest flows up and
/// down the network from it end.
double staticLift(const Network& network, const Solution& solution, const Incidence& incidence,
                  std::size_t pump)
{
    const Element& element = network.elements[pump];
    const double direction = solution.massFlow[pump] < 0.0 ? -1.0 : 1.0;
    const Walk down = follow(network, solution, incidence, element.to, element.from, direction, pump);
    if (down.end == element.from) return -down.pumped;
    const Walk up = follow(network, solution, incidence, element.from, element.to, -direction, pump);
    return liftBetween(network, solution, up.end, down.end) - down.pumped - up.pumped;
}

std::vector<CurvePoint> estimatedSystem(const Network& network, const Solution& solution,
                                        const Incidence& incidence, const PumpChart& chart)
{
    const double lift = staticLift(network, solution, incidence, chart.element);
    std::vector<CurvePoint> points;
    if (!std::isfinite(lift)) return points;
    for (int i = 0; i <= 28; ++i) {
        const double share = 0.05 * i;
        points.push_back(
            {share * chart.duty.volumeFlow, lift + (chart.duty.pressure - lift) * share * share});
    }
    return points;
}

}  // namespace

std::vector<PumpChart> pumpCharts(const Network& network, const Solution& solution, std::size_t solveBudget)
{
    std::vector<PumpChart> charts;
    if (!solution.hasResults()) return charts;
    for (std::size_t e = 0; e < network.elements.size() && charts.size() < kMostPumpCharts; ++e) {
        const Element& pump = network.elements[e];
        if (pump.kind == nullptr || pump.kind->type != TAVELL_PUMP || pump.isClosed) continue;
        const std::vector<CurvePoint>* points = curveOf(network, pump);
        if (points == nullptr || points->empty()) continue;

        PumpChart chart;
        chart.element = e;
        chart.given = *points;
        const double density = solution.fluid.density;
        const double reference = referenceDensityOf(network, pump).value_or(density);
        for (CurvePoint& point : chart.given)
            point.pressure *= density / reference;
        chart.duty = {solution.volumeFlow[e], riseOf(network, solution, pump)};
        chart.curve = lawCurve(PumpFit(pumpPoints(*points, reference), reference), points->back().volumeFlow,
                               chart.duty.volumeFlow, density);
        charts.push_back(std::move(chart));
    }

    if (charts.empty()) return charts;
    const Incidence incidence(network);
    const std::size_t cost = charts.size() * (kFlowShares.size() - 1) * network.elements.size();
    for (PumpChart& chart : charts) {
        if (!(chart.duty.volumeFlow > 0.0) || !std::isfinite(chart.duty.pressure)) continue;
        if (cost <= solveBudget) chart.system = solvedSystem(network, solution, incidence, chart);
        chart.systemCurve = SystemCurve::solved;
        if (!chart.system.empty()) continue;
        chart.system = estimatedSystem(network, solution, incidence, chart);
        chart.systemCurve = chart.system.empty() ? SystemCurve::none : SystemCurve::estimated;
    }
    return charts;
}

}  // namespace kit
