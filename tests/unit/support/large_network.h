// large_network.h: a network of several hundred nodes in the solver's own records, prepared for the iteration.
#pragma once

#include <functional>

#include "lcn/preparation.h"
#include "solver_network.h"

namespace SolverTest
{

/// A square of width x width free nodes, joined by pipes of 0.1 m. Two opposite corners have a stub to a fixed
/// pressure (6e5 and 5e5 Pa); every seventh node has a stub with a fixed flow out of the network.
struct LargeNetwork : SolverNetwork {
    static constexpr double kDemand = 0.02;  // [kg/s]

    explicit LargeNetwork(int width = 20, double demand = kDemand)
        : SolverNetwork(width * width + 2 + demandsOf(width)), lattice(width * width)
    {
        reserve(3 * var.NodeTotal);
        for (int i = 1; i <= lattice; ++i) {
            if (i % width != 0) addPipe(i, i + 1);
            if (i + width <= lattice) addPipe(i, i + width);
        }
        inner = var.ElemTotal;
        addPipe(lattice + 1, 1);
        addPipe(lattice, lattice + 2);
        int stub = lattice + 2;
        for (int i = 7; i <= lattice; i += 7)
            demands.push_back(addPipe(i, ++stub));
        connect();
        fixPressure(lattice + 1, 6e5);
        fixPressure(lattice + 2, 5e5);
        for (const int e : demands)
            fixFlow(e, demand);
    }

    /// Everything between the translation and the iteration.
    void prepare()
    {
        lcn::prepareElementCoefficients(elements, var);
        lcn::setInitialValues(nodes, elements, var);
        lcn::applyDebugAndOpenEnds(nodes, elements, var);
        lcn::keepAsPrevious(nodes, elements, var);
        lcn::setFlowsBetweenFixedPressures(nodes, elements, var);
    }

    int lattice;               // free nodes 1..lattice
    int inner = 0;             // elements 1..inner join them
    std::vector<int> demands;  // elements

private:
    static int demandsOf(int width) { return width * width / 7; }

    void reserve(int count)
    {
        elements.resize(count + 1);
        elements.resize(1);
    }

    int addPipe(int start, int end)
    {
        const int e = add(lcn::kPipe, start, end);
        elem(e).rough = 1e-4;
        return e;
    }
};

}  // namespace SolverTest
