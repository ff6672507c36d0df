#include "report.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "constants.h"
#include "element_hydraulics.h"
#include "text_format.h"
#include "viscosity.h"

namespace lcn
{

namespace
{

// clang-format off
constexpr int kTimeStep = 0;       // at the head: a steady solve has one step
constexpr int kCircuitNumber = 0;  // and one circuit

constexpr double kIcePoint = 273.15;          // [K] of 0 degC
constexpr double kPascalsPerKpa = 1000.0;
constexpr double kMicrometresPerMetre = 1e6;
constexpr double kLitresPerMinute = 60000.0;  // per m3/s
constexpr double kBelowCoordinates = -1e11;   // [m] start of the search for the largest coordinate

// kept: factors in single precision, 0.0254, 2.2046225, 35.314667 and 448.83118 widened; the last digits of the US tables
// rest on them.
constexpr double kMetresPerInch = 0.02539999969303608;
constexpr double kPoundsPerKilogram = 2.204622507095337;
constexpr double kCubicFeetPerCubicMetre = 35.314666748046875;
constexpr double kGallonsPerMinute = 448.8311767578125;  // per ft3/s
constexpr double kInchesPerFoot = 12.0;
constexpr double kFeetPerMetre = 3.280839895;

constexpr double kMetresPerFoot = 0.30479999999999996;  // of the US node table
constexpr double kPsiPerPascal = 0.000145038;
// kept: a pound factor of its own for nodes; mass sources show it from the seventh digit on.
constexpr double kPoundsPerKilogramOfNodes = 2.204622622;
// clang-format on

/// A network and the file that its report goes to.
struct Report {
    TextFile& out;
    const ElementArray& elements;
    const NodeArray& nodes;
    const lcnNET_var& var;
};

std::string bars(int count)
{
    return std::string(static_cast<std::size_t>(count), '|');
}

void separator(const Report& report, int count)
{
    report.out.print("%s\n", bars(count));
}

void title(const Report& report, int before, std::string_view text, int after)
{
    report.out.print("%s%s%s\n", bars(before), text, bars(after));
}

void blankLines(const Report& report, int count)
{
    for (int i = 0; i < count; ++i)
        report.out.print("\n");
}

double celsius(double kelvin)
{
    return kelvin - kIcePoint;
}

/// -1.0 for a negative number, else 1.0.
double signOf(double number)
{
    return number < 0.0 ? -1.0 : 1.0;
}

/// A node with one element.
bool isEnd(const lcnNET_nodes& node)
{
    return node.no_branches == 1;
}

bool isBetweenInnerNodes(const Report& report, const lcnNET_elems& elem)
{
    return !isEnd(report.nodes[elem.LocalStartNode]) && !isEnd(report.nodes[elem.LocalEndNode]);
}

/// Pressure [Pa] of the liquid column above the lowest node.
double staticPressure(const Report& report, const lcnNET_nodes& node)
{
    return report.var.Density * kGravity * node.Height;
}

/// Mean velocity [m/s], signed as the flow. kept: 0.0 for every kind that is not a pipe, a loss curve
/// included, which has one in the results of a solve; columns of velocities and Reynolds numbers rest on it.
double velocity(const lcnNET_elems& elem)
{
    const bool isPipe = isDarcyWeisbach(elem.type) || elem.type == kHazenWilliams;
    return isPipe && std::fabs(elem.Area) > kTiny ? elem.volumeFlow() / elem.Area : 0.0;
}

/// Reynolds number [-] >= 0 at viscosity mu [Pa s]; 0.0 without a viscosity.
double reynoldsNumber(const lcnNET_elems& elem, double mu)
{
    return std::fabs(mu) < kTiny ? 0.0 : std::fabs(velocity(elem)) * elem.density * elem.diam / mu;
}

/// Pressure difference between the ends [Pa], > 0 where pressure falls along the flow.
double pressureDrop(const Report& report, const lcnNET_elems& elem)
{
    const double difference =
        report.nodes[elem.LocalStartNode].Pressure - report.nodes[elem.LocalEndNode].Pressure;
    return difference * signOf(elem.Massflow);
}

/// Height of the pressure column [m].
double head(const Report& report, const lcnNET_nodes& node)
{
    return node.Pressure / kGravity / report.var.Density;
}

// clang-format off
constexpr const char* kFrame = "///////////////////////////////%s NO %d\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\\n";
// clang-format on

void headOfReport(const Report& report)
{
    separator(report, 100);
    report.out.print(kFrame, "RESULTS FOR TIME STEP", kTimeStep);
    separator(report, 100);
    report.out.print(" Q is %le \n", report.var.Q);
    separator(report, 100);
    report.out.print(kFrame, "RESULTS FOR CIRCUIT", kCircuitNumber);
    separator(report, 100);
}

// clang-format off
constexpr const char* kFluidHeadings = " Pav [kPa]  Tav [C]  Density   Viscosity    Cp      Conductivity   Pr      Concrit\n";
constexpr const char* kFluidRow = "%9.6lf %9.6lf %9.6lf %9.6lf %9.6lf %9.6lf %9.6lf %9.6lf \n";
// clang-format on

void fluidState(const Report& report)
{
    const lcnNET_var& var = report.var;
    report.out.print(kFluidHeadings);
    report.out.print(kFluidRow, var.Pav / kPascalsPerKpa, celsius(var.Tav), var.Density, var.Viscosity,
                     var.Cp, var.Conductivity, var.Pr, var.Concrit);
}

void controls(const Report& report)
{
    const lcnNET_var& var = report.var;
    report.out.print("relaxpp    numitermm  numiterpp  nxx  Energy Minor\n");
    report.out.print("%3.2lf    %-3d    %-3d     %-3d     %-3d     %-3d\n", var.relaxpp, var.numitermm,
                     var.numiterpp, var.nxx, var.Energy, var.Minor);
    blankLines(report, 2);
}

/// Names of the friction correlations, by FrictionMethod; methods without a row use Swamee and Jain.
struct Correlation {
    int method;
    std::string_view line;
};
constexpr Correlation kCorrelations[] = {
    {2, "Friction factor Colebrook-White\n"},
    {3, "Friction factor Haaland \n"},
    {4, "Friction factor Serghides \n"},
    {5, "Friction factor Altshul \n"},
    {6, "Friction factor Evangelides, Papaevangelou, Tzimopoulos \n"},
};

void frictionCorrelation(const Report& report)
{
    std::string_view line = "Friction factor SwameeJain \n";
    for (const Correlation& correlation : kCorrelations)
        if (correlation.method == report.var.FrictionMethod) line = correlation.line;
    report.out.print(line);
    blankLines(report, 2);
    report.out.print("Total elements = %d Total nodes = %d \n", report.var.ElemTotal, report.var.NodeTotal);
    blankLines(report, 2);
}

// clang-format off
constexpr const char* kDarcyHeadings = "elemno  StartNode  EndNode  diam [m]     length [m]   rough [mum]   K            Energy_var    MetalTemp  Heat flux\n";
constexpr const char* kHazenHeadings = "elemno  StartNode  EndNode  diam [m]     length [m]   H-W coeff     K            Energy_var    MetalTemp  Heat flux\n";
constexpr const char* kPipeRow = "%6d %6d %6d %12.4lE %12.4lE %12.4lE %12.4lE %6d %12.4lE  %12lE\n";
// clang-format on

/// One row of pipe inputs; third is the column that differs between the two laws.
void pipeRow(const Report& report, const lcnNET_elems& elem, double third)
{
    report.out.print(kPipeRow, elem.elem_no, elem.StartNode, elem.EndNode, elem.diam, elem.length, third,
                     elem.k, elem.Energy_var, celsius(elem.MetalTemp), elem.HeatFlux);
}

void darcyWeisbachPipes(const Report& report)
{
    title(report, 37, "Element Input Data-Darcy Weisbach Pipes", 48);
    blankLines(report, 2);
    report.out.print(kDarcyHeadings);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        if (isDarcyWeisbach(elem.type)) pipeRow(report, elem, elem.rough * kMicrometresPerMetre);
    }
    blankLines(report, 2);
}

void hazenWilliamsPipes(const Report& report)
{
    title(report, 37, "Element Input Data-Hazen-Williams Pipes", 48);
    blankLines(report, 2);
    report.out.print(kHazenHeadings);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        // kept: the prepared resistance stands under the heading of the coefficient, which it has replaced.
        if (elem.type == kHazenWilliams) pipeRow(report, elem, elem.HWcoeff);
    }
    blankLines(report, 2);
}

