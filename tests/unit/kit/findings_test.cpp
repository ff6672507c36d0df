#include "findings.h"

#include <set>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace
{

using kit::Code;
using kit::Finding;
using kit::Findings;
using kit::Place;
using kit::Severity;

Place placeAt(std::size_t line)
{
    Place place;
    place.file = "riser.tavell.json";
    place.line = line;
    place.pointer = "/elements/3/diameter";
    place.object = "element riser 2";
    return place;
}

TEST(Findings, a_line_names_file_line_place_object_message_remedy_and_code)
{
    Findings findings;
    findings.add(Code::bad_option, placeAt(7), "-0.02 is not above 0", "give the inner diameter");
    EXPECT_EQ(findings.text(),
              "riser.tavell.json:7: /elements/3/diameter (element riser 2): -0.02 is not above 0; "
              "give the inner diameter [bad-option]\n");
}

TEST(Findings, parts_that_do_not_apply_are_left_out_of_a_line)
{
    Findings findings;
    findings.add(Code::out_of_memory, {}, "memory ran out", "");
    EXPECT_EQ(findings.text(), "memory ran out [out-of-memory]\n");
}

TEST(Findings, a_line_stays_one_line_whatever_its_parts_hold)
{
    Findings findings;
    Place place;
    place.file = "a\nb";
    place.object = "node \x1b[2J";
    findings.add(Code::bad_option, place, "one\ntwo", "three\r");
    EXPECT_EQ(findings.text(), "a\\x0ab: node \\x1b[2J: one\\x0atwo; three\\x0d [bad-option]\n");
}

TEST(Findings, json_holds_every_part)
{
    Findings findings;
    Finding& finding = findings.add(Code::bad_option, placeAt(7), "too fast", "widen it");
    finding.objects = {"element riser 2"};
    finding.numbers = {{"velocity", 3.25, "m/s"}};
    const auto list = nlohmann::json::parse(findings.json());
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0], nlohmann::json::parse(R"({"code": "bad-option", "severity": "error",
        "file": "riser.tavell.json", "line": 7, "pointer": "/elements/3/diameter", "object": "element riser 2",
        "message": "too fast", "remedy": "widen it", "objects": ["element riser 2"],
        "numbers": [{"name": "velocity", "value": 3.25, "unit": "m/s"}]})"));
}

TEST(Findings, json_of_bytes_that_are_no_utf8_is_still_json)
{
    Findings findings;
    findings.add(Code::bad_option, {}, "bytes \xff");
    EXPECT_TRUE(nlohmann::json::accept(findings.json()));
}

TEST(Findings, beyond_a_limit_findings_of_one_code_are_counted_only)
{
    Findings findings;
    for (std::size_t i = 0; i < Findings::kMostOfOneCode + 5; ++i)
        findings.add(Code::bad_option, placeAt(i + 1), "again");
    findings.add(Code::out_of_memory, {}, "other");
    EXPECT_EQ(findings.list().size(), Findings::kMostOfOneCode + 1);
    EXPECT_EQ(findings.notKept(Code::bad_option), 5U);
    EXPECT_EQ(findings.notKept(Code::out_of_memory), 0U);
    EXPECT_NE(findings.text().find("5 more of the same kind are not shown [bad-option]"), std::string::npos);
}

TEST(Findings, errors_are_told_from_remarks)
{
    Findings findings;
    findings.add(Code::read_as_latin1, {}, "a remark");
    EXPECT_FALSE(findings.hasErrors());
    findings.add(Code::bad_option, {}, "an error");
    EXPECT_TRUE(findings.hasErrors());
    EXPECT_EQ(findings.countOf(Severity::remark), 1U);
    EXPECT_EQ(findings.countOf(Severity::error), 1U);
}

TEST(MessageTable, every_row_has_a_unique_code_a_title_a_meaning_and_a_remedy_without_full_stop)
{
    std::set<std::string> codes;
    for (std::size_t i = 0; i < static_cast<std::size_t>(Code::kCount); ++i) {
        const kit::MessageRow& row = kit::rowOf(static_cast<Code>(i));
        EXPECT_TRUE(codes.insert(std::string(row.code)).second) << row.code;
        EXPECT_EQ(row.code.find('_'), std::string::npos) << row.code;
        EXPECT_FALSE(row.title.empty()) << row.code;
        EXPECT_FALSE(row.meaning.empty()) << row.code;
        ASSERT_FALSE(row.remedy.empty()) << row.code;
        EXPECT_NE(row.remedy.back(), '.') << row.code;
        EXPECT_EQ(kit::findCode(row.code), static_cast<Code>(i));
    }
    EXPECT_FALSE(kit::findCode("no-such-code"));
}

}  // namespace
