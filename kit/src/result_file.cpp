#include "result_file.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "file_text.h"
#include "json_document.h"
#include "network_file.h"
#include "network_writer.h"
#include "number_text.h"

namespace kit
{

namespace
{

using Json = nlohmann::json;
using OrderedJson = nlohmann::ordered_json;

constexpr int kFormatVersion = 1;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What a check of the same numbers on another machine may differ by [-]: other rounding of logarithms and
/// powers.
constexpr double kRoundingOfMeasure = 1e-9;
constexpr double kRoundingOfWorst = 1e-3;

/// A column of a result: its key and where it is.
struct ColumnKey {
    const char* key;
    std::vector<double> Solution::*values;
};

const std::array<ColumnKey, 4> kNodeColumns{{{"pressure", &Solution::pressure},
                                             {"head", &Solution::head},
                                             {"temperature", &Solution::nodeTemperature},
                                             {"external_mass_flow", &Solution::externalMassFlow}}};

const std::array<ColumnKey, 6> kElementColumns{{{"mass_flow", &Solution::massFlow},
                                                {"volume_flow", &Solution::volumeFlow},
                                                {"velocity", &Solution::velocity},
                                                {"reynolds", &Solution::reynolds},
                                                {"pressure_difference", &Solution::pressureDifference},
                                                {"temperature", &Solution::elementTemperature}}};

const std::array<std::pair<Outcome, const char*>, 3> kOutcomes{{{Outcome::converged, "converged"},
                                                                {Outcome::notConverged, "not_converged"},
                                                                {Outcome::cancelled, "cancelled"}}};

std::string quoted(const std::string& text)
{
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// 0 without a sign: JSON reads -0 as the whole number 0.
std::string numberOrNull(double value)
{
    if (!std::isfinite(value)) return "null";
    return value == 0.0 ? "0" : exactNumber(value);
}

/// A number as JSON; null when it is not finite.
OrderedJson jsonNumber(double value)
{
    return std::isfinite(value) ? OrderedJson(value) : OrderedJson(nullptr);
}

void appendColumn(const char* key, const std::vector<double>& values, std::string& text)
{
    text += ",\n    ";
    text += quoted(key) + ": [";
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) text += ", ";
        text += numberOrNull(values[i]);
    }
    text += ']';
}

template <class Object, std::size_t count>
void appendTable(const char* key, const std::vector<Object>& objects,
                 const std::array<ColumnKey, count>& columns, const Solution& solution, std::string& text)
{
    text += "  " + quoted(key) + ": {\n    \"names\": [";
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (i > 0) text += ", ";
        text += quoted(objects[i].name);
    }
    text += ']';
    for (const ColumnKey& column : columns)
        appendColumn(column.key, solution.*column.values, text);
    text += "\n  },\n";
}

std::string withoutLineEnd(std::string text)
{
    while (!text.empty() && text.back() == '\n')
        text.pop_back();
    return text;
}

/// Every line but the first moved to the right.
std::string indented(const std::string& text)
{
    std::string result;
    result.reserve(text.size() + text.size() / 16);
    for (const char c : text) {
        result += c;
        if (c == '\n') result += "  ";
    }
    return result;
}

/// Reads the objects of a result file; every departure from them is a finding.
class ResultReader
{
public:
    ResultReader(const std::string& file, Findings& findings) : m_file(file), m_findings(findings) {}

    void fail(const std::string& pointer, std::string message) const
    {
        Place place;
        place.file = m_file;
        place.pointer = pointer;
        m_findings.add(Code::result_file_invalid, place, std::move(message));
    }

    /// Whether a value is an object that holds these keys and no others.
    bool isObject(const Json& value, const std::string& pointer,
                  std::initializer_list<const char*> keys) const
    {
        return isObject(value, pointer, std::vector<std::string>(keys.begin(), keys.end()));
    }

