// tavell_bench.cpp: times the library on a generated network, or writes that network and its results for others.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "comparison.h"
#include "epanet_file.h"
#include "host.h"
#include "measure.h"
#include "networks.h"

namespace
{

using bench::Family;
using bench::MemoryMeter;
using bench::Network;
using bench::Results;
using bench::Stopwatch;

constexpr int kWarmUpSolves = 5;
constexpr int kWarmUpUpTo = 10000;   // nodes; one solve warms up a larger network
constexpr int kTenElementNodes = 7;  // a grid of so many nodes has eight pipes and two stubs

constexpr const char* kUsage =
    "usage: tavell_bench time FAMILY NODES [REPEATS [--wait]]\n"
    "       tavell_bench ten [REPEATS]\n"
    "       tavell_bench write FAMILY NODES FOLDER\n"
    "       tavell_bench solve FAMILY NODES FOLDER\n"
    "\n"
    "FAMILY is district, grid or line. NODES counts junctions and inlets; each third node has a stub "
    "besides.\n"
    "time   one CSV line per repeat and stage; with --wait a repeat waits for a line of standard input\n"
    "ten    build, solve, read and release a network of ten elements\n"
    "write  FOLDER/FAMILY-NODES.inp for EPANET\n"
    "solve  FOLDER/FAMILY-NODES-check.inp for EPANET, in which slow pipes have their solved flows as "
    "demands, and\n"
    "       FOLDER/FAMILY-NODES-check.csv with the solved heads\n";

/// When the solver asked whether to stop, which it does once per iteration. Its callback has no argument.
struct IterationClock {
    Stopwatch stopwatch;
    int iterations = 0;
    double first = 0.0;  // [ms] after the start of the solve
    double last = 0.0;   // [ms]
};

IterationClock iterationClock;

bool noteIteration()
{
    iterationClock.last = iterationClock.stopwatch.milliseconds();
    if (iterationClock.iterations == 0) iterationClock.first = iterationClock.last;
    ++iterationClock.iterations;
    return false;
}

struct ReleaseSystem {
    void operator()(vcITavell* system) const { vcITavellRelease(system); }
};
using System = std::unique_ptr<vcITavell, ReleaseSystem>;

void solve(vcICircuit* circuit)
{
    iterationClock = IterationClock();
    if (vcICircuitSolve(circuit, 0, noteIteration) == 0)
        throw std::runtime_error("the solve did not converge");
}

void read(vcICircuit* circuit, Results& results)
{
    if (!bench::readResults(circuit, results)) throw std::runtime_error("results are missing");
}

/// Mean times of a solve [ms].
struct SolveTimes {
    int solves = 0;
    double total = 0.0;
    double start = 0.0;      // up to the end of the first iteration
    double iteration = 0.0;  // each further iteration
    double finish = 0.0;     // after the last iteration
    int iterations = 0;
};

SolveTimes timeSolves(vcICircuit* circuit)
{
    SolveTimes sum;
    sum.total = bench::meanMilliseconds([&] {
        solve(circuit);
        const IterationClock& clock = iterationClock;
        ++sum.solves;
        sum.iterations = clock.iterations;
        sum.start += clock.first;
        sum.iteration += (clock.last - clock.first) / std::max(1, clock.iterations - 1);
        sum.finish += clock.stopwatch.milliseconds() - clock.last;
    });
    sum.start /= sum.solves;
    sum.iteration /= sum.solves;
    sum.finish /= sum.solves;
    return sum;
}

/// Writes the lines of one repeat.
class Table
{
public:
    Table(std::string family, int nodes) : m_family(std::move(family)), m_nodes(nodes) {}

    static void writeTitle()
    {
        std::printf("program,family,nodes,repeat,stage,milliseconds,iterations,peakMiB\n");
        (void)std::fflush(stdout);
    }

    void setRepeat(int repeat) { m_repeat = repeat; }

