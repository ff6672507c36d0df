// tavell sweep: studies of many solves. They are run by the Python package tavell, which this command becomes.
#include <cstdlib>
#include <string>
#include <vector>

#ifdef _WIN32
#include <process.h>
#else
#include <cerrno>
#include <cstring>
#include <unistd.h>
#endif

#include "command_line.h"

namespace
{

/// The interpreter, unless the environment variable TAVELL_PYTHON names another one.
#ifdef _WIN32
constexpr const char* kPython = "python";
#else
constexpr const char* kPython = "python3";
#endif

/// python -m tavell.sweep, with one line for people when the package or what it needs is missing.
constexpr const char* kProgram =
    "import sys\n"
    "try:\n"
    "    import tavell.sweep\n"
    "except ImportError as error:\n"
    "    why = (str(error).splitlines() or [''])[0]\n"
    "    sys.stderr.write('tavell: ' + sys.executable + ' cannot use the Python package tavell: ' + why + "
    "'; install its wheel with \"pip install\", or name another interpreter in TAVELL_PYTHON\\n')\n"
    "    sys.exit(2)\n"
    "sys.exit(tavell.sweep.main())\n";

#ifdef _WIN32
/// An argument as programs of the C library take it from a command line.
std::string windowsQuoted(const std::string& text)
{
    std::string result = "\"";
    std::size_t backslashes = 0;
    for (const char c : text) {
        if (c == '"') result.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        result += c;
    }
    result.append(backslashes, '\\');
    return result + '"';
}
#endif

int becomePython(const std::vector<std::string>& arguments)
{
    const char* given = std::getenv("TAVELL_PYTHON");
    const std::string python = given == nullptr || *given == '\0' ? kPython : given;
    std::vector<std::string> words{python, "-c", kProgram};
    words.insert(words.end(), arguments.begin(), arguments.end());
#ifdef _WIN32
    for (std::string& word : words)
        word = windowsQuoted(word);
#endif
    std::vector<const char*> pointers;
    pointers.reserve(words.size() + 1);
    for (const std::string& word : words)
        pointers.push_back(word.c_str());
    pointers.push_back(nullptr);
#ifdef _WIN32
    const std::intptr_t status = _spawnvp(_P_WAIT, python.c_str(), pointers.data());
    if (status != -1) return static_cast<int>(status);
    const std::string why = "cannot be started";
#else
    execvp(python.c_str(), const_cast<char* const*>(pointers.data()));
    const std::string why = errno == ENOENT ? "is not there" : std::strerror(errno);
#endif
    say("tavell: the interpreter \"" + python + "\" " + why +
        "; install Python 3 and its package tavell, or name another interpreter in TAVELL_PYTHON");
    return kBadInput;
}

}  // namespace

Command addSweepCommand(CLI::App& program)
{
    const auto step = std::make_shared<std::string>();
    CLI::App* command = program.add_subcommand(
        "sweep", "Solve a network many times with other values: Monte Carlo, failures, grids");
    addChoice(*command, "STEP", *step, {"plan", "run", "status", "collect"},
              "what to do; \"tavell sweep STEP -h\" has its options")
        ->required();
    // What follows the step belongs to the Python program, "-h" too.
    command->set_help_flag("--help", "Print this help message and exit");
    command->prefix_command();
    setExamples(*command,
                {"tavell sweep plan examples/networks/hanoi.tavell.json --scenarios 100 -o demand.json",
                 "tavell sweep run demand.json --out demand",
                 "tavell sweep collect demand.json --out demand"},
                "0 done, 1 scenarios failed or are missing, 2 bad input or usage, 3 internal error.");
    return {command, [step, command] {
                std::vector<std::string> arguments{*step};
                for (const std::string& word : command->remaining())
                    arguments.push_back(word);
                return becomePython(arguments);
            }};
}
