// lcnSparseMat.h: a sparse matrix in envelope storage with a direct factorisation.
#pragma once

#include <vector>

#include "array.h"
#include "ordering.h"

/// An n x n matrix of symmetric structure, reordered by reverse Cuthill-McKee and stored by its envelope
/// (Jennings 1966): column k of the reordered matrix keeps its entries from the first non-zero one down to
/// the diagonal.
/// Factorisation is in place, without pivoting. Equations and positions run from 1.
class lcnSparseMat
{
public:
    enum Status {
        kOk = 0,
        kSingular = 1,             // zero pivot
        kNotPositiveDefinite = 2,  // symmetric matrix only
        kNegativePivot = 3,        // warning
        kEmptyStorage = 4,
        kOutsideEnvelope = 5
    };

    lcnSparseMat() = default;
    virtual ~lcnSparseMat() = default;

    /// Orders the equations and allocates zeroed storage. symmetric: only the lower triangle is kept.
    /// Throws std::bad_alloc when the envelope does not fit in memory or its size not in 32 bits.
    void setUp(const lcn::Graph& structure, bool symmetric);

    /// Zeroes values, right-hand side, status and the factorised flag; the structure stays.
    void clear();

    int order() const { return m_n; }
    /// Number of stored off-diagonal entries of one triangle.
    int envelopeSize() const { return m_n == 0 ? 0 : pointer[m_n] - 1; }
    int status() const { return m_status; }
    bool isSymmetric() const { return m_symmetric != 0; }

    /// Adds value to entry (i, j), equation numbers. A symmetric matrix takes each pair once, in either
    /// order.
    void add(int i, int j, double value);

    /// Slot of the pair (i, j), i != j, for addToSlot; 0 with the status set when it lies outside the
    /// envelope.
    int slot(int i, int j);
    /// Adds value to a slot of the lower triangle (a symmetric matrix's only one).
    void addToSlot(int slot, double value) { lower[slot] += value; }
    void addToDiagonal(int i, double value) { diagonal[position[i]] += value; }

    /// Right-hand side of equation i before solve, its solution afterwards.
    double& rightHandSide(int i) { return m_rhs[i]; }

    /// Factorises once; a second call changes nothing. Returns the status: Cholesky for a symmetric matrix
    /// (kNotPositiveDefinite at a pivot that is not above 0), else Crout LU (kSingular at a pivot below 3e-38
    /// in magnitude, kNegativePivot as a warning). Cost: the sum of the squared column heights.
    int factorise();

    /// Factorises when that has not been done, then solves for the right-hand side in place. The solution is
    /// of use only with status kOk.
    int solve();

    lcn::array<int> permutation;      // equation at each position
    lcn::array<int> position;         // position of each equation: the inverse permutation
    lcn::array<int> pointer;          // entries of column k: pointer[k - 1] .. pointer[k] - 1; 0 .. n
    lcn::array<double> lower, upper;  // off-diagonal entries below and above the diagonal, from slot 1
    lcn::array<double> diagonal;      // by position

private:
    int height(int k) const { return pointer[k] - pointer[k - 1]; }
    void factoriseCholesky();
    void factoriseCrout();
    bool checkPivot(double pivot);
    void solveCholesky();
    void solveCrout();

    int m_n = 0;
    lcn::array<double> m_rhs;
    int m_status = kOk;
    int m_symmetric = 1;
    int m_factorised = 0;
};
