// Nodes and elements of the C interface: names, values of many objects at once.
#include "kit_api.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <unordered_set>
#include <utility>

#include <tavell/Constants.h>

#include "element_kinds.h"

using kit::guarded;
using kit::required;

namespace kit
{

namespace
{

constexpr double kPi = 3.14159265358979323846;
constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

std::string objectOf(const Node& node)
{
    return "node " + node.name;
}

std::string objectOf(const Element& element)
{
    return "element " + element.name;
}

template <class Object>
[[noreturn]] void refuseFor(const Object& object, std::string message, std::string remedy)
{
    Place place;
    place.object = objectOf(object);
    throw Refusal{std::move(place), std::move(message), std::move(remedy)};
}

double orNothing(const std::optional<double>& value)
{
    return value.value_or(kNothing);
}

std::optional<double> optionalOf(double value)
{
    if (std::isnan(value)) return std::nullopt;
    return value;
}

/// The objects that a call is about.
class Selection
{
public:
    Selection(size_t count, const size_t* positions, size_t size) : m_count(count), m_positions(positions)
    {
        if (positions == nullptr && count > size)
            refuse("the call is about " + std::to_string(count) + " objects, but there are " +
                       std::to_string(size),
                   "lower the count");
        for (size_t i = 0; positions != nullptr && i < count; ++i) {
            if (positions[i] >= size)
                refuse("the position " + std::to_string(positions[i]) + " is out of range",
                       "give positions below " + std::to_string(size));
        }
    }
    size_t count() const { return m_count; }
    size_t operator[](size_t i) const { return m_positions == nullptr ? i : m_positions[i]; }

private:
    size_t m_count;
    const size_t* m_positions;
};

// ---- keys of nodes

/// What a key of a node stands for.
struct NodeKey {
    int coordinate = -1;  // 0 to 2; -1 for a value of a boundary
    bool isInlet = false;
    enum class Part { pressure, flow, temperature } part = Part::pressure;
    Boundary::Flow flow = Boundary::Flow::none;
};

NodeKey nodeKey(std::string_view key)
{
    NodeKey result;
    if (key.size() == 1 && key[0] >= 'x' && key[0] <= 'z') {
        result.coordinate = key[0] - 'x';
        return result;
    }
    const std::size_t slash = key.find('/');
    const std::string_view side = key.substr(0, slash);
    const std::string_view name = slash == std::string_view::npos ? "" : key.substr(slash + 1);
    result.isInlet = side == "inlet";
    bool isKnown = result.isInlet || side == "outlet";
    if (name == "temperature") {
        result.part = NodeKey::Part::temperature;
    } else if (name != "pressure") {
        static const std::pair<std::string_view, Boundary::Flow> kFlows[] = {
            {"mass_flow", Boundary::Flow::mass},
            {"volume_flow", Boundary::Flow::volume},
            {"reynolds", Boundary::Flow::reynolds},
            {"velocity", Boundary::Flow::velocity},
        };
        result.part = NodeKey::Part::flow;
        for (const auto& [flowName, flow] : kFlows) {
            if (name == flowName) result.flow = flow;
        }
        isKnown = isKnown && result.flow != Boundary::Flow::none;
    }
    if (!isKnown)
        refuse("nodes have no value " + inQuotes(key),
               "give \"x\", \"y\", \"z\", or \"inlet/\" or \"outlet/\" with \"pressure\", \"mass_flow\", "
               "\"volume_flow\", \"reynolds\", \"velocity\" or \"temperature\"");
    return result;
}

double nodeValue(const Node& node, const NodeKey& key)
{
    if (key.coordinate >= 0) return node.at[static_cast<std::size_t>(key.coordinate)];
    if (!node.boundary || node.boundary->isInlet != key.isInlet) return kNothing;
    const Boundary& boundary = *node.boundary;
    switch (key.part) {
    case NodeKey::Part::pressure:
        return orNothing(boundary.pressure);
    case NodeKey::Part::temperature:
        return orNothing(boundary.temperature);
    case NodeKey::Part::flow:
        break;
    }
    return boundary.flowKind == key.flow ? boundary.flow : kNothing;
}

bool isEmpty(const Boundary& boundary)
{
    return !boundary.pressure && !boundary.temperature && boundary.flowKind == Boundary::Flow::none;
}

void setBoundaryValue(Node& node, const NodeKey& key, double value)
{
    if (std::isnan(value) && (!node.boundary || node.boundary->isInlet != key.isInlet)) return;
    if (!node.boundary) node.boundary.emplace();
    Boundary& boundary = *node.boundary;
    boundary.isInlet = key.isInlet;
    if (key.part == NodeKey::Part::pressure) boundary.pressure = optionalOf(value);
    if (key.part == NodeKey::Part::temperature) boundary.temperature = optionalOf(value);
    if (key.part == NodeKey::Part::flow) {
        if (!std::isnan(value)) {
            boundary.flowKind = key.flow;
            boundary.flow = value;
        } else if (boundary.flowKind == key.flow) {
            boundary.flowKind = Boundary::Flow::none;
            boundary.flow = 0.0;
        }
    }
    if (isEmpty(boundary)) node.boundary.reset();
}

void checkNodeValue(const Node& node, const NodeKey& key, double value)
{
    if (std::isinf(value)) refuseFor(node, "the value is infinite", "give a finite one");
    if (key.coordinate >= 0 && std::isnan(value))
        refuseFor(node, "a coordinate is no number", "give a finite one");
}

// ---- keys of elements

enum class ElementPart {
    property,
    diameter,
    wettedPerimeter,
    area,
    length,
    closed,
    checkValve,
    referenceDensity
};

struct ElementKey {
    ElementPart part = ElementPart::property;
    std::string name;
    // What the name means in the kind that was asked for last: most calls are about elements of one kind.
    mutable const ElementKind* kind = nullptr;
    mutable const NumberKey* number = nullptr;
};

ElementKey elementKey(const char* key)
{
    static const std::pair<std::string_view, ElementPart> kParts[] = {
        {"diameter", ElementPart::diameter},
        {"wetted_perimeter", ElementPart::wettedPerimeter},
        {"area", ElementPart::area},
        {"length", ElementPart::length},
        {"closed", ElementPart::closed},
        {"check_valve", ElementPart::checkValve},
        {"reference_density", ElementPart::referenceDensity},
    };
    for (const auto& [name, part] : kParts) {
        if (name == key) return {part, key, nullptr, nullptr};
    }
    for (const std::string& kind : elementKindNames()) {
        for (const NumberKey& number : findElementKind(kind)->numbers) {
            if (std::string_view(number.key) == key) return {ElementPart::property, key, nullptr, nullptr};
        }
    }
    refuse("elements have no value " + inQuotes(key), "give a key of the network file, such as \"diameter\"");
}

/// The number of a kind; null when the kind has none of that name.
const NumberKey* findNumber(const ElementKind& kind, const ElementKey& key)
{
    if (&kind == key.kind) return key.number;
    key.kind = &kind;
    key.number = nullptr;
    for (const NumberKey& number : kind.numbers) {
        if (number.key == key.name) key.number = &number;
    }
    return key.number;
}

/// Reads a value of many elements. The key is looked at once, not for each element: what is left is little enough for
/// the processor to fetch several elements at a time.
void readElementValues(const std::vector<Element>& elements, const ElementKey& key,
                       const Selection& selection, double* values)
{
    const auto each = [&](auto value) {
        for (size_t i = 0; i < selection.count(); ++i)
            values[i] = value(elements[selection[i]]);
    };
    const auto above0 = [](double size) { return size > 0.0 ? size : kNothing; };
    switch (key.part) {
    case ElementPart::diameter:
        return each([&](const Element& e) { return e.section ? above0(e.section->diameter) : kNothing; });
    case ElementPart::wettedPerimeter:
        return each(
            [&](const Element& e) { return e.section ? above0(e.section->wettedPerimeter) : kNothing; });
    case ElementPart::area:
        return each([](const Element& e) { return e.section ? e.section->area : kNothing; });
    case ElementPart::length:
        return each([](const Element& e) { return orNothing(e.length); });
    case ElementPart::closed:
        return each([](const Element& e) { return e.isClosed ? 1.0 : 0.0; });
    case ElementPart::checkValve:
        return each([](const Element& e) { return e.hasCheckValve ? 1.0 : 0.0; });
    case ElementPart::referenceDensity:
        return each([](const Element& e) { return orNothing(e.referenceDensity); });
    case ElementPart::property:
        return each([&](const Element& e) {
            const NumberKey* number = findNumber(*e.kind, key);
            return number == nullptr ? kNothing : orNothing(e.property(number->property));
        });
    }
}

/// What is wrong with a value of a key for an element of a kind, and what to do; nothing when it may be set. It does not
/// look at elements: a million of them take longer to visit than their values.
struct Objection {
    std::string message;
    std::string remedy;
};

std::optional<Objection> notAbove0(double value)
{
    if (value > 0.0) return std::nullopt;
    return Objection{"the value is not above 0", "give a size above 0"};
}

std::optional<Objection> objectionTo(const ElementKind& kind, const ElementKey& key, double value)
{
    if (std::isinf(value)) return Objection{"the value is infinite", "give a finite one"};
    switch (key.part) {
    case ElementPart::diameter:
    case ElementPart::wettedPerimeter:
    case ElementPart::area:
        if (kind.hasCurve)
            return Objection{std::string("a ") + kind.name + " has no cross-section", "leave it out"};
        return notAbove0(value);
    case ElementPart::closed:
    case ElementPart::checkValve:
        if (!(value >= 0.0 && value <= 1.0))
            return Objection{"the value is neither 0 nor 1", "give one of them"};
        return std::nullopt;
    case ElementPart::length:
    case ElementPart::referenceDensity:
        return std::isnan(value) ? std::nullopt : notAbove0(value);
    case ElementPart::property:
        if (findNumber(kind, key) == nullptr)
            return Objection{std::string("a ") + kind.name + " has no " + inQuotes(key.name), "leave it out"};
        return std::nullopt;
    }
    return std::nullopt;
}

/// Refuses values of many elements before the first is set.
void checkElementValues(const tvkNetwork& network, const ElementKey& key, const Selection& selection,
                        const double* values)
{
    const std::vector<const ElementKind*>& kinds = network.elementKinds();
    const std::vector<Element>& elements = network.get().elements;
    for (size_t i = 0; i < selection.count(); ++i) {
        const size_t position = selection[i];
        std::optional<Objection> objection = objectionTo(*kinds[position], key, values[i]);
        if (!objection && key.part == ElementPart::area && !elements[position].section)
            objection = Objection{"the element has an area without a shape",
                                  "set \"diameter\" or \"wetted_perimeter\" first"};
        if (objection)
            refuseFor(elements[position], std::move(objection->message), std::move(objection->remedy));
    }
}

/// Sets a property, or takes it away with NaN. Returns the value that it had, NaN for none.
double exchangeProperty(Element& element, int id, double value)
{
    auto& list = element.properties;
    const auto has = [id](const std::pair<int, double>& entry) { return entry.first == id; };
    const auto entry = std::find_if(list.begin(), list.end(), has);
    if (entry == list.end()) {
        if (!std::isnan(value)) list.emplace_back(id, value);
        return kNothing;
    }
    const double before = std::exchange(entry->second, value);
    if (std::isnan(value)) list.erase(entry);
    return before;
}

/// Sets a property of many elements. Where memory runs out, those that were set get their old values back, for which
/// they still have the room.
void setProperties(std::vector<Element>& elements, const ElementKey& key, const Selection& selection,
                   const double* values)
{
    const auto exchange = [&](size_t position, double value) {
        Element& element = elements[position];
        return exchangeProperty(element, findNumber(*element.kind, key)->property, value);
    };
    std::vector<double> before(selection.count());
    size_t done = 0;
    try {
        for (; done < selection.count(); ++done) {
            before[done] = exchange(selection[done], values[done]);
        }
    } catch (const std::bad_alloc&) {
        while (done-- > 0)
            exchange(selection[done], before[done]);
        throw;
    }
}

/// Sets a value of many elements, which have passed the checks; as readElementValues().
void setElementValues(std::vector<Element>& elements, const ElementKey& key, const Selection& selection,
                      const double* values)
{
    const auto each = [&](auto set) {
        for (size_t i = 0; i < selection.count(); ++i)
            set(elements[selection[i]], values[i]);
    };
    switch (key.part) {
    case ElementPart::diameter:
        return each([](Element& e, double value) {
            e.section = Section{value, 0.0, kPi * value * value / 4.0};
        });
    case ElementPart::wettedPerimeter:
        // Until its area is set: that of the circle with this perimeter, P^2 / (4 pi).
        return each([](Element& e, double value) {
            e.section = Section{0.0, value, value * value / (4.0 * kPi)};
        });
    case ElementPart::area:
        return each([](Element& e, double value) { e.section->area = value; });
    case ElementPart::length:
        return each([](Element& e, double value) { e.length = optionalOf(value); });
    case ElementPart::closed:
        return each([](Element& e, double value) { e.isClosed = value > 0.0; });
    case ElementPart::checkValve:
        return each([](Element& e, double value) { e.hasCheckValve = value > 0.0; });
    case ElementPart::referenceDensity:
        return each([](Element& e, double value) { e.referenceDensity = optionalOf(value); });
    case ElementPart::property:
        return setProperties(elements, key, selection, values);
    }
}

// ---- many at once

tvkStatus findPositions(const NameIndex& index, const char* kind, size_t count, const char* const* names,
                        size_t* positions, Findings& list)
{
    if (count == 0) return TVK_OK;
    required(names, "names");
    required(positions, "positions");
    tvkStatus status = TVK_OK;
    for (size_t i = 0; i < count; ++i) {
        const std::string_view name = &required(names[i], "names");
        const auto found = index.positions.find(name);
        positions[i] = found == index.positions.end() ? TVK_NO_POSITION : found->second;
        if (found != index.positions.end()) continue;
        list.add(Code::bad_option, {}, std::string("there is no ") + kind + ' ' + inQuotes(name),
                 "correct the name");
        status = TVK_BAD_INPUT;
    }
    return status;
}

/// Refuses names that are empty or already there.
void checkNewNames(const NameIndex& index, const char* kind, size_t count, const char* const* names)
{
    std::unordered_set<std::string_view> added;
    added.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const std::string_view name = &required(names[i], "names");
        if (name.empty()) refuse(std::string("the name of a ") + kind + " is empty", "give one");
        if (index.positions.count(name) > 0 || !added.insert(name).second)
            refuse(inQuotes(name) + " is already the name of a " + kind, "give another name");
    }
}

}  // namespace

}  // namespace kit

