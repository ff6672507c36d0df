// Measured against the same factor kept column by column, every update with its place found beforehand: level at
// 1e3 equations of a lattice, 0.34 of the time at 1e4, 0.16 at 4e4, where those places alone take most of the
// preparation; level on the cores of street networks, whose panels are all small. The limits below are on flat
// ground: half or twice of each changes the time by less than a tenth from 1e4 equations on.
// Nested dissection was not needed: minimum degree after a breadth-first numbering leaves fewer entries than it
// promises (a lattice of 1e6: 49 entries per equation, 31/4 log2 1000 = 77 by George 1973).
#include "supernodes.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "minimum_degree.h"

namespace lcn
{

namespace
{

constexpr double kLargest = std::numeric_limits<double>::max();
/// Widest panel: four of its rows and the packed factor stay in the first-level cache.
constexpr int kWidestPanel = 96;
/// Most rows below a panel that hands its updates on itself, and its most columns.
constexpr int kPushedRows = 16;
constexpr int kPushedColumns = 16;
/// Fewest equations that are numbered anew before they are ordered, when neighbours are far apart.
constexpr int kWorthRenumbering = 200;
/// Longest row list that is searched from its front.
constexpr int kSearchedRows = 64;
/// Most rows of a panel that is eliminated without the kernels.
constexpr int kSmallPanelRows = 16;
/// Fewest columns of a panel that is solved on gathered rows.
constexpr int kGatheredColumns = 3;

std::size_t length(long long n)
{
    return static_cast<std::size_t>(n);
}

Adjacency adjacencyOf(int n, const std::vector<EquationPair>& pairs, const std::vector<int>& label)
{
    Adjacency graph;
    graph.start.assign(length(n) + 1, 0);
    for (const EquationPair& pair : pairs) {
        ++graph.start[length(label[length(pair.row)])];
        ++graph.start[length(label[length(pair.column)])];
    }
    int end = 0;
    for (int& start : graph.start) {
        end += start;
        start = end;
    }
    graph.columns.resize(length(end));
    for (std::size_t i = pairs.size(); i-- > 0;) {
        const int r = label[length(pairs[i].row)];
        const int c = label[length(pairs[i].column)];
        graph.columns[length(--graph.start[length(r)])] = c;
        graph.columns[length(--graph.start[length(c)])] = r;
    }
    return graph;
}

std::vector<int> identity(int n)
{
    std::vector<int> label(length(n));
    for (int i = 0; i < n; ++i)
        label[length(i)] = i;
    return label;
}

std::vector<int> inverse(const std::vector<int>& order)
{
    std::vector<int> place(order.size());
    for (std::size_t k = 0; k < order.size(); ++k)
        place[length(order[k])] = static_cast<int>(k);
    return place;
}

/// All equations, each component by its distance from its first one.
std::vector<int> breadthFirstOrder(const Adjacency& graph)
{
    const int n = graph.size();
    std::vector<char> seen(length(n), 0);
    std::vector<int> order;
    order.reserve(length(n));
    for (int root = 0; root < n; ++root) {
        if (seen[length(root)]) continue;
        seen[length(root)] = 1;
        std::size_t next = order.size();
        for (order.push_back(root); next < order.size(); ++next) {
            const int i = order[next];
            for (int at = graph.start[length(i)]; at < graph.start[length(i) + 1]; ++at) {
                const int j = graph.columns[length(at)];
                if (seen[length(j)]) continue;
                seen[length(j)] = 1;
                order.push_back(j);
            }
        }
    }
    return order;
}

/// Parent of every column in the elimination tree, -1 for roots (Liu 1990, with path compression).
std::vector<int> eliminationTree(const Adjacency& graph)
{
    const int n = graph.size();
    std::vector<int> parent(length(n), -1);
    std::vector<int> ancestor(length(n), -1);
    for (int j = 0; j < n; ++j)
        for (int at = graph.start[length(j)]; at < graph.start[length(j) + 1]; ++at) {
            int i = graph.columns[length(at)];
            while (i >= 0 && i < j) {
                const int next = ancestor[length(i)];
                ancestor[length(i)] = j;
                if (next < 0) parent[length(i)] = j;
                i = next;
            }
        }
    return parent;
}

/// Nodes of a forest, children before their parent, each subtree in one stretch.
std::vector<int> postorder(const std::vector<int>& parent)
{
    const int n = static_cast<int>(parent.size());
    std::vector<int> child(length(n) + 1, -1);  // first child; the last slot holds the roots
    std::vector<int> sibling(length(n), -1);
    for (int j = n - 1; j >= 0; --j) {
        const int p = parent[length(j)] < 0 ? n : parent[length(j)];
        sibling[length(j)] = child[length(p)];
        child[length(p)] = j;
    }
    std::vector<int> order;
    order.reserve(length(n));
    std::vector<int> path;
    for (int root = child[length(n)]; root >= 0; root = sibling[length(root)]) {
        path.push_back(root);
        while (!path.empty()) {
            const int j = path.back();
            const int next = child[length(j)];
            if (next >= 0) {
                child[length(j)] = sibling[length(next)];
                path.push_back(next);
            } else {
                order.push_back(j);
                path.pop_back();
            }
        }
    }
    return order;
}

/// Entries of every column of the factor, the diagonal included (Gilbert, Ng and Peyton 1994): row i of the
/// factor is a subtree of the elimination tree, and the leaves of all these subtrees give the counts.
std::vector<int> columnCounts(const Adjacency& graph, const std::vector<int>& parent,
                              const std::vector<int>& order)
{
    const int n = graph.size();
    std::vector<int> count(length(n), 0);
    std::vector<int> firstDescendant(length(n), -1);
    std::vector<int> latestFirst(length(n), -1);  // of the leaves of row i so far
    std::vector<int> previousLeaf(length(n), -1);
    std::vector<int> ancestor = identity(n);
    for (int k = 0; k < n; ++k) {
        int j = order[length(k)];
        count[length(j)] = firstDescendant[length(j)] < 0 ? 1 : 0;
        for (; j >= 0 && firstDescendant[length(j)] < 0; j = parent[length(j)])
            firstDescendant[length(j)] = k;
    }
    for (int k = 0; k < n; ++k) {
        const int j = order[length(k)];
        const int up = parent[length(j)];
        if (up >= 0) --count[length(up)];
        for (int at = graph.start[length(j)]; at < graph.start[length(j) + 1]; ++at) {
            const int i = graph.columns[length(at)];
            if (i <= j || firstDescendant[length(j)] <= latestFirst[length(i)]) continue;
            latestFirst[length(i)] = firstDescendant[length(j)];
            ++count[length(j)];
            const int previous = previousLeaf[length(i)];
            previousLeaf[length(i)] = j;
            if (previous < 0) continue;
            int common = previous;
            while (common != ancestor[length(common)])
                common = ancestor[length(common)];
            for (int s = previous; s != common;) {
                const int next = ancestor[length(s)];
                ancestor[length(s)] = common;
                s = next;
            }
            --count[length(common)];
        }
        if (up >= 0) ancestor[length(j)] = up;
    }
    for (int j = 0; j < n; ++j)
        if (parent[length(j)] >= 0) count[length(parent[length(j)])] += count[length(j)];
    return count;
}

/// Share of zeros that a supernode of so many columns may store: narrow ones gain more by growing.
double allowedZeros(int columns)
{
    if (columns <= 4) return 0.5;
    if (columns <= 16) return 0.2;
    if (columns <= 48) return 0.1;
    return 0.05;
}

/// The columns of the factor gathered into supernodes: a column joins its parent's supernode when that stores
/// few zeros.
class Amalgamation
{
public:
    Amalgamation(const std::vector<int>& parent, const std::vector<int>& count)
        : m_parent(parent), m_n(static_cast<int>(parent.size())), m_into(length(m_n), -1),
          m_columns(length(m_n), 1), m_below(length(m_n)), m_true(length(m_n))
    {
        std::vector<int> child(length(m_n), -1);
        std::vector<int> sibling(length(m_n), -1);
        for (int j = 0; j < m_n; ++j) {
            m_below[length(j)] = count[length(j)] - 1;
            m_true[length(j)] = count[length(j)];
        }
        for (int j = m_n - 1; j >= 0; --j) {
            const int p = parent[length(j)];
            if (p < 0) continue;
            sibling[length(j)] = child[length(p)];
            child[length(p)] = j;
        }
        for (int j = 0; j < m_n; ++j) {
            int largest = child[length(j)];
            for (int c = largest; c >= 0; c = sibling[length(c)])
                if (m_below[length(c)] > m_below[length(largest)]) largest = c;
            if (largest >= 0) tryMerge(largest, j);
            for (int c = child[length(j)]; c >= 0; c = sibling[length(c)])
                if (c != largest) tryMerge(c, j);
        }
    }

