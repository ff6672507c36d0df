#include "inp_import.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include <tavell/Constants.h>

#include "boundary_checks.h"
#include "element_kinds.h"
#include "file_text.h"
#include "inp_demands.h"
#include "inp_elements.h"
#include "inp_links.h"
#include "inp_nodes.h"
#include "inp_options.h"
#include "inp_sections.h"
#include "inp_units.h"

namespace kit
{

namespace
{

/// Sections that a steady state of flow and pressure does not have.
constexpr InpSection kLeftOut[] = {InpSection::energy,   InpSection::quality,   InpSection::sources,
                                   InpSection::mixing,   InpSection::reactions, InpSection::report,
                                   InpSection::tags,     InpSection::labels,    InpSection::backdrop,
                                   InpSection::roughness};

std::string titleOf(const InpDocument& document)
{
    std::string title;
    for (const InpLine& line : document.lines(InpSection::title)) {
        if (!title.empty()) title += ' ';
        title += line.text;
    }
    return title;
}

void setFluid(const InpFileOptions& options, Network& network)
{
    // EPANET has no density: heads and flows do not depend on it. Water of 1000 kg/m3 makes its specific
    // gravity a density, and turns heads into pressures within 0.05 % of EPANET's own 0.4333 psi/ft.
    const double density = kInpWaterDensity * options.specificGravity;
    const bool isWater = options.specificGravity == 1.0 && options.viscosity == kInpWaterViscosity;
    network.fluid.name = isWater ? "water" : "liquid";
    network.fluid.properties = {{TAVELL_FLUID_DENSITY, density},
                                {TAVELL_FLUID_VISCOSITY, options.viscosity * density}};
}

void setResultUnits(const InpUnits& units, Network& network)
{
    if (!units.flowUnit.empty()) network.resultUnits["volume_flow"] = units.flowUnit;
    network.resultUnits["diameter"] = units.isMetric ? "mm" : "in";
    if (units.isMetric) return;
    network.resultUnits["length"] = "ft";
    network.resultUnits["head"] = "ft";
    network.resultUnits["velocity"] = "ft/s";
    network.resultUnits["pressure"] = "psi";
}

void addNodes(const InpNodes& nodes, const std::vector<double>& demands, double density, Network& network)
{
    network.nodes.reserve(nodes.list.size());
    for (std::size_t i = 0; i < nodes.list.size(); ++i) {
        const InpNode& node = nodes.list[i];
        Node made;
        made.name = node.id;
        made.line = node.line;
        made.at[2] = node.elevation;
        if (node.hasFixedHead()) {
            made.boundary = Boundary{};
            made.boundary->isInlet = true;
            made.boundary->pressure = density * kInpGravity * node.level;
        } else if (demands[i] != 0.0) {
            made.boundary = Boundary{};
            made.boundary->isInlet = demands[i] < 0.0;
            made.boundary->flowKind = Boundary::Flow::volume;
            made.boundary->flow = std::fabs(demands[i]);
        }
        network.nodes.push_back(std::move(made));
    }
}

/// A solve needs an outlet: the last fixed head is one, or the first junction with no flow.
void addOutlet(const InpNodes& nodes, const InpDocument& document, Network& network, Findings& losses)
{
    std::size_t fixedHeads = 0;
    std::size_t lastFixed = 0;
    for (std::size_t i = 0; i < nodes.list.size(); ++i) {
        const auto& boundary = network.nodes[i].boundary;
        if (boundary && !boundary->isInlet) return;
        if (!nodes.list[i].hasFixedHead()) continue;
        ++fixedHeads;
        lastFixed = i;
    }
    if (fixedHeads > 1) {
        network.nodes[lastFixed].boundary->isInlet = false;
        return;
    }
    for (std::size_t i = 0; i < nodes.list.size(); ++i) {
        if (network.nodes[i].boundary) continue;
        network.nodes[i].boundary = Boundary{};
        network.nodes[i].boundary->flowKind = Boundary::Flow::volume;
        losses.add(Code::boundary_added,
                   {document.file(), network.nodes[i].line, 0,
                    std::string(sectionHeading(InpSection::junctions)), "node " + network.nodes[i].name},
                   "the junction has an outlet of flow 0");
        return;
    }
}

/// The measure of convergence is relative to the mean pressure, so pressures are lifted by their own range.
double pressureDatumOf(const InpNodes& nodes, double density)
{
    constexpr double kLeastDatum = 1e5;  // [Pa]
    double lowest = nodes.list.front().elevation;
    double highest = lowest;
    for (const InpNode& node : nodes.list) {
        lowest = std::min(lowest, node.elevation);
        highest = std::max(highest, node.hasFixedHead() ? node.fixedHead() : node.elevation);
    }
    const double span = density * kInpGravity * (highest - lowest);
    // A whole number of bars, so that files show a tidy number.
    return std::max(kLeastDatum, kLeastDatum * std::ceil(span / kLeastDatum));
}

/// [m3/s], > 0: what all junctions take together, or without demand what a fixed head would drive.
double expectedFlowOf(const std::vector<double>& demands)
{
    constexpr double kSmallFlow = 0.01;  // [m3/s]
    double taken = 0.0;
    for (const double demand : demands)
        taken += std::max(demand, 0.0);
    return taken > 0.0 ? taken : kSmallFlow;
}

void checkNetwork(const InpNodes& nodes, const InpLinks& links, const InpDocument& document, Findings& losses)
{
    std::vector<bool> isConnected(nodes.list.size(), false);
    bool hasJunction = false, hasFixedHead = false;
    for (const InpLink& link : links.list)
        isConnected[link.from] = isConnected[link.to] = true;
    for (std::size_t i = 0; i < nodes.list.size(); ++i) {
        const InpNode& node = nodes.list[i];
        (node.hasFixedHead() ? hasFixedHead : hasJunction) = true;
        // Links with errors are not in the list: a node may seem to have none on their account.
        if (isConnected[i] || losses.hasErrors()) continue;
        const InpSection section = node.kind == InpNodeKind::junction    ? InpSection::junctions
                                   : node.kind == InpNodeKind::reservoir ? InpSection::reservoirs
                                                                         : InpSection::tanks;
        losses.add(Code::inp_unconnected_node,
                   {document.file(), node.line, 0, std::string(sectionHeading(section)), "node " + node.id},
                   "the " + std::string(nodeWord(node.kind)) + " has no link");
    }
    const auto missing = [&document, &losses](const char* what) {
        losses.add(Code::inp_no_network, {document.file(), 0, 0, "", ""},
                   std::string("the file has no ") + what);
    };
    if (!hasJunction) missing("junction");
    if (!hasFixedHead && hasJunction) missing("reservoir and no tank, so that no head is given");
    if (links.list.empty() && !losses.hasErrors()) missing("pipe, pump or valve");
}

/// Products of numbers that are each finite can be too large; such a network has no answer.
void checkFinite(const Network& network, const InpDocument& document, Findings& losses)
{
    const auto refuse = [&document, &losses](std::size_t line, std::string object) {
        losses.add(Code::inp_out_of_range, {document.file(), line, 0, "", std::move(object)},
                   "the numbers make a value that is too large or too small to count with");
    };
    if (!std::isfinite(network.settings.pressureDatum)) refuse(0, "");
    for (const Node& node : network.nodes) {
        bool isFinite = std::isfinite(node.at[0]) && std::isfinite(node.at[1]) && std::isfinite(node.at[2]);
        if (node.boundary)
            isFinite = isFinite && std::isfinite(node.boundary->flow) &&
                       std::isfinite(node.boundary->pressure.value_or(0.0));
        if (!isFinite) refuse(node.line, "node " + node.name);
    }
    for (const Element& element : network.elements) {
        bool isUsable = std::isfinite(element.length.value_or(0.0));
        if (element.section) isUsable = isUsable && std::isnormal(element.section->area);
        for (const auto& [property, value] : element.properties)
            isUsable = isUsable && (value == 0.0 || std::isnormal(value));
        const auto ck = element.property(TAVELL_ELEMENT_GENERAL_LOSS_CK);
        if (ck) isUsable = isUsable && *ck > 0.0;
        for (std::size_t i = 0; i < element.curve.size(); ++i) {
            const CurvePoint& point = element.curve[i];
            isUsable = isUsable && std::isfinite(point.volumeFlow) && std::isfinite(point.pressure);
            isUsable = isUsable && (i == 0 || point.volumeFlow > element.curve[i - 1].volumeFlow);
        }
        if (!isUsable) refuse(element.line, "element " + element.name);
    }
}

/// What a network file may not hold either; findings name the lines of the .inp file.
void checkParts(const Network& network, Findings& losses)
{
    Findings found;
    checkTogether(network, PointerOf::parts, "", found);
    for (Finding finding : found.list()) {
        finding.place.pointer.clear();
        losses.add(std::move(finding));
    }
}

/// One finding for every line of a section, but for rules one for every rule.
void reportLines(const InpDocument& document, InpSection section, Code code, const char* what,
                 Findings& losses)
{
    for (const InpLine& line : document.lines(section)) {
        InpReader reader(document, section, line, losses);
        if (section == InpSection::rules && !reader.isWord(0, "RULE")) continue;
        reader.add(code, std::string(what) + inQuotes(line.text) + " was left out");
    }
}

void reportEmitters(const InpDocument& document, const InpNodes& nodes, Findings& losses)
{
    for (const InpLine& line : document.lines(InpSection::emitters)) {
        InpReader reader(document, InpSection::emitters, line, losses,
                         "node " + std::string(document.field(line, 0)));
        if (!reader.hasFields(2, "the junction's ID and the coefficient")) continue;
        const bool isKnown = nodes.find(reader.id(0), reader).has_value();
        const auto coefficient = reader.number(1, "the emitter coefficient");
        if (isKnown && coefficient && *coefficient != 0.0)
            reader.add(Code::emitter_not_carried_over,
                       "the emitter with the coefficient " + std::string(reader.text(1)) + " was left out");
    }
}

void reportSections(const InpDocument& document, Findings& losses)
{
    for (const InpSection section : kLeftOut) {
        const auto& lines = document.lines(section);
        if (lines.empty()) continue;
        losses.add(Code::section_not_carried_over,
                   {document.file(), lines.front().number, 0, std::string(sectionHeading(section)), ""},
                   "the section's " + std::to_string(lines.size()) +
                       (lines.size() == 1 ? " line was" : " lines were") + " left out");
    }
}

void reportLaw(const InpDocument& document, HeadLossLaw law, Findings& losses)
{
    const auto& pipes = document.lines(InpSection::pipes);
    if (pipes.empty()) return;
    const Place place{document.file(), pipes.front().number, 0,
                      std::string(sectionHeading(InpSection::pipes)), ""};
    if (law == HeadLossLaw::darcyWeisbach) {
        losses.add(Code::friction_differs, place,
                   "Darcy-Weisbach friction differs from EPANET below Reynolds 5000");
        return;
    }
    const bool isHazenWilliams = law == HeadLossLaw::hazenWilliams;
    losses.add(Code::pipe_law_translated, place,
               std::string(isHazenWilliams ? "Hazen-Williams" : "Chezy-Manning") +
                   " pipes are general losses with the flow's exponent " + (isHazenWilliams ? "1.852" : "2"));
}

void reportLosses(const InpDocument& document, const InpFileOptions& options, const InpNodes& nodes,
                  Findings& losses)
{
    reportLaw(document, options.headLoss, losses);
    reportEmitters(document, nodes, losses);
    reportLines(document, InpSection::leakage, Code::leakage_not_carried_over, "the leakage ", losses);
    reportLines(document, InpSection::controls, Code::control_not_carried_over, "the control ", losses);
    reportLines(document, InpSection::rules, Code::rule_not_carried_over, "the rule ", losses);
    reportSections(document, losses);
}

}  // namespace

std::optional<Network> importInpText(const std::string& text, const std::string& file,
                                     const InpOptions& options, Findings& losses)
{
    Findings found;
    const InpDocument document(text, file, found);
    const InpFileOptions fileOptions = readInpOptions(document, found);
    const InpPatterns patterns(document, fileOptions, options.time, found);
    const InpNodes nodes = readInpNodes(document, fileOptions, patterns, found);
    const std::vector<double> demands = readInpDemands(document, fileOptions, patterns, nodes, found);
    const InpCurves curves = readInpCurves(document, found);
    const InpLinks links = readInpLinks(document, fileOptions, patterns, nodes, found);
    checkNetwork(nodes, links, document, found);

    Network network;
    network.title = titleOf(document);
    network.file = file;
    network.coordinates = Coordinates::schematic;
    network.resultUnits.clear();
    setFluid(fileOptions, network);
    setResultUnits(fileOptions.units, network);
    const double density = kInpWaterDensity * fileOptions.specificGravity;
    addNodes(nodes, demands, density, network);
    placeInpNodes(document, nodes, network, found);
    const InpLinkContext context{document, fileOptions, curves, options.freezesPressureValves,
                                 expectedFlowOf(demands)};
    std::vector<InpFittedElement> fitted = addInpElements(links, context, network, found);
    reportLosses(document, fileOptions, nodes, found);
    if (!found.hasErrors()) {
        addOutlet(nodes, document, network, found);
        network.settings.pressureDatum = pressureDatumOf(nodes, density);
        openControlValvesAtDeadEnds(network);
        for (const InpFittedElement& element : fitted)
            fitElement(element, density, network);
        checkFinite(network, document, found);
        if (!found.hasErrors()) checkParts(network, found);
    }
    if (!found.hasErrors()) {
        if (options.solvesForDuties) refineDuties(fitted, density, network, found);
        shareCurves(fitted, network);
        reportFits(fitted, found);
    }
    const bool isUsable = !found.hasErrors();
    losses.append(found);
    return isUsable ? std::optional<Network>(std::move(network)) : std::nullopt;
}

std::optional<Network> importInp(const std::string& path, const InpOptions& options, Findings& losses)
{
    const auto text = readTextFile(path, Encoding::utf8OrLatin1, losses);
    if (!text) return std::nullopt;
    return importInpText(*text, path, options, losses);
}

}  // namespace kit
