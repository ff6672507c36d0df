// solve_command.h: `tavell solve`, from a network file to printed results.
#ifndef TAVELL_TOOLS_SOLVE_COMMAND_H
#define TAVELL_TOOLS_SOLVE_COMMAND_H

#include <optional>
#include <string>

/// What the program returns to its caller.
enum ExitStatus { kConverged = 0, kNotConverged = 1, kBadInput = 2, kInternalError = 3 };

/// Solves the network in a file and prints its results to standard output; everything else goes to standard
/// error.
/// csvPath: a file for the exported results.
int solveCommand(const std::string& path, const std::optional<std::string>& csvPath);

#endif
