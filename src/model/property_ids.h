// property_ids.h: the one table of property ids, names and fallback values.
#pragma once

#include "tavell/Constants.h"

namespace Velcor::Tavell
{

/// Name of a property, valid for the life of the process; "" when the id has none.
const char* propertyName(int id);

/// Id of the property with this name, whatever the case of its letters; TAVELL_NO_PROPERTY for a null
/// pointer, the empty name or an unknown one.
int findPropertyId(const char* name);

/// Value that stands for a property which was never given one. The model itself reads a missing property as
/// absent.
double propertyFallback(int id);

/// Whether look-ups in a circuit depend on the property: the id of a node and the node ids at the ends of an
/// element.
constexpr bool isIdentifier(int id)
{
    return id == TAVELL_ELEMENT_START || id == TAVELL_ELEMENT_END || id == TAVELL_NODE_ID;
}

/// Number of slots: places for every id from the first to the last one of each kind of object.
constexpr int kPropertySlots = 53;

/// Slot of an id, 0 .. kPropertySlots - 1, ascending with the id; -1 for an id beyond every kind. 1007, which
/// is no property, has one too.
constexpr int propertySlot(int id)
{
    if (id >= TAVELL_ELEMENT_ID && id <= TAVELL_ELEMENT_FIXED_MASS_FLOW) return id - TAVELL_ELEMENT_ID;
    if (id >= TAVELL_NODE_ID && id <= TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT)
        return 27 + id - TAVELL_NODE_ID;
    if (id >= TAVELL_CIRCUIT_GRAVITY_X && id <= TAVELL_CIRCUIT_CALCULATE_VISCOSITY)
        return 39 + id - TAVELL_CIRCUIT_GRAVITY_X;
    if (id >= TAVELL_FLUID_DEFAULT_TEMPERATURE && id <= TAVELL_FLUID_VISCOSITY_COEFFICIENT_3)
        return 45 + id - TAVELL_FLUID_DEFAULT_TEMPERATURE;
    return -1;
}

/// Id of a slot.
constexpr int propertyOfSlot(int slot)
{
    if (slot < 27) return slot + TAVELL_ELEMENT_ID;
    if (slot < 39) return slot - 27 + TAVELL_NODE_ID;
    if (slot < 45) return slot - 39 + TAVELL_CIRCUIT_GRAVITY_X;
    return slot - 45 + TAVELL_FLUID_DEFAULT_TEMPERATURE;
}

/// Ids that SetProperty takes, by kind of object. 1007 is no property.
constexpr bool isElementProperty(int id)
{
    return id >= TAVELL_ELEMENT_ID && id <= TAVELL_ELEMENT_FIXED_MASS_FLOW && id != 1007;
}
constexpr bool isNodeProperty(int id)
{
    return id >= TAVELL_NODE_ID && id <= TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT;
}
constexpr bool isCircuitProperty(int id)
{
    return id >= TAVELL_CIRCUIT_GRAVITY_X && id <= TAVELL_CIRCUIT_CALCULATE_VISCOSITY;
}
constexpr bool isFluidProperty(int id)
{
    return id >= TAVELL_FLUID_DEFAULT_TEMPERATURE && id <= TAVELL_FLUID_VISCOSITY_COEFFICIENT_3;
}

}  // namespace Velcor::Tavell
