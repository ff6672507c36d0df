#include "network_writer.h"

#include <cmath>
#include <utility>

#include <tavell/Constants.h>

#include <nlohmann/json.hpp>

#include "element_kinds.h"
#include "network_keys.h"
#include "number_text.h"
#include "sha256.h"

namespace kit
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr double kPi = 3.14159265358979323846;

/// What of a network is written.
enum class Extent {
    all,
    whatSolvesDependOn,
};

/// A number that JSON can hold: 0 without a sign, null for what is not finite.
std::string numberText(double value)
{
    if (!std::isfinite(value)) return "null";
    return exactNumber(value == 0.0 ? 0.0 : value);
}

std::string quoted(const std::string& text)
{
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// Appends a value without line breaks: {"key": 1, "list": [1, 2]}.
void appendInline(const Json& value, std::string& text)
{
    if (value.is_number_float()) {
        text += numberText(value.get<double>());
    } else if (value.is_object()) {
        const char* separator = "{";
        for (const auto& entry : value.get_ref<const Json::object_t&>()) {
            text += separator + quoted(entry.first) + ": ";
            appendInline(entry.second, text);
            separator = ", ";
        }
        text += value.empty() ? "{}" : "}";
    } else if (value.is_array()) {
        const char* separator = "[";
        for (const Json& item : value) {
            text += separator;
            appendInline(item, text);
            separator = ", ";
        }
        text += value.empty() ? "[]" : "]";
    } else {
        text += value.dump(-1, ' ', false, Json::error_handler_t::replace);
    }
}

/// Appends a value; objects on its outer levels have one line per member. indent is that of the value's own
/// line.
void appendLines(const Json& value, int levels, const std::string& indent, std::string& text)
{
    if (levels == 0 || !value.is_object() || value.empty()) {
        appendInline(value, text);
        return;
    }
    const std::string inner = indent + "  ";
    const char* separator = "{\n";
    for (auto entry = value.begin(); entry != value.end(); ++entry) {
        text += separator + inner + quoted(entry.key()) + ": ";
        appendLines(*entry, levels - 1, inner, text);
        separator = ",\n";
    }
    text += '\n' + indent + '}';
}

/// Writes the members of a document one after the other.
class DocumentText
{
public:
    /// levels: on how many outer levels of the value objects have one line per member.
    void add(const char* key, const Json& value, int levels)
    {
        begin(key);
        appendLines(value, levels, "  ", m_text);
    }

    /// A list with one line per item; makeItem makes the value of an item.
    template <class Items, class MakeItem>
    void addList(const char* key, const Items& items, MakeItem makeItem)
    {
        begin(key);
        m_text += '[';
        const char* separator = "\n    ";
        for (const auto& item : items) {
            m_text += separator;
            appendInline(makeItem(item), m_text);
            separator = ",\n    ";
        }
        m_text += items.empty() ? "]" : "\n  ]";
    }

    std::string take()
    {
        m_text += "\n}\n";
        return std::move(m_text);
    }

private:
    void begin(const char* key)
    {
        m_text += m_text.empty() ? "{\n  " : ",\n  ";
        m_text += quoted(key) + ": ";
    }

    std::string m_text;
};

Json vectorArray(const std::array<double, 3>& vector)
{
    return Json::array({vector[0], vector[1], vector[2]});
}

Json pointsArray(const std::vector<CurvePoint>& points)
{
    Json array = Json::array();
    for (const CurvePoint& point : points)
        array.push_back(Json::array({point.volumeFlow, point.pressure}));
    return array;
}

void addText(Json& object, const char* key, const std::string& text)
{
    if (!text.empty()) object[key] = text;
}

void addNumber(Json& object, const char* key, const std::optional<double>& number)
{
    if (number) object[key] = *number;
}

const char* wordOf(const std::vector<Choice>& choices, int value)
{
    for (const Choice& choice : choices) {
        if (choice.second == value) return choice.first;
    }
    return choices.front().first;
}

Json boundaryObject(const Boundary& boundary)
{
    Json object = Json::object();
    addNumber(object, "pressure", boundary.pressure);
    for (const FlowKey& key : flowKeys()) {
        if (key.kind == boundary.flowKind) object[key.key] = boundary.flow;
    }
    addNumber(object, "temperature", boundary.temperature);
    return object;
}

void addSection(Json& object, const Section& section)
{
    if (section.diameter > 0.0) {
        object["diameter"] = section.diameter;
        const double circle = kPi * section.diameter * section.diameter / 4.0;
        if (section.area != circle) object["area"] = section.area;
    } else {
        object["wetted_perimeter"] = section.wettedPerimeter;
        object["area"] = section.area;
    }
}

void addCurve(Json& object, const Element& element)
{
    if (element.curveName.empty())
        object["curve"] = pointsArray(element.curve);
    else
        object["curve"] = element.curveName;
    addNumber(object, "reference_density", element.referenceDensity);
}

Json fittingsArray(const std::vector<FittingUse>& fittings)
{
    Json array = Json::array();
    for (const FittingUse& use : fittings) {
        if (use.count == 1)
            array.push_back(use.name);
        else
            array.push_back({{"fitting", use.name}, {"count", use.count}});
    }
    return array;
}

void addHeat(Json& object, const Heat& heat)
{
    const int type = heat.type == TAVELL_ENERGY_FLUX_STORED ? int{TAVELL_ENERGY_FLUX} : heat.type;
    for (const HeatKey& key : heatKeys()) {
        if (key.type == type) object["heat"] = {{key.key, heat.value}};
    }
}

Json answerObject(const Answer& answer)
{
    const auto valuesObject = [](const std::vector<ExpectedValue>& values) {
        Json object = Json::object();
        for (const ExpectedValue& value : values)
            object[value.object][value.quantity] = value.value;
        return object;
    };
    Json object{{"text", answer.text}};
    if (answer.tolerance != Answer().tolerance) object["tolerance"] = answer.tolerance;
    if (!answer.nodes.empty()) object["nodes"] = valuesObject(answer.nodes);
    if (!answer.elements.empty()) object["elements"] = valuesObject(answer.elements);
    return object;
}

Json materialsObject(const Network& network, Extent extent)
{
    Json object = Json::object();
    for (const auto& [name, material] : network.materials) {
        Json& entry = object[name] = Json::object();
        addNumber(entry, "roughness", material.roughness);
        addNumber(entry, "hazen_williams", material.hazenWilliams);
        if (extent == Extent::all) addText(entry, "source", material.source);
    }
    return object;
}

Json fittingsObject(const Network& network, Extent extent)
{
    Json object = Json::object();
    for (const auto& [name, fitting] : network.fittings) {
        Json& entry = object[name] = {{"k", fitting.k}};
        if (extent == Extent::all) addText(entry, "source", fitting.source);
    }
    return object;
}

Json curvesObject(const Network& network, Extent extent)
{
    Json object = Json::object();
    for (const auto& [name, curve] : network.curves) {
        Json& entry = object[name] = {{"points", pointsArray(curve.points)}};
        addNumber(entry, "reference_density", curve.referenceDensity);
        if (extent == Extent::all) addText(entry, "source", curve.source);
    }
    return object;
}

/// A fluid of which only the name is given is written as that name.
Json fluidValue(const FluidChoice& fluid)
{
    Json object = fluidObject(fluid);
    if (object.size() == 1 && object.contains("name")) return object["name"];
    return object;
}

void addCase(const Network& network, Extent extent, DocumentText& document)
{
    const Json fluid = fluidValue(network.fluid);
    if (!fluid.empty()) document.add("fluid", fluid, 0);
    if (network.gravity != Network().gravity) document.add("gravity", gravityArray(network), 0);
    if (network.coordinates == Coordinates::schematic) document.add("coordinates", "schematic", 0);
    Settings settings = network.settings;
    if (extent == Extent::whatSolvesDependOn) settings.velocityLimit.reset();
    const Json settingsValue = settingsObject(settings);
    if (!settingsValue.empty()) document.add("settings", settingsValue, 0);
}

void addShared(const Network& network, Extent extent, DocumentText& document)
{
    if (!network.materials.empty()) document.add("materials", materialsObject(network, extent), 1);
    if (!network.fittings.empty()) document.add("fittings", fittingsObject(network, extent), 1);
    if (!network.curves.empty()) document.add("curves", curvesObject(network, extent), 1);
}

std::string documentText(const Network& network, Extent extent)
{
    const bool isAll = extent == Extent::all;
    DocumentText document;
    document.add("tavell", 1, 0);
    if (isAll && !network.title.empty()) document.add("title", network.title, 0);
    if (isAll && !network.source.empty()) document.add("source", network.source, 0);
    if (isAll && network.answer) document.add("answer", answerObject(*network.answer), 2);
    if (isAll && !network.resultUnits.empty()) document.add("result_units", network.resultUnits, 0);
    addCase(network, extent, document);
    addShared(network, extent, document);
    document.addList("nodes", network.nodes, [isAll](const Node& node) {
        Json object = nodeObject(node);
        if (!isAll) object.erase("description");
        return object;
    });
    document.addList("elements", network.elements, [isAll, &network](const Element& element) {
        Json object = elementObject(network, element);
        if (!isAll) object.erase("vertices");
        if (!isAll) object.erase("description");
        return object;
    });
    if (isAll && !network.scenarios.empty()) {
        Json scenarios = Json::object();
        for (const auto& [name, patch] : network.scenarios)
            scenarios[name] = Json::parse(patch);
        document.add("scenarios", scenarios, 3);
    }
    return document.take();
}

}  // namespace

