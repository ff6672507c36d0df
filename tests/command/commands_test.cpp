// The other commands: check, doctor, report, import, convert, verify, fluids, completion, the manual; help
// and Ctrl-C.
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "command/base_network.h"
#include "command/run_command.h"

namespace
{

using command_test::baseNetwork;
using command_test::linesOf;
using command_test::Outcome;
using command_test::runCommand;
using command_test::shellQuoted;
using command_test::TemporaryDirectory;
using command_test::textOf;
using nlohmann::json;

const std::vector<std::string> kCommands{"solve",   "check",  "doctor", "report", "import",
                                         "convert", "verify", "fluids", "sweep",  "completion"};
const std::string kTwoLoops = TAVELL_EXAMPLES "/networks/two_loops.json";

bool isIn(const std::string& part, const std::string& text)
{
    return text.find(part) != std::string::npos;
}

/// Lines of a text that begin with "  tavell ".
std::vector<std::string> examplesIn(const std::string& help)
{
    std::vector<std::string> examples;
    for (const std::string& line : linesOf(help)) {
        if (line.rfind("  tavell ", 0) == 0) examples.push_back(line.substr(2));
    }
    return examples;
}

/// Whether a shell can run a program.
bool hasProgram(const std::string& name)
{
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

TEST(Help, of_every_command_has_examples_that_work_when_pasted)
{
    // Where the report page is not part of the build, its example ends with status 2 and says so.
    const TemporaryDirectory directory;
    std::filesystem::create_directory_symlink(TAVELL_EXAMPLES, directory.path() / "examples");
    const std::string errors = (directory.path() / "errors").string();
    std::vector<std::string> arguments{"--help"};
    for (std::size_t i = 0; i <= kCommands.size(); ++i) {
        const Outcome help = runCommand(arguments);
        EXPECT_EQ(0, help.status);
        EXPECT_EQ("", help.errors);
        const std::vector<std::string> examples = examplesIn(help.output);
        EXPECT_FALSE(examples.empty()) << help.output;
        for (const std::string& example : examples) {
            const std::string line = "cd " + shellQuoted(directory.path().string()) + " && tavell() { " +
                                     shellQuoted(TAVELL_COMMAND) + " \"$@\"; } && { " + example +
                                     "; } >/dev/null 2>" + shellQuoted(errors);
            const int raw = std::system(line.c_str());
            const std::string said = textOf(errors);
            // Studies are those of a Python package, which this machine may lack.
            const bool lacksPython = isIn("tavell sweep", example) && isIn("TAVELL_PYTHON", said);
            EXPECT_TRUE(raw == 0 || lacksPython || isIn("[report-not-built]", said)) << example << '\n'
                                                                                     << said;
        }
        if (i < kCommands.size()) arguments = {kCommands[i], "--help"};
    }
}

TEST(Usage, a_misspelt_command_or_option_gets_the_nearest_one)
{
    EXPECT_EQ("tavell: there is no command \"slove\"; did you mean \"solve\"?\n",
              runCommand({"slove", "a.json"}).errors);
    EXPECT_EQ("tavell: there is no option \"--fromat\"; did you mean \"--format\"?\n",
              runCommand({"solve", "a.json", "--fromat", "csv"}).errors);
    const Outcome far = runCommand({"abracadabra"});
    EXPECT_EQ(2, far.status);
    EXPECT_EQ("tavell: there is no command \"abracadabra\"; \"tavell --help\" lists them\n", far.errors);
}

TEST(Usage, an_unknown_unit_is_refused_before_the_file_is_read)
{
    const Outcome outcome = runCommand({"solve", "no-such-file.json", "--units", "pressure=furlong"});
    EXPECT_EQ(2, outcome.status);
    EXPECT_TRUE(isIn("furlong", outcome.errors)) << outcome.errors;
    EXPECT_FALSE(isIn("cannot be opened", outcome.errors)) << outcome.errors;
}

TEST(Solve, writes_tables_to_a_file_and_prints_nothing)
{
    const TemporaryDirectory directory;
    const std::string path = (directory.path() / "tables.json").string();
    const Outcome outcome = runCommand({"solve", kTwoLoops, "--format", "json", "-o", path});
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ("", outcome.output);
    EXPECT_EQ("", outcome.errors);
    EXPECT_TRUE(json::parse(textOf(path)).is_object());
}

TEST(Solve, does_not_write_two_outputs_to_one_file)
{
    const TemporaryDirectory directory;
    const std::string path = (directory.path() / "a.txt").string();
    const std::string same = (directory.path() / "." / "a.txt").string();
    const Outcome outcome = runCommand({"solve", kTwoLoops, "-o", path, "--result", same});
    EXPECT_EQ(2, outcome.status);
    EXPECT_TRUE(isIn("two outputs would be written to this file", outcome.errors)) << outcome.errors;
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Check, one_table_is_no_network)
{
    const TemporaryDirectory directory;
    const std::string path = directory.write("nodes.csv", "name,x,y,z\na,0,0,0\n");
    const Outcome outcome = runCommand({"check", path});
    EXPECT_EQ(2, outcome.status);
    EXPECT_TRUE(isIn("NODES.csv,ELEMENTS.csv", outcome.errors)) << outcome.errors;
}

TEST(Solve, prints_in_the_units_that_are_asked_for)
{
    const Outcome outcome = runCommand({"solve", kTwoLoops, "--units", "pressure=bar,volume_flow=l/min"});
    EXPECT_TRUE(isIn("pressure [bar]", outcome.output)) << outcome.output;
    EXPECT_TRUE(isIn("flow [l/min]", outcome.output)) << outcome.output;
}

TEST(Solve, takes_a_scenario_and_refuses_an_unknown_one)
{
    json network = baseNetwork();
    network["scenarios"]["high"]["nodes"]["A"]["inlet"]["pressure"] = 300000;
    const TemporaryDirectory directory;
    const std::string path = directory.write("net.json", network.dump());
    const Outcome high = runCommand({"solve", path, "--scenario", "high"});
    EXPECT_EQ(0, high.status) << high.errors;
    EXPECT_TRUE(isIn("300000", high.output)) << high.output;
    const Outcome unknown = runCommand({"solve", path, "--scenario", "hihg"});
    EXPECT_EQ(2, unknown.status);
    EXPECT_TRUE(isIn("hihg", unknown.errors)) << unknown.errors;
}

TEST(Check, counts_what_it_found)
{
    const Outcome outcome = runCommand({"check", kTwoLoops});
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ(kTwoLoops + ": no errors, no warnings, no remarks\n", outcome.output);
    EXPECT_EQ("", outcome.errors);
}

TEST(Check, gives_a_program_the_errors_of_a_file_as_json)
{
    json network = baseNetwork();
    network["colour"] = 1;
    const TemporaryDirectory directory;
    const Outcome outcome =
        runCommand({"check", directory.write("net.json", network.dump()), "--format", "json"});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ("", outcome.errors);
    const json findings = json::parse(outcome.output);
    ASSERT_EQ(1U, findings.size());
    EXPECT_EQ("unknown-key", findings[0]["code"]);
}

TEST(Doctor, says_what_keeps_a_network_from_being_solved)
{
    json network = baseNetwork();
    network["elements"][1] = json::parse(R"({"name": "P2", "type": "pump", "from": "B", "to": "C",
        "curve": [[0, 100000], [0.01, 200000], [0.02, 300000], [0.03, 400000]]})");
    const TemporaryDirectory directory;
    const Outcome outcome = runCommand({"doctor", directory.write("net.json", network.dump())});
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(0U, outcome.output.find("error: ")) << outcome.output;
    EXPECT_TRUE(isIn("element P2", outcome.output)) << outcome.output;
}

TEST(Verify, tells_a_tampered_result_from_a_sound_one)
{
    const TemporaryDirectory directory;
    const std::string path = (directory.path() / "result.json").string();
    ASSERT_EQ(0, runCommand({"solve", kTwoLoops, "--result", path}).status);
    EXPECT_EQ(0, runCommand({"verify", path}).status);
    json result = json::parse(textOf(path));
    result["elements"]["mass_flow"][0] = 1.01 * result["elements"]["mass_flow"][0].get<double>();
    directory.write("result.json", result.dump());
    EXPECT_EQ(1, runCommand({"verify", path}).status);
    EXPECT_EQ(2, runCommand({"verify", kTwoLoops}).status);
}

TEST(Convert, goes_through_tables_and_back)
{
    const TemporaryDirectory directory;
    const std::string base = directory.write("net.json", baseNetwork().dump());
    const std::string csv = (directory.path() / "net.csv").string();
    ASSERT_EQ(0, runCommand({"convert", base, "-o", csv}).status);
    const std::string stem = (directory.path() / "net").string();
    const std::string pair = stem + "-nodes.csv," + stem + "-elements.csv";
    const std::string first = (directory.path() / "first.tavell.json").string();
    const std::string second = (directory.path() / "second.tavell.json").string();
    ASSERT_EQ(0, runCommand({"convert", base, "-o", first}).status);
    ASSERT_EQ(0, runCommand({"convert", pair, "-o", second}).status);
    EXPECT_EQ(textOf(first), textOf(second));
}

TEST(Convert, writes_exports_with_and_without_results)
{
    const TemporaryDirectory directory;
    for (const char* name : {"a.vtu", "a.geojson", "a.graphml"}) {
        const std::string path = (directory.path() / name).string();
        ASSERT_EQ(0, runCommand({"convert", kTwoLoops, "-o", path}).status) << name;
        const std::string bare = textOf(path);
        ASSERT_EQ(0, runCommand({"convert", kTwoLoops, "--solve", "-o", path}).status) << name;
        EXPECT_LT(bare.size(), textOf(path).size()) << name;
    }
    EXPECT_EQ(2, runCommand({"convert", kTwoLoops, "-o", (directory.path() / "a.xyz").string()}).status);
}

TEST(Import, writes_a_network_file_and_a_list_of_losses)
{
    const TemporaryDirectory directory;
    const std::string network = (directory.path() / "village.tavell.json").string();
    const std::string losses = (directory.path() / "losses.json").string();
    const Outcome outcome =
        runCommand({"import", TAVELL_EXAMPLES "/networks/village.inp", "-o", network, "--report", losses});
    ASSERT_EQ(0, outcome.status) << outcome.errors;
    EXPECT_EQ(network + ": 6 nodes, 7 elements\n", outcome.output);
    EXPECT_TRUE(json::parse(textOf(losses)).is_array());
    EXPECT_EQ(0, runCommand({"solve", network}).status);
    EXPECT_EQ(0, runCommand({"solve", TAVELL_EXAMPLES "/networks/village.inp", "--time", "06:00"}).status);
    EXPECT_EQ(2, runCommand({"solve", TAVELL_EXAMPLES "/networks/village.inp", "--time", "noon"}).status);
    EXPECT_EQ(2, runCommand({"import", kTwoLoops}).status);
}

TEST(Import, remarks_are_counted_where_something_else_was_asked_for)
{
    const std::string village = TAVELL_EXAMPLES "/networks/village.inp";
    EXPECT_EQ(village + ": the import made 1 remark; \"tavell check " + village + "\" lists it\n",
              runCommand({"solve", village}).errors);
    EXPECT_TRUE(isIn("[pipe-law-translated]", runCommand({"check", village}).output));
}

TEST(Report, a_colour_without_values_is_said)
{
    const TemporaryDirectory directory;
    const std::string svg = (directory.path() / "a.svg").string();
    const Outcome outcome = runCommand({"report", kTwoLoops, "--svg", svg, "--colour", "temperature"});
    EXPECT_EQ(0, outcome.status);
    EXPECT_TRUE(isIn("warning: " + svg + ": the result has no temperatures", outcome.errors))
        << outcome.errors;
}

TEST(Report, draws_pictures_by_themselves)
{
    const TemporaryDirectory directory;
    const std::string svg = (directory.path() / "a.svg").string();
    ASSERT_EQ(0, runCommand({"report", kTwoLoops, "--svg", svg, "--colour", "velocity"}).status);
    EXPECT_TRUE(isIn("<svg", textOf(svg)));
    EXPECT_EQ(2, runCommand({"report", kTwoLoops}).status);
}

TEST(Report, a_picture_whose_name_ends_in_another_kind_is_refused)
{
    const TemporaryDirectory directory;
    const std::string png = (directory.path() / "a.png").string();
    const Outcome outcome = runCommand({"report", kTwoLoops, "--svg", png});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(png + ": the name of this picture does not end in .svg; give it that ending [bad-option]\n",
              outcome.errors);
    EXPECT_FALSE(std::filesystem::exists(png));
}

TEST(Import, findings_of_several_kinds_stand_worst_first_with_their_severity)
{
    const TemporaryDirectory directory;
    const std::string path = directory.write(
        "valve.inp", "[JUNCTIONS]\nA 0\nB 0\n[RESERVOIRS]\nR 50\n[PIPES]\nP R A 100 100 100 0 Open\n"
                     "[VALVES]\nV A B 100 PRV 20 0\n[QUALITY]\nA 1\n[OPTIONS]\nUnits LPS\n[END]\n");
    const Outcome outcome = runCommand({"solve", path});
    EXPECT_EQ(2, outcome.status);
    EXPECT_EQ(0U, outcome.errors.find("error: " + path)) << outcome.errors;
    EXPECT_TRUE(isIn("\nremark: " + path, outcome.errors)) << outcome.errors;
}

TEST(Fluids, lists_them_or_shows_one)
{
    EXPECT_TRUE(isIn("water", runCommand({"fluids"}).output));
    const Outcome water = runCommand({"fluids", "water", "--temperature", "20 degC", "--format", "json"});
    // IAPWS-95 at 20 degC and 1 atm: 998.207 kg/m3.
    EXPECT_NEAR(998.207, json::parse(water.output)["density"].get<double>(), 0.01);
    EXPECT_EQ(2, runCommand({"fluids", "lava"}).status);
    EXPECT_EQ(2, runCommand({"fluids", "water", "--temperature", "hot"}).status);
    EXPECT_EQ(2, runCommand({"fluids", "--temperature", "20 degC"}).status);
    EXPECT_EQ(2, runCommand({"fluids", "water", "--units", "us"}).status);
}

TEST(Completion, of_bash_offers_commands_options_and_values)
{
    if (!hasProgram("bash")) GTEST_SKIP() << "no bash on this system";
    const TemporaryDirectory directory;
    const std::string script = directory.write("tavell.bash", runCommand({"completion", "bash"}).output);
    const std::string test = directory.write(
        "test.bash",
        "set -u\n. \"$1\"\n"
        "offer() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _tavell; echo \"${COMPREPLY[*]}\"; }\n"
        "offer tavell so\noffer tavell solve --form\noffer tavell solve --format c\n"
        "offer tavell completion f\noffer tavell solve FILE\n"
        "offer tavell solve --format = j\noffer tavell report --view =\n");
    const std::string output = (directory.path() / "output").string();
    const std::string line =
        "bash " + shellQuoted(test) + ' ' + shellQuoted(script) + " >" + shellQuoted(output) + " 2>&1";
    EXPECT_EQ(0, std::system(line.c_str()));
    EXPECT_EQ("solve\n--format\ncsv\nfish\n\njson\nplan elevation isometric\n", textOf(output));
}

TEST(Completion, names_every_command_for_every_shell)
{
    for (const char* shell : {"bash", "zsh", "fish"}) {
        const Outcome outcome = runCommand({"completion", shell});
        EXPECT_EQ(0, outcome.status);
        for (const std::string& command : kCommands)
            EXPECT_TRUE(isIn(command, outcome.output)) << shell << ' ' << command;
    }
}

TEST(Manual, has_a_page_for_every_command_that_troff_takes_without_a_warning)
{
    const bool hasMan = hasProgram("man");
    const TemporaryDirectory directory;
    std::vector<std::string> arguments{"manual"};
    for (std::size_t i = 0; i <= kCommands.size(); ++i) {
        const Outcome outcome = runCommand(arguments);
        EXPECT_EQ(0, outcome.status);
        for (const char* heading :
             {".SH NAME", ".SH SYNOPSIS", ".SH OPTIONS", ".SH EXAMPLES", ".SH EXIT STATUS"})
            EXPECT_TRUE(isIn(heading, outcome.output)) << outcome.output;
        if (hasMan) {
            const std::string page = directory.write("page.1", outcome.output);
            const std::string warnings = (directory.path() / "warnings").string();
            const std::string line = "LC_ALL=C MANROFFSEQ= MANWIDTH=100 man --warnings -l -Tutf8 -Z " +
                                     shellQuoted(page) + " 2>" + shellQuoted(warnings) + " >/dev/null";
            EXPECT_EQ(0, std::system(line.c_str()));
            EXPECT_EQ("", textOf(warnings));
        }
        if (i < kCommands.size()) arguments = {"manual", kCommands[i]};
    }
}

TEST(Output, that_goes_to_a_closed_stream_has_status_3)
{
    const TemporaryDirectory directory;
    const std::string errors = (directory.path() / "errors").string();
    const std::string line =
        shellQuoted(TAVELL_COMMAND) + " solve " + shellQuoted(kTwoLoops) + " >&- 2>" + shellQuoted(errors);
    const int raw = std::system(line.c_str());
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(3, WEXITSTATUS(raw));
    EXPECT_EQ(1U, linesOf(textOf(errors)).size());
}

TEST(CtrlC, stops_a_solve_with_status_1_and_writes_nothing)
{
    // The network comes through a named pipe, so that the signal is there before the solve begins.
    const TemporaryDirectory directory;
    const std::string pipe = (directory.path() / "net.json").string();
    const std::string tables = (directory.path() / "tables.txt").string();
    const std::string errors = (directory.path() / "errors").string();
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
        const int file = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(file, 2);
        execl(TAVELL_COMMAND, TAVELL_COMMAND, "solve", pipe.c_str(), "-o", tables.c_str(),
              static_cast<char*>(nullptr));
        _exit(99);
    }
    const int writer = open(pipe.c_str(), O_WRONLY);
    ASSERT_NE(-1, writer);
    kill(child, SIGINT);
    const std::string text = baseNetwork().dump();
    EXPECT_EQ(static_cast<ssize_t>(text.size()), write(writer, text.data(), text.size()));
    close(writer);
    int raw = 0;
    while (waitpid(child, &raw, 0) == -1 && errno == EINTR) {
    }
    ASSERT_TRUE(WIFEXITED(raw));
    EXPECT_EQ(1, WEXITSTATUS(raw)) << textOf(errors);
    EXPECT_FALSE(std::filesystem::exists(tables));
    EXPECT_TRUE(isIn("stopped; there are no results", textOf(errors))) << textOf(errors);
}

