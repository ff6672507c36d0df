#include "message_pages.h"

#include <array>
#include <cctype>
#include <string_view>

#include "findings.h"
#include "message_codes.h"

namespace kit
{

namespace
{

struct Area {
    const char* title;
    std::vector<Code> codes;
};

#define TAVELL_MESSAGE(name, severity, title, meaning, remedy) Code::name,

std::vector<Area> makeAreas()
{
    return {{"Files and the system",
             {
#include "messages/system.inc"
             }},
            {"The syntax of files",
             {
#include "messages/file.inc"
             }},
            {"The network",
             {
#include "messages/network.inc"
             }},
            {"Import",
             {
#include "messages/import.inc"
             }},
            {"The solve and its result",
             {
#include "messages/solve.inc"
             }},
            {"The doctor",
             {
#include "messages/doctor.inc"
             }},
            {"Pictures, reports and exports",
             {
#include "messages/report.inc"
             }}};
}

#undef TAVELL_MESSAGE

/// A code that passes a feedback of the library on, and the heading of that feedback in docs/messages.md.
struct FeedbackLink {
    std::string_view code;
    const char* heading;
};

constexpr std::array<FeedbackLink, 15> kFeedbackLinks{{
    {"mass-not-balanced", "0 TAVELL_FEEDBACK_MASS_ERROR"},
    {"node-missing", "1 TAVELL_FEEDBACK_NODE_MISSING"},
    {"temperatures-not-settled", "3 TAVELL_FEEDBACK_TEMPERATURE_ERROR"},
    {"minor-losses-not-settled", "4 TAVELL_FEEDBACK_MINOR_LOSS_ERROR"},
    {"flow-update-repeated", "5 TAVELL_FEEDBACK_FLOW_UPDATE_ERROR"},
    {"laws-not-met", "6 TAVELL_FEEDBACK_PRESSURE_ERROR"},
    {"iteration-limit", "7 TAVELL_FEEDBACK_ITERATION_LIMIT"},
    {"pressures-without-solution", "12 TAVELL_FEEDBACK_PRESSURE_SOLUTION"},
    {"no-unknown-pressure", "13 TAVELL_FEEDBACK_NO_INTERNAL_NODES"},
    {"curve-not-usable", "14 TAVELL_FEEDBACK_CURVE_ERROR"},
    {"unbalanced-part", "16 TAVELL_FEEDBACK_UNBALANCED_PART"},
    {"part-without-pressure", "17 TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE"},
    {"part-closed-by", "18 TAVELL_FEEDBACK_PART_CLOSED_BY"},
    {"part-fed-by", "19 TAVELL_FEEDBACK_PART_FED_BY"},
    {"solve-cancelled", "21 TAVELL_FEEDBACK_CANCELLED"},
}};

/// What a finding of a code looks like; codes without an example of their own show their title.
struct Example {
    Code code;
    const char* object;
    const char* message;
};

constexpr std::array<Example, 14> kExamples{{
    {Code::disconnected_part, "node tap 7",
     "a part of 2 nodes and 1 element (node tap 7, node tap 8, element branch 4) is not connected to the "
     "other 12 "
     "nodes; node tap 8 has an outlet of 0.2 kg/s; closed between them is element valve 3"},
    {Code::part_flows_do_not_balance, "node tee",
     "a part of 3 nodes (node tee, node tap 1, node tap 2) has no given pressure, and the given flows around "
     "it add "
     "up to 0.3 kg/s into it"},
    {Code::valve_against_only_flow, "element check valve 2",
     "the only way for 0.5 kg/s leads through it from node tee to node tap 3, which it blocks"},
    {Code::diameter_unlikely, "element branch 4", "its diameter is 25 m; perhaps 25 mm are meant"},
    {Code::roughness_unlikely, "element branch 4",
     "its roughness of 50 mm is 200 % of its diameter of 25 mm"},
    {Code::pressure_unlikely, "node main",
     "its pressure of 3 Pa stands among pressures of up to 2 bar; perhaps 3 bar is meant"},
    {Code::flow_unlikely, "node tap 3",
     "its outlet of 120 kg/s would run at 244.5 m/s through the elements that are joined here"},
    {Code::pump_curve_rises, "element pump A",
     "the rise of its curve grows from 2 bar at 0.01 m3/s to 2.5 bar at 0.02 m3/s"},
    {Code::pump_beyond_curve, "element pump A", "it carries 0.052 m3/s, and its curve ends at 0.04 m3/s"},
    {Code::valve_against_flow, "element check valve 2",
     "it is shut: the pressure behind it is 0.4 bar above that before it, and nothing leads around it"},
    {Code::dead_end, "element stub 1", "3 elements carry nothing, because they lead to closed ends"},
    {Code::velocity_above_limit, "element branch 4",
     "its velocity of 4.2 m/s is above 3 m/s; so are those of 2 other elements"},
    {Code::near_vapour_pressure, "node pump inlet",
     "the pressure is -0.9931 bar against the atmosphere; water boils below 2339 Pa absolute"},
    {Code::smallest_failing_part, "element pump A",
     "2 elements fail on their own: the pressure equations could not be solved"},
}};

std::string fileNameOf(Code code)
{
    return std::string(rowOf(code).code) + ".md";
}

/// The anchor that readers of Markdown give a heading: lower case, hyphens for blanks.
std::string anchorOf(std::string_view heading)
{
    std::string anchor;
    for (const char c : heading)
        anchor += c == ' ' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return anchor;
}

/// A remedy as a sentence.
std::string sentence(std::string_view text)
{
    std::string made(text);
    if (made.empty()) return made;
    made.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(made.front())));
    return made.back() == '.' ? made : made + '.';
}

