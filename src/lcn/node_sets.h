// node_sets.h: disjoint sets of nodes (Tarjan 1975).
#pragma once

#include <numeric>
#include <vector>

namespace lcn
{

/// Nodes 0 .. count, each in a set of its own to begin with. Joining and finding cost next to nothing each.
class NodeSets
{
public:
    explicit NodeSets(int count) : m_parent(static_cast<std::size_t>(count) + 1)
    {
        std::iota(m_parent.begin(), m_parent.end(), 0);
    }

    /// Representative of node's set.
    int find(int node)
    {
        while (parent(node) != node)
            node = parent(node) = parent(parent(node));
        return node;
    }

    /// Joins two sets; the smaller representative stays. False when they were one already.
    bool join(int a, int b)
    {
        a = find(a);
        b = find(b);
        if (a == b) return false;
        if (a < b)
            parent(b) = a;
        else
            parent(a) = b;
        return true;
    }

private:
    int& parent(int node) { return m_parent[static_cast<std::size_t>(node)]; }
    std::vector<int> m_parent;
};

}  // namespace lcn
