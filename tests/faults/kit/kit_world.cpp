#include "kit_world.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "../failing_allocations.h"

namespace faults
{

namespace
{

constexpr std::size_t kMostAllocations = 3000000;  // of a call; then the test ends
constexpr std::size_t kGrowth = 12;                // steps grow by a twelfth
constexpr const char* kOldText = "the file that was there before\n";

std::string textOf(const tvkNetwork* network)
{
    char* text = nullptr;
    if (network == nullptr || tvkNetworkText(network, &text, nullptr) != TVK_OK) return "(no network)\n";
    std::string copy = text;
    tvkFreeText(text);
    for (std::size_t i = 0; i < tvkElementCount(network); ++i)
        copy += std::string(tvkElementType(network, i)) + ' ' + tvkElementNames(network)[i] + '\n';
    return copy;
}

std::string textOf(const tvkResult* result)
{
    char* text = nullptr;
    if (result == nullptr || tvkResultText(result, &text, nullptr) != TVK_OK) return "(no result)\n";
    const std::string copy = text;
    tvkFreeText(text);
    return copy;
}

std::string textOf(const tvkFindings* findings)
{
    char* text = nullptr;
    EXPECT_EQ(tvkFindingsJson(findings, &text), TVK_OK);
    const std::string copy = text == nullptr ? "" : text;
    tvkFreeText(text);
    return copy;
}

/// The last finding says what happened.
bool saysOutOfMemory(const tvkFindings* findings)
{
    const std::size_t count = tvkFindingsCount(findings);
    return count > 0 && std::string(tvkFindingCode(findings, count - 1)) == "out-of-memory" &&
           tvkFindingsCountOf(findings, TVK_ERROR) > 0;
}

/// The names in the folder of a file that begin with its name: the file and what a failure may leave beside it.
std::string beside(const std::string& file)
{
    if (file.empty()) return "";
    std::string names;
    for (const auto& entry : std::filesystem::directory_iterator("."))
        names += entry.path().filename().string().rfind(file, 0) == 0 ? "*" : "";
    return names + bytesOf(file);
}

/// What a call does that no one disturbs.
struct Undisturbed {
    std::string before, after, made, findings, file;

