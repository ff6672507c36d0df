#include "global_gradient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "constants.h"
#include "element_hydraulics.h"
#include "friction_block.h"

namespace lcn
{

namespace
{

constexpr int kSmallestSystem = 300;     // free nodes from which the search pays
constexpr int kMostSteps = 20;           // Newton steps
constexpr double kClose = 1e-3;          // [-] of the flows: an iteration gains from such a start
constexpr double kSettled = 1e-9;        // [-] of the flows: further steps gain nothing
constexpr double kSmallestShare = 1e-6;  // [-] of the mean flow: slopes are those of at least this flow

/// An open element that is not in the sweep; its law is read from its record.
struct Other {
    int start, end, element;
    double mass;  // [kg/s]
    double loss;  // [Pa]
};

/// A law at a flow.
struct Law {
    double loss;   // [Pa]
    double slope;  // [Pa s/kg]
};

/// Whether an element keeps its flow: it is fixed, or carries a flow target, or nothing.
bool keepsFlow(const lcnNET_elems& elem)
{
    return elem.fix != 0 || elem.FlowLimited != 0 || !hasLaw(elem.type);
}

double keptFlow(const lcnNET_elems& elem)
{
    return elem.fix != 0 || hasLaw(elem.type) ? elem.FixedFlow : 0.0;
}

class GlobalGradient
{
public:
    GlobalGradient(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                   PipeSweep& pipes, NodeEquations& equations)
        : m_nodes(nodes), m_elements(elements), m_var(var), m_pipes(pipes), m_equations(equations)
    {
        readNodes();
        readOthers();
    }

    NearStart search(PressureSystem& system, std::vector<double>& corrections, CancelCallback cancel);

private:
    void readNodes();
    void readOthers();
    Law lawOf(const Other& other) const;

    /// Takes the flows that the last solution gives, or those of the start, and assembles the equations about
    /// them. Returns the change of the flows that the laws still ask for, in parts of the flows.
    double sweep(bool isStart);
    void sweepPipes(bool isStart);
    void sweepOthers(bool isStart);
    template <typename Element> double difference(const Element& element) const;
    template <typename Element> double flowOf(const Element& element, double loss) const;
    template <typename Element> void assemble(const Element& element, const Law& law);
    void findNodesWithoutConductance();
    bool solve(PressureSystem& system, std::vector<double>& corrections);
    void write();

    const NodeArray& m_nodes;
    const ElementArray& m_elements;
    const lcnNET_var& m_var;
    PipeSweep& m_pipes;
    NodeEquations& m_equations;

