#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <tavellkit.h>

#include "element_kinds.h"
#include "network_writer.h"
#include "owners.h"
#include "random_network.h"

namespace
{

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

NetworkOwner readText(const std::string& text)
{
    tvkNetwork* network = nullptr;
    tvkReadNetworkText(text.data(), text.size(), "test.json", &network, nullptr);
    return NetworkOwner(network);
}

/// A reservoir and a pump that feed two loops with three demands.
NetworkOwner twoLoops()
{
    return readText(R"({"tavell": 1, "fluid": "water", "nodes": [
        {"name": "R", "at": [0, 0, 10], "inlet": {"pressure": 200000}},
        {"name": "A", "at": [50, 0, 0]},
        {"name": "B", "at": [150, 0, 0], "outlet": {"mass_flow": 2.0}},
        {"name": "C", "at": [150, 100, 5], "outlet": {"mass_flow": 3.0}},
        {"name": "D", "at": [50, 100, 0], "outlet": {"volume_flow": 0.001}}],
        "elements": [
        {"name": "pump/1", "type": "pump", "from": "R", "to": "A",
         "curve": [[0, 300000], [0.004, 290000], [0.008, 260000], [0.012, 200000]]},
        {"name": "AB", "type": "pipe", "from": "A", "to": "B", "diameter": 0.08, "roughness": 1e-4},
        {"name": "BC", "type": "pipe", "from": "B", "to": "C", "diameter": 0.06, "roughness": 1e-4},
        {"name": "AD", "type": "pipe", "from": "A", "to": "D", "diameter": 0.06, "roughness": 1e-4},
        {"name": "DC", "type": "pipe", "from": "D", "to": "C", "diameter": 0.06, "material": "steel"},
        {"name": "AC", "type": "pipe", "from": "A", "to": "C", "diameter": 0.05, "roughness": 1e-4}],
        "scenarios": {"high": {"nodes": {"R": {"inlet": {"pressure": 300000}}}}}})");
}

/// What tvkSolveMany writes.
struct Study {
    tvkStatus status = TVK_INTERNAL;
    std::vector<double> results;
    std::vector<int> outcomes;
    std::vector<int> iterations;
    std::vector<std::string> texts;
};

std::vector<std::string> taken(std::vector<char*>& texts)
{
    std::vector<std::string> copies;
    for (char* text : texts) {
        copies.emplace_back(text == nullptr ? "" : text);
        tvkFreeText(text);
    }
    return copies;
}

Study solveMany(const tvkNetwork* network, const std::string& options, const std::vector<tvkInput>& inputs,
                const std::vector<double>& values, const std::vector<tvkOutput>& outputs,
                tvkProgress progress = nullptr, void* user = nullptr, tvkFindings* findings = nullptr)
{
    const std::size_t count = values.size() / inputs.size();
    Study study;
    study.results.assign(count * outputs.size(), 0.0);
    study.outcomes.assign(count, -1);
    study.iterations.assign(count, -1);
    std::vector<char*> texts(count, nullptr);
    study.status = tvkSolveMany(network, options.c_str(), count, inputs.size(), inputs.data(), values.data(),
                                outputs.size(), outputs.data(), study.results.data(), study.outcomes.data(),
                                study.iterations.data(), texts.data(), progress, user, findings);
    study.texts = taken(texts);
    return study;
}

