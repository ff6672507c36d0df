// object_model.h: the object layer written down plainly, to compare the flat functions with. A property is its text,
// a circuit is its lists in order of creation, a look-up walks them. Nothing here calls the library; handles only
// tell which object is which. What reads a text that is no number throws as the library does.
#ifndef TAVELL_TESTS_FUZZ_OBJECT_MODEL_H
#define TAVELL_TESTS_FUZZ_OBJECT_MODEL_H

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fuzz_input.h"
#include "tavell/TavellFlat.h"

namespace fuzz::reference
{

enum class Failure { kNone, kInvalid, kOutOfRange };

inline void throwAs(Failure failure)
{
    if (failure == Failure::kInvalid) throw std::invalid_argument("invalid stod argument");
    if (failure == Failure::kOutOfRange) throw std::out_of_range("stod argument out of range");
}

inline std::string numberText(double value, int digits)
{
    std::array<char, 1200> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.*g", digits, value);
    return std::string(text.data(), static_cast<std::size_t>(length));
}

/// A stored text and the number that it reads as.
struct Text {
    std::string text;
    double value = 0.0;
    Failure failure = Failure::kNone;
};

/// A subnormal number is in range, one that vanishes is not.
inline Text readText(const std::string& text)
{
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    if (end == text.c_str()) return {text, 0.0, Failure::kInvalid};
    const bool isLost = errno == ERANGE && (std::isinf(value) || value == 0.0);
    return isLost ? Text{text, 0.0, Failure::kOutOfRange} : Text{text, value, Failure::kNone};
}

inline double numberOf(const std::string& text)
{
    const Text read = readText(text);
    throwAs(read.failure);
    return read.value;
}

/// Towards zero, the nearest int for what is beyond, 0 for no number.
inline int wholePart(double value)
{
    if (std::isnan(value)) return 0;
    if (value <= INT_MIN) return INT_MIN;
    return value >= INT_MAX ? INT_MAX : static_cast<int>(value);
}

struct NamedProperty {
    int id;
    const char* name;
};

inline constexpr std::array<NamedProperty, 52> kProperties{{
    {1000, "element_id"},
    {1001, "element_start"},
    {1002, "element_end"},
    {1003, "element_diameter"},
    {1004, "element_area"},
    {1005, "element_roughness"},
    {1006, "element_temperature"},
    {1008, "element_mode"},
    {1009, "element_reference_density"},
    {1010, "__element_flow_rate"},
    {1011, "__element_pressure"},
    {1012, "element_k_specified"},
    {1013, "element_energy_type"},
    {1014, "element_energy_value"},
    {1015, "element_wettedperimeter"},
    {1016, "element_hazenwilliams_coefficient"},
    {1017, "element_orifice_bore_diameter"},
    {1018, "element_valve_kv_coefficient"},
    {1019, "element_valve_cv_coefficient"},
    {1020, "element_general_loss_ck"},
    {1021, "element_general_loss_a"},
    {1022, "element_general_loss_b"},
    {1023, "element_general_loss_c"},
    {1024, "element_general_loss_d"},
    {1025, "element_control_valve_mass_flow"},
    {1026, "element_fixed_mass_flow"},
    {2000, "node_id"},
    {2001, "node_x"},
    {2002, "node_y"},
    {2003, "node_z"},
    {2004, "node_mode"},
    {2005, "node_reynolds"},
    {2006, "node_pressure"},
    {2007, "node_mass_flow_rate"},
    {2008, "node_velocity"},
    {2009, "node_fluid_temperature"},
    {2010, "node_constraint"},
    {2011, "node_pressure_and_flow_rate_constraint"},
    {3000, "circuit_gravity_x"},
    {3001, "circuit_gravity_y"},
    {3002, "circuit_gravity_z"},
    {3003, "circuit_minor_loss"},
    {3004, "circuit_friction_factor"},
    {3005, "circuit_calculate_viscosity"},
    {4000, "fluid_default_temperature"},
    {4001, "fluid_density"},
    {4002, "fluid_specific_heat"},
    {4003, "fluid_condunctivity"},
    {4004, "fluid_viscosity"},
    {4005, "fluid_viscosity_coefficient_1"},
    {4006, "fluid_viscosity_coefficient_2"},
    {4007, "fluid_viscosity_coefficient_3"},
}};

inline std::string nameOf(int id)
{
    for (const NamedProperty& property : kProperties)
        if (property.id == id) return property.name;
    return "";
}

/// -1 for a name of no property.
inline int idOf(const char* name)
{
    if (name == nullptr) return -1;
    std::string lower = name;
    for (char& letter : lower)
        letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    for (const NamedProperty& property : kProperties)
        if (lower == property.name) return property.id;
    return -1;
}

enum class Kind { kCircuit, kNode, kElement, kFluid };

struct Entity {
    Kind kind;
    std::map<int, Text> properties;
    std::string meta;

