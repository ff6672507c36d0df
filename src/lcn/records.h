// records.h: the four records that one solve works on. SI units throughout; solver numbers run from 1.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "array.h"
#include "message.h"

/// Common base of the records: a polymorphic object with one word of its own, copied with the record.
class lcnObject
{
public:
    explicit lcnObject(std::uint64_t word = 0) : m_word(word) {}
    lcnObject(const lcnObject&) = default;
    lcnObject& operator=(const lcnObject&) = default;
    virtual ~lcnObject() = default;

    std::uint64_t word() const { return m_word; }

private:
    std::uint64_t m_word;
};

namespace lcn
{

/// Node classes, field flag of lcnNET_nodes.
enum NodeFlag {
    kFreeNode = 0,  // pressure is solved for
    kPressureBoundary = 1,
    kFlowBoundary = 2  // end node without a fixed pressure
};

/// Element type codes, field type of lcnNET_elems.
enum ElementType {
    kPipe = 1,
    kPump = 2,
    kLossCurve = 3,
    kHazenWilliams = 4,
    kOrifice = 5,
    kGeneralLoss = 6,
    kKvValve = 7,
    kCvValve = 8,
    kControlValve = 9,
    kNonReturn = 10
};

}  // namespace lcn

/// A node. Copies share the lists.
class lcnNET_nodes : public lcnObject
{
public:
    lcnNET_nodes() = default;
    /// A node whose lists are handles on noList until the connection fills them: saves four allocations a
    /// node.
    explicit lcnNET_nodes(const lcn::array<int>& noList)
        : Elements(noList), Neighbours(noList), LocalElements(noList), Work(noList)
    {
    }

    int node_no = 0;      // the host's number
    int no_branches = 0;  // number of element ends here; exactly 1 is an end node
    int flag = 0;         // lcn::NodeFlag; translation, preparation
    int tempflag = 0;     // 1: Temperature is fixed; translation
    int held = 0;         // 1: a free node whose pressure is held for a part without one; pressure groups
    int Status = 0;       // printed by the report; stays 0

    double Pressbound = 0.0;   // [Pa] fixed pressure, hydrostatic part included; translation
    double Pressure = 0.0;     // [Pa] hydrostatic part included until the solve's end; preparation, iteration
    double PressureOld = 0.0;  // [Pa] previous iteration
    double Temperature = 0.0;  // [K]
    double TemperatureOld = 0.0;       // [K] previous iteration
    double Masssource = 0.0;           // [kg/s] external inflow; iteration (boundary nodes)
    double Height = 0.0;               // [m] above the circuit's lowest node; translation
    double X = 0.0, Y = 0.0, Z = 0.0;  // [m]

    // Element ends at this node, 1 .. no_branches; + when the node is the element's end, - when it is its
    // start.
    lcn::array<int> Elements;       // the host's element numbers, signed
    lcn::array<int> Neighbours;     // the host's numbers of the nodes at the far ends
    lcn::array<int> LocalElements;  // solver element numbers, signed
    lcn::array<int> Work;           // free for a solver stage; none needs it
};

/// A characteristic curve: p/rho = a + b q + c q^2 + d q^3, q in m3/s, p/rho in m2/s2. Copies share the
/// points.
class lcnNET_pumps
{
public:
    double a = 0.0, b = 0.0, c = 0.0, d = 0.0;  // a pump's are stored negated: minus the pressure rise
    double qmax = 0.0;                  // [m3/s] pump: flow of zero pressure rise; loss: last flow point
    double RefDensity = 1000.0;         // [kg/m3] of the points
    lcn::array<double> FlowRate;        // [m3/s], from slot offset + 0
    lcn::array<double> PressurePoints;  // [Pa], same count

    /// Number of points.
    int points() const { return PressurePoints.size(); }
};

/// An element.
class lcnNET_elems : public lcnObject
{
public:
    explicit lcnNET_elems(std::uint64_t word = 0) : lcnObject(word) {}
    /// An element that shares curve's points: saves two allocations for each element without a curve of its
    /// own.
    lcnNET_elems(std::uint64_t word, const lcnNET_pumps& curve) : lcnObject(word), Curve(curve) {}

    int elem_no = 0;                 // the host's number
    int StartNode = 0, EndNode = 0;  // the host's node numbers; flow > 0 runs from start to end
    int fix = 0;                     // 1: Massflow is FixedFlow
    int FlowLimited = 0;             // 1: FixedFlow is a target or a limit, decided during the iteration
    int LocalStartNode = 0, LocalEndNode = 0;  // solver node numbers
    int type = 0;                              // lcn::ElementType; other values have no law and carry no flow
    int Proximity = 0;
    int subKind = 0;     // 40, 50: heat is given; 37: doubled heat transfer; no host input sets it
    int Energy_var = 0;  // energy input kind; translation

