// translation_test.cpp: every stored property and the record field that it becomes, bit for bit.
#include "analysis/translation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <vector>

#include "circuits.h"
#include "lcn/errors.h"

using namespace AnalysisTest;

namespace
{

constexpr double kDensity = 997.4000244140625;         // of the default fluid: 997.4 in single precision
constexpr double kViscosity = 0.00098000001162290573;  // 0.00098 in single precision
constexpr double kTemperature = 294.260009765625;      // 294.26 in single precision

/// Three nodes in a row, joined by elements 1 and 2: an inlet, an inner node and an outlet.
class Translation : public ::testing::Test
{
protected:
    Translation() { makeLine(circuit, 3); }

    void setElement(std::size_t position, int property, double value)
    {
        circuit.GetElement(position)->GetEntity()->SetProperty(property, value);
    }
    void setNode(std::size_t position, int property, double value)
    {
        circuit.GetNode(position)->GetEntity()->SetProperty(property, value);
    }
    void setCircuit(int property, double value) { circuit.GetEntity()->SetProperty(property, value); }

    Network read(bool energy = false) { return readModel(circuit, energy); }
    Network complete()
    {
        Network network = readModel(circuit, false);
        completeNetwork(network);
        return network;
    }
    /// Record of the first element of this model type with one property set.
    lcnNET_elems elementWith(int type, int property, double value)
    {
        setElement(0, TAVELL_ELEMENT_MODE, type);
        setElement(0, property, value);
        return read().elements[1];
    }

    PlainEnvironment environment;
    ObjectRegistry registry;
    Circuit circuit{registry};
};

}  // namespace

TEST_F(Translation, solver_numbers_run_from_1_in_order_of_creation)
{
    const Network network = read();
    EXPECT_EQ(network.var.NodeTotal, 3);
    EXPECT_EQ(network.var.ElemTotal, 2);
    EXPECT_EQ(network.nodes.size(), 4);
    EXPECT_EQ(network.elements.size(), 3);
    EXPECT_EQ(network.nodes[0].node_no, 0);
    EXPECT_EQ(network.elements[0].elem_no, 0);
    for (int i = 1; i <= 3; ++i)
        EXPECT_EQ(network.nodes[i].node_no, i);
    EXPECT_EQ(network.elements[2].elem_no, 2);
    EXPECT_EQ(network.elements[2].StartNode, 2);
    EXPECT_EQ(network.elements[2].EndNode, 3);
}

TEST_F(Translation, ids_are_those_of_the_host)
{
    setNode(1, TAVELL_NODE_ID, 77.0);
    setElement(0, TAVELL_ELEMENT_ID, 55.0);
    const Network network = read();
    EXPECT_EQ(network.nodes[2].node_no, 77);
    EXPECT_EQ(network.elements[1].elem_no, 55);
}

TEST_F(Translation, a_model_type_becomes_the_code_one_above)
{
    for (int type = -3; type <= 12; ++type)
        EXPECT_EQ(elementWith(type, TAVELL_ELEMENT_DIAMETER, 0.1).type, type + 1) << type;
    EXPECT_EQ(elementWith(std::numeric_limits<int>::max(), TAVELL_ELEMENT_DIAMETER, 0.1).type, 0);
}

TEST_F(Translation, common_properties_go_to_their_fields_unchanged)
{
    setElement(0, TAVELL_ELEMENT_DIAMETER, 0.1234567);
    setElement(0, TAVELL_ELEMENT_AREA, 0.0123);
    setElement(0, TAVELL_ELEMENT_ROUGHNESS, 1.7e-4);
    setElement(0, TAVELL_ELEMENT_K_SPECIFIED, 2.25);
    setElement(0, TAVELL_ELEMENT_WETTEDPERIMETER, 0.7);
    const lcnNET_elems elem = read().elements[1];
    EXPECT_EQ(elem.diam, 0.1234567);
    EXPECT_EQ(elem.Area, 0.0123);
    EXPECT_EQ(elem.rough, 1.7e-4);
    EXPECT_EQ(elem.k, 2.25);
    EXPECT_EQ(elem.kSpecified, 2.25);
    EXPECT_EQ(elem.WettedArea, 0.7);
    EXPECT_EQ(elem.LaminarFactor, 64.0);
    EXPECT_EQ(elem.fix, 0);
}

