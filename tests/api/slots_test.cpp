// slots_test.cpp: the position of every operation in its interface's table.
//
// Each operation is called by position through a table written out by hand; what it answers or changes is compared with
// the flat function of its name or with an effect that no other slot has.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "flat_api.h"
#include "interface_tables.h"

namespace
{

constexpr std::size_t kSlot = sizeof(void (*)());
static_assert(sizeof(TavellTable) == (11 + 2) * kSlot);
static_assert(sizeof(CircuitTable) == (34 + 1) * kSlot);
static_assert(sizeof(NodeTable) == 9 * kSlot);
static_assert(sizeof(ElementTable) == 10 * kSlot);
static_assert(sizeof(EntityTable) == 9 * kSlot);
static_assert(sizeof(PropertySetTable) == 8 * kSlot);
static_assert(sizeof(FluidTable) == (4 + 1) * kSlot);
static_assert(sizeof(FeedbackCollectionTable) == 2 * kSlot);
static_assert(sizeof(FeedbackTable) == 3 * kSlot);
static_assert(sizeof(ResultsSetTable) == 5 * kSlot);
static_assert(sizeof(ResultsExporterOptionsTable) == 12 * kSlot);

int cancelCalls = 0;

bool countCall()
{
    ++cancelCalls;
    return false;
}

bool stopAtOnce()
{
    return true;
}

double propertyOf(vcIEntity* entity, int id)
{
    double value = -1.0;
    EXPECT_EQ(flat().vcIEntityGetProperty(entity, id, &value), 1) << "property " << id;
    return value;
}

double nodeProperty(vcINode* node, int id)
{
    return propertyOf(flat().vcINodeGetEntity(node), id);
}

double elementProperty(vcIElement* element, int id)
{
    return propertyOf(flat().vcIElementGetEntity(element), id);
}

/// Index of a property in a set, for the operations that count positions.
int indexOf(vcIPropertySet* properties, int id)
{
    const int index = flat().vcIPropertySetGetIndex(properties, id);
    EXPECT_GE(index, 0) << "property " << id;
    return index;
}

class Slots : public testing::Test
{
protected:
    System m_system = createSystem();
    vcITavell* m_tavell = m_system.get();
    vcICircuit* m_circuit = addSampleCircuit(m_system.get());
    const TavellTable& m_tavellTable = tableOf<TavellTable>(m_system.get());
    const CircuitTable& m_circuitTable = tableOf<CircuitTable>(m_circuit);

    vcINode* node(int index) { return flat().vcICircuitGetNode(m_circuit, index); }
    vcIElement* element(int index) { return flat().vcICircuitGetElement(m_circuit, index); }
    std::size_t noNodes() { return flat().vcICircuitGetNoNodes(m_circuit); }
    std::size_t noElements() { return flat().vcICircuitGetNoElements(m_circuit); }
    vcIEntity* fluidEntity() { return flat().vcIFluidGetEntity(flat().vcICircuitGetFluid(m_circuit)); }

    /// A node of the circuit that no element uses, at a place of its own.
    vcINode* addNode(double y)
    {
        vcINode* const added = flat().vcICircuitCreateNode(m_circuit);
        flat().vcINodeSetLocation(added, 0.0, y, 0.0);
        return added;
    }

    void solve() { ASSERT_EQ(flat().vcICircuitSolve(m_circuit, 0, nullptr), 1); }
};

using TavellSlots = Slots;
using CircuitSlots = Slots;
using NodeSlots = Slots;
using ElementSlots = Slots;
using EntitySlots = Slots;
using PropertySetSlots = Slots;
using FluidSlots = Slots;
using FeedbackSlots = Slots;
using ResultsSetSlots = Slots;
using ResultsExporterOptionsSlots = Slots;

const std::vector<double> kFlows = {0.0, 0.001, 0.002, 0.003};
const std::vector<double> kPressures = {40e3, 35e3, 25e3, 10e3};

}  // namespace

TEST_F(TavellSlots, slot_0_releases_the_system)
{
    // What was not released would be reported by the address sanitizer.
    vcITavell* const other = flat().vcCreateTavell();
    addSampleCircuit(other);
    tableOf<TavellTable>(other).Release(other);
}

TEST_F(TavellSlots, slots_1_to_3_create_count_and_find_circuits)
{
    vcICircuit* const added = m_tavellTable.CreateCircuit(m_tavell);
    EXPECT_EQ(flat().vcITavellGetNoCircuits(m_tavell), 2u);
    EXPECT_EQ(m_tavellTable.GetNoCircuits(m_tavell), 2u);
    EXPECT_EQ(flat().vcITavellGetCircuit(m_tavell, 1), added);
    EXPECT_EQ(m_tavellTable.GetCircuit(m_tavell, 0), m_circuit);
    EXPECT_EQ(m_tavellTable.GetCircuit(m_tavell, 1), added);
    EXPECT_EQ(m_tavellTable.GetCircuit(m_tavell, 2), nullptr);
}

TEST_F(TavellSlots, slot_4_releases_one_circuit)
{
    vcICircuit* const added = flat().vcITavellCreateCircuit(m_tavell);
    EXPECT_TRUE(m_tavellTable.ReleaseCircuit(m_tavell, m_circuit));
    EXPECT_EQ(flat().vcITavellGetNoCircuits(m_tavell), 1u);
    EXPECT_EQ(flat().vcITavellGetCircuit(m_tavell, 0), added);
    EXPECT_FALSE(m_tavellTable.ReleaseCircuit(m_tavell, m_circuit));
    EXPECT_FALSE(m_tavellTable.ReleaseCircuit(m_tavell, nullptr));
}

