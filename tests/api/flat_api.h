// flat_api.h: the shared library as a host sees it that loads it at run time.
#pragma once

#include <memory>

#include "flat_prototypes.h"

/// One pointer per flat function, named as the function.
struct FlatApi {
#define TAVELL_MEMBER(name, ...) std::add_pointer_t<__VA_ARGS__> name;
    TAVELL_FLAT_FUNCTIONS(TAVELL_MEMBER)
#undef TAVELL_MEMBER
};

/// Address of an exported symbol of the library; null when it exports none of that name.
void* findSymbol(const char* name);

/// The flat functions, looked up once. Throws std::runtime_error for one that is missing.
const FlatApi& flat();

/// Gives a system object back at the end of a test.
struct ReleaseSystem {
    void operator()(vcITavell* system) const { flat().vcITavellRelease(system); }
};
using System = std::unique_ptr<vcITavell, ReleaseSystem>;

/// A new, empty system object.
System createSystem();

/// A circuit that solves: four nodes 10 m apart on a level line and three pipes of 0.1 m, driven from 300 to 200 kPa.
/// The first node is an inlet, the last one an outlet.
vcICircuit* addSampleCircuit(vcITavell* system);
