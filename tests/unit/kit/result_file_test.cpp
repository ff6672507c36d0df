#include <string>

#include <gtest/gtest.h>

#include "network_for_tests.h"
#include "result_file.h"

namespace kit
{

namespace
{

TestNetwork twoPipes()
{
    TestNetwork made;
    made.network().title = "Two pipes, \"quoted\"";
    made.node("a", {0.0, 0.0, 0.0}, pressureAt(2e5));
    made.node("b", {50.0, 0.0, 4.0}, outflow(1.25));
    made.node("shut", {50.0, 9.0, 4.0});
    made.node("c", {50.0, 30.0, 4.0}, pressureAt(1.5e5));
    made.pipe("first", "a", "b", 0.05, 5e-5);
    made.pipe("second", "b", "c", 0.04, 5e-5);
    made.pipe("closed", "b", "shut", 0.04, 5e-5).isClosed = true;
    return made;
}

std::string fileOf(const Network& network)
{
    const Solution solution = solveNetwork(network);
    return resultFileText(network, solution, certify(network, solution));
}

/// The text with the first place of a part replaced.
std::string with(std::string text, const std::string& part, const std::string& replacement)
{
    const std::size_t at = text.find(part);
    return at == std::string::npos ? "" : text.replace(at, part.size(), replacement);
}

Code codeOfReading(const std::string& text)
{
    Findings findings;
    EXPECT_FALSE(readResultText(text, "r.json", findings));
    return findings.isEmpty() ? Code::kCount : findings.list().front().code;
}

}  // namespace

TEST(ResultFile, reading_and_writing_gives_the_same_text)
{
    const TestNetwork made = twoPipes();
    const std::string text = fileOf(made.network());
    Findings findings;
    const auto result = readResultText(text, "r.json", findings);
    ASSERT_TRUE(result) << findings.text();
    EXPECT_EQ(resultFileText(result->network, result->solution, result->certificate), text);
    EXPECT_TRUE(verifyResult(*result, findings)) << findings.text();
    // One node is shut off, which the findings of the solve say.
    EXPECT_EQ(result->solution.findings.list().size(), 1U);
    EXPECT_EQ(result->solution.findings.list().front().place.object, "node shut");
}

TEST(ResultFile, result_without_numbers_is_written_and_read)
{
    TestNetwork made = twoPipes();
    // A demand that only a non-return element against it could supply.
    made.node("d", {60.0, 30.0, 4.0}, outflow(1.0));
    made.round("against", TAVELL_NON_RETURN, "d", "c", 0.05);
    const std::string text = fileOf(made.network());
    Findings findings;
    const auto result = readResultText(text, "r.json", findings);
    ASSERT_TRUE(result) << findings.text();
    EXPECT_FALSE(result->solution.hasResults());
    EXPECT_TRUE(result->solution.findings.hasErrors());
    EXPECT_FALSE(verifyResult(*result, findings));
    EXPECT_EQ(findings.list().back().code, Code::certificate_bad);
}

TEST(ResultFile, changed_flow_is_found_by_verification)
{
    const TestNetwork made = twoPipes();
    Findings findings;
    auto result = readResultText(fileOf(made.network()), "r.json", findings);
    ASSERT_TRUE(result) << findings.text();
    result->solution.massFlow[0] *= 1.01;
    EXPECT_FALSE(verifyResult(*result, findings));
    ASSERT_EQ(findings.list().size(), 2U) << findings.text();
    EXPECT_EQ(findings.list()[0].code, Code::certificate_differs);
    EXPECT_NE(findings.list()[0].message.find("\"is_good\" is true in the file and false by its numbers"),
              std::string::npos)
        << findings.text();
    EXPECT_EQ(findings.list()[1].code, Code::certificate_bad);
}

TEST(ResultFile, a_network_file_in_its_place_is_told_in_one_line)
{
    Findings findings;
    EXPECT_FALSE(readResultText(R"({"tavell": 1, "nodes": [], "elements": []})", "net.json", findings));
    ASSERT_EQ(findings.list().size(), 1U) << findings.text();
    EXPECT_EQ(findings.list()[0].code, Code::other_kind_of_file);
}

TEST(ResultFile, a_field_that_differs_is_named_with_both_values)
{
    const TestNetwork made = twoPipes();
    Findings findings;
    auto result = readResultText(fileOf(made.network()), "r.json", findings);
    ASSERT_TRUE(result) << findings.text();
    result->certificate.columnMismatch = 0.25;
    EXPECT_FALSE(verifyResult(*result, findings));
    ASSERT_EQ(findings.list().size(), 1U) << findings.text();
    EXPECT_EQ(findings.list()[0].message.rfind("\"column_mismatch\" is 0.25 in the file and ", 0), 0U)
        << findings.text();
}

TEST(ResultFile, changed_network_is_found_by_its_hash)
{
    const TestNetwork made = twoPipes();
    Findings findings;
    auto result = readResultText(fileOf(made.network()), "r.json", findings);
    ASSERT_TRUE(result) << findings.text();
    result->network.elements[2].section->diameter = 0.041;
    EXPECT_FALSE(verifyResult(*result, findings));
    EXPECT_EQ(findings.list().front().code, Code::hash_differs);
}

TEST(ResultFile, bad_certificate_is_found_even_when_it_admits_it)
{
    const TestNetwork made = twoPipes();
    Solution solution = solveNetwork(made.network());
    solution.massFlow[0] *= 1.01;
    const ResultFile result{made.network(), solution, certify(made.network(), solution)};
    Findings findings;
    EXPECT_FALSE(verifyResult(result, findings));
    ASSERT_EQ(findings.list().size(), 1U) << findings.text();
    EXPECT_EQ(findings.list().front().code, Code::certificate_bad);
}

TEST(ResultFile, departures_are_findings)
{
    const std::string text = fileOf(twoPipes().network());
    EXPECT_EQ(codeOfReading(with(text, "\"iterations\"", "\"iteration\"")), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, "\"iterations\": ", "\"iterations\": -")), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, "\"converged\"", "\"wonderful\"")), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, "\"pressure\": [", "\"pressure\": [1, ")), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, "\"pressure\": [", "\"pressure\": [\"")), Code::json_syntax);
    EXPECT_EQ(codeOfReading(with(text, "\"names\": [\"a\"", "\"names\": [\"A\"")), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, "\"tavell_result\": 1", "\"tavell_result\": 2")),
              Code::result_version_unknown);
    EXPECT_EQ(codeOfReading("[]"), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading("{}"), Code::result_file_invalid);
    EXPECT_EQ(codeOfReading("{\"tavell_result\": 1}"), Code::result_file_invalid);
}