    /// Numbers the supernodes so that descendants come first; group[j] is column j's, tops[g] the last column
    /// of supernode g.
    void number(std::vector<int>& group, std::vector<int>& tops) const
    {
        std::vector<int> root(length(m_n));
        std::vector<int> compact(length(m_n), -1);
        std::vector<int> topOf;
        for (int j = m_n - 1; j >= 0; --j)
            root[length(j)] = m_into[length(j)] < 0 ? j : root[length(m_into[length(j)])];
        for (int j = 0; j < m_n; ++j)
            if (m_into[length(j)] < 0) {
                compact[length(j)] = static_cast<int>(topOf.size());
                topOf.push_back(j);
            }
        std::vector<int> up(topOf.size());
        for (std::size_t g = 0; g < topOf.size(); ++g) {
            const int p = m_parent[length(topOf[g])];
            up[g] = p < 0 ? -1 : compact[length(root[length(p)])];
        }
        const std::vector<int> order = postorder(up);
        const std::vector<int> rank = inverse(order);
        tops.resize(order.size());
        for (std::size_t g = 0; g < order.size(); ++g)
            tops[g] = topOf[length(order[g])];
        group.resize(length(m_n));
        for (int j = 0; j < m_n; ++j)
            group[length(j)] = rank[length(compact[length(root[length(j)])])];
    }

