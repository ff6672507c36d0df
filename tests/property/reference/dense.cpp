#include "dense.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace reference
{

bool DenseMatrix::factorise()
{
    std::iota(m_rows.begin(), m_rows.end(), std::size_t{0});
    for (std::size_t k = 0; k < m_size; ++k) {
        std::size_t pivot = k;
        for (std::size_t row = k + 1; row < m_size; ++row)
            if (std::fabs(at(row, k)) > std::fabs(at(pivot, k))) pivot = row;
        if (!(std::fabs(at(pivot, k)) > 0.0)) return false;
        if (pivot != k) {
            std::swap_ranges(&at(k, 0), &at(k, 0) + m_size, &at(pivot, 0));
            std::swap(m_rows[k], m_rows[pivot]);
        }
        for (std::size_t row = k + 1; row < m_size; ++row) {
            // most entries are 0: the equations of a network join few unknowns each
            if (at(row, k) == 0.0) continue;
            const double factor = at(row, k) / at(k, k);
            at(row, k) = factor;
            double* const target = &at(row, 0);
            const double* const source = &at(k, 0);
            for (std::size_t column = k + 1; column < m_size; ++column)
                target[column] -= factor * source[column];
        }
    }
    return true;
}

void DenseMatrix::solve(std::vector<double>& b) const
{
    std::vector<double> x(m_size);
    for (std::size_t row = 0; row < m_size; ++row) {
        x[row] = b[m_rows[row]];
        const double* const entries = m_entries.data() + row * m_size;
        for (std::size_t column = 0; column < row; ++column)
            x[row] -= entries[column] * x[column];
    }
    for (std::size_t row = m_size; row-- > 0;) {
        const double* const entries = m_entries.data() + row * m_size;
        for (std::size_t column = row + 1; column < m_size; ++column)
            x[row] -= entries[column] * x[column];
        x[row] /= entries[row];
    }
    b = std::move(x);
}

}  // namespace reference
