#include "preparation.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "constants.h"
#include "curves.h"
#include "element_hydraulics.h"
#include "errors.h"
#include "node_equations.h"
#include "orifice.h"
#include "report.h"
#include "text_format.h"

namespace lcn
{

namespace
{

// kept: exponent 1.85 and g = 9.806 here, 9.80665 elsewhere; solved flows and reported resistances rest on
// it.
constexpr double kHazenWilliamsC = 1.85;
constexpr double kHazenWilliamsD = 4.87;
constexpr double kHazenWilliamsFactor = 10.67;
constexpr double kHazenWilliamsGravity = 9.806;  // [m/s2]

/// [Pa m3/kg]: 1 bar over the density of water at 15.6 degC (998.97 kg/m3), the condition at which Kv is
/// measured.
constexpr double kValveFactor = 100.10310619938537;

constexpr double kDefaultFlow = 0.1;      // [kg/s] starting flow of a network without any flow condition
constexpr double kNoFlow = 1e37;          // [kg/s] start of the search for the smallest fixed flow
constexpr double kStartTolerance = 1e-6;  // [-] of a starting flow between fixed pressures
constexpr int kUndampedRepeats = 50;      // of a law between fixed pressures
constexpr double kDampedWeight = 0.2;     // [-] of the law's flow in the repeats after those
constexpr int kMostRepeats = 1000;        // of a law between fixed pressures

void fitCurve(lcnNET_elems& elem, lcnNET_var& var)
{
    const bool fitted = elem.type == kPump ? preparePump(elem.Curve, var) : prepareLoss(elem.Curve);
    if (!fitted) lcnErrmsg(var, kCurveError, elem.StartNode, elem.elem_no, elem.EndNode, var.InletNode);
}

void prepareOrifice(lcnNET_elems& elem)
{
    elem.HWcoeff /= elem.diam;
    const Tappings tappings = tappingsOf(elem.length, elem.diam);
    elem.Param1 = tappings.L1;
    elem.Param2 = tappings.L2;
}

bool isEndNode(const lcnNET_nodes& node)
{
    return node.no_branches == 1;
}

/// Mean of the fixed pressures [Pa]; 0.0 when there are none.
double meanFixedPressure(const NodeArray& nodes, const lcnNET_var& var)
{
    double sum = 0.0;
    int count = 0;
    for (int i = 1; i <= var.NodeTotal; ++i) {
        if (nodes[i].flag != kPressureBoundary) continue;
        nodes[i].Pressure = nodes[i].Pressbound;
        sum += nodes[i].Pressbound;
        ++count;
    }
    return count == 0 ? 0.0 : sum / count;
}

void classifyNodes(const NodeArray& nodes, const lcnNET_var& var, double startPressure)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        lcnNET_nodes& node = nodes[i];
        const bool fixed = node.flag == kPressureBoundary;
        if (isEndNode(node) && !fixed) node.flag = kFlowBoundary;
        if (node.no_branches >= 2 && !fixed) node.flag = kFreeNode;
        node.Pressure = fixed ? node.Pressbound : startPressure;
        if (node.tempflag != 1) node.Temperature = var.Tav;
    }
}

/// A control valve or non-return element inside the network starts open; its limit is imposed when it is
/// violated.
void openInnerFlowLimit(const NodeArray& nodes, lcnNET_elems& elem)
{
    if ((elem.type == kControlValve || elem.type == kNonReturn) && !hasFlowEnd(nodes, elem)) elem.fix = 0;
}

/// Half the smallest flow condition [kg/s], as a starting flow. A control valve's limit is one whether it
/// starts open or not; a non-return element's zero is none.
double startFlow(const ElementArray& elements, const lcnNET_var& var)
{
    double smallest = kNoFlow;
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const lcnNET_elems& elem = elements[e];
        if (elem.type == kNonReturn) continue;
        if (elem.fix == 1 || elem.FlowLimited == 1 || elem.type == kControlValve)
            smallest = std::fmin(smallest, std::fabs(elem.FixedFlow));
    }
    return smallest == kNoFlow ? kDefaultFlow : smallest / 2.0;
}