size_t tvkNodeCount(const tvkNetwork* network)
{
    return network == nullptr ? 0 : network->get().nodes.size();
}

size_t tvkElementCount(const tvkNetwork* network)
{
    return network == nullptr ? 0 : network->get().elements.size();
}

const char* const* tvkNodeNames(const tvkNetwork* network)
{
    if (tvkNodeCount(network) == 0) return nullptr;
    return kit::guardedValue<const char* const*>(nullptr, [&] { return network->nodeNames().texts.data(); });
}

const char* const* tvkElementNames(const tvkNetwork* network)
{
    if (tvkElementCount(network) == 0) return nullptr;
    return kit::guardedValue<const char* const*>(nullptr,
                                                 [&] { return network->elementNames().texts.data(); });
}

tvkStatus tvkFindNodes(const tvkNetwork* network, size_t count, const char* const* names, size_t* positions,
                       tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        return kit::findPositions(required(network, "network").nodeNames(), "node", count, names, positions,
                                  list);
    });
}

tvkStatus tvkFindElements(const tvkNetwork* network, size_t count, const char* const* names,
                          size_t* positions, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        return kit::findPositions(required(network, "network").elementNames(), "element", count, names,
                                  positions, list);
    });
}

tvkStatus tvkElementEnds(const tvkNetwork* network, size_t* from, size_t* to, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        required(from, "from");
        required(to, "to");
        for (const kit::Element& element : required(network, "network").get().elements) {
            *from++ = element.from;
            *to++ = element.to;
        }
        return TVK_OK;
    });
}

