// Solving, results and checks of the C interface.
#include "kit_api.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>

#include <nlohmann/json.hpp>

#include "doctor.h"
#include "file_text.h"
#include "kit_api_options.h"
#include "kit_api_units.h"
#include "result_tables.h"
#include "scenario.h"

using kit::guarded;
using kit::required;

namespace kit
{

namespace
{

/// A quantity that a solution has, by its name.
struct Column {
    std::string_view name;
    std::vector<double> Solution::*values;
};

const Column kNodeColumns[] = {
    {"pressure", &Solution::pressure},
    {"head", &Solution::head},
    {"temperature", &Solution::nodeTemperature},
    {"external_mass_flow", &Solution::externalMassFlow},
};

const Column kElementColumns[] = {
    {"mass_flow", &Solution::massFlow},
    {"volume_flow", &Solution::volumeFlow},
    {"velocity", &Solution::velocity},
    {"reynolds", &Solution::reynolds},
    {"pressure_difference", &Solution::pressureDifference},
    {"temperature", &Solution::elementTemperature},
};

struct LossColumn {
    std::string_view name;
    double LossParts::*value;
};

const LossColumn kLossColumns[] = {
    {"friction", &LossParts::friction}, {"minor", &LossParts::minor}, {"height", &LossParts::height},
    {"pump", &LossParts::pump},         {"other", &LossParts::other},
};

template <std::size_t N>
const std::vector<double>* columnOf(const Solution& solution, const Column (&columns)[N],
                                    std::string_view name)
{
    for (const Column& column : columns) {
        if (column.name != name) continue;
        const std::vector<double>& values = solution.*column.values;
        return values.empty() ? nullptr : &values;
    }
    return nullptr;
}

tvkStatus statusOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::converged:
        return TVK_OK;
    case Outcome::cancelled:
        return TVK_CANCELLED;
    case Outcome::notConverged:
        break;
    }
    return TVK_NOT_CONVERGED;
}

struct SolveOptions {
    std::optional<std::string> scenario;
    std::optional<bool> temperatures;

    explicit SolveOptions(const char* text)
    {
        Options options(text);
        scenario = options.text("scenario");
        temperatures = options.flag("temperatures");
        options.close();
    }
};

/// The network that the options ask for; null, and findings, when there is none.
std::shared_ptr<const Network> networkToSolve(const tvkNetwork& handle, const SolveOptions& options,
                                              Findings& list)
{
    auto network = handle.checked(list);
    if (!network) return nullptr;
    if (options.scenario) {
        auto patched = withScenario(*network, *options.scenario, list);
        if (!patched) return nullptr;
        network = std::make_shared<const Network>(std::move(*patched));
    }
    if (options.temperatures && *options.temperatures != network->settings.solvesTemperatures) {
        auto changed = std::make_shared<Network>(*network);
        changed->settings.solvesTemperatures = *options.temperatures;
        network = std::move(changed);
    }
    return network;
}

/// Whether the network was refused before a solve of it began: a solve that failed says so.
bool isRefused(const Solution& solution)
{
    if (solution.hasResults() || solution.outcome != Outcome::notConverged) return false;
    const auto& list = solution.findings.list();
    return std::none_of(list.begin(), list.end(),
                        [](const Finding& finding) { return finding.code == Code::not_converged; });
}

const std::vector<double>& requiredValues(const std::vector<double>* values, const tvkResult& result,
                                          const char* quantity)
{
    if (!result.solution->hasResults()) refuse("the result has no values: the solve did not converge", {});
    if (values == nullptr)
        refuse("there is no quantity " + inQuotes(quantity), "give one that tavellkit.h names");
    return *values;
}

tvkStatus copyValues(const std::vector<double>& values, double* target, size_t capacity)
{
    if (values.size() > capacity)
        refuse("the array has room for " + std::to_string(capacity) + " values of " +
                   std::to_string(values.size()),
               "pass a larger one");
    if (!values.empty()) std::copy(values.begin(), values.end(), &required(target, "values"));
    return TVK_OK;
}

// ---- the exchange form: the library's own export, numbers of six significant digits

void appendNumber(std::string& text, double value)
{
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
    text += ',';
    text.append(digits, end);
}

std::string exchangeCsv(const Solution& solution)
{
    std::string text =
        "\"element\",\"Re [-]\",\"velocity [m/s]\",\"volume flow [m3/s]\",\"mass flow [kg/s]\"\n";
    const auto orZero = [](double value) { return std::isnan(value) ? 0.0 : value; };
    for (std::size_t i = 0; i < solution.massFlow.size(); ++i) {
        text += std::to_string(i + 1);
        appendNumber(text, orZero(solution.reynolds[i]));
        appendNumber(text, orZero(solution.velocity[i]));
        appendNumber(text, solution.volumeFlow[i]);
        appendNumber(text, solution.massFlow[i]);
        text += '\n';
    }
    text += "\"node\",\"pressure [Pa]\",\"temperature [K]\"\n";
    for (std::size_t i = 0; i < solution.pressure.size(); ++i) {
        text += std::to_string(i + 1);
        appendNumber(text, solution.pressure[i]);
        appendNumber(text, i < solution.nodeTemperature.size() ? solution.nodeTemperature[i]
                                                               : solution.fluid.temperature);
        text += '\n';
    }
    return text;
}

}  // namespace

}  // namespace kit

