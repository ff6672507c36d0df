#include "chain_elimination.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <limits>
#include <new>

namespace lcn
{

namespace
{

constexpr std::ptrdiff_t kValuesPerPosition = 3;
/// Longest list that is searched for a neighbour; longer ones are checked for repetitions now and then.
constexpr int kSearchedList = 16;
constexpr double kLargest = std::numeric_limits<double>::max();

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
        m_result.m_steps.clear();
        m_result.m_equation.clear();
        m_result.m_runs.clear();
        m_result.m_steps.reserve(length(m_n));
        m_result.m_equation.reserve(length(m_n));
        m_stepPairs.reserve(length(m_n));
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
        m_result.m_eliminated = static_cast<int>(m_result.m_steps.size());
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
    struct StepPairs {
        int a;
        int b;
    };
    struct PendingStep {
        int equation;
        ChainElimination::Step step;
        StepPairs pairs;
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
        m_result.m_equation.push_back(v);
        m_result.m_steps.push_back({neighbour, 0, 0});
        m_stepPairs.push_back({pair, -1});
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
        m_pending.push_back({v, {toA.neighbour, toB.neighbour, fill}, {toA.pair, toB.pair}});
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
        for (const PendingStep& pending : m_pending) {
            m_result.m_equation.push_back(pending.equation);
            m_result.m_steps.push_back(pending.step);
            m_stepPairs.push_back(pending.pairs);
        }
        const int end = static_cast<int>(m_result.m_steps.size());
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

    /// Turns equations into positions and pairs into places of m_values.
    void placeValues()
    {
        const int eliminated = m_result.m_eliminated;
        std::vector<int> place(length(m_nextPair), 0);
        std::vector<int> position(length(m_n) + 1);
        position[0] = m_n;  // no neighbour
        for (int k = 0; k < eliminated; ++k) {
            const StepPairs& pairs = m_stepPairs[length(k)];
            position[length(m_result.m_equation[length(k)])] = k;
            if (pairs.a >= 0) place[length(pairs.a)] = static_cast<int>(kValuesPerPosition * k + 1);
            if (pairs.b >= 0) place[length(pairs.b)] = static_cast<int>(kValuesPerPosition * k + 2);
        }
        for (int v = 1; v <= m_n; ++v) {
            const Node& node = m_nodes[length(v)];
            if (node.degree < 0) continue;
            if (node.unproven > 0) removeRepetitions(v);
            position[length(v)] = static_cast<int>(m_result.m_equation.size());
            m_result.m_equation.push_back(v);
        }
        placeCorePairs(position, place);

        for (ChainElimination::Step& step : m_result.m_steps)
            step = {position[length(step.a)], position[length(step.b)], step.fill};
        for (const ChainElimination::Run& run : m_result.m_runs) {
            if (!run.two) continue;
            for (int k = run.begin; k < run.end; ++k) {
                int& fill = m_result.m_steps[length(k)].fill;
                fill = place[length(resolve(fill))];
            }
        }
        m_result.m_place.resize(length(m_given));
        for (int i = 0; i < m_given; ++i)
            m_result.m_place[length(i)] = place[length(resolve(i))];
        m_work += 2LL * m_n + m_given;
    }