    bool isObject(const Json& value, const std::string& pointer, const std::vector<std::string>& keys) const
    {
        if (!value.is_object()) {
            fail(pointer, "an object is expected");
            return false;
        }
        bool isGood = true;
        for (const std::string& key : keys) {
            if (value.contains(key)) continue;
            fail(pointer, "the key " + inQuotes(key) + " is missing");
            isGood = false;
        }
        for (const auto& [key, item] : value.items()) {
            if (std::find(keys.begin(), keys.end(), key) != keys.end()) continue;
            fail(pointerTo(pointer, key), "the key is unknown");
            isGood = false;
        }
        return isGood;
    }

    double number(const Json& object, const std::string& pointer, const char* key, double forNull) const
    {
        const Json& value = object.at(key);
        if (value.is_null()) return forNull;
        if (value.is_number()) return value.get<double>();
        fail(pointerTo(pointer, key), "a number is expected");
        return forNull;
    }

    std::size_t count(const Json& object, const std::string& pointer, const char* key) const
    {
        const Json& value = object.at(key);
        if (value.is_number_unsigned()) return value.get<std::size_t>();
        fail(pointerTo(pointer, key), "a whole number of 0 or more is expected");
        return 0;
    }

    int iterations(const Json& root) const
    {
        const std::size_t value = count(root, "", "iterations");
        if (value <= static_cast<std::size_t>(std::numeric_limits<int>::max()))
            return static_cast<int>(value);
        fail("/iterations", "no solve has " + std::to_string(value) + " iterations");
        return 0;
    }

    std::string text(const Json& object, const std::string& pointer, const char* key) const
    {
        const Json& value = object.at(key);
        if (value.is_string()) return value.get<std::string>();
        fail(pointerTo(pointer, key), "a text is expected");
        return "";
    }

    bool boolean(const Json& object, const std::string& pointer, const char* key) const
    {
        const Json& value = object.at(key);
        if (value.is_boolean()) return value.get<bool>();
        fail(pointerTo(pointer, key), "true or false is expected");
        return false;
    }

    template <class Object, std::size_t columnCount>
    void readTable(const Json& value, const std::string& pointer, const std::vector<Object>& objects,
                   const std::array<ColumnKey, columnCount>& columns, Solution& solution) const
    {
        std::vector<std::string> keys{"names"};
        for (const ColumnKey& column : columns)
            keys.emplace_back(column.key);
        if (!isObject(value, pointer, keys)) return;
        const Json& names = value.at("names");
        const bool areSame =
            names.is_array() && names.size() == objects.size() &&
            std::equal(objects.begin(), objects.end(), names.begin(),
                       [](const Object& object, const Json& name) {
                           return name.is_string() && name.get_ref<const std::string&>() == object.name;
                       });
        if (!areSame)
            fail(pointerTo(pointer, "names"), "the names are not those of the network, in its order");
        for (const ColumnKey& column : columns)
            readColumn(value.at(column.key), pointerTo(pointer, column.key), objects.size(),
                       solution.*column.values);
    }

    void readColumn(const Json& value, const std::string& pointer, std::size_t size,
                    std::vector<double>& values) const
    {
        if (!value.is_array() || (!value.empty() && value.size() != size)) {
            fail(pointer, "an array of " + std::to_string(size) + " numbers is expected");
            return;
        }
        values.reserve(value.size());
        for (std::size_t i = 0; i < value.size(); ++i) {
            const Json& item = value[i];
            if (!item.is_number() && !item.is_null())
                fail(pointerTo(pointer, std::to_string(i)), "a number or null is expected");
            values.push_back(item.is_number() ? item.get<double>()
                                              : std::numeric_limits<double>::quiet_NaN());
        }
    }

