// kit_allocation_test.cpp: each function of the kit, its allocations failing one after the other.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <tavellkit.h>

#include "../failing_allocations.h"
#include "../scratch_folder.h"
#include "kit_world.h"

using namespace faults;

namespace
{

constexpr const char* kNetwork = "pump_static_head.json";
constexpr const char* kWithScenarios = "shower_and_cistern.tavell.json";
constexpr const char* kInp = "village.inp";
constexpr const char* kLongName = "a name that is longer than what a string keeps within itself";

/// Wrong in many ways: an unknown key, a node twice, an element to nowhere, a unit that there is not.
constexpr const char* kFlawed = R"({"tavell": 1, "colour": "red",
  "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": "3 furlong"}},
            {"name": "a", "at": [1, 0, 0]}, {"name": "b", "at": [1, 0]}],
  "elements": [{"name": "one", "type": "pipe", "from": "a", "to": "nowhere", "diameter": -1}]})";

/// A valve that blocks the only way to a tap.
constexpr const char* kInsoluble = R"({"tavell": 1,
  "nodes": [{"name": "a", "at": [0, 0, 0], "inlet": {"pressure": 200000}}, {"name": "b", "at": [10, 0, 0]},
            {"name": "c", "at": [20, 0, 0], "outlet": {"mass_flow": 0.5}},
            {"name": "d", "at": [10, 10, 0], "outlet": {"mass_flow": 0.5}}],
  "elements": [{"name": "p", "type": "pipe", "from": "a", "to": "b", "diameter": 0.1},
               {"name": "q", "type": "pipe", "from": "b", "to": "d", "diameter": 0.1},
               {"name": "v", "type": "non_return", "from": "c", "to": "b", "diameter": 0.1}]})";

void nothing(KitWorld& /*world*/) {}

void withNetwork(KitWorld& world)
{
    world.network = readExample(kNetwork);
}

void withScenarios(KitWorld& world)
{
    world.network = readExample(kWithScenarios);
}

/// A network that was changed, so that it is checked before it is used.
void withChangedNetwork(KitWorld& world)
{
    withNetwork(world);
    const double roughness = 1e-4;
    const std::size_t position = 2;
    ASSERT_EQ(tvkSetElementValues(world.network, "roughness", 1, &position, &roughness, nullptr), TVK_OK);
}

/// A network that a result holds too, so that a change is made to a copy.
void withResult(KitWorld& world)
{
    withNetwork(world);
    world.result = solved(world.network);
}

void withInsoluble(KitWorld& world)
{
    ASSERT_EQ(tvkReadNetworkText(kInsoluble, std::string(kInsoluble).size(), "bad", &world.network, nullptr),
              TVK_OK);
}

void withFailedResult(KitWorld& world)
{
    withInsoluble(world);
    ASSERT_EQ(tvkSolve(world.network, nullptr, nullptr, nullptr, &world.result, nullptr), TVK_NOT_CONVERGED);
}

void withFindings(KitWorld& world)
{
    tvkReadNetworkText(kFlawed, std::string(kFlawed).size(), "flawed", &world.madeNetwork, world.findings);
    ASSERT_GT(tvkFindingsCount(world.findings), 3U);
}

}  // namespace

TEST(KitAllocations, networks_are_read_or_there_is_none)
{
    const std::string file = examplePath(kNetwork);
    failAtEveryAllocation({"file", nothing, [&](KitWorld& world) {
                               return tvkReadNetwork(file.c_str(), &world.madeNetwork, world.findings);
                           }});
    failAtEveryAllocation({"file and examination", nothing, [&](KitWorld& world) {
                               return tvkReadAndExamine(file.c_str(), nullptr, &world.madeNetwork,
                                                        world.findings);
                           }});
    const std::string text = bytesOf(examplePath(kWithScenarios));
    failAtEveryAllocation({"text", nothing, [&](KitWorld& world) {
                               return tvkReadNetworkText(text.data(), text.size(), kLongName,
                                                         &world.madeNetwork, world.findings);
                           }});
    failAtEveryAllocation(
        {"new", nothing, [](KitWorld& world) { return tvkNewNetwork(&world.madeNetwork, world.findings); }});
    failAtEveryAllocation({"copy", withScenarios, [](KitWorld& world) {
                               return tvkCopyNetwork(world.network, &world.madeNetwork, world.findings);
                           }});
}

