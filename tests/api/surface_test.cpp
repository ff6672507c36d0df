// surface_test.cpp: entry points and argument conversions of the exported functions.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <stdexcept>
#include <string>

#include "flat_api.h"

namespace
{

using CreateFunction = vcITavell*(bool);
using DetailsFunction = void(bool, int&, int&, int&, int&, int&, int&, int&, int&, int&, int&, int&, int&,
                             int&, int&, int&, int&, int&, int&, int&);

CreateFunction* createTavell()
{
    return reinterpret_cast<CreateFunction*>(findSymbol("_ZN6Velcor6Tavell12CreateTavellEb"));
}

DetailsFunction* getBuildDetails()
{
    return reinterpret_cast<DetailsFunction*>(
        findSymbol("_ZN6Velcor6Tavell15GetBuildDetailsEbRi"
                   "S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_S1_"));
}

/// What the 19 outputs hold after a call when the n-th held 100 + n before.
std::array<int, 19> presetDetails()
{
    std::array<int, 19> details = {};
    for (std::size_t i = 0; i < details.size(); ++i)
        details[i] = 100 + static_cast<int>(i);
    return details;
}

std::array<int, 19> expectedDetails()
{
    std::array<int, 19> details = presetDetails();
    details[0] = -1;
    return details;
}

class Surface : public testing::Test
{
protected:
    System m_system = createSystem();
    vcICircuit* m_circuit = flat().vcITavellCreateCircuit(m_system.get());
};

}  // namespace

TEST_F(Surface, create_tavell_gives_an_empty_system_for_either_flag)
{
    for (const bool flag : {false, true}) {
        const System system(createTavell()(flag));
        ASSERT_NE(system, nullptr);
        EXPECT_EQ(flat().vcITavellGetNoCircuits(system.get()), 0u);
        EXPECT_EQ(flat().vcITavellGetCircuit(system.get(), 0), nullptr);
    }
}

TEST_F(Surface, flat_create_gives_an_empty_system_each_time)
{
    const System first = createSystem();
    const System second = createSystem();
    EXPECT_NE(first, second);
    EXPECT_EQ(flat().vcITavellGetNoCircuits(first.get()), 0u);
}

TEST_F(Surface, build_details_set_the_first_output_to_minus_one_and_leave_the_others)
{
    for (const bool flag : {false, true}) {
        std::array<int, 19> d = presetDetails();
        getBuildDetails()(flag, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7], d[8], d[9], d[10], d[11],
                          d[12], d[13], d[14], d[15], d[16], d[17], d[18]);
        EXPECT_EQ(d, expectedDetails());
    }
}

TEST_F(Surface, flat_build_details_set_the_first_output_to_minus_one_and_leave_the_others)
{
    for (const bool flag : {false, true}) {
        std::array<int, 19> d = presetDetails();
        flat().vcGetBuildDetails(flag, &d[0], &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7], &d[8], &d[9],
                                 &d[10], &d[11], &d[12], &d[13], &d[14], &d[15], &d[16], &d[17], &d[18]);
        EXPECT_EQ(d, expectedDetails());
    }
}

TEST_F(Surface, flat_build_details_touch_no_pointer_but_the_first)
{
    int first = 0;
    flat().vcGetBuildDetails(false, &first, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr);
    EXPECT_EQ(first, -1);
}

TEST_F(Surface, a_circuit_at_index_minus_one_is_null)
{
    EXPECT_EQ(flat().vcITavellGetCircuit(m_system.get(), -1), nullptr);
    EXPECT_EQ(flat().vcITavellGetCircuit(m_system.get(), INT_MIN), nullptr);
    EXPECT_EQ(flat().vcITavellGetCircuit(m_system.get(), INT_MAX), nullptr);
}

TEST_F(Surface, every_negative_index_is_out_of_range)
{
    vcICircuit* const circuit = addSampleCircuit(m_system.get());
    vcIPropertySet* const properties = flat().vcIEntityGetProperties(flat().vcICircuitGetEntity(circuit));
    for (const int index : {-1, INT_MIN}) {
        EXPECT_EQ(flat().vcICircuitGetNode(circuit, index), nullptr);
        EXPECT_EQ(flat().vcICircuitGetElement(circuit, index), nullptr);
        EXPECT_EQ(flat().vcIFeedbackCollectionGetFeedback(flat().vcICircuitGetFeedback(circuit), index),
                  nullptr);
        EXPECT_EQ(flat().vcIPropertySetGetProp(properties, index), -1);
        EXPECT_EQ(flat().vcIPropertySetGetValue(properties, index), 0.0);
        EXPECT_STREQ(flat().vcIPropertySetGetName(properties, index), "");
        EXPECT_EQ(flat().vcIPropertySetGetStringValue(properties, index), nullptr);
    }
}

