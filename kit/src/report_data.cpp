#include "report_data.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <tavell/Constants.h>

#include <nlohmann/json.hpp>

#include "doctor.h"
#include "element_inputs.h"
#include "element_kinds.h"
#include "picture_colours.h"
#include "picture_layout.h"
#include "pump_charts.h"

namespace kit
{

namespace
{

using Json = nlohmann::ordered_json;

/// Digits of the numbers of columns: more than anybody reads, and the page stays half as large.
constexpr int kDigits = 7;

double rounded(double value)
{
    std::array<char, 40> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::scientific, kDigits - 1);
    double result = value;
    std::from_chars(text.data(), end.ptr, result);
    return result;
}

/// A number as JSON; null for what is not finite. Whole numbers are written without a fraction, which is
/// shorter.
Json number(double value)
{
    if (!std::isfinite(value)) return nullptr;
    const double result = rounded(value);
    if (result == std::floor(result) && std::abs(result) < 1e9) return static_cast<std::int64_t>(result);
    return result;
}

class ReportData
{
public:
    ReportData(const Network& network, const Solution& solution, const ReportOptions& options)
        : m_network(network), m_solution(solution), m_options(options), m_placement(placeNetwork(network))
    {
    }

    Json heading() const
    {
        Json head;
        head["title"] = m_network.title;
        head["source"] = m_network.source;
        head["file"] = fileName();
        if (!m_options.scenario.empty()) head["scenario"] = m_options.scenario;
        head["outcome"] = outcomeName();
        head["iterations"] = m_solution.iterations;
        head["hasResults"] = m_solution.hasResults();
        return head;
    }

    Json units() const
    {
        const std::pair<const char*, Quantity> quantities[] = {
            {"length", Quantity::length},      {"diameter", Quantity::diameter},
            {"head", Quantity::head},          {"pressure", Quantity::pressure},
            {"mass_flow", Quantity::massFlow}, {"volume_flow", Quantity::volumeFlow},
            {"velocity", Quantity::velocity},  {"temperature", Quantity::temperature}};
        Json units = Json::object();
        for (const auto& [name, quantity] : quantities)
            units[name] = displayUnit(m_options.units, quantity);
        return units;
    }

    /// Rows of label, value and unit.
    Json fluid() const
    {
        const FluidValues& fluid = m_solution.fluid;
        Json rows = Json::array();
        const std::string& name = fluid.name.empty() ? m_network.fluid.name : fluid.name;
        rows.push_back({"Fluid", name.empty() ? "Water" : name, ""});
        const auto add = [&](const char* label, double value, Quantity quantity) {
            if (!(value > 0.0)) return;
            rows.push_back({label, display(value, quantity), displayUnit(m_options.units, quantity)});
        };
        // with a given density the temperature of a fluid without one says nothing
        const auto isDensity = [](const auto& property) { return property.first == TAVELL_FLUID_DENSITY; };
        const auto& given = m_network.fluid.properties;
        const bool isDensityGiven = std::any_of(given.begin(), given.end(), isDensity);
        if (m_network.fluid.temperature || m_solution.hasTemperatures || !isDensityGiven)
            add("Temperature", fluid.temperature, Quantity::temperature);
        add("Density", fluid.density, Quantity::density);
        add("Viscosity", fluid.viscosity, Quantity::viscosity);
        if (m_solution.hasTemperatures) {
            add("Specific heat", fluid.specificHeat, Quantity::specificHeat);
            add("Conductivity", fluid.conductivity, Quantity::conductivity);
        }
        return rows;
    }

    Json placement() const
    {
        return {{"automatic", m_placement.isAutomatic},
                {"toScale", m_placement.isToScale},
                {"heightScale", number(m_placement.heightScale)},
                {"fromSide", m_placement.isSeenFromSide},
                {"bestView", viewName(m_placement.bestView)}};
    }

