// tavell: the command line of the kit.
#include <algorithm>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "command_line.h"
#include "command_shape.h"
#include "suggestion.h"
#include "terminal.h"

#ifndef TAVELL_DOC_FOLDER
#define TAVELL_DOC_FOLDER "share/doc/tavell"
#endif

namespace
{

constexpr const char* kFooter =
    "Examples:\n"
    "  tavell solve examples/networks/three_reservoirs.json --units metric\n"
    "  tavell report examples/networks/two_loops.json -o two_loops.html\n"
    "  tavell doctor examples/networks/two_loops.json\n"
    "\n"
    "Exit status: 0 done, 1 a solve did not converge or a check found errors, 2 bad input or usage,\n"
    "3 internal error.\n"
    "\n"
    "\"tavell COMMAND --help\" has the options and examples of a command. The file format is described in\n"
    "network-file.md: in " TAVELL_DOC_FOLDER
    " of an installation, with the examples, and in docs of the source.";

std::vector<std::string> commandNames(const CLI::App& program)
{
    std::vector<std::string> names;
    for (const CLI::App* command : shownCommands(program))
        names.push_back(command->get_name());
    return names;
}

/// "; did you mean "solve"?", or where to find help.
std::string wayOut(const std::string& word, const std::vector<std::string>& words, const std::string& help)
{
    const std::string nearest = nearestWord(word, words);
    return nearest.empty() ? "; \"" + help + "\" lists them" : "; did you mean \"" + nearest + "\"?";
}

/// The subcommand of a name; null when there is none.
const CLI::App* findCommand(const CLI::App& program, const std::string& name)
{
    for (const CLI::App* command : program.get_subcommands({})) {
        if (command->get_name() == name) return command;
    }
    return nullptr;
}

/// The first word that is no option; "" when there is none.
std::string firstWord(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != '-') return argv[i];
    }
    return "";
}

/// The name of an option without its value: "--units=si" is "--units".
std::string optionName(const std::string& word)
{
    return word.substr(0, word.find('='));
}

/// What is wrong with an option that its command does not have; "" when all are known.
std::string unknownOption(const CLI::App& program, int argc, char** argv)
{
    const CLI::App* command = findCommand(program, firstWord(argc, argv));
    if (command == nullptr) return "";
    std::vector<std::string> names;
    for (const OptionShape& shape : shapesOf(*command)) {
        if (!shape.isArgument) names.insert(names.end(), shape.names.begin(), shape.names.end());
    }
    for (int i = 1; i < argc; ++i) {
        const std::string name = optionName(argv[i]);
        if (name == "--") return "";
        const bool isLong = name.size() > 2 && name.compare(0, 2, "--") == 0;
        if (!isLong || std::find(names.begin(), names.end(), name) != names.end()) continue;
        return "there is no option \"" + name + '"' +
               wayOut(name, names, "tavell " + command->get_name() + " --help");
    }
    return "";
}

/// The text of a usage error on one line.
std::string usageError(const CLI::App& program, const CLI::ParseError& error, int argc, char** argv)
{
    const std::string word = firstWord(argc, argv);
    if (!word.empty() && findCommand(program, word) == nullptr)
        return "there is no command \"" + word + '"' + wayOut(word, commandNames(program), "tavell --help");
    std::string unknown = unknownOption(program, argc, argv);
    if (!unknown.empty()) return unknown;
    const std::string help = word.empty() ? "tavell --help" : "tavell " + word + " --help";
    return std::string(error.what()) + "; \"" + help + "\" has examples";
}

int run(int argc, char** argv)
{
    CLI::App program("Steady-state flow of a liquid through a network of pipes and hydraulic components",
                     "tavell");
    program.set_version_flag("--version", "tavell " + tavell::version());
    program.footer(kFooter);
    program.require_subcommand(1);
    const std::vector<Command> commands{
        addSolveCommand(program),      addCheckCommand(program),  addDoctorCommand(program),
        addReportCommand(program),     addImportCommand(program), addConvertCommand(program),
        addVerifyCommand(program),     addFluidsCommand(program), addSweepCommand(program),
        addCompletionCommand(program), addManualCommand(program),
    };
    try {
        program.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        const auto chosen = program.get_subcommands();
        return deliver(chosen.empty() ? program.help() : chosen[0]->help("tavell"), std::nullopt);
    } catch (const CLI::CallForVersion& version) {
        return deliver(std::string(version.what()) + '\n', std::nullopt);
    } catch (const CLI::ParseError& error) {
        say("tavell: " + usageError(program, error, argc, argv));
        return kBadInput;
    }
    for (const Command& command : commands) {
        if (command.app->parsed()) return command.run();
    }
    return kInternalError;
}

}  // namespace

int main(int argc, char** argv)
{
    prepareTerminal();
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        writeErrors("tavell: memory ran out\n");
    } catch (const std::exception& error) {
        writeErrors(std::string("tavell: internal error: ") + error.what() + '\n');
    } catch (...) {
        writeErrors("tavell: internal error\n");
    }
    return kInternalError;
}
