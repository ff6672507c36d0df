#include "network_file.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "boundary_checks.h"
#include "element_kinds.h"
#include "file_text.h"
#include "json_document.h"
#include "network_keys.h"
#include "network_parts.h"
#include "number_text.h"
#include "scenario.h"

namespace kit
{

namespace
{

using nlohmann::json;

const NumberRule kGravity{Quantity::none, Range::any, "a component of the direction of gravity"};
const NumberRule kTolerance{Quantity::none, Range::positive, "the relative tolerance of the numbers"};
const NumberRule kVersion{Quantity::none, Range::any, "the version of the file's format, 1"};

/// Lines of the items of a list; none for documents without lines.
using ItemLines = std::unordered_map<std::string, std::vector<std::uint32_t>>;

std::size_t lineOfItem(const ItemLines& lines, const char* list, std::size_t item)
{
    const auto found = lines.find(list);
    return found == lines.end() || item >= found->second.size() ? 0 : found->second[item];
}

/// Reads one document into a network.
class NetworkReader
{
public:
    NetworkReader(const json& document, const std::string& pointer, const std::string& file,
                  const ItemLines& lines, Findings& findings)
        : m_lines(lines), m_reading{file, {}, findings},
          m_document(document, pointer, "", keysOf(ObjectType::document), m_reading),
          m_parts(m_network, m_nodePositions, m_reading)
    {
    }

    Network read()
    {
        m_network.file = m_reading.file;
        if (!m_document.isObject()) return {};
        m_document.text("$schema", Need::optional, "the name of the schema");
        readVersion();
        m_network.title = m_document.text("title", Need::optional, "a title").value_or("");
        m_network.source =
            m_document.text("source", Need::optional, "the origin of the network").value_or("");
        readUnits();
        readCoordinates();
        readShared();
        readCase();
        readNodes();
        readElements();
        readAnswer();
        if (isWhole() || (m_hasLists && m_network.nodes.empty()))
            checkTogether(m_network, PointerOf::parts, m_document.pointer(), m_reading.findings);
        readScenarios();
        return std::move(m_network);
    }

private:
    void readVersion()
    {
        const auto version = m_document.number("tavell", kVersion, Need::required);
        if (version && *version != 1.0)
            m_document.report(Code::wrong_version, "tavell",
                              shortNumber(*version) + " is not a version that this program reads", "give 1");
    }

    /// Units of bare numbers, and those of printed results, which are the same when the file has none.
    void readUnits()
    {
        readUnitsAt("units", [this](Quantity quantity, const std::string& unit) {
            m_reading.units[quantity] = unit;
            m_network.resultUnits[std::string(quantityName(quantity))] = unit;
        });
        if (!m_document.has("result_units")) return;
        m_network.resultUnits.clear();
        readUnitsAt("result_units", [this](Quantity quantity, const std::string& unit) {
            m_network.resultUnits[std::string(quantityName(quantity))] = unit;
        });
    }

    template <class Use> void readUnitsAt(const char* key, Use use)
    {
        const json* value = m_document.member(key, Need::optional, "");
        if (value == nullptr) return;
        const std::string pointer = m_document.pointerOf(key);
        const ObjectReader units(*value, pointer, "", quantityNames(), m_reading);
        if (!units.isObject()) return;
        for (const std::string& name : quantityNames()) {
            const Quantity quantity = *findQuantity(name);
            const auto unit = units.text(name.c_str(), Need::optional, "a unit");
            if (!unit) continue;
            if (isUnitOf(*unit, quantity))
                use(quantity, *unit);
            else
                units.report(Code::unknown_unit, name, "the unit " + inQuotes(*unit) + " is unknown",
                             suggestion(*unit, unitsOf(quantity)));
        }
    }

    void readCoordinates()
    {
        const auto word = m_document.text("coordinates", Need::optional, "\"geometry\" or \"schematic\"");
        if (!word) return;
        if (*word == "schematic")
            m_network.coordinates = Coordinates::schematic;
        else if (*word != "geometry")
            m_document.report(Code::unknown_word, "coordinates", inQuotes(*word) + " is unknown",
                              suggestion(*word, {"geometry", "schematic"}));
    }

    /// What elements refer to by name.
    void readShared()
    {
        readNamed("materials",
                  [this](const json& value, const std::string& pointer, const std::string& name) {
                      m_network.materials[name] = m_parts.readMaterial(value, pointer, name);
                  });
        readNamed("fittings", [this](const json& value, const std::string& pointer, const std::string& name) {
            m_network.fittings[name] = m_parts.readFitting(value, pointer, name);
        });
        readNamed("curves", [this](const json& value, const std::string& pointer, const std::string& name) {
            m_network.curves[name] = m_parts.readCurve(value, pointer, name);
        });
    }

