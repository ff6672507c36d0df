// ResultsSet.cpp: one result quantity over all nodes or all elements.
#include "ResultsSet.h"

#include <algorithm>
#include <utility>

namespace Velcor::Tavell
{

ResultsSet::ResultsSet(bool nodal) : m_nodal(nodal) {}

ResultsSet::ResultsSet(bool nodal, std::vector<int> ids, std::vector<double> values)
    : ResultsSet(nodal, std::make_shared<const std::vector<int>>(std::move(ids)), std::move(values))
{
}

ResultsSet::ResultsSet(bool nodal, Ids ids, std::vector<double> values)
    : m_ids(std::move(ids)), m_values(std::move(values)), m_nodal(nodal)
{
}

std::size_t ResultsSet::GetSize()
{
    return m_values.size();
}

const int* ResultsSet::GetIds()
{
    return m_ids == nullptr || m_ids->empty() ? nullptr : m_ids->data();
}

const double* ResultsSet::GetValues()
{
    return m_values.empty() ? nullptr : m_values.data();
}

const double* ResultsSet::GetL10NValues(double scale, double offset)
{
    // A cache of another size is one that was never filled.
    const bool cached =
        m_l10nValues.size() == m_values.size() && scale == m_l10nScale && offset == m_l10nOffset;
    if (!cached) {
        m_l10nScale = scale;
        m_l10nOffset = offset;
        m_l10nValues.resize(m_values.size());
        std::transform(m_values.begin(), m_values.end(), m_l10nValues.begin(),
                       [=](double value) { return value * scale + offset; });
    }
    return m_l10nValues.empty() ? nullptr : m_l10nValues.data();
}

bool ResultsSet::IsNodal()
{
    return m_nodal;
}

}  // namespace Velcor::Tavell
