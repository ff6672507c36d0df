#include "doctor.h"

#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "doctor_checks.h"
#include "doctor_support.h"

namespace kit
{

namespace
{

using namespace doctor;

/// "3 errors and 1 warning"; "" for none.
std::string complaintText(const Findings& before)
{
    const std::size_t errors = before.countOf(Severity::error);
    const std::size_t warnings = before.countOf(Severity::warning);
    std::string text;
    if (errors > 0) text = shownCount(errors, "error");
    if (warnings > 0) text += (errors > 0 ? " and " : "") + shownCount(warnings, "warning");
    return text;
}

/// The first finding for which isWanted holds; null when there is none.
template <class Predicate> const Finding* firstOf(const Findings& findings, Predicate isWanted)
{
    for (const Finding& finding : findings.list()) {
        if (isWanted(finding)) return &finding;
    }
    return nullptr;
}

/// Whether an error of a solve names a cause: those that say only that it failed do not.
bool namesCause(const Finding& finding)
{
    switch (finding.code) {
    case Code::not_converged:
    case Code::iteration_limit:
    case Code::mass_not_balanced:
    case Code::laws_not_met:
        return false;
    default:
        return finding.severity == Severity::error;
    }
}

/// The finding to mend first, in view of the network and of what the solve had to say; null when nothing
/// stands out.
const Finding* firstToMend(const Findings& before, const Findings& ofSolve)
{
    const auto isError = [](const Finding& finding) { return finding.severity == Severity::error; };
    const auto isWarning = [](const Finding& finding) { return finding.severity == Severity::warning; };
    if (const Finding* error = firstOf(before, isError)) return error;
    if (const Finding* cause = firstOf(ofSolve, namesCause)) return cause;
    return firstOf(before, isWarning);
}

/// A number of the finding that says how a solve ended; nothing when it has none.
std::optional<double> measureOf(const Solution& solution, std::string_view name)
{
    for (const Finding& finding : solution.findings.list()) {
        if (finding.code != Code::not_converged) continue;
        for (const NamedNumber& number : finding.numbers) {
            if (number.name == name) return number.value;
        }
    }
    return std::nullopt;
}

/// The datum [Pa] that takes given pressures down to an ordinary level, where they stand so high that the
/// rounding of pressures, 16 digits, can be seen in small losses: the laws are met, and the flows all but
/// balance. Nothing where that is not the case.
std::optional<double> datumAgainstRounding(const Network& network, const Solution& solution)
{
    constexpr double kAllButBalanced = 0.05;  // [-], relative mass error
    constexpr double kHigh = 1e6;             // [Pa]
    constexpr double kOrdinary = 1e5;         // [Pa]
    const auto massError = measureOf(solution, "relative mass error");
    if (!massError || !(*massError < kAllButBalanced) || measureOf(solution, "relative pressure error"))
        return std::nullopt;
    std::optional<double> lowest;
    for (const Node& node : network.nodes) {
        if (!node.boundary || !node.boundary->pressure) continue;
        const double pressure = *node.boundary->pressure + network.settings.pressureDatum;
        if (!lowest || pressure < *lowest) lowest = pressure;
    }
    if (!lowest || *lowest < kHigh) return std::nullopt;
    return network.settings.pressureDatum - (*lowest - kOrdinary);
}

std::string advice(const Finding* first, bool isSpread, std::optional<double> datum)
{
    if (datum && (first == nullptr || first->severity != Severity::error))
        return "set \"pressure_datum\" of the settings to \"" + shown(*datum, Quantity::pressure) +
               "\": the given pressures stand so high that their rounding shows in the flows of small losses";
    if (first != nullptr)
        return "mend first: " + (first->place.object.empty() ? std::string() : first->place.object + ": ") +
               first->message;
    if (isSpread)
        return "look for a mistaken diameter or length; leave out pipes that are so short or wide that they "
               "lose nothing";
    return "look for the smallest part that fails on its own";
}

/// "the network did not solve", with what the solve says of how it ended.
std::string failureText(const Findings& ofSolve)
{
    const auto saysEnd = [](const Finding& finding) { return finding.code == Code::not_converged; };
    const Finding* end = firstOf(ofSolve, saysEnd);
    return end == nullptr ? "the network did not solve" : "the network did not solve: " + end->message;
}

/// What the solve measured, and how much examine found.
std::vector<NamedNumber> failureNumbers(const Solution& solution, const Findings& before)
{
    const auto saysEnd = [](const Finding& finding) { return finding.code == Code::not_converged; };
    const Finding* end = firstOf(solution.findings, saysEnd);
    std::vector<NamedNumber> numbers{{"iterations", static_cast<double>(solution.iterations), ""}};
    if (end != nullptr) numbers = end->numbers;
    numbers.push_back({"errors", static_cast<double>(before.countOf(Severity::error)), ""});
    numbers.push_back({"warnings", static_cast<double>(before.countOf(Severity::warning)), ""});
    return numbers;
}

/// What a failed solve calls for, with the ratio of the conductances where it is wide.
void addFailure(const Network& network, const Solution& solution, Findings& findings)
{
    constexpr double kWideSpread = 1e6;  // [-], of conductances, that makes a solve slow
    const Findings before = examine(network);
    const Finding* first = firstToMend(before, solution.findings);
    const auto range = conductanceRange(network);
    const bool isSpread = range && range->ratio() > kWideSpread;
    const std::string complaints = complaintText(before);
    std::string message = failureText(solution.findings);
    if (!complaints.empty())
        message +=
            (complaints.rfind("1 ", 0) == 0 ? "; there is " : "; there are ") + complaints + " about it";
    else if (first == nullptr)
        message += "; nothing is wrong with it at first sight";
    findings
        .add(Code::solve_failed, {network.file, 0, 0, "", ""}, std::move(message),
             advice(first, isSpread, datumAgainstRounding(network, solution)))
        .numbers = failureNumbers(solution, before);
    const auto saysSpread = [](const Finding& finding) { return finding.code == Code::conductance_spread; };
    if (isSpread && firstOf(before, saysSpread) == nullptr) addConductanceSpread(network, *range, findings);
}

}  // namespace

Findings examine(const Network& network)
{
    Findings findings;
    checkParts(network, findings);
    doctor::checkBoundaries(network, findings);
    checkSizes(network, findings);
    checkCurves(network, findings);
    return findings;
}

Findings examineFlawed(const Network& network, const Findings& errors)
{
    // What the checks say again of the same object in other words.
    static const std::pair<Code, Code> kSame[] = {
        {Code::isolated_node, Code::node_joins_nothing},
        {Code::no_given_pressure, Code::network_without_pressure},
        {Code::nodes_at_one_place, Code::element_without_length},
        {Code::length_missing, Code::element_without_length},
    };
    const auto keyOf = [](Code code, const std::string& object) {
        return std::to_string(static_cast<int>(code)) + ' ' + object;
    };
    std::unordered_set<std::string> said;
    for (const Finding& error : errors.list()) {
        for (const auto& [read, examined] : kSame) {
            if (error.code == read) said.insert(keyOf(examined, error.place.object));
        }
    }
    Findings rest;
    const Findings all = examine(network);
    for (const Finding& finding : all.list()) {
        if (said.count(keyOf(finding.code, finding.place.object)) == 0) rest.add(finding);
    }
    return rest;
}

Findings diagnose(const Network& network, const Solution& solution)
{
    Findings findings;
    if (solution.outcome == Outcome::cancelled) return findings;
    if (solution.outcome == Outcome::notConverged) addFailure(network, solution, findings);
    checkResults(network, solution, findings);
    return findings;
}

Findings withoutRepeats(const Findings& ofSolve, const Findings& others)
{
    const auto saysFailure = [](const Finding& finding) { return finding.code == Code::solve_failed; };
    if (firstOf(others, saysFailure) == nullptr) return ofSolve;
    Findings rest;
    for (const Finding& finding : ofSolve.list()) {
        if (finding.code != Code::not_converged) rest.add(finding);
    }
    return rest;
}

Finding findingOf(const Network& network, const FailingPart& part)
{
    Findings findings;
    Finding finding = addAtElements(
        network, part.elements, Code::smallest_failing_part,
        shownCount(part.elements.size(), "element") + (part.elements.size() == 1 ? " fails" : " fail") +
            (part.elements.size() == 1 ? " on its own: " : " on their own: ") + part.why,
        findings);
    finding.numbers = {{"elements", static_cast<double>(part.elements.size()), ""},
                       {"all_elements", static_cast<double>(network.elements.size()), ""},
                       {"solves", static_cast<double>(part.solves), ""}};
    return finding;
}

}  // namespace kit
