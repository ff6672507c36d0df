// tavell check and tavell doctor: what is wrong with a network, and what to do.
#include "command_line.h"
#include "terminal.h"

namespace
{

constexpr int kMostSolves = 60;  // in the search for the smallest part that fails

struct CheckArguments {
    NetworkSource source;
    std::string format = "text";
};

std::string countText(std::size_t count, const std::string& word)
{
    return (count == 0 ? "no" : std::to_string(count)) + ' ' + word + (count == 1 ? "" : "s");
}

/// "FILE: 1 error, no warnings, 2 remarks".
std::string summary(const std::string& path, const tavell::Findings& findings)
{
    return path + ": " + countText(findings.countOf(tavell::Severity::error), "error") + ", " +
           countText(findings.countOf(tavell::Severity::warning), "warning") + ", " +
           countText(findings.countOf(tavell::Severity::remark), "remark") + '\n';
}

/// Prints findings; status when that succeeds.
int print(const CheckArguments& arguments, const tavell::Findings& findings, int status)
{
    const std::string text = arguments.format == "json"
                                 ? findings.json() + '\n'
                                 : findingsText(findings) + summary(arguments.source.path, findings);
    const int printed = deliver(text, std::nullopt);
    return printed == kConverged ? status : printed;
}

/// Where reading failed, the findings are an answer to a program and an error to a person.
int endUnread(const CheckArguments& arguments, const tavell::Answer<tavell::Network>& network)
{
    const int status = exitStatusOf(network.status());
    if (arguments.format == "json") return print(arguments, network.findings(), status);
    say(network.findings());
    return status;
}

int check(const CheckArguments& arguments)
{
    const auto network = openExamined(arguments.source);
    if (!network) return endUnread(arguments, network);
    const tavell::Findings& findings = network.findings();
    return print(arguments, findings, findings.hasErrors() ? kNotConverged : kConverged);
}

/// The solve of an examination: findings are gathered, not said.
tavell::Answer<tavell::Result> quietSolve(const tavell::Network& network, ProgressLine& line)
{
    return network.solve("", [&line](int step) {
        line.show(step);
        return isInterrupted();
    });
}

int diagnose(const CheckArguments& arguments)
{
    const auto network = openExamined(arguments.source);
    if (!network) return endUnread(arguments, network);
    tavell::Findings findings = network.findings();

    ProgressLine line;
    const auto result = quietSolve(*network, line);
    findings.append(result.hasValue() ? result->diagnose() : result.findings());
    if (result.status() == tavell::Status::notConverged) {
        const auto part = network->smallestFailingPart(kMostSolves, [&line](int step) {
            line.show(step);
            return isInterrupted();
        });
        findings.append(part.findings());
    }
    line.clear();
    if (isInterrupted()) say(arguments.source.path + ": stopped; what was found until then:");
    const bool isSound = result && !findings.hasErrors();
    return print(arguments, findings, isSound ? kConverged : kNotConverged);
}

}  // namespace

Command addCheckCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* command = program.add_subcommand("check", "Read a network and say what is wrong with it");
    arguments->source.addOptions(*command);
    addChoice(*command, "--format", arguments->format, {"text", "json"}, "form of the list");
    setExamples(*command, {"tavell check examples/networks/two_loops.json"},
                "0 no errors, 1 errors were found, 2 the file cannot be read, 3 internal error.");
    return {command, [arguments] { return check(*arguments); }};
}

Command addDoctorCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* command =
        program.add_subcommand("doctor", "Examine a network, solve it, and say what is wrong and what to do");
    arguments->source.addOptions(*command);
    addChoice(*command, "--format", arguments->format, {"text", "json"}, "form of the list");
    setExamples(
        *command,
        {"tavell doctor examples/networks/two_pumps_with_check_valves.json",
         "tavell doctor examples/networks/two_loops.json --format json"},
        "0 it solves and has no errors, 1 it does not solve or errors were found, 2 the file cannot be\n"
        "read, 3 internal error.");
    return {command, [arguments] { return diagnose(*arguments); }};
}