std::string exampleLine(Code code)
{
    Finding finding;
    finding.code = code;
    finding.remedy = rowOf(code).remedy;
    finding.place.file = "riser.tavell.json";
    finding.message = rowOf(code).title;
    finding.message.front() =
        static_cast<char>(std::tolower(static_cast<unsigned char>(finding.message.front())));
    for (const Example& example : kExamples) {
        if (example.code != code) continue;
        finding.place.line = 24;
        finding.place.object = example.object;
        finding.message = example.message;
    }
    return lineOf(finding);
}

/// A sentence that leads to the library's own page; "" for codes of other origin.
std::string feedbackText(std::string_view code)
{
    for (const FeedbackLink& link : kFeedbackLinks) {
        if (link.code == code)
            return "The library records this as feedback [" + std::string(link.heading) +
                   "](../messages.md#" + anchorOf(link.heading) + ").\n\n";
    }
    return "";
}

std::string pageOf(const Area& area, Code code)
{
    const MessageRow& row = rowOf(code);
    std::string page = "# " + std::string(row.title) + "\n\n";
    page += "Code `" + std::string(row.code) + "`, " + std::string(severityName(row.severity)) +
            ". Area: " + area.title + ".\n\n";
    page += "## What it means\n\n" + std::string(row.meaning) + "\n\n" + feedbackText(row.code);
    page += "## What to do\n\n" + sentence(row.remedy) + "\n\n";
    page += "## Example\n\n    " + exampleLine(code) + "\n\n";
    return page + "[All messages](README.md)\n";
}

std::string indexPage(const std::vector<Area>& areas)
{
    std::string page = "# Messages\n\n"
                       "Every finding of the kit and of the command `tavell` has a code that does not "
                       "change. Its line on the "
                       "terminal reads\n\n"
                       "    FILE:LINE: POINTER (OBJECT): what is so; what to do about it [code]\n\n"
                       "and its JSON form holds `code`, `severity`, `file`, `line`, `pointer`, `object`, "
                       "`objects`, `message`, "
                       "`remedy` and `numbers`. An error keeps the work from being done or its result from "
                       "being right, a warning "
                       "is most likely a mistake, a remark is good to know. These pages are generated from "
                       "the table of messages "
                       "in `kit/src/messages/`.\n";
    for (const Area& area : areas) {
        if (area.codes.empty()) continue;
        page += "\n## " + std::string(area.title) + "\n\n| code | severity | meaning |\n|---|---|---|\n";
        for (const Code code : area.codes) {
            const MessageRow& row = rowOf(code);
            page += "| [" + std::string(row.code) + "](" + fileNameOf(code) + ") | " +
                    std::string(severityName(row.severity)) + " | " + std::string(row.title) + " |\n";
        }
    }
    return page;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> messagePages()
{
    const std::vector<Area> areas = makeAreas();
    std::vector<std::pair<std::string, std::string>> pages{{"README.md", indexPage(areas)}};
    for (const Area& area : areas) {
        for (const Code code : area.codes)
            pages.emplace_back(fileNameOf(code), pageOf(area, code));
    }
    return pages;
}

}  // namespace kit