TEST(KitAllocations, refusals_are_told_or_memory_ran_out)
{
    const std::string flawed = kFlawed;
    failAtEveryAllocation({"flawed text", nothing,
                           [&](KitWorld& world) {
                               return tvkReadNetworkText(flawed.data(), flawed.size(), "flawed",
                                                         &world.madeNetwork, world.findings);
                           },
                           TVK_BAD_INPUT});
    failAtEveryAllocation({"no file", nothing,
                           [](KitWorld& world) {
                               return tvkReadNetwork("there/is/no/file/of/such/a/name", &world.madeNetwork,
                                                     world.findings);
                           },
                           TVK_BAD_INPUT});
    failAtEveryAllocation(
        {"null", nothing,
         [](KitWorld& world) { return tvkReadNetwork(nullptr, &world.madeNetwork, world.findings); },
         TVK_BAD_INPUT});
    failAtEveryAllocation({"bad option", withNetwork,
                           [](KitWorld& world) {
                               return tvkSolve(world.network, R"({"colour": 1})", nullptr, nullptr,
                                               &world.madeResult, world.findings);
                           },
                           TVK_BAD_INPUT});
    failAtEveryAllocation({"unknown names", withNetwork,
                           [](KitWorld& world) {
                               const std::array<const char*, 2> names{kLongName, "well"};
                               std::array<std::size_t, 2> found{};
                               return tvkFindNodes(world.network, 2, names.data(), found.data(),
                                                   world.findings);
                           },
                           TVK_BAD_INPUT});
}

TEST(KitAllocations, imports_are_made_or_there_is_none)
{
    const std::string file = examplePath(kInp);
    failAtEveryAllocation({"inp", nothing, [&](KitWorld& world) {
                               return tvkImportInp(file.c_str(), R"({"time": "6:00", "freeze_valves": true})",
                                                   &world.madeNetwork, world.findings);
                           }});
}

TEST(KitAllocations, inp_files_are_read_and_examined_or_there_is_none)
{
    const std::string file = examplePath(kInp);
    failAtEveryAllocation({"read and examine", nothing,
                           [&](KitWorld& world) {
                               return tvkReadAndExamine(file.c_str(), nullptr, &world.madeNetwork,
                                                        world.findings);
                           },
                           TVK_OK, "", false, 300});
}

TEST(KitAllocations, tables_are_read_or_there_is_none)
{
    const ScratchFolder folder;
    {
        KitWorld world;
        withNetwork(world);
        ASSERT_EQ(tvkWriteCsv(world.network, "nodes.csv", "elements.csv", nullptr), TVK_OK);
    }
    failAtEveryAllocation({"pair", nothing, [](KitWorld& world) {
                               return tvkReadCsv("nodes.csv", "elements.csv", &world.madeNetwork,
                                                 world.findings);
                           }});
    failAtEveryAllocation({"by name", nothing, [](KitWorld& world) {
                               return tvkReadNetwork("nodes.csv,elements.csv", &world.madeNetwork,
                                                     world.findings);
                           }});
}

TEST(KitAllocations, networks_are_written_whole_or_not_at_all)
{
    const ScratchFolder folder;
    failAtEveryAllocation(
        {"network", withScenarios,
         [](KitWorld& world) { return tvkWriteNetwork(world.network, "out.json", world.findings); }, TVK_OK,
         "out.json"});
    failAtEveryAllocation({"text", withScenarios, [](KitWorld& world) {
                               return tvkNetworkText(world.network, &world.text, world.findings);
                           }});
    failAtEveryAllocation({"hash", withScenarios, [](KitWorld& world) {
                               return tvkNetworkHash(world.network, &world.text, world.findings);
                           }});
    failAtEveryAllocation({"nodes", withNetwork,
                           [](KitWorld& world) {
                               return tvkWriteCsv(world.network, "nodes.csv", "elements.csv", world.findings);
                           },
                           TVK_OK, "nodes.csv", true});
    failAtEveryAllocation({"elements", withNetwork,
                           [](KitWorld& world) {
                               return tvkWriteCsv(world.network, "nodes.csv", "elements.csv", world.findings);
                           },
                           TVK_OK, "elements.csv"});
    const std::string text(3000, 'x');
    failAtEveryAllocation(
        {"any text", nothing,
         [&](KitWorld& world) { return tvkWriteFile("out.txt", text.data(), text.size(), world.findings); },
         TVK_OK, "out.txt"});
}

