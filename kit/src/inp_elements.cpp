#include "inp_elements.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>
#include <unordered_map>

#include <tavell/Constants.h>

#include "element_kinds.h"
#include "number_text.h"

namespace kit
{

namespace
{

/// [-], the loss coefficient of a valve that stands open and has none: its loss cannot be seen, but it has a
/// law.
constexpr double kLeastLoss = 1e-3;

Place placeOf(const InpLink& link, const InpLinkContext& context)
{
    return {context.document.file(), link.line, 0, std::string(sectionHeading(linkSection(link))),
            linkObject(link)};
}

void setSection(double diameter, Element& element)
{
    Section section;
    section.diameter = diameter;
    section.area = circleArea(diameter);
    element.section = section;
}

/// dp / rho = ck Q^d, independent of length and diameter.
void setPowerLaw(double ck, double exponent, Element& element)
{
    element.kind = findElementKind("general_loss");
    element.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_CK, ck);
    element.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_A, 1.0);
    element.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_B, 0.0);
    element.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_C, 0.0);
    element.setProperty(TAVELL_ELEMENT_GENERAL_LOSS_D, exponent);
}

void setMinorLoss(double k, Element& element)
{
    if (k > 0.0) element.setProperty(TAVELL_ELEMENT_K_SPECIFIED, k);
}

/// A valve that has a loss of K velocity heads: dp / rho = K Q^2 / (2 A^2).
void setValveLoss(double k, Element& element)
{
    const double area = element.section->area;
    setPowerLaw(std::max(k, kLeastLoss) / (2.0 * area * area), 2.0, element);
}

void setPipe(const InpLink& link, const InpFileOptions& options, Element& element)
{
    setSection(link.diameter, element);
    element.length = link.length;
    if (options.headLoss == HeadLossLaw::darcyWeisbach) {
        element.kind = findElementKind(link.hasCheckValve ? "non_return" : "pipe");
        element.setProperty(TAVELL_ELEMENT_ROUGHNESS, link.roughness);
    } else {
        const double r = pipeResistance(options.headLoss, link.roughness, link.length, link.diameter);
        setPowerLaw(kInpGravity * r, flowExponent(options.headLoss), element);
        element.hasCheckValve = link.hasCheckValve;
    }
    setMinorLoss(link.minorLoss, element);
}

/// The laws of the file's curves, each made once: many links may name one.
struct CurveLaws {
    std::unordered_map<std::string, std::optional<PumpLaw>> pumps;
    std::unordered_map<std::string, std::optional<ValveLaw>> valves;
};

const std::vector<HeadPoint>* findPoints(const InpLink& link, const InpLinkContext& context,
                                         Findings& findings)
{
    const auto found = context.curves.find(link.curve);
    if (found != context.curves.end()) return &found->second;
    findings.add(Code::inp_unknown_curve, placeOf(link, context),
                 "the curve " + inQuotes(link.curve) + " does not exist");
    return nullptr;
}

/// A curve's points in SI units.
std::vector<HeadPoint> inSi(std::vector<HeadPoint> points, const InpUnits& units)
{
    for (HeadPoint& point : points) {
        point.flow *= units.flow;
        point.head *= units.length;
    }
    return points;
}

std::optional<PumpLaw> pumpLawOf(const InpLink& link, const InpLinkContext& context, CurveLaws& laws,
                                 Findings& findings)
{
    if (link.power) return PumpLaw::ofPower(*link.power);
    const auto* points = findPoints(link, context, findings);
    if (points == nullptr) return std::nullopt;
    const auto [known, isNew] = laws.pumps.try_emplace(link.curve);
    if (isNew) known->second = PumpLaw::ofPoints(inSi(*points, context.options.units));
    const std::optional<PumpLaw>& law = known->second;
    if (!law)
        findings.add(Code::inp_bad_curve, placeOf(link, context),
                     "the curve " + inQuotes(link.curve) + " is no falling curve of head over flow");
    return law;
}

void addPump(const InpLink& link, const InpLinkContext& context, Element& element, std::size_t position,
             std::vector<InpFittedElement>& fitted, CurveLaws& laws, Findings& findings)
{
    element.kind = findElementKind("pump");
    auto law = pumpLawOf(link, context, laws, findings);
    if (!law) return;
    // A pump that stands still keeps its curve, so that it can be opened.
    law->setSpeed(link.speed > 0.0 ? link.speed : 1.0);
    const double duty = law->isPower() ? context.expectedFlow : 0.5 * law->zeroFlow();
    fitted.push_back(
        {position, placeOf(link, context), law, std::nullopt, duty, link.power ? "" : link.curve});
}

