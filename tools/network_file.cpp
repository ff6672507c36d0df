#include "network_file.h"

#include <array>
#include <charconv>
#include <cmath>
#include <unordered_map>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <tavell/Constants.h>

#include "boundary_checks.h"
#include "element_kinds.h"
#include "json_document.h"
#include "number_text.h"
#include "object_reader.h"

namespace
{

using nlohmann::json;

constexpr double kPi = 3.14159265358979323846;
constexpr std::size_t kFewestCurvePoints = 4;  // a cubic is fitted to the curve
constexpr int kCurveDigits = 6;                // significant digits that the library keeps of a curve

constexpr int kSizeDigits = 7;         // significant digits of a size in a message
constexpr double kAreaMargin = 1.001;  // [-], for an area and a perimeter that were rounded

/// Two nodes closer than this sum of coordinate differences [m] count as one place.
constexpr double kSamePlace = 1e-13;

/// A name of the file and the value that the library has for it.
using Choice = std::pair<const char*, int>;

// clang-format off
const std::vector<Choice> kMinorLossChoices{
    {"specified", 0},
    {"computed_unless_specified", 1},
    {"computed", 2},
};
const std::vector<Choice> kFrictionChoices{
    {"swamee_jain", TAVELL_FRICTION_SWAMEE_JAIN},
    {"colebrook", TAVELL_FRICTION_COLEBROOK},
    {"haaland", TAVELL_FRICTION_HAALAND},
    {"serghides", TAVELL_FRICTION_SERGHIDES},
    {"altshul", TAVELL_FRICTION_ALTSHUL},
    {"evangelides", TAVELL_FRICTION_EVANGELIDES},
};
// clang-format on

/// Keys of the numbers that an answer may hold.
const std::vector<const char*> kNodeAnswers{"pressure", "external_mass_flow"};
const std::vector<const char*> kElementAnswers{"mass_flow", "volume_flow", "velocity", "reynolds",
                                               "pressure_difference"};

/// A number as the library keeps it on a curve.
double roundedToCurveDigits(double value)
{
    std::array<char, 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value,
                                       std::chars_format::general, kCurveDigits);
    double rounded = value;
    std::from_chars(text.data(), written.ptr, rounded);
    return rounded;
}

/// Reads one document into a network. A part with a problem keeps its default, so that the rest is still
/// checked.
class NetworkReader
{
public:
    explicit NetworkReader(Problems& problems) : m_problems(problems) {}

    Network read(const json& document)
    {
        ObjectReader reader(document, "", m_problems);
        if (!reader.isObject()) return {};
        readVersion(reader);
        m_network.title = reader.text("title", Need::optional, "a title").value_or("");
        m_network.source = reader.text("source", Need::optional, "the origin of the network").value_or("");
        readFluid(reader);
        readGravity(reader);
        readSettings(reader);
        readNodes(reader);
        readElements(reader);
        readAnswer(reader);
        reader.close();
        if (m_isConnected) checkBoundaries(m_network, m_problems);
        return std::move(m_network);
    }

private:
    using Positions = std::unordered_map<std::string, std::size_t>;

    void readVersion(ObjectReader& reader)
    {
        static const char* const kMeaning = "the version of the file's format, 1";
        const auto version = reader.number("tavell", Range::any, Need::required, kMeaning);
        if (version && *version != 1.0)
            reader.report("tavell",
                          shortNumber(*version) + " is not a version that this program reads; give 1");
    }

    void readFluid(ObjectReader& reader)
    {
        const json* value = reader.member("fluid", Need::optional, "");
        if (value == nullptr) return;
        // clang-format off
        static const std::vector<NumberKey> kNumbers{
            {"density", TAVELL_FLUID_DENSITY, Range::positive, Need::optional, "the density in kg/m3"},
            {"viscosity", TAVELL_FLUID_VISCOSITY, Range::positive, Need::optional, "the dynamic viscosity in Pa s"},
            {"temperature", TAVELL_FLUID_DEFAULT_TEMPERATURE, Range::positive, Need::optional, "the temperature in K"},
        };
        // clang-format on
        ObjectReader fluid(*value, "/fluid", m_problems);
        m_network.fluid.name = fluid.text("name", Need::optional, "the fluid's name");
        for (const NumberKey& key : kNumbers) {
            if (const auto number = fluid.number(key.key, key.range, key.need, key.meaning))
                m_network.fluid.properties.emplace_back(key.property, *number);
        }
        fluid.close();
    }