TEST(KitAllocations, scenarios_and_patches_apply_whole_or_not_at_all)
{
    failAtEveryAllocation({"scenario", withScenarios, [](KitWorld& world) {
                               return tvkNetworkScenario(world.network, tvkScenarioName(world.network, 0),
                                                         &world.madeNetwork, world.findings);
                           }});
    for (const auto& setUp :
         {std::function<void(KitWorld&)>(withNetwork), std::function<void(KitWorld&)>(withResult)})
        failAtEveryAllocation({"patch", setUp, [](KitWorld& world) {
                                   return tvkPatchNetwork(world.network,
                                                          R"({"settings": {"temperatures": true},
                                                              "nodes": {"well": {"inlet": {"pressure": 20000}}}})",
                                                          world.findings);
                               }});
}

TEST(KitAllocations, names_are_found_or_nothing_is_said)
{
    failAtEveryAllocation({"find nodes",
                           [](KitWorld& world) {
                               withNetwork(world);
                               world.positions.assign(2, 0);
                           },
                           [](KitWorld& world) {
                               const std::array<const char*, 2> names{"tank", "well"};
                               return tvkFindNodes(world.network, 2, names.data(), world.positions.data(),
                                                   world.findings);
                           }});
    failAtEveryAllocation({"find elements",
                           [](KitWorld& world) {
                               withNetwork(world);
                               world.positions.assign(2, 0);
                           },
                           [](KitWorld& world) {
                               const std::array<const char*, 2> names{"delivery", "pump"};
                               return tvkFindElements(world.network, 2, names.data(), world.positions.data(),
                                                      world.findings);
                           }});
}

TEST(KitAllocations, networks_change_whole_or_not_at_all)
{
    for (const auto& setUp :
         {std::function<void(KitWorld&)>(withNetwork), std::function<void(KitWorld&)>(withResult),
          std::function<void(KitWorld&)>(withChangedNetwork)}) {
        failAtEveryAllocation({"add nodes", setUp, [](KitWorld& world) {
                                   const std::array<const char*, 2> names{kLongName, "another"};
                                   const std::array<double, 6> at{1.0, 2.0, 3.0, 4.0, 5.0, 6.0};
                                   return tvkAddNodes(world.network, 2, names.data(), at.data(),
                                                      world.findings);
                               }});
        failAtEveryAllocation({"add elements", setUp, [](KitWorld& world) {
                                   const std::array<const char*, 2> names{kLongName, "another"};
                                   const std::array<const char*, 2> types{"pipe", "kv_valve"};
                                   const std::array<std::size_t, 2> from{0, 1};
                                   const std::array<std::size_t, 2> to{2, 3};
                                   return tvkAddElements(world.network, 2, names.data(), types.data(),
                                                         from.data(), to.data(), world.findings);
                               }});
        for (const char* const key : {"x", "inlet/pressure", "outlet/mass_flow", "inlet/temperature"})
            failAtEveryAllocation({key, setUp, [key](KitWorld& world) {
                                       const std::array<double, 4> values{1.0, 2.0, 3.0, 4.0};
                                       return tvkSetNodeValues(world.network, key, 4, nullptr, values.data(),
                                                               world.findings);
                                   }});
        for (const char* const key : {"diameter", "length", "roughness", "k", "closed"})
            failAtEveryAllocation({key, setUp, [key](KitWorld& world) {
                                       const std::array<std::size_t, 2> positions{0, 2};
                                       const std::array<double, 2> values{0.5, 0.25};
                                       return tvkSetElementValues(world.network, key, 2, positions.data(),
                                                                  values.data(), world.findings);
                                   }});
        failAtEveryAllocation({"curve", setUp, [](KitWorld& world) {
                                   const std::array<double, 5> flows{0.0, 0.01, 0.02, 0.03, 0.05};
                                   const std::array<double, 5> rises{4e5, 3.9e5, 3.5e5, 2.5e5, 1e5};
                                   return tvkSetCurve(world.network, 1, 5, flows.data(), rises.data(),
                                                      world.findings);
                               }});
    }
}

