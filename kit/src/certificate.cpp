#include "certificate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include <tavell/Constants.h>

#include "circuit_builder.h"
#include "element_inputs.h"
#include "element_kinds.h"
#include "element_laws.h"
#include "fluids.h"
#include "network_writer.h"
#include "number_text.h"

#ifndef TAVELL_VERSION
#error "TAVELL_VERSION is the version of the program, between double quotes"
#endif

namespace kit
{

namespace
{

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kTiny = 3e-38;
constexpr double kPi = 3.14159265358979323846;

/// [-], of a control valve's limit: a flow this close is at it.
constexpr double kLimitTolerance = 1e-4;
/// [-], of the mean flow: what a good mass balance leaves open. A flow of less may be that of a shut element,
/// and one this close to a limit may be at it.
constexpr double kLeakShare = kGoodMassImbalance;
/// [-], of the mean flow: less carries no heat.
constexpr double kHeatlessShare = 1e-6;
/// [Pa], differences that no measure counts.
constexpr double kSmallestDifference = 1e-12;
// [-] of the largest mean pressure
constexpr double kSmallestPart = 1e-6;

const char* const kComputedK = "a junction loss that the library computes";
const char* const kFixedFlow = "a fixed flow";
const char* const kPressureAndFlow = "a given pressure and flow at one end";
const char* const kMixedViscosity = "a viscosity that changes along it";

/// Worst relative contradiction between two numbers of a result [-].
void compare(double found, double expected, double scale, double& worst)
{
    if (std::isnan(found) && std::isnan(expected)) return;
    const double difference = std::fabs(found - expected);
    if (difference == 0.0) return;
    const double relative = scale > 0.0 ? difference / scale : difference;
    worst = std::isnan(relative) ? std::numeric_limits<double>::infinity() : std::max(worst, relative);
}

/// Largest magnitude of a column, numbers only.
double sizeOf(const std::vector<double>& values)
{
    double largest = 0.0;
    for (const double value : values) {
        if (std::isfinite(value)) largest = std::max(largest, std::fabs(value));
    }
    return largest;
}

/// The numbers of a result and what the checks share.
class Checker
{
public:
    Checker(const Network& network, const Solution& solution)
        : m_network(network), m_solution(solution), m_laws(network, solution.fluid),
          m_degree(network.nodes.size(), 0), m_elementAt(network.nodes.size(), kNotInCircuit)
    {
        std::size_t open = 0;
        double sum = 0.0;
        for (std::size_t i = 0; i < network.elements.size(); ++i) {
            const Element& element = network.elements[i];
            if (element.isClosed) continue;
            for (const std::size_t node : {element.from, element.to}) {
                ++m_degree[node];
                m_elementAt[node] = i;
            }
            ++open;
            sum += std::fabs(solution.massFlow[i]);
        }
        m_meanFlow = open == 0 ? 0.0 : sum / static_cast<double>(open);
        if (!(m_meanFlow > kTiny)) m_meanFlow = 1.0;
        m_weight = solution.fluid.density * gravityOf(network);
        m_lowest = 0.0;
        for (std::size_t i = 0; i < network.nodes.size(); ++i) {
            const double height = heightOf(network, network.nodes[i]);
            m_lowest = i == 0 ? height : std::min(m_lowest, height);
        }
    }

    double meanFlow() const { return m_meanFlow; }
    const ElementLaws& laws() const { return m_laws; }

    /// [kg/s], > 0 into the network: what the network gives, else what the result says.
    double external(std::size_t node) const
    {
        const auto& boundary = m_network.nodes[node].boundary;
        if (!boundary) return 0.0;
        if (boundary->flowKind == Boundary::Flow::none)
            return boundary->pressure ? m_solution.externalMassFlow[node] : 0.0;
        const Element* element = m_degree[node] == 1 ? &m_network.elements[m_elementAt[node]] : nullptr;
        const Section* section = element != nullptr && element->section ? &*element->section : nullptr;
        return massFlowInto(*boundary, section, m_solution.fluid.density, m_solution.fluid.viscosity);
    }

    /// [kg/s], external flow that the result has at a node where the network has none.
    double unexplainedFlow(std::size_t node) const
    {
        const auto& boundary = m_network.nodes[node].boundary;
        const bool hasFlow = boundary && (boundary->pressure || external(node) != 0.0);
        return hasFlow && m_degree[node] > 0 ? 0.0 : m_solution.externalMassFlow[node];
    }

