// IElement.h: a pipe, pump, valve, orifice or loss between two nodes.
#ifndef TAVELL_IELEMENT_H
#define TAVELL_IELEMENT_H

namespace Velcor::Tavell
{

class IEntity;

/// An element of a circuit, destroyed with the circuit or by ICircuit::ReleaseElement. Positive flow runs
/// from its start node to its end node; its length is the distance between them.
/// Every typed operation reads or writes a property of the element's entity (ids 1000 to 1026).
class IElement
{
public:
    /// Element id, unique in its circuit unless the host changed it; 0 when it has none.
    virtual int GetId() = 0;

    /// Element type, TavellElementType. SetType touches no other property.
    virtual int GetType() = 0;
    virtual void SetType(int type) = 0;

    /// Ids of the end nodes; 0 when not set.
    virtual int GetStartNodeId() = 0;
    virtual int GetEndNodeId() = 0;
    /// Exchanges the two end ids and nothing else.
    virtual void SwapNodes() = 0;

    /// Makes the element a pump (type 1) or a loss (type 2) with a curve of count >= 4 volume flows [m3/s]
    /// and pressures [Pa], measured with fluid of referenceDensity [kg/m3].
    /// False, changing nothing, for another type, a null array or fewer points.
    virtual bool UpdateCurveData(int type, const double* flowRates, const double* pressures, int count,
                                 double referenceDensity) = 0;

    /// Reads the curve: *count receives the number of points; when capacity holds them all, the arrays
    /// (capacity entries each) and *referenceDensity are filled and the result is true. False when capacity
    /// is too small (ask with 0 first; the arrays may then be null), when fewer pressures than flows are
    /// stored and, with *count = -1, for a pipe.
    virtual bool GetCurveData(double* referenceDensity, double* flowRates, double* pressures, int capacity,
                              int* count) = 0;

    /// Properties and meta string of the element. Never null.
    virtual IEntity* GetEntity() = 0;
    virtual const IEntity* GetEntityConst() const = 0;
};

}  // namespace Velcor::Tavell

#endif
