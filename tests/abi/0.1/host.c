/* host.c: a host as it was written against the flat functions of version 0.1; exit status 0 when all is right. */
#include <tavell/TavellFlat.h>

#include <math.h>
#include <stdio.h>

static bool stopAtOnce(void)
{
    return true;
}

int main(void)
{
    const double pi = 3.14159265358979323846;
    const double diameter = 0.01, length = 2.0, viscosity = 0.1, drop = 5000.0;
    const double area = pi * diameter * diameter / 4.0;
    /* Hagen 1839, Poiseuille 1840 [m3/s] */
    const double expected = pi * pow(diameter, 4.0) * drop / (128.0 * viscosity * length);
    vcITavell* const system = vcCreateTavell();
    vcICircuit* const circuit = vcITavellCreateCircuit(system);
    vcINode* const start = vcICircuitCreateNode(circuit);
    vcINode* const end = vcICircuitCreateNode(circuit);
    vcINode* const middle = vcICircuitCreateNode(circuit);
    vcIResultsSet* flows;
    double flow = 0.0;
    int stopped;

    vcINodeSetLocation(end, length, 0.0, 0.0);
    vcINodeSetLocation(middle, length / 2.0, 0.0, 0.0);
    vcINodeSetType(start, TAVELL_NODE_INLET);
    vcINodeSetConstraint(start, TAVELL_CONSTRAINT_PRESSURE, 2.0 * drop);
    vcINodeSetType(end, TAVELL_NODE_OUTLET);
    vcINodeSetConstraint(end, TAVELL_CONSTRAINT_PRESSURE, drop);
    vcICircuitCreateElement(circuit, start, middle, diameter, area, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    vcICircuitCreateElement(circuit, middle, end, diameter, area, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    vcIEntitySetProperty(vcIFluidGetEntity(vcICircuitGetFluid(circuit)), TAVELL_FLUID_VISCOSITY, viscosity);
    stopped = !vcICircuitSolve(circuit, 0, stopAtOnce);
    if (vcICircuitSolve(circuit, 0, 0)) {
        flows = vcICircuitGetResults(circuit, TAVELL_RESULT_VOLUME_FLOW);
        flow = vcIResultsSetGetValues(flows)[0];
    }
    vcITavellRelease(system);
    if (!stopped || !(fabs(flow / expected - 1.0) < 1e-5)) {
        printf("stopped: %d, flow %g instead of %g m3/s\n", stopped, flow, expected);
        return 1;
    }
    return 0;
}
