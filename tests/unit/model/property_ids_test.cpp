// property_ids_test.cpp: ids, names and fallback values of properties.
#include "model/property_ids.h"

#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <string>

using namespace Velcor::Tavell;

namespace
{

/// Every property that has a name, as hosts spell it.
const std::map<int, std::string> kNames = {
    {1000, "element_id"},
    {1001, "element_start"},
    {1002, "element_end"},
    {1003, "element_diameter"},
    {1004, "element_area"},
    {1005, "element_roughness"},
    {1006, "element_temperature"},
    {1008, "element_mode"},
    {1009, "element_reference_density"},
    {1010, "__element_flow_rate"},
    {1011, "__element_pressure"},
    {1012, "element_k_specified"},
    {1013, "element_energy_type"},
    {1014, "element_energy_value"},
    {1015, "element_wettedperimeter"},
    {1016, "element_hazenwilliams_coefficient"},
    {1017, "element_orifice_bore_diameter"},
    {1018, "element_valve_kv_coefficient"},
    {1019, "element_valve_cv_coefficient"},
    {1020, "element_general_loss_ck"},
    {1021, "element_general_loss_a"},
    {1022, "element_general_loss_b"},
    {1023, "element_general_loss_c"},
    {1024, "element_general_loss_d"},
    {1025, "element_control_valve_mass_flow"},
    {1026, "element_fixed_mass_flow"},
    {2000, "node_id"},
    {2001, "node_x"},
    {2002, "node_y"},
    {2003, "node_z"},
    {2004, "node_mode"},
    {2005, "node_reynolds"},
    {2006, "node_pressure"},
    {2007, "node_mass_flow_rate"},
    {2008, "node_velocity"},
    {2009, "node_fluid_temperature"},
    {2010, "node_constraint"},
    {2011, "node_pressure_and_flow_rate_constraint"},
    {3000, "circuit_gravity_x"},
    {3001, "circuit_gravity_y"},
    {3002, "circuit_gravity_z"},
    {3003, "circuit_minor_loss"},
    {3004, "circuit_friction_factor"},
    {3005, "circuit_calculate_viscosity"},
    {4000, "fluid_default_temperature"},
    {4001, "fluid_density"},
    {4002, "fluid_specific_heat"},
    {4003, "fluid_condunctivity"},
    {4004, "fluid_viscosity"},
    {4005, "fluid_viscosity_coefficient_1"},
    {4006, "fluid_viscosity_coefficient_2"},
    {4007, "fluid_viscosity_coefficient_3"},
};

/// Every property whose fallback is not 0.0.
const std::map<int, double> kFallbacks = {
    {1005, 5e-05}, {1013, 2.0}, {1016, 140.0}, {1018, 1.0}, {1019, 1.0}, {1020, 1.0}, {1021, 1.0},
    {1022, 1.0},   {1023, 1.0}, {1024, 1.0},   {2005, 1.0}, {2006, 1.0}, {2007, 1.0}, {3003, 1.0},
};

std::string upperCase(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

}  // namespace

TEST(PropertyIds, every_id_has_its_name_and_all_others_have_none)
{
    for (int id = -10; id <= 5000; ++id) {
        const auto row = kNames.find(id);
        EXPECT_EQ(std::string(propertyName(id)), row == kNames.end() ? "" : row->second) << id;
    }
}

TEST(PropertyIds, every_name_is_found_in_any_letter_case)
{
    for (const auto& [id, name] : kNames) {
        EXPECT_EQ(findPropertyId(name.c_str()), id);
        EXPECT_EQ(findPropertyId(upperCase(name).c_str()), id);
    }
}

TEST(PropertyIds, unknown_empty_and_null_names_give_no_property)
{
    EXPECT_EQ(findPropertyId("fluid_conductivity"), -1) << "the name is spelled fluid_condunctivity";
    EXPECT_EQ(findPropertyId("node"), -1);
    EXPECT_EQ(findPropertyId("node_xx"), -1);
    EXPECT_EQ(findPropertyId(""), -1);
    EXPECT_EQ(findPropertyId(nullptr), -1);
}

TEST(PropertyIds, fallbacks_are_zero_but_for_a_few)
{
    for (int id = -10; id <= 5000; ++id) {
        const auto row = kFallbacks.find(id);
        EXPECT_EQ(propertyFallback(id), row == kFallbacks.end() ? 0.0 : row->second) << id;
    }
}

TEST(PropertyIds, kinds_of_objects_take_their_own_block)
{
    for (int id = -10; id <= 5000; ++id) {
        EXPECT_EQ(isElementProperty(id), id >= 1000 && id <= 1026 && id != 1007) << id;
        EXPECT_EQ(isNodeProperty(id), id >= 2000 && id <= 2011) << id;
        EXPECT_EQ(isCircuitProperty(id), id >= 3000 && id <= 3005) << id;
        EXPECT_EQ(isFluidProperty(id), id >= 4000 && id <= 4007) << id;
        EXPECT_EQ(isIdentifier(id), id == 1001 || id == 1002 || id == 2000) << id;
    }
}

TEST(PropertyIds, every_property_has_a_slot_of_its_own_in_ascending_order)
{
    int before = -1;
    for (const auto& [id, name] : kNames) {
        const int slot = propertySlot(id);
        EXPECT_GT(slot, before) << name;
        EXPECT_LT(slot, kPropertySlots) << name;
        EXPECT_EQ(propertyOfSlot(slot), id) << name;
        before = slot;
    }
    for (const int id : {-1, 0, 999, 1027, 1999, 2012, 2999, 3006, 3999, 4008})
        EXPECT_EQ(propertySlot(id), -1) << id;
}
