#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include <tavell/Constants.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/INode.h>

#include "circuit_builder.h"
#include "fluids.h"
#include "network_for_tests.h"

namespace kit
{

namespace
{

/// Distance between the nodes of a circuit's element [m].
double lengthIn(BuiltCircuit& built, std::size_t element)
{
    auto* made = built.circuit->GetElement(element);
    double a[3];
    double b[3];
    built.circuit->GetElementNode(made, 0)->GetLocation(&a[0], &a[1], &a[2]);
    built.circuit->GetElementNode(made, 1)->GetLocation(&b[0], &b[1], &b[2]);
    return std::hypot(b[0] - a[0], b[1] - a[1], b[2] - a[2]);
}

double propertyOf(BuiltCircuit& built, std::size_t element, int property)
{
    double value = 0.0;
    built.circuit->GetElement(element)->GetEntity()->GetProperty(property, &value);
    return value;
}

TestNetwork line(bool isSchematic)
{
    TestNetwork made;
    if (isSchematic) made.schematic();
    made.node("source", {0.0, 0.0, 10.0}, pressureAt(1e5));
    made.node("middle", {30.0, 0.0, 50.0}, outflow(1.0));
    made.node("end", {60.0, 0.0, 0.0}, outflow(2.0));
    made.pipe("first", "source", "middle", 0.1, 1e-4);
    made.pipe("second", "middle", "end", 0.1, 1e-4);
    return made;
}

}  // namespace

TEST(CircuitBuilder, geometry_without_extras_is_built_as_it_is)
{
    TestNetwork made = line(false);
    made.nodeNamed("middle").boundary.reset();
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_EQ(built->circuit->GetNoNodes(), 3U);
    EXPECT_EQ(built->circuit->GetNoElements(), 2U);
    EXPECT_STREQ(built->circuit->GetNode(1)->GetEntity()->GetMeta(), "middle");
    EXPECT_STREQ(built->circuit->GetElement(1)->GetEntity()->GetMeta(), "second");
    EXPECT_DOUBLE_EQ(lengthIn(*built, 0), 50.0);
    EXPECT_EQ(built->pressureOffsets[2], 0.0);
    EXPECT_TRUE(findings.isEmpty());
}

TEST(CircuitBuilder, demand_inside_is_a_level_valve_to_a_hidden_outlet)
{
    Findings findings;
    auto built = buildCircuit(line(false).network(), findings);
    ASSERT_TRUE(built) << findings.text();
    ASSERT_EQ(built->circuit->GetNoNodes(), 4U);
    ASSERT_EQ(built->circuit->GetNoElements(), 3U);
    EXPECT_EQ(built->nodes[1].stubEnd, 3U);
    EXPECT_EQ(built->nodes[2].stubEnd, kNotInCircuit);
    EXPECT_EQ(built->circuit->GetElement(2)->GetType(), TAVELL_KV_VALVE);
    EXPECT_EQ(built->circuit->GetNode(3)->GetType(), TAVELL_NODE_OUTLET);
    EXPECT_EQ(propertyOf(*built, 2, TAVELL_ELEMENT_AREA), 0.0);
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    built->circuit->GetNode(3)->GetLocation(&x, &y, &z);
    EXPECT_EQ(z, 50.0);
    EXPECT_EQ(built->elementOwners[2].kind, Owner::Kind::node);
    EXPECT_EQ(built->elementOwners[2].position, 1U);
}

TEST(CircuitBuilder, halves_of_a_detour_add_up_to_the_length)
{
    TestNetwork made = line(false);
    made.elementNamed("first").length = 130.0;
    made.elementNamed("first").setProperty(TAVELL_ELEMENT_K_SPECIFIED, 3.0);
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    const ElementInCircuit place = built->elements[0];
    EXPECT_NEAR(lengthIn(*built, place.first) + lengthIn(*built, place.second), 130.0, 1e-12 * 130.0);
    EXPECT_NEAR(lengthIn(*built, place.first), 65.0, 1e-11);
    EXPECT_EQ(propertyOf(*built, place.first, TAVELL_ELEMENT_K_SPECIFIED), 3.0);
    EXPECT_EQ(propertyOf(*built, place.second, TAVELL_ELEMENT_K_SPECIFIED), 0.0);
    EXPECT_EQ(propertyOf(*built, place.second, TAVELL_ELEMENT_ROUGHNESS), 1e-4);
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    built->circuit->GetNode(place.detourNode)->GetLocation(&x, &y, &z);
    // The line lies in the plane y = 0; the detour is level with its middle.
    EXPECT_NEAR(z, 30.0, 1e-9);
    EXPECT_NEAR(std::fabs(y), 60.0, 1e-9);
}

TEST(CircuitBuilder, schematic_pipes_have_their_lengths_and_pressures_their_heights)
{
    TestNetwork made = line(true);
    made.elementNamed("first").length = 123.456;
    made.elementNamed("second").length = 0.5;
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    const double lengths[] = {123.456, 0.5};
    for (std::size_t i = 0; i < 2; ++i) {
        const ElementInCircuit place = built->elements[i];
        EXPECT_NEAR(lengthIn(*built, place.first) + lengthIn(*built, place.second), lengths[i],
                    1e-13 * lengths[i]);
    }
    double gravity[3];
    built->circuit->GetGravity(&gravity[0], &gravity[1], &gravity[2]);
    EXPECT_EQ(gravity[2], 0.0);
    const double weight = built->fluid.density * 9.80665;
    EXPECT_NEAR(built->pressureOffsets[0], weight * 10.0, 1e-6);
    EXPECT_EQ(built->pressureOffsets[2], 0.0);
}

TEST(CircuitBuilder, length_below_the_distance_is_refused)
{
    TestNetwork made = line(false);
    made.elementNamed("first").length = 49.0;
    Findings findings;
    EXPECT_FALSE(buildCircuit(made.network(), findings));
    ASSERT_EQ(findings.list().size(), 1U);
    EXPECT_EQ(findings.list().front().code, Code::length_below_distance);
    EXPECT_EQ(findings.list().front().place.object, "element first");
}

TEST(CircuitBuilder, general_loss_takes_its_length_into_its_coefficient)
{
    TestNetwork made = line(false);
    made.generalLoss("loss", "middle", "end", 0.1, 2.0, 3.0).length = 200.0;
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_DOUBLE_EQ(propertyOf(*built, 2, TAVELL_ELEMENT_GENERAL_LOSS_CK), 2.0 * 8e6);
    EXPECT_EQ(propertyOf(*built, 2, TAVELL_ELEMENT_GENERAL_LOSS_B), 0.0);
}

TEST(CircuitBuilder, limit_is_on_one_half_of_a_detour_only)
{
    TestNetwork made = line(false);
    made.controlValve("valve", "source", "end", 0.1, 3.0).length = 500.0;
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_EQ(built->circuit->GetElement(built->elements[2].first)->GetType(), TAVELL_CONTROL_VALVE);
    EXPECT_EQ(built->circuit->GetElement(built->elements[2].second)->GetType(), TAVELL_PIPE);
}

TEST(CircuitBuilder, detour_next_to_computed_junction_losses_is_warned_of)
{
    TestNetwork made = line(false);
    made.elementNamed("first").length = 130.0;
    made.network().settings.minorLoss = 1;
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    ASSERT_EQ(findings.list().size(), 1U);
    EXPECT_EQ(findings.list().front().code, Code::detour_with_junction_losses);
    EXPECT_GT(propertyOf(*built, built->elements[0].first, TAVELL_ELEMENT_K_SPECIFIED), 0.0);
    EXPECT_GT(propertyOf(*built, built->elements[0].second, TAVELL_ELEMENT_K_SPECIFIED), 0.0);
}

TEST(CircuitBuilder, computed_junction_losses_of_a_drawing_are_refused)
{
    TestNetwork made = line(true);
    for (Element& element : made.network().elements)
        element.length = 10.0;
    made.network().settings.minorLoss = 2;
    Findings findings;
    EXPECT_FALSE(buildCircuit(made.network(), findings));
    ASSERT_EQ(findings.list().size(), 1U);
    EXPECT_EQ(findings.list().front().code, Code::schematic_junction_losses);
}

TEST(CircuitBuilder, fittings_add_to_the_minor_loss_and_materials_give_roughness)
{
    TestNetwork made = line(false);
    made.network().fittings["elbow"] = {0.75, ""};
    made.network().materials["clay"] = {3e-3, {}, ""};
    Element& first = made.elementNamed("first");
    first.properties.clear();
    first.material = "clay";
    first.fittings = {{"elbow", 4}};
    first.setProperty(TAVELL_ELEMENT_K_SPECIFIED, 1.0);
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_EQ(propertyOf(*built, 0, TAVELL_ELEMENT_ROUGHNESS), 3e-3);
    EXPECT_EQ(propertyOf(*built, 0, TAVELL_ELEMENT_K_SPECIFIED), 4.0);
}

TEST(CircuitBuilder, name_that_nothing_answers_to_is_found)
{
    TestNetwork made = line(false);
    made.elementNamed("second").material = "cheese";
    Findings findings;
    EXPECT_FALSE(buildCircuit(made.network(), findings));
    ASSERT_EQ(findings.list().size(), 1U);
    EXPECT_EQ(findings.list().front().code, Code::unknown_reference);
}

TEST(CircuitBuilder, fluid_of_the_table_yields_to_given_values)
{
    TestNetwork made = line(false);
    made.network().fluid.name = "water";
    made.network().fluid.temperature = 333.15;
    made.network().fluid.properties = {{TAVELL_FLUID_DENSITY, 990.0}};
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_EQ(built->fluid.density, 990.0);
    EXPECT_EQ(built->fluid.temperature, 333.15);
    // 466.0 uPa s at 60 degC: IAPWS (2008)
    EXPECT_NEAR(built->fluid.viscosity, 4.66e-4, 1e-6);
}

TEST(CircuitBuilder, fluid_of_the_table_without_a_temperature_is_that_of_20_degrees)
{
    TestNetwork made = line(false);
    made.network().fluid.name = "water";
    Findings findings;
    const auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_EQ(built->fluid.temperature, 293.15);
    // IAPWS-95: 998.2072 kg/m3 at 20 degC and one atmosphere
    EXPECT_NEAR(built->fluid.density, 998.207, 0.01);
}

TEST(CircuitBuilder, fluid_of_the_table_brings_the_law_of_its_viscosity)
{
    TestNetwork made = line(false);
    made.network().fluid.name = "propylene glycol";
    made.network().fluid.temperature = 293.15;
    made.network().fluid.concentration = 0.3;
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    std::string error;
    const auto values = fluidValues("propylene glycol", 293.15, 0.3, error);
    ASSERT_TRUE(values) << error;
    // circuits keep the values of a fluid as they are given through SetProperty
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(built->fluid.viscosityCoefficients[i], values->viscosityCoefficients[i]) << i;
}

TEST(CircuitBuilder, without_a_fluid_the_library_keeps_its_own)
{
    Findings findings;
    auto built = buildCircuit(line(false).network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_NEAR(built->fluid.density, 997.4, 1e-3);
    EXPECT_NEAR(built->fluid.temperature, 294.26, 1e-4);
}

TEST(CircuitBuilder, fluid_without_a_table_and_without_properties_is_refused)
{
    TestNetwork made = line(false);
    made.network().fluid.name = "unobtainium";
    Findings findings;
    EXPECT_FALSE(buildCircuit(made.network(), findings));
    ASSERT_EQ(findings.list().size(), 1U);
    EXPECT_EQ(findings.list().front().code, Code::unknown_fluid);
}

TEST(CircuitBuilder, orifice_gets_the_tappings_of_its_given_length)
{
    TestNetwork made = line(false);
    Element& plate = made.round("plate", TAVELL_ORIFICE, "middle", "end", 0.1);
    plate.setProperty(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.05);
    plate.length = 0.15;
    Findings findings;
    auto built = buildCircuit(made.network(), findings);
    ASSERT_TRUE(built) << findings.text();
    EXPECT_NEAR(lengthIn(*built, built->elements[2].first), 0.15, 1e-11);
    EXPECT_GT(jointKv(made.network(), plate), 0.0);
    plate.length = 7.0;
    EXPECT_EQ(jointKv(made.network(), plate), 0.0);
}

}  // namespace kit
