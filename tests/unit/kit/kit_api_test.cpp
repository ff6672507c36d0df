#include "kit_api.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "kit_api_options.h"
#include "owners.h"

namespace
{

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

FindingsOwner newFindings()
{
    return FindingsOwner(tvkNewFindings());
}

NetworkOwner readText(const std::string& text, tvkFindings* findings = nullptr)
{
    tvkNetwork* network = nullptr;
    tvkReadNetworkText(text.data(), text.size(), "test.json", &network, findings);
    return NetworkOwner(network);
}

/// Two pipes of 10 m between 200 and 100 kPa.
NetworkOwner twoPipes()
{
    return readText(R"({"tavell": 1, "nodes": [
        {"name": "A", "at": [0, 0, 0], "inlet": {"pressure": 200000}},
        {"name": "B", "at": [10, 0, 0]},
        {"name": "C", "at": [20, 0, 0], "outlet": {"pressure": 100000}}],
        "elements": [
        {"name": "P1", "type": "pipe", "from": "A", "to": "B", "diameter": 0.1},
        {"name": "P2", "type": "pipe", "from": "B", "to": "C", "diameter": 0.1}],
        "scenarios": {"high": {"nodes": {"A": {"inlet": {"pressure": 300000}}}}}})");
}

ResultOwner solve(const tvkNetwork* network, const char* options = nullptr, tvkFindings* findings = nullptr)
{
    tvkResult* result = nullptr;
    tvkSolve(network, options, nullptr, nullptr, &result, findings);
    return ResultOwner(result);
}

std::string textOf(const FindingsOwner& findings)
{
    char* text = nullptr;
    tvkFindingsText(findings.get(), &text);
    std::string copy = text == nullptr ? "" : text;
    tvkFreeText(text);
    return copy;
}

std::string networkText(const tvkNetwork* network)
{
    char* text = nullptr;
    tvkNetworkText(network, &text, nullptr);
    std::string copy = text == nullptr ? "" : text;
    tvkFreeText(text);
    return copy;
}

/// The path of a file that is not there yet.
std::string newPath(const std::string& ending)
{
    const std::string name = "tavell-api-" + std::to_string(std::random_device()()) + ending;
    return (std::filesystem::temp_directory_path() / name).string();
}

TEST(KitApi, an_exception_becomes_a_status_and_a_finding)
{
    const FindingsOwner findings = newFindings();
    const auto statusOf = [&](auto&& body) { return kit::guarded(findings.get(), body); };
    EXPECT_EQ(TVK_INTERNAL, statusOf([](kit::Findings&) -> tvkStatus { throw std::bad_alloc(); }));
    EXPECT_EQ(TVK_INTERNAL, statusOf([](kit::Findings&) -> tvkStatus { throw std::runtime_error("odd"); }));
    EXPECT_EQ(TVK_INTERNAL, statusOf([](kit::Findings&) -> tvkStatus { throw 42; }));
    EXPECT_EQ(TVK_BAD_INPUT, statusOf([](kit::Findings&) -> tvkStatus { kit::refuse("no", "yes"); }));
    ASSERT_EQ(4U, tvkFindingsCount(findings.get()));
    EXPECT_STREQ("out-of-memory", tvkFindingCode(findings.get(), 0));
    EXPECT_STREQ("internal-error", tvkFindingCode(findings.get(), 1));
    EXPECT_STREQ("odd", tvkFindingMessage(findings.get(), 1));
    EXPECT_STREQ("internal-error", tvkFindingCode(findings.get(), 2));
    EXPECT_STREQ("bad-option", tvkFindingCode(findings.get(), 3));
}

TEST(KitApi, a_finding_without_memory_for_it_is_still_there)
{
    tvkFindings findings;
    findings.unrecorded = "out-of-memory";
    EXPECT_EQ(1U, tvkFindingsCount(&findings));
    EXPECT_EQ(1U, tvkFindingsCountOf(&findings, TVK_ERROR));
    EXPECT_STREQ("out-of-memory", tvkFindingCode(&findings, 0));
    EXPECT_STRNE("", tvkFindingMessage(&findings, 0));
    char* text = nullptr;
    ASSERT_EQ(TVK_OK, tvkFindingsJson(&findings, &text));
    const auto array = nlohmann::json::parse(text);
    tvkFreeText(text);
    ASSERT_EQ(1U, array.size());
    EXPECT_EQ("out-of-memory", array[0]["code"]);
}

