// preparation.h: from translated records to the start of the iteration.
#pragma once

#include <vector>

#include "records.h"

namespace lcn
{

/// The whole preparation of translated records: work arrays, and the steps below in their order.
void prepare(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

/// Turns element inputs into the coefficients of the hydraulics and fits the curves of pumps and losses, by
/// type:
/// 2, 3 fit the curve (kCurveError when it cannot be fitted); 4 HWcoeff := L / D^4.87 (10.67 / C^1.85 9.806);
/// 5 HWcoeff := beta = d / D, Param1 and Param2 the tapping distances; 6 HWcoeff := ck L^b / D^c;
/// 7, 8 HWcoeff := 100.10310619938537 / X^2, X the valve coefficient [m3/s at 1 bar].
void prepareElementCoefficients(const ElementArray& elements, lcnNET_var& var);

/// Fits the curve of every pump and loss; kCurveError when one cannot be fitted.
void fitCurves(const ElementArray& elements, lcnNET_var& var);

/// Classifies every node (flag) and sets starting pressures, temperatures, flows and densities.
/// A fixed flow on a pipe between inner nodes becomes a target (FlowLimited) that the first iteration
/// imposes; a control valve or non-return element that does not end at a flow boundary starts as an open
/// resistance.
void setInitialValues(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

/// Settles Debug: TAVELL_DEBUG_FILE set to 1 switches it on, anything else leaves it. Then forces zero flow
/// on every end node that has neither a fixed pressure nor a fixed flow. With Debug it writes the report
/// "Initial_debug_file.dat" before and a line for each forced end to "forcedbc.dat"; a file that cannot be
/// opened is left out, the ends are forced all the same.
void applyDebugAndOpenEnds(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

/// Copies every current value into its previous-iteration companion.
void keepAsPrevious(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

/// Elements whose ends both have a fixed pressure, ascending.
std::vector<int> elementsBetweenFixedPressures(const NodeArray& nodes, const ElementArray& elements,
                                               const lcnNET_var& var);

/// Starting flow of every element between two fixed pressures, from its own law; 0.0 between equal pressures.
void setFlowsBetweenFixedPressures(const NodeArray& nodes, const ElementArray& elements,
                                   const lcnNET_var& var);

/// Flow [kg/s] of element e between two fixed pressures: its linearised law solved again and again, until the
/// flow's relative change is at most tolerance. Writes Massflow. False when it does not settle.
bool settleFlowBetweenFixedPressures(const NodeArray& nodes, const ElementArray& elements,
                                     const lcnNET_var& var, int e, double tolerance);

/// Whether element e ends at a flow boundary.
bool hasFlowEnd(const NodeArray& nodes, const lcnNET_elems& elem);

}  // namespace lcn
