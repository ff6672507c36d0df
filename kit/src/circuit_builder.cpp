#include "circuit_builder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include <tavell/Constants.h>
#include <tavell/CreateTavell.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/IFluid.h>
#include <tavell/INode.h>

#include "element_inputs.h"
#include "element_kinds.h"
#include "element_laws.h"
#include "fluids.h"
#include "number_text.h"

namespace kit
{

namespace
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IElement;
using Velcor::Tavell::IEntity;
using Velcor::Tavell::INode;

using Point = std::array<double, 3>;

constexpr double kPi = 3.14159265358979323846;

/// No heat enters the fluid through an element.
constexpr int kNoHeatType = TAVELL_ENERGY_FLUX;

/// [m], from a node to the hidden end of its stub: far enough to differ from it at any coordinates.
constexpr double kStubDistance = 1.0;
/// Kv [m3/h at 1 bar] of a stub: nothing depends on it but the pressure of its hidden end.
constexpr double kStubKv = 1e3;
/// [-], of the shortest length: distance of neighbours on the lattice of a schematic network.
constexpr double kLatticeShare = 1e-6;
/// [m], the same where no element has a length.
constexpr double kLatticeWithoutLengths = 1e-6;
/// [-], lengths that differ by less from the distance between the nodes are that distance.
constexpr double kLengthTolerance = 1e-9;
/// [-], a minor loss that keeps computed ones away and adds nothing.
constexpr double kNegligibleK = 1e-6;
/// [-], of a diameter: length of a check valve in front of an element.
constexpr double kCheckValveShare = 0.01;
/// [-], share of an orifice's loss that the joint beside it adds when the given length chooses other
/// tappings.
constexpr double kJointShare = 1e-5;
/// [rad], between an orifice with a joint and the line between its nodes.
constexpr double kJointAngle = 0.01;
/// [m], the length that means flange tappings (ISO 5167-2), and the tolerance of both.
constexpr double kFlangeLength = 0.0508;
constexpr double kTappingTolerance = 1e-10;

Point plus(const Point& a, const Point& b, double factor)
{
    return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

Point cross(const Point& a, const Point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double lengthOf(const Point& a)
{
    return std::hypot(a[0], a[1], a[2]);
}

Point scaled(const Point& a, double factor)
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

/// A unit vector perpendicular to a; the first axis when a is nothing.
Point anyPerpendicular(const Point& a)
{
    if (lengthOf(a) == 0.0) return {1.0, 0.0, 0.0};
    std::size_t smallest = 0;
    for (std::size_t i = 1; i < a.size(); ++i) {
        if (std::fabs(a[i]) < std::fabs(a[smallest])) smallest = i;
    }
    Point axis{};
    axis[smallest] = 1.0;
    const Point found = cross(a, axis);
    return scaled(found, 1.0 / lengthOf(found));
}

/// A unit vector perpendicular to a line and, as far as there is one, to gravity.
Point sideways(const Point& line, const Point& gravity)
{
    const Point level = cross(line, gravity);
    const double size = lengthOf(level);
    const bool isLevelKnown = size > 1e-6 * lengthOf(line) * lengthOf(gravity);
    return isLevelKnown ? scaled(level, 1.0 / size) : anyPerpendicular(line);
}

bool isPipeLike(int type)
{
    return type == TAVELL_PIPE || type == TAVELL_HAZEN_WILLIAMS_PIPE || type == TAVELL_CONTROL_VALVE ||
           type == TAVELL_NON_RETURN;
}

/// The type that the circuit's element has: a Darcy-Weisbach pipe with a check valve is a non-return element.
int circuitType(const Element& element)
{
    return element.kind->type == TAVELL_PIPE && element.hasCheckValve ? TAVELL_NON_RETURN
                                                                      : element.kind->type;
}

/// Whether a node's given flow may be imposed on the element itself.
bool mayCarryGivenFlow(const Element& element)
{
    const int type = circuitType(element);
    return type != TAVELL_CONTROL_VALVE && type != TAVELL_NON_RETURN && !element.hasCheckValve &&
           !element.property(TAVELL_ELEMENT_FIXED_MASS_FLOW);
}

bool givesFlow(const Boundary& boundary)
{
    return boundary.flowKind != Boundary::Flow::none;
}

bool needsSection(const Boundary& boundary)
{
    return boundary.flowKind == Boundary::Flow::velocity || boundary.flowKind == Boundary::Flow::reynolds;
}

/// 0 corner, 1 flange, 2 D and D/2: the tappings that an orifice's length chooses.
int tappingsOf(double length, double diameter)
{
    if (std::fabs(length - kFlangeLength) <= kTappingTolerance) return 1;
    return std::fabs(length - 1.5 * diameter) <= kTappingTolerance ? 2 : 0;
}

/// Whether the given length of an orifice chooses other tappings than the distance between its nodes.
bool hasOtherTappings(const Network& network, const Element& element)
{
    if (!element.length) return false;
    const double diameter = element.section->hydraulicDiameter();
    // The nodes of a schematic network are next to each other in the circuit: corner tappings.
    const double distance =
        network.coordinates == Coordinates::schematic ? 0.0 : distanceOf(network, element);
    return tappingsOf(*element.length, diameter) != tappingsOf(distance, diameter);
}

/// Kv [m3/h at 1 bar] of an orifice with a discharge coefficient of 0.6.
double orificeKv(const Element& element)
{
    const double bore = element.property(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER).value_or(0.0);
    // dp = rho Q^2 / (2 (0.6 pi d^2 / 4)^2) of the orifice; dp = 100 rho Q^2 / (Kv / 3600)^2 of the valve
    return 3600.0 * std::sqrt(100.0 * 2.0) * 0.6 * kPi * bore * bore / 4.0;
}

/// Parts of the network that open elements join (union of sets with path halving).
class Parts
{
public:
    explicit Parts(std::size_t count) : m_parent(count)
    {
        std::iota(m_parent.begin(), m_parent.end(), std::size_t{0});
    }

    std::size_t partOf(std::size_t node)
    {
        while (m_parent[node] != node) {
            m_parent[node] = m_parent[m_parent[node]];
            node = m_parent[node];
        }
        return node;
    }

    void join(std::size_t a, std::size_t b) { m_parent[partOf(a)] = partOf(b); }

private:
    std::vector<std::size_t> m_parent;
};

/// One build: the network, the circuit in the making and what both share.
class Builder
{
public:
    Builder(const Network& network, Findings& findings)
        : m_network(network), m_findings(findings),
          m_isSchematic(network.coordinates == Coordinates::schematic)
    {
    }

    std::optional<BuiltCircuit> run()
    {
        m_built.system.reset(Velcor::Tavell::CreateTavell(false));
        m_built.circuit = m_built.system->CreateCircuit();
        countOpenElements();
        checkWhole();
        if (!setFluid()) return std::nullopt;
        setSettings();
        placeNodes();
        addNodes();
        for (std::size_t i = 0; i < m_network.elements.size(); ++i)
            addElement(i);
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i)
            setBoundary(i);
        addUnknownPressure();
        reportParts();
        if (m_hasFailed) return std::nullopt;
        return std::move(m_built);
    }

private:
    ICircuit& circuit() { return *m_built.circuit; }

    void fail(Code code, Place place, std::string message)
    {
        m_findings.add(code, std::move(place), std::move(message));
        m_hasFailed = true;
    }

    void countOpenElements()
    {
        m_degree.assign(m_network.nodes.size(), 0);
        m_elementAt.assign(m_network.nodes.size(), kNotInCircuit);
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (element.isClosed) continue;
            for (const std::size_t node : {element.from, element.to}) {
                ++m_degree[node];
                m_elementAt[node] = i;
            }
        }
    }

    /// What concerns the network as a whole.
    void checkWhole()
    {
        Place place;
        place.file = m_network.file;
        const bool hasOpen = std::any_of(m_network.elements.begin(), m_network.elements.end(),
                                         [](const Element& element) { return !element.isClosed; });
        bool hasPressure = false;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const auto& boundary = m_network.nodes[i].boundary;
            hasPressure = hasPressure || (m_degree[i] > 0 && boundary && boundary->pressure);
        }
        if (!hasOpen)
            fail(Code::nothing_to_solve, place, "no element of the network can carry flow");
        else if (!hasPressure)
            fail(Code::no_given_pressure, place, "no node has a given pressure");
        if (m_isSchematic && m_network.settings.minorLoss != 0)
            fail(Code::schematic_junction_losses, place,
                 "junction losses are to be computed, but the coordinates are schematic");
        const auto& g = m_network.gravity;
        if (m_isSchematic && (g[0] != 0.0 || g[1] != 0.0))
            m_findings.add(Code::schematic_gravity, place,
                           "gravity does not point along the third axis, but the coordinates are schematic");
    }