    /// The members of an object whose keys are names.
    template <class Read> void readNamed(const char* key, Read read)
    {
        const json* value = m_document.member(key, Need::optional, "");
        if (value == nullptr) return;
        const std::string pointer = m_document.pointerOf(key);
        if (!value->is_object()) {
            m_document.report(Code::wrong_type, key, shownValue(*value) + " is no object",
                              "write { } with names as keys");
            return;
        }
        for (const auto& [name, entry] : value->get_ref<const json::object_t&>()) {
            const std::string place = pointerTo(pointer, name);
            if (checkedText(json(name), "a name", m_reading, place, "")) read(entry, place, name);
        }
    }

    void readCase()
    {
        if (const json* fluid = m_document.member("fluid", Need::optional, ""))
            m_network.fluid = m_parts.readFluid(*fluid, m_document.pointerOf("fluid"));
        if (const json* gravity = m_document.member("gravity", Need::optional, "")) {
            if (const auto vector =
                    m_parts.readVector(*gravity, kGravity, m_document.pointerOf("gravity"), ""))
                m_network.gravity = *vector;
        }
        if (const json* settings = m_document.member("settings", Need::optional, ""))
            m_network.settings = m_parts.readSettings(*settings, m_document.pointerOf("settings"));
    }

    void readNodes()
    {
        const json* values = m_document.array("nodes", Need::required, "the list of nodes");
        if (values == nullptr || values->empty()) m_parts.setNodesMissing();
        if (values == nullptr) {
            m_hasLists = false;
            return;
        }
        m_network.nodes.reserve(values->size());
        m_nodePositions.reserve(values->size());
        for (std::size_t i = 0; i < values->size(); ++i) {
            const std::string pointer = itemPointer("nodes", i);
            m_network.nodes.push_back(m_parts.readNode((*values)[i], pointer));
            m_network.nodes.back().line = lineOfItem(m_lines, "nodes", i);
            enterName(m_network.nodes.back().name, i, "node", pointer, m_nodePositions);
        }
        m_parts.reportMissingPlaces(m_document.pointerOf("nodes"), values->size());
    }

    void readElements()
    {
        const json* values = m_document.array("elements", Need::required, "the list of elements");
        if (values == nullptr) {
            m_hasLists = false;
            return;
        }
        m_network.elements.reserve(values->size());
        m_elementPositions.reserve(values->size());
        for (std::size_t i = 0; i < values->size(); ++i) {
            const std::string pointer = itemPointer("elements", i);
            m_network.elements.push_back(m_parts.readElement((*values)[i], pointer));
            m_network.elements.back().line = lineOfItem(m_lines, "elements", i);
            enterName(m_network.elements.back().name, i, "element", pointer, m_elementPositions);
        }
    }

    std::string itemPointer(const char* list, std::size_t item) const
    {
        return m_document.pointerOf(list) + '/' + std::to_string(item);
    }

    void enterName(const std::string& name, std::size_t position, const char* what,
                   const std::string& pointer, Positions& positions)
    {
        if (name.empty()) return;
        const auto [first, isNew] = positions.emplace(name, position);
        if (isNew) return;
        m_reading.report(Code::duplicate_name, pointerTo(pointer, "name"), std::string(what) + ' ' + name,
                         inQuotes(name) + " is already the name of " + what + " number " +
                             std::to_string(first->second + 1));
    }

    void readAnswer()
    {
        const json* value = m_document.member("answer", Need::optional, "");
        if (value == nullptr) return;
        const ObjectReader reader(*value, m_document.pointerOf("answer"), "", keysOf(ObjectType::answer),
                                  m_reading);
        Answer answer;
        answer.text = reader.text("text", Need::required, "the expected answer in words").value_or("");
        answer.tolerance = reader.number("tolerance", kTolerance, Need::optional).value_or(answer.tolerance);
        answer.nodes =
            readExpected(reader, "nodes", ObjectType::answerNode, nodeAnswerKeys(), m_nodePositions);
        answer.elements = readExpected(reader, "elements", ObjectType::answerElement, elementAnswerKeys(),
                                       m_elementPositions);
        m_network.answer = std::move(answer);
    }

