// full_newton.h: a second way to the steady flow of a network, for comparison with the library's.
#pragma once

#include <vector>

#include "dense.h"
#include "laws.h"
#include "support/networks.h"

namespace reference
{

/// One number per node and one per element.
struct State {
    std::vector<double> pressures;  // [Pa], static
    std::vector<double> flows;      // [kg/s], > 0 from start to end
};

/// Newton's method on all unknowns together, the pressures of the nodes and the flows of the elements, with a full
/// matrix and no relaxation but a shorter step where the full one does not bring the equations closer:
///
///     an element                    p_start - p_end + rho g (z_start - z_end) - dp(m) = 0
///     an element of given flow      m - given = 0
///     a node                        sum of the flows in - sum of the flows out = 0
///     a node of given pressure      p - given = 0
///     an end of given flow          the equation of its element, which has the given flow
///
/// Control valves and non-return elements stand open or at their limit; the one of lowest number that stands wrong
/// changes over, until all stand right (Murty 1974, which ends where losses grow with the flow).
class FullNewton
{
public:
    explicit FullNewton(const support::Description& description);

    /// True when every equation is met to 1e-11 of the flows and of the largest pressure.
    bool solve();
    const State& state() const { return m_state; }

    /// How far a state that just meets the library's criterion may be from this one, to first order: the inverse of
    /// the equations' derivative, times imbalances of criterion times the mean flow at every node and misses of the
    /// laws that add up to criterion times the elements' mean pressures. The slope of a law is not taken smaller
    /// than it is over the flow that the permitted miss itself can drive.
    State allowance(double criterion) const;

    /// Nodes whose pressure follows from the given ones; the others lie behind elements at their limit.
    std::vector<bool> hasPressure() const;

    /// False where the library cannot be expected to converge: no node balance is to be solved, or a flow that
    /// counts has too small a pressure difference beside the pressures themselves (docs/theory.md, section 4).
    bool isWithinReach() const;

private:
    enum class Stand { open, atLimit, atReverseLimit };

    bool newton();
    bool changeOneLimit();
    std::vector<double> residuals(const State& state) const;
    DenseMatrix derivative(const std::vector<double>& slopes) const;
    std::vector<double> slopesAt(const std::vector<double>& flows) const;
    double drivingPressure(const State& state, std::size_t element) const;
    double meanPressure(std::size_t element) const;
    double meanFlow(const std::vector<double>& flows) const;
    bool isAtLimit(std::size_t element) const;
    bool hasGivenFlow(std::size_t element) const;
    double givenFlow(std::size_t element) const;

    support::Description m_description;
    std::vector<Law> m_laws;
    std::vector<bool> m_isGiven;
    std::vector<double> m_given;       // [kg/s]
    std::vector<Stand> m_stands;       // of control valves and non-return elements
    std::vector<bool> m_isPressure;    // node of given pressure
    std::vector<int> m_flowEndOf;      // element whose law gives this node's pressure, -1: none
    std::vector<double> m_potentials;  // g z [m2/s2] from the lowest node
    double m_pressureScale = 1.0;      // [Pa]
    double m_flowScale = 1.0;          // [kg/s]
    State m_start;
    State m_state;
};

}  // namespace reference
