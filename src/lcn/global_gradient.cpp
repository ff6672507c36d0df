#include "global_gradient.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

#include "constants.h"
#include "element_hydraulics.h"
#include "friction_block.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

constexpr int kSmallestSystem = 300;         // free nodes from which the search pays
constexpr int kMostSteps = 20;               // Newton steps
constexpr double kClose = 1e-3;              // [-] of the flows: an iteration gains from such a start
constexpr double kSettled = 1e-9;            // [-] of the flows: further steps gain nothing
constexpr double kStartVelocity = 0.5;       // [m/s] that gives the first step its resistances
constexpr double kSmallestShare = 1e-6;      // [-] of the mean flow: slopes are those of at least this flow
constexpr double kHazenWilliamsPower = 1.85;
constexpr int kSpecifiedLosses = 0;  // lcnNET_var::Minor
constexpr int kNoLosses = 4;

/// Where an element stands in the equations.
struct Place {
    int start, end;  // equations; 0 is any node that is not in the system
    int slot;        // of its conductance
    double outside;  // [Pa] fixed pressure at its start less fixed pressure at its end; 0 of free nodes
};

/// An element on its way to the solution.
struct State {
    Place place;
    double mass;  // [kg/s]
    double loss;  // [Pa] pressure drop of its law at that flow
};

/// A Darcy-Weisbach element: loss = (friction f + minor) m |m|.
struct Pipe : State {
    double toRe;       // [s/kg] Re = toRe |m|
    double relRough;   // [-]
    double laminar;    // [-] Cl of f = Cl / Re
    double friction;   // [Pa s2/kg2] L / (2 D rho A^2)
    double minor;      // [Pa s2/kg2] K / (2 rho A^2)
};

/// An element of another kind, whose law is read from its record.
struct Other : State {
    int element;
};

/// A law at a flow.
struct Law {
    double loss;   // [Pa]
    double slope;  // [Pa s/kg]
};

bool isTried(const lcnNET_var& var, double dt, int freeNodes)
{
    return freeNodes >= kSmallestSystem && !var.Debug && !var.compressible && dt > kSteadyTimeStep &&
           var.flowWeight == 1.0 && (var.Minor == kSpecifiedLosses || var.Minor == kNoLosses);
}

/// Whether an element keeps its flow: it is fixed, or carries a flow target, or nothing.
bool keepsFlow(const lcnNET_elems& elem)
{
    return elem.fix != 0 || elem.FlowLimited != 0 || !hasLaw(elem.type);
}

double keptFlow(const lcnNET_elems& elem)
{
    return elem.fix != 0 || hasLaw(elem.type) ? elem.FixedFlow : 0.0;
}

/// The search and its working arrays. Equations are numbered as in the system, from 1; entry 0 of the arrays
/// by equation collects what concerns no free node.
class GlobalGradient
{
public:
    GlobalGradient(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                   PressureSystem& system)
        : m_nodes(nodes), m_elements(elements), m_var(var), m_system(system)
    {
        readPressures();
        readElements();
    }

    NearStart search(CancelCallback cancel);

private:
    void readPressures();
    void readElements();
    double outsidePressure(const lcnNET_elems& elem, int start, int end) const;
    Pipe pipeOf(const lcnNET_elems& elem, const Place& place) const;
    Law lawOf(const Other& other, double mass) const;

    /// Takes the flows that the last solution gives, or those of the start, and assembles the equations about
    /// them. Returns the relative change of the flows that the laws still ask for.
    double sweep(bool isStart);
    void sweepPipes(bool isStart);
    void sweepOthers(bool isStart);
    double difference(const Place& place) const;
    void takeFlow(State& state) const;
    void assemble(const State& state, const Law& law);
    bool solve();
    void write() const;

    const NodeArray& m_nodes;
    const ElementArray& m_elements;
    const lcnNET_var& m_var;
    PressureSystem& m_system;

    std::vector<double> m_pressure;     // per equation [Pa]
    std::vector<double> m_inflow;       // per equation [kg/s] net; the pressure correction [Pa] once solved
    std::vector<double> m_diagonal;     // per equation [kg/(s Pa)]
    std::vector<double> m_keptInflow;   // per equation [kg/s] from elements that keep their flow
    std::vector<double> m_conductance;  // per slot [kg/(s Pa)]; the system's links come first
    std::vector<Pipe> m_pipes;
    std::vector<int> m_pipeElements;
    std::vector<Other> m_others;
    double m_totalFlow = 0.0;     // [kg/s] sum of |m| of the last sweep
    double m_missingFlow = 0.0;   // [kg/s] sum of the changes that the laws ask for
    double m_smallestFlow = 0.0;  // [kg/s] of which slopes are taken
};

