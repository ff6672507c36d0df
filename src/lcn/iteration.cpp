#include "iteration.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "constants.h"
#include "errors.h"
#include "flow_limits.h"
#include "flow_update.h"
#include "friction.h"
#include "global_gradient.h"
#include "minor_losses.h"
#include "node_equations.h"
#include "pipe_sweep.h"
#include "preparation.h"
#include "pressure_groups.h"
#include "pressure_solve.h"
#include "report.h"
#include "temperature.h"
#include "trace.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

constexpr const char* kReportName = "network_results.dat";
constexpr double kStagnation = 1e-10;        // [-] change of the mass error that counts as none
constexpr double kStagnantRelaxation = 0.1;  // relaxpp of a stagnating solve
constexpr double kCoupledFrom = 100.0;       // [-] of Concrit: flows settled enough for the viscosity law
constexpr double kShortTimeStep = 1.0;       // [s] below it curves may have changed between two steps
constexpr int kLargestWithEnvelope = 2000;   // nodes of a network with junction losses
constexpr int kMostAfterNearStart = 200;     // iterations; two or three are usual
constexpr int kMostUnsettledSolves = 100;    // temperature solves that ran out of sweeps on settled flows
constexpr int kMostForLawsWithoutRe = 50;  // iterations that a solve goes on for what has no Reynolds number

/// What the driver knows of the present iterate.
struct Measures {
    double totalFlow = 0.0;      // [kg/s] sum of |Massflow|
    double averageFlow = 1.0;    // [kg/s] per element; 1.0 for a network at rest
    double massFraction = 0.0;   // [-] relative change of the total flow
    double sumMass = 0.0;        // [-] |sum of the node balances| / average flow
    double massError = 0.0;      // [-] largest node balance / average flow
    double pressureError = 0.0;  // [-] sum of the elements' relative misses of their laws
    bool finite = true;
};

/// First record whose node_no is the traced number; 0 when there is none.
int findTracedNode(const NodeArray& nodes, const lcnNET_var& var)
{
    for (int i = 1; i < nodes.size(); ++i)
        if (nodes[i].node_no == var.nxx) return i;
    return 0;
}

/// Friction factors at the present flows, once per iteration: the law is used again, unchanged, by the
/// pressures of flow ends, the pressure measure and the next linearisation.
void updateFrictionFactors(const ElementArray& elements, const lcnNET_var& var,
                           const std::vector<int>& listed)
{
    for (const int e : listed)
        if (isDarcyWeisbach(elements[e].type)) frictionFactor(elements[e], var);
}

double sumOfFlows(const ElementArray& elements, const lcnNET_var& var)
{
    double sum = 0.0;
    for (int e = 1; e <= var.ElemTotal; ++e)
        sum += std::fabs(elements[e].Massflow);
    return sum;
}

double sumOfFlows(const ElementArray& elements, const PipeSweep& pipes)
{
    double sum = pipes.totalFlow();
    for (const int e : pipes.others())
        sum += std::fabs(elements[e].Massflow);
    return sum;
}

double averageOf(double totalFlow, const lcnNET_var& var)
{
    const double average = totalFlow / var.ElemTotal;
    return std::fabs(average) < kTiny || var.ElemTotal == 0 ? 1.0 : average;
}

