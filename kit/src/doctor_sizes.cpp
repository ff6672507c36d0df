// Sizes: lengths, diameters and coefficients that a mistaken unit would explain, and objects on top of each
// other.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <unordered_map>

#include <tavell/Constants.h>

#include "doctor_checks.h"
#include "doctor_support.h"
#include "element_inputs.h"
#include "element_kinds.h"

namespace kit::doctor
{

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kLeastLength = 1e-6;             // [m], what the solver takes for less
constexpr double kGreatestLikelyDiameter = 5.0;   // [m]
constexpr double kLeastLikelyDiameter = 1e-4;     // [m]
constexpr double kGreatestLikelyLength = 2e5;     // [m], of one element
constexpr double kGreatestLikelyHeight = 9000.0;  // [m], of a node, from the lowest one of the network
constexpr double kGreatestRelativeRoughness = 0.05;
constexpr double kLeastLikelyHazenWilliams = 20.0;
constexpr double kGreatestLikelyHazenWilliams = 200.0;
constexpr double kLeastLikelyAreaShare = 0.1;           // [-], of the circle of a diameter
constexpr double kGreatestAreaShare = 1.001;            // [-]
constexpr double kLeastLikelyDensity = 60.0;            // [kg/m3], liquid hydrogen has 70
constexpr double kGreatestLikelyDensity = 14000;        // [kg/m3], mercury has 13600
constexpr double kLeastLikelyViscosity = 1e-5;          // [Pa s], liquid hydrogen has 1.3e-5
constexpr double kThickViscosity = 0.5;                 // [Pa s], of no liquid that is as light as water
constexpr double kGreatestDensityOfWaterLike = 1100.0;  // [kg/m3]
constexpr double kLeastDensityOfWaterLike = 950.0;      // [kg/m3]
constexpr double kGreatestLikelyViscosity = 1000.0;     // [Pa s]
constexpr double kDiameterOutlier = 300.0;              // [-], ratio to the median
constexpr double kLengthOutlier = 1000.0;               // [-]
constexpr std::size_t kLeastForMedian = 5;
constexpr double kConductanceSpread = 1e9;  // [-], of the greatest to the least conductance
constexpr double kGuessedFriction = 0.02;   // [-], friction factor of turbulent flow
constexpr double kReferenceDrop = 1000.0;   // [Pa], at which conductances are compared

/// The median of values; 0 for none.
double medianOf(std::vector<double> values)
{
    if (values.empty()) return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct PositionHash {
    std::size_t operator()(const std::array<double, 3>& at) const
    {
        std::size_t hash = 0;
        for (const double coordinate : at)
            hash = hash * 1000003U + std::hash<double>()(coordinate);
        return hash;
    }
};

/// What makes two elements between the same nodes twins.
struct TwinKey {
    std::size_t low = 0;
    std::size_t high = 0;
    int type = 0;
    double diameter = 0.0;
    double length = 0.0;

    bool operator==(const TwinKey& other) const
    {
        return low == other.low && high == other.high && type == other.type && diameter == other.diameter &&
               length == other.length;
    }
};

struct TwinHash {
    std::size_t operator()(const TwinKey& key) const
    {
        std::size_t hash = key.low;
        for (const std::size_t part : {key.high, static_cast<std::size_t>(key.type),
                                       std::hash<double>()(key.diameter), std::hash<double>()(key.length)})
            hash = hash * 1000003U + part;
        return hash;
    }
};

class SizeChecks
{
public:
    SizeChecks(const Network& network, Findings& findings)
        : m_network(network), m_findings(findings), m_liquid(liquidOf(network))
    {
    }

    void run()
    {
        checkFluid();
        for (std::size_t i = 0; i < m_network.elements.size(); ++i)
            checkElement(i);
        checkHeights();
        checkNodesAtOnePlace();
        checkTwins();
        checkOutliers();
        if (const auto range = conductanceRange(m_network); range && range->ratio() > kConductanceSpread)
            addConductanceSpread(m_network, *range, m_findings);
    }

private:
    Finding& add(std::size_t element, Code code, std::string message)
    {
        return addAtElement(m_network, element, code, std::move(message), m_findings);
    }

    void addFluid(const char* key, std::string message, NamedNumber number)
    {
        m_findings
            .add(Code::fluid_value_unlikely, {m_network.file, 0, 0, std::string("/fluid/") + key, ""},
                 std::move(message))
            .numbers = {std::move(number)};
    }

    void checkFluid()
    {
        const double rho = m_liquid.density;
        const double mu = m_liquid.viscosity;
        if (rho < kLeastLikelyDensity || rho > kGreatestLikelyDensity)
            addFluid("density", "the density is " + shown(rho, Quantity::density), {"density", rho, "kg/m3"});
        const bool isWaterLike = rho >= kLeastDensityOfWaterLike && rho <= kGreatestDensityOfWaterLike;
        std::string text = "the dynamic viscosity is " + shown(mu, Quantity::viscosity);
        if (mu < kLeastLikelyViscosity)
            text += "; perhaps it is the kinematic viscosity in m2/s";
        else if (mu > kGreatestLikelyViscosity || (mu > kThickViscosity && isWaterLike))
            text += "; perhaps " + shownNumber(mu) + " mPa s are meant";
        else
            return;
        addFluid("viscosity", std::move(text), {"viscosity", mu, "Pa s"});
    }

    void checkElement(std::size_t i)
    {
        const Element& element = m_network.elements[i];
        if (element.from == element.to) {
            add(i, Code::element_joins_one_node,
                "both of its ends are " + nodeLabel(m_network, element.from));
            return;
        }
        checkLength(i, element);
        if (element.section) checkSection(i, element, *element.section);
        if (element.kind->type == TAVELL_HAZEN_WILLIAMS_PIPE) checkHazenWilliams(i, element);
    }

    void checkLength(std::size_t i, const Element& element)
    {
        if (!needsLength(element)) return;
        const bool isMissing = !element.length && m_network.coordinates == Coordinates::schematic;
        const double length = isMissing ? 0.0 : lengthOf(m_network, element);
        if (length < kLeastLength)
            add(i, Code::element_without_length,
                isMissing ? "it has no length, and the coordinates of a drawing give none"
                          : "its length is " + shown(length, Quantity::length))
                .numbers = {{"length", length, "m"}};
        else if (length > kGreatestLikelyLength)
            add(i, Code::length_unlikely, "its length is " + shown(length, Quantity::length)).numbers = {
                {"length", length, "m"}};
    }

    void checkSection(std::size_t i, const Element& element, const Section& section)
    {
        const double diameter = section.hydraulicDiameter();
        if (diameter > kGreatestLikelyDiameter)
            add(i, Code::diameter_unlikely,
                "its diameter is " + shown(diameter, Quantity::diameter) + "; perhaps " +
                    shownNumber(diameter) + " mm are meant")
                .numbers = {{"diameter", diameter, "m"}};
        else if (diameter < kLeastLikelyDiameter)
            add(i, Code::diameter_unlikely, "its diameter is " + shown(diameter, Quantity::diameter))
                .numbers = {{"diameter", diameter, "m"}};
        checkArea(i, section);
        checkRoughness(i, element, diameter);
        checkBore(i, element, diameter);
    }

    void checkArea(std::size_t i, const Section& section)
    {
        const double perimeter = section.diameter > 0.0 ? kPi * section.diameter : section.wettedPerimeter;
        const double circle = perimeter * perimeter / (4.0 * kPi);
        const double share = section.area / circle;
        const bool isTooSmall = section.diameter > 0.0 && share < kLeastLikelyAreaShare;
        if (!isTooSmall && share <= kGreatestAreaShare) return;
        add(i, Code::area_unlikely,
            "its area of " + shown(section.area, Quantity::area) + " is " + shownNumber(share) +
                " times that of the circle of its perimeter")
            .numbers = {{"area", section.area, "m2"}, {"share_of_circle", share, ""}};
    }

    void checkRoughness(std::size_t i, const Element& element, double diameter)
    {
        const double roughness = inputsOf(m_network, element, m_liquid.density).roughness;
        if (roughness < kGreatestRelativeRoughness * diameter) return;
        if (roughness <= 0.0) return;
        add(i, Code::roughness_unlikely,
            "its roughness of " + shown(roughness, Quantity::diameter) + " is " +
                shownNumber(100.0 * roughness / diameter) + " % of its diameter of " +
                shown(diameter, Quantity::diameter))
            .numbers = {{"roughness", roughness, "m"}, {"diameter", diameter, "m"}};
    }

    /// The range of ISO 5167-2 for the ratio of the bore to the pipe.
    void checkBore(std::size_t i, const Element& element, double diameter)
    {
        constexpr double kLeastRatio = 0.1;
        constexpr double kGreatestRatio = 0.75;
        if (element.kind->type != TAVELL_ORIFICE) return;
        const double bore = element.property(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER).value_or(0.0);
        const double ratio = bore / diameter;
        if (ratio >= kLeastRatio && ratio <= kGreatestRatio) return;
        const Code code = ratio >= 1.0 ? Code::bore_not_below_pipe : Code::bore_out_of_range;
        add(i, code,
            "its bore of " + shown(bore, Quantity::diameter) + " is " + shownNumber(ratio) +
                " times the pipe of " + shown(diameter, Quantity::diameter))
            .numbers = {{"bore", bore, "m"}, {"ratio", ratio, ""}};
    }

    void checkHazenWilliams(std::size_t i, const Element& element)
    {
        const double c = inputsOf(m_network, element, m_liquid.density).hazenWilliams;
        if (c >= kLeastLikelyHazenWilliams && c <= kGreatestLikelyHazenWilliams) return;
        add(i, Code::hazen_williams_unlikely, "its Hazen-Williams coefficient is " + shownNumber(c))
            .numbers = {{"coefficient", c, ""}};
    }

    void checkHeights()
    {
        if (m_network.nodes.empty()) return;
        std::size_t lowest = 0;
        std::size_t highest = 0;
        const auto height = [this](std::size_t i) { return heightOf(m_network, m_network.nodes[i]); };
        for (std::size_t i = 1; i < m_network.nodes.size(); ++i) {
            if (height(i) < height(lowest)) lowest = i;
            if (height(i) > height(highest)) highest = i;
        }
        const double span = height(highest) - height(lowest);
        if (gravityOf(m_network) == 0.0 || span <= kGreatestLikelyHeight) return;
        addAtNodes(m_network, {highest, lowest}, Code::height_unlikely,
                   "it lies " + shown(span, Quantity::length) + " above " + nodeLabel(m_network, lowest),
                   m_findings)
            .numbers = {{"height_difference", span, "m"}};
    }

    /// Nodes at one place that no element joins: two ends that were perhaps meant to be one.
    void checkNodesAtOnePlace()
    {
        if (m_network.coordinates == Coordinates::schematic) return;
        std::unordered_map<std::array<double, 3>, std::size_t, PositionHash> firstAt;
        firstAt.reserve(m_network.nodes.size());
        std::vector<std::size_t> twinOf(m_network.nodes.size(), m_network.nodes.size());
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            std::array<double, 3> at = m_network.nodes[i].at;
            for (double& coordinate : at)
                coordinate += 0.0;  // -0 and 0 are one place
            const auto [place, isNew] = firstAt.emplace(at, i);
            if (!isNew) twinOf[i] = place->second;
        }
        for (const Element& element : m_network.elements) {
            if (twinOf[element.from] == element.to) twinOf[element.from] = m_network.nodes.size();
            if (twinOf[element.to] == element.from) twinOf[element.to] = m_network.nodes.size();
        }
        for (std::size_t i = 0; i < twinOf.size(); ++i) {
            if (twinOf[i] == m_network.nodes.size()) continue;
            addAtNodes(m_network, {i, twinOf[i]}, Code::nodes_coincide,
                       "it lies where " + nodeLabel(m_network, twinOf[i]) +
                           " lies, and no element joins them",
                       m_findings);
        }
    }

    void checkTwins()
    {
        std::unordered_map<TwinKey, std::size_t, TwinHash> firstOf;
        firstOf.reserve(m_network.elements.size());
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (element.kind->hasCurve || element.from == element.to) continue;
            const TwinKey key{
                std::min(element.from, element.to), std::max(element.from, element.to), element.kind->type,
                element.section ? element.section->hydraulicDiameter() : 0.0, lengthOf(m_network, element)};
            const auto [place, isNew] = firstOf.emplace(key, i);
            if (isNew) continue;
            addAtElements(m_network, {i, place->second}, Code::elements_coincide,
                          "it joins the same nodes as " + elementLabel(m_network, place->second) +
                              ", with the same type, diameter and length",
                          m_findings);
        }
    }