    FluidValues fluid(const Json& value) const
    {
        const std::string pointer = "/fluid";
        FluidValues fluid;
        if (!isObject(value, pointer,
                      {"name", "temperature", "density", "viscosity", "specific_heat", "conductivity",
                       "viscosity_coefficients"}))
            return fluid;
        fluid.name = text(value, pointer, "name");
        fluid.temperature = number(value, pointer, "temperature", kInfinity);
        fluid.density = number(value, pointer, "density", kInfinity);
        fluid.viscosity = number(value, pointer, "viscosity", kInfinity);
        fluid.specificHeat = number(value, pointer, "specific_heat", kInfinity);
        fluid.conductivity = number(value, pointer, "conductivity", kInfinity);
        std::vector<double> coefficients;
        readColumn(value.at("viscosity_coefficients"), pointerTo(pointer, "viscosity_coefficients"),
                   std::size(fluid.viscosityCoefficients), coefficients);
        std::copy(coefficients.begin(), coefficients.end(), fluid.viscosityCoefficients);
        return fluid;
    }

    Certificate certificate(const Json& value) const
    {
        const std::string pointer = "/certificate";
        Certificate found;
        if (!isObject(value, pointer,
                      {"is_good", "mass_imbalance", "relative_mass_imbalance", "worst_node", "law_mismatch",
                       "relative_law_mismatch", "worst_element", "energy_imbalance",
                       "relative_energy_imbalance", "column_mismatch", "elements_checked",
                       "elements_not_checked", "not_checked_why"}))
            return found;
        found.isGood = boolean(value, pointer, "is_good");
        found.massImbalance = number(value, pointer, "mass_imbalance", kInfinity);
        found.relativeMassImbalance = number(value, pointer, "relative_mass_imbalance", kInfinity);
        found.worstNode = text(value, pointer, "worst_node");
        found.lawMismatch = number(value, pointer, "law_mismatch", kInfinity);
        found.relativeLawMismatch = number(value, pointer, "relative_law_mismatch", kInfinity);
        found.worstElement = text(value, pointer, "worst_element");
        found.columnMismatch = number(value, pointer, "column_mismatch", kInfinity);
        if (!value.at("energy_imbalance").is_null()) {
            found.energyImbalance = number(value, pointer, "energy_imbalance", kInfinity);
            found.relativeEnergyImbalance = number(value, pointer, "relative_energy_imbalance", kInfinity);
        }
        found.elementsChecked = count(value, pointer, "elements_checked");
        found.elementsNotChecked = count(value, pointer, "elements_not_checked");
        found.notCheckedWhy = text(value, pointer, "not_checked_why");
        return found;
    }

    Findings findings(const Json& value) const
    {
        Findings found;
        if (!value.is_array()) {
            fail("/findings", "an array is expected");
            return found;
        }
        for (std::size_t i = 0; i < value.size(); ++i)
            readFinding(value[i], pointerTo("/findings", std::to_string(i)), found);
        return found;
    }

    Outcome outcome(const Json& root) const
    {
        const std::string name = text(root, "", "outcome");
        for (const auto& [outcome, known] : kOutcomes) {
            if (name == known) return outcome;
        }
        fail("/outcome", "the outcome " + inQuotes(name) + " is unknown");
        return Outcome::notConverged;
    }

private:
    void readFinding(const Json& value, const std::string& pointer, Findings& findings) const
    {
        if (!value.is_object() || !value.contains("code") || !value.contains("message") ||
            !value.contains("remedy")) {
            fail(pointer, "an object with code, message and remedy is expected");
            return;
        }
        const auto code = findCode(text(value, pointer, "code"));
        if (!code) {
            fail(pointerTo(pointer, "code"), "the code is unknown");
            return;
        }
        Finding finding;
        finding.code = *code;
        finding.severity = rowOf(*code).severity;
        finding.message = text(value, pointer, "message");
        finding.remedy = text(value, pointer, "remedy");
        if (value.contains("file")) finding.place.file = text(value, pointer, "file");
        if (value.contains("line")) finding.place.line = count(value, pointer, "line");
        if (value.contains("column")) finding.place.column = count(value, pointer, "column");
        if (value.contains("pointer")) finding.place.pointer = text(value, pointer, "pointer");
        if (value.contains("object")) finding.place.object = text(value, pointer, "object");
        readObjects(value, pointer, finding);
        readNumbers(value, pointer, finding);
        findings.add(std::move(finding));
    }