/// Net inflow of every node from its elements. Boundary nodes keep theirs as mass source; the others are
/// measured.
void measureMass(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                 const PipeSweep& pipes, std::vector<double>& balance, Measures& measures)
{
    std::fill(balance.begin(), balance.end(), 0.0);
    pipes.addInflows(balance);
    for (const int e : pipes.others()) {
        const lcnNET_elems& elem = elements[e];
        balance[static_cast<std::size_t>(elem.LocalStartNode)] -= elem.Massflow;
        balance[static_cast<std::size_t>(elem.LocalEndNode)] += elem.Massflow;
    }
    double sum = 0.0;
    double largest = 0.0;
    for (int i = 1; i <= var.NodeTotal; ++i) {
        double B = balance[static_cast<std::size_t>(i)];
        if (!hasBalance(nodes[i])) {
            nodes[i].Masssource = -B;
            continue;
        }
        B += nodes[i].Masssource;
        sum += B;
        if (std::fabs(B) > std::fabs(largest)) largest = B;
    }

    const double previousTotal = measures.totalFlow;
    measures.totalFlow = sumOfFlows(elements, pipes);
    measures.averageFlow = averageOf(measures.totalFlow, var);
    measures.massFraction = std::fabs(measures.totalFlow - previousTotal);
    if (std::fabs(previousTotal) > kTiny) measures.massFraction /= std::fabs(previousTotal);
    measures.sumMass = std::fabs(sum) / measures.averageFlow;
    measures.massError = var.flowWeight * largest / measures.averageFlow;
}

/// Whether an element takes part in the pressure measure. A fixed flow has no law to meet, but at a flow end,
/// whose pressure is made to meet it. The chord of a loss curve is not its law.
bool isMeasured(const NodeArray& nodes, const lcnNET_elems& elem)
{
    if (elem.type == kLossCurve) return false;
    return elem.fix == 0 || nodes[elem.LocalStartNode].flag == kFlowBoundary ||
           nodes[elem.LocalEndNode].flag == kFlowBoundary;
}

/// Sum over elements of |(dp between the nodes - dp of the law) / mean pressure|.
double measurePressure(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, double dt,
                       PipeSweep& pipes, Friction friction)
{
    const double smallest = var.Concrit * var.Concrit;
    double sum = pipes.pressureMisses(nodes, var, friction);
    for (const int e : pipes.others()) {
        const lcnNET_elems& elem = elements[e];
        if (!isMeasured(nodes, elem)) continue;
        if (!(reynolds(elem, viscosity(var, elem.Temperature)) > kSmallestMeasuredRe)) continue;
        const double pStart = nodes[elem.LocalStartNode].Pressure;
        const double pEnd = nodes[elem.LocalEndNode].Pressure;
        const double betweenNodes = pStart - pEnd;
        const double mean = (pStart + pEnd) / 2.0;
        double ofLaw = signedPressureLoss(nodes, elements, var, e, +1, friction);
        if (dt <= kSteadyTimeStep) ofLaw += (elem.Massflow - elem.MassflowOld) * elem.length / elem.Area / dt;
        if (std::fabs(mean) > kTiny && std::fabs(betweenNodes) > smallest && std::fabs(ofLaw) > smallest)
            sum += std::fabs((betweenNodes - ofLaw) / mean);
    }
    return var.flowWeight * sum;
}

/// Whether the elements that the pressure error leaves out for want of a Reynolds number, pumps and valves without a
/// cross-section as a rule, meet their laws: to the criterion, of the largest pressure that each has to do with.
bool meetsLawsWithoutRe(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                        const std::vector<int>& listed)
{
    for (const int e : listed) {
        const lcnNET_elems& elem = elements[e];
        if (!hasLaw(elem.type) || elem.type == kLossCurve || elem.fix != 0) continue;
        if (reynolds(elem, viscosity(var, elem.Temperature)) > kSmallestMeasuredRe) continue;
        const double pStart = nodes[elem.LocalStartNode].Pressure;
        const double pEnd = nodes[elem.LocalEndNode].Pressure;
        const double ofLaw = signedPressureLoss(nodes, elements, var, e, +1, Friction::kStored);
        const double size = std::max({std::fabs(pStart), std::fabs(pEnd), std::fabs(ofLaw)});
        if (std::fabs(pStart - pEnd - ofLaw) > var.Concrit * size) return false;
    }
    return true;
}

/// Slows the solve down when its mass balance is stuck above the criterion.
void watchStagnation(lcnNET_var& var, double massError, double previousMassError)
{
    var.warmStart() = std::fabs(massError) < var.Concrit ? 1 : 0;
    if (std::fabs(massError - previousMassError) < kStagnation && var.warmStart() == 0)
        var.relaxpp = kStagnantRelaxation;
}

