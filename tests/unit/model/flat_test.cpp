// flat_test.cpp: the argument conversions of the flat functions.
#include "model_fixture.h"

#include "tavell/TavellFlat.h"

using namespace ModelTest;

namespace
{

class Flat : public Model
{
protected:
    Node& a = newNode(circuit, 0.0);
    Node& b = newNode(circuit, 1.0);
    Element& pipe = *newPipe(circuit, a, b);
};

}  // namespace

TEST_F(Flat, a_negative_position_is_out_of_range)
{
    EXPECT_EQ(vcITavellGetCircuit(&system, -1), nullptr);
    EXPECT_EQ(vcITavellGetCircuit(&system, 0), &circuit);
    EXPECT_EQ(vcICircuitGetNode(&circuit, -1), nullptr);
    EXPECT_EQ(vcICircuitGetElement(&circuit, -1), nullptr);
    EXPECT_EQ(vcIFeedbackCollectionGetFeedback(circuit.GetFeedback(), -1), nullptr);
    IPropertySet* set = vcIEntityGetProperties(vcINodeGetEntity(&a));
    EXPECT_EQ(vcIPropertySetGetProp(set, -1), -1);
    EXPECT_EQ(vcIPropertySetGetValue(set, -1), 0.0);
    EXPECT_STREQ(vcIPropertySetGetName(set, -1), "");
    EXPECT_EQ(vcIPropertySetGetStringValue(set, -1), nullptr);
    EXPECT_EQ(vcICircuitGetElementNode(&circuit, &pipe, -1), &b) << "any value but 0 is the end";
}

TEST_F(Flat, any_number_but_zero_is_true_and_true_comes_back_as_1)
{
    vcICircuitSetCheckNodeIdTaken(&circuit, 0);
    EXPECT_EQ(vcICircuitGetCheckNodeIdTaken(&circuit), 0);
    vcICircuitSetCheckNodeIdTaken(&circuit, 2);
    EXPECT_EQ(vcICircuitGetCheckNodeIdTaken(&circuit), 1);
    vcICircuitSetCheckDuplicateElementAtNodes(&circuit, 0);
    EXPECT_EQ(vcICircuitGetCheckDuplicateElementAtNodes(&circuit), 0);
    vcICircuitSetCheckDuplicateElementAtNodes(&circuit, -1);
    EXPECT_EQ(vcICircuitGetCheckDuplicateElementAtNodes(&circuit), 1);
}

TEST_F(Flat, bool_results_are_0_or_1)
{
    IEntity* entity = vcINodeGetEntity(&a);
    double value = 0.0;
    EXPECT_EQ(vcIEntitySetProperty(entity, 2006, 3.0), 1);
    EXPECT_EQ(vcIEntitySetProperty(entity, 1000, 3.0), 0);
    EXPECT_EQ(vcIEntitySetPropertyByName(entity, "node_pressure", 4.0), 1);
    EXPECT_EQ(vcIEntityGetProperty(entity, 2006, &value), 1);
    EXPECT_EQ(value, 4.0);
    EXPECT_EQ(vcIEntityHasProperty(entity, 2006), 1);
    EXPECT_EQ(vcIEntityRemoveProperty(entity, 2006), 1);
    EXPECT_EQ(vcIEntityRemoveProperty(entity, 2006), 0);
    EXPECT_EQ(vcICircuitReleaseElement(&circuit, &pipe), 1);
    EXPECT_EQ(vcICircuitReleaseElement(&circuit, &pipe), 0);
    EXPECT_EQ(vcICircuitReleaseNode(&circuit, &a), 1);
    EXPECT_EQ(vcICircuitReleaseNode(&circuit, nullptr), 0);
    EXPECT_EQ(vcITavellReleaseCircuit(&system, nullptr), 0);
}

TEST_F(Flat, an_exception_passes_through)
{
    storeText(a, "node_id", "abc");
    EXPECT_THROW(vcINodeGetId(&a), std::invalid_argument);
}
