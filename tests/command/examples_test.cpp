// Every network in examples/networks gives the answer that its file states.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "command/run_command.h"

namespace
{

using command_test::Outcome;
using command_test::TemporaryDirectory;
using nlohmann::json;

std::vector<std::string> exampleNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(TAVELL_EXAMPLES "/networks")) {
        if (entry.path().extension() == ".json") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Values of one quantity by name of node or element.
using Quantity = std::map<std::string, double>;
using Quantities = std::map<std::string, Quantity>;

std::vector<double> numbersOf(const std::string& line)
{
    std::vector<double> numbers;
    std::size_t start = 0;
    while (start <= line.size()) {
        const std::size_t end = std::min(line.find(',', start), line.size());
        numbers.push_back(std::strtod(line.substr(start, end - start).c_str(), nullptr));
        start = end + 1;
    }
    return numbers;
}

/// Reads the exported text; its rows are in the order of the file's lists.
void readExport(const json& network, const std::string& csv, Quantities& nodes, Quantities& elements)
{
    const std::vector<std::string> lines = command_test::linesOf(csv);
    const std::size_t elementCount = network["elements"].size();
    const std::size_t nodeCount = network["nodes"].size();
    ASSERT_EQ(elementCount + nodeCount + 2, lines.size());
    for (std::size_t i = 0; i < elementCount; ++i) {
        const std::vector<double> row = numbersOf(lines[1 + i]);
        ASSERT_EQ(5U, row.size());
        const std::string name = network["elements"][i]["name"];
        elements["reynolds"][name] = row[1];
        elements["velocity"][name] = row[2];
        elements["volume_flow"][name] = row[3];
        elements["mass_flow"][name] = row[4];
    }
    for (std::size_t i = 0; i < nodeCount; ++i) {
        const std::vector<double> row = numbersOf(lines[2 + elementCount + i]);
        ASSERT_EQ(3U, row.size());
        nodes["pressure"][network["nodes"][i]["name"]] = row[1];
    }
}

/// Adds what follows from the exported values: pressure differences and the flows that enter at the nodes.
void addDerived(const json& network, Quantities& nodes, Quantities& elements)
{
    for (const json& element : network["elements"]) {
        const std::string from = element["from"];
        const std::string to = element["to"];
        const std::string name = element["name"];
        elements["pressure_difference"][name] = nodes["pressure"][to] - nodes["pressure"][from];
        nodes["external_mass_flow"][from] += elements["mass_flow"][name];
        nodes["external_mass_flow"][to] -= elements["mass_flow"][name];
    }
}

/// Largest expected value of each quantity; an expected 0 is judged by it.
Quantity largestExpected(const json& group)
{
    Quantity largest;
    for (const auto& [name, values] : group.items()) {
        for (const auto& [quantity, value] : values.items())
            largest[quantity] = std::max(largest[quantity], std::fabs(value.get<double>()));
    }
    return largest;
}

std::size_t compare(const json& answer, const char* group, Quantities& results)
{
    if (!answer.contains(group)) return 0;
    Quantity largest = largestExpected(answer[group]);
    const double tolerance = answer["tolerance"];
    std::size_t count = 0;
    for (const auto& [name, values] : answer[group].items()) {
        for (const auto& [quantity, value] : values.items()) {
            const double expected = value;
            const double scale = expected == 0.0 ? largest[quantity] : std::fabs(expected);
            EXPECT_NEAR(expected, results[quantity].at(name), tolerance * scale) << name << ' ' << quantity;
            ++count;
        }
    }
    return count;
}

class Example : public testing::TestWithParam<std::string>
{
};

TEST_P(Example, gives_the_answer_in_its_file)
{
    const std::string path = TAVELL_EXAMPLES "/networks/" + GetParam() + ".json";
    const json network = json::parse(command_test::textOf(path));
    ASSERT_TRUE(network.contains("source"));
    const TemporaryDirectory directory;
    const std::string csvPath = (directory.path() / "results.csv").string();
    const Outcome outcome = command_test::runCommand({"solve", path, "--csv", csvPath});
    ASSERT_EQ(0, outcome.status) << outcome.errors;

    Quantities nodes;
    Quantities elements;
    readExport(network, command_test::textOf(csvPath), nodes, elements);
    if (HasFatalFailure()) return;
    addDerived(network, nodes, elements);
    const json& answer = network["answer"];
    EXPECT_GT(compare(answer, "nodes", nodes) + compare(answer, "elements", elements), 0U);
}

INSTANTIATE_TEST_SUITE_P(Networks, Example, testing::ValuesIn(exampleNames()),
                         [](const auto& test) { return test.param; });

TEST(Examples, are_at_least_six_networks)
{
    EXPECT_GE(exampleNames().size(), 6U);
}

}  // namespace
