// Entity.h: what circuits, nodes, elements and fluids have in common.
#pragma once

#include "Properties.h"
#include "tavell/IEntity.h"

namespace Velcor::Tavell
{

/// An object with properties and a meta string.
class Entity : public IEntity
{
public:
    Entity(const Entity&) = delete;
    Entity& operator=(const Entity&) = delete;

    void SetMeta(const char* meta) override;
    const char* GetMeta() override;
    bool SetProperty(int id, double value) override;
    bool SetPropertyByName(const char* name, double value) override;
    bool HasProperty(int id) override;
    bool GetProperty(int id, double* value) override;
    bool RemoveProperty(int id) override;
    IPropertySet* GetProperties() override;
    IPropertySet* GetWriteableProperties() override;

    /// The stored values. Changes made here notify no one and leave results in place, as those of a host's
    /// property set do.
    Properties& properties() { return m_properties; }
    const Properties& properties() const { return m_properties; }

    bool has(int id) const { return m_properties.has(id); }
    /// Stored value; 0.0 when absent. Throws as requireReadable.
    double number(int id) const { return m_properties.number(id); }
    /// Stored value without its fraction; 0 when absent. Throws as requireReadable.
    int wholeNumber(int id) const { return truncateToInt(m_properties.number(id)); }

protected:
    Entity() = default;
    ~Entity() = default;

private:
    Properties m_properties;
};

}  // namespace Velcor::Tavell
