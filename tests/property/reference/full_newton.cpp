#include "full_newton.h"

#include <algorithm>
#include <cmath>

namespace reference
{

using support::Description;
using support::ElementData;
using support::NodeData;

namespace
{

constexpr int kMostSteps = 200;
constexpr int kMostHalvings = 30;
constexpr int kMostChanges = 200;
constexpr double kTolerance = 1e-11;
/// What an element at its limit lets pass beyond it, over the scale of flows, at the scale of pressures: enough for
/// a part behind shut elements to have a pressure, and so to show which of them has to open.
constexpr double kLeak = 1e-9;
/// The library's criterion leaves out pumps without a cross-section; what they miss is a few times that of the rest.
constexpr double kPumpMiss = 30.0;
constexpr double kRounding = 1e-12;  // of the usual flow, of the pressure
/// A thousand units in the last place of the pressures: what a flow needs to be resolved.
constexpr double kLeastDrop = 1e3 * 2.2e-16;
constexpr double kStartVelocity = 0.3;  // [m/s]

/// Mass flow [kg/s] that a boundary node asks of its element.
double flowOf(const Description& d, const NodeData& node, const ElementData& element)
{
    switch (node.constraint) {
    case TAVELL_CONSTRAINT_REYNOLDS:
        return node.value * d.viscosity * areaOf(element) / element.diameter;
    case TAVELL_CONSTRAINT_VELOCITY:
        return node.value * areaOf(element) * d.density;
    default:
        return node.value;
    }
}

bool isLimited(const ElementData& element)
{
    return element.type == TAVELL_CONTROL_VALVE || element.type == TAVELL_NON_RETURN;
}

double largestOf(const std::vector<double>& values)
{
    double largest = 0.0;
    for (const double value : values)
        largest = std::fmax(largest, std::fabs(value));
    return largest;
}

double squaresOf(const std::vector<double>& values)
{
    double sum = 0.0;
    for (const double value : values)
        sum += value * value;
    return sum;
}

}  // namespace

FullNewton::FullNewton(const Description& description)
    : m_description(description), m_isGiven(description.elements.size(), false),
      m_given(description.elements.size(), 0.0), m_stands(description.elements.size(), Stand::open),
      m_isPressure(description.nodes.size(), false), m_flowEndOf(description.nodes.size(), -1)
{
    const Description& d = m_description;
    std::vector<std::vector<int>> joined(d.nodes.size());
    for (std::size_t e = 0; e < d.elements.size(); ++e) {
        joined[static_cast<std::size_t>(d.elements[e].start)].push_back(static_cast<int>(e));
        joined[static_cast<std::size_t>(d.elements[e].end)].push_back(static_cast<int>(e));
        const double fixed = propertyOf(d.elements[e], TAVELL_ELEMENT_FIXED_MASS_FLOW);
        if (fixed != 0.0) {
            m_isGiven[e] = true;
            m_given[e] = fixed;
        }
        m_laws.push_back(lawOf(d, d.elements[e]));
    }

    double meanPressure = 0.0;
    int pressures = 0;
    for (std::size_t n = 0; n < d.nodes.size(); ++n) {
        const NodeData& node = d.nodes[n];
        m_potentials.push_back(heightPotential(d, node));
        const bool isBoundary = node.type != TAVELL_NODE_INTERNAL;
        if (!isBoundary && joined[n].size() != 1) continue;
        if (isBoundary && node.constraint == TAVELL_CONSTRAINT_PRESSURE) {
            m_isPressure[n] = true;
            m_pressureScale = std::fmax(m_pressureScale, std::fabs(node.value));
            meanPressure += node.value;
            ++pressures;
            continue;
        }
        const auto e = static_cast<std::size_t>(joined[n].front());
        if (!m_isGiven[e]) m_given[e] = isBoundary ? flowOf(d, node, d.elements[e]) : 0.0;
        m_isGiven[e] = true;
        if (joined[n].size() > 1) continue;
        m_flowEndOf[n] = static_cast<int>(e);
        m_laws[e] = lawAtFlowEnd(d, d.elements[e]);
    }
    const double lowest = *std::min_element(m_potentials.begin(), m_potentials.end());
    for (double& potential : m_potentials)
        potential -= lowest;

    m_start.pressures.assign(d.nodes.size(), meanPressure / std::max(1, pressures));
    for (std::size_t n = 0; n < d.nodes.size(); ++n)
        if (m_isPressure[n]) m_start.pressures[n] = d.nodes[n].value;
    for (std::size_t e = 0; e < d.elements.size(); ++e) {
        const ElementData& element = d.elements[e];
        const double start = element.type == TAVELL_PUMP ? d.density * element.curveFlows.back() / 2.0
                                                         : kStartVelocity * areaOf(element) * d.density;
        m_start.flows.push_back(m_isGiven[e] ? m_given[e] : start);
    }
    m_flowScale = meanFlow(m_start.flows);
}

bool FullNewton::isAtLimit(std::size_t element) const
{
    return !m_isGiven[element] && m_stands[element] != Stand::open;
}

bool FullNewton::hasGivenFlow(std::size_t element) const
{
    return m_isGiven[element] || m_stands[element] != Stand::open;
}

double FullNewton::givenFlow(std::size_t element) const
{
    if (m_isGiven[element]) return m_given[element];
    const ElementData& data = m_description.elements[element];
    if (data.type == TAVELL_NON_RETURN) return 0.0;
    const double limit = std::fabs(propertyOf(data, TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW));
    return m_stands[element] == Stand::atLimit ? limit : -limit;
}

double FullNewton::meanFlow(const std::vector<double>& flows) const
{
    double sum = 0.0;
    for (const double flow : flows)
        sum += std::fabs(flow);
    return sum / static_cast<double>(flows.size());
}

double FullNewton::drivingPressure(const State& state, std::size_t element) const
{
    const auto start = static_cast<std::size_t>(m_description.elements[element].start);
    const auto end = static_cast<std::size_t>(m_description.elements[element].end);
    return state.pressures[start] - state.pressures[end] +
           m_description.density * (m_potentials[start] - m_potentials[end]);
}

double FullNewton::meanPressure(std::size_t element) const
{
    const auto start = static_cast<std::size_t>(m_description.elements[element].start);
    const auto end = static_cast<std::size_t>(m_description.elements[element].end);
    return std::fabs(m_state.pressures[start] + m_state.pressures[end] +
                     m_description.density * (m_potentials[start] + m_potentials[end])) /
           2.0;
}

std::vector<double> FullNewton::residuals(const State& state) const
{
    const Description& d = m_description;
    std::vector<double> result(d.elements.size() + d.nodes.size(), 0.0);
    const auto lawMiss = [&](std::size_t e) {
        return (drivingPressure(state, e) - m_laws[e](state.flows[e])) / m_pressureScale;
    };
    double* const ofNode = result.data() + d.elements.size();
    for (std::size_t e = 0; e < d.elements.size(); ++e) {
        ofNode[d.elements[e].start] -= state.flows[e] / m_flowScale;
        ofNode[d.elements[e].end] += state.flows[e] / m_flowScale;
        result[e] = hasGivenFlow(e) ? (state.flows[e] - givenFlow(e)) / m_flowScale : lawMiss(e);
        if (isAtLimit(e)) result[e] -= kLeak * drivingPressure(state, e) / m_pressureScale;
    }
    for (std::size_t n = 0; n < d.nodes.size(); ++n) {
        if (m_isPressure[n])
            ofNode[n] = (state.pressures[n] - d.nodes[n].value) / m_pressureScale;
        else if (m_flowEndOf[n] >= 0)
            ofNode[n] = lawMiss(static_cast<std::size_t>(m_flowEndOf[n]));
    }
    return result;
}

DenseMatrix FullNewton::derivative(const std::vector<double>& slopes) const
{
    const Description& d = m_description;
    const std::size_t count = d.elements.size();
    DenseMatrix matrix(count + d.nodes.size());
    const auto addLaw = [&](std::size_t row, std::size_t e) {
        matrix.at(row, count + static_cast<std::size_t>(d.elements[e].start)) += 1.0 / m_pressureScale;
        matrix.at(row, count + static_cast<std::size_t>(d.elements[e].end)) -= 1.0 / m_pressureScale;
        matrix.at(row, e) -= slopes[e] / m_pressureScale;
    };
    for (std::size_t n = 0; n < d.nodes.size(); ++n) {
        if (m_isPressure[n])
            matrix.at(count + n, count + n) = 1.0 / m_pressureScale;
        else if (m_flowEndOf[n] >= 0)
            addLaw(count + n, static_cast<std::size_t>(m_flowEndOf[n]));
    }
    for (std::size_t e = 0; e < count; ++e) {
        if (hasGivenFlow(e))
            matrix.at(e, e) = 1.0 / m_flowScale;
        else
            addLaw(e, e);
        if (isAtLimit(e)) {
            matrix.at(e, count + static_cast<std::size_t>(d.elements[e].start)) -= kLeak / m_pressureScale;
            matrix.at(e, count + static_cast<std::size_t>(d.elements[e].end)) += kLeak / m_pressureScale;
        }
        const auto balance = [&](int node, double sign) {
            const auto n = static_cast<std::size_t>(node);
            if (!m_isPressure[n] && m_flowEndOf[n] < 0) matrix.at(count + n, e) += sign / m_flowScale;
        };
        balance(d.elements[e].start, -1.0);
        balance(d.elements[e].end, 1.0);
    }
    return matrix;
}

/// Slopes of the laws [Pa s/kg] by central differences. Near rest, where a slope may vanish, that over a small flow;
/// at a given flow, which does not change, none.
std::vector<double> FullNewton::slopesAt(const std::vector<double>& flows) const
{
    std::vector<double> slopes;
    const double least = 1e-9 * m_flowScale;
    for (std::size_t e = 0; e < flows.size(); ++e) {
        if (hasGivenFlow(e)) {
            slopes.push_back(0.0);
            continue;
        }
        const double h = std::fmax(1e-6 * std::fabs(flows[e]), least);
        slopes.push_back((m_laws[e](flows[e] + h) - m_laws[e](flows[e] - h)) / (2.0 * h));
    }
    return slopes;
}

bool FullNewton::newton()
{
    const std::size_t count = m_description.elements.size();
    m_state = m_start;
    std::vector<double> miss = residuals(m_state);
    for (int step = 0; step < kMostSteps; ++step) {
        const double rounding = std::fmax(1.0, largestOf(m_state.pressures) / m_pressureScale);
        if (step > 0 && largestOf(miss) < kTolerance * rounding) return true;
        DenseMatrix matrix = derivative(slopesAt(m_state.flows));
        if (!matrix.factorise()) return false;
        std::vector<double> change = miss;
        matrix.solve(change);

        State next = m_state;
        std::vector<double> missNext;
        double part = 1.0;
        for (int halving = 0; halving < kMostHalvings; ++halving, part /= 2.0) {
            for (std::size_t e = 0; e < count; ++e)
                next.flows[e] = m_isGiven[e] ? m_given[e] : m_state.flows[e] - part * change[e];
            for (std::size_t n = 0; n < next.pressures.size(); ++n)
                next.pressures[n] = m_state.pressures[n] - part * change[count + n];
            missNext = residuals(next);
            if (squaresOf(missNext) < (1.0 - 1e-4 * part) * squaresOf(miss)) break;
        }
        m_state = next;
        miss = missNext;
    }
    return false;
}

/// Changes the first control valve or non-return element that stands wrong; false when none does.
bool FullNewton::changeOneLimit()
{
    const Description& d = m_description;
    const double least = 1e-7 * m_flowScale;
    for (std::size_t e = 0; e < d.elements.size(); ++e) {
        const ElementData& element = d.elements[e];
        if (!isLimited(element) || m_isGiven[e]) continue;
        const double flow = m_state.flows[e];
        const double limit = std::fabs(propertyOf(element, TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW));
        if (m_stands[e] == Stand::open) {
            const bool tooFar = element.type == TAVELL_CONTROL_VALVE && flow > limit + least;
            const bool tooFarBack = flow < -least - (element.type == TAVELL_CONTROL_VALVE ? limit : 0.0);
            if (!tooFar && !tooFarBack) continue;
            m_stands[e] = tooFar ? Stand::atLimit : Stand::atReverseLimit;
            return true;
        }
        // what the pressures would drive beyond what the law takes at this flow
        const double beyond = drivingPressure(m_state, e) - m_laws[e](flow);
        const bool couldOpen = element.type == TAVELL_NON_RETURN || m_stands[e] == Stand::atReverseLimit
                                   ? beyond > 1e-9 * m_pressureScale
                                   : beyond < -1e-9 * m_pressureScale;
        if (!couldOpen) continue;
        m_stands[e] = Stand::open;
        return true;
    }
    return false;
}

bool FullNewton::solve()
{
    for (int change = 0; change < kMostChanges; ++change) {
        if (!newton()) return false;
        if (changeOneLimit()) continue;
        // beyond this the leaks, not the network, would be what meets the demands
        return std::none_of(m_state.pressures.begin(), m_state.pressures.end(),
                            [&](double p) { return std::fabs(p) > 1e3 * m_pressureScale; });
    }
    return false;
}

/// What a shut element or a valve at its limit separates from every given pressure has one only within bounds.
std::vector<bool> FullNewton::hasPressure() const
{
    const Description& d = m_description;
    std::vector<bool> reached = m_isPressure;
    const double rest = 1e-6 * meanFlow(m_state.flows);
    for (bool grows = true; grows;) {
        grows = false;
        for (std::size_t e = 0; e < d.elements.size(); ++e) {
            const auto start = static_cast<std::size_t>(d.elements[e].start);
            const auto end = static_cast<std::size_t>(d.elements[e].end);
            const bool isShut = d.elements[e].type == TAVELL_NON_RETURN && m_state.flows[e] < rest;
            if (isShut || isAtLimit(e) || reached[start] == reached[end]) continue;
            // a given flow has the pressure of the element's end alone
            if (m_isGiven[e] && m_flowEndOf[start] < 0 && m_flowEndOf[end] < 0) continue;
            reached[start] = reached[end] = true;
            grows = true;
        }
    }
    return reached;
}

State FullNewton::allowance(double criterion) const
{
    const Description& d = m_description;
    const std::size_t count = d.elements.size();
    std::vector<double> misses;  // [Pa]
    std::vector<double> slopes = slopesAt(m_state.flows);
    for (std::size_t e = 0; e < count; ++e) {
        const bool isPump = d.elements[e].type == TAVELL_PUMP;
        misses.push_back((isPump ? kPumpMiss : 1.0) * criterion * meanPressure(e));
        if (hasGivenFlow(e)) continue;
        double driven = 1e-12 * m_flowScale;
        const double atRest = m_laws[e](0.0);
        while (std::fabs(m_laws[e](driven) - atRest) < misses[e])
            driven *= 1.5;
        slopes[e] = std::fmax(slopes[e], misses[e] / driven);
    }
    DenseMatrix matrix = derivative(slopes);
    matrix.factorise();

    bool hasLeak = false;
    for (std::size_t e = 0; e < count; ++e)
        hasLeak = hasLeak || isAtLimit(e);
    State result{std::vector<double>(d.nodes.size(), 0.0), std::vector<double>(count, 0.0)};
    std::vector<double> ofMisses(count + d.nodes.size(), 0.0);
    std::vector<double> ofImbalances(count + d.nodes.size(), 0.0);
    const double imbalance = criterion * meanFlow(m_state.flows);
    for (std::size_t row = 0; row < count + d.nodes.size(); ++row) {
        std::vector<double> unit(count + d.nodes.size(), 0.0);
        const bool isNode = row >= count;
        const std::size_t n = isNode ? row - count : 0;
        if (isNode && m_isPressure[n]) continue;
        if (!isNode && m_isGiven[row]) continue;
        // a control valve or non-return element at its limit may let pass what counts as balanced
        const bool isLaw = isNode ? m_flowEndOf[n] >= 0 : !hasGivenFlow(row);
        const std::size_t e = isNode ? static_cast<std::size_t>(std::max(0, m_flowEndOf[n])) : row;
        unit[row] = isLaw ? misses[e] / m_pressureScale : imbalance / m_flowScale;
        matrix.solve(unit);
        for (std::size_t k = 0; k < unit.size(); ++k) {
            if (isLaw)
                ofMisses[k] = std::fmax(ofMisses[k], std::fabs(unit[k]));
            else
                ofImbalances[k] += std::fabs(unit[k]);
        }
    }
    for (std::size_t e = 0; e < count; ++e)
        result.flows[e] = ofMisses[e] + ofImbalances[e] + (hasLeak ? kLeak : kRounding) * m_flowScale;
    for (std::size_t n = 0; n < d.nodes.size(); ++n)
        result.pressures[n] =
            ofMisses[count + n] + ofImbalances[count + n] + kRounding * std::fabs(m_state.pressures[n]);
    return result;
}

bool FullNewton::isWithinReach() const
{
    const double counted = 1e-6 * meanFlow(m_state.flows);
    bool hasUnknown = false;
    for (std::size_t n = 0; n < m_isPressure.size(); ++n)
        hasUnknown = hasUnknown || (!m_isPressure[n] && m_flowEndOf[n] < 0);
    for (std::size_t e = 0; e < m_laws.size(); ++e) {
        if (hasGivenFlow(e) || std::fabs(m_state.flows[e]) < counted) continue;
        if (std::fabs(m_laws[e](m_state.flows[e])) < kLeastDrop * meanPressure(e)) return false;
    }
    return hasUnknown;
}

}  // namespace reference
