// solve.cpp: one solve of one circuit, stage by stage.
#include <algorithm>
#include <cstdint>
#include <map>

#include "feedback_mapping.h"
#include "floating_point.h"
#include "lcn/constants.h"
#include "lcn/errors.h"
#include "lcn/iteration.h"
#include "lcn/node_equations.h"
#include "lcn/preparation.h"
#include "lcn/report.h"
#include "model/Circuit.h"
#include "result_mapping.h"
#include "translation.h"
#include "validity.h"

namespace Velcor::Tavell
{

namespace
{

constexpr std::uint32_t kStopped = 701208;  // message: the cancellation callback asked for it

/// Of a solve that did not converge from a start near the solution. The ordinary start has the last word, and
/// its reasons are the ones to tell.
constexpr lcn::IterationPaths kOrdinaryStart{lcn::Factorisation::kFast, false, true};

bool wasStopped(const lcnNET_var& var)
{
    return std::any_of(var.Messages.begin(), var.Messages.end(),
                       [](const lcn::Message& message) { return message.id == kStopped; });
}

/// Takes the hydrostatic part off the pressures of all nodes [Pa].
void makePressuresStatic(Network& network)
{
    for (int i = 1; i <= network.var.NodeTotal; ++i)
        network.nodes[i].Pressure -= network.var.Density * lcn::kGravity * network.nodes[i].Height;
}

}  // namespace

bool Circuit::Solve(bool energy, bool (*cancel)())
{
    const UsualFloatingPoint settings;

    if (detailCheckRequested() && !IsSuitableForAnalysis()) return false;

    if (!fitsSolver(nodes().size(), elements().size())) return false;

    Network network = readModel(*this, energy);
    clearResults();
    const std::uint64_t before = revision();
    try {
        completeNetwork(network);
        lcn::prepare(network.nodes, network.elements, network.var);
        bool converged =
            lcn::iterate(network.nodes, network.elements, network.var, lcn::kSteadyState, cancel);
        if (!converged && network.var.startedNear && !wasStopped(network.var) && revision() == before) {
            network = Network();
            network = readModel(*this, energy);
            completeNetwork(network);
            lcn::prepare(network.nodes, network.elements, network.var);
            converged = lcn::iterate(network.nodes, network.elements, network.var, lcn::kSteadyState, cancel,
                                     kOrdinaryStart);
        }
        makePressuresStatic(network);
        if (network.var.Debug)
            lcn::writeReport(network.elements, network.nodes, network.var, "Results_c.dat");
        std::map<int, ResultsSet> results;
        const bool changedMeanwhile = revision() != before;  // by the cancellation callback
        if (converged && !changedMeanwhile)
            results = mapResults(network.nodes, network.elements, network.var);
        mapFeedback(network.var.Messages, m_feedback);
        m_results = std::move(results);
        network.var.clearWorkArrays();
    } catch (const lcn::FatalException&) {
        mapFeedback(network.var.Messages, m_feedback);
        network.var.clearWorkArrays();
        return false;
    }
    m_hasResults = !m_results.empty();
    return m_hasResults;
}

}  // namespace Velcor::Tavell