void addCurveValve(const InpLink& link, const InpLinkContext& context, Element& element, std::size_t position,
                   std::vector<InpFittedElement>& fitted, CurveLaws& laws, Findings& findings)
{
    const auto* points = findPoints(link, context, findings);
    if (points == nullptr) return;
    const auto [known, isNew] = laws.valves.try_emplace(link.curve);
    if (isNew) known->second = ValveLaw::ofPoints(inSi(*points, context.options.units));
    const std::optional<ValveLaw>& law = known->second;
    if (!law) {
        findings.add(Code::inp_bad_curve, placeOf(link, context),
                     "the curve " + inQuotes(link.curve) + " is no curve of head loss over flow");
        return;
    }
    element.kind = findElementKind("general_loss");
    const double duty = law->middleFlow();
    setMinorLoss(link.minorLoss, element);
    fitted.push_back({position, placeOf(link, context), std::nullopt, law, duty, link.curve});
}

/// Pressure valves and positional valves: errors, or valves that stand open.
void freezeValve(const InpLink& link, const InpLinkContext& context, Element& element, Findings& findings)
{
    const std::string word(valveWord(link.valve));
    setValveLoss(link.minorLoss, element);
    if (link.status != InpStatus::active) return;
    if (!context.freezesPressureValves) {
        findings.add(Code::valve_not_supported, placeOf(link, context),
                     "the valve is a " + word + ", which has no counterpart");
        return;
    }
    Finding& finding = findings.add(Code::valve_frozen, placeOf(link, context),
                                    "the " + word + " with the setting " + shortNumber(link.setting) +
                                        " controls nothing any more: it stands open with its minor loss " +
                                        shortNumber(link.minorLoss));
    finding.numbers.push_back({"setting", link.setting, ""});
    finding.numbers.push_back({"minor_loss", link.minorLoss, ""});
}

void addValve(const InpLink& link, const InpLinkContext& context, Element& element, std::size_t position,
              std::vector<InpFittedElement>& fitted, CurveLaws& laws, Findings& findings)
{
    setSection(link.diameter, element);
    // A valve that is set to OPEN is wide open and has its minor loss alone.
    const bool isActive = link.status == InpStatus::active;
    switch (link.valve) {
    case InpValve::tcv:
        return setValveLoss(isActive ? link.setting : link.minorLoss, element);
    case InpValve::fcv:
        if (!isActive || link.setting <= 0.0) {
            element.isClosed = element.isClosed || (isActive && link.setting <= 0.0);
            return setValveLoss(link.minorLoss, element);
        }
        element.kind = findElementKind("control_valve");
        element.setProperty(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW,
                            link.setting * context.options.units.flow * kInpWaterDensity *
                                context.options.specificGravity);
        return setMinorLoss(std::max(link.minorLoss, kLeastLoss), element);
    case InpValve::gpv:
        // Its curve holds for OPEN too: only CLOSED changes it.
        return addCurveValve(link, context, element, position, fitted, laws, findings);
    default:
        return freezeValve(link, context, element, findings);
    }
}

/// Vertices of the drawing, by link; heights between those of the ends.
void addVertices(const InpLinks& links, const InpDocument& document, Network& network, Findings& findings)
{
    for (const InpLine& line : document.lines(InpSection::vertices)) {
        InpReader reader(document, InpSection::vertices, line, findings,
                         "element " + std::string(document.field(line, 0)));
        if (!reader.hasFields(3, "the link's ID, x and y")) continue;
        const auto x = reader.number(1, "the x coordinate");
        const auto y = reader.number(2, "the y coordinate");
        const auto found = links.positions.find(reader.id(0));
        if (found == links.positions.end()) {
            reader.add(Code::inp_drawing_ignored, "the link " + inQuotes(reader.text(0)) + " does not exist");
            continue;
        }
        if (x && y) network.elements[found->second].vertices.push_back({*x, *y, 0.0});
    }
    for (Element& element : network.elements) {
        const double low = network.nodes[element.from].at[2];
        const double rise = network.nodes[element.to].at[2] - low;
        const auto parts = static_cast<double>(element.vertices.size() + 1);
        for (std::size_t i = 0; i < element.vertices.size(); ++i)
            element.vertices[i][2] = low + rise * static_cast<double>(i + 1) / parts;
    }
}

void reportPump(const InpFittedElement& fitted, Findings& findings)
{
    const PumpCurveFit fit = fitPump(*fitted.pump, fitted.dutyFlow);
    const double relative = fit.largestError / fit.referenceHead;
    constexpr double kBadFit = 0.02;
    const std::string range =
        " from " + shortNumber(fit.rangeStart) + " to " + shortNumber(fit.rangeEnd) + " m3/s";
    const std::string how =
        fitted.isExact() ? "the file's curve is a parabola or a line, which the cubic has exactly," + range
                         : "the cubic has the file's head and slope at " + shortNumber(fit.dutyFlow) +
                               " m3/s and differs by at most " + shortNumber(fit.largestError, 3) + " m (" +
                               shortNumber(100.0 * relative, 3) + " % of the head " +
                               (fitted.pump->isPower() ? "there)" : "at shut-off)") + range;
    Finding& finding = findings.add(
        relative > kBadFit ? Code::pump_curve_fits_badly : Code::pump_curve_fitted, fitted.place, how);
    if (fitted.isExact()) finding.remedy = "nothing needs to be done";
    finding.numbers.push_back({"duty_flow", fit.dutyFlow, "m3/s"});
    finding.numbers.push_back({"largest_error", fit.largestError, "m"});
    finding.numbers.push_back({"relative_error", relative, ""});
}