    int columns(int top) const { return m_columns[length(top)]; }
    int below(int top) const { return m_below[length(top)]; }

private:
    void tryMerge(int child, int top)
    {
        const long long columns = m_columns[length(child)] + m_columns[length(top)];
        const long long stored = columns * (columns + 1) / 2 + columns * m_below[length(top)];
        const long long wanted = m_true[length(child)] + m_true[length(top)];
        const auto zeros = static_cast<double>(stored - wanted);
        if (zeros > allowedZeros(static_cast<int>(columns)) * static_cast<double>(stored)) return;
        m_into[length(child)] = top;
        m_columns[length(top)] = static_cast<int>(columns);
        m_true[length(top)] = wanted;
    }

    const std::vector<int>& m_parent;
    int m_n;
    std::vector<int> m_into;        // top column of the supernode that the one of this top column has joined
    std::vector<int> m_columns;     // per top column
    std::vector<int> m_below;       // per top column: rows below the supernode
    std::vector<long long> m_true;  // per top column: entries that are not zero for sure
};

}  // namespace

/// Lays out the factor.
class SymbolicFactor
{
public:
    SymbolicFactor(SupernodalFactor& factor, int n, const std::vector<EquationPair>& pairs)
        : m_factor(factor), m_n(n), m_pairs(pairs)
    {
    }

    void run()
    {
        orderEquations();
        layOutPanels();
        findRows();
        findTargets();
    }

private:
    using Panel = SupernodalFactor::Panel;

