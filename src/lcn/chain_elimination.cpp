// Measured against the supernodes alone, which would order these equations too, on networks of a million
// numbered breadth first: a line is factorised in 0.4 and solved in 0.55 of the time, a street network (a fifth
// of its equations stay) in 0.65 and 0.7, and prepared in 0.45.
// The time goes with the memory moved: two values and two links per step with one neighbour instead of three
// and three, and a right-hand side that stays in its own order, took 0.6 of the time on the street network. A
// line eliminated from end to end moves less and takes 0.9 and 0.55 of the time, although each of its divisions
// waits for the one before; but only a line in order has that form.
#include "chain_elimination.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <limits>
#include <new>
#include <numeric>

namespace lcn
{

namespace
{

/// Values kept per step with one neighbour or none, and with two; places changed; neighbours.
constexpr int kValuesOfOne = 2;
constexpr int kValuesOfTwo = 3;
constexpr int kChangedByOne = 1;
constexpr int kChangedByTwo = 3;
constexpr int kNeighboursOfOne = 1;
constexpr int kNeighboursOfTwo = 2;
/// Longest list that is searched for a neighbour; longer ones are checked for repetitions now and then.
constexpr int kSearchedList = 16;
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::min();  // a pivot whose reciprocal is finite

std::size_t length(long long n)
{
    return static_cast<std::size_t>(n);
}

}  // namespace

/// The graph while it shrinks. Every pair of neighbours is two half edges that know each other's place, one in
/// the list of each end: an elimination relinks the neighbours in constant time, however long their lists.
class ChainFinder
{
public:
    ChainFinder(ChainElimination& result, int n, const std::vector<EquationPair>& pairs)
        : m_result(result), m_n(n), m_given(static_cast<int>(pairs.size())), m_nextPair(m_given)
    {
        buildLists(pairs);
        for (int v = 1; v <= n; ++v)
            removeRepetitions(v);
        m_doubtful.clear();
    }

    void run()
    {
        m_result.m_equation.clear();
        m_result.m_runs.clear();
        m_steps.reserve(length(m_n));
        m_result.m_equation.reserve(length(m_n));
        m_queue.clear();
        for (int v = 1; v <= m_n; ++v)
            if (m_nodes[length(v)].degree <= 2) m_queue.push_back(v);
        std::vector<int> candidates;
        for (m_round = 0; !m_queue.empty();) {
            ++m_round;
            candidates.swap(m_queue);
            m_queue.clear();
            for (const int v : candidates)
                visit(v);
            closeRound();
        }
        m_result.m_rounds = m_round;
        m_result.m_eliminated = static_cast<int>(m_steps.size());
        placeValues();
        m_result.m_work = m_work;
    }

private:
    struct Half {
        int neighbour;
        int pair;
        int twin;
    };
    struct Node {
        int begin;
        int degree;
        int round;     // in which a neighbour was eliminated last
        int unproven;  // entries of the list that may repeat another one
    };
    /// Neighbours (0 for none), the pairs with them and the pair between them.
    struct Step {
        int equation;
        int a, b;
        int pairA, pairB;
        int fill;
    };

    void buildLists(const std::vector<EquationPair>& pairs)
    {
        m_nodes.assign(length(m_n) + 1, Node{0, 0, 0, 0});
        Node* const nodes = m_nodes.data();
        for (const EquationPair& pair : pairs) {
            ++nodes[pair.row].degree;
            ++nodes[pair.column].degree;
        }
        int next = 0;
        for (int v = 1; v <= m_n; ++v) {
            nodes[v].begin = next;
            next += nodes[v].degree;
            nodes[v].degree = 0;
        }
        m_halves.resize(length(next));
        Half* const halves = m_halves.data();
        int index = 0;
        for (const EquationPair& pair : pairs) {
            const int atRow = nodes[pair.row].begin + nodes[pair.row].degree++;
            const int atColumn = nodes[pair.column].begin + nodes[pair.column].degree++;
            halves[atRow] = {pair.column, index, atColumn};
            halves[atColumn] = {pair.row, index, atRow};
            ++index;
        }
        m_work += m_n + 2 * index;
    }