    void checkOutliers()
    {
        std::vector<double> diameters;
        std::vector<double> lengths;
        for (const Element& element : m_network.elements) {
            if (!needsLength(element) || !element.section) continue;
            diameters.push_back(element.section->hydraulicDiameter());
            lengths.push_back(lengthOf(m_network, element));
        }
        if (diameters.size() < kLeastForMedian) return;
        const double diameter = medianOf(std::move(diameters));
        const double length = medianOf(std::move(lengths));
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (!needsLength(element) || !element.section) continue;
            // What is unlikely in itself has been said.
            const double ownDiameter = element.section->hydraulicDiameter();
            const double ownLength = lengthOf(m_network, element);
            if (ownDiameter >= kLeastLikelyDiameter && ownDiameter <= kGreatestLikelyDiameter)
                checkOutlier(i, Code::diameter_outlier, "diameter", Quantity::diameter, ownDiameter, diameter,
                             kDiameterOutlier);
            if (ownLength >= kLeastLength && ownLength <= kGreatestLikelyLength)
                checkOutlier(i, Code::length_outlier, "length", Quantity::length, ownLength, length,
                             kLengthOutlier);
        }
    }

    void checkOutlier(std::size_t i, Code code, const std::string& name, Quantity quantity, double value,
                      double median, double ratio)
    {
        if (value <= 0.0 || median <= 0.0) return;
        if (value < median * ratio && value > median / ratio) return;
        add(i, code,
            "its " + name + " is " + shown(value, quantity) +
                "; half of the elements have more, half less than " + shown(median, quantity))
            .numbers = {{name, value, "m"}, {"median", median, "m"}};
    }

    const Network& m_network;
    Findings& m_findings;
    const Liquid m_liquid;
};

