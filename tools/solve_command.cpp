// tavell solve: from a network to its results.
#include "command_line.h"
#include "terminal.h"

namespace
{

struct SolveArguments {
    NetworkSource source;
    std::string format = "text";
    std::string units;
    bool solvesTemperatures = false;
    std::optional<std::string> output;
    std::optional<std::string> resultPath;
    std::optional<std::string> csvPath;
};

/// Says what to do where there are no tables; the findings have said why.
int endWithoutResults(const SolveArguments& arguments, tavell::Status status)
{
    const std::string& path = arguments.source.path;
    if (status == tavell::Status::cancelled) say(path + ": stopped; there are no results");
    if (status == tavell::Status::notConverged)
        say(path + ": there are no results; \"tavell doctor " + path + "\" looks for the reason");
    return exitStatusOf(status);
}

int writeOutputs(const SolveArguments& arguments, const tavell::Result& result)
{
    const auto tables = result.tables(arguments.format, arguments.units);
    say(tables.findings());
    if (!tables) return exitStatusOf(tables.status());
    int status = deliver(*tables, arguments.output);
    if (status == kConverged && arguments.resultPath)
        status = saidStatus(result.write(*arguments.resultPath));
    if (status == kConverged && arguments.csvPath) {
        const auto csv = result.exchangeCsv();
        say(csv.findings());
        status = csv ? deliver(*csv, arguments.csvPath) : exitStatusOf(csv.status());
    }
    return status;
}

int run(const SolveArguments& arguments)
{
    const bool areUsable =
        areUsableOutputs({arguments.output, arguments.resultPath, arguments.csvPath}, arguments.source);
    const auto network = readNetwork(arguments.source);
    if (!network || !areUsable) return kBadInput;
    const auto result = solve(*network, arguments.solvesTemperatures ? R"({"temperatures": true})" : "");
    if (!result) return endWithoutResults(arguments, result.status());
    if (isInterrupted()) return endWithoutResults(arguments, tavell::Status::cancelled);
    // Converged by the solver's measures, but the numbers do not bear it out: they are shown with a warning.
    if (!result->isCertificateGood()) say(result->verify().findings());
    return writeOutputs(arguments, *result);
}

}  // namespace

Command addSolveCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<SolveArguments>();
    CLI::App* command = program.add_subcommand("solve", "Solve a network and print its results");
    arguments->source.addOptions(*command);
    addChoice(*command, "--format", arguments->format, {"text", "csv", "json"}, "form of the tables");
    addUnits(*command, arguments->units);
    command->add_flag("--temperatures", arguments->solvesTemperatures, "solve temperatures too");
    addOutput(*command, "-o,--output", arguments->output,
              "write the tables to this file instead of printing them");
    addOutput(*command, "--result", arguments->resultPath,
              "also write the result file, which holds network, numbers and certificate");
    addOutput(*command, "--csv", arguments->csvPath,
              "also write the short exchange form: comma-separated, numbered from 1, SI units");
    setExamples(
        *command,
        {"tavell solve examples/networks/three_reservoirs.json --units metric",
         "tavell solve examples/networks/two_loops.json --units pressure=bar --format csv -o loops.csv",
         "tavell solve examples/networks/heating_riser.json --result riser.result.json"},
        kStatusOfSolve);
    return {command, [arguments] { return run(*arguments); }};
}