/// With a viscosity law, temperatures wait until flows are nearly settled.
bool temperaturesAreDue(const lcnNET_var& var, const Measures& measures)
{
    const double settled = kCoupledFrom * var.Concrit;
    return !var.ViscosityLaw || (std::fabs(measures.massError) < settled && measures.pressureError < settled);
}

void updateTemperatures(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var, double dt,
                        const Measures& measures, TemperatureSolver& solver, TemperatureSolve& temperatures)
{
    if (var.Energy != 1) {
        if (dt < kShortTimeStep) fitCurves(elements, var);
    } else if (temperaturesAreDue(var, measures)) {
        temperatures = solver.solve(nodes, elements, var);
    } else {
        temperatures.converged = false;
    }
}

bool flowsFollowTemperatures(const lcnNET_var& var)
{
    return var.Energy == 1 && var.ViscosityLaw;
}

/// What an iterate that has converged by its measures is asked before the iteration ends.
class Confirmation
{
public:
    /// Flows that depend on temperatures have to meet the laws at those that the results will show: temperatures are
    /// solved for once more. Laws have to be met as they are, not with friction factors on their way to them. For
    /// those without a Reynolds number the iteration goes on for a while only: nothing says that they ever settle.
    bool confirms(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var, double dt,
                  PipeSweep& pipes, TemperatureSolver& solver, TemperatureSolve& temperatures,
                  Measures& measures)
    {
        if (flowsFollowTemperatures(var)) {
            temperatures = solver.solve(nodes, elements, var);
            updateFrictionFactors(elements, var, pipes.others());
            measures.pressureError = measurePressure(nodes, elements, var, dt, pipes, Friction::kStored);
            if (!temperatures.converged || !(measures.pressureError < var.Concrit)) return false;
        }
        if (frictionWeight(var) < 1.0) {
            measures.pressureError = measurePressure(nodes, elements, var, dt, pipes, Friction::kUndamped);
            if (!(measures.pressureError < var.Concrit)) return false;
        }
        if (m_waits == kMostForLawsWithoutRe || meetsLawsWithoutRe(nodes, elements, var, pipes.others()))
            return true;
        ++m_waits;
        return false;
    }

private:
    int m_waits = 0;  // for laws without a Reynolds number
};

/// Whether every number that a result is made of is finite; a geometry that is not, at a node that no
/// equation knows or at an element with a fixed flow, shows nowhere else. Twice a static pressure, so that
/// differences are finite, too.
bool isFinite(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const double staticPressure = nodes[i].Pressure - var.Density * kGravity * nodes[i].Height;
        if (!std::isfinite(2.0 * staticPressure) || !std::isfinite(nodes[i].Temperature)) return false;
    }
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const lcnNET_elems& elem = elements[e];
        const double Re = reynolds(elem, viscosity(var, elem.Temperature));
        const double Q = elem.volumeFlow();
        const double V = std::fabs(elem.Area) < kTiny ? 0.0 : Q / elem.Area;
        if (!std::isfinite(elem.Massflow) || !std::isfinite(Q) || !std::isfinite(V) || !std::isfinite(Re) ||
            !std::isfinite(elem.Temperature))
            return false;
    }
    return true;
}

/// Junction losses change with the sign of a flow, and where liquid hardly moves the rounding of a solution has a
/// say in it. With that of the envelope factorisation fewer networks wander: of 1500 random ones 10 more
/// converge in 150 iterations. Large networks cannot wait for it.
Factorisation factorisationOf(const lcnNET_var& var, const IterationPaths& paths)
{
    const bool hasJunctionLosses = var.Minor != kSpecifiedLosses && var.Minor != kNoLosses;
    return hasJunctionLosses && var.NodeTotal <= kLargestWithEnvelope ? Factorisation::kReference
                                                                      : paths.factorisation;
}