TEST_F(Translation, properties_that_are_not_set_read_as_zero_whatever_their_default)
{
    Circuit bare(registry);
    bare.CreateEmptyElement();
    for (const int property : {TAVELL_ELEMENT_ROUGHNESS, TAVELL_ELEMENT_ENERGY_TYPE, TAVELL_ELEMENT_DIAMETER})
        bare.GetElement(0)->GetEntity()->RemoveProperty(property);
    const lcnNET_elems elem = readModel(bare, false).elements[1];
    EXPECT_EQ(elem.diam, 0.0);
    EXPECT_EQ(elem.Area, 0.0);
    EXPECT_EQ(elem.rough, 0.0);
    EXPECT_EQ(elem.Energy_var, 0);
    EXPECT_EQ(elem.HeatFlux, 0.0);
    EXPECT_EQ(elem.StartNode, 0);
}

TEST_F(Translation, the_wall_temperature_is_the_fluids_default_whatever_the_element_stores)
{
    EXPECT_EQ(elementWith(TAVELL_PIPE, TAVELL_ELEMENT_TEMPERATURE, 350.0).MetalTemp, kTemperature);
    circuit.fluid().RemoveProperty(TAVELL_FLUID_DEFAULT_TEMPERATURE);
    EXPECT_EQ(read().elements[1].MetalTemp, 0.0);
}

TEST_F(Translation, energy_types_are_truncated_and_choose_where_the_value_goes)
{
    setElement(0, TAVELL_ELEMENT_ENERGY_VALUE, 123.5);
    const auto withType = [&](double type) {
        return elementWith(TAVELL_PIPE, TAVELL_ELEMENT_ENERGY_TYPE, type);
    };
    EXPECT_EQ(withType(2.9).Energy_var, 2);
    EXPECT_EQ(withType(-1.5).Energy_var, -1);
    EXPECT_EQ(withType(0.0).HeatFlux, 123.5);
    EXPECT_EQ(withType(0.0).MetalTemp, kTemperature);
    EXPECT_EQ(withType(1.0).MetalTemp, 123.5);
    EXPECT_EQ(withType(2.0).HeatFlux, 123.5);
    EXPECT_EQ(withType(3.0).TemperatureRise, 123.5);
    EXPECT_EQ(withType(4.0).HeatFlux, 123.5);
    EXPECT_EQ(withType(5.0).heat, 123.5);
    EXPECT_EQ(withType(9.0).HeatFlux, 123.5);
}

TEST_F(Translation, hazen_williams_and_orifice_inputs_share_one_field)
{
    EXPECT_EQ(
        elementWith(TAVELL_HAZEN_WILLIAMS_PIPE, TAVELL_ELEMENT_HAZENWILLIAMS_COEFFICIENT, 133.0).HWcoeff,
        133.0);
    EXPECT_EQ(elementWith(TAVELL_ORIFICE, TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER, 0.07).HWcoeff, 0.07);
}

TEST_F(Translation, general_loss_coefficients_keep_their_order)
{
    setElement(0, TAVELL_ELEMENT_GENERAL_LOSS_A, 1.1);
    setElement(0, TAVELL_ELEMENT_GENERAL_LOSS_B, 1.2);
    setElement(0, TAVELL_ELEMENT_GENERAL_LOSS_C, 1.3);
    setElement(0, TAVELL_ELEMENT_GENERAL_LOSS_D, 1.4);
    const lcnNET_elems elem = elementWith(TAVELL_GENERAL_LOSS, TAVELL_ELEMENT_GENERAL_LOSS_CK, 1.5);
    EXPECT_EQ(elem.HWcoeff, 1.5);
    EXPECT_EQ(elem.Param1, 1.1);
    EXPECT_EQ(elem.Param2, 1.2);
    EXPECT_EQ(elem.Param3, 1.3);
    EXPECT_EQ(elem.Param4, 1.4);
}

