#include "scenario.h"

#include <unordered_set>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "boundary_checks.h"
#include "json_document.h"
#include "network_keys.h"
#include "network_writer.h"

namespace kit
{

namespace
{

using nlohmann::json;

const NumberRule kGravity{Quantity::none, Range::any, "a component of the direction of gravity"};

/// The patch that makes an object of another one (RFC 7396): applied to from it gives to.
json patchBetween(const json& from, const json& to)
{
    if (!from.is_object() || !to.is_object()) return to;
    json patch = json::object();
    for (const auto& [key, value] : from.get_ref<const json::object_t&>()) {
        if (!to.contains(key)) patch[key] = nullptr;
    }
    for (const auto& [key, value] : to.get_ref<const json::object_t&>()) {
        const auto old = from.find(key);
        if (old == from.end())
            patch[key] = value;
        else if (*old != value)
            patch[key] = patchBetween(*old, value);
    }
    return patch;
}

/// A text as fluid counts as an object with that name, so that a patch of its temperature keeps the name.
json asFluidObject(const json& fluid)
{
    return fluid.is_string() ? json{{"name", fluid}} : fluid;
}

/// Applies one scenario to a network.
class ScenarioReader
{
public:
    ScenarioReader(const ScenarioBase& base, const ObjectReader& scenario)
        : m_base(base), m_scenario(scenario), m_reading(scenario.reading()), m_network(base.network),
          m_parts(m_network, base.nodes, m_reading)
    {
        m_network.scenarios.clear();
        m_network.answer.reset();
    }

    /// The patched network; its errors are findings.
    const Network& read()
    {
        readCase();
        readNamed("nodes", m_base.nodes,
                  [this](const json& patch, std::size_t position, const std::string& at) {
                      readNode(patch, position, at);
                  });
        m_parts.reportMissingPlaces(m_scenario.pointerOf("nodes"), m_network.nodes.size());
        readNamed("elements", m_base.elements,
                  [this](const json& patch, std::size_t position, const std::string& at) {
                      readElement(patch, position, at);
                  });
        if (m_base.isSound && m_parts.isConnected() && !m_reading.findings.hasErrors())
            checkTogether(m_network, PointerOf::all, m_scenario.pointer(), m_reading.findings);
        return m_network;
    }

    /// The difference to the network in SI units.
    json patch() const
    {
        const Network& base = m_base.network;
        json patch = json::object();
        const auto add = [&patch](const char* key, const json& from, const json& to) {
            if (from != to) patch[key] = patchBetween(from, to);
        };
        add("fluid", fluidObject(base.fluid), fluidObject(m_network.fluid));
        add("settings", settingsObject(base.settings), settingsObject(m_network.settings));
        add("gravity", gravityArray(base), gravityArray(m_network));
        for (const std::size_t i : m_changedNodes) {
            const json change = patchBetween(nodeObject(base.nodes[i]), nodeObject(m_network.nodes[i]));
            if (!change.empty()) patch["nodes"][base.nodes[i].name] = change;
        }
        for (const std::size_t i : m_changedElements) {
            const json change = patchBetween(elementObject(base, base.elements[i]),
                                             elementObject(m_network, m_network.elements[i]));
            if (!change.empty()) patch["elements"][base.elements[i].name] = change;
        }
        return patch;
    }

    Network take() { return std::move(m_network); }

private:
    void readCase()
    {
        if (const json* patch = m_scenario.member("fluid", Need::optional, "")) {
            json fluid = asFluidObject(baseValue("fluid", fluidObject(m_base.network.fluid)));
            fluid.merge_patch(*patch);
            if (fluid.is_null())
                m_network.fluid = {};
            else
                m_network.fluid = m_parts.readFluid(fluid, m_scenario.pointerOf("fluid"));
        }
        if (const json* patch = m_scenario.member("settings", Need::optional, "")) {
            json settings = baseValue("settings", settingsObject(m_base.network.settings));
            settings.merge_patch(*patch);
            if (settings.is_null())
                m_network.settings = {};
            else
                m_network.settings = m_parts.readSettings(settings, m_scenario.pointerOf("settings"));
        }
        if (const json* gravity = m_scenario.member("gravity", Need::optional, "")) {
            const auto vector =
                m_parts.readVector(*gravity, kGravity, m_scenario.pointerOf("gravity"), m_scenario.object());
            if (vector) m_network.gravity = *vector;
        }
    }

    /// The value of a key in the file; the given one when the patches are in SI units.
    json baseValue(const char* key, const json& inSi) const
    {
        if (m_base.document == nullptr) return inSi;
        const auto found = m_base.document->find(key);
        return found == m_base.document->end() ? json::object() : *found;
    }

    /// The patches of nodes or elements by name.
    template <class Read> void readNamed(const char* key, const Positions& positions, Read read)
    {
        const json* patches = m_scenario.member(key, Need::optional, "");
        if (patches == nullptr) return;
        if (!patches->is_object()) {
            m_scenario.report(Code::wrong_type, key, shownValue(*patches) + " is no object",
                              "write { } with names as keys");
            return;
        }
        for (const auto& [name, patch] : patches->get_ref<const json::object_t&>()) {
            const std::string pointer = pointerTo(m_scenario.pointerOf(key), name);
            const auto found = positions.find(name);
            if (found == positions.end())
                m_reading.report(Code::unknown_reference, pointer, m_scenario.object(),
                                 "there is no " + inQuotes(name) + " in \"" + key + '"', "correct the name");
            else if (!patch.is_object())
                m_reading.report(Code::scenario_not_allowed, pointer, m_scenario.object(),
                                 "the patch of " + inQuotes(name) + " is " + shownValue(patch) +
                                     " instead of an object");
            else if (patch.contains("name"))
                m_reading.report(Code::scenario_not_allowed, pointerTo(pointer, "name"), m_scenario.object(),
                                 "the name of " + inQuotes(name) + " cannot change");
            else
                read(patch, found->second, pointer);
        }
    }