TEST_F(Surface, a_negative_end_means_the_end_node)
{
    vcICircuit* const circuit = addSampleCircuit(m_system.get());
    EXPECT_EQ(flat().vcICircuitGetElementNode(circuit, flat().vcICircuitGetElement(circuit, 0), -1),
              flat().vcICircuitGetNode(circuit, 1));
}

TEST_F(Surface, check_node_id_taken_set_to_two_is_on_and_reads_one)
{
    flat().vcICircuitSetCheckNodeIdTaken(m_circuit, 0);
    EXPECT_EQ(flat().vcICircuitGetCheckNodeIdTaken(m_circuit), 0);
    flat().vcICircuitSetCheckNodeIdTaken(m_circuit, 2);
    EXPECT_EQ(flat().vcICircuitGetCheckNodeIdTaken(m_circuit), 1);
}

TEST_F(Surface, any_int_but_zero_is_true)
{
    for (const int value : {-1, 256, INT_MIN, INT_MAX}) {
        flat().vcICircuitSetCheckDuplicateElementAtNodes(m_circuit, 0);
        flat().vcICircuitSetCheckDuplicateElementAtNodes(m_circuit, value);
        EXPECT_EQ(flat().vcICircuitGetCheckDuplicateElementAtNodes(m_circuit), 1) << value;
    }
}

TEST_F(Surface, const_and_plain_access_give_the_same_pointer)
{
    vcICircuit* const circuit = addSampleCircuit(m_system.get());
    vcIFluid* const fluid = flat().vcICircuitGetFluid(circuit);
    vcINode* const node = flat().vcICircuitGetNode(circuit, 0);
    vcIElement* const element = flat().vcICircuitGetElement(circuit, 0);
    EXPECT_EQ(flat().vcICircuitGetConstFluid(circuit), fluid);
    EXPECT_EQ(flat().vcICircuitGetEntityConst(circuit), flat().vcICircuitGetEntity(circuit));
    EXPECT_EQ(flat().vcINodeGetEntityConst(node), flat().vcINodeGetEntity(node));
    EXPECT_EQ(flat().vcIElementGetEntityConst(element), flat().vcIElementGetEntity(element));
    EXPECT_EQ(flat().vcIFluidGetEntityConst(fluid), flat().vcIFluidGetEntity(fluid));
}

TEST_F(Surface, an_exception_of_an_operation_passes_through_the_flat_function)
{
    vcINode* const node = flat().vcICircuitCreateNode(m_circuit);
    vcIEntity* const entity = flat().vcINodeGetEntity(node);
    vcIPropertySet* const properties = flat().vcIEntityGetProperties(entity);
    double value = 0.25;

    flat().vcIPropertySetSetStringPropertyByName(properties, "node_x", "abc");
    try {
        flat().vcIEntityGetProperty(entity, TAVELL_NODE_X, &value);
        FAIL() << "no exception";
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "invalid stod argument");
    }

    flat().vcIPropertySetSetStringPropertyByName(properties, "node_x", "1e999");
    try {
        flat().vcIEntityGetProperty(entity, TAVELL_NODE_X, &value);
        FAIL() << "no exception";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "stod argument out of range");
    }
    EXPECT_EQ(value, 0.25);
}

TEST_F(Surface, a_host_goes_from_nothing_to_results_through_the_flat_functions)
{
    vcICircuit* const circuit = addSampleCircuit(m_system.get());
    ASSERT_EQ(flat().vcICircuitValidate(circuit), 1);
    ASSERT_EQ(flat().vcICircuitSolve(circuit, 0, nullptr), 1);
    EXPECT_EQ(flat().vcIFeedbackCollectionGetSize(flat().vcICircuitGetFeedback(circuit)), 0u);

    // Three equal pipes in a row share the 100 kPa equally, and the flow is one and the same.
    vcIResultsSet* const flows = flat().vcICircuitGetResults(circuit, TAVELL_RESULT_MASS_FLOW);
    vcIResultsSet* const drops = flat().vcICircuitGetResults(circuit, TAVELL_RESULT_PRESSURE_DIFFERENCE);
    ASSERT_NE(flows, nullptr);
    ASSERT_NE(drops, nullptr);
    const double* const flow = flat().vcIResultsSetGetValues(flows);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_GT(flow[i], 0.0);
        EXPECT_NEAR(flow[i], flow[0], 1e-3 * flow[0]);
        EXPECT_NEAR(flat().vcIResultsSetGetValues(drops)[i], -100e3 / 3.0, 100.0);
    }
}
