#include "inp_options.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace kit
{

namespace
{

/// Options that steer EPANET's own iteration or things that are not carried over, by their first letters.
constexpr std::string_view kIgnoredOptions[] = {
    "HYDR", "QUAL", "DIFF",  "TRIA",  "ACCU", "TOLE", "EMIT", "UNBA", "MAP",  "VERI",  "SEGM",   "CHEC",
    "MAXC", "DAMP", "HEADE", "FLOWC", "MINI", "REQU", "PRES", "HTOL", "QTOL", "RQTOL", "STATUS", "BACKFLOW"};

/// Entries of [TIMES] that one steady state does not have.
constexpr std::string_view kIgnoredTimes[] = {"DURA", "HYDR", "QUAL", "RULE", "REPO", "STAR", "STAT"};

template <std::size_t Size> bool isOneOf(std::string_view text, const std::string_view (&words)[Size])
{
    return std::any_of(std::begin(words), std::end(words),
                       [text](std::string_view word) { return startsWithWord(text, word); });
}

void readUnits(InpReader& reader, InpFileOptions& options)
{
    const auto units = findInpUnits(reader.text(1));
    if (units)
        options.units = *units;
    else
        reader.add(Code::inp_unknown_word, "the flow unit " + inQuotes(reader.text(1)) + " is unknown",
                   "use one of " + inpFlowKeywords());
}

void readHeadLoss(InpReader& reader, InpFileOptions& options)
{
    if (startsWithWord(reader.text(1), "H-W"))
        options.headLoss = HeadLossLaw::hazenWilliams;
    else if (startsWithWord(reader.text(1), "D-W"))
        options.headLoss = HeadLossLaw::darcyWeisbach;
    else if (startsWithWord(reader.text(1), "C-M"))
        options.headLoss = HeadLossLaw::chezyManning;
    else
        reader.add(Code::inp_unknown_word,
                   "the head-loss formula " + inQuotes(reader.text(1)) + " is unknown",
                   "use one of H-W, D-W, C-M");
}

/// Relative to EPANET's water, or, up to 1e-3, a kinematic viscosity in ft2/s or m2/s.
double viscosityOf(double value, const InpUnits& units)
{
    constexpr double kLargestAbsolute = 1e-3;
    return value > kLargestAbsolute ? value * kInpWaterViscosity : value * units.length * units.length;
}

void readDemandOption(InpReader& reader, InpFileOptions& options)
{
    if (reader.count() > 2 && startsWithWord(reader.text(1), "MULT")) {
        if (const auto value = reader.number(2, "the demand multiplier", InpRange::any))
            options.demandMultiplier = *value;
    } else if (reader.count() > 2 && startsWithWord(reader.text(1), "MODEL")) {
        if (startsWithWord(reader.text(2), "PDA"))
            reader.add(Code::pressure_driven_demand,
                       "demands follow the pressure (PDA) in the file; they were taken in full");
    } else {
        reader.add(Code::inp_unknown_option, "the option " + inQuotes(reader.text(0)) + " is incomplete");
    }
}

/// Options that are left out, said in one finding at the first of them.
void reportIgnored(const InpDocument& document, Findings& findings)
{
    std::vector<std::string> names;
    const InpLine* first = nullptr;
    for (const InpLine& line : document.lines(InpSection::options)) {
        const std::string_view word = document.field(line, 0);
        if (!isOneOf(word, kIgnoredOptions)) continue;
        if (first == nullptr) first = &line;
        names.push_back(oneLine(line.text));
    }
    if (first == nullptr) return;
    InpReader reader(document, InpSection::options, *first, findings);
    Finding& finding =
        reader.add(Code::option_not_carried_over,
                   names.size() == 1 ? "one option was left out: " + names.front()
                                     : std::to_string(names.size()) + " options were left out");
    finding.objects = std::move(names);
}

void readOption(InpReader& reader, InpFileOptions& options)
{
    const std::string_view word = reader.text(0);
    if (startsWithWord(word, "UNITS") || startsWithWord(word, "HEADL") || startsWithWord(word, "VISC") ||
        startsWithWord(word, "PATT") || startsWithWord(word, "SPEC")) {
        if (!reader.hasFields(startsWithWord(word, "SPEC") ? 3 : 2, "the option's name and its value"))
            return;
    }
    if (startsWithWord(word, "UNITS")) return readUnits(reader, options);
    if (startsWithWord(word, "HEADL")) return readHeadLoss(reader, options);
    if (startsWithWord(word, "DEMA")) return readDemandOption(reader, options);
    if (startsWithWord(word, "PATT")) {
        options.defaultPattern = reader.id(1);
        return;
    }
    if (startsWithWord(word, "SPEC")) {
        if (const auto value = reader.number(2, "the specific gravity", InpRange::positive))
            options.specificGravity = *value;
        return;
    }
    if (startsWithWord(word, "VISC")) return;  // once the units are known
    if (isOneOf(word, kIgnoredOptions)) return;
    reader.add(Code::inp_unknown_option, "the option " + inQuotes(word) + " is unknown");
}

void readViscosity(InpReader& reader, InpFileOptions& options)
{
    if (!startsWithWord(reader.text(0), "VISC") || reader.count() < 2) return;
    if (const auto value = reader.number(1, "the viscosity", InpRange::positive))
        options.viscosity = viscosityOf(*value, options.units);
}

/// The time from a field on; nothing, and a finding, when it is none.
std::optional<double> readTime(InpReader& reader, std::size_t position, std::string_view what)
{
    if (!reader.hasFields(position + 1, "the entry's name and a time")) return std::nullopt;
    const std::string_view unit =
        reader.count() > position + 1 ? reader.text(position + 1) : std::string_view{};
    const auto time = inpTime(reader.text(position), unit);
    if (!time)
        reader.add(Code::inp_bad_number,
                   std::string(what) + " is " + inQuotes(reader.text(position)) + ", which is no time",
                   "write hours and minutes as 1:30, or a number of hours");
    return time;
}

void readTimeLine(InpReader& reader, InpFileOptions& options)
{
    const std::string_view word = reader.text(0);
    const bool isPattern = startsWithWord(word, "PATT") && reader.count() > 1;
    if (isPattern && startsWithWord(reader.text(1), "STAR")) {
        if (const auto time = readTime(reader, 2, "the pattern start")) options.patternStart = *time;
    } else if (isPattern &&
               (startsWithWord(reader.text(1), "TIME") || startsWithWord(reader.text(1), "STEP"))) {
        const auto time = readTime(reader, 2, "the pattern time step");
        if (time && *time > 0.0)
            options.patternStep = *time;
        else if (time)
            reader.add(Code::inp_out_of_range, "the pattern time step is 0", "give a time above 0");
    } else if (!isOneOf(word, kIgnoredTimes)) {
        reader.add(Code::inp_unknown_option, "the entry " + inQuotes(word) + " is unknown");
    }
}

}  // namespace

InpFileOptions readInpOptions(const InpDocument& document, Findings& findings)
{
    InpFileOptions options;
    options.units = *findInpUnits("GPM");
    for (const InpLine& line : document.lines(InpSection::options)) {
        InpReader reader(document, InpSection::options, line, findings);
        readOption(reader, options);
    }
    for (const InpLine& line : document.lines(InpSection::options)) {
        InpReader reader(document, InpSection::options, line, findings);
        readViscosity(reader, options);
    }
    reportIgnored(document, findings);
    for (const InpLine& line : document.lines(InpSection::times)) {
        InpReader reader(document, InpSection::times, line, findings);
        readTimeLine(reader, options);
    }
    return options;
}

std::optional<double> inpTime(std::string_view text, std::string_view unit)
{
    constexpr double kMinute = 60.0, kHour = 3600.0, kDay = 86400.0;
    if (text.find(':') == std::string_view::npos) {
        const auto value = inpNumber(text);
        if (!value || *value < 0.0) return std::nullopt;
        if (startsWithWord(unit, "SEC")) return *value;
        if (startsWithWord(unit, "MIN")) return *value * kMinute;
        if (startsWithWord(unit, "DAY")) return *value * kDay;
        return *value * kHour;
    }
    double seconds = 0.0;
    double part = kHour;
    for (int count = 0; count < 3; ++count) {
        const std::size_t colon = text.find(':');
        const auto value = inpNumber(text.substr(0, colon));
        if (!value || *value < 0.0) return std::nullopt;
        seconds += *value * part;
        if (colon == std::string_view::npos) return seconds;
        text.remove_prefix(colon + 1);
        part /= kMinute;
    }
    return std::nullopt;
}

}  // namespace kit