// clang-format off
constexpr const char* kElementHeadings = "elemno   Vx            Vy            Vz            HTE           Area          Laminar factor      Constraint    Proximity\n";
constexpr const char* kElementRow = " %6d %12.4lE %12.4lE %12.4lE %12.4lE %12.4lE %12.4lE  %d | %d |\n";
// clang-format on

void elementInputs(const Report& report)
{
    title(report, 37, "Element Input Data", 48);
    blankLines(report, 2);
    report.out.print(kElementHeadings);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        if (!isDarcyWeisbach(elem.type) && elem.type != kHazenWilliams) continue;
        report.out.print(kElementRow, elem.elem_no, elem.Vx, elem.Vy, elem.Vz, elem.HTE, elem.Area,
                         elem.LaminarFactor, elem.Constraint, elem.Proximity);
    }
    blankLines(report, 4);
}

/// Number of points of a curve that have both a flow and a pressure.
int wholePoints(const lcnNET_pumps& curve)
{
    return std::min(curve.FlowRate.size(), curve.points());
}

std::size_t pointCount(const lcnNET_pumps& curve)
{
    return static_cast<std::size_t>(std::max(curve.points(), 0));
}

void fixedFlowLine(const Report& report, const lcnNET_elems& elem)
{
    if (elem.fix != 0)
        report.out.print("Flow rate fixed at %lf kg/s \n\n\n", elem.FixedFlow);
    else
        blankLines(report, 3);
}