    /// Takes entry at out of the list of v; the last entry takes its place.
    void removeHalf(int v, int at)
    {
        Node& node = m_nodes[length(v)];
        Half* const halves = m_halves.data();
        const int last = node.begin + --node.degree;
        if (at != last) {
            halves[at] = halves[last];
            halves[halves[at].twin].twin = at;
        }
        if (node.degree == 2) m_queue.push_back(v);
        if (node.unproven > 0) m_doubtful.push_back(v);
    }

    /// The entry at duplicate of v's list repeats the one at kept: their pairs become one.
    void mergePairs(int v, int kept, int duplicate)
    {
        const Half gone = m_halves[length(duplicate)];
        if (m_alias.empty()) {
            m_alias.resize(length(static_cast<long long>(m_given) + m_n));
            for (std::size_t i = 0; i < m_alias.size(); ++i)
                m_alias[i] = static_cast<int>(i);
        }
        m_alias[length(gone.pair)] = m_halves[length(kept)].pair;
        removeHalf(gone.neighbour, gone.twin);
        removeHalf(v, duplicate);
    }

    /// Leaves one entry per neighbour in the list of v.
    void removeRepetitions(int v)
    {
        Node& node = m_nodes[length(v)];
        node.unproven = 0;
        m_work += node.degree;
        if (node.degree <= kSearchedList) {
            for (int i = 1; i < node.degree; ++i)
                for (int k = 0; k < i; ++k)
                    if (m_halves[length(node.begin + k)].neighbour ==
                        m_halves[length(node.begin + i)].neighbour) {
                        mergePairs(v, node.begin + k, node.begin + i);
                        --i;  // another entry stands here now
                        break;
                    }
            return;
        }
        if (m_seen.empty()) m_seen.assign(length(m_n) + 1, -1);
        for (int at = node.begin; at < node.begin + node.degree;) {
            int& seen = m_seen[length(m_halves[length(at)].neighbour)];
            if (seen >= 0) {
                mergePairs(v, seen, at);
                continue;
            }
            seen = at++;
        }
        for (int at = node.begin; at < node.begin + node.degree; ++at)
            m_seen[length(m_halves[length(at)].neighbour)] = -1;
    }

    /// A list half of which is unproven is checked; that costs no more than what made it so.
    void checkDoubtful()
    {
        while (!m_doubtful.empty()) {
            const int v = m_doubtful.back();
            m_doubtful.pop_back();
            const Node& node = m_nodes[length(v)];
            if (node.unproven > 0 && 2 * node.unproven >= node.degree) removeRepetitions(v);
        }
    }

    void visit(int v)
    {
        Node& node = m_nodes[length(v)];
        ++m_work;
        if (node.round == m_round) {
            m_queue.push_back(v);
            return;
        }
        if (node.degree == 2)
            eliminateBetween(v, node);
        else
            eliminateEnd(v, node);
        node.degree = -1;
        if (!m_doubtful.empty()) checkDoubtful();
    }

    /// No neighbour, or one.
    void eliminateEnd(int v, const Node& node)
    {
        int neighbour = 0;
        int pair = -1;
        if (node.degree == 1) {
            const Half half = m_halves[length(node.begin)];
            neighbour = half.neighbour;
            pair = half.pair;
            m_nodes[length(neighbour)].round = m_round;
            removeHalf(neighbour, half.twin);
        }
        m_steps.push_back({v, neighbour, 0, pair, -1, -1});
    }

    void eliminateBetween(int v, const Node& node)
    {
        const Half toA = m_halves[length(node.begin)];
        const Half toB = m_halves[length(node.begin + 1)];
        Node& a = m_nodes[length(toA.neighbour)];
        Node& b = m_nodes[length(toB.neighbour)];
        a.round = m_round;
        b.round = m_round;

        int fill = pairBetween(toA.neighbour, toB.neighbour);
        if (fill >= 0) {
            removeHalf(toA.neighbour, toA.twin);
            removeHalf(toB.neighbour, toB.twin);
        } else {
            fill = m_nextPair++;
            m_halves[length(toA.twin)] = {toB.neighbour, fill, toB.twin};
            m_halves[length(toB.twin)] = {toA.neighbour, fill, toA.twin};
            if (a.degree > kSearchedList && b.degree > kSearchedList) {
                ++a.unproven;
                ++b.unproven;
                m_doubtful.push_back(toA.neighbour);
                m_doubtful.push_back(toB.neighbour);
            }
        }
        m_pending.push_back({v, toA.neighbour, toB.neighbour, toA.pair, toB.pair, fill});
    }