    explicit Undisturbed(const KitCase& tested)
    {
        if (!tested.file.empty()) writeBytes(tested.file, kOldText);
        KitWorld world;
        tested.setUp(world);
        before = world.given();
        // a world of its own: what was asked of the other one may have filled its tables
        KitWorld other;
        tested.setUp(other);
        EXPECT_EQ(tested.call(other), tested.expected) << textOf(other.findings);
        after = other.given();
        made = other.made();
        findings = textOf(other.findings);
        file = beside(tested.file);
    }
};

bool isAsExpected(const std::string& text, const std::string& expected, const std::string& when)
{
    if (text == expected) return true;
    std::size_t at = 0;
    while (at < text.size() && at < expected.size() && text[at] == expected[at])
        ++at;
    const std::size_t from = at < 80 ? 0 : at - 80;
    ADD_FAILURE() << when << ": ..." << text.substr(from, 200) << "... instead of ..."
                  << expected.substr(from, 200);
    return false;
}

struct Trial {
    bool isHit = false;   // an allocation failed
    bool isGood = false;  // all was as it should be
};

Trial tryOnce(const KitCase& tested, const Undisturbed& expected, std::size_t nth, Mode mode)
{
    const std::string when = "allocation " + std::to_string(nth) + ", " + nameOf(mode);
    Trial trial;
    if (!tested.file.empty()) writeBytes(tested.file, kOldText);
    const std::string oldFile = beside(tested.file);
    const std::size_t live = liveBlocks();
    {
        KitWorld world;
        tested.setUp(world);
        const Attempt made = attempt(nth, mode, [&] { return long{tested.call(world)}; });
        trial.isHit = made.isHit;
        trial.isGood = !made.isOut;
        EXPECT_FALSE(made.isOut) << when << ": an exception";
        // a refusal stands even when there is no memory to say why
        const bool isUntold = made.answer == TVK_BAD_INPUT && tested.expected == TVK_BAD_INPUT &&
                              saysOutOfMemory(world.findings);
        if (made.answer == TVK_INTERNAL || isUntold) {
            const bool isSaid = saysOutOfMemory(world.findings);
            const bool isWhole = tested.isFirstOfTwo && beside(tested.file) == expected.file;
            const std::string& fileNow = isWhole ? expected.file : oldFile;
            EXPECT_TRUE(isSaid) << when << textOf(world.findings);
            trial.isGood = isAsExpected(world.given(), expected.before, when + ", given") &&
                           isAsExpected(beside(tested.file), fileNow, when + ", file") && isSaid &&
                           trial.isGood && world.madeNetwork == nullptr && world.madeResult == nullptr &&
                           world.text == nullptr;
            EXPECT_TRUE(trial.isGood) << when;
            tvkClearFindings(world.findings);
            world.forget();
            const tvkStatus again = tested.call(world);
            EXPECT_EQ(again, tested.expected) << when << ", again";
            trial.isGood = trial.isGood && again == tested.expected;
        } else {
            EXPECT_EQ(made.answer, tested.expected) << when;
            trial.isGood = trial.isGood && made.answer == tested.expected;
        }
        trial.isGood =
            isAsExpected(world.given(), expected.after, when + ", given in the end") && trial.isGood;
        trial.isGood = isAsExpected(world.made(), expected.made, when + ", made in the end") && trial.isGood;
        trial.isGood =
            isAsExpected(textOf(world.findings), expected.findings, when + ", findings") && trial.isGood;
        trial.isGood =
            isAsExpected(beside(tested.file), expected.file, when + ", file in the end") && trial.isGood;
    }
    const std::size_t left = liveBlocks();
    if (trial.isGood) {
        EXPECT_EQ(left, live) << when;
        trial.isGood = left == live;
    }
    return trial;
}

}  // namespace

KitWorld::KitWorld() : findings(tvkNewFindings()) {}

KitWorld::~KitWorld()
{
    forget();
    tvkFreeNetwork(network);
    tvkFreeResult(result);
    tvkFreeFindings(findings);
}

void KitWorld::forget()
{
    tvkFreeNetwork(madeNetwork);
    tvkFreeResult(madeResult);
    tvkFreeText(text);
    madeNetwork = nullptr;
    madeResult = nullptr;
    text = nullptr;
}

std::string KitWorld::given() const
{
    return textOf(network) + textOf(result);
}

std::string KitWorld::made() const
{
    std::ostringstream all;
    all << textOf(madeNetwork) << textOf(madeResult) << (text == nullptr ? "(no text)" : text);
    for (const double value : values) {
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        all << ' ' << bits;
    }
    for (const std::size_t position : positions)
        all << ' ' << position;
    return all.str();
}

void failAtEveryAllocation(const KitCase& tested)
{
    SCOPED_TRACE(tested.name);
    // tables that the kit makes when they are first needed, that of the messages too, are no leaks
    tvkReadNetwork("no such file", nullptr, KitWorld().findings);
    {
        const Undisturbed warmsUp(tested);
    }
    const Undisturbed expected(tested);
    for (const Mode mode : kModes) {
        Trial trial{true, true};
        std::size_t nth = 1;
        while (trial.isHit && trial.isGood && nth < kMostAllocations) {
            trial = tryOnce(tested, expected, nth, mode);
            nth = stepAfter(nth, tested.eachUpTo, kGrowth);
        }
        EXPECT_LT(nth, kMostAllocations) << "the call never ends";
    }
}

std::string examplePath(const std::string& name)
{
    return std::string(TAVELL_EXAMPLES) + "/networks/" + name;
}

tvkNetwork* readExample(const std::string& name)
{
    tvkNetwork* network = nullptr;
    EXPECT_EQ(tvkReadNetwork(examplePath(name).c_str(), &network, nullptr), TVK_OK) << name;
    return network;
}

tvkResult* solved(const tvkNetwork* network)
{
    tvkResult* result = nullptr;
    EXPECT_EQ(tvkSolve(network, nullptr, nullptr, nullptr, &result, nullptr), TVK_OK);
    return result;
}

std::string bytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) return "(none)";
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace faults