    double diam = 0.0;                         // [m] inner or hydraulic diameter
    double length = 0.0;                       // [m], >= 1e-6
    double rough = 0.0;                        // [m] absolute roughness
    double k = 0.0;                            // [-] minor loss coefficient in force; translation, iteration
    double kSpecified = 0.0;                   // [-] minor loss coefficient of the host; translation
    double FixedFlow = 0.0;                    // [kg/s]
    double Pressure = 0.0, PressureOld = 0.0;  // [Pa] mean static pressure
    double Massflow = 0.0, MassflowOld = 0.0;  // [kg/s], > 0 from start to end
    double Temperature = 0.0, TemperatureOld = 0.0;  // [K] of the fluid
    double MetalTemp = 0.0;                          // [K] wall temperature
    double density = 0.0, densityOld = 0.0;          // [kg/m3]
    double hConvect = 0.0;                           // [W/(m2 K)]
    double Vx = 0.0, Vy = 0.0, Vz = 0.0;  // unit vector from start to end; zero for coincident ends
    double HTE = 1.0;                     // [-] multiplier of heat transfer
    double LaminarFactor = 64.0;          // [-] Cl of f = Cl / Re
    double Area = 0.0;                    // [m2] flow cross-section
    double WettedArea = 0.0;  // [m2] wetted perimeter [m] until the geometry is known, then times the length
    double heat = 0.0;        // [W]
    double HeatFlux = 0.0;    // [W/m2], or the energy input value of a kind without a place of its own
    double TemperatureRise = 0.0;  // [K] energy input
    double friction = 0.0;         // [-] Darcy friction factor; written by frictionFactor only
    double HWcoeff = 0.0;          // main coefficient: input by type, then the prepared resistance
    double Param1 = 0.0, Param2 = 0.0, Param3 = 0.0, Param4 = 0.0;  // further coefficients by type
    lcnNET_pumps Curve;                                             // types 2 and 3
    int Constraint = 1;                                             // printed by the report; stays 1

    /// Volume flow [m3/s]; 0 without a density.
    double volumeFlow() const;
};

/// Control and fluid state of one solve.
class lcnNET_var : public lcnObject
{
public:
    lcnNET_var();

    std::string name;           // file name of the iteration report; empty: "network_results.dat"
    bool Debug = false;         // debug files, trace and report are written
    bool ViscosityLaw = false;  // viscosity follows temperature
    bool compressible = false;  // ideal gas instead of a liquid; no host input sets it
    bool startedNear = false;   // the iteration began near the solution; iteration

    int circuitNumber = 0;  // first value of the end-of-iteration messages
    int nIter = 0;          // number of the iteration
    int numitermm = 0;      // iteration limit
    int numiterpp = 0;      // limit of the flow-update counter
    int nxx = 0;            // the host's number of the node in the trace
    int Energy = 0;         // 1: temperatures are solved
    int Minor = 0;          // 0 specified K, 1 computed K unless one is specified, 4 none, others computed K
    int LimitedFlows = 0;   // 1: some element has FlowLimited
    int ElemTotal = 0, NodeTotal = 0;
    int InletNode = 0;       // the host's number of the inlet node, quoted in curve errors
    int FrictionMethod = 1;  // correlation of the turbulent friction factor

    double Pav = 0.0;                                      // [Pa] reference pressure
    double Density = 0.0;                                  // [kg/m3]
    double Viscosity = 0.0;                                // [Pa s], dynamic
    double Cp = 0.0;                                       // [J/(kg K)]
    double Pr = 0.0;                                       // [-]
    double Conductivity = 0.0;                             // [W/(m K)]
    double ViscA = 2.86e-5, ViscB = 783.8, ViscC = 396.8;  // [Pa s], [K], [K]: temperature law of viscosity
    double Concrit = 0.0;                                  // [-] convergence criterion
    double relaxpp = 0.0;  // [-] relaxation of pressure corrections and, below 0.4, of friction factors
    double Tav =
        294.260009765625;     // [K] kept: 294.26 in single precision, 70 degF; reported temperatures show it
    double Datum = 0.0;       // [m] elevation of the lowest node
    double Q = 0.0;           // printed at the head of the report
    double flowWeight = 0.0;  // [-] weight of the new flow against the previous one
    double densityWeight = 0.0;        // [-] relaxation of the gas density
    double temperatureWeight = 0.0;    // [-] carried, not read
    double gasConstant = 0.0;          // [J/(kg K)]
    double heatRatio = 0.0;            // [-] ratio of specific heats
    std::array<double, 3> gasModel{};  // further gas constants, carried, not read

    std::array<lcn::array<float>, 15> FloatWork;  // sized and cleared with a solve; none is read
    std::array<lcn::array<int>, 2> IntWork;       // the same
    lcn::array<int> Control;                      // [1]: warm-start flag
    lcn::array<lcnNET_pumps> Pumps;               // the curves of the network
    std::vector<lcn::Message> Messages;           // in the order recorded

    /// Warm-start flag: 1 while the mass balance meets the criterion.
    int& warmStart() { return Control[1]; }

    /// Zero-filled work arrays: Control of 8 slots, the others of 2.
    void sizeWorkArrays();
    /// Every work array back to no slots.
    void clearWorkArrays();

    void AddMessage(std::uint32_t id);
    void AddMessage(std::uint32_t id, const std::vector<double>& parameters);
    void AddMessage(std::uint32_t id, int number);
    void AddMessage(std::uint32_t id, int number, double value);
    /// The solve was cancelled: 701208 without parameters.
    void AddMessage();
};

namespace lcn
{
using NodeArray = array<lcnNET_nodes>;
using ElementArray = array<lcnNET_elems>;
}  // namespace lcn