    void readGravity(ObjectReader& reader)
    {
        const auto gravity = readVector(reader, "gravity", Need::optional,
                                        "the direction of gravity, three numbers; [0, 0, -1] is downwards");
        if (gravity) m_network.gravity = *gravity;
    }

    void readSettings(ObjectReader& reader)
    {
        const json* value = reader.member("settings", Need::optional, "");
        if (value == nullptr) return;
        ObjectReader settings(*value, "/settings", m_problems);
        m_network.minorLoss = readChoice(settings, "minor_loss", kMinorLossChoices, m_network.minorLoss);
        m_network.frictionMethod =
            readChoice(settings, "friction", kFrictionChoices, m_network.frictionMethod);
        settings.close();
    }

    static int readChoice(ObjectReader& reader, const char* key, const std::vector<Choice>& choices,
                          int fallback)
    {
        std::vector<std::string> names;
        names.reserve(choices.size());
        for (const Choice& choice : choices)
            names.emplace_back(choice.first);
        const auto name = reader.text(key, Need::optional, "the name of a choice");
        if (!name) return fallback;
        for (const Choice& choice : choices) {
            if (*name == choice.first) return choice.second;
        }
        reader.report(key, inQuotes(*name) + " is unknown; " + suggestion(*name, names));
        return fallback;
    }

    /// Three numbers; nothing, and a problem unless the key is absent and optional, otherwise.
    std::optional<std::array<double, 3>> readVector(ObjectReader& reader, const char* key, Need need,
                                                    const char* meaning)
    {
        const json* value = reader.array(key, need, meaning);
        if (value == nullptr) return std::nullopt;
        std::array<double, 3> vector{};
        if (value->size() != vector.size()) {
            reader.report(key,
                          "has " + std::to_string(value->size()) + " values instead of 3; give " + meaning);
            return std::nullopt;
        }
        bool isGood = true;
        for (std::size_t i = 0; i < vector.size(); ++i) {
            const auto number =
                checkedNumber((*value)[i], Range::any, meaning, reader.placeOf(key, i), m_problems);
            if (number)
                vector[i] = *number;
            else
                isGood = false;
        }
        if (!isGood) return std::nullopt;
        return vector;
    }

    /// The value at "name", unique among the names seen so far; its position is entered into positions.
    std::string readName(ObjectReader& reader, std::size_t position, const char* what, Positions& positions)
    {
        const auto name = reader.text("name", Need::required,
                                      std::string("a name for this ") + what + ", used in the results");
        if (!name) return {};
        reader.setLabel(*name);
        const auto [first, isNew] = positions.emplace(*name, position);
        if (!isNew)
            reader.report("name", inQuotes(*name) + " is already the name of " + what + " number " +
                                      std::to_string(first->second + 1) + "; give another name");
        return *name;
    }

    void readNodes(ObjectReader& reader)
    {
        const json* values = reader.array("nodes", Need::required, "the list of nodes");
        if (values == nullptr) {
            m_isConnected = false;
            return;
        }
        m_network.nodes.reserve(values->size());
        for (std::size_t i = 0; i < values->size(); ++i)
            m_network.nodes.push_back(readNode((*values)[i], i));
    }

    Node readNode(const json& value, std::size_t position)
    {
        Node node;
        ObjectReader reader(value, "/nodes/" + std::to_string(position), m_problems);
        node.name = readName(reader, position, "node", m_nodePositions);
        const auto at = readVector(reader, "at", Need::required, "the coordinates x, y and z in m");
        if (at) node.at = *at;
        m_hasLocation.push_back(at.has_value());
        const json* inlet = reader.member("inlet", Need::optional, "");
        const json* outlet = reader.member("outlet", Need::optional, "");
        if (inlet != nullptr && outlet != nullptr)
            reader.reportObject("has \"inlet\" and \"outlet\"; keep one");
        if (inlet != nullptr) node.boundary = readBoundary(*inlet, reader, "inlet");
        if (outlet != nullptr) node.boundary = readBoundary(*outlet, reader, "outlet");
        reader.close();
        return node;
    }