    explicit Entity(Kind kindOfObject) : kind(kindOfObject) {}

    bool has(int id) const { return properties.count(id) > 0; }
    /// 0.0 when absent.
    double number(int id) const
    {
        const auto found = properties.find(id);
        if (found == properties.end()) return 0.0;
        throwAs(found->second.failure);
        return found->second.value;
    }
    int whole(int id) const { return wholePart(number(id)); }
    std::string text(int id) const
    {
        const auto found = properties.find(id);
        return found == properties.end() ? std::string() : found->second.text;
    }
    /// Nothing when it is absent or no number.
    std::optional<double> readable(int id) const
    {
        const auto found = properties.find(id);
        if (found == properties.end() || found->second.failure != Failure::kNone) return std::nullopt;
        return found->second.value;
    }

    /// Whether the text changed.
    bool store(int id, Text value)
    {
        const auto found = properties.find(id);
        if (found != properties.end() && found->second.text == value.text && !value.text.empty())
            return false;
        properties.insert_or_assign(id, std::move(value));
        return true;
    }
    bool setNumber(int id, double value) { return store(id, {numberText(value, 20), value, Failure::kNone}); }
    bool setText(int id, const std::string& text) { return store(id, readText(text)); }

    bool takes(int id) const
    {
        switch (kind) {
        case Kind::kElement:
            return id >= 1000 && id <= 1026 && id != 1007;
        case Kind::kNode:
            return id >= 2000 && id <= 2011;
        case Kind::kCircuit:
            return id >= 3000 && id <= 3005;
        default:
            return true;
        }
    }
};

struct Node : Entity {
    vcINode* handle = nullptr;

    explicit Node(unsigned id) : Entity(Kind::kNode)
    {
        for (const auto& [property, value] : {std::pair(2000, static_cast<double>(id)),
                                              {2001, 0.0},
                                              {2002, 0.0},
                                              {2003, 0.0},
                                              {2004, 1.0},
                                              {2006, 1.0},
                                              {2010, 0.0}})
            setNumber(property, value);
    }
    int id() const { return whole(2000); }
    std::array<double, 3> location() const { return {number(2001), number(2002), number(2003)}; }
};

struct Element : Entity {
    vcIElement* handle = nullptr;

    Element(unsigned id, int type, int energyType, double energyValue) : Entity(Kind::kElement)
    {
        setNumber(1000, id);
        setNumber(1008, type);
        setNumber(1013, energyType);
        setNumber(1014, energyValue);
    }
    int start() const { return whole(1001); }
    int end() const { return whole(1002); }
};

/// Numbers before the commas of a curve's text; the last comma may be missing.
inline std::vector<double> curveNumbers(const std::string& text)
{
    std::vector<double> numbers;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t comma = std::min(text.find(',', at), text.size());
        numbers.push_back(numberOf(text.substr(at, comma - at)));
        at = comma + 1;
    }
    return numbers;
}

inline std::string curveText(const std::vector<double>& values)
{
    std::string text;
    for (const double value : values)
        text += numberText(value, 6) + ',';
    return text;
}