TEST_F(Translation, valve_coefficients_are_converted_to_seconds_and_to_kv)
{
    EXPECT_EQ(elementWith(TAVELL_KV_VALVE, TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 3600.0).HWcoeff, 1.0);
    EXPECT_EQ(elementWith(TAVELL_KV_VALVE, TAVELL_ELEMENT_VALVE_KV_COEFFICIENT, 12.3).HWcoeff, 12.3 / 3600.0);
    EXPECT_EQ(elementWith(TAVELL_CV_VALVE, TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, 3600.0).HWcoeff, 0.865);
    EXPECT_EQ(elementWith(TAVELL_CV_VALVE, TAVELL_ELEMENT_VALVE_CV_COEFFICIENT, 12.3).HWcoeff,
              12.3 * 0.865 / 3600.0);
}

TEST_F(Translation, a_control_valve_is_fixed_at_its_limit_and_a_non_return_at_zero)
{
    const lcnNET_elems valve =
        elementWith(TAVELL_CONTROL_VALVE, TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 1.75);
    EXPECT_EQ(valve.fix, 1);
    EXPECT_EQ(valve.FixedFlow, 1.75);
    const lcnNET_elems nonReturn = elementWith(TAVELL_NON_RETURN, TAVELL_ELEMENT_FIXED_MASS_FLOW, 9.0);
    EXPECT_EQ(nonReturn.fix, 1);
    EXPECT_EQ(nonReturn.FixedFlow, 0.0);
}

TEST_F(Translation, a_curve_brings_its_points_and_its_reference_density)
{
    const double flows[] = {0.001, 0.002, 0.003, 0.004};
    const double pressures[] = {40000.0, 30000.0, 20000.0, 10000.0};
    for (const int type : {TAVELL_PUMP, TAVELL_LOSS}) {
        ASSERT_TRUE(circuit.GetElement(1)->UpdateCurveData(type, flows, pressures, 4, 812.5));
        const Network network = read();
        const lcnNET_elems& elem = network.elements[2];
        EXPECT_EQ(elem.Curve.RefDensity, 812.5);
        ASSERT_EQ(elem.Curve.points(), 4);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(elem.Curve.FlowRate[i], flows[i]);
            EXPECT_EQ(elem.Curve.PressurePoints[i], pressures[i]);
        }
        ASSERT_EQ(network.var.Pumps.size(), 2);
        EXPECT_EQ(network.var.Pumps[1].FlowRate.data(), elem.Curve.FlowRate.data());
        EXPECT_EQ(network.elements[1].Curve.points(), 0);
    }
}

TEST_F(Translation, a_curve_without_reference_density_takes_1000_and_without_points_has_none)
{
    EXPECT_EQ(elementWith(TAVELL_PUMP, TAVELL_ELEMENT_REFERENCE_DENSITY, 0.0).Curve.RefDensity, 1000.0);
    circuit.GetElement(0)->GetEntity()->RemoveProperty(TAVELL_ELEMENT_REFERENCE_DENSITY);
    const Network network = read();
    EXPECT_EQ(network.elements[1].Curve.RefDensity, 1000.0);
    EXPECT_EQ(network.elements[1].Curve.points(), 0);
}

TEST_F(Translation, a_fixed_mass_flow_counts_for_curves_only_and_zero_is_none)
{
    for (const int type : {TAVELL_PUMP, TAVELL_LOSS}) {
        const lcnNET_elems fixed = elementWith(type, TAVELL_ELEMENT_FIXED_MASS_FLOW, -2.5);
        EXPECT_EQ(fixed.fix, 1);
        EXPECT_EQ(fixed.FixedFlow, -2.5);
        EXPECT_EQ(elementWith(type, TAVELL_ELEMENT_FIXED_MASS_FLOW, 0.0).fix, 0);
    }
    EXPECT_EQ(elementWith(TAVELL_PIPE, TAVELL_ELEMENT_FIXED_MASS_FLOW, 2.5).fix, 0);
}

