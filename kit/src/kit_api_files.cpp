// Reports, pictures, exports, fluids and files of the C interface.
#include "kit_api.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "doctor.h"
#include "file_text.h"
#include "fluids.h"
#include "geojson.h"
#include "graphml.h"
#include "kit_api_options.h"
#include "kit_api_units.h"
#include "png_picture.h"
#include "report_page.h"
#include "svg_picture.h"
#include "vtu.h"

using kit::guarded;
using kit::required;

namespace kit
{

namespace
{

constexpr double kSmallestWidth = 200.0;   // [px]
constexpr double kLargestWidth = 20000.0;  // [px]
constexpr double kSmallestScale = 0.1;     // [-]
constexpr double kLargestScale = 10.0;     // [-]
constexpr double kUsualScale = 2.0;        // [-], sharp on screens and in print

// The search for the smallest part that fails, for a report.
constexpr std::size_t kMostSearched = 5000;  // elements
constexpr int kMostSolves = 60;

const std::vector<std::string> kViews{"plan", "elevation", "isometric"};

std::optional<View> viewOf(Options& options)
{
    if (const auto view = options.choice("view", kViews)) return findView(kViews[*view]);
    return std::nullopt;
}

std::optional<PictureQuantity> quantityOf(Options& options)
{
    std::vector<std::string> names{"none"};
    for (const PictureColumn& column : pictureColumns())
        names.emplace_back(column.name);
    if (const auto quantity = options.choice("quantity", names)) return findPictureQuantity(names[*quantity]);
    return std::nullopt;
}

UnitSet requestedUnits(Options& options, const Network& network)
{
    const auto units = options.text("units");
    return displayUnits(units ? units->c_str() : nullptr, &network);
}

/// The ending of a path in lower case, with its point; "" when there is none.
std::string endingOf(std::string_view path)
{
    const std::size_t point = path.rfind('.');
    if (point == std::string_view::npos) return {};
    std::string ending(path.substr(point));
    for (char& c : ending) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return ending;
}

[[noreturn]] void refuseEnding(const char* path, const std::string& endings)
{
    Place place;
    place.file = path;
    throw Refusal{place, "the ending of the name says no format", "end it with " + endings};
}

[[noreturn]] void refuseOtherNetwork(const std::string& difference)
{
    refuse("the result is that of another network: " + difference, "pass the network that was solved");
}

/// Refuses lists of another length or with other names.
template <class Object>
void requireSameNames(const std::vector<Object>& solved, const std::vector<Object>& given,
                      const std::string& what)
{
    if (solved.size() != given.size())
        refuseOtherNetwork("it has " + std::to_string(solved.size()) + ' ' + what + "s, the one given has " +
                           std::to_string(given.size()));
    for (std::size_t i = 0; i < solved.size(); ++i) {
        if (solved[i].name != given[i].name)
            refuseOtherNetwork(what + " number " + std::to_string(i + 1) + " is " + inQuotes(solved[i].name) +
                               " there and " + inQuotes(given[i].name) + " in the one given");
    }
}

/// Says so when a picture was to be coloured by a quantity that there are no values of.
void warnOfNoColours(const Solution* solution, const PictureOptions& options, const char* path,
                     Findings& findings)
{
    const PictureQuantity quantity = options.quantity.value_or(PictureQuantity::none);
    if (quantity == PictureQuantity::none) return;
    if (solution != nullptr && !pictureValues(*solution, quantity, options.units).empty()) return;
    Place place;
    place.file = path;
    if (solution == nullptr || !solution->hasResults())
        findings.add(Code::picture_without_values, place,
                     "there are no results, so the picture is not coloured",
                     "give a result of a solve that converged");
    else if (quantity == PictureQuantity::temperature)
        findings.add(Code::picture_without_values, place,
                     "the result has no temperatures, so the picture is not coloured",
                     "switch \"temperatures\" on in the settings");
    else
        findings.add(Code::picture_without_values, place,
                     "the result has no " + std::string(columnOf(quantity).name) +
                         ", so the picture is not coloured");
}

/// Adds the smallest part of a network that fails; false when the caller stopped the search. The largest
/// networks are not searched: each of the solves takes too long.
bool addFailingPart(const Network& network, ProgressBridge& bridge, Findings& findings)
{
    if (network.elements.size() > kMostSearched) return true;
    const auto part = smallestFailingPart(network, kMostSolves, bridge.progress());
    if (bridge.isStopped) return false;
    if (part) findings.add(findingOf(network, *part));
    return true;
}

/// The solution to be drawn or exported with a network; null when there is none. Refuses that of a network with
/// other nodes or elements; their values may be those of another scenario.
const Solution* solutionFor(const Network& network, const tvkResult* result)
{
    if (result == nullptr) return nullptr;
    const Network& solved = *result->network;
    if (&solved == &network) return result->solution.get();
    requireSameNames(solved.nodes, network.nodes, "node");
    requireSameNames(solved.elements, network.elements, "element");
    for (std::size_t i = 0; i < network.elements.size(); ++i) {
        const Element& element = network.elements[i];
        if (solved.elements[i].from != element.from || solved.elements[i].to != element.to)
            refuseOtherNetwork("element " + inQuotes(element.name) + " joins other nodes there");
    }
    return result->solution.get();
}

}  // namespace

}  // namespace kit