    void readNode(const json& patch, std::size_t position, const std::string& pointer)
    {
        Node& node = m_network.nodes[position];
        json object =
            m_base.document == nullptr ? json(nodeObject(node)) : (*m_base.document)["nodes"][position];
        object.merge_patch(patch);
        const std::size_t line = node.line;
        node = m_parts.readNode(object, pointer);
        node.line = line;
        m_changedNodes.push_back(position);
    }

    void readElement(const json& patch, std::size_t position, const std::string& pointer)
    {
        Element& element = m_network.elements[position];
        json object = m_base.document == nullptr ? json(elementObject(m_network, element))
                                                 : (*m_base.document)["elements"][position];
        object.merge_patch(patch);
        const std::size_t line = element.line;
        element = m_parts.readElement(object, pointer);
        element.line = line;
        m_changedElements.push_back(position);
    }

    const ScenarioBase& m_base;
    const ObjectReader& m_scenario;
    const Reading& m_reading;
    Network m_network;
    PartReader m_parts;
    std::vector<std::size_t> m_changedNodes;
    std::vector<std::size_t> m_changedElements;
};

std::vector<std::string> scenarioNames(const Network& network)
{
    std::vector<std::string> names;
    for (const auto& scenario : network.scenarios)
        names.push_back(scenario.first);
    return names;
}

/// The scenario with a patch in the place of each of its own that changes nothing.
json withoutChanges(const ScenarioBase& base, const json& scenario)
{
    json same = json::object();
    for (const char* key : {"fluid", "settings"}) {
        if (scenario.contains(key)) same[key] = json::object();
    }
    if (scenario.contains("gravity") && base.document->contains("gravity"))
        same["gravity"] = (*base.document)["gravity"];
    for (const auto& [key, positions] :
         {std::pair<const char*, const Positions&>{"nodes", base.nodes},
          std::pair<const char*, const Positions&>{"elements", base.elements}}) {
        const auto patches = scenario.find(key);
        if (patches == scenario.end() || !patches->is_object()) continue;
        for (const auto& [name, patch] : patches->get_ref<const json::object_t&>()) {
            if (patch.is_object() && positions.count(name) > 0) same[key][name] = json::object();
        }
    }
    return same;
}

/// What reading a scenario of a network with errors finds beyond those errors.
Findings findingsOfItsOwn(const ScenarioBase& base, const ObjectReader& scenario, const Findings& found)
{
    const auto keyOf = [](const Finding& finding) {
        return std::to_string(static_cast<int>(finding.code)) + ' ' + finding.place.pointer + ' ' +
               finding.message;
    };
    Findings ofNetwork;
    const Reading reading{scenario.reading().file, scenario.reading().units, ofNetwork};
    const json same = withoutChanges(base, scenario.value());
    const ObjectReader unchanged(same, scenario.pointer(), scenario.object(), keysOf(ObjectType::scenario),
                                 reading);
    ScenarioReader(base, unchanged).read();
    std::unordered_set<std::string> known;
    for (const Finding& finding : ofNetwork.list())
        known.insert(keyOf(finding));
    Findings own;
    for (const Finding& finding : found.list()) {
        if (known.count(keyOf(finding)) == 0) own.add(finding);
    }
    return own;
}

}  // namespace

std::optional<json> checkedScenario(const ScenarioBase& base, const ObjectReader& scenario)
{
    Findings found;
    const Reading reading{scenario.reading().file, scenario.reading().units, found};
    const ObjectReader own(scenario.value(), scenario.pointer(), scenario.object(),
                           keysOf(ObjectType::scenario), reading);
    ScenarioReader reader(base, own);
    reader.read();
    if (!base.isSound) {
        scenario.reading().findings.append(findingsOfItsOwn(base, scenario, found));
        return std::nullopt;
    }
    scenario.reading().findings.append(found);
    if (found.hasErrors()) return std::nullopt;
    return reader.patch();
}

std::optional<Network> withScenario(const Network& network, const std::string& name, Findings& findings)
{
    const auto found = network.scenarios.find(name);
    if (found == network.scenarios.end()) {
        const auto names = scenarioNames(network);
        findings.add(Code::unknown_scenario, Place{network.file, 0, 0, "/scenarios", ""},
                     "there is no scenario " + inQuotes(name),
                     names.empty() ? "the network has no scenarios" : suggestion(name, names));
        return std::nullopt;
    }
    const Positions nodes = positionsOf(network.nodes);
    const Positions elements = positionsOf(network.elements);
    const ScenarioBase base(network, nodes, elements);
    Findings own;
    const Reading reading{network.file, {}, own};
    const json patch = json::parse(found->second);
    const ObjectReader scenario(patch, pointerTo("/scenarios", name), "scenario " + name,
                                keysOf(ObjectType::scenario), reading);
    ScenarioReader reader(base, scenario);
    reader.read();
    findings.append(own);
    if (own.hasErrors()) return std::nullopt;
    Network patched = reader.take();
    patched.title = network.title.empty() ? name : network.title + ": " + name;
    return patched;
}

}  // namespace kit