TEST_F(Translation, heights_are_against_gravity_and_counted_from_the_lowest_node)
{
    circuit.SetGravity(0.3, -0.4, -0.5);
    circuit.GetNode(0)->SetLocation(1.1, 2.2, 3.3);
    circuit.GetNode(1)->SetLocation(-4.4, 5.5, 6.6);
    circuit.GetNode(2)->SetLocation(0.0, 0.0, 0.7);
    const auto raw = [](double x, double y, double z) { return -(x * 0.3 + y * -0.4 + z * -0.5); };
    const double lowest = raw(0.0, 0.0, 0.7);
    const Network network = read();
    EXPECT_EQ(network.nodes[1].Height, raw(1.1, 2.2, 3.3) - lowest);
    EXPECT_EQ(network.nodes[2].Height, raw(-4.4, 5.5, 6.6) - lowest);
    EXPECT_EQ(network.nodes[3].Height, 0.0);
    EXPECT_EQ(network.var.Datum, lowest);
    EXPECT_EQ(network.nodes[2].X, -4.4);
    EXPECT_EQ(network.nodes[2].Y, 5.5);
    EXPECT_EQ(network.nodes[2].Z, 6.6);
}

TEST_F(Translation, without_nodes_the_reference_elevation_is_where_the_search_starts)
{
    Circuit empty(registry);
    EXPECT_EQ(readModel(empty, false).var.Datum, 99999997952.0);
}

TEST_F(Translation, solver_settings_have_their_exact_values)
{
    const lcnNET_var var = read().var;
    EXPECT_EQ(var.numitermm, 2000);
    EXPECT_EQ(var.numiterpp, 2000);
    EXPECT_EQ(var.relaxpp, 0.5);
    EXPECT_EQ(var.Pav, 10000.0);
    EXPECT_EQ(var.Concrit, 1.0e-6);
    EXPECT_EQ(var.nxx, 2);
    EXPECT_EQ(var.gasConstant, 287.0);
    EXPECT_EQ(var.heatRatio, 1.4);
    EXPECT_EQ(var.densityWeight, 0.5);
    EXPECT_EQ(var.temperatureWeight, 0.5);
    EXPECT_EQ(var.flowWeight, 1.0);
    EXPECT_EQ(var.gasModel[0], 1000000.0);
    EXPECT_EQ(var.gasModel[1], 443.15);
    EXPECT_EQ(var.gasModel[2], 126656.25);
    EXPECT_FALSE(var.compressible);
    EXPECT_EQ(var.circuitNumber, 0);
    EXPECT_EQ(var.Energy, 0);
    EXPECT_EQ(read(true).var.Energy, 1);
}

TEST_F(Translation, the_fluids_properties_fill_the_control_record)
{
    lcnNET_var var = read().var;
    EXPECT_EQ(var.Density, kDensity);
    EXPECT_EQ(var.Viscosity, kViscosity);
    EXPECT_EQ(var.Tav, kTemperature);
    EXPECT_EQ(var.Cp, 4179.0);
    const int ids[] = {4000, 4001, 4002, 4003, 4004, 4005, 4006, 4007};
    for (const int id : ids)
        circuit.GetFluid()->GetEntity()->SetProperty(id, id + 0.125);
    var = read().var;
    EXPECT_EQ(var.Tav, 4000.125);
    EXPECT_EQ(var.Density, 4001.125);
    EXPECT_EQ(var.Cp, 4002.125);
    EXPECT_EQ(var.Conductivity, 4003.125);
    EXPECT_EQ(var.Viscosity, 4004.125);
    EXPECT_EQ(var.ViscA, 4005.125);
    EXPECT_EQ(var.ViscB, 4006.125);
    EXPECT_EQ(var.ViscC, 4007.125);
}

TEST_F(Translation, minor_loss_settings_1_and_0_are_exact_and_any_other_is_2)
{
    const double settings[][2] = {{1.0, 1}, {0.0, 0}, {0.5, 2}, {2.0, 2}, {-1.0, 2}, {1.0000001, 2}};
    for (const auto& [setting, mode] : settings) {
        setCircuit(TAVELL_CIRCUIT_MINOR_LOSS, setting);
        EXPECT_EQ(read().var.Minor, static_cast<int>(mode)) << setting;
    }
    circuit.RemoveProperty(TAVELL_CIRCUIT_MINOR_LOSS);
    EXPECT_EQ(read().var.Minor, 0);
}