TEST(CtrlC, ends_the_program_at_once_the_second_time)
{
    // The program waits for the rest of its network, so that nothing but the signals can end it.
    const TemporaryDirectory directory;
    const std::string pipe = (directory.path() / "net.json").string();
    const std::string tables = (directory.path() / "tables.txt").string();
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
        execl(TAVELL_COMMAND, TAVELL_COMMAND, "solve", pipe.c_str(), "-o", tables.c_str(),
              static_cast<char*>(nullptr));
        _exit(99);
    }
    const int writer = open(pipe.c_str(), O_WRONLY);
    ASSERT_NE(-1, writer);
    int raw = 0;
    // Signals that are sent before the first one has arrived count as one, so they are sent until it is over.
    while (waitpid(child, &raw, WNOHANG) == 0) {
        kill(child, SIGINT);
        usleep(1000);
    }
    close(writer);
    ASSERT_TRUE(WIFSIGNALED(raw));
    EXPECT_EQ(SIGINT, WTERMSIG(raw));
    EXPECT_FALSE(std::filesystem::exists(tables));
}

TEST(Completion, of_fish_and_zsh_is_a_script_that_they_take)
{
    const TemporaryDirectory directory;
    for (const char* shell : {"fish", "zsh"}) {
        if (!hasProgram(shell)) continue;
        const std::string script =
            directory.write(std::string("tavell.") + shell, runCommand({"completion", shell}).output);
        EXPECT_EQ(0, std::system((std::string(shell) + " -n " + shellQuoted(script)).c_str())) << shell;
    }
    if (!hasProgram("fish")) GTEST_SKIP() << "no fish on this system";
    const std::string output = (directory.path() / "output").string();
    const std::string line = "HOME=" + shellQuoted(directory.path().string()) +
                             " fish --no-config -c 'source " + (directory.path() / "tavell.fish").string() +
                             "; complete -C \"tavell so\"; complete -C \"tavell solve --format \"' >" +
                             shellQuoted(output);
    EXPECT_EQ(0, std::system(line.c_str()));
    EXPECT_EQ(
        "solve\tSolve a network and print its results\ncsv\tform of the tables\njson\tform of the tables\n"
        "text\tform of the tables\n",
        textOf(output));
}