    bool setFluid()
    {
        const FluidChoice& choice = m_network.fluid;
        IEntity& entity = *circuit().GetFluid()->GetEntity();
        if (isKnownFluid(choice.name)) {
            std::string error;
            const auto values = fluidValues(choice.name, choice.temperature.value_or(kUsualTemperature),
                                            choice.concentration, error);
            if (!values) {
                Place place;
                place.file = m_network.file;
                place.object = "fluid " + choice.name;
                fail(Code::fluid_out_of_range, place, error);
                return false;
            }
            setFluidValues(*values, entity);
        } else if (!choice.name.empty() && choice.properties.empty()) {
            Place place;
            place.file = m_network.file;
            place.object = "fluid " + choice.name;
            fail(Code::unknown_fluid, place,
                 "no fluid of the table is called " + inQuotes(choice.name) + ", and no property is given");
            return false;
        }
        if (!choice.name.empty()) circuit().GetFluid()->SetUIName(choice.name.c_str());
        if (choice.temperature) entity.SetProperty(TAVELL_FLUID_DEFAULT_TEMPERATURE, *choice.temperature);
        for (const auto& [property, value] : choice.properties)
            entity.SetProperty(property, value);
        m_built.fluid = readFluid();
        return true;
    }

    static void setFluidValues(const FluidValues& values, IEntity& entity)
    {
        entity.SetProperty(TAVELL_FLUID_DEFAULT_TEMPERATURE, values.temperature);
        entity.SetProperty(TAVELL_FLUID_DENSITY, values.density);
        entity.SetProperty(TAVELL_FLUID_SPECIFIC_HEAT, values.specificHeat);
        entity.SetProperty(TAVELL_FLUID_CONDUCTIVITY, values.conductivity);
        entity.SetProperty(TAVELL_FLUID_VISCOSITY, values.viscosity);
        entity.SetProperty(TAVELL_FLUID_VISCOSITY_COEFFICIENT_1, values.viscosityCoefficients[0]);
        entity.SetProperty(TAVELL_FLUID_VISCOSITY_COEFFICIENT_2, values.viscosityCoefficients[1]);
        entity.SetProperty(TAVELL_FLUID_VISCOSITY_COEFFICIENT_3, values.viscosityCoefficients[2]);
    }