/// Pressure and temperature of the elements at nodes that start from values of their own.
void averageAtBoundaries(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const lcnNET_nodes& node = nodes[i];
        if (node.flag != kPressureBoundary && node.tempflag != 1) continue;
        for (int b = 1; b <= node.no_branches; ++b) {
            lcnNET_elems& elem = elements[std::abs(node.LocalElements[b])];
            const lcnNET_nodes& start = nodes[elem.LocalStartNode];
            const lcnNET_nodes& end = nodes[elem.LocalEndNode];
            elem.Pressure = (start.Pressure + end.Pressure) / 2.0;
            elem.Temperature = (start.Temperature + end.Temperature) / 2.0;
        }
    }
}

/// A fixed flow inside the network could contradict the mass balance, so it is a target to begin with.
void softenInnerFixedFlow(const NodeArray& nodes, lcnNET_elems& elem)
{
    if (elem.type != kPipe || elem.fix != 1) return;
    if (isEndNode(nodes[elem.LocalStartNode]) || isEndNode(nodes[elem.LocalEndNode])) return;
    elem.fix = 0;
    elem.FlowLimited = 1;
    elem.Massflow = 0.0;
}

// clang-format off
constexpr const char* kInitialReport = "Initial_debug_file.dat";
constexpr const char* kOpenEnds      = "forcedbc.dat";
// kept: the blank behind the line break; programs that read this file count on it at the start of the next line.
constexpr const char* kOpenEndLine   = "Boundary Node %d connected to Element %3d from node %3d to node %3d has no boundary condition\n ";
// clang-format on

/// Whether the environment asks for debug files.
bool debugIsRequested()
{
    const char* setting = std::getenv("TAVELL_DEBUG_FILE");
    return setting != nullptr && std::atoi(setting) == 1;
}

/// Forces zero flow on every open end and writes a line on each to openEnds, when that is open.
void closeOpenEnds(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                   TextFile& openEnds)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const lcnNET_nodes& node = nodes[i];
        if (!isEndNode(node) || node.flag == kPressureBoundary) continue;
        lcnNET_elems& elem = elements[std::abs(node.LocalElements[1])];
        if (node.node_no != elem.StartNode && node.node_no != elem.EndNode) continue;
        if (elem.fix == 1) continue;
        elem.FixedFlow = 0.0;
        elem.Massflow = 0.0;
        elem.fix = 1;
        openEnds.print(kOpenEndLine, node.node_no, elem.elem_no, elem.StartNode, elem.EndNode);
    }
}

}  // namespace

void fitCurves(const ElementArray& elements, lcnNET_var& var)
{
    for (int e = 1; e <= var.ElemTotal; ++e)
        if (isCurve(elements[e].type)) fitCurve(elements[e], var);
}

void prepareElementCoefficients(const ElementArray& elements, lcnNET_var& var)
{
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        switch (elem.type) {
        case kPump:
        case kLossCurve:
            fitCurve(elem, var);
            break;
        case kHazenWilliams:
            elem.HWcoeff =
                elem.length / std::pow(elem.diam, kHazenWilliamsD) *
                (kHazenWilliamsFactor / std::pow(elem.HWcoeff, kHazenWilliamsC) * kHazenWilliamsGravity);
            break;
        case kOrifice:
            prepareOrifice(elem);
            break;
        case kGeneralLoss:
            elem.HWcoeff =
                elem.HWcoeff * std::pow(elem.length, elem.Param2) / std::pow(elem.diam, elem.Param3);
            break;
        case kKvValve:
        case kCvValve:
            elem.HWcoeff = 1.0 / elem.HWcoeff / elem.HWcoeff * kValveFactor;
            break;
        default:
            break;
        }
    }
}

