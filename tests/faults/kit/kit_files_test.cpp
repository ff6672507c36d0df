// kit_files_test.cpp: everything that the kit writes, where it cannot be written.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <tavellkit.h>

#include "../scratch_folder.h"
#include "../small_files.h"
#include "kit_world.h"

using namespace faults;

namespace
{

constexpr const char* kOldText = "the file that was there before\n";

/// A function of the kit that writes one file, and the ending of the names that it takes.
struct Writer {
    std::string ending;
    std::function<tvkStatus(const KitWorld&, const char* path)> write;
};

const std::vector<Writer>& writers()
{
    static const std::string kText(5000, 'x');
    static const std::vector<Writer> kWriters{
        {".json",
         [](const KitWorld& w, const char* path) { return tvkWriteNetwork(w.network, path, w.findings); }},
        {".result",
         [](const KitWorld& w, const char* path) { return tvkWriteResult(w.result, path, w.findings); }},
        {".nodes.csv",
         [](const KitWorld& w, const char* path) {
             return tvkWriteCsv(w.network, path, "spare.csv", w.findings);
         }},
        {".elements.csv",
         [](const KitWorld& w, const char* path) {
             return tvkWriteCsv(w.network, "spare.csv", path, w.findings);
         }},
        {".svg",
         [](const KitWorld& w, const char* path) {
             return tvkWritePicture(w.network, w.result, path, nullptr, w.findings);
         }},
        {".png",
         [](const KitWorld& w, const char* path) {
             return tvkWritePicture(w.network, w.result, path, nullptr, w.findings);
         }},
        {".vtu", [](const KitWorld& w,
                    const char* path) { return tvkWriteExport(w.network, w.result, path, w.findings); }},
        {".geojson", [](const KitWorld& w,
                        const char* path) { return tvkWriteExport(w.network, w.result, path, w.findings); }},
        {".graphml", [](const KitWorld& w,
                        const char* path) { return tvkWriteExport(w.network, w.result, path, w.findings); }},
        {".html",
         [](const KitWorld& w, const char* path) {
             return tvkWriteReport(w.result, path, nullptr, nullptr, nullptr, w.findings);
         }},
        {".txt", [](const KitWorld& w,
                    const char* path) { return tvkWriteFile(path, kText.data(), kText.size(), w.findings); }},
    };
    return kWriters;
}

/// A network with its result, and the bytes that each writer writes of it: none for what this build does not write.
class Writing : public testing::Test
{
protected:
    void SetUp() override
    {
        m_world.network = readExample("two_loops.json");
        m_world.result = solved(m_world.network);
        writeBytes("spare.csv", kOldText);
        for (const Writer& writer : writers()) {
            const std::string path = "whole" + writer.ending;
            const bool isWritten = writer.write(m_world, path.c_str()) == TVK_OK;
            m_whole.push_back(isWritten ? bytesOf(path) : "");
            std::filesystem::remove(path);
        }
        ASSERT_GT(m_whole.front().size(), 1000U);
        tvkClearFindings(m_world.findings);
    }

    /// Calls test(writer, whole bytes) for every writer of this build.
    template <class Test> void forEachWriter(Test&& test)
    {
        for (std::size_t i = 0; i < writers().size(); ++i) {
            SCOPED_TRACE(writers()[i].ending);
            writeBytes("spare.csv", kOldText);
            if (!m_whole[i].empty()) test(writers()[i], m_whole[i]);
        }
    }

    /// The call fails as documented, and nothing is left beside what the folder held.
    void expectRefusal(const Writer& writer, const std::string& path)
    {
        const std::vector<std::string> before = m_folder.names();
        tvkClearFindings(m_world.findings);
        EXPECT_EQ(writer.write(m_world, path.c_str()), TVK_BAD_INPUT);
        EXPECT_EQ(tvkFindingsCountOf(m_world.findings, TVK_ERROR), 1U);
        // the last one: before it there may be warnings of what a pair of tables cannot hold
        ASSERT_GT(tvkFindingsCount(m_world.findings), 0U);
        const std::size_t last = tvkFindingsCount(m_world.findings) - 1;
        EXPECT_EQ(tvkFindingSeverity(m_world.findings, last), TVK_ERROR);
        EXPECT_STREQ(tvkFindingFile(m_world.findings, last), path.c_str());
        EXPECT_STRNE(tvkFindingRemedy(m_world.findings, last), "");
        EXPECT_EQ(m_folder.names(), before);
    }

    ScratchFolder m_folder;
    KitWorld m_world;
    std::vector<std::string> m_whole;
};

}  // namespace

TEST_F(Writing, folder_that_is_not_there_is_refused)
{
    forEachWriter(
        [&](const Writer& writer, const std::string&) { expectRefusal(writer, "none/out" + writer.ending); });
}

/// Whoever runs the tests: not even an administrator makes files in a file.
TEST_F(Writing, folder_that_is_a_file_is_refused)
{
    writeBytes("plain", kOldText);
    forEachWriter([&](const Writer& writer, const std::string&) {
        expectRefusal(writer, "plain/out" + writer.ending);
    });
    EXPECT_EQ(bytesOf("plain"), kOldText);
}