struct ExporterOptions {
    int format = 0;
    int precision = 17;
    std::string nodeLabel, elementLabel;
    std::map<int, std::string> resultLabels;
    std::map<int, std::pair<double, double>> units;  // scale, offset

    std::string resultLabel(int key) const
    {
        const auto found = resultLabels.find(key);
        return found == resultLabels.end() ? std::string() : found->second;
    }
};

struct Message {
    int id;
    std::vector<double> values;
};

struct Circuit : Entity {
    vcICircuit* handle = nullptr;
    Entity fluid{Kind::kFluid};
    std::string fluidName = "Water";
    std::vector<Node> nodes;
    std::vector<Element> elements;
    unsigned nextNode = 1;
    unsigned nextElement = 1;
    bool checksIds = true;
    bool checksDuplicates = true;
    bool hasResults = false;
    std::vector<Message> feedback;
    ExporterOptions options;
    std::string exported;

    Circuit() : Entity(Kind::kCircuit)
    {
        for (const auto& [property, value] :
             {std::pair(3000, 0.0), {3001, 0.0}, {3002, -1.0}, {3003, 1.0}, {3004, 0.0}, {3005, 0.0}})
            setNumber(property, value);
        // water at 21 degC in single precision
        for (const auto& [property, value] : {std::pair(4000, 294.26F),
                                              {4001, 997.4F},
                                              {4002, 4179.0F},
                                              {4003, 0.604F},
                                              {4004, 0.00098F},
                                              {4005, 2.86e-05F},
                                              {4006, 783.8F},
                                              {4007, 396.8F}})
            fluid.setNumber(property, static_cast<double>(value));
    }

    /// Position of the oldest node with an id; -1 when there is none.
    int findNode(int id) const
    {
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (nodes[i].id() == id) return static_cast<int>(i);
        return -1;
    }

    bool hasElementBetween(int start, int end) const
    {
        for (const Element& element : elements)
            if (element.start() == start && element.end() == end) return true;
        return false;
    }

    Node& createNode()
    {
        unsigned id = nextNode;
        while (checksIds && findNode(static_cast<int>(id)) >= 0)
            ++id;
        nextNode = id + 1;
        hasResults = false;
        return nodes.emplace_back(id);
    }

    Element& createElement(int type, int energyType, double energyValue)
    {
        hasResults = false;
        return elements.emplace_back(nextElement++, type, energyType, energyValue);
    }

    /// Whether an element may join two nodes. A node that is none of this system is null.
    bool mayJoin(const Node* start, const Circuit* startCircuit, const Node* end,
                 const Circuit* endCircuit) const
    {
        if (start == nullptr || end == nullptr) return false;
        const int startId = start->id();
        const int endId = end->id();
        if (startId == endId || startCircuit != this || endCircuit != this) return false;
        const auto a = start->location();
        const auto b = end->location();
        const double distance = std::fabs(a[0] - b[0]) + std::fabs(a[1] - b[1]) + std::fabs(a[2] - b[2]);
        if (distance < static_cast<double>(1e-13F)) return false;
        return !checksDuplicates || !hasElementBetween(startId, endId);
    }

    Element& createPipe(int startId, int endId, double diameter, double area, double perimeter, double k,
                        int energyType, double energyValue)
    {
        Element& pipe = createElement(0, energyType, energyValue);
        for (const auto& [property, value] : {std::pair(1001, static_cast<double>(startId)),
                                              {1002, static_cast<double>(endId)},
                                              {1003, diameter},
                                              {1004, area},
                                              {1005, 0.0},
                                              {1012, k},
                                              {1015, perimeter}})
            pipe.setNumber(property, value);
        return pipe;
    }

