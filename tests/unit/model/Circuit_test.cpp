// Circuit_test.cpp: a circuit as a container.
#include "model/Circuit.h"

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

class CircuitTest : public Model
{
protected:
    Node& a = newNode(circuit, 0.0);
    Node& b = newNode(circuit, 1.0);
    const std::vector<double> flows = {0.0, 0.001, 0.002, 0.003};
    const std::vector<double> rises = {4e5, 3e5, 2e5, 1e5};

    Element* pipeOf(double diameter, double area)
    {
        return static_cast<Element*>(circuit.CreateElement(&a, &b, diameter, area, 0.5, 3, 20.0));
    }
};

/// Ids that an object stores, in order.
std::vector<int> storedIds(Entity& entity)
{
    std::vector<int> ids;
    IPropertySet* set = entity.GetProperties();
    ids.reserve(static_cast<std::size_t>(set->GetSize()));
    for (int i = 0; i < set->GetSize(); ++i)
        ids.push_back(set->GetProp(static_cast<std::size_t>(i)));
    return ids;
}

}  // namespace

TEST_F(CircuitTest, a_new_circuit_is_empty_with_gravity_down_the_z_axis)
{
    Circuit& fresh = newCircuit();
    double x = 9.0;
    double y = 9.0;
    double z = 9.0;
    fresh.GetGravity(&x, &y, &z);
    EXPECT_EQ(x, 0.0);
    EXPECT_EQ(y, 0.0);
    EXPECT_EQ(z, -1.0);
    EXPECT_EQ(fresh.number(3003), 1.0);
    EXPECT_EQ(storedIds(fresh), (std::vector<int>{3000, 3001, 3002, 3003, 3004, 3005}));
    EXPECT_EQ(fresh.GetNoNodes(), 0U);
    EXPECT_EQ(fresh.GetNoElements(), 0U);
    EXPECT_TRUE(fresh.GetCheckNodeIdTaken());
    EXPECT_TRUE(fresh.GetCheckDuplicateElementAtNodes());
    EXPECT_FALSE(fresh.hasResults());
    EXPECT_STREQ(fresh.GetMeta(), "");
}

TEST_F(CircuitTest, the_fluid_is_one_object_const_or_not)
{
    EXPECT_EQ(circuit.GetFluid(), &circuit.fluid());
    EXPECT_EQ(circuit.GetConstFluid(), circuit.GetFluid());
}

TEST_F(CircuitTest, its_entity_is_the_same_pointer_const_or_not)
{
    EXPECT_NE(circuit.GetEntity(), nullptr);
    EXPECT_EQ(circuit.GetEntity(), circuit.GetEntityConst());
}

TEST_F(CircuitTest, feedback_and_export_settings_are_always_there)
{
    EXPECT_NE(circuit.GetFeedback(), nullptr);
    EXPECT_EQ(circuit.GetFeedback(), &circuit.feedback());
    EXPECT_NE(circuit.GetResultsExporterOptions(), nullptr);
}

TEST_F(CircuitTest, removed_components_of_gravity_read_zero)
{
    circuit.RemoveProperty(3002);
    double x = 9.0;
    double y = 9.0;
    double z = 9.0;
    circuit.GetGravity(&x, &y, &z);
    EXPECT_EQ(z, 0.0);
}

TEST_F(CircuitTest, gravity_drops_the_results_when_it_changes)
{
    pretendResults(circuit);
    circuit.SetGravity(0.0, 0.0, -1.0);
    EXPECT_TRUE(circuit.hasResults());
    circuit.SetGravity(0.0, 1.0, -1.0);
    EXPECT_TRUE(tookResults(circuit));
    EXPECT_EQ(circuit.number(3001), 1.0);
}

TEST_F(CircuitTest, node_ids_count_from_1)
{
    EXPECT_EQ(a.GetId(), 1);
    EXPECT_EQ(b.GetId(), 2);
}

TEST_F(CircuitTest, a_new_node_skips_an_id_in_use_when_the_check_is_on)
{
    b.SetProperty(2000, 3.0);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 4);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 5);
}

TEST_F(CircuitTest, a_new_node_takes_an_id_in_use_when_the_check_is_off)
{
    b.SetProperty(2000, 3.0);
    circuit.SetCheckNodeIdTaken(false);
    EXPECT_FALSE(circuit.GetCheckNodeIdTaken());
    EXPECT_EQ(circuit.CreateNode()->GetId(), 3);
}