    void readObjects(const Json& value, const std::string& pointer, Finding& finding) const
    {
        const auto found = value.find("objects");
        if (found == value.end()) return;
        const bool areTexts =
            found->is_array() &&
            std::all_of(found->begin(), found->end(), [](const Json& item) { return item.is_string(); });
        if (!areTexts) return fail(pointerTo(pointer, "objects"), "an array of texts is expected");
        for (const Json& object : *found)
            finding.objects.push_back(object.get<std::string>());
    }

    void readNumbers(const Json& value, const std::string& pointer, Finding& finding) const
    {
        const auto found = value.find("numbers");
        if (found == value.end()) return;
        const std::string inside = pointerTo(pointer, "numbers");
        if (!found->is_array()) return fail(inside, "an array of objects is expected");
        for (const Json& item : *found) {
            if (!isObject(item, inside, {"name", "value", "unit"})) return;
            finding.numbers.push_back(
                {text(item, inside, "name"),
                 number(item, inside, "value", std::numeric_limits<double>::quiet_NaN()),
                 text(item, inside, "unit")});
        }
    }

    const std::string& m_file;
    Findings& m_findings;
};

/// The version of the format, before anything else is read.
bool isKnownVersion(const Json& root, const std::string& file, Findings& findings)
{
    const ResultReader reader(file, findings);
    const bool isObject = root.is_object();
    if (isObject && root.contains("tavell") && !root.contains("tavell_result")) {
        findings.add(Code::other_kind_of_file, Place{file, 0, 0, "", ""},
                     "the file is a network file, no result file",
                     "solve the network and let its result be written: \"tavell solve " + oneLine(file) +
                         " --result NAME.result.json\"");
        return false;
    }
    if (!isObject || !root.contains("tavell_result")) {
        reader.fail("", "the key \"tavell_result\" is missing");
        return false;
    }
    const Json& version = root.at("tavell_result");
    if (version == kFormatVersion) return true;
    Place place;
    place.file = file;
    place.pointer = "/tavell_result";
    findings.add(Code::result_version_unknown, place,
                 "the version of the format is " +
                     version.dump(-1, ' ', true, Json::error_handler_t::replace) + ", not 1");
    return false;
}

bool differ(double a, double b, double tolerance)
{
    if (std::isinf(a) || std::isinf(b)) return a != b;
    return !(std::fabs(a - b) <= tolerance);
}

/// Compares the values of a certificate with those of the same check made again.
class CertificateComparison
{
public:
    CertificateComparison(const Certificate& stated, const Certificate& again)
    {
        compareWords("is_good", stated.isGood ? "true" : "false", again.isGood ? "true" : "false");
        compareWords("elements_checked", std::to_string(stated.elementsChecked),
                     std::to_string(again.elementsChecked));
        compareWords("elements_not_checked", std::to_string(stated.elementsNotChecked),
                     std::to_string(again.elementsNotChecked));
        compareMeasure("mass_imbalance", {stated.massImbalance, stated.relativeMassImbalance},
                       {again.massImbalance, again.relativeMassImbalance});
        compareMeasure("law_mismatch", {stated.lawMismatch, stated.relativeLawMismatch},
                       {again.lawMismatch, again.relativeLawMismatch});
        if (differ(stated.columnMismatch, again.columnMismatch, kRoundingOfMeasure))
            add("column_mismatch", stated.columnMismatch, again.columnMismatch);
        if (stated.energyImbalance.has_value() != again.energyImbalance.has_value())
            compareWords("energy_imbalance", wordOf(stated.energyImbalance), wordOf(again.energyImbalance));
        else if (stated.energyImbalance)
            compareMeasure("energy_imbalance", {*stated.energyImbalance, *stated.relativeEnergyImbalance},
                           {*again.energyImbalance, *again.relativeEnergyImbalance});
    }

    bool areAlike() const { return m_text.empty(); }
    /// "mass_imbalance is 1e-3 in the file and 2e-9 by its numbers; ...".
    const std::string& text() const { return m_text; }

private:
    /// A worst value and the same over the measure of the network.
    struct Measure {
        double value;
        double relative;
    };