bool areSameBits(const std::vector<double>& a, const std::vector<double>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

/// Every node's and element's main quantities.
std::vector<tvkOutput> everything(const tvkNetwork* network)
{
    std::vector<tvkOutput> outputs;
    for (std::size_t i = 0; i < tvkNodeCount(network); ++i) {
        for (const char* quantity : {"pressure", "head", "external_mass_flow", "mass_residual"})
            outputs.push_back({TVK_NODE, quantity, i});
    }
    for (std::size_t i = 0; i < tvkElementCount(network); ++i) {
        for (const char* quantity : {"mass_flow", "reynolds", "temperature", "friction", "law_mismatch"})
            outputs.push_back({TVK_ELEMENT, quantity, i});
    }
    outputs.push_back({TVK_NETWORK, "certificate", 0});
    return outputs;
}

/// The numbers of one solve as tvkSolveMany has them.
std::vector<double> valuesOf(const tvkResult* result, const std::vector<tvkOutput>& outputs)
{
    std::vector<double> values;
    for (const tvkOutput& output : outputs) {
        const double* column = output.part == TVK_NODE      ? tvkNodeResults(result, output.quantity)
                               : output.part == TVK_ELEMENT ? tvkElementResults(result, output.quantity)
                                                            : nullptr;
        if (output.part == TVK_NETWORK)
            values.push_back(tvkCertificateIsGood(result));
        else
            values.push_back(column == nullptr ? kNothing : column[output.position]);
    }
    return values;
}

const std::vector<tvkInput> kInputs{{TVK_NODE, "outlet/mass_flow", 2}, {TVK_NODE, "outlet/mass_flow", 3},
                                    {TVK_ELEMENT, "roughness", 1},     {TVK_ELEMENT, "diameter", 2},
                                    {TVK_ELEMENT, "closed", 5},        {TVK_NODE, "z", 3}};

/// Rows of kInputs, some of them left as they are.
std::vector<double> someValues(std::size_t count)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> number(0.0, 1.0);
    std::vector<double> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(number(random) < 0.2 ? kNothing : 1.0 + 2.0 * number(random));
        values.push_back(number(random) < 0.2 ? kNothing : 2.0 + 2.0 * number(random));
        values.push_back(number(random) < 0.2 ? kNothing : 1e-3 * number(random));
        values.push_back(number(random) < 0.2 ? kNothing : 0.05 + 0.05 * number(random));
        values.push_back(number(random) < 0.5 ? kNothing : 1.0);
        values.push_back(number(random) < 0.5 ? kNothing : 8.0 * number(random));
    }
    return values;
}

TEST(ScenarioBatch, a_scenario_has_the_bits_of_a_solve_of_its_own)
{
    const NetworkOwner network = twoLoops();
    const auto outputs = everything(network.get());
    const std::vector<double> values = someValues(40);
    const Study study = solveMany(network.get(), R"({"threads": 1})", kInputs, values, outputs);
    ASSERT_EQ(TVK_OK, study.status);
    for (std::size_t i = 0; i < 40; ++i) {
        tvkNetwork* made = nullptr;
        ASSERT_EQ(TVK_OK, tvkCopyNetwork(network.get(), &made, nullptr));
        const NetworkOwner own(made);
        for (std::size_t j = 0; j < kInputs.size(); ++j) {
            const double value = values[i * kInputs.size() + j];
            if (std::isnan(value)) continue;
            const auto set = kInputs[j].part == TVK_NODE ? tvkSetNodeValues : tvkSetElementValues;
            ASSERT_EQ(TVK_OK, set(made, kInputs[j].key, 1, &kInputs[j].position, &value, nullptr));
        }
        tvkResult* result = nullptr;
        EXPECT_EQ(study.outcomes[i], tvkSolve(made, nullptr, nullptr, nullptr, &result, nullptr)) << i;
        const ResultOwner owner(result);
        ASSERT_NE(nullptr, result) << i;
        EXPECT_EQ(study.iterations[i], tvkResultIterations(result)) << i;
        const auto row = study.results.begin() + static_cast<std::ptrdiff_t>(i * outputs.size());
        EXPECT_TRUE(
            areSameBits({row, row + static_cast<std::ptrdiff_t>(outputs.size())}, valuesOf(result, outputs)))
            << i;
    }
}

TEST(ScenarioBatch, threads_and_the_division_into_calls_change_no_bit)
{
    const NetworkOwner network = twoLoops();
    const auto outputs = everything(network.get());
    const std::vector<double> values = someValues(101);
    const Study alone = solveMany(network.get(), R"({"threads": 1})", kInputs, values, outputs);
    for (const char* options : {R"({"threads": 2})", R"({"threads": 5})", ""}) {
        const Study study = solveMany(network.get(), options, kInputs, values, outputs);
        EXPECT_TRUE(areSameBits(alone.results, study.results)) << options;
        EXPECT_EQ(alone.outcomes, study.outcomes) << options;
        EXPECT_EQ(alone.iterations, study.iterations) << options;
        EXPECT_EQ(alone.texts, study.texts) << options;
    }
    const std::ptrdiff_t cut = 37;
    const auto inputsCut = values.begin() + cut * static_cast<std::ptrdiff_t>(kInputs.size());
    const Study first =
        solveMany(network.get(), R"({"threads": 2})", kInputs, {values.begin(), inputsCut}, outputs);
    const Study second =
        solveMany(network.get(), R"({"threads": 3})", kInputs, {inputsCut, values.end()}, outputs);
    std::vector<double> joined = first.results;
    joined.insert(joined.end(), second.results.begin(), second.results.end());
    EXPECT_TRUE(areSameBits(alone.results, joined));
}

