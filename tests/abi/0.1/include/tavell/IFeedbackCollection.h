// IFeedbackCollection.h: the messages of a circuit's last solve.
#ifndef TAVELL_IFEEDBACKCOLLECTION_H
#define TAVELL_IFEEDBACKCOLLECTION_H

#include <cstddef>

namespace Velcor::Tavell
{

class IFeedback;

/// Messages in the order they were recorded; empty after a solve that converged with nothing to remark.
class IFeedbackCollection
{
public:
    /// Number of messages.
    virtual std::size_t GetSize() = 0;
    /// The message at a position from 0; null when index is not below GetSize(). Valid until the next solve.
    virtual IFeedback* GetFeedback(std::size_t index) = 0;
};

}  // namespace Velcor::Tavell

#endif
