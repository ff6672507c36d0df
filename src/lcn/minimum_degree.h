// minimum_degree.h: an order of elimination that keeps the factor of a sparse symmetric matrix small.
#pragma once

#include <vector>

namespace lcn
{

/// Neighbours of every equation in compressed rows, from 0 and without repetition: those of row r are
/// columns[start[r]] .. columns[start[r + 1] - 1]; both directions of a pair are listed.
struct Adjacency {
    std::vector<int> start;
    std::vector<int> columns;

    int size() const { return static_cast<int>(start.size()) - 1; }
};

/// Approximate minimum degree order (Amestoy, Davis and Duff 1996): the equation at each place, from 0.
/// Equations with far more neighbours than the rest are left out of the graph and come last.
/// Ties go to the equation that got its degree last; the result depends on the graph alone.
std::vector<int> minimumDegreeOrder(const Adjacency& graph);

}  // namespace lcn
