// Fluid_test.cpp: the medium of a circuit.
#include "model/Fluid.h"

#include <map>

#include "model_fixture.h"

using namespace ModelTest;

namespace
{

class FluidTest : public Model
{
protected:
    Fluid& fluid = circuit.fluid();
};

}  // namespace

// The values are those of the single-precision literals 997.4, 0.604 and so on.
TEST_F(FluidTest, a_new_fluid_is_water_with_these_exact_values)
{
    const std::map<int, double> water = {
        {4000, 294.260009765625},   {4001, 997.4000244140625},     {4002, 4179.0},
        {4003, 0.6039999723434448}, {4004, 0.0009800000116229057}, {4005, 2.8599999495781958e-05},
        {4006, 783.7999877929688},  {4007, 396.79998779296875},
    };
    EXPECT_EQ(fluid.GetProperties()->GetSize(), static_cast<int>(water.size()));
    for (const auto& [id, expected] : water) {
        double value = 0.0;
        EXPECT_TRUE(fluid.GetProperty(id, &value));
        EXPECT_EQ(value, expected) << id;
    }
    EXPECT_EQ(storedText(fluid, 4001), "997.4000244140625");
    EXPECT_STREQ(fluid.GetUIName(), "Water");
    EXPECT_STREQ(fluid.GetMeta(), "");
}

TEST_F(FluidTest, the_name_can_be_set_and_null_counts_as_empty)
{
    fluid.SetUIName("Oil");
    EXPECT_STREQ(fluid.GetUIName(), "Oil");
    fluid.SetUIName(fluid.GetUIName() + 1);
    EXPECT_STREQ(fluid.GetUIName(), "il");
    fluid.SetUIName(nullptr);
    EXPECT_STREQ(fluid.GetUIName(), "");
}

TEST_F(FluidTest, setting_the_name_drops_the_results_even_when_it_is_the_same)
{
    pretendResults(circuit);
    fluid.SetUIName("Water");
    EXPECT_TRUE(tookResults(circuit));
}

TEST_F(FluidTest, single_precision_values_are_taken_for_fluid_properties_only)
{
    EXPECT_FALSE(fluid.SetFluidProperty(4008, 1.0F));
    EXPECT_FALSE(fluid.SetFluidProperty(3999, 1.0F));
    EXPECT_FALSE(fluid.HasProperty(4008));
    EXPECT_FALSE(fluid.SetFluidProperty(4001, 997.4F)) << "what is stored already is no change";
    EXPECT_TRUE(fluid.SetFluidProperty(4001, 0.1F));
    EXPECT_EQ(fluid.number(4001), static_cast<double>(0.1F));
}

TEST_F(FluidTest, a_single_precision_change_drops_the_results)
{
    pretendResults(circuit);
    fluid.SetFluidProperty(4001, 997.4F);
    EXPECT_TRUE(circuit.hasResults());
    fluid.SetFluidProperty(4001, 900.0F);
    EXPECT_TRUE(tookResults(circuit));
}

TEST_F(FluidTest, any_property_can_be_stored_through_its_entity_and_keeps_the_results)
{
    pretendResults(circuit);
    EXPECT_TRUE(fluid.GetEntity()->SetProperty(1003, 0.5));
    EXPECT_EQ(fluid.number(1003), 0.5);
    EXPECT_TRUE(circuit.hasResults());
}

TEST_F(FluidTest, its_entity_is_the_same_pointer_const_or_not)
{
    EXPECT_NE(fluid.GetEntity(), nullptr);
    EXPECT_EQ(fluid.GetEntity(), fluid.GetEntityConst());
}
