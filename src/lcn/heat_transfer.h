// heat_transfer.h: heat between an element's wall and the fluid in it.
#pragma once

#include "records.h"

namespace lcn
{

/// Prandtl number [-]: mu Cp / conductivity. 0.0 without a conductivity.
double prandtl(double mu, double Cp, double conductivity);

/// Nusselt number [-] of flow in a duct. Re, Pr [-]; friction is the Darcy factor [-]; heated: the wall is
/// warmer.
/// Re < 10: 0. Laminar up to 2300: 3.66 (Graetz 1883, uniform wall temperature). From 3000: Gnielinski
/// (1976), f/8 (Re - 1000) Pr / (1 + 12.7 sqrt(f/8) (Pr^(2/3) - 1)), published to 5e6; between a straight
/// line in Re.
/// Above 5e6: Dittus and Boelter (1930), 0.023 Re^0.8 Pr^n, n = 0.4 heated, 0.3 cooled.
double nusselt(double Re, double Pr, double friction, bool heated);

/// Temperature [K] of the node that an element's flow comes from; the start node's at rest.
double upstreamTemperature(const NodeArray& nodes, const lcnNET_elems& elem);

/// Heat [W] that element e gives to its fluid, > 0 warms it; stored in heat, with its flux per wetted wall in
/// HeatFlux.
/// By Energy_var: 0, 1 convection from a wall at MetalTemp, bounded by what brings the fluid to the wall's
/// temperature;
/// 2, 4 WettedArea x HeatFlux; 3 Cp x Massflow x TemperatureRise; 5 the stored heat, from which MetalTemp
/// follows.
/// Other kinds, pumps and loss curves with kinds 0 and 1, and elements whose heat is given keep what is
/// stored.
/// Reads flow, geometry, friction, temperatures; writes heat, HeatFlux, hConvect, MetalTemp (kind 5).
double elementHeat(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int e);

}  // namespace lcn