    void orderEquations()
    {
        const std::vector<int> first = fillReducingOrder();
        const std::vector<int> label = inverse(first);
        const Adjacency graph = adjacencyOf(m_n, m_pairs, label);
        const std::vector<int> parent = eliminationTree(graph);
        const std::vector<int> counts = columnCounts(graph, parent, postorder(parent));
        const Amalgamation amalgamation(parent, counts);
        std::vector<int> group;
        std::vector<int> tops;
        amalgamation.number(group, tops);

        const std::size_t groups = tops.size();
        m_first.assign(groups + 1, 0);
        m_below.resize(groups);
        m_up.resize(groups);
        for (std::size_t g = 0; g < groups; ++g) {
            m_first[g + 1] = m_first[g] + amalgamation.columns(tops[g]);
            m_below[g] = amalgamation.below(tops[g]);
            const int p = parent[length(tops[g])];
            m_up[g] = p < 0 ? -1 : group[length(p)];
        }
        std::vector<int> next(m_first.begin(), m_first.end() - 1);
        m_factor.m_place.resize(length(m_n));
        m_group.resize(length(m_n));
        for (int j = 0; j < m_n; ++j) {
            const int position = next[length(group[length(j)])]++;
            m_factor.m_place[length(first[length(j)])] = position;
            m_group[length(position)] = group[length(j)];
        }
    }

    /// Minimum degree. Its ties follow the numbering: where that is scattered, as in a shuffled network, a
    /// breadth-first one comes first (a shuffled lattice of 1e6: 0.8 of the entries, 0.35 of the time to
    /// factorise and 0.3 to prepare).
    std::vector<int> fillReducingOrder() const
    {
        const std::vector<int> given = identity(m_n);
        Adjacency graph = adjacencyOf(m_n, m_pairs, given);
        if (!isScattered()) return minimumDegreeOrder(graph);
        const std::vector<int> walk = breadthFirstOrder(graph);
        graph = adjacencyOf(m_n, m_pairs, inverse(walk));
        std::vector<int> order = minimumDegreeOrder(graph);
        for (int& equation : order)
            equation = walk[length(equation)];
        return order;
    }

    /// Whether neighbours are as far apart in the numbering as in a random one, where it is a third of all.
    bool isScattered() const
    {
        if (m_n < kWorthRenumbering) return false;
        double apart = 0.0;
        for (const EquationPair& pair : m_pairs)
            apart += std::abs(pair.row - pair.column);
        return apart > 0.125 * static_cast<double>(m_n) * static_cast<double>(m_pairs.size());
    }

    /// Cuts wide supernodes into panels and gives each its place.
    void layOutPanels()
    {
        const std::size_t groups = m_below.size();
        std::vector<Panel>& panels = m_factor.m_panels;
        panels.clear();
        m_factor.m_panelOf.resize(length(m_n));
        m_list.resize(groups);
        std::size_t rows = 0;
        std::size_t values = 0;
        for (std::size_t g = 0; g < groups; ++g) {
            const int columns = m_first[g + 1] - m_first[g];
            const int parts = (columns + kWidestPanel - 1) / kWidestPanel;
            m_list[g] = rows;
            for (int part = 0; part < parts; ++part) {
                const int begin = static_cast<int>(static_cast<long long>(columns) * part / parts);
                const int end = static_cast<int>(static_cast<long long>(columns) * (part + 1) / parts);
                const int height = columns - begin + m_below[g];
                const int index = static_cast<int>(panels.size());
                const bool pushes = height - (end - begin) <= kPushedRows && end - begin <= kPushedColumns;
                panels.push_back(
                    {m_first[g] + begin, end - begin, height, pushes, rows + length(begin), values, 0});
                for (int j = begin; j < end; ++j)
                    m_factor.m_panelOf[length(m_first[g] + j)] = index;
                values += length(height) * length(end - begin);
            }
            rows += length(columns + m_below[g]);
        }
        m_factor.m_rows.resize(rows);
        m_factor.m_values.resize(values);
        m_factor.m_entries = values;
    }