    /// What the network can be coloured by, with the ends of its scale.
    Json quantities() const
    {
        Json list = Json::array();
        for (const PictureColumn& column : pictureColumns()) {
            if (column.quantity == PictureQuantity::temperature && !m_solution.hasTemperatures) continue;
            const std::vector<double> values = pictureValues(m_solution, column.quantity, m_options.units);
            if (values.empty()) continue;
            const ColourRange range = colourRange(values);
            list.push_back({{"name", column.name},
                            {"label", column.label},
                            {"unit", displayUnit(m_options.units, column.unit)},
                            {"ofNodes", column.isOfNodes},
                            {"low", number(range.low)},
                            {"high", number(range.high)},
                            {"hasLower", range.hasLower},
                            {"hasHigher", range.hasHigher}});
        }
        return list;
    }

    Json nodes() const
    {
        Json columns = Json::object();
        Json names = Json::array();
        Json boundaries = Json::array();
        Json descriptions = Json::object();
        for (std::size_t i = 0; i < m_network.nodes.size(); ++i) {
            const Node& node = m_network.nodes[i];
            names.push_back(node.name);
            boundaries.push_back(boundaryMark(node));
            if (!node.description.empty()) descriptions[std::to_string(i)] = node.description;
        }
        columns["name"] = std::move(names);
        constexpr const char* kAxes[] = {"x", "y", "z"};
        for (std::size_t axis = 0; axis < 3; ++axis)
            columns[kAxes[axis]] = listOf(m_placement.nodes.size(),
                                          [&](std::size_t i) { return number(m_placement.nodes[i][axis]); });
        columns["height"] = listOf(m_placement.nodes.size(), [&](std::size_t i) {
            return display(m_placement.nodes[i][2], Quantity::length);
        });
        columns["boundary"] = std::move(boundaries);
        if (!descriptions.empty()) columns["description"] = std::move(descriptions);
        if (!m_solution.hasResults()) return columns;

        columns["pressure"] = listOf(m_solution.pressure, Quantity::pressure);
        if (hasFinite(m_solution.head)) columns["head"] = listOf(m_solution.head, Quantity::head);
        if (m_solution.hasTemperatures)
            columns["temperature"] = listOf(m_solution.nodeTemperature, Quantity::temperature);
        columns["supply"] = listOf(m_solution.externalMassFlow.size(), [&](std::size_t i) {
            // elsewhere the value is a residual, which the certificate shows
            return m_network.nodes[i].boundary ? display(m_solution.externalMassFlow[i], Quantity::massFlow)
                                               : Json();
        });
        return columns;
    }

    Json elements() const
    {
        const std::vector<Element>& elements = m_network.elements;
        Json columns = Json::object();
        Json kindNames = Json::array();
        for (const ElementKind& kind : elementKinds())
            kindNames.push_back(kind.name);
        columns["kindNames"] = std::move(kindNames);
        const auto column = [&](auto&& value) {
            return listOf(elements.size(), [&](std::size_t e) { return Json(value(elements[e])); });
        };
        columns["name"] = column([](const Element& element) { return element.name; });
        columns["kind"] = column([](const Element& element) {
            return element.kind != nullptr ? element.kind->type : TAVELL_PIPE;
        });
        columns["from"] = column([](const Element& element) { return element.from; });
        columns["to"] = column([](const Element& element) { return element.to; });
        columns["length"] = column([&](const Element& element) {
            const bool isKnown = element.length || m_network.coordinates == Coordinates::geometry;
            const bool hasLength = isKnown && (element.kind == nullptr || !element.kind->hasCurve);
            return hasLength ? display(lengthOf(m_network, element), Quantity::length) : Json();
        });
        columns["diameter"] = column([&](const Element& element) {
            return element.section ? display(element.section->hydraulicDiameter(), Quantity::diameter)
                                   : Json();
        });
        addMarks(columns);
        if (m_solution.hasResults()) addResults(columns);
        return columns;
    }

    Json pumps() const
    {
        Json list = Json::array();
        for (const PumpChart& chart : pumpCharts(m_network, m_solution, m_options.solveBudget)) {
            constexpr const char* kSystem[] = {"none", "solved", "estimated"};
            list.push_back({{"element", chart.element},
                            {"given", pointsOf(chart.given)},
                            {"curve", pointsOf(chart.curve)},
                            {"system", pointsOf(chart.system)},
                            {"systemCurve", kSystem[static_cast<std::size_t>(chart.systemCurve)]},
                            {"duty", pointsOf({chart.duty})[0]}});
        }
        return list;
    }

