// Element_test.cpp: typed access to the properties of an element; its curve.
#include "model/Element.h"

#include <stdexcept>
#include <vector>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

class ElementTest : public Model
{
protected:
    Node& a = newNode(circuit, 0.0);
    Node& b = newNode(circuit, 1.0);
    Element& pipe = *newPipe(circuit, a, b);
    const std::vector<double> flows = {0.0, 0.001, 0.00123456789, 0.0025, 12.0};
    const std::vector<double> rises = {5e5, 4e5, 123456.789, 1e5, 0.0};

    Element& newPump()
    {
        return *static_cast<Element*>(
            circuit.CreatePump(&b, &a, flows.data(), rises.data(), 5, 998.0, 2, 0.0));
    }
};

}  // namespace

TEST_F(ElementTest, typed_values_and_properties_are_the_same)
{
    EXPECT_EQ(pipe.GetId(), 1);
    EXPECT_EQ(pipe.GetType(), 0);
    EXPECT_EQ(pipe.GetStartNodeId(), 1);
    EXPECT_EQ(pipe.GetEndNodeId(), 2);
    pipe.SetProperty(1001, 7.9);
    pipe.SetProperty(1008, 4.5);
    EXPECT_EQ(pipe.GetStartNodeId(), 7);
    EXPECT_EQ(pipe.GetType(), 4);
}

TEST_F(ElementTest, absent_values_read_zero)
{
    for (int id = 1000; id <= 1026; ++id)
        pipe.RemoveProperty(id);
    EXPECT_EQ(pipe.GetId(), 0);
    EXPECT_EQ(pipe.GetType(), 0);
    EXPECT_EQ(pipe.GetStartNodeId(), 0);
    EXPECT_EQ(pipe.GetEndNodeId(), 0);
}

TEST_F(ElementTest, any_type_is_accepted_and_touches_nothing_else)
{
    const int before = pipe.GetProperties()->GetSize();
    for (const int type : {3, 9, 42, -1, 0}) {
        pipe.SetType(type);
        EXPECT_EQ(pipe.GetType(), type);
    }
    EXPECT_EQ(pipe.GetProperties()->GetSize(), before);
}

TEST_F(ElementTest, swapping_exchanges_the_ends_and_swapping_twice_restores_them)
{
    pipe.SwapNodes();
    EXPECT_EQ(pipe.GetStartNodeId(), 2);
    EXPECT_EQ(pipe.GetEndNodeId(), 1);
    EXPECT_EQ(pipe.number(1003), 0.1);
    pipe.SwapNodes();
    EXPECT_EQ(pipe.GetStartNodeId(), 1);
    EXPECT_EQ(pipe.GetEndNodeId(), 2);
}

TEST_F(ElementTest, swapping_with_an_unreadable_end_throws_and_changes_nothing)
{
    storeText(pipe, "element_end", "there");
    EXPECT_THROW(pipe.SwapNodes(), std::invalid_argument);
    EXPECT_EQ(pipe.GetStartNodeId(), 1);
    EXPECT_EQ(storedText(pipe, 1002), "there");
}

TEST_F(ElementTest, a_curve_is_refused_for_other_types_null_arrays_and_fewer_than_four_points)
{
    const double* f = flows.data();
    const double* p = rises.data();
    pretendResults(circuit);
    EXPECT_FALSE(pipe.UpdateCurveData(0, f, p, 5, 998.0));
    EXPECT_FALSE(pipe.UpdateCurveData(3, f, p, 5, 998.0));
    EXPECT_FALSE(pipe.UpdateCurveData(1, nullptr, p, 5, 998.0));
    EXPECT_FALSE(pipe.UpdateCurveData(1, f, nullptr, 5, 998.0));
    EXPECT_FALSE(pipe.UpdateCurveData(1, f, p, 3, 998.0));
    EXPECT_FALSE(pipe.UpdateCurveData(2, f, p, -4, 998.0));
    EXPECT_EQ(pipe.GetType(), 0);
    EXPECT_FALSE(pipe.HasProperty(1009));
    EXPECT_FALSE(pipe.HasProperty(1010));
    EXPECT_TRUE(circuit.hasResults());
}

TEST_F(ElementTest, a_curve_turns_a_pipe_into_a_pump_or_a_loss)
{
    EXPECT_TRUE(pipe.UpdateCurveData(1, flows.data(), rises.data(), 4, 998.0));
    EXPECT_EQ(pipe.GetType(), 1);
    EXPECT_EQ(pipe.number(1009), 998.0);
    EXPECT_EQ(storedText(pipe, 1010), "0,0.001,0.00123457,0.0025,");
    EXPECT_EQ(storedText(pipe, 1011), "500000,400000,123457,100000,");
    EXPECT_TRUE(pipe.UpdateCurveData(2, flows.data(), rises.data(), 5, 900.0));
    EXPECT_EQ(pipe.GetType(), 2);
    EXPECT_EQ(storedText(pipe, 1010), "0,0.001,0.00123457,0.0025,12,");
    EXPECT_EQ(pipe.number(1003), 0.1) << "what the pipe was stays stored";
}

TEST_F(ElementTest, a_curve_set_again_drops_the_results_even_when_it_is_the_same)
{
    pipe.UpdateCurveData(1, flows.data(), rises.data(), 4, 998.0);
    pretendResults(circuit);
    pipe.UpdateCurveData(1, flows.data(), rises.data(), 4, 998.0);
    EXPECT_TRUE(tookResults(circuit));
}

TEST_F(ElementTest, a_pipe_has_no_curve)
{
    int count = 7;
    EXPECT_FALSE(pipe.GetCurveData(nullptr, nullptr, nullptr, 0, &count));
    EXPECT_EQ(count, -1);
}