TEST(KitApi, a_size_beyond_memory_is_no_crash)
{
    tvkNetwork* network = nullptr;
    ASSERT_EQ(TVK_OK, tvkNewNetwork(&network, nullptr));
    const NetworkOwner owner(network);
    const FindingsOwner findings = newFindings();
    const double values[1] = {0.0};
    EXPECT_EQ(TVK_BAD_INPUT,
              tvkSetNodeValues(network, "x", static_cast<size_t>(-1), nullptr, values, findings.get()));
    EXPECT_EQ(1U, tvkFindingsCount(findings.get()));
}

TEST(KitApi, an_unknown_option_is_refused_with_the_known_ones)
{
    const FindingsOwner findings = newFindings();
    const NetworkOwner network = twoPipes();
    EXPECT_EQ(nullptr, solve(network.get(), R"({"colour": 1})", findings.get()));
    EXPECT_EQ("/colour: the option is unknown; give one of \"scenario\", \"temperatures\" [bad-option]\n",
              textOf(findings));
}

TEST(KitApi, options_that_are_no_object_or_have_the_wrong_type_are_refused)
{
    const NetworkOwner network = twoPipes();
    for (const char* options : {"[1]", "{", "{\"temperatures\": 1}", "{\"scenario\": true}"}) {
        const FindingsOwner findings = newFindings();
        EXPECT_EQ(nullptr, solve(network.get(), options, findings.get())) << options;
        EXPECT_EQ(1U, tvkFindingsCount(findings.get())) << options;
    }
}

TEST(KitApi, a_scenario_is_solved_without_changing_the_network)
{
    const NetworkOwner network = twoPipes();
    ASSERT_EQ(1U, tvkScenarioCount(network.get()));
    EXPECT_STREQ("high", tvkScenarioName(network.get(), 0));
    EXPECT_EQ(nullptr, tvkScenarioName(network.get(), 1));
    const std::string before = networkText(network.get());
    const ResultOwner result = solve(network.get(), R"({"scenario": "high"})");
    ASSERT_NE(nullptr, result);
    EXPECT_NEAR(300000.0, tvkNodeResults(result.get(), "pressure")[0], 1e-6);
    EXPECT_EQ(before, networkText(network.get()));
}

TEST(KitApi, a_network_made_by_calls_equals_the_same_network_from_a_file)
{
    tvkNetwork* made = nullptr;
    ASSERT_EQ(TVK_OK, tvkNewNetwork(&made, nullptr));
    const NetworkOwner owner(made);
    const std::array<const char*, 3> nodes{"A", "B", "C"};
    const std::array<double, 9> at{0, 0, 0, 10, 0, 0, 20, 0, 0};
    ASSERT_EQ(TVK_OK, tvkAddNodes(made, 3, nodes.data(), at.data(), nullptr));
    const std::array<const char*, 2> elements{"P1", "P2"};
    const std::array<const char*, 2> types{"pipe", "pipe"};
    const std::array<size_t, 2> from{0, 1};
    const std::array<size_t, 2> to{1, 2};
    ASSERT_EQ(TVK_OK,
              tvkAddElements(made, 2, elements.data(), types.data(), from.data(), to.data(), nullptr));
    const std::array<double, 2> diameters{0.1, 0.1};
    ASSERT_EQ(TVK_OK, tvkSetElementValues(made, "diameter", 2, nullptr, diameters.data(), nullptr));
    const double high = 200000.0;
    const double low = 100000.0;
    const size_t end = 2;
    ASSERT_EQ(TVK_OK, tvkSetNodeValues(made, "inlet/pressure", 1, nullptr, &high, nullptr));
    ASSERT_EQ(TVK_OK, tvkSetNodeValues(made, "outlet/pressure", 1, &end, &low, nullptr));

    const ResultOwner fromCalls = solve(made);
    const ResultOwner fromFile = solve(twoPipes().get());
    ASSERT_NE(nullptr, fromCalls);
    ASSERT_NE(nullptr, fromFile);
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(tvkNodeResults(fromFile.get(), "pressure")[i],
                  tvkNodeResults(fromCalls.get(), "pressure")[i]);
}

