#include "solve_command.h"

#include <cmath>
#include <cstdio>
#include <memory>

#include <tavell/CreateTavell.h>
#include <tavell/ICircuit.h>
#include <tavell/ITavell.h>

#include "csv_file.h"
#include "feedback_text.h"
#include "network_builder.h"
#include "network_file.h"
#include "number_text.h"
#include "problems.h"
#include "tables.h"

namespace
{

using Velcor::Tavell::CreateTavell;
using Velcor::Tavell::ICircuit;
using Velcor::Tavell::ITavell;

constexpr double kLengthTolerance = 1e-6;  // [-], of the length of gravity
constexpr int kLengthDigits = 8;           // significant digits that tell such a length from 1

struct SystemReleaser {
    void operator()(ITavell* system) const { system->Release(); }
};

void printErrors(const std::vector<std::string>& lines)
{
    for (const std::string& line : lines)
        std::fprintf(stderr, "%s\n", line.c_str());
}

/// Says what a gravity that is no direction does; it may be meant, for other accelerations than that of the
/// earth.
void remarkOnGravity(const std::string& path, const Network& network)
{
    const auto& g = network.gravity;
    const double length = std::hypot(g[0], g[1], g[2]);
    if (length <= kLengthTolerance || std::fabs(length - 1.0) <= kLengthTolerance) return;
    Problems remark(path);
    remark.add("/gravity", "gravity is a direction: its length " + shortNumber(length, kLengthDigits) +
                               " multiplies 9.80665 m/s2");
    printErrors(remark.lines());
}

/// The feedback of the last solve, one line each.
void printFeedback(const std::string& path, ICircuit& circuit)
{
    Problems feedback(path);
    for (const std::string& text : feedbackTexts(circuit))
        feedback.addToFile(text);
    printErrors(feedback.lines());
}

bool printResults(const Network& network, ICircuit& circuit)
{
    const std::string text = resultTables(network, circuit);
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    return std::fflush(stdout) == 0 && isWritten;
}

bool solve(const std::string& path, ICircuit& circuit)
{
    const bool hasConverged = circuit.Solve(false);
    printFeedback(path, circuit);
    if (hasConverged && hasUsableResults(circuit)) return true;
    Problems verdict(path);
    verdict.addToFile(hasConverged ? "the solve ended with values that are no numbers; check the sizes"
                                   : "the solve did not converge; there are no results");
    printErrors(verdict.lines());
    return false;
}

}  // namespace

int solveCommand(const std::string& path, const std::optional<std::string>& csvPath)
{
    Problems problems(path);
    Problems csvProblems(csvPath.value_or(""));
    if (csvPath) checkCsvPath(*csvPath, path, csvProblems);
    const auto network = readNetworkFile(path, problems);
    printErrors(csvProblems.lines());
    printErrors(problems.lines());
    if (!network || !csvProblems.isEmpty()) return kBadInput;

    remarkOnGravity(path, *network);
    const std::unique_ptr<ITavell, SystemReleaser> system(CreateTavell(false));
    ICircuit& circuit = *system->CreateCircuit();
    if (!buildCircuit(*network, circuit, problems) || !isReadyToSolve(*network, circuit, problems)) {
        printErrors(problems.lines());
        return kBadInput;
    }
    if (!solve(path, circuit)) return kNotConverged;
    if (!printResults(*network, circuit)) {
        std::fprintf(stderr, "tavell: the results could not be printed\n");
        return kInternalError;
    }
    if (csvPath) writeCsvFile(*csvPath, circuit, csvProblems);
    printErrors(csvProblems.lines());
    return csvProblems.isEmpty() ? kConverged : kBadInput;
}