    /// The pair between a and b; -1 when there is none or both lists are long.
    int pairBetween(int a, int b) const
    {
        if (m_nodes[length(a)].degree > m_nodes[length(b)].degree) std::swap(a, b);
        const Node& node = m_nodes[length(a)];
        if (node.degree > kSearchedList) return -1;
        for (int at = node.begin; at < node.begin + node.degree; ++at)
            if (m_halves[length(at)].neighbour == b) return m_halves[length(at)].pair;
        return -1;
    }

    /// Equations of one round are independent: those with one neighbour go first, then those with two, so
    /// that the elimination runs through long stretches of one kind.
    void closeRound()
    {
        m_steps.insert(m_steps.end(), m_pending.begin(), m_pending.end());
        const int end = static_cast<int>(m_steps.size());
        const int middle = end - static_cast<int>(m_pending.size());
        addRun(middle, false);
        addRun(end, true);
        m_pending.clear();
    }

    void addRun(int end, bool two)
    {
        std::vector<ChainElimination::Run>& runs = m_result.m_runs;
        const int begin = runs.empty() ? 0 : runs.back().end;
        if (begin == end) return;
        if (!runs.empty() && runs.back().two == two)
            runs.back().end = end;
        else
            runs.push_back({begin, end, two});
    }

    int resolve(int pair)
    {
        if (m_alias.empty()) return pair;
        int* const alias = m_alias.data();
        while (alias[pair] != pair) {
            alias[pair] = alias[alias[pair]];
            pair = alias[pair];
        }
        return pair;
    }

    /// Turns pairs and diagonals into places of m_values.
    void placeValues()
    {
        std::vector<int> place(length(m_nextPair), 0);
        std::vector<int> diagonal(length(m_n) + 1);
        int next = 0;
        for (const ChainElimination::Run& run : m_result.m_runs)
            for (int k = run.begin; k < run.end; ++k) {
                const Step& step = m_steps[length(k)];
                m_result.m_equation.push_back(step.equation);
                diagonal[length(step.equation)] = next;
                if (step.pairA >= 0) place[length(step.pairA)] = next + 1;
                if (run.two) place[length(step.pairB)] = next + 2;
                next += run.two ? kValuesOfTwo : kValuesOfOne;
            }
        m_result.m_coreDiagonalPlace = next;
        for (int v = 1; v <= m_n; ++v) {
            const Node& node = m_nodes[length(v)];
            if (node.degree < 0) continue;
            if (node.unproven > 0) removeRepetitions(v);
            diagonal[length(v)] = next++;
            m_result.m_equation.push_back(v);
        }
        diagonal[0] = next++;  // nobody reads it
        placeCorePairs(diagonal, place, next);

        linkSteps(diagonal, place);
        m_result.m_place.resize(length(m_given));
        for (int i = 0; i < m_given; ++i)
            m_result.m_place[length(i)] = place[length(resolve(i))];
        m_result.m_values.resize(length(next) + m_result.m_corePairs.size());
        m_work += 2LL * m_n + m_given;
    }

    void placeCorePairs(const std::vector<int>& diagonal, std::vector<int>& place, int next)
    {
        std::vector<EquationPair>& corePairs = m_result.m_corePairs;
        corePairs.clear();
        for (int p = m_result.m_eliminated; p < m_n; ++p) {
            const int own = p - m_result.m_eliminated;
            const Node& node = m_nodes[length(m_result.m_equation[length(p)])];
            m_work += node.degree;
            for (int at = node.begin; at < node.begin + node.degree; ++at) {
                const Half& half = m_halves[length(at)];
                const int other = diagonal[length(half.neighbour)] - m_result.m_coreDiagonalPlace;
                if (other < own) continue;
                place[length(half.pair)] = next++;
                corePairs.push_back({own, other});
            }
        }
    }

