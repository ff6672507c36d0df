// connected_sets.h: which nodes of a network hang together.
#ifndef TAVELL_BENCH_CONNECTED_SETS_H
#define TAVELL_BENCH_CONNECTED_SETS_H

#include <cstddef>
#include <numeric>
#include <vector>

namespace bench
{

/// The sets of connected nodes while connections are added (Tarjan 1975, with path halving).
class ConnectedSets
{
public:
    explicit ConnectedSets(int count) : m_parent(static_cast<std::size_t>(count))
    {
        std::iota(m_parent.begin(), m_parent.end(), 0);
    }

    /// False when both are in one set already.
    bool join(int a, int b)
    {
        const int rootA = root(a);
        const int rootB = root(b);
        parent(rootA) = rootB;
        return rootA != rootB;
    }

    bool areJoined(int a, int b) { return root(a) == root(b); }

private:
    int& parent(int i) { return m_parent[static_cast<std::size_t>(i)]; }

    int root(int i)
    {
        while (parent(i) != i) {
            parent(i) = parent(parent(i));
            i = parent(i);
        }
        return i;
    }

    std::vector<int> m_parent;
};

}  // namespace bench

#endif
