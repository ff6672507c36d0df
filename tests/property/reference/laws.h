// laws.h: the loss of pressure along an element, written from the formulas of docs/theory.md and nothing else.
#pragma once

#include <functional>

#include "support/networks.h"

namespace reference
{

/// Loss of pressure [Pa] from start to end over the mass flow [kg/s] from start to end.
using Law = std::function<double(double)>;

/// Law of an element inside the network. Control valves and non-return elements count as the open pipes that
/// they are.
Law lawOf(const support::Description& description, const support::ElementData& element);

/// Law of an element at whose end the flow is given: lawOf, but for loss curves, which are followed point by
/// point there.
Law lawAtFlowEnd(const support::Description& description, const support::ElementData& element);

/// Darcy friction factor [-] of a turbulent flow; method is a TavellFrictionMethod, t the relative roughness.
double turbulentFriction(int method, double Re, double t);

/// Cross-section [m2] of an element, that of a round pipe where none is given.
double areaOf(const support::ElementData& element);

/// A property of an element, 0 without one.
double propertyOf(const support::ElementData& element, int id);

/// Gravity times height [m2/s2] of a node against gravity, from the origin.
double heightPotential(const support::Description& description, const support::NodeData& node);

}  // namespace reference