TEST(KitApi, a_network_with_missing_sizes_is_refused_by_name_when_it_is_solved)
{
    tvkNetwork* made = nullptr;
    ASSERT_EQ(TVK_OK, tvkNewNetwork(&made, nullptr));
    const NetworkOwner owner(made);
    const std::array<const char*, 2> nodes{"A", "B"};
    ASSERT_EQ(TVK_OK, tvkAddNodes(made, 2, nodes.data(), nullptr, nullptr));
    const std::array<const char*, 1> elements{"P"};
    const std::array<const char*, 1> types{"pipe"};
    const std::array<size_t, 1> from{0};
    const std::array<size_t, 1> to{1};
    ASSERT_EQ(TVK_OK,
              tvkAddElements(made, 1, elements.data(), types.data(), from.data(), to.data(), nullptr));
    const FindingsOwner findings = newFindings();
    EXPECT_EQ(nullptr, solve(made, nullptr, findings.get()));
    EXPECT_NE(std::string::npos, textOf(findings).find("element P")) << textOf(findings);
}

TEST(KitApi, a_change_of_many_values_is_made_as_a_whole_or_not_at_all)
{
    const NetworkOwner network = twoPipes();
    const FindingsOwner findings = newFindings();
    const std::array<double, 2> bad{0.2, -1.0};
    EXPECT_EQ(TVK_BAD_INPUT,
              tvkSetElementValues(network.get(), "diameter", 2, nullptr, bad.data(), findings.get()));
    EXPECT_STREQ("element P2", tvkFindingObject(findings.get(), 0));
    std::array<double, 2> read{};
    ASSERT_EQ(TVK_OK, tvkGetElementValues(network.get(), "diameter", 2, nullptr, read.data(), nullptr));
    EXPECT_EQ(0.1, read[0]);
    const std::array<size_t, 2> outside{0, 2};
    EXPECT_EQ(TVK_BAD_INPUT,
              tvkSetElementValues(network.get(), "diameter", 2, outside.data(), bad.data(), nullptr));
}

TEST(KitApi, a_property_that_a_type_does_not_have_is_refused)
{
    const NetworkOwner network = twoPipes();
    const std::array<double, 1> value{1.0};
    const FindingsOwner findings = newFindings();
    EXPECT_EQ(TVK_BAD_INPUT,
              tvkSetElementValues(network.get(), "kv", 1, nullptr, value.data(), findings.get()));
    EXPECT_STREQ("element P1", tvkFindingObject(findings.get(), 0));
    EXPECT_EQ(TVK_BAD_INPUT, tvkSetElementValues(network.get(), "colour", 1, nullptr, value.data(), nullptr));
    EXPECT_EQ(TVK_BAD_INPUT,
              tvkSetNodeValues(network.get(), "inlet/colour", 1, nullptr, value.data(), nullptr));
    EXPECT_EQ(TVK_BAD_INPUT, tvkSetNodeValues(network.get(), "pressure", 1, nullptr, value.data(), nullptr));
}

TEST(KitApi, what_a_value_is_refused_for_names_element_and_reason)
{
    const NetworkOwner network = twoPipes();
    const std::array<const char*, 2> names{"boost", "loss"};
    const std::array<const char*, 2> types{"pump", "kv_valve"};
    const std::array<std::size_t, 2> from{0, 1}, to{1, 2};
    ASSERT_EQ(TVK_OK,
              tvkAddElements(network.get(), 2, names.data(), types.data(), from.data(), to.data(), nullptr));
    const auto refusal = [&](const char* key, std::size_t position, double value) {
        const FindingsOwner findings = newFindings();
        EXPECT_EQ(TVK_BAD_INPUT,
                  tvkSetElementValues(network.get(), key, 1, &position, &value, findings.get()));
        return textOf(findings);
    };
    const auto says = [](const std::string& text, const char* object, const char* reason) {
        return text.find(object) != std::string::npos && text.find(reason) != std::string::npos;
    };
    EXPECT_PRED3(says, refusal("diameter", 2, 0.1), "element boost", "a pump has no cross-section");
    EXPECT_PRED3(says, refusal("area", 3, 0.1), "element loss", "an area without a shape");
    EXPECT_PRED3(says, refusal("diameter", 1, 0.0), "element P2", "not above 0");
    EXPECT_PRED3(says, refusal("length", 1, -1.0), "element P2", "not above 0");
    EXPECT_PRED3(says, refusal("length", 1, HUGE_VAL), "element P2", "infinite");
    EXPECT_PRED3(says, refusal("closed", 0, 2.0), "element P1", "neither 0 nor 1");
    EXPECT_PRED3(says, refusal("kv", 0, 2.0), "element P1", "a pipe has no");
}