/// Records why the iteration did not converge. Returns true when nothing that matters was recorded.
bool recordOutcome(lcnNET_var& var, const Measures& measures, const TemperatureSolve& temperatures,
                   const MinorLosses& minorLosses, int flowUpdates, double flowUpdateError, bool stopped)
{
    // kept: the flow-update counter does not spoil a converged solve; hosts see a remark with valid results.
    if (flowUpdates > var.numiterpp) var.AddMessage(700480, var.circuitNumber, flowUpdateError);

    const std::size_t before = var.Messages.size();
    if (temperatures.sweeps >= kMostTemperatureSweeps)
        var.AddMessage(700490, var.circuitNumber, temperatures.error);
    if (!(minorLosses.error() < var.Concrit)) var.AddMessage(700500, var.circuitNumber, minorLosses.error());
    if (!(std::fabs(measures.massError) <= var.Concrit))
        var.AddMessage(700530, var.circuitNumber, std::fabs(measures.massError));
    if (!(measures.pressureError <= var.Concrit))
        var.AddMessage(700540, var.circuitNumber, measures.pressureError);
    if (var.nIter >= var.numitermm) var.AddMessage(700550, var.circuitNumber);
    if (stopped) var.AddMessage();
    return var.Messages.size() == before;
}

}  // namespace

