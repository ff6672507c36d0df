// ResultsSet.h: one result quantity over all nodes or all elements.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "tavell/IResultsSet.h"

namespace Velcor::Tavell
{

/// Ids and values side by side, in order of creation, values in SI units. The ids are shared by all sets of a
/// solve that are of nodes, or of elements.
/// Filled once by the result mapping; owned by the circuit.
class ResultsSet final : public IResultsSet
{
public:
    using Ids = std::shared_ptr<const std::vector<int>>;

    /// An empty set of an element quantity.
    ResultsSet() = default;
    /// An empty set of a node quantity (nodal) or an element quantity.
    explicit ResultsSet(bool nodal);
    /// A filled set; ids and values must have the same length.
    ResultsSet(bool nodal, std::vector<int> ids, std::vector<double> values);
    /// The same with ids that several sets share.
    ResultsSet(bool nodal, Ids ids, std::vector<double> values);

    std::size_t GetSize() override;
    const int* GetIds() override;
    const double* GetValues() override;
    const double* GetL10NValues(double scale, double offset) override;
    bool IsNodal() override;

private:
    Ids m_ids;  // null: none
    std::vector<double> m_values;
    std::vector<double> m_l10nValues;  // values of the last conversion; empty before the first
    double m_l10nScale = 1.0;          // of that conversion
    double m_l10nOffset = 0.0;         // of that conversion
    bool m_nodal = false;
};

}  // namespace Velcor::Tavell
