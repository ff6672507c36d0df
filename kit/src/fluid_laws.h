// fluid_laws.h: properties of liquids by temperature and concentration, one function per liquid. They are
// pure and do not check their ranges: fluids.cpp does.
#ifndef TAVELL_KIT_FLUID_LAWS_H
#define TAVELL_KIT_FLUID_LAWS_H

namespace kit
{

/// What a solve needs to know of a liquid.
struct LiquidValues {
    double density = 0.0;       // [kg/m3]
    double viscosity = 0.0;     // [Pa s], dynamic
    double specificHeat = 0.0;  // [J/(kg K)]
    double conductivity = 0.0;  // [W/(m K)]
};

/// Seawater at T [K], 273.15..453.15 K, and salinity S [kg/kg], 0..0.15.
LiquidValues seawater(double T, double S);

/// Ethylene glycol and propylene glycol in water at T [K], freezing point..373.15 K, and mass fraction x [-],
/// 0..0.6.
LiquidValues ethyleneGlycol(double T, double x);
LiquidValues propyleneGlycol(double T, double x);

/// Temperatures [K] at which the mixtures begin to freeze.
double ethyleneGlycolFreezing(double x);
double propyleneGlycolFreezing(double x);

/// Glycerine in water at T [K], 273.15..373.15 K, and mass fraction w [-], 0..1.
LiquidValues glycerine(double T, double w);

/// A mineral oil by two kinematic viscosities and its density.
struct OilGrade {
    double viscosity40 = 0.0;   // [mm2/s] at 40 degC
    double viscosity100 = 0.0;  // [mm2/s] at 100 degC
    double density15 = 0.0;     // [kg/m3] at 15 degC
};

/// A mineral oil at T [K], 273.15..393.15 K.
LiquidValues mineralOil(double T, const OilGrade& grade);

}  // namespace kit

#endif
