#include "doctor_graph.h"

#include <algorithm>

namespace kit::doctor
{

Graph makeGraph(const Network& network, const std::function<bool(std::size_t element)>& isUsed)
{
    std::vector<bool> used(network.elements.size(), false);
    Graph graph;
    graph.first.assign(network.nodes.size() + 1, 0);
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        const Element& element = network.elements[i];
        used[i] = element.from != element.to && isUsed(i);
        if (!used[i]) continue;
        ++graph.first[element.from + 1];
        ++graph.first[element.to + 1];
    }
    for (std::size_t i = 1; i < graph.first.size(); ++i)
        graph.first[i] += graph.first[i - 1];

    std::vector<std::size_t> next(graph.first.begin(), graph.first.end() - 1);
    graph.elements.resize(graph.first.back());
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        if (!used[i]) continue;
        graph.elements[next[network.elements[i].from]++] = i;
        graph.elements[next[network.elements[i].to]++] = i;
    }
    return graph;
}

Parts findParts(const Network& network, const Graph& graph)
{
    Parts parts;
    parts.partOf.assign(network.nodes.size(), kNone);
    for (std::size_t start = 0; start < network.nodes.size(); ++start) {
        if (parts.partOf[start] != kNone) continue;
        const std::size_t part = parts.nodes.size();
        std::vector<std::size_t> members{start};
        parts.partOf[start] = part;
        for (std::size_t next = 0; next < members.size(); ++next) {
            const std::size_t node = members[next];
            for (std::size_t i = graph.first[node]; i < graph.first[node + 1]; ++i) {
                const std::size_t other = otherEnd(network.elements[graph.elements[i]], node);
                if (parts.partOf[other] != kNone) continue;
                parts.partOf[other] = part;
                members.push_back(other);
            }
        }
        std::sort(members.begin(), members.end());
        parts.nodes.push_back(std::move(members));
    }
    return parts;
}

namespace
{

/// The search with a stack of its own: a line of a million elements is a million levels deep.
class DepthFirstSearch
{
public:
    DepthFirstSearch(const Network& network, const Graph& graph)
        : m_network(network), m_graph(graph), m_number(network.nodes.size(), kNone),
          m_low(network.nodes.size(), kNone), m_next(graph.first.begin(), graph.first.end() - 1)
    {
        m_forest.elementAbove.assign(network.nodes.size(), kNone);
        m_forest.root.assign(network.nodes.size(), kNone);
        m_forest.isBridgeAbove.assign(network.nodes.size(), false);
        m_forest.order.reserve(network.nodes.size());
    }

    Forest run(const std::vector<std::size_t>& startFirst)
    {
        for (const std::size_t start : startFirst)
            search(start);
        for (std::size_t start = 0; start < m_number.size(); ++start)
            search(start);
        return std::move(m_forest);
    }

private:
    void search(std::size_t start)
    {
        if (m_number[start] != kNone) return;
        m_root = start;
        visit(start, kNone);
        while (!m_stack.empty())
            step();
    }

    void visit(std::size_t node, std::size_t elementAbove)
    {
        m_number[node] = m_low[node] = m_forest.order.size();
        m_forest.order.push_back(node);
        m_forest.elementAbove[node] = elementAbove;
        m_forest.root[node] = m_root;
        m_stack.push_back(node);
    }

    void step()
    {
        const std::size_t node = m_stack.back();
        if (m_next[node] == m_graph.first[node + 1]) {
            leave(node);
            return;
        }
        const std::size_t element = m_graph.elements[m_next[node]++];
        if (element == m_forest.elementAbove[node]) return;
        const std::size_t other = otherEnd(m_network.elements[element], node);
        if (m_number[other] == kNone)
            visit(other, element);
        else
            m_low[node] = std::min(m_low[node], m_number[other]);
    }

    void leave(std::size_t node)
    {
        m_stack.pop_back();
        const std::size_t above = m_forest.elementAbove[node];
        if (above == kNone) return;
        const std::size_t parent = otherEnd(m_network.elements[above], node);
        m_low[parent] = std::min(m_low[parent], m_low[node]);
        m_forest.isBridgeAbove[node] = m_low[node] == m_number[node];
    }

    const Network& m_network;
    const Graph& m_graph;
    std::vector<std::size_t> m_number;  // order of the visit
    std::vector<std::size_t> m_low;     // lowest number that is reached from below without the element above
    std::vector<std::size_t> m_next;    // place in the graph's list of elements
    std::vector<std::size_t> m_stack;
    std::size_t m_root = kNone;
    Forest m_forest;
};

}  // namespace

Forest makeForest(const Network& network, const Graph& graph, const std::vector<std::size_t>& startFirst)
{
    return DepthFirstSearch(network, graph).run(startFirst);
}

}  // namespace kit::doctor
