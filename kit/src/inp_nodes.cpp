#include "inp_nodes.h"

#include <algorithm>
#include <cmath>

namespace kit
{

namespace
{

/// Adds a node unless its ID is taken.
void addNode(InpNode node, InpReader& reader, InpNodes& nodes)
{
    if (node.id.empty()) {
        reader.add(Code::inp_missing_field, "the ID is empty");
        return;
    }
    const auto [found, isNew] = nodes.positions.emplace(node.id, nodes.list.size());
    if (!isNew) {
        const InpNode& first = nodes.list[found->second];
        reader.add(Code::inp_duplicate_id, "the ID " + inQuotes(node.id) + " is that of the " +
                                               std::string(nodeWord(first.kind)) + " in line " +
                                               std::to_string(first.line));
        return;
    }
    nodes.list.push_back(std::move(node));
}

void readJunction(InpReader& reader, double length, InpNodes& nodes)
{
    InpNode node;
    node.id = reader.id(0);
    node.line = reader.lineNumber();
    if (const auto elevation = reader.numberOr(1, "the elevation", 0.0)) node.elevation = *elevation * length;
    addNode(std::move(node), reader, nodes);
}

/// A reservoir: ID, head, pattern of the head.
void readReservoir(InpReader& reader, double length, const InpPatterns& patterns, InpNodes& nodes)
{
    InpNode node;
    node.id = reader.id(0);
    node.kind = InpNodeKind::reservoir;
    node.line = reader.lineNumber();
    double multiplier = 1.0;
    if (reader.count() > 2) {
        const auto found = patterns.multiplier(reader.id(2));
        if (found)
            multiplier = *found;
        else
            reader.add(Code::inp_unknown_pattern,
                       "the pattern " + inQuotes(reader.text(2)) + " does not exist");
    }
    if (const auto head = reader.number(1, "the head")) node.elevation = *head * length * multiplier;
    addNode(std::move(node), reader, nodes);
}

/// A tank: ID, bottom elevation, initial level, and what a steady state does not need.
void readTank(InpReader& reader, const InpUnits& units, InpNodes& nodes)
{
    InpNode node;
    node.id = reader.id(0);
    node.kind = InpNodeKind::tank;
    node.line = reader.lineNumber();
    if (const auto elevation = reader.number(1, "the elevation")) node.elevation = *elevation * units.length;
    if (const auto level = reader.number(2, "the initial level", InpRange::notNegative)) {
        node.level = *level * units.length;
        Finding& finding =
            reader.add(Code::tank_frozen, "the tank's level stays at its initial " +
                                              std::string(reader.text(2)) + (units.isMetric ? " m" : " ft"));
        finding.numbers.push_back({"level", node.level, "m"});
    }
    addNode(std::move(node), reader, nodes);
}

/// Both sections take both: a line of up to three fields is a reservoir.
void readFixedHeads(const InpDocument& document, InpSection section, const InpUnits& units,
                    const InpPatterns& patterns, InpNodes& nodes, Findings& findings)
{
    constexpr std::size_t kTankFields = 4;
    for (const InpLine& line : document.lines(section)) {
        InpReader reader(document, section, line, findings, "node " + std::string(document.field(line, 0)));
        if (!reader.hasFields(2, "ID and head, or ID, elevation and initial level")) continue;
        if (reader.count() < kTankFields)
            readReservoir(reader, units.length, patterns, nodes);
        else
            readTank(reader, units, nodes);
    }
}

/// Puts nodes without coordinates on a square lattice above the others, no two at one place.
void placeOnLattice(const std::vector<bool>& isPlaced, Network& network)
{
    double left = 0.0, right = 0.0, top = 0.0;
    bool isFirst = true;
    std::size_t missing = 0;
    for (std::size_t i = 0; i < network.nodes.size(); ++i) {
        if (!isPlaced[i]) {
            ++missing;
            continue;
        }
        const auto& at = network.nodes[i].at;
        left = isFirst ? at[0] : std::min(left, at[0]);
        right = isFirst ? at[0] : std::max(right, at[0]);
        top = isFirst ? at[1] : std::max(top, at[1]);
        isFirst = false;
    }
    const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(missing))));
    const double spacing = right > left ? (right - left) / static_cast<double>(columns) : 1.0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < network.nodes.size(); ++i) {
        if (isPlaced[i]) continue;
        network.nodes[i].at[0] = left + spacing * static_cast<double>(count % columns);
        network.nodes[i].at[1] =
            top + spacing * static_cast<double>(isFirst ? count / columns : count / columns + 1);
        ++count;
    }
}

}  // namespace

std::string_view nodeWord(InpNodeKind kind)
{
    if (kind == InpNodeKind::junction) return "junction";
    return kind == InpNodeKind::reservoir ? "reservoir" : "tank";
}

std::optional<std::size_t> InpNodes::find(const std::string& id, InpReader& reader) const
{
    const auto found = positions.find(id);
    if (found != positions.end()) return found->second;
    reader.add(Code::inp_unknown_node, "the node " + inQuotes(id) + " does not exist");
    return std::nullopt;
}

InpNodes readInpNodes(const InpDocument& document, const InpFileOptions& options, const InpPatterns& patterns,
                      Findings& findings)
{
    InpNodes nodes;
    for (const InpLine& line : document.lines(InpSection::junctions)) {
        InpReader reader(document, InpSection::junctions, line, findings,
                         "node " + std::string(document.field(line, 0)));
        readJunction(reader, options.units.length, nodes);
    }
    readFixedHeads(document, InpSection::reservoirs, options.units, patterns, nodes, findings);
    readFixedHeads(document, InpSection::tanks, options.units, patterns, nodes, findings);
    return nodes;
}

void placeInpNodes(const InpDocument& document, const InpNodes& nodes, Network& network, Findings& findings)
{
    std::vector<bool> isPlaced(network.nodes.size(), false);
    for (const InpLine& line : document.lines(InpSection::coordinates)) {
        InpReader reader(document, InpSection::coordinates, line, findings,
                         "node " + std::string(document.field(line, 0)));
        if (!reader.hasFields(3, "the node's ID, x and y")) continue;
        const auto x = reader.number(1, "the x coordinate");
        const auto y = reader.number(2, "the y coordinate");
        const auto found = nodes.positions.find(reader.id(0));
        if (found == nodes.positions.end()) {
            reader.add(Code::inp_drawing_ignored, "the node " + inQuotes(reader.text(0)) + " does not exist");
            continue;
        }
        if (!x || !y) continue;
        network.nodes[found->second].at[0] = *x;
        network.nodes[found->second].at[1] = *y;
        isPlaced[found->second] = true;
    }
    const auto missing = static_cast<std::size_t>(std::count(isPlaced.begin(), isPlaced.end(), false));
    if (missing == 0) return;
    placeOnLattice(isPlaced, network);
    Finding& finding =
        findings.add(Code::inp_no_coordinates,
                     {document.file(), 0, 0, std::string(sectionHeading(InpSection::coordinates)), ""},
                     std::to_string(missing) + " of " + std::to_string(network.nodes.size()) +
                         " nodes have no coordinates and were put on a lattice");
    constexpr std::size_t kMostNamed = 20;
    for (std::size_t i = 0; i < isPlaced.size() && finding.objects.size() < kMostNamed; ++i) {
        if (!isPlaced[i]) finding.objects.push_back("node " + network.nodes[i].name);
    }
}

}  // namespace kit
