#include "element_inputs.h"

#include <cmath>
#include <limits>

#include <tavell/Constants.h>

#include "catalogue.h"
#include "element_kinds.h"
#include "findings.h"

namespace kit
{

namespace
{

constexpr double kStandardGravity = 9.80665;  // [m/s2], ISO 80000-3
constexpr double kShortShare = 0.1;           // [-], of a diameter

/// "" or the first name of the element that nothing answers to.
std::string missingName(const Network& network, const Element& element)
{
    if (!element.material.empty() && findMaterial(network, element.material) == nullptr)
        return "material " + inQuotes(element.material);
    for (const FittingUse& use : element.fittings) {
        if (findFitting(network, use.name) == nullptr) return "fitting " + inQuotes(use.name);
    }
    if (!element.curveName.empty() && findCurve(network, element.curveName) == nullptr)
        return "curve " + inQuotes(element.curveName);
    return "";
}

}  // namespace

ElementInputs inputsOf(const Network& network, const Element& element, double fluidDensity)
{
    ElementInputs inputs;
    inputs.missing = missingName(network, element);
    if (!inputs.missing.empty()) return inputs;
    inputs.roughness = roughnessOf(network, element).value_or(0.0);
    inputs.k = minorLossOf(network, element);
    inputs.hazenWilliams = hazenWilliamsOf(network, element).value_or(0.0);
    inputs.curve = element.kind->hasCurve ? curveOf(network, element) : nullptr;
    inputs.referenceDensity = referenceDensityOf(network, element).value_or(fluidDensity);
    return inputs;
}

double distanceOf(const Network& network, const Element& element)
{
    const auto& a = network.nodes[element.from].at;
    const auto& b = network.nodes[element.to].at;
    return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
}

double lengthOf(const Network& network, const Element& element)
{
    if (element.length) return *element.length;
    return network.coordinates == Coordinates::geometry ? distanceOf(network, element) : shortLength(element);
}

double shortLength(const Element& element)
{
    return element.section ? kShortShare * element.section->hydraulicDiameter() : 0.0;
}

double heightOf(const Network& network, const Node& node)
{
    const auto& g = network.gravity;
    const double strength = std::hypot(g[0], g[1], g[2]);
    if (strength == 0.0) return node.at[2];
    // 0 less the projection: a height of nothing is then 0 and not -0
    return 0.0 - (node.at[0] * g[0] + node.at[1] * g[1] + node.at[2] * g[2]) / strength;
}

double gravityOf(const Network& network)
{
    const auto& g = network.gravity;
    return kStandardGravity * std::hypot(g[0], g[1], g[2]);
}

double massFlowInto(const Boundary& boundary, const Section* section, double density, double viscosity)
{
    const double sign = boundary.isInlet ? 1.0 : -1.0;
    switch (boundary.flowKind) {
    case Boundary::Flow::none:
        return 0.0;
    case Boundary::Flow::mass:
        return sign * boundary.flow;
    case Boundary::Flow::volume:
        return sign * boundary.flow * density;
    case Boundary::Flow::velocity:
        if (section != nullptr) return sign * boundary.flow * section->area * density;
        break;
    case Boundary::Flow::reynolds:
        if (section != nullptr)
            return sign * boundary.flow * viscosity * section->area / section->hydraulicDiameter();
        break;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace kit