TEST(ResultFile, negative_zero_is_written_without_its_sign)
{
    const TestNetwork made = twoPipes();
    Solution solution = solveNetwork(made.network());
    ASSERT_TRUE(solution.hasResults());
    solution.massFlow[2] = -0.0;
    const Certificate certificate = certify(made.network(), solution);
    const std::string text = resultFileText(made.network(), solution, certificate);
    Findings findings;
    const auto result = readResultText(text, "r.json", findings);
    ASSERT_TRUE(result) << findings.text();
    EXPECT_EQ(resultFileText(result->network, result->solution, result->certificate), text);
}

TEST(ResultFile, number_of_iterations_that_no_solve_has_is_refused)
{
    const std::string text = fileOf(twoPipes().network());
    EXPECT_EQ(codeOfReading(with(text, "\"iterations\": ", "\"iterations\": 99999999999")),
              Code::result_file_invalid);
}

TEST(ResultFile, objects_and_numbers_of_findings_are_arrays)
{
    const std::string text = fileOf(twoPipes().network());
    const std::string message = "\"message\":";
    EXPECT_EQ(codeOfReading(with(text, message, "\"objects\": \"pipe\", " + message)),
              Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, message, "\"objects\": {\"a\": \"pipe\"}, " + message)),
              Code::result_file_invalid);
    EXPECT_EQ(codeOfReading(with(text, message, "\"numbers\": null, " + message)), Code::result_file_invalid);
}

TEST(ResultFile, file_that_is_missing_is_a_finding)
{
    Findings findings;
    EXPECT_FALSE(readResultFile("no/such/result.json", findings));
    EXPECT_EQ(findings.list().front().code, Code::cannot_open_file);
}

}  // namespace kit