// clang-format off
constexpr const char* kCurveHeadings = "elem_no  StartNode  EndNode  Energy type  Energy Value length [m]\n";
constexpr const char* kPumpRow       = " %3d     %3d     %3d   %3d  %12.4lf   %12.4lf \n";
constexpr const char* kPumpPoints    = "Pump curve ....FlowRate [l/min]    Pressure [Pa] \n";
constexpr const char* kPumpPoint     = " %d             %12.4lf   %12.4lf\n";
constexpr const char* kPumpCount     = "Pump curve approximated with %zu points \n";
constexpr const char* kPumpDensity   = "Pump curve reference density %lf kg/m^3 \n";
constexpr const char* kPumpFit       = "Pump curve approximated by the following polynomial p/rho vs q in m^3/s \n";
constexpr const char* kPumpCubic     = " P/rho = %le + %le * q + %le * q * q + %le * q * q *q\n";
constexpr const char* kPumpZero      = "Zero pressure rise flowrate = %le kg/s \n";
// clang-format on

void pumpInput(const Report& report, const lcnNET_elems& elem)
{
    const lcnNET_pumps& curve = elem.Curve;
    report.out.print(kCurveHeadings);
    report.out.print(kPumpRow, elem.elem_no, elem.StartNode, elem.EndNode, elem.Energy_var, elem.HeatFlux,
                     elem.length);
    report.out.print(kPumpPoints);
    // kept: kPa under the heading [Pa]; the column of a pump's points holds four decimals of them.
    for (int i = 0; i < wholePoints(curve); ++i)
        report.out.print(kPumpPoint, i, curve.FlowRate[i] * kLitresPerMinute,
                         curve.PressurePoints[i] / kPascalsPerKpa);
    report.out.print(kPumpCount, pointCount(curve));
    report.out.print(kPumpDensity, curve.RefDensity);
    report.out.print(kPumpFit);
    report.out.print(kPumpCubic, -curve.a, -curve.b, -curve.c, -curve.d);
    report.out.print(kPumpZero, curve.qmax * curve.RefDensity);
    fixedFlowLine(report, elem);
}

void pumpInputs(const Report& report)
{
    title(report, 40, "Pump inputs", 53);
    for (int e = 1; e <= report.var.ElemTotal; ++e)
        if (report.elements[e].type == kPump) pumpInput(report, report.elements[e]);
    blankLines(report, 4);
}

// clang-format off
constexpr const char* kLossRow     = " %3d     %3d     %3d   %3d  %12.4lf %12.4lf\n";
constexpr const char* kLossPoints  = "LOSS curve ....FlowRate [m3/s]    Pressure [Pa] \n";
constexpr const char* kLossPoint   = "              %12.4lf   %12.4lf\n";
constexpr const char* kLossCount   = "Loss curve approximated with %zu points \n";
constexpr const char* kLossDensity = "Loss curve reference density %lf kg/m^3 \n";
constexpr const char* kLossFit     = "Loss curve approximated by the following polynomial p/rho vs q in m^3/s \n";
constexpr const char* kLossCubic   = " P/rho = %lf + %lf * q + %lf * q * q + %lf * q * q *q\n";
constexpr const char* kLossMaximum = "Maximum flowrate = %lf kg/s \n";
// clang-format on