    static std::string wordOf(const std::optional<double>& value)
    {
        return value ? shortNumber(*value) : "null";
    }

    static double roundingOf(double a, double b)
    {
        return kRoundingOfWorst * std::max(std::fabs(a), std::fabs(b));
    }

    void compareWords(const char* key, const std::string& stated, const std::string& again)
    {
        if (stated == again) return;
        m_text += (m_text.empty() ? "" : "; ") + inQuotes(key) + " is " + stated + " in the file and " +
                  again + " by its numbers";
    }

    /// Written with as many digits as it takes to tell them apart.
    void add(const std::string& key, double stated, double again)
    {
        const bool looksEqual = shortNumber(stated) == shortNumber(again);
        compareWords(key.c_str(), looksEqual ? exactNumber(stated) : shortNumber(stated),
                     looksEqual ? exactNumber(again) : shortNumber(again));
    }

    /// Worst values are compared only where they are more than the rounding of the measure.
    void compareMeasure(const std::string& key, Measure stated, Measure again)
    {
        if (differ(stated.relative, again.relative,
                   kRoundingOfMeasure + roundingOf(stated.relative, again.relative)))
            add("relative_" + key, stated.relative, again.relative);
        else if (std::max(stated.relative, again.relative) > 1e3 * kRoundingOfMeasure &&
                 differ(stated.value, again.value, roundingOf(stated.value, again.value)))
            add(key, stated.value, again.value);
    }

    std::string m_text;
};

}  // namespace

std::string outcomeName(Outcome outcome)
{
    for (const auto& [known, name] : kOutcomes) {
        if (known == outcome) return name;
    }
    return "";
}

OrderedJson fluidValuesObject(const FluidValues& fluid)
{
    OrderedJson coefficients = OrderedJson::array();
    for (const double coefficient : fluid.viscosityCoefficients)
        coefficients.push_back(jsonNumber(coefficient));
    return {{"name", fluid.name},
            {"temperature", jsonNumber(fluid.temperature)},
            {"density", jsonNumber(fluid.density)},
            {"viscosity", jsonNumber(fluid.viscosity)},
            {"specific_heat", jsonNumber(fluid.specificHeat)},
            {"conductivity", jsonNumber(fluid.conductivity)},
            {"viscosity_coefficients", coefficients}};
}

OrderedJson certificateObject(const Certificate& certificate)
{
    const auto optional = [](const std::optional<double>& value) {
        return value ? jsonNumber(*value) : OrderedJson(nullptr);
    };
    return {{"is_good", certificate.isGood},
            {"mass_imbalance", jsonNumber(certificate.massImbalance)},
            {"relative_mass_imbalance", jsonNumber(certificate.relativeMassImbalance)},
            {"worst_node", certificate.worstNode},
            {"law_mismatch", jsonNumber(certificate.lawMismatch)},
            {"relative_law_mismatch", jsonNumber(certificate.relativeLawMismatch)},
            {"worst_element", certificate.worstElement},
            {"energy_imbalance", optional(certificate.energyImbalance)},
            {"relative_energy_imbalance", optional(certificate.relativeEnergyImbalance)},
            {"column_mismatch", jsonNumber(certificate.columnMismatch)},
            {"elements_checked", certificate.elementsChecked},
            {"elements_not_checked", certificate.elementsNotChecked},
            {"not_checked_why", certificate.notCheckedWhy}};
}