void setInitialValues(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var)
{
    const double startPressure = meanFixedPressure(nodes, var);
    classifyNodes(nodes, var, startPressure);
    const double flow = startFlow(elements, var);
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        openInnerFlowLimit(nodes, elem);
        elem.Pressure = startPressure;
        elem.Temperature = var.Tav;
        elem.density = var.Density;
        elem.Massflow = elem.fix == 1 ? elem.FixedFlow : hasLaw(elem.type) ? flow : 0.0;
        softenInnerFixedFlow(nodes, elem);
        if (elem.FlowLimited == 1) var.LimitedFlows = 1;
    }
    averageAtBoundaries(nodes, elements, var);
}

void applyDebugAndOpenEnds(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var)
{
    if (debugIsRequested()) var.Debug = true;
    if (var.Debug) writeReport(elements, nodes, var, kInitialReport);
    TextFile openEnds = var.Debug ? TextFile(kOpenEnds) : TextFile();
    closeOpenEnds(nodes, elements, var, openEnds);
}

void keepAsPrevious(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        elem.PressureOld = elem.Pressure;
        elem.MassflowOld = elem.Massflow;
        elem.TemperatureOld = elem.Temperature;
        elem.densityOld = elem.density;
    }
    for (int i = 1; i <= var.NodeTotal; ++i) {
        nodes[i].PressureOld = nodes[i].Pressure;
        nodes[i].TemperatureOld = nodes[i].Temperature;
    }
}

bool settleFlowBetweenFixedPressures(const NodeArray& nodes, const ElementArray& elements,
                                     const lcnNET_var& var, int e, double tolerance)
{
    lcnNET_elems& elem = elements[e];
    for (int repeat = 0; repeat < kMostRepeats; ++repeat) {
        const double before = elem.Massflow;
        const double next =
            elem.density * elementEquation(nodes, elements, var, e, kSteadyState).flowEstimate;
        // the chords of a strongly curved pump can lead to and fro between two flows: damped, they settle
        elem.Massflow = repeat < kUndampedRepeats ? next : before + kDampedWeight * (next - before);
        if (!(std::fabs(elem.Massflow - before) > tolerance * std::fabs(elem.Massflow))) return true;
    }
    return false;
}

std::vector<int> elementsBetweenFixedPressures(const NodeArray& nodes, const ElementArray& elements,
                                               const lcnNET_var& var)
{
    std::vector<int> found;
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const lcnNET_nodes& node = nodes[i];
        if (node.flag != kPressureBoundary) continue;
        for (int b = 1; b <= node.no_branches; ++b) {
            if (node.LocalElements[b] > 0) continue;  // found from its start
            const int e = -node.LocalElements[b];
            if (nodes[elements[e].LocalEndNode].flag == kPressureBoundary) found.push_back(e);
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

void setFlowsBetweenFixedPressures(const NodeArray& nodes, const ElementArray& elements,
                                   const lcnNET_var& var)
{
    for (const int e : elementsBetweenFixedPressures(nodes, elements, var)) {
        lcnNET_elems& elem = elements[e];
        const lcnNET_nodes& start = nodes[elem.LocalStartNode];
        const lcnNET_nodes& end = nodes[elem.LocalEndNode];
        if (elem.fix == 1) continue;
        if (std::fabs(start.Pressure - end.Pressure) > kTiny)
            settleFlowBetweenFixedPressures(nodes, elements, var, e, kStartTolerance);
        else
            elem.Massflow = 0.0;
    }
}

void prepare(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var)
{
    var.sizeWorkArrays();
    prepareElementCoefficients(elements, var);
    setInitialValues(nodes, elements, var);
    applyDebugAndOpenEnds(nodes, elements, var);
    keepAsPrevious(nodes, elements, var);
    setFlowsBetweenFixedPressures(nodes, elements, var);
}

bool hasFlowEnd(const NodeArray& nodes, const lcnNET_elems& elem)
{
    return nodes[elem.LocalStartNode].flag == kFlowBoundary || nodes[elem.LocalEndNode].flag == kFlowBoundary;
}

}  // namespace lcn
