// Entity.cpp: properties and meta string as hosts see them.
#include "Entity.h"

#include "property_ids.h"

namespace Velcor::Tavell
{

void Entity::SetMeta(const char* meta)
{
    m_properties.setMeta(meta);
}

const char* Entity::GetMeta()
{
    return m_properties.GetMeta();
}

bool Entity::SetProperty(int id, double value)
{
    return m_properties.setNumber(id, value);
}

bool Entity::SetPropertyByName(const char* name, double value)
{
    return SetProperty(findPropertyId(name), value);
}

bool Entity::HasProperty(int id)
{
    return m_properties.has(id);
}

bool Entity::GetProperty(int id, double* value)
{
    if (!HasProperty(id)) return false;
    *value = m_properties.number(id);
    return true;
}

bool Entity::RemoveProperty(int id)
{
    return m_properties.remove(id);
}

IPropertySet* Entity::GetProperties()
{
    return &m_properties;
}

IPropertySet* Entity::GetWriteableProperties()
{
    return &m_properties;
}

}  // namespace Velcor::Tavell