tvkStatus tvkWriteReport(const tvkResult* result, const char* path, const char* options, tvkProgress progress,
                         void* user, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const tvkResult& source = required(result, "result");
        kit::Options given(options);
        kit::ReportOptions report;
        report.units = kit::requestedUnits(given, *source.network);
        report.scenario = source.scenario;
        given.close();
        if (!kit::hasReportPage()) {
            list.add(kit::Code::report_not_built, {}, "this build of the kit has no report page");
            return TVK_BAD_INPUT;
        }
        kit::Findings doctor = kit::examine(*source.network);  // the page adds those of the solve
        doctor.append(kit::diagnose(*source.network, *source.solution));
        kit::ProgressBridge bridge{progress, user};
        if (source.solution->outcome == kit::Outcome::notConverged &&
            !kit::addFailingPart(*source.network, bridge, doctor)) {
            list.add(kit::Code::solve_cancelled, {},
                     "the search for the smallest part that fails was stopped; no report was written");
            return TVK_CANCELLED;
        }
        const std::string page =
            kit::reportPage(*source.network, *source.solution, source.certificate(), doctor, report);
        return kit::writeFile(&required(path, "path"), page, list) ? TVK_OK : TVK_BAD_INPUT;
    });
}

tvkStatus tvkWritePicture(const tvkNetwork* network, const tvkResult* result, const char* path,
                          const char* options, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const kit::Network& drawn = required(network, "network").get();
        const std::string ending = kit::endingOf(&required(path, "path"));
        if (ending != ".svg" && ending != ".png") kit::refuseEnding(path, ".svg or .png");
        kit::Options given(options);
        kit::PictureOptions picture;
        picture.units = kit::requestedUnits(given, drawn);
        picture.view = kit::viewOf(given);
        picture.quantity = kit::quantityOf(given);
        picture.width =
            given.number("width", kit::kSmallestWidth, kit::kLargestWidth).value_or(picture.width);
        const double scale =
            given.number("scale", kit::kSmallestScale, kit::kLargestScale).value_or(kit::kUsualScale);
        given.close();
        const kit::Solution* solution = kit::solutionFor(drawn, result);
        std::string text = kit::svgPicture(drawn, solution, picture);
        if (ending == ".png") {
            std::string png;
            if (!kit::writePng(text, scale, png, list)) return TVK_BAD_INPUT;
            text = std::move(png);
        }
        kit::warnOfNoColours(solution, picture, path, list);
        return kit::writeFile(path, text, list) ? TVK_OK : TVK_BAD_INPUT;
    });
}

tvkStatus tvkWriteExport(const tvkNetwork* network, const tvkResult* result, const char* path,
                         tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const kit::Network& exported = required(network, "network").get();
        const kit::Solution* solution = kit::solutionFor(exported, result);
        const std::string ending = kit::endingOf(&required(path, "path"));
        std::string text;
        if (ending == ".vtu")
            text = kit::vtuText(exported, solution);
        else if (ending == ".geojson")
            text = kit::geojsonText(exported, solution);
        else if (ending == ".graphml")
            text = kit::graphmlText(exported, solution);
        else
            kit::refuseEnding(path, ".vtu, .geojson or .graphml");
        return kit::writeFile(path, text, list) ? TVK_OK : TVK_BAD_INPUT;
    });
}

tvkStatus tvkFluids(const char* format, const char* units, char** text, tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        const bool isJson = kit::choiceOf(format, {"text", "json"}, "format") == 1;
        const kit::UnitSet unitSet = kit::displayUnits(units, nullptr);
        return kit::giveText(text, isJson ? kit::fluidTableJson() : kit::fluidTable(unitSet));
    });
}

tvkStatus tvkFluid(const char* name, double temperature, double concentration, double values[4],
                   tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        required(values, "values");
        std::optional<double> share;
        if (!std::isnan(concentration)) share = concentration;
        std::string error;
        const auto fluid = kit::fluidValues(&required(name, "name"), temperature, share, error);
        if (!fluid) kit::refuse(error, "correct the fluid, its temperature or its concentration");
        values[0] = fluid->density;
        values[1] = fluid->viscosity;
        values[2] = fluid->specificHeat;
        values[3] = fluid->conductivity;
        return TVK_OK;
    });
}

tvkStatus tvkParseQuantity(const char* text, const char* quantity, double* value, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        const auto known = kit::findQuantity(&required(quantity, "quantity"));
        if (!known)
            kit::refuse("there is no quantity " + kit::inQuotes(quantity), "give one such as \"length\"");
        std::string error;
        const auto number = kit::parseQuantity(&required(text, "text"), *known, error);
        if (!number) kit::refuse(error, "write a number with a unit");
        required(value, "value") = *number;
        return TVK_OK;
    });
}

tvkStatus tvkCheckUnits(const char* units, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        kit::displayUnits(units, nullptr);
        return TVK_OK;
    });
}

tvkStatus tvkWriteFile(const char* path, const char* text, size_t size, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const std::string_view content = size == 0 ? "" : std::string_view(&required(text, "text"), size);
        return kit::writeFile(&required(path, "path"), content, list) ? TVK_OK : TVK_BAD_INPUT;
    });
}