    /// Open pumps, with and without a chart.
    std::size_t pumpCount() const
    {
        const auto isPump = [](const Element& element) {
            return !element.isClosed && element.kind != nullptr && element.kind->type == TAVELL_PUMP;
        };
        return static_cast<std::size_t>(
            std::count_if(m_network.elements.begin(), m_network.elements.end(), isPump));
    }

    Json findings(const Findings& doctor) const
    {
        Findings all = withoutRepeats(m_solution.findings, doctor);
        all.append(doctor);
        Json list = Json::array();
        for (const Finding& finding : all.list()) {
            const MessageRow& row = rowOf(finding.code);
            Json entry{{"severity", severityName(finding.severity)},
                       {"code", row.code},
                       {"title", row.title},
                       {"message", finding.message},
                       {"remedy", finding.remedy}};
            if (!finding.place.object.empty()) entry["object"] = finding.place.object;
            if (finding.place.line > 0) entry["line"] = finding.place.line;
            if (!finding.objects.empty()) entry["objects"] = finding.objects;
            list.push_back(std::move(entry));
        }
        return list;
    }

private:
    template <class Value> static Json listOf(std::size_t count, Value&& value)
    {
        Json::array_t list;
        list.reserve(count);
        for (std::size_t i = 0; i < count; ++i)
            list.push_back(value(i));
        return list;
    }

    Json listOf(const std::vector<double>& values, Quantity quantity) const
    {
        return listOf(values.size(), [&](std::size_t i) { return display(values[i], quantity); });
    }

    static bool hasFinite(const std::vector<double>& values)
    {
        for (const double value : values) {
            if (std::isfinite(value)) return true;
        }
        return false;
    }

    Json display(double si, Quantity quantity) const
    {
        return number(fromSi(si, displayUnit(m_options.units, quantity), quantity));
    }

    Json pointsOf(const std::vector<CurvePoint>& points) const
    {
        Json list = Json::array();
        for (const CurvePoint& point : points)
            list.push_back({display(point.volumeFlow, Quantity::volumeFlow),
                            display(point.pressure, Quantity::pressure)});
        return list;
    }

    /// 0 none, 1 a pressure is given, 2 a flow into the network, 3 a flow out of it.
    static int boundaryMark(const Node& node)
    {
        if (!node.boundary) return 0;
        if (node.boundary->pressure) return 1;
        return node.boundary->isInlet ? 2 : 3;
    }

    /// Positions of closed elements and of those with a check valve, bends and descriptions by position.
    void addMarks(Json& columns) const
    {
        Json closed = Json::array();
        Json checked = Json::array();
        Json vertices = Json::object();
        Json descriptions = Json::object();
        for (std::size_t e = 0; e < m_network.elements.size(); ++e) {
            const Element& element = m_network.elements[e];
            if (element.isClosed) closed.push_back(e);
            if (element.hasCheckValve) checked.push_back(e);
            if (!element.description.empty()) descriptions[std::to_string(e)] = element.description;
            if (m_placement.vertices[e].empty()) continue;
            Json bends = Json::array();
            for (const Point3& at : m_placement.vertices[e])
                bends.push_back({number(at[0]), number(at[1]), number(at[2])});
            vertices[std::to_string(e)] = std::move(bends);
        }
        columns["closed"] = std::move(closed);
        columns["checkValve"] = std::move(checked);
        if (!vertices.empty()) columns["vertices"] = std::move(vertices);
        if (!descriptions.empty()) columns["description"] = std::move(descriptions);
    }

    void addResults(Json& columns) const
    {
        columns["mass_flow"] = listOf(m_solution.massFlow, Quantity::massFlow);
        columns["volume_flow"] = listOf(m_solution.volumeFlow, Quantity::volumeFlow);
        columns["velocity"] = listOf(m_solution.velocity, Quantity::velocity);
        columns["reynolds"] = listOf(m_solution.reynolds, Quantity::none);
        columns["pressure_difference"] = listOf(m_solution.pressureDifference, Quantity::pressure);
        if (m_solution.hasTemperatures)
            columns["temperature"] = listOf(m_solution.elementTemperature, Quantity::temperature);
        addParts(columns);
    }

