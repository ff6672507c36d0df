#include "ordering.h"

#include <algorithm>

namespace lcn
{

namespace
{

/// Breadth-first levels of the component of a root, over equations that are not numbered yet.
class LevelStructure
{
public:
    explicit LevelStructure(const Graph& graph) : m_graph(graph), m_seen(graph.rowStart.size(), 0)
    {
        m_order.reserve(graph.rowStart.size());
    }

    void build(int root)
    {
        ++m_stamp;
        m_order.assign(1, root);
        m_seen[static_cast<std::size_t>(root)] = m_stamp;
        m_levels = 0;
        for (std::size_t begin = 0, end = 1; begin < end;) {
            m_lastBegin = begin;
            ++m_levels;
            for (std::size_t at = begin; at < end; ++at)
                visitNeighbours(m_order[at]);
            begin = end;
            end = m_order.size();
        }
    }

    int levels() const { return m_levels; }

    /// First equation of smallest degree in the last level.
    int peripheral() const
    {
        int best = m_order[m_lastBegin];
        for (std::size_t at = m_lastBegin; at < m_order.size(); ++at)
            if (m_graph.degree(m_order[at]) < m_graph.degree(best)) best = m_order[at];
        return best;
    }

private:
    void visitNeighbours(int row)
    {
        const auto r = static_cast<std::size_t>(row);
        for (int at = m_graph.rowStart[r]; at < m_graph.rowStart[r + 1]; ++at) {
            const int column = m_graph.columns[static_cast<std::size_t>(at)];
            int& seen = m_seen[static_cast<std::size_t>(column)];
            if (seen == m_stamp) continue;
            seen = m_stamp;
            m_order.push_back(column);
        }
    }

    const Graph& m_graph;
    std::vector<int> m_seen;  // stamp of the last build that met the equation
    int m_stamp = 0;
    std::vector<int> m_order;
    std::size_t m_lastBegin = 0;
    int m_levels = 0;
};

int pseudoPeripheralRoot(LevelStructure& structure, int start)
{
    int root = start;
    structure.build(root);
    for (int levels = structure.levels();;) {
        const int candidate = structure.peripheral();
        structure.build(candidate);
        if (structure.levels() <= levels) return root;
        levels = structure.levels();
        root = candidate;
    }
}

/// Appends the component of root to order: breadth first, unnumbered neighbours by increasing degree, ties as
/// they are listed (a stable sort, so that a hub with many neighbours costs no more than n log n).
void numberComponent(const Graph& graph, int root, std::vector<char>& numbered, std::vector<int>& order)
{
    std::size_t next = order.size();
    order.push_back(root);
    numbered[static_cast<std::size_t>(root)] = 1;
    while (next < order.size()) {
        const auto r = static_cast<std::size_t>(order[next++]);
        const auto firstNew = static_cast<std::ptrdiff_t>(order.size());
        for (int at = graph.rowStart[r]; at < graph.rowStart[r + 1]; ++at) {
            const int column = graph.columns[static_cast<std::size_t>(at)];
            if (numbered[static_cast<std::size_t>(column)]) continue;
            numbered[static_cast<std::size_t>(column)] = 1;
            order.push_back(column);
        }
        std::stable_sort(order.begin() + firstNew, order.end(),
                         [&](int l, int r2) { return graph.degree(l) < graph.degree(r2); });
    }
}

}  // namespace

std::vector<int> reverseCuthillMcKee(const Graph& graph)
{
    const int n = graph.size();
    std::vector<char> numbered(static_cast<std::size_t>(n) + 1, 0);
    std::vector<int> order(1, 0);
    order.reserve(static_cast<std::size_t>(n) + 1);
    LevelStructure structure(graph);
    for (int row = 1; row <= n; ++row)
        if (!numbered[static_cast<std::size_t>(row)])
            numberComponent(graph, pseudoPeripheralRoot(structure, row), numbered, order);
    std::reverse(order.begin() + 1, order.end());
    return order;
}

}  // namespace lcn