TEST_F(TavellSlots, slot_5_releases_all_circuits)
{
    flat().vcITavellCreateCircuit(m_tavell);
    m_tavellTable.ReleaseAllCircuits(m_tavell);
    EXPECT_EQ(flat().vcITavellGetNoCircuits(m_tavell), 0u);
}

TEST_F(TavellSlots, slot_6_solves_every_circuit_and_passes_the_callback_on)
{
    cancelCalls = 0;
    m_tavellTable.Solve(m_tavell, false, true, countCall);
    EXPECT_GT(cancelCalls, 0);
    EXPECT_NE(flat().vcICircuitGetResults(m_circuit, TAVELL_RESULT_PRESSURE), nullptr);
}

TEST_F(TavellSlots, slot_6_takes_validate_first_as_its_second_flag)
{
    vcICircuit* const unsuitable = flat().vcITavellCreateCircuit(m_tavell);
    vcIElement* const pipe = flat().vcICircuitCreateEmptyElement(unsuitable);
    flat().vcIEntityRemoveProperty(flat().vcIElementGetEntity(pipe), TAVELL_ELEMENT_ID);
    m_tavellTable.Solve(m_tavell, true, false, nullptr);
    EXPECT_EQ(flat().vcIElementGetId(pipe), 0);
    m_tavellTable.Solve(m_tavell, false, true, nullptr);
    EXPECT_GT(flat().vcIElementGetId(pipe), 0);
}

TEST_F(TavellSlots, slot_7_merges_circuits_that_touch)
{
    addSampleCircuit(m_tavell);
    m_tavellTable.MergeCircuits(m_tavell);
    EXPECT_EQ(flat().vcITavellGetNoCircuits(m_tavell), 1u);
}

TEST_F(TavellSlots, slot_8_validates_every_circuit)
{
    // Validation gives an element without an id one.
    flat().vcIEntityRemoveProperty(flat().vcIElementGetEntity(element(0)), TAVELL_ELEMENT_ID);
    m_tavellTable.ValidateCircuits(m_tavell);
    EXPECT_GT(flat().vcIElementGetId(element(0)), 0);
    EXPECT_EQ(flat().vcITavellGetNoCircuits(m_tavell), 1u);
}

TEST_F(TavellSlots, slots_9_and_10_find_the_circuit_of_a_node_and_of_an_element)
{
    vcICircuit* const other = addSampleCircuit(m_tavell);
    EXPECT_EQ(m_tavellTable.FindParentCircuitFromNode(m_tavell, node(1)), m_circuit);
    EXPECT_EQ(m_tavellTable.FindParentCircuitFromNode(m_tavell, flat().vcICircuitGetNode(other, 1)), other);
    EXPECT_EQ(m_tavellTable.FindParentCircuitFromNode(m_tavell, nullptr), nullptr);
    EXPECT_EQ(m_tavellTable.FindParentCircuitFromElement(m_tavell, element(1)), m_circuit);
    EXPECT_EQ(m_tavellTable.FindParentCircuitFromElement(m_tavell, flat().vcICircuitGetElement(other, 1)),
              other);
    EXPECT_EQ(m_tavellTable.FindParentCircuitFromElement(m_tavell, nullptr), nullptr);
}

TEST_F(TavellSlots, slot_11_is_the_virtual_destructor)
{
    // What was not destroyed would be reported by the address sanitizer.
    vcITavell* const other = flat().vcCreateTavell();
    addSampleCircuit(other);
    tableOf<TavellTable>(other).deletingDestructor(other);
}

TEST_F(CircuitSlots, slots_0_and_1_give_the_fluid)
{
    EXPECT_EQ(m_circuitTable.GetFluid(m_circuit), flat().vcICircuitGetFluid(m_circuit));
    EXPECT_EQ(m_circuitTable.GetConstFluid(m_circuit), flat().vcICircuitGetConstFluid(m_circuit));
    EXPECT_EQ(m_circuitTable.GetConstFluid(m_circuit), m_circuitTable.GetFluid(m_circuit));
}

TEST_F(CircuitSlots, slots_2_and_3_read_and_set_gravity)
{
    m_circuitTable.SetGravity(m_circuit, 0.25, 0.5, 0.75);
    double x = 0.0, y = 0.0, z = 0.0;
    flat().vcICircuitGetGravity(m_circuit, &x, &y, &z);
    EXPECT_EQ(std::vector<double>({x, y, z}), std::vector<double>({0.25, 0.5, 0.75}));
    flat().vcICircuitSetGravity(m_circuit, 1.0, 2.0, 3.0);
    m_circuitTable.GetGravity(m_circuit, &x, &y, &z);
    EXPECT_EQ(std::vector<double>({x, y, z}), std::vector<double>({1.0, 2.0, 3.0}));
}

TEST_F(CircuitSlots, slots_4_and_5_create_and_release_a_node)
{
    vcINode* const added = m_circuitTable.CreateNode(m_circuit);
    EXPECT_EQ(noNodes(), 5u);
    EXPECT_EQ(node(4), added);
    EXPECT_TRUE(m_circuitTable.ReleaseNode(m_circuit, added));
    EXPECT_EQ(noNodes(), 4u);
    EXPECT_FALSE(m_circuitTable.ReleaseNode(m_circuit, nullptr));
}

TEST_F(CircuitSlots, slot_6_creates_an_element_without_nodes)
{
    vcIElement* const added = m_circuitTable.CreateEmptyElement(m_circuit);
    EXPECT_EQ(noElements(), 4u);
    EXPECT_EQ(element(3), added);
    EXPECT_EQ(flat().vcIElementGetStartNodeId(added), 0);
}

