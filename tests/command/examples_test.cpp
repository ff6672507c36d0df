// Every network in examples/networks gives the answer that its file states.
#include <algorithm>
#include <cmath>
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
        if (entry.path().extension() == ".json") names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// Values of one quantity by name of node or element.
using Quantity = std::map<std::string, double>;
using Quantities = std::map<std::string, Quantity>;

/// The columns of a result file by name.
Quantities quantitiesOf(const json& columns)
{
    Quantities quantities;
    const json& names = columns["names"];
    for (const auto& [quantity, values] : columns.items()) {
        if (quantity == "names") continue;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (values[i].is_number()) quantities[quantity][names[i]] = values[i];
        }
    }
    return quantities;
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

std::size_t compare(const json& answer, const char* group, const json& columns)
{
    if (!answer.contains(group)) return 0;
    Quantities results = quantitiesOf(columns);
    Quantity largest = largestExpected(answer[group]);
    const double tolerance = answer.value("tolerance", 0.01);  // left out where it is the usual one
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
    const TemporaryDirectory directory;
    const std::string resultPath = (directory.path() / "result.json").string();
    const Outcome outcome = command_test::runCommand(
        {"solve", TAVELL_EXAMPLES "/networks/" + GetParam(), "--result", resultPath});
    ASSERT_EQ(0, outcome.status) << outcome.errors;
    const json result = json::parse(command_test::textOf(resultPath));
    // The network in a result file has its answer in SI units.
    const json& network = result["network"];
    ASSERT_TRUE(network.contains("source"));
    ASSERT_TRUE(network.contains("answer"));
    const json& answer = network["answer"];
    EXPECT_GT(compare(answer, "nodes", result["nodes"]) + compare(answer, "elements", result["elements"]),
              0U);
    EXPECT_TRUE(result["certificate"]["is_good"].get<bool>()) << result["certificate"];
}

INSTANTIATE_TEST_SUITE_P(Networks, Example, testing::ValuesIn(exampleNames()),
                         [](const auto& test) { return test.param.substr(0, test.param.find('.')); });

TEST(Examples, are_at_least_a_dozen_networks)
{
    EXPECT_GE(exampleNames().size(), 12U);
}

}  // namespace
