// doctor.h: what is wrong with a network or with its solution, by the names of the one who drew it, and what
// to do. The checks are listed in docs/doctor.md.
#ifndef TAVELL_KIT_DOCTOR_H
#define TAVELL_KIT_DOCTOR_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "findings.h"
#include "network.h"
#include "solution.h"

namespace kit
{

/// What can be said before a solve. The cost is linear in the size of the network.
Findings examine(const Network& network);

/// The same of a network with errors: what does not repeat them. Its nodes and elements have their meaning.
Findings examineFlawed(const Network& network, const Findings& errors);

/// What the outcome of a solve shows, converged or not. It does not repeat what examine says of the network,
/// nor the findings of the solution itself, but that the solve failed: withoutRepeats leaves that out of them.
Findings diagnose(const Network& network, const Solution& solution);

/// The findings of a solve without what others say as well.
Findings withoutRepeats(const Findings& ofSolve, const Findings& others);

/// A small part of a network that fails on its own as the whole does.
struct FailingPart {
    std::vector<std::size_t> elements;  // positions in Network::elements, ascending
    std::string why;                    // what the solve of the part has to say
    int solves = 0;                     // that were spent on the search
};

/// The smallest part that was found to fail, by taking away connected parts, then ever smaller shares of the
/// elements. At most mostSolves solves of at most a few hundred steps each. Nothing when the whole
/// network solves, or when the progress asks to stop before anything is known.
std::optional<FailingPart> smallestFailingPart(const Network& network, int mostSolves,
                                               const Progress& progress = {});

/// The failing part as a finding with its elements by name.
Finding findingOf(const Network& network, const FailingPart& part);

}  // namespace kit

#endif
