// sparse_factor.h: the direct solution of a pipe network's pressure equations.
#pragma once

#include <cstddef>
#include <vector>

#include "chain_elimination.h"
#include "supernodes.h"

namespace lcn
{

/// Factorises and solves sparse symmetric positive definite systems: chains and trees are eliminated first,
/// what is left by supernodes. The structure is prepared once for any number of factorisations.
/// Equations run from 1. The same input gives the same bits on the same processor.
class SparseFactor
{
public:
    /// Orders n equations and lays out the factor for the structure of these pairs. Throws std::bad_alloc.
    void prepare(int n, const std::vector<EquationPair>& pairs);

    /// Factorises the matrix with, for pair i (0-based), the entry -conductance[i], and with the sum of its
    /// pairs' conductances and outside[1..n], the way out of the system, on each diagonal. All are >= 0.
    /// False when one is negative or a pivot is not clearly positive or not finite; the factor is then of no
    /// use.
    bool factorise(const double* outside, const double* conductance);

    /// Solves in place: rhs[1..n] becomes the solution. After a factorisation that succeeded.
    void solve(double* rhs);

    /// Values kept per factorisation, off and on the diagonal.
    std::size_t factorEntries() const;
    /// Equations left when those with at most two neighbours are gone.
    int coreSize() const { return m_chains.coreSize(); }
    const ChainElimination& chains() const { return m_chains; }

    /// Fixes the portable kernels from the next prepare on, for tests.
    void usePortableKernels(bool portable) { m_core.usePortableKernels(portable); }

private:
    ChainElimination m_chains;
    SupernodalFactor m_core;
};

}  // namespace lcn