TEST_F(CircuitSlots, slot_7_creates_a_round_pipe)
{
    vcIElement* const added =
        m_circuitTable.CreateElement(m_circuit, node(0), addNode(1.0), 0.5, 0.25, 1.5, 3, 7.0);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(flat().vcIElementGetType(added), TAVELL_PIPE);
    EXPECT_EQ(flat().vcIElementGetStartNodeId(added), 1);
    EXPECT_EQ(flat().vcIElementGetEndNodeId(added), 5);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_DIAMETER), 0.5);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_AREA), 0.25);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_K_SPECIFIED), 1.5);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_ENERGY_TYPE), 3.0);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_ENERGY_VALUE), 7.0);
}

TEST_F(CircuitSlots, slot_8_creates_a_pipe_of_any_cross_section)
{
    vcIElement* const added =
        m_circuitTable.CreateNonRoundElement(m_circuit, node(0), addNode(1.0), 4.0, 1.0, 1.5, 3, 7.0);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_DIAMETER), 1.0);  // 4 area / wetted perimeter
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_AREA), 1.0);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_WETTEDPERIMETER), 4.0);
    EXPECT_EQ(elementProperty(added, TAVELL_ELEMENT_K_SPECIFIED), 1.5);
}

TEST_F(CircuitSlots, slots_9_and_10_create_a_pump_and_a_loss)
{
    vcIElement* const pump = m_circuitTable.CreatePump(m_circuit, node(0), addNode(1.0), kFlows.data(),
                                                       kPressures.data(), 4, 998.0, 3, 7.0);
    ASSERT_NE(pump, nullptr);
    EXPECT_EQ(flat().vcIElementGetType(pump), TAVELL_PUMP);
    EXPECT_EQ(elementProperty(pump, TAVELL_ELEMENT_REFERENCE_DENSITY), 998.0);
    EXPECT_EQ(elementProperty(pump, TAVELL_ELEMENT_ENERGY_TYPE), 3.0);
    EXPECT_EQ(elementProperty(pump, TAVELL_ELEMENT_ENERGY_VALUE), 7.0);

    vcIElement* const loss = m_circuitTable.CreateLoss(m_circuit, node(0), addNode(2.0), kFlows.data(),
                                                       kPressures.data(), 4, 998.0, 3, 7.0);
    ASSERT_NE(loss, nullptr);
    EXPECT_EQ(flat().vcIElementGetType(loss), TAVELL_LOSS);
}

TEST_F(CircuitSlots, slot_11_releases_an_element)
{
    EXPECT_TRUE(m_circuitTable.ReleaseElement(m_circuit, element(1)));
    EXPECT_EQ(noElements(), 2u);
    EXPECT_FALSE(m_circuitTable.ReleaseElement(m_circuit, nullptr));
}

TEST_F(CircuitSlots, slot_12_gives_the_validity_state)
{
    EXPECT_EQ(m_circuitTable.IsValid(m_circuit), flat().vcICircuitIsValid(m_circuit));
    vcICircuit* const empty = flat().vcITavellCreateCircuit(m_tavell);
    EXPECT_EQ(m_circuitTable.IsValid(empty), TAVELL_INVALID_ELEMENT_COUNT);
}

TEST_F(CircuitSlots, slots_13_and_14_judge_and_only_the_second_mends)
{
    flat().vcIEntityRemoveProperty(flat().vcIElementGetEntity(element(0)), TAVELL_ELEMENT_ID);
    EXPECT_TRUE(m_circuitTable.IsSuitableForAnalysis(m_circuit));
    EXPECT_EQ(flat().vcIElementGetId(element(0)), 0);
    EXPECT_TRUE(m_circuitTable.Validate(m_circuit));
    EXPECT_GT(flat().vcIElementGetId(element(0)), 0);

    vcICircuit* const empty = flat().vcITavellCreateCircuit(m_tavell);
    EXPECT_FALSE(m_circuitTable.IsSuitableForAnalysis(empty));
    EXPECT_FALSE(m_circuitTable.Validate(empty));
}

TEST_F(CircuitSlots, slot_15_solves_and_calls_the_callback)
{
    cancelCalls = 0;
    EXPECT_TRUE(m_circuitTable.Solve(m_circuit, false, countCall));
    EXPECT_GT(cancelCalls, 0);
    EXPECT_EQ(flat().vcICircuitIsValid(m_circuit), TAVELL_VALID_HAS_RESULTS);
}

TEST_F(CircuitSlots, slot_16_gives_results_by_key)
{
    solve();
    for (int key = TAVELL_RESULT_REYNOLDS; key <= TAVELL_RESULT_EXTERNAL_MASS_FLOW; ++key) {
        EXPECT_NE(m_circuitTable.GetResults(m_circuit, key), nullptr) << key;
        EXPECT_EQ(m_circuitTable.GetResults(m_circuit, key), flat().vcICircuitGetResults(m_circuit, key))
            << key;
    }
    EXPECT_EQ(m_circuitTable.GetResults(m_circuit, 9), nullptr);
}

TEST_F(CircuitSlots, slots_17_to_19_give_options_export_and_feedback)
{
    solve();
    vcIResultsExporterOptions* const options = m_circuitTable.GetResultsExporterOptions(m_circuit);
    EXPECT_EQ(options, flat().vcICircuitGetResultsExporterOptions(m_circuit));
    flat().vcIResultsExporterOptionsSetElementLabel(options, "pipe");

    const std::string text = m_circuitTable.ExportResults(m_circuit);
    EXPECT_EQ(text.rfind("\"pipe\",", 0), 0u) << text;
    EXPECT_EQ(text, flat().vcICircuitExportResults(m_circuit));

    EXPECT_NE(m_circuitTable.GetFeedback(m_circuit), nullptr);
    EXPECT_EQ(m_circuitTable.GetFeedback(m_circuit), flat().vcICircuitGetFeedback(m_circuit));
}