TEST_F(Translation, friction_settings_are_truncated_and_unknown_ones_are_method_1)
{
    const double settings[][2] = {{0.0, 0}, {1.0, 1}, {2.0, 2}, {2.9, 2},  {3.0, 3},  {4.0, 4},  {5.0, 5},
                                  {6.0, 6}, {6.9, 6}, {7.0, 1}, {-1.0, 1}, {-0.5, 0}, {100.0, 1}};
    for (const auto& [setting, method] : settings) {
        setCircuit(TAVELL_CIRCUIT_FRICTION_FACTOR, setting);
        EXPECT_EQ(read().var.FrictionMethod, static_cast<int>(method)) << setting;
    }
}

TEST_F(Translation, any_viscosity_setting_but_zero_switches_the_law_on)
{
    EXPECT_FALSE(read().var.ViscosityLaw);
    for (const double setting : {1.0, -1.0, 0.1}) {
        setCircuit(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, setting);
        EXPECT_TRUE(read().var.ViscosityLaw);
    }
}

TEST_F(Translation, elements_start_at_the_mean_of_the_inlets_temperatures)
{
    addNodes(circuit, 2);
    circuit.GetNode(3)->SetType(TAVELL_NODE_INLET);
    setNode(0, TAVELL_NODE_FLUID_TEMPERATURE, 300.0);
    setNode(1, TAVELL_NODE_FLUID_TEMPERATURE, 999.0);  // no inlet
    setNode(3, TAVELL_NODE_FLUID_TEMPERATURE, 310.0);
    EXPECT_EQ(read().elements[2].Temperature, 305.0);
    // an inlet without a temperature counts and adds nothing
    circuit.GetNode(3)->GetEntity()->RemoveProperty(TAVELL_NODE_FLUID_TEMPERATURE);
    EXPECT_EQ(read().elements[2].Temperature, 150.0);
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    circuit.GetNode(3)->SetType(TAVELL_NODE_INTERNAL);
    EXPECT_TRUE(std::isnan(read().elements[1].Temperature));
}

TEST_F(Translation, the_first_inlet_is_the_inlet_node)
{
    circuit.GetNode(1)->SetType(TAVELL_NODE_INLET);
    EXPECT_EQ(read().var.InletNode, 1);
    circuit.GetNode(0)->SetType(TAVELL_NODE_OUTLET);
    EXPECT_EQ(read().var.InletNode, 2);
}

TEST_F(Translation, direction_and_length_come_from_the_end_nodes)
{
    circuit.GetNode(0)->SetLocation(1.0, 2.0, 3.0);
    circuit.GetNode(1)->SetLocation(4.0, 6.0, 15.0);
    setElement(0, TAVELL_ELEMENT_WETTEDPERIMETER, 0.5);
    const lcnNET_elems elem = complete().elements[1];
    EXPECT_EQ(elem.length, 13.0);  // 3, 4, 12
    EXPECT_EQ(elem.Vx, 3.0 / 13.0);
    EXPECT_EQ(elem.Vy, 4.0 / 13.0);
    EXPECT_EQ(elem.Vz, 12.0 / 13.0);
    EXPECT_EQ(elem.WettedArea, 6.5);
}

TEST_F(Translation, coincident_ends_have_no_direction_and_a_length_of_1e_minus_6)
{
    circuit.GetNode(0)->SetLocation(1.0, 2.0, 3.0);
    circuit.GetNode(1)->SetLocation(1.0, 2.0, 3.0);
    const lcnNET_elems elem = complete().elements[1];
    EXPECT_EQ(elem.length, 1.0e-6);
    EXPECT_EQ(elem.Vx, 0.0);
    EXPECT_EQ(elem.Vy, 0.0);
    EXPECT_EQ(elem.Vz, 0.0);
}

TEST_F(Translation, ends_closer_than_1e_minus_6_have_a_direction_and_that_length)
{
    circuit.GetNode(0)->SetLocation(0.0, 0.0, 0.0);
    circuit.GetNode(1)->SetLocation(1e-8, 0.0, 0.0);
    const lcnNET_elems elem = complete().elements[1];
    EXPECT_EQ(elem.length, 1.0e-6);
    EXPECT_EQ(elem.Vx, 1.0);
    circuit.GetNode(1)->SetLocation(1e-160, 0.0, 0.0);  // its square underflows
    EXPECT_EQ(complete().elements[1].Vx, 1e-160);
}