TEST_F(CircuitTest, ids_of_released_objects_are_not_given_out_again)
{
    newPipe(circuit, a, b);
    circuit.ReleaseElement(circuit.GetElement(0));
    circuit.ReleaseNode(&b);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 3);
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 2);
}

TEST_F(CircuitTest, an_unreadable_node_id_makes_creation_throw_and_changes_nothing)
{
    storeText(a, "node_id", "first");
    pretendResults(circuit);
    EXPECT_THROW(circuit.CreateNode(), std::invalid_argument);
    EXPECT_EQ(circuit.GetNoNodes(), 2U);
    EXPECT_TRUE(circuit.hasResults());
    circuit.SetCheckNodeIdTaken(false);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 3) << "no id was consumed";
}

TEST_F(CircuitTest, an_empty_element_is_a_pipe_without_nodes)
{
    Element& element = *static_cast<Element*>(circuit.CreateEmptyElement());
    EXPECT_EQ(storedIds(element), (std::vector<int>{1000, 1008, 1013, 1014}));
    EXPECT_EQ(element.GetId(), 1);
    EXPECT_EQ(element.GetType(), 0);
    EXPECT_EQ(element.number(1013), 2.0);
    EXPECT_EQ(element.number(1014), 0.0);
    EXPECT_EQ(circuit.GetElementNode(&element, 0), nullptr);
    EXPECT_EQ(circuit.GetElement(0), &element);
}

TEST_F(CircuitTest, a_round_pipe_stores_its_values)
{
    Element& pipe = *pipeOf(0.1, 0.02);
    EXPECT_EQ(storedIds(pipe),
              (std::vector<int>{1000, 1001, 1002, 1003, 1004, 1005, 1008, 1012, 1013, 1014, 1015}));
    EXPECT_EQ(pipe.number(1000), 1.0);
    EXPECT_EQ(pipe.number(1001), 1.0);
    EXPECT_EQ(pipe.number(1002), 2.0);
    EXPECT_EQ(pipe.number(1003), 0.1);
    EXPECT_EQ(pipe.number(1004), 0.02);
    EXPECT_EQ(pipe.number(1005), 0.0);
    EXPECT_EQ(pipe.number(1008), 0.0);
    EXPECT_EQ(pipe.number(1012), 0.5);
    EXPECT_EQ(pipe.number(1013), 3.0);
    EXPECT_EQ(pipe.number(1014), 20.0);
    EXPECT_EQ(pipe.number(1015), std::acos(-1.0) * 0.1);
}

TEST_F(CircuitTest, sizes_must_not_be_zero_or_negative_but_may_be_no_number)
{
    EXPECT_EQ(pipeOf(0.0, 0.02), nullptr);
    EXPECT_EQ(pipeOf(-1.0, 0.02), nullptr);
    EXPECT_EQ(pipeOf(0.1, 0.0), nullptr);
    EXPECT_EQ(pipeOf(0.1, -0.02), nullptr);
    EXPECT_EQ(circuit.GetNoElements(), 0U);
    EXPECT_NE(pipeOf(kNan, kNan), nullptr);
    EXPECT_EQ(circuit.GetElement(0)->GetId(), 1) << "refusals consume no id";
}

TEST_F(CircuitTest, a_pipe_of_any_section_has_the_hydraulic_diameter)
{
    auto* pipe = static_cast<Element*>(circuit.CreateNonRoundElement(&a, &b, 4.0, 1.0, 0.5, 3, 20.0));
    ASSERT_NE(pipe, nullptr);
    EXPECT_EQ(pipe->number(1003), 1.0);
    EXPECT_EQ(pipe->number(1004), 1.0);
    EXPECT_EQ(pipe->number(1015), 4.0);
    EXPECT_EQ(pipe->number(1012), 0.5);
    EXPECT_EQ(pipe->number(1013), 3.0);
    EXPECT_EQ(pipe->number(1014), 20.0);
}