const char* tvkElementType(const tvkNetwork* network, size_t position)
{
    if (position >= tvkElementCount(network)) return nullptr;
    return network->get().elements[position].kind->name;
}

const char* const* tvkElementTypes(const tvkNetwork* network)
{
    if (tvkElementCount(network) == 0) return nullptr;
    return kit::guardedValue<const char* const*>(nullptr, [&] { return network->elementTypes().data(); });
}

tvkStatus tvkAddNodes(tvkNetwork* network, size_t count, const char* const* names, const double* coordinates,
                      tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        tvkNetwork& target = required(network, "network");
        if (count == 0) return TVK_OK;
        kit::checkNewNames(target.nodeNames(), "node", count, &required(names, "names"));
        std::vector<kit::Node> added(count);
        for (size_t i = 0; i < count; ++i) {
            added[i].name = names[i];
            for (size_t k = 0; coordinates != nullptr && k < 3; ++k)
                added[i].at[k] = coordinates[3 * i + k];
            for (const double x : added[i].at) {
                if (!std::isfinite(x))
                    kit::refuseFor(added[i], "a coordinate is no finite number", "give one");
            }
        }
        target.append(std::move(added));
        return TVK_OK;
    });
}

tvkStatus tvkAddElements(tvkNetwork* network, size_t count, const char* const* names,
                         const char* const* types, const size_t* from, const size_t* to,
                         tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        tvkNetwork& target = required(network, "network");
        if (count == 0) return TVK_OK;
        required(types, "types");
        required(from, "from");
        required(to, "to");
        kit::checkNewNames(target.elementNames(), "element", count, &required(names, "names"));
        const size_t nodeCount = target.get().nodes.size();
        std::vector<kit::Element> added(count);
        for (size_t i = 0; i < count; ++i) {
            kit::Element& element = added[i];
            element.name = names[i];
            element.kind = kit::findElementKind(&required(types[i], "types"));
            if (element.kind == nullptr)
                kit::refuseFor(element, "the type " + kit::inQuotes(types[i]) + " is unknown",
                               "give a type of the network file, such as \"pipe\"");
            if (from[i] >= nodeCount || to[i] >= nodeCount)
                kit::refuseFor(element, "the position of a node is out of range",
                               "give positions below " + std::to_string(nodeCount));
            element.from = from[i];
            element.to = to[i];
        }
        target.append(std::move(added));
        return TVK_OK;
    });
}