TEST_F(CircuitSlots, slots_20_to_23_count_and_list_elements_and_nodes)
{
    EXPECT_EQ(m_circuitTable.GetNoElements(m_circuit), 3u);
    EXPECT_EQ(m_circuitTable.GetNoNodes(m_circuit), 4u);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(m_circuitTable.GetElement(m_circuit, static_cast<std::size_t>(i)), element(i));
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(m_circuitTable.GetNode(m_circuit, static_cast<std::size_t>(i)), node(i));
    EXPECT_EQ(m_circuitTable.GetElement(m_circuit, 3), nullptr);
    EXPECT_EQ(m_circuitTable.GetNode(m_circuit, 4), nullptr);
}

TEST_F(CircuitSlots, slots_24_and_25_find_nodes_by_element_end_and_by_id)
{
    EXPECT_EQ(m_circuitTable.GetElementNode(m_circuit, element(1), 0), node(1));
    EXPECT_EQ(m_circuitTable.GetElementNode(m_circuit, element(1), 1), node(2));
    EXPECT_EQ(m_circuitTable.GetElementNode(m_circuit, element(1), 99), node(2));
    EXPECT_EQ(m_circuitTable.GetNodeById(m_circuit, 4), node(3));
    EXPECT_EQ(m_circuitTable.GetNodeById(m_circuit, 5), nullptr);
}

TEST_F(CircuitSlots, slots_26_and_27_give_the_entity)
{
    vcIEntity* const entity = m_circuitTable.GetEntity(m_circuit);
    EXPECT_EQ(entity, flat().vcICircuitGetEntity(m_circuit));
    EXPECT_EQ(m_circuitTable.GetEntityConst(m_circuit), entity);
    EXPECT_EQ(propertyOf(entity, TAVELL_CIRCUIT_GRAVITY_Z), -1.0);
}

TEST_F(CircuitSlots, slot_28_accepts_a_log_file_and_changes_nothing)
{
    solve();
    m_circuitTable.SetSolveLogFile(m_circuit, "solve.log");
    m_circuitTable.SetSolveLogFile(m_circuit, nullptr);
    EXPECT_EQ(flat().vcICircuitIsValid(m_circuit), TAVELL_VALID_HAS_RESULTS);
}

TEST_F(CircuitSlots, slot_29_gives_the_elements_out_of_reach)
{
    vcINode* const start = addNode(1.0);
    vcIElement* const lonely =
        flat().vcICircuitCreateElement(m_circuit, start, addNode(2.0), 0.1, 0.01, 0.0, 2, 0.0);
    vcIElement* out[2] = {};
    int count = -1;
    EXPECT_FALSE(m_circuitTable.GetDisconnectedElements(m_circuit, out, 0, &count));
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(m_circuitTable.GetDisconnectedElements(m_circuit, out, 2, &count));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(out[0], lonely);
    EXPECT_EQ(out[1], nullptr);
}

TEST_F(CircuitSlots, slots_30_to_33_read_and_switch_the_two_checks)
{
    EXPECT_TRUE(m_circuitTable.GetCheckNodeIdTaken(m_circuit));
    EXPECT_TRUE(m_circuitTable.GetCheckDuplicateElementAtNodes(m_circuit));

    m_circuitTable.SetCheckNodeIdTaken(m_circuit, false);
    EXPECT_EQ(flat().vcICircuitGetCheckNodeIdTaken(m_circuit), 0);
    EXPECT_EQ(flat().vcICircuitGetCheckDuplicateElementAtNodes(m_circuit), 1);
    EXPECT_FALSE(m_circuitTable.GetCheckNodeIdTaken(m_circuit));
    EXPECT_TRUE(m_circuitTable.GetCheckDuplicateElementAtNodes(m_circuit));

    m_circuitTable.SetCheckNodeIdTaken(m_circuit, true);
    m_circuitTable.SetCheckDuplicateElementAtNodes(m_circuit, false);
    EXPECT_EQ(flat().vcICircuitGetCheckNodeIdTaken(m_circuit), 1);
    EXPECT_EQ(flat().vcICircuitGetCheckDuplicateElementAtNodes(m_circuit), 0);
    EXPECT_TRUE(m_circuitTable.GetCheckNodeIdTaken(m_circuit));
    EXPECT_FALSE(m_circuitTable.GetCheckDuplicateElementAtNodes(m_circuit));
}

TEST_F(CircuitSlots, slot_34_gives_the_local_time)
{
    const std::string stamp = m_circuitTable.TimeStamp(m_circuit);
    EXPECT_TRUE(std::regex_match(stamp, std::regex(R"(\d{4}-\d\d-\d\d\.\d\d:\d\d:\d\d)"))) << stamp;
}

TEST_F(NodeSlots, slots_0_to_2_give_the_id_and_the_location)
{
    const NodeTable& table = tableOf<NodeTable>(node(2));
    EXPECT_EQ(table.GetId(node(2)), 3);
    double x = 0.0, y = 0.0, z = 0.0;
    table.GetLocation(node(2), &x, &y, &z);
    EXPECT_EQ(std::vector<double>({x, y, z}), std::vector<double>({20.0, 0.0, 0.0}));
    table.SetLocation(node(2), 1.0, 2.0, 3.0);
    flat().vcINodeGetLocation(node(2), &x, &y, &z);
    EXPECT_EQ(std::vector<double>({x, y, z}), std::vector<double>({1.0, 2.0, 3.0}));
}

