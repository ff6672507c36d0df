// flow_update.h: from pressure corrections to flows, and the rules that hold at the edge of the equations.
#pragma once

#include <vector>

#include "node_equations.h"
#include "records.h"

namespace lcn
{

/// Moves node pressures by relaxpp times their corrections [Pa]. Keeps the previous values.
void updatePressures(const NodeArray& nodes, const lcnNET_var& var, const std::vector<double>& corrections);

/// Moves every unfixed element with a free end, of those listed, to
/// rho (relaxpp (correction(start) - correction(end)) / flowResistance + flowEstimate). Keeps the previous
/// values.
void updateFlows(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                 const std::vector<int>& listed, const NodeEquations& equations,
                 const std::vector<double>& corrections);

/// Mean static pressure of every element: (pStart + pEnd)/2 - rho V^2/2 - rho g (zStart + zEnd)/2 [Pa]; of a
/// pump or loss curve the pressure of its start node. In a gas also relaxes the density toward p / (R T).
void updateElementPressures(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

/// Elements between two fixed pressures are in no equation: their law is solved, and a control valve's or
/// non-return element's limit imposed, on their own here.
class FixedPressureElements
{
public:
    void prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);
    /// False when the flow of one of them does not settle.
    bool update(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var) const;

private:
    std::vector<int> m_elements;
};

/// Elements at flow boundaries: the end's pressure follows from the other end's and the element's loss.
class FlowEnds
{
public:
    void prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);
    /// Writes the pressures of the flow ends. False when one of them is not finite.
    bool update(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, double dt) const;

    /// Evaluates the losses now and keeps them from here on, where neither flow nor friction will change.
    void holdLosses(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, double dt);

private:
    struct End {
        int node;       // the flow end
        int innerNode;  // at the element's other end
        int element;
        int direction;  // of the element relative to the inner node
        double rise;    // [Pa] from the inner node to the end, when losses are held
    };
    static double riseOf(const End& end, const NodeArray& nodes, const ElementArray& elements,
                         const lcnNET_var& var, double dt);

    std::vector<End> m_ends;
    bool m_holdsLosses = false;
};

/// Where every pressure starts equal, a correction below half a unit in the last place of the pressure moves
/// nothing, for ever: 1e-5 kg/s at 1 bar. An element without any pressure difference before and after the
/// update, whose corrections would drive a flow above the criterion and whose node is out of balance, gets a
/// first difference: one free end moves by 1e-9 max(|p|, 1) in the sense of its correction relative to the
/// other's.
void separateEqualPressures(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                            const NodeEquations& equations, const std::vector<double>& corrections,
                            double averageFlow);

}  // namespace lcn