void reportValve(const InpFittedElement& fitted, Findings& findings)
{
    const PowerFit fit = fitValve(*fitted.valve, fitted.dutyFlow);
    Finding& finding =
        findings.add(Code::valve_curve_fitted, fitted.place,
                     "the head loss is a power " + shortNumber(fit.exponent) +
                         " of the flow that fits the file's curve at " + shortNumber(fit.dutyFlow) +
                         " m3/s and differs by at most " + shortNumber(fit.largestError, 3) + " m up to " +
                         shortNumber(fitted.valve->largestFlow()) + " m3/s");
    finding.numbers.push_back({"duty_flow", fit.dutyFlow, "m3/s"});
    finding.numbers.push_back({"largest_error", fit.largestError, "m"});
}

}  // namespace

std::vector<InpFittedElement> addInpElements(const InpLinks& links, const InpLinkContext& context,
                                             Network& network, Findings& findings)
{
    std::vector<InpFittedElement> fitted;
    CurveLaws laws;
    network.elements.reserve(links.list.size());
    for (const InpLink& link : links.list) {
        Element element;
        element.name = link.id;
        element.line = link.line;
        element.from = link.from;
        element.to = link.to;
        element.isClosed = link.status == InpStatus::closed;
        const std::size_t position = network.elements.size();
        if (link.kind == InpLinkKind::pipe)
            setPipe(link, context.options, element);
        else if (link.kind == InpLinkKind::pump)
            addPump(link, context, element, position, fitted, laws, findings);
        else
            addValve(link, context, element, position, fitted, laws, findings);
        network.elements.push_back(std::move(element));
    }
    addVertices(links, context.document, network, findings);
    return fitted;
}

void openControlValvesAtDeadEnds(Network& network)
{
    std::vector<std::size_t> count(network.nodes.size(), 0);
    for (const Element& element : network.elements) {
        ++count[element.from];
        ++count[element.to];
    }
    const auto isDeadEnd = [&network, &count](std::size_t node) {
        return count[node] == 1 && !network.nodes[node].boundary;
    };
    for (Element& element : network.elements) {
        if (element.kind->type != TAVELL_CONTROL_VALVE) continue;
        if (!isDeadEnd(element.from) && !isDeadEnd(element.to)) continue;
        element.properties.clear();
        setValveLoss(0.0, element);
    }
}

void fitElement(const InpFittedElement& fitted, double density, Network& network)
{
    Element& element = network.elements[fitted.element];
    if (fitted.valve) {
        const PowerFit fit = fitValve(*fitted.valve, fitted.dutyFlow);
        return setPowerLaw(kInpGravity * fit.factor, fit.exponent, element);
    }
    element.curve.clear();
    for (const HeadPoint& point : fitPump(*fitted.pump, fitted.dutyFlow).points)
        element.curve.push_back({point.flow, density * kInpGravity * point.head});
    element.referenceDensity = density;
}

void shareCurves(const std::vector<InpFittedElement>& fitted, Network& network)
{
    // Speed and duty make the fit of a curve; both are numbers of the file or of a solve that are equal as a whole
    // or not at all.
    std::map<std::tuple<std::string, double, double>, std::vector<std::size_t>> pumps;
    for (const InpFittedElement& one : fitted) {
        if (one.pump && !one.curve.empty())
            pumps[{one.curve, one.pump->speed(), one.dutyFlow}].push_back(one.element);
    }
    for (const auto& [fit, elements] : pumps) {
        if (elements.size() < 2) continue;
        const std::string& id = std::get<0>(fit);
        std::string name = id;
        for (int number = 2; network.curves.count(name) > 0; ++number)
            name = id + " (" + std::to_string(number) + ')';
        Element& first = network.elements[elements.front()];
        network.curves[name] = {first.curve, first.referenceDensity, "curve " + id + " of the EPANET file"};
        for (const std::size_t position : elements) {
            Element& element = network.elements[position];
            element.curve.clear();
            element.curve.shrink_to_fit();
            element.referenceDensity.reset();
            element.curveName = name;
        }
    }
}

void reportFits(const std::vector<InpFittedElement>& fitted, Findings& findings)
{
    for (const InpFittedElement& element : fitted) {
        if (element.pump)
            reportPump(element, findings);
        else
            reportValve(element, findings);
    }
}

}  // namespace kit