TEST(KitApi, types_of_all_elements_follow_additions_and_patches)
{
    EXPECT_EQ(nullptr, tvkElementTypes(nullptr));
    const NetworkOwner network = twoPipes();
    EXPECT_STREQ("pipe", tvkElementTypes(network.get())[1]);
    const char* name = "V";
    const char* type = "kv_valve";
    const std::size_t from = 0, to = 2;
    ASSERT_EQ(TVK_OK, tvkAddElements(network.get(), 1, &name, &type, &from, &to, nullptr));
    EXPECT_STREQ("kv_valve", tvkElementTypes(network.get())[2]);
    const double kv = 3.0, diameter = 0.05;
    const std::size_t position = 2;
    EXPECT_EQ(TVK_OK, tvkSetElementValues(network.get(), "diameter", 1, &position, &diameter, nullptr));
    EXPECT_EQ(TVK_OK, tvkSetElementValues(network.get(), "kv", 1, &position, &kv, nullptr));
    const char* const patch = R"({"elements": {"P2": {"type": "cv_valve", "cv": 2.0}}})";
    ASSERT_EQ(TVK_OK, tvkPatchNetwork(network.get(), patch, nullptr));
    EXPECT_STREQ("cv_valve", tvkElementTypes(network.get())[1]);
    const double cv = 5.0;
    const std::size_t second = 1;
    EXPECT_EQ(TVK_OK, tvkSetElementValues(network.get(), "cv", 1, &second, &cv, nullptr));
}

TEST(KitApi, values_that_are_set_are_read_back_and_taken_away_with_nan)
{
    const NetworkOwner network = twoPipes();
    const size_t first = 0;
    const auto set = [&](const char* key, double value) {
        return tvkSetElementValues(network.get(), key, 1, &first, &value, nullptr);
    };
    const auto get = [&](const char* key) {
        double value = -1.0;
        tvkGetElementValues(network.get(), key, 1, &first, &value, nullptr);
        return value;
    };
    for (const char* key : {"roughness", "k", "length"}) {
        EXPECT_TRUE(std::isnan(get(key))) << key;
        EXPECT_EQ(TVK_OK, set(key, 0.001)) << key;
        EXPECT_EQ(0.001, get(key)) << key;
        EXPECT_EQ(TVK_OK, set(key, kNothing)) << key;
        EXPECT_TRUE(std::isnan(get(key))) << key;
    }
    EXPECT_EQ(TVK_OK, set("closed", 1.0));
    EXPECT_EQ(1.0, get("closed"));
    EXPECT_EQ(TVK_BAD_INPUT, set("closed", 2.0));
    EXPECT_EQ(TVK_OK, set("wetted_perimeter", 0.4));
    EXPECT_EQ(TVK_OK, set("area", 0.01));
    EXPECT_TRUE(std::isnan(get("diameter")));
    EXPECT_EQ(0.01, get("area"));
}

TEST(KitApi, a_boundary_changes_its_flow_its_side_and_goes)
{
    const NetworkOwner network = twoPipes();
    const size_t last = 2;
    const auto set = [&](const char* key, double value) {
        return tvkSetNodeValues(network.get(), key, 1, &last, &value, nullptr);
    };
    const auto get = [&](const char* key) {
        double value = -1.0;
        tvkGetNodeValues(network.get(), key, 1, &last, &value, nullptr);
        return value;
    };
    EXPECT_EQ(100000.0, get("outlet/pressure"));
    EXPECT_TRUE(std::isnan(get("inlet/pressure")));
    EXPECT_EQ(TVK_OK, set("outlet/mass_flow", 3.0));
    EXPECT_EQ(TVK_OK, set("outlet/volume_flow", 0.004));
    EXPECT_TRUE(std::isnan(get("outlet/mass_flow")));
    EXPECT_EQ(0.004, get("outlet/volume_flow"));
    EXPECT_EQ(TVK_OK, set("outlet/pressure", kNothing));
    EXPECT_EQ(TVK_OK, set("outlet/volume_flow", kNothing));
    EXPECT_EQ(std::string::npos, networkText(network.get()).find("outlet"));
    EXPECT_EQ(20.0, get("x"));
    EXPECT_EQ(TVK_BAD_INPUT, set("x", kNothing));
}

