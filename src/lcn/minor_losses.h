// minor_losses.h: the minor loss coefficients in force, specified or from the junctions.
#pragma once

#include <cmath>

#include "records.h"

namespace lcn
{

/// Modes, field Minor of lcnNET_var, without losses from the junctions.
inline constexpr int kSpecifiedLosses = 0;
inline constexpr int kNoLosses = 4;

/// Follows the minor loss coefficients K through an iteration. Modes (var.Minor): 0 the specified K; 1 the
/// computed one, replaced by the specified K where that exceeds 3e-38; 4 none; other values the computed K.
class MinorLosses
{
public:
    /// Starting coefficients, those of junctions 0. Writes every k, unless there are no minor losses or the
    /// solve is warm.
    void start(const ElementArray& elements, lcnNET_var& var);

    /// One update, relaxed and capped at 200. Returns true when the sum of all K changed by less than
    /// Concrit.
    bool update(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var);

    bool areFinite() const { return std::isfinite(m_previousSum); }
    double error() const { return m_error; }  // [-] relative change of the sum of all K
    int updates() const { return m_updates; }

private:
    double m_previousSum = 0.0;
    double m_error = 0.0;
    int m_updates = 0;
    array<double> m_previous;  // per element
};

}  // namespace lcn