    /// Rows of every supernode and the place of every pair: row i reaches the supernodes on the ways from its
    /// neighbours up the tree to its own. Rows come in ascending order by themselves.
    void findRows()
    {
        std::vector<std::size_t> end(m_list);
        for (std::size_t g = 0; g < end.size(); ++g)
            for (int j = m_first[g]; j < m_first[g + 1]; ++j)
                m_factor.m_rows[end[g]++] = j;

        const std::vector<int>& place = m_factor.m_place;
        std::vector<int> start(length(m_n) + 1, 0);
        for (const EquationPair& pair : m_pairs)
            ++start[length(std::max(place[length(pair.row)], place[length(pair.column)]))];
        int total = 0;
        for (int& s : start) {
            total += s;
            s = total;
        }
        std::vector<int> sorted(m_pairs.size());
        for (std::size_t i = m_pairs.size(); i-- > 0;) {
            const int high = std::max(place[length(m_pairs[i].row)], place[length(m_pairs[i].column)]);
            sorted[length(--start[length(high)])] = static_cast<int>(i);
        }

        m_factor.m_pairPlace.resize(m_pairs.size());
        std::vector<int> visitor(m_below.size(), -1);
        for (int i = 0; i < m_n; ++i) {
            const int own = m_group[length(i)];
            for (int at = start[length(i)]; at < start[length(i) + 1]; ++at) {
                const auto index = length(sorted[length(at)]);
                const int low =
                    std::min(place[length(m_pairs[index].row)], place[length(m_pairs[index].column)]);
                const int from = m_group[length(low)];
                for (int g = from; g != own && visitor[length(g)] != i; g = m_up[length(g)]) {
                    visitor[length(g)] = i;
                    m_factor.m_rows[end[length(g)]++] = i;
                }
                const Panel& panel = m_factor.m_panels[length(m_factor.m_panelOf[length(low)])];
                const std::size_t row =
                    from == own ? length(i - panel.first) : end[length(from)] - 1 - panel.list;
                m_factor.m_pairPlace[index] =
                    panel.values + length(low - panel.first) * length(panel.rows) + row;
            }
        }
    }

    /// Where the updates of the small panels go.
    void findTargets()
    {
        std::vector<std::uint32_t>& targets = m_factor.m_targets;
        targets.clear();
        const bool fit = m_factor.m_values.size() <= std::numeric_limits<std::uint32_t>::max();
        for (Panel& panel : m_factor.m_panels) {
            if (!fit) panel.pushes = false;
            if (!panel.pushes) continue;
            panel.targets = targets.size();
            const int* const rows = m_factor.m_rows.data() + panel.list;
            for (int a = panel.columns; a < panel.rows; ++a)
                targetsOfColumn(rows + a, panel.rows - a, targets);
        }
    }

    /// Places of rows[0 .. count - 1] in column rows[0].
    void targetsOfColumn(const int* rows, int count, std::vector<std::uint32_t>& targets) const
    {
        const Panel& panel = m_factor.m_panels[length(m_factor.m_panelOf[length(rows[0])])];
        const int* const list = m_factor.m_rows.data() + panel.list;
        const std::size_t column = panel.values + length(rows[0] - panel.first) * length(panel.rows);
        int at = rows[0] - panel.first;
        for (int b = 0; b < count; ++b) {
            if (rows[b] - panel.first < panel.columns)
                at = rows[b] - panel.first;
            else if (panel.rows > kSearchedRows)
                at = static_cast<int>(std::lower_bound(list + at, list + panel.rows, rows[b]) - list);
            else
                while (list[at] != rows[b])
                    ++at;
            targets.push_back(static_cast<std::uint32_t>(column + length(at)));
        }
    }

