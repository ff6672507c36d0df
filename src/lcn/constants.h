// constants.h: numbers of the solver that more than one file needs, each with its unit and origin.
#pragma once

namespace lcn
{

/// Smallest magnitude that is divided by; a smaller divisor counts as zero and each formula states what it
/// gives then.
inline constexpr double kTiny = 3e-38;

/// Standard gravity [m/s2], ISO 80000-3.
inline constexpr double kGravity = 9.80665;

/// Ratio of a circle's circumference to its diameter [-].
inline constexpr double kPi = 3.14159265358979323846;

/// A time step [s] above this one is a steady state: storage and inertia terms are left out.
inline constexpr double kSteadyTimeStep = 1e10;

/// Conductance [kg/(s Pa)] of a node, or of an element's law, whose slope vanishes.
inline constexpr double kLargeConductance = 1e6;

}  // namespace lcn
