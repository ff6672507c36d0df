#include "inp_demands.h"

#include <cmath>

#include "inp_nodes.h"

namespace kit
{

namespace
{

/// The multiplier in force: patterns step from their start on and begin again at their end.
double multiplierAt(const std::vector<double>& multipliers, double steps)
{
    if (multipliers.empty()) return 1.0;
    const double position = std::fmod(std::floor(steps), static_cast<double>(multipliers.size()));
    return multipliers[position > 0.0 ? static_cast<std::size_t>(position) : 0];
}

/// Multiplier of a demand: that of the pattern in a field, or the default one.
std::optional<double> multiplierOf(InpReader& reader, std::size_t position, const InpPatterns& patterns)
{
    if (position >= reader.count()) return patterns.defaultMultiplier();
    const auto multiplier = patterns.multiplier(reader.id(position));
    if (!multiplier)
        reader.add(Code::inp_unknown_pattern,
                   "the pattern " + inQuotes(reader.text(position)) + " does not exist");
    return multiplier;
}

void addDemand(InpReader& reader, std::size_t position, const InpPatterns& patterns, double factor,
               double& demand)
{
    const auto base = reader.numberOr(position, "the demand", 0.0);
    const auto multiplier = multiplierOf(reader, position + 1, patterns);
    if (base && multiplier) demand += *base * *multiplier * factor;
}

}  // namespace

InpPatterns::InpPatterns(const InpDocument& document, const InpFileOptions& options, double time,
                         Findings& findings)
{
    std::unordered_map<std::string, std::vector<double>> lists;
    for (const InpLine& line : document.lines(InpSection::patterns)) {
        InpReader reader(document, InpSection::patterns, line, findings);
        const std::string id = reader.id(0);
        std::vector<double>& list = lists[id];
        for (std::size_t i = 1; i < reader.count(); ++i) {
            if (const auto value = reader.number(i, "the multiplier of pattern " + inQuotes(id)))
                list.push_back(*value);
        }
    }
    const double steps = (time + options.patternStart) / options.patternStep;
    for (const auto& [id, list] : lists)
        m_multipliers[id] = multiplierAt(list, steps);
    m_default = multiplier(options.defaultPattern).value_or(1.0);
}

std::optional<double> InpPatterns::multiplier(const std::string& id) const
{
    const auto found = m_multipliers.find(id);
    return found == m_multipliers.end() ? std::nullopt : std::optional<double>(found->second);
}

std::vector<double> readInpDemands(const InpDocument& document, const InpFileOptions& options,
                                   const InpPatterns& patterns, const InpNodes& nodes, Findings& findings)
{
    // The multiplier may come after the demands that it multiplies.
    double factor = options.demandMultiplier;
    for (const InpLine& line : document.lines(InpSection::demands)) {
        InpReader reader(document, InpSection::demands, line, findings);
        if (!reader.isWord(0, "MULTIPLY")) continue;
        if (const auto value = reader.number(1, "the demand multiplier")) factor = *value;
    }
    factor *= options.units.flow;

    // Lines of [DEMANDS] replace the demand that a junction has in [JUNCTIONS].
    std::vector<double> demands(nodes.list.size(), 0.0);
    std::vector<bool> isReplaced(nodes.list.size(), false);
    for (const InpLine& line : document.lines(InpSection::demands)) {
        InpReader reader(document, InpSection::demands, line, findings,
                         "node " + std::string(document.field(line, 0)));
        if (reader.isWord(0, "MULTIPLY")) continue;
        if (!reader.hasFields(2, "the junction's ID and its demand")) continue;
        const auto node = nodes.find(reader.id(0), reader);
        if (!node) continue;
        if (nodes.list[*node].hasFixedHead()) {
            reader.add(Code::inp_demand_ignored,
                       "the demand belongs to a " + std::string(nodeWord(nodes.list[*node].kind)));
            continue;
        }
        isReplaced[*node] = true;
        addDemand(reader, 1, patterns, factor, demands[*node]);
    }
    for (const InpLine& line : document.lines(InpSection::junctions)) {
        const auto found = nodes.positions.find(std::string(document.field(line, 0)));
        if (found == nodes.positions.end() || isReplaced[found->second]) continue;
        InpReader reader(document, InpSection::junctions, line, findings, "node " + found->first);
        if (reader.count() > 2) addDemand(reader, 2, patterns, factor, demands[found->second]);
    }
    return demands;
}

}  // namespace kit