    std::vector<double> massResiduals() const
    {
        std::vector<double> residuals(m_network.nodes.size(), 0.0);
        for (std::size_t i = 0; i < residuals.size(); ++i)
            residuals[i] = m_degree[i] == 0 ? 0.0 : external(i);
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            residuals[element.from] -= m_solution.massFlow[i];
            residuals[element.to] += m_solution.massFlow[i];
        }
        return residuals;
    }

    /// [Pa], from start to end.
    double staticDrop(const Element& element) const
    {
        return m_solution.pressure[element.from] - m_solution.pressure[element.to];
    }

    /// [Pa], weight of the liquid from start to end, > 0 upwards.
    double heightDrop(const Element& element) const
    {
        if (m_weight == 0.0) return 0.0;
        return m_weight * (heightOf(m_network, m_network.nodes[element.to]) -
                           heightOf(m_network, m_network.nodes[element.from]));
    }

    /// Mean piezometric pressure of the two ends [Pa], with the datum, as the measure of a solve has it.
    double meanPressure(const Element& element) const
    {
        const auto piezometric = [&](std::size_t node) {
            return m_solution.pressure[node] + m_network.settings.pressureDatum +
                   m_weight * (heightOf(m_network, m_network.nodes[node]) - m_lowest);
        };
        return (piezometric(element.from) + piezometric(element.to)) / 2.0;
    }

    /// Why an element's law says nothing about its pressures; null when it does.
    const char* whyNotChecked(std::size_t position) const
    {
        const Element& element = m_network.elements[position];
        if (element.property(TAVELL_ELEMENT_FIXED_MASS_FLOW).value_or(0.0) != 0.0) return kFixedFlow;
        for (const std::size_t node : {element.from, element.to}) {
            const auto& boundary = m_network.nodes[node].boundary;
            if (boundary && boundary->pressure && boundary->flowKind != Boundary::Flow::none)
                return kPressureAndFlow;
        }
        if (!m_laws.isMinorLossGiven(position)) return kComputedK;
        return isViscosityMixed(element) ? kMixedViscosity : nullptr;
    }

    /// [Pa], drop between the nodes less that of the law, for an element that is checked.
    double lawMismatch(std::size_t position) const
    {
        const Element& element = m_network.elements[position];
        const double flow = m_solution.massFlow[position];
        const double drop = staticDrop(element) - heightDrop(element);
        if (isOneWay(element) && std::fabs(flow) <= kLeakShare * m_meanFlow)
            return shutMismatch(position, drop);
        if (element.kind->type == TAVELL_CONTROL_VALVE) return limitMismatch(position, drop);
        return drop - lawDrop(position, flow);
    }

    double lawDrop(std::size_t position, double flow) const
    {
        if (isLossAtFlowEnd(position)) return m_laws.lossCurve(position, flow / m_solution.fluid.density);
        return m_laws.at(position, flow, m_solution.elementTemperature[position]).drop();
    }

    double energyImbalance() const;

    /// Worst contradiction between a column and what it follows from [-]: other columns, the fluid and what the
    /// network gives, relative to the largest value of the column.
    double columnMismatch() const
    {
        double worst = 0.0;
        compareFluid(worst);
        compareElements(worst);
        compareNodes(worst);
        if (!m_solution.hasTemperatures) compareUnsolvedTemperatures(worst);
        return worst;
    }

private:
    void compareFluid(double& worst) const;
    void compareElements(double& worst) const;
    void compareNodes(double& worst) const;
    void compareUnsolvedTemperatures(double& worst) const;

    static bool isOneWay(const Element& element)
    {
        return element.kind->type == TAVELL_NON_RETURN || element.hasCheckValve;
    }

    /// A shut element holds back any pressure from its end and none from its start. An open one of next to no
    /// flow fits its law.
    double shutMismatch(std::size_t position, double drop) const
    {
        const double asOpen = drop - lawDrop(position, m_solution.massFlow[position]);
        const double forward = std::max(drop, 0.0);
        return forward < std::fabs(asOpen) ? forward : asOpen;
    }