TEST_F(NodeSlots, slots_3_and_4_set_and_read_the_type)
{
    const NodeTable& table = tableOf<NodeTable>(node(2));
    table.SetType(node(2), TAVELL_NODE_OUTLET);
    EXPECT_EQ(flat().vcINodeGetType(node(2)), TAVELL_NODE_OUTLET);
    EXPECT_EQ(table.GetType(node(2)), TAVELL_NODE_OUTLET);
    EXPECT_EQ(table.GetType(node(1)), TAVELL_NODE_INTERNAL);
}

TEST_F(NodeSlots, slots_5_and_6_set_and_read_the_constraint)
{
    const NodeTable& table = tableOf<NodeTable>(node(2));
    table.SetConstraint(node(2), TAVELL_CONSTRAINT_VELOCITY, 1.5);
    EXPECT_EQ(flat().vcINodeGetConstraint(node(2)), TAVELL_CONSTRAINT_VELOCITY);
    EXPECT_EQ(nodeProperty(node(2), TAVELL_NODE_VELOCITY), 1.5);
    EXPECT_EQ(table.GetConstraint(node(2)), TAVELL_CONSTRAINT_VELOCITY);
}

TEST_F(NodeSlots, slots_7_and_8_give_the_entity)
{
    const NodeTable& table = tableOf<NodeTable>(node(2));
    EXPECT_EQ(table.GetEntity(node(2)), flat().vcINodeGetEntity(node(2)));
    EXPECT_EQ(table.GetEntityConst(node(2)), flat().vcINodeGetEntity(node(2)));
    EXPECT_EQ(flat().vcINodeGetEntityConst(node(2)), flat().vcINodeGetEntity(node(2)));
    EXPECT_EQ(propertyOf(table.GetEntity(node(2)), TAVELL_NODE_ID), 3.0);
}

TEST_F(ElementSlots, slots_0_to_2_give_the_id_and_the_type)
{
    const ElementTable& table = tableOf<ElementTable>(element(1));
    EXPECT_EQ(table.GetId(element(1)), 2);
    EXPECT_EQ(table.GetType(element(1)), TAVELL_PIPE);
    table.SetType(element(1), TAVELL_KV_VALVE);
    EXPECT_EQ(flat().vcIElementGetType(element(1)), TAVELL_KV_VALVE);
    EXPECT_EQ(table.GetType(element(1)), TAVELL_KV_VALVE);
}

TEST_F(ElementSlots, slots_3_to_5_give_the_end_nodes_and_swap_them)
{
    const ElementTable& table = tableOf<ElementTable>(element(1));
    EXPECT_EQ(table.GetStartNodeId(element(1)), 2);
    EXPECT_EQ(table.GetEndNodeId(element(1)), 3);
    table.SwapNodes(element(1));
    EXPECT_EQ(flat().vcIElementGetStartNodeId(element(1)), 3);
    EXPECT_EQ(flat().vcIElementGetEndNodeId(element(1)), 2);
}

TEST_F(ElementSlots, slots_6_and_7_set_and_read_the_curve)
{
    const ElementTable& table = tableOf<ElementTable>(element(1));
    int count = 0;
    EXPECT_FALSE(table.GetCurveData(element(1), nullptr, nullptr, nullptr, 0, &count));
    EXPECT_EQ(count, -1);
    EXPECT_FALSE(table.UpdateCurveData(element(1), TAVELL_PIPE, kFlows.data(), kPressures.data(), 4, 998.0));
    EXPECT_TRUE(table.UpdateCurveData(element(1), TAVELL_LOSS, kFlows.data(), kPressures.data(), 4, 998.0));
    EXPECT_EQ(flat().vcIElementGetType(element(1)), TAVELL_LOSS);

    double density = 0.0;
    std::vector<double> flows(4), pressures(4);
    EXPECT_TRUE(table.GetCurveData(element(1), &density, flows.data(), pressures.data(), 4, &count));
    EXPECT_EQ(count, 4);
    EXPECT_EQ(density, 998.0);
    EXPECT_EQ(flows, kFlows);
    EXPECT_EQ(pressures, kPressures);

    std::vector<double> flatFlows(4), flatPressures(4);
    EXPECT_EQ(flat().vcIElementGetCurveData(element(1), &density, flatFlows.data(), flatPressures.data(), 4,
                                            &count),
              1);
    EXPECT_EQ(flatFlows, kFlows);
    EXPECT_EQ(flatPressures, kPressures);
}

TEST_F(ElementSlots, slots_8_and_9_give_the_entity)
{
    const ElementTable& table = tableOf<ElementTable>(element(1));
    EXPECT_EQ(table.GetEntity(element(1)), flat().vcIElementGetEntity(element(1)));
    EXPECT_EQ(table.GetEntityConst(element(1)), flat().vcIElementGetEntity(element(1)));
    EXPECT_EQ(flat().vcIElementGetEntityConst(element(1)), flat().vcIElementGetEntity(element(1)));
    EXPECT_EQ(propertyOf(table.GetEntity(element(1)), TAVELL_ELEMENT_ID), 2.0);
}

TEST_F(EntitySlots, slots_0_and_1_set_and_read_the_meta_string)
{
    vcIEntity* const entity = flat().vcINodeGetEntity(node(0));
    const EntityTable& table = tableOf<EntityTable>(entity);
    EXPECT_STREQ(table.GetMeta(entity), "");
    table.SetMeta(entity, "tank");
    EXPECT_STREQ(flat().vcIEntityGetMeta(entity), "tank");
    EXPECT_STREQ(table.GetMeta(entity), "tank");
}

