// tavell report: the page and the pictures of a network.
#include <filesystem>

#include "command_line.h"
#include "terminal.h"

namespace
{

struct ReportArguments {
    NetworkSource source;
    std::optional<std::string> output;
    std::optional<std::string> svg;
    std::optional<std::string> png;
    std::string units;
    std::string view;
    std::string colour;
};

std::string reportOptions(const ReportArguments& arguments)
{
    nlohmann::json options = nlohmann::json::object();
    if (!arguments.units.empty()) options["units"] = arguments.units;
    return options.dump();
}

std::string pictureOptions(const ReportArguments& arguments)
{
    nlohmann::json options = nlohmann::json::parse(reportOptions(arguments));
    if (!arguments.view.empty()) options["view"] = arguments.view;
    if (!arguments.colour.empty()) options["quantity"] = arguments.colour;
    return options.dump();
}

/// Whether a picture's name, if there is one, ends as its kind does: the kit goes by the ending.
bool hasEnding(const std::optional<std::string>& path, const std::string& ending)
{
    if (!path || std::filesystem::path(*path).extension() == ending) return true;
    say(*path + ": the name of this picture does not end in " + ending +
        "; give it that ending [bad-option]");
    return false;
}

bool areOutputsUsable(const ReportArguments& arguments)
{
    const bool areUsable =
        areUsableOutputs({arguments.output, arguments.svg, arguments.png}, arguments.source) &&
        hasEnding(arguments.svg, ".svg") && hasEnding(arguments.png, ".png");
    if (arguments.output || arguments.svg || arguments.png) return areUsable;
    say("tavell: there is nothing to write; give -o, --svg or --png; \"tavell report --help\" has examples");
    return false;
}

int writeFiles(const ReportArguments& arguments, const tavell::Result& result)
{
    if (arguments.output) {
        ProgressLine line;
        const auto written =
            result.writeReport(*arguments.output, reportOptions(arguments), [&line](int step) {
                line.show(step);
                return isInterrupted();
            });
        line.clear();
        const int status = saidStatus(written);
        if (status != kConverged) return status;
    }
    for (const auto& path : {arguments.svg, arguments.png}) {
        if (!path) continue;
        const int status = saidStatus(result.writePicture(*path, pictureOptions(arguments)));
        if (status != kConverged) return status;
    }
    return kConverged;
}

int run(const ReportArguments& arguments)
{
    if (!areOutputsUsable(arguments)) return kBadInput;
    const auto network = readNetwork(arguments.source);
    if (!network) return kBadInput;
    const auto result = solve(*network);
    if (!result.hasValue()) return exitStatusOf(result.status());
    if (result.status() == tavell::Status::cancelled || isInterrupted()) {
        say(arguments.source.path + ": the solve was stopped; nothing was written");
        return kNotConverged;
    }
    if (!result) say(arguments.source.path + ": the solve did not converge; the report has no results");
    const int written = writeFiles(arguments, *result);
    return written == kConverged ? exitStatusOf(result.status()) : written;
}

}  // namespace

Command addReportCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App* command =
        program.add_subcommand("report", "Solve a network and write a page about it, and pictures");
    arguments->source.addOptions(*command);
    addOutput(*command, "-o,--output", arguments->output, "page to write (HTML), which needs nothing else");
    addOutput(*command, "--svg", arguments->svg, "picture to write, *.svg");
    addOutput(*command, "--png", arguments->png, "picture to write, *.png");
    addUnits(*command, arguments->units);
    addChoice(*command, "--view", arguments->view, {"plan", "elevation", "isometric"},
              "view of the pictures");
    addChoice(*command, "--colour,--color", arguments->colour,
              {"none", "pressure", "head", "velocity", "mass_flow", "volume_flow", "temperature"},
              "what the pictures are coloured by");
    setExamples(
        *command,
        {"tavell report examples/networks/two_loops.json -o two_loops.html --units metric",
         "tavell report examples/networks/three_reservoirs.json --svg reservoirs.svg --view elevation"},
        kStatusOfSolve);
    return {command, [arguments] { return run(*arguments); }};
}