    /// A control valve at its limit holds back what its own law leaves over, and one that is as good as shut
    /// does so in both directions.
    double limitMismatch(std::size_t position, double drop) const
    {
        const Element& element = m_network.elements[position];
        const double flow = m_solution.massFlow[position];
        const double limit =
            std::fabs(element.property(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW).value_or(0.0));
        const double margin = kLimitTolerance * limit + kLeakShare * m_meanFlow;
        const double asOpen = drop - lawDrop(position, flow);
        if (std::fabs(flow) < limit - margin) return asOpen;
        if (std::fabs(flow) > limit + margin) {
            const double asLimited = drop - lawDrop(position, std::copysign(limit, flow));
            return std::fabs(asLimited) > std::fabs(asOpen) ? asLimited : asOpen;
        }
        const double along = std::copysign(1.0, std::fabs(flow) > margin ? flow : drop);
        return along * std::min(0.0, along * asOpen);
    }

    /// Whether the pressure of an end of given flow follows the points of a loss curve.
    bool isLossAtFlowEnd(std::size_t position) const
    {
        const Element& element = m_network.elements[position];
        if (element.kind->type != TAVELL_LOSS) return false;
        const auto* points = inputsOf(m_network, element, m_solution.fluid.density).curve;
        const double flow = m_solution.massFlow[position] / m_solution.fluid.density;
        const bool isWithin = points != nullptr && !points->empty() && flow > 0.0 &&
                              flow <= points->back().volumeFlow && points->back().pressure >= 0.0;
        if (!isWithin) return false;
        return isFlowEnd(element.from, element.to) || isFlowEnd(element.to, element.from);
    }

    /// Whether the viscosity of an element in two halves is not that of its mean temperature.
    bool isViscosityMixed(const Element& element) const
    {
        return m_network.settings.viscosityFollowsTemperature && needsDetour(m_network, element) &&
               (element.heat || !m_network.settings.solvesTemperatures);
    }

    bool isFlowEnd(std::size_t node, std::size_t other) const
    {
        const auto& boundary = m_network.nodes[node].boundary;
        const auto& beyond = m_network.nodes[other].boundary;
        const bool hasFlow = boundary && !boundary->pressure && boundary->flowKind != Boundary::Flow::none;
        return m_degree[node] == 1 && hasFlow && (m_degree[other] > 1 || (beyond && beyond->pressure));
    }

    double givenTemperature(std::size_t node) const
    {
        const auto& boundary = m_network.nodes[node].boundary;
        return boundary && boundary->isInlet && boundary->temperature ? *boundary->temperature
                                                                      : m_solution.fluid.temperature;
    }

    /// Heat that an element is given [W]; nothing where it depends on the wall.
    std::optional<double> givenHeat(std::size_t position) const;

    const Network& m_network;
    const Solution& m_solution;
    const ElementLaws m_laws;
    std::vector<std::size_t> m_degree;     // open elements by node
    std::vector<std::size_t> m_elementAt;  // one of these
    double m_meanFlow = 1.0;               // [kg/s]
    double m_weight = 0.0;                 // [Pa/m]
    double m_lowest = 0.0;                 // [m], height of the lowest node
};

std::optional<double> Checker::givenHeat(std::size_t position) const
{
    const Element& element = m_network.elements[position];
    if (!element.heat) return 0.0;
    const double value = element.heat->value;
    switch (element.heat->type) {
    case TAVELL_ENERGY_RISE:
        return m_solution.fluid.specificHeat * m_solution.massFlow[position] * value;
    case TAVELL_ENERGY_HEAT:
        return value;
    case TAVELL_ENERGY_FLUX:
    case TAVELL_ENERGY_FLUX_STORED: {
        if (!element.section) return 0.0;
        const Section& section = *element.section;
        const double perimeter =
            section.wettedPerimeter > 0.0 ? section.wettedPerimeter : kPi * section.diameter;
        return value * perimeter * lengthOf(m_network, element);
    }
    default:
        return std::nullopt;
    }
}

/// The liquid, as far as the network or the table of fluids gives it.
void Checker::compareFluid(double& worst) const
{
    const FluidChoice& choice = m_network.fluid;
    const FluidValues& fluid = m_solution.fluid;
    FluidValues expected = fluid;
    std::string error;
    if (isKnownFluid(choice.name)) {
        const auto values = fluidValues(choice.name, choice.temperature.value_or(kUsualTemperature),
                                        choice.concentration, error);
        if (values) expected = *values;
    }
    if (choice.temperature) expected.temperature = *choice.temperature;
    for (const auto& [property, value] : choice.properties) {
        if (property == TAVELL_FLUID_DENSITY) expected.density = value;
        if (property == TAVELL_FLUID_VISCOSITY) expected.viscosity = value;
        if (property == TAVELL_FLUID_SPECIFIC_HEAT) expected.specificHeat = value;
        if (property == TAVELL_FLUID_CONDUCTIVITY) expected.conductivity = value;
    }
    compare(fluid.temperature, expected.temperature, expected.temperature, worst);
    compare(fluid.density, expected.density, expected.density, worst);
    compare(fluid.viscosity, expected.viscosity, expected.viscosity, worst);
    compare(fluid.specificHeat, expected.specificHeat, expected.specificHeat, worst);
    compare(fluid.conductivity, expected.conductivity, expected.conductivity, worst);
}

/// Volume flow, velocity, Reynolds number and pressure difference.
void Checker::compareElements(double& worst) const
{
    const double density = m_solution.fluid.density;
    const double flowSize = sizeOf(m_solution.volumeFlow);
    const double velocitySize = sizeOf(m_solution.velocity);
    const double reynoldsSize = sizeOf(m_solution.reynolds);
    const double pressureSize = sizeOf(m_solution.pressure) + std::fabs(m_network.settings.pressureDatum);
    for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
        const Element& element = m_network.elements[i];
        compare(m_solution.volumeFlow[i], m_solution.massFlow[i] / density, flowSize, worst);
        compare(m_solution.pressureDifference[i], -staticDrop(element), pressureSize, worst);
        if (!element.section) {
            compare(m_solution.velocity[i], kNotANumber, velocitySize, worst);
            compare(m_solution.reynolds[i], kNotANumber, reynoldsSize, worst);
            continue;
        }
        compare(m_solution.velocity[i], m_solution.volumeFlow[i] / element.section->area, velocitySize,
                worst);
        if (isViscosityMixed(element)) continue;
        const double viscosity = element.kind->reportsVelocity
                                     ? m_laws.viscosity(m_solution.elementTemperature[i])
                                     : m_solution.fluid.viscosity;
        compare(m_solution.reynolds[i],
                m_solution.velocity[i] * density * element.section->hydraulicDiameter() / viscosity,
                reynoldsSize, worst);
    }
}

