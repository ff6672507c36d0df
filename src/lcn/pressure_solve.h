// pressure_solve.h: pressure corrections from the node equations.
#pragma once

#include <set>
#include <vector>

#include "lcnSparseMat.h"
#include "node_equations.h"
#include "records.h"

namespace lcn
{

/// The linear system of the free nodes. Its structure (numbering, ordering, envelope, place of every element)
/// depends on the graph and on which nodes are free; it is built once and again only when that changes.
class PressureSystem
{
public:
    /// Numbers the free nodes, orders them and finds every element's place. Raises kNoInternalNodes when none
    /// is free.
    void prepare(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

    /// Solves the equations; corrections (slots 1..NodeTotal) receives one pressure correction [Pa] per node,
    /// 0.0 for nodes that are not free and for all of them when the solution failed. Returns the matrix
    /// status; each failure is recorded once per solve as message 701200 with its reason.
    /// A matrix that is not positive definite gives every free node the correction of one lumped balance. A
    /// singular unsymmetric one raises FatalException.
    int solvePressures(lcnNET_var& var, const NodeEquations& equations, std::vector<double>& corrections);

    const lcnSparseMat& matrix() const { return m_matrix; }

private:
    void fillMatrix(const NodeEquations& equations);
    void reportStatus(lcnNET_var& var, int reason);
    double lumpedCorrection(const NodeEquations& equations) const;

    struct Link {
        int element;
        int slot;
    };

    std::vector<int> m_equation;   // per node: 1..n, 0 when not free
    std::vector<int> m_freeNodes;  // per equation 1..n: its node
    std::vector<Link> m_links;     // elements between two free nodes and their place in the matrix
    std::set<int> m_reported;      // reasons recorded so far
    lcnSparseMat m_matrix;
};

}  // namespace lcn
