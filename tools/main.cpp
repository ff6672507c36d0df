// tavell: the command line of the library.
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "solve_command.h"

#ifndef TAVELL_VERSION
#define TAVELL_VERSION "development"
#endif
#ifndef TAVELL_DOC_FOLDER
#define TAVELL_DOC_FOLDER "share/doc/tavell"
#endif

namespace
{

const char* const kFooter =
    "Example:\n"
    "  tavell solve examples/networks/three_reservoirs.json --csv results.csv\n"
    "\n"
    "Exit status: 0 the solve converged, 1 it did not, 2 bad input or usage, 3 internal error.\n"
    "The file format is described in network-file.md: in " TAVELL_DOC_FOLDER " of an installation,\n"
    "with the examples, and in docs of the source.";

int run(int argc, char** argv)
{
    CLI::App app("Steady-state flow of a liquid through a network of pipes and hydraulic components",
                 "tavell");
    app.set_version_flag("--version", "tavell " TAVELL_VERSION);
    app.footer(kFooter);
    app.require_subcommand(1);

    std::string path;
    std::optional<std::string> csvPath;
    CLI::App* solve = app.add_subcommand("solve", "Solve the network in a file and print its results");
    solve->add_option("FILE", path, "network file (JSON, SI units)")->required();
    solve->add_option("--csv", csvPath, "also write the results to this file, comma-separated, SI units");
    solve->footer(kFooter);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kConverged : kBadInput;
    }
    return solveCommand(path, csvPath);
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "tavell: out of memory\n");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tavell: internal error: %s\n", error.what());
    } catch (...) {
        std::fprintf(stderr, "tavell: internal error\n");
    }
    return kInternalError;
}