    /// Whether some text that a solve or a look-up may read is no number.
    bool isUnreadable() const
    {
        bool found = isUnreadable(*this) || isUnreadable(fluid);
        for (const Node& node : nodes)
            found = found || isUnreadable(node);
        for (const Element& element : elements)
            found = found || isUnreadable(element);
        return found;
    }

private:
    static bool isUnreadable(const Entity& entity)
    {
        for (const auto& [id, text] : entity.properties) {
            const bool isCurve = id == TAVELL_ELEMENT_FLOW_RATE || id == TAVELL_ELEMENT_PRESSURE;
            if (isCurve ? isUnreadableCurve(text.text) : text.failure != Failure::kNone) return true;
        }
        return false;
    }
    static bool isUnreadableCurve(const std::string& text)
    {
        try {
            curveNumbers(text);
            return false;
        } catch (const std::logic_error&) {
            return true;
        }
    }
};

/// Which elements the walk from the first node along the elements does not reach.
struct Reach {
    bool isComplete = false;              // there are nodes, and each is an end of an element that is reached
    std::vector<std::size_t> outOfReach;  // positions of elements, by ascending node id
};

inline Reach reachOf(const Circuit& circuit)
{
    std::map<int, std::vector<std::size_t>> joined;  // elements by node id
    std::vector<std::pair<int, int>> ends;
    if (circuit.nodes.empty()) return {};
    for (const Node& node : circuit.nodes)
        joined[node.id()];
    for (std::size_t e = 0; e < circuit.elements.size(); ++e) {
        const int start = circuit.elements[e].start();
        const int end = circuit.elements[e].end();
        ends.emplace_back(start, end);
        if (joined.count(start) > 0) joined[start].push_back(e);
        if (joined.count(end) > 0 && end != start) joined[end].push_back(e);
    }
    std::set<int> reached;
    std::vector<std::size_t> work = joined[circuit.nodes[0].id()];
    while (!work.empty()) {
        const std::size_t e = work.back();
        work.pop_back();
        for (const int id : {ends[e].first, ends[e].second})
            if (joined.count(id) > 0 && reached.insert(id).second)
                work.insert(work.end(), joined[id].begin(), joined[id].end());
    }
    Reach reach;
    reach.isComplete = reached.size() == joined.size();
    std::set<std::size_t> listed;
    for (const auto& [id, elements] : joined)
        if (reached.count(id) == 0)
            for (const std::size_t e : elements)
                if (listed.insert(e).second) reach.outOfReach.push_back(e);
    return reach;
}

inline bool hasNodeOfType(const Circuit& circuit, int type)
{
    for (const Node& node : circuit.nodes)
        if (node.whole(2004) == type) return true;
    return false;
}

inline bool everyEndIsANode(const Circuit& circuit)
{
    for (const Element& element : circuit.elements)
        if (circuit.findNode(element.start()) < 0 || circuit.findNode(element.end()) < 0) return false;
    return true;
}

/// The validity state that the constraints lead to.
inline int constraintState(const Circuit& circuit)
{
    int pressures = 0;
    int both = 0;
    int flows = 0;
    for (const Node& node : circuit.nodes) {
        const int constraint = node.whole(2010);
        if (constraint < 0 || constraint > 4) return TAVELL_INVALID_CONSTRAINT;
        constexpr std::array<int, 4> kValues{2006, 2007, 2005, 2008};
        const bool hasValue = constraint == 4 ? node.has(2006) || node.has(2007)
                                              : node.has(kValues[static_cast<std::size_t>(constraint)]);
        if (!hasValue) return TAVELL_INVALID_CONSTRAINT;
        ++(constraint == 0 ? pressures : constraint == 4 ? both : flows);
    }
    if (pressures == 0) return TAVELL_INVALID_NO_PRESSURE;
    if (both > 0 && pressures + flows < 2) return TAVELL_INVALID_PRESSURE_AND_FLOW;
    for (const Node& node : circuit.nodes)
        if (node.whole(2004) != TAVELL_NODE_INLET)
            for (const int id : {2005, 2006, 2007, 2008, 2009})
                if (node.has(id)) return TAVELL_VALID_INNER_BOUNDARY_VALUES;
    return TAVELL_VALID;
}

