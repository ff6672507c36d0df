// inp_elements.h: links of an EPANET input file as elements of a network.
#ifndef TAVELL_KIT_INP_ELEMENTS_H
#define TAVELL_KIT_INP_ELEMENTS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "findings.h"
#include "inp_curves.h"
#include "inp_import.h"
#include "inp_links.h"
#include "inp_options.h"
#include "network.h"

namespace kit
{

/// An element whose curve is fitted about its duty.
struct InpFittedElement {
    std::size_t element = 0;  // position in the network
    Place place;
    std::optional<PumpLaw> pump;  // one of the two
    std::optional<ValveLaw> valve;
    double dutyFlow = 0.0;  // [m3/s]
    std::string curve;      // its ID in the file; "" for constant power

    bool isExact() const { return pump && pump->isCubic(); }
};

/// What the elements need to know of the whole file.
struct InpLinkContext {
    const InpDocument& document;
    const InpFileOptions& options;
    const InpCurves& curves;
    bool freezesPressureValves = false;
    double expectedFlow = 0.0;  // [m3/s], > 0: a first guess of a pump's duty
};

/// Adds an element for every link, in their order.
std::vector<InpFittedElement> addInpElements(const InpLinks& links, const InpLinkContext& context,
                                             Network& network, Findings& findings);

/// Control valves at a dead end have no flow to limit and are made valves that stand open. To be called when
/// the nodes have their boundary conditions.
void openControlValvesAtDeadEnds(Network& network);

/// Puts the fit about its present duty into the element. density in kg/m3.
void fitElement(const InpFittedElement& fitted, double density, Network& network);

/// Pumps of one curve that are fitted alike take it by name from the network, instead of a copy each.
void shareCurves(const std::vector<InpFittedElement>& fitted, Network& network);

/// Says in the findings how well each fit is.
void reportFits(const std::vector<InpFittedElement>& fitted, Findings& findings);

/// Fits every inexact curve about the flow that it has in the solved network, by solving it a few times.
void refineDuties(std::vector<InpFittedElement>& fitted, double density, Network& network,
                  Findings& findings);

}  // namespace kit

#endif
