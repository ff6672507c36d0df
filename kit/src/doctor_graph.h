// doctor_graph.h: the network as a graph: which nodes hang together, and which elements are the only way.
#ifndef TAVELL_KIT_DOCTOR_GRAPH_H
#define TAVELL_KIT_DOCTOR_GRAPH_H

#include <cstddef>
#include <functional>
#include <vector>

#include "network.h"

namespace kit::doctor
{

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// The elements at each node: those of node i are elements[first[i]] to elements[first[i + 1] - 1].
struct Graph {
    std::vector<std::size_t> first;
    std::vector<std::size_t> elements;
};

/// The graph of the elements for which isUsed holds; elements that join a node to itself are left out.
Graph makeGraph(const Network& network, const std::function<bool(std::size_t element)>& isUsed);

/// The node at the other end of an element.
inline std::size_t otherEnd(const Element& element, std::size_t node)
{
    return element.from == node ? element.to : element.from;
}

/// Which nodes hang together.
struct Parts {
    std::vector<std::size_t> partOf;              // by node
    std::vector<std::vector<std::size_t>> nodes;  // by part, ascending
};

Parts findParts(const Network& network, const Graph& graph);

/// A spanning forest by depth-first search. The element above a node is a bridge when nothing else joins the
/// nodes below it to the rest (Tarjan 1974).
struct Forest {
    std::vector<std::size_t> order;         // nodes, each after the node above it
    std::vector<std::size_t> elementAbove;  // by node; kNone at a root
    std::vector<std::size_t> root;          // by node
    std::vector<bool> isBridgeAbove;        // by node
};

/// The search starts at the nodes of startFirst, where there are any.
Forest makeForest(const Network& network, const Graph& graph,
                  const std::vector<std::size_t>& startFirst = {});

/// Adds to the value of each node the values of all nodes below it.
template <class Value>
void sumUpwards(const Network& network, const Forest& forest, std::vector<Value>& values)
{
    for (auto node = forest.order.rbegin(); node != forest.order.rend(); ++node) {
        const std::size_t above = forest.elementAbove[*node];
        if (above != kNone) values[otherEnd(network.elements[above], *node)] += values[*node];
    }
}

}  // namespace kit::doctor

#endif
