// tavell_stages.cpp: times the stages of a solve one by one, with the functions inside the library that Circuit::Solve
// calls in this order.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "analysis/result_mapping.h"
#include "analysis/translation.h"
#include "host.h"
#include "lcn/constants.h"
#include "lcn/iteration.h"
#include "lcn/node_equations.h"
#include "lcn/preparation.h"
#include "measure.h"
#include "model/Circuit.h"
#include "networks.h"

namespace
{

using Velcor::Tavell::Circuit;

/// The time [ms] of every stage, in order.
class StageTimes
{
public:
    template <typename Stage> void time(const char* name, Stage stage)
    {
        const bench::Stopwatch stopwatch;
        stage();
        m_times.emplace_back(name, stopwatch.milliseconds());
    }

    /// iterations go to the line of the stage "iterate".
    void write(const std::string& family, int nodes, int repeat, int iterations) const
    {
        for (const auto& [name, milliseconds] : m_times)
            std::printf("tavell,%s,%d,%d,%s,%.6g,%d,0\n", family.c_str(), nodes, repeat, name.c_str(),
                        milliseconds, name == "iterate" ? iterations : 0);
    }

private:
    std::vector<std::pair<std::string, double>> m_times;
};

/// Returns the number of iterations.
int timeStages(Circuit& circuit, StageTimes& times)
{
    auto network = std::make_unique<Velcor::Tavell::Network>();
    bool converged = false;
    std::map<int, Velcor::Tavell::ResultsSet> results;
    times.time("read model", [&] { *network = Velcor::Tavell::readModel(circuit, false); });
    times.time("connect", [&] { Velcor::Tavell::completeNetwork(*network); });
    times.time("prepare", [&] { lcn::prepare(network->nodes, network->elements, network->var); });
    times.time("iterate", [&] {
        converged = lcn::iterate(network->nodes, network->elements, network->var, lcn::kSteadyState, nullptr);
    });
    times.time("map results", [&] {
        results = Velcor::Tavell::mapResults(network->nodes, network->elements, network->var);
    });
    const int iterations = network->var.nIter;
    times.time("release records", [&] {
        network->var.clearWorkArrays();
        network.reset();
    });
    if (!converged || results.empty()) throw std::runtime_error("the solve did not converge");
    return iterations;
}

void run(const std::string& familyName, int nodes, int repeats)
{
    const std::optional<bench::Family> family = bench::familyByName(familyName);
    if (!family) throw std::invalid_argument(familyName + " is no family");
    const std::unique_ptr<vcITavell, void (*)(vcITavell*)> system(vcCreateTavell(), vcITavellRelease);
    vcICircuit* const circuit =
        bench::buildCircuit(system.get(), bench::generateNetwork(*family, std::max(nodes, 4)));
    std::printf("program,family,nodes,repeat,stage,milliseconds,iterations,peakMiB\n");
    for (int repeat = 1; repeat <= repeats; ++repeat) {
        StageTimes times;
        const int iterations = timeStages(static_cast<Circuit&>(*circuit), times);
        times.write(familyName, nodes, repeat, iterations);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3 && argc != 4) {
        (void)std::fputs("usage: tavell_stages FAMILY NODES [REPEATS]\n", stderr);
        return 2;
    }
    try {
        run(argv[1], std::stoi(argv[2]), argc == 4 ? std::stoi(argv[3]) : 1);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "tavell_stages: %s\n", failure.what());
        return 1;
    }
}