    void placeCorePairs(const std::vector<int>& position, std::vector<int>& place)
    {
        std::vector<EquationPair>& corePairs = m_result.m_corePairs;
        corePairs.clear();
        const int eliminated = m_result.m_eliminated;
        int next = static_cast<int>(kValuesPerPosition * (m_n + 1));
        for (int p = eliminated; p < m_n; ++p) {
            const Node& node = m_nodes[length(m_result.m_equation[length(p)])];
            m_work += node.degree;
            for (int at = node.begin; at < node.begin + node.degree; ++at) {
                const Half& half = m_halves[length(at)];
                const int other = position[length(half.neighbour)];
                if (other < p) continue;
                place[length(half.pair)] = next++;
                corePairs.push_back({p - eliminated, other - eliminated});
            }
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
    std::vector<PendingStep> m_pending;
    std::vector<StepPairs> m_stepPairs;
};

void ChainElimination::prepare(int n, const std::vector<EquationPair>& pairs)
{
    const auto given = static_cast<long long>(pairs.size());
    const long long places = kValuesPerPosition * (n + 1LL) + 2 * given + n;
    if (places > INT_MAX) throw std::bad_alloc();
    m_size = n;
    ChainFinder(*this, n, pairs).run();
    m_values.resize(length(kValuesPerPosition * (n + 1LL)) + m_corePairs.size());
    m_solution.resize(length(n) + 1);
    m_coreDiagonal.resize(length(coreSize()));
    m_coreScale.resize(length(coreSize()));
}

void ChainElimination::orderCore(const std::vector<int>& place)
{
    const int m = m_eliminated;
    const auto moved = [&](int p) { return p < m || p == m_size ? p : m + place[length(p - m)]; };
    for (Step& step : m_steps)
        step = {moved(step.a), moved(step.b), step.fill};
    const std::vector<int> core(m_equation.begin() + m, m_equation.end());
    for (int i = 0; i < coreSize(); ++i)
        m_equation[length(m + place[length(i)])] = core[length(i)];
}

const double* ChainElimination::coreConductance() const
{
    return m_values.data() + kValuesPerPosition * (m_size + 1);
}

bool ChainElimination::eliminate(const double* diagonal, const double* conductance)
{
    double* const values = m_values.data();
    std::fill(m_values.begin(), m_values.end(), 0.0);
    for (std::size_t i = 0; i < m_place.size(); ++i)
        values[m_place[i]] += conductance[i];

    for (const Run& run : m_runs)
        if (!(run.two ? eliminateTwo(run, diagonal) : eliminateOne(run, diagonal))) return false;

    for (int i = 0; i < coreSize(); ++i) {
        const int p = m_eliminated + i;
        const double original = diagonal[m_equation[length(p)]];
        m_coreScale[length(i)] = original;
        m_coreDiagonal[length(i)] = original + values[kValuesPerPosition * p];
    }
    return true;
}

bool ChainElimination::eliminateOne(const Run& run, const double* diagonal)
{
    double* const values = m_values.data();
    double* own = values + kValuesPerPosition * run.begin;
    for (int k = run.begin; k < run.end; ++k, own += kValuesPerPosition) {
        const double original = diagonal[m_equation[length(k)]];
        const double pivot = original + own[0];
        if (!(pivot > kSmallestPivot * original && pivot <= kLargest)) return false;
        const double inverse = 1.0 / pivot;
        const double g = own[1];
        const double share = g * inverse;
        own[0] = inverse;
        own[1] = share;
        values[kValuesPerPosition * m_steps[length(k)].a] -= g * share;
    }
    return true;
}

bool ChainElimination::eliminateTwo(const Run& run, const double* diagonal)
{
    double* const values = m_values.data();
    double* own = values + kValuesPerPosition * run.begin;
    for (int k = run.begin; k < run.end; ++k, own += kValuesPerPosition) {
        const double original = diagonal[m_equation[length(k)]];
        const double pivot = original + own[0];
        if (!(pivot > kSmallestPivot * original && pivot <= kLargest)) return false;
        const double inverse = 1.0 / pivot;
        const double ga = own[1];
        const double gb = own[2];
        const double shareA = ga * inverse;
        const double shareB = gb * inverse;
        own[0] = inverse;
        own[1] = shareA;
        own[2] = shareB;
        const Step& step = m_steps[length(k)];
        values[kValuesPerPosition * step.a] -= ga * shareA;
        values[kValuesPerPosition * step.b] -= gb * shareB;
        values[step.fill] += ga * shareB;
    }
    return true;
}

void ChainElimination::forward(const double* rhs)
{
    std::fill(m_solution.begin(), m_solution.end(), 0.0);
    double* const r = m_solution.data();
    const double* own = m_values.data();
    const int* const equation = m_equation.data();
    const Step* const steps = m_steps.data();
    for (const Run& run : m_runs) {
        if (run.two) {
            for (int k = run.begin; k < run.end; ++k, own += kValuesPerPosition) {
                const double value = r[k] + rhs[equation[k]];
                r[k] = value;
                r[steps[k].a] += own[1] * value;
                r[steps[k].b] += own[2] * value;
            }
        } else {
            for (int k = run.begin; k < run.end; ++k, own += kValuesPerPosition) {
                const double value = r[k] + rhs[equation[k]];
                r[k] = value;
                r[steps[k].a] += own[1] * value;
            }
        }
    }
    for (int p = m_eliminated; p < m_size; ++p)
        r[p] += rhs[equation[p]];
}

void ChainElimination::backward(double* x)
{
    double* const r = m_solution.data();
    const int* const equation = m_equation.data();
    const Step* const steps = m_steps.data();
    r[m_size] = 0.0;
    for (int p = m_eliminated; p < m_size; ++p)
        x[equation[p]] = r[p];
    for (std::size_t i = m_runs.size(); i-- > 0;) {
        const Run run = m_runs[i];
        const double* own = m_values.data() + kValuesPerPosition * run.end;
        for (int k = run.end - 1; k >= run.begin; --k) {
            own -= kValuesPerPosition;
            double value = r[k] * own[0] + own[1] * r[steps[k].a];
            if (run.two) value += own[2] * r[steps[k].b];
            r[k] = value;
            x[equation[k]] = value;
        }
    }
}

}  // namespace lcn