    /// The fluid as the circuit has it.
    FluidValues readFluid()
    {
        IEntity& entity = *circuit().GetFluid()->GetEntity();
        const auto number = [&](int property) {
            double value = 0.0;
            entity.GetProperty(property, &value);
            return value;
        };
        FluidValues values;
        values.name = circuit().GetFluid()->GetUIName();
        values.temperature = number(TAVELL_FLUID_DEFAULT_TEMPERATURE);
        values.density = number(TAVELL_FLUID_DENSITY);
        values.viscosity = number(TAVELL_FLUID_VISCOSITY);
        values.specificHeat = number(TAVELL_FLUID_SPECIFIC_HEAT);
        values.conductivity = number(TAVELL_FLUID_CONDUCTIVITY);
        values.viscosityCoefficients[0] = number(TAVELL_FLUID_VISCOSITY_COEFFICIENT_1);
        values.viscosityCoefficients[1] = number(TAVELL_FLUID_VISCOSITY_COEFFICIENT_2);
        values.viscosityCoefficients[2] = number(TAVELL_FLUID_VISCOSITY_COEFFICIENT_3);
        return values;
    }

    void setSettings()
    {
        const Settings& settings = m_network.settings;
        IEntity& entity = *circuit().GetEntity();
        if (m_isSchematic)
            circuit().SetGravity(0.0, 0.0, 0.0);
        else
            circuit().SetGravity(m_network.gravity[0], m_network.gravity[1], m_network.gravity[2]);
        entity.SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, settings.minorLoss);
        entity.SetProperty(TAVELL_CIRCUIT_FRICTION_FACTOR, settings.frictionMethod);
        if (settings.viscosityFollowsTemperature) entity.SetProperty(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 1.0);
        // Names tell parallel elements apart, so two between the same nodes are meant.
        circuit().SetCheckDuplicateElementAtNodes(false);
        // Ids are counted here and never set, so none is taken.
        circuit().SetCheckNodeIdTaken(false);
    }

    /// Shortest length that an element of a schematic network has to get [m].
    double shortestLength() const
    {
        double shortest = 0.0;
        for (const Element& element : m_network.elements) {
            if (element.isClosed || !element.section) continue;
            const double length = kit::lengthOf(m_network, element);
            if (length > 0.0 && (shortest == 0.0 || length < shortest)) shortest = length;
        }
        return shortest;
    }

    /// The circuit's locations: those of the geometry, or a small cube of lattice points, so that every
    /// length is made by its detour.
    void placeNodes()
    {
        const std::size_t count = m_network.nodes.size();
        m_location.resize(count);
        m_built.pressureOffsets.assign(count, m_network.settings.pressureDatum);
        if (!m_isSchematic) {
            for (std::size_t i = 0; i < count; ++i)
                m_location[i] = m_network.nodes[i].at;
            return;
        }
        const double shortest = shortestLength();
        const double spacing = shortest > 0.0 ? kLatticeShare * shortest : kLatticeWithoutLengths;
        const auto side = static_cast<std::size_t>(std::ceil(std::cbrt(static_cast<double>(count))));
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t row = i / side;
            const std::size_t layer = row / side;
            m_location[i] = {spacing * static_cast<double>(i % side),
                             spacing * static_cast<double>(row % side), spacing * static_cast<double>(layer)};
        }
        offsetByHeight();
    }

    /// Without gravity in the circuit its pressures hold the weight of the liquid from the lowest node up.
    void offsetByHeight()
    {
        const double weight = m_built.fluid.density * gravityOf(m_network);
        if (weight == 0.0 || m_network.nodes.empty()) return;
        double lowest = heightOf(m_network, m_network.nodes.front());
        for (const Node& node : m_network.nodes)
            lowest = std::min(lowest, heightOf(m_network, node));
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i)
            m_built.pressureOffsets[i] += weight * (heightOf(m_network, m_network.nodes[i]) - lowest);
    }

    INode& addNode(const Point& at, const std::string& name, Owner owner)
    {
        INode* made = circuit().CreateNode();
        made->SetLocation(at[0], at[1], at[2]);
        made->GetEntity()->SetMeta(name.c_str());
        m_nodes.push_back(made);
        m_built.nodeOwners.push_back(owner);
        return *made;
    }

    void addNodes()
    {
        m_built.nodes.resize(m_network.nodes.size());
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (m_degree[i] == 0) {
                reportShutOff(i);
                continue;
            }
            m_built.nodes[i].node = m_nodes.size();
            addNode(m_location[i], m_network.nodes[i].name, {Owner::Kind::node, i});
        }
    }

    void reportShutOff(std::size_t node)
    {
        const auto& boundary = m_network.nodes[node].boundary;
        if (boundary && givesFlow(*boundary) && boundary->flow != 0.0)
            fail(Code::flow_without_path, nodePlace(m_network, node),
                 "a flow is given, but no open element starts or ends here");
        else
            m_findings.add(Code::node_shut_off, nodePlace(m_network, node),
                           "no open element starts or ends here");
    }

    IElement* addPart(const Element& element, const ElementInputs& inputs, std::size_t from, std::size_t to)
    {
        INode* start = m_nodes[from];
        INode* end = m_nodes[to];
        if (element.kind->hasCurve) return createCurveElement(element, inputs, start, end);
        if (!element.section) return nullptr;
        const Section& section = *element.section;
        if (section.wettedPerimeter > 0.0)
            return circuit().CreateNonRoundElement(start, end, section.wettedPerimeter, section.area, 0.0,
                                                   kNoHeatType, 0.0);
        return circuit().CreateElement(start, end, section.diameter, section.area, 0.0, kNoHeatType, 0.0);
    }

    /// The curve was continued to no rise at endFlow [m3/s].
    void reportContinued(const Element& element, const ElementInputs& inputs, double endFlow)
    {
        const CurvePoint& last = inputs.curve->back();
        const PumpFit fit(pumpPoints(*inputs.curve, inputs.referenceDensity), inputs.referenceDensity);
        double error = 0.0;  // [Pa]
        for (const CurvePoint& point : *inputs.curve)
            error = std::max(error,
                             std::fabs(fit.rise(point.volumeFlow, inputs.referenceDensity) - point.pressure));
        const auto position = static_cast<std::size_t>(&element - m_network.elements.data());
        Finding& finding =
            m_findings.add(Code::pump_curve_continued, elementPlace(m_network, position),
                           "the pump's curve ends at a rise of " + shortNumber(last.pressure) +
                               " Pa; it was continued to no rise at " + shortNumber(endFlow) +
                               " m3/s, and its cubic differs from the given points by at most " +
                               shortNumber(error) + " Pa");
        finding.numbers = {
            {"last rise", last.pressure, "Pa"}, {"end flow", endFlow, "m3/s"}, {"difference", error, "Pa"}};
    }

    IElement* createCurveElement(const Element& element, const ElementInputs& inputs, INode* from, INode* to)
    {
        if (inputs.curve == nullptr) return nullptr;
        std::vector<double> flows;
        std::vector<double> pressures;
        const bool isPump = element.kind->type == TAVELL_PUMP;
        for (const CurvePoint& point :
             isPump ? pumpPoints(*inputs.curve, inputs.referenceDensity) : *inputs.curve) {
            flows.push_back(point.volumeFlow);
            pressures.push_back(point.pressure);
        }
        const int count = static_cast<int>(flows.size());
        if (isPump && flows.size() > inputs.curve->size()) reportContinued(element, inputs, flows.back());
        if (isPump)
            return circuit().CreatePump(from, to, flows.data(), pressures.data(), count,
                                        inputs.referenceDensity, kNoHeatType, 0.0);
        return circuit().CreateLoss(from, to, flows.data(), pressures.data(), count, inputs.referenceDensity,
                                    kNoHeatType, 0.0);
    }

    /// Makes one element of the circuit; its position, or kNotInCircuit and a finding.
    std::size_t makePart(std::size_t position, const ElementInputs& inputs, std::size_t from, std::size_t to)
    {
        const Element& element = m_network.elements[position];
        IElement* made = addPart(element, inputs, from, to);
        if (made == nullptr) {
            fail(Code::element_refused, elementPlace(m_network, position), "the library refuses the element");
            return kNotInCircuit;
        }
        made->GetEntity()->SetMeta(element.name.c_str());
        m_elements.push_back(made);
        m_built.elementOwners.push_back({Owner::Kind::element, position});
        return m_elements.size() - 1;
    }

    /// Gives an element its type and its inputs; share is the part of the element's heat that enters here.
    void setInputs(IElement& made, const Element& element, const ElementInputs& inputs, int type, double k,
                   double share)
    {
        made.SetType(type);
        IEntity& entity = *made.GetEntity();
        for (const auto& [property, value] : element.properties)
            entity.SetProperty(property, value);
        if (!element.kind->hasCurve) {
            if (isPipeLike(type) && inputs.roughness > 0.0)
                entity.SetProperty(TAVELL_ELEMENT_ROUGHNESS, inputs.roughness);
            if (type == TAVELL_HAZEN_WILLIAMS_PIPE)
                entity.SetProperty(TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, inputs.hazenWilliams);
            entity.SetProperty(TAVELL_ELEMENT_K_SPECIFIED, k);
        }
        if (element.heat) setHeat(entity, element, share);
    }

    void setHeat(IEntity& entity, const Element& element, double share)
    {
        int type = element.heat->type;
        double value = element.heat->value;
        const bool isFlux = type == TAVELL_ENERGY_FLUX || type == TAVELL_ENERGY_FLUX_STORED;
        if (isFlux && !isPipeLike(element.kind->type)) {
            // The circuit's distance is not the wall's length: the flux over the wall is a heat.
            type = TAVELL_ENERGY_HEAT;
            value *=
                element.section ? perimeterOf(*element.section) * kit::lengthOf(m_network, element) : 0.0;
        }
        if (type == TAVELL_ENERGY_HEAT || type == TAVELL_ENERGY_RISE) value *= share;
        entity.SetProperty(TAVELL_ELEMENT_ENERGY_TYPE, type);
        entity.SetProperty(TAVELL_ELEMENT_ENERGY_VALUE, value);
    }

    static double perimeterOf(const Section& section)
    {
        return section.wettedPerimeter > 0.0 ? section.wettedPerimeter : kPi * section.diameter;
    }

    void addElement(std::size_t position)
    {
        m_built.elements.emplace_back();
        const Element& element = m_network.elements[position];
        if (element.isClosed) return;
        const ElementInputs inputs = inputsOf(m_network, element, m_built.fluid.density);
        if (!inputs.missing.empty())
            fail(Code::unknown_reference, elementPlace(m_network, position), "there is no " + inputs.missing);
        if (!isLengthUsable(position) || m_hasFailed) return;
        std::size_t from = m_built.nodes[element.from].node;
        const std::size_t to = m_built.nodes[element.to].node;
        Point start = m_location[element.from];
        double length = kit::lengthOf(m_network, element);
        if (hasCheckValveInFront(element)) {
            from = addCheckValve(position, from, start, length);
            if (element.kind->type == TAVELL_HAZEN_WILLIAMS_PIPE) length -= checkValveLength(element, length);
        } else if (const double kv = jointKv(m_network, element); kv > 0.0) {
            from = addJoint(position, from, start, kv);
        }
        if (needsDetour(m_network, element))
            addWithDetour(position, inputs, from, to, start, length);
        else
            addStraight(position, inputs, from, to, length);
    }

    bool isLengthUsable(std::size_t position)
    {
        const Element& element = m_network.elements[position];
        const int type = element.kind->type;
        if (m_isSchematic) {
            if ((type == TAVELL_PIPE || type == TAVELL_HAZEN_WILLIAMS_PIPE) && !element.length) {
                fail(Code::length_missing, elementPlace(m_network, position), "the pipe has no length");
                return false;
            }
        } else if (isPipeLike(type) && element.length) {
            const double distance = distanceOf(m_network, element);
            if (*element.length < distance * (1.0 - kLengthTolerance)) {
                fail(Code::length_below_distance, elementPlace(m_network, position),
                     "the length " + shortNumber(*element.length, 9) + " m is below the distance " +
                         shortNumber(distance, 9) + " m between its nodes");
                return false;
            }
        }
        const bool isWall = element.heat && (element.heat->type == TAVELL_ENERGY_WALL ||
                                             element.heat->type == TAVELL_ENERGY_WALL_TEMPERATURE);
        if (isWall && !isPipeLike(type) && (m_isSchematic || element.length))
            m_findings.add(Code::wall_length_not_used, elementPlace(m_network, position),
                           "heat passes through a wall, but the length of the element is not used");
        return true;
    }

    static bool isKUsed(int type) { return isPipeLike(type) || type == TAVELL_GENERAL_LOSS; }

    void addStraight(std::size_t position, const ElementInputs& inputs, std::size_t from, std::size_t to,
                     double length)
    {
        const Element& element = m_network.elements[position];
        const std::size_t made = makePart(position, inputs, from, to);
        if (made == kNotInCircuit) return;
        m_built.elements[position].first = made;
        const int type = circuitType(element);
        setInputs(*m_elements[made], element, inputs, type, isKUsed(type) ? inputs.k : 0.0, 1.0);
        if (type == TAVELL_GENERAL_LOSS) foldLength(*m_elements[made], element, length);
    }

    /// ck' = ck L^b and b' = 0, where the circuit's distance is not the length.
    void foldLength(IElement& made, const Element& element, double length)
    {
        const double b = element.property(TAVELL_ELEMENT_GENERAL_LOSS_B).value_or(0.0);
        if (b == 0.0 || (!m_isSchematic && !element.length && !element.hasCheckValve)) return;
        const double ck = element.property(TAVELL_ELEMENT_GENERAL_LOSS_CK).value_or(0.0);
        made.GetEntity()->SetProperty(TAVELL_ELEMENT_GENERAL_LOSS_CK, ck * std::pow(length, b));
        made.GetEntity()->SetProperty(TAVELL_ELEMENT_GENERAL_LOSS_B, 0.0);
    }

    /// Two halves through a hidden node off the straight line, their lengths adding up to length. The minor
    /// loss, the limit and the check are on the first half.
    void addWithDetour(std::size_t position, const ElementInputs& inputs, std::size_t from, std::size_t to,
                       const Point& start, double length)
    {
        const Element& element = m_network.elements[position];
        const Point& end = m_location[element.to];
        const Point line = plus(end, start, -1.0);
        const double distance = lengthOf(line);
        const double aside = std::sqrt(std::max(0.0, (length - distance) * (length + distance))) / 2.0;
        const Point gravity = m_isSchematic ? Point{} : m_network.gravity;
        const Point middle = plus(scaled(plus(start, end, 1.0), 0.5), sideways(line, gravity), aside);
        const std::size_t hidden = m_nodes.size();
        addNode(middle, element.name, {Owner::Kind::element, position});

        const std::size_t first = makePart(position, inputs, from, hidden);
        const std::size_t second = makePart(position, inputs, hidden, to);
        if (first == kNotInCircuit || second == kNotInCircuit) return;
        m_built.elements[position] = {first, second, hidden};
        const int type = circuitType(element);
        const bool isOwnLaw = type == TAVELL_CONTROL_VALVE || type == TAVELL_NON_RETURN;
        const bool isComputed = m_network.settings.minorLoss != 0;
        const double least = isComputed ? kNegligibleK : 0.0;
        setInputs(*m_elements[first], element, inputs, type, std::max(inputs.k, least), 0.5);
        setInputs(*m_elements[second], element, inputs, isOwnLaw ? TAVELL_PIPE : type, least, 0.5);
        if (isComputed)
            m_findings.add(Code::detour_with_junction_losses, elementPlace(m_network, position),
                           "the length " + shortNumber(length, 6) + " m differs from the distance " +
                               shortNumber(distance, 6) + " m between its nodes");
    }

    /// A short non-return element from the start of an element; start moves to its end, which is returned.
    std::size_t addCheckValve(std::size_t position, std::size_t from, Point& start, double length)
    {
        const Element& element = m_network.elements[position];
        const double size = checkValveLength(element, length);
        moveAlong(element, size, start);
        const std::size_t hidden = m_nodes.size();
        addNode(start, element.name, {Owner::Kind::element, position});
        const std::size_t made = makePart(position, {}, from, hidden);
        if (made == kNotInCircuit) return hidden;
        m_elements[made]->SetType(TAVELL_NON_RETURN);
        if (m_network.settings.minorLoss != 0)
            m_elements[made]->GetEntity()->SetProperty(TAVELL_ELEMENT_K_SPECIFIED, kNegligibleK);
        return hidden;
    }

    void moveAlong(const Element& element, double distance, Point& point) const
    {
        const Point line = plus(m_location[element.to], point, -1.0);
        point = plus(point, line, distance / lengthOf(line));
    }

    /// A valve of next to no loss from the start of an orifice to a hidden node at the orifice's length from
    /// its end, a little beside the line, where it does not meet the start.
    std::size_t addJoint(std::size_t position, std::size_t from, Point& start, double kv)
    {
        const Element& element = m_network.elements[position];
        const Point& end = m_location[element.to];
        const Point line = plus(start, end, -1.0);
        const double distance = lengthOf(line);
        const double length = element.length.value_or(distance);
        const Point aside = sideways(line, m_isSchematic ? Point{} : m_network.gravity);
        start = plus(end, scaled(line, 1.0 / distance), length * std::cos(kJointAngle));
        start = plus(start, aside, length * std::sin(kJointAngle));
        const std::size_t hidden = m_nodes.size();
        addNode(start, element.name, {Owner::Kind::element, position});
        addValve(from, hidden, kv, element.name, {Owner::Kind::element, position});
        return hidden;
    }

    /// A Kv valve without a cross-section: it takes part in neither junction losses nor heat.
    void addValve(std::size_t from, std::size_t to, double kv, const std::string& name, Owner owner)
    {
        IElement* made = circuit().CreateEmptyElement();
        IEntity& entity = *made->GetEntity();
        entity.SetProperty(TAVELL_ELEMENT_START, m_nodes[from]->GetId());
        entity.SetProperty(TAVELL_ELEMENT_END, m_nodes[to]->GetId());
        entity.SetProperty(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, kv);
        made->SetType(TAVELL_KV_VALVE);
        entity.SetMeta(name.c_str());
        m_elements.push_back(made);
        m_built.elementOwners.push_back(owner);
    }

    void setBoundary(std::size_t position)
    {
        if (m_degree[position] == 0 || m_hasFailed) return;
        const auto& boundary = m_network.nodes[position].boundary;
        if (!boundary || (!boundary->pressure && !givesFlow(*boundary))) {
            if (needsStubAtRest(position)) addStub(position, 0.0, std::nullopt);
            return;
        }
        if (boundary->pressure)
            setPressure(position, *boundary);
        else
            setFlow(position, *boundary);
    }

    /// At an end without a flow a control valve would carry its limit, a loss curve would show its last pressure,
    /// and an element would carry the flow that its other end gives together with a pressure. A pump that stands
    /// alone would show no rise.
    bool needsStubAtRest(std::size_t position) const
    {
        if (m_degree[position] != 1) return false;
        const Element& element = m_network.elements[m_elementAt[position]];
        const std::size_t other = element.from == position ? element.to : element.from;
        const auto& beyond = m_network.nodes[other].boundary;
        const bool hasPressure = beyond && beyond->pressure;
        switch (element.kind->type) {
        case TAVELL_CONTROL_VALVE:
        case TAVELL_LOSS:
            return true;
        case TAVELL_PUMP:
            if (m_degree[other] == 1 && !hasPressure) return true;
            break;
        default:
            break;
        }
        return hasPressure && givesFlow(*beyond);
    }

    void setTemperature(INode& node, const std::optional<double>& temperature)
    {
        if (temperature) node.GetEntity()->SetProperty(TAVELL_NODE_FLUID_TEMPERATURE, *temperature);
    }

    void setPressure(std::size_t position, const Boundary& boundary)
    {
        INode& node = *m_nodes[m_built.nodes[position].node];
        node.SetType(boundary.isInlet ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
        setTemperature(node, boundary.temperature);
        const double pressure = *boundary.pressure + m_built.pressureOffsets[position];
        if (!givesFlow(boundary)) {
            node.SetConstraint(TAVELL_CONSTRAINT_PRESSURE, pressure);
            return;
        }
        if (m_degree[position] != 1 || !mayCarryGivenFlow(m_network.elements[m_elementAt[position]])) {
            fail(Code::pressure_and_flow_inside, nodePlace(m_network, position),
                 "a pressure and a flow are given, but the node is not the end of a single element that "
                 "can carry a given flow");
            return;
        }
        const auto flow = givenMassFlow(position, boundary);
        if (!flow) return;
        node.SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, *flow * directionAt(position));
        node.SetConstraint(TAVELL_CONSTRAINT_PRESSURE, pressure);
        node.GetEntity()->SetProperty(TAVELL_NODE_CONSTRAINT, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
    }

    /// 1 when flow into the network at the node runs along its element, -1 when against it.
    double directionAt(std::size_t position) const
    {
        return m_network.elements[m_elementAt[position]].from == position ? 1.0 : -1.0;
    }

    /// [kg/s], into the network; nothing, and a finding, when a cross-section is missing.
    std::optional<double> givenMassFlow(std::size_t position, const Boundary& boundary)
    {
        const Element& element = m_network.elements[m_elementAt[position]];
        const bool hasSection = m_degree[position] == 1 && element.section.has_value();
        if (needsSection(boundary) && !hasSection) {
            const char* what = boundary.flowKind == Boundary::Flow::velocity ? "velocity" : "Reynolds number";
            const std::string why = m_degree[position] == 1
                                        ? "its element has no cross-section"
                                        : std::to_string(m_degree[position]) + " elements meet here";
            fail(m_degree[position] == 1 ? Code::needs_section : Code::needs_one_element,
                 nodePlace(m_network, position), std::string("a ") + what + " is given, but " + why);
            return std::nullopt;
        }
        return massFlowInto(boundary, hasSection ? &*element.section : nullptr, m_built.fluid.density,
                            m_built.fluid.viscosity);
    }

    /// The pressure of a flow end follows the curve of its element for flows [kg/s] along it, up to its last
    /// point.
    bool isWithinCurve(const Element& element, double flow) const
    {
        const ElementInputs inputs = inputsOf(m_network, element, m_built.fluid.density);
        if (inputs.curve == nullptr || inputs.curve->empty()) return false;
        const CurvePoint& last = inputs.curve->back();
        return flow > 0.0 && flow <= last.volumeFlow * m_built.fluid.density && last.pressure >= 0.0;
    }

    /// Whether the node's flow [kg/s], > 0 into the network, can be imposed on its one element, as a flow end
    /// of the circuit.
    bool isFlowEnd(std::size_t position, double flow) const
    {
        if (m_degree[position] != 1) return false;
        const Element& element = m_network.elements[m_elementAt[position]];
        if (!mayCarryGivenFlow(element)) return false;
        if (element.kind->hasCurve && !isWithinCurve(element, flow * directionAt(position))) return false;
        const std::size_t other = element.from == position ? element.to : element.from;
        const auto& boundary = m_network.nodes[other].boundary;
        // An element can take the flow of one of its ends only.
        return m_degree[other] > 1 || (boundary && boundary->pressure && !givesFlow(*boundary));
    }

    void setFlow(std::size_t position, const Boundary& boundary)
    {
        const auto flow = givenMassFlow(position, boundary);
        if (!flow) return;
        if (!isFlowEnd(position, *flow)) {
            if (*flow != 0.0 || needsStubAtRest(position)) addStub(position, *flow, boundary.temperature);
            return;
        }
        // The library starts with half the smallest given flow, and from none an orifice does not get away: an end
        // of no flow is left without a condition, which comes to the same.
        if (*flow == 0.0) return;
        INode& node = *m_nodes[m_built.nodes[position].node];
        node.SetType(*flow > 0.0 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
        setTemperature(node, boundary.temperature);
        const double along = directionAt(position);
        const double sign = boundary.isInlet ? along : -along;
        switch (boundary.flowKind) {
        case Boundary::Flow::none:
            break;
        case Boundary::Flow::mass:
        case Boundary::Flow::volume:
            node.SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, *flow * along);
            break;
        case Boundary::Flow::reynolds:
            node.SetConstraint(TAVELL_CONSTRAINT_REYNOLDS, boundary.flow * sign);
            break;
        case Boundary::Flow::velocity:
            node.SetConstraint(TAVELL_CONSTRAINT_VELOCITY, boundary.flow * sign);
            break;
        }
    }

    /// Brings a flow [kg/s], > 0 into the network, to a node by a short element from a hidden end beside it.
    void addStub(std::size_t position, double flow, const std::optional<double>& temperature)
    {
        const Owner owner{Owner::Kind::node, position};
        const std::string& name = m_network.nodes[position].name;
        const Point gravity = m_isSchematic ? Point{} : m_network.gravity;
        const std::size_t end = m_nodes.size();
        INode& node =
            addNode(plus(m_location[position], anyPerpendicular(gravity), kStubDistance), name, owner);
        addValve(end, m_built.nodes[position].node, kStubKv, name, owner);
        m_built.nodes[position].stubEnd = end;
        if (flow == 0.0) return;  // an end without a condition has no flow
        node.SetType(flow > 0.0 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
        setTemperature(node, temperature);
        node.SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, flow);
    }

    /// The library solves for at least one unknown pressure. Where there is none, a dead end of two elements
    /// at a node of given pressure provides one; nothing flows there.
    void addUnknownPressure()
    {
        if (m_hasFailed) return;
        std::size_t given = kNotInCircuit;
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const NodeInCircuit& place = m_built.nodes[i];
            if (place.node == kNotInCircuit) continue;
            const auto& boundary = m_network.nodes[i].boundary;
            if (boundary && boundary->pressure)
                given = place.node;
            else if (m_degree[i] > 1 || place.stubEnd != kNotInCircuit)
                return;
        }
        const bool hasHidden =
            std::any_of(m_built.nodeOwners.begin(), m_built.nodeOwners.end(),
                        [](const Owner& owner) { return owner.kind == Owner::Kind::element; });
        if (hasHidden || given == kNotInCircuit) return;
        Point at{};
        m_nodes[given]->GetLocation(&at[0], &at[1], &at[2]);
        const Point aside = anyPerpendicular(m_isSchematic ? Point{} : m_network.gravity);
        const std::size_t middle = m_nodes.size();
        addNode(plus(at, aside, kStubDistance), "", {});
        addNode(plus(at, aside, 2.0 * kStubDistance), "", {});
        addValve(given, middle, kStubKv, "", {});
        addValve(middle, middle + 1, kStubKv, "", {});
    }

    /// Says when open elements leave the network in several parts.
    void reportParts()
    {
        if (m_hasFailed) return;
        Parts parts(m_network.nodes.size());
        for (const Element& element : m_network.elements) {
            if (!element.isClosed) parts.join(element.from, element.to);
        }
        std::vector<std::size_t> examples;  // first node of each part
        std::vector<bool> isSeen(m_network.nodes.size(), false);
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            if (m_degree[i] == 0) continue;
            const std::size_t part = parts.partOf(i);
            if (!isSeen[part]) examples.push_back(i);
            isSeen[part] = true;
        }
        if (examples.size() < 2) return;
        Place place;
        place.file = m_network.file;
        Finding& finding =
            m_findings.add(Code::parts_not_connected, place,
                           "the network is in " + std::to_string(examples.size()) +
                               " parts that no open element joins; the parts hold " + exampleNames(examples));
        for (std::size_t i = 0; i < examples.size() && i < kMostExamples; ++i)
            finding.objects.push_back(nodeLabel(m_network, examples[i]));
        finding.numbers.push_back({"parts", static_cast<double>(examples.size()), ""});
    }

    std::string exampleNames(const std::vector<std::size_t>& examples) const
    {
        std::string text;
        for (std::size_t i = 0; i < examples.size() && i < kMostNamed; ++i)
            text += (i == 0 ? "node " : ", node ") + inQuotes(m_network.nodes[examples[i]].name);
        return examples.size() > kMostNamed ? text + " and others" : text;
    }

    static constexpr std::size_t kMostExamples = 100;
    static constexpr std::size_t kMostNamed = 5;

    const Network& m_network;
    Findings& m_findings;
    const bool m_isSchematic;
    bool m_hasFailed = false;
    BuiltCircuit m_built;
    std::vector<Point> m_location;         // by node of the network
    std::vector<std::size_t> m_degree;     // open elements by node of the network
    std::vector<std::size_t> m_elementAt;  // one of these
    std::vector<INode*> m_nodes;           // of the circuit
    std::vector<IElement*> m_elements;     // of the circuit
};

}  // namespace