TEST(ScenarioBatch, a_refused_scenario_is_a_row_and_the_others_go_on)
{
    const NetworkOwner network = twoLoops();
    const std::vector<tvkInput> inputs{{TVK_ELEMENT, "diameter", 1}, {TVK_ELEMENT, "roughness", 1}};
    const double infinity = std::numeric_limits<double>::infinity();
    const std::vector<double> values{0.08, 1e-4, -1.0, 1e-4, 0.08, 0.2, infinity, 1e-4, kNothing, kNothing};
    const Study study =
        solveMany(network.get(), R"({"threads": 2})", inputs, values, {{TVK_NODE, "pressure", 2}});
    EXPECT_EQ(TVK_OK, study.status);
    EXPECT_EQ((std::vector<int>{TVK_OK, TVK_BAD_INPUT, TVK_BAD_INPUT, TVK_BAD_INPUT, TVK_OK}),
              study.outcomes);
    EXPECT_EQ(study.results[0], study.results[4]);  // the values are those of the network
    EXPECT_TRUE(std::isnan(study.results[1]));
    EXPECT_EQ("", study.texts[0]);
    const auto finding = [&](std::size_t row) { return nlohmann::json::parse(study.texts[row]).at(0); };
    EXPECT_EQ("the value is not above 0", finding(1).at("message"));
    EXPECT_EQ("element AB", finding(1).at("object"));
    EXPECT_EQ("section-impossible", finding(2).at("code"));
    EXPECT_EQ("/elements/1", finding(2).at("pointer"));
    EXPECT_EQ("the value is infinite", finding(3).at("message"));
}

TEST(ScenarioBatch, a_pointer_does_what_a_patch_does)
{
    const NetworkOwner network = twoLoops();
    const auto outputs = everything(network.get());
    struct Case {
        const char* pointer;
        double value;
        const char* patch;
    };
    const Case cases[] = {
        {"/fluid/temperature", 333.15, R"({"fluid": {"temperature": 333.15}})"},
        {"/gravity/2", -0.5, R"({"gravity": [0, 0, -0.5]})"},
        {"/settings/pressure_datum", 1e5, R"({"settings": {"pressure_datum": 100000}})"},
        {"/nodes/B/outlet/mass_flow", 4.0, R"({"nodes": {"B": {"outlet": {"mass_flow": 4}}}})"},
        {"/nodes/D/at/2", 3.0, R"({"nodes": {"D": {"at": [50, 100, 3]}}})"},
        {"/elements/AB/roughness", 0.0, R"({"elements": {"AB": {"roughness": 0}}})"},
        {"/elements/AB/heat/heat", 2000.0, R"({"elements": {"AB": {"heat": {"heat": 2000}}}})"},
        {"/elements/pump~11/curve/0/1", 310000.0,
         R"({"elements": {"pump/1": {"curve": [[0, 310000], [0.004, 290000], [0.008, 260000],
                                               [0.012, 200000]]}}})"},
    };
    std::vector<tvkInput> inputs;
    for (const Case& each : cases)
        inputs.push_back({TVK_NETWORK, each.pointer, 0});
    std::vector<double> values(inputs.size() * (inputs.size() + 1), kNothing);
    for (std::size_t i = 0; i < inputs.size(); ++i)
        values[i * inputs.size() + i] = cases[i].value;
    const Study study =
        solveMany(network.get(), R"({"threads": 1, "temperatures": true})", inputs, values, outputs);
    const auto rowOf = [&](std::size_t i) {
        const auto row = study.results.begin() + static_cast<std::ptrdiff_t>(i * outputs.size());
        return std::vector<double>(row, row + static_cast<std::ptrdiff_t>(outputs.size()));
    };
    const auto solved = [&](const char* patch) {
        tvkNetwork* made = nullptr;
        tvkCopyNetwork(network.get(), &made, nullptr);
        const NetworkOwner own(made);
        EXPECT_EQ(TVK_OK, tvkPatchNetwork(made, patch, nullptr)) << patch;
        tvkResult* result = nullptr;
        tvkSolve(made, R"({"temperatures": true})", nullptr, nullptr, &result, nullptr);
        const ResultOwner owner(result);
        return valuesOf(result, outputs);
    };
    const std::vector<double> base = solved("{}");
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        EXPECT_EQ(TVK_OK, study.outcomes[i]) << study.texts[i];
        EXPECT_TRUE(areSameBits(rowOf(i), solved(cases[i].patch))) << cases[i].pointer;
        EXPECT_EQ(std::string(cases[i].pointer) == "/settings/pressure_datum" ||
                      std::string(cases[i].pointer) == "/elements/AB/heat/heat" ||
                      !areSameBits(rowOf(i), base),
                  true)
            << cases[i].pointer;
    }
    EXPECT_TRUE(areSameBits(rowOf(inputs.size()), base));  // nothing stays behind
}

