// Feedback.h: one message of a solve.
#pragma once

#include <cstddef>
#include <vector>

#include "tavell/IFeedback.h"

namespace Velcor::Tavell
{

/// A TavellFeedbackId with its values; never changes once made. Owned by the FeedbackCollection.
class Feedback final : public IFeedback
{
public:
    Feedback(int id, std::vector<double> values);

    int GetId() override;
    std::size_t GetValueSize() override;
    const double* GetValues() override;

private:
    int m_id;
    std::vector<double> m_values;
};

}  // namespace Velcor::Tavell
