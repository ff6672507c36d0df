// inp_demands.h: patterns of an EPANET input file at one time, and demands with them.
#ifndef TAVELL_KIT_INP_DEMANDS_H
#define TAVELL_KIT_INP_DEMANDS_H

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "findings.h"
#include "inp_options.h"
#include "inp_sections.h"

namespace kit
{

/// The multipliers of all patterns at one time.
class InpPatterns
{
public:
    /// time [s] from the start of the simulation.
    InpPatterns(const InpDocument& document, const InpFileOptions& options, double time, Findings& findings);

    /// Nothing when there is no such pattern.
    std::optional<double> multiplier(const std::string& id) const;
    /// That of the file's default pattern; 1 when there is none.
    double defaultMultiplier() const { return m_default; }

private:
    std::unordered_map<std::string, double> m_multipliers;
    double m_default = 1.0;
};

/// What became of a demand's node.
enum class InpNodeKind { junction, reservoir, tank };

struct InpNodes;

/// Demand of every node [m3/s] at the time of the patterns; reservoirs and tanks have 0.
std::vector<double> readInpDemands(const InpDocument& document, const InpFileOptions& options,
                                   const InpPatterns& patterns, const InpNodes& nodes, Findings& findings);

}  // namespace kit

#endif