TEST(ScenarioBatch, a_pointer_that_fits_no_value_costs_its_scenario)
{
    const NetworkOwner network = twoLoops();
    const std::vector<tvkInput> inputs{{TVK_NETWORK, "/elements/AB/material/0", 0},
                                       {TVK_NETWORK, "/fluid/colour", 0},
                                       {TVK_NETWORK, "/settings/temperatures", 0}};
    const std::vector<double> values{1.0,      kNothing, kNothing, kNothing, 1.0,      kNothing,
                                     kNothing, kNothing, 1.0,      kNothing, kNothing, kNothing};
    const Study study = solveMany(network.get(), "", inputs, values, {{TVK_NODE, "pressure", 2}});
    EXPECT_EQ((std::vector<int>{TVK_BAD_INPUT, TVK_BAD_INPUT, TVK_BAD_INPUT, TVK_OK}), study.outcomes);
    EXPECT_NE(study.texts[1].find("unknown-key"), std::string::npos) << study.texts[1];
    EXPECT_NE(study.texts[2].find("wrong-type"), std::string::npos) << study.texts[2];
}

TEST(ScenarioBatch, each_element_closed_once_leaves_nothing_behind)
{
    const NetworkOwner network = twoLoops();
    std::vector<tvkInput> inputs;
    for (std::size_t i = 0; i < 6; ++i)
        inputs.push_back({TVK_ELEMENT, "closed", i});
    std::vector<double> values(42, kNothing);
    for (std::size_t i = 0; i < 6; ++i)
        values[i * 6 + i] = 1.0;
    const Study study = solveMany(network.get(), R"({"threads": 1})", inputs, values,
                                  {{TVK_ELEMENT, "mass_flow", 1}, {TVK_ELEMENT, "mass_flow", 3}});
    EXPECT_EQ(TVK_BAD_INPUT, study.outcomes[0]);  // without the pump there is no pressure
    EXPECT_NE(study.texts[0].find("no-given-pressure"), std::string::npos) << study.texts[0];
    for (std::size_t i = 1; i < 7; ++i)
        EXPECT_EQ(TVK_OK, study.outcomes[i]) << study.texts[i];
    EXPECT_EQ(0.0, study.results[2]);
    EXPECT_EQ(0.0, study.results[7]);
    EXPECT_GT(study.results[12], 0.0);
    EXPECT_GT(study.results[13], 0.0);
}