    /// Expected numbers of the nodes or elements; they are data for tests, the solve has no use for them.
    std::vector<ExpectedValue> readExpected(const ObjectReader& answer, const char* key, ObjectType type,
                                            const std::vector<AnswerKey>& quantities,
                                            const Positions& positions)
    {
        std::vector<ExpectedValue> expected;
        const json* value = answer.member(key, Need::optional, "");
        if (value == nullptr) return expected;
        if (!value->is_object()) {
            answer.report(Code::wrong_type, key, shownValue(*value) + " is no object",
                          "write { } with names as keys");
            return expected;
        }
        for (const auto& [name, numbers] : value->get_ref<const json::object_t&>()) {
            const std::string pointer = pointerTo(answer.pointerOf(key), name);
            if (positions.count(name) == 0 && m_hasLists)
                m_reading.report(Code::unknown_reference, pointer, "",
                                 "there is no " + inQuotes(name) + " in \"" + key + '"', "correct the name");
            const ObjectReader entry(numbers, pointer, name, keysOf(type), m_reading);
            for (const AnswerKey& quantity : quantities) {
                const NumberRule rule{quantity.quantity, Range::any, "the expected value"};
                if (const auto number = entry.number(quantity.key, rule, Need::optional))
                    expected.push_back({name, quantity.key, *number});
            }
        }
        return expected;
    }

    /// What a scenario finds in a network with errors is listed too, without the errors that are the network's.
    void readScenarios()
    {
        ScenarioBase base(m_network, m_nodePositions, m_elementPositions);
        base.document = &m_document.value();
        base.isSound = !m_reading.findings.hasErrors();
        readNamed("scenarios", [&](const json& value, const std::string& pointer, const std::string& name) {
            const ObjectReader reader(value, pointer, "scenario " + name, keysOf(ObjectType::scenario),
                                      m_reading);
            if (!m_hasLists || !reader.isObject()) return;
            if (auto patch = checkedScenario(base, reader)) m_network.scenarios[name] = patch->dump();
        });
    }

    /// Whether nodes and elements are there and joined, whatever else is wrong with them.
    bool isWhole() const { return m_hasLists && m_parts.isConnected(); }

    const ItemLines& m_lines;
    Reading m_reading;
    ObjectReader m_document;
    Network m_network;
    Positions m_nodePositions;
    Positions m_elementPositions;
    PartReader m_parts;
    bool m_hasLists = true;
};

/// Whether a document is a result file; then that is all there is to say about it.
bool isResultFile(const json& document, const std::string& file, Findings& findings)
{
    if (!document.is_object() || !document.contains("tavell_result") || document.contains("tavell"))
        return false;
    findings.add(Code::other_kind_of_file, Place{file, 0, 0, "", ""},
                 "the file is a result file, no network file",
                 "name the network file that was solved; a copy of the network is in the result file as "
                 "\"network\"");
    return true;
}

/// Whether the parts of a network keep their meaning under an error.
bool leavesMeaning(const Finding& finding)
{
    switch (finding.code) {
    case Code::duplicate_key:
    case Code::unknown_key:
    case Code::isolated_node:
    case Code::no_given_pressure:
    case Code::needs_one_element:
    case Code::needs_section:
    case Code::nodes_at_one_place:
    case Code::length_below_distance:
    case Code::length_missing:
        return true;
    default:
        return finding.severity != Severity::error || finding.place.pointer.rfind("/scenarios/", 0) == 0 ||
               finding.place.pointer.rfind("/answer", 0) == 0;
    }
}

/// The network when there are no errors; one whose parts keep their meaning goes to flawed otherwise.
std::optional<Network> orFlawed(Network network, const Findings& found, std::optional<Network>* flawed)
{
    if (!found.hasErrors()) return network;
    if (flawed != nullptr && std::all_of(found.list().begin(), found.list().end(), leavesMeaning))
        *flawed = std::move(network);
    return std::nullopt;
}

}  // namespace

std::optional<Network> readNetworkFile(const std::string& path, Findings& findings,
                                       std::optional<Network>* flawed)
{
    const auto text = readTextFile(path, Encoding::utf8, findings);
    if (!text) return std::nullopt;
    return readNetworkText(*text, path, findings, flawed);
}

std::optional<Network> readNetworkText(const std::string& text, const std::string& file, Findings& findings,
                                       std::optional<Network>* flawed)
{
    Findings found;
    const auto document = parseJson(text, file, found);
    if (!document) {
        findings.append(found);
        return std::nullopt;
    }
    if (isResultFile(document->root, file, findings)) return std::nullopt;
    Network network = NetworkReader(document->root, "", file, document->itemLines, found).read();
    appendWithLines(text, found, findings);
    return orFlawed(std::move(network), found, flawed);
}

std::optional<Network> readNetworkDocument(const json& document, const std::string& pointer,
                                           const std::string& file, Findings& findings,
                                           std::optional<Network>* flawed)
{
    Findings found;
    Network network = NetworkReader(document, pointer, file, {}, found).read();
    findings.append(found);
    return orFlawed(std::move(network), found, flawed);
}

}  // namespace kit
