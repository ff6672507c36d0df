// feedback_mapping.h: from the solver's messages to the feedback of the circuit.
#pragma once

#include <vector>

#include "FeedbackCollection.h"
#include "lcn/message.h"

namespace Velcor::Tavell
{

/// Replaces the feedback by one item per message, in the order recorded, with the message's values.
/// Throws std::runtime_error("Unmapped message Id") at a code without a feedback id; the items of the
/// messages before it are then in the collection.
void mapFeedback(const std::vector<lcn::Message>& messages, FeedbackCollection& feedback);

}  // namespace Velcor::Tavell
