// element_kinds.h: the element types of a network file and the keys that each one takes.
#ifndef TAVELL_TOOLS_ELEMENT_KINDS_H
#define TAVELL_TOOLS_ELEMENT_KINDS_H

#include <string>
#include <vector>

#include "object_reader.h"

/// A number of an element that goes into one property of the library.
struct NumberKey {
    const char* key;
    int property;  // TavellProperty
    Range range;
    Need need;
    const char* meaning;  // what to give, for messages
};

struct ElementKind {
    const char* name;      // "type" in the file
    int type;              // TavellElementType
    bool hasCurve;         // a curve instead of a cross-section
    bool reportsVelocity;  // whether the library computes velocity and Reynolds number
    std::vector<NumberKey> numbers;
};

/// The kind of a "type" text; null when there is none.
const ElementKind* findElementKind(const std::string& name);

/// The "type" texts, in the order of TavellElementType.
std::vector<std::string> elementKindNames();

#endif
