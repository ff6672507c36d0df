// kit_host.h: what the tests of the kit among other threads and floating-point settings share: every
// example, from its file to all that is said of its result.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <tavellkit.h>

namespace KitHost
{

struct Free {
    void operator()(tvkNetwork* network) const { tvkFreeNetwork(network); }
    void operator()(tvkResult* result) const { tvkFreeResult(result); }
    void operator()(tvkFindings* findings) const { tvkFreeFindings(findings); }
};
using Network = std::unique_ptr<tvkNetwork, Free>;
using Result = std::unique_ptr<tvkResult, Free>;
using Findings = std::unique_ptr<tvkFindings, Free>;

/// A text that a function wrote through its pointer argument.
inline std::string taken(const std::function<tvkStatus(char**)>& write)
{
    char* text = nullptr;
    const tvkStatus status = write(&text);
    std::string copy = text == nullptr ? "status " + std::to_string(status) : text;
    tvkFreeText(text);
    return copy;
}

/// The paths of all examples, in alphabetical order.
inline std::vector<std::string> examples()
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(TAVELL_EXAMPLES "/networks"))
        paths.push_back(entry.path().string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

inline std::string examplePath(const std::string& name)
{
    return std::string(TAVELL_EXAMPLES "/networks/") + name;
}

inline Network readNetwork(const std::string& path)
{
    tvkNetwork* network = nullptr;
    tvkReadNetwork(path.c_str(), &network, nullptr);
    return Network(network);
}

inline Result solve(const tvkNetwork* network, tvkProgress progress = nullptr, void* user = nullptr)
{
    tvkResult* result = nullptr;
    tvkSolve(network, nullptr, progress, user, &result, nullptr);
    return Result(result);
}

/// What functions that take a network as const say of it.
inline std::string toldOf(const tvkNetwork* network)
{
    std::string told = taken([&](char** text) { return tvkNetworkText(network, text, nullptr); }) +
                       taken([&](char** text) { return tvkNetworkHash(network, text, nullptr); });
    const Findings findings(tvkNewFindings());
    tvkExamine(network, findings.get());
    told += taken([&](char** text) { return tvkFindingsJson(findings.get(), text); });

    const std::size_t count = tvkNodeCount(network);
    const char* const* const names = tvkNodeNames(network);
    std::vector<std::size_t> positions(count);
    tvkFindNodes(network, count, names, positions.data(), nullptr);
    std::vector<double> heights(count);
    tvkGetNodeValues(network, "z", count, nullptr, heights.data(), nullptr);
    for (std::size_t i = 0; i < count; ++i) {
        std::uint64_t bits = 0;  // no arithmetic here: the settings under test would take part in it
        std::memcpy(&bits, &heights[i], sizeof bits);
        told +=
            std::string(names[i]) + ' ' + std::to_string(positions[i]) + ' ' + std::to_string(bits) + '\n';
    }
    return told;
}

/// What functions that take a result as const say of it.
inline std::string toldOf(const tvkResult* result)
{
    std::string told =
        taken([&](char** text) { return tvkCertificate(result, "json", text, nullptr); }) +
        taken([&](char** text) { return tvkResultText(result, text, nullptr); }) +
        taken([&](char** text) { return tvkResultTables(result, "text", "us", text, nullptr); }) +
        taken([&](char** text) { return tvkResultExchangeCsv(result, text, nullptr); });
    const Findings findings(tvkNewFindings());
    tvkDiagnose(result, findings.get());
    told += taken([&](char** text) { return tvkFindingsText(findings.get(), text); });
    for (const char* quantity : {"friction", "minor", "height", "pump", "other", "law_mismatch"})
        told += tvkElementResults(result, quantity) == nullptr ? '0' : '1';
    return told + std::to_string(tvkCertificateIsGood(result));
}

/// Everything about one example, from its file to what is said of its result.
inline std::string answerOf(const std::string& path)
{
    const Network network = readNetwork(path);
    if (network == nullptr) return path + " is not read";
    const Result result = solve(network.get());
    if (result == nullptr) return path + " is not solved";
    return toldOf(network.get()) + toldOf(result.get()) +
           taken([](char** text) { return tvkFluids("text", "us", text, nullptr); });
}

}  // namespace KitHost