TEST_F(EntitySlots, slots_2_to_6_set_find_read_and_remove_a_property)
{
    vcIEntity* const entity = flat().vcINodeGetEntity(node(0));
    const EntityTable& table = tableOf<EntityTable>(entity);
    EXPECT_FALSE(table.SetProperty(entity, TAVELL_ELEMENT_ID, 1.0));
    EXPECT_TRUE(table.SetProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE, 300.0));
    EXPECT_EQ(nodeProperty(node(0), TAVELL_NODE_FLUID_TEMPERATURE), 300.0);
    EXPECT_TRUE(table.SetPropertyByName(entity, "NODE_FLUID_TEMPERATURE", 310.0));
    EXPECT_EQ(nodeProperty(node(0), TAVELL_NODE_FLUID_TEMPERATURE), 310.0);
    EXPECT_FALSE(table.SetPropertyByName(entity, "node_colour", 1.0));

    EXPECT_TRUE(table.HasProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE));
    EXPECT_FALSE(table.HasProperty(entity, TAVELL_NODE_VELOCITY));
    double value = 0.0;
    EXPECT_TRUE(table.GetProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE, &value));
    EXPECT_EQ(value, 310.0);
    EXPECT_TRUE(table.RemoveProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE));
    EXPECT_FALSE(table.RemoveProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE));
    EXPECT_EQ(flat().vcIEntityHasProperty(entity, TAVELL_NODE_FLUID_TEMPERATURE), 0);
}

TEST_F(EntitySlots, slots_7_and_8_give_the_property_set)
{
    vcIEntity* const entity = flat().vcINodeGetEntity(node(0));
    const EntityTable& table = tableOf<EntityTable>(entity);
    EXPECT_EQ(table.GetProperties(entity), flat().vcIEntityGetProperties(entity));
    EXPECT_EQ(table.GetWriteableProperties(entity), flat().vcIEntityGetWriteableProperties(entity));
    EXPECT_EQ(table.GetWriteableProperties(entity), table.GetProperties(entity));
}

TEST_F(EntitySlots, the_entity_of_every_kind_of_object_has_the_same_table_order)
{
    const std::vector<std::pair<vcIEntity*, int>> entities = {
        {flat().vcICircuitGetEntity(m_circuit), TAVELL_CIRCUIT_MINOR_LOSS},
        {flat().vcINodeGetEntity(node(0)), TAVELL_NODE_VELOCITY},
        {flat().vcIElementGetEntity(element(0)), TAVELL_ELEMENT_ROUGHNESS},
        {fluidEntity(), TAVELL_FLUID_DENSITY}};
    for (const auto& [entity, id] : entities) {
        const EntityTable& table = tableOf<EntityTable>(entity);
        table.SetMeta(entity, "m");
        EXPECT_STREQ(table.GetMeta(entity), "m") << id;
        EXPECT_TRUE(table.SetProperty(entity, id, 0.5)) << id;
        EXPECT_TRUE(table.HasProperty(entity, id)) << id;
        double value = 0.0;
        EXPECT_TRUE(table.GetProperty(entity, id, &value)) << id;
        EXPECT_EQ(value, 0.5) << id;
        EXPECT_EQ(table.GetProperties(entity), flat().vcIEntityGetProperties(entity)) << id;
        EXPECT_TRUE(table.RemoveProperty(entity, id)) << id;
        EXPECT_FALSE(table.HasProperty(entity, id)) << id;
    }
}

TEST_F(PropertySetSlots, slots_0_and_1_give_the_meta_string_and_the_size)
{
    vcIEntity* const entity = flat().vcINodeGetEntity(node(0));
    vcIPropertySet* const properties = flat().vcIEntityGetProperties(entity);
    const PropertySetTable& table = tableOf<PropertySetTable>(properties);
    flat().vcIEntitySetMeta(entity, "tank");
    EXPECT_STREQ(table.GetMeta(properties), "tank");
    EXPECT_STREQ(flat().vcIPropertySetGetMeta(properties), "tank");
    EXPECT_EQ(table.GetSize(properties), 7);  // id, x, y, z, mode, pressure, constraint
    EXPECT_EQ(flat().vcIPropertySetGetSize(properties), 7);
}

TEST_F(PropertySetSlots, slots_2_to_6_list_ids_values_names_texts_and_positions)
{
    vcIPropertySet* const properties = flat().vcIEntityGetProperties(flat().vcINodeGetEntity(node(0)));
    const PropertySetTable& table = tableOf<PropertySetTable>(properties);
    const int index = indexOf(properties, TAVELL_NODE_PRESSURE);
    const auto position = static_cast<std::size_t>(index);
    EXPECT_EQ(table.GetProp(properties, position), TAVELL_NODE_PRESSURE);
    EXPECT_EQ(flat().vcIPropertySetGetProp(properties, index), TAVELL_NODE_PRESSURE);
    EXPECT_EQ(table.GetValue(properties, position), 300e3);
    EXPECT_EQ(flat().vcIPropertySetGetValue(properties, index), 300e3);
    EXPECT_STREQ(table.GetName(properties, position), "node_pressure");
    EXPECT_STREQ(flat().vcIPropertySetGetName(properties, index), "node_pressure");
    EXPECT_STREQ(table.GetStringValue(properties, position), "300000");
    EXPECT_STREQ(flat().vcIPropertySetGetStringValue(properties, index), "300000");
    EXPECT_EQ(table.GetIndex(properties, TAVELL_NODE_PRESSURE), index);
    EXPECT_EQ(table.GetIndex(properties, TAVELL_NODE_VELOCITY), -1);
}

