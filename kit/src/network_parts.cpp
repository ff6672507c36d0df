#include "network_parts.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

#include <tavell/Constants.h>

#include <nlohmann/json.hpp>

#include "catalogue.h"
#include "element_kinds.h"
#include "fluids.h"
#include "json_document.h"
#include "network_keys.h"
#include "number_text.h"

namespace kit
{

namespace
{

using nlohmann::json;

constexpr double kPi = 3.14159265358979323846;
constexpr std::size_t kFewestCurvePoints = 4;  // a cubic is fitted to the curve
constexpr int kCurveDigits = 6;                // significant digits that the library keeps of a curve
constexpr int kSizeDigits = 7;                 // significant digits of a size in a message
constexpr double kAreaMargin = 1.001;          // [-], for an area and a perimeter that were rounded
constexpr double kMostFittings = 1e6;          // of one name at one element

const NumberRule kCoordinate{Quantity::length, Range::any, "a coordinate"};
const NumberRule kLength{Quantity::length, Range::positive, "the length"};
const NumberRule kArea{Quantity::area, Range::positive, "the flow cross-section"};
const NumberRule kPerimeter{Quantity::diameter, Range::positive, "the wetted perimeter"};
const NumberRule kDiameter{Quantity::diameter, Range::positive, "the inner diameter"};
const NumberRule kPressure{Quantity::pressure, Range::any, "the static pressure"};
const NumberRule kTemperature{Quantity::temperature, Range::positive, "the temperature"};
const NumberRule kInletTemperature{Quantity::temperature, Range::positive,
                                   "the temperature of the fluid that enters"};
const NumberRule kConcentration{Quantity::none, Range::notNegative,
                                "the mass fraction of the solute, 0 to 1"};
const NumberRule kDatum{Quantity::pressure, Range::any, "the pressure that is added for the solve"};
const NumberRule kVelocityLimit{Quantity::velocity, Range::positive,
                                "the velocity above which a finding is made"};
const NumberRule kReferenceDensity{Quantity::density, Range::positive,
                                   "the density that the curve was measured with"};
const NumberRule kRoughness{Quantity::diameter, Range::notNegative, "the absolute roughness"};
const NumberRule kHazenWilliams{Quantity::none, Range::positive, "the Hazen-Williams coefficient C"};
const NumberRule kFittingK{Quantity::none, Range::notNegative, "the minor loss coefficient K"};
const NumberRule kCurveFlow{Quantity::volumeFlow, Range::any, "the volume flow of a point"};
const NumberRule kCurvePressure{Quantity::pressure, Range::any, "the pressure of a point"};
const NumberRule kCount{Quantity::none, Range::positive, "how many of the fitting there are"};

const char* const kPoints = "at least 4 points [volume flow, pressure]";

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

std::string sizeText(double value)
{
    return shortNumber(value, kSizeDigits);
}

/// What messages call a part: "node tap 3", or "" when it has no name.
std::string objectOf(const char* what, const json& value)
{
    if (!value.is_object()) return "";
    const auto name = value.find("name");
    if (name == value.end() || !name->is_string()) return "";
    const auto& text = name->get_ref<const std::string&>();
    return text.empty() ? "" : std::string(what) + ' ' + text;
}

template <class Part> Positions positionsByName(const std::vector<Part>& parts)
{
    Positions positions;
    positions.reserve(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i)
        positions.emplace(parts[i].name, i);
    return positions;
}

}  // namespace

Positions positionsOf(const std::vector<Node>& nodes)
{
    return positionsByName(nodes);
}

Positions positionsOf(const std::vector<Element>& elements)
{
    return positionsByName(elements);
}

FluidChoice PartReader::readFluid(const json& value, const std::string& pointer)
{
    FluidChoice fluid;
    const json object = value.is_string() ? json{{"name", value}} : value;
    const ObjectReader reader(object, pointer, "", keysOf(ObjectType::fluid), m_reading);
    fluid.name = reader.text("name", Need::optional, "the fluid's name").value_or("");
    fluid.temperature = reader.number("temperature", kTemperature, Need::optional);
    fluid.concentration = reader.number("concentration", kConcentration, Need::optional);
    if (fluid.concentration && *fluid.concentration > 1.0)
        reader.report(Code::value_out_of_range, "concentration",
                      sizeText(*fluid.concentration) + " is above 1",
                      std::string("give ") + kConcentration.meaning);
    for (const FluidKey& key : fluidKeys()) {
        if (const auto number = reader.number(key.key, key.rule, Need::optional))
            fluid.properties.emplace_back(key.property, *number);
    }
    if (reader.isObject()) checkFluid(fluid, reader);
    return fluid;
}

/// Whether the fluid's density and viscosity are known, one way or the other.
void PartReader::checkFluid(const FluidChoice& fluid, const ObjectReader& reader)
{
    const bool isGiven = reader.has("density") && reader.has("viscosity");
    if (fluid.name.empty() || isGiven) return;
    if (!isKnownFluid(fluid.name)) {
        reader.reportObject(Code::unknown_fluid,
                            "the fluid " + inQuotes(fluid.name) +
                                " is unknown, and its density and viscosity are not given",
                            "give \"density\" and \"viscosity\", or the name of a known fluid: " +
                                suggestion(fluid.name, fluidNames()));
        return;
    }
    std::string why;
    const double temperature = fluid.temperature.value_or(kUsualTemperature);
    if (!fluidValues(fluid.name, temperature, fluid.concentration, why))
        reader.reportObject(Code::fluid_out_of_range, oneLine(why),
                            std::string(rowOf(Code::fluid_out_of_range).remedy));
}

Settings PartReader::readSettings(const json& value, const std::string& pointer)
{
    Settings settings;
    const ObjectReader reader(value, pointer, "", keysOf(ObjectType::settings), m_reading);
    settings.minorLoss = readChoice(reader, "minor_loss", minorLossChoices(), settings.minorLoss);
    settings.frictionMethod = readChoice(reader, "friction", frictionChoices(), settings.frictionMethod);
    settings.solvesTemperatures =
        reader.boolean("temperatures", "whether temperatures are solved").value_or(false);
    settings.viscosityFollowsTemperature =
        reader.boolean("viscosity_follows_temperature", "whether the viscosity is that of each temperature")
            .value_or(false);
    settings.pressureDatum = reader.number("pressure_datum", kDatum, Need::optional).value_or(0.0);
    settings.velocityLimit = reader.number("velocity_limit", kVelocityLimit, Need::optional);
    return settings;
}

int PartReader::readChoice(const ObjectReader& reader, const char* key,
                           const std::vector<std::pair<const char*, int>>& choices, int fallback)
{
    std::vector<std::string> names;
    names.reserve(choices.size());
    for (const auto& choice : choices)
        names.emplace_back(choice.first);
    const auto name = reader.text(key, Need::optional, "the name of a choice");
    if (!name) return fallback;
    for (const auto& choice : choices) {
        if (*name == choice.first) return choice.second;
    }
    reader.report(Code::unknown_word, key, inQuotes(*name) + " is unknown", suggestion(*name, names));
    return fallback;
}

Material PartReader::readMaterial(const json& value, const std::string& pointer, const std::string& name)
{
    const ObjectReader reader(value, pointer, "material " + name, keysOf(ObjectType::material), m_reading);
    Material material;
    material.roughness = reader.number("roughness", kRoughness, Need::optional);
    material.hazenWilliams = reader.number("hazen_williams", kHazenWilliams, Need::optional);
    material.source = reader.text("source", Need::optional, "where the values come from").value_or("");
    if (reader.isObject() && !reader.has("roughness") && !reader.has("hazen_williams"))
        reader.reportObject(Code::missing_key, "it has neither \"roughness\" nor \"hazen_williams\"",
                            "give one of them");
    return material;
}

Fitting PartReader::readFitting(const json& value, const std::string& pointer, const std::string& name)
{
    const ObjectReader reader(value, pointer, "fitting " + name, keysOf(ObjectType::fitting), m_reading);
    Fitting fitting;
    fitting.k = reader.number("k", kFittingK, Need::required).value_or(0.0);
    fitting.source = reader.text("source", Need::optional, "where the value comes from").value_or("");
    return fitting;
}

Curve PartReader::readCurve(const json& value, const std::string& pointer, const std::string& name)
{
    const ObjectReader reader(value, pointer, "curve " + name, keysOf(ObjectType::curve), m_reading);
    Curve curve;
    curve.referenceDensity = reader.number("reference_density", kReferenceDensity, Need::optional);
    curve.source = reader.text("source", Need::optional, "where the curve comes from").value_or("");
    if (const json* points = reader.array("points", Need::required, kPoints))
        curve.points = readCurvePoints(*points, reader.pointerOf("points"), reader.object());
    return curve;
}

std::optional<std::array<double, 3>> PartReader::readVector(const json& value, const NumberRule& rule,
                                                            const std::string& pointer,
                                                            const std::string& object, bool isThirdNeeded)
{
    std::array<double, 3> vector{};
    const auto asked = [&] {
        return std::string("write ") + (isThirdNeeded ? "[x, y, z]" : "[x, y] or [x, y, z]") + " with " +
               m_reading.asked(rule) + " each";
    };
    if (!value.is_array()) {
        m_reading.report(Code::wrong_type, pointer, object, shownValue(value) + " is no array", asked());
        return std::nullopt;
    }
    const bool isShortOne = !isThirdNeeded && value.size() == 2;
    if (value.size() != vector.size() && !isShortOne) {
        m_reading.report(Code::wrong_type, pointer, object,
                         "there are " + std::to_string(value.size()) + " values instead of 3", asked());
        return std::nullopt;
    }
    bool isGood = true;
    for (std::size_t i = 0; i < value.size(); ++i) {
        auto number = goodNumber(value[i], rule, m_reading);
        if (!number)
            number = checkedNumber(value[i], rule, m_reading, pointerTo(pointer, std::to_string(i)), object);
        if (number)
            vector[i] = *number;
        else
            isGood = false;
    }
    if (!isGood) return std::nullopt;
    return vector;
}

Node PartReader::readNode(const json& value, const std::string& pointer)
{
    Node node;
    const ObjectReader reader(value, pointer, objectOf("node", value), keysOf(ObjectType::node), m_reading);
    node.name = reader.text("name", Need::required, "a name, used in the results").value_or("");
    node.description = reader.text("description", Need::optional, "a description").value_or("");
    const json* place = reader.member("at", Need::optional, "");
    if (place == nullptr && reader.isObject()) m_nodesWithoutPlace.emplace_back(pointer, reader.object());
    const auto at = place == nullptr
                        ? std::nullopt
                        : readVector(*place, kCoordinate, reader.pointerOf("at"), reader.object());
    if (at)
        node.at = *at;
    else
        m_isConnected = false;
    const json* inlet = reader.member("inlet", Need::optional, "");
    const json* outlet = reader.member("outlet", Need::optional, "");
    if (inlet != nullptr && outlet != nullptr)
        reader.reportObject(Code::values_exclude_each_other, "it has \"inlet\" and \"outlet\"", "keep one");
    if (inlet != nullptr) node.boundary = readBoundary(*inlet, reader, "inlet");
    if (outlet != nullptr) node.boundary = readBoundary(*outlet, reader, "outlet");
    return node;
}

void PartReader::reportMissingPlaces(const std::string& listPointer, std::size_t nodeCount)
{
    constexpr std::size_t kMostApart = 10;
    const std::size_t count = m_nodesWithoutPlace.size();
    const bool areAll = count == nodeCount && count > 1;
    if (count <= kMostApart && !areAll) {
        for (const auto& [pointer, object] : m_nodesWithoutPlace)
            m_reading.report(Code::missing_key, pointer, object, "\"at\" is missing",
                             "give the coordinates [x, y, z]");
        return;
    }
    std::string names;
    for (std::size_t i = 0; i < count && i < kMostApart && !areAll; ++i) {
        const auto& [pointer, object] = m_nodesWithoutPlace[i];
        names += (i == 0 ? ": " : ", ") + oneLine(object.empty() ? pointer : object);
    }
    if (count > kMostApart && !areAll) names += " and " + std::to_string(count - kMostApart) + " more";
    Finding& finding = m_reading.report(
        Code::missing_key, listPointer, "",
        areAll ? "none of the " + std::to_string(count) + " nodes has an \"at\""
               : "\"at\" is missing at " + std::to_string(count) + " of " + std::to_string(nodeCount) +
                     " nodes" + names,
        "give each its coordinates [x, y, z]; with \"coordinates\": \"schematic\" x and y are those of a "
        "drawing and z is the height");
    for (const auto& [pointer, object] : m_nodesWithoutPlace)
        finding.objects.push_back(object.empty() ? pointer : object);
}

Boundary PartReader::readBoundary(const json& value, const ObjectReader& node, const char* key)
{
    static const char* const kCombinations =
        "give \"pressure\", one of \"mass_flow\", \"volume_flow\", \"reynolds\" and \"velocity\", or "
        "\"pressure\" with \"mass_flow\"";
    Boundary boundary;
    boundary.isInlet = std::string_view(key) == "inlet";
    const ObjectReader reader(value, node.pointerOf(key), node.object(), keysOf(ObjectType::boundary),
                              m_reading);
    if (!reader.isObject()) {
        m_isConnected = false;
        return boundary;
    }
    boundary.pressure = reader.number("pressure", kPressure, Need::optional);
    boundary.temperature = reader.number("temperature", kInletTemperature, Need::optional);
    int count = 0;
    for (const FlowKey& flowKey : flowKeys()) {
        if (reader.has(flowKey.key)) ++count;
        const auto flow = reader.number(flowKey.key, flowKey.rule, Need::optional);
        if (!flow) continue;
        boundary.flowKind = flowKey.kind;
        boundary.flow = *flow;
    }
    const bool hasPressure = reader.has("pressure");
    if (count > 1 || (hasPressure && count == 1 && !reader.has("mass_flow")))
        reader.reportObject(Code::values_exclude_each_other, "it has values that exclude each other",
                            kCombinations);
    else if (!hasPressure && count == 0)
        reader.reportObject(Code::imposes_nothing, std::string("the ") + key + " imposes nothing",
                            kCombinations);
    if (!boundary.pressure && boundary.flowKind == Boundary::Flow::none) m_isConnected = false;
    return boundary;
}

Element PartReader::readElement(const json& value, const std::string& pointer)
{
    Element element;
    const std::string object = objectOf("element", value);
    element.kind = readKind(value, pointer, object);
    // The keys of an unknown kind cannot be judged: those of a pipe stand in, for the ones that all kinds
    // share.
    json shared;
    if (element.kind == nullptr && value.is_object()) {
        for (const char* key : {"name", "type", "from", "to", "description"}) {
            if (value.contains(key)) shared[key] = value[key];
        }
    }
    const ElementKind& kind = element.kind != nullptr ? *element.kind : elementKinds().front();
    const ObjectReader reader(shared.is_object() ? shared : value, pointer, object, kind.keys, m_reading);
    element.name = reader.text("name", Need::required, "a name, used in the results").value_or("");
    element.description = reader.text("description", Need::optional, "a description").value_or("");
    readEnds(reader, element);
    if (element.kind == nullptr) {
        m_isConnected = false;
        return element;
    }
    readLength(reader, element);
    if (kind.hasCurve)
        readOwnCurve(reader, element);
    else
        element.section = readSection(reader);
    if (kind.material != MaterialUse::none) readMaterialName(reader, element);
    readNumbers(reader, element);
    if (kind.takesFittings) readFittings(reader, element);
    element.heat = readHeat(reader, kind);
    element.isClosed = reader.boolean("closed", "whether the element carries no flow").value_or(false);
    if (kind.canHaveCheckValve)
        element.hasCheckValve =
            reader.boolean("check_valve", "whether the element lets no flow back").value_or(false);
    readVertices(reader, element);
    checkSizes(reader, element);
    return element;
}

const ElementKind* PartReader::readKind(const json& value, const std::string& pointer,
                                        const std::string& object)
{
    if (!value.is_object()) return nullptr;
    const auto found = value.find("type");
    if (found == value.end()) {
        m_reading.report(Code::missing_key, pointer, object, "\"type\" is missing",
                         "give the element's type, such as \"pipe\"");
        return nullptr;
    }
    const std::string typePointer = pointerTo(pointer, "type");
    const auto name =
        checkedText(*found, "the element's type, such as \"pipe\"", m_reading, typePointer, object);
    if (!name) return nullptr;
    const ElementKind* kind = findElementKind(*name);
    if (kind == nullptr)
        m_reading.report(Code::unknown_word, typePointer, object,
                         "the type " + inQuotes(*name) + " is unknown",
                         suggestion(*name, elementKindNames()));
    return kind;
}

void PartReader::readEnds(const ObjectReader& reader, Element& element)
{
    const auto from = readEnd(reader, "from", "the name of the node where the element starts");
    const auto to = readEnd(reader, "to", "the name of the node where the element ends");
    element.from = from.value_or(0);
    element.to = to.value_or(0);
    if (!from || !to) {
        m_isConnected = false;
        return;
    }
    if (*from != *to) return;
    m_isConnected = false;
    reader.report(Code::ends_where_it_starts, "to",
                  "the element ends where it starts, at " + inQuotes(m_network.nodes[*from].name),
                  "name another node");
}

/// Position of the node that an element's end names.
std::optional<std::size_t> PartReader::readEnd(const ObjectReader& reader, const char* key,
                                               const char* meaning)
{
    const auto name = reader.text(key, Need::required, meaning);
    if (!name) return std::nullopt;
    const auto found = m_nodes.find(*name);
    if (found != m_nodes.end()) return found->second;
    if (!m_hasNodes) return std::nullopt;
    reader.report(Code::unknown_node, key, "there is no node " + inQuotes(*name),
                  "add it to \"nodes\" or correct the name");
    return std::nullopt;
}

void PartReader::readLength(const ObjectReader& reader, Element& element)
{
    element.length = reader.number("length", kLength, Need::optional);
    if (reader.has("length") && !element.length) m_isConnected = false;
}

std::optional<Section> PartReader::readSection(const ObjectReader& reader)
{
    const bool isRound = !reader.has("wetted_perimeter");
    const auto area = reader.number("area", kArea, isRound ? Need::optional : Need::required);
    const auto perimeter = reader.number("wetted_perimeter", kPerimeter, Need::optional);
    if (!isRound && reader.has("diameter"))
        reader.reportObject(Code::section_unclear, "it has \"diameter\" and \"wetted_perimeter\"",
                            std::string(rowOf(Code::section_unclear).remedy));
    const auto diameter = reader.number("diameter", kDiameter, isRound ? Need::required : Need::optional);
    if (!isRound) {
        if (!area || !perimeter) return std::nullopt;
        return Section{0.0, *perimeter, *area};
    }
    if (!diameter) return std::nullopt;
    return Section{*diameter, 0.0, area.value_or(kPi * *diameter * *diameter / 4.0)};
}

void PartReader::readOwnCurve(const ObjectReader& reader, Element& element)
{
    element.referenceDensity = reader.number("reference_density", kReferenceDensity, Need::optional);
    const json* value =
        reader.member("curve", Need::required, std::string("the name of a curve or ") + kPoints);
    if (value == nullptr) return;
    if (value->is_array()) {
        element.curve = readCurvePoints(*value, reader.pointerOf("curve"), reader.object());
        return;
    }
    const auto name = reader.text("curve", Need::required, "the name of a curve, or a list of points");
    if (!name) return;
    element.curveName = *name;
    if (findCurve(m_network, *name) != nullptr) return;
    reader.report(Code::unknown_reference, "curve", "there is no curve " + inQuotes(*name),
                  m_network.curves.empty() ? "add it to \"curves\"" : suggestedName(*name, curveNames));
}

/// What may be meant by an unknown name; not sought any more once findings are only counted, since it takes
/// long.
std::string PartReader::suggestedName(const std::string& name,
                                      std::vector<std::string> (*names)(const Network&)) const
{
    if (m_reading.findings.notKept(Code::unknown_reference) > 0) return "correct the name";
    return suggestion(name, names(m_network));
}

std::vector<CurvePoint> PartReader::readCurvePoints(const json& values, const std::string& pointer,
                                                    const std::string& object)
{
    std::vector<CurvePoint> points;
    if (values.size() < kFewestCurvePoints)
        m_reading.report(Code::curve_too_short, pointer, object,
                         "the curve has " + std::to_string(values.size()) +
                             (values.size() == 1 ? " point" : " points"),
                         std::string("give ") + kPoints);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::string place = pointerTo(pointer, std::to_string(i));
        const auto point = readCurvePoint(values[i], place, object);
        if (!point) continue;
        const double kept = roundedToCurveDigits(point->volumeFlow);
        if (!points.empty() && !(roundedToCurveDigits(points.back().volumeFlow) < kept))
            m_reading.report(Code::curve_not_increasing, place, object,
                             "the flow " + shownValue(values[i][0]) + " is not above the one before it");
        points.push_back(*point);
    }
    return points;
}

