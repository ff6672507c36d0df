// command_shape.h: the options of a subcommand as completion and manual show them.
#ifndef TAVELL_TOOLS_COMMAND_SHAPE_H
#define TAVELL_TOOLS_COMMAND_SHAPE_H

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

/// An option or, without names that begin with a hyphen, an argument.
struct OptionShape {
    std::vector<std::string> names;  // "-o", "--output"; of an argument its name alone: "FILE"
    std::string value;               // "FILE", "text|csv|json"; "" for a flag
    std::string meaning;
    std::vector<std::string> choices;
    bool isArgument = false;
    bool isRequired = false;
};

/// In the order of the help text.
std::vector<OptionShape> shapesOf(const CLI::App& command);

#endif
