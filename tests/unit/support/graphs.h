// graphs.h: graphs for the tests of the ordering and of the sparse matrix.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <random>
#include <vector>

#include "lcn/ordering.h"

namespace SolverTest
{

using Edges = std::vector<std::array<int, 2>>;  // rows from 1

/// The graph of n rows with these edges, each listed from both ends.
inline lcn::Graph makeGraph(int n, const Edges& edges)
{
    std::vector<std::vector<int>> neighbours(static_cast<std::size_t>(n) + 1);
    for (const auto& [a, b] : edges) {
        neighbours[static_cast<std::size_t>(a)].push_back(b);
        neighbours[static_cast<std::size_t>(b)].push_back(a);
    }
    lcn::Graph graph;
    graph.columns.assign(1, 0);
    graph.rowStart.assign(1, 1);
    for (int row = 1; row <= n; ++row) {
        graph.rowStart.push_back(static_cast<int>(graph.columns.size()));
        const auto& list = neighbours[static_cast<std::size_t>(row)];
        graph.columns.insert(graph.columns.end(), list.begin(), list.end());
    }
    graph.rowStart.push_back(static_cast<int>(graph.columns.size()));
    return graph;
}

/// Renumbers the rows 1..n of the edges at random and puts the edges in random order.
inline Edges shuffled(Edges edges, int n, std::mt19937& random)
{
    std::vector<int> number(static_cast<std::size_t>(n) + 1);
    std::iota(number.begin(), number.end(), 0);
    std::shuffle(number.begin() + 1, number.end(), random);
    for (auto& edge : edges)
        for (int& row : edge)
            row = number[static_cast<std::size_t>(row)];
    std::shuffle(edges.begin(), edges.end(), random);
    return edges;
}

inline Edges path(int n)
{
    Edges edges;
    for (int row = 1; row < n; ++row)
        edges.push_back({row, row + 1});
    return edges;
}

inline Edges gridEdges(int width, int height)
{
    Edges edges;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int row = y * width + x + 1;
            if (x + 1 < width) edges.push_back({row, row + 1});
            if (y + 1 < height) edges.push_back({row, row + width});
        }
    return edges;
}

/// count random edges between different rows; repeated ones happen.
inline Edges randomEdges(int n, int count, std::mt19937& random)
{
    Edges edges;
    while (static_cast<int>(edges.size()) < count) {
        const int a = 1 + static_cast<int>(random() % static_cast<unsigned>(n));
        const int b = 1 + static_cast<int>(random() % static_cast<unsigned>(n));
        if (a != b) edges.push_back({a, b});
    }
    return edges;
}

}  // namespace SolverTest