void lossInput(const Report& report, const lcnNET_elems& elem)
{
    const lcnNET_pumps& curve = elem.Curve;
    report.out.print(kCurveHeadings);
    report.out.print(kLossRow, elem.elem_no, elem.StartNode, elem.EndNode, elem.Energy_var, elem.HeatFlux,
                     elem.length);
    report.out.print(kLossPoints);
    for (int i = 0; i < wholePoints(curve); ++i)
        report.out.print(kLossPoint, curve.FlowRate[i], curve.PressurePoints[i]);
    report.out.print(kLossCount, pointCount(curve));
    report.out.print(kLossDensity, curve.RefDensity);
    report.out.print(kLossFit);
    report.out.print(kLossCubic, curve.a, curve.b, curve.c, curve.d);
    report.out.print(kLossMaximum, curve.qmax * curve.RefDensity);
    fixedFlowLine(report, elem);
}

void lossInputs(const Report& report)
{
    title(report, 40, "Loss inputs", 53);
    for (int e = 1; e <= report.var.ElemTotal; ++e)
        if (report.elements[e].type == kLossCurve) lossInput(report, report.elements[e]);
    blankLines(report, 4);
}

// clang-format off
// kept: the blank behind the line break indents the condition that follows.
constexpr const char* kEndElement     = " Element %3d from node %3d to node %3d \n ";
constexpr const char* kEndFlow        = " with flow specified at %lf [kg/s]\n";
constexpr const char* kEndPressure    = " with node %3d Pressure fixed at %lf [kPa] with static pressure %lf [kPa]";
constexpr const char* kEndTemperature = " with node %3d Temperature fixed at %lf [C]\n";
// clang-format on

void boundaryElement(const Report& report, const lcnNET_nodes& node)
{
    const lcnNET_elems& elem = report.elements[std::abs(node.LocalElements[1])];
    if (node.node_no != elem.StartNode && node.node_no != elem.EndNode) return;
    report.out.print(kEndElement, elem.elem_no, elem.StartNode, elem.EndNode);
    if (elem.fix == 1) report.out.print(kEndFlow, elem.FixedFlow);
    if (node.flag == kPressureBoundary) {
        const double s = staticPressure(report, node);
        report.out.print(kEndPressure, node.node_no, (node.Pressbound - s) / kPascalsPerKpa,
                         s / kPascalsPerKpa);
    }
    if (node.tempflag == 1) report.out.print(kEndTemperature, node.node_no, celsius(node.Temperature));
}

void boundaryElements(const Report& report)
{
    title(report, 37, "Boundary Elements", 47);
    blankLines(report, 2);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        if (!isEnd(report.nodes[i])) continue;
        boundaryElement(report, report.nodes[i]);
        report.out.print(" \n ");
    }
}

// clang-format off
constexpr const char* kInnerPressure = "Internal node %3d has a fixed pressure of %lf with static pressure %lf \n";
constexpr const char* kInnerFlow     = "Internal Element %3d from node %d to node %d has a fixed flow rate of %lf [kg/s] \n";
// kept: misspelt; programs that read reports look for this text.
constexpr const char* kInnerTarget   = "Internal Element %3d from node %d to node %d has a fixed flow rate of %lf [kg/s] However can only acheive %lf [kg/s]\n";
// clang-format on

void fixedElementsOrNodes(const Report& report)
{
    title(report, 33, "Fixed Elements or Nodes", 45);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        if (!isEnd(node) && node.flag == kPressureBoundary)
            report.out.print(kInnerPressure, node.node_no, node.Pressbound, staticPressure(report, node));
    }
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        if (elem.fix == 1 && isBetweenInnerNodes(report, elem))
            report.out.print(kInnerFlow, elem.elem_no, elem.StartNode, elem.EndNode,
                             std::fabs(elem.FixedFlow));
    }
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        if (elem.fix == 0 && elem.FlowLimited == 1 && isBetweenInnerNodes(report, elem))
            report.out.print(kInnerTarget, elem.elem_no, elem.StartNode, elem.EndNode,
                             std::fabs(elem.FixedFlow), std::fabs(elem.Massflow));
    }
}

