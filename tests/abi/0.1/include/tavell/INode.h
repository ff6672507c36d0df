// INode.h: a junction or an end of the network.
#ifndef TAVELL_INODE_H
#define TAVELL_INODE_H

namespace Velcor::Tavell
{

class IEntity;

/// A node of a circuit, made by ICircuit::CreateNode and destroyed with the circuit or by
/// ICircuit::ReleaseNode.
/// Every typed operation reads or writes a property of the node's entity (ids 2000 to 2011).
class INode
{
public:
    /// Node id, unique in its circuit unless the host changed it; 0 when it has none.
    virtual int GetId() = 0;

    /// Location [m]; each pointer must be valid.
    virtual void GetLocation(double* x, double* y, double* z) = 0;
    virtual void SetLocation(double x, double y, double z) = 0;

    /// Node type, TavellNodeType: only types 0 and 2 impose their constraint.
    virtual void SetType(int type) = 0;
    virtual int GetType() = 0;

    /// Sets the constraint kind, TavellNodeConstraint, and the value that belongs to it: [Pa], [kg/s], [-] or
    /// [m/s].
    /// Flows are positive along the joined element, from its start to its end node, whichever of the two this
    /// is. Values of other kinds stay stored. For kind 4 set the properties TAVELL_NODE_PRESSURE and
    /// TAVELL_NODE_MASS_FLOW_RATE: its own value is stored but read by no solve.
    virtual void SetConstraint(int constraint, double value) = 0;
    virtual int GetConstraint() = 0;

    /// Properties and meta string of the node. Never null.
    virtual IEntity* GetEntity() = 0;
    virtual const IEntity* GetEntityConst() const = 0;
};

}  // namespace Velcor::Tavell

#endif
