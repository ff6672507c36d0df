// An open pipe is 88 bytes here and 440 in its record, of which a sweep needs parts of six cache lines: a
// million of them are bound by memory, and a hundred by the evaluation of one friction factor at a time.
#include "pipe_sweep.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "constants.h"
#include "element_hydraulics.h"
#include "friction.h"
#include "friction_block.h"
#include "minor_losses.h"
#include "preparation.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

constexpr double kUsualVelocity = 0.5;  // [m/s]

/// Whether nothing but flows and pressures changes during the iteration.
bool applies(const lcnNET_var& var, double dt)
{
    return !var.compressible && dt > kSteadyTimeStep && var.flowWeight == 1.0 &&
           (var.Minor == kSpecifiedLosses || var.Minor == kNoLosses) &&
           !(var.ViscosityLaw && var.Energy == 1);
}

/// Whether an element's flow is decided during the iteration.
bool isLimited(const NodeArray& nodes, const lcnNET_elems& elem)
{
    if (elem.FlowLimited != 0) return true;
    return (elem.type == kControlValve || elem.type == kNonReturn) && !hasFlowEnd(nodes, elem);
}

double signOf(double x)
{
    return (x > 0.0) - (x < 0.0);
}

}  // namespace

void PipeSweep::prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                        double dt, bool isWanted)
{
    m_pipes.clear();
    m_others.clear();
    m_givenTotal = 0.0;
    m_openTotal = 0.0;
    m_isUsed = isWanted && applies(var, dt);
    if (!m_isUsed) {
        for (int e = 1; e <= var.ElemTotal; ++e)
            m_others.push_back(e);
        return;
    }
    m_givenInflow.assign(static_cast<std::size_t>(var.NodeTotal) + 1, 0.0);
    m_pipes.reserve(static_cast<std::size_t>(var.ElemTotal));
    std::vector<char> isFree(static_cast<std::size_t>(var.NodeTotal) + 1, 0);
    for (int i = 1; i <= var.NodeTotal; ++i)
        isFree[static_cast<std::size_t>(i)] = nodes[i].flag == kFreeNode;
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        const bool hasFreeEnd = isFree[static_cast<std::size_t>(elem.LocalStartNode)] != 0 ||
                                isFree[static_cast<std::size_t>(elem.LocalEndNode)] != 0;
        const bool canBeHere = elem.LocalStartNode != elem.LocalEndNode && !isLimited(nodes, elem);
        if (canBeHere && elem.fix != 0)
            addGivenFlow(elem, var);
        else if (canBeHere && isDarcyWeisbach(elem.type) && hasFreeEnd)
            addPipe(elem, var, e);
        else
            m_others.push_back(e);
    }
    m_pressure.resize(static_cast<std::size_t>(var.NodeTotal) + 1);
    updateFriction(var);
}

void PipeSweep::addGivenFlow(lcnNET_elems& elem, const lcnNET_var& var)
{
    if (isDarcyWeisbach(elem.type)) frictionFactor(elem, var);
    elem.MassflowOld = elem.Massflow;
    m_givenInflow[static_cast<std::size_t>(elem.LocalStartNode)] -= elem.Massflow;
    m_givenInflow[static_cast<std::size_t>(elem.LocalEndNode)] += elem.Massflow;
    m_givenTotal += std::fabs(elem.Massflow);
}

void PipeSweep::addPipe(const lcnNET_elems& elem, const lcnNET_var& var, int e)
{
    const double dynamic = 0.5 / (elem.Area * elem.Area) / elem.density;
    Pipe pipe{};
    pipe.mass = elem.Massflow;
    pipe.estimate = kUsualVelocity * elem.density * elem.Area;
    pipe.toRe = reynoldsPerFlow(elem, viscosity(var, elem.Temperature));
    pipe.relRough = elem.rough / elem.diam;
    pipe.laminar = elem.LaminarFactor;
    pipe.f = elem.friction;
    pipe.friction = elem.length / elem.diam * dynamic;
    pipe.minor = elem.k * dynamic;
    pipe.start = elem.LocalStartNode;
    pipe.end = elem.LocalEndNode;
    pipe.element = e;
    m_pipes.push_back(pipe);
}

void PipeSweep::readFlows(const ElementArray& elements, const lcnNET_var& var)
{
    for (Pipe& pipe : m_pipes)
        pipe.mass = elements[pipe.element].Massflow;
    updateFriction(var);
}

void PipeSweep::updateFriction(const lcnNET_var& var)
{
    m_openTotal = 0.0;
    for (std::size_t first = 0; first < m_pipes.size(); first += kFrictionBlock)
        updateFriction(var, first, std::min<std::size_t>(kFrictionBlock, m_pipes.size() - first));
}

/// The same relaxation as of one element alone, see frictionFactor.
void PipeSweep::updateFriction(const lcnNET_var& var, std::size_t first, std::size_t count)
{
    std::array<double, kFrictionBlock> f{};
    undampedFriction(var, first, count, f.data());
    const double weight = frictionWeight(var);
    for (std::size_t i = 0; i < count; ++i) {
        Pipe& pipe = m_pipes[first + i];
        m_openTotal += std::fabs(pipe.mass);
        pipe.f += weight * (f[i] - pipe.f);
    }
}