    Boundary readBoundary(const json& value, const ObjectReader& node, const char* key)
    {
        static const char* const kCombinations = "\"pressure\", one of \"mass_flow\", \"reynolds\" and "
                                                 "\"velocity\", or \"pressure\" with \"mass_flow\"";
        Boundary boundary;
        boundary.isInlet = std::string_view(key) == "inlet";
        ObjectReader reader(value, node.pointerOf(key), m_problems);
        if (!reader.isObject()) {
            m_isConnected = false;
            return boundary;
        }
        int count = 0;
        const auto readFlow = [&](const char* flowKey, Boundary::Flow kind, const char* meaning) {
            if (reader.has(flowKey)) ++count;
            const auto flow = reader.number(flowKey, Range::any, Need::optional, meaning);
            if (!flow) return;
            boundary.flowKind = kind;
            boundary.flow = *flow;
        };
        boundary.pressure =
            reader.number("pressure", Range::any, Need::optional, "the static pressure in Pa");
        readFlow("mass_flow", Boundary::Flow::mass, "the mass flow in kg/s");
        readFlow("reynolds", Boundary::Flow::reynolds, "the Reynolds number");
        readFlow("velocity", Boundary::Flow::velocity, "the mean velocity in m/s");
        const bool hasPressure = reader.has("pressure");
        if (count > 1 || (hasPressure && count == 1 && !reader.has("mass_flow")))
            reader.reportObject(std::string("has values that exclude each other; give ") + kCombinations);
        else if (value.empty())
            reader.reportObject(std::string("imposes nothing; give ") + kCombinations);
        reader.close();
        if (!boundary.pressure && boundary.flowKind == Boundary::Flow::none) m_isConnected = false;
        return boundary;
    }

    void readElements(ObjectReader& reader)
    {
        const json* values = reader.array("elements", Need::required, "the list of elements");
        if (values == nullptr) {
            m_isConnected = false;
            return;
        }
        m_network.elements.reserve(values->size());
        for (std::size_t i = 0; i < values->size(); ++i)
            m_network.elements.push_back(readElement((*values)[i], i));
    }

    Element readElement(const json& value, std::size_t position)
    {
        Element element;
        ObjectReader reader(value, "/elements/" + std::to_string(position), m_problems);
        element.name = readName(reader, position, "element", m_elementPositions);
        element.kind = readKind(reader);
        const auto from = readEnd(reader, "from", "the name of the node where the element starts");
        const auto to = readEnd(reader, "to", "the name of the node where the element ends");
        if (from && to) checkEnds(reader, *from, *to);
        element.from = from.value_or(0);
        element.to = to.value_or(0);
        if (!from || !to || element.kind == nullptr) m_isConnected = false;
        if (element.kind == nullptr) return element;
        if (element.kind->hasCurve)
            readCurve(reader, element);
        else
            element.section = readSection(reader);
        for (const NumberKey& key : element.kind->numbers) {
            if (const auto number = reader.number(key.key, key.range, key.need, key.meaning))
                element.properties.emplace_back(key.property, *number);
        }
        checkSizes(reader, element);
        reader.close();
        return element;
    }

    static const ElementKind* readKind(ObjectReader& reader)
    {
        const auto name = reader.text("type", Need::required, "the element's type, such as \"pipe\"");
        if (!name) return nullptr;
        const ElementKind* kind = findElementKind(*name);
        if (kind == nullptr)
            reader.report("type", inQuotes(*name) + " is unknown; " + suggestion(*name, elementKindNames()));
        return kind;
    }

