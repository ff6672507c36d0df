// ResultsSet.h: one result quantity over all nodes or all elements.
#pragma once

#include <cstddef>
#include <vector>

#include "tavell/IResultsSet.h"

namespace Velcor::Tavell
{

/// Ids and values side by side, in order of creation, values in SI units.
/// Filled once by the result mapping; owned by the circuit.
class ResultsSet final : public IResultsSet
{
public:
    /// An empty set of an element quantity.
    ResultsSet() = default;
    /// An empty set of a node quantity (nodal) or an element quantity.
    explicit ResultsSet(bool nodal);
    /// A filled set; ids and values must have the same length.
    ResultsSet(bool nodal, std::vector<int> ids, std::vector<double> values);

    std::size_t GetSize() override;
    const int* GetIds() override;
    const double* GetValues() override;
    const double* GetL10NValues(double scale, double offset) override;
    bool IsNodal() override;

    /// Makes room for count values, so that appending them moves nothing.
    void reserve(std::size_t count);
    /// Adds the value [SI] of the node or element with this id of the host.
    void append(int id, double value);

private:
    std::vector<int> m_ids;
    std::vector<double> m_values;
    std::vector<double> m_l10nValues;  // values of the last conversion; empty before the first
    double m_l10nScale = 1.0;          // of that conversion
    double m_l10nOffset = 0.0;         // of that conversion
    bool m_nodal = false;
};

}  // namespace Velcor::Tavell