TEST_F(Writing, folder_in_the_place_of_the_file_is_refused_and_stays)
{
    forEachWriter([&](const Writer& writer, const std::string&) {
        const std::string path = "folder" + writer.ending;
        std::filesystem::create_directory(path);
        expectRefusal(writer, path);
        EXPECT_TRUE(std::filesystem::is_directory(path));
        EXPECT_TRUE(std::filesystem::is_empty(path));
    });
}

TEST_F(Writing, full_device_is_refused_and_its_link_stays)
{
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    forEachWriter([&](const Writer& writer, const std::string&) {
        const std::string path = "full" + writer.ending;
        std::filesystem::create_symlink("/dev/full", path);
        expectRefusal(writer, path);
        EXPECT_EQ(std::filesystem::read_symlink(path), "/dev/full");
    });
}

TEST_F(Writing, file_that_would_grow_too_large_leaves_the_old_one_and_nothing_beside_it)
{
    forEachWriter([&](const Writer& writer, const std::string& whole) {
        const std::string path = "out" + writer.ending;
        for (const rlim_t room : {rlim_t{0}, rlim_t{1}, rlim_t{whole.size() / 2}, rlim_t{whole.size() - 1}}) {
            const std::vector<std::string> before = m_folder.names();
            {
                const SmallFiles small(room);
                tvkClearFindings(m_world.findings);
                EXPECT_EQ(writer.write(m_world, path.c_str()), TVK_BAD_INPUT) << room;
            }
            EXPECT_EQ(bytesOf(path), "(none)") << room;
            writeBytes(path, kOldText);
            {
                const SmallFiles small(room);
                EXPECT_EQ(writer.write(m_world, path.c_str()), TVK_BAD_INPUT) << room;
            }
            EXPECT_EQ(bytesOf(path), kOldText) << room;
            std::filesystem::remove(path);
            EXPECT_EQ(m_folder.names(), before) << room;
        }
        tvkClearFindings(m_world.findings);
        const SmallFiles enough(rlim_t{20'000'000});
        EXPECT_EQ(writer.write(m_world, path.c_str()), TVK_OK);
        EXPECT_EQ(bytesOf(path), whole);
    });
}

TEST_F(Writing, files_that_cannot_be_read_are_refused)
{
    std::filesystem::create_directory("folder.json");
    writeBytes("plain", kOldText);
    for (const char* const path :
         {"none/in.json", "plain/in.json", "folder.json", "none.inp", "none.csv,none.csv"}) {
        tvkNetwork* network = nullptr;
        tvkClearFindings(m_world.findings);
        EXPECT_EQ(tvkReadNetwork(path, &network, m_world.findings), TVK_BAD_INPUT) << path;
        EXPECT_EQ(network, nullptr);
        EXPECT_GT(tvkFindingsCountOf(m_world.findings, TVK_ERROR), 0U) << path;
        tvkResult* result = nullptr;
        EXPECT_EQ(tvkReadResult(path, &result, m_world.findings), TVK_BAD_INPUT) << path;
        EXPECT_EQ(result, nullptr);
    }
}

namespace
{

/// Counts the steps of a solve and stops it at one of them.
struct StopAt {
    int wanted;
    int calls = 0;
};

int stopAtOneStep(void* user, int /*step*/)
{
    auto& stop = *static_cast<StopAt*>(user);
    return ++stop.calls == stop.wanted ? 1 : 0;
}

std::string resultText(const tvkResult* result)
{
    char* text = nullptr;
    EXPECT_EQ(tvkResultText(result, &text, nullptr), TVK_OK);
    const std::string copy = text == nullptr ? "" : text;
    tvkFreeText(text);
    return copy;
}

}  // namespace

TEST(KitCancellation, solve_that_is_stopped_at_any_step_gives_a_result_without_values_and_leaves_the_network)
{
    for (const char* const example : {"two_loops.json", "pump_static_head.json", "heating_riser.json"}) {
        SCOPED_TRACE(example);
        KitWorld world;
        world.network = readExample(example);
        world.result = solved(world.network);
        const std::string given = world.given();
        const std::string expected = resultText(world.result);
        StopAt never{-1};
        tvkResult* counted = nullptr;
        ASSERT_EQ(tvkSolve(world.network, nullptr, stopAtOneStep, &never, &counted, nullptr), TVK_OK);
        tvkFreeResult(counted);
        ASSERT_GT(never.calls, 1);
        for (int k = 1; k <= never.calls; ++k) {
            StopAt stop{k};
            tvkResult* stopped = nullptr;
            tvkClearFindings(world.findings);
            EXPECT_EQ(tvkSolve(world.network, nullptr, stopAtOneStep, &stop, &stopped, world.findings),
                      TVK_CANCELLED)
                << k;
            ASSERT_NE(stopped, nullptr) << k;
            EXPECT_EQ(tvkResultOutcome(stopped), TVK_CANCELLED) << k;
            EXPECT_EQ(tvkResultHasValues(stopped), 0) << k;
            EXPECT_EQ(tvkNodeResults(stopped, "pressure"), nullptr) << k;
            EXPECT_EQ(stop.calls, k) << "asked again after it stopped";
            tvkFreeResult(stopped);
            EXPECT_EQ(world.given(), given) << k;
            tvkResult* again = solved(world.network);
            EXPECT_EQ(resultText(again), expected) << k;
            tvkFreeResult(again);
        }
    }
}