std::string networkText(const Network& network)
{
    return documentText(network, Extent::all);
}

std::string networkHash(const Network& network)
{
    return sha256(documentText(network, Extent::whatSolvesDependOn));
}

Json nodeObject(const Node& node)
{
    Json object{{"name", node.name}, {"at", vectorArray(node.at)}};
    if (node.boundary) object[node.boundary->isInlet ? "inlet" : "outlet"] = boundaryObject(*node.boundary);
    addText(object, "description", node.description);
    return object;
}

Json elementObject(const Network& network, const Element& element)
{
    Json object{{"name", element.name},
                {"type", element.kind->name},
                {"from", network.nodes[element.from].name},
                {"to", network.nodes[element.to].name}};
    if (element.kind->hasCurve)
        addCurve(object, element);
    else if (element.section)
        addSection(object, *element.section);
    addNumber(object, "length", element.length);
    addText(object, "material", element.material);
    for (const NumberKey& key : element.kind->numbers)
        addNumber(object, key.key, element.property(key.property));
    if (!element.fittings.empty()) object["fittings"] = fittingsArray(element.fittings);
    if (element.heat) addHeat(object, *element.heat);
    if (element.isClosed) object["closed"] = true;
    if (element.hasCheckValve) object["check_valve"] = true;
    if (!element.vertices.empty()) {
        Json vertices = Json::array();
        for (const auto& vertex : element.vertices)
            vertices.push_back(vectorArray(vertex));
        object["vertices"] = std::move(vertices);
    }
    addText(object, "description", element.description);
    return object;
}

Json fluidObject(const FluidChoice& fluid)
{
    Json object = Json::object();
    addText(object, "name", fluid.name);
    addNumber(object, "temperature", fluid.temperature);
    addNumber(object, "concentration", fluid.concentration);
    for (const FluidKey& key : fluidKeys()) {
        for (const auto& [property, value] : fluid.properties) {
            if (property == key.property) object[key.key] = value;
        }
    }
    return object;
}

Json settingsObject(const Settings& settings)
{
    Json object = Json::object();
    if (settings.minorLoss != 0) object["minor_loss"] = wordOf(minorLossChoices(), settings.minorLoss);
    if (settings.frictionMethod != 0) object["friction"] = wordOf(frictionChoices(), settings.frictionMethod);
    if (settings.solvesTemperatures) object["temperatures"] = true;
    if (settings.viscosityFollowsTemperature) object["viscosity_follows_temperature"] = true;
    if (settings.pressureDatum != 0.0) object["pressure_datum"] = settings.pressureDatum;
    addNumber(object, "velocity_limit", settings.velocityLimit);
    return object;
}

Json gravityArray(const Network& network)
{
    return vectorArray(network.gravity);
}

}  // namespace kit