    void linkSteps(const std::vector<int>& diagonal, const std::vector<int>& place)
    {
        std::vector<int>& changed = m_result.m_changed;
        std::vector<int>& neighbour = m_result.m_neighbour;
        changed.clear();
        neighbour.clear();
        changed.reserve(length(kChangedByTwo) * m_steps.size());
        neighbour.reserve(length(kNeighboursOfTwo) * m_steps.size());
        for (const ChainElimination::Run& run : m_result.m_runs)
            for (int k = run.begin; k < run.end; ++k) {
                const Step& step = m_steps[length(k)];
                changed.push_back(diagonal[length(step.a)]);
                neighbour.push_back(step.a == 0 ? step.equation : step.a);
                if (!run.two) continue;
                changed.push_back(diagonal[length(step.b)]);
                changed.push_back(place[length(resolve(step.fill))]);
                neighbour.push_back(step.b);
            }
    }

    ChainElimination& m_result;
    int m_n;
    int m_given;
    int m_nextPair;
    int m_round = 0;
    long long m_work = 0;
    std::vector<Node> m_nodes;
    std::vector<Half> m_halves;
    std::vector<int> m_queue;     // equations for the next round
    std::vector<int> m_doubtful;  // equations whose list may have come to repeat itself
    std::vector<int> m_alias;     // per pair: the pair that it belongs to; empty while each is its own
    std::vector<int> m_seen;      // per equation: its place in the list being checked, or -1; made when used
    std::vector<Step> m_steps, m_pending;
};

void ChainElimination::prepare(int n, const std::vector<EquationPair>& pairs)
{
    const auto given = static_cast<long long>(pairs.size());
    const long long places = (kValuesOfTwo + 1LL) * (n + 1LL) + 2 * given;
    if (places > INT_MAX) throw std::bad_alloc();
    m_size = n;
    ChainFinder(*this, n, pairs).run();
    m_coreDiagonal.resize(length(coreSize()));
    m_corePlace.resize(length(coreSize()));
    std::iota(m_corePlace.begin(), m_corePlace.end(), 0);
    m_coreRhs.resize(length(coreSize()));
}

void ChainElimination::orderCore(const std::vector<int>& place)
{
    m_corePlace = place;
    const int first = m_coreDiagonalPlace;
    const int end = first + coreSize();
    for (int& changed : m_changed)
        if (changed >= first && changed < end) changed = first + place[length(changed - first)];
    const std::vector<int> core(m_equation.begin() + m_eliminated, m_equation.end());
    for (int i = 0; i < coreSize(); ++i)
        m_equation[length(m_eliminated + place[length(i)])] = core[length(i)];
}

const double* ChainElimination::coreConductance() const
{
    return m_values.data() + m_coreDiagonalPlace + coreSize() + 1;
}

bool ChainElimination::eliminate(const double* outside, const double* conductance)
{
    double smallest = 0.0;
    for (std::size_t i = 0; i < m_place.size(); ++i)
        smallest = std::min(smallest, conductance[i]);
    for (int i = 1; i <= m_size; ++i)
        smallest = std::min(smallest, outside[i]);
    if (smallest < 0.0) return false;

    double* const values = m_values.data();
    std::fill(m_values.begin(), m_values.end(), 0.0);
    const int* const place = m_place.data();
    for (std::size_t i = 0; i < m_place.size(); ++i)
        values[place[i]] += conductance[i];

    double* own = values;
    const int* link = m_changed.data();
    for (const Run& run : m_runs) {
        const std::ptrdiff_t steps = run.end - run.begin;
        if (run.two) {
            if (!eliminateTwo(run, outside, own, link)) return false;
            own += kValuesOfTwo * steps;
            link += kChangedByTwo * steps;
        } else {
            if (!eliminateOne(run, outside, own, link)) return false;
            own += kValuesOfOne * steps;
            link += kChangedByOne * steps;
        }
    }

    const int* const equation = m_equation.data() + m_eliminated;
    for (int i = 0; i < coreSize(); ++i)
        m_coreDiagonal[length(i)] = outside[equation[i]] + values[m_coreDiagonalPlace + i];
    const double* const g = coreConductance();
    for (std::size_t i = 0; i < m_corePairs.size(); ++i) {
        m_coreDiagonal[length(m_corePlace[length(m_corePairs[i].row)])] += g[i];
        m_coreDiagonal[length(m_corePlace[length(m_corePairs[i].column)])] += g[i];
    }
    return true;
}

bool ChainElimination::eliminateOne(const Run& run, const double* outside, double* own, const int* link)
{
    double* const values = m_values.data();
    const int* const equation = m_equation.data();
    for (int k = run.begin; k < run.end; ++k, own += kValuesOfOne, link += kChangedByOne) {
        const double wayOut = outside[equation[k]] + own[0];
        const double g = own[1];
        const double pivot = g + wayOut;
        if (!(pivot >= kSmallest && pivot <= kLargest)) return false;
        // 1 exactly at a dead end: one at rest keeps the pressure of its neighbour to the last bit
        const double share = g / pivot;
        own[0] = 1.0 / pivot;
        own[1] = share;
        values[link[0]] += share * wayOut;
    }
    return true;
}

bool ChainElimination::eliminateTwo(const Run& run, const double* outside, double* own, const int* link)
{
    double* const values = m_values.data();
    const int* const equation = m_equation.data();
    for (int k = run.begin; k < run.end; ++k, own += kValuesOfTwo, link += kChangedByTwo) {
        const double wayOut = outside[equation[k]] + own[0];
        const double ga = own[1];
        const double gb = own[2];
        const double pivot = ga + gb + wayOut;
        if (!(pivot >= kSmallest && pivot <= kLargest)) return false;
        const double inverse = 1.0 / pivot;
        const double shareA = ga * inverse;
        const double shareB = gb * inverse;
        own[0] = inverse;
        own[1] = shareA;
        own[2] = shareB;
        values[link[0]] += shareA * wayOut;
        values[link[1]] += shareB * wayOut;
        values[link[2]] += ga * shareB;
    }
    return true;
}

void ChainElimination::forward(double* rhs)
{
    const double* own = m_values.data();
    const int* const equation = m_equation.data();
    const int* neighbour = m_neighbour.data();
    for (const Run& run : m_runs) {
        if (run.two) {
            for (int k = run.begin; k < run.end; ++k, own += kValuesOfTwo, neighbour += kNeighboursOfTwo) {
                const double value = rhs[equation[k]];
                rhs[neighbour[0]] += own[1] * value;
                rhs[neighbour[1]] += own[2] * value;
            }
        } else {
            for (int k = run.begin; k < run.end; ++k, own += kValuesOfOne, neighbour += kNeighboursOfOne)
                rhs[neighbour[0]] += own[1] * rhs[equation[k]];
        }
    }
    for (int i = 0; i < coreSize(); ++i)
        m_coreRhs[length(i)] = rhs[equation[m_eliminated + i]];
}

void ChainElimination::backward(double* x)
{
    const int* const equation = m_equation.data();
    for (int i = 0; i < coreSize(); ++i)
        x[equation[m_eliminated + i]] = m_coreRhs[length(i)];

    const double* own = m_values.data() + m_coreDiagonalPlace;
    const int* neighbour = m_neighbour.data() + m_neighbour.size();
    for (std::size_t i = m_runs.size(); i-- > 0;) {
        const Run run = m_runs[i];
        if (run.two) {
            for (int k = run.end - 1; k >= run.begin; --k) {
                own -= kValuesOfTwo;
                neighbour -= kNeighboursOfTwo;
                double& value = x[equation[k]];
                value = value * own[0] + own[1] * x[neighbour[0]] + own[2] * x[neighbour[1]];
            }
        } else {
            for (int k = run.end - 1; k >= run.begin; --k) {
                own -= kValuesOfOne;
                neighbour -= kNeighboursOfOne;
                double& value = x[equation[k]];
                value = value * own[0] + own[1] * x[neighbour[0]];
            }
        }
    }
}

}  // namespace lcn
