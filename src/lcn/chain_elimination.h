// chain_elimination.h: exact elimination of the equations with at most two neighbours.
#pragma once

#include <cstddef>
#include <vector>

namespace lcn
{

/// One off-diagonal pair of equations, 1..n, row != column; pairs may repeat (their values add up).
struct EquationPair {
    int row;
    int column;
};

/// Reduces a symmetric system to its core: while an equation has at most two distinct neighbours it is
/// eliminated, which replaces a chain by one pair and drops a tree altogether, without fill. Equations go in
/// rounds of mutually independent ones, so that a line of n takes about log n rounds and the divisions of one
/// round do not wait for one another. What is left, the core, has at least three neighbours everywhere.
///
/// The diagonal is not kept but what it has beyond the conductances of the pairs, the way out o of each equation:
/// the elimination then only adds, and nothing is lost to cancellation, however small o is beside the rest
/// (Grassmann, Taksar and Heyman 1985). Eliminating v with the neighbours a and b, conductances ga and gb:
///   d = ga + gb + o, o(a) += ga o/d, o(b) += gb o/d, g(a,b) += ga gb/d.
///
/// Positions run from 0: eliminated equations in their order, then the core. Cost: linear in equations and
/// pairs, whatever their shape.
class ChainElimination
{
public:
    /// Finds the order and the place of every value. Throws std::bad_alloc, also when the places would not
    /// fit in 32 bits.
    void prepare(int n, const std::vector<EquationPair>& pairs);

    /// Number of equations that stay.
    int coreSize() const { return m_size - m_eliminated; }
    /// Distinct pairs of the core, equations 0 .. coreSize - 1.
    const std::vector<EquationPair>& corePairs() const { return m_corePairs; }
    /// Moves core equation i to place[i]; from then on the core's values and right-hand side are in that
    /// order. The pairs keep theirs. Once per prepare.
    void orderCore(const std::vector<int>& place);

    /// Eliminates with the ways out outside[1..n] and conductance[i] for pair i. False when one of them is
    /// negative, or a pivot is not positive or not finite.
    bool eliminate(const double* outside, const double* conductance);
    /// After eliminate: the core's diagonal in the core's order, and the conductance of every core pair.
    const double* coreDiagonal() const { return m_coreDiagonal.data(); }
    const double* coreConductance() const;

    /// Eliminates the right-hand side rhs[1..n]; the core's is then coreRhs(), to be solved in place.
    void forward(double* rhs);
    double* coreRhs() { return m_coreRhs.data(); }
    /// Finds the eliminated unknowns from the core's; x is what forward left of rhs and becomes the solution.
    void backward(double* x);

    /// Values kept for the eliminated equations.
    std::size_t entries() const { return static_cast<std::size_t>(m_coreDiagonalPlace); }
    /// Rounds of the last prepare, and how many steps over equations and pairs it took.
    int rounds() const { return m_rounds; }
    long long work() const { return m_work; }

private:
    /// Steps begin .. end - 1, all with the same number of neighbours (one, or two).
    struct Run {
        int begin;
        int end;
        bool two;
    };
    friend class ChainFinder;

    bool eliminateOne(const Run& run, const double* outside, double* own, const int* link);
    bool eliminateTwo(const Run& run, const double* outside, double* own, const int* link);

    int m_size = 0;
    int m_eliminated = 0;
    int m_rounds = 0;
    long long m_work = 0;
    std::vector<int> m_equation;  // equation at each position
    std::vector<Run> m_runs;
    std::vector<int> m_place;  // per given pair: its place in m_values
    std::vector<EquationPair> m_corePairs;
    // What a step changes, step by step: the places of the diagonals of its one or two neighbours and, with
    // two, of the value between them; and the neighbours' equations. A step without neighbours changes a place
    // that nobody reads, by nothing.
    std::vector<int> m_changed, m_neighbour;
    // Two or three values per step, one per core equation, the one that nobody reads and one per core pair.
    // Before its step an equation has what the earlier ones add to its way out, ga and gb; afterwards 1/d,
    // ga/d and gb/d. The steps of a million equations move all this through memory several times, which is
    // what they cost: every value saved shows.
    std::vector<double> m_values;
    int m_coreDiagonalPlace = 0;
    std::vector<double> m_coreDiagonal, m_coreRhs;
    std::vector<int> m_corePlace;  // by core equation as the pairs have it: its place in the core's order
};

}  // namespace lcn
