// tavell import and tavell convert: networks from one format to another.
#include <algorithm>
#include <cctype>
#include <filesystem>

#include "command_line.h"
#include "terminal.h"

namespace
{

struct ImportArguments {
    NetworkSource source;
    std::optional<std::string> output;
    std::optional<std::string> losses;
};

struct ConvertArguments {
    NetworkSource source;
    std::optional<std::string> output;
    bool solves = false;
};

std::string endingOf(const std::string& path)
{
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

/// "town.inp" to "town.tavell.json".
std::string networkFileFor(const std::string& path)
{
    return std::filesystem::path(path).replace_extension(".tavell.json").string();
}

int import(const ImportArguments& arguments)
{
    if (!arguments.source.isInp()) {
        say(arguments.source.path +
            ": is no EPANET input file by its name; name a file that ends with .inp, or use "
            "\"tavell convert\" [bad-option]");
        return kBadInput;
    }
    const std::string output = arguments.output.value_or(networkFileFor(arguments.source.path));
    if (!areUsableOutputs({output, arguments.losses}, arguments.source)) return kBadInput;
    const auto network = openNetwork(arguments.source);
    say(network.findings());
    int status = exitStatusOf(network.status());
    if (arguments.losses) {
        const int written =
            saidStatus(tavell::writeFile(*arguments.losses, network.findings().json() + '\n'));
        status = std::max(status, written);
    }
    if (!network || status != kConverged) return status;
    status = saidStatus(network->write(output));
    if (status != kConverged) return status;
    return deliver(output + ": " + std::to_string(network->nodeCount()) + " nodes, " +
                       std::to_string(network->elementCount()) + " elements\n",
                   std::nullopt);
}

bool isExport(const std::string& path)
{
    const std::string ending = endingOf(path);
    return ending == ".vtu" || ending == ".geojson" || ending == ".graphml";
}

/// "town.csv" to "town-nodes.csv" and "town-elements.csv".
std::string csvPath(const std::string& path, const char* table)
{
    return std::filesystem::path(path).replace_extension().string() + '-' + table + ".csv";
}

int writeNetwork(const tavell::Network& network, const NetworkSource& source, const std::string& output)
{
    if (isExport(output)) return saidStatus(network.writeExport(output));
    if (endingOf(output) != ".csv") return saidStatus(network.write(output));
    const std::string nodes = csvPath(output, "nodes");
    const std::string elements = csvPath(output, "elements");
    if (!isUsableOutput(nodes, source) || !isUsableOutput(elements, source)) return kBadInput;
    return saidStatus(network.writeCsv(nodes, elements));
}

bool isKnownOutput(const ConvertArguments& arguments)
{
    const std::string& output = *arguments.output;
    const bool isKnown = isExport(output) || endingOf(output) == ".csv" || endingOf(output) == ".json";
    if (!isKnown)
        say(output +
            ": the ending of the name says no format; end it with .tavell.json, .csv, .vtu, .geojson or "
            ".graphml [bad-option]");
    else if (arguments.solves && !isExport(output))
        say(output +
            ": this format holds no results; leave --solve out, or use \"tavell solve\" [bad-option]");
    return isKnown && (!arguments.solves || isExport(output));
}

int convert(const ConvertArguments& arguments)
{
    if (!isKnownOutput(arguments) || !isUsableOutput(*arguments.output, arguments.source)) return kBadInput;
    const auto network = readNetwork(arguments.source);
    if (!network) return kBadInput;
    if (!arguments.solves) return writeNetwork(*network, arguments.source, *arguments.output);
    const auto result = solve(*network);
    if (!result || isInterrupted()) {
        say(arguments.source.path + ": there are no results to write");
        return result ? kNotConverged : exitStatusOf(result.status());
    }
    return saidStatus(result->writeExport(*arguments.output));
}

}  // namespace

Command addImportCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<ImportArguments>();
    CLI::App* command = program.add_subcommand("import", "Make a network file of an EPANET input file");
    command->add_option("FILE", arguments->source.path, "EPANET input file (.inp)")
        ->required()
        ->type_name("");
    addOutput(*command, "-o,--output", arguments->output,
              "network file to write; FILE with the ending .tavell.json otherwise");
    command->add_option("--time", arguments->source.time, "when the patterns are taken; 00:00 otherwise")
        ->type_name("HH:MM");
    command->add_flag("--freeze-valves", arguments->source.freezesValves,
                      "let pressure valves stand as they are instead of refusing them");
    addOutput(*command, "--report", arguments->losses,
              "also write what could not be carried over to this file, as JSON");
    setExamples(*command,
                {"tavell import examples/networks/village.inp -o village.tavell.json --report losses.json"},
                "0 imported, 2 the file cannot be imported, 3 internal error. What could not be\n"
                "carried over is listed and does not change it.");
    return {command, [arguments] { return import(*arguments); }};
}

Command addConvertCommand(CLI::App& program)
{
    const auto arguments = std::make_shared<ConvertArguments>();
    CLI::App* command = program.add_subcommand(
        "convert", "Write a network in another format, by the ending of the output's name");
    arguments->source.addOptions(*command);
    addOutput(*command, "-o,--output", arguments->output,
              "*.tavell.json, *.csv (NAME-nodes.csv and NAME-elements.csv), *.vtu, *.geojson or *.graphml")
        ->required();
    command->add_flag("--solve", arguments->solves,
                      "solve first and write the results too (vtu, geojson, graphml)");
    setExamples(
        *command,
        {"tavell convert examples/networks/two_loops.json -o loops.csv",
         "tavell convert examples/networks/two_loops.json --solve -o loops.vtu"},
        "0 written, and with --solve converged, 1 the solve did not converge or was stopped, 2 bad input or\n"
        "usage, 3 internal error.");
    return {command, [arguments] { return convert(*arguments); }};
}