tvkStatus tvkSetNodeValues(tvkNetwork* network, const char* key, size_t count, const size_t* positions,
                           const double* values, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        tvkNetwork& target = required(network, "network");
        const kit::NodeKey nodeKey = kit::nodeKey(&required(key, "key"));
        const kit::Selection selection(count, positions, target.get().nodes.size());
        if (count == 0) return TVK_OK;
        required(values, "values");
        for (size_t i = 0; i < count; ++i)
            kit::checkNodeValue(target.get().nodes[selection[i]], nodeKey, values[i]);
        kit::Network& changed = target.edit();
        for (size_t i = 0; i < count; ++i) {
            kit::Node& node = changed.nodes[selection[i]];
            if (nodeKey.coordinate >= 0)
                node.at[static_cast<std::size_t>(nodeKey.coordinate)] = values[i];
            else
                kit::setBoundaryValue(node, nodeKey, values[i]);
        }
        return TVK_OK;
    });
}

tvkStatus tvkGetNodeValues(const tvkNetwork* network, const char* key, size_t count, const size_t* positions,
                           double* values, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        const kit::Network& source = required(network, "network").get();
        const kit::NodeKey nodeKey = kit::nodeKey(&required(key, "key"));
        const kit::Selection selection(count, positions, source.nodes.size());
        if (count > 0) required(values, "values");
        for (size_t i = 0; i < count; ++i)
            values[i] = kit::nodeValue(source.nodes[selection[i]], nodeKey);
        return TVK_OK;
    });
}

