// network_keys.h: every key of the objects of a network file and every word that stands for a choice, once
// each, for the reader, the writer and the comparison with the published schema.
#ifndef TAVELL_KIT_NETWORK_KEYS_H
#define TAVELL_KIT_NETWORK_KEYS_H

#include <string>
#include <utility>
#include <vector>

#include "network.h"
#include "object_reader.h"

namespace kit
{

/// The kinds of objects in a network file, but for elements, whose keys depend on their type
/// (ElementKind::keys).
enum class ObjectType {
    document,
    answer,
    answerNode,
    answerElement,
    fluid,
    settings,
    material,
    fitting,
    curve,
    node,
    boundary,
    heat,
    fittingUse,
    scenario
};

/// The keys of an object, in the order in which they are written.
const ObjectReader::Keys& keysOf(ObjectType type);

/// The names of all quantities that have a unit, which are the keys of "units" and "result_units".
const ObjectReader::Keys& quantityNames();

/// The name of an object's definition in the schema: "node", "fitting_use" ...
std::string schemaName(ObjectType type);

/// Every type of objects.
const std::vector<ObjectType>& objectTypes();

/// A word of the file and the value that the library has for it.
using Choice = std::pair<const char*, int>;
const std::vector<Choice>& minorLossChoices();
const std::vector<Choice>& frictionChoices();

/// A key of a fluid and the property that it goes into.
struct FluidKey {
    const char* key;
    int property;  // TavellProperty
    NumberRule rule;
};
const std::vector<FluidKey>& fluidKeys();

/// A key of heat and its TavellEnergyType.
struct HeatKey {
    const char* key;
    int type;
    NumberRule rule;
};
const std::vector<HeatKey>& heatKeys();

/// A key of a boundary that gives a flow.
struct FlowKey {
    const char* key;
    Boundary::Flow kind;
    NumberRule rule;
};
const std::vector<FlowKey>& flowKeys();

/// Keys of the expected values of nodes and elements.
struct AnswerKey {
    const char* key;
    Quantity quantity;
};
const std::vector<AnswerKey>& nodeAnswerKeys();
const std::vector<AnswerKey>& elementAnswerKeys();

}  // namespace kit

#endif