TEST(EpanetOptions, of_another_file_are_refused)
{
    for (const std::vector<std::string>& option :
         {std::vector<std::string>{"--time", "10:00"}, std::vector<std::string>{"--freeze-valves"}}) {
        std::vector<std::string> arguments{"solve", kTwoLoops};
        arguments.insert(arguments.end(), option.begin(), option.end());
        const Outcome outcome = runCommand(arguments);
        EXPECT_EQ(2, outcome.status);
        EXPECT_TRUE(isIn(option.front() + ": is for EPANET files (.inp) only", outcome.errors))
            << outcome.errors;
        EXPECT_EQ(1U, linesOf(outcome.errors).size()) << outcome.errors;
    }
}

TEST(Check, goes_on_behind_errors_of_the_whole_network)
{
    const TemporaryDirectory directory;
    json network = baseNetwork();
    for (const char* node :
         {R"({"name": "alone", "at": [0, 0, 9]})", R"({"name": "far", "at": [1000, 0, 0]})",
          R"({"name": "away", "at": [1010, 0, 0]})"})
        network["nodes"].push_back(json::parse(node));
    network["elements"].push_back(
        json::parse(R"({"name": "apart", "type": "pipe", "from": "far", "to": "away", "diameter": 0.1})"));
    for (const char* command : {"check", "doctor"}) {
        const Outcome outcome = runCommand({command, directory.write("net.json", network.dump())});
        EXPECT_EQ(2, outcome.status);
        EXPECT_TRUE(isIn("node alone): no element starts or ends here", outcome.errors)) << outcome.errors;
        EXPECT_TRUE(isIn("[disconnected-part]", outcome.errors)) << outcome.errors;
        EXPECT_FALSE(isIn("[node-joins-nothing]", outcome.errors)) << outcome.errors;
    }
}

}  // namespace