TEST_F(Translation, a_location_that_is_no_number_shows_in_the_length)
{
    circuit.GetNode(0)->SetLocation(std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0);
    EXPECT_TRUE(std::isnan(complete().elements[1].length));
}

TEST_F(Translation, a_pressure_takes_the_hydrostatic_part_of_its_height)
{
    circuit.GetNode(0)->SetLocation(0.0, 0.0, 12.7);
    circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 123456.7);
    const Network network = complete();
    EXPECT_EQ(network.nodes[1].flag, 1);
    EXPECT_EQ(network.nodes[1].Pressbound, 123456.7 + kDensity * 9.80665 * 12.7);
    EXPECT_EQ(network.nodes[1].Pressure, network.nodes[1].Pressbound);
    EXPECT_EQ(network.elements[1].fix, 0);
}

TEST_F(Translation, a_mass_flow_fixes_the_joined_element)
{
    circuit.GetNode(2)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, -1.25);
    const Network network = complete();
    EXPECT_EQ(network.elements[2].fix, 1);
    EXPECT_EQ(network.elements[2].FixedFlow, -1.25);
    EXPECT_EQ(network.nodes[3].flag, 0);
    EXPECT_EQ(network.elements[1].fix, 0);
}

TEST_F(Translation, reynolds_number_and_velocity_become_mass_flows)
{
    setElement(1, TAVELL_ELEMENT_DIAMETER, 0.123);
    setElement(1, TAVELL_ELEMENT_AREA, 0.0117);
    circuit.GetNode(2)->SetConstraint(TAVELL_CONSTRAINT_REYNOLDS, 54321.0);
    EXPECT_EQ(complete().elements[2].FixedFlow, 54321.0 * kViscosity * 0.0117 / 0.123);
    circuit.GetNode(2)->SetConstraint(TAVELL_CONSTRAINT_VELOCITY, 1.7);
    EXPECT_EQ(complete().elements[2].FixedFlow, 1.7 * 0.0117 * kDensity);
    EXPECT_EQ(complete().elements[2].fix, 1);
}

TEST_F(Translation, pressure_and_flow_have_both_effects)
{
    setNode(0, TAVELL_NODE_CONSTRAINT, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
    setNode(0, TAVELL_NODE_PRESSURE, 2e5);
    setNode(0, TAVELL_NODE_MASS_FLOW_RATE, 3.5);
    const Network network = complete();
    EXPECT_EQ(network.nodes[1].flag, 1);
    EXPECT_EQ(network.nodes[1].Pressbound, 2e5);
    EXPECT_EQ(network.elements[1].fix, 1);
    EXPECT_EQ(network.elements[1].FixedFlow, 3.5);
}

TEST_F(Translation, a_constraint_outside_0_to_4_imposes_nothing)
{
    for (const double constraint : {-1.0, 5.0, 100.0}) {
        setNode(0, TAVELL_NODE_CONSTRAINT, constraint);
        const Network network = complete();
        EXPECT_EQ(network.nodes[1].flag, 0);
        EXPECT_EQ(network.elements[1].fix, 0);
        EXPECT_EQ(network.nodes[1].tempflag, 1);
    }
}

TEST_F(Translation, an_element_keeps_the_first_flow_that_fixes_it)
{
    Circuit two(registry);
    makeLine(two, 2);
    two.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 1.0);
    two.GetNode(1)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 2.0);
    Network network = readModel(two, false);
    completeNetwork(network);
    EXPECT_EQ(network.elements[1].FixedFlow, 1.0);

    setElement(0, TAVELL_ELEMENT_MODE, TAVELL_CONTROL_VALVE);
    setElement(0, TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW, 9.0);
    circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, 1.0);
    EXPECT_EQ(complete().elements[1].FixedFlow, 9.0);
}

TEST_F(Translation, an_inner_node_imposes_nothing)
{
    circuit.GetNode(0)->SetType(TAVELL_NODE_INTERNAL);
    circuit.GetNode(0)->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 2e5);
    const Network network = complete();
    EXPECT_EQ(network.nodes[1].flag, 0);
    EXPECT_EQ(network.nodes[1].tempflag, 0);
}

