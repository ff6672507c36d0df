// supernodes.h: sparse LDL' factorisation by dense panels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "chain_elimination.h"
#include "supernode_kernels.h"

namespace lcn
{

/// A = L D L' of a sparse symmetric matrix, reordered by minimum degree. Neighbouring columns of the factor
/// with (nearly) the same structure are kept as one dense panel, a supernode (Ashcraft and Grimes 1989). A
/// panel with few rows hands its updates on to places found beforehand; a larger one is asked for them by
/// the panels they concern (left-looking, Ng and Peyton 1993), through the dense kernels.
/// Equations and positions run from 0.
class SupernodalFactor
{
public:
    /// Orders n equations and lays the factor out for these distinct pairs. Throws std::bad_alloc.
    void prepare(int n, const std::vector<EquationPair>& pairs);
    /// Position of every equation in the factor; diagonal and x are by position.
    const std::vector<int>& place() const { return m_place; }

    /// Factorises the matrix with this diagonal and the entry -conductance[i] for pair i. False when a pivot is
    /// not clearly positive beside its diagonal, or not finite.
    bool factorise(const double* diagonal, const double* conductance);
    /// Solves in place.
    void solve(double* x);

    int size() const { return m_n; }
    /// Stored values of the factor, and panels they are in.
    std::size_t entries() const { return m_entries; }
    std::size_t panels() const { return m_panels.size(); }
    /// Fixes the portable kernels, for tests; otherwise the fastest of this processor are used.
    void usePortableKernels(bool portable) { m_portable = portable; }

private:
    /// Columns first .. first + columns - 1. The panel's row list begins with its own columns.
    struct Panel {
        int first;
        int columns;
        int rows;
        bool pushes;          // hands its updates on itself
        std::size_t list;     // of its rows, in m_rows
        std::size_t values;   // of its first column, in m_values; columns are rows apart
        std::size_t targets;  // of its updates, in m_targets, when it pushes
    };
    friend class SymbolicFactor;

    void pull(const Panel& panel, int index);
    void pullFrom(const Panel& panel, int source);
    bool eliminatePanel(const Panel& panel, const double* diagonal);
    bool eliminateSmallPanel(const Panel& panel, const double* diagonal);
    void forward(const Panel& panel, double* x);
    void backward(const Panel& panel, double* x);
    void push(const Panel& panel);
    void linkUp(int index);
    void pack(const Panel& panel, int from, int count);
    double* valuesOf(const Panel& panel) { return m_values.data() + panel.values; }

    int m_n = 0;
    bool m_portable = false;
    const SupernodeKernels* m_kernels = nullptr;
    std::size_t m_entries = 0;
    std::vector<int> m_place;
    std::vector<Panel> m_panels;
    std::vector<int> m_panelOf;  // per position
    std::vector<int> m_rows;
    std::vector<std::uint32_t> m_targets;
    std::vector<std::size_t> m_pairPlace;  // per pair: in m_values
    std::vector<double> m_values;
    std::vector<double> m_pivots, m_inverse;  // per position: d and 1/d
    // Panels whose updates are asked for: per panel the first of those waiting for it, the next one in the
    // same queue, and the row that it has got to.
    std::vector<int> m_waiting, m_nextWaiting, m_progress;
    std::vector<int> m_rowIndex;  // per position: row in the panel being worked on
    std::vector<int> m_relative;
    std::vector<double> m_packed, m_update;
    std::vector<double> m_gathered;  // the rows below a panel, of the vector being solved
};

/// Smallest pivot, relative to the equation's diagonal, that counts as clearly positive. A pivot is the
/// diagonal less what the neighbours take; each term is rounded relative to the diagonal itself (the entries
/// of a definite matrix never grow, Wilkinson 1968), so the pivot carries an error of a few 1e-16 of the
/// diagonal. At 1e-13 two or three digits of it are still right; below, its sign may be an accident.
constexpr double kSmallestPivot = 1e-13;

}  // namespace lcn