const kit::Certificate& tvkResult::certificate() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_certificate) m_certificate = kit::certify(*network, *solution);
    return *m_certificate;
}

const std::vector<double>* tvkResult::nodeValues(std::string_view quantity) const
{
    if (!solution->hasResults()) return nullptr;
    if (quantity != "mass_residual") return kit::columnOf(*solution, kit::kNodeColumns, quantity);
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_derived.find(quantity);
    if (found != m_derived.end()) return &found->second;
    return &m_derived.emplace(quantity, kit::massResiduals(*network, *solution)).first->second;
}

const std::vector<double>* tvkResult::elementValues(std::string_view quantity) const
{
    if (!solution->hasResults()) return nullptr;
    if (const auto* values = kit::columnOf(*solution, kit::kElementColumns, quantity)) return values;
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_derived.find(quantity);
    if (found != m_derived.end()) return &found->second;
    if (quantity == "law_mismatch")
        return &m_derived.emplace(quantity, kit::lawMismatches(*network, *solution)).first->second;
    return lossValues(quantity);
}

const std::vector<double>* tvkResult::lossValues(std::string_view quantity) const
{
    const auto column = std::find_if(std::begin(kit::kLossColumns), std::end(kit::kLossColumns),
                                     [&](const kit::LossColumn& each) { return each.name == quantity; });
    if (column == std::end(kit::kLossColumns)) return nullptr;
    const std::vector<kit::LossParts> parts = kit::lossParts(*network, *solution);
    std::vector<double> values(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i)
        values[i] = parts[i].*column->value;
    return &m_derived.emplace(quantity, std::move(values)).first->second;
}

tvkStatus tvkSolve(const tvkNetwork* network, const char* options, tvkProgress progress, void* user,
                   tvkResult** result, tvkFindings* findings)
{
    if (result != nullptr) *result = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(result, "result");
        const kit::SolveOptions given(options);
        const auto solved = kit::networkToSolve(required(network, "network"), given, list);
        if (!solved) return TVK_BAD_INPUT;
        kit::ProgressBridge bridge{progress, user};
        auto solution = std::make_shared<const kit::Solution>(kit::solveNetwork(*solved, bridge.progress()));
        list.append(solution->findings);
        if (kit::isRefused(*solution)) return TVK_BAD_INPUT;
        auto made = std::make_unique<tvkResult>(solved, solution);
        made->scenario = given.scenario.value_or("");
        *result = made.release();
        return kit::statusOf(solution->outcome);
    });
}

void tvkFreeResult(tvkResult* result)
{
    delete result;
}

int tvkResultOutcome(const tvkResult* result)
{
    return result == nullptr ? TVK_BAD_INPUT : kit::statusOf(result->solution->outcome);
}

int tvkResultIterations(const tvkResult* result)
{
    return result == nullptr ? 0 : result->solution->iterations;
}

int tvkResultHasValues(const tvkResult* result)
{
    return result != nullptr && result->solution->hasResults() ? 1 : 0;
}

tvkStatus tvkResultNetwork(const tvkResult* result, tvkNetwork** network, tvkFindings* findings)
{
    if (network != nullptr) *network = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        required(network, "network") = new tvkNetwork(required(result, "result").network);
        return TVK_OK;
    });
}

const double* tvkNodeResults(const tvkResult* result, const char* quantity)
{
    if (result == nullptr || quantity == nullptr) return nullptr;
    return kit::guardedValue<const double*>(nullptr, [&] {
        const auto* values = result->nodeValues(quantity);
        return values == nullptr ? nullptr : values->data();
    });
}

const double* tvkElementResults(const tvkResult* result, const char* quantity)
{
    if (result == nullptr || quantity == nullptr) return nullptr;
    return kit::guardedValue<const double*>(nullptr, [&] {
        const auto* values = result->elementValues(quantity);
        return values == nullptr ? nullptr : values->data();
    });
}

tvkStatus tvkCopyNodeResults(const tvkResult* result, const char* quantity, double* values, size_t capacity,
                             tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        const tvkResult& source = required(result, "result");
        const auto* found = source.nodeValues(&required(quantity, "quantity"));
        return kit::copyValues(kit::requiredValues(found, source, quantity), values, capacity);
    });
}

tvkStatus tvkCopyElementResults(const tvkResult* result, const char* quantity, double* values,
                                size_t capacity, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings&) {
        const tvkResult& source = required(result, "result");
        const auto* found = source.elementValues(&required(quantity, "quantity"));
        return kit::copyValues(kit::requiredValues(found, source, quantity), values, capacity);
    });
}

