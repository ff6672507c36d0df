// bench_build.cpp: time to build and release a circuit of n nodes and n elements with all their properties
// through the flat functions.
#include <benchmark/benchmark.h>

#include "peak_memory.h"
#include "tavell/TavellFlat.h"

namespace
{

constexpr double kSpacing = 10.0;       // [m] between neighbours
constexpr double kDiameter = 0.1;       // [m]
constexpr double kArea = 0.0078539816;  // [m2], of kDiameter
constexpr double kRoughness = 5e-5;     // [m]

/// n nodes on a slope, a pipe from each to the next and one from the last back to the first.
vcICircuit* buildRing(vcITavell* system, int n)
{
    vcICircuit* const circuit = vcITavellCreateCircuit(system);
    for (int i = 0; i < n; ++i) {
        vcINode* const node = vcICircuitCreateNode(circuit);
        vcINodeSetLocation(node, kSpacing * i, 0.1 * i, 0.01 * i);
        vcINodeSetType(node, i == 0 ? TAVELL_NODE_INLET : TAVELL_NODE_INTERNAL);
        vcINodeSetConstraint(node, TAVELL_CONSTRAINT_PRESSURE, 1e5 + i);
        vcIEntitySetProperty(vcINodeGetEntity(node), TAVELL_NODE_FLUID_TEMPERATURE, 293.15);
    }
    for (int i = 0; i < n; ++i) {
        vcINode* const start = vcICircuitGetNode(circuit, i);
        vcINode* const end = vcICircuitGetNode(circuit, (i + 1) % n);
        vcIElement* const pipe =
            vcICircuitCreateElement(circuit, start, end, kDiameter, kArea, 0.5, TAVELL_ENERGY_FLUX, 0.0);
        vcIEntitySetProperty(vcIElementGetEntity(pipe), TAVELL_ELEMENT_ROUGHNESS, kRoughness);
    }
    return circuit;
}

void buildAndRelease(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    for (auto run : state) {
        (void)run;
        vcITavell* const system = vcCreateTavell();
        benchmark::DoNotOptimize(buildRing(system, n));
        vcITavellRelease(system);
    }
    state.SetItemsProcessed(state.iterations() * n);
    countPeakMemory(state);
}

void findNodesById(benchmark::State& state)
{
    const int n = static_cast<int>(state.range(0));
    vcITavell* const system = vcCreateTavell();
    vcICircuit* const circuit = buildRing(system, n);
    for (auto run : state) {
        (void)run;
        for (int id = 1; id <= n; ++id)
            benchmark::DoNotOptimize(vcICircuitGetNodeById(circuit, id));
    }
    state.SetItemsProcessed(state.iterations() * n);
    countPeakMemory(state);
    vcITavellRelease(system);
}

}  // namespace

BENCHMARK(buildAndRelease)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(findNodesById)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
