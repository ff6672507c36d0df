#include "lcnSparseMat.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <new>

#include "constants.h"

namespace
{

/// Inner product of two runs of count entries, four partial sums: the additions of one do not wait for one
/// another.
double innerProduct(const double* a, const double* b, int count)
{
    double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
    int i = 0;
    for (; i + 4 <= count; i += 4) {
        s0 += a[i] * b[i];
        s1 += a[i + 1] * b[i + 1];
        s2 += a[i + 2] * b[i + 2];
        s3 += a[i + 3] * b[i + 3];
    }
    for (; i < count; ++i)
        s0 += a[i] * b[i];
    return (s0 + s1) + (s2 + s3);
}

/// values[i] := values[source[i]] for i = 1..n, in place along the cycles of source; entries already moved
/// are marked by a negative sign, which is taken away again at the end.
void permuteInPlace(lcn::array<double>& values, lcn::array<int>& source, int n)
{
    for (int start = 1; start <= n; ++start) {
        if (source[start] < 0) continue;
        const double saved = values[start];
        int at = start;
        for (;;) {
            const int from = source[at];
            source[at] = -from;
            if (from == start) break;
            values[at] = values[from];
            at = from;
        }
        values[at] = saved;
    }
    for (int i = 1; i <= n; ++i)
        source[i] = -source[i];
}

}  // namespace

void lcnSparseMat::setUp(const lcn::Graph& structure, bool symmetric)
{
    m_n = structure.size();
    m_symmetric = symmetric ? 1 : 0;

    permutation.assign(lcn::reverseCuthillMcKee(structure));
    position.resize(m_n + 1);
    for (int p = 1; p <= m_n; ++p)
        position[permutation[p]] = p;

    pointer.resize(m_n + 1);
    pointer[0] = 1;
    std::int64_t total = 1;
    for (int k = 1; k <= m_n; ++k) {
        const auto row = static_cast<std::size_t>(permutation[k]);
        int first = k;
        for (int at = structure.rowStart[row]; at < structure.rowStart[row + 1]; ++at)
            first = std::min(first, position[structure.columns[static_cast<std::size_t>(at)]]);
        total += k - first;
        if (total > INT_MAX) throw std::bad_alloc();
        pointer[k] = static_cast<int>(total);
    }
    lower.resize(envelopeSize() + 1);
    upper.resize(symmetric ? 0 : envelopeSize() + 1);
    diagonal.resize(m_n + 1);
    m_rhs.resize(m_n + 1);
    clear();
}

void lcnSparseMat::clear()
{
    lower.fill(0.0);
    upper.fill(0.0);
    diagonal.fill(0.0);
    m_rhs.fill(0.0);
    m_status = kOk;
    m_factorised = 0;
}

int lcnSparseMat::slot(int i, int j)
{
    if (lower.isEmpty()) {
        m_status = kEmptyStorage;
        return 0;
    }
    const int hi = std::max(position[i], position[j]);
    const int lo = std::min(position[i], position[j]);
    const int at = pointer[hi] - hi + lo;
    if (at < pointer[hi - 1]) {
        m_status = kOutsideEnvelope;
        return 0;
    }
    return at;
}

void lcnSparseMat::add(int i, int j, double value)
{
    if (i == j) {
        if (diagonal.isEmpty())
            m_status = kEmptyStorage;
        else
            addToDiagonal(i, value);
        return;
    }
    const int at = slot(i, j);
    if (at == 0) return;
    if (m_symmetric == 0 && position[j] > position[i])
        upper[at] += value;
    else
        lower[at] += value;
}

int lcnSparseMat::factorise()
{
    if (m_factorised != 0 || m_status == kEmptyStorage || m_status == kOutsideEnvelope) return m_status;
    if (m_symmetric != 0)
        factoriseCholesky();
    else
        factoriseCrout();
    m_factorised = 1;
    return m_status;
}

