// work_count_test.cpp: no stage's work grows faster than the network. Counted, never timed.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "circuits.h"
#include "counted_allocations.h"
#include "sanitized.h"
#include "support/networks.h"
#include "tavell/IResultsExporterOptions.h"

namespace AnalysisTest
{

Allocations& allocations()
{
    static Allocations all;
    return all;
}

namespace
{

/// Null when this one is to fail.
void* allocate(std::size_t size)
{
    Allocations& all = allocations();
    if (all.failFromSize != 0 && size >= all.failFromSize) return nullptr;
    if (all.failAfter != 0 && --all.failAfter == 0) return nullptr;
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) return nullptr;
    ++all.count;
    ++all.live;
    all.bytes += size;
    if (size > all.largest) all.largest = size;
    return block;
}

void giveBack(void* block)
{
    if (block == nullptr) return;
    --allocations().live;
    std::free(block);
}

}  // namespace

}  // namespace AnalysisTest

// NOLINTBEGIN(misc-new-delete-overloads)
void* operator new(std::size_t size)
{
    void* const block = AnalysisTest::allocate(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void* operator new[](std::size_t size)
{
    return ::operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return AnalysisTest::allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return AnalysisTest::allocate(size);
}
void operator delete(void* block) noexcept
{
    AnalysisTest::giveBack(block);
}
void operator delete[](void* block) noexcept
{
    AnalysisTest::giveBack(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept
{
    AnalysisTest::giveBack(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    AnalysisTest::giveBack(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept
{
    AnalysisTest::giveBack(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept
{
    AnalysisTest::giveBack(block);
}
// NOLINTEND(misc-new-delete-overloads)

namespace
{

using namespace AnalysisTest;

constexpr double kMostGrowth = 4.5;  // of the work when the network grows by 4

/// line: one node after the other. star: all round one node. district: a random tree with some loops, a quarter of its
/// nodes round one of them.
enum class Shape { kLine, kDistrict, kStar };

/// The neighbour toward the inlet of each node from 1 on.
int parentOf(Shape shape, int node, std::mt19937& random)
{
    if (shape == Shape::kStar || (shape == Shape::kDistrict && random() % 4 == 0)) return 0;
    if (shape == Shape::kLine) return node - 1;
    const int reach = node < 30 ? node : 30;
    return node - 1 - static_cast<int>(random() % static_cast<unsigned>(reach));
}

IElement* join(Circuit& circuit, INode* start, INode* end, double diameter)
{
    IElement* const pipe = circuit.CreateElement(start, end, diameter, 0.785 * diameter * diameter, 0.0,
                                                 TAVELL_ENERGY_FLUX, 0.0);
    pipe->GetEntity()->SetProperty(TAVELL_ELEMENT_ROUGHNESS, 1e-4);
    return pipe;
}

struct Place {
    double x, y;  // [m]
};

/// Rows of a hundred nodes, 10 m apart; a line is one row.
Place placeOf(Shape shape, std::size_t node)
{
    const std::size_t row = shape == Shape::kLine ? 0 : node / 100;
    return {10.0 * static_cast<double>(node - 100 * row), 10.0 * static_cast<double>(row)};
}

/// count nodes, or their mirror image when it is offset [m] from others, an inlet at the first, a demand at every third and
/// pipes for 0.6 m/s.
void build(ICircuit* made, Shape shape, int count, double offset)
{
    constexpr double kDemand = 0.3;  // [kg/s]
    Circuit& circuit = static_cast<Circuit&>(*made);
    // losses of junctions would have the last word on the number of iterations
    circuit.GetEntity()->SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, 0.0);
    std::mt19937 random(1);
    std::vector<int> parents{0};
    for (int i = 1; i < count; ++i)
        parents.push_back(parentOf(shape, i, random));
    std::vector<double> flows(parents.size(), 0.0);
    for (std::size_t i = flows.size(); i-- > 0;) {
        if (i % 3 == 0) flows[i] += kDemand;
        if (i > 0) flows[static_cast<std::size_t>(parents[i])] += flows[i];
    }
    const auto diameter = [](double flow) { return std::fmax(0.03, std::sqrt(flow / (0.6 * 785.0))); };

    std::vector<INode*> nodes;
    const auto add = [&](Place place) {
        INode* const node = circuit.CreateNode();
        node->SetLocation(offset > 0.0 ? -place.x : place.x, place.y + offset, 0.0);
        return node;
    };
    for (std::size_t i = 0; i < parents.size(); ++i) {
        nodes.push_back(add(placeOf(shape, i)));
        if (i > 0)
            join(circuit, nodes[static_cast<std::size_t>(parents[i])], nodes.back(), diameter(flows[i]));
        if (shape == Shape::kDistrict && i > 40 && i % 28 == 0)
            join(circuit, nodes[i - 40], nodes.back(), 0.1);
    }
    INode* const inlet = add({-5.0, 0.0});
    inlet->SetType(TAVELL_NODE_INLET);
    inlet->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 5e6);
    join(circuit, inlet, nodes.front(), diameter(flows.front()));
    for (std::size_t i = 0; i < nodes.size(); i += 3) {
        Place place = placeOf(shape, i);
        place.y += 5.0;
        INode* const outlet = add(place);
        outlet->SetType(TAVELL_NODE_OUTLET);
        outlet->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, kDemand);
        join(circuit, nodes[i], outlet, diameter(kDemand));
    }
}

struct Releaser {
    void operator()(ITavell* system) const { system->Release(); }
};
using System = std::unique_ptr<ITavell, Releaser>;

/// A stage is measured with everything before it done.
enum class Stage { kBuild, kValidate, kSolve, kRead, kExport, kMerge };
constexpr Stage kStages[] = {Stage::kBuild, Stage::kValidate, Stage::kSolve,
                             Stage::kRead,  Stage::kExport,   Stage::kMerge};
constexpr const char* kStageNames[] = {"build", "validate", "solve", "read", "export", "merge"};

const char* nameOf(Stage stage)
{
    return kStageNames[static_cast<std::size_t>(stage)];
}

/// Two circuits that share the place of one node, so that they can be merged. Last, as that takes the inner nodes of
/// the absorbed one apart.
void runStage(Stage stage, ITavell& system, Shape shape, int count)
{
    ICircuit* const circuit = system.GetNoCircuits() == 0 ? nullptr : system.GetCircuit(0);
    switch (stage) {
    case Stage::kBuild:
        build(system.CreateCircuit(), shape, count, 0.0);
        build(system.CreateCircuit(), shape, count / 2,
              5.0);  // its first node lies on an outlet of the other
        break;
    case Stage::kValidate:
        system.ValidateCircuits();
        EXPECT_LE(circuit->IsValid(), TAVELL_VALID_HAS_RESULTS);
        break;
    case Stage::kMerge:
        system.MergeCircuits();
        EXPECT_EQ(system.GetNoCircuits(), 1U);
        break;
    case Stage::kSolve:
        EXPECT_TRUE(circuit->Solve(false, nullptr)) << circuit->GetFeedback()->GetSize();
        break;
    case Stage::kRead: {
        double sum = 0.0;
        for (int key = TAVELL_RESULT_REYNOLDS; key <= TAVELL_RESULT_EXTERNAL_MASS_FLOW; ++key) {
            IResultsSet* const set = circuit->GetResults(key);
            if (set == nullptr) continue;
            for (std::size_t i = 0; i < set->GetSize(); ++i)
                sum += set->GetValues()[i];
        }
        EXPECT_NE(sum, 0.0);
        break;
    }
    case Stage::kExport:
        EXPECT_GT(std::string(circuit->ExportResults()).size(), static_cast<std::size_t>(count));
        break;
    }
}

/// Allocations of each stage.
std::vector<Allocations> countStages(Shape shape, int count)
{
    const ScopedVariable detail(kDetailCheck, "1");
    const System system(Velcor::Tavell::CreateTavell(false));
    std::vector<Allocations> stages;
    for (const Stage stage : kStages) {
        const Allocations before = allocations();
        runStage(stage, *system, shape, count);
        const Allocations after = allocations();
        stages.push_back({});
        stages.back().count = after.count - before.count;
        stages.back().bytes = after.bytes - before.bytes;
    }
    return stages;
}

// Instructions, as valgrind counts them: exact, and the same every time.

constexpr const char* kChild = "TAVELL_TEST_WORK";  // set in a program that only does the work

bool hasValgrind()
{
#ifdef TAVELL_IS_SANITIZED
    return false;  // the two do not go together
#else
    return std::system("valgrind --version > /dev/null 2>&1") == 0;
#endif
}

/// Instructions of this program doing the stages up to last on a network of so many nodes; 0 when valgrind
/// gave no count.
double instructions(Shape shape, int last, int count)
{
    const std::string work =
        std::to_string(static_cast<int>(shape)) + " " + std::to_string(last) + " " + std::to_string(count);
    const ScopedVariable child(kChild, work.c_str());
    const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command =
        "valgrind --tool=cachegrind --cache-sim=no --cachegrind-out-file=/dev/null '" + program +
        "' --gtest_filter=WorkCount.DISABLED_child --gtest_also_run_disabled_tests 2>&1";
    double found = 0.0;
    FILE* const output = popen(command.c_str(), "r");
    if (output == nullptr) return 0.0;
    char line[512];
    while (std::fgets(line, sizeof line, output) != nullptr) {
        const std::string text(line);
        const std::size_t at = text.find(" refs:");
        if (at == std::string::npos) continue;
        std::string digits;
        for (const char c : text.substr(at))
            if (c >= '0' && c <= '9') digits += c;
        found = std::stod(digits);
    }
    pclose(output);
    return found;
}

}  // namespace

TEST(WorkCount, allocations_of_every_stage_grow_with_the_network)
{
    for (const Shape shape : {Shape::kLine, Shape::kDistrict, Shape::kStar}) {
        const std::vector<Allocations> small = countStages(shape, 1000);
        const std::vector<Allocations> large = countStages(shape, 4000);
        for (std::size_t i = 0; i < small.size(); ++i) {
            SCOPED_TRACE(std::string(kStageNames[i]) + " of shape " +
                         std::to_string(static_cast<int>(shape)));
            // some blocks of their own are neither here nor there
            EXPECT_LE(static_cast<double>(large[i].count),
                      kMostGrowth * static_cast<double>(small[i].count) + 100.0);
            EXPECT_LE(static_cast<double>(large[i].bytes),
                      kMostGrowth * static_cast<double>(small[i].bytes) + 1e4);
        }
        EXPECT_GT(small.front().count, 100U);  // they are counted
    }
}

/// What valgrind watches in the test below; nothing in an ordinary run.
TEST(WorkCount, DISABLED_child)
{
    const char* const work = std::getenv(kChild);
    if (work == nullptr) GTEST_SKIP() << "a part of the test below";
    int shape = 0;
    int last = 0;
    int count = 0;
    ASSERT_EQ(std::sscanf(work, "%d %d %d", &shape, &last, &count), 3);
    const ScopedVariable detail(kDetailCheck, "1");
    const System system(Velcor::Tavell::CreateTavell(false));
    for (int stage = 0; stage <= last; ++stage)
        runStage(kStages[stage], *system, static_cast<Shape>(shape), count);
}

TEST(WorkCount, instructions_of_every_stage_grow_with_the_network)
{
    if (!hasValgrind()) GTEST_SKIP() << "no valgrind, or sanitizers that it cannot run";
    const Shape shape = Shape::kDistrict;
    std::array<double, 2> before{};
    before.fill(instructions(shape, -1, 0));
    ASSERT_GT(before[0], 0.0) << "valgrind gave no count";
    for (const Stage stage : kStages) {
        const int last = static_cast<int>(stage);
        const std::array<double, 2> now{instructions(shape, last, 500), instructions(shape, last, 2000)};
        const double small = now[0] - before[0];
        const double large = now[1] - before[1];
        before = now;
        EXPECT_GT(small, 0.0) << nameOf(stage);
        EXPECT_LE(large, kMostGrowth * small) << nameOf(stage);
        RecordProperty(nameOf(stage), std::to_string(large / small));
    }
}