/// Heads, given pressures, given flows and the temperatures of inlets that keep theirs.
void Checker::compareNodes(double& worst) const
{
    const double pressureSize = sizeOf(m_solution.pressure) + std::fabs(m_network.settings.pressureDatum);
    for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
        const Node& node = m_network.nodes[i];
        const double height = heightOf(m_network, node);
        const double head = m_weight > 0.0 ? height + m_solution.pressure[i] / m_weight : kNotANumber;
        compare(m_solution.head[i], head, sizeOf({m_solution.head[i], height, 1.0}), worst);
        if (!node.boundary) continue;
        const bool hasPressure = node.boundary->pressure.has_value();
        if (hasPressure) compare(m_solution.pressure[i], *node.boundary->pressure, pressureSize, worst);
        if (m_degree[i] == 0) continue;
        const bool givesFlow = node.boundary->flowKind != Boundary::Flow::none;
        if (givesFlow && external(i) != 0.0)
            compare(m_solution.externalMassFlow[i], external(i), std::fabs(external(i)), worst);
        if (hasPressure && node.boundary->isInlet)
            compare(m_solution.nodeTemperature[i], givenTemperature(i), givenTemperature(i), worst);
    }
}

/// Temperatures that a solve leaves as they are: of a node its inlet's or the fluid's, of an element between
/// those of its ends and the fluid's.
void Checker::compareUnsolvedTemperatures(double& worst) const
{
    const double usual = m_solution.fluid.temperature;
    for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
        if (m_degree[i] == 0) continue;
        const auto& boundary = m_network.nodes[i].boundary;
        const double found = m_solution.nodeTemperature[i];
        const bool isGiven = boundary && boundary->temperature && found == *boundary->temperature;
        if (!isGiven) compare(found, usual, usual, worst);
    }
    for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
        const Element& element = m_network.elements[i];
        const double found = m_solution.elementTemperature[i];
        if (element.isClosed) {
            compare(found, kNotANumber, usual, worst);
            continue;
        }
        const auto [low, high] = std::minmax(
            {usual, m_solution.nodeTemperature[element.from], m_solution.nodeTemperature[element.to]});
        compare(found, std::clamp(found, low, high), usual, worst);
    }
}