TEST(KitApi, a_result_keeps_the_network_that_was_solved)
{
    NetworkOwner network = twoPipes();
    const ResultOwner result = solve(network.get());
    ASSERT_NE(nullptr, result);
    const std::string solved = networkText(network.get());
    const double wide = 0.5;
    ASSERT_EQ(TVK_OK, tvkSetElementValues(network.get(), "diameter", 1, nullptr, &wide, nullptr));
    tvkNetwork* kept = nullptr;
    ASSERT_EQ(TVK_OK, tvkResultNetwork(result.get(), &kept, nullptr));
    const NetworkOwner owner(kept);
    EXPECT_EQ(solved, networkText(kept));
    network.reset();
    EXPECT_EQ(TVK_OK, tvkSetElementValues(kept, "diameter", 1, nullptr, &wide, nullptr));
    EXPECT_NE(solved, networkText(kept));
    EXPECT_EQ(1, tvkCertificateIsGood(result.get()));
}

TEST(KitApi, names_are_found_in_one_call_and_unknown_ones_named)
{
    const NetworkOwner network = twoPipes();
    const FindingsOwner findings = newFindings();
    const std::array<const char*, 3> names{"C", "nowhere", "A"};
    std::array<size_t, 3> positions{};
    EXPECT_EQ(TVK_BAD_INPUT, tvkFindNodes(network.get(), 3, names.data(), positions.data(), findings.get()));
    EXPECT_EQ(2U, positions[0]);
    EXPECT_EQ(TVK_NO_POSITION, positions[1]);
    EXPECT_EQ(0U, positions[2]);
    EXPECT_EQ("there is no node \"nowhere\"; correct the name [bad-option]\n", textOf(findings));
}

TEST(KitApi, a_name_twice_or_without_letters_is_refused)
{
    const NetworkOwner network = twoPipes();
    for (const std::array<const char*, 2> names :
         {std::array<const char*, 2>{"D", "D"}, {"D", "A"}, {"D", ""}, {"D", nullptr}}) {
        EXPECT_EQ(TVK_BAD_INPUT, tvkAddNodes(network.get(), 2, names.data(), nullptr, nullptr));
    }
    EXPECT_EQ(3U, tvkNodeCount(network.get()));
}

TEST(KitApi, a_patch_changes_what_it_names)
{
    const NetworkOwner network = twoPipes();
    EXPECT_EQ(TVK_OK,
              tvkPatchNetwork(network.get(), R"({"elements": {"P2": {"diameter": "200 mm"}}})", nullptr));
    const size_t second = 1;
    double diameter = 0.0;
    ASSERT_EQ(TVK_OK, tvkGetElementValues(network.get(), "diameter", 1, &second, &diameter, nullptr));
    EXPECT_EQ(0.2, diameter);
    EXPECT_EQ(1U, tvkScenarioCount(network.get()));
    const std::string before = networkText(network.get());
    EXPECT_EQ(TVK_BAD_INPUT, tvkPatchNetwork(network.get(), R"({"elements": {"P9": {}}})", nullptr));
    EXPECT_EQ(TVK_BAD_INPUT, tvkPatchNetwork(network.get(), "[]", nullptr));
    const std::string deep = "{\"nodes\":" + std::string(100000, '[') + std::string(100000, ']') + '}';
    EXPECT_EQ(TVK_BAD_INPUT, tvkPatchNetwork(network.get(), deep.c_str(), nullptr));
    EXPECT_EQ(before, networkText(network.get()));
}

TEST(KitApi, every_quantity_of_the_header_is_there)
{
    const ResultOwner result = solve(twoPipes().get());
    ASSERT_NE(nullptr, result);
    for (const char* name : {"pressure", "head", "external_mass_flow", "mass_residual"})
        EXPECT_NE(nullptr, tvkNodeResults(result.get(), name)) << name;
    for (const char* name : {"mass_flow", "volume_flow", "velocity", "reynolds", "pressure_difference",
                             "friction", "minor", "height", "pump", "other", "law_mismatch"})
        EXPECT_NE(nullptr, tvkElementResults(result.get(), name)) << name;
    // Two equal pipes share the difference of 100 kPa, all of it friction.
    EXPECT_NEAR(50000.0, tvkElementResults(result.get(), "friction")[0], 5.0);
}

