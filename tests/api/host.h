// host.h: what the tests of the library among other threads, locales and floating-point settings share:
// random networks, and everything that a circuit answers, to the bit.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/networks.h"
#include "tavell/IResultsExporterOptions.h"

namespace Host
{

inline std::uint64_t bitsOf(double value)
{
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// All that a circuit tells after a solve. Numbers are kept as their bits, so that no NaN and no sign of a
/// zero is lost in a comparison.
struct Answer {
    bool isSolved = false;
    std::vector<std::vector<std::uint64_t>> results;  // by TavellResultKey
    std::vector<std::uint64_t> feedback;              // ids and values in turn
    std::string exported;

    bool operator==(const Answer& other) const
    {
        return isSolved == other.isSolved && results == other.results && feedback == other.feedback &&
               exported == other.exported;
    }
};

/// What the last solve of a circuit left behind.
inline Answer read(Velcor::Tavell::ICircuit& circuit, bool isSolved)
{
    Answer answer;
    answer.isSolved = isSolved;
    for (int key = TAVELL_RESULT_REYNOLDS; key <= TAVELL_RESULT_EXTERNAL_MASS_FLOW; ++key) {
        auto& bits = answer.results.emplace_back();
        Velcor::Tavell::IResultsSet* const results = circuit.GetResults(key);
        if (results == nullptr) continue;
        for (std::size_t i = 0; i < results->GetSize(); ++i) {
            bits.push_back(static_cast<std::uint64_t>(results->GetIds()[i]));
            bits.push_back(bitsOf(results->GetValues()[i]));
            bits.push_back(bitsOf(results->GetL10NValues(0.001, 1.0)[i]));
        }
    }
    Velcor::Tavell::IFeedbackCollection* const all = circuit.GetFeedback();
    for (std::size_t i = 0; i < all->GetSize(); ++i) {
        Velcor::Tavell::IFeedback* const item = all->GetFeedback(i);
        answer.feedback.push_back(static_cast<std::uint64_t>(item->GetId()));
        for (std::size_t v = 0; v < item->GetValueSize(); ++v)
            answer.feedback.push_back(bitsOf(item->GetValues()[v]));
    }
    answer.exported = circuit.ExportResults();
    return answer;
}

/// A network of its own for each number: most have up to 60 nodes and every element type that needs no pump
/// curve; every 25th is a grid large enough for the search for starting values.
inline support::Description network(int number)
{
    if (number % 25 == 24) return support::grid(20, 20, 0.5 + 0.01 * number);
    std::mt19937 random(static_cast<unsigned>(number) + 1);
    support::Description description =
        support::randomNetwork(random, 5 + number % 40, number % 7,
                               {TAVELL_PIPE, TAVELL_PIPE, TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_GENERAL_LOSS,
                                TAVELL_KV_VALVE, TAVELL_CV_VALVE, TAVELL_ORIFICE, TAVELL_LOSS});
    description.friction = number % 7;
    description.minorLoss = number % 3 == 0 ? 1.0 : 0.0;
    return description;
}

/// A property by its name, so that the table of names, which all systems share, is asked for.
inline void touchByName(const support::Built& built)
{
    built.circuit().GetEntity()->SetPropertyByName("circuit_calculate_viscosity", 0.0);
}

/// Solves a network, every second with its temperatures.
inline bool solve(const support::Built& built, int number)
{
    return number % 2 == 0 ? built.solve() : built.solveWithTemperatures();
}

/// A network from the first operation to the last.
inline Answer answerOf(int number)
{
    const support::Built built(network(number));
    touchByName(built);
    built.circuit().Validate();
    return read(built.circuit(), solve(built, number));
}

}  // namespace Host