/// Properties of pipes that have none yet: their lists grow one after the other.
TEST(KitAllocations, new_properties_of_many_elements_are_set_all_or_none)
{
    const auto bare = [](KitWorld& world) {
        ASSERT_EQ(tvkNewNetwork(&world.network, nullptr), TVK_OK);
        const std::array<const char*, 5> names{"a", "b", "c", "d", "e"};
        const std::array<const char*, 4> types{"pipe", "pipe", "pipe", "pipe"};
        const std::array<std::size_t, 4> from{0, 1, 2, 3};
        const std::array<std::size_t, 4> to{1, 2, 3, 4};
        const std::array<double, 15> at{0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0};
        ASSERT_EQ(tvkAddNodes(world.network, 5, names.data(), at.data(), nullptr), TVK_OK);
        ASSERT_EQ(
            tvkAddElements(world.network, 4, names.data(), types.data(), from.data(), to.data(), nullptr),
            TVK_OK);
    };
    for (const char* const key : {"roughness", "k"})
        failAtEveryAllocation({key, bare, [key](KitWorld& world) {
                                   const std::array<double, 4> values{0.5, 0.25, 0.125, 1.0};
                                   return tvkSetElementValues(world.network, key, 4, nullptr, values.data(),
                                                              world.findings);
                               }});
}

TEST(KitAllocations, values_are_read_or_memory_ran_out)
{
    failAtEveryAllocation({"nodes",
                           [](KitWorld& world) {
                               withNetwork(world);
                               world.values.assign(4, 0.0);
                           },
                           [](KitWorld& world) {
                               return tvkGetNodeValues(world.network, "inlet/pressure", 4, nullptr,
                                                       world.values.data(), world.findings);
                           }});
    failAtEveryAllocation({"elements",
                           [](KitWorld& world) {
                               withNetwork(world);
                               world.values.assign(3, 0.0);
                           },
                           [](KitWorld& world) {
                               return tvkGetElementValues(world.network, "roughness", 3, nullptr,
                                                          world.values.data(), world.findings);
                           }});
}

TEST(KitAllocations, solves_end_with_a_result_or_without)
{
    for (const auto& setUp :
         {std::function<void(KitWorld&)>(withNetwork), std::function<void(KitWorld&)>(withChangedNetwork)})
        failAtEveryAllocation({"solve", setUp, [](KitWorld& world) {
                                   return tvkSolve(world.network, R"({"temperatures": true})", nullptr,
                                                   nullptr, &world.madeResult, world.findings);
                               }});
    failAtEveryAllocation({"without answer", withInsoluble,
                           [](KitWorld& world) {
                               return tvkSolve(world.network, nullptr, nullptr, nullptr, &world.madeResult,
                                               world.findings);
                           },
                           TVK_NOT_CONVERGED});
    failAtEveryAllocation({"network of a result", withResult, [](KitWorld& world) {
                               return tvkResultNetwork(world.result, &world.madeNetwork, world.findings);
                           }});
}

/// Three solves on this thread; the worst of their outcomes.
tvkStatus solveThree(KitWorld& world)
{
    const tvkInput input{TVK_ELEMENT, "roughness", 2};
    const std::array<tvkOutput, 2> outputs{{{TVK_NODE, "min:pressure", 0}, {TVK_NETWORK, "certificate", 0}}};
    const std::array<double, 3> values{1e-5, 1e-4, std::numeric_limits<double>::quiet_NaN()};
    std::array<double, 6> results{};
    std::array<int, 3> outcomes{};
    std::array<char*, 3> texts{};
    tvkStatus status = tvkSolveMany(world.network, R"({"threads": 1})", values.size(), 1, &input,
                                    values.data(), outputs.size(), outputs.data(), results.data(),
                                    outcomes.data(), nullptr, texts.data(), nullptr, nullptr, world.findings);
    for (char* const text : texts)
        tvkFreeText(text);
    for (const int outcome : outcomes)
        if (status == TVK_OK && outcome != TVK_OK) status = static_cast<tvkStatus>(outcome);
    return status;
}