/// [W], the worst of: a node whose temperature is not the mixture of what enters it; an element whose fluid
/// takes up another heat than it is given. The heat of an element follows from its mean temperature: Q = 2 Cp
/// |m| (T_e - T_upstream).
double Checker::energyImbalance() const
{
    const double cp = m_solution.fluid.specificHeat;
    std::vector<double> entering(m_network.nodes.size(), 0.0);  // [W/K]
    std::vector<double> carried(m_network.nodes.size(), 0.0);   // [W], less the node's own temperature
    const auto& temperature = m_solution.nodeTemperature;
    double worst = 0.0;
    for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
        const Element& element = m_network.elements[i];
        const double flow = m_solution.massFlow[i];
        if (std::fabs(flow) <= kHeatlessShare * m_meanFlow) continue;
        const std::size_t upstream = flow > 0.0 ? element.from : element.to;
        const std::size_t downstream = flow > 0.0 ? element.to : element.from;
        const double heat =
            2.0 * cp * std::fabs(flow) * (m_solution.elementTemperature[i] - temperature[upstream]);
        entering[downstream] += cp * std::fabs(flow);
        carried[downstream] +=
            cp * std::fabs(flow) * (temperature[upstream] - temperature[downstream]) + heat;
        if (const auto given = givenHeat(i)) worst = std::max(worst, std::fabs(heat - *given));
    }
    for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
        const auto& boundary = m_network.nodes[i].boundary;
        const bool hasPressure = boundary && boundary->pressure;
        const double inflow = boundary && !hasPressure ? external(i) : 0.0;
        if (hasPressure && boundary->isInlet) continue;  // keeps its temperature, whatever enters
        if (inflow > 0.0) {
            entering[i] += cp * inflow;
            carried[i] += cp * inflow * (givenTemperature(i) - temperature[i]);
        }
        if (entering[i] > 0.0) worst = std::max(worst, std::fabs(carried[i]));
    }
    return worst;
}

void addMass(const Network& network, const Checker& checker, Certificate& certificate)
{
    const std::vector<double> residuals = checker.massResiduals();
    for (std::size_t i = 0; i < residuals.size(); ++i) {
        // The result itself may own up to a flow that a node without a boundary leaves open.
        double size = std::max(std::fabs(residuals[i]), std::fabs(checker.unexplainedFlow(i)));
        if (std::isnan(residuals[i] + checker.unexplainedFlow(i)))
            size = std::numeric_limits<double>::infinity();
        if (size <= certificate.massImbalance) continue;
        certificate.massImbalance = size;
        certificate.worstNode = network.nodes[i].name;
    }
    certificate.relativeMassImbalance = certificate.massImbalance / checker.meanFlow();
}

/// The smallest mean pressure [Pa] that a mismatch is measured by. Where the pressure happens to pass through nothing,
/// its rounding would count as a mismatch.
double smallestMeanPressure(const Network& network, const Checker& checker)
{
    double largest = 0.0;
    for (const Element& element : network.elements)
        largest = std::fmax(largest, std::fabs(checker.meanPressure(element)));
    return kSmallestPart * largest;
}

void addLaws(const Network& network, const Checker& checker, Certificate& certificate)
{
    const double smallestMean = smallestMeanPressure(network, checker);
    std::map<std::string, std::size_t> reasons;
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        const Element& element = network.elements[i];
        if (element.isClosed) continue;
        if (const char* why = checker.whyNotChecked(i)) {
            ++reasons[why];
            ++certificate.elementsNotChecked;
            continue;
        }
        ++certificate.elementsChecked;
        double mismatch = std::fabs(checker.lawMismatch(i));
        if (std::isnan(mismatch)) mismatch = std::numeric_limits<double>::infinity();
        double mean = std::fmax(std::fabs(checker.meanPressure(element)), smallestMean);
        // Curves take no part in the measure of a solve: near a pressure of nothing their own difference
        // counts.
        if (element.kind->hasCurve)
            mean = std::max(mean, std::fabs(checker.staticDrop(element) - checker.heightDrop(element)));
        if (mean > kTiny && mismatch > kSmallestDifference)
            certificate.relativeLawMismatch += mismatch / mean;
        if (mismatch <= certificate.lawMismatch) continue;
        certificate.lawMismatch = mismatch;
        certificate.worstElement = element.name;
    }
    for (const auto& [why, count] : reasons) {
        if (!certificate.notCheckedWhy.empty()) certificate.notCheckedWhy += "; ";
        certificate.notCheckedWhy += std::to_string(count) + (count == 1 ? " has " : " have ") + why;
    }
}