std::optional<CurvePoint> PartReader::readCurvePoint(const json& value, const std::string& pointer,
                                                     const std::string& object)
{
    if (!value.is_array() || value.size() != 2) {
        m_reading.report(Code::wrong_type, pointer, object, shownValue(value) + " is no pair",
                         "give [volume flow, pressure]");
        return std::nullopt;
    }
    const auto flow = checkedNumber(value[0], kCurveFlow, m_reading, pointerTo(pointer, "0"), object);
    const auto pressure = checkedNumber(value[1], kCurvePressure, m_reading, pointerTo(pointer, "1"), object);
    if (!flow || !pressure) return std::nullopt;
    return CurvePoint{*flow, *pressure};
}

void PartReader::readMaterialName(const ObjectReader& reader, Element& element)
{
    const auto name = reader.text("material", Need::optional, "the name of a material");
    if (!name) return;
    element.material = *name;
    const Material* material = findMaterial(m_network, *name);
    if (material == nullptr) {
        reader.report(Code::unknown_reference, "material", "there is no material " + inQuotes(*name),
                      "add it to \"materials\", or use a known one: " + suggestedName(*name, materialNames));
        return;
    }
    const bool isRoughness = element.kind->material == MaterialUse::roughness;
    const char* key = isRoughness ? "roughness" : "coefficient";
    const bool hasValue = isRoughness ? material->roughness.has_value() : material->hazenWilliams.has_value();
    if (!hasValue && !reader.has(key))
        reader.report(Code::material_lacks_value, "material",
                      "the material " + inQuotes(*name) + " has no " +
                          (isRoughness ? "roughness" : "Hazen-Williams coefficient"),
                      std::string("give it one in \"materials\", or the element a \"") + key + '"');
}

