#include "inp_links.h"

#include <utility>

namespace kit
{

namespace
{

struct ValveRow {
    std::string_view word;
    InpValve valve;
};

constexpr ValveRow kValves[] = {{"PRV", InpValve::prv}, {"PSV", InpValve::psv}, {"PBV", InpValve::pbv},
                                {"FCV", InpValve::fcv}, {"TCV", InpValve::tcv}, {"GPV", InpValve::gpv},
                                {"PCV", InpValve::pcv}};

std::string objectOf(const InpDocument& document, const InpLine& line)
{
    return "element " + std::string(document.field(line, 0));
}

/// What all links have: ID and two nodes. Nothing, with findings, when a node is unknown.
std::optional<InpLink> readEnds(InpReader& reader, InpLinkKind kind, const InpNodes& nodes)
{
    InpLink link;
    link.id = reader.id(0);
    link.kind = kind;
    link.line = reader.lineNumber();
    const auto from = nodes.find(reader.id(1), reader);
    const auto to = nodes.find(reader.id(2), reader);
    if (!from || !to) return std::nullopt;
    if (*from == *to) {
        reader.add(Code::inp_same_nodes, "both ends are the node " + inQuotes(reader.text(1)));
        return std::nullopt;
    }
    link.from = *from;
    link.to = *to;
    return link;
}

const char* linkWord(InpLinkKind kind)
{
    if (kind == InpLinkKind::pipe) return "pipe";
    return kind == InpLinkKind::pump ? "pump" : "valve";
}

void addLink(InpLink link, InpReader& reader, InpLinks& links)
{
    if (link.id.empty()) {
        reader.add(Code::inp_missing_field, "the ID is empty");
        return;
    }
    const auto [found, isNew] = links.positions.emplace(link.id, links.list.size());
    if (!isNew) {
        const InpLink& first = links.list[found->second];
        reader.add(Code::inp_duplicate_id, "the ID " + inQuotes(link.id) + " is that of the " +
                                               linkWord(first.kind) + " in line " +
                                               std::to_string(first.line));
        return;
    }
    links.list.push_back(std::move(link));
}

/// Status of a pipe: OPEN, CLOSED or CV, by their first letters. False when the field is none of them.
bool readPipeStatus(std::string_view text, InpLink& link)
{
    if (startsWithWord(text, "CV"))
        link.hasCheckValve = true;
    else if (startsWithWord(text, "CLOS"))
        link.status = InpStatus::closed;
    else if (!startsWithWord(text, "OPEN"))
        return false;
    return true;
}

/// The seventh field is the minor loss or already the status.
void readPipeTail(InpReader& reader, InpLink& link)
{
    if (reader.count() < 7) return;
    std::size_t status = 7;
    if (readPipeStatus(reader.text(6), link)) return;
    if (const auto loss = reader.number(6, "the minor loss coefficient", InpRange::notNegative))
        link.minorLoss = *loss;
    if (reader.count() > status && !readPipeStatus(reader.text(status), link))
        reader.add(Code::inp_unknown_word, "the status " + inQuotes(reader.text(status)) + " is unknown",
                   "use one of OPEN, CLOSED, CV");
}

void readPipe(InpReader& reader, const InpFileOptions& options, const InpNodes& nodes, InpLinks& links)
{
    if (!reader.hasFields(6, "ID, two nodes, length, diameter and roughness")) return;
    auto link = readEnds(reader, InpLinkKind::pipe, nodes);
    const auto length = reader.number(3, "the length", InpRange::positive);
    const auto diameter = reader.number(4, "the diameter", InpRange::positive);
    const bool isSmoothAllowed = options.headLoss == HeadLossLaw::darcyWeisbach;
    const auto roughness = reader.number(5, "the roughness coefficient",
                                         isSmoothAllowed ? InpRange::notNegative : InpRange::positive);
    if (!link || !length || !diameter || !roughness) return;
    link->length = *length * options.units.length;
    link->diameter = *diameter * options.units.diameter;
    link->roughness = isSmoothAllowed ? *roughness * options.units.roughness : *roughness;
    if (isSmoothAllowed && link->roughness >= link->diameter) {
        reader.add(Code::inp_out_of_range,
                   "the roughness " + std::string(reader.text(5)) + " is not below the diameter",
                   "give the roughness in " + std::string(options.units.isMetric ? "mm" : "1e-3 ft"));
        return;
    }
    readPipeTail(reader, *link);
    addLink(std::move(*link), reader, links);
}

/// A pair of a word and a value behind a pump's nodes. False when the word is unknown.
bool readPumpPair(InpReader& reader, std::size_t position, const InpFileOptions& options,
                  const InpPatterns& patterns, InpLink& link, std::optional<double>& patternSpeed)
{
    const std::string_view word = reader.text(position);
    if (startsWithWord(word, "HEAD")) {
        link.curve = reader.id(position + 1);
    } else if (startsWithWord(word, "POW")) {
        if (const auto power = reader.number(position + 1, "the power", InpRange::positive))
            link.power = *power * options.units.power;
    } else if (startsWithWord(word, "SPEE")) {
        if (const auto speed = reader.number(position + 1, "the speed", InpRange::notNegative))
            link.speed = *speed;
    } else if (startsWithWord(word, "PATT")) {
        patternSpeed = patterns.multiplier(reader.id(position + 1));
        if (!patternSpeed)
            reader.add(Code::inp_unknown_pattern,
                       "the pattern " + inQuotes(reader.text(position + 1)) + " does not exist");
    } else {
        reader.add(Code::inp_unknown_word, "the word " + inQuotes(word) + " is unknown",
                   "use one of HEAD, POWER, SPEED, PATTERN, each with a value behind it");
        return false;
    }
    return true;
}

/// A pump: ID, two nodes, pairs; or a single number, the power, as in files of EPANET 1.
void readPump(InpReader& reader, const InpFileOptions& options, const InpPatterns& patterns,
              const InpNodes& nodes, InpLinks& links, std::unordered_map<std::size_t, double>& patternSpeeds)
{
    if (!reader.hasFields(4, "ID, two nodes, and HEAD with a curve or POWER with a number")) return;
    auto link = readEnds(reader, InpLinkKind::pump, nodes);
    if (!link) return;
    std::optional<double> patternSpeed;
    if (reader.count() == 4 && inpNumber(reader.text(3))) {
        if (const auto power = reader.number(3, "the power", InpRange::positive))
            link->power = *power * options.units.power;
    } else {
        for (std::size_t i = 3; i < reader.count(); i += 2) {
            if (!reader.hasFields(i + 2, "a value behind every word")) return;
            if (!readPumpPair(reader, i, options, patterns, *link, patternSpeed)) return;
        }
        if (link->curve.empty() && !link->power) {
            reader.add(Code::inp_missing_field, "the pump has neither a curve nor a power",
                       "give HEAD with a curve or POWER with a number");
            return;
        }
    }
    if (patternSpeed) patternSpeeds[links.list.size()] = *patternSpeed;
    addLink(std::move(*link), reader, links);
}

void readValve(InpReader& reader, const InpFileOptions& options, const InpNodes& nodes, InpLinks& links)
{
    if (!reader.hasFields(6, "ID, two nodes, diameter, type and setting")) return;
    auto link = readEnds(reader, InpLinkKind::valve, nodes);
    const auto diameter = reader.number(3, "the diameter", InpRange::positive);
    const ValveRow* row = nullptr;
    for (const ValveRow& candidate : kValves) {
        if (reader.isWord(4, candidate.word)) row = &candidate;
    }
    if (row == nullptr)
        reader.add(Code::inp_unknown_word, "the type of valve " + inQuotes(reader.text(4)) + " is unknown",
                   "use one of PRV, PSV, PBV, FCV, TCV, GPV, PCV");
    const auto loss = reader.numberOr(6, "the minor loss coefficient", 0.0, InpRange::notNegative);
    if (!link || !diameter || row == nullptr || !loss) return;
    link->valve = row->valve;
    link->diameter = *diameter * options.units.diameter;
    link->minorLoss = *loss;
    if (link->valve == InpValve::gpv) {
        link->curve = reader.id(5);
    } else {
        const InpRange range = link->valve == InpValve::fcv || link->valve == InpValve::tcv
                                   ? InpRange::notNegative
                                   : InpRange::any;
        if (const auto setting = reader.number(5, "the setting", range)) link->setting = *setting;
    }
    addLink(std::move(*link), reader, links);
}

void ignoreStatus(InpReader& reader, const char* why)
{
    reader.add(Code::inp_status_ignored,
               "the status " + inQuotes(reader.text(reader.count() - 1)) + ' ' + why);
}

void setNumber(double value, InpReader& reader, InpLink& link)
{
    if (link.kind == InpLinkKind::pump) {
        link.speed = value;
        link.status = value > 0.0 ? InpStatus::active : InpStatus::closed;
    } else if (link.kind == InpLinkKind::valve && link.valve != InpValve::gpv) {
        link.setting = value;
        link.status = InpStatus::active;
    } else {
        ignoreStatus(reader, "is a number, which this link does not have");
    }
}

/// Sets what a line of [STATUS] says of one link: the last field is a status or a setting.
void setStatus(InpReader& reader, InpLink& link)
{
    const std::size_t last = reader.count() - 1;
    if (link.hasCheckValve) return ignoreStatus(reader, "belongs to a pipe with a check valve");
    if (startsWithWord(reader.text(last), "OPEN")) {
        link.status = InpStatus::open;
        if (link.kind == InpLinkKind::pump) link.speed = 1.0;
    } else if (startsWithWord(reader.text(last), "CLOS")) {
        link.status = InpStatus::closed;
    } else if (startsWithWord(reader.text(last), "ACTI")) {
        link.status = InpStatus::active;
    } else if (const auto value = reader.number(last, "the status or setting", InpRange::notNegative)) {
        setNumber(*value, reader, link);
    }
}

void readStatusLine(const InpDocument& document, const InpLine& line, InpLinks& links, Findings& findings)
{
    InpReader reader(document, InpSection::status, line, findings, objectOf(document, line));
    if (!reader.hasFields(2, "the link's ID and its status or setting")) return;
    if (reader.count() > 2) {
        reader.add(Code::inp_unknown_word, "the line has a field more than a link's ID and its status",
                   "write one line for every link");
        return;
    }
    const auto found = links.positions.find(reader.id(0));
    if (found == links.positions.end()) {
        if (links.refused.count(reader.id(0)) > 0) return;
        reader.add(Code::inp_unknown_link, "the link " + inQuotes(reader.text(0)) + " does not exist");
        return;
    }
    setStatus(reader, links.list[found->second]);
}

}  // namespace

std::string linkObject(const InpLink& link)
{
    return "element " + link.id;
}

InpSection linkSection(const InpLink& link)
{
    if (link.kind == InpLinkKind::pipe) return InpSection::pipes;
    return link.kind == InpLinkKind::pump ? InpSection::pumps : InpSection::valves;
}

std::string_view valveWord(InpValve valve)
{
    for (const ValveRow& row : kValves) {
        if (row.valve == valve) return row.word;
    }
    return "";
}

InpCurves readInpCurves(const InpDocument& document, Findings& findings)
{
    InpCurves curves;
    for (const InpLine& line : document.lines(InpSection::curves)) {
        InpReader reader(document, InpSection::curves, line, findings,
                         "curve " + std::string(document.field(line, 0)));
        if (!reader.hasFields(3, "the curve's ID, x and y")) continue;
        const auto x = reader.number(1, "x");
        const auto y = reader.number(2, "y");
        if (x && y) curves[reader.id(0)].push_back({*x, *y});
    }
    return curves;
}

InpLinks readInpLinks(const InpDocument& document, const InpFileOptions& options, const InpPatterns& patterns,
                      const InpNodes& nodes, Findings& findings)
{
    InpLinks links;
    std::unordered_map<std::size_t, double> patternSpeeds;  // by position of the pump
    const auto readSection = [&](InpSection section, const auto& readLine) {
        for (const InpLine& line : document.lines(section)) {
            InpReader reader(document, section, line, findings, objectOf(document, line));
            const std::size_t before = links.list.size();
            readLine(reader);
            if (links.list.size() == before) links.refused.insert(reader.id(0));
        }
    };
    readSection(InpSection::pipes, [&](InpReader& reader) { readPipe(reader, options, nodes, links); });
    readSection(InpSection::pumps,
                [&](InpReader& reader) { readPump(reader, options, patterns, nodes, links, patternSpeeds); });
    readSection(InpSection::valves, [&](InpReader& reader) { readValve(reader, options, nodes, links); });
    for (const InpLine& line : document.lines(InpSection::status))
        readStatusLine(document, line, links, findings);

    // A pattern of speeds wins over the initial status.
    for (const auto& [position, speed] : patternSpeeds) {
        if (position >= links.list.size()) continue;
        links.list[position].speed = speed;
        links.list[position].status = speed > 0.0 ? InpStatus::active : InpStatus::closed;
    }
    for (InpLink& link : links.list) {
        if (link.kind == InpLinkKind::pump && !(link.speed > 0.0)) link.status = InpStatus::closed;
    }
    return links;
}

}  // namespace kit
