// solve_networks.h: networks whose solves take each of the solver's paths.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/networks.h"
#include "tavell/TavellFlat.h"

namespace faults
{

/// A network and how it is solved.
struct SolveCase {
    std::string name;
    support::Description network;
    bool energy = false;
    std::function<void(vcICircuit*)> change;  // after it is built; may be empty
    std::size_t eachUpTo = 2000;              // allocations that fail one after the other; beyond, steps grow

    support::Built build() const
    {
        support::Built built(network);
        if (change) change(&built.circuit());
        return built;
    }
};

/// A grid with enough free nodes for the search for starting values.
inline SolveCase largeGrid()
{
    return {"large grid", support::grid(19, 19, 3.0), false, {}};
}

inline SolveCase warmGrid()
{
    return {"grid with temperatures", support::grid(7, 7, 3.0), true, [](vcICircuit* circuit) {
                vcIEntitySetProperty(vcICircuitGetEntity(circuit), TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
                vcIEntity* const pipe = vcIElementGetEntity(vcICircuitGetElement(circuit, 5));
                vcIEntitySetProperty(pipe, TAVELL_ELEMENT_ENERGY_TYPE, TAVELL_ENERGY_HEAT);
                vcIEntitySetProperty(pipe, TAVELL_ELEMENT_ENERGY_VALUE, 2000.0);
            }};
}

inline SolveCase gridWithJunctionLosses()
{
    SolveCase tested{"junction losses", support::grid(7, 7, 3.0), false, {}};
    tested.network.minorLoss = 1.0;
    return tested;
}

/// Every kind of element, a control valve that limits and a pump.
inline SolveCase everyKind()
{
    std::mt19937 random(11);
    SolveCase tested{
        "every kind",
        support::randomNetwork(random, 14, 6,
                               {TAVELL_PIPE, TAVELL_LOSS, TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_ORIFICE,
                                TAVELL_GENERAL_LOSS, TAVELL_KV_VALVE, TAVELL_CV_VALVE, TAVELL_NON_RETURN}),
        false,
        {}};
    support::ElementData pump;
    pump.start = 2;
    pump.end = 9;
    pump.type = TAVELL_PUMP;
    pump.curveFlows = {0.0, 0.002, 0.004, 0.006};
    pump.curvePressures = {40000.0, 38000.0, 30000.0, 10000.0};
    tested.network.elements.push_back(pump);
    return tested;
}

/// A part without any pressure: the solve ends with messages.
inline SolveCase insoluble()
{
    SolveCase tested{"insoluble", support::grid(3, 3, 3.0), false, {}};
    for (support::NodeData& node : tested.network.nodes)
        if (node.type == TAVELL_NODE_INLET) {
            node.constraint = TAVELL_CONSTRAINT_MASS_FLOW;
            node.value = 1.0;
        }
    // it takes all the iterations that it may
    tested.eachUpTo = 300;
    return tested;
}

inline std::vector<SolveCase> allSolveCases()
{
    return {largeGrid(), warmGrid(), gridWithJunctionLosses(), everyKind(), insoluble()};
}

}  // namespace faults