TEST(KitApi, const_reads_of_one_handle_run_on_several_threads)
{
    const NetworkOwner network = twoPipes();
    const ResultOwner result = solve(network.get());
    ASSERT_NE(nullptr, result);
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            const ResultOwner own = solve(network.get());
            const char* const name = "B";
            size_t position = 0;
            tvkFindNodes(network.get(), 1, &name, &position, nullptr);
            const double* friction = tvkElementResults(result.get(), "friction");
            if (own && position == 1 && friction != nullptr && tvkCertificateIsGood(result.get()) == 1)
                ++good;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(4, good.load());
}

TEST(KitApi, a_clock_time_is_hours_and_minutes)
{
    EXPECT_EQ(8.5 * 3600.0, kit::clockSeconds("08:30"));
    EXPECT_EQ(3661.0, kit::clockSeconds("1:01:01"));
    for (const char* text : {"", "8", "8:60", "-1:00", "8:30x", ":30", "8:", "1:2:3:4"})
        EXPECT_FALSE(kit::clockSeconds(text).has_value()) << text;
}

TEST(KitApi, exports_and_pictures_are_chosen_by_the_ending_of_the_name)
{
    const NetworkOwner network = twoPipes();
    const FindingsOwner findings = newFindings();
    EXPECT_EQ(TVK_BAD_INPUT, tvkWriteExport(network.get(), nullptr, "a.xyz", findings.get()));
    EXPECT_EQ(TVK_BAD_INPUT, tvkWritePicture(network.get(), nullptr, "a.jpeg", nullptr, findings.get()));
    EXPECT_EQ(2U, tvkFindingsCount(findings.get()));
    EXPECT_STREQ("a.xyz", tvkFindingFile(findings.get(), 0));
}

TEST(KitApi, a_result_of_another_network_is_not_exported_with_this_one)
{
    const NetworkOwner network = twoPipes();
    const ResultOwner result = solve(network.get());
    tvkNetwork* other = nullptr;
    ASSERT_EQ(TVK_OK, tvkNewNetwork(&other, nullptr));
    const NetworkOwner owner(other);
    EXPECT_EQ(TVK_BAD_INPUT, tvkWriteExport(other, result.get(), "a.vtu", nullptr));
}

TEST(KitApi, a_result_is_not_drawn_with_a_network_of_other_names)
{
    const NetworkOwner network = twoPipes();
    const ResultOwner result = solve(network.get());
    std::string text = networkText(network.get());
    for (std::size_t at = text.find("\"P2\""); at != std::string::npos; at = text.find("\"P2\""))
        text.replace(at, 4, "\"P3\"");
    const NetworkOwner other = readText(text);
    const FindingsOwner findings = newFindings();
    EXPECT_EQ(TVK_BAD_INPUT, tvkWritePicture(other.get(), result.get(), "a.svg", nullptr, findings.get()));
    EXPECT_NE(textOf(findings).find("element number 2 is \"P2\" there and \"P3\" in the one given"),
              std::string::npos)
        << textOf(findings);
}

TEST(KitApi, a_picture_coloured_by_what_was_not_solved_comes_with_a_warning)
{
    const NetworkOwner network = twoPipes();
    const ResultOwner result = solve(network.get());
    const std::string path = newPath(".svg");
    const FindingsOwner none = newFindings();
    EXPECT_EQ(TVK_OK, tvkWritePicture(network.get(), result.get(), path.c_str(),
                                      R"({"quantity": "velocity"})", none.get()));
    EXPECT_EQ(0U, tvkFindingsCount(none.get()));
    const FindingsOwner findings = newFindings();
    EXPECT_EQ(TVK_OK, tvkWritePicture(network.get(), result.get(), path.c_str(),
                                      R"({"quantity": "temperature"})", findings.get()));
    EXPECT_TRUE(std::filesystem::remove(path));
    EXPECT_EQ(
        textOf(findings),
        path + ": the result has no temperatures, so the picture is not coloured; switch \"temperatures\" on "
               "in the settings [picture-without-values]\n");
}

/// A valve that blocks the only way to a tap.
NetworkOwner blockedTap()
{
    return readText(R"({"tavell": 1, "nodes": [
        {"name": "A", "at": [0, 0, 0], "inlet": {"pressure": 200000}},
        {"name": "B", "at": [10, 0, 0]},
        {"name": "C", "at": [20, 0, 0], "outlet": {"mass_flow": 0.5}},
        {"name": "D", "at": [10, 10, 0], "outlet": {"mass_flow": 0.5}}],
        "elements": [
        {"name": "P", "type": "pipe", "from": "A", "to": "B", "diameter": 0.1},
        {"name": "Q", "type": "pipe", "from": "B", "to": "D", "diameter": 0.1},
        {"name": "V", "type": "non_return", "from": "C", "to": "B", "diameter": 0.1}]})");
}

