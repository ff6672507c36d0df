#include "doctor_support.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>

#include <tavell/Constants.h>

#include "element_inputs.h"
#include "element_kinds.h"
#include "fluids.h"

namespace kit::doctor
{

namespace
{

constexpr int kShownDigits = 4;

// The liquid of a circuit that was given none: water at 21 degC.
constexpr double kDefaultDensity = 997.4;       // [kg/m3]
constexpr double kDefaultViscosity = 0.00098;   // [Pa s]
constexpr double kDefaultTemperature = 294.26;  // [K]

std::string boundaryFlowText(const Boundary& boundary)
{
    switch (boundary.flowKind) {
    case Boundary::Flow::none:
        break;
    case Boundary::Flow::mass:
        return shown(boundary.flow, Quantity::massFlow);
    case Boundary::Flow::volume:
        return shown(boundary.flow, Quantity::volumeFlow);
    case Boundary::Flow::reynolds:
        return "Reynolds number " + shownNumber(boundary.flow);
    case Boundary::Flow::velocity:
        return shown(boundary.flow, Quantity::velocity);
    }
    return "";
}

/// Water by its name: "water", "Water at 20 degC", but no mixture.
bool isWaterName(const std::string& name)
{
    std::string lower;
    for (const char c : name)
        lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name.empty() || lower == "water" || lower.rfind("water ", 0) == 0;
}

}  // namespace

std::string nodeLabel(const Network& network, std::size_t node)
{
    return "node " + network.nodes[node].name;
}

std::string elementLabel(const Network& network, std::size_t element)
{
    return "element " + network.elements[element].name;
}

std::vector<std::string> nodeLabels(const Network& network, const std::vector<std::size_t>& nodes)
{
    std::vector<std::string> labels;
    labels.reserve(nodes.size());
    for (const std::size_t node : nodes)
        labels.push_back(nodeLabel(network, node));
    return labels;
}

std::vector<std::string> elementLabels(const Network& network, const std::vector<std::size_t>& elements)
{
    std::vector<std::string> labels;
    labels.reserve(elements.size());
    for (const std::size_t element : elements)
        labels.push_back(elementLabel(network, element));
    return labels;
}

Place nodePlace(const Network& network, std::size_t node)
{
    return {network.file, network.nodes[node].line, 0, "", nodeLabel(network, node)};
}

Place elementPlace(const Network& network, std::size_t element)
{
    return {network.file, network.elements[element].line, 0, "", elementLabel(network, element)};
}

Finding& addAtElement(const Network& network, std::size_t element, Code code, std::string message,
                      Findings& findings)
{
    return addAtElements(network, {element}, code, std::move(message), findings);
}

Finding& addAtNode(const Network& network, std::size_t node, Code code, std::string message,
                   Findings& findings)
{
    return addAtNodes(network, {node}, code, std::move(message), findings);
}

Finding& addAtElements(const Network& network, const std::vector<std::size_t>& elements, Code code,
                       std::string message, Findings& findings)
{
    Finding& finding = findings.add(code, elementPlace(network, elements.front()), std::move(message));
    finding.objects = elementLabels(network, elements);
    return finding;
}

Finding& addAtNodes(const Network& network, const std::vector<std::size_t>& nodes, Code code,
                    std::string message, Findings& findings)
{
    Finding& finding = findings.add(code, nodePlace(network, nodes.front()), std::move(message));
    finding.objects = nodeLabels(network, nodes);
    return finding;
}

std::string shownNumber(double value)
{
    if (std::isnan(value)) return "no number";
    if (value == 0.0) return "0";
    std::array<char, 64> text{};
    const double size = std::fabs(value);
    // Whole numbers up to a million read better than with an exponent.
    const auto end = size >= 1e4 && size < 1e6 ? std::to_chars(text.data(), text.data() + text.size(), value,
                                                               std::chars_format::fixed, 0)
                                               : std::to_chars(text.data(), text.data() + text.size(), value,
                                                               std::chars_format::general, kShownDigits);
    return {text.data(), end.ptr};
}

std::string shown(double value, Quantity quantity)
{
    std::string unit(siUnit(quantity));
    const double size = std::fabs(value);
    if (quantity == Quantity::diameter && size < 1.0 && size > 0.0) unit = "mm";
    if (quantity == Quantity::length && size < 0.1 && size > 0.0) unit = "mm";
    if (quantity == Quantity::pressure && size >= 1e4) unit = "bar";
    const std::string number = shownNumber(fromSi(value, unit, quantity));
    return unit.empty() ? number : number + ' ' + unit;
}

std::string shownCount(std::size_t count, std::string_view word)
{
    return std::to_string(count) + ' ' + std::string(word) + (count == 1 ? "" : "s");
}

std::string boundaryText(const Boundary& boundary)
{
    std::string text = boundary.isInlet ? "inlet" : "outlet";
    if (boundary.pressure) text += " at " + shown(*boundary.pressure, Quantity::pressure);
    const std::string flow = boundaryFlowText(boundary);
    if (!flow.empty()) text += (boundary.pressure ? " and " : " of ") + flow;
    return text;
}

Liquid liquidOf(const Network& network)
{
    const FluidChoice& choice = network.fluid;
    const bool isOfTable = !choice.name.empty() && isKnownFluid(choice.name);
    Liquid liquid{kDefaultDensity, kDefaultViscosity,
                  choice.temperature.value_or(isOfTable ? kUsualTemperature : kDefaultTemperature),
                  isWaterName(choice.name)};
    std::string error;
    if (isOfTable) {
        if (const auto values = fluidValues(choice.name, liquid.temperature, choice.concentration, error)) {
            liquid.density = values->density;
            liquid.viscosity = values->viscosity;
        }
    }
    for (const auto& [property, value] : choice.properties) {
        if (property == TAVELL_FLUID_DENSITY) liquid.density = value;
        if (property == TAVELL_FLUID_VISCOSITY) liquid.viscosity = value;
    }
    return liquid;
}

const std::vector<CurvePoint>& pointsOf(const Network& network, const Element& element)
{
    static const std::vector<CurvePoint> kNoPoints;
    const std::vector<CurvePoint>* points = inputsOf(network, element, kDefaultDensity).curve;
    return points == nullptr ? kNoPoints : *points;
}

double lastFlowOf(const Network& network, const Element& element)
{
    const std::vector<CurvePoint>& points = pointsOf(network, element);
    return points.empty() ? 0.0 : points.back().volumeFlow;
}

bool hasFixedFlow(const Element& element)
{
    return element.property(TAVELL_ELEMENT_FIXED_MASS_FLOW).value_or(0.0) != 0.0;
}

bool isNonReturn(const Element& element)
{
    return element.hasCheckValve || element.kind->type == TAVELL_NON_RETURN;
}

bool needsLength(const Element& element)
{
    switch (element.kind->type) {
    case TAVELL_PIPE:
    case TAVELL_HAZEN_WILLIAMS_PIPE:
        return true;
    case TAVELL_GENERAL_LOSS:
        return element.property(TAVELL_ELEMENT_GENERAL_LOSS_B).value_or(0.0) != 0.0;
    default:
        return false;
    }
}

double staticHeightPressure(const Network& network, std::size_t node, double density)
{
    return density * gravityOf(network) * heightOf(network, network.nodes[node]);
}

std::vector<std::size_t> openElementCounts(const Network& network)
{
    std::vector<std::size_t> counts(network.nodes.size(), 0);
    for (const Element& element : network.elements) {
        if (element.isClosed) continue;
        ++counts[element.from];
        ++counts[element.to];
    }
    return counts;
}

std::vector<std::size_t> anyOpenElement(const Network& network)
{
    std::vector<std::size_t> any(network.nodes.size(), network.elements.size());
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        if (network.elements[i].isClosed) continue;
        any[network.elements[i].from] = i;
        any[network.elements[i].to] = i;
    }
    return any;
}

std::optional<double> givenMassFlow(const Network& network, const Boundary& boundary, std::size_t element,
                                    const Liquid& liquid)
{
    if (boundary.flowKind == Boundary::Flow::none) return std::nullopt;
    const Section* section = nullptr;
    if (element < network.elements.size() && network.elements[element].section)
        section = &*network.elements[element].section;
    const double flow = massFlowInto(boundary, section, liquid.density, liquid.viscosity);
    if (std::isnan(flow)) return std::nullopt;
    return flow;
}

bool fixesElementFlow(const Node& node, std::size_t openElements)
{
    return openElements == 1 && node.boundary && node.boundary->pressure &&
           node.boundary->flowKind != Boundary::Flow::none;
}

}  // namespace kit::doctor