void inletsAndOutlets(const Report& report)
{
    title(report, 29, "Boundary elements and nodes", 48);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        if (!isEnd(node)) continue;
        const int e = std::abs(node.LocalElements[1]);
        const lcnNET_elems& elem = report.elements[e];
        const double inflow = (node.Elements[1] < 0 ? -1.0 : 1.0) * elem.Massflow;
        if (inflow > kTiny) {
            report.out.print("Outlet node %d \n", node.node_no);
            report.out.print("Outlet element %d \n", elem.elem_no);
        } else if (inflow < -kTiny) {
            report.out.print("Inlet node %d \n", node.node_no);
            // kept: the solver's number of the element, which its underscore tells from the host's.
            report.out.print("Inlet_element %d \n", e);
        }
    }
}

void resultsTitle(const Report& report)
{
    separator(report, 104);
    title(report, 34, "RESULTS of the NETWORK ANALYSIS", 39);
    separator(report, 104);
}

// clang-format off
constexpr const char* kElementRule     = "+------+------+----+----+----------+----------+----------+----------+------------+---------+---------+---------+---------+\n";
constexpr const char* kElementColumns  = "|elemno| type | N1 | N2 | diameter | Length   | Massflow | Vol flow |       Re   |Velocity |Head Loss|friction |Viscosity|\n";
constexpr const char* kElementUnits    = "|  no  |      |    |    |    [m]   |   [m]    | [kg/s]   |  [m^3/s] |            |  [m/s]  |   [Pa]  | factor  |  [Pa s] |\n";
// kept: the blank within; programs that read reports know by it where the rows begin.
constexpr const char* kElementHeadRule = "+------+------+----+----+----------+----------+----------+----------+------------+------- -+---------+---------+---------+\n";
constexpr const char* kElementResult   = "|  %-3d |  %-3d |%-3d |%-3d | %9.3lf| %9.3lf| %9.3lf| %9.5lf| %11.3lf|%9.3lf|%9.3lf|%9.5lf|%9.3le|\n";
// clang-format on

void elementalResults(const Report& report)
{
    title(report, 39, "Elemental Results", 48);
    report.out.print(kElementRule);
    report.out.print(kElementColumns);
    report.out.print(kElementUnits);
    report.out.print(kElementHeadRule);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        const double mu = viscosity(report.var, elem.Temperature);
        // kept: a pressure in Pa under the heading of a head.
        report.out.print(kElementResult, elem.elem_no, elem.type, elem.StartNode, elem.EndNode, elem.diam,
                         elem.length, elem.Massflow, elem.volumeFlow(), reynoldsNumber(elem, mu),
                         velocity(elem), pressureDrop(report, elem), elem.friction, mu);
    }
    report.out.print(kElementRule);
}

// clang-format off
constexpr const char* kNodeRule    = "+------+------+----------+----------+----------+----------+-----------+-----------+\n";
// kept: misspelt; programs that read reports look for this text.
constexpr const char* kNodeColumns = "| Node |branch|  height  | Presusre |   Head   |   EGL    |Masssource |Temperature|\n";
constexpr const char* kNodeUnits   = "|  no  | total|  [m]     |   [kPa]  |    [m]   |   [m]    | [Kg/s]    |   [C]     |\n";
constexpr const char* kNodeResult  = "|  %-3d |  %-3d | %9.3lf| %9.3lf| %9.3lf| %9.3lf| %10.3le|  %9.3lf|  %d \n";
// clang-format on

void nodalResults(const Report& report)
{
    title(report, 41, "Nodal Results", 51);
    report.out.print(kNodeRule);
    report.out.print(kNodeColumns);
    report.out.print(kNodeUnits);
    report.out.print(kNodeRule);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        const double elevation = node.Height + report.var.Datum;
        const double H = head(report, node);
        // kept: Pa under the heading [kPa]; programs that read reports divide by 1000 themselves.
        report.out.print(kNodeResult, node.node_no, node.no_branches, elevation, node.Pressure, H,
                         H + elevation, node.Masssource, celsius(node.Temperature), node.Status);
    }
    report.out.print(kNodeRule);
    separator(report, 104);
}

// clang-format off
constexpr const char* kElementRuleUs    = "+------+------+----+----+----------+----------+----------+----------+-----------+------------+---------+---------+\n";
constexpr const char* kElementColumnsUs = "|elemno| type | N1 | N2 | diameter | Length   | Massflow | Vol flow | Vol flow  |       Re   | Velocity|Head Loss|\n";
constexpr const char* kElementUnitsUs   = "|  no  |      |    |    |  [inch]  |   [ft]   | [lb/s]   | [ft^3/s] | [gal/min] |            | [ft/s]  |   [ft]  |\n";
constexpr const char* kElementResultUs  = "|  %-3d |  %-3d |%-3d |%-3d | %9.3lf| %9.3lf| %9.4lf| %9.4lf|  %9.3lf| %11.3lf|%9.3lf|%9.3lf|\n";
// kept: one dash short; it marks the end of the table.
constexpr const char* kElementEndUs     = "+------+------+----+----+----------+----------+----------+----------+-----------+-----------+---------+---------+\n";
// clang-format on