TEST(KitApi, a_failed_solve_is_diagnosed_once)
{
    const ResultOwner result = solve(blockedTap().get());
    ASSERT_NE(nullptr, result);
    ASSERT_EQ(TVK_NOT_CONVERGED, tvkResultOutcome(result.get()));
    const FindingsOwner findings = newFindings();
    EXPECT_EQ(TVK_OK, tvkDiagnose(result.get(), findings.get()));
    EXPECT_NE(textOf(findings).find("[solve-failed]"), std::string::npos) << textOf(findings);
    EXPECT_EQ(textOf(findings).find("[not-converged]"), std::string::npos) << textOf(findings);
}

TEST(KitApi, the_report_of_a_failed_solve_names_the_part_that_fails_unless_that_is_stopped)
{
    const ResultOwner result = solve(blockedTap().get());
    ASSERT_NE(nullptr, result);
    const std::string path = newPath(".html");
    const auto writeReport = [&](tvkProgress progress, const FindingsOwner& findings) {
        return tvkWriteReport(result.get(), path.c_str(), nullptr, progress, nullptr, findings.get());
    };
    const FindingsOwner stopped = newFindings();
    const tvkStatus status = writeReport([](void*, int) { return 1; }, stopped);
    if (textOf(stopped).find("[report-not-built]") != std::string::npos)
        GTEST_SKIP() << "no report in this build";
    EXPECT_EQ(TVK_CANCELLED, status);
    EXPECT_FALSE(std::filesystem::exists(path));
    const FindingsOwner findings = newFindings();
    ASSERT_EQ(TVK_OK, writeReport(nullptr, findings));
    std::ostringstream page;
    page << std::ifstream(path).rdbuf();
    std::filesystem::remove(path);
    EXPECT_NE(page.str().find("smallest-failing-part"), std::string::npos);
    EXPECT_NE(page.str().find("\"solve-failed\""), std::string::npos);
    EXPECT_EQ(page.str().find("\"not-converged\""), std::string::npos);
}

TEST(KitApi, reading_and_examining_go_on_behind_errors_of_the_whole_network)
{
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        ("tavell-examined-" + std::to_string(std::random_device()()) + ".json");
    std::ofstream(path) << R"({"tavell": 1, "nodes": [
        {"name": "A", "at": [0, 0, 0], "outlet": {"mass_flow": 1}},
        {"name": "B", "at": [10, 0, 0], "inlet": {"mass_flow": 1}}],
        "elements": [{"name": "P", "type": "pipe", "from": "A", "to": "B", "diameter": 25}]})";
    const FindingsOwner findings = newFindings();
    tvkNetwork* network = nullptr;
    EXPECT_EQ(TVK_BAD_INPUT, tvkReadAndExamine(path.string().c_str(), nullptr, &network, findings.get()));
    std::filesystem::remove(path);
    EXPECT_EQ(nullptr, network);
    EXPECT_NE(textOf(findings).find("[no-given-pressure]"), std::string::npos) << textOf(findings);
    EXPECT_NE(textOf(findings).find("[diameter-unlikely]"), std::string::npos) << textOf(findings);
    EXPECT_EQ(textOf(findings).find("[network-without-pressure]"), std::string::npos) << textOf(findings);
}

TEST(KitApi, quantities_and_units_are_read_as_in_files)
{
    double value = 0.0;
    EXPECT_EQ(TVK_OK, tvkParseQuantity("25 mm", "length", &value, nullptr));
    EXPECT_EQ(0.025, value);
    EXPECT_EQ(TVK_BAD_INPUT, tvkParseQuantity("25 bar", "length", &value, nullptr));
    EXPECT_EQ(TVK_BAD_INPUT, tvkParseQuantity("25", "colour", &value, nullptr));
    EXPECT_EQ(TVK_OK, tvkCheckUnits("metric", nullptr));
    EXPECT_EQ(TVK_BAD_INPUT, tvkCheckUnits("pressure=furlong", nullptr));
}

}  // namespace
