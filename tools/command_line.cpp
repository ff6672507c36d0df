#include "command_line.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "terminal.h"

namespace
{

using nlohmann::json;

bool endsWith(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

/// Options of an import as the kit takes them.
std::string importOptions(const NetworkSource& source)
{
    json options = json::object();
    if (source.time) options["time"] = *source.time;
    if (source.freezesValves) options["freeze_valves"] = true;
    return options.dump();
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(stream, line))
        lines.push_back(line);
    return lines;
}

const char* wordOf(tavell::Severity severity)
{
    switch (severity) {
    case tavell::Severity::error:
        return "error: ";
    case tavell::Severity::warning:
        return "warning: ";
    case tavell::Severity::remark:
        break;
    }
    return "remark: ";
}

}  // namespace

std::vector<const CLI::App*> shownCommands(const CLI::App& program)
{
    std::vector<const CLI::App*> commands;
    for (const CLI::App* command : program.get_subcommands({})) {
        if (!command->get_group().empty()) commands.push_back(command);
    }
    return commands;
}

void setExamples(CLI::App& command, const std::vector<std::string>& examples, const std::string& status)
{
    std::string footer = examples.size() == 1 ? "Example:" : "Examples:";
    for (const std::string& example : examples)
        footer += "\n  " + example;
    command.footer(footer + "\n\nExit status: " + status);
}

CLI::Option* addChoice(CLI::App& command, const std::string& name, std::string& value,
                       const std::vector<std::string>& words, const std::string& meaning)
{
    std::string type;
    for (const std::string& word : words)
        type += (type.empty() ? "" : "|") + word;
    CLI::Option* option = command.add_option(name, value, meaning);
    return option->check(CLI::IsMember(words).description("").application_index(-1))->type_name(type);
}

std::vector<std::string> choicesOf(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    if (type.find('|') == std::string::npos) return {};
    std::vector<std::string> words;
    std::istringstream stream(type);
    std::string word;
    while (std::getline(stream, word, '|'))
        words.push_back(word);
    return words;
}

CLI::Option* addOutput(CLI::App& command, const std::string& name, std::optional<std::string>& path,
                       const std::string& meaning)
{
    return command.add_option(name, path, meaning)->type_name("FILE");
}

CLI::Option* addUnits(CLI::App& command, std::string& units)
{
    const auto check = [](const std::string& text) {
        const auto answer = tavell::checkUnits(text);
        return answer || answer.findings().isEmpty() ? std::string() : answer.findings()[0].message;
    };
    return command
        .add_option("--units", units,
                    "units of printed values: si, metric, us, or such as pressure=bar,length=ft")
        ->check(CLI::Validator(check, ""))
        ->type_name("UNITS");
}

void NetworkSource::addOptions(CLI::App& command)
{
    command
        .add_option("FILE", path,
                    "network file (.tavell.json, .json), EPANET file (.inp) or NODES.csv,ELEMENTS.csv")
        ->required()
        ->type_name("");
    command.add_option("--scenario", scenario, "take this scenario of the network file")->type_name("NAME");
    command.add_option("--time", time, "of an EPANET file: when its patterns are taken")->type_name("HH:MM");
    command.add_flag("--freeze-valves", freezesValves,
                     "of an EPANET file: pressure valves stand as they are");
    command.parse_complete_callback([this] { refuseUnusedOptions(); });
}

void NetworkSource::refuseUnusedOptions() const
{
    if (isInp() || (!time && !freezesValves)) return;
    throw CLI::ValidationError(time ? "--time" : "--freeze-valves",
                               "is for EPANET files (.inp) only, and " + path + " is none by its name");
}

bool NetworkSource::isInp() const
{
    return endsWith(path, ".inp") || endsWith(path, ".INP");
}

std::vector<std::string> NetworkSource::files() const
{
    const std::size_t comma = path.find(".csv,");
    if (comma == std::string::npos) return {path};
    return {path.substr(0, comma + 4), path.substr(comma + 5)};
}

tavell::Answer<tavell::Network> openNetwork(const NetworkSource& source)
{
    auto network = source.isInp() ? tavell::Network::importInp(source.path, importOptions(source))
                                  : tavell::Network::read(source.path);
    if (!network || !source.scenario) return network;
    auto scenario = network->scenario(*source.scenario);
    tavell::Findings findings = network.findings();
    findings.append(scenario.findings());
    if (!scenario) return {scenario.status(), std::nullopt, findings};
    return {scenario.status(), std::move(*scenario), findings};
}