TEST_F(ElementTest, too_small_a_capacity_tells_the_number_of_points_and_copies_nothing)
{
    Element& pump = newPump();
    double density = -1.0;
    std::vector<double> f(5, -1.0);
    std::vector<double> p(5, -1.0);
    int count = 0;
    EXPECT_FALSE(pump.GetCurveData(&density, f.data(), p.data(), 4, &count));
    EXPECT_EQ(count, 5);
    EXPECT_EQ(density, -1.0);
    EXPECT_EQ(f, std::vector<double>(5, -1.0));
    EXPECT_EQ(p, std::vector<double>(5, -1.0));
    EXPECT_FALSE(pump.GetCurveData(nullptr, nullptr, nullptr, 0, &count));
    EXPECT_FALSE(pump.GetCurveData(nullptr, nullptr, nullptr, -1, &count));
    EXPECT_EQ(count, 5);
}

TEST_F(ElementTest, curve_points_come_back_rounded_to_6_digits)
{
    double density = -1.0;
    std::vector<double> f(6, -1.0);
    std::vector<double> p(6, -1.0);
    int count = 0;
    EXPECT_TRUE(newPump().GetCurveData(&density, f.data(), p.data(), 6, &count));
    EXPECT_EQ(count, 5);
    EXPECT_EQ(density, 998.0);
    EXPECT_EQ(f, (std::vector<double>{0.0, 0.001, 0.00123457, 0.0025, 12.0, -1.0}));
    EXPECT_EQ(p, (std::vector<double>{5e5, 4e5, 123457.0, 1e5, 0.0, -1.0}));
}

TEST_F(ElementTest, an_absent_reference_density_is_left_untouched)
{
    Element& pump = newPump();
    pump.RemoveProperty(1009);
    double density = -1.0;
    std::vector<double> f(5);
    std::vector<double> p(5);
    int count = 0;
    EXPECT_TRUE(pump.GetCurveData(&density, f.data(), p.data(), 5, &count));
    EXPECT_EQ(density, -1.0);
}

TEST_F(ElementTest, an_absent_curve_has_no_points)
{
    Element& pump = newPump();
    pump.RemoveProperty(1010);
    int count = 7;
    EXPECT_TRUE(pump.GetCurveData(nullptr, nullptr, nullptr, 0, &count));
    EXPECT_EQ(count, 0);
}

TEST_F(ElementTest, only_as_many_pressures_as_flows_are_copied)
{
    Element& pump = newPump();
    storeText(pump, "__element_flow_rate", "1,2,");
    std::vector<double> f(3, -1.0);
    std::vector<double> p(3, -1.0);
    double density = 0.0;
    int count = 0;
    EXPECT_TRUE(pump.GetCurveData(&density, f.data(), p.data(), 3, &count));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(p, (std::vector<double>{5e5, 4e5, -1.0}));
}

TEST_F(ElementTest, a_curve_with_fewer_pressures_than_flows_is_not_handed_out)
{
    Element& pump = newPump();
    storeText(pump, "__element_pressure", "1,2,");
    std::vector<double> f(5, -1.0);
    std::vector<double> p(5, -1.0);
    double density = -1.0;
    int count = 0;
    EXPECT_FALSE(pump.GetCurveData(&density, f.data(), p.data(), 5, &count));
    EXPECT_EQ(count, 5);
    EXPECT_EQ(f, std::vector<double>(5, -1.0));
    EXPECT_EQ(p, std::vector<double>(5, -1.0));
}

TEST_F(ElementTest, a_curve_set_as_a_number_is_a_curve_of_one_point)
{
    Element& pump = newPump();
    pump.SetProperty(1010, 0.25);
    pump.SetProperty(1011, 7.0);
    double f = 0.0;
    double p = 0.0;
    double density = 0.0;
    int count = 0;
    EXPECT_TRUE(pump.GetCurveData(&density, &f, &p, 1, &count));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(f, 0.25);
    EXPECT_EQ(p, 7.0);
}

TEST_F(ElementTest, an_unreadable_curve_throws_and_writes_no_points)
{
    Element& pump = newPump();
    storeText(pump, "__element_pressure", "1,2,x,4,5,");
    std::vector<double> f(5, -1.0);
    std::vector<double> p(5, -1.0);
    double density = -1.0;
    int count = 0;
    EXPECT_THROW(pump.GetCurveData(&density, f.data(), p.data(), 5, &count), std::invalid_argument);
    EXPECT_EQ(f, std::vector<double>(5, -1.0));
    storeText(pump, "__element_flow_rate", "1,,2,");
    EXPECT_THROW(pump.GetCurveData(&density, f.data(), p.data(), 5, &count), std::invalid_argument);
}

TEST_F(ElementTest, changes_drop_the_results_and_repetitions_do_not)
{
    pretendResults(circuit);
    pipe.SetType(0);
    pipe.SetProperty(1003, 0.1);
    EXPECT_TRUE(circuit.hasResults());
    pipe.SetType(3);
    EXPECT_TRUE(tookResults(circuit));
    pipe.SwapNodes();
    EXPECT_TRUE(tookResults(circuit));
    pipe.SetProperty(1002, 2.0);
    EXPECT_TRUE(tookResults(circuit));
    pipe.SwapNodes();
    EXPECT_TRUE(circuit.hasResults()) << "both ends are 2 now";
}

TEST_F(ElementTest, its_entity_is_the_same_pointer_const_or_not)
{
    EXPECT_NE(pipe.GetEntity(), nullptr);
    EXPECT_EQ(pipe.GetEntity(), pipe.GetEntityConst());
}
