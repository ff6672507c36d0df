// IFeedback.h: one message of a solve.
#ifndef TAVELL_IFEEDBACK_H
#define TAVELL_IFEEDBACK_H

#include <cstddef>

namespace Velcor::Tavell
{

/// A message as a number and values; hosts word it themselves. Valid until the circuit's next solve.
class IFeedback
{
public:
    /// TavellFeedbackId, 0 to 21.
    virtual int GetId() = 0;
    /// Number of values.
    virtual std::size_t GetValueSize() = 0;
    /// The values; null when there are none.
    virtual const double* GetValues() = 0;
};

}  // namespace Velcor::Tavell

#endif