    SupernodalFactor& m_factor;
    int m_n;
    const std::vector<EquationPair>& m_pairs;
    std::vector<int> m_group;         // per position
    std::vector<int> m_first;         // per supernode: first position; one more at the end
    std::vector<int> m_below;         // per supernode: rows below it
    std::vector<int> m_up;            // per supernode: parent, or -1
    std::vector<std::size_t> m_list;  // per supernode: begin of its rows
};

void SupernodalFactor::prepare(int n, const std::vector<EquationPair>& pairs)
{
    m_n = n;
    m_kernels = m_portable ? &portableKernels() : &fastestKernels();
    SymbolicFactor(*this, n, pairs).run();
    m_pivots.resize(length(n));
    m_inverse.resize(length(n));
    m_waiting.assign(m_panels.size(), -1);
    m_nextWaiting.resize(m_panels.size());
    m_progress.resize(m_panels.size());
    m_rowIndex.resize(length(n));
    int tallest = 0;
    for (const Panel& panel : m_panels)
        tallest = std::max(tallest, panel.rows);
    m_gathered.resize(length(tallest));
}

bool SupernodalFactor::factorise(const double* diagonal, const double* conductance)
{
    std::fill(m_values.begin(), m_values.end(), 0.0);
    std::fill(m_waiting.begin(), m_waiting.end(), -1);
    for (std::size_t i = 0; i < m_pairPlace.size(); ++i)
        m_values[m_pairPlace[i]] = -conductance[i];
    for (const Panel& panel : m_panels) {
        double* const values = valuesOf(panel);
        for (int j = 0; j < panel.columns; ++j)
            values[static_cast<std::ptrdiff_t>(j) * (panel.rows + 1)] += diagonal[panel.first + j];
    }
    for (std::size_t index = 0; index < m_panels.size(); ++index) {
        const Panel& panel = m_panels[index];
        if (m_waiting[index] >= 0) pull(panel, static_cast<int>(index));
        const bool small = panel.rows <= kSmallPanelRows;
        if (!(small ? eliminateSmallPanel(panel, diagonal) : eliminatePanel(panel, diagonal))) return false;
        if (panel.pushes) {
            push(panel);
        } else {
            m_progress[index] = panel.columns;
            linkUp(static_cast<int>(index));
        }
    }
    return true;
}

/// Puts a panel into the queue of the one that its next rows belong to.
void SupernodalFactor::linkUp(int index)
{
    const Panel& panel = m_panels[length(index)];
    const int progress = m_progress[length(index)];
    if (progress >= panel.rows) return;
    const int target = m_panelOf[length(m_rows[panel.list + length(progress)])];
    m_nextWaiting[length(index)] = m_waiting[length(target)];
    m_waiting[length(target)] = index;
}

/// Packs rows from .. from + count - 1 of a panel, times D, as the second factor of an update.
void SupernodalFactor::pack(const Panel& panel, int from, int count)
{
    const int k = panel.columns;
    const std::size_t needed =
        length((count + kKernelColumns - 1) / kKernelColumns) * kKernelColumns * length(k);
    if (m_packed.size() < needed) m_packed.resize(needed);
    double* out = m_packed.data();
    const double* const values = valuesOf(panel) + from;
    const double* const pivots = m_pivots.data() + panel.first;
    for (int j = 0; j < count; j += kKernelColumns) {
        const int columns = std::min(kKernelColumns, count - j);
        const double* source = values + j;
        for (int i = 0; i < k; ++i, source += panel.rows, out += kKernelColumns)
            for (int c = 0; c < kKernelColumns; ++c)
                out[c] = c < columns ? source[c] * pivots[i] : 0.0;
    }
}

void SupernodalFactor::pull(const Panel& panel, int index)
{
    for (int i = 0; i < panel.rows; ++i)
        m_rowIndex[length(m_rows[panel.list + length(i)])] = i;
    for (int source = m_waiting[length(index)]; source >= 0;) {
        const int next = m_nextWaiting[length(source)];
        pullFrom(panel, source);
        linkUp(source);
        source = next;
    }
}

/// Subtracts what the panel source contributes to this one.
void SupernodalFactor::pullFrom(const Panel& panel, int source)
{
    const Panel& from = m_panels[length(source)];
    const int progress = m_progress[length(source)];
    const int* const rows = m_rows.data() + from.list + progress;
    const int m = from.rows - progress;
    int n = 1;
    while (n < m && rows[n] < panel.first + panel.columns)
        ++n;
    m_progress[length(source)] = progress + n;
    pack(from, progress, n);
    const double* const a = valuesOf(from) + progress;
    double* const target = valuesOf(panel);
    const std::ptrdiff_t ld = panel.rows;

    const int* const index = m_rowIndex.data();
    const int begin = index[rows[0]];
    if (index[rows[m - 1]] - begin == m - 1) {  // neighbouring rows throughout
        m_kernels->subtractProduct(target + begin * ld + begin, ld, a, from.rows, m_packed.data(), m, n,
                                   from.columns);
        return;
    }
    const std::size_t needed = length(m) * length(n);
    if (m_update.size() < needed) m_update.resize(needed);
    if (m_relative.size() < length(m)) m_relative.resize(length(m));
    double* const update = m_update.data();
    std::fill(update, update + needed, 0.0);
    int* const relative = m_relative.data();
    for (int i = 0; i < m; ++i)
        relative[i] = index[rows[i]];
    m_kernels->subtractProduct(update, m, a, from.rows, m_packed.data(), m, n, from.columns);
    for (int j = 0; j < n; ++j) {
        double* const column = target + relative[j] * ld;
        const double* const values = update + static_cast<std::ptrdiff_t>(j) * m;
        for (int i = j; i < m; ++i)
            column[relative[i]] += values[i];
    }
}

/// The panel's own part of L and D, column by column: faster than the kernels while all of it is small.
bool SupernodalFactor::eliminateSmallPanel(const Panel& panel, const double* diagonal)
{
    const std::ptrdiff_t ld = panel.rows;
    double* column = valuesOf(panel);
    for (int j = 0; j < panel.columns; ++j, column += ld) {
        const double pivot = column[j];
        const double original = diagonal[panel.first + j];
        if (!(pivot > kSmallestPivot * original && pivot <= kLargest)) return false;
        const double inversePivot = 1.0 / pivot;
        m_pivots[length(panel.first + j)] = pivot;
        m_inverse[length(panel.first + j)] = inversePivot;
        double* later = column + ld;
        for (int k = j + 1; k < panel.columns; ++k, later += ld) {
            const double factor = column[k] * inversePivot;
            for (int i = k; i < panel.rows; ++i)
                later[i] -= column[i] * factor;
        }
        for (int i = j + 1; i < panel.rows; ++i)
            column[i] *= inversePivot;
    }
    return true;
}

/// The panel's own part of L and D: groups of four columns, each after an update by the columns before it.
bool SupernodalFactor::eliminatePanel(const Panel& panel, const double* diagonal)
{
    double* const values = valuesOf(panel);
    const std::ptrdiff_t ld = panel.rows;
    double* const pivots = m_pivots.data() + panel.first;
    const auto subtract = [&](int j, int n, int fromColumn, int k) {
        const double* const a = values + fromColumn * ld + j;
        const std::size_t needed = length(kKernelColumns) * length(k);
        if (m_packed.size() < needed) m_packed.resize(needed);
        double* const w = m_packed.data();
        for (int i = 0; i < k; ++i)
            for (int c = 0; c < kKernelColumns; ++c)
                w[kKernelColumns * i + c] = c < n ? a[i * ld + c] * pivots[fromColumn + i] : 0.0;
        m_kernels->subtractProduct(values + j * ld + j, ld, a, ld, w, panel.rows - j, n, k);
    };
    for (int block = 0; block < panel.columns; block += kKernelColumns) {
        const int end = std::min(block + kKernelColumns, panel.columns);
        if (block > 0) subtract(block, end - block, 0, block);
        for (int j = block; j < end; ++j) {
            if (j > block) subtract(j, 1, block, j - block);
            double* const column = values + j * ld;
            const double pivot = column[j];
            const double original = diagonal[panel.first + j];
            if (!(pivot > kSmallestPivot * original && pivot <= kLargest)) return false;
            const double inversePivot = 1.0 / pivot;
            pivots[j] = pivot;
            m_inverse[length(panel.first + j)] = inversePivot;
            m_kernels->scale(column + j + 1, inversePivot, panel.rows - j - 1);
        }
    }
    return true;
}

/// Hands the updates of a small panel on.
void SupernodalFactor::push(const Panel& panel)
{
    const std::ptrdiff_t ld = panel.rows;
    const std::uint32_t* target = m_targets.data() + panel.targets;
    const double* const pivots = m_pivots.data() + panel.first;
    double* const all = m_values.data();
    const double* from = valuesOf(panel) + panel.columns;
    for (int count = panel.rows - panel.columns; count > 0; --count, ++from) {
        const double factor = from[0] * pivots[0];
        if (panel.columns == 1) {
            for (int b = 0; b < count; ++b)
                all[target[b]] -= from[b] * factor;
        } else {
            double update[kPushedRows];
            for (int b = 0; b < count; ++b)
                update[b] = from[b] * factor;
            const double* column = from + ld;
            for (int k = 1; k < panel.columns; ++k, column += ld) {
                const double next = column[0] * pivots[k];
                for (int b = 0; b < count; ++b)
                    update[b] += column[b] * next;
            }
            for (int b = 0; b < count; ++b)
                all[target[b]] -= update[b];
        }
        target += count;
    }
}

void SupernodalFactor::solve(double* x)
{
    for (const Panel& panel : m_panels)
        forward(panel, x);
    for (std::size_t index = m_panels.size(); index-- > 0;)
        backward(m_panels[index], x);
}

void SupernodalFactor::forward(const Panel& panel, double* x)
{
    const int columns = panel.columns;
    const int below = panel.rows - columns;
    const std::ptrdiff_t ld = panel.rows;
    const int* const rows = m_rows.data() + panel.list + columns;
    const double* const values = valuesOf(panel);
    double* const own = x + panel.first;
    for (int j = 0; j < columns; ++j)
        for (int i = j + 1; i < columns; ++i)
            own[i] -= values[j * ld + i] * own[j];
    if (columns < kGatheredColumns) {
        for (int j = 0; j < columns; ++j) {
            const double* const column = values + j * ld + columns;
            for (int i = 0; i < below; ++i)
                x[rows[i]] -= column[i] * own[j];
        }
        return;
    }
    double* const gathered = m_gathered.data();
    for (int i = 0; i < below; ++i)
        gathered[i] = x[rows[i]];
    m_kernels->subtractColumns(gathered, values + columns, ld, own, below, columns);
    for (int i = 0; i < below; ++i)
        x[rows[i]] = gathered[i];
}

void SupernodalFactor::backward(const Panel& panel, double* x)
{
    const int columns = panel.columns;
    const int below = panel.rows - columns;
    const std::ptrdiff_t ld = panel.rows;
    const int* const rows = m_rows.data() + panel.list + columns;
    const double* const values = valuesOf(panel);
    double* const own = x + panel.first;
    for (int j = 0; j < columns; ++j)
        own[j] *= m_inverse[length(panel.first + j)];
    if (columns < kGatheredColumns) {
        for (int j = 0; j < columns; ++j) {
            const double* const column = values + j * ld + columns;
            double sum = 0.0;
            for (int i = 0; i < below; ++i)
                sum += column[i] * x[rows[i]];
            own[j] -= sum;
        }
    } else {
        double* const gathered = m_gathered.data();
        for (int i = 0; i < below; ++i)
            gathered[i] = x[rows[i]];
        m_kernels->subtractDots(own, values + columns, ld, gathered, below, columns);
    }
    for (int j = columns - 1; j > 0; --j)
        for (int i = 0; i < j; ++i)
            own[i] -= values[i * ld + j] * own[j];
}

}  // namespace lcn