/// [kg/s] that an element carries at 1 kPa when its flow is turbulent; 0 for kinds that are not compared.
double flowAtReferenceDrop(const Network& network, const Element& element, double density)
{
    // Pressure drop of 1 kPa over r2 rho Q |Q|, docs/theory.md, sections 5 and 9.
    double r2 = 0.0;  // [1/m4]
    const int type = element.kind->type;
    if (type == TAVELL_KV_VALVE || type == TAVELL_CV_VALVE) {
        const double kv = type == TAVELL_KV_VALVE
                              ? element.property(TAVELL_ELEMENT_VALVE_KV_COEFFICIENT).value_or(0.0)
                              : 0.865 * element.property(TAVELL_ELEMENT_VALVE_CV_COEFFICIENT).value_or(0.0);
        if (kv <= 0.0) return 0.0;
        r2 = 100.1031 * std::pow(3600.0 / kv, 2);
    } else if (element.section && type != TAVELL_ORIFICE && type != TAVELL_GENERAL_LOSS) {
        const Section& section = *element.section;
        const double length = std::max(lengthOf(network, element), kLeastLength);
        const double k = inputsOf(network, element, density).k;
        r2 = (kGuessedFriction * length / section.hydraulicDiameter() + k) /
             (2.0 * section.area * section.area);
    }
    return r2 > 0.0 ? std::sqrt(kReferenceDrop * density / r2) : 0.0;
}

}  // namespace