    std::vector<double> m_pressure;    // by node [Pa]
    std::vector<double> m_keptInflow;  // by node [kg/s] from elements that keep their flow
    std::vector<Other> m_others;
    double m_totalFlow = 0.0;     // [kg/s] sum of |m| of the last sweep
    double m_missingFlow = 0.0;   // [kg/s] sum of the changes that the laws ask for
    double m_smallestFlow = 0.0;  // [kg/s] of which slopes are taken
};

void GlobalGradient::readNodes()
{
    m_pressure.assign(static_cast<std::size_t>(m_var.NodeTotal) + 1, 0.0);
    for (int i = 1; i <= m_var.NodeTotal; ++i)
        m_pressure[static_cast<std::size_t>(i)] = m_nodes[i].Pressure;
    m_keptInflow = m_pipes.givenInflow();
}

void GlobalGradient::readOthers()
{
    for (const int e : m_pipes.others()) {
        const lcnNET_elems& elem = m_elements[e];
        const int start = elem.LocalStartNode;
        const int end = elem.LocalEndNode;
        if (start == end || (m_nodes[start].flag != kFreeNode && m_nodes[end].flag != kFreeNode)) continue;
        m_equations.coef[static_cast<std::size_t>(e)] = 0.0;
        if (keepsFlow(elem)) {
            m_keptInflow[static_cast<std::size_t>(start)] -= keptFlow(elem);
            m_keptInflow[static_cast<std::size_t>(end)] += keptFlow(elem);
        } else {
            m_others.push_back({start, end, e, elem.Massflow, 0.0});
        }
    }
}

Law GlobalGradient::lawOf(const Other& other) const
{
    lcnNET_elems& elem = m_elements[other.element];
    const double kept = elem.Massflow;
    const double keptFriction = elem.friction;
    elem.Massflow = other.mass;
    LinearisedLaw law;
    linearise(m_nodes, m_elements, m_var, other.element, law);
    elem.Massflow = kept;
    elem.friction = keptFriction;

    const double rho = elem.density;
    const double Q = other.mass / rho;
    const double magnitude = std::fmax(std::fabs(Q), m_smallestFlow / rho);
    if (isCurve(elem.type)) return {law.c0 + law.c1 * Q, law.c1 / rho};
    if (isQuadratic(elem.type)) return {law.r2 * rho * Q * std::fabs(Q), 2.0 * law.r2 * magnitude};
    const bool isGeneral = elem.type == kGeneralLoss;
    const double n = isGeneral ? elem.Param4 : kHazenWilliamsExponent;
    const double a = isGeneral ? law.c1 * std::pow(rho, elem.Param1 - 1.0) : law.c1;
    const double ofPower = a * std::pow(magnitude, n - 1.0);
    return {rho * Q * (ofPower + law.r2 * std::fabs(Q)), n * ofPower + 2.0 * law.r2 * magnitude};
}

template <typename Element> double GlobalGradient::difference(const Element& element) const
{
    return m_pressure[static_cast<std::size_t>(element.start)] -
           m_pressure[static_cast<std::size_t>(element.end)];
}

/// The flow [kg/s] at which the law, as it was linearised last, meets the new pressures.
template <typename Element> double GlobalGradient::flowOf(const Element& element, double loss) const
{
    const double conductance = m_equations.coef[static_cast<std::size_t>(element.element)];
    return element.mass + conductance * (difference(element) - loss);
}

template <typename Element> void GlobalGradient::assemble(const Element& element, const Law& law)
{
    const double conductance = std::fmin(1.0 / law.slope, kLargeConductance);
    const double missing = conductance * (difference(element) - law.loss);
    const double linearised = element.mass + missing;
    m_totalFlow += std::fabs(element.mass);
    m_missingFlow += std::fabs(missing);

    const auto start = static_cast<std::size_t>(element.start);
    const auto end = static_cast<std::size_t>(element.end);
    m_equations.coef[static_cast<std::size_t>(element.element)] = conductance;
    m_equations.diag[start] += conductance;
    m_equations.diag[end] += conductance;
    m_equations.rhs[start] -= linearised;
    m_equations.rhs[end] += linearised;
}

/// During the search a pipe's estimate is its loss [Pa]. The first step goes from rest along the line through the
/// loss at the estimate that the pipe came with: no direction is favoured before the pressures give one.
void GlobalGradient::sweepPipes(bool isStart)
{
    std::array<double, kFrictionBlock> magnitude{}, Re{}, relRough{}, laminar{}, f{}, slope{};
    std::vector<PipeSweep::Pipe>& pipes = m_pipes.pipes();
    for (std::size_t first = 0; first < pipes.size(); first += kFrictionBlock) {
        const std::size_t count = std::min<std::size_t>(kFrictionBlock, pipes.size() - first);
        for (std::size_t i = 0; i < count; ++i) {
            PipeSweep::Pipe& pipe = pipes[first + i];
            pipe.mass = isStart ? 0.0 : flowOf(pipe, pipe.estimate);
            magnitude[i] = isStart ? pipe.estimate : std::fmax(std::fabs(pipe.mass), m_smallestFlow);
            Re[i] = pipe.toRe * magnitude[i];
            relRough[i] = pipe.relRough;
            laminar[i] = pipe.laminar;
        }
        frictionLawBlock(m_var.FrictionMethod, Re.data(), relRough.data(), laminar.data(), f.data(),
                         slope.data(), static_cast<int>(count));
        for (std::size_t i = 0; i < count; ++i) {
            PipeSweep::Pipe& pipe = pipes[first + i];
            const double ofFriction = pipe.friction * f[i] * magnitude[i];
            const double secant = ofFriction + pipe.minor * magnitude[i];
            pipe.estimate = secant * pipe.mass;
            assemble(pipe, {pipe.estimate, isStart ? secant : 2.0 * secant + ofFriction * slope[i]});
        }
    }
}

void GlobalGradient::sweepOthers(bool isStart)
{
    for (Other& other : m_others) {
        if (!isStart) other.mass = flowOf(other, other.loss);
        const Law law = lawOf(other);
        other.loss = law.loss;
        assemble(other, law);
    }
}

double GlobalGradient::sweep(bool isStart)
{
    std::fill(m_equations.diag.begin(), m_equations.diag.end(), 0.0);
    std::copy(m_keptInflow.begin(), m_keptInflow.end(), m_equations.rhs.begin());
    m_totalFlow = 0.0;
    m_missingFlow = 0.0;
    sweepPipes(isStart);
    sweepOthers(isStart);
    m_smallestFlow = kSmallestShare * m_totalFlow / m_var.ElemTotal;
    return m_missingFlow / std::fmax(m_totalFlow, kTiny);
}

/// Free nodes between given flows only; they stay the same ones through the search.
void GlobalGradient::findNodesWithoutConductance()
{
    m_equations.withoutConductance.clear();
    for (int i = 1; i <= m_var.NodeTotal; ++i)
        if (m_nodes[i].flag == kFreeNode && m_equations.diag[static_cast<std::size_t>(i)] < kTiny)
            m_equations.withoutConductance.push_back(i);
}

/// Corrects the pressures. False when the equations have no solution.
bool GlobalGradient::solve(PressureSystem& system, std::vector<double>& corrections)
{
    if (!system.solveFast(m_equations, corrections)) return false;
    for (std::size_t i = 1; i < m_pressure.size(); ++i)
        m_pressure[i] += corrections[i];
    return true;
}

void GlobalGradient::write()
{
    for (int i = 1; i <= m_var.NodeTotal; ++i)
        m_nodes[i].Pressure = m_pressure[static_cast<std::size_t>(i)];
    for (const Other& other : m_others)
        m_elements[other.element].Massflow = other.mass;
    m_pipes.updateFriction(m_var);
}

NearStart GlobalGradient::search(PressureSystem& system, std::vector<double>& corrections,
                                 CancelCallback cancel)
{
    // what each element may miss for their sum to meet the criterion
    const double settled = std::fmin(kSettled, 2.0 * m_var.Concrit / m_var.ElemTotal);
    sweep(true);
    findNodesWithoutConductance();
    double missing = 1.0;
    for (int step = 0; step < kMostSteps && missing > settled; ++step) {
        if (cancel != nullptr && cancel()) return NearStart::kCancelled;
        if (!solve(system, corrections)) return NearStart::kNotFound;
        missing = sweep(false);
        if (!std::isfinite(missing) || !std::isfinite(m_totalFlow)) return NearStart::kNotFound;
    }
    if (missing > kClose) return NearStart::kNotFound;
    write();
    return NearStart::kFound;
}

}  // namespace

NearStart startNearSolution(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                            PipeSweep& pipes, PressureSystem& system, NodeEquations& equations,
                            std::vector<double>& corrections, CancelCallback cancel)
{
    if (!pipes.isUsed() || var.Debug || system.size() < kSmallestSystem) return NearStart::kNotTried;
    std::fill(corrections.begin(), corrections.end(), 0.0);
    const NearStart outcome =
        GlobalGradient(nodes, elements, var, pipes, equations).search(system, corrections, cancel);
    if (outcome != NearStart::kFound) pipes.readFlows(elements, var);
    return outcome;
}

}  // namespace lcn
