// tavell.hpp as a host uses it; the example of docs/kit.md is compiled into this program by the build.
#include <tavell.hpp>

#include <cmath>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace
{

const char* const kExample = TAVELL_EXAMPLES "/networks/three_reservoirs.json";

TEST(Hpp, reads_solves_and_gives_values_by_name)
{
    const auto network = tavell::Network::read(kExample);
    ASSERT_TRUE(network) << network.findings().text();
    const auto result = network->solve();
    ASSERT_TRUE(result) << result.findings().text();
    // The published head at the junction, 34.53 m, less its height of 30 m.
    const std::size_t junction = network->findNode("junction");
    EXPECT_NEAR(44424.1, result->nodeValues("pressure")[junction], 0.01 * 44424.1);
    EXPECT_EQ(network->elementCount(), result->elementValues("mass_flow").size());
    EXPECT_TRUE(result->isCertificateGood());
    EXPECT_TRUE(result->nodeValues("colour").isEmpty());
}

TEST(Hpp, errors_are_findings_and_no_exceptions)
{
    const auto network = tavell::Network::read("no-such-file.json");
    EXPECT_FALSE(network);
    EXPECT_FALSE(network.hasValue());
    EXPECT_EQ(tavell::Status::badInput, network.status());
    ASSERT_EQ(1U, network.findings().size());
    const tavell::Finding finding = network.findings()[0];
    EXPECT_EQ("cannot-open-file", finding.code);
    EXPECT_EQ("no-such-file.json", finding.file);
    EXPECT_EQ(tavell::Severity::error, finding.severity);
}

TEST(Hpp, a_solve_stops_when_the_progress_function_says_so)
{
    const auto network = tavell::Network::read(kExample);
    ASSERT_TRUE(network);
    const auto result = network->solve("", [](int) { return true; });
    EXPECT_EQ(tavell::Status::cancelled, result.status());
    EXPECT_FALSE(result);
    ASSERT_TRUE(result.hasValue());
    EXPECT_FALSE(result->hasValues());
}

TEST(Hpp, lists_of_sizes_that_do_not_fit_are_refused)
{
    auto network = tavell::Network::create();
    ASSERT_TRUE(network);
    EXPECT_FALSE(network->addNodes({"A", "B"}, {0.0, 0.0, 0.0}));
    EXPECT_TRUE(network->addNodes({"A", "B"}, {0.0, 0.0, 0.0, 1.0, 0.0, 0.0}));
    EXPECT_FALSE(network->addElements({"P"}, {"pipe"}, {0}, {}));
    EXPECT_TRUE(network->addElements({"P"}, {"pipe"}, {0}, {1}));
    EXPECT_FALSE(network->setElementValues("diameter", {0.1, 0.2}, {0}));
    EXPECT_TRUE(network->setElementValues("diameter", {0.1}));
    EXPECT_EQ(std::vector<std::string>{"P"}, network->elementNames());
    EXPECT_EQ("pipe", network->elementType(0));
    EXPECT_EQ(std::vector<std::string>{"pipe"}, network->elementTypes());
    EXPECT_EQ((std::vector<double>{0.1}), *network->elementValues("diameter"));
    EXPECT_EQ(1U, network->ends().second[0]);
}

TEST(Hpp, a_study_has_a_row_for_each_scenario)
{
    const auto network = tavell::Network::read(kExample);
    ASSERT_TRUE(network) << network.findings().text();
    const std::size_t junction = network->findNode("junction");
    const auto study =
        network->solveMany({{TVK_ELEMENT, "diameter", 0}}, {0.3, -1.0, 0.31},
                           {{TVK_NODE, "pressure", junction}, {TVK_NETWORK, "certificate", 0}});
    ASSERT_TRUE(study) << study.findings().text();
    ASSERT_EQ(6U, study->results.size());
    EXPECT_EQ(tavell::Status::ok, study->outcomes[0]);
    EXPECT_EQ(tavell::Status::badInput, study->outcomes[1]);
    EXPECT_EQ("", study->texts[0]);
    EXPECT_NE(study->texts[1].find("the value is not above 0"), std::string::npos);
    EXPECT_NE(study->results[0], study->results[4]);
    EXPECT_TRUE(std::isnan(study->results[2]));
    EXPECT_FALSE(network->solveMany({{TVK_NODE, "z", 0}, {TVK_NODE, "z", 1}}, {1.0}, {}));
    EXPECT_EQ(tavell::Status::badInput, network->solveMany({{TVK_NODE, "colour", 0}}, {1.0}, {}).status());
}

TEST(Hpp, a_copy_is_a_network_of_its_own)
{
    const auto network = tavell::Network::read(kExample);
    ASSERT_TRUE(network);
    auto copy = network->copy();
    ASSERT_TRUE(copy);
    EXPECT_EQ(*network->hash(), *copy->hash());
    EXPECT_TRUE(copy->setElementValues("diameter", {0.1}));
    EXPECT_NE(*network->hash(), *copy->hash());
}

TEST(Hpp, fluids_have_properties)
{
    const auto water = tavell::fluid("water", 293.15, std::nan(""));
    ASSERT_TRUE(water) << water.findings().text();
    // IAPWS-95 at 20 degC and 1 atm: 998.207 kg/m3.
    EXPECT_NEAR(998.207, water->density, 0.01);
    EXPECT_FALSE(tavell::fluid("lava", 1500.0, std::nan("")));
}

}  // namespace