std::optional<BuiltCircuit> buildCircuit(const Network& network, Findings& findings)
{
    return Builder(network, findings).run();
}

std::string nodeLabel(const Network& network, std::size_t node)
{
    return "node " + network.nodes[node].name;
}

std::string elementLabel(const Network& network, std::size_t element)
{
    return "element " + network.elements[element].name;
}

Place nodePlace(const Network& network, std::size_t node)
{
    Place place;
    place.file = network.file;
    place.line = network.nodes[node].line;
    place.object = nodeLabel(network, node);
    return place;
}

Place elementPlace(const Network& network, std::size_t element)
{
    Place place;
    place.file = network.file;
    place.line = network.elements[element].line;
    place.object = elementLabel(network, element);
    return place;
}

double checkValveLength(const Element& element, double length)
{
    return std::min(kCheckValveShare * element.section->hydraulicDiameter(), 0.5 * length);
}

bool hasCheckValveInFront(const Element& element)
{
    return element.hasCheckValve && element.section.has_value() &&
           (element.kind->type == TAVELL_HAZEN_WILLIAMS_PIPE || element.kind->type == TAVELL_GENERAL_LOSS);
}

double jointKv(const Network& network, const Element& element)
{
    if (element.kind->type != TAVELL_ORIFICE || !element.section) return 0.0;
    if (!hasOtherTappings(network, element)) return 0.0;
    return orificeKv(element) / std::sqrt(kJointShare);
}

bool needsDetour(const Network& network, const Element& element)
{
    if (!isPipeLike(element.kind->type)) return false;
    if (network.coordinates == Coordinates::schematic) return true;
    if (!element.length) return false;
    return *element.length > distanceOf(network, element) * (1.0 + kLengthTolerance);
}

}  // namespace kit
