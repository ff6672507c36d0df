// Fluid.cpp: fluid data; water by default.
#include "Fluid.h"

#include "property_ids.h"

namespace Velcor::Tavell
{

namespace
{

struct FluidValue {
    int id;
    float value;
};

// clang-format off
/// Water at 21 degC, atmospheric pressure. SI units as in Constants.h.
// kept: single precision, widened when it is stored: stored texts and solved flows have these digits.
constexpr FluidValue kWater[] = {
    {TAVELL_FLUID_DENSITY, 997.4F},
    {TAVELL_FLUID_SPECIFIC_HEAT, 4179.0F},
    {TAVELL_FLUID_CONDUCTIVITY, 0.604F},
    {TAVELL_FLUID_VISCOSITY, 0.00098F},
    {TAVELL_FLUID_VISCOSITY_COEFFICIENT_1, 2.86e-05F},
    {TAVELL_FLUID_VISCOSITY_COEFFICIENT_2, 783.8F},
    {TAVELL_FLUID_VISCOSITY_COEFFICIENT_3, 396.8F},
    {TAVELL_FLUID_DEFAULT_TEMPERATURE, 294.26F},
};
// clang-format on

}  // namespace

Fluid::Fluid() : m_uiName("Water")
{
    properties().useRoom(m_room);
    for (const FluidValue& entry : kWater)
        properties().setNumber(entry.id, static_cast<double>(entry.value));
}

IEntity* Fluid::GetEntity()
{
    return this;
}

const IEntity* Fluid::GetEntityConst() const
{
    return this;
}

const char* Fluid::GetUIName()
{
    return m_uiName.c_str();
}

void Fluid::SetUIName(const char* name)
{
    m_uiName = name != nullptr ? name : "";
    Notify(0);
}

bool Fluid::SetFluidProperty(int id, float value)
{
    if (!isFluidProperty(id)) return false;
    if (!properties().setNumber(id, static_cast<double>(value))) return false;
    Notify(0);
    return true;
}

void Fluid::SetMeta(const char* meta)
{
    Entity::SetMeta(meta);
    Notify(0);
}

}  // namespace Velcor::Tavell
