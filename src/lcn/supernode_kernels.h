// supernode_kernels.h: the dense inner loops of the supernodal factorisation.
#pragma once

#include <cstddef>

namespace lcn
{

/// Columns that a kernel treats together.
constexpr int kKernelColumns = 4;

/// Dense matrices are stored by columns; the second index of a size is the distance of columns.
struct SupernodeKernels {
    /// c -= a w for rows i >= j - j mod 4 of column j: c is m x n, a is m x k. The k x n factor w is packed in
    /// groups of four columns, each row by row: w[(j / 4) 4 k + 4 i + j mod 4]. What lies above the diagonal
    /// blocks stays as it is.
    void (*subtractProduct)(double* c, std::ptrdiff_t ldc, const double* a, std::ptrdiff_t lda,
                            const double* w, int m, int n, int k);
    /// c[i] *= factor for i < m.
    void (*scale)(double* c, double factor, int m);
    /// c -= a x: c has m entries, a is m x k, x has k entries.
    void (*subtractColumns)(double* c, const double* a, std::ptrdiff_t lda, const double* x, int m, int k);
    /// x -= a' c, sizes as above.
    void (*subtractDots)(double* x, const double* a, std::ptrdiff_t lda, const double* c, int m, int k);
};

/// Loops that every processor runs.
const SupernodeKernels& portableKernels();
/// The fastest loops for this processor: AVX2 with FMA where it has them, else the portable ones. A fused
/// multiply-add rounds once, so that the two differ in the last bits.
const SupernodeKernels& fastestKernels();

}  // namespace lcn
