#include "flow_limits.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "element_hydraulics.h"
#include "node_sets.h"
#include "preparation.h"

namespace lcn
{

namespace
{

constexpr double kSettledError = 1e-3;       // [-] mass error below which a decision can be made
constexpr int kIterationsBetween = 3;        // changes of the set
constexpr double kPressureTolerance = 1e-9;  // [-] of the largest pressure
constexpr double kReverseTolerance = 1e-6;   // [-] of the average flow
constexpr double kReopenedFlow = 0.001;      // [-] of the average flow
constexpr double kBalanceTolerance = 1e-9;   // [-] of the largest flow
constexpr int kMostReleases = 50;   // of one element: then it stays fixed, and the solve does not converge
constexpr int kFixedPressures = 0;  // the set that stands for all fixed pressures

double largestPressure(const NodeArray& nodes, const lcnNET_var& var)
{
    double largest = 0.0;
    for (int i = 1; i <= var.NodeTotal; ++i)
        largest = std::fmax(largest, std::fabs(nodes[i].Pressure));
    return largest;
}

double drop(const NodeArray& nodes, const lcnNET_elems& elem)
{
    return nodes[elem.LocalStartNode].Pressure - nodes[elem.LocalEndNode].Pressure;
}

/// A shut non-return element opens when pressure pushes forward; a control valve at its limit when its own
/// resistance alone takes more than the pressure difference, so that it carries less than the limit.
bool hasNoReasonToBeFixed(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e,
                          double pressureTolerance)
{
    const lcnNET_elems& elem = elements[e];
    if (elem.type == kNonReturn) return drop(nodes, elem) > pressureTolerance;
    if (elem.FixedFlow == 0.0) return false;
    const double alongFlow = elem.FixedFlow > 0.0 ? drop(nodes, elem) : -drop(nodes, elem);
    return alongFlow < std::fabs(pressureLoss(nodes, elements, var, e, +1));
}

/// How far a flow is beyond what the element allows, in units of that; 0.0 when it is allowed.
double violation(const lcnNET_elems& elem, double averageFlow)
{
    const double infinite = std::numeric_limits<double>::infinity();
    if (elem.type == kNonReturn) {
        const double allowed = kReverseTolerance * averageFlow;
        if (!(elem.Massflow < -allowed)) return 0.0;
        return allowed > 0.0 ? -elem.Massflow / allowed : infinite;
    }
    const double limit = std::fabs(elem.FixedFlow);
    const double flow = std::fabs(elem.Massflow);
    if (!(flow > limit)) return 0.0;
    return limit > 0.0 ? flow / limit : infinite;
}

/// Of the violations, worst first, those that can be fixed one after the other without cutting a free node
/// off from the fixed pressures that it is joined to. Passing over an element because it is the last link is
/// the reverse-delete form of a spanning tree (Kruskal 1956): the links to keep are found by adding the
/// violators back, mildest first.
std::vector<int> fixable(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                         const std::vector<char>& isViolator, const std::vector<int>& worstFirst)
{
    NodeSets withViolators(var.NodeTotal);
    NodeSets sets(var.NodeTotal);
    for (int i = 1; i <= var.NodeTotal; ++i) {
        if (nodes[i].flag != kPressureBoundary) continue;
        withViolators.join(i, kFixedPressures);
        sets.join(i, kFixedPressures);
    }
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const lcnNET_elems& elem = elements[e];
        if (!hasLaw(elem.type) || elem.fix != 0 || elem.FlowLimited != 0) continue;
        withViolators.join(elem.LocalStartNode, elem.LocalEndNode);
        if (!isViolator[static_cast<std::size_t>(e)]) sets.join(elem.LocalStartNode, elem.LocalEndNode);
    }

    std::vector<int> result;
    for (auto e = worstFirst.rbegin(); e != worstFirst.rend(); ++e) {
        const lcnNET_elems& elem = elements[*e];
        const bool joins = sets.join(elem.LocalStartNode, elem.LocalEndNode);
        const bool reachesPressure =
            withViolators.find(elem.LocalStartNode) == withViolators.find(kFixedPressures);
        if (!joins || !reachesPressure) result.push_back(*e);
    }
    std::reverse(result.begin(), result.end());
    return result;
}

}  // namespace

void FlowLimits::prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    m_limited.clear();
    m_valves.clear();
    m_lastChange = 0;
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        if (elem.type != kControlValve && elem.type != kNonReturn) continue;
        m_valves.push_back(e);
        if (hasFlowEnd(nodes, elem)) continue;
        elem.FlowLimited = 0;
        m_limited.push_back({e, 0});
    }
}

bool FlowLimits::update(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int n,
                        double massError, double averageFlow)
{
    m_decided = std::fabs(massError) < kSettledError && n - m_lastChange >= kIterationsBetween;
    if (m_limited.empty() || !m_decided) return false;
    const bool changed =
        release(nodes, elements, var, averageFlow) || mark(nodes, elements, var, averageFlow);
    if (changed) m_lastChange = n;
    return changed;
}

void FlowLimits::open(Limited& limited, lcnNET_elems& elem, double averageFlow)
{
    elem.fix = 0;
    elem.FlowLimited = 0;
    elem.Massflow = elem.type == kNonReturn ? kReopenedFlow * averageFlow : elem.FixedFlow / 2.0;
    ++limited.releases;
}

