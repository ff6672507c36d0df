// ordering.h: a numbering of the equations that keeps the envelope of their matrix small.
#pragma once

#include <vector>

namespace lcn
{

/// Neighbours of every equation in compressed rows, all 1-based: those of row r are columns[rowStart[r]] ..
/// columns[rowStart[r + 1] - 1]; rowStart has n + 2 entries, slot 0 of both is unused. Repeated entries are
/// allowed.
struct Graph {
    std::vector<int> rowStart;
    std::vector<int> columns;

    int size() const { return static_cast<int>(rowStart.size()) - 2; }
    int degree(int row) const
    {
        const auto r = static_cast<std::size_t>(row);
        return rowStart[r + 1] - rowStart[r];
    }
};

/// Reverse Cuthill-McKee numbering (Cuthill and McKee 1969, George 1971), each component from a
/// pseudo-peripheral root (Gibbs, Poole and Stockmeyer 1976). Returns the equation at each position 1..n;
/// slot 0 is unused.
/// Cost: proportional to the graph, but for the repeated root searches and the sorting of neighbours by
/// degree.
std::vector<int> reverseCuthillMcKee(const Graph& graph);

}  // namespace lcn