void elementalResultsUs(const Report& report)
{
    title(report, 39, "Elemental Results US Units", 48);
    report.out.print(kElementRuleUs);
    report.out.print(kElementColumnsUs);
    report.out.print(kElementUnitsUs);
    report.out.print(kElementRuleUs);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        const double cubicFeet = elem.volumeFlow() * kCubicFeetPerCubicMetre;
        // kept: the constant viscosity even where the SI table follows the temperature; this column shows its
        // effect.
        const double Re = reynoldsNumber(elem, report.var.Viscosity);
        report.out.print(kElementResultUs, elem.elem_no, elem.type, elem.StartNode, elem.EndNode,
                         elem.diam / kMetresPerInch, elem.length / kMetresPerInch / kInchesPerFoot,
                         elem.Massflow * kPoundsPerKilogram, cubicFeet, cubicFeet * kGallonsPerMinute, Re,
                         velocity(elem) / kMetresPerInch / kInchesPerFoot,
                         pressureDrop(report, elem) / kGravity / report.var.Density * kFeetPerMetre);
    }
    report.out.print(kElementEndUs);
}

// clang-format off
constexpr const char* kNodeUnitsUs  = "|  no  | total|  [ft]    |   [psi]  |   [ft]   |  [ft]    | [lb/s]    |   [F]     |\n";
constexpr const char* kNodeResultUs = "|  %-3d |  %-3d | %9.3lf| %9.3lf| %9.3lf| %9.3lf| %10.3lf|  %9.3lf|\n";
// clang-format on

double fahrenheit(double kelvin)
{
    return (kelvin - kIcePoint) * 9.0 / 5.0 + 32.0;
}

void nodalResultsUs(const Report& report)
{
    title(report, 41, "Nodal Results US units", 51);
    report.out.print(kNodeRule);
    report.out.print(kNodeColumns);
    report.out.print(kNodeUnitsUs);
    report.out.print(kNodeRule);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        const double elevation = node.Height + report.var.Datum;
        const double H = head(report, node);
        report.out.print(kNodeResultUs, node.node_no, node.no_branches, elevation / kMetresPerFoot,
                         node.Pressure * kPsiPerPascal, H / kMetresPerFoot, (H + elevation) / kMetresPerFoot,
                         node.Masssource * kPoundsPerKilogramOfNodes, fahrenheit(node.Temperature));
    }
    report.out.print(kNodeRule);
}

// clang-format off
constexpr const char* kThermalHeadings = "elemno type  StartNode EndNode Static_Press  (dP)_loss P   Temp [C]     h convect    density      heat        friction factor watt\n";
// kept: seven decimals for the heat and three for the friction factor; columns of this width hold most heats.
constexpr const char* kThermalRow      = "%-6d %-6d %-6d %-6d %9.3lf %9.3lf %9.3lf %9.3lf %9.3lf %9.7f %9.3lf %9.3lf\n";
// clang-format on

void thermalTable(const Report& report)
{
    title(report, 39, "Elemental Results", 48);
    report.out.print(kThermalHeadings);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        const double loss =
            signedPressureLoss(report.nodes, report.elements, report.var, e, +1, Friction::kStored);
        report.out.print(kThermalRow, elem.elem_no, elem.type, elem.StartNode, elem.EndNode, elem.Pressure,
                         loss, celsius(elem.Temperature), elem.hConvect, elem.density, elem.heat,
                         elem.friction, elem.HeatFlux);
    }
}

