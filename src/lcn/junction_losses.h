// junction_losses.h: minor losses that follow from the geometry of a junction.
#pragma once

#include "records.h"

namespace lcn
{

/// Largest loss coefficient [-] that a junction gives to an element, and that an element gets in all.
inline constexpr double kLargestK = 200.0;

/// Sudden expansion from area A1 to A2 > A1 [m2], on the velocity in A1: (1 - A1/A2)^2. Borda (1766), Carnot
/// (1803).
/// 0.0 when A2 <= A1.
double expansionLoss(double A1, double A2);

/// Sudden contraction from area A1 to A2 < A1 [m2], on the velocity in A2: 0.5 (1 - A2/A1). Weisbach (1855).
/// 0.0 when A2 >= A1.
double contractionLoss(double A1, double A2);

/// Mitre bend on the pipe's velocity: 0.9457 sin^2(t/2) + 2.047 sin^4(t/2), t the deflection. Weisbach
/// (1855).
/// cosine [-] of the deflection, 1 straight on (exactly 0.0 within 1e-12 of it), -1 back on itself.
double bendLoss(double cosine);

/// Branch of a dividing or combining junction, on the velocity of its supply: r^2 + 1 - 2 r cos(3/4 (pi -
/// t)), r [-] branch over supply velocity, t the angle between the two axes, both pointing away from the
/// junction. Bassett, Winterbone and Pearson (2001). cosine [-] is that of the deflection pi - t: straight
/// through gives (1 - r)^2.
double branchLoss(double r, double cosine);

/// The same on the branch's own velocity, never above kLargestK: a branch that hardly flows loses the dynamic
/// pressure of its supply, which is no finite multiple of its own.
double branchLossOnOwnVelocity(double r, double cosine);

/// Adds to each element's k [-] the losses of the junctions at its two ends, on its own velocity, from the
/// areas, directions and flows that meet at each free node, held ones included.
/// One flow in and one out: area change and bend. More: each outflow against a supply that has the
/// flow-weighted mean velocity and direction of all inflows, after Mynard and Valen-Sendstad (2015); a supply
/// that feeds and a supply that is fed by one more branch then merge without a step. Where var.Minor is 2,
/// junctions of three flows have no loss.
/// Elements of types 1 and 4 to 10 with an area receive losses. Flows up to 1e-10 kg/s count as none.
void addJunctionLosses(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

}  // namespace lcn
