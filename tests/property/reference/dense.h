// dense.h: systems of linear equations, solved with a full matrix.
#pragma once

#include <cstddef>
#include <vector>

namespace reference
{

/// Square matrix, factorised in place as P A = L U with partial pivoting (Gauss; the largest entry of a column).
class DenseMatrix
{
public:
    explicit DenseMatrix(std::size_t size) : m_size(size), m_entries(size * size, 0.0), m_rows(size) {}

    double& at(std::size_t row, std::size_t column) { return m_entries[row * m_size + column]; }
    /// False when a pivot is 0 or no number; the matrix is then of no use.
    bool factorise();
    /// Solves A x = b with the factors; b becomes x.
    void solve(std::vector<double>& b) const;

private:
    std::size_t m_size;
    std::vector<double> m_entries;    // row by row
    std::vector<std::size_t> m_rows;  // row of A that stands at each place
};

}  // namespace reference