void GlobalGradient::readPressures()
{
    const auto size = static_cast<std::size_t>(m_system.size()) + 1;
    m_pressure.assign(size, 0.0);
    m_keptInflow.assign(size, 0.0);
    m_inflow.resize(size);
    m_diagonal.resize(size);
    for (int r = 1; r <= m_system.size(); ++r)
        m_pressure[static_cast<std::size_t>(r)] = m_nodes[m_system.nodeOf(r)].Pressure;
}

void GlobalGradient::readElements()
{
    m_pipes.reserve(static_cast<std::size_t>(m_var.ElemTotal));
    m_pipeElements.reserve(static_cast<std::size_t>(m_var.ElemTotal));
    int nextLink = 0;
    int nextOneSided = m_system.links();
    for (int e = 1; e <= m_var.ElemTotal; ++e) {
        const lcnNET_elems& elem = m_elements[e];
        const int start = m_system.equationOf(elem.LocalStartNode);
        const int end = m_system.equationOf(elem.LocalEndNode);
        const bool isLink = start != 0 && end != 0;
        if (start == end) continue;  // of no equation, or a loop from a node to itself
        const int slot = isLink ? nextLink++ : nextOneSided++;
        if (keepsFlow(elem)) {
            m_keptInflow[static_cast<std::size_t>(start)] -= keptFlow(elem);
            m_keptInflow[static_cast<std::size_t>(end)] += keptFlow(elem);
            continue;
        }
        const Place place{start, end, slot, outsidePressure(elem, start, end)};
        if (isDarcyWeisbach(elem.type)) {
            m_pipes.push_back(pipeOf(elem, place));
            m_pipeElements.push_back(e);
        } else {
            m_others.push_back({{place, 0.0, 0.0}, e});
        }
    }
    m_conductance.assign(static_cast<std::size_t>(nextOneSided), 0.0);
}

double GlobalGradient::outsidePressure(const lcnNET_elems& elem, int start, int end) const
{
    return (start == 0 ? m_nodes[elem.LocalStartNode].Pressure : 0.0) -
           (end == 0 ? m_nodes[elem.LocalEndNode].Pressure : 0.0);
}

/// Weisbach (1845), Darcy (1857), in terms of the mass flow.
Pipe GlobalGradient::pipeOf(const lcnNET_elems& elem, const Place& place) const
{
    const double dynamic = 0.5 / (elem.density * elem.Area * elem.Area);  // [Pa s2/kg2] of rho V^2 / 2
    Pipe pipe{};
    pipe.place = place;
    pipe.mass = kStartVelocity * elem.density * elem.Area;
    pipe.toRe = elem.diam / (elem.Area * viscosity(m_var, elem.Temperature));
    pipe.relRough = elem.rough / elem.diam;
    pipe.laminar = elem.LaminarFactor;
    pipe.friction = elem.length / elem.diam * dynamic;
    pipe.minor = elem.k * dynamic;
    return pipe;
}

Law GlobalGradient::lawOf(const Other& other, double mass) const
{
    lcnNET_elems& elem = m_elements[other.element];
    const double kept = elem.Massflow;
    elem.Massflow = mass;
    LinearisedLaw law;
    linearise(m_nodes, m_elements, m_var, other.element, law);
    elem.Massflow = kept;

    const double rho = elem.density;
    const double Q = mass / rho;
    const double magnitude = std::fmax(std::fabs(Q), m_smallestFlow / rho);
    if (isCurve(elem.type)) return {law.c0 + law.c1 * Q, law.c1 / rho};
    if (isQuadratic(elem.type)) return {law.r2 * rho * Q * std::fabs(Q), 2.0 * law.r2 * magnitude};
    const bool isGeneral = elem.type == kGeneralLoss;
    const double n = isGeneral ? elem.Param4 : kHazenWilliamsPower;
    const double a = isGeneral ? law.c1 * std::pow(rho, elem.Param1 - 1.0) : law.c1;
    const double ofPower = a * std::pow(magnitude, n - 1.0);
    return {rho * Q * (ofPower + law.r2 * std::fabs(Q)), n * ofPower + 2.0 * law.r2 * magnitude};
}

double GlobalGradient::difference(const Place& place) const
{
    return m_pressure[static_cast<std::size_t>(place.start)] - m_pressure[static_cast<std::size_t>(place.end)] +
           place.outside;
}

/// The flow at which the law, as it was linearised, meets the new pressures.
void GlobalGradient::takeFlow(State& state) const
{
    const double conductance = m_conductance[static_cast<std::size_t>(state.place.slot)];
    state.mass += conductance * (difference(state.place) - state.loss);
}