    /// Position of the node that an element's end names.
    std::optional<std::size_t> readEnd(ObjectReader& reader, const char* key, const char* meaning)
    {
        const auto name = reader.text(key, Need::required, meaning);
        if (!name) return std::nullopt;
        const auto found = m_nodePositions.find(*name);
        if (found != m_nodePositions.end()) return found->second;
        reader.report(key,
                      "there is no node " + inQuotes(*name) + "; add it to \"nodes\" or correct the name");
        return std::nullopt;
    }

    void checkEnds(ObjectReader& reader, std::size_t from, std::size_t to)
    {
        if (from == to) {
            reader.report("to", "the element ends where it starts, at " +
                                    inQuotes(m_network.nodes[from].name) + "; name another node");
            return;
        }
        if (!m_hasLocation[from] || !m_hasLocation[to]) return;
        const auto& a = m_network.nodes[from].at;
        const auto& b = m_network.nodes[to].at;
        const double distance = std::fabs(a[0] - b[0]) + std::fabs(a[1] - b[1]) + std::fabs(a[2] - b[2]);
        if (distance < kSamePlace)
            reader.reportObject(
                "its nodes " + inQuotes(m_network.nodes[from].name) + " and " +
                inQuotes(m_network.nodes[to].name) +
                " are at the same place; an element's length is the distance between its nodes");
        else if (!std::isfinite(distance * distance))
            reader.reportObject("its nodes are too far apart; correct their coordinates");
    }

    std::optional<Section> readSection(ObjectReader& reader)
    {
        const bool isRound = !reader.has("wetted_perimeter");
        const auto area = reader.number("area", Range::positive, isRound ? Need::optional : Need::required,
                                        "the flow cross-section in m2");
        const auto perimeter =
            reader.number("wetted_perimeter", Range::positive, Need::optional, "the wetted perimeter in m");
        if (!isRound && reader.has("diameter"))
            reader.reportObject(
                "has \"diameter\" and \"wetted_perimeter\"; keep the diameter of a round section "
                "or the perimeter of another one");
        const auto diameter =
            reader.number("diameter", Range::positive, isRound ? Need::required : Need::optional,
                          "the inner diameter in m");
        if (!isRound) {
            if (!area || !perimeter) return std::nullopt;
            return Section{0.0, *perimeter, *area};
        }
        if (!diameter) return std::nullopt;
        return Section{*diameter, 0.0, area.value_or(kPi * *diameter * *diameter / 4.0)};
    }

    static double hydraulicDiameter(const Section& section)
    {
        return section.diameter > 0.0 ? section.diameter : 4.0 * section.area / section.wettedPerimeter;
    }

    static std::string sizeText(double value) { return shortNumber(value, kSizeDigits); }

    /// Sizes that only make sense together.
    static void checkSizes(ObjectReader& reader, const Element& element)
    {
        if (!element.section) return;
        const double diameter = hydraulicDiameter(*element.section);
        const double area = element.section->area;
        if (!std::isfinite(diameter) || !(diameter > 0.0) || !std::isfinite(area) || !(area > 0.0)) {
            reader.reportObject("its cross-section, " + sizeText(area) + " m2 with a hydraulic diameter of " +
                                sizeText(diameter) +
                                " m, is outside the range of numbers; correct its sizes");
            return;
        }
        checkArea(reader, *element.section);
        for (const auto& [property, value] : element.properties) {
            if (property == TAVELL_ELEMENT_ROUGHNESS && value >= diameter)
                reportNotBelow(reader, "roughness", value, diameter);
            if (property == TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER && value >= diameter)
                reportNotBelow(reader, "bore", value, diameter);
        }
    }

    /// Of all sections with the same perimeter P the circle has the largest area, P^2 / (4 pi).
    static void checkArea(ObjectReader& reader, const Section& section)
    {
        const bool isRound = section.diameter > 0.0;
        const double perimeter = isRound ? kPi * section.diameter : section.wettedPerimeter;
        const double largest = perimeter * perimeter / (4.0 * kPi);
        if (section.area <= kAreaMargin * largest) return;
        reader.reportObject("the area " + sizeText(section.area) + " m2 is above " + sizeText(largest) +
                            " m2, the largest that a " +
                            (isRound ? "diameter of " + sizeText(section.diameter)
                                     : "wetted perimeter of " + sizeText(section.wettedPerimeter)) +
                            " m allows; correct one of them");
    }