// clang-format off
constexpr const char* kRecordHeadings   = "i  elem_no   StartNode   EndNode  LocalStartNode   LocalEndNode   fix   diam   length   rough   k   FixedFlow  Pressure Massflow\n";
constexpr const char* kRecordRow        = "%-3d %-3d %-3d %-3d %-3d %-3d %-3d %12.6lf %12.6lf %12.6lf %12.6lf %12.6lf %12.6lf %12.6lf \n";
// kept: degrees Celsius under the heading [K], as in every other table of the report.
constexpr const char* kHeatHeadings     = " elem_no Temperature [K]  Massflow [kg/s]  Viscosity [Pa.s]  Metal Temp\n";
constexpr const char* kHeatRow          = " %d   %12.6lf   %lE    %lE      %lE\n";
constexpr const char* kNodeHeatRow      = " %d   %12.6lf \n";
constexpr const char* kNodeRecordTitles = "i  node_no  no_branches flag Pressbound   Pressure [Pa]   Height [m]  temp flag  Temperature[C]  \n";
constexpr const char* kNodeRecordRow    = "%3d  %3d  %3d  %3d  %12.6lf  %12.6lf  %12.6lf %3d %12.6lf\n";
// clang-format on

void rawElements(const Report& report)
{
    report.out.print("DEBUGGING CODE \n");
    report.out.print(kRecordHeadings);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        report.out.print(kRecordRow, e, elem.elem_no, elem.StartNode, elem.EndNode, elem.LocalStartNode,
                         elem.LocalEndNode, elem.fix, elem.diam, elem.length, elem.rough, elem.k,
                         elem.FixedFlow, elem.Pressure, elem.Massflow);
    }
    report.out.print("Element data relating to temperatures and flowrate \n");
    report.out.print(kHeatHeadings);
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        report.out.print(kHeatRow, elem.elem_no, celsius(elem.Temperature), elem.Massflow,
                         viscosity(report.var, elem.Temperature), celsius(elem.MetalTemp));
    }
}

void rawNodes(const Report& report)
{
    report.out.print("Node data relating to temperatures \n");
    for (int i = 1; i <= report.var.NodeTotal; ++i)
        report.out.print(kNodeHeatRow, report.nodes[i].node_no, celsius(report.nodes[i].Temperature));
    report.out.print(kNodeRecordTitles);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        report.out.print(kNodeRecordRow, i, node.node_no, node.no_branches, node.flag, node.Pressbound,
                         node.Pressure, node.Height, node.tempflag, celsius(node.Temperature));
    }
}

void matrix(const Report& report, std::string_view heading, array<int> lcnNET_nodes::*list)
{
    report.out.print(heading);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        report.out.print(" node | %-3d |  ", node.node_no);
        for (int b = 1; b <= node.no_branches; ++b)
            report.out.print(" %-3d  ", (node.*list)[b]);
        report.out.print("\n");
    }
}

void connectivity(const Report& report)
{
    matrix(report, "Matrix [E] is \n", &lcnNET_nodes::Elements);
    matrix(report, "Matrix [E] local is \n", &lcnNET_nodes::LocalElements);
    matrix(report, "Matrix [n] is \n", &lcnNET_nodes::Neighbours);
}

/// Largest value of one coordinate over all nodes [m].
double largest(const Report& report, double lcnNET_nodes::*coordinate)
{
    double value = kBelowCoordinates;
    for (int i = 1; i <= report.var.NodeTotal; ++i)
        value = std::max(value, report.nodes[i].*coordinate);
    return value;
}

// clang-format off
constexpr const char* kCoordinateHeadings = "Node number  X coordinate  Y coordinate   Z coordinate    Distance from origin  Number of elements joined\n";
constexpr const char* kCoordinateRow      = "|%-5d|   %-10.7le   |   %-10.7le   |   %-10.7le   |   %-10.7le   | %5d |\n";
// clang-format on

void nodeCoordinates(const Report& report)
{
    // kept: distances are measured from the corner of largest coordinates, so they do not depend on where the
    // origin is.
    const double X = largest(report, &lcnNET_nodes::X);
    const double Y = largest(report, &lcnNET_nodes::Y);
    const double Z = largest(report, &lcnNET_nodes::Z);

    // kept: misspelt; programs that read reports look for this text.
    title(report, 30, " Node cordinate data", 49);
    report.out.print(kCoordinateHeadings);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        const double squares =
            std::pow(node.X - X, 2.0) + std::pow(node.Y - Y, 2.0) + std::pow(node.Z - Z, 2.0);
        report.out.print(kCoordinateRow, node.node_no, node.X, node.Y, node.Z, std::pow(squares, 0.5),
                         node.no_branches);
    }
    report.out.print("NodeTotal       = %-3d  ElemTotal      = %-3d \n", report.var.NodeTotal,
                     report.var.ElemTotal);
}