TEST(KitAllocations, solves_of_many_scenarios_end_with_an_outcome_each)
{
    {
        KitWorld warmsUp;
        withNetwork(warmsUp);
        ASSERT_EQ(solveThree(warmsUp), TVK_OK);
        tvkReadNetwork("no such file", nullptr, warmsUp.findings);  // makes the table of messages
    }
    for (const Mode mode : kModes) {
        bool isHit = true;
        for (std::size_t nth = 1; isHit; nth = stepAfter(nth, 1000, 20)) {
            const std::size_t live = liveBlocks();
            {
                KitWorld world;
                withNetwork(world);
                const Attempt made = attempt(nth, mode, [&] { return long{solveThree(world)}; });
                isHit = made.isHit;
                EXPECT_FALSE(made.isOut) << nth;
                EXPECT_TRUE(made.answer == TVK_INTERNAL || made.answer == TVK_OK) << nth;
                if (!made.isHit) {
                    EXPECT_EQ(made.answer, TVK_OK) << nth;
                }
                EXPECT_EQ(solveThree(world), TVK_OK) << nth;
            }
            ASSERT_EQ(liveBlocks(), live) << nth;
        }
    }
}

TEST(KitAllocations, unknown_scenario_is_refused_or_memory_ran_out)
{
    failAtEveryAllocation({"unknown scenario", withScenarios,
                           [](KitWorld& world) {
                               return tvkSolve(world.network, R"({"scenario": "there is none of this name"})",
                                               nullptr, nullptr, &world.madeResult, world.findings);
                           },
                           TVK_BAD_INPUT});
}

TEST(KitAllocations, results_are_told_or_memory_ran_out)
{
    for (const char* const format : {"text", "json"})
        failAtEveryAllocation({"certificate", withResult, [format](KitWorld& world) {
                                   return tvkCertificate(world.result, format, &world.text, world.findings);
                               }});
    for (const char* const format : {"text", "csv", "json"})
        failAtEveryAllocation({format, withResult, [format](KitWorld& world) {
                                   return tvkResultTables(world.result, format, "metric,pressure=bar",
                                                          &world.text, world.findings);
                               }});
    failAtEveryAllocation({"exchange form", withResult, [](KitWorld& world) {
                               return tvkResultExchangeCsv(world.result, &world.text, world.findings);
                           }});
    failAtEveryAllocation({"result file", withResult, [](KitWorld& world) {
                               return tvkResultText(world.result, &world.text, world.findings);
                           }});
    for (const char* const quantity : {"pressure", "mass_residual"})
        failAtEveryAllocation({quantity,
                               [](KitWorld& world) {
                                   withResult(world);
                                   world.values.assign(4, 0.0);
                               },
                               [quantity](KitWorld& world) {
                                   return tvkCopyNodeResults(world.result, quantity, world.values.data(), 4,
                                                             world.findings);
                               }});
    for (const char* const quantity : {"velocity", "friction", "law_mismatch"})
        failAtEveryAllocation({quantity,
                               [](KitWorld& world) {
                                   withResult(world);
                                   world.values.assign(3, 0.0);
                               },
                               [quantity](KitWorld& world) {
                                   return tvkCopyElementResults(world.result, quantity, world.values.data(),
                                                                3, world.findings);
                               }});
}

TEST(KitAllocations, plain_answers_are_given_or_their_fallback)
{
    {
        KitWorld warmsUp;
        withResult(warmsUp);
    }
    for (const Mode mode : kModes) {
        bool isHit = true;
        for (std::size_t nth = 1; isHit; ++nth) {
            const std::size_t live = liveBlocks();
            {
                KitWorld world;
                withResult(world);
                const Attempt made = attempt(nth, mode, [&] {
                    long answered = tvkCertificateIsGood(world.result);
                    for (const char* const quantity : {"pressure", "mass_residual"})
                        answered += tvkNodeResults(world.result, quantity) != nullptr ? 1 : 0;
                    for (const char* const quantity : {"velocity", "minor", "law_mismatch"})
                        answered += tvkElementResults(world.result, quantity) != nullptr ? 1 : 0;
                    answered += tvkNodeNames(world.network) != nullptr ? 1 : 0;
                    answered += tvkElementNames(world.network) != nullptr ? 1 : 0;
                    answered += tvkElementTypes(world.network) != nullptr ? 1 : 0;
                    return answered;
                });
                isHit = made.isHit;
                EXPECT_FALSE(made.isOut) << nth;
                EXPECT_LE(made.answer, 9);
                if (!made.isHit) {
                    EXPECT_EQ(made.answer, 9);
                }
                EXPECT_EQ(tvkCertificateIsGood(world.result), 1);
                EXPECT_NE(tvkElementResults(world.result, "law_mismatch"), nullptr);
                ASSERT_NE(tvkNodeNames(world.network), nullptr);
                EXPECT_STREQ(tvkNodeNames(world.network)[3], "tank");
            }
            EXPECT_EQ(liveBlocks(), live) << nth;
        }
    }
}

