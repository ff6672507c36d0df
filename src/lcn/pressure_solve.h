// pressure_solve.h: pressure corrections from the node equations.
#pragma once

#include <set>
#include <vector>

#include "lcnSparseMat.h"
#include "node_equations.h"
#include "records.h"
#include "sparse_factor.h"

namespace lcn
{

/// Which factorisation a system tries first: SparseFactor with the best instructions that the processor has, or
/// with those that every one has; kReference keeps to lcnSparseMat.
enum class Factorisation { kFast, kPortable, kReference };

/// The linear system of the free nodes. Its structure (numbering, ordering, place of every element) depends on
/// the graph and on which nodes are free; it is built once and again only when that changes.
/// Two factorisations solve it: SparseFactor, and lcnSparseMat with its statuses, which takes over where a
/// pivot of the first is not clearly positive and solves systems of fewer than 20 equations, which gain little.
class PressureSystem
{
public:
    explicit PressureSystem(Factorisation factorisation = Factorisation::kFast) : m_first(factorisation) {}

    /// Numbers the free nodes and orders them. Raises kNoInternalNodes when none is free.
    void prepare(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

    /// Solves the equations; corrections (slots 1..NodeTotal) receives one pressure correction [Pa] per node,
    /// 0.0 for nodes that are not free and for all of them when the solution failed. Returns the matrix
    /// status; each failure is recorded once per solve as message 701200 with its reason.
    /// A matrix that is not positive definite gives every free node the correction of one lumped balance. A
    /// singular unsymmetric one raises FatalException.
    int solvePressures(lcnNET_var& var, const NodeEquations& equations, std::vector<double>& corrections);

    /// The same by SparseFactor alone, and only the corrections of free nodes are written. False, with nothing
    /// recorded, when a pivot is not clearly positive.
    bool solveFast(const NodeEquations& equations, std::vector<double>& corrections);

    /// Number of equations.
    int size() const { return static_cast<int>(m_freeNodes.size()) - 1; }

    /// The reference matrix, laid out when it was needed first.
    const lcnSparseMat& matrix();

private:
    int equationOf(int node) const { return m_equation[static_cast<std::size_t>(node)]; }
    void layOutMatrix();
    void fillMatrix(const NodeEquations& equations);
    void reportStatus(lcnNET_var& var, int reason);
    double lumpedCorrection(const NodeEquations& equations) const;

    struct WayOut {
        int equation;
        int element;
    };

    Factorisation m_first;
    std::vector<int> m_equation;        // per node: 1..n, 0 when not free
    std::vector<int> m_freeNodes;       // per equation 1..n: its node
    std::vector<int> m_links;           // elements between two free nodes
    std::vector<EquationPair> m_pairs;  // their equations
    std::vector<WayOut> m_waysOut;      // elements from a free node to one that is not
    std::set<int> m_reported;           // reasons recorded so far

    SparseFactor m_factor;
    bool m_isFactorPrepared = false;
    std::vector<double> m_outside, m_conductance, m_rhs;  // of the fast solution

    lcnSparseMat m_matrix;
    bool m_isMatrixLaidOut = false;
    std::vector<int> m_slots;  // of the links in the matrix
};

}  // namespace lcn