void PartReader::readNumbers(const ObjectReader& reader, Element& element)
{
    for (const NumberKey& key : element.kind->numbers) {
        if (const auto number = reader.number(key.key, key.rule, key.need))
            element.properties.emplace_back(key.property, *number);
    }
    if (element.kind->material == MaterialUse::hazenWilliams && element.material.empty() &&
        !reader.has("coefficient") && !reader.has("material"))
        reader.reportObject(Code::missing_key, "\"coefficient\" is missing",
                            "give the Hazen-Williams coefficient C, or a \"material\" that has one");
}

void PartReader::readFittings(const ObjectReader& reader, Element& element)
{
    const json* values = reader.array("fittings", Need::optional, "names of fittings");
    if (values == nullptr) return;
    for (std::size_t i = 0; i < values->size(); ++i) {
        const std::string pointer = pointerTo(reader.pointerOf("fittings"), std::to_string(i));
        if (auto use = readFittingUse((*values)[i], pointer, reader.object()))
            element.fittings.push_back(std::move(*use));
    }
}

std::optional<FittingUse> PartReader::readFittingUse(const json& value, const std::string& pointer,
                                                     const std::string& object)
{
    static const char* const kMeaning = "the name of a fitting";
    FittingUse use;
    std::optional<std::string> name;
    if (value.is_string()) {
        name = checkedText(value, kMeaning, m_reading, pointer, object);
    } else {
        const ObjectReader reader(value, pointer, object, keysOf(ObjectType::fittingUse), m_reading);
        name = reader.text("fitting", Need::required, kMeaning);
        const double count = reader.number("count", kCount, Need::optional).value_or(1.0);
        const bool isWhole = count == std::floor(count) && count <= kMostFittings;
        if (!isWhole)
            reader.report(Code::value_out_of_range, "count", sizeText(count) + " is no count of fittings",
                          "give a whole number, 1 or above");
        use.count = isWhole ? static_cast<int>(count) : 1;
    }
    if (!name) return std::nullopt;
    use.name = *name;
    if (findFitting(m_network, *name) == nullptr)
        m_reading.report(Code::unknown_reference, pointer, object, "there is no fitting " + inQuotes(*name),
                         "add it to \"fittings\", or use a known one: " + suggestedName(*name, fittingNames));
    return use;
}