/// isDetailed: the environment asks for the detail checks.
inline int validityOf(const Circuit& circuit, bool isDetailed)
{
    if (circuit.hasResults) return TAVELL_VALID_HAS_RESULTS;
    if (circuit.elements.size() < 3) return TAVELL_INVALID_ELEMENT_COUNT;
    if (circuit.nodes.size() < 4) return TAVELL_INVALID_NODE_COUNT;
    if (isDetailed && !reachOf(circuit).isComplete) return TAVELL_INVALID_DISCONNECTED;
    if (!hasNodeOfType(circuit, TAVELL_NODE_INLET)) return TAVELL_INVALID_NO_INLET;
    if (!hasNodeOfType(circuit, TAVELL_NODE_OUTLET)) return TAVELL_INVALID_NO_OUTLET;
    if (isDetailed && !everyEndIsANode(circuit)) return TAVELL_INVALID_END_NODE;
    return constraintState(circuit);
}

inline bool isSuitable(const Circuit& circuit, bool isDetailed)
{
    return validityOf(circuit, isDetailed) < 3;
}

/// A stored id of one's own: a positive whole number.
inline std::optional<int> ownId(const Entity& entity, int property)
{
    const std::optional<double> value = entity.readable(property);
    if (!value || !(*value >= 1.0 && *value <= INT_MAX) || *value != std::trunc(*value)) return std::nullopt;
    return static_cast<int>(*value);
}

inline int takeId(unsigned& next, const std::set<int>& taken)
{
    while (taken.count(static_cast<int>(next)) > 0)
        ++next;
    return static_cast<int>(next++);
}

/// Positions of the objects without an id of their own; of several with one id the oldest has it.
template <class Object>
std::vector<std::size_t> withoutId(const std::vector<Object>& objects, int property, std::set<int>& taken)
{
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        const std::optional<int> id = ownId(objects[i], property);
        if (!id || !taken.insert(*id).second) positions.push_back(i);
    }
    return positions;
}

/// Nodes get new ids, and ends that named one of them follow it.
inline void mendNodes(Circuit& circuit)
{
    std::set<int> taken;
    const std::vector<std::size_t> mended = withoutId(circuit.nodes, 2000, taken);
    if (mended.empty()) return;
    std::map<int, std::size_t> meant;  // the first node that reads as an id
    for (std::size_t i = 0; i < circuit.nodes.size(); ++i) {
        const Node& node = circuit.nodes[i];
        if (!node.has(2000) || node.readable(2000)) meant.emplace(node.id(), i);
    }
    for (const Element& element : circuit.elements)
        for (const int end : {1001, 1002})
            if (element.readable(end)) taken.insert(element.whole(end));
    for (const std::size_t i : mended)
        circuit.nodes[i].setNumber(2000, takeId(circuit.nextNode, taken));
    for (Element& element : circuit.elements)
        for (const int end : {1001, 1002}) {
            if (!element.readable(end)) continue;
            const auto found = meant.find(element.whole(end));
            if (found == meant.end()) continue;
            const int id = circuit.nodes[found->second].id();
            if (id != element.whole(end)) element.setNumber(end, id);
        }
}

/// When it throws, nothing has changed.
inline bool validate(Circuit& circuit, bool isDetailed)
{
    if (circuit.hasResults) return isSuitable(circuit, isDetailed);
    const Circuit before = circuit;
    try {
        std::set<int> taken;
        for (const std::size_t i : withoutId(circuit.elements, 1000, taken))
            circuit.elements[i].setNumber(1000, takeId(circuit.nextElement, taken));
        mendNodes(circuit);
        for (Element& element : circuit.elements)
            for (const int end : {1001, 1002})
                if (const auto value = element.readable(end); value && *value != wholePart(*value))
                    element.setNumber(end, wholePart(*value));
        return isSuitable(circuit, isDetailed);
    } catch (...) {
        circuit = before;
        throw;
    }
}

struct System {
    vcITavell* handle = nullptr;
    std::vector<Circuit> circuits;
};