TEST_F(CircuitTest, a_pipe_of_any_section_needs_sizes_that_are_not_zero_or_negative)
{
    EXPECT_EQ(circuit.CreateNonRoundElement(&a, &b, 0.0, 1.0, 0.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.CreateNonRoundElement(&a, &b, 1.0, -1.0, 0.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.CreateNonRoundElement(&a, &a, 1.0, 1.0, 0.0, 2, 0.0), nullptr);
    EXPECT_NE(circuit.CreateNonRoundElement(&a, &b, kNan, 1.0, 0.0, 2, 0.0), nullptr);
}

TEST_F(CircuitTest, a_pump_and_a_loss_store_their_curve_and_no_section)
{
    for (const int type : {1, 2}) {
        auto* element = static_cast<Element*>(
            type == 1 ? circuit.CreatePump(&a, &b, flows.data(), rises.data(), 4, 998.0, 2, 7.0)
                      : circuit.CreateLoss(&b, &a, flows.data(), rises.data(), 4, 998.0, 2, 7.0));
        ASSERT_NE(element, nullptr);
        EXPECT_EQ(element->GetType(), type);
        EXPECT_EQ(storedIds(*element),
                  (std::vector<int>{1000, 1001, 1002, 1008, 1009, 1010, 1011, 1013, 1014}));
        EXPECT_EQ(element->number(1009), 998.0);
        EXPECT_EQ(element->number(1014), 7.0);
        EXPECT_EQ(storedText(*element, 1010), "0,0.001,0.002,0.003,");
        EXPECT_EQ(storedText(*element, 1011), "400000,300000,200000,100000,");
    }
}

TEST_F(CircuitTest, a_pump_needs_both_arrays_and_four_points)
{
    EXPECT_EQ(circuit.CreatePump(&a, &b, flows.data(), rises.data(), 3, 998.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.CreatePump(&a, &b, nullptr, rises.data(), 4, 998.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.CreateLoss(&a, &b, flows.data(), nullptr, 4, 998.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.CreateLoss(&a, &a, flows.data(), rises.data(), 4, 998.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.GetNoElements(), 0U);
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 1);
}

TEST_F(CircuitTest, an_element_needs_two_ids)
{
    EXPECT_EQ(newPipe(circuit, a, a), nullptr);
    b.SetProperty(2000, 1.0);
    EXPECT_EQ(newPipe(circuit, a, b), nullptr);
}

TEST_F(CircuitTest, an_element_needs_two_places)
{
    Node& c = newNode(circuit, 0.0);
    EXPECT_EQ(newPipe(circuit, a, c), nullptr) << "both at the origin";
    c.SetLocation(4e-14, -4e-14, 1e-14);
    EXPECT_EQ(newPipe(circuit, a, c), nullptr) << "9e-14 apart along the axes";
    c.SetLocation(9.9999998245166e-14, 0.0, 0.0);
    EXPECT_EQ(newPipe(circuit, a, c), nullptr);
    c.SetLocation(9.9999998245168e-14, 0.0, 0.0);
    EXPECT_NE(newPipe(circuit, a, c), nullptr) << "just beyond 1e-13 in single precision";
}

TEST_F(CircuitTest, ends_may_be_apart_along_any_one_axis)
{
    EXPECT_NE(newPipe(circuit, newNode(circuit, 1.0), newNode(circuit, 2.0)), nullptr);
    EXPECT_NE(newPipe(circuit, newNode(circuit, 1.0, 3.0), newNode(circuit, 1.0, 4.0)), nullptr);
    EXPECT_NE(newPipe(circuit, newNode(circuit, 1.0, 3.0, 5.0), newNode(circuit, 1.0, 3.0, 6.0)), nullptr);
}

TEST_F(CircuitTest, places_that_are_no_numbers_do_not_coincide)
{
    a.SetLocation(kNan, 0.0, 0.0);
    EXPECT_NE(newPipe(circuit, a, b), nullptr);
    a.SetLocation(kInfinity, 0.0, 0.0);
    b.SetLocation(kInfinity, 0.0, 0.0);
    EXPECT_NE(newPipe(circuit, b, a), nullptr);
}

TEST_F(CircuitTest, nodes_of_another_circuit_and_pointers_to_no_node_are_refused)
{
    Node& foreign = newNode(newCircuit(), 5.0);
    foreign.SetProperty(2000, 77.0);
    EXPECT_EQ(newPipe(circuit, a, foreign), nullptr);
    EXPECT_EQ(newPipe(circuit, foreign, a), nullptr);
    EXPECT_EQ(circuit.CreateElement(nullptr, &b, 0.1, 0.1, 0.0, 2, 0.0), nullptr);
    EXPECT_EQ(circuit.CreateElement(&a, nullptr, 0.1, 0.1, 0.0, 2, 0.0), nullptr);
    circuit.ReleaseNode(&b);
    EXPECT_EQ(circuit.CreateElement(&a, &b, 0.1, 0.1, 0.0, 2, 0.0), nullptr) << "b is gone";
}

TEST_F(CircuitTest, a_second_element_in_the_same_direction_is_refused_while_the_check_is_on)
{
    EXPECT_NE(newPipe(circuit, a, b), nullptr);
    EXPECT_EQ(newPipe(circuit, a, b), nullptr);
    EXPECT_NE(newPipe(circuit, b, a), nullptr) << "the other direction is free";
    EXPECT_EQ(circuit.CreatePump(&b, &a, flows.data(), rises.data(), 4, 998.0, 2, 0.0), nullptr);
    circuit.SetCheckDuplicateElementAtNodes(false);
    EXPECT_FALSE(circuit.GetCheckDuplicateElementAtNodes());
    EXPECT_NE(newPipe(circuit, a, b), nullptr);
    EXPECT_NE(newPipe(circuit, b, a), nullptr);
}

TEST_F(CircuitTest, the_duplicate_check_sees_ends_that_were_changed_without_notice)
{
    Element& pipe = *newPipe(circuit, a, b);
    storeText(pipe, "element_end", "9");
    EXPECT_NE(newPipe(circuit, a, b), nullptr);
    pipe.SetProperty(1002, 2.5);
    EXPECT_EQ(newPipe(circuit, a, b), nullptr);
}

TEST_F(CircuitTest, a_refused_or_throwing_creation_changes_nothing)
{
    storeText(*newPipe(circuit, a, b), "element_start", "here");
    pretendResults(circuit);
    EXPECT_EQ(newPipe(circuit, a, a), nullptr);
    EXPECT_THROW(newPipe(circuit, a, b), std::invalid_argument);
    storeText(b, "node_y", "1e999");
    EXPECT_THROW(newPipe(circuit, a, b), std::out_of_range);
    storeText(b, "node_id", "b");
    EXPECT_THROW(newPipe(circuit, a, b), std::invalid_argument);
    EXPECT_EQ(circuit.GetNoElements(), 1U);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 2);
}

TEST_F(CircuitTest, releasing_a_node_leaves_its_elements_and_the_order_of_the_others)
{
    Node& c = newNode(circuit, 2.0);
    Element& pipe = *newPipe(circuit, a, b);
    EXPECT_TRUE(circuit.ReleaseNode(&b));
    EXPECT_EQ(circuit.GetNoNodes(), 2U);
    EXPECT_EQ(circuit.GetNode(0), &a);
    EXPECT_EQ(circuit.GetNode(1), &c);
    EXPECT_EQ(pipe.GetEndNodeId(), 2);
    EXPECT_EQ(circuit.GetElementNode(&pipe, 0), &a);
    EXPECT_EQ(circuit.GetElementNode(&pipe, 1), nullptr);
}

TEST_F(CircuitTest, only_own_objects_can_be_released_and_only_once)
{
    Element& pipe = *newPipe(circuit, a, b);
    Circuit& other = newCircuit();
    EXPECT_FALSE(other.ReleaseNode(&a));
    EXPECT_FALSE(other.ReleaseElement(&pipe));
    EXPECT_FALSE(circuit.ReleaseNode(nullptr));
    EXPECT_FALSE(circuit.ReleaseElement(nullptr));
    EXPECT_TRUE(circuit.ReleaseElement(&pipe));
    EXPECT_FALSE(circuit.ReleaseElement(&pipe));
    EXPECT_TRUE(circuit.ReleaseNode(&a));
    EXPECT_FALSE(circuit.ReleaseNode(&a));
}

TEST_F(CircuitTest, positions_out_of_range_are_null)
{
    EXPECT_EQ(circuit.GetNode(2), nullptr);
    EXPECT_EQ(circuit.GetNode(static_cast<std::size_t>(-1)), nullptr);
    EXPECT_EQ(circuit.GetElement(0), nullptr);
}

TEST_F(CircuitTest, the_node_of_an_element_is_the_start_for_0_and_the_end_for_anything_else)
{
    Element& pipe = *newPipe(circuit, a, b);
    EXPECT_EQ(circuit.GetElementNode(&pipe, 0), &a);
    EXPECT_EQ(circuit.GetElementNode(&pipe, 1), &b);
    EXPECT_EQ(circuit.GetElementNode(&pipe, 2), &b);
    EXPECT_EQ(circuit.GetElementNode(&pipe, static_cast<std::size_t>(-1)), &b);
    EXPECT_EQ(circuit.GetElementNode(nullptr, 0), nullptr);
}

TEST_F(CircuitTest, an_element_of_another_circuit_is_asked_for_its_ids_only)
{
    Circuit& other = newCircuit();
    Element& pipe = *newPipe(other, 0.0, 1.0);
    EXPECT_EQ(circuit.GetElementNode(&pipe, 0), &a);
}

TEST_F(CircuitTest, nodes_are_found_by_id)
{
    EXPECT_EQ(circuit.GetNodeById(1), &a);
    EXPECT_EQ(circuit.GetNodeById(2), &b);
    EXPECT_EQ(circuit.GetNodeById(3), nullptr);
    EXPECT_EQ(circuit.GetNodeById(0), nullptr);
    EXPECT_EQ(circuit.GetNodeById(-1), nullptr);
}

TEST_F(CircuitTest, building_and_releasing_drop_the_results)
{
    pretendResults(circuit);
    Node& c = newNode(circuit, 2.0);
    EXPECT_TRUE(tookResults(circuit));
    Element& pipe = *newPipe(circuit, a, b);
    EXPECT_TRUE(tookResults(circuit));
    circuit.CreateEmptyElement();
    EXPECT_TRUE(tookResults(circuit));
    circuit.CreatePump(&b, &a, flows.data(), rises.data(), 4, 998.0, 2, 0.0);
    EXPECT_TRUE(tookResults(circuit));
    circuit.ReleaseElement(&pipe);
    EXPECT_TRUE(tookResults(circuit));
    circuit.ReleaseNode(&c);
    EXPECT_TRUE(tookResults(circuit));
    circuit.ReleaseNode(nullptr);
    circuit.SetCheckNodeIdTaken(false);
    circuit.SetCheckDuplicateElementAtNodes(false);
    EXPECT_TRUE(circuit.hasResults());
}

TEST_F(CircuitTest, a_path_for_a_solve_log_leaves_everything_as_it_is)
{
    pretendResults(circuit);
    circuit.SetSolveLogFile("solve.log");
    circuit.SetSolveLogFile(nullptr);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(storedIds(circuit).size(), 6U);
    EXPECT_STREQ(circuit.GetMeta(), "");
}

TEST_F(CircuitTest, the_time_stamp_is_date_point_time)
{
    std::string shape = circuit.TimeStamp();
    for (char& c : shape)
        if (c >= '0' && c <= '9') c = '9';
    EXPECT_EQ(shape, "9999-99-99.99:99:99") << "the form of the C locale, which the tests run in";
}

TEST_F(CircuitTest, mending_takes_ids_that_are_not_in_use_and_never_the_same_again)
{
    EXPECT_EQ(circuit.takeNodeId({3, 4}), 5);
    EXPECT_EQ(circuit.takeNodeId({}), 6);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 7);
    EXPECT_EQ(circuit.takeElementId({1}), 2);
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 3);
}

TEST_F(CircuitTest, rolling_back_takes_additions_away_and_brings_results_and_counters_back)
{
    pretendResults(circuit);
    IResultsSet* results = &circuit.results().begin()->second;
    Circuit::Checkpoint before = circuit.checkpoint();
    EXPECT_FALSE(circuit.hasGrownSince(before));
    Node& c = newNode(circuit, 2.0);
    newPipe(circuit, a, c);
    EXPECT_TRUE(circuit.hasGrownSince(before));
    circuit.rollBack(std::move(before));
    EXPECT_EQ(circuit.GetNoNodes(), 2U);
    EXPECT_EQ(circuit.GetNoElements(), 0U);
    EXPECT_TRUE(circuit.hasResults());
    EXPECT_EQ(&circuit.results().begin()->second, results);
    EXPECT_EQ(circuit.CreateNode()->GetId(), 3);
    EXPECT_EQ(circuit.CreateEmptyElement()->GetId(), 1);
}
