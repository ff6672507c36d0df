// network_parts.h: the parts of a network file, each read from its JSON value.
#ifndef TAVELL_KIT_NETWORK_PARTS_H
#define TAVELL_KIT_NETWORK_PARTS_H

#include <array>
#include <optional>
#include <string>
#include <unordered_map>

#include <nlohmann/json.hpp>

#include "network.h"
#include "object_reader.h"

namespace kit
{

/// Positions of nodes or elements by name.
using Positions = std::unordered_map<std::string, std::size_t>;
Positions positionsOf(const std::vector<Node>& nodes);
Positions positionsOf(const std::vector<Element>& elements);

/// Reads single parts. A part with a finding keeps its default, so that the rest is still checked.
class PartReader
{
public:
    /// network: gives the materials, fittings and curves that elements name, and the way its coordinates are
    /// meant.
    PartReader(const Network& network, const Positions& nodes, const Reading& reading)
        : m_network(network), m_nodes(nodes), m_reading(reading)
    {
    }

    FluidChoice readFluid(const nlohmann::json& value, const std::string& pointer);
    Settings readSettings(const nlohmann::json& value, const std::string& pointer);
    Material readMaterial(const nlohmann::json& value, const std::string& pointer, const std::string& name);
    Fitting readFitting(const nlohmann::json& value, const std::string& pointer, const std::string& name);
    Curve readCurve(const nlohmann::json& value, const std::string& pointer, const std::string& name);
    Node readNode(const nlohmann::json& value, const std::string& pointer);
    Element readElement(const nlohmann::json& value, const std::string& pointer);
    /// Three numbers; nothing, and a finding, otherwise. With three the last may be left out, being 0.
    std::optional<std::array<double, 3>> readVector(const nlohmann::json& value, const NumberRule& rule,
                                                    const std::string& pointer, const std::string& object,
                                                    bool isThirdNeeded = true);

    /// Says that there is no list of nodes, so that no end of an element is looked for.
    void setNodesMissing() { m_hasNodes = false; }

    /// Reports the nodes that were read without a place: a few one by one, many at once at their list.
    void reportMissingPlaces(const std::string& listPointer, std::size_t nodeCount);

    /// Whether all that was read is good enough to be checked together.
    bool isConnected() const { return m_isConnected; }

private:
    void checkFluid(const FluidChoice& fluid, const ObjectReader& reader);
    int readChoice(const ObjectReader& reader, const char* key,
                   const std::vector<std::pair<const char*, int>>& choices, int fallback);
    Boundary readBoundary(const nlohmann::json& value, const ObjectReader& node, const char* key);
    void readEnds(const ObjectReader& reader, Element& element);
    std::optional<std::size_t> readEnd(const ObjectReader& reader, const char* key, const char* meaning);
    const ElementKind* readKind(const nlohmann::json& value, const std::string& pointer,
                                const std::string& object);
    void readLength(const ObjectReader& reader, Element& element);
    std::optional<Section> readSection(const ObjectReader& reader);
    void readOwnCurve(const ObjectReader& reader, Element& element);
    std::string suggestedName(const std::string& name,
                              std::vector<std::string> (*names)(const Network&)) const;
    std::vector<CurvePoint> readCurvePoints(const nlohmann::json& values, const std::string& pointer,
                                            const std::string& object);
    std::optional<CurvePoint> readCurvePoint(const nlohmann::json& value, const std::string& pointer,
                                             const std::string& object);
    void readMaterialName(const ObjectReader& reader, Element& element);
    void readNumbers(const ObjectReader& reader, Element& element);
    void readFittings(const ObjectReader& reader, Element& element);
    std::optional<FittingUse> readFittingUse(const nlohmann::json& value, const std::string& pointer,
                                             const std::string& object);
    std::optional<Heat> readHeat(const ObjectReader& reader, const ElementKind& kind);
    void readVertices(const ObjectReader& reader, Element& element);
    void checkSizes(const ObjectReader& reader, const Element& element);

    const Network& m_network;
    const Positions& m_nodes;
    const Reading& m_reading;
    bool m_isConnected = true;
    std::vector<std::pair<std::string, std::string>> m_nodesWithoutPlace;  // pointer, object
    bool m_hasNodes = true;
};

}  // namespace kit

#endif