TEST(ScenarioBatch, numbers_of_all_nodes_or_elements_are_those_of_their_values)
{
    const NetworkOwner network = twoLoops();
    std::vector<tvkOutput> outputs;
    for (std::size_t i = 0; i < 6; ++i)
        outputs.push_back({TVK_ELEMENT, "velocity", i});
    for (const char* quantity :
         {"min:velocity", "max:velocity", "max_abs:velocity", "sum:velocity", "mean:velocity",
          "argmin:velocity", "argmax:velocity", "argmax_abs:velocity"})
        outputs.push_back({TVK_ELEMENT, quantity, 0});
    outputs.push_back({TVK_NODE, "sum:external_mass_flow", 0});
    outputs.push_back({TVK_NETWORK, "certificate", 0});
    outputs.push_back({TVK_NETWORK, "iterations", 0});
    // B takes so little that BC flows back; the pump has no velocity.
    const Study study = solveMany(network.get(), "", {{TVK_NODE, "outlet/mass_flow", 2}}, {9.0}, outputs);
    ASSERT_EQ(TVK_OK, study.outcomes[0]) << study.texts[0];
    const std::vector<double>& row = study.results;
    ASSERT_TRUE(std::isnan(row[0]));
    std::size_t least = 1;
    std::size_t most = 1;
    std::size_t fastest = 1;
    double sum = 0.0;
    for (std::size_t i = 1; i < 6; ++i) {
        if (row[i] < row[least]) least = i;
        if (row[i] > row[most]) most = i;
        if (std::fabs(row[i]) > std::fabs(row[fastest])) fastest = i;
        sum += row[i];
    }
    EXPECT_LT(row[least], 0.0);
    EXPECT_EQ(row[least], row[6]);
    EXPECT_EQ(row[most], row[7]);
    EXPECT_EQ(std::fabs(row[fastest]), row[8]);
    EXPECT_EQ(sum, row[9]);
    EXPECT_EQ(sum / 5.0, row[10]);
    EXPECT_EQ(static_cast<double>(least), row[11]);
    EXPECT_EQ(static_cast<double>(most), row[12]);
    EXPECT_EQ(static_cast<double>(fastest), row[13]);
    EXPECT_NEAR(0.0, row[14], 1e-4);  // kg/s; what flows in flows out, as close as a solve is
    EXPECT_EQ(1.0, row[15]);
    EXPECT_EQ(static_cast<double>(study.iterations[0]), row[16]);
}

TEST(ScenarioBatch, a_scenario_and_temperatures_are_options)
{
    const NetworkOwner network = twoLoops();
    const std::vector<tvkInput> inputs{{TVK_NODE, "outlet/mass_flow", 2}};
    const std::vector<tvkOutput> outputs{{TVK_NODE, "pressure", 0}};
    const Study study = solveMany(network.get(), R"({"scenario": "high"})", inputs, {kNothing}, outputs);
    EXPECT_EQ(3e5, study.results[0]);
    EXPECT_EQ(TVK_BAD_INPUT,
              solveMany(network.get(), R"({"scenario": "low"})", inputs, {kNothing}, outputs).status);
}

TEST(ScenarioBatch, a_scenario_beyond_its_time_is_a_row_that_says_so)
{
    const NetworkOwner network = twoLoops();
    // Building alone takes longer than this.
    const Study study =
        solveMany(network.get(), R"({"time_limit": 1e-9, "threads": 1})", {{TVK_NODE, "outlet/mass_flow", 2}},
                  {1.0, -1e300}, {{TVK_NODE, "pressure", 1}});
    EXPECT_EQ(TVK_OK, study.status);
    EXPECT_EQ(TVK_CANCELLED, study.outcomes[0]);
    EXPECT_TRUE(std::isnan(study.results[0]));
    EXPECT_NE(study.texts[0].find("the solve was stopped at its time limit of 1e-09 s after 1 step"),
              std::string::npos)
        << study.texts[0];
}

struct Calls {
    std::vector<int> done;
    int stopAt = -1;
};

int note(void* user, int done)
{
    auto& calls = *static_cast<Calls*>(user);
    calls.done.push_back(done);
    return calls.stopAt >= 0 && done >= calls.stopAt ? 1 : 0;
}

TEST(ScenarioBatch, progress_counts_from_nothing_to_all)
{
    const NetworkOwner network = twoLoops();
    const std::vector<double> values = someValues(50);
    for (const char* options : {R"({"threads": 1})", R"({"threads": 3})"}) {
        Calls calls;
        const Study study =
            solveMany(network.get(), options, kInputs, values, {{TVK_NODE, "pressure", 1}}, &note, &calls);
        EXPECT_EQ(TVK_OK, study.status);
        ASSERT_GE(calls.done.size(), 2U);
        EXPECT_EQ(0, calls.done.front());
        EXPECT_EQ(50, calls.done.back());
        EXPECT_TRUE(std::is_sorted(calls.done.begin(), calls.done.end()));
    }
}