std::optional<ConductanceRange> conductanceRange(const Network& network)
{
    const double density = liquidOf(network).density;
    ConductanceRange range;
    std::size_t count = 0;
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        if (network.elements[i].isClosed) continue;
        const double flow = flowAtReferenceDrop(network, network.elements[i], density);
        if (!(flow > 0.0) || !std::isfinite(flow)) continue;
        if (count == 0 || flow < range.leastFlow) {
            range.least = i;
            range.leastFlow = flow;
        }
        if (count == 0 || flow > range.greatestFlow) {
            range.greatest = i;
            range.greatestFlow = flow;
        }
        ++count;
    }
    if (count < 2) return std::nullopt;
    return range;
}

void addConductanceSpread(const Network& network, const ConductanceRange& range, Findings& findings)
{
    addAtElements(network, {range.greatest, range.least}, Code::conductance_spread,
                  "at a drop of 1 kPa it would carry " + shown(range.greatestFlow, Quantity::massFlow) +
                      ", " + shownNumber(range.ratio()) + " times as much as " +
                      elementLabel(network, range.least),
                  findings)
        .numbers = {{"ratio", range.ratio(), ""},
                    {"greatest", range.greatestFlow, "kg/s"},
                    {"least", range.leastFlow, "kg/s"}};
}

void checkSizes(const Network& network, Findings& findings)
{
    SizeChecks(network, findings).run();
}

}  // namespace kit::doctor
