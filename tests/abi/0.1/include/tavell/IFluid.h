// IFluid.h: the medium of a circuit.
#ifndef TAVELL_IFLUID_H
#define TAVELL_IFLUID_H

namespace Velcor::Tavell
{

class IEntity;

/// The one fluid of a circuit; lives as long as the circuit. Its data are properties 4000 to 4007 of its
/// entity.
class IFluid
{
public:
    /// Properties and meta string of the fluid. Never null.
    virtual IEntity* GetEntity() = 0;
    virtual const IEntity* GetEntityConst() const = 0;
    /// Display name, "Water" at first; valid until it changes.
    virtual const char* GetUIName() = 0;
    /// Sets the display name; null counts as "". Invalidates the circuit's results.
    virtual void SetUIName(const char* name) = 0;
};

}  // namespace Velcor::Tavell

#endif
