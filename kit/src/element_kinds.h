// element_kinds.h: the element types of a network file and the keys that each one takes.
#ifndef TAVELL_KIT_ELEMENT_KINDS_H
#define TAVELL_KIT_ELEMENT_KINDS_H

#include <string>
#include <vector>

#include "object_reader.h"

namespace kit
{

/// A number of an element that goes into one property of the library.
struct NumberKey {
    const char* key;
    int property;  // TavellProperty
    NumberRule rule;
    Need need;
};

/// Which property of a material an element takes.
enum class MaterialUse { none, roughness, hazenWilliams };

/// Whether a schematic network has to give an element's length.
enum class LengthUse {
    optional,    // negligible when not given
    required,    // the loss is proportional to it
    byExponent,  // the loss holds L^b: required where b is not 0
};

struct ElementKind {
    const char* name;        // "type" in the file
    int type;                // TavellElementType
    bool hasCurve;           // a curve instead of a cross-section
    bool reportsVelocity;    // whether the library computes velocity and Reynolds number
    MaterialUse material;    // none: takes no material
    bool takesFittings;      // has a minor loss coefficient
    bool canHaveCheckValve;  // may let no flow back
    LengthUse length;        // in schematic networks
    std::vector<NumberKey> numbers;
    std::vector<std::string> keys;  // every key of such an element, in the order in which they are written
};

/// The kind of a "type" text; null when there is none.
const ElementKind* findElementKind(const std::string& name);

/// The kind of a TavellElementType; null when there is none.
const ElementKind* elementKindOf(int type);

/// Every kind, in the order of TavellElementType.
const std::vector<ElementKind>& elementKinds();

/// The "type" texts, in the order of TavellElementType.
std::vector<std::string> elementKindNames();

}  // namespace kit

#endif
