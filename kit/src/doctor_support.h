// doctor_support.h: names, values and texts that the doctor's checks share.
#ifndef TAVELL_KIT_DOCTOR_SUPPORT_H
#define TAVELL_KIT_DOCTOR_SUPPORT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "findings.h"
#include "network.h"
#include "units.h"

namespace kit::doctor
{

/// "node tap 3", "element pipe 7".
std::string nodeLabel(const Network& network, std::size_t node);
std::string elementLabel(const Network& network, std::size_t element);
std::vector<std::string> nodeLabels(const Network& network, const std::vector<std::size_t>& nodes);
std::vector<std::string> elementLabels(const Network& network, const std::vector<std::size_t>& elements);
Place nodePlace(const Network& network, std::size_t node);
Place elementPlace(const Network& network, std::size_t element);

/// A finding at one element or node, which is its only object.
Finding& addAtElement(const Network& network, std::size_t element, Code code, std::string message,
                      Findings& findings);
Finding& addAtNode(const Network& network, std::size_t node, Code code, std::string message,
                   Findings& findings);
/// A finding about several elements or nodes, at the first of them.
Finding& addAtElements(const Network& network, const std::vector<std::size_t>& elements, Code code,
                       std::string message, Findings& findings);
Finding& addAtNodes(const Network& network, const std::vector<std::size_t>& nodes, Code code,
                    std::string message, Findings& findings);

/// A number with four significant digits.
std::string shownNumber(double value);
/// A value in SI as an engineer reads it: "25 mm", "3 bar", "0.2 kg/s".
std::string shown(double value, Quantity quantity);
/// "1 element", "3 elements".
std::string shownCount(std::size_t count, std::string_view word);
/// "inlet at 3 bar", "outlet of 0.2 kg/s".
std::string boundaryText(const Boundary& boundary);

/// What the doctor needs to know of the liquid.
struct Liquid {
    double density = 0.0;      // [kg/m3]
    double viscosity = 0.0;    // [Pa s]
    double temperature = 0.0;  // [K]
    bool isWater = false;
};

/// The liquid of a network before its solve: given values, then the table of fluids, then the library's
/// water.
Liquid liquidOf(const Network& network);

/// The points of a pump or a loss, its own or those of the curve that it names; none when nothing answers to
/// the name.
const std::vector<CurvePoint>& pointsOf(const Network& network, const Element& element);
/// [m3/s], the largest flow of an element's curve; 0 without points.
double lastFlowOf(const Network& network, const Element& element);
/// Whether an element carries a given flow in place of its curve.
bool hasFixedFlow(const Element& element);
/// Whether an element lets no flow back.
bool isNonReturn(const Element& element);
/// Whether the law of an element takes its length.
bool needsLength(const Element& element);

/// rho g z [Pa] of a node, z against gravity.
double staticHeightPressure(const Network& network, std::size_t node, double density);

/// By node: the elements that are open, counted once at each end.
std::vector<std::size_t> openElementCounts(const Network& network);
/// By node: the position of an open element that ends there; the number of elements when there is none.
std::vector<std::size_t> anyOpenElement(const Network& network);

/// [kg/s], into the network: the given flow of a node's boundary. Nothing when none is given, or when it
/// cannot be computed for want of a cross-section: a velocity needs that of the element, which is the node's
/// only one.
std::optional<double> givenMassFlow(const Network& network, const Boundary& boundary, std::size_t element,
                                    const Liquid& liquid);

/// Whether a node's pressure and flow are both given where that fixes the flow of its only element.
bool fixesElementFlow(const Node& node, std::size_t openElements);

}  // namespace kit::doctor

#endif
