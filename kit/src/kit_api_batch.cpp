// Studies of the C interface: one network solved many times.
#include "kit_api.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include "kit_api_options.h"
#include "scenario.h"
#include "scenario_batch.h"

using kit::guarded;
using kit::required;

namespace kit
{

namespace
{

constexpr double kMostThreads = 1024.0;
constexpr double kShortestLimit = 1e-9;  // [s]
constexpr double kLongestLimit = 1e9;    // [s]

struct BatchOptions {
    std::optional<std::string> scenario;
    std::optional<bool> temperatures;
    std::size_t threads;
    double timeLimit;  // [s]

    explicit BatchOptions(const char* text)
    {
        Options options(text);
        scenario = options.text("scenario");
        temperatures = options.flag("temperatures");
        const auto count = options.number("threads", 1.0, kMostThreads);
        if (count && *count != std::floor(*count))
            throw Refusal{{"", 0, 0, "/threads", ""}, "the option is no whole number", "give one"};
        threads =
            count ? static_cast<std::size_t>(*count) : std::max(1U, std::thread::hardware_concurrency());
        timeLimit = options.number("time_limit", kShortestLimit, kLongestLimit)
                        .value_or(std::numeric_limits<double>::infinity());
        options.close();
    }
};

/// The network that all scenarios start from; null, and findings, when there is none.
std::shared_ptr<const Network> networkOf(const tvkNetwork& handle, const BatchOptions& options,
                                         Findings& findings)
{
    const auto checked = handle.checked(findings);
    if (!checked) return nullptr;
    auto network = std::make_shared<Network>(*checked);
    if (options.scenario) {
        auto patched = withScenario(*checked, *options.scenario, findings);
        if (!patched) return nullptr;
        *network = std::move(*patched);
    }
    if (options.temperatures) network->settings.solvesTemperatures = *options.temperatures;
    return network;
}

/// Frees the texts of a call that did not come to its end.
class TextsGuard
{
public:
    TextsGuard(char** texts, std::size_t count) : m_texts(texts), m_count(texts == nullptr ? 0 : count)
    {
        std::fill_n(m_texts, m_count, nullptr);
    }
    ~TextsGuard()
    {
        for (std::size_t i = 0; i < m_count; ++i) {
            tvkFreeText(m_texts[i]);
            m_texts[i] = nullptr;
        }
    }
    TextsGuard(const TextsGuard&) = delete;
    TextsGuard& operator=(const TextsGuard&) = delete;
    void keep() { m_count = 0; }

private:
    char** m_texts;
    std::size_t m_count;
};

void requireTable(std::size_t rows, std::size_t columns, const double* table, const char* name)
{
    if (rows == 0 || columns == 0) return;
    required(table, name);
    if (columns > std::numeric_limits<std::size_t>::max() / sizeof(double) / rows)
        refuse(std::string("the table \"") + name + "\" is larger than memory", "make several calls");
}

}  // namespace

}  // namespace kit

tvkStatus tvkSolveMany(const tvkNetwork* network, const char* options, size_t scenarios, size_t inputCount,
                       const tvkInput* inputs, const double* values, size_t outputCount,
                       const tvkOutput* outputs, double* results, int* outcomes, int* iterations,
                       char** texts, tvkProgress progress, void* user, tvkFindings* findings)
{
    return guarded(findings, [&](kit::Findings& list) {
        kit::TextsGuard guard(texts, scenarios);
        const tvkNetwork& handle = required(network, "network");
        const kit::BatchOptions given(options);
        kit::requireTable(scenarios, inputCount, values, "values");
        kit::requireTable(scenarios, outputCount, results, "results");
        const auto base = kit::networkOf(handle, given, list);
        if (!base) return TVK_BAD_INPUT;
        kit::ScenarioBatch batch(base, inputCount, inputs, outputCount, outputs);
        batch.scenarios = scenarios;
        batch.threads = given.threads;
        batch.timeLimit = given.timeLimit;
        batch.values = values;
        batch.results = results;
        batch.outcomes = outcomes;
        batch.iterations = iterations;
        batch.texts = texts;
        kit::ProgressBridge bridge{progress, user};
        const bool isDone = kit::solveBatch(batch, bridge.progress());
        guard.keep();
        return isDone ? TVK_OK : TVK_CANCELLED;
    });
}
