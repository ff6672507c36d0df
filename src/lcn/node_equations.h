// node_equations.h: one mass balance per free node, linearised about the current pressures and flows.
#pragma once

#include <vector>

#include "element_hydraulics.h"
#include "records.h"

namespace lcn
{

/// Time step [s] of a steady solve.
inline constexpr double kSteadyState = 1e30;

/// An element's part in the node equations, in its own direction from start to end.
struct ElementEquation {
    double conductance = 0.0;     // [kg/(s Pa)] mass flow per pressure difference between its ends
    double massFlow = 0.0;        // [kg/s] into its end node, out of its start node
    double flowEstimate = 0.0;    // [m3/s] volume flow that its law gives for the present pressure difference
    double flowResistance = 0.0;  // [Pa s/m3] turns a difference of pressure corrections into one of flow
};

/// The node equations and what is needed to turn their solution into flows. Sized once per solve, filled once
/// per iteration. Slot 0 is unused.
struct NodeEquations {
    std::vector<double> diag;          // per node: total conductance [kg/(s Pa)]; 1.0 when not free
    std::vector<double> rhs;           // per node: net estimated inflow [kg/s]; 0 when not free
    std::vector<double> coef;          // per element: conductance [kg/(s Pa)], the same seen from either end
    std::vector<double> flowEstimate;  // per element [m3/s]
    std::vector<double> flowResistance;   // per element [Pa s/m3]
    std::vector<int> withoutConductance;  // free nodes between fixed flows only: diag is 1e6
    std::vector<int> withoutDrop;         // unfixed quadratic elements between exactly equal pressures

    /// Zero-filled, for the record counts of var.
    void size(const lcnNET_var& var);
};

/// Imposes the flow limit or target of an element whose FlowLimited is set, by type: 10 shuts reverse flow, 9
/// holds its limit, others take their target and hold it once they flow. Writes fix, FixedFlow, Massflow,
/// MassflowOld. The assembly calls it once for each free end, as the balance of either end meets the element.
void applyFlowLimit(lcnNET_elems& elem);

/// The part of an unfixed element e for the time step dt [s]. Zero for a type without a law.
ElementEquation elementEquation(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                                int e, double dt, Friction friction = Friction::kEvaluate);

/// Empties the equations before elements are added.
void clearNodeEquations(NodeEquations& equations);

/// Adds the parts of the listed elements for the time step dt [s].
void addToNodeEquations(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                        double dt, const std::vector<int>& listed, NodeEquations& equations,
                        Friction friction);

/// Completes the equations once all elements are in them: nodes that are not free, nodes without conductance,
/// elements at rest, storage.
void completeNodeEquations(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                           double dt, NodeEquations& equations);

/// The three above in one for all elements: fills the equations for the time step dt [s]. Every element's law is evaluated once, whatever the number
/// of its free ends. Reads pressures, flows, coefficients; writes fix, FixedFlow and Massflow of elements
/// with FlowLimited and (kEvaluate) friction.
void assembleNodeEquations(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                           double dt, NodeEquations& equations, Friction friction = Friction::kEvaluate);

}  // namespace lcn
