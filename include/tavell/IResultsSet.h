// IResultsSet.h: one result quantity over all nodes or all elements.
#ifndef TAVELL_IRESULTSSET_H
#define TAVELL_IRESULTSSET_H

#include <cstddef>

namespace Velcor::Tavell
{

/// Ids and values side by side, in order of creation. Valid until the circuit changes, is solved again or
/// released. Several threads may read the arrays as long as none of them calls an operation (ITavell.h).
class IResultsSet
{
public:
    /// Number of ids and of values.
    virtual std::size_t GetSize() = 0;
    /// Node or element ids; null when empty.
    virtual const int* GetIds() = 0;
    /// Values in SI units, TavellResultKey; null when empty.
    virtual const double* GetValues() = 0;
    /// Values in a display unit, value x scale + offset (kPa: 0.001, 0; degC: 1, -273.15); null when empty.
    /// Kept for the pair last asked for; a call with another pair overwrites the same array.
    virtual const double* GetL10NValues(double scale, double offset) = 0;
    /// True for a node quantity, false for an element quantity.
    virtual bool IsNodal() = 0;
};

}  // namespace Velcor::Tavell

#endif