/// A = L L', row by row of the reordered matrix (square-root method, Cholesky 1910).
void lcnSparseMat::factoriseCholesky()
{
    double* L = lower.data();
    double* d = diagonal.data();
    const int* ptr = pointer.data();
    for (int k = 1; k <= m_n; ++k) {
        double* row = L + ptr[k - 1];
        const int h = ptr[k] - ptr[k - 1];
        const int first = k - h;  // column of row[0]
        for (int j = first; j < k; ++j) {
            const int hj = ptr[j] - ptr[j - 1];
            const int from = std::max(first, j - hj);
            const double sum = innerProduct(row + (from - first), L + ptr[j] - j + from, j - from);
            row[j - first] = (row[j - first] - sum) / d[j];
        }
        const double pivot = d[k] - innerProduct(row, row, h);
        if (!(pivot > 0.0)) {  // true for a pivot that is no number
            m_status = kNotPositiveDefinite;
            return;
        }
        d[k] = std::sqrt(pivot);
    }
}

/// False when the factorisation has to stop.
bool lcnSparseMat::checkPivot(double pivot)
{
    if (!(std::fabs(pivot) >= lcn::kTiny)) {
        m_status = kSingular;
        return false;
    }
    if (pivot < 0.0) m_status = kNegativePivot;
    return true;
}

/// A = L D U with unit triangles, column by column (Crout 1941).
void lcnSparseMat::factoriseCrout()
{
    double* L = lower.data();
    double* U = upper.data();
    double* d = diagonal.data();
    const int* ptr = pointer.data();
    if (m_n >= 1 && !checkPivot(d[1])) return;
    for (int k = 2; k <= m_n; ++k) {
        const int h = ptr[k] - ptr[k - 1];
        const int first = k - h;
        double* column = U + ptr[k - 1];
        double* row = L + ptr[k - 1];

        // reduce the upper column and the lower row by the part already factorised
        for (int m = first + 1; m < k; ++m) {
            const int hm = ptr[m] - ptr[m - 1];
            const int from = std::max(first, m - hm);
            const int count = m - from;
            column[m - first] -= innerProduct(L + ptr[m] - m + from, column + (from - first), count);
            row[m - first] -= innerProduct(row + (from - first), U + ptr[m] - m + from, count);
        }
        // scale both to unit triangles; the pivot takes what one of them still holds unscaled
        double sum = 0.0;
        for (int m = first; m < k; ++m) {
            const double unscaled = column[m - first];
            column[m - first] /= d[m];
            row[m - first] /= d[m];
            sum += row[m - first] * unscaled;
        }
        d[k] -= sum;
        if (!checkPivot(d[k])) return;
    }
}

int lcnSparseMat::solve()
{
    factorise();
    if (m_status != kOk && m_status != kNegativePivot) return m_status;
    permuteInPlace(m_rhs, permutation, m_n);
    if (m_symmetric != 0)
        solveCholesky();
    else
        solveCrout();
    permuteInPlace(m_rhs, position, m_n);
    return m_status;
}

void lcnSparseMat::solveCholesky()
{
    double* x = m_rhs.data();
    const double* L = lower.data();
    const double* d = diagonal.data();
    for (int k = 1; k <= m_n; ++k) {
        const int h = height(k);
        x[k] = (x[k] - innerProduct(L + pointer[k - 1], x + (k - h), h)) / d[k];
    }
    for (int k = m_n; k >= 1; --k) {
        const int h = height(k);
        const double* row = L + pointer[k - 1];
        x[k] /= d[k];
        for (int m = 0; m < h; ++m)
            x[k - h + m] -= row[m] * x[k];
    }
}

void lcnSparseMat::solveCrout()
{
    double* x = m_rhs.data();
    for (int k = 1; k <= m_n; ++k) {
        const int h = height(k);
        x[k] -= innerProduct(lower.data() + pointer[k - 1], x + (k - h), h);
    }
    for (int k = 1; k <= m_n; ++k)
        x[k] /= diagonal[k];
    for (int k = m_n; k >= 1; --k) {
        const int h = height(k);
        const double* column = upper.data() + pointer[k - 1];
        for (int m = 0; m < h; ++m)
            x[k - h + m] -= column[m] * x[k];
    }
}
