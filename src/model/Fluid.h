// Fluid.h: the medium of a circuit.
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "Entity.h"
#include "Observer.h"
#include "tavell/IFluid.h"

namespace Velcor::Tavell
{

/// Water at 21 degC at first. Observed by its circuit.
class Fluid final : public IFluid, public Entity, public Patterns::Observer::Subject
{
public:
    Fluid();

    IEntity* GetEntity() override;
    const IEntity* GetEntityConst() const override;
    const char* GetUIName() override;
    void SetUIName(const char* name) override;

    /// Sets a fluid property (4000 to 4007) in single precision and notifies the observers when it changed;
    /// true when it did, false for other ids. Follows the IFluid operations in the table.
    virtual bool SetFluidProperty(int id, float value);

    /// Notifies the observers, whether or not the meta string changed.
    void SetMeta(const char* meta) override;

private:
    static constexpr std::size_t kInitialProperties = 8;

    std::array<double, kInitialProperties> m_room;  // of the properties
    std::string m_uiName;
};

}  // namespace Velcor::Tavell