    static void reportNotBelow(ObjectReader& reader, const char* size, double value, double diameter)
    {
        reader.reportObject(std::string("the ") + size + ' ' + sizeText(value) +
                            " is not below the hydraulic diameter " + sizeText(diameter) +
                            "; give both in m");
    }

    void readCurve(ObjectReader& reader, Element& element)
    {
        element.referenceDensity = reader.number("reference_density", Range::positive, Need::optional,
                                                 "the density in kg/m3 that the curve was measured with");
        const json* values =
            reader.array("curve", Need::required, "at least 4 points [volume flow in m3/s, pressure in Pa]");
        if (values == nullptr) return;
        if (values->size() < kFewestCurvePoints)
            reader.report("curve",
                          "has " + std::to_string(values->size()) +
                              " points; give at least 4 points [volume flow in m3/s, pressure in Pa]");
        for (std::size_t i = 0; i < values->size(); ++i)
            readCurvePoint((*values)[i], reader.placeOf("curve", i), element.curve);
    }

    void readCurvePoint(const json& value, const std::string& place, std::vector<CurvePoint>& curve)
    {
        if (!value.is_array() || value.size() != 2) {
            m_problems.add(place, "is no pair; give [volume flow in m3/s, pressure in Pa]");
            return;
        }
        const auto flow = checkedNumber(value[0], Range::any, "the volume flow in m3/s", place, m_problems);
        const auto pressure = checkedNumber(value[1], Range::any, "the pressure in Pa", place, m_problems);
        if (!flow || !pressure) return;
        const double kept = roundedToCurveDigits(*flow);
        if (!curve.empty() && !(roundedToCurveDigits(curve.back().volumeFlow) < kept))
            m_problems.add(place, "the flow " + shownValue(value[0]) +
                                      " is not above the one before it; order the points by strictly "
                                      "increasing flow (6 digits count)");
        curve.push_back({*flow, *pressure});
    }

    void readAnswer(ObjectReader& reader)
    {
        const json* value = reader.member("answer", Need::optional, "");
        if (value == nullptr) return;
        ObjectReader answer(*value, "/answer", m_problems);
        m_network.answer = answer.text("text", Need::required, "the expected answer in words").value_or("");
        answer.number("tolerance", Range::positive, Need::optional, "the relative tolerance of the numbers");
        readAnswers(answer, "nodes", m_nodePositions, kNodeAnswers);
        readAnswers(answer, "elements", m_elementPositions, kElementAnswers);
        answer.close();
    }

    /// Checks the expected numbers of the nodes or elements; they are data for tests, the solve has no use
    /// for them.
    void readAnswers(ObjectReader& answer, const char* key, const Positions& positions,
                     const std::vector<const char*>& quantities)
    {
        const json* value = answer.member(key, Need::optional, "");
        if (value == nullptr) return;
        ObjectReader group(*value, answer.pointerOf(key), m_problems);
        if (!group.isObject()) return;
        for (const auto& [name, numbers] : value->items()) {
            if (positions.count(name) == 0)
                group.reportObject("there is no " + inQuotes(name) + " in \"" + key + "\"; correct the name");
            ObjectReader entry(numbers, group.pointerOf(name), m_problems);
            for (const char* quantity : quantities)
                entry.number(quantity, Range::any, Need::optional, "the expected value in SI units");
            entry.close();
        }
    }

    Problems& m_problems;
    Network m_network;
    Positions m_nodePositions;
    Positions m_elementPositions;
    std::vector<bool> m_hasLocation;  // by node position
    bool m_isConnected = true;        // nodes, elements and boundaries are good enough to be checked together
};

}  // namespace

std::optional<Network> readNetworkFile(const std::string& path, Problems& problems)
{
    const auto text = readFileText(path, problems);
    if (!text) return std::nullopt;
    const auto document = parseJson(*text, problems);
    if (!document) return std::nullopt;
    Network network = NetworkReader(problems).read(*document);
    if (!problems.isEmpty()) return std::nullopt;
    return network;
}
