// Node.cpp: typed access to the properties of a node.
#include "Node.h"

#include "Circuit.h"
#include "property_ids.h"

namespace Velcor::Tavell
{

namespace
{

/// Property that takes the value of a constraint; TAVELL_NO_PROPERTY for an unknown constraint.
int valuePropertyOf(int constraint)
{
    switch (constraint) {
    case TAVELL_CONSTRAINT_PRESSURE:
        return TAVELL_NODE_PRESSURE;
    case TAVELL_CONSTRAINT_MASS_FLOW:
        return TAVELL_NODE_MASS_FLOW_RATE;
    case TAVELL_CONSTRAINT_REYNOLDS:
        return TAVELL_NODE_REYNOLDS;
    case TAVELL_CONSTRAINT_VELOCITY:
        return TAVELL_NODE_VELOCITY;
    case TAVELL_CONSTRAINT_PRESSURE_AND_FLOW:
        return TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT;
    default:
        return TAVELL_NO_PROPERTY;
    }
}

}  // namespace

Node::Node(Circuit& circuit, std::uint32_t id) : m_circuit(circuit)
{
    properties().useRoom(m_room);
    properties().setNumber(TAVELL_NODE_ID, id);
    properties().setNumber(TAVELL_NODE_X, 0.0);
    properties().setNumber(TAVELL_NODE_Y, 0.0);
    properties().setNumber(TAVELL_NODE_Z, 0.0);
    properties().setNumber(TAVELL_NODE_MODE, TAVELL_NODE_INTERNAL);
    properties().setNumber(TAVELL_NODE_PRESSURE, 1.0);
    properties().setNumber(TAVELL_NODE_CONSTRAINT, TAVELL_CONSTRAINT_PRESSURE);
}

int Node::GetId()
{
    return id();
}

void Node::GetLocation(double* x, double* y, double* z)
{
    const Location here = location();
    *x = here.x;
    *y = here.y;
    *z = here.z;
}

void Node::SetLocation(double x, double y, double z)
{
    properties().reserve({TAVELL_NODE_X, TAVELL_NODE_Y, TAVELL_NODE_Z});
    const bool xChanged = properties().setNumber(TAVELL_NODE_X, x);
    const bool yChanged = properties().setNumber(TAVELL_NODE_Y, y);
    const bool zChanged = properties().setNumber(TAVELL_NODE_Z, z);
    if (xChanged || yChanged || zChanged) Notify(0);
}

void Node::SetType(int type)
{
    SetProperty(TAVELL_NODE_MODE, type);
}

int Node::GetType()
{
    return type();
}

void Node::SetConstraint(int constraint, double value)
{
    const int valueProperty = valuePropertyOf(constraint);
    if (valueProperty == TAVELL_NO_PROPERTY)
        properties().reserve({TAVELL_NODE_CONSTRAINT});
    else
        properties().reserve({TAVELL_NODE_CONSTRAINT, valueProperty});
    SetProperty(TAVELL_NODE_CONSTRAINT, constraint);
    if (valueProperty != TAVELL_NO_PROPERTY) SetProperty(valueProperty, value);
}

int Node::GetConstraint()
{
    return constraint();
}

IEntity* Node::GetEntity()
{
    return this;
}

const IEntity* Node::GetEntityConst() const
{
    return this;
}

void Node::SetMeta(const char* meta)
{
    if (properties().setMeta(meta)) Notify(0);
}

bool Node::SetProperty(int id, double value)
{
    if (!isNodeProperty(id)) return false;
    if (properties().setNumber(id, value)) Notify(0);
    return true;
}

Location Node::location() const
{
    return {number(TAVELL_NODE_X), number(TAVELL_NODE_Y), number(TAVELL_NODE_Z)};
}

void Node::identifiersChanged()
{
    m_circuit.refile(*this);
}

}  // namespace Velcor::Tavell
