// element_inputs.h: what an element's law gets: its own values with those of its material, its fittings and
// its curve.
#ifndef TAVELL_KIT_ELEMENT_INPUTS_H
#define TAVELL_KIT_ELEMENT_INPUTS_H

#include <string>
#include <vector>

#include "network.h"

namespace kit
{

/// The inputs of one element; SI units.
struct ElementInputs {
    double roughness = 0.0;                          // [m], its own or its material's
    double k = 0.0;                                  // [-], its own and those of its fittings
    double hazenWilliams = 0.0;                      // [-], C, its own or its material's
    const std::vector<CurvePoint>* curve = nullptr;  // its own or the shared one; null when it has none
    double referenceDensity = 0.0;  // [kg/m3], of the curve; that of the fluid when none is given
    std::string missing;            // the first name that nothing answers to: material "steel"
};

/// fluidDensity in kg/m3.
ElementInputs inputsOf(const Network& network, const Element& element, double fluidDensity);

/// Distance between the end nodes of an element [m].
double distanceOf(const Network& network, const Element& element);

/// The length of an element's law [m]: the given one, else that of the geometry; in schematic networks, where
/// coordinates have no length, shortLength of its section.
double lengthOf(const Network& network, const Element& element);

/// [m], of an element of a schematic network that was given no length: a tenth of its hydraulic diameter.
double shortLength(const Element& element);

/// Height of a node against gravity [m], from the origin; its third coordinate without gravity.
double heightOf(const Network& network, const Node& node);

/// Standard gravity times the length of the network's gravity vector [m/s2].
double gravityOf(const Network& network);

/// What a given flow of a boundary is as a mass flow into the network [kg/s]. A velocity and a Reynolds
/// number need the section; without one the answer is not a number. density [kg/m3], viscosity [Pa s].
double massFlowInto(const Boundary& boundary, const Section* section, double density, double viscosity);

}  // namespace kit

#endif