std::optional<Heat> PartReader::readHeat(const ObjectReader& reader, const ElementKind& kind)
{
    const json* value = reader.member("heat", Need::optional, "");
    if (value == nullptr) return std::nullopt;
    const ObjectReader heat(*value, reader.pointerOf("heat"), reader.object(), keysOf(ObjectType::heat),
                            m_reading);
    if (!heat.isObject()) return std::nullopt;
    std::optional<Heat> result;
    int count = 0;
    for (const HeatKey& key : heatKeys()) {
        if (heat.has(key.key)) ++count;
        const auto number = heat.number(key.key, key.rule, Need::optional);
        if (!number) continue;
        result = Heat{key.type, *number};
        const bool needsWall = key.type == TAVELL_ENERGY_WALL_TEMPERATURE || key.type == TAVELL_ENERGY_FLUX;
        if (kind.hasCurve && needsWall)
            heat.report(Code::heat_ignored, key.key, std::string("a ") + kind.name + " has no wall",
                        std::string(rowOf(Code::heat_ignored).remedy));
    }
    static const char* const kOneOf =
        "give one of \"wall_temperature\", \"flux\", \"temperature_rise\" and \"heat\"";
    if (count > 1)
        heat.reportObject(Code::values_exclude_each_other, "it has values that exclude each other", kOneOf);
    else if (count == 0)
        heat.reportObject(Code::missing_key, "it gives no heat", kOneOf);
    return result;
}

