// flat_api.cpp: loading the shared library and building the circuit that the tests share.
#include "flat_api.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace
{

constexpr double kDiameter = 0.1;       // [m]
constexpr double kArea = 0.0078539816;  // [m2], of kDiameter
constexpr double kSpacing = 10.0;       // [m]

/// The library, loaded once and kept to the end of the process, so that sanitizers can name what they find in it.
void* library()
{
    static void* const handle = dlopen(TAVELL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return handle;
}

template <typename Function> void load(Function*& function, const char* name)
{
    void* const address = findSymbol(name);
    if (address == nullptr) throw std::runtime_error(std::string(name) + " is not exported");
    function = reinterpret_cast<Function*>(address);
}

FlatApi loadAll()
{
    FlatApi api = {};
#define TAVELL_LOAD(name, ...) load(api.name, #name);
    TAVELL_FLAT_FUNCTIONS(TAVELL_LOAD)
#undef TAVELL_LOAD
    return api;
}

}  // namespace

void* findSymbol(const char* name)
{
    return dlsym(library(), name);
}

const FlatApi& flat()
{
    static const FlatApi api = loadAll();
    return api;
}

System createSystem()
{
    return System(flat().vcCreateTavell());
}

vcICircuit* addSampleCircuit(vcITavell* system)
{
    vcICircuit* const circuit = flat().vcITavellCreateCircuit(system);
    vcINode* previous = nullptr;
    for (int i = 0; i < 4; ++i) {
        vcINode* const node = flat().vcICircuitCreateNode(circuit);
        flat().vcINodeSetLocation(node, kSpacing * i, 0.0, 0.0);
        if (previous != nullptr)
            flat().vcICircuitCreateElement(circuit, previous, node, kDiameter, kArea, 0.0, TAVELL_ENERGY_FLUX,
                                           0.0);
        previous = node;
    }

    vcINode* const inlet = flat().vcICircuitGetNode(circuit, 0);
    flat().vcINodeSetType(inlet, TAVELL_NODE_INLET);
    flat().vcINodeSetConstraint(inlet, TAVELL_CONSTRAINT_PRESSURE, 300e3);
    flat().vcINodeSetType(previous, TAVELL_NODE_OUTLET);
    flat().vcINodeSetConstraint(previous, TAVELL_CONSTRAINT_PRESSURE, 200e3);
    return circuit;
}
