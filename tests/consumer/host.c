/* host.c: the least that a host does through the flat functions; exit status 0 when it works. */
#include <tavell/TavellFlat.h>

int main(void)
{
    vcITavell* const system = vcCreateTavell();
    vcICircuit* const circuit = vcITavellCreateCircuit(system);
    const int id = vcINodeGetId(vcICircuitCreateNode(circuit));
    const int refused = vcICircuitIsValid(circuit) == TAVELL_INVALID_ELEMENT_COUNT;
    vcITavellRelease(system);
    return id == 1 && refused ? 0 : 1;
}
