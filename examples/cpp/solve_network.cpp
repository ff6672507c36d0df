// solve_network.cpp: a pump feeds two tanks; build the network, check it, solve it, read the results.
#include <cstdio>

#include <tavell/Constants.h>
#include <tavell/CreateTavell.h>
#include <tavell/ICircuit.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/INode.h>
#include <tavell/IResultsSet.h>
#include <tavell/ITavell.h>

using namespace Velcor::Tavell;

// A round pipe; its length is the distance between its nodes. False when the library refuses it.
static bool addPipe(ICircuit& circuit, INode* start, INode* end, double diameter, double area)
{
    const double minorLoss = 0.0, heat = 0.0;
    IElement* pipe = circuit.CreateElement(start, end, diameter, area, minorLoss, TAVELL_ENERGY_FLUX, heat);
    return pipe != nullptr && pipe->GetEntity()->SetProperty(TAVELL_ELEMENT_ROUGHNESS, 5e-5);
}

static bool build(ICircuit& circuit)
{
    circuit.GetEntity()->SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, 0);  // no losses at the tee
    // Well, pump outlet, tee, low tank and high tank [m]; gravity along -z, water at 21 degC unless told otherwise.
    const double locations[5][3] = {{0, 0, 0}, {1, 0, 0}, {51, 0, 0}, {51, 40, 5}, {51, -40, 10}};
    INode* nodes[5];
    for (int i = 0; i < 5; ++i) {
        nodes[i] = circuit.CreateNode();
        nodes[i]->SetLocation(locations[i][0], locations[i][1], locations[i][2]);
        if (i == 1 || i == 2) continue;
        nodes[i]->SetType(i == 0 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
        nodes[i]->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 0.0);  // open to the air: gauge pressure 0
    }
    // The pump's curve: volume flows [m3/s] and pressure rises [Pa], at least four points.
    const double flows[] = {0.0, 0.005, 0.010, 0.015, 0.020};
    const double rises[] = {250e3, 245e3, 230e3, 205e3, 170e3};
    return circuit.CreatePump(nodes[0], nodes[1], flows, rises, 5, 998.0, TAVELL_ENERGY_FLUX, 0.0) &&
           addPipe(circuit, nodes[1], nodes[2], 0.100, 7.85398e-3) &&
           addPipe(circuit, nodes[2], nodes[3], 0.065, 3.31831e-3) &&
           addPipe(circuit, nodes[2], nodes[4], 0.080, 5.02655e-3);
}

int main()
{
    ITavell* system = CreateTavell(false);
    ICircuit& circuit = *system->CreateCircuit();
    const bool hasConverged = build(circuit) && circuit.Validate() && circuit.Solve(false);
    if (!hasConverged) {
        std::printf("no results, validity state %d\n", circuit.IsValid());
    } else {
        IResultsSet* flows = circuit.GetResults(TAVELL_RESULT_MASS_FLOW);
        for (std::size_t i = 0; i < flows->GetSize(); ++i)
            std::printf("element %d: %8.4f kg/s\n", flows->GetIds()[i], flows->GetValues()[i]);
        IResultsSet* pressures = circuit.GetResults(TAVELL_RESULT_PRESSURE);
        for (std::size_t i = 0; i < pressures->GetSize(); ++i)
            std::printf("node %d: %8.3f kPa\n", pressures->GetIds()[i], pressures->GetValues()[i] / 1000.0);
    }
    system->Release();  // the circuit and everything in it go with it
    return hasConverged ? 0 : 1;
}