/// Fowler, Noll and Vo (1991), 64 bit; 0.0 and -0.0 are one place.
inline std::uint64_t placeKey(const Node& node)
{
    std::uint64_t key = 0;
    for (double coordinate : node.location()) {
        if (coordinate == 0.0) coordinate = 0.0;
        if (coordinate == 0.0 && std::signbit(coordinate)) coordinate = std::fabs(coordinate);
        std::array<unsigned char, sizeof coordinate> bytes{};
        std::memcpy(bytes.data(), &coordinate, sizeof coordinate);
        std::uint64_t hash = 0xcbf29ce484222325U;
        for (const unsigned char byte : bytes)
            hash = (hash ^ byte) * 0x100000001b3U;
        key ^= hash;
    }
    return key;
}

/// The id of the receiver's node that takes the place of an absorbed one: its partner, the youngest at that place, or
/// a copy.
inline std::size_t standIn(Circuit& receiver, const Node& node,
                           const std::map<std::uint64_t, std::size_t>& partners)
{
    const auto partner = partners.find(placeKey(node));
    if (partner != partners.end()) return partner->second;
    Node& copy = receiver.createNode();
    const double id = copy.number(2000);
    copy.properties = node.properties;
    copy.meta = node.meta;
    copy.setNumber(2000, id);
    return receiver.nodes.size() - 1;
}

inline void absorbElement(Circuit& receiver, const Circuit& absorbed, const Element& element,
                          const std::map<std::uint64_t, std::size_t>& partners)
{
    std::array<std::optional<std::size_t>, 2> ends;
    for (const std::size_t end : {0U, 1U}) {
        const int position = absorbed.findNode(end == 0 ? element.start() : element.end());
        if (position >= 0)
            ends[end] = standIn(receiver, absorbed.nodes[static_cast<std::size_t>(position)], partners);
    }
    if (!ends[0] || !ends[1]) return;

    const double diameter = element.number(1003);
    const double area = element.number(1004);
    const double perimeter = element.number(1015);
    const Node& start = receiver.nodes[*ends[0]];
    const Node& end = receiver.nodes[*ends[1]];
    if (diameter <= 0.0 || area <= 0.0 || !receiver.mayJoin(&start, &receiver, &end, &receiver)) return;
    const std::array<double, 2> endIds{static_cast<double>(start.id()), static_cast<double>(end.id())};
    Element& copy = receiver.createElement(0, 0, 0.0);
    const double id = copy.number(1000);
    copy.properties = element.properties;
    copy.meta = element.meta;
    for (const auto& [property, value] : {std::pair(1000, id),
                                          {1001, endIds[0]},
                                          {1002, endIds[1]},
                                          {1003, diameter},
                                          {1004, area},
                                          {1015, perimeter}})
        copy.setNumber(property, value);
}

/// When it throws, the receiver is as it was.
inline void absorb(Circuit& receiver, const Circuit& absorbed)
{
    const Circuit before = receiver;
    try {
        std::map<std::uint64_t, std::size_t> partners;
        for (std::size_t i = 0; i < receiver.nodes.size(); ++i)
            partners[placeKey(receiver.nodes[i])] = i;
        for (const Element& element : absorbed.elements)
            absorbElement(receiver, absorbed, element, partners);
    } catch (...) {
        receiver = before;
        throw;
    }
}

inline bool meet(const Circuit& a, const Circuit& b)
{
    for (const Node& node : a.nodes)
        for (const Node& other : b.nodes)
            if (placeKey(node) == placeKey(other)) return true;
    return false;
}

/// Each circuit absorbs the oldest younger one that it meets, until it meets none.
inline void merge(System& system)
{
    for (const Circuit& circuit : system.circuits)
        for (const Node& node : circuit.nodes)
            node.location();
    for (std::size_t i = 0; i < system.circuits.size();) {
        std::size_t met = i + 1;
        while (met < system.circuits.size() && !meet(system.circuits[i], system.circuits[met]))
            ++met;
        if (met == system.circuits.size()) {
            ++i;
            continue;
        }
        absorb(system.circuits[i], system.circuits[met]);
        system.circuits.erase(system.circuits.begin() + static_cast<std::ptrdiff_t>(met));
    }
}

}  // namespace fuzz::reference

#endif