TEST_F(PropertySetSlots, slot_7_stores_text_by_name)
{
    vcIEntity* const entity = flat().vcINodeGetEntity(node(0));
    vcIPropertySet* const properties = flat().vcIEntityGetProperties(entity);
    const PropertySetTable& table = tableOf<PropertySetTable>(properties);
    EXPECT_TRUE(table.SetStringPropertyByName(properties, "node_velocity", "2.5 m/s"));
    EXPECT_EQ(propertyOf(entity, TAVELL_NODE_VELOCITY), 2.5);
    EXPECT_EQ(flat().vcIPropertySetSetStringPropertyByName(properties, "node_velocity", "3.5"), 1);
    EXPECT_EQ(propertyOf(entity, TAVELL_NODE_VELOCITY), 3.5);
    EXPECT_FALSE(table.SetStringPropertyByName(properties, "node_colour", "1"));
    EXPECT_FALSE(table.SetStringPropertyByName(properties, "node_velocity", nullptr));
}

TEST_F(FluidSlots, slots_0_and_1_give_the_entity)
{
    vcIFluid* const fluid = flat().vcICircuitGetFluid(m_circuit);
    const FluidTable& table = tableOf<FluidTable>(fluid);
    EXPECT_EQ(table.GetEntity(fluid), flat().vcIFluidGetEntity(fluid));
    EXPECT_EQ(table.GetEntityConst(fluid), flat().vcIFluidGetEntity(fluid));
    EXPECT_EQ(flat().vcIFluidGetEntityConst(fluid), flat().vcIFluidGetEntity(fluid));
    EXPECT_EQ(propertyOf(table.GetEntity(fluid), TAVELL_FLUID_SPECIFIC_HEAT), 4179.0);
}

TEST_F(FluidSlots, slots_2_and_3_read_and_set_the_display_name)
{
    vcIFluid* const fluid = flat().vcICircuitGetFluid(m_circuit);
    const FluidTable& table = tableOf<FluidTable>(fluid);
    EXPECT_STREQ(table.GetUIName(fluid), "Water");
    table.SetUIName(fluid, "Brine");
    EXPECT_STREQ(flat().vcIFluidGetUIName(fluid), "Brine");
    flat().vcIFluidSetUIName(fluid, nullptr);
    EXPECT_STREQ(table.GetUIName(fluid), "");
}

TEST_F(FluidSlots, slot_4_sets_a_fluid_property_in_single_precision)
{
    vcIFluid* const fluid = flat().vcICircuitGetFluid(m_circuit);
    const FluidTable& table = tableOf<FluidTable>(fluid);
    EXPECT_FALSE(table.SetFluidProperty(fluid, TAVELL_FLUID_DENSITY, 997.4f));  // water's own density
    EXPECT_TRUE(table.SetFluidProperty(fluid, TAVELL_FLUID_DENSITY, 0.1f));
    EXPECT_EQ(propertyOf(fluidEntity(), TAVELL_FLUID_DENSITY), static_cast<double>(0.1f));
    EXPECT_FALSE(table.SetFluidProperty(fluid, 3999, 1.0f));
    EXPECT_FALSE(table.SetFluidProperty(fluid, 4008, 1.0f));
    EXPECT_EQ(flat().vcIEntityHasProperty(fluidEntity(), 4008), 0);
}

TEST_F(FeedbackSlots, the_collection_gives_its_size_and_its_messages)
{
    vcIFeedbackCollection* const feedback = flat().vcICircuitGetFeedback(m_circuit);
    const FeedbackCollectionTable& table = tableOf<FeedbackCollectionTable>(feedback);
    EXPECT_EQ(table.GetSize(feedback), 0u);
    EXPECT_EQ(table.GetFeedback(feedback, 0), nullptr);

    EXPECT_EQ(flat().vcICircuitSolve(m_circuit, 0, stopAtOnce), 0);
    const std::size_t size = table.GetSize(feedback);
    ASSERT_GT(size, 0u);
    EXPECT_EQ(flat().vcIFeedbackCollectionGetSize(feedback), size);
    for (std::size_t i = 0; i < size; ++i) {
        EXPECT_NE(table.GetFeedback(feedback, i), nullptr);
        EXPECT_EQ(table.GetFeedback(feedback, i),
                  flat().vcIFeedbackCollectionGetFeedback(feedback, static_cast<int>(i)));
    }
    EXPECT_EQ(table.GetFeedback(feedback, size), nullptr);
}

TEST_F(FeedbackSlots, a_message_gives_its_id_its_size_and_its_values)
{
    // An end that names no node is told with the id that it names.
    flat().vcIEntitySetProperty(flat().vcIElementGetEntity(element(1)), TAVELL_ELEMENT_END, 77.0);
    EXPECT_EQ(flat().vcICircuitSolve(m_circuit, 0, nullptr), 0);
    vcIFeedbackCollection* const feedback = flat().vcICircuitGetFeedback(m_circuit);
    vcIFeedback* const message = flat().vcIFeedbackCollectionGetFeedback(feedback, 0);
    ASSERT_NE(message, nullptr);

    const FeedbackTable& table = tableOf<FeedbackTable>(message);
    EXPECT_EQ(table.GetId(message), TAVELL_FEEDBACK_NODE_MISSING);
    EXPECT_EQ(flat().vcIFeedbackGetId(message), TAVELL_FEEDBACK_NODE_MISSING);
    ASSERT_GE(table.GetValueSize(message), 1u);
    EXPECT_EQ(table.GetValueSize(message), flat().vcIFeedbackGetValueSize(message));
    ASSERT_NE(table.GetValues(message), nullptr);
    EXPECT_EQ(table.GetValues(message), flat().vcIFeedbackGetValues(message));
    EXPECT_EQ(table.GetValues(message)[0], 77.0);
}