void GlobalGradient::assemble(const State& state, const Law& law)
{
    const double conductance = std::fmin(1.0 / law.slope, kLargeConductance);
    const double missing = conductance * (difference(state.place) - law.loss);
    const double linearised = state.mass + missing;
    m_totalFlow += std::fabs(state.mass);
    m_missingFlow += std::fabs(missing);

    const auto start = static_cast<std::size_t>(state.place.start);
    const auto end = static_cast<std::size_t>(state.place.end);
    m_conductance[static_cast<std::size_t>(state.place.slot)] = conductance;
    m_diagonal[start] += conductance;
    m_diagonal[end] += conductance;
    m_inflow[start] -= linearised;
    m_inflow[end] += linearised;
}

void GlobalGradient::sweepPipes(bool isStart)
{
    std::array<double, kFrictionBlock> Re{}, relRough{}, laminar{}, f{}, slope{};
    for (std::size_t first = 0; first < m_pipes.size(); first += kFrictionBlock) {
        const std::size_t count = std::min<std::size_t>(kFrictionBlock, m_pipes.size() - first);
        for (std::size_t i = 0; i < count; ++i) {
            Pipe& pipe = m_pipes[first + i];
            if (!isStart) takeFlow(pipe);
            Re[i] = pipe.toRe * std::fmax(std::fabs(pipe.mass), m_smallestFlow);
            relRough[i] = pipe.relRough;
            laminar[i] = pipe.laminar;
        }
        frictionLawBlock(m_var.FrictionMethod, Re.data(), relRough.data(), laminar.data(), f.data(), slope.data(),
                         static_cast<int>(count));
        for (std::size_t i = 0; i < count; ++i) {
            Pipe& pipe = m_pipes[first + i];
            const double magnitude = std::fmax(std::fabs(pipe.mass), m_smallestFlow);
            const double ofFriction = pipe.friction * f[i];
            const double secant = (ofFriction + pipe.minor) * magnitude;
            // at the start a line from rest: the flow has no direction yet
            if (isStart) pipe.mass = 0.0;
            pipe.loss = secant * pipe.mass;
            const double slopeOfLoss = isStart ? secant : 2.0 * secant + ofFriction * magnitude * slope[i];
            assemble(pipe, {pipe.loss, slopeOfLoss});
        }
    }
}

void GlobalGradient::sweepOthers(bool isStart)
{
    for (Other& other : m_others) {
        if (isStart)
            other.mass = m_elements[other.element].Massflow;
        else
            takeFlow(other);
        const Law law = lawOf(other, other.mass);
        other.loss = law.loss;
        assemble(other, law);
    }
}

double GlobalGradient::sweep(bool isStart)
{
    std::fill(m_diagonal.begin(), m_diagonal.end(), 0.0);
    std::copy(m_keptInflow.begin(), m_keptInflow.end(), m_inflow.begin());
    m_totalFlow = 0.0;
    m_missingFlow = 0.0;
    sweepPipes(isStart);
    sweepOthers(isStart);
    const auto count = static_cast<double>(m_pipes.size() + m_others.size());
    m_smallestFlow = kSmallestShare * m_totalFlow / std::fmax(count, 1.0);
    return m_missingFlow / std::fmax(m_totalFlow, kTiny);
}

/// Corrects the pressures. False when the equations have no solution.
bool GlobalGradient::solve()
{
    for (double& conductance : m_diagonal)
        if (conductance < kTiny) conductance = kLargeConductance;  // a node between given flows
    if (!m_system.solve(m_diagonal.data(), m_conductance.data(), m_inflow.data())) return false;
    m_inflow[0] = 0.0;
    for (std::size_t r = 1; r < m_pressure.size(); ++r)
        m_pressure[r] += m_inflow[r];
    return true;
}

void GlobalGradient::write() const
{
    for (int r = 1; r <= m_system.size(); ++r)
        m_nodes[m_system.nodeOf(r)].Pressure = m_pressure[static_cast<std::size_t>(r)];
    for (std::size_t i = 0; i < m_pipes.size(); ++i)
        m_elements[m_pipeElements[i]].Massflow = m_pipes[i].mass;
    for (const Other& other : m_others)
        m_elements[other.element].Massflow = other.mass;
}

NearStart GlobalGradient::search(CancelCallback cancel)
{
    sweep(true);
    double missing = 1.0;
    for (int step = 0; step < kMostSteps && missing > kSettled; ++step) {
        if (cancel != nullptr && cancel()) return NearStart::kCancelled;
        if (!solve()) return NearStart::kNotFound;
        missing = sweep(false);
        if (!std::isfinite(missing) || !std::isfinite(m_totalFlow)) return NearStart::kNotFound;
    }
    if (missing > kClose) return NearStart::kNotFound;
    write();
    return NearStart::kFound;
}

}  // namespace

NearStart startNearSolution(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                            double dt, PressureSystem& system, CancelCallback cancel)
{
    if (!isTried(var, dt, system.size())) return NearStart::kNotTried;
    return GlobalGradient(nodes, elements, var, system).search(cancel);
}

}  // namespace lcn
