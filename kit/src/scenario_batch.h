// scenario_batch.h: one network solved many times with other values, on several threads.
#ifndef TAVELL_KIT_SCENARIO_BATCH_H
#define TAVELL_KIT_SCENARIO_BATCH_H

#include <cstddef>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <tavellkit.h>

#include "findings.h"
#include "kit_api.h"
#include "network.h"
#include "network_parts.h"
#include "solution.h"

namespace kit
{

/// Inputs that go into one key of many nodes or elements.
struct KeyedInputs {
    bool isOfNodes = false;
    std::string key;
    std::vector<std::size_t> columns;    // of the values of a scenario
    std::vector<std::size_t> positions;  // of the nodes or elements
};

/// An input that is a number somewhere in the file's value of a part of the network.
struct PointerInput {
    enum class Of { fluid, settings, gravity, node, element };

    Of of = Of::fluid;
    std::size_t position = 0;            // of the node or element
    nlohmann::json::json_pointer place;  // in its value
    std::string text;                    // the pointer as it was given
    std::size_t column = 0;              // of the values of a scenario
};

/// A number of a solution.
struct OutputNumber {
    enum class Fold {
        at,
        smallest,
        largest,
        largestSize,
        sum,
        mean,
        whereSmallest,
        whereLargest,
        whereLargestSize,
        certificate,
        iterations
    };

    Fold fold = Fold::at;
    bool isOfNodes = false;
    std::string quantity;
    std::size_t position = 0;
};

/// What all scenarios of a call share, and where their numbers go.
struct ScenarioBatch {
    /// Refuses (kit_api.h) inputs and outputs that the network cannot have.
    ScenarioBatch(std::shared_ptr<const Network> network, std::size_t inputCount, const tvkInput* inputs,
                  std::size_t outputCount, const tvkOutput* outputs);

    /// Positions of the nodes by name, found when first asked for.
    const Positions& nodePositions() const;

    std::shared_ptr<const Network> base;  // that every check has passed
    std::vector<KeyedInputs> keyed;       // in the order in which they are set
    std::vector<PointerInput> pointers;   // set after these
    std::vector<OutputNumber> wanted;
    std::size_t inputCount;

    std::size_t scenarios = 0;
    std::size_t threads = 1;
    double timeLimit = std::numeric_limits<double>::infinity();  // [s], of each scenario
    const double* values = nullptr;                              // scenarios x inputs; NaN leaves the base's
    double* results = nullptr;                                   // scenarios x outputs
    int* outcomes = nullptr;    // a tvkStatus each; the last three may be null
    int* iterations = nullptr;  // steps
    char** texts = nullptr;     // findings as JSON of those that are not TVK_OK

private:
    void addInput(const tvkInput& input, std::size_t column);
    void addPointer(const std::string& text, std::size_t column);
    void addKeyed(bool isOfNodes, const std::string& key, std::size_t position, std::size_t column);

    const tvkNetwork m_handle;  // the base
    mutable std::once_flag m_isIndexed;
    mutable Positions m_nodePositions;
};

/// Solves the scenarios of a batch. progress is asked on this thread with the number of those that are done;
/// false when it asked to stop.
bool solveBatch(const ScenarioBatch& batch, const Progress& progress);

}  // namespace kit

#endif
