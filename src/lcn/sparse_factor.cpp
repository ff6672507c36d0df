#include "sparse_factor.h"

namespace lcn
{

void SparseFactor::prepare(int n, const std::vector<EquationPair>& pairs)
{
    m_chains.prepare(n, pairs);
    m_core.prepare(m_chains.coreSize(), m_chains.corePairs());
    m_chains.orderCore(m_core.place());
}

bool SparseFactor::factorise(const double* outside, const double* conductance)
{
    return m_chains.eliminate(outside, conductance) &&
           m_core.factorise(m_chains.coreDiagonal(), m_chains.coreConductance());
}

void SparseFactor::solve(double* rhs)
{
    m_chains.forward(rhs);
    m_core.solve(m_chains.coreRhs());
    m_chains.backward(rhs);
}

std::size_t SparseFactor::factorEntries() const
{
    return m_chains.entries() + m_core.entries();
}

}  // namespace lcn