tvkStatus tvkCertificate(const tvkResult* result, const char* format, char** text, tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        const kit::Certificate& certificate = required(result, "result").certificate();
        const bool isJson = kit::choiceOf(format, {"text", "json"}, "format") == 1;
        return kit::giveText(text, isJson ? kit::certificateObject(certificate).dump(2) + "\n"
                                          : kit::certificateText(certificate));
    });
}

int tvkCertificateIsGood(const tvkResult* result)
{
    if (result == nullptr) return 0;
    return kit::guardedValue(0, [&] { return result->certificate().isGood ? 1 : 0; });
}

tvkStatus tvkResultTables(const tvkResult* result, const char* format, const char* units, char** text,
                          tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        const tvkResult& source = required(result, "result");
        const std::size_t choice = kit::choiceOf(format, {"text", "csv", "json"}, "format");
        const kit::UnitSet unitSet = kit::displayUnits(units, source.network.get());
        static const kit::TableFormat kFormats[] = {kit::TableFormat::text, kit::TableFormat::csv,
                                                    kit::TableFormat::json};
        return kit::giveText(text, kit::resultTables(*source.network, *source.solution, source.certificate(),
                                                     kFormats[choice], unitSet));
    });
}

tvkStatus tvkResultExchangeCsv(const tvkResult* result, char** text, tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        return kit::giveText(text, kit::exchangeCsv(*required(result, "result").solution));
    });
}

tvkStatus tvkResultText(const tvkResult* result, char** text, tvkFindings* findings)
{
    if (text != nullptr) *text = nullptr;
    return guarded(findings, [&](kit::Findings&) {
        const tvkResult& source = required(result, "result");
        return kit::giveText(text,
                             kit::resultFileText(*source.network, *source.solution, source.certificate()));
    });
}

tvkStatus tvkWriteResult(const tvkResult* result, const char* path, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const tvkResult& source = required(result, "result");
        const std::string text = kit::resultFileText(*source.network, *source.solution, source.certificate());
        return kit::writeFile(&required(path, "path"), text, list) ? TVK_OK : TVK_BAD_INPUT;
    });
}

tvkStatus tvkReadResult(const char* path, tvkResult** result, tvkFindings* findings)
{
    if (result != nullptr) *result = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(result, "result");
        auto read = kit::readResultFile(&required(path, "path"), list);
        if (!read) return TVK_BAD_INPUT;
        const auto file = std::make_shared<const kit::ResultFile>(std::move(*read));
        auto made = std::make_unique<tvkResult>(std::shared_ptr<const kit::Network>(file, &file->network),
                                                std::shared_ptr<const kit::Solution>(file, &file->solution));
        made->file = file;
        *result = made.release();
        return TVK_OK;
    });
}

tvkStatus tvkExamine(const tvkNetwork* network, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        std::optional<kit::Network> flawed;
        kit::Findings found;
        const auto examined = required(network, "network").checked(found, &flawed);
        list.append(found);
        if (flawed) list.append(kit::examineFlawed(*flawed, found));
        if (!examined) return TVK_BAD_INPUT;
        list.append(kit::examine(*examined));
        return TVK_OK;
    });
}

tvkStatus tvkDiagnose(const tvkResult* result, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const tvkResult& source = required(result, "result");
        const kit::Findings found = kit::diagnose(*source.network, *source.solution);
        list.append(kit::withoutRepeats(source.solution->findings, found));
        list.append(found);
        return TVK_OK;
    });
}

tvkStatus tvkSmallestFailingPart(const tvkNetwork* network, int mostSolves, tvkProgress progress, void* user,
                                 size_t* elements, size_t capacity, size_t* count, char** why,
                                 tvkFindings* findings)
{
    if (count != nullptr) *count = 0;
    if (why != nullptr) *why = nullptr;
    return guarded(findings, [&](kit::Findings& list) {
        required(count, "count");
        const auto searched = required(network, "network").checked(list);
        if (!searched) return TVK_BAD_INPUT;
        kit::ProgressBridge bridge{progress, user};
        const auto part = kit::smallestFailingPart(*searched, mostSolves, bridge.progress());
        if (!part) return TVK_OK;
        if (why != nullptr) *why = kit::newText(part->why);
        list.add(kit::findingOf(*searched, *part));
        *count = part->elements.size();
        for (std::size_t i = 0; elements != nullptr && i < std::min(capacity, *count); ++i)
            elements[i] = part->elements[i];
        return TVK_OK;
    });
}

tvkStatus tvkVerify(const tvkResult* result, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        const tvkResult& source = required(result, "result");
        if (source.file) return kit::verifyResult(*source.file, list) ? TVK_OK : TVK_NOT_CONVERGED;
        const kit::ResultFile file{*source.network, *source.solution, source.certificate()};
        return kit::verifyResult(file, list) ? TVK_OK : TVK_NOT_CONVERGED;
    });
}