bool FlowLimits::release(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                         double averageFlow)
{
    const double tolerance = kPressureTolerance * largestPressure(nodes, var);
    bool released = false;
    for (Limited& limited : m_limited) {
        lcnNET_elems& elem = elements[limited.element];
        if (elem.fix == 0) continue;
        if (!hasNoReasonToBeFixed(nodes, elements, var, limited.element, tolerance)) continue;
        if (limited.releases >= kMostReleases) {
            m_decided = false;
            continue;
        }
        open(limited, elem, averageFlow);
        released = true;
    }
    return released;
}

bool FlowLimits::mark(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                      double averageFlow)
{
    std::vector<Violation> violations;
    for (const Limited& limited : m_limited) {
        const lcnNET_elems& elem = elements[limited.element];
        if (elem.fix != 0) continue;
        const double ratio = violation(elem, averageFlow);
        if (ratio > 0.0) violations.push_back({limited.element, ratio});
    }
    if (violations.empty()) return false;
    std::stable_sort(violations.begin(), violations.end(),
                     [](const Violation& l, const Violation& r) { return l.ratio > r.ratio; });

    std::vector<char> isViolator(static_cast<std::size_t>(var.ElemTotal) + 1, 0);
    std::vector<int> worstFirst;
    for (const Violation& violator : violations) {
        isViolator[static_cast<std::size_t>(violator.element)] = 1;
        worstFirst.push_back(violator.element);
    }
    std::vector<int> marked = fixable(nodes, elements, var, isViolator, worstFirst);
    if (marked.empty()) {
        marked.push_back(worstFirst.front());
        openSurplus(nodes, elements, var, worstFirst.front(), averageFlow);
    }
    for (const int e : marked)
        elements[e].FlowLimited = 1;
    return true;
}

/// The last link of a part is about to be fixed. When the flows that then bound the part do not balance, the
/// limit of a control valve that feeds the surplus (or draws the deficit) cannot be met, or a shut non-return
/// element has to make up for what is missing: the one that gets there first opens again.
void FlowLimits::openSurplus(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                             int lastLink, double averageFlow)
{
    NodeSets sets(var.NodeTotal);
    for (int i = 1; i <= var.NodeTotal; ++i)
        if (nodes[i].flag == kPressureBoundary) sets.join(i, kFixedPressures);
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const lcnNET_elems& elem = elements[e];
        if (e != lastLink && hasLaw(elem.type) && elem.fix == 0 && elem.FlowLimited == 0)
            sets.join(elem.LocalStartNode, elem.LocalEndNode);
    }
    const lcnNET_elems& link = elements[lastLink];
    const bool startIsReached = sets.find(link.LocalStartNode) == sets.find(kFixedPressures);
    const int part = sets.find(startIsReached ? link.LocalEndNode : link.LocalStartNode);

    // [kg/s] into the part through element e once the link is fixed
    const auto inflow = [&](int e) {
        const lcnNET_elems& elem = elements[e];
        double flow = elem.fix != 0 ? elem.FixedFlow : 0.0;
        if (e == lastLink && elem.type == kControlValve) flow = std::copysign(elem.FixedFlow, elem.Massflow);
        return ((sets.find(elem.LocalEndNode) == part) - (sets.find(elem.LocalStartNode) == part)) * flow;
    };
    double net = 0.0;
    double largest = 0.0;
    for (int e = 1; e <= var.ElemTotal; ++e) {
        net += inflow(e);
        largest = std::fmax(largest, std::fabs(inflow(e)));
    }
    if (!(std::fabs(net) > kBalanceTolerance * largest)) return;

    // Cut off, the part's pressure rises with a surplus and falls with a deficit until an element has no reason left
    // to be fixed. The first to get there is the one with the least pressure [Pa] to go.
    const auto relieves = [&](const lcnNET_elems& elem, int e) {
        if (elem.type == kControlValve) return inflow(e) * net > 0.0;
        const int inward = (sets.find(elem.LocalEndNode) == part) - (sets.find(elem.LocalStartNode) == part);
        return inward * net < 0.0;
    };
    const auto pressureToGo = [&](const lcnNET_elems& elem, int e) {
        if (elem.type == kNonReturn) return -drop(nodes, elem);
        const double alongFlow = elem.FixedFlow > 0.0 ? drop(nodes, elem) : -drop(nodes, elem);
        return alongFlow - std::fabs(pressureLoss(nodes, elements, var, e, +1));
    };
    Limited* first = nullptr;
    double least = 0.0;
    for (Limited& limited : m_limited) {
        const lcnNET_elems& elem = elements[limited.element];
        if (limited.element == lastLink || elem.fix == 0 || limited.releases >= kMostReleases) continue;
        if (!relieves(elem, limited.element)) continue;
        const double toGo = pressureToGo(elem, limited.element);
        if (first != nullptr && toGo >= least) continue;
        first = &limited;
        least = toGo;
    }
    if (first == nullptr) return;
    open(*first, elements[first->element], averageFlow);
}

void FlowLimits::finish(const ElementArray& elements) const
{
    for (const int e : m_valves)
        elements[e].FlowLimited = 1;
}

}  // namespace lcn
