// IEntity.h: the properties and the meta string of a circuit, node, element or fluid.
#ifndef TAVELL_IENTITY_H
#define TAVELL_IENTITY_H

namespace Velcor::Tavell
{

class IPropertySet;

/// Any object with properties. Property ids and units: Constants.h, TavellProperty.
/// A change drops the results of the circuit, with three exceptions that leave them as they are: SetProperty
/// on a fluid, RemoveProperty, and text stored through the property set.
class IEntity
{
public:
    /// Sets the meta string, free text of the host (a name, say); null counts as "".
    virtual void SetMeta(const char* meta) = 0;
    /// The meta string, "" when there is none; valid until it changes.
    virtual const char* GetMeta() = 0;

    /// Stores a number. An element takes ids 1000 to 1006 and 1008 to 1026, a node 2000 to 2011, a circuit
    /// 3000 to 3005; other ids give false and store nothing, accepted ones true. A fluid takes any id and
    /// answers whether the value changed.
    virtual bool SetProperty(int id, double value) = 0;
    /// The same by name, in any letter case. An unknown name counts as id -1, which only a fluid takes.
    virtual bool SetPropertyByName(const char* name, double value) = 0;
    /// Whether a value is stored for id.
    virtual bool HasProperty(int id) = 0;
    /// Reads a number into *value; false, leaving it alone, when none is stored. Throws when the stored text
    /// is no number. An element's temperature (1006) reads as its circuit's fluid default temperature.
    virtual bool GetProperty(int id, double* value) = 0;
    /// Removes a value; false when none is stored.
    virtual bool RemoveProperty(int id) = 0;

    /// The property set, for listing; lives as long as the entity. Never null.
    virtual IPropertySet* GetProperties() = 0;
    /// The same set; every property is writeable.
    virtual IPropertySet* GetWriteableProperties() = 0;
};

}  // namespace Velcor::Tavell

#endif