    void write(const char* stage, double milliseconds, int iterations = 0, double peakMiB = 0.0) const
    {
        std::printf("tavell,%s,%d,%d,%s,%.6g,%d,%.1f\n", m_family.c_str(), m_nodes, m_repeat, stage,
                    milliseconds, iterations, peakMiB);
        (void)std::fflush(stdout);  // a program that is stopped has told what it knew
    }

private:
    std::string m_family;
    int m_nodes;
    int m_repeat = 0;
};

struct Built {
    System system;
    vcICircuit* circuit = nullptr;
};

Built build(const Network& network)
{
    Built result;
    result.system.reset(vcCreateTavell());
    result.circuit = bench::buildCircuit(result.system.get(), network);
    return result;
}

void timeOnce(const Network& network, const MemoryMeter& memory, const Table& table)
{
    Built built;
    MemoryMeter::restart();
    double releasing = 0.0;
    int builds = 0;
    const double both = bench::meanMilliseconds([&] {
        const Stopwatch stopwatch;
        built.system.reset();
        releasing += stopwatch.milliseconds();
        built = build(network);
        ++builds;
    });
    table.write("build", both - releasing / builds, 0, memory.peakMiB());

    MemoryMeter::restart();
    const SolveTimes times = timeSolves(built.circuit);
    table.write("solve", times.total, times.iterations, memory.peakMiB());
    table.write("solve:start", times.start, 1);
    table.write("solve:iteration", times.iteration, 1);
    table.write("solve:finish", times.finish);

    MemoryMeter::restart();
    Results results;
    table.write("read", bench::meanMilliseconds([&] { read(built.circuit, results); }), 0, memory.peakMiB());

    const Stopwatch stopwatch;
    built.system.reset();
    table.write("release", stopwatch.milliseconds());
}

void warmUp(const Network& network, int nodes)
{
    const Built built = build(network);
    const int solves = nodes <= kWarmUpUpTo ? kWarmUpSolves : 1;
    for (int i = 0; i < solves; ++i)
        solve(built.circuit);
}

void timeNetwork(Family family, int nodes, int repeats, bool waits)
{
    const Network network = bench::generateNetwork(family, nodes);
    Table table(bench::familyName(family), nodes);
    warmUp(network, nodes);
    const MemoryMeter memory;
    Table::writeTitle();
    std::string line;
    for (int repeat = 1; repeat <= repeats; ++repeat) {
        if (waits && !std::getline(std::cin, line)) return;
        table.setRepeat(repeat);
        timeOnce(network, memory, table);
    }
}

void timeTenElements(int repeats)
{
    const Network network = bench::generateNetwork(Family::kGrid, kTenElementNodes);
    Table table("ten", kTenElementNodes);
    Results results;
    warmUp(network, kTenElementNodes);
    Table::writeTitle();
    for (int repeat = 1; repeat <= repeats; ++repeat) {
        table.setRepeat(repeat);
        const double mean = bench::meanMilliseconds([&] {
            const Built built = build(network);
            solve(built.circuit);
            read(built.circuit, results);
        });
        table.write("cycle", mean, iterationClock.iterations);
    }
}

/// Prints what kind of network it is.
void describe(const Network& network, const Results& results)
{
    std::vector<int> degree(network.nodes.size(), 0);
    std::size_t turbulent = 0;
    double fastest = 0.0;
    for (std::size_t p = 0; p < network.pipes.size(); ++p) {
        ++degree[static_cast<std::size_t>(network.pipes[p].start)];
        ++degree[static_cast<std::size_t>(network.pipes[p].end)];
        if (bench::isTurbulent(results, static_cast<int>(p))) ++turbulent;
        fastest = std::max(fastest, std::fabs(bench::velocityOf(results, static_cast<int>(p))));
    }
    double lowest = network.inletPressure;
    for (std::size_t i = 0; i < network.nodes.size(); ++i)
        lowest = std::min(lowest, bench::pressureOf(results, static_cast<int>(i)));
    const auto nodes = static_cast<double>(network.nodes.size());
    const auto pipes = static_cast<double>(network.pipes.size());
    std::printf("%zu nodes (%zu inlets), %zu pipes, %zu demands: mean degree %.2f, dead ends %.1f %%,\n",
                network.nodes.size(), network.inlets.size(), network.pipes.size(), network.demands.size(),
                2.0 * pipes / nodes,
                100.0 * static_cast<double>(std::count(degree.begin(), degree.end(), 1)) / nodes);
    std::printf("Reynolds above 5000 in %.1f %% of the pipes, fastest %.2f m/s, pressures %.1f to %.1f bar\n",
                100.0 * static_cast<double>(turbulent) / pipes, fastest, lowest * 1e-5,
                network.inletPressure * 1e-5);
}

/// FOLDER/FAMILY-NODES, the beginning of the names of files.
std::string stemOf(Family family, int nodes, const std::string& folder)
{
    return folder + "/" + bench::familyName(family) + "-" + std::to_string(nodes);
}

void writeNetwork(Family family, int nodes, const std::string& folder)
{
    bench::writeEpanetFile(bench::generateNetwork(family, nodes), stemOf(family, nodes, folder) + ".inp");
}

void writeSolution(Family family, int nodes, const std::string& folder)
{
    const Network network = bench::generateNetwork(family, nodes);
    const Built built = build(network);
    Results results;
    solve(built.circuit);
    read(built.circuit, results);
    const bench::Comparison comparison = bench::comparisonOf(network, results);
    const std::string stem = stemOf(family, nodes, folder) + "-check";
    bench::writeEpanetFile(comparison.network, stem + ".inp");
    bench::writeHeads(comparison, results, stem + ".csv");
    describe(network, results);
}

/// A whole number >= least; throws otherwise.
int numberFrom(const std::string& text, int least)
{
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end || value < least)
        throw std::invalid_argument(text + " is no number from " + std::to_string(least) + " on");
    return value;
}

Family familyFrom(const std::string& name)
{
    const std::optional<Family> family = bench::familyByName(name);
    if (!family) throw std::invalid_argument(name + " is no family");
    return *family;
}

/// False when the arguments are none of the usage's.
bool run(const std::vector<std::string>& arguments)
{
    constexpr int kFewestNodes = 4;
    const std::size_t count = arguments.size();
    if (count >= 1 && count <= 2 && arguments[0] == "ten") {
        timeTenElements(count > 1 ? numberFrom(arguments[1], 1) : 1);
        return true;
    }
    if (count < 3) return false;
    const Family family = familyFrom(arguments[1]);
    const int nodes = numberFrom(arguments[2], kFewestNodes);
    const bool waits = count == 5 && arguments[4] == "--wait";
    if (arguments[0] == "time" && (count <= 4 || waits)) {
        timeNetwork(family, nodes, count > 3 ? numberFrom(arguments[3], 1) : 1, waits);
        return true;
    }
    if (count != 4) return false;
    if (arguments[0] == "write") writeNetwork(family, nodes, arguments[3]);
    if (arguments[0] == "solve") writeSolution(family, nodes, arguments[3]);
    return arguments[0] == "write" || arguments[0] == "solve";
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        if (run(std::vector<std::string>(argv + 1, argv + argc))) return 0;
        (void)std::fputs(kUsage, stderr);
        return 2;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tavell_bench: %s\n", failure.what());
        return 1;
    }
}