bool iterate(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var, double dt,
             CancelCallback cancel, const IterationPaths& paths)
{
    if (nodes.isEmpty() || var.NodeTotal < 1)
        throw FatalException("lcnL_n has been called with an empty list");

    const int tracedNode = findTracedNode(nodes, var);
    Measures measures;
    measures.totalFlow = sumOfFlows(elements, var);
    measures.averageFlow = averageOf(measures.totalFlow, var);
    double previousMassError = std::numeric_limits<double>::infinity();
    bool minorLossesConverged = false;
    bool limitsChanged = false;
    bool stopped = false;
    bool converged = false;
    int unsettledSolves = 0;
    Confirmation confirmation;
    TemperatureSolve temperatures;
    TemperatureSolve unsettled;  // the last one that ran out of sweeps
    const int flowUpdates = 0;   // counts flow updates that had to be repeated: none ever is
    const double flowUpdateError = 0.0;

    NodeEquations equations;
    equations.size(var);
    std::vector<double> corrections(static_cast<std::size_t>(var.NodeTotal) + 1, 0.0);
    std::vector<double> balance(corrections);
    PressureGroups groups;
    PressureSystem system(factorisationOf(var, paths));
    FlowLimits limits;
    FixedPressureElements betweenFixedPressures;
    FlowEnds flowEnds;
    MinorLosses minorLosses;
    PipeSweep pipes;
    TemperatureSolver temperatureSolver;

    limits.prepare(nodes, elements, var);
    flowEnds.prepare(nodes, elements, var);
    betweenFixedPressures.prepare(nodes, elements, var);
    groups.check(nodes, elements, var);
    groups.record(var);
    system.prepare(nodes, elements, var);
    traceHeader(var);
    minorLosses.start(elements, var);
    pipes.prepare(nodes, elements, var, dt, paths.sweepsPipes);
    NearStart start = NearStart::kNotTried;
    if (paths.startsNearSolution)
        start = startNearSolution(nodes, elements, var, pipes, system, equations, corrections, cancel);
    stopped = start == NearStart::kCancelled;
    var.startedNear = start == NearStart::kFound;
    const int mostIterations = var.startedNear ? std::min(var.numitermm, kMostAfterNearStart) : var.numitermm;
    updateFrictionFactors(elements, var, pipes.others());
    if (pipes.isUsed()) flowEnds.holdLosses(nodes, elements, var, dt);

    var.nIter = 0;
    do {
        ++var.nIter;
        clearNodeEquations(equations);
        pipes.assemble(nodes, equations);
        addToNodeEquations(nodes, elements, var, dt, pipes.others(), equations, Friction::kStored);
        completeNodeEquations(nodes, elements, var, dt, equations);
        system.solvePressures(var, equations, corrections);

        updatePressures(nodes, var, corrections);
        pipes.updateFlows(var, equations, corrections);
        updateFlows(nodes, elements, var, pipes.others(), equations, corrections);
        if (var.compressible) updateElementPressures(nodes, elements, var);
        const bool settled = betweenFixedPressures.update(nodes, elements, var);
        limitsChanged =
            limits.update(nodes, elements, var, var.nIter, previousMassError, measures.averageFlow);
        if (limitsChanged && groups.check(nodes, elements, var)) system.prepare(nodes, elements, var);
        if (!equations.withoutDrop.empty())
            separateEqualPressures(nodes, elements, var, equations, corrections,
                                   averageOf(sumOfFlows(elements, pipes), var));
        updateFrictionFactors(elements, var, pipes.others());
        const bool endsAreFinite = flowEnds.update(nodes, elements, var, dt);

        measureMass(nodes, elements, var, pipes, balance, measures);
        measures.pressureError = endsAreFinite
                                     ? measurePressure(nodes, elements, var, dt, pipes, Friction::kStored)
                                     : std::numeric_limits<double>::infinity();
        measures.finite = std::isfinite(measures.totalFlow) && std::isfinite(measures.sumMass) &&
                          std::isfinite(measures.pressureError);
        traceIteration(var,
                       {measures.massFraction, corrections[static_cast<std::size_t>(tracedNode)],
                        measures.sumMass, measures.pressureError, measures.massError, flowUpdates,
                        temperatures.error, temperatures.sweeps, minorLosses.error(), minorLosses.updates()});
        watchStagnation(var, measures.massError, previousMassError);
        previousMassError = measures.massError;

        if (var.Energy == 1) pipes.write(elements);
        updateTemperatures(nodes, elements, var, dt, measures, temperatureSolver, temperatures);
        // coefficients that a sweep holds do not change; a trace counts their updates all the same
        const bool areHeld = pipes.isUsed() && minorLosses.areFinite() && !var.Debug;
        minorLossesConverged = areHeld || minorLosses.update(nodes, elements, var);
        stopped = stopped || (cancel != nullptr && cancel());
        const bool flowsConverged =
            std::fabs(measures.massError) < var.Concrit && measures.pressureError < var.Concrit;
        const bool outOfSweeps = flowsConverged && temperatures.sweeps >= kMostTemperatureSweeps;
        unsettledSolves = outOfSweeps ? unsettledSolves + 1 : 0;
        if (outOfSweeps) unsettled = temperatures;
        // flows that begin at the answer leave slow temperatures the rounds that they would have had
        const bool temperaturesLag = outOfSweeps && start == NearStart::kFound;
        converged = flowsConverged && settled && minorLossesConverged && temperatures.converged &&
                    !temperaturesLag && !limitsChanged && limits.hasDecided();
        converged = converged && confirmation.confirms(nodes, elements, var, dt, pipes, temperatureSolver,
                                                       temperatures, measures);
    } while (!converged && var.nIter < mostIterations && !stopped && measures.finite && temperatures.finite &&
             unsettledSolves < kMostUnsettledSolves);

    pipes.write(elements);
    updateElementPressures(nodes, elements, var);
    // once more, unless that has been done before the flows were found to fit them
    if (var.Energy == 1 && !(converged && flowsFollowTemperatures(var)))
        temperatures = temperatureSolver.solve(nodes, elements, var);
    groups.record(var);
    limits.finish(elements);
    if (!measures.finite) measures.massError = std::numeric_limits<double>::infinity();
    if (!isFinite(nodes, elements, var)) measures.pressureError = std::numeric_limits<double>::infinity();
    // temperatures that were given up are not settled by a last solve that happens to be
    if (unsettledSolves >= kMostUnsettledSolves) temperatures = unsettled;
    converged =
        recordOutcome(var, measures, temperatures, minorLosses, flowUpdates, flowUpdateError, stopped);
    if (var.Debug) writeReport(elements, nodes, var, var.name.empty() ? std::string(kReportName) : var.name);
    return converged;
}

}  // namespace lcn