std::string resultFileText(const Network& network, const Solution& solution, const Certificate& certificate)
{
    const auto dumped = [](const OrderedJson& value) {
        return indented(value.dump(2, ' ', false, OrderedJson::error_handler_t::replace));
    };
    std::string text = "{\n  \"tavell_result\": " + std::to_string(kFormatVersion);
    text += ",\n  \"version\": " + quoted(certificate.version);
    text += ",\n  \"model_hash\": " + quoted(certificate.modelHash);
    text += ",\n  \"outcome\": " + quoted(outcomeName(solution.outcome));
    text += ",\n  \"iterations\": " + std::to_string(solution.iterations);
    text += std::string(",\n  \"temperatures_solved\": ") + (solution.hasTemperatures ? "true" : "false");
    text += ",\n  \"fluid\": " + dumped(fluidValuesObject(solution.fluid)) + ",\n";
    appendTable("nodes", network.nodes, kNodeColumns, solution, text);
    appendTable("elements", network.elements, kElementColumns, solution, text);
    text += "  \"certificate\": " + dumped(certificateObject(certificate));
    text += ",\n  \"findings\": " + indented(withoutLineEnd(solution.findings.json()));
    text += ",\n  \"network\": " + indented(withoutLineEnd(networkText(network)));
    return text + "\n}\n";
}

std::optional<ResultFile> readResultText(const std::string& text, const std::string& file, Findings& findings)
{
    Findings found;
    const auto document = parseJson(text, file, found);
    if (document && isKnownVersion(document->root, file, found)) {
        const Json& root = document->root;
        const ResultReader reader(file, found);
        ResultFile result;
        if (reader.isObject(root, "",
                            {"tavell_result", "version", "model_hash", "outcome", "iterations",
                             "temperatures_solved", "fluid", "nodes", "elements", "certificate", "findings",
                             "network"})) {
            const auto network = readNetworkText(root.at("network").dump(), file, found);
            if (network) {
                result.network = *network;
                Solution& solution = result.solution;
                solution.outcome = reader.outcome(root);
                solution.iterations = reader.iterations(root);
                solution.hasTemperatures = reader.boolean(root, "", "temperatures_solved");
                solution.fluid = reader.fluid(root.at("fluid"));
                reader.readTable(root.at("nodes"), "/nodes", network->nodes, kNodeColumns, solution);
                reader.readTable(root.at("elements"), "/elements", network->elements, kElementColumns,
                                 solution);
                solution.findings = reader.findings(root.at("findings"));
                result.certificate = reader.certificate(root.at("certificate"));
                result.certificate.version = reader.text(root, "", "version");
                result.certificate.modelHash = reader.text(root, "", "model_hash");
            }
        }
        if (!found.hasErrors()) {
            findings.append(found);
            return result;
        }
    }
    findings.append(found);
    return std::nullopt;
}

std::optional<ResultFile> readResultFile(const std::string& path, Findings& findings)
{
    const auto text = readTextFile(path, Encoding::utf8, findings);
    if (!text) return std::nullopt;
    return readResultText(*text, path, findings);
}

bool verifyResult(const ResultFile& result, Findings& findings)
{
    Place place;
    place.file = result.network.file;
    const Certificate& stated = result.certificate;
    const Certificate again = certify(result.network, result.solution);
    bool isVerified = true;
    if (again.modelHash != stated.modelHash) {
        findings.add(Code::hash_differs, place,
                     "the hash of the network is " + again.modelHash + ", that of the result " +
                         oneLine(stated.modelHash));
        isVerified = false;
    }
    if (again.version != stated.version)
        findings.add(Code::result_of_other_program_version, place,
                     "the result was made by version " + oneLine(stated.version) + ", this is version " +
                         again.version);
    const CertificateComparison comparison(stated, again);
    if (!comparison.areAlike()) {
        findings.add(Code::certificate_differs, place, comparison.text());
        isVerified = false;
    }
    if (again.isGood) return isVerified;
    Finding& bad =
        findings.add(Code::certificate_bad, place,
                     result.solution.hasResults()
                         ? "the relative mass imbalance is " + shortNumber(again.relativeMassImbalance) +
                               ", the relative law mismatch " + shortNumber(again.relativeLawMismatch)
                         : "the file holds no results");
    if (!again.worstNode.empty()) bad.objects.push_back("node " + again.worstNode);
    if (!again.worstElement.empty()) bad.objects.push_back("element " + again.worstElement);
    return false;
}

}  // namespace kit