    /// What the pressure changes by from start to end of each element, by cause.
    void addParts(Json& columns) const
    {
        std::vector<LossParts> parts = lossParts(m_network, m_solution);
        for (std::size_t e = 0; e < parts.size(); ++e) {
            const Element& element = m_network.elements[e];
            if (element.kind == nullptr || element.kind->type != TAVELL_GENERAL_LOSS) continue;
            // a general loss is how pipes with another law of friction are written
            parts[e].friction += parts[e].other;
            parts[e].other = 0.0;
        }
        struct Part {
            const char* name;
            double LossParts::*value;
            double sign;
        };
        constexpr Part kParts[] = {{"friction", &LossParts::friction, -1.0},
                                   {"minor", &LossParts::minor, -1.0},
                                   {"height_change", &LossParts::height, -1.0},
                                   {"pump", &LossParts::pump, 1.0},
                                   {"other", &LossParts::other, -1.0}};
        for (const Part& part : kParts) {
            columns[part.name] = listOf(parts.size(), [&](std::size_t e) {
                return display(part.sign * parts[e].*(part.value) + 0.0, Quantity::pressure);
            });
        }
    }

    /// The name of the network's file without its folder.
    std::string fileName() const
    {
        const std::size_t slash = m_network.file.find_last_of("/\\");
        return slash == std::string::npos ? m_network.file : m_network.file.substr(slash + 1);
    }

    const char* outcomeName() const
    {
        switch (m_solution.outcome) {
        case Outcome::converged:
            return "converged";
        case Outcome::cancelled:
            return "cancelled";
        case Outcome::notConverged:
            break;
        }
        return "not converged";
    }

    const Network& m_network;
    const Solution& m_solution;
    const ReportOptions& m_options;
    Placement m_placement;
};

/// Rows of label, value, unit and remark.
Json certificateRows(const Certificate& certificate)
{
    Json rows = Json::array();
    const auto worst = [](const std::string& what, const std::string& name) {
        return name.empty() ? std::string() : "worst " + what + " " + name;
    };
    rows.push_back(
        {"Mass imbalance", number(certificate.massImbalance), "kg/s", worst("node", certificate.worstNode)});
    rows.push_back(
        {"Mass imbalance, relative", number(certificate.relativeMassImbalance), "", "of the mean flow"});
    rows.push_back({"Mismatch of the laws of loss", number(certificate.lawMismatch), "Pa",
                    worst("element", certificate.worstElement)});
    rows.push_back({"Mismatch of the laws of loss, relative", number(certificate.relativeLawMismatch), "",
                    "of the mean pressure"});
    if (certificate.energyImbalance)
        rows.push_back({"Energy imbalance", number(*certificate.energyImbalance), "W", ""});
    if (certificate.relativeEnergyImbalance)
        rows.push_back({"Energy imbalance, relative", number(*certificate.relativeEnergyImbalance), "", ""});
    return rows;
}

}  // namespace

Json reportData(const Network& network, const Solution& solution, const Certificate& certificate,
                const Findings& findings, const ReportOptions& options)
{
    const ReportData report(network, solution, options);
    Json data = report.heading();
    data["version"] = certificate.version;
    data["hash"] = certificate.modelHash;
    data["units"] = report.units();
    data["fluid"] = report.fluid();
    data["placement"] = report.placement();
    data["quantities"] = report.quantities();
    data["nodes"] = report.nodes();
    data["elements"] = report.elements();
    data["pumps"] = report.pumps();
    data["pumpCount"] = report.pumpCount();
    data["findings"] = report.findings(findings);
    if (solution.hasResults())
        data["certificate"] = {{"isGood", certificate.isGood},
                               {"rows", certificateRows(certificate)},
                               {"checked", certificate.elementsChecked},
                               {"notChecked", certificate.elementsNotChecked},
                               {"notCheckedWhy", certificate.notCheckedWhy}};
    return data;
}

}  // namespace kit
