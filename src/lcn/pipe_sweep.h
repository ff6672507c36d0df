// pipe_sweep.h: the pipes of a steady liquid network in compact form, and an iteration's sweeps over them.
#pragma once

#include <vector>

#include "node_equations.h"
#include "records.h"

namespace lcn
{

/// [-] Slower elements take no part in the pressure measure.
inline constexpr double kSmallestMeasuredRe = 1.0;

/// Open Darcy-Weisbach elements with a free end, and elements whose flow is given for good. From prepare to
/// write the flows and friction factors of the open ones are here and those in the records are older; every
/// element that is not here is in others() and is followed in its record.
/// Everything is in others() in a gas, in an unsteady step, and with loss coefficients or a viscosity that
/// change during the iteration.
class PipeSweep
{
public:
    /// Reads the elements from their records, after the starting values and flow limits; evaluates the
    /// friction factors of given flows once. isWanted false leaves everything to others().
    void prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, double dt,
                 bool isWanted);

    bool isUsed() const { return m_isUsed; }
    /// Elements that are not here, ascending.
    const std::vector<int>& others() const { return m_others; }

    /// Friction factors at the present flows.
    void updateFriction(const lcnNET_var& var);

    /// Adds every element's part to the node equations, at the present pressures.
    void assemble(const NodeArray& nodes, NodeEquations& equations);

    /// New flows from the pressure corrections [Pa] by node, and the friction factors at them.
    void updateFlows(const lcnNET_var& var, const NodeEquations& equations,
                     const std::vector<double>& corrections);

    /// Adds to the net inflows [kg/s] by node.
    void addInflows(std::vector<double>& balance) const;

    /// Sum of |mass flow| [kg/s].
    double totalFlow() const { return m_givenTotal + m_openTotal; }

    /// Sum of |(pressure between the nodes - loss) / mean pressure| [-].
    double pressureMisses(const NodeArray& nodes, const lcnNET_var& var,
                          Friction friction = Friction::kStored);

    /// dp = (friction f + minor) m |m|.
    struct Pipe {
        double mass;      // [kg/s]
        double estimate;  // [kg/s] at a usual velocity; from the first assembly on what the pressures give
        double toRe;      // [s/kg] Re = toRe |m|
        double relRough;  // [-]
        double laminar;   // [-] Cl of f = Cl / Re
        double f;         // [-]
        double friction;  // [Pa s2/kg2] L / (2 D rho A^2)
        double minor;     // [Pa s2/kg2] K / (2 rho A^2)
        int start, end, element;
    };
    std::vector<Pipe>& pipes() { return m_pipes; }
    /// Net inflow [kg/s] by node of the given flows.
    const std::vector<double>& givenInflow() const { return m_givenInflow; }
    /// Takes the flows from the records again.
    void readFlows(const ElementArray& elements, const lcnNET_var& var);

    /// Brings Massflow, MassflowOld and friction of the records up to date.
    void write(const ElementArray& elements) const;

private:
    void addGivenFlow(lcnNET_elems& elem, const lcnNET_var& var);
    void addPipe(const lcnNET_elems& elem, const lcnNET_var& var, int e);
    void readPressures(const NodeArray& nodes);
    void updateFriction(const lcnNET_var& var, std::size_t first, std::size_t count);
    /// Writes the law's friction factors [-] of count pipes, at most a block, to f.
    void undampedFriction(const lcnNET_var& var, std::size_t first, std::size_t count, double* f) const;

    std::vector<Pipe> m_pipes;
    std::vector<int> m_others;
    std::vector<double> m_givenInflow;  // by node [kg/s]
    std::vector<double> m_pressure;     // by node [Pa]
    double m_givenTotal = 0.0;          // [kg/s]
    double m_openTotal = 0.0;           // [kg/s]
    bool m_isUsed = false;
};

}  // namespace lcn