void PartReader::readVertices(const ObjectReader& reader, Element& element)
{
    const json* values = reader.array("vertices", Need::optional, "the places [x, y, z] between the nodes");
    if (values == nullptr) return;
    const std::string pointer = reader.pointerOf("vertices");
    for (std::size_t i = 0; i < values->size(); ++i) {
        const auto vertex = readVector((*values)[i], kCoordinate, pointerTo(pointer, std::to_string(i)),
                                       reader.object(), false);
        if (vertex) element.vertices.push_back(*vertex);
    }
}

/// Sizes that only make sense together.
void PartReader::checkSizes(const ObjectReader& reader, const Element& element)
{
    if (!element.section) return;
    const Section& section = *element.section;
    const double diameter = section.hydraulicDiameter();
    if (!std::isfinite(diameter) || !(diameter > 0.0) || !std::isfinite(section.area) ||
        !(section.area > 0.0)) {
        reader.reportObject(Code::section_impossible,
                            "its cross-section, " + sizeText(section.area) +
                                " m2 with a hydraulic diameter of " + sizeText(diameter) +
                                " m, is outside the range of numbers",
                            "correct its sizes");
        return;
    }
    // Of all sections with the same perimeter P the circle has the largest area, P^2 / (4 pi).
    const bool isRound = section.diameter > 0.0;
    const double perimeter = isRound ? kPi * section.diameter : section.wettedPerimeter;
    const double largest = perimeter * perimeter / (4.0 * kPi);
    if (section.area > kAreaMargin * largest)
        reader.reportObject(Code::section_impossible,
                            "the area " + sizeText(section.area) + " m2 is above " + sizeText(largest) +
                                " m2, the largest that a " +
                                (isRound ? "diameter of " + sizeText(section.diameter)
                                         : "wetted perimeter of " + sizeText(section.wettedPerimeter)) +
                                " m allows",
                            "correct one of them");
    const auto checkBelow = [&](const char* size, std::optional<double> value) {
        if (!value || *value < diameter) return;
        reader.reportObject(Code::section_impossible,
                            std::string("the ") + size + ' ' + sizeText(*value) +
                                " m is not below the hydraulic diameter " + sizeText(diameter) + " m",
                            "check the units of both");
    };
    if (element.kind->material == MaterialUse::roughness)
        checkBelow("roughness", roughnessOf(m_network, element));
    checkBelow("bore", element.property(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER));
}

}  // namespace kit
