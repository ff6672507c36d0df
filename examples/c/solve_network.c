/* solve_network.c: a pump feeds two tanks; build the network, check it, solve it, read the results. */
#include <stdio.h>

#include <tavell/TavellFlat.h>

/* A round pipe; its length is the distance between its nodes. 0 when the library refuses it. */
static int addPipe(vcICircuit* circuit, vcINode* start, vcINode* end, double diameter, double area)
{
    const double minorLoss = 0.0, heat = 0.0;
    vcIElement* pipe =
        vcICircuitCreateElement(circuit, start, end, diameter, area, minorLoss, TAVELL_ENERGY_FLUX, heat);
    return pipe != NULL && vcIEntitySetProperty(vcIElementGetEntity(pipe), TAVELL_ELEMENT_ROUGHNESS, 5e-5);
}

static int build(vcICircuit* circuit)
{
    /* Well, pump outlet, tee, low tank and high tank [m]; gravity along -z, water at 21 degC unless told otherwise. */
    static const double locations[5][3] = {{0, 0, 0}, {1, 0, 0}, {51, 0, 0}, {51, 40, 5}, {51, -40, 10}};
    /* The pump's curve: volume flows [m3/s] and pressure rises [Pa], at least four points. */
    static const double flows[] = {0.0, 0.005, 0.010, 0.015, 0.020};
    static const double rises[] = {250e3, 245e3, 230e3, 205e3, 170e3};
    vcINode* nodes[5];
    int i;
    vcIEntitySetProperty(vcICircuitGetEntity(circuit), TAVELL_CIRCUIT_MINOR_LOSS,
                         0); /* no losses at the tee */
    for (i = 0; i < 5; ++i) {
        nodes[i] = vcICircuitCreateNode(circuit);
        vcINodeSetLocation(nodes[i], locations[i][0], locations[i][1], locations[i][2]);
        if (i == 1 || i == 2) continue;
        vcINodeSetType(nodes[i], i == 0 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
        vcINodeSetConstraint(nodes[i], TAVELL_CONSTRAINT_PRESSURE,
                             0.0); /* open to the air: gauge pressure 0 */
    }
    return vcICircuitCreatePump(circuit, nodes[0], nodes[1], flows, rises, 5, 998.0, TAVELL_ENERGY_FLUX,
                                0.0) &&
           addPipe(circuit, nodes[1], nodes[2], 0.100, 7.85398e-3) &&
           addPipe(circuit, nodes[2], nodes[3], 0.065, 3.31831e-3) &&
           addPipe(circuit, nodes[2], nodes[4], 0.080, 5.02655e-3);
}

static void printResults(vcICircuit* circuit)
{
    vcIResultsSet* flows = vcICircuitGetResults(circuit, TAVELL_RESULT_MASS_FLOW);
    vcIResultsSet* pressures = vcICircuitGetResults(circuit, TAVELL_RESULT_PRESSURE);
    size_t i;
    for (i = 0; i < vcIResultsSetGetSize(flows); ++i)
        printf("element %d: %8.4f kg/s\n", vcIResultsSetGetIds(flows)[i], vcIResultsSetGetValues(flows)[i]);
    for (i = 0; i < vcIResultsSetGetSize(pressures); ++i)
        printf("node %d: %8.3f kPa\n", vcIResultsSetGetIds(pressures)[i],
               vcIResultsSetGetValues(pressures)[i] / 1000.0);
}

int main(void)
{
    vcITavell* system = vcCreateTavell();
    vcICircuit* circuit = vcITavellCreateCircuit(system);
    const int hasConverged =
        build(circuit) && vcICircuitValidate(circuit) && vcICircuitSolve(circuit, 0, NULL);
    if (hasConverged)
        printResults(circuit);
    else
        printf("no results, validity state %d\n", vcICircuitIsValid(circuit));
    vcITavellRelease(system); /* the circuit and everything in it go with it */
    return hasConverged ? 0 : 1;
}