TEST(KitAllocations, result_files_are_written_and_read_whole_or_not_at_all)
{
    const ScratchFolder folder;
    failAtEveryAllocation(
        {"write", withResult,
         [](KitWorld& world) { return tvkWriteResult(world.result, "out.result", world.findings); }, TVK_OK,
         "out.result"});
    {
        KitWorld world;
        withResult(world);
        ASSERT_EQ(tvkWriteResult(world.result, "kept.json", nullptr), TVK_OK);
    }
    failAtEveryAllocation({"read", nothing, [](KitWorld& world) {
                               return tvkReadResult("kept.json", &world.madeResult, world.findings);
                           }});
    failAtEveryAllocation(
        {"verify",
         [](KitWorld& world) { ASSERT_EQ(tvkReadResult("kept.json", &world.result, nullptr), TVK_OK); },
         [](KitWorld& world) { return tvkVerify(world.result, world.findings); }});
}

TEST(KitAllocations, checks_are_made_or_memory_ran_out)
{
    for (const auto& setUp :
         {std::function<void(KitWorld&)>(withNetwork), std::function<void(KitWorld&)>(withChangedNetwork)})
        failAtEveryAllocation(
            {"examine", setUp, [](KitWorld& world) { return tvkExamine(world.network, world.findings); }});
    failAtEveryAllocation(
        {"diagnose", withResult, [](KitWorld& world) { return tvkDiagnose(world.result, world.findings); }});
    failAtEveryAllocation({"diagnose without values", withFailedResult,
                           [](KitWorld& world) { return tvkDiagnose(world.result, world.findings); }});
}

TEST(KitAllocations, smallest_failing_part_is_found_or_memory_ran_out)
{
    failAtEveryAllocation({"part",
                           [](KitWorld& world) {
                               withInsoluble(world);
                               world.positions.assign(6, 0);
                           },
                           [](KitWorld& world) {
                               return tvkSmallestFailingPart(world.network, 8, nullptr, nullptr,
                                                             world.positions.data(), 5, &world.positions[5],
                                                             &world.text, world.findings);
                           },
                           TVK_OK, "", false, 400});
}

TEST(KitAllocations, reports_are_written_whole_or_not_at_all)
{
    const ScratchFolder folder;
    KitWorld world;
    withResult(world);
    if (tvkWriteReport(world.result, "probe.html", nullptr, nullptr, nullptr, nullptr) != TVK_OK)
        GTEST_SKIP() << "this build has no report page";
    for (const auto& setUp :
         {std::function<void(KitWorld&)>(withResult), std::function<void(KitWorld&)>(withFailedResult)})
        failAtEveryAllocation({"report", setUp,
                               [](KitWorld& each) {
                                   return tvkWriteReport(each.result, "out.html", R"({"units": "metric"})",
                                                         nullptr, nullptr, each.findings);
                               },
                               TVK_OK, "out.html", false, 100});
}

TEST(KitAllocations, pictures_are_written_whole_or_not_at_all)
{
    const ScratchFolder folder;
    failAtEveryAllocation({"svg", withResult,
                           [](KitWorld& world) {
                               return tvkWritePicture(world.network, world.result, "out.svg",
                                                      R"({"view": "plan", "quantity": "pressure"})",
                                                      world.findings);
                           },
                           TVK_OK, "out.svg", false, 300});
    failAtEveryAllocation({"without values", withNetwork,
                           [](KitWorld& world) {
                               return tvkWritePicture(world.network, nullptr, "out.svg",
                                                      R"({"quantity": "pressure"})", world.findings);
                           },
                           TVK_OK, "out.svg", false, 300});
}