TEST(ScenarioBatch, a_study_that_is_stopped_keeps_what_is_done)
{
    const NetworkOwner network = twoLoops();
    const std::vector<double> values = someValues(20);
    Calls calls;
    calls.stopAt = 3;
    const Study study = solveMany(network.get(), R"({"threads": 1})", kInputs, values,
                                  {{TVK_NODE, "pressure", 1}}, &note, &calls);
    EXPECT_EQ(TVK_CANCELLED, study.status);
    for (std::size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(i < 3 ? TVK_OK : TVK_CANCELLED, study.outcomes[i]);
        EXPECT_EQ(i >= 3, std::isnan(study.results[i]));
        EXPECT_EQ("", study.texts[i]);
    }
    for (const char* options : {R"({"threads": 1})", R"({"threads": 4})"}) {
        Calls none;
        none.stopAt = 0;
        const Study nothing =
            solveMany(network.get(), options, kInputs, values, {{TVK_NODE, "pressure", 1}}, &note, &none);
        EXPECT_EQ(TVK_CANCELLED, nothing.status);
        EXPECT_EQ(std::vector<int>(20, TVK_CANCELLED), nothing.outcomes);
        EXPECT_EQ(std::vector<int>{0}, none.done);
    }
}

TEST(ScenarioBatch, what_cannot_be_asked_for_is_refused_as_a_whole)
{
    const NetworkOwner network = twoLoops();
    const FindingsOwner findings(tvkNewFindings());
    const auto statusOf = [&](const char* options, tvkInput input, tvkOutput output) {
        tvkClearFindings(findings.get());
        const tvkStatus status =
            solveMany(network.get(), options, {input}, {1.0}, {output}, nullptr, nullptr, findings.get())
                .status;
        if (status != TVK_OK) {
            EXPECT_EQ(1U, tvkFindingsCount(findings.get()));
            EXPECT_STREQ("bad-option", tvkFindingCode(findings.get(), 0));
            EXPECT_STRNE("", tvkFindingRemedy(findings.get(), 0));
        }
        return status;
    };
    const tvkInput input{TVK_NODE, "outlet/mass_flow", 2};
    const tvkOutput output{TVK_NODE, "pressure", 1};
    EXPECT_EQ(TVK_OK, statusOf("", input, output));
    for (const char* options : {R"({"threads": 0})", R"({"threads": 1.5})", R"({"time_limit": 0})",
                                R"({"colour": 1})", R"({"temperatures": 1})", "[]"})
        EXPECT_EQ(TVK_BAD_INPUT, statusOf(options, input, output)) << options;
    for (const tvkInput& wrong :
         {tvkInput{3, "z", 0}, tvkInput{TVK_NODE, "colour", 0}, tvkInput{TVK_NODE, "z", 5},
          tvkInput{TVK_ELEMENT, "z", 0}, tvkInput{TVK_ELEMENT, "diameter", 6},
          tvkInput{TVK_NETWORK, "fluid/temperature", 0}, tvkInput{TVK_NETWORK, "/fluid", 0},
          tvkInput{TVK_NETWORK, "/title", 0}, tvkInput{TVK_NETWORK, "", 0}, tvkInput{TVK_NODE, nullptr, 0},
          tvkInput{TVK_NETWORK, "/nodes/X/at/0", 0}, tvkInput{TVK_NETWORK, "/nodes", 0},
          tvkInput{TVK_NETWORK, "/elements/AB", 0}, tvkInput{TVK_NETWORK, "/fluid/~2", 0}})
        EXPECT_EQ(TVK_BAD_INPUT, statusOf("", wrong, output)) << (wrong.key == nullptr ? "null" : wrong.key);
    for (const tvkOutput& wrong :
         {tvkOutput{3, "pressure", 0}, tvkOutput{TVK_NODE, "velocity", 0}, tvkOutput{TVK_NODE, "pressure", 5},
          tvkOutput{TVK_NODE, "median:pressure", 0}, tvkOutput{TVK_NETWORK, "pressure", 0},
          tvkOutput{TVK_NODE, nullptr, 0}, tvkOutput{TVK_ELEMENT, "min:", 0}})
        EXPECT_EQ(TVK_BAD_INPUT, statusOf("", input, wrong));
    EXPECT_EQ(TVK_BAD_INPUT, tvkSolveMany(nullptr, "", 0, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(TVK_BAD_INPUT, tvkSolveMany(network.get(), "", 1, 1, &input, nullptr, 0, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(TVK_OK, tvkSolveMany(network.get(), "", 3, 0, nullptr, nullptr, 0, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(TVK_OK, tvkSolveMany(network.get(), "", 0, 1, &input, nullptr, 1, &output, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr, nullptr));
}

/// Keys and values that no check lets pass, and ones that it does.
struct AnyInput {
    explicit AnyInput(unsigned seed) : random(seed) {}

    double value()
    {
        static const double kValues[] = {0.0,  -1.0, 1.0,   1e-4, 0.01, 0.1,   0.5,
                                         10.0, 1e6,  1e300, -0.0, 1e-9, 1e-320};
        return kValues[random() % std::size(kValues)];
    }
    std::string nodeKey()
    {
        static const char* const kKeys[] = {"x",
                                            "y",
                                            "z",
                                            "inlet/pressure",
                                            "inlet/mass_flow",
                                            "inlet/velocity",
                                            "inlet/temperature",
                                            "outlet/pressure",
                                            "outlet/volume_flow",
                                            "outlet/reynolds",
                                            "outlet/temperature"};
        return kKeys[random() % std::size(kKeys)];
    }
    std::string elementKey(const kit::ElementKind& kind)
    {
        static const char* const kKeys[] = {"diameter",    "wetted_perimeter", "area", "length", "closed",
                                            "check_valve", "reference_density"};
        const std::size_t place = random() % (std::size(kKeys) + kind.numbers.size());
        return place < std::size(kKeys) ? kKeys[place] : kind.numbers[place - std::size(kKeys)].key;
    }

    std::mt19937 random;
};

TEST(ScenarioBatch, a_scenario_is_refused_exactly_when_a_solve_refuses_it)
{
    int refused = 0;
    int accepted = 0;
    for (unsigned seed = 1; seed <= 150; ++seed) {
        kit::Network random = kit_tests::RandomNetwork(seed).make();
        random.scenarios.clear();  // a solve after a change checks them as well
        const NetworkOwner network = readText(kit::networkText(random));
        if (network == nullptr) continue;
        AnyInput any(seed);
        for (int i = 0; i < 12; ++i) {
            const bool isNode = any.random() % 3 == 0;
            const std::size_t position =
                any.random() % (isNode ? tvkNodeCount(network.get()) : tvkElementCount(network.get()));
            const std::string key =
                isNode ? any.nodeKey()
                       : any.elementKey(*kit::findElementKind(tvkElementType(network.get(), position)));
            const double value = any.value();
            const tvkInput input{isNode ? TVK_NODE : TVK_ELEMENT, key.c_str(), position};
            const Study study = solveMany(network.get(), R"({"threads": 1})", {input}, {value},
                                          {{TVK_NODE, "pressure", 0}, {TVK_ELEMENT, "mass_flow", 0}});
            ASSERT_EQ(TVK_OK, study.status);

            tvkNetwork* made = nullptr;
            ASSERT_EQ(TVK_OK, tvkCopyNetwork(network.get(), &made, nullptr));
            const NetworkOwner own(made);
            const auto set = isNode ? tvkSetNodeValues : tvkSetElementValues;
            tvkStatus expected = set(made, key.c_str(), 1, &position, &value, nullptr);
            tvkResult* result = nullptr;
            if (expected == TVK_OK) expected = tvkSolve(made, nullptr, nullptr, nullptr, &result, nullptr);
            const ResultOwner owner(result);
            ASSERT_EQ(expected, study.outcomes[0])
                << seed << ' ' << key << ' ' << value << ' ' << study.texts[0];
            if (expected == TVK_OK) {
                const std::vector<double> numbers{tvkNodeResults(result, "pressure")[0],
                                                  tvkElementResults(result, "mass_flow")[0]};
                EXPECT_TRUE(areSameBits(numbers, study.results)) << seed << ' ' << key << ' ' << value;
            }
            ++(expected == TVK_BAD_INPUT ? refused : accepted);
        }
    }
    EXPECT_GT(refused, 50);
    EXPECT_GT(accepted, 50);
}

}  // namespace
