// feedback_mapping.cpp: the table of diagnostic codes and their feedback ids.
#include "feedback_mapping.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <stdexcept>

#include "tavell/Constants.h"

namespace Velcor::Tavell
{

namespace
{

struct MappedCode {
    std::uint32_t code;  // of lcn::Message
    int feedbackId;      // TavellFeedbackId
};

// clang-format off
constexpr MappedCode kMappedCodes[] = {
    {700480, TAVELL_FEEDBACK_FLOW_UPDATE_ERROR},
    {700490, TAVELL_FEEDBACK_TEMPERATURE_ERROR},
    {700500, TAVELL_FEEDBACK_MINOR_LOSS_ERROR},
    {700530, TAVELL_FEEDBACK_MASS_ERROR},
    {700540, TAVELL_FEEDBACK_PRESSURE_ERROR},
    {700550, TAVELL_FEEDBACK_ITERATION_LIMIT},
    {700650, TAVELL_FEEDBACK_NODE_MISSING},
    {700660, TAVELL_FEEDBACK_ELEMENT_MISSING},
    {700720, TAVELL_FEEDBACK_TEMPERATURE_NO_PRESSURE},
    {700820, TAVELL_FEEDBACK_CURVE_ERROR},
    {700890, TAVELL_FEEDBACK_RESERVED_10},
    {700900, TAVELL_FEEDBACK_RESERVED_11},
    {701200, TAVELL_FEEDBACK_PRESSURE_SOLUTION},
    {701201, TAVELL_FEEDBACK_NO_INTERNAL_NODES},
    {701202, TAVELL_FEEDBACK_RESERVED_15},
    {701203, TAVELL_FEEDBACK_UNBALANCED_PART},
    {701204, TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE},
    {701205, TAVELL_FEEDBACK_PART_CLOSED_BY},
    {701206, TAVELL_FEEDBACK_PART_FED_BY},
    {701207, TAVELL_FEEDBACK_RESERVED_20},
    {701208, TAVELL_FEEDBACK_CANCELLED},
    {702400, TAVELL_FEEDBACK_CONTRADICTING_ELEMENT},
};
// clang-format on

/// Feedback id of a diagnostic code. Throws when the table has no such code.
int feedbackIdOf(std::uint32_t code)
{
    const auto* row = std::find_if(std::begin(kMappedCodes), std::end(kMappedCodes),
                                   [code](const MappedCode& mapped) { return mapped.code == code; });
    if (row == std::end(kMappedCodes)) throw std::runtime_error("Unmapped message Id");
    return row->feedbackId;
}

}  // namespace

void mapFeedback(const std::vector<lcn::Message>& messages, FeedbackCollection& feedback)
{
    feedback.clear();
    for (const lcn::Message& message : messages)
        feedback.append(feedbackIdOf(message.id), message.parameters);
}

}  // namespace Velcor::Tavell