TEST(KitAllocations, exports_are_written_whole_or_not_at_all)
{
    const ScratchFolder folder;
    for (const char* const file : {"out.vtu", "out.geojson", "out.graphml"})
        failAtEveryAllocation({file, withResult,
                               [file](KitWorld& world) {
                                   return tvkWriteExport(world.network, world.result, file, world.findings);
                               },
                               TVK_OK, file});
}

TEST(KitAllocations, fluids_and_units_are_told_or_memory_ran_out)
{
    for (const char* const format : {"text", "json"})
        failAtEveryAllocation(
            {format, nothing,
             [format](KitWorld& world) { return tvkFluids(format, nullptr, &world.text, world.findings); },
             TVK_OK, "", false, 300});
    const auto withRoom = [](KitWorld& world) { world.values.assign(4, 0.0); };
    failAtEveryAllocation({"fluid", withRoom, [](KitWorld& world) {
                               return tvkFluid("water", 300.0, std::numeric_limits<double>::quiet_NaN(),
                                               world.values.data(), world.findings);
                           }});
    failAtEveryAllocation(
        {"unknown fluid", withRoom,
         [](KitWorld& world) { return tvkFluid(kLongName, 300.0, 0.0, world.values.data(), world.findings); },
         TVK_BAD_INPUT});
    failAtEveryAllocation({"quantity", withRoom, [](KitWorld& world) {
                               return tvkParseQuantity("25 mm", "length", world.values.data(),
                                                       world.findings);
                           }});
    failAtEveryAllocation(
        {"units", nothing, [](KitWorld& world) { return tvkCheckUnits("us,pressure=psi", world.findings); }});
}

TEST(KitAllocations, findings_are_told_or_there_is_no_text)
{
    KitWorld world;
    withFindings(world);
    for (const auto tell : {tvkFindingsText, tvkFindingsJson}) {
        char* expected = nullptr;
        ASSERT_EQ(tell(world.findings, &expected), TVK_OK);
        for (const Mode mode : kModes) {
            bool isHit = true;
            for (std::size_t nth = 1; isHit; ++nth) {
                const std::size_t live = liveBlocks();
                char* text = nullptr;
                const Attempt made = attempt(nth, mode, [&] { return long{tell(world.findings, &text)}; });
                isHit = made.isHit;
                EXPECT_FALSE(made.isOut) << nth;
                EXPECT_EQ(made.answer, made.isHit ? TVK_INTERNAL : TVK_OK) << nth;
                EXPECT_EQ(text == nullptr, made.isHit) << nth;
                if (text != nullptr) {
                    EXPECT_STREQ(text, expected);
                }
                tvkFreeText(text);
                EXPECT_EQ(liveBlocks(), live) << nth << ", " << nameOf(mode);
            }
        }
        tvkFreeText(expected);
    }
}

TEST(KitAllocations, list_of_findings_is_made_or_null)
{
    for (const Mode mode : kModes) {
        tvkFindings* made = nullptr;
        EXPECT_FALSE(attempt(1, mode, [&] {
                         made = tvkNewFindings();
                         return 1L;
                     }).isOut);
        EXPECT_EQ(made, nullptr);
        tvkFreeFindings(made);
    }
}

/// What was appended before memory ran out stays, and the list says that there would be more.
TEST(KitAllocations, findings_are_appended_or_memory_ran_out)
{
    KitWorld source;
    withFindings(source);
    for (const Mode mode : kModes) {
        bool isHit = true;
        for (std::size_t nth = 1; isHit; ++nth) {
            const std::size_t live = liveBlocks();
            {
                KitWorld world;
                const Attempt made = attempt(
                    nth, mode, [&] { return long{tvkAppendFindings(world.findings, source.findings)}; });
                isHit = made.isHit;
                EXPECT_FALSE(made.isOut);
                EXPECT_EQ(made.answer, made.isHit ? TVK_INTERNAL : TVK_OK) << nth;
                const std::size_t count = tvkFindingsCount(world.findings);
                if (made.isHit) {
                    ASSERT_GT(count, 0U) << nth;
                    EXPECT_STREQ(tvkFindingCode(world.findings, count - 1), "out-of-memory") << nth;
                } else {
                    EXPECT_EQ(count, tvkFindingsCount(source.findings));
                }
            }
            EXPECT_EQ(liveBlocks(), live) << nth << ", " << nameOf(mode);
        }
    }
}