TEST_F(ResultsSetSlots, slots_0_to_4_give_size_ids_values_display_values_and_kind)
{
    solve();
    vcIResultsSet* const pressures = flat().vcICircuitGetResults(m_circuit, TAVELL_RESULT_PRESSURE);
    vcIResultsSet* const flows = flat().vcICircuitGetResults(m_circuit, TAVELL_RESULT_MASS_FLOW);
    ASSERT_NE(pressures, nullptr);
    ASSERT_NE(flows, nullptr);
    const ResultsSetTable& table = tableOf<ResultsSetTable>(pressures);

    EXPECT_EQ(table.GetSize(pressures), 4u);
    EXPECT_EQ(flat().vcIResultsSetGetSize(flows), 3u);
    EXPECT_EQ(table.GetIds(pressures), flat().vcIResultsSetGetIds(pressures));
    EXPECT_EQ(table.GetIds(pressures)[3], 4);
    EXPECT_EQ(table.GetValues(pressures), flat().vcIResultsSetGetValues(pressures));
    EXPECT_DOUBLE_EQ(table.GetValues(pressures)[0], 300e3);  // the boundary values
    EXPECT_DOUBLE_EQ(table.GetValues(pressures)[3], 200e3);

    const double* const inKilopascal = table.GetL10NValues(pressures, 0.001, 2.0);
    ASSERT_NE(inKilopascal, nullptr);
    EXPECT_EQ(inKilopascal, flat().vcIResultsSetGetL10NValues(pressures, 0.001, 2.0));
    EXPECT_EQ(inKilopascal[0], table.GetValues(pressures)[0] * 0.001 + 2.0);

    EXPECT_TRUE(table.IsNodal(pressures));
    EXPECT_FALSE(table.IsNodal(flows));
    EXPECT_EQ(flat().vcIResultsSetIsNodal(pressures), 1);
    EXPECT_EQ(flat().vcIResultsSetIsNodal(flows), 0);
}

TEST_F(ResultsExporterOptionsSlots, slots_0_to_5_set_and_read_the_format_and_the_id_labels)
{
    vcIResultsExporterOptions* const options = flat().vcICircuitGetResultsExporterOptions(m_circuit);
    const ResultsExporterOptionsTable& table = tableOf<ResultsExporterOptionsTable>(options);
    table.SetFormat(options, 3);
    EXPECT_EQ(flat().vcIResultsExporterOptionsGetFormat(options), 3);
    flat().vcIResultsExporterOptionsSetFormat(options, 4);
    EXPECT_EQ(table.GetFormat(options), 4);

    table.SetNodeLabel(options, "node");
    EXPECT_STREQ(flat().vcIResultsExporterOptionsGetNodeLabel(options), "node");
    flat().vcIResultsExporterOptionsSetNodeLabel(options, "knot");
    EXPECT_STREQ(table.GetNodeLabel(options), "knot");

    table.SetElementLabel(options, "element");
    EXPECT_STREQ(flat().vcIResultsExporterOptionsGetElementLabel(options), "element");
    flat().vcIResultsExporterOptionsSetElementLabel(options, "branch");
    EXPECT_STREQ(table.GetElementLabel(options), "branch");
    EXPECT_STREQ(table.GetNodeLabel(options), "knot");
}

TEST_F(ResultsExporterOptionsSlots, slots_6_to_11_set_and_read_result_labels_display_units_and_digits)
{
    vcIResultsExporterOptions* const options = flat().vcICircuitGetResultsExporterOptions(m_circuit);
    const ResultsExporterOptionsTable& table = tableOf<ResultsExporterOptionsTable>(options);
    table.SetResultLabel(options, TAVELL_RESULT_PRESSURE, "p [kPa]");
    EXPECT_STREQ(flat().vcIResultsExporterOptionsGetResultLabel(options, TAVELL_RESULT_PRESSURE), "p [kPa]");
    flat().vcIResultsExporterOptionsSetResultLabel(options, TAVELL_RESULT_VELOCITY, "v");
    EXPECT_STREQ(table.GetResultLabel(options, TAVELL_RESULT_VELOCITY), "v");
    EXPECT_STREQ(table.GetResultLabel(options, TAVELL_RESULT_REYNOLDS), "");

    double scale = 5.0, offset = 6.0;
    table.GetL10n(options, TAVELL_RESULT_PRESSURE, scale, offset);
    EXPECT_EQ(scale, 5.0);
    EXPECT_EQ(offset, 6.0);
    table.SetL10n(options, TAVELL_RESULT_PRESSURE, 0.001, 2.0);
    flat().vcIResultsExporterOptionsGetL10n(options, TAVELL_RESULT_PRESSURE, &scale, &offset);
    EXPECT_EQ(scale, 0.001);
    EXPECT_EQ(offset, 2.0);
    flat().vcIResultsExporterOptionsSetL10n(options, TAVELL_RESULT_PRESSURE, 0.01, 3.0);
    table.GetL10n(options, TAVELL_RESULT_PRESSURE, scale, offset);
    EXPECT_EQ(scale, 0.01);
    EXPECT_EQ(offset, 3.0);

    EXPECT_EQ(table.GetPrecision(options), 17);
    table.SetPrecision(options, 5);
    EXPECT_EQ(flat().vcIResultsExporterOptionsGetPrecision(options), 5);
    flat().vcIResultsExporterOptionsSetPrecision(options, 6);
    EXPECT_EQ(table.GetPrecision(options), 6);
}
