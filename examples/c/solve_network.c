/* solve_network.c: a pump feeds two branches; build the network, check it, solve it, read the results. */
#include <stdio.h>

#include <tavell/TavellFlat.h>

static vcINode* addNode(vcICircuit* circuit, double x, double y, double z)
{
    vcINode* node = vcICircuitCreateNode(circuit);
    vcINodeSetLocation(node, x, y, z); /* [m] */
    return node;
}

/* An end of the network where the fluid stands at a given static pressure [Pa]. */
static void setPressure(vcINode* node, int type, double pressure)
{
    vcINodeSetType(node, type);
    vcINodeSetConstraint(node, TAVELL_CONSTRAINT_PRESSURE, pressure);
}

/* A round pipe; its length is the distance between its nodes. The null answer of a refused element passes on. */
static vcIElement* addPipe(vcICircuit* circuit, vcINode* start, vcINode* end, double diameter, double area)
{
    const double noMinorLoss = 0.0;
    const double noHeat = 0.0;
    vcIElement* pipe =
        vcICircuitCreateElement(circuit, start, end, diameter, area, noMinorLoss, TAVELL_ENERGY_FLUX, noHeat);
    if (pipe != NULL) vcIEntitySetProperty(vcIElementGetEntity(pipe), TAVELL_ELEMENT_ROUGHNESS, 5e-5);
    return pipe;
}

/* The network in an empty circuit; 0 when an element was refused. */
static int build(vcICircuit* circuit)
{
    /* Pump curve: volume flows [m3/s] and pressure rises [Pa], at least four points. */
    static const double flows[] = {0.0, 0.005, 0.010, 0.015, 0.020};
    static const double rises[] = {250e3, 245e3, 230e3, 205e3, 170e3};
    vcINode* well = addNode(circuit, 0.0, 0.0, 0.0);
    vcINode* pumpOutlet = addNode(circuit, 1.0, 0.0, 0.0);
    vcINode* tee = addNode(circuit, 51.0, 0.0, 0.0);
    vcINode* lowTank = addNode(circuit, 51.0, 40.0, 5.0);
    vcINode* highTank = addNode(circuit, 51.0, -40.0, 10.0);
    setPressure(well, TAVELL_NODE_INLET, 0.0); /* gauge pressures: all three are open */
    setPressure(lowTank, TAVELL_NODE_OUTLET, 0.0);
    setPressure(highTank, TAVELL_NODE_OUTLET, 0.0);
    return vcICircuitCreatePump(circuit, well, pumpOutlet, flows, rises, 5, 998.0, TAVELL_ENERGY_FLUX, 0.0) &&
           addPipe(circuit, pumpOutlet, tee, 0.100, 7.85398e-3) &&
           addPipe(circuit, tee, lowTank, 0.065, 3.31831e-3) &&
           addPipe(circuit, tee, highTank, 0.080, 5.02655e-3);
}

static void printResults(vcICircuit* circuit)
{
    vcIResultsSet* massFlows = vcICircuitGetResults(circuit, TAVELL_RESULT_MASS_FLOW);
    vcIResultsSet* pressures = vcICircuitGetResults(circuit, TAVELL_RESULT_PRESSURE);
    const double* kilopascals = vcIResultsSetGetL10NValues(pressures, 0.001, 0.0);
    size_t i;
    for (i = 0; i < vcIResultsSetGetSize(massFlows); ++i)
        printf("element %d: %8.4f kg/s\n", vcIResultsSetGetIds(massFlows)[i],
               vcIResultsSetGetValues(massFlows)[i]);
    for (i = 0; i < vcIResultsSetGetSize(pressures); ++i)
        printf("node %d: %8.3f kPa\n", vcIResultsSetGetIds(pressures)[i], kilopascals[i]);
}

int main(void)
{
    vcITavell* system = vcCreateTavell();
    vcICircuit* circuit = vcITavellCreateCircuit(system); /* water at 21 degC, gravity along -z */
    int hasConverged = 0;
    if (!build(circuit) || !vcICircuitValidate(circuit)) {
        printf("the network is not complete, validity state %d\n", vcICircuitIsValid(circuit));
    } else {
        vcIFeedbackCollection* feedback = vcICircuitGetFeedback(circuit);
        size_t i;
        hasConverged = vcICircuitSolve(circuit, 0, NULL); /* flows and pressures, no temperatures */
        for (i = 0; i < vcIFeedbackCollectionGetSize(feedback); ++i)
            printf("feedback %d\n", vcIFeedbackGetId(vcIFeedbackCollectionGetFeedback(feedback, (int)i)));
    }
    if (hasConverged) printResults(circuit);
    vcITavellRelease(system); /* the circuit and everything in it go with it */
    return hasConverged ? 0 : 1;
}
