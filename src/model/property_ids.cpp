// property_ids.cpp: the table of property ids and the look-up of names.
#include "property_ids.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace Velcor::Tavell
{

namespace
{

struct Property {
    int id;
    const char* name;
    double fallback;
};

// clang-format off
/// In ascending order of id.
// kept: "condunctivity": hosts and stored models use the name as it is spelled here.
constexpr std::array<Property, 53> kProperties{{
    {TAVELL_NO_PROPERTY, "", 0.0},
    {TAVELL_ELEMENT_ID, "element_id", 0.0},
    {TAVELL_ELEMENT_START, "element_start", 0.0},
    {TAVELL_ELEMENT_END, "element_end", 0.0},
    {TAVELL_ELEMENT_DIAMETER, "element_diameter", 0.0},
    {TAVELL_ELEMENT_AREA, "element_area", 0.0},
    {TAVELL_ELEMENT_ROUGHNESS, "element_roughness", 5e-05},
    {TAVELL_ELEMENT_TEMPERATURE, "element_temperature", 0.0},
    {TAVELL_ELEMENT_MODE, "element_mode", 0.0},
    {TAVELL_ELEMENT_REFERENCE_DENSITY, "element_reference_density", 0.0},
    {TAVELL_ELEMENT_FLOW_RATE, "__element_flow_rate", 0.0},
    {TAVELL_ELEMENT_PRESSURE, "__element_pressure", 0.0},
    {TAVELL_ELEMENT_K_SPECIFIED, "element_k_specified", 0.0},
    {TAVELL_ELEMENT_ENERGY_TYPE, "element_energy_type", 2.0},
    {TAVELL_ELEMENT_ENERGY_VALUE, "element_energy_value", 0.0},
    {TAVELL_ELEMENT_WETTEDPERIMETER, "element_wettedperimeter", 0.0},
    {TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, "element_hazenwilliams_coefficient", 140.0},
    {TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, "element_orifice_bore_diameter", 0.0},
    {TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, "element_valve_kv_coefficient", 1.0},
    {TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, "element_valve_cv_coefficient", 1.0},
    {TAVELL_ELEMENT_GENERAL_LOSS_CK, "element_general_loss_ck", 1.0},
    {TAVELL_ELEMENT_GENERAL_LOSS_A, "element_general_loss_a", 1.0},
    {TAVELL_ELEMENT_GENERAL_LOSS_B, "element_general_loss_b", 1.0},
    {TAVELL_ELEMENT_GENERAL_LOSS_C, "element_general_loss_c", 1.0},
    {TAVELL_ELEMENT_GENERAL_LOSS_D, "element_general_loss_d", 1.0},
    {TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, "element_control_valve_mass_flow", 0.0},
    {TAVELL_ELEMENT_FIXED_MASS_FLOW, "element_fixed_mass_flow", 0.0},
    {TAVELL_NODE_ID, "node_id", 0.0},
    {TAVELL_NODE_X, "node_x", 0.0},
    {TAVELL_NODE_Y, "node_y", 0.0},
    {TAVELL_NODE_Z, "node_z", 0.0},
    {TAVELL_NODE_MODE, "node_mode", 0.0},
    {TAVELL_NODE_REYNOLDS, "node_reynolds", 1.0},
    {TAVELL_NODE_PRESSURE, "node_pressure", 1.0},
    {TAVELL_NODE_MASS_FLOW_RATE, "node_mass_flow_rate", 1.0},
    {TAVELL_NODE_VELOCITY, "node_velocity", 0.0},
    {TAVELL_NODE_FLUID_TEMPERATURE, "node_fluid_temperature", 0.0},
    {TAVELL_NODE_CONSTRAINT, "node_constraint", 0.0},
    {TAVELL_NODE_PRESSURE_AND_FLOW_RATE_CONSTRAINT, "node_pressure_and_flow_rate_constraint", 0.0},
    {TAVELL_CIRCUIT_GRAVITY_X, "circuit_gravity_x", 0.0},
    {TAVELL_CIRCUIT_GRAVITY_Y, "circuit_gravity_y", 0.0},
    {TAVELL_CIRCUIT_GRAVITY_Z, "circuit_gravity_z", 0.0},
    {TAVELL_CIRCUIT_MINOR_LOSS, "circuit_minor_loss", 1.0},
    {TAVELL_CIRCUIT_FRICTION_FACTOR, "circuit_friction_factor", 0.0},
    {TAVELL_CIRCUIT_CALCULATE_VISCOSITY, "circuit_calculate_viscosity", 0.0},
    {TAVELL_FLUID_DEFAULT_TEMPERATURE, "fluid_default_temperature", 0.0},
    {TAVELL_FLUID_DENSITY, "fluid_density", 0.0},
    {TAVELL_FLUID_SPECIFIC_HEAT, "fluid_specific_heat", 0.0},
    {TAVELL_FLUID_CONDUCTIVITY, "fluid_condunctivity", 0.0},
    {TAVELL_FLUID_VISCOSITY, "fluid_viscosity", 0.0},
    {TAVELL_FLUID_VISCOSITY_COEFFICIENT_1, "fluid_viscosity_coefficient_1", 0.0},
    {TAVELL_FLUID_VISCOSITY_COEFFICIENT_2, "fluid_viscosity_coefficient_2", 0.0},
    {TAVELL_FLUID_VISCOSITY_COEFFICIENT_3, "fluid_viscosity_coefficient_3", 0.0},
}};
// clang-format on

char lowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

/// Row of an id; null when the id is no property.
const Property* findProperty(int id)
{
    const auto row =
        std::lower_bound(kProperties.begin(), kProperties.end(), id,
                         [](const Property& property, int wanted) { return property.id < wanted; });
    return row != kProperties.end() && row->id == id ? &*row : nullptr;
}

}  // namespace

const char* propertyName(int id)
{
    const Property* property = findProperty(id);
    return property != nullptr ? property->name : "";
}

int findPropertyId(const char* name)
{
    if (name == nullptr) return TAVELL_NO_PROPERTY;
    for (const Property& property : kProperties)
        if (equalIgnoringCase(property.name, name)) return property.id;
    return TAVELL_NO_PROPERTY;
}

double propertyFallback(int id)
{
    const Property* property = findProperty(id);
    return property != nullptr ? property->fallback : 0.0;
}

}  // namespace Velcor::Tavell
