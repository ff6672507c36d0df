// fluid_water.h: ordinary water as a liquid, from the formulations of the International Association for the
// Properties of Water and Steam (IAPWS).
#ifndef TAVELL_KIT_FLUID_WATER_H
#define TAVELL_KIT_FLUID_WATER_H

#include "fluid_laws.h"

namespace kit
{

/// Saturation pressure [Pa] at T [K], 273.15..647.096 K: IAPWS-IF97, region 4, eq. 30.
double waterSaturationPressure(double T);

struct WaterState {
    double density = 0.0;       // [kg/m3]
    double specificHeat = 0.0;  // [J/(kg K)], at constant pressure
};

/// Liquid water at T [K], 273.15..623.15 K, and p [Pa], saturation..100 MPa: IAPWS-IF97, region 1, eq. 7.
WaterState liquidWater(double T, double p);

/// Dynamic viscosity [Pa s] at T [K] and rho [kg/m3]: IAPWS R12-08, without the critical enhancement, which
/// only counts close to 647 K.
double waterViscosity(double T, double rho);

/// Thermal conductivity [W/(m K)] at T [K] and rho [kg/m3]: IAPWS R15-11, without the critical enhancement,
/// which adds less than 1 % to the liquid up to 473 K.
double waterConductivity(double T, double rho);

/// Water at T [K], 273.15..473.15 K, at the standard atmosphere, above its boiling point at saturation.
LiquidValues water(double T);

}  // namespace kit

#endif
