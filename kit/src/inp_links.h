// inp_links.h: pipes, pumps and valves of an EPANET input file, with their status.
#ifndef TAVELL_KIT_INP_LINKS_H
#define TAVELL_KIT_INP_LINKS_H

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "findings.h"
#include "inp_curves.h"
#include "inp_nodes.h"
#include "inp_options.h"
#include "inp_sections.h"

namespace kit
{

enum class InpLinkKind { pipe, pump, valve };
enum class InpValve { prv, psv, pbv, fcv, tcv, gpv, pcv };

/// A valve is active when it controls what its setting says; a pipe or a pump that is active is open.
enum class InpStatus { active, open, closed };

/// A link in SI units.
struct InpLink {
    std::string id;
    InpLinkKind kind = InpLinkKind::pipe;
    std::size_t from = 0;  // position of the start node
    std::size_t to = 0;
    std::size_t line = 0;
    InpStatus status = InpStatus::active;

    double length = 0.0;     // [m], pipes
    double diameter = 0.0;   // [m], pipes and valves
    double roughness = 0.0;  // Hazen-Williams C, Manning's n, or a roughness [m]
    double minorLoss = 0.0;  // [-]
    bool hasCheckValve = false;

    std::string curve;            // of a pump's head or a valve's head loss
    std::optional<double> power;  // [m4/s], of a pump: product of head and flow
    double speed = 1.0;           // [-], of a pump

    InpValve valve = InpValve::tcv;
    double setting = 0.0;  // of a valve, in the file's units
};

struct InpLinks {
    std::vector<InpLink> list;
    std::unordered_map<std::string, std::size_t> positions;  // by ID
    std::unordered_set<std::string> refused;  // IDs of lines with errors, which are not in the list
};

/// "element 7"
std::string linkObject(const InpLink& link);
InpSection linkSection(const InpLink& link);
/// "PRV"
std::string_view valveWord(InpValve valve);

/// Points of all curves, by ID, in the file's own numbers.
using InpCurves = std::unordered_map<std::string, std::vector<HeadPoint>>;

InpCurves readInpCurves(const InpDocument& document, Findings& findings);

/// Links with their initial status and the speeds of their patterns.
InpLinks readInpLinks(const InpDocument& document, const InpFileOptions& options, const InpPatterns& patterns,
                      const InpNodes& nodes, Findings& findings);

}  // namespace kit

#endif