/// The mean heat that a flow carries [W]: what the temperatures are relative to.
double meanCarriedHeat(const Solution& solution, double meanFlow)
{
    double sum = 0.0;
    std::size_t count = 0;
    for (const double temperature : solution.nodeTemperature) {
        if (!std::isfinite(temperature)) continue;
        sum += temperature;
        ++count;
    }
    const double mean = count == 0 ? 1.0 : sum / static_cast<double>(count);
    return solution.fluid.specificHeat * meanFlow * mean;
}

}  // namespace

Certificate certify(const Network& network, const Solution& solution)
{
    Certificate certificate;
    certificate.modelHash = networkHash(network);
    certificate.version = TAVELL_VERSION;
    if (!solution.hasResults()) return certificate;
    const Checker checker(network, solution);
    addMass(network, checker, certificate);
    addLaws(network, checker, certificate);
    certificate.columnMismatch = checker.columnMismatch();
    if (solution.hasTemperatures) {
        certificate.energyImbalance = checker.energyImbalance();
        certificate.relativeEnergyImbalance =
            *certificate.energyImbalance / meanCarriedHeat(solution, checker.meanFlow());
    }
    certificate.isGood = solution.outcome == Outcome::converged &&
                         certificate.relativeMassImbalance <= kGoodMassImbalance &&
                         certificate.relativeLawMismatch <= kGoodLawMismatch &&
                         certificate.columnMismatch <= kGoodColumnMismatch &&
                         certificate.relativeEnergyImbalance.value_or(0.0) <= kGoodEnergyImbalance;
    return certificate;
}

std::vector<double> massResiduals(const Network& network, const Solution& solution)
{
    if (!solution.hasResults()) return std::vector<double>(network.nodes.size(), 0.0);
    return Checker(network, solution).massResiduals();
}

std::vector<double> lawMismatches(const Network& network, const Solution& solution)
{
    std::vector<double> mismatches(network.elements.size(), kNotANumber);
    if (!solution.hasResults()) return mismatches;
    const Checker checker(network, solution);
    for (std::size_t i = 0; i < mismatches.size(); ++i) {
        if (!network.elements[i].isClosed && checker.whyNotChecked(i) == nullptr)
            mismatches[i] = checker.lawMismatch(i);
    }
    return mismatches;
}

std::vector<LossParts> lossParts(const Network& network, const Solution& solution)
{
    std::vector<LossParts> parts(network.elements.size());
    if (!solution.hasResults()) return parts;
    const Checker checker(network, solution);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Element& element = network.elements[i];
        LossParts& part = parts[i];
        part.height = checker.heightDrop(element);
        const double drop = checker.staticDrop(element) - part.height;
        if (element.isClosed) {
            part.other = drop;
            continue;
        }
        if (element.kind->type == TAVELL_PUMP) {
            part.pump = -drop;
            continue;
        }
        const LawTerms terms = checker.laws().at(i, solution.massFlow[i], solution.elementTemperature[i]);
        part.friction = terms.friction;
        // What is left over belongs to the junctions where those are computed, else to what is neither.
        if (checker.laws().isMinorLossGiven(i)) {
            part.minor = terms.minor;
            part.other = drop - part.friction - part.minor;
        } else {
            part.other = terms.other;
            part.minor = drop - part.friction - part.other;
        }
    }
    return parts;
}

std::string certificateText(const Certificate& certificate)
{
    std::string text = std::string("Certificate: ") + (certificate.isGood ? "good" : "NOT good") +
                       "; mass imbalance " + shortNumber(certificate.massImbalance, 3) + " kg/s (" +
                       shortNumber(certificate.relativeMassImbalance, 3) + " of the mean flow)";
    if (!certificate.worstNode.empty()) text += ", worst at node " + certificate.worstNode;
    text += "; law mismatch " + shortNumber(certificate.lawMismatch, 3) + " Pa (" +
            shortNumber(certificate.relativeLawMismatch, 3) + " of the mean pressures, summed)";
    if (!certificate.worstElement.empty()) text += ", worst at element " + certificate.worstElement;
    if (certificate.energyImbalance)
        text += "; energy imbalance " + shortNumber(*certificate.energyImbalance, 3) + " W (" +
                shortNumber(*certificate.relativeEnergyImbalance, 3) + " of the mean heat)";
    text += '\n' + std::to_string(certificate.elementsChecked) +
            (certificate.elementsChecked == 1 ? " element checked" : " elements checked");
    if (certificate.elementsNotChecked > 0)
        text += ", " + std::to_string(certificate.elementsNotChecked) + " not (" + certificate.notCheckedWhy +
                ')';
    return text + "; model " + certificate.modelHash + ", version " + certificate.version + '\n';
}

}  // namespace kit
