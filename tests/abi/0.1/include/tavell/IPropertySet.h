// IPropertySet.h: the stored properties of one entity, by position.
#ifndef TAVELL_IPROPERTYSET_H
#define TAVELL_IPROPERTYSET_H

#include <cstddef>

namespace Velcor::Tavell
{

/// The properties of one entity in ascending order of id; positions run from 0. A number is kept as its text
/// with 20 significant digits, which reads back as the same double.
class IPropertySet
{
public:
    /// The entity's meta string, "" when there is none.
    virtual const char* GetMeta() = 0;
    /// Number of stored properties.
    virtual int GetSize() = 0;
    /// Id at a position; -1 when out of range.
    virtual int GetProp(std::size_t index) = 0;
    /// Value at a position; 0.0 when out of range. Throws when the stored text is no number.
    virtual double GetValue(std::size_t index) = 0;
    /// Name of the id at a position; "" when out of range or without a name. Valid for the life of the
    /// process.
    virtual const char* GetName(std::size_t index) = 0;
    /// Stored text at a position, valid until it changes; null when out of range.
    virtual const char* GetStringValue(std::size_t index) = 0;
    /// Position of an id; -1 when it is not stored.
    virtual int GetIndex(int id) = 0;
    /// Stores text under a property name (any letter case), whatever the kind of entity; tells no one, so
    /// results of the circuit stay. False for an unknown name or a null value.
    virtual bool SetStringPropertyByName(const char* name, const char* value) = 0;
};

}  // namespace Velcor::Tavell

#endif