tvkStatus tvkSetElementValues(tvkNetwork* network, const char* key, size_t count, const size_t* positions,
                              const double* values, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        tvkNetwork& target = required(network, "network");
        const kit::ElementKey elementKey = kit::elementKey(&required(key, "key"));
        const kit::Selection selection(count, positions, target.get().elements.size());
        if (count == 0) return TVK_OK;
        required(values, "values");
        kit::checkElementValues(target, elementKey, selection, values);
        kit::setElementValues(target.edit().elements, elementKey, selection, values);
        return TVK_OK;
    });
}

tvkStatus tvkGetElementValues(const tvkNetwork* network, const char* key, size_t count,
                              const size_t* positions, double* values, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        const kit::Network& source = required(network, "network").get();
        const kit::ElementKey elementKey = kit::elementKey(&required(key, "key"));
        const kit::Selection selection(count, positions, source.elements.size());
        if (count > 0) required(values, "values");
        kit::readElementValues(source.elements, elementKey, selection, values);
        return TVK_OK;
    });
}

tvkStatus tvkSetCurve(tvkNetwork* network, size_t element, size_t count, const double* volumeFlows,
                      const double* pressures, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        tvkNetwork& target = required(network, "network");
        if (element >= target.get().elements.size())
            kit::refuse("the position " + std::to_string(element) + " is out of range",
                        "give a position below " + std::to_string(target.get().elements.size()));
        const kit::Element& old = target.get().elements[element];
        if (!old.kind->hasCurve)
            kit::refuseFor(old, std::string("a ") + old.kind->name + " has no curve", "leave it out");
        required(volumeFlows, "volumeFlows");
        required(pressures, "pressures");
        std::vector<kit::CurvePoint> points(count);
        for (size_t i = 0; i < count; ++i) {
            points[i] = {volumeFlows[i], pressures[i]};
            if (!std::isfinite(volumeFlows[i]) || !std::isfinite(pressures[i]))
                kit::refuseFor(old, "a point of the curve is no finite number", "correct it");
        }
        kit::Element& changed = target.edit().elements[element];
        changed.curve = std::move(points);
        changed.curveName.clear();
        return TVK_OK;
    });
}