tavell::Answer<tavell::Network> openExamined(const NetworkSource& source)
{
    if (!source.scenario)
        return tavell::Network::readAndExamine(source.path, source.isInp() ? importOptions(source) : "");
    auto network = openNetwork(source);
    if (!network) return network;
    tavell::Findings findings = network.findings();
    findings.append(network->examine());
    return {network.status(), std::move(*network), findings};
}

namespace
{

/// What an import had to say, to someone who asked for something else: its remarks are counted only.
void sayImport(const std::string& path, const tavell::Findings& findings)
{
    const std::size_t remarks = findings.countOf(tavell::Severity::remark);
    if (findings.size() > remarks)
        writeErrors(findingsText(findings, {tavell::Severity::error, tavell::Severity::warning}));
    if (remarks > 0)
        say(path + ": the import made " + std::to_string(remarks) + (remarks == 1 ? " remark" : " remarks") +
            "; \"tavell check " + path + "\" lists " + (remarks == 1 ? "it" : "them"));
}

}  // namespace

std::optional<tavell::Network> readNetwork(const NetworkSource& source)
{
    auto network = openNetwork(source);
    if (network && source.isInp())
        sayImport(source.path, network.findings());
    else
        say(network.findings());
    if (!network) return std::nullopt;
    return std::move(*network);
}

bool isUsableOutput(const std::string& path, const NetworkSource& source)
{
    namespace fs = std::filesystem;
    std::error_code error;
    if (path.empty()) {
        say("tavell: the name of an output file is empty; give one");
        return false;
    }
    if (fs::is_directory(path, error)) {
        say(path + ": is a directory; name a file [is-a-directory]");
        return false;
    }
    for (const std::string& input : source.files()) {
        if (!fs::equivalent(path, input, error)) continue;
        say(path + ": is the network file; give the output another name [would-overwrite-input]");
        return false;
    }
    return true;
}

bool areUsableOutputs(const std::vector<std::optional<std::string>>& paths, const NetworkSource& source)
{
    namespace fs = std::filesystem;
    bool areUsable = true;
    std::vector<fs::path> seen;
    for (const auto& path : paths) {
        if (!path) continue;
        areUsable = isUsableOutput(*path, source) && areUsable;
        std::error_code error;
        const fs::path place = fs::weakly_canonical(fs::absolute(*path, error), error);
        // Devices take any number of outputs.
        const bool isTaken = fs::is_regular_file(place, error) || !fs::exists(place, error);
        if (isTaken && std::find(seen.begin(), seen.end(), place) != seen.end()) {
            say(*path +
                ": two outputs would be written to this file; give each a name of its own [bad-option]");
            areUsable = false;
        }
        seen.push_back(place);
    }
    return areUsable;
}

tavell::Answer<tavell::Result> solve(const tavell::Network& network, const std::string& options)
{
    ProgressLine line;
    auto result = network.solve(options, [&line](int step) {
        line.show(step);
        return isInterrupted();
    });
    line.clear();
    say(result.findings());
    return result;
}

int exitStatusOf(tavell::Status status)
{
    switch (status) {
    case tavell::Status::ok:
        return kConverged;
    case tavell::Status::notConverged:
    case tavell::Status::cancelled:
        return kNotConverged;
    case tavell::Status::badInput:
        return kBadInput;
    case tavell::Status::internal:
        break;
    }
    return kInternalError;
}

void say(const std::string& line)
{
    writeErrors(line + '\n');
}

void say(const tavell::Findings& findings)
{
    if (findings.isEmpty()) return;
    const bool areAllErrors = findings.countOf(tavell::Severity::error) == findings.size();
    writeErrors(areAllErrors ? findings.text() : findingsText(findings));
}

std::string findingsText(const tavell::Findings& findings, const std::vector<tavell::Severity>& severities)
{
    const std::vector<std::string> lines = linesOf(findings.text());
    std::string text;
    for (const auto severity : severities) {
        for (std::size_t i = 0; i < findings.size() && i < lines.size(); ++i) {
            if (findings.severity(i) == severity) text += wordOf(severity) + lines[i] + '\n';
        }
    }
    // What is only counted comes behind the findings.
    for (std::size_t i = findings.size(); i < lines.size(); ++i)
        text += lines[i] + '\n';
    return text;
}

int deliver(const std::string& text, const std::optional<std::string>& path)
{
    if (path) return saidStatus(tavell::writeFile(*path, text));
    const std::string failure = writeOutput(text);
    if (failure.empty()) return kConverged;
    say("tavell: the results could not be printed: " + failure);
    return kInternalError;
}

int saidStatus(const tavell::Answer<void>& answer)
{
    say(answer.findings());
    return exitStatusOf(answer.status());
}