void PipeSweep::undampedFriction(const lcnNET_var& var, std::size_t first, std::size_t count, double* f) const
{
    std::array<double, kFrictionBlock> Re{}, relRough{}, laminar{}, slope{};
    for (std::size_t i = 0; i < count; ++i) {
        const Pipe& pipe = m_pipes[first + i];
        Re[i] = pipe.toRe * std::fabs(pipe.mass);
        relRough[i] = pipe.relRough;
        laminar[i] = pipe.laminar;
    }
    frictionLawBlock(var.FrictionMethod, Re.data(), relRough.data(), laminar.data(), f, slope.data(),
                     static_cast<int>(count));
}

void PipeSweep::readPressures(const NodeArray& nodes)
{
    for (std::size_t i = 1; i < m_pressure.size(); ++i)
        m_pressure[i] = nodes[static_cast<int>(i)].Pressure;
}

/// The parabola of quadraticEquation in terms of the mass flow: m = sqrt(|dp| / R), dm/dp = 1 / (2 R |m|).
void PipeSweep::assemble(const NodeArray& nodes, NodeEquations& equations)
{
    if (!m_isUsed) return;
    for (std::size_t i = 1; i < m_givenInflow.size(); ++i)
        equations.rhs[i] += m_givenInflow[i];
    readPressures(nodes);
    for (Pipe& pipe : m_pipes) {
        const auto start = static_cast<std::size_t>(pipe.start);
        const auto end = static_cast<std::size_t>(pipe.end);
        const double dp = m_pressure[start] - m_pressure[end];
        const double R = pipe.friction * pipe.f + pipe.minor;
        if (dp == 0.0) equations.withoutDrop.push_back(pipe.element);
        // a law that is no number must show in the flow
        pipe.estimate = std::fabs(R) < kTiny ? 0.0 : signOf(dp) * std::sqrt(std::fabs(dp) / R);
        const double slope = 2.0 * R * std::fabs(pipe.estimate);
        const double conductance = std::fabs(slope) < kTiny ? kLargeConductance : 1.0 / slope;

        equations.coef[static_cast<std::size_t>(pipe.element)] = conductance;
        equations.diag[start] += conductance;
        equations.rhs[start] -= pipe.estimate;
        equations.diag[end] += conductance;
        equations.rhs[end] += pipe.estimate;
    }
}

void PipeSweep::updateFlows(const lcnNET_var& var, const NodeEquations& equations,
                            const std::vector<double>& corrections)
{
    m_openTotal = 0.0;
    for (std::size_t first = 0; first < m_pipes.size(); first += kFrictionBlock) {
        const std::size_t count = std::min<std::size_t>(kFrictionBlock, m_pipes.size() - first);
        for (std::size_t i = first; i < first + count; ++i) {
            Pipe& pipe = m_pipes[i];
            const double difference = corrections[static_cast<std::size_t>(pipe.start)] -
                                      corrections[static_cast<std::size_t>(pipe.end)];
            const double conductance = equations.coef[static_cast<std::size_t>(pipe.element)];
            pipe.mass = pipe.estimate + var.relaxpp * difference * conductance;
        }
        updateFriction(var, first, count);
    }
}

void PipeSweep::addInflows(std::vector<double>& balance) const
{
    if (!m_isUsed) return;
    for (std::size_t i = 1; i < m_givenInflow.size(); ++i)
        balance[i] += m_givenInflow[i];
    for (const Pipe& pipe : m_pipes) {
        balance[static_cast<std::size_t>(pipe.start)] -= pipe.mass;
        balance[static_cast<std::size_t>(pipe.end)] += pipe.mass;
    }
}

/// A given flow has a law to meet at a flow end only, whose pressure is made to meet it.
double PipeSweep::pressureMisses(const NodeArray& nodes, const lcnNET_var& var, Friction friction)
{
    if (!m_isUsed) return 0.0;
    readPressures(nodes);
    const double smallest = var.Concrit * var.Concrit;
    std::array<double, kFrictionBlock> f{};
    double sum = 0.0;
    for (std::size_t i = 0; i < m_pipes.size(); ++i) {
        const std::size_t inBlock = i % kFrictionBlock;
        if (friction == Friction::kUndamped && inBlock == 0)
            undampedFriction(var, i, std::min<std::size_t>(kFrictionBlock, m_pipes.size() - i), f.data());
        const Pipe& pipe = m_pipes[i];
        const double magnitude = std::fabs(pipe.mass);
        if (!(pipe.toRe * magnitude > kSmallestMeasuredRe)) continue;
        const double pStart = m_pressure[static_cast<std::size_t>(pipe.start)];
        const double pEnd = m_pressure[static_cast<std::size_t>(pipe.end)];
        const double betweenNodes = pStart - pEnd;
        const double mean = (pStart + pEnd) / 2.0;
        const double ofPipe = friction == Friction::kUndamped ? f[inBlock] : pipe.f;
        const double ofLaw = (pipe.friction * ofPipe + pipe.minor) * magnitude * pipe.mass;
        if (std::fabs(mean) > kTiny && std::fabs(betweenNodes) > smallest && std::fabs(ofLaw) > smallest)
            sum += std::fabs((betweenNodes - ofLaw) / mean);
    }
    return sum;
}

void PipeSweep::write(const ElementArray& elements) const
{
    for (const Pipe& pipe : m_pipes) {
        lcnNET_elems& elem = elements[pipe.element];
        elem.MassflowOld = elem.Massflow;
        elem.Massflow = pipe.mass;
        elem.friction = pipe.f;
    }
}

}  // namespace lcn
