// FeedbackCollection.h: the messages of a circuit's last solve.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Feedback.h"
#include "tavell/IFeedbackCollection.h"

namespace Velcor::Tavell
{

/// Owns its messages, in the order they were recorded. A pointer to one stays valid until the next clear().
class FeedbackCollection final : public IFeedbackCollection
{
public:
    std::size_t GetSize() override;
    IFeedback* GetFeedback(std::size_t index) override;

    /// Adds a message at the end; id is a TavellFeedbackId.
    void append(int id, std::vector<double> values);
    /// Destroys every message with its values.
    void clear();

private:
    std::vector<std::unique_ptr<Feedback>> m_messages;
};

}  // namespace Velcor::Tavell