double scalarProduct(const lcnNET_elems& a, const lcnNET_elems& b)
{
    return a.Vx * b.Vx + a.Vy * b.Vy + a.Vz * b.Vz;
}

/// Length [-] of an element's direction: 1, or 0 where its ends coincide.
double directionLength(const lcnNET_elems& elem)
{
    return std::sqrt(scalarProduct(elem, elem));
}

/// Angle [degrees] between the directions of two elements, each from start to end; 90 beside one without a
/// direction.
double angleBetween(const lcnNET_elems& a, const lcnNET_elems& b)
{
    const double lengths = directionLength(a) * directionLength(b);
    const double cosine = lengths > 0.0 ? scalarProduct(a, b) / lengths : 0.0;
    // rounding can leave the range by an ulp, where acos has no value
    return std::acos(std::clamp(cosine, -1.0, 1.0)) * 180.0 / std::acos(-1.0);
}

// clang-format off
constexpr const char* kVectorRow = " Elem_no = %4d    %9.6lf i   +  %9.6lf j  +  %9.6lf k  with  |%4d| = %9.6lf \n";
constexpr const char* kAngleRow  = " Angle between inlet element %d  and outlet element %d  =  %lf degrees \n";
// clang-format on

void elementVectors(const Report& report)
{
    title(report, 30, "Element Vector data", 49);
    report.out.print(" \n");
    for (int e = 1; e <= report.var.ElemTotal; ++e) {
        const lcnNET_elems& elem = report.elements[e];
        report.out.print(kVectorRow, elem.elem_no, elem.Vx, elem.Vy, elem.Vz, elem.elem_no,
                         directionLength(elem));
    }
    separator(report, 97);
    blankLines(report, 1);
}

void directionsAtNode(const Report& report, const lcnNET_nodes& node)
{
    std::vector<int> inlets;
    std::vector<int> outlets;
    for (int b = 1; b <= node.no_branches; ++b) {
        const int entry = node.LocalElements[b];
        const int e = std::abs(entry);
        const lcnNET_elems& elem = report.elements[e];
        const double inflow = (entry < 0 ? -1.0 : 1.0) * elem.Massflow;
        report.out.print(" Direction is %lE therefore ", inflow);
        if (inflow > kTiny) {
            inlets.push_back(e);
            report.out.print(" Inlet[%d] = %d ", static_cast<int>(inlets.size()), elem.elem_no);
        } else if (inflow < -kTiny) {
            outlets.push_back(e);
            report.out.print(" Outlet[%d] = %d ", static_cast<int>(outlets.size()), elem.elem_no);
        }
        report.out.print("\n");
    }
    blankLines(report, 1);
    for (const int inlet : inlets)
        for (const int outlet : outlets) {
            const lcnNET_elems& from = report.elements[inlet];
            const lcnNET_elems& to = report.elements[outlet];
            report.out.print(kAngleRow, from.elem_no, to.elem_no, angleBetween(from, to));
        }
}

void nodeGeometry(const Report& report)
{
    const std::string rule(98, '=');
    title(report, 30, "Element Node data", 49);
    blankLines(report, 1);
    for (int i = 1; i <= report.var.NodeTotal; ++i) {
        const lcnNET_nodes& node = report.nodes[i];
        if (node.flag != kFreeNode) continue;
        report.out.print("%s\n", rule);
        report.out.print("                  NODE NUMBER %d \n", node.node_no);
        report.out.print("%s\n \n", rule);
        directionsAtNode(report, node);
    }
}

}  // namespace

int writeReport(const ElementArray& elements, const NodeArray& nodes, const lcnNET_var& var,
                const std::string& fileName)
{
    TextFile out(fileName);
    if (!out.isOpen()) return 0;

    const Report report{out, elements, nodes, var};
    headOfReport(report);
    fluidState(report);
    controls(report);
    frictionCorrelation(report);
    darcyWeisbachPipes(report);
    hazenWilliamsPipes(report);
    elementInputs(report);
    pumpInputs(report);
    lossInputs(report);
    boundaryElements(report);
    fixedElementsOrNodes(report);
    inletsAndOutlets(report);
    resultsTitle(report);
    elementalResults(report);
    nodalResults(report);
    elementalResultsUs(report);
    nodalResultsUs(report);
    thermalTable(report);
    rawElements(report);
    rawNodes(report);
    connectivity(report);
    nodeCoordinates(report);
    elementVectors(report);
    nodeGeometry(report);
    return 1;
}

}  // namespace lcn
