// inp_import.h: EPANET input files (.inp) as networks.
#ifndef TAVELL_KIT_INP_IMPORT_H
#define TAVELL_KIT_INP_IMPORT_H

#include <optional>
#include <string>

#include "findings.h"
#include "network.h"

namespace kit
{

struct InpOptions {
    double time = 0.0;  // [s] from the start of the simulation: chooses the multipliers of patterns
    /// Pressure valves (PRV, PSV, PBV) and positional control valves stand open instead of being refused.
    bool freezesPressureValves = false;
    /// Curves that no law of the library follows exactly are fitted about the flow that they have in the
    /// solved network. Without it they are fitted about a guess, and nothing is solved.
    bool solvesForDuties = true;
};

/// The network of a file. losses: errors, and then nothing is returned; else what was left out or put in
/// another form, each with line and section.
std::optional<Network> importInp(const std::string& path, const InpOptions& options, Findings& losses);

/// The same for a text (UTF-8); file names it in findings.
std::optional<Network> importInpText(const std::string& text, const std::string& file,
                                     const InpOptions& options, Findings& losses);

}  // namespace kit

#endif
