#include "report_page.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "network_file.h"
#include "pump_charts.h"
#include "report_data.h"

namespace
{

kit::Network example(const std::string& name)
{
    kit::Findings findings;
    const auto network =
        kit::readNetworkFile(std::string(TAVELL_EXAMPLES) + "/networks/" + name + ".json", findings);
    EXPECT_TRUE(network) << findings.text();
    return network.value_or(kit::Network{});
}

nlohmann::ordered_json dataOf(const kit::Network& network, const kit::Solution& solution,
                              const kit::Findings& findings = {}, const kit::ReportOptions& options = {})
{
    return kit::reportData(network, solution, kit::certify(network, solution), findings, options);
}

}  // namespace

TEST(ReportPage, a_script_end_in_a_name_does_not_end_the_script)
{
    EXPECT_EQ(kit::scriptSafe(R"({"name":"</script><script>"})"),
              "{\"name\":\"\\u003c/script>\\u003cscript>\"}");
    EXPECT_EQ(kit::scriptSafe("\xe2\x80\xa8 \xe2\x80\xa9 \xe2\x80\xa6"), "\\u2028 \\u2029 \xe2\x80\xa6");
}

TEST(ReportPage, a_title_is_text)
{
    EXPECT_EQ(kit::htmlText("a < b & </title>"), "a &lt; b &amp; &lt;/title&gt;");
}

TEST(ReportPage, the_page_holds_its_data_and_asks_for_nothing)
{
    if (!kit::hasReportPage()) GTEST_SKIP() << "built without the page";
    kit::Network network = example("two_loops");
    network.nodes[0].name = "</script>";
    const kit::Solution solution = kit::solveNetwork(network);
    const kit::Certificate certificate = kit::certify(network, solution);
    const std::string page = kit::reportPage(network, solution, certificate, {}, {});
    EXPECT_EQ(page.find("/*DATA*/"), std::string::npos);
    EXPECT_EQ(page.find("\"</script>\""), std::string::npos);
    EXPECT_NE(page.find(certificate.modelHash), std::string::npos);
    EXPECT_NE(page.find("default-src 'none'"), std::string::npos);
    EXPECT_EQ(page.find("<script src"), std::string::npos);
    EXPECT_EQ(page, kit::reportPage(network, solution, certificate, {}, {}));
}

TEST(ReportPage, columns_are_in_display_units)
{
    const kit::Network network = example("two_loops");
    const kit::Solution solution = kit::solveNetwork(network);
    kit::ReportOptions options;
    options.units = {{kit::Quantity::pressure, "bar"}};
    const auto data = dataOf(network, solution, {}, options);
    EXPECT_EQ(data["units"]["pressure"], "bar");
    EXPECT_EQ(data["units"]["velocity"], "m/s");
    EXPECT_NEAR(data["nodes"]["pressure"][1].get<double>(), solution.pressure[1] / 1e5, 1e-5);
    EXPECT_EQ(data["nodes"]["name"].size(), network.nodes.size());
    EXPECT_EQ(data["elements"]["velocity"].size(), network.elements.size());
}

TEST(ReportPage, a_temperature_that_nobody_gave_does_not_stand_beside_a_given_density)
{
    const kit::Network given =
        example("limited_branches");  // "Water at 20 degC" by its density and viscosity
    const auto data = dataOf(given, kit::solveNetwork(given));
    for (const auto& row : data["fluid"])
        EXPECT_NE(row[0], "Temperature");
    const kit::Network named = example("siphon.tavell");
    EXPECT_EQ(dataOf(named, kit::solveNetwork(named))["fluid"][1][0], "Temperature");
}

TEST(ReportPage, the_parts_of_an_element_sum_to_its_change_of_pressure)
{
    const kit::Network network = example("heating_riser");
    const auto data = dataOf(network, kit::solveNetwork(network));
    for (std::size_t e = 0; e < network.elements.size(); ++e) {
        double sum = 0.0;
        for (const char* part : {"friction", "minor", "height_change", "pump", "other"})
            sum += data["elements"][part][e].get<double>();
        const double change = data["elements"]["pressure_difference"][e].get<double>();
        EXPECT_NEAR(sum, change, 1e-5 * 2.5e5) << network.elements[e].name;  // of the supply pressure
    }
}

TEST(ReportPage, a_pump_meets_its_system_at_the_duty_point)
{
    const kit::Network network = example("pump_static_head");
    const kit::Solution solution = kit::solveNetwork(network);
    const std::vector<kit::PumpChart> charts = kit::pumpCharts(network, solution);
    ASSERT_EQ(charts.size(), 1U);
    EXPECT_EQ(charts[0].systemCurve, kit::SystemCurve::solved);
    ASSERT_GE(charts[0].system.size(), 4U);
    // without flow the system asks for the lift of 20 m alone
    const double lift = 20.0 * 9.80665 * solution.fluid.density;
    EXPECT_NEAR(charts[0].system.front().pressure, lift, 0.005 * lift);
    for (std::size_t i = 1; i < charts[0].system.size(); ++i)
        EXPECT_GT(charts[0].system[i].pressure, charts[0].system[i - 1].pressure);
}

TEST(ReportPage, without_a_budget_the_system_curve_is_estimated_through_the_duty_point)
{
    const kit::Network network = example("pump_static_head");
    const kit::Solution solution = kit::solveNetwork(network);
    const std::vector<kit::PumpChart> charts = kit::pumpCharts(network, solution, 0);
    ASSERT_EQ(charts.size(), 1U);
    EXPECT_EQ(charts[0].systemCurve, kit::SystemCurve::estimated);
    const double lift = 20.0 * 9.80665 * solution.fluid.density;
    EXPECT_NEAR(charts[0].system.front().pressure, lift, 0.005 * lift);
    EXPECT_NEAR(charts[0].system[20].pressure, charts[0].duty.pressure, 1e-6 * lift);
}

TEST(ReportPage, findings_of_solve_and_doctor_are_both_shown)
{
    const kit::Network network = example("two_loops");
    kit::Solution solution;
    solution.findings.add(kit::Code::report_without_results, {}, "nothing was solved");
    kit::Findings doctor;
    doctor.add(kit::Code::png_failed, {}, "a second finding");
    const auto data = dataOf(network, solution, doctor);
    ASSERT_EQ(data["findings"].size(), 2U);
    EXPECT_EQ(data["findings"][0]["severity"], "remark");
    EXPECT_EQ(data["findings"][1]["code"], "png-failed");
}

TEST(ReportPage, a_network_without_results_still_has_its_drawing)
{
    const kit::Network network = example("two_loops");
    const auto data = dataOf(network, kit::Solution{});
    EXPECT_FALSE(data["hasResults"].get<bool>());
    EXPECT_FALSE(data["nodes"].contains("pressure"));
    EXPECT_FALSE(data.contains("certificate"));
    EXPECT_TRUE(data["pumps"].empty());
    EXPECT_EQ(data["nodes"]["x"].size(), network.nodes.size());
}