TEST_F(Translation, an_inlet_fixes_its_temperature_and_an_outlet_does_not)
{
    setNode(0, TAVELL_NODE_FLUID_TEMPERATURE, 333.0);
    setNode(2, TAVELL_NODE_FLUID_TEMPERATURE, 334.0);
    Network network = complete();
    EXPECT_EQ(network.nodes[1].Temperature, 333.0);
    EXPECT_EQ(network.nodes[1].tempflag, 1);
    EXPECT_EQ(network.nodes[3].tempflag, 0);
    circuit.GetNode(0)->GetEntity()->RemoveProperty(TAVELL_NODE_FLUID_TEMPERATURE);
    EXPECT_EQ(complete().nodes[1].Temperature, kTemperature);
}

TEST_F(Translation, a_flow_at_a_node_with_several_elements_goes_to_the_first_of_its_list)
{
    circuit.GetNode(1)->SetType(TAVELL_NODE_OUTLET);
    setNode(1, TAVELL_NODE_CONSTRAINT, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
    setNode(1, TAVELL_NODE_PRESSURE, 2e5);
    setNode(1, TAVELL_NODE_MASS_FLOW_RATE, 3.5);
    const Network network = complete();
    EXPECT_EQ(network.nodes[2].flag, 1);
    EXPECT_EQ(network.elements[1].FixedFlow, 3.5);
    EXPECT_EQ(network.elements[2].fix, 0);
}

TEST_F(Translation, a_boundary_node_without_elements_takes_its_pressure_only)
{
    addNodes(circuit, 1);
    circuit.GetNode(3)->SetType(TAVELL_NODE_INLET);
    setNode(3, TAVELL_NODE_CONSTRAINT, TAVELL_CONSTRAINT_PRESSURE_AND_FLOW);
    setNode(3, TAVELL_NODE_PRESSURE, 2e5);
    setNode(3, TAVELL_NODE_MASS_FLOW_RATE, 3.5);
    const Network network = complete();
    EXPECT_EQ(network.nodes[4].flag, 1);
    EXPECT_EQ(network.elements[1].fix, 0);
    EXPECT_EQ(network.elements[2].fix, 0);
}

TEST_F(Translation, an_end_that_names_no_node_raises_the_missing_node_error)
{
    setElement(1, TAVELL_ELEMENT_END, 42.0);
    Network network = read();
    EXPECT_THROW(completeNetwork(network), lcn::FatalException);
    ASSERT_EQ(network.var.Messages.size(), 1U);
    EXPECT_EQ(network.var.Messages[0].id, 700650U);
    EXPECT_EQ(network.var.Messages[0].parameters, std::vector<double>{42.0});
}

TEST_F(Translation, a_text_that_is_no_number_is_an_error_wherever_it_stands)
{
    const auto expectThrow = [&](IEntity* entity, const char* name, const char* good) {
        setText(entity, name, "abc");
        EXPECT_THROW(read(), std::invalid_argument) << name;
        setText(entity, name, good);
        EXPECT_NO_THROW(read()) << name;
    };
    expectThrow(circuit.GetNode(1)->GetEntity(), "node_x", "1");
    expectThrow(circuit.GetNode(0)->GetEntity(), "node_pressure", "1");
    expectThrow(circuit.GetElement(0)->GetEntity(), "element_diameter", "1");
    expectThrow(circuit.GetEntity(), "circuit_gravity_x", "0");
    expectThrow(circuit.GetEntity(), "circuit_friction_factor", "0");
    expectThrow(circuit.GetFluid()->GetEntity(), "fluid_density", "1000");
    circuit.GetElement(0)->SetType(TAVELL_PUMP);
    expectThrow(circuit.GetElement(0)->GetEntity(), "__element_flow_rate", "1,2,3,4,");
}

TEST(TranslationSize, counts_that_pass_32_bits_do_not_fit_the_solver)
{
    EXPECT_TRUE(fitsSolver(0, 0));
    EXPECT_TRUE(fitsSolver(1000000, 1000000));
    EXPECT_TRUE(fitsSolver(2147483645, 1073741822));
    EXPECT_FALSE(fitsSolver(2147483646, 1));
    EXPECT_FALSE(fitsSolver(1, 1073741823));
}
