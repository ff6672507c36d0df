// command_line.h: what the subcommands share: exit status, options of a network file, what is said to the
// user.
#ifndef TAVELL_TOOLS_COMMAND_LINE_H
#define TAVELL_TOOLS_COMMAND_LINE_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <tavell.hpp>

/// What the program returns to its caller.
enum ExitStatus { kConverged = 0, kNotConverged = 1, kBadInput = 2, kInternalError = 3 };

/// A subcommand and what it does once its options are read.
struct Command {
    CLI::App* app = nullptr;
    std::function<int()> run;
};

/// One function per subcommand: adds its options to the program.
Command addSolveCommand(CLI::App& program);
Command addCheckCommand(CLI::App& program);
Command addImportCommand(CLI::App& program);
Command addConvertCommand(CLI::App& program);
Command addReportCommand(CLI::App& program);
Command addDoctorCommand(CLI::App& program);
Command addVerifyCommand(CLI::App& program);
Command addFluidsCommand(CLI::App& program);
Command addSweepCommand(CLI::App& program);
Command addCompletionCommand(CLI::App& program);
Command addManualCommand(CLI::App& program);

/// The subcommands that help, completion and manual show, in their order.
std::vector<const CLI::App*> shownCommands(const CLI::App& program);

/// The end of a help text: examples, one command line each, and the meaning of the exit status.
void setExamples(CLI::App& command, const std::vector<std::string>& examples, const std::string& status);

/// An option whose value is one of some words. Completion offers them.
CLI::Option* addChoice(CLI::App& command, const std::string& name, std::string& value,
                       const std::vector<std::string>& words, const std::string& meaning);

/// The words of an option of addChoice; empty for another option.
std::vector<std::string> choicesOf(const CLI::Option& option);

/// An option that names a file to be written, and one that names units of printed values.
CLI::Option* addOutput(CLI::App& command, const std::string& name, std::optional<std::string>& path,
                       const std::string& meaning);
CLI::Option* addUnits(CLI::App& command, std::string& units);

/// The meaning of the exit status of commands that solve.
constexpr const char* kStatusOfSolve =
    "0 the solve converged, 1 it did not or was stopped, 2 bad input or usage, 3 internal error.";

/// The options of a command that reads a network.
struct NetworkSource {
    std::string path;
    std::optional<std::string> scenario;
    std::optional<std::string> time;
    bool freezesValves = false;

    void addOptions(CLI::App& command);
    bool isInp() const;
    /// The files that the path names.
    std::vector<std::string> files() const;

private:
    void refuseUnusedOptions() const;
};

/// Reads a network with its scenario. Says what was found.
std::optional<tavell::Network> readNetwork(const NetworkSource& source);
/// The same, findings to be said by the caller.
tavell::Answer<tavell::Network> openNetwork(const NetworkSource& source);
/// The same, with all that an examination finds: also in a network that is not given out, as far as it has one.
tavell::Answer<tavell::Network> openExamined(const NetworkSource& source);

/// Says whether a file can be written to a path, before the work that leads to it: it is no directory, has a
/// name and is none of the files that are read.
bool isUsableOutput(const std::string& path, const NetworkSource& source);
/// The same of all outputs of a command, no two of which may be one file.
bool areUsableOutputs(const std::vector<std::optional<std::string>>& paths, const NetworkSource& source);

/// Solves with progress on a terminal; Ctrl-C cancels. Says what was found.
tavell::Answer<tavell::Result> solve(const tavell::Network& network, const std::string& options = "");

/// The exit status for the status of a call.
int exitStatusOf(tavell::Status status);

/// Writes to standard error, findings one line each.
void say(const std::string& line);
void say(const tavell::Findings& findings);

/// Findings of some severities, in their order, for people: "warning: FILE:LINE: ...".
std::string findingsText(const tavell::Findings& findings,
                         const std::vector<tavell::Severity>& severities = {
                             tavell::Severity::error, tavell::Severity::warning, tavell::Severity::remark});

/// Writes to standard output, or to a file when there is one; the exit status of that.
int deliver(const std::string& text, const std::optional<std::string>& path);

/// Says what a call that writes a file found; its exit status.
int saidStatus(const tavell::Answer<void>& answer);

#endif
