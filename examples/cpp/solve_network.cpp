// solve_network.cpp: a pump feeds two branches; build the network, check it, solve it, read the results.
#include <cstdio>
#include <memory>

#include <tavell/Constants.h>
#include <tavell/CreateTavell.h>
#include <tavell/ICircuit.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/IFeedback.h>
#include <tavell/IFeedbackCollection.h>
#include <tavell/INode.h>
#include <tavell/IResultsSet.h>
#include <tavell/ITavell.h>

using namespace Velcor::Tavell;

// A system object is given back with Release; everything in it goes with it.
struct Releaser {
    void operator()(ITavell* system) const { system->Release(); }
};

static INode* addNode(ICircuit& circuit, double x, double y, double z)
{
    INode* node = circuit.CreateNode();
    node->SetLocation(x, y, z);  // [m]
    return node;
}

// An end of the network where the fluid stands at a given static pressure [Pa].
static void setPressure(INode& node, int type, double pressure)
{
    node.SetType(type);
    node.SetConstraint(TAVELL_CONSTRAINT_PRESSURE, pressure);
}

// A round pipe; its length is the distance between its nodes. The null answer of a refused element passes on.
static IElement* addPipe(ICircuit& circuit, INode* start, INode* end, double diameter, double area)
{
    const double noMinorLoss = 0.0;
    const double noHeat = 0.0;
    IElement* pipe =
        circuit.CreateElement(start, end, diameter, area, noMinorLoss, TAVELL_ENERGY_FLUX, noHeat);
    if (pipe != nullptr) pipe->GetEntity()->SetProperty(TAVELL_ELEMENT_ROUGHNESS, 5e-5);
    return pipe;
}

int main()
{
    const std::unique_ptr<ITavell, Releaser> system(CreateTavell(false));
    ICircuit& circuit = *system->CreateCircuit();  // water at 21 degC, gravity along -z

    INode* well = addNode(circuit, 0.0, 0.0, 0.0);
    INode* pumpOutlet = addNode(circuit, 1.0, 0.0, 0.0);
    INode* tee = addNode(circuit, 51.0, 0.0, 0.0);
    INode* lowTank = addNode(circuit, 51.0, 40.0, 5.0);
    INode* highTank = addNode(circuit, 51.0, -40.0, 10.0);
    setPressure(*well, TAVELL_NODE_INLET, 0.0);  // gauge pressures: all three are open
    setPressure(*lowTank, TAVELL_NODE_OUTLET, 0.0);
    setPressure(*highTank, TAVELL_NODE_OUTLET, 0.0);

    // Pump curve: volume flows [m3/s] and pressure rises [Pa], at least four points.
    const double flows[] = {0.0, 0.005, 0.010, 0.015, 0.020};
    const double rises[] = {250e3, 245e3, 230e3, 205e3, 170e3};
    const bool isBuilt =
        circuit.CreatePump(well, pumpOutlet, flows, rises, 5, 998.0, TAVELL_ENERGY_FLUX, 0.0) != nullptr &&
        addPipe(circuit, pumpOutlet, tee, 0.100, 7.85398e-3) != nullptr &&
        addPipe(circuit, tee, lowTank, 0.065, 3.31831e-3) != nullptr &&
        addPipe(circuit, tee, highTank, 0.080, 5.02655e-3) != nullptr;
    if (!isBuilt || !circuit.Validate()) {
        std::printf("the network is not complete, validity state %d\n", circuit.IsValid());
        return 1;
    }

    const bool hasConverged = circuit.Solve(false);  // flows and pressures, no temperatures
    IFeedbackCollection* feedback = circuit.GetFeedback();
    for (std::size_t i = 0; i < feedback->GetSize(); ++i)
        std::printf("feedback %d\n", feedback->GetFeedback(i)->GetId());
    if (!hasConverged) return 1;

    IResultsSet* massFlows = circuit.GetResults(TAVELL_RESULT_MASS_FLOW);
    for (std::size_t i = 0; i < massFlows->GetSize(); ++i)
        std::printf("element %d: %8.4f kg/s\n", massFlows->GetIds()[i], massFlows->GetValues()[i]);
    IResultsSet* pressures = circuit.GetResults(TAVELL_RESULT_PRESSURE);
    const double* kilopascals = pressures->GetL10NValues(0.001, 0.0);
    for (std::size_t i = 0; i < pressures->GetSize(); ++i)
        std::printf("node %d: %8.3f kPa\n", pressures->GetIds()[i], kilopascals[i]);
    return 0;
}
