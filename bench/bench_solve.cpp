// bench_solve.cpp: time of a solve alone, for a line and a square grid of pipes built through the flat
// functions.
#include <cmath>

#include <benchmark/benchmark.h>

#include "peak_memory.h"
#include "tavell/TavellFlat.h"

namespace
{

constexpr double kSpacing = 10.0;          // [m] between neighbours
constexpr double kDiameter = 0.1;          // [m]
constexpr double kArea = 0.0078539816;     // [m2], of kDiameter
constexpr double kRoughness = 5e-5;        // [m]
constexpr double kPressurePerPipe = 1e3;   // [Pa], mean drop from the inlet to the outlet
constexpr double kOutletPressure = 100e3;  // [Pa]

/// Calls of the cancel callback since the last reset. A solve asks it once per iteration; it takes no
/// argument.
int callCount = 0;

bool countIteration()
{
    ++callCount;
    return false;
}

void addPipe(vcICircuit* circuit, int start, int end)
{
    vcIElement* const pipe =
        vcICircuitCreateElement(circuit, vcICircuitGetNode(circuit, start), vcICircuitGetNode(circuit, end),
                                kDiameter, kArea, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    vcIEntitySetProperty(vcIElementGetEntity(pipe), TAVELL_ELEMENT_ROUGHNESS, kRoughness);
}

void setPressure(vcINode* node, int type, double pressure)
{
    vcINodeSetType(node, type);
    vcINodeSetConstraint(node, TAVELL_CONSTRAINT_PRESSURE, pressure);
}

/// rows x columns nodes on a level, a pipe between neighbours, fed at one corner and emptied at the opposite
/// one.
vcICircuit* buildGrid(vcITavell* system, int rows, int columns)
{
    vcICircuit* const circuit = vcITavellCreateCircuit(system);
    // junction losses would have the last word on the number of iterations
    vcIEntitySetProperty(vcICircuitGetEntity(circuit), TAVELL_CIRCUIT_MINOR_LOSS, 0.0);
    const int n = rows * columns;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column)
            vcINodeSetLocation(vcICircuitCreateNode(circuit), kSpacing * column, kSpacing * row, 0.0);
    }
    for (int i = 0; i < n; ++i) {
        if ((i + 1) % columns != 0) addPipe(circuit, i, i + 1);
        if (i + columns < n) addPipe(circuit, i, i + columns);
    }
    const double drop = kPressurePerPipe * (rows + columns - 2);
    setPressure(vcICircuitGetNode(circuit, 0), TAVELL_NODE_INLET, kOutletPressure + drop);
    setPressure(vcICircuitGetNode(circuit, n - 1), TAVELL_NODE_OUTLET, kOutletPressure);
    return circuit;
}

/// Solves again and again; every solve starts anew, whatever results there are.
void solveGrid(benchmark::State& state, int rows, int columns)
{
    vcITavell* const system = vcCreateTavell();
    vcICircuit* const circuit = buildGrid(system, rows, columns);
    for (auto run : state) {
        (void)run;
        callCount = 0;
        if (vcICircuitSolve(circuit, 0, countIteration) == 0) {
            state.SkipWithError("the solve did not converge");
            break;
        }
    }
    state.counters["iterations"] = callCount;
    state.counters["nodes"] = rows * columns;
    state.counters["nodes/s"] =
        benchmark::Counter(rows * columns, benchmark::Counter::kIsIterationInvariantRate);
    countPeakMemory(state);
    vcITavellRelease(system);
}

void solveLine(benchmark::State& state)
{
    solveGrid(state, 1, static_cast<int>(state.range(0)));
}

/// As near to n nodes as a square comes.
void solveSquare(benchmark::State& state)
{
    const int side = static_cast<int>(std::lround(std::sqrt(static_cast<double>(state.range(0)))));
    solveGrid(state, side, side);
}

}  // namespace

BENCHMARK(solveLine)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond);
BENCHMARK(solveSquare)->RangeMultiplier(10)->Range(100, 10000)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
